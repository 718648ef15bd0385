// The counted blocks behind Value, List, Dictionary and Data. Included by sources of the platform alone.
#pragma once

#include <atomic>

#include <quorvel/Platform/Foundation/BlockPages.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel::detail {

enum class BlockKind : std::uint16_t { Data, List, Dictionary, Object };

struct Block {
  /// Owners; once there are none, the next block that waits for its destruction.
  std::atomic<std::uint64_t> references{1};
  std::uint32_t size = 0;
  std::uint32_t capacity = 0;
  BlockKind kind;
  blockcache::PagePlace place = 0;
  std::uint32_t indexMask = 0;  // of a dictionary; of data nonzero when the bytes are to be overwritten in the end

  [[nodiscard]] bool isShared() const { return references.load(std::memory_order_acquire) != 1; }
};

struct DataBlock : Block {
  [[nodiscard]] std::uint8_t* bytes() { return reinterpret_cast<std::uint8_t*>(this + 1); }
};

struct ListBlock : Block {
  [[nodiscard]] Value* items() { return reinterpret_cast<Value*>(this + 1); }
  [[nodiscard]] const Value* items() const { return reinterpret_cast<const Value*>(this + 1); }
};

struct DictionaryBlock : Block {
  /// Open addressing from key hashes to entries, for dictionaries that are too large to look through: the upper half
  /// of a slot holds the upper half of the hash, the lower half the entry's place + 1; 0 is free.
  std::uint64_t* index = nullptr;

  [[nodiscard]] Entry* entries() { return reinterpret_cast<Entry*>(this + 1); }
  [[nodiscard]] const Entry* entries() const { return reinterpret_cast<const Entry*>(this + 1); }
};

struct ObjectBlock : Block {
  std::shared_ptr<const Object> object;
};

inline void retain(Block* block) noexcept {
  if (block) block->references.fetch_add(1, std::memory_order_relaxed);
}
/// Destroys a block without owners. Nested blocks wait in a list instead of on the stack.
void destroy(Block* block) noexcept;
inline void release(Block* block) noexcept {
  if (!block) return;
  if (!block->isShared() || block->references.fetch_sub(1, std::memory_order_acq_rel) == 1) destroy(block);
}

/// The place of the key among the entries, or their number when it is not there. `block` may be nullptr.
[[nodiscard]] std::size_t findKey(const DictionaryBlock* block, const Value& key);

/// Many values at once. Containers are made in blocks of just the size that they take, among others of `pages`; the
/// elements move as bytes: the memory that they come from holds no values any more.
struct ValueBulk {
  [[nodiscard]] static List list(Value* elements, std::size_t count, blockcache::Pages& pages);
  /// Texts as keys and values in turn, `count` pairs. Of entries with the same key the first stays; the caller says
  /// when he knows that all keys are distinct.
  [[nodiscard]] static Dictionary dictionary(Value* keysAndValues, std::size_t count, bool distinct,
                                             blockcache::Pages& pages);
  /// Asks for the memory of the value's block, which is about to be changed.
  static void prefetch(const Value& value);
};

}  // namespace quorvel::detail
