// Array extension: operations on value-type lists, which are List and the random-access sequences of the standard
// library (std::vector, std::span, std::deque, std::array).
// Not here: the class-level operations (NSArray+Additions.h, Utility/CollectionUtils.h).
//
// What has to find elements takes time linear in both lists where the elements can be hashed, else quadratic.
#pragma once

#include <ranges>
#include <type_traits>
#include <vector>

#include <quorvel/Platform/Foundation/FirstOccurrences.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// A list of whatever elements, no text.
template <class T>
concept ArrayLike = std::ranges::random_access_range<const T> && std::ranges::sized_range<const T> &&
                    !std::convertible_to<const T&, StringView> && !detail::kIsStandardText<T>;
/// A list of elements that can be compared.
template <class T>
concept EquatableArray = ArrayLike<T> && std::equality_comparable<std::ranges::range_value_t<T>>;
/// A list of elements that can be compared and hashed.
template <class T>
concept HashableArray = ArrayLike<T> && HashableElement<std::ranges::range_value_t<T>>;

/// A stretch of a list that keeps the list's indexes. It borrows the elements from the list.
template <std::random_access_iterator Iterator>
class ArraySlice {
 public:
  ArraySlice(Iterator list, std::size_t startIndex, std::size_t endIndex)
      : list_(list), startIndex_(startIndex), endIndex_(endIndex) {}

  [[nodiscard]] std::size_t startIndex() const { return startIndex_; }
  [[nodiscard]] std::size_t endIndex() const { return endIndex_; }
  [[nodiscard]] std::size_t size() const { return endIndex_ - startIndex_; }
  [[nodiscard]] Iterator begin() const { return at(startIndex_); }
  [[nodiscard]] Iterator end() const { return at(endIndex_); }
  /// By the index in the list, from `startIndex()` on.
  [[nodiscard]] decltype(auto) operator[](std::size_t index) const {
    contract(index >= startIndex_ && index < endIndex_, "ArraySlice", "an index outside the slice");
    return *at(index);
  }

 private:
  Iterator at(std::size_t index) const { return list_ + static_cast<std::iter_difference_t<Iterator>>(index); }

  Iterator list_;
  std::size_t startIndex_;
  std::size_t endIndex_;
};

namespace detail {

template <class Array>
using ElementOf = std::ranges::range_value_t<Array>;
template <class Array>
using OccurrencesIn = FirstOccurrences<std::ranges::iterator_t<const Array>>;

template <class Array>
concept Appendable = std::default_initializable<Array> &&
                     requires(Array& array, const ElementOf<Array>& element) { array.push_back(element); };
template <class Array>
struct NewList {
  using Type = std::vector<ElementOf<Array>>;
};
template <Appendable Array>
struct NewList<Array> {
  using Type = Array;
};
template <>
struct NewList<List> {
  using Type = List;
};

}  // namespace detail

/// What operations on such a list answer: the same type of list, or a vector where that type cannot grow.
template <ArrayLike Array>
using NewListOf = typename detail::NewList<Array>::Type;

namespace detail {

/// The elements that `keep(index, element)` wants, in order.
template <ArrayLike Array, class Keep>
NewListOf<Array> filtered(const Array& array, Keep keep) {
  NewListOf<Array> result;
  std::size_t index = 0;
  for (const ElementOf<Array>& element : array) {
    if (!keep(index++, element)) continue;
    if constexpr (std::same_as<Array, List>) {
      result.append(element);
    } else {
      result.push_back(element);
    }
  }
  return result;
}

template <ArrayLike Array>
OccurrencesIn<Array> occurrencesIn(const Array& array) {
  const auto count = static_cast<std::size_t>(std::ranges::size(array));
  OccurrencesIn<Array> occurrences(std::ranges::begin(array), count);
  occurrences.insertAll(count);
  return occurrences;
}

}  // namespace detail

/// `indices(contentsOf:)`: for each element of `contents`, in its order, the index of the element's first occurrence in
/// the receiver; elements that the receiver lacks are skipped.
///
///     indices(std::vector{'a', 'b', 'c'}, std::vector{'c', 'x', 'a', 'c'})   // 2, 0, 2
template <EquatableArray Array, EquatableArray Contents>
  requires std::same_as<detail::ElementOf<Array>, detail::ElementOf<Contents>>
