#include <algorithm>
#include <numeric>

#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/KeyValueCoding.h>
#include <quorvel/Platform/Foundation/NSSortDescriptor.h>

namespace quorvel {
namespace {

constexpr char16_t kSelf[] = u"self";

/// Kinds in the order in which they are sorted.
int rankOf(Value::Kind kind) {
  switch (kind) {
    case Value::Kind::Nil:
      return 0;
    case Value::Kind::Null:
      return 1;
    case Value::Kind::Number:
      return 2;
    case Value::Kind::String:
      return 3;
    case Value::Kind::Date:
      return 4;
    case Value::Kind::Data:
    case Value::Kind::List:
    case Value::Kind::Dictionary:
    case Value::Kind::Object:
      break;
  }
  return 5;
}

/// The order of a list's elements by keys that were read beforehand.
class KeyedOrder {
 public:
  KeyedOrder(const List& list, std::span<const NSSortDescriptor> descriptors) : descriptors_(descriptors) {
    keys_.reserve(list.size() * descriptors.size());
    for (const Value& element : list) {
      for (const NSSortDescriptor& descriptor : descriptors) keys_.push_back(descriptor.keyOf(element));
    }
  }

  bool operator()(std::size_t a, std::size_t b) const {
    const Value* keysOfA = &keys_[a * descriptors_.size()];
    const Value* keysOfB = &keys_[b * descriptors_.size()];
    for (std::size_t i = 0; i < descriptors_.size(); ++i) {
      const std::weak_ordering order = descriptors_[i].compareKeys(keysOfA[i], keysOfB[i]);
      if (order != std::weak_ordering::equivalent) return order == std::weak_ordering::less;
    }
    return a < b;  // as they stood
  }

 private:
  std::span<const NSSortDescriptor> descriptors_;
  std::vector<Value> keys_;
};

}  // namespace

std::weak_ordering compareValues(const Value& a, const Value& b) {
  const Value::Kind kind = a.kind();
  if (kind != b.kind()) return rankOf(kind) <=> rankOf(b.kind());
  switch (kind) {
    case Value::Kind::Number:
      return Number::compare(*a.asNumber(), *b.asNumber());
    case Value::Kind::String:
      return compareCanonical(a.text(), b.text());
    case Value::Kind::Date:
      return Number::compare(a.asDate()->secondsSince1970, b.asDate()->secondsSince1970);
    default:
      return std::weak_ordering::equivalent;
  }
}

Value NSSortDescriptor::keyOf(const Value& value) const {
  return keyPath_ == String(kSelf) ? value : valueForKeyPath(value, keyPath_);
}

List sortedArrayUsingDescriptors(const List& list, std::span<const NSSortDescriptor> descriptors) {
  if (descriptors.empty() || list.size() < 2) return list;
  const KeyedOrder order(list, descriptors);
  std::vector<std::size_t> places(list.size());
  std::iota(places.begin(), places.end(), std::size_t{0});
  std::sort(places.begin(), places.end(), [&order](std::size_t a, std::size_t b) { return order(a, b); });
  List sorted;
  sorted.reserve(list.size());
  for (const std::size_t place : places) sorted.append(list[place]);
  return sorted;
}

}  // namespace quorvel
