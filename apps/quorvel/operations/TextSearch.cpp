#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSString+TextSearch.h>
#include <quorvel/Utility/TextMatch.h>

namespace quorvel::command {
namespace {

constexpr const char* kFamily = "NSString(TextSearch)";
constexpr const char* kMatching = "text matching";

constexpr Operation kRows[] = {
    op<&NSStringTextSearch::isFirstLetterJamo>(kFamily, "isFirstLetterJamo:", "text",
                                               "whether the first unit is a bare Korean letter", R"(["ㄱ"])"),
    op<&stringArrayOfEachLetters>(kFamily, "stringArrayOfEachLetters", "text", "each UTF-16 unit as a text",
                                  R"(["ab"])"),
    op<&NSStringTextSearch::isSearchableString>(kFamily, "isSearchableString:", "text",
                                                "whether a search term is complete", R"(["한글ㄱ"])"),
    op<&NSStringTextSearch::removeInvaildSearchStr>(kFamily, "removeInvaildSearchStr:", "text",
                                                    "the last searchable form of a search term", R"(["한글ㄱ"])"),

    op<&matchRanges>(kMatching, "matchRanges", "text, term, options",
                     "the ranges of a term; options: a list of case, accents, width (not to matter), hangul",
                     R"(["Café", "CAFE", ["case", "accents"]])"),
    op<&hangulMatch>(kMatching, "hangulMatch", "text, term", "the ranges of a term that is being typed in Korean",
                     R"(["우리 한글", "한ㄱ"])"),
};

}  // namespace

std::span<const Operation> textSearchOperations() { return kRows; }

}  // namespace quorvel::command
