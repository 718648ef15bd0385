// Matching of search terms that are not there, so that the whole text is looked through: against Qt's search, which
// folds single characters, and ICU's collation search, which leaves out case or accents too.
#include <memory>
#include <vector>

#include <bench/Cases.h>
#include <bench/QtText.h>

#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Utility/StringUtils+Highlight.h>
#include <quorvel/Utility/TextMatch.h>

#if QUORVEL_HAVE_QT
#include <QRegularExpression>
#endif
#include <unicode/uregex.h>
#include <unicode/usearch.h>

namespace quorvel::bench {
namespace {

struct CloseSearch {
  void operator()(UStringSearch* search) const { usearch_close(search); }
};

/// The first place found by root collation of the given strength.
void addICU(const std::string& name, std::size_t size, const String& text, const String& term,
            UCollationStrength strength) {
  UErrorCode status = U_ZERO_ERROR;
  const std::shared_ptr<UStringSearch> search(
      usearch_open(term.data(), static_cast<std::int32_t>(term.size()), text.data(),
                   static_cast<std::int32_t>(text.size()), "root", nullptr, &status),
      CloseSearch());
  if (U_FAILURE(status)) return;
  ucol_setStrength(usearch_getCollator(search.get()), strength);
  usearch_reset(search.get());
  add(name, size, "icu:usearch", [search, text, term] {
    UErrorCode error = U_ZERO_ERROR;
    return usearch_first(search.get(), &error);
  });
}

void addTerm(const std::string& script, std::size_t size, const String& text) {
  const String term = u"z\uB7C1qx";
  add("match/case/" + script, size, "ours", [text, term] { return matchRanges(text, term, {.ignoresCase = true}); });
  add("match/accents/" + script, size, "ours",
      [text, term] { return matchRanges(text, term, {.ignoresCase = true, .ignoresAccents = true}); });
  const TextMatcher ready(term, {.ignoresCase = true});
  add("match/case-ready/" + script, size, "ours", [text, ready] { return ready.hasMatch(text); });
  // Initials of two syllables, and a letter in front so that no place in a random text is one.
  const TextMatcher typed(u"\u3142q\u314E", {.ignoresCase = true, .partialHangul = true});
  add("match/typing/" + script, size, "ours", [text, typed] { return typed.hasMatch(text); });
  addICU("match/case/" + script, size, text, term, UCOL_SECONDARY);
  addICU("match/accents/" + script, size, text, term, UCOL_PRIMARY);
#if QUORVEL_HAVE_QT
  const QString q = qt(text);
  const QString qTerm = qt(term);
  for (const char* name : {"match/case/", "match/case-ready/"}) {
    add(name + script, size, "qt", [q, qTerm] { return q.indexOf(qTerm, 0, Qt::CaseInsensitive); });
  }
#endif
}

/// A text with an accented letter in each word, which is no text of plain units.
void addAccented(std::size_t size) {
  std::u16string accented;
  for (std::size_t i = 0; accented.size() < size; ++i) accented += u"cafe\u00E9\u0151r "[i % 8];
  const String text(accented);
  const String term = u"zq\u00E9x";
  add("match/accents/accented", size, "ours",
      [text, term] { return matchRanges(text, term, {.ignoresCase = true, .ignoresAccents = true}); });
  addICU("match/accents/accented", size, text, term, UCOL_PRIMARY);
}

/// Every place of three keywords in 10 KB of Korean UTF-8, one keyword after the other and as one alternation.
void addKeywords() {
  const String text = bench::text(Script::Korean, 3600);
  const StringView keywords[] = {StringView(text).sub(500, 2), StringView(text).sub(1700, 3), u"\uC5EC\uD589"};
  std::vector<NSRegularExpression> ready;
  std::u16string alternation;
  std::u16string commas;
  for (const StringView keyword : keywords) {
    ready.push_back(*NSRegularExpression::withPattern(keyword, RegularExpressionOptions::CaseInsensitiveLiteral));
    commas += std::u16string(keyword.units()) + u",";
    alternation += (alternation.empty() ? u"" : u"|") + std::u16string(keyword.units());
  }
  const std::size_t size = text.toUTF8Replacing().size();
  add("match/three keywords", size, "ours", [text, ready] {
    std::vector<NSRange> ranges;
    for (const NSRegularExpression& keyword : ready) {
      for (const NSRange range : keyword.matchRanges(text)) ranges.push_back(range);
    }
    return ranges;
  });
  const String joined = commas;
  add("match/three keywords highlighted", size, "ours",
      [text, joined] { return StringUtilsHighlight::searchKeywordInText(text, joined, nil); });
  const std::shared_ptr<URegularExpression> icu(
      [&alternation] {
        UErrorCode status = U_ZERO_ERROR;
        return uregex_open(alternation.data(), static_cast<std::int32_t>(alternation.size()), UREGEX_CASE_INSENSITIVE,
                           nullptr, &status);
      }(),
      uregex_close);
  add("match/three keywords", size, "icu", [text, icu] {
    UErrorCode status = U_ZERO_ERROR;
    uregex_setText(icu.get(), text.data(), static_cast<std::int32_t>(text.size()), &status);
    std::size_t count = 0;
    while (uregex_findNext(icu.get(), &status)) ++count;
    return count;
  });
#if QUORVEL_HAVE_QT
  const QString q = qt(text);
  const QRegularExpression pcre(QString::fromUtf16(alternation.data(), static_cast<qsizetype>(alternation.size())),
                                QRegularExpression::CaseInsensitiveOption);
  add("match/three keywords", size, "qt", [q, pcre] {
    std::size_t count = 0;
    for (auto matches = pcre.globalMatch(q); matches.hasNext(); ++count) matches.next();
    return count;
  });
#endif
}

void addAll() {
  addKeywords();

  for (const std::size_t size : kSizes) {
    for (const auto& [script, name] : kScripts) addTerm(name, size, text(script, size));
    addAccented(size);
  }
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  quorvel::bench::addAll();
  return quorvel::bench::run(argc, argv);
}
