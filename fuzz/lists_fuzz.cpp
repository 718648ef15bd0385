// Operations on lists against the rules carried out word by word, on small lists of values of all kinds.
#include <algorithm>
#include <vector>

#include <fuzz/FuzzInput.h>

#include <quorvel/Extensions/Foundation/Array+Extension.h>
#include <quorvel/Extensions/Foundation/DeepEquality.h>
#include <quorvel/Extensions/Foundation/NSArray+Additions.h>
#include <quorvel/Platform/Foundation/FirstDifference.h>
#include <quorvel/Platform/Foundation/KeyValueCoding.h>
#include <quorvel/Utility/CollectionUtils.h>

using namespace quorvel;
using fuzz::require;

namespace {

Value leaf(fuzz::Input& input) {
  const std::uint8_t byte = input.byte();
  switch (byte % 8) {
    case 0:
      return null;
    case 1:
      return byte >= 128;
    case 2:
      return byte / 64;
    case 3:
      return static_cast<double>(byte / 32) / 2;
    case 4:
      return Date{static_cast<double>(byte / 64)};
    case 5:
      return StringView(u"~1/\u00E9").sub(byte / 64, 2);
    default:
      return Value(StringView(u"abcd").sub(byte / 64, 1));
  }
}

/// Lists and dictionaries to a depth of three; parts made before are shared.
Value nested(fuzz::Input& input, std::vector<Value>& made, int depth) {
  const std::uint8_t byte = input.byte();
  if (!made.empty() && byte % 5 == 0) return made[byte / 5 % made.size()];
  if (depth == 3 || byte % 5 >= 3) return leaf(input);
  Value value = List{};
  if (byte % 5 == 1) value = Dictionary{};
  for (int left = byte / 5 % 12; left > 0; --left) {
    if (List* list = value.mutableList()) {
      list->append(nested(input, made, depth + 1));
    } else {
      const Value key = leaf(input);
      value.mutableDictionary()->set(key, nested(input, made, depth + 1));
    }
  }
  made.push_back(value);
  return value;
}

List listFrom(fuzz::Input& input, std::vector<Value>& made) {
  List list;
  for (int left = input.byte() % 24; left > 0; --left) list.append(nested(input, made, 1));
  return list;
}

bool contains(const List& list, const Value& value) { return std::ranges::find(list, value) != list.end(); }

List kept(const List& list, const List& other, bool contained) {
  List result;
  for (const Value& value : list) {
    if (contains(other, value) == contained) result.append(value);
  }
  return result;
}

List distinct(const List& list) {
  List result;
  for (const Value& value : list) {
    if (!contains(result, value)) result.append(value);
  }
  return result;
}

bool isSameType(const Value& a, const Value& b) {
  return a.kind() == b.kind() && (!a.isNumber() || a.asNumber()->isBoolean() == b.asNumber()->isBoolean());
}

bool scannedEqual(const List& first, const List& second) {
  if (first.size() != second.size()) return false;
  for (const Value& x : first) {
    bool found = false;
    for (const Value& y : second) {
      if (!isSameType(x, y)) break;
      found = x == y;
      if (found) break;
    }
    if (!found) return false;
  }
  return true;
}

bool isSorted(const List& list) {
  return std::is_sorted(list.begin(), list.end(),
                        [](const Value& a, const Value& b) { return compareValues(a, b) < 0; });
}

/// Deep equality as one reads it, recursing.
bool readEqual(const Value& a, const Value& b) {
  if (a.isList() && b.isList()) {
    return std::equal(a.asList()->begin(), a.asList()->end(), b.asList()->begin(), b.asList()->end(), readEqual);
  }
  if (!a.isDictionary() || !b.isDictionary()) return a == b;
  if (a.asDictionary()->size() != b.asDictionary()->size()) return false;
  return std::all_of(a.asDictionary()->begin(), a.asDictionary()->end(), [&b](const Entry& entry) {
    const Value* other = b.asDictionary()->find(entry.key);
    return other != nullptr && readEqual(entry.value, *other);
  });
}

/// What stands at the place of a first difference whose keys are texts; nil where nothing does.
Value at(const Value& root, StringView pointer) {
  Value value = root;
  for (std::size_t start = 0; start < pointer.size();) {
    std::u16string token;
    std::size_t end = start + 1;
    for (; end < pointer.size() && pointer[end] != u'/'; ++end) {
      token += pointer[end] != u'~' ? pointer[end] : pointer[++end] == u'1' ? u'/' : u'~';
    }
    if (const List* list = value.asList()) {
      const auto index = static_cast<std::int64_t>(std::stoll(std::string(token.begin(), token.end())));
      value = subscriptSafe(List(*list), index);
    } else {
      const Value* entry = value.asDictionary() ? value.asDictionary()->find(StringView(token)) : nullptr;
      value = entry ? Value(*entry) : Value(nil);
    }
    start = end;
  }
  return value;
}

bool hasTextKeysOnly(const Value& value) {
  if (const List* list = value.asList()) return std::all_of(list->begin(), list->end(), hasTextKeysOnly);
  const Dictionary* dictionary = value.asDictionary();
  return !dictionary || std::all_of(dictionary->begin(), dictionary->end(), [](const Entry& entry) {
    return entry.key.isString() && hasTextKeysOnly(entry.value);
  });
}

void checkSets(const List& a, const List& b) {
  require(subtract(a, b) == kept(a, b, false), "subtract");
  require(intersection(a, b) == kept(a, b, true), "intersection");
  require(removeDuplicates(a) == distinct(a), "removeDuplicates");
  std::vector<std::size_t> expected;
  for (const Value& value : b) {
    const Value* found = std::ranges::find(a, value);
    if (found != a.end()) expected.push_back(static_cast<std::size_t>(found - a.begin()));
  }
  require(indices(a, b) == expected, "indices");
  require(CollectionUtils::isEqualList(a, b) == scannedEqual(a, b), "isEqualList");
  const std::optional<List> excluded = NSArrayAdditions::excludeObjects(b, a);
  require(b.isEmpty() ? excluded == a : excluded.value_or(List()) == kept(a, b, false), "excludeObjects");
}

void checkMerging(const List& a, const List& b) {
  List all = b;
  all.appendContentsOf(a);
  const std::optional<List> merged = NSArrayAdditions::mergeObjects(a, b, SortDescriptors{});
  require(merged.value_or(List()) == distinct(all), "mergeObjects keeps the set's order");
  const std::optional<List> sorted = NSArrayAdditions::mergeObjects(a, b, nil);
  require(merged.has_value() == sorted.has_value(), "mergeObjects is nil for nothing alone");
  if (sorted)
    require(isSorted(*sorted) && kept(*merged, *sorted, false).isEmpty(), "mergeObjects sorts what it merges");
}

/// A path is its keys, one after the other.
void checkKeyPath(fuzz::Input& input, const Value& value) {
  static constexpr StringView kKeys[] = {u"a", u"b", u"c", u"d", u"@count", u"@allKeys", u"self", u"~1", u"", u"@"};
  std::u16string path;
  Value expected = value;
  for (int left = input.byte() % 4, i = 0; i <= left; ++i) {
    const StringView key = kKeys[input.byte() % std::size(kKeys)];
    if (i > 0) path += u'.';
    path += key.units();
    expected = valueForKey(expected, key);
  }
  const Value found = valueForKeyPath(value, path);
  require(found == expected && found.kind() == expected.kind(), "a key path follows its keys");
}

void checkEquality(const Value& a, const Value& b) {
  const bool isEqual = readEqual(a, b);
  require((a == b) == isEqual && (b == a) == isEqual, "== is deep equality");
  require(!isEqual || a.hash() == b.hash(), "equal values have equal hashes");
  const std::optional<Difference> difference = firstDifference(a, b);
  require(difference.has_value() != isEqual, "different values have a first difference");
  if (!difference) return;
  require(difference->first != difference->second, "what stands at a first difference is different");
  if (!hasTextKeysOnly(a) || !hasTextKeysOnly(b)) return;
  require(at(a, difference->pointer) == difference->first, "the pointer leads to the first value");
  require(at(b, difference->pointer) == difference->second, "the pointer leads to the second value");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  std::vector<Value> made;
  const List a = listFrom(input, made);
  const List b = listFrom(input, made);
  checkSets(a, b);
  checkMerging(a, b);
  checkEquality(a, b);
  if (!a.isEmpty() && !b.isEmpty()) checkEquality(a[0], b[0]);
  List changed = a;
  if (!changed.isEmpty()) changed.set(input.byte() % changed.size(), leaf(input));
  checkEquality(a, changed);
  checkKeyPath(input, a);
  if (!a.isEmpty()) checkKeyPath(input, a[0]);
  return 0;
}
