#include "GuidText.h"

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "Output.h"
#include "ZELSysTSConvertStringToGUID.h"

namespace zeldict {

namespace {

using ZELSysTSGuidText::kLength;

// "character 12 is 'G'" (the byte escaped when it is not printable).
std::string CharacterAt(const std::string& text, int position) {
  return "character " + std::to_string(position + 1) + " is '" +
         EscapeText(text.substr(static_cast<size_t>(position), 1)) + "'";
}

}  // namespace

GuidReading ReadGuidText(const std::string& text) {
  GuidReading reading;
  const int length = static_cast<int>(std::strlen(text.c_str()));  // the library stops at NUL
  reading.accepted = ZELSysTSConvertStringToGUID(text.c_str(), reading.guid) == 0;
  if (!reading.accepted) {
    // The library checks the length and the braces, nothing else; each failing check is told.
    if (length != kLength) {
      reading.problems.push_back({true, 0,
                                  std::to_string(length) + " characters, expected " +
                                      std::to_string(kLength) +
                                      " ({, 8-4-4-4-12 hexadecimal digits with dashes, })"});
    }
    if (length == 0 || text[0] != '{') {
      reading.problems.push_back(
          {true, 1,
           (length == 0 ? std::string("nothing") : CharacterAt(text, 0)) + ", expected '{'"});
    }
    if (length > 1 && text[static_cast<size_t>(length) - 1] != '}') {
      reading.problems.push_back(
          {true, length, CharacterAt(text, length - 1) + ", expected '}' at the end"});
    }
    return reading;
  }
  for (int position : ZELSysTSGuidText::kSeparators) {
    if (text[static_cast<size_t>(position)] != '-') {
      reading.problems.push_back(
          {false, position + 1,
           CharacterAt(text, position) + ", expected '-' (the library skips it unread)"});
    }
  }
  _GUID strict{};
  const int nonDigit = ZELSysTSGuidText::ReadDigits(text.c_str(), &strict, false);
  if (nonDigit >= 0) {
    reading.problems.push_back({false, nonDigit + 1,
                                CharacterAt(text, nonDigit) +
                                    ", expected a hexadecimal digit (the library reads it as 0)"});
  }
  return reading;
}

bool IsInitializer(const std::string& text) {
  return text.find(',') != std::string::npos;
}

bool ReadGuidInitializer(const std::string& text, _GUID* guid, std::string* problem) {
  // The shape: "{" n1 "," n2 "," n3 "," "{" b0 "," ... b7 "}" "}", blanks anywhere between.
  static const char kShape[] = "{n,n,n,{n,n,n,n,n,n,n,n}}";
  static const uint32_t kLimits[3] = {0xFFFFFFFFu, 0xFFFFu, 0xFFFFu};
  uint32_t numbers[11] = {};
  const char* p = text.c_str();
  int count = 0;
  for (const char* shape = kShape; *shape != '\0'; ++shape) {
    while (*p == ' ' || *p == '\t' || *p == '\n') ++p;
    if (*shape != 'n') {
      if (*p != *shape) {
        *problem = "at \"" + EscapeText(std::string(p).substr(0, 12)) + "\": expected '" +
                   std::string(1, *shape) + "' (" + kShape + ")";
        return false;
      }
      ++p;
      continue;
    }
    char* end = nullptr;
    errno = 0;
    const unsigned long long value = std::strtoull(p, &end, 0);
    const uint32_t limit = count < 3 ? kLimits[count] : 0xFFu;
    if (end == p || *p == '-' || *p == '+') {
      *problem = "number " + std::to_string(count + 1) + " is missing (at \"" +
                 EscapeText(std::string(p).substr(0, 12)) + "\")";
      return false;
    }
    if (errno == ERANGE || value > limit) {
      *problem = "number " + std::to_string(count + 1) + " (" +
                 std::string(p, static_cast<size_t>(end - p)) + ") does not fit in " +
                 (limit == 0xFFu     ? "8"
                  : limit == 0xFFFFu ? "16"
                                     : "32") +
                 " bits";
      return false;
    }
    numbers[count++] = static_cast<uint32_t>(value);
    p = end;
  }
  while (*p == ' ' || *p == '\t' || *p == '\n' || *p == ';') ++p;
  if (*p != '\0') {
    *problem = "unexpected \"" + EscapeText(p) + "\" after the initialiser";
    return false;
  }
  guid->Data1 = numbers[0];
  guid->Data2 = static_cast<uint16_t>(numbers[1]);
  guid->Data3 = static_cast<uint16_t>(numbers[2]);
  for (int i = 0; i < 8; ++i) guid->Data4[i] = static_cast<uint8_t>(numbers[3 + i]);
  return true;
}

std::string GuidText(const _GUID& g) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer,
                "{%08" PRIX32 "-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", g.Data1, g.Data2,
                g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3], g.Data4[4], g.Data4[5],
                g.Data4[6], g.Data4[7]);
  return buffer;
}

std::string GuidInitializer(const _GUID& g) {
  char buffer[96];
  std::snprintf(buffer, sizeof buffer,
                "{0x%08" PRIX32
                ", 0x%04X, 0x%04X, {0x%02X, 0x%02X, 0x%02X, 0x%02X, 0x%02X, 0x%02X, 0x%02X, "
                "0x%02X}}",
                g.Data1, g.Data2, g.Data3, g.Data4[0], g.Data4[1], g.Data4[2], g.Data4[3],
                g.Data4[4], g.Data4[5], g.Data4[6], g.Data4[7]);
  return buffer;
}

std::string GuidKitLiteral(const _GUID& guid) {
  return "ZELSysTSGuid(\"" + GuidText(guid) + "\")";
}

_GUID NewRandomGuid() {
  unsigned char bytes[16];
  bool filled = false;
  if (FILE* random = std::fopen("/dev/urandom", "rb")) {
    filled = std::fread(bytes, 1, sizeof bytes, random) == sizeof bytes;
    std::fclose(random);
  }
  if (!filled) {
    std::random_device device;
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(device());
  }
  _GUID guid;
  std::memcpy(&guid, bytes, sizeof guid);
  guid.Data3 = static_cast<uint16_t>((guid.Data3 & 0x0FFF) | 0x4000);   // version 4
  guid.Data4[0] = static_cast<uint8_t>((guid.Data4[0] & 0x3F) | 0x80);  // RFC 4122 variant
  return guid;
}

}  // namespace zeldict
