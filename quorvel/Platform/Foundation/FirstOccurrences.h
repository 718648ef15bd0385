// FirstOccurrences: where elements first stand in a list, by hashing where they can be hashed.
// Not here: dictionaries, which keep an index of their own (Value.h).
#pragma once

#include <algorithm>
#include <bit>
#include <concepts>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {
namespace detail {

template <class T>
inline constexpr bool kIsStandardText = false;
template <class Unit, class Traits, class Allocator>
inline constexpr bool kIsStandardText<std::basic_string<Unit, Traits, Allocator>> =
    std::same_as<Traits, std::char_traits<Unit>>;
template <class Unit, class Traits>
inline constexpr bool kIsStandardText<std::basic_string_view<Unit, Traits>> =
    std::same_as<Traits, std::char_traits<Unit>>;

template <class T>
concept HashesItself = requires(const T& value) {
  { value.hash() } -> std::same_as<std::uint64_t>;
};
template <class T>
concept OwnText = std::same_as<T, String> || std::same_as<T, StringView>;
template <class T>
concept StandardHash = requires(const T& value) {
  { std::hash<T>()(value) } -> std::convertible_to<std::size_t>;
};

}  // namespace detail

/// Elements that can be compared, and whose equal values have equal hashes: a member `hash()`, texts, std::hash.
template <class T>
concept HashableElement =
    std::equality_comparable<T> && (detail::HashesItself<T> || detail::OwnText<T> || detail::StandardHash<T>);

/// Seeded, so that nobody can prepare colliding texts or numbers.
template <HashableElement T>
[[nodiscard]] std::uint64_t elementHash(const T& element) {
  if constexpr (detail::HashesItself<T>) {
    return element.hash();
  } else if constexpr (detail::OwnText<T> || detail::kIsStandardText<T>) {
    return hashing::bytes(element.data(), element.size() * sizeof(*element.data()));
  } else {
    return hashing::mix(std::hash<T>()(element), 5);
  }
}

/// Over the elements of a random-access sequence, which must stay as it is. An element that is not equal to itself
/// (NaN) is never found. Elements without a hash are looked for one by one, and so are those of short lists.
template <std::random_access_iterator Iterator>
class FirstOccurrences {
 public:
  using Element = std::iter_value_t<Iterator>;
  static constexpr std::size_t kNone = SIZE_MAX;
  /// Up to here looking at each element is faster than hashing.
  static constexpr std::size_t kLinearUpTo = 8;

  /// Room for `count` elements from `first` on, none of them known yet.
  FirstOccurrences(Iterator first, std::size_t count) : first_(first) {
    contract(count < UINT32_MAX, "FirstOccurrences", "a list of more than 2^32 - 2 elements");
    if (HashableElement<Element> && count > kLinearUpTo) slots_.resize(std::bit_ceil(count * 2));
  }

  /// Makes the element at `index` known, unless an equal one is already: false then. Indexes ascend.
  bool insert(std::size_t index) {
    const Element& element = first_[difference(index)];
    if (isUnequalToItself(element)) return true;
    if (slots_.empty()) {
      const bool isNew = linearFind(element) == kNone;
      end_ = index + 1;
      return isNew;
    }
    const std::uint64_t hash = hashOf(element);
    std::uint64_t& slot = slots_[slotOf(element, hash)];
    if (slot != 0) return false;
    slot = (hash & kHashBits) | (index + 1);
    return true;
  }
  /// All of `count` elements.
  void insertAll(std::size_t count) {
    if (slots_.empty()) {
      end_ = count;
      return;
    }
    for (std::size_t index = 0; index < count; ++index) insert(index);
  }

  /// The index of the first known element that is equal, or `kNone`.
  [[nodiscard]] std::size_t find(const Element& element) const {
    if (slots_.empty()) return linearFind(element);
    if (isUnequalToItself(element)) return kNone;
    const std::uint64_t slot = slots_[slotOf(element, hashOf(element))];
    return slot == 0 ? kNone : static_cast<std::size_t>(slot & ~kHashBits) - 1;
  }
  [[nodiscard]] bool contains(const Element& element) const { return find(element) != kNone; }

 private:
  /// A slot holds the upper half of the hash and the index + 1; 0 is free.
  static constexpr std::uint64_t kHashBits = 0xFFFFFFFF00000000;

  static std::iter_difference_t<Iterator> difference(std::size_t index) {
    return static_cast<std::iter_difference_t<Iterator>>(index);
  }
  static bool isUnequalToItself(const Element& element) {
    if constexpr (std::floating_point<Element>) {
      return element != element;
    } else {
      return false;
    }
  }
  std::size_t linearFind(const Element& element) const {
    for (std::size_t index = 0; index < end_; ++index) {
      if (first_[difference(index)] == element) return index;
    }
    return kNone;
  }
  static std::uint64_t hashOf(const Element& element) {
    if constexpr (HashableElement<Element>) {
      return elementHash(element);
    } else {
      return 0;  // there are no slots
    }
  }
  /// Where an equal element has its slot, or the free one where it belongs.
  std::size_t slotOf(const Element& element, std::uint64_t hash) const {
    for (auto at = static_cast<std::size_t>(hash);; ++at) {
      const std::size_t place = at & (slots_.size() - 1);
      const std::uint64_t slot = slots_[place];
      if (slot == 0) return place;
      const bool isCandidate = ((slot ^ hash) & kHashBits) == 0;
      if (isCandidate && first_[difference(static_cast<std::size_t>(slot & ~kHashBits) - 1)] == element) return place;
    }
  }

  Iterator first_;
  std::size_t end_ = 0;  // of the elements that are looked at one by one
  std::vector<std::uint64_t> slots_;
};

}  // namespace quorvel
