// Export macro of libZELSysTS, the system library beneath the object model.
// The library is built with hidden visibility; only what carries this macro is visible. The
// macro means default visibility on both sides, so that a client compiled with hidden visibility
// still sees these declarations as coming from outside.
#pragma once

#define ZELSYSTS_PLATFORM_EXPORT __attribute__((visibility("default")))
