// Text and encoding operations against Qt and ICU, with memcpy as the floor.
#include <cstring>

#include <bench/Cases.h>
#include <bench/QtText.h>

#include <quorvel/Extensions/Foundation/NSDictionary+URL.h>
#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>
#include <quorvel/Extensions/Foundation/NSString+Additions.h>
#include <quorvel/Extensions/Foundation/NSString+Query.h>
#include <quorvel/Extensions/Foundation/NSString+TextSearch.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Extensions/Foundation/TimeFormatConvertible.h>
#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Utility/StringUtils.h>

#if QUORVEL_HAVE_QT
#include <QLocale>
#include <QRegularExpression>
#include <QString>
#include <QTime>
#include <QUrl>
#include <QUrlQuery>
#endif
#include <unicode/ustring.h>

namespace quorvel::bench {
namespace {

String spaced(const String& text) {
  std::u16string padded(text.data(), text.size());
  padded.front() = u' ';
  padded.back() = u'\n';
  return String(padded);
}

void addConversions(const std::string& script, std::size_t size, const String& text) {
  const std::string utf8 = text.toUTF8Replacing();
  auto copy = std::make_shared<std::u16string>(text.data(), text.size());
  for (const char* name : {"text/from-utf8/", "text/to-utf8/", "text/lower/"}) {
    add(name + script, size, "floor:memcpy", [copy, text] {
      std::memcpy(copy->data(), text.data(), text.size() * 2);
      return (*copy)[0];
    });
  }
  add("text/from-utf8/" + script, size, "ours", [utf8] { return String::fromUTF8(utf8); });
  add("text/to-utf8/" + script, size, "ours", [text] { return text.toUTF8(); });
  add("text/lower/" + script, size, "ours", [text] { return lowercased(text); });
#if QUORVEL_HAVE_QT
  const QString q = qt(text);
  add("text/from-utf8/" + script, size, "qt",
      [utf8] { return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())); });
  add("text/to-utf8/" + script, size, "qt", [q] { return q.toUtf8(); });
  add("text/lower/" + script, size, "qt", [q] { return q.toLower(); });
#endif
  auto units = std::make_shared<std::u16string>(text.size(), u'\0');
  add("text/from-utf8/" + script, size, "icu", [utf8, units] {
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = 0;
    u_strFromUTF8(units->data(), static_cast<int32_t>(units->size()), &length, utf8.data(),
                  static_cast<int32_t>(utf8.size()), &status);
    return length;
  });
}

void addTrimming(const std::string& script, std::size_t size, const String& text) {
  const String padded = spaced(text);
  add("text/trim/" + script, size, "ours", [padded] { return StringUtils::trim(padded); });
  add("text/is-empty/" + script, size, "ours", [padded] { return StringUtils::isEmpty(padded); });
  add("text/trimmedString/" + script, size, "ours", [padded] { return trimmedString(padded); });
  add("text/searchable/" + script, size, "ours", [padded] { return NSStringTextSearch::isSearchableString(padded); });
#if QUORVEL_HAVE_QT
  const QString q = qt(padded);
  add("text/trim/" + script, size, "qt", [q] { return q.trimmed(); });
  add("text/is-empty/" + script, size, "qt", [q] { return QStringView(q).trimmed().isEmpty(); });
  add("text/trimmedString/" + script, size, "qt", [q] { return QString(q).remove(QChar(0xA0)).trimmed(); });
#endif
}

void addComparison(const std::string& script, std::size_t size, const String& text) {
  const String upper = uppercased(text);
  const String same(text.data(), text.size());
  // A needle that is not there: the whole text is looked through.
  const String needle = StringView(text).sub(0, 1) == StringView(u"a") ? String(u"\uB7C1zq") : String(u"zq\uB7C1");
  add("text/equal/" + script, size, "ours", [text, same] { return StringUtils::equals(text, same); });
  add("text/compare-ignoring-case/" + script, size, "ours",
      [text, upper] { return caseInsensitiveCompare(text, upper) == 0; });
  add("text/contains/" + script, size, "ours", [text, needle] { return isContainingString(text, needle); });
  add("text/contains-ignoring-case/" + script, size, "ours",
      [text, needle] { return containsCaseInsensitive(text, needle); });
#if QUORVEL_HAVE_QT
  const QString q = qt(text);
  const QString qSame = qt(same);
  const QString qUpper = qt(upper);
  const QString qNeedle = qt(needle);
  add("text/equal/" + script, size, "qt", [q, qSame] { return q == qSame; });
  add("text/compare-ignoring-case/" + script, size, "qt",
      [q, qUpper] { return q.compare(qUpper, Qt::CaseInsensitive) == 0; });
  add("text/contains/" + script, size, "qt", [q, qNeedle] { return q.contains(qNeedle); });
  add("text/contains-ignoring-case/" + script, size, "qt",
      [q, qNeedle] { return q.contains(qNeedle, Qt::CaseInsensitive); });
#endif
}

