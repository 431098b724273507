// GUIDs as the tool shows them: the dictionary's text form, the C initialiser and the client
// kit's literal; reading a text with the library's own conversion and saying exactly what is
// wrong with it; reading a C initialiser back; making new random (version 4) GUIDs.
#pragma once

#include <string>
#include <vector>

#include "ZELSysTSGuid.h"

namespace zeldict {

struct GuidProblem {
  bool error;           // the library rejects the text (else: it reads it, maybe not as meant)
  int position;         // 1-based character, or 0 when the problem is the whole text
  std::string message;  // what is there and what was expected
};

struct GuidReading {
  bool accepted = false;  // ZELSysTSConvertStringToGUID converted it
  _GUID guid{};           // what it converted it to
  std::vector<GuidProblem> problems;
};

// The text as ZELSysTSConvertStringToGUID reads it, with every difference from the strict form
// that ZELSysTSGuid literals require: an error when the library rejects it, a warning when the
// library reads it leniently (a separator that is not a dash, a byte that counts as digit 0).
GuidReading ReadGuidText(const std::string& text);

// A C initialiser "{0x..., 0x..., 0x..., {0x.., 0x.., 0x.., 0x.., 0x.., 0x.., 0x.., 0x..}}" (any
// C integer literals, any spacing). False, with the reason in *problem, when it is not one.
bool ReadGuidInitializer(const std::string& text, _GUID* guid, std::string* problem);

// Looks like a C initialiser rather than a text form (it has commas).
bool IsInitializer(const std::string& text);

std::string GuidText(const _GUID& guid);         // {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}
std::string GuidInitializer(const _GUID& guid);  // {0xXXXXXXXX, 0xXXXX, 0xXXXX, {0xXX, ...}}
std::string GuidKitLiteral(const _GUID& guid);   // ZELSysTSGuid("{...}")

// A new random GUID of version 4 (RFC 4122 variant), from /dev/urandom or std::random_device.
_GUID NewRandomGuid();

}  // namespace zeldict