[[nodiscard]] std::vector<std::size_t> indices(const Array& array, const Contents& contents) {
  const auto occurrences = detail::occurrencesIn(array);
  std::vector<std::size_t> result;
  for (const detail::ElementOf<Array>& element : contents) {
    if (const std::size_t index = occurrences.find(element); index != occurrences.kNone) result.push_back(index);
  }
  return result;
}

/// `remove(_:)`: removes the first occurrence of the element, if there is one.
template <EquatableArray Array>
  requires requires(Array& array) { array.erase(array.begin()); }
void remove(Array& array, const detail::ElementOf<Array>& element) {
  const auto found = std::ranges::find(array, element);
  if (found != std::ranges::end(array)) array.erase(found);
}
inline void remove(List& list, const Value& element) {
  const Value* found = std::ranges::find(list, element);
  if (found != list.end()) list.remove(static_cast<std::size_t>(found - list.begin()));
}

/// `subtract(_:)`: the receiver's elements, in order and with their repeats, that `other` does not contain.
template <EquatableArray Array, EquatableArray Other>
  requires std::same_as<detail::ElementOf<Array>, detail::ElementOf<Other>>
[[nodiscard]] NewListOf<Array> subtract(const Array& array, const Other& other) {
  const auto occurrences = detail::occurrencesIn(other);
  return detail::filtered(array, [&](std::size_t, const auto& element) { return !occurrences.contains(element); });
}

/// `intersection(_:)`: the receiver's elements, in order and with their repeats, that `other` contains.
template <EquatableArray Array, EquatableArray Other>
  requires std::same_as<detail::ElementOf<Array>, detail::ElementOf<Other>>
[[nodiscard]] NewListOf<Array> intersection(const Array& array, const Other& other) {
  const auto occurrences = detail::occurrencesIn(other);
  return detail::filtered(array, [&](std::size_t, const auto& element) { return occurrences.contains(element); });
}

/// `subscript(safe:)`: the element at the index, nil when there is none; negative indexes included.
template <ArrayLike Array>
[[nodiscard]] std::optional<detail::ElementOf<Array>> subscriptSafe(const Array& array, std::int64_t index) {
  if (index < 0 || static_cast<std::uint64_t>(index) >= std::ranges::size(array)) return std::nullopt;
  return std::ranges::begin(array)[static_cast<std::ranges::range_difference_t<const Array>>(index)];
}
[[nodiscard]] inline Value subscriptSafe(const List& list, std::int64_t index) {
  return index < 0 || static_cast<std::uint64_t>(index) >= list.size() ? Value()
                                                                       : list[static_cast<std::size_t>(index)];
}

/// `split(size:)`: slices of `size` elements one after the other, the last one with what is left. No slices for an
/// empty receiver and for a size that is not positive. The slices keep the receiver's indexes and borrow its elements,
/// so a list that is about to die is not taken.
template <class Array>
  requires ArrayLike<std::remove_cvref_t<Array>> && std::ranges::borrowed_range<Array>
[[nodiscard]] auto split(Array&& array, std::int64_t size) {
  using Slice = ArraySlice<std::ranges::iterator_t<const std::remove_reference_t<Array>>>;
  std::vector<Slice> slices;
  if (size <= 0) return slices;
  const auto count = static_cast<std::size_t>(std::ranges::size(array));
  const auto step = static_cast<std::size_t>(size);
  for (std::size_t start = 0; start < count; start += std::min(step, count - start)) {
    slices.emplace_back(std::ranges::begin(std::as_const(array)), start, start + std::min(step, count - start));
  }
  return slices;
}

/// `removeDuplicates()`: the receiver without what is equal to an element before it.
template <HashableArray Array>
[[nodiscard]] NewListOf<Array> removeDuplicates(const Array& array) {
  detail::OccurrencesIn<Array> occurrences(std::ranges::begin(array), std::ranges::size(array));
  return detail::filtered(array, [&](std::size_t index, const auto&) { return occurrences.insert(index); });
}

}  // namespace quorvel
