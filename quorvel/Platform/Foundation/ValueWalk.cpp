// Equality and hashing of nested values: one loop over an explicit stack, shared parts visited once.
#include <unordered_map>
#include <unordered_set>

#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/SmallStack.h>
#include <quorvel/Platform/Foundation/ValueBlocks.h>

namespace quorvel {

using detail::Block;
using detail::BlockKind;
using detail::DictionaryBlock;
using detail::ListBlock;

/// Reaches the blocks of lists and dictionaries for the walks.
struct ValueWalk {
  static const Block* container(const Value& value) {
    return value.isList() || value.isDictionary() ? value.block() : nullptr;
  }
  static const Block* container(const List& list) { return list.block_; }
  static const Block* container(const Dictionary& dictionary) { return dictionary.block_; }
  static bool isSameBlock(const Value& a, const Value& b) { return a.block() == b.block(); }
};

namespace {

struct PairHash {
  std::size_t operator()(std::pair<const Block*, const Block*> pair) const {
    return hashing::mix(reinterpret_cast<std::uintptr_t>(pair.first), reinterpret_cast<std::uintptr_t>(pair.second));
  }
};

class Comparison {
 public:
  /// Compares two containers of one kind.
  bool run(const Block* a, const Block* b) {
    if (!descend(a, b)) return false;
    while (!stack_.isEmpty()) {
      Frame& frame = stack_.top();
      if (frame.next == sizeOf(frame.a)) {
        stack_.pop();
        continue;
      }
      const auto [left, right] = childPair(frame.a, frame.b, frame.next++);
      if (!right || !compare(*left, *right)) return false;
    }
    return true;
  }

 private:
  struct Frame {
    const Block* a;
    const Block* b;
    std::uint32_t next;
  };

  static std::uint32_t sizeOf(const Block* block) { return block ? block->size : 0; }

  /// The next two values that must be equal; the second is nullptr when `b` lacks the key.
  static std::pair<const Value*, const Value*> childPair(const Block* a, const Block* b, std::uint32_t index) {
    if (a->kind == BlockKind::List) {
      return {static_cast<const ListBlock*>(a)->items() + index, static_cast<const ListBlock*>(b)->items() + index};
    }
    const Entry& entry = static_cast<const DictionaryBlock*>(a)->entries()[index];
    const auto* other = static_cast<const DictionaryBlock*>(b);
    const std::size_t place = detail::findKey(other, entry.key);
    return {&entry.value, place < other->size ? &other->entries()[place].value : nullptr};
  }

  bool compare(const Value& a, const Value& b) {
    const Block* left = ValueWalk::container(a);
    if (!left || a.kind() != b.kind()) return a == b;  // no container: does not descend
    return descend(left, ValueWalk::container(b));
  }

  bool descend(const Block* a, const Block* b) {
    if (a == b) return true;
    if (sizeOf(a) != sizeOf(b)) return false;
    if (sizeOf(a) == 0) return true;
    // Only a shared block can be met again; a pair that was met is equal or the walk has ended already.
    const bool shared = a->isShared() || b->isShared();
    if (shared && !stack_.isEmpty() && !met_.insert({a, b}).second) return true;
    stack_.push({a, b, 0});
    return true;
  }

  detail::SmallStack<Frame> stack_;
  std::unordered_set<std::pair<const Block*, const Block*>, PairHash> met_;
};

class Hashing {
 public:
  std::uint64_t run(const Value& root) {
    std::uint64_t result = 0;
    if (enter(root, result)) return result;
    while (true) {
      Frame& frame = stack_.top();
      const Value* child = nextChild(frame);
      if (child) {
        if (enter(*child, result)) combine(frame, result);
        continue;
      }
      result = finish(frame);
      if (frame.block && frame.block->isShared()) known_.emplace(frame.block, result);
      stack_.pop();
      if (stack_.isEmpty()) return result;
      combine(stack_.top(), result);
    }
  }

