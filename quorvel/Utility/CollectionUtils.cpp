#include <algorithm>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/FirstOccurrences.h>
#include <quorvel/Utility/CollectionUtils.h>

namespace quorvel {
namespace {

/// Nothing for a value that has no count.
std::optional<List> elementsOf(const Value& value) {
  if (value.isNil()) return List();
  if (const List* list = value.asList()) return *list;
  const Dictionary* dictionary = value.asDictionary();
  if (!dictionary) return nil;
  List keys;
  keys.reserve(dictionary->size());
  for (const Entry& entry : *dictionary) keys.append(entry.key);
  return keys;
}

/// Whether two values are stored as the same kind: of the numbers, booleans are a kind of their own.
bool areOfSameType(const Value& a, const Value& b) {
  if (a.kind() != b.kind()) return false;
  if (a.isNumber()) return a.asNumber()->isBoolean() == b.asNumber()->isBoolean();
  return a.kind() != Value::Kind::Object || className(a) == className(b);
}

/// Both have the same count, which is not 0.
bool haveSameMembers(const List& first, const List& second) {
  // A scan of `second` ends at its first element of another type: it finds nothing for elements of a type other than
  // that of second[0], and for those it sees the elements before the first one of another type.
  const auto isOfTheType = [&second](const Value& value) { return areOfSameType(value, second[0]); };
  if (!std::ranges::all_of(first, isOfTheType)) return false;
  const auto seen = static_cast<std::size_t>(std::ranges::find_if_not(second, isOfTheType) - second.begin());
  FirstOccurrences<const Value*> occurrences(second.begin(), seen);
  occurrences.insertAll(seen);
  return std::ranges::all_of(first, [&occurrences](const Value& value) { return occurrences.contains(value); });
}

}  // namespace

bool CollectionUtils::isEmptyList(const std::optional<List>& list) { return !list || list->isEmpty(); }
bool CollectionUtils::isNotEmptyList(const std::optional<List>& list) { return !isEmptyList(list); }
bool CollectionUtils::isEmptyMap(const std::optional<Dictionary>& map) { return !map || map->isEmpty(); }
bool CollectionUtils::isNotEmptyMap(const std::optional<Dictionary>& map) { return !isEmptyMap(map); }

bool CollectionUtils::isEqualList(const Value& first, const Value& second) {
  const std::optional<List> a = elementsOf(first);
  const std::optional<List> b = elementsOf(second);
  if (!a || !b) return true;
  if (a->size() != b->size()) return false;
  return a->isEmpty() || haveSameMembers(*a, *b);
}
bool CollectionUtils::isNotEqualList(const Value& first, const Value& second) { return !isEqualList(first, second); }

}  // namespace quorvel
