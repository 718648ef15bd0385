// Matching of search terms that are not there, so that the whole text is looked through: against Qt's search, which
// folds single characters, and ICU's collation search, which leaves out case or accents too.
#include <memory>

#include <bench/Cases.h>

#include <quorvel/Utility/TextMatch.h>

#if QUORVEL_HAVE_QT
#include <QString>
#endif
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
  const auto qt = [](const String& from) {
    return QString::fromUtf16(from.data(), static_cast<qsizetype>(from.size()));
  };
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

void addAll() {
  for (const std::size_t size : kSizes) {
    for (const auto& [script, name] : kScripts) addTerm(name, size, text(script, size));
    addAccented(size);
  }
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  quorvel::bench::addAll();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
