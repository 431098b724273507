// The text form of a GUID: "{" 8-4-4-4-12 hex digits "}", 38 characters in all. Only the length
// and the two braces are checked; the separator positions (9, 14, 19, 24) are never read and any
// other byte at a digit position counts as 0.
#include <array>
#include <cstring>

#include "ZELSysTSConvertStringToGUID.h"

namespace {

constexpr size_t kGuidTextLength = 38;

// Value of every byte as a hexadecimal digit; 0 for everything that is not one.
constexpr std::array<uint8_t, 256> MakeHexDigitTable() {
  std::array<uint8_t, 256> table{};
  for (int c = '0'; c <= '9'; ++c) table[c] = static_cast<uint8_t>(c - '0');
  for (int c = 'A'; c <= 'F'; ++c) table[c] = static_cast<uint8_t>(c - 'A' + 10);
  for (int c = 'a'; c <= 'f'; ++c) table[c] = static_cast<uint8_t>(c - 'a' + 10);
  return table;
}

constexpr std::array<uint8_t, 256> kHexDigit = MakeHexDigitTable();

static_assert(kHexDigit['f'] == 15 && kHexDigit['G'] == 0 && kHexDigit[0xFF] == 0,
              "hex digit table");

// The value of `digits` hex digits starting at text[first], most significant first.
uint32_t HexField(const char* text, int first, int digits) {
  uint32_t value = 0;
  for (int i = 0; i < digits; ++i) {
    value = (value << 4) | kHexDigit[static_cast<unsigned char>(text[first + i])];
  }
  return value;
}

}  // namespace

int32_t ZELSysTSConvertStringToGUID(const char* text, _GUID& guid) {
  if (text == nullptr) return 1;
  // strnlen: a text longer than the form is rejected without walking all of it.
  if (strnlen(text, kGuidTextLength + 1) != kGuidTextLength || text[0] != '{' ||
      text[kGuidTextLength - 1] != '}') {
    return 1;
  }
  // Byte pairs of the 8-byte field start at these positions (byte 1 and byte 2 are either side
  // of the separator at 24).
  static constexpr int kBytePositions[8] = {20, 22, 25, 27, 29, 31, 33, 35};
  _GUID result;
  result.Data1 = HexField(text, 1, 8);
  result.Data2 = static_cast<uint16_t>(HexField(text, 10, 4));
  result.Data3 = static_cast<uint16_t>(HexField(text, 15, 4));
  for (int i = 0; i < 8; ++i) {
    result.Data4[i] = static_cast<uint8_t>(HexField(text, kBytePositions[i], 2));
  }
  guid = result;
  return 0;
}
