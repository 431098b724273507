// Identifiers shared by the meta integration tests and their implementation libraries, and the
// creation function shape that those libraries export.
#pragma once

#include "MetaProbe.h"
#include "ZELSysTSObjectModeler.h"

namespace zelmeta {

inline constexpr _GUID kClsidFoo = {0x5EA10001, 0x1111, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 1}};
inline constexpr _GUID kClsidFooExt = {0x5EA10002, 0x1111, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 2}};
inline constexpr _GUID kClsidInitThread = {0x5EA10003, 0x1111, 0x4000, {0x80, 0, 0, 0, 0, 0, 0, 3}};

inline constexpr _GUID kIidBar = {0x1BA00001, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 1}};
inline constexpr _GUID kIidLeafed = {0x1BA00002, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 2}};
inline constexpr _GUID kIidRefused = {0x1BA00003, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 3}};
inline constexpr _GUID kIidUnknownLeaf = {0x1BA00004, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 4}};
inline constexpr _GUID kIidExt = {0x1BA00005, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 5}};
inline constexpr _GUID kIidNotExt = {0x1BA00006, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 6}};
inline constexpr _GUID kIidGhost = {0x1BA00007, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 7}};
inline constexpr _GUID kIidMissingLib = {0x1BA00008, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 8}};
inline constexpr _GUID kIidNoFunc = {0x1BA00009, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 9}};
inline constexpr _GUID kIidInit = {0x1BA0000A, 0x2222, 0x4000, {0x90, 0, 0, 0, 0, 0, 0, 10}};

}  // namespace zelmeta

// Defines an exported creation function that reports itself to the probe and answers with the
// queried object (QueryInterface counts the reference on it).
#define ZELMETA_CREATOR(fn)                                             \
  extern "C" IUnknown* fn(ZELSysTSBaseUnknown* object, unsigned char) { \
    ZelMetaProbeHit(#fn);                                               \
    return object;                                                      \
  }
