// Export macro of libZELSysTSObjectModeler. The library is built with hidden visibility; only
// declarations marked ZELSYSTS_EXPORT are visible to clients. Whole polymorphic classes are
// exported so that their type information is one across libraries. The macro means default
// visibility on both sides, so that a client compiled with hidden visibility still sees these
// declarations (and their type information) as coming from the library.
#pragma once

#define ZELSYSTS_EXPORT __attribute__((visibility("default")))
