// Equality and hashing of nested values: one loop over an explicit stack, shared parts visited once.
#include <unordered_map>

#include <quorvel/Platform/Foundation/Hash.h>
#include <quorvel/Platform/Foundation/SmallStack.h>
#include <quorvel/Platform/Foundation/ValueComparison.h>

namespace quorvel {

using detail::Block;
using detail::BlockKind;
using detail::DictionaryBlock;
using detail::ListBlock;
using detail::ValueComparison;

namespace {

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
  return ValueComparison().run(ValueWalk::container(a), ValueWalk::container(b));
}

bool operator==(const Dictionary& a, const Dictionary& b) {
  return ValueComparison().run(ValueWalk::container(a), ValueWalk::container(b));
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
      return ValueWalk::isSameBlock(a, b) || ValueComparison().run(ValueWalk::container(a), ValueWalk::container(b));
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
