// Property lists and string tables from arbitrary bytes: both end, stay within their bounds and answer the same again.
#include <fuzz/FuzzInput.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/Foundation/PropertyList.h>
#include <quorvel/Platform/Foundation/Unicode.h>

using namespace quorvel;
using fuzz::require;

namespace {

/// Escaped so that the value reads back from XML.
std::string escaped(const String& text) {
  std::string out;
  for (const char byte : text.toUTF8Replacing()) {
    if (byte == '<' || byte == '&' || byte == '\r') {
      out += "&#" + std::to_string(static_cast<int>(byte)) + ";";
    } else {
      out += byte;
    }
  }
  return out;
}

bool isXMLText(const String& text) {
  for (const char16_t unit : text) {
    if (unit < 0x20 && unit != u'\t' && unit != u'\n' && unit != u'\r') return false;
  }
  return unicode::isWellFormed(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  require(parsePropertyList(bytes) == parsePropertyList(bytes), "the same bytes are the same value");
  // The header and the tag that most inputs would have to find first.
  (void)parsePropertyList("bplist00" + std::string(bytes));
  (void)parsePropertyList("<plist><dict>" + std::string(bytes) + "</dict></plist>");

  const String text = fuzz::Input(data, size).rest();
  if (isXMLText(text)) {
    const auto read = parsePropertyList("<plist><string>" + escaped(text) + "</string></plist>");
    require(read && read->text() == StringView(text), "escaped text reads back");
  }
  std::size_t line = SIZE_MAX;
  const auto table = parseStringsTable(bytes, &line);
  require(table.has_value() == (line == SIZE_MAX), "a refused table names a line, a good one none");
  if (table) {
    for (const auto& [key, value] : *table) require(key.isString() && value.isString(), "texts to texts");
  }
  return 0;
}
