// Export macro of libZELSysTSObjectModeler. The library is built with hidden visibility; only
// declarations marked ZELSYSTS_EXPORT are visible to clients. Whole polymorphic classes are
// exported so that their type information is one across libraries.
#pragma once

#if defined(ZELSYSTS_OBJECTMODELER_BUILDING)
#define ZELSYSTS_EXPORT __attribute__((visibility("default")))
#else
#define ZELSYSTS_EXPORT
#endif
