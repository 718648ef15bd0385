// NSArray(Additions) and NSDictionary(Addtion): deep equality of lists and dictionaries that may be nil.
// Not here: where they differ (Platform/Foundation/FirstDifference.h), comparison whatever the order
// (Utility/CollectionUtils.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

// Both compare what is nested: lists in order, dictionaries by key, numbers by value whatever their kind, texts unit by
// unit. nil equals nil alone. One loop without recursion, linear in the size of both, shared parts counted once.

namespace NSArrayAdditions {

/// `isEqualArray:to:`: true when both are nil, or lists with the same elements in the same order.
[[nodiscard]] bool isEqualArray(const std::optional<List>& first, const std::optional<List>& second);

}  // namespace NSArrayAdditions

namespace NSDictionaryAddtion {

/// `isEqualDictionary:to:`: true when both are nil, or dictionaries with the same keys and equal values under each.
[[nodiscard]] bool isEqualDictionary(const std::optional<Dictionary>& first, const std::optional<Dictionary>& second);

}  // namespace NSDictionaryAddtion

}  // namespace quorvel
