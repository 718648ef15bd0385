// NSArray(Additions): emptiness, blank texts left out, and lists made distinct, merged and excluded.
// Not here: ordered deep equality (DeepEquality.h), the value-type operations (Array+Extension.h).
//
// An absent list of descriptors and an empty one sort by nothing, except where an operation says otherwise.
#pragma once

#include <quorvel/Platform/Foundation/NSSortDescriptor.h>

namespace quorvel {

namespace NSArrayAdditions {

/// `isNotEmpty:`: true for a list with at least one element.
[[nodiscard]] bool isNotEmpty(const Value& value);
/// `isEmpty:`: the negation of `isNotEmpty:`; true for nil and for what is no list.
[[nodiscard]] bool isEmpty(const Value& value);

/// `distinctArray:keyPath:sortDescriptors:`: the elements without those whose value at the key path is a number or a
/// text equal to that of an element before, sorted by the descriptors. An element with no such value, or one of another
/// kind, stays. nil for a list that is nil or empty. Linear before it sorts.
[[nodiscard]] std::optional<List> distinctArray(const std::optional<List>& list, StringView keyPath,
                                                const std::optional<SortDescriptors>& sortDescriptors);

/// `mergeObjects:with:sortDescriptors:`: the elements of both lists, equal ones once, sorted by the descriptors; by
/// themselves, ascending, when `sortDescriptors` is nil. Unsorted they are those of `second`, then those that `first`
/// adds. nil when both lists are nil or empty.
[[nodiscard]] std::optional<List> mergeObjects(const std::optional<List>& first, const std::optional<List>& second,
                                               const std::optional<SortDescriptors>& sortDescriptors);

/// `excludeObjects:in:`: the elements of `source`, in order and with their repeats, that `exclude` does not contain;
/// nil when none is left. With nothing to exclude it is the source itself, be it empty or nil. Linear in both.
[[nodiscard]] std::optional<List> excludeObjects(const std::optional<List>& exclude, const std::optional<List>& source);

}  // namespace NSArrayAdditions

/// `filteredNotEmptyStrings`: the strings and attributed strings that hold more than white space and newlines, in order
/// and unchanged; all other elements are left out.
[[nodiscard]] List filteredNotEmptyStrings(const List& list);

}  // namespace quorvel
