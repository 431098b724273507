// ZELSYSTS_THREAD_ANNOTATION: clang's thread-safety attributes (-Wthread-safety), nothing under
// other compilers. libZELSysTS marks its mutex as a capability with it, so that code built with
// clang can have the compiler check which fields are read without their lock.
#pragma once

#if defined(__clang__)
#define ZELSYSTS_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define ZELSYSTS_THREAD_ANNOTATION(x)
#endif
