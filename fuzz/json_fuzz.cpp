// JSON on arbitrary bytes: both encodings agree on what is JSON and what it means, and what was written reads back.
#include <fuzz/FuzzInput.h>

#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/Unicode.h>

using namespace quorvel;
using fuzz::require;

namespace {

/// A copy of just the text's size on the heap, so that the sanitizer sees every read past the end.
template <class Unit>
std::vector<Unit> exactCopy(const Unit* data, std::size_t size) {
  std::vector<Unit> copy(data, data + size);
  copy.shrink_to_fit();
  return copy;
}

String writtenAgain(const String& text, std::uint64_t options) {
  const Value value = NSJSONSerialization::parse(text);
  require(!value.isNil(), "what was written can be read");
  return *NSJSONSerialization::write(value, options);
}

void checkWriting(const Value& value) {
  for (const std::uint64_t options : {0U, 1U, 2U, 3U}) {
    const std::optional<String> text = NSJSONSerialization::write(value, options);
    require(text.has_value(), "what was read can be written");
    require(NSJSONSerialization::writeFragmentUTF8(value, options) == text->toUTF8(), "both encodings write alike");
    // Texts, not values: a whole double beyond 2^53 comes back as the integer that its digits are, and -0.0 as 0.
    const String second = writtenAgain(*text, options);
    require(second == *text || unicode::findLiteral(*text, u"-0") != unicode::kInvalid, "what was written stays");
    require(writtenAgain(second, options) == second, "what was written twice stays");
  }
}

void checkUnits(const String& text) {
  const std::vector<char16_t> units = exactCopy(text.data(), text.size());
  JSONError error;
  const Value value = NSJSONSerialization::parse(StringView(units.data(), units.size()), &error);
  require(error.offset <= text.size(), "an error stands in the text");
  if (!value.isNil()) {
    require(unicode::isWellFormed(text), "JSON is well-formed");
    checkWriting(value);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<char> bytes = exactCopy(reinterpret_cast<const char*>(data), size);
  const std::string_view utf8(bytes.data(), bytes.size());
  JSONError error;
  const Value value = NSJSONSerialization::parse(utf8, &error);
  require(error.offset <= size, "an error stands in the text");
  require(value.isNil() == (error.reason[0] != '\0'), "there is a value or an error");
  if (const std::optional<String> text = String::fromUTF8(utf8)) {
    const std::vector<char16_t> units = exactCopy(text->data(), text->size());
    JSONError other;
    const Value same = NSJSONSerialization::parse(StringView(units.data(), units.size()), &other);
    require(value == same, "both encodings read alike");
    require(std::string_view(error.reason) == other.reason, "both encodings fail alike");
    require(value.isNil() ? unicode::utf8Length(StringView(*text).sub(0, other.offset)) == error.offset : true,
            "both encodings fail at the same place");
  } else {
    require(value.isNil(), "JSON is valid UTF-8");
  }
  if (!value.isNil()) checkWriting(value);
  const Value fragment = NSJSONSerialization::parseFragment(utf8);
  require(value.isNil() || fragment == value, "every text is a fragment");
  fuzz::Input input(data, size);
  checkUnits(input.rest());
  return 0;
}
