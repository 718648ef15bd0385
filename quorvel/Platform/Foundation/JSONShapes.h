// The keys of dictionaries, in the order in which they are written and as they stand in the text. Records of one kind
// have the same keys: they are sorted and escaped once. Included by sources of the platform alone.
#pragma once

#include <quorvel/Platform/Foundation/JSONSink.h>

namespace quorvel::json {

template <class Unit>
class Shape {
 public:
  static constexpr std::size_t kMostKeys = 24;

  /// True when the entries have the keys, in the same order, that this shape was made of: equal as bytes. Equal texts
  /// may differ so, and are then put in order anew.
  [[nodiscard]] bool fits(const Entry* entries, std::size_t count) const {
    if (count != count_) return false;
    for (std::size_t i = 0; i < count; ++i) {
      if (std::memcmp(static_cast<const void*>(&entries[i].key), keys_[i], sizeof keys_[i]) != 0) return false;
    }
    return true;
  }

  /// False for a key that is no string or not well-formed.
  bool make(const Entry* entries, std::size_t count, bool sorted, std::string_view behindKey) {
    count_ = 0;
    for (std::size_t i = 0; i < count; ++i) {
      if (!entries[i].key.isString()) return false;
      std::memcpy(keys_[i], static_cast<const void*>(&entries[i].key), sizeof keys_[i]);
      order_[i] = static_cast<std::uint8_t>(i);
    }
    if (sorted) {
      std::sort(order_, order_ + count,
                [entries](std::size_t a, std::size_t b) { return entries[a].key.text() < entries[b].key.text(); });
    }
    Sink<Unit> sink;
    for (std::size_t i = 0; i < count; ++i) {
      if (!sink.putQuoted(entries[order_[i]].key)) return false;
      sink.putASCII(behindKey);
      ends_[i] = sink.size();
    }
    text_.assign(sink.begin(), sink.size());
    text_.append(Sink<Unit>::kSlack, Unit{});
    count_ = count;
    return true;
  }

  /// The place among the entries of the one that is written as number `index`.
  [[nodiscard]] std::size_t place(std::size_t index) const { return order_[index]; }
  void putKey(std::size_t index, Sink<Unit>& sink) const {
    const std::size_t from = index == 0 ? 0 : ends_[index - 1];
    sink.putPadded(text_.data() + from, ends_[index] - from);
  }

 private:
  std::size_t count_ = 0;
  unsigned char keys_[kMostKeys][sizeof(Value)];
  std::uint8_t order_[kMostKeys];
  std::size_t ends_[kMostKeys];
  std::basic_string<Unit> text_;
};

/// The shapes met last. One that an open dictionary uses is not made over.
template <class Unit>
class Shapes {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  Shapes(bool sorted, bool pretty) : sorted_(sorted), behindKey_(pretty ? " : " : ":") {}

  /// The number of the shape of the entries, in use from now on; kNone when there is no place for it. `valid` becomes
  /// false when the keys cannot be written.
  std::uint32_t use(const Entry* entries, std::size_t count, bool& valid) {
    const std::uint32_t slot = slotOf(entries, count);
    if (count > Shape<Unit>::kMostKeys) return kNone;
    if (!shapes_[slot].fits(entries, count)) {
      if (users_[slot] != 0) return kNone;
      valid = shapes_[slot].make(entries, count, sorted_, behindKey_);
      if (!valid) return kNone;
    }
    ++users_[slot];
    return slot;
  }
  void leave(std::uint32_t slot) { --users_[slot]; }
  [[nodiscard]] const Shape<Unit>& operator[](std::uint32_t slot) const { return shapes_[slot]; }

 private:
  static constexpr std::size_t kSlots = 8;

  static std::uint32_t slotOf(const Entry* entries, std::size_t count) {
    std::uint64_t head;
    std::uint64_t tail;
    std::memcpy(&head, static_cast<const void*>(&entries[0].key), sizeof head);
    std::memcpy(&tail, static_cast<const void*>(&entries[count - 1].key), sizeof tail);
    return static_cast<std::uint32_t>((head ^ tail * 3 ^ count) * 0x9E3779B97F4A7C15 >> 61);
  }

  bool sorted_;
  std::string_view behindKey_;
  std::uint32_t users_[kSlots] = {};
  Shape<Unit> shapes_[kSlots];
};

}  // namespace quorvel::json