void addPieces(const std::string& script, std::size_t size, const String& text) {
  add("text/split/" + script, size, "ours", [text] { return componentsSeparatedBy(text, StringView(u" ")); });
  add("text/remove-characters/" + script, size, "ours", [text] { return separatedBy(text, u" -"); });
  add("text/replace/" + script, size, "ours", [text] { return replacingOccurrences(text, u" ", u", "); });
  add("text/count-clusters/" + script, size, "ours", [text] { return count(text); });
#if QUORVEL_HAVE_QT
  const QString q = qt(text);
  add("text/split/" + script, size, "qt", [q] { return QStringView(q).split(u' '); });
  add("text/remove-characters/" + script, size, "qt", [q] { return QString(q).remove(u' ').remove(u'-'); });
  add("text/replace/" + script, size, "qt",
      [q] { return QString(q).replace(QStringLiteral(" "), QStringLiteral(", ")); });
#endif
}

void addMatching(const std::string& script, std::size_t size, const String& text) {
  const String needle = StringView(text).sub(text.size() / 2, 3);
  const auto expression = *NSRegularExpression::withPattern(needle, RegularExpressionOptions::CaseInsensitiveLiteral);
  add("regex/literal-ignoring-case/" + script, size, "ours",
      [text, expression] { return expression.matchRanges(text); });
  add("regex/words/" + script, size, "ours", [text] { return StringUtils::matches(text, u"zzz\\s+\\d"); });
  add("regex/is-number/" + script, size, "ours", [text] { return StringUtils::isNumber(text); });
#if QUORVEL_HAVE_QT
  const QString q = qt(text);
  const QRegularExpression literal(QRegularExpression::escape(qt(needle)), QRegularExpression::CaseInsensitiveOption);
  const QRegularExpression words(QStringLiteral("zzz\\s+\\d"), QRegularExpression::CaseInsensitiveOption);
  const QRegularExpression number(QStringLiteral("^\\d+$"), QRegularExpression::CaseInsensitiveOption);
  add("regex/literal-ignoring-case/" + script, size, "qt", [q, literal] {
    std::vector<NSRange> ranges;
    for (const QRegularExpressionMatch& match : literal.globalMatch(q)) {
      ranges.push_back(
          {static_cast<std::uint64_t>(match.capturedStart()), static_cast<std::uint64_t>(match.capturedLength())});
    }
    return ranges;
  });
  add("regex/words/" + script, size, "qt", [q, words] { return words.match(q).hasMatch(); });
  add("regex/is-number/" + script, size, "qt", [q, number] { return number.match(q).hasMatch(); });
#endif
}

void addEncoding(const std::string& script, std::size_t size, const String& text) {
  const String encoded = *urlEncodeString(text);
  add("encoding/percent-encode/" + script, size, "ours", [text] { return urlEncodeString(text); });
  add("encoding/percent-decode/" + script, size, "ours", [encoded] { return urlDecodeString(encoded); });
#if QUORVEL_HAVE_QT
  const QString q = qt(text);
  const QByteArray qEncoded = QUrl::toPercentEncoding(q);
  add("encoding/percent-encode/" + script, size, "qt", [q] { return QUrl::toPercentEncoding(q); });
  add("encoding/percent-decode/" + script, size, "qt", [qEncoded] { return QUrl::fromPercentEncoding(qEncoded); });
#endif
}

void addQueries() {
  Dictionary record;
  for (int i = 0; i < 10; ++i) record.set(String::fromASCII("key" + std::to_string(i)), u"a value & more");
  const String query = *queryString(record);
  add("encoding/query-build", 10, "ours", [record] { return queryString(record); });
  add("encoding/query-parse", 10, "ours", [query] { return parseQuery(query); });
#if QUORVEL_HAVE_QT
  add("encoding/query-build", 10, "qt", [] {
    QUrlQuery built;
    for (int i = 0; i < 10; ++i) built.addQueryItem(QStringLiteral("key%1").arg(i), QStringLiteral("a value & more"));
    return built.toString(QUrl::FullyEncoded);
  });
  const QString q = qt(query).mid(1);
  add("encoding/query-parse", 10, "qt", [q] { return QUrlQuery(q).queryItems(QUrl::FullyDecoded); });
#endif
}

void addFormatting() {
  add("format/byte-size", 1, "ours", [value = 10000000.0]() mutable { return humanReadableSize(Number(value += 1)); });
  add("format/duration", 1, "ours", [value = 3661.0]() mutable { return QVStringTimeIntervalInSeconds(value += 1); });
#if QUORVEL_HAVE_QT
  const QLocale locale = QLocale::c();
  add("format/byte-size", 1, "qt", [locale, value = qint64{10000000}]() mutable {
    return locale.formattedDataSize(++value, 1, QLocale::DataSizeTraditionalFormat);
  });
  add("format/duration", 1, "qt", [value = 3661]() mutable {
    return QTime::fromMSecsSinceStartOfDay(++value % 86400 * 1000).toString(QStringLiteral("h:mm:ss"));
  });
#endif
}

void addAll() {
  for (const auto& [script, name] : kScripts) {
    for (const std::size_t size : kSizes) {
      const String sample = text(script, size);
      addConversions(name, size, sample);
      addTrimming(name, size, sample);
      addComparison(name, size, sample);
      addPieces(name, size, sample);
      addMatching(name, size, sample);
      addEncoding(name, size, sample);
    }
  }
  addQueries();
  addFormatting();
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  quorvel::bench::addAll();
  return quorvel::bench::run(argc, argv);
}
