// Keys of JSON text. Records of one kind repeat their keys, mostly in the same order: a key that was read before costs
// a comparison of its bytes. Included by sources of the platform alone.
#pragma once

#include <quorvel/Platform/Foundation/JSONText.h>

namespace quorvel::json {

template <class Unit>
class KeyReader {
 public:
  KeyReader(Cursor<Unit>& cursor, TextReader<Unit>& text) : cursor_(cursor), text_(text) {}
  KeyReader(const KeyReader&) = delete;
  KeyReader& operator=(const KeyReader&) = delete;
  ~KeyReader() {
    for (; filled_; filled_ &= filled_ - 1) slots_[std::countr_zero(filled_)].key.~Value();
  }

  /// Reads the key whose opening quotation mark stands before the cursor into raw memory. `seen` collects one bit for a
  /// key; `distinct` becomes false when two keys of a dictionary may be equal.
  bool read(Value* place, std::uint64_t& seen, bool& distinct) {
    unsigned slot = next_[previous_];
    if (!isNext(slot)) {
      const Unit* const from = cursor_.at;
      const Unit* const end = endOfPlainKey();
      if (!end) {  // long or escaped: not kept, and equal to whichever key it may be
        distinct = false;
        return text_.read(place);
      }
      slot = slotOf(from, end);
      if (!isHeld(slot, from, end) && !fill(slot, from, end)) return false;
      next_[previous_] = static_cast<std::uint8_t>(slot);
    }
    cursor_.at += slots_[slot].size + 1;
    new (place) Value(slots_[slot].key);
    const std::uint64_t bit = std::uint64_t{1} << slot;
    distinct = distinct && (seen & bit) == 0;
    seen |= bit;
    previous_ = slot;
    return true;
  }

 private:
  static constexpr std::size_t kLongest = 32;

  struct Slot {
    const Unit* text;  // the key in the text that is being read, a quotation mark after it
    std::uint8_t size;
    Value key;
  };

  [[nodiscard]] bool isFilled(unsigned slot) const { return (filled_ >> slot & 1) != 0; }
  [[nodiscard]] bool isNext(unsigned slot) const {
    if (!isFilled(slot)) return false;
    const std::size_t size = slots_[slot].size + std::size_t{1};
    return cursor_.left() >= size && std::memcmp(cursor_.at, slots_[slot].text, size * sizeof(Unit)) == 0;
  }
  [[nodiscard]] bool isHeld(unsigned slot, const Unit* from, const Unit* end) const {
    return isFilled(slot) && slots_[slot].size == end - from &&
           std::memcmp(from, slots_[slot].text, slots_[slot].size * sizeof(Unit)) == 0;
  }

  /// The closing quotation mark of a short key without escapes, or nullptr.
  [[nodiscard]] const Unit* endOfPlainKey() const {
    const std::size_t limit = std::min(cursor_.left(), kLongest + 1);
    for (const Unit* at = cursor_.at; at != cursor_.at + limit; ++at) {
      if (*at == Unit{'"'}) return at;
      if (*at == Unit{'\\'}) return nullptr;
    }
    return nullptr;
  }

  static unsigned slotOf(const Unit* from, const Unit* end) {
    std::uint64_t hash = 0;
    for (; from != end; ++from) hash = (hash ^ static_cast<std::uint64_t>(*from)) * 0x9E3779B97F4A7C15;
    return static_cast<unsigned>(hash >> 58);
  }

  bool fill(unsigned slot, const Unit* from, const Unit* end) {
    alignas(Value) unsigned char memory[sizeof(Value)];
    auto* key = reinterpret_cast<Value*>(memory);
    if (!text_.read(key)) return false;
    cursor_.at = from;
    if (isFilled(slot)) slots_[slot].key.~Value();
    std::memcpy(static_cast<void*>(&slots_[slot].key), memory, sizeof memory);
    slots_[slot].text = from;
    slots_[slot].size = static_cast<std::uint8_t>(end - from);
    filled_ |= std::uint64_t{1} << slot;
    return true;
  }

  Cursor<Unit>& cursor_;
  TextReader<Unit>& text_;
  std::uint64_t filled_ = 0;
  unsigned previous_ = 0;
  std::uint8_t next_[64] = {};  // for each slot that of the key which followed last
  union {
    Slot slots_[64];  // those of `filled_` hold a key
  };
};

}  // namespace quorvel::json
