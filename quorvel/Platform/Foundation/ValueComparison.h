// The walk over two nested values side by side, behind `==` and firstDifference(). Included by sources of the platform
// alone.
#pragma once

#include <algorithm>
#include <unordered_map>

#include <quorvel/Platform/Foundation/SmallStack.h>
#include <quorvel/Platform/Foundation/ValueBlocks.h>

namespace quorvel {

/// Reaches the blocks of lists and dictionaries for the walks.
struct ValueWalk {
  static bool isContainer(const Value& value) { return value.isList() || value.isDictionary(); }
  /// nullptr for what is no list or dictionary, and for an empty one that never held anything.
  static const detail::Block* container(const Value& value) { return isContainer(value) ? value.block() : nullptr; }
  static const detail::Block* container(const List& list) { return list.block_; }
  static const detail::Block* container(const Dictionary& dictionary) { return dictionary.block_; }
  static bool isSameBlock(const Value& a, const Value& b) { return a.block() == b.block(); }
};

namespace detail {

/// Blocks that a walk has found equal, as disjoint sets: what equals the same block needs no second look, however many
/// pairs there are.
class EqualBlocks {
 public:
  [[nodiscard]] bool contains(const Block* a, const Block* b) { return !parents_.empty() && rootOf(a) == rootOf(b); }
  void add(const Block* a, const Block* b) {
    const Block* root = rootOf(a);
    if (const Block* other = rootOf(b); other != root) parents_[root] = other;
  }

 private:
  const Block* rootOf(const Block* block) {
    for (auto at = parents_.find(block); at != parents_.end(); at = parents_.find(block)) {
      const auto above = parents_.find(at->second);
      if (above != parents_.end()) at->second = above->second;  // halves the path for the next search
      block = at->second;
    }
    return block;
  }

  std::unordered_map<const Block*, const Block*> parents_;
};

class ValueComparison {
 public:
  enum class Sizes {
    MustAgree,   // containers of different sizes differ without a look inside
    LookInside,  // goes on to the first element or entry that the other lacks
  };
  /// A list or dictionary of either side, and how many of its children were taken.
  struct Frame {
    const Block* a;
    const Block* b;
    std::uint32_t next;
    bool isShared;
  };
  /// What stands at one place on either side; nullptr where that side has nothing there.
  struct Children {
    const Value* key;  // of a dictionary
    const Value* a;
    const Value* b;
  };

  explicit ValueComparison(Sizes sizes = Sizes::MustAgree) : sizes_(sizes) {}

  bool run(const Value& a, const Value& b) { return compare(a, b) && walk(); }
  bool run(const Block* a, const Block* b) { return descend(a, b) && walk(); }

  /// After a difference: the containers around it, from the outermost on. Each has taken the child on the way, the last
  /// one the child that differs. Empty when the values as a whole differ.
  [[nodiscard]] SmallStack<Frame>& path() { return stack_; }
  [[nodiscard]] static bool isList(const Frame& frame) {
    return (frame.a ? frame.a : frame.b)->kind == BlockKind::List;
  }
  [[nodiscard]] static Children lastChildren(const Frame& frame) { return childrenAt(frame, frame.next - 1); }

 private:
  static std::uint32_t sizeOf(const Block* block) { return block ? block->size : 0; }
  /// A dictionary's places are the entries of `a` and then, when the sizes say that there may be others, those of `b`.
  static std::uint64_t places(const Frame& frame) {
    const std::uint64_t a = sizeOf(frame.a);
    const std::uint64_t b = sizeOf(frame.b);
    return a == b ? a : isList(frame) ? std::max(a, b) : a + b;
  }

  static Children childrenAt(const Frame& frame, std::uint32_t index) {
    if (isList(frame)) return {nullptr, elementAt(frame.a, index), elementAt(frame.b, index)};
    const auto* a = static_cast<const DictionaryBlock*>(frame.a);
    const auto* b = static_cast<const DictionaryBlock*>(frame.b);
    if (index < sizeOf(a)) {
      const Entry& entry = a->entries()[index];
      return {&entry.key, &entry.value, valueOf(b, entry.key)};
    }
    const Entry& entry = b->entries()[index - sizeOf(a)];
    if (valueOf(a, entry.key)) return {};  // compared from the other side already
    return {&entry.key, nullptr, &entry.value};
  }
  static const Value* elementAt(const Block* block, std::uint32_t index) {
    return index < sizeOf(block) ? static_cast<const ListBlock*>(block)->items() + index : nullptr;
  }
  static const Value* valueOf(const DictionaryBlock* block, const Value& key) {
    const std::size_t place = findKey(block, key);
    return place < sizeOf(block) ? &block->entries()[place].value : nullptr;
  }

  bool walk() {
    while (!stack_.isEmpty()) {
      Frame& frame = stack_.top();
      if (frame.next == places(frame)) {
        if (frame.isShared) equal_.add(frame.a, frame.b);
        stack_.pop();
        continue;
      }
      const Children children = childrenAt(frame, frame.next++);
      const bool isEqual = children.a && children.b ? compare(*children.a, *children.b) : children.a == children.b;
      if (!isEqual) return false;
    }
    return true;
  }

  bool compare(const Value& a, const Value& b) {
    if (!ValueWalk::isContainer(a) || a.kind() != b.kind()) return a == b;  // does not descend
    return descend(ValueWalk::container(a), ValueWalk::container(b));
  }

  bool descend(const Block* a, const Block* b) {
    if (a == b) return true;
    const bool sameSize = sizeOf(a) == sizeOf(b);
    if (!sameSize && sizes_ == Sizes::MustAgree) return false;
    if (sameSize && sizeOf(a) == 0) return true;
    // Only a shared block can be met again.
    const bool isShared = sameSize && !stack_.isEmpty() && (a->isShared() || b->isShared());
    if (!isShared || !equal_.contains(a, b)) stack_.push({a, b, 0, isShared});
    return true;
  }

  Sizes sizes_;
  SmallStack<Frame> stack_;
  EqualBlocks equal_;
};

}  // namespace detail
}  // namespace quorvel
