// Output of zelsysts-dict: names printed safely as text, and a small JSON writer.
#pragma once

#include <string>
#include <string_view>

namespace zeldict {

// The bytes of a name as printable text: printable ASCII as is, backslash as "\\", and every
// other byte (control characters, DEL, bytes of 0x80 and above) as "\xHH". A carriage return
// reads "\r", a tab "\t".
std::string EscapeText(std::string_view bytes);

// Builds one JSON document in memory. Strings are always valid JSON: control characters are
// escaped, valid UTF-8 is kept, and every byte that is not part of valid UTF-8 is written as the
// code point of the same value (\u00HH), so that odd names stay readable and the document parses.
class JsonWriter {
 public:
  JsonWriter& BeginObject();
  JsonWriter& EndObject();
  JsonWriter& BeginArray();
  JsonWriter& EndArray();
  JsonWriter& Key(std::string_view key);
  JsonWriter& String(std::string_view value);
  JsonWriter& Null();
  JsonWriter& Bool(bool value);
  JsonWriter& Number(long long value);

  // The document, with a final newline.
  std::string Text() const { return text_ + "\n"; }

 private:
  void Separate();

  std::string text_;
  bool first_ = true;  // no value yet in the innermost object or array
  bool after_key_ = false;
};

}  // namespace zeldict
