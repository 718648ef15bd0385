// Keys of JSON text. Records of one kind repeat their keys, mostly in the same order: a key that was read before costs
// a comparison of its bytes. Included by sources of the platform alone.
#pragma once

#include <algorithm>

#include <quorvel/Platform/Foundation/JSONText.h>

namespace quorvel::json {

/// What a reader of keys remembers of one dictionary, to know whether its keys are distinct. It begins as
/// `KeyReader::none`; without initialisers a reader's 512 frames cost nothing until they are used.
struct SeenKeys {
  std::uint64_t slots;
  std::uint64_t evictions;
  bool mayRepeat;
};

template <class Unit>
class KeyReader {
 public:
  KeyReader(Source<Unit>& source, TextReader<Unit>& text) : source_(source), text_(text) {}
  KeyReader(const KeyReader&) = delete;
  KeyReader& operator=(const KeyReader&) = delete;
  ~KeyReader() {
    for (; filled_; filled_ &= filled_ - 1) slotAt(static_cast<unsigned>(std::countr_zero(filled_))).key.~Value();
  }

  [[nodiscard]] SeenKeys none() const { return {0, evictions_, false}; }
  [[nodiscard]] bool areDistinct(const SeenKeys& seen) const { return !seen.mayRepeat && seen.evictions == evictions_; }

  /// Reads the key whose opening quotation mark stands before `at` into raw memory.
  const Unit* read(const Unit* at, Value* place, SeenKeys& seen) {
    unsigned slot = next_[previous_];
    if (!isHeld(slot, at)) {
      const Unit* const end = endOfPlain(at);
      if (!end) {  // long or escaped: not kept, and equal to whichever key it may be
        seen.mayRepeat = true;
        return text_.read(at, place);
      }
      slot = slotFor(at, end);
      if (!isHeld(slot, at) && !fill(slot, at, end)) return nullptr;
      next_[previous_] = static_cast<std::uint8_t>(slot);
    }
    previous_ = slot;
    const std::uint64_t bit = std::uint64_t{1} << slot;
    seen.mayRepeat |= (seen.slots & bit) != 0;
    seen.slots |= bit;
    new (place) Value(slotAt(slot).key);
    return at + slotAt(slot).size;
  }

 private:
  static constexpr unsigned kSlots = 64;
  static constexpr unsigned kProbes = 4;
  static constexpr std::size_t kLongest = 64;

  struct Slot {
    const Unit* text;  // the key as it stands in the text that is being read, with its closing quotation mark
    std::size_t size;  // the mark counted
    Value key;
  };

  [[nodiscard]] Slot& slotAt(unsigned slot) { return reinterpret_cast<Slot*>(memory_)[slot]; }
  [[nodiscard]] const Slot& slotAt(unsigned slot) const { return reinterpret_cast<const Slot*>(memory_)[slot]; }
  [[nodiscard]] bool isFilled(unsigned slot) const { return (filled_ >> slot & 1) != 0; }

  /// The key of the slot begins at `at`. What follows a kept key in the text follows the key at `at` too: it came
  /// later.
  [[nodiscard]] bool isHeld(unsigned slot, const Unit* at) const {
    if (!isFilled(slot)) return false;
    const std::size_t bytes = slotAt(slot).size * sizeof(Unit);
    const std::size_t left = source_.left(at) * sizeof(Unit);
    const auto* a = reinterpret_cast<const char*>(at);
    const auto* b = reinterpret_cast<const char*>(slotAt(slot).text);
    if (left < bytes + vector::kByteLanes) return left >= bytes && std::memcmp(a, b, bytes) == 0;
    std::size_t i = 0;
    for (; bytes - i > vector::kByteLanes; i += vector::kByteLanes) {
      if (equal(vector::Bytes::load(a + i), vector::Bytes::load(b + i)).highBits() != 0xFFFF) return false;
    }
    const std::uint32_t same = equal(vector::Bytes::load(a + i), vector::Bytes::load(b + i)).highBits();
    return (~same & ((std::uint32_t{1} << (bytes - i)) - 1)) == 0;
  }

  /// Behind the closing quotation mark of a short key without escapes, or nullptr.
  [[nodiscard]] const Unit* endOfPlain(const Unit* at) const {
    const Unit* const limit = at + std::min(source_.left(at), kLongest);
    while (at != limit && *at != Unit{'"'} && *at != Unit{'\\'}) ++at;
    return at != limit && *at == Unit{'"'} ? at + 1 : nullptr;
  }

  /// The slot that holds the key, or the one where it goes.
  [[nodiscard]] unsigned slotFor(const Unit* from, const Unit* end) const {
    std::uint64_t hash = 0;
    for (const Unit* at = from; at != end; ++at) hash = (hash ^ static_cast<std::uint64_t>(*at)) * 0x9E3779B97F4A7C15;
    const auto home = static_cast<unsigned>(hash >> 58);
    unsigned vacant = home;
    for (unsigned i = kProbes; i-- > 0;) {
      const unsigned slot = (home + i) % kSlots;
      if (isHeld(slot, from)) return slot;
      if (!isFilled(slot)) vacant = slot;
    }
    return vacant;
  }

  bool fill(unsigned slot, const Unit* from, const Unit* end) {
    alignas(Value) unsigned char memory[sizeof(Value)];
    if (!text_.read(from, reinterpret_cast<Value*>(memory))) return false;
    if (isFilled(slot)) {
      slotAt(slot).key.~Value();
      ++evictions_;  // the key that goes may come again in an open dictionary and would not be known
    }
    slotAt(slot).text = from;
    slotAt(slot).size = static_cast<std::size_t>(end - from);
    std::memcpy(static_cast<void*>(&slotAt(slot).key), memory, sizeof memory);
    filled_ |= std::uint64_t{1} << slot;
    return true;
  }

  Source<Unit>& source_;
  TextReader<Unit>& text_;
  std::uint64_t filled_ = 0;
  std::uint64_t evictions_ = 0;
  unsigned previous_ = 0;
  std::uint8_t next_[kSlots] = {};  // for each slot that of the key which followed last
  /// Raw memory: only the slots of `filled_` hold a key.
  alignas(Slot) unsigned char memory_[kSlots * sizeof(Slot)];
};

}  // namespace quorvel::json
