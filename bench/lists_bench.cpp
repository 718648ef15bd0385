// Lists as sets, made distinct and compared: texts as server records hold them, short lists and long ones.
#include <algorithm>
#include <unordered_set>

#include <bench/Cases.h>

#include <quorvel/Extensions/Foundation/Array+Extension.h>
#include <quorvel/Extensions/Foundation/DeepEquality.h>
#include <quorvel/Utility/CollectionUtils.h>

#if QUORVEL_HAVE_QT
#include <QList>
#include <QSet>
#include <QString>
#include <QVariant>
#endif

namespace quorvel::bench {
namespace {

/// `count` names of twelve units, most of them twice; those of two lists with different starts overlap by half.
std::vector<std::u16string> names(std::size_t count, std::size_t start) {
  const String words = text(Script::Korean, count + start + 16);
  std::vector<std::u16string> result;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t number = start + i % (count / 2 + 1);
    std::u16string name(words.data() + number, 6);
    for (std::size_t digits = number + 100'000; digits > 0; digits /= 10)
      name += static_cast<char16_t>(u'0' + digits % 10);
    result.push_back(name);
  }
  return result;
}

List listOf(const std::vector<std::u16string>& texts) {
  List list;
  for (const std::u16string& text : texts) list.append(String(text));
  return list;
}

/// The same elements in blocks of their own, so that no comparison is cut short.
List recordsOf(const std::vector<std::u16string>& texts) {
  List list;
  for (const std::u16string& text : texts) list.append(Dictionary{{u"name", String(text)}, {u"size", text.size()}});
  return list;
}

void addOurs(std::size_t size, const std::vector<std::u16string>& a, const std::vector<std::u16string>& b) {
  const List first = listOf(a);
  const List second = listOf(b);
  add("lists/subtract", size, "ours", [=] { return subtract(first, second); });
  add("lists/remove-duplicates", size, "ours", [=] { return removeDuplicates(first); });
  add("lists/equal-members", size, "ours", [=, copy = listOf(a)] { return CollectionUtils::isEqualList(first, copy); });
  add("lists/deep-equal", size, "ours",
      [left = recordsOf(a), right = recordsOf(a)] { return NSArrayAdditions::isEqualArray(left, right); });
}

void addStandard(std::size_t size, const std::vector<std::u16string>& a, const std::vector<std::u16string>& b) {
  add("lists/subtract", size, "std", [=] {
    const std::unordered_set<std::u16string_view> known(b.begin(), b.end());
    std::vector<std::u16string> result;
    std::ranges::copy_if(a, std::back_inserter(result), [&](const auto& text) { return !known.contains(text); });
    return result;
  });
  add("lists/remove-duplicates", size, "std", [=] {
    std::unordered_set<std::u16string_view> known;
    std::vector<std::u16string> result;
    std::ranges::copy_if(a, std::back_inserter(result), [&](const auto& text) { return known.insert(text).second; });
    return result;
  });
  add("lists/equal-members", size, "std", [=] {
    const std::unordered_set<std::u16string_view> known(a.begin(), a.end());
    return std::ranges::all_of(a, [&](const auto& text) { return known.contains(text); });
  });
}

#if QUORVEL_HAVE_QT

QList<QString> qtListOf(const std::vector<std::u16string>& texts) {
  QList<QString> list;
  for (const std::u16string& text : texts) list.append(QString::fromStdU16String(text));
  return list;
}

QVariantList qtRecordsOf(const std::vector<std::u16string>& texts) {
  QVariantList list;
  for (const std::u16string& text : texts) {
    list.append(QVariant(QVariantMap{{QStringLiteral("name"), QString::fromStdU16String(text)},
                                     {QStringLiteral("size"), static_cast<qlonglong>(text.size())}}));
  }
  return list;
}

void addQt(std::size_t size, const std::vector<std::u16string>& a, const std::vector<std::u16string>& b) {
  const QList<QString> first = qtListOf(a);
  const QList<QString> second = qtListOf(b);
  add("lists/subtract", size, "qt", [=] {
    const QSet<QString> known(second.begin(), second.end());
    QList<QString> result;
    std::copy_if(first.begin(), first.end(), std::back_inserter(result),
                 [&](const QString& text) { return !known.contains(text); });
    return result;
  });
  add("lists/remove-duplicates", size, "qt", [=] {
    QStringList result = first;
    result.removeDuplicates();
    return result;
  });
  add("lists/equal-members", size, "qt", [=] {
    const QSet<QString> known(first.begin(), first.end());
    return std::all_of(first.begin(), first.end(), [&](const QString& text) { return known.contains(text); });
  });
  add("lists/deep-equal", size, "qt", [left = qtRecordsOf(a), right = qtRecordsOf(a)] { return left == right; });
}

#endif

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  using namespace quorvel::bench;
  for (const std::size_t size : kSizes) {
    const auto a = names(size, 0);
    const auto b = names(size, size / 4);
    addOurs(size, a, b);
    addStandard(size, a, b);
#if QUORVEL_HAVE_QT
    addQt(size, a, b);
#endif
  }
  return quorvel::bench::run(argc, argv);
}
