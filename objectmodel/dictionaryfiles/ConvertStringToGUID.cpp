// The text form of a GUID as dictionary files hold it. Only the length and the two braces are
// checked; the separator positions (9, 14, 19, 24) are never read and any other byte at a digit
// position counts as 0 (the digits are read as ZELSysTSGuid.h reads them, leniently).
#include <cstring>

#include "ZELSysTSConvertStringToGUID.h"
#include "ZELSysTSGuid.h"

int32_t ZELSysTSConvertStringToGUID(const char* text, _GUID& guid) {
  if (text == nullptr) return 1;
  constexpr size_t kLength = ZELSysTSGuidText::kLength;
  // strnlen: a text longer than the form is rejected without walking all of it.
  if (strnlen(text, kLength + 1) != kLength || text[0] != '{' || text[kLength - 1] != '}') {
    return 1;
  }
  _GUID result{};
  ZELSysTSGuidText::ReadDigits(text, &result, false);
  guid = result;
  return 0;
}
