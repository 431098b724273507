// 64-bit key hashes for the tables' indexes (pools/HashIndex.h), built on folded 128-bit
// multiplications (sixteen bytes a step), so that every input bit reaches the low 32 bits an
// index keeps and chooses the slot by.
//
// These hashes choose slots only; they are not the dictionary's bucket functions
// (DicoStore::NameBucket, IdentifierBucket, ...), which keep their own definitions.
#pragma once

#include <cstddef>
#include <cstdint>

// Hash of `length` bytes of text (a name without its terminator). The length takes part.
uint64_t HashOfText(const char* text, size_t length);
// Hash of a pair of names, from the names' own hashes (HashOfText).
uint64_t HashOfPair(uint64_t first, uint64_t second);
// Hash of one 16-byte identifier, and of a pair of them.
uint64_t HashOfGuid(const void* guid);
uint64_t HashOfGuids(const void* first, const void* second);
