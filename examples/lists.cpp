// Lists of records merged, split and compared, and where two replies of a server first differ.
#include <iostream>

#include <quorvel/Extensions/Foundation/Array+Extension.h>
#include <quorvel/Extensions/Foundation/DeepEquality.h>
#include <quorvel/Extensions/Foundation/NSArray+Additions.h>
#include <quorvel/Platform/Foundation/FirstDifference.h>
#include <quorvel/Utility/CollectionUtils.h>

using namespace quorvel;

void printDifference(const Value& a, const Value& b) {
  const auto difference = firstDifference(a, b);
  std::cout << (difference ? "differ at " : "same");
  if (difference)
    std::cout << "'" << difference->pointer << "': " << difference->first << " and " << difference->second;
  std::cout << '\n';
}

int main() {
  std::cout << std::boolalpha << CollectionUtils::isEqualList(List{1, 1, 2}, List{2, 2, 1}) << ' '
            << NSArrayAdditions::isEqualArray(List{1, List{2}}, List{1.0, List{2}}) << ' '
            << NSArrayAdditions::isEqualArray(List{1, 2}, List{2, 1}) << '\n';
  std::cout << filteredNotEmptyStrings(List{u"a", u" ", 3, u" b"}) << '\n'
            << *NSArrayAdditions::excludeObjects(List{u"b"}, List{u"a", u"b", u"a"}) << '\n'
            << *NSArrayAdditions::mergeObjects(List{3, 1}, List{2, 3}, nil) << '\n'
            << removeDuplicates(List{3, 1, 3, 2, 1}) << '\n';
  const List pages{1, 2, 3, 4, 5};
  for (const auto& slice : split(pages, 2)) std::cout << slice.size() << ' ';
  std::cout << '\n';
  const Dictionary sent{{u"rooms", List{Dictionary{{u"id", 1}, {u"unread", 3}}}}, {u"a/b", u"é"}};
  const Dictionary same{{u"a/b", u"é"}, {u"rooms", List{Dictionary{{u"unread", 3.0}, {u"id", 1}}}}};
  printDifference(sent, same);
  printDifference(sent, Dictionary{{u"rooms", List{Dictionary{{u"id", 1}, {u"unread", 4}}}}, {u"a/b", u"é"}});
  printDifference(sent, Dictionary{{u"rooms", sent[u"rooms"]}, {u"a/b", u"e\u0301"}});
}
