#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/Array+Extension.h>
#include <quorvel/Extensions/Foundation/DeepEquality.h>
#include <quorvel/Extensions/Foundation/IndexPath+Extension.h>
#include <quorvel/Extensions/Foundation/NSArray+Additions.h>
#include <quorvel/Extensions/Foundation/NSIndexSet+Array.h>
#include <quorvel/Utility/CollectionUtils.h>

namespace quorvel::command {
namespace {

constexpr const char* kClass = "CollectionUtils";
constexpr const char* kList = "NSArray(Additions)";
constexpr const char* kValue = "Array extension";

std::vector<List> splitToLists(const List& list, std::int64_t size) {
  std::vector<List> lists;
  for (const auto& slice : split(list, size)) {
    List& copy = lists.emplace_back();
    for (const Value& element : slice) copy.append(element);
  }
  return lists;
}

constexpr Operation kRows[] = {
    op<&CollectionUtils::isEmptyList>(kClass, "isEmptyList:", "list", "whether the list is nil or empty", "[[]]"),
    op<&CollectionUtils::isNotEmptyList>(kClass, "isNotEmptyList:", "list", "the negation of isEmptyList:", "[[1]]"),
    op<&CollectionUtils::isEmptyMap>(kClass, "isEmptyMap:", "map", "whether the dictionary is nil or empty", "[null]"),
    op<&CollectionUtils::isNotEmptyMap>(kClass, "isNotEmptyMap:", "map",
                                        "the negation of isEmptyMap:", R"([{"a": 1}])"),
    op<&CollectionUtils::isEqualList>(kClass, "isEqualList:withCompare:", "first, second",
                                      "the same count and members, whatever their order and repeats",
                                      "[[1, 1, 2], [2, 2, 1]]"),
    op<&CollectionUtils::isNotEqualList>(kClass, "isNotEqualList:withCompare:", "first, second",
                                         "the negation of isEqualList:withCompare:", R"([[1], ["1"]])"),

    op<&NSArrayAdditions::isNotEmpty>(kList, "isNotEmpty:", "value", "whether the value is a list with an element",
                                      "[[1]]"),
    op<&NSArrayAdditions::isEmpty>(kList, "isEmpty:", "value", "the negation of isNotEmpty:", R"(["text"])"),
    op<&filteredNotEmptyStrings>(kList, "filteredNotEmptyStrings", "list", "the texts that are not blank",
                                 R"([["a", " ", 3, "", " b"]])"),
    op<&NSArrayAdditions::distinctArray>(kList,
                                         "distinctArray:keyPath:sortDescriptors:", "list, keyPath, sortDescriptors",
                                         "the first element of each key, sorted by [key path, ascending] pairs",
                                         R"([[{"k": 3}, {"k": 1}, {"k": 3}], "k", [["k", true]]])"),
    op<&NSArrayAdditions::mergeObjects>(kList, "mergeObjects:with:sortDescriptors:", "first, second, sortDescriptors",
                                        "the elements of both once, sorted; by themselves for null",
                                        "[[3, 1], [2, 3], null]"),
    op<&NSArrayAdditions::excludeObjects>(kList, "excludeObjects:in:", "exclude, source",
                                          "the source without what is excluded; nil if nothing is left",
                                          R"([["b"], ["a", "b", "a"]])"),
    op<&NSArrayAdditions::isEqualArray>(kList, "isEqualArray:to:", "first, second", "ordered deep equality",
                                        "[[1, [2, 3]], [1.0, [2, 3]]]"),
    op<&NSDictionaryAddtion::isEqualDictionary>("NSDictionary(Addtion)", "isEqualDictionary:to:", "first, second",
                                                "deep equality by key",
                                                R"([{"a": [1, 2], "b": 1}, {"b": 1, "a": [1, 2]}])"),
    op<&firstDifference>("deep equality", "firstDifference", "a, b",
                         "the JSON Pointer and both values where the two first differ",
                         R"([{"a": [1, {"b": 2}]}, {"a": [1, {"b": 3}]}])"),

    op<&arrayFromIndexesWithSection>("NSIndexSet(Array)", "arrayFromIndexesWithSection:", "set, section",
                                     "an index path [section, index] for each index", "[[0, 4], 2]"),
    op<&mapToZeroSection>("IndexPath extension", "mapToZeroSection()", "path", "the same row in section 0", "[[2, 4]]"),

    op<[](const List& array, const List& contents) { return indices(array, contents); }>(
        kValue, "indices(contentsOf:)", "array, contents", "where the contents' elements first stand in the list",
        R"([["a", "b", "c"], ["c", "x", "a", "c"]])"),
    op<static_cast<void (*)(List&, const Value&)>(&remove)>(kValue, "remove(_:)", "array, element",
                                                            "removes the element's first occurrence", "[[1, 2, 1], 1]"),
    op<[](const List& array, const List& other) { return subtract(array, other); }>(
        kValue, "subtract(_:)", "array, other", "the elements that the other list lacks", "[[1, 2, 2, 3], [2]]"),
    op<[](const List& array, const List& other) { return intersection(array, other); }>(
        kValue, "intersection(_:)", "array, other", "the elements that the other list holds too",
        "[[1, 2, 2, 3], [2]]"),
    op<static_cast<Value (*)(const List&, std::int64_t)>(&subscriptSafe)>(
        kValue, "subscript(safe:)", "array, index", "the element at the index, nil outside", "[[1, 2], 2]"),
    op<[](const List& array, std::int64_t size) { return splitToLists(array, size); }>(
        kValue, "split(size:)", "array, size", "slices of a size, the last one shorter", "[[1, 2, 3, 4, 5], 2]"),
    op<[](const List& array) { return removeDuplicates(array); }>(
        kValue, "removeDuplicates()", "array", "each element's first occurrence", "[[3, 1, 3, 2, 1]]"),
};

}  // namespace

std::span<const Operation> listOperations() { return kRows; }

}  // namespace quorvel::command
