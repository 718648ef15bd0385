#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSMutableAttributedString+Highlight.h>
#include <quorvel/Extensions/Foundation/NSString+AttributedString.h>
#include <quorvel/Extensions/Foundation/String+Attributed.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel::command {
namespace detail {

template <>
inline constexpr std::string_view kTypeText<AttributedText> = "AttributedText";

}  // namespace detail
namespace {

constexpr const char* kUtils = "StringUtils";
constexpr const char* kText = "NSString(AttributedString)";
constexpr const char* kValue = "String extension";
constexpr const char* kAttributed = "NSMutableAttributedString extension";

using Color = const std::optional<UIColor>&;
using Search = std::optional<AttributedText> (*)(StringView, StringView, Color);
using SearchOnBase = std::optional<AttributedText> (*)(StringView, StringView, Color, Color);
using SearchWithFont = NSMutableAttributedString (*)(StringView, StringView, Color, Color, const Value&);
using Plain = NSAttributedString (*)(const String&);
using WithAttributes = NSAttributedString (*)(const String&, const std::optional<Attributes>&);
using Joined = NSMutableAttributedString (*)(const NSMutableAttributedString&, const NSMutableAttributedString&);

constexpr Operation kRows[] = {
    op<static_cast<Search>(&StringUtils::searchKeywordInText)>(
        kUtils, "searchKeywordInText:pattern:hilightColor:", "text, pattern, hilightColor",
        "the text with every place of the keywords coloured", R"(["Hello", "ll", [1, 0, 0, 1]])"),
    op<static_cast<SearchOnBase>(&StringUtils::searchKeywordInText)>(
        kUtils, "searchKeywordInText:pattern:baseColor:hilightColor:", "text, pattern, baseColor, hilightColor",
        "the same on a base colour", R"(["Hello", "ll", [0, 0, 0, 1], [1, 0, 0, 1]])"),
    op<static_cast<SearchWithFont>(&StringUtils::searchKeywordInText)>(
        kUtils,
        "searchKeywordInText:pattern:baseColor:hilightColor:font:", "text, pattern, baseColor, hilightColor, font",
        "the same with a font over all of it", R"(["Hello", "ll", [0, 0, 0, 1], [1, 0, 0, 1], {"$font": "Bold"}])"),
    op<&StringUtils::attributedStringForBaseString>(
        kUtils, "attributedStringForBaseString:baseColor:pointString:pointColor:backwardSearch:",
        "text, baseColor, pointString, pointColor, backwardSearch",
        "the text with the first or last place of a term coloured",
        R"(["abcabc", [0, 0, 0, 1], "BC", [1, 0, 0, 1], true])"),

    op<&makeTitleAttributedString>(
        kText, "makeTitleAttributedString:contentAttribute:", "text, titleAttribute, contentAttribute",
        "the first line apart from the rest", R"(["Title\nBody", {"NSFont": {"$font": "Bold"}}, {}])"),
    op<&attributedStringForKeywordHighlights>(
        kText, "attributedStringForKeywordHighlights:highlightColor:", "text, keyword, highlightColor",
        "the matches of an expression coloured", R"(["abbbc", "b+", [1, 0, 0, 1]])"),

    op<static_cast<Plain>(&attributed)>(kValue, "attributed", "text", "the text without attributes", R"(["ab"])"),
    op<static_cast<WithAttributes>(&attributed)>(kValue, "attributed(_:)", "text, attributes",
                                                 "the text with attributes over all of it",
                                                 R"(["ab", {"NSFont": {"$font": "Bold"}}])"),
    op<&mutableAttributed>(kValue, "mutableAttributed(_:)", "text, attributes", "the same, changeable",
                           R"(["ab", {"NSFont": {"$font": "Bold"}}])"),
    op<&attributedString>(kValue, "attributedString(_:)", "text, attributes",
                          "the same, with attribute names as plain text", R"(["ab", {"mark": 1}])"),

    op<&highlightKeyword>(kAttributed, "highlight(keyword:keywordAttributes:)", "text, keyword, keywordAttributes",
                          "adds attributes to every place of a keyword",
                          R"([{"text": "abc a.c", "spans": []}, "a.c", {"mark": 1}])"),
    op<&highlightPattern>(kAttributed, "highlight(pattern:keywordAttributes:)", "text, pattern, keywordAttributes",
                          "adds attributes to every match of an expression",
                          R"([{"text": "abc a.c", "spans": []}, "a.c", {"mark": 1}])"),
    op<static_cast<Joined>(&quorvel::operator+)>(kAttributed, "+", "left, right",
                                                 "the left text and then the right one",
                                                 R"([{"text": "ab", "spans": [[0, 2, {"mark": 1}]]}, "cd"])"),
};

}  // namespace

std::span<const Operation> highlightingOperations() { return kRows; }

}  // namespace quorvel::command
