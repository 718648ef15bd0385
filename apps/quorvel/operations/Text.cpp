#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSString+Additions.h>
#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Utility/StringUtils.h>
#include <quorvel/Version.h>

namespace quorvel::command {
namespace {

constexpr const char* kClass = "StringUtils";
constexpr const char* kObject = "NSString(Additions)";
constexpr const char* kValue = "String extension";

using LocalizedFormat = String (*)(const String&, std::span<const Value>);

constexpr Operation kRows[] = {
    op<[] { return String::fromUTF8Replacing(QuorvelVersionString); }>("exported symbols", "QuorvelVersionString", "",
                                                                       "the library's version"),
    op<[] { return QuorvelVersionNumber; }>("exported symbols", "QuorvelVersionNumber", "",
                                            "major and minor version read as a decimal number"),

    op<&StringUtils::isEmpty>(kClass, "isEmpty:", "text", "whether the text is nil or blank", R"(["  "])"),
    op<&StringUtils::isBlank>(kClass, "isBlank:", "text", "whether the text is nil or blank", R"([null])"),
    op<&StringUtils::isNotEmpty<>>(kClass, "isNotEmpty:", "text", "whether the text holds more than white space",
                                   R"(["a"])"),
    op<&StringUtils::isNotBlank<>>(kClass, "isNotBlank:", "text", "whether the text holds more than white space",
                                   R"([" a"])"),
    op<&StringUtils::trim>(kClass, "trim:", "text", "the text without white space and newlines at its ends",
                           R"(["  a b\n"])"),
    op<&StringUtils::equals>(kClass, "equals:andString:", "first, second", "literal equality; nil equals nil",
                             R"(["a", "a"])"),
    op<&StringUtils::equalsCaseInsensitive>(kClass, "equalsCaseInsensitive:andString:", "first, second",
                                            "equality by case folding and canonical equivalence",
                                            R"(["STRASSE", "straße"])"),
    op<&StringUtils::matches>(kClass, "matches:pattern:", "text, pattern",
                              "whether a regular expression matches anywhere, ignoring case", R"(["ABC", "b"])"),
    op<&StringUtils::matchesResult>(kClass, "matchesResult", "text, pattern",
                                    "the same, telling a bad pattern and a reached limit apart", R"(["ABC", "(b"])"),
    op<&StringUtils::isNumber>(kClass, "isNumber:", "text", "whether the text is decimal digits", R"(["12345"])"),
    op<&StringUtils::collectionToCommaDelimitedString>(kClass, "collectionToCommaDelimitedString:", "list",
                                                       "the elements' plain texts with commas between",
                                                       R"([[1, 22, 3]])"),
    op<&StringUtils::stringWithFormat>(kClass, "stringWithFormat:args:", "format, args",
                                       "the format with the first 21 elements as objects", R"(["%@-%@", ["a"]])"),

    op<&NSStringAdditions::isNotEmpty>(kObject, "isNotEmpty:", "value",
                                       "whether the value is text that holds more than white space", R"(["a"])"),
    op<&NSStringAdditions::isEmpty>(kObject, "isEmpty:", "value", "the negation of isNotEmpty:", "[5]"),
    op<&isContainingString>(kObject, "isContainingString:", "text, string",
                            "whether the string occurs in the text, with its case", R"(["abc", "b"])"),
    op<&equalsIgnoreCase>(kObject, "equalsIgnoreCase:", "text, string", "equality that ignores case",
                          R"(["abc", "ABC"])"),

    op<&StringExtension::nonBreakSpace>(kValue, "nonBreakSpace", "", "one U+00A0"),
    op<&localized>(kValue, "localized()", "text", "the text from the main bundle's string tables, else itself",
                   R"(["greeting"])"),
    op<static_cast<LocalizedFormat>(&localizedFormat)>(
        kValue, "localizedFormat(arguments:)", "text, arguments",
        "the localized text as a printf-style format; arguments follow one by one, or as one list",
        R"(["%d of %@", 1, "two"])"),
    op<&StringExtension::isEmpty>(kValue, "isEmpty(_:)", "text", "whether the text is nil or blank", R"(["\t"])"),
    op<&StringExtension::isNotEmpty>(kValue, "isNotEmpty(_:)", "text", "whether the text holds more than white space",
                                     R"(["a"])"),
    op<&StringExtension::isEqualString>(kValue, "isEqualString(lhs:rhs:)", "lhs, rhs",
                                        "canonical equality of the trimmed texts; blank equals blank",
                                        R"(["  abc", "abc"])"),
    op<&trimmedString>(
        kValue, "trimmedString()", "text",
        "without no-break spaces, and without white space and controls at the ends; nil if nothing is left",
        R"([" a\u00a0b "])"),
    op<&count>(kValue, "count()", "text", "the number of characters as a reader counts them", R"(["🇰🇷é"])"),
    op<&length>(kValue, "length()", "text", "the number of UTF-16 units", R"(["🇰🇷"])"),
    op<&nsRange>(kValue, "nsRange()", "text", "the range of the whole text", R"(["abc"])"),
    op<&nsRangeOf>(kValue, "nsRangeOf(string:ignoreCase:)", "text, string, ignoreCase",
                   "the range of the first occurrence", R"(["Hello", "LL", true])"),
    op<[](StringView text, UnitIndex from) { return nsSubstringFrom(text, from); }, &nsSubstringFrom>(
        kValue, "nsSubstring(from:)", "text, from", "the units from an index on", R"(["abc", 1])"),
    op<[](StringView text, UnitIndex to) { return nsSubstringTo(text, to); }, &nsSubstringTo>(
        kValue, "nsSubstring(to:)", "text, to", "the units before an index", R"(["abc", 2])"),
    op<&separatedBy>(kValue, "separatedBy(characters:)", "text, characters", "the text without those characters",
                     R"(["a-b_c", "-_"])"),
    op<&separatedEmptyCharacters>(kValue, "separatedEmptyCharacters()", "text",
                                  "the text without carriage returns and tabs", R"(["a\r\n\tb"])"),
    op<&replacingCharacters>(kValue, "replacingCharacters(_:with:)", "text, characters, replacement",
                             "each run of those characters as one replacement, none at the ends",
                             R"([",a,,b,", ",", "+"])"),
    op<&containsCaseInsensitive>(kValue, "containsCaseInsensitive(_:)", "text, string",
                                 "whether the string occurs in the text, ignoring case", R"(["Hello", "LL"])"),
};

}  // namespace

std::span<const Operation> textOperations() { return kRows; }

}  // namespace quorvel::command
