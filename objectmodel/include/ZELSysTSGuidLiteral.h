// ZELSysTSGuid: a _GUID written in source code in its 38-character text form,
//   constexpr _GUID IID_IShape = ZELSysTSGuid("{5B7A3C10-2D4E-4F60-8A91-0C1D2E3F4A5B}");
//
// The literal is checked strictly, unlike the lenient dictionary reader: exactly 38 characters,
// braces at both ends, dashes at positions 9, 14, 19 and 24, and hexadecimal digits (either case)
// everywhere else. A literal of another length does not match the parameter type; any other
// malformation throws, which in a constant expression (a constexpr variable, a static_assert, a
// template argument) is a compile-time error. Use it where the value is a constant; text read at
// run time goes through ZELSysTSConvertStringToGUID.
//
// Thread safety: pure functions, no state.
#pragma once

#include <cstdint>
#include <stdexcept>

#include "ZELSysTSTypes.h"

namespace ZELSysTSGuidLiteralDetail {

// Value of a hexadecimal digit, or -1 for any other character.
constexpr int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The `count` digits at `pos`, most significant first.
constexpr uint32_t HexField(const char* text, int pos, int count) {
  uint32_t value = 0;
  for (int i = 0; i < count; ++i) {
    const int digit = HexValue(text[pos + i]);
    // A compile error pointing here means: the GUID literal has a non-hexadecimal digit.
    if (digit < 0) throw std::invalid_argument("GUID literal: not a hexadecimal digit");
    value = value * 16u + static_cast<uint32_t>(digit);
  }
  return value;
}

}  // namespace ZELSysTSGuidLiteralDetail

// The GUID of a text "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" (the array bound admits only
// literals of exactly 38 characters). Throws std::invalid_argument on any other malformation.
constexpr _GUID ZELSysTSGuid(const char (&text)[39]) {
  using ZELSysTSGuidLiteralDetail::HexField;
  // A compile error pointing at one of these lines names what is wrong with the literal.
  if (text[38] != '\0') throw std::invalid_argument("GUID literal: not 38 characters");
  if (text[0] != '{' || text[37] != '}') throw std::invalid_argument("GUID literal: braces");
  if (text[9] != '-' || text[14] != '-' || text[19] != '-' || text[24] != '-') {
    throw std::invalid_argument("GUID literal: dashes belong at positions 9, 14, 19 and 24");
  }
  _GUID guid{};
  guid.Data1 = HexField(text, 1, 8);
  guid.Data2 = static_cast<uint16_t>(HexField(text, 10, 4));
  guid.Data3 = static_cast<uint16_t>(HexField(text, 15, 4));
  guid.Data4[0] = static_cast<uint8_t>(HexField(text, 20, 2));
  guid.Data4[1] = static_cast<uint8_t>(HexField(text, 22, 2));
  for (int i = 0; i < 6; ++i) {
    guid.Data4[2 + i] = static_cast<uint8_t>(HexField(text, 25 + 2 * i, 2));
  }
  return guid;
}

// Equality of all 16 bytes, usable in constant expressions (operator== is not constexpr).
constexpr bool ZELSysTSSameGuid(const _GUID& a, const _GUID& b) {
  if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) return false;
  }
  return true;
}
