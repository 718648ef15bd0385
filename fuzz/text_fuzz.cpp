// Text operations on arbitrary UTF-16: ranges stay inside the text, and answers agree with each other.
#include <fuzz/FuzzInput.h>

#include <quorvel/Extensions/Foundation/NSString+Additions.h>
#include <quorvel/Extensions/Foundation/NSString+TextSearch.h>
#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Utility/StringUtils.h>

using namespace quorvel;
using fuzz::require;

namespace {

void requireInside(NSRange range, StringView text, const char* relation) {
  require(!range.isFound() || (range.location <= text.size() && range.length <= text.size() - range.location),
          relation);
}

void checkSearch(const String& text, const String& needle) {
  const NSRange range = rangeOfString(text, needle);
  requireInside(range, text, "rangeOfString stays inside");
  if (range.isFound()) {
    require(isCanonicallyEqual(StringView(text).sub(range.location, range.length), needle),
            "what is found is canonically equal to the needle");
  }
  const NSRange folded = rangeOfStringCaseInsensitive(text, needle);
  requireInside(folded, text, "rangeOfStringCaseInsensitive stays inside");
  require(!range.isFound() || folded.isFound(), "a search that ignores case finds what an exact one finds");
  if (folded.isFound()) {
    require(caseInsensitiveCompare(StringView(text).sub(folded.location, folded.length), needle) == 0,
            "what is found ignoring case is equal ignoring case");
  }
  require(isContainingString(text, needle) == range.isFound(), "isContainingString: agrees with rangeOfString:");
  requireInside(nsRangeOf(text, needle, false), text, "nsRangeOf stays inside");
  requireInside(nsRangeOf(text, needle, true), lowercased(text), "nsRangeOf stays inside the lower-cased text");
}

void checkEquality(const String& a, const String& b) {
  const bool canonical = isCanonicallyEqual(a, b);
  require(canonical == isCanonicallyEqual(b, a), "canonical equality is symmetric");
  require((compareCanonical(a, b) == 0) == canonical, "compare: agrees with canonical equality");
  require(!canonical || caseInsensitiveCompare(a, b) == 0, "canonically equal texts are equal ignoring case");
  require(caseInsensitiveCompare(a, b) == (0 <=> caseInsensitiveCompare(b, a)),
          "caseInsensitiveCompare: is antisymmetric");
  require(isCanonicallyEqual(a, a) && caseInsensitiveCompare(a, a) == 0, "a text equals itself");
}

void checkPieces(const String& text, const String& separators) {
  const NSCharacterSet set = NSCharacterSet::withCharactersIn(separators);
  std::size_t units = 0;
  for (const StringView piece : componentsSeparatedBy(text, set)) units += piece.size();
  const String removed = separatedBy(text, separators);
  require(removed.size() == units, "removing characters keeps the pieces between them");
  // Halves of a pair that come together make a new character.
  require(
      !unicode::isWellFormed(text) || !unicode::isWellFormed(separators) || separatedBy(removed, separators) == removed,
      "no removed character is left");
  require(joined(componentsSeparatedBy(text, StringView(separators)), separators) == text,
          "splitting and joining with one separator gives the text back");
}

void checkCleaning(const String& text) {
  const StringView trimmed = trimmedOfWhitespace(text);
  require(trimmed == quorvel::trimmed(text, NSCharacterSet::whitespaceAndNewline()), "both forms of trimming agree");
  require(StringUtils::isEmpty(text) == trimmed.isEmpty(), "blank is what trims to nothing");
  const String cleaned = *NSStringTextSearch::removeInvaildSearchStr(text);
  require(cleaned.size() < 2 || NSStringTextSearch::isSearchableString(cleaned),
          "what is cleaned is searchable or short");
  require(countOfClusters(text) <= text.size(), "no more clusters than units");
  require(isCanonicallyEqual(lowercased(lowercased(text)), lowercased(text)), "lower-casing twice changes nothing");
  if (const std::optional<std::string> bytes = text.toUTF8()) {
    require(String::fromUTF8(*bytes) == text, "UTF-8 gives the text back");
  } else {
    require(!unicode::isWellFormed(text), "only an unpaired surrogate has no UTF-8");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const std::string_view bytes = input.bytes();
  const std::optional<String> decoded = String::fromUTF8(bytes);
  require(!decoded || decoded->toUTF8() == std::string(bytes), "valid UTF-8 comes back byte for byte");
  require(!decoded || String::fromUTF8Replacing(bytes) == *decoded, "replacing changes nothing in valid UTF-8");
  const String needle = input.text();
  const String text = input.rest();
  checkSearch(text, needle);
  checkEquality(text, needle);
  checkPieces(text, needle);
  checkCleaning(text);
  return 0;
}