 private:
  struct Frame {
    const Block* block;
    BlockKind kind;
    std::uint32_t next;       // children taken: elements, or keys and values in turn
    std::uint64_t key;        // hash of the key whose value comes next
    std::uint64_t collected;  // of a list in order, of a dictionary whatever the order
  };

  /// True with the hash in `result`, or false when a frame was pushed to compute it.
  bool enter(const Value& value, std::uint64_t& result) {
    if (!value.isList() && !value.isDictionary()) {
      result = value.hash();
      return true;
    }
    const Block* block = ValueWalk::container(value);
    const auto known = block && block->isShared() ? known_.find(block) : known_.end();
    if (known != known_.end()) {
      result = known->second;
      return true;
    }
    stack_.push({block, value.isList() ? BlockKind::List : BlockKind::Dictionary, 0, 0, 0});
    return false;
  }

  static const Value* nextChild(Frame& frame) {
    if (!frame.block) return nullptr;
    const std::uint32_t index = frame.next++;
    if (frame.kind == BlockKind::List) {
      return index < frame.block->size ? static_cast<const ListBlock*>(frame.block)->items() + index : nullptr;
    }
    if (index / 2 >= frame.block->size) return nullptr;
    const Entry& entry = static_cast<const DictionaryBlock*>(frame.block)->entries()[index / 2];
    return index % 2 == 0 ? &entry.key : &entry.value;
  }

  static void combine(Frame& frame, std::uint64_t child) {
    if (frame.kind == BlockKind::List) {
      frame.collected = hashing::mix(frame.collected, child);
    } else if (frame.next % 2 == 1) {
      frame.key = child;
    } else {
      frame.collected += hashing::mix(frame.key, child);
    }
  }

  static std::uint64_t finish(const Frame& frame) {
    return hashing::mix(frame.collected,
                        (frame.block ? frame.block->size : 0) * 2ULL + (frame.kind == BlockKind::List));
  }

  detail::SmallStack<Frame> stack_;
  std::unordered_map<const Block*, std::uint64_t> known_;
};

}  // namespace

bool operator==(const List& a, const List& b) {
  return Comparison().run(ValueWalk::container(a), ValueWalk::container(b));
}

bool operator==(const Dictionary& a, const Dictionary& b) {
  return Comparison().run(ValueWalk::container(a), ValueWalk::container(b));
}

bool operator==(const Value& a, const Value& b) {
  const Value::Kind kind = a.kind();
  if (kind != b.kind()) return false;
  switch (kind) {
    case Value::Kind::Nil:
    case Value::Kind::Null:
      return true;
    case Value::Kind::Number:
      return *a.asNumber() == *b.asNumber();
    case Value::Kind::String:
      return a.text() == b.text();
    case Value::Kind::Date:
      return *a.asDate() == *b.asDate();
    case Value::Kind::Data:
      return *a.asData() == *b.asData();
    case Value::Kind::List:
    case Value::Kind::Dictionary:
      return ValueWalk::isSameBlock(a, b) || Comparison().run(ValueWalk::container(a), ValueWalk::container(b));
    case Value::Kind::Object:
      return ValueWalk::isSameBlock(a, b) || a.asObject()->isEqual(*b.asObject());
  }
  return false;
}

std::uint64_t Value::hash() const {
  switch (kind()) {
    case Kind::Nil:
    case Kind::Null:
      return hashing::mix(tag_, 1);
    case Kind::Number:
      return asNumber()->hash();
    case Kind::String:
      return hashing::bytes(text().data(), text().size() * sizeof(char16_t));
    case Kind::Date:
      return hashing::mix(Number(asDate()->secondsSince1970).hash(), 3);
    case Kind::Data:
      return hashing::bytes(asData()->bytes().data(), asData()->size());
    case Kind::List:
    case Kind::Dictionary:
      return Hashing().run(*this);
    case Kind::Object:
      return asObject()->hash();
  }
  return 0;
}

}  // namespace quorvel
