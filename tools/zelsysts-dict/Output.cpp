// Output of zelsysts-dict: escaped text and JSON.
#include "Output.h"

#include <cstdio>

namespace zeldict {

namespace {

void AppendHex(std::string& out, const char* format, unsigned value) {
  char buffer[8];
  std::snprintf(buffer, sizeof buffer, format, value);
  out += buffer;
}

// Length of the valid UTF-8 sequence at s[i], or 0 when the byte there does not start one.
size_t Utf8Length(std::string_view s, size_t i) {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  const unsigned c = byte(i);
  size_t n = c >= 0xF0 && c <= 0xF4 ? 4 : c >= 0xE0 ? 3 : c >= 0xC2 && c < 0xE0 ? 2 : 0;
  if (n == 0 || i + n > s.size()) return 0;
  for (size_t k = 1; k < n; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
  }
  const unsigned c1 = byte(i + 1);
  if ((c == 0xE0 && c1 < 0xA0) || (c == 0xED && c1 >= 0xA0) || (c == 0xF0 && c1 < 0x90) ||
      (c == 0xF4 && c1 >= 0x90)) {
    return 0;  // overlong, surrogate or beyond U+10FFFF
  }
  return n;
}

}  // namespace

std::string EscapeText(std::string_view bytes) {
  std::string out;
  for (const char ch : bytes) {
    const auto c = static_cast<unsigned char>(ch);
    if (c == '\\') {
      out += "\\\\";
    } else if (c == '\r') {
      out += "\\r";
    } else if (c == '\t') {
      out += "\\t";
    } else if (c < 0x20 || c >= 0x7F) {
      AppendHex(out, "\\x%02X", c);
    } else {
      out += ch;
    }
  }
  return out;
}

void JsonWriter::Separate() {
  if (after_key_) {
    after_key_ = false;
    return;
  }
  if (!first_) text_ += ',';
  first_ = false;
}

JsonWriter& JsonWriter::BeginObject() {
  Separate();
  text_ += '{';
  first_ = true;
  return *this;
}

JsonWriter& JsonWriter::EndObject() {
  text_ += '}';
  first_ = false;
  return *this;
}

JsonWriter& JsonWriter::BeginArray() {
  Separate();
  text_ += '[';
  first_ = true;
  return *this;
}

JsonWriter& JsonWriter::EndArray() {
  text_ += ']';
  first_ = false;
  return *this;
}

JsonWriter& JsonWriter::Key(std::string_view key) {
  String(key);
  text_ += ':';
  after_key_ = true;
  return *this;
}

JsonWriter& JsonWriter::String(std::string_view value) {
  Separate();
  text_ += '"';
  for (size_t i = 0; i < value.size();) {
    const auto c = static_cast<unsigned char>(value[i]);
    if (c == '"' || c == '\\') {
      text_ += '\\';
      text_ += static_cast<char>(c);
    } else if (c < 0x20 || c == 0x7F) {
      AppendHex(text_, "\\u%04x", c);
    } else if (c >= 0x80) {
      const size_t n = Utf8Length(value, i);
      if (n == 0) {
        AppendHex(text_, "\\u%04x", c);
      } else {
        text_.append(value.substr(i, n));
        i += n;
        continue;
      }
    } else {
      text_ += static_cast<char>(c);
    }
    ++i;
  }
  text_ += '"';
  return *this;
}

JsonWriter& JsonWriter::Null() {
  Separate();
  text_ += "null";
  return *this;
}

JsonWriter& JsonWriter::Bool(bool value) {
  Separate();
  text_ += value ? "true" : "false";
  return *this;
}

JsonWriter& JsonWriter::Number(long long value) {
  Separate();
  text_ += std::to_string(value);
  return *this;
}

}  // namespace zeldict
