#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Cleaning.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Conversion.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Links.h>
#include <quorvel/Extensions/Foundation/NSString+Badge.h>

namespace quorvel::command {
namespace {

constexpr const char* kObject = "NSString(Additions)";

/// What the shared detector finds in the text: a list of {"range", "URL"}.
List findLinks(StringView text) {
  List links;
  for (const NSTextCheckingResult& match : qv_linkDetector(text).matches(text)) {
    links.append(
        Dictionary{{u"range", List{match.range.location, match.range.length}}, {u"URL", match.url.absoluteString()}});
  }
  return links;
}

constexpr Operation kRows[] = {
    op<&stringByRemovingNewLineCharacters>(kObject, "stringByRemovingNewLineCharacters", "text",
                                           "each line feed as a space", R"(["a\nb"])"),
    op<&stringByTrimmingWhitespaces>(kObject, "stringByTrimmingWhitespaces", "text",
                                     "the text without white space and newlines at its ends", R"(["  a b\n"])"),
    op<&stringByRemovingEmojiCharacters>(kObject, "stringByRemovingEmojiCharacters", "text",
                                         "the text without the units U+D800 to U+EFFF", R"(["a😀b"])"),
    op<&truncatedStringWithMaxLength>(kObject, "truncatedStringWithMaxLength:", "text, max",
                                      "a longer text cut to max units and three dots", R"(["abcdef", 3])"),
    op<&NSStringAdditions::stringValue>(kObject, "stringValue:", "value", "the value as text; nil for nil", R"([3.5])"),
    op<&integerNumberObject>(kObject, "integerNumberObject", "text", "the leading integer, or nil where it is 0",
                             R"(["42abc"])"),
    op<&NSStringAdditions::qv_valueOfString>(kObject, "qv_valueOfString:", "flag", "'true' or 'false'", R"([true])"),
    op<&NSStringAdditions::qv_valueOfYN>(kObject, "qv_valueOfYN:", "flag", "'Y' or 'N'", R"([true])"),
    op<&qv_boolValueOfYN>(kObject, "qv_boolValueOfYN", "text", "whether the text is 'Y' or 'y'", R"(["y"])"),
    op<&qv_stringEscapedForJavasacript>(kObject, "qv_stringEscapedForJavasacript", "text",
                                        "the text for a place between quotation marks in a script", R"(["a/\"b\""])"),
    op<&qv_appendToEscapedSymbol>(kObject, "qv_appendToEscapedSymbol", "text", "& < > as markup entities",
                                  R"(["a<b>&c"])"),
    op<&qv_removeToEscapedSymbol>(kObject, "qv_removeToEscapedSymbol", "text", "the three markup entities as & < >",
                                  R"(["a&lt;b&gt;&amp;c"])"),
    op<[](StringView text) { return findLinks(text); }>(kObject, "qv_linkDetector", "text",
                                                        "the links that the shared detector finds in the text",
                                                        R"(["example.com에서, a@b.kr로"])"),
    op<&qv_URL>(kObject, "qv_URL", "text", "the first link's URL, or the whole text as a URL",
                R"(["see example.com/a, please"])"),

    op<&badgeValue>("NSString(Badge)", "badgeValue", "text", "the text of a counter badge", R"(["100"])"),
};

}  // namespace

std::span<const Operation> cleaningOperations() { return kRows; }

}  // namespace quorvel::command
