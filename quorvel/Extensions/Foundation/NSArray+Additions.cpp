#include <quorvel/Extensions/Foundation/NSArray+Additions.h>
#include <quorvel/Extensions/Foundation/NSString+Additions.h>
#include <quorvel/Platform/Foundation/FirstOccurrences.h>
#include <quorvel/Platform/Foundation/KeyValueCoding.h>
#include <quorvel/Platform/Foundation/NSPredicate.h>

namespace quorvel {
namespace {

bool isNilOrEmpty(const std::optional<List>& list) { return !list || list->isEmpty(); }

List sorted(const List& list, const std::optional<SortDescriptors>& descriptors) {
  return descriptors ? sortedArrayUsingDescriptors(list, *descriptors) : list;
}

}  // namespace

bool NSArrayAdditions::isNotEmpty(const Value& value) { return value.isList() && !value.asList()->isEmpty(); }
bool NSArrayAdditions::isEmpty(const Value& value) { return !isNotEmpty(value); }

std::optional<List> NSArrayAdditions::distinctArray(const std::optional<List>& list, StringView keyPath,
                                                    const std::optional<SortDescriptors>& sortDescriptors) {
  if (isNilOrEmpty(list)) return nil;
  std::vector<Value> keys;
  keys.reserve(list->size());
  for (const Value& element : *list) keys.push_back(valueForKeyPath(element, keyPath));
  FirstOccurrences occurrences(keys.begin(), keys.size());
  List distinct;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    const bool canRepeat = keys[i].isNumber() || keys[i].isString();
    if (!canRepeat || occurrences.insert(i)) distinct.append((*list)[i]);
  }
  return sorted(distinct, sortDescriptors);
}

std::optional<List> NSArrayAdditions::mergeObjects(const std::optional<List>& first, const std::optional<List>& second,
                                                   const std::optional<SortDescriptors>& sortDescriptors) {
  if (isNilOrEmpty(first) && isNilOrEmpty(second)) return nil;
  List all = second.value_or(List());
  all.appendContentsOf(first.value_or(List()));
  FirstOccurrences occurrences(all.begin(), all.size());
  List merged;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (occurrences.insert(i)) merged.append(all[i]);
  }
  return sorted(merged, sortDescriptors ? sortDescriptors : SortDescriptors{{u"self", true}});
}

std::optional<List> NSArrayAdditions::excludeObjects(const std::optional<List>& exclude,
                                                     const std::optional<List>& source) {
  if (isNilOrEmpty(exclude)) return source;
  if (isNilOrEmpty(source)) return nil;
  List left = filteredArrayUsingPredicate(*source, NSPredicate::selfIn(*exclude).negated());
  if (left.isEmpty()) return nil;
  return left;
}

List filteredNotEmptyStrings(const List& list) {
  List result;
  for (const Value& element : list) {
    if (NSStringAdditions::isNotEmpty(element)) result.append(element);
  }
  return result;
}

}  // namespace quorvel
