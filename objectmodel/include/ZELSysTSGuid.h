// _GUID and everything the object model knows about it, for the library and client code alike:
// equality, the IID order of interface tables, the 38-character text form, and IID_IUnknown.
//
//   constexpr _GUID IID_IShape = ZELSysTSGuid("{5B7A3C10-2D4E-4F60-8A91-0C1D2E3F4A5B}");
//
// The text form is "{" 8-4-4-4-12 hexadecimal digits "}", 38 characters. A literal in source code
// (ZELSysTSGuid) is checked strictly: braces, dashes at positions 9, 14, 19 and 24, and
// hexadecimal digits (either case) everywhere else; a literal of another length does not match
// the parameter type, and any other malformation throws, which in a constant expression (a
// constexpr variable, a static_assert, a template argument) is a compile-time error. Text read
// at run time goes through ZELSysTSConvertStringToGUID, which reads the same digits leniently.
//
// Thread safety: pure functions, no state.
#pragma once

#include <cstdint>
#include <stdexcept>

// A 16-byte globally unique identifier, in memory order: a 32-bit field, two 16-bit fields and
// eight bytes. Called IID when it names an interface and CLSID when it names a class. Two GUIDs
// are equal when all 16 bytes are equal.
struct _GUID {
  uint32_t Data1;
  uint16_t Data2;
  uint16_t Data3;
  uint8_t Data4[8];
};
typedef _GUID IID;
typedef _GUID CLSID;
static_assert(sizeof(_GUID) == 16, "_GUID must be exactly 16 bytes");

// Equality of all 16 bytes, usable in constant expressions.
constexpr bool ZELSysTSSameGuid(const _GUID& a, const _GUID& b) {
  if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
  for (int i = 0; i < 8; ++i) {
    if (a.Data4[i] != b.Data4[i]) return false;
  }
  return true;
}
inline bool operator==(const _GUID& a, const _GUID& b) {
  return ZELSysTSSameGuid(a, b);
}
inline bool operator!=(const _GUID& a, const _GUID& b) {
  return !ZELSysTSSameGuid(a, b);
}

// The IID order of interface tables: the 16 bytes read as four little-endian 32-bit words in
// memory order, the first difference deciding. Word k of a GUID:
constexpr uint32_t ZELSysTSGuidWord(const _GUID& g, int k) {
  if (k == 0) return g.Data1;
  if (k == 1) return uint32_t{g.Data2} | uint32_t{g.Data3} << 16;
  const int b = 4 * (k - 2);
  return uint32_t{g.Data4[b]} | uint32_t{g.Data4[b + 1]} << 8 | uint32_t{g.Data4[b + 2]} << 16 |
         uint32_t{g.Data4[b + 3]} << 24;
}
// Negative when a comes first in IID order, 0 when equal, positive when b comes first.
constexpr int ZELSysTSCompareIid(const _GUID& a, const _GUID& b) {
  for (int k = 0; k < 4; ++k) {
    const uint32_t wa = ZELSysTSGuidWord(a, k);
    const uint32_t wb = ZELSysTSGuidWord(b, k);
    if (wa != wb) return wa < wb ? -1 : 1;
  }
  return 0;
}

namespace ZELSysTSGuidText {

constexpr int kLength = 38;
// The positions of the four separators, dashes in the strict form.
constexpr int kSeparators[4] = {9, 14, 19, 24};

// Value of each byte as a hexadecimal digit, or -1: one load per digit, no branch.
struct HexDigitValues {
  int8_t value[256];
};
constexpr HexDigitValues MakeHexDigitValues() {
  HexDigitValues values{};
  for (int c = 0; c < 256; ++c) {
    values.value[c] = static_cast<int8_t>(c >= '0' && c <= '9'   ? c - '0'
                                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                                 : -1);
  }
  return values;
}
inline constexpr HexDigitValues kHexDigitValues = MakeHexDigitValues();

// Value of a hexadecimal digit, or -1 for any other byte.
constexpr int HexValue(char c) {
  return kHexDigitValues.value[static_cast<unsigned char>(c)];
}

// Reads the 32 digit positions of a 38-character text into *guid. Returns the position of the
// first byte there that is not a hexadecimal digit, or -1 when all are digits. strict: the
// reading stops at that byte (*guid untouched); otherwise it counts as 0 and *guid is written.
constexpr int ReadDigits(const char* text, _GUID* guid, bool strict) {
  // Where each digit field starts and how many digits it has: Data1, Data2, Data3, then the
  // eight bytes of Data4 (bytes 0 and 1 before the dash at 24, bytes 2 to 7 after it).
  constexpr int kStart[11] = {1, 10, 15, 20, 22, 25, 27, 29, 31, 33, 35};
  constexpr int kDigits[11] = {8, 4, 4, 2, 2, 2, 2, 2, 2, 2, 2};
  uint32_t fields[11] = {};
  int firstNonDigit = -1;
  for (int f = 0; f < 11; ++f) {
    for (int i = 0; i < kDigits[f]; ++i) {
      int digit = HexValue(text[kStart[f] + i]);
      if (digit < 0) {
        if (firstNonDigit < 0) firstNonDigit = kStart[f] + i;
        if (strict) return firstNonDigit;
        digit = 0;
      }
      fields[f] = fields[f] << 4 | static_cast<uint32_t>(digit);
    }
  }
  guid->Data1 = fields[0];
  guid->Data2 = static_cast<uint16_t>(fields[1]);
  guid->Data3 = static_cast<uint16_t>(fields[2]);
  for (int i = 0; i < 8; ++i) guid->Data4[i] = static_cast<uint8_t>(fields[3 + i]);
  return firstNonDigit;
}

}  // namespace ZELSysTSGuidText

// The GUID of a text "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}" (the array bound admits only
// literals of exactly 38 characters). Throws std::invalid_argument on any other malformation.
constexpr _GUID ZELSysTSGuid(const char (&text)[39]) {
  // A compile error pointing at one of these lines names what is wrong with the literal.
  if (text[38] != '\0') throw std::invalid_argument("GUID literal: not 38 characters");
  if (text[0] != '{' || text[37] != '}') throw std::invalid_argument("GUID literal: braces");
  for (int position : ZELSysTSGuidText::kSeparators) {
    if (text[position] != '-') {
      throw std::invalid_argument("GUID literal: dashes belong at positions 9, 14, 19 and 24");
    }
  }
  _GUID guid{};
  if (ZELSysTSGuidText::ReadDigits(text, &guid, true) >= 0) {
    throw std::invalid_argument("GUID literal: not a hexadecimal digit");
  }
  return guid;
}

// The identifier of IUnknown, which every object answers with itself.
inline constexpr _GUID ZELSysTSIID_IUnknown =
    ZELSysTSGuid("{00000000-0000-0000-C000-000000000046}");
