// Export macro of libZELSysTS, the framework's system library (our stand-in).
// The library is built with hidden visibility; only what carries this macro is visible.
#pragma once

#if defined(ZELSYSTS_PLATFORM_BUILDING)
#define ZELSYSTS_PLATFORM_EXPORT __attribute__((visibility("default")))
#else
#define ZELSYSTS_PLATFORM_EXPORT
#endif
