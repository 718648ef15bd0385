// The writer: one walk over the value with a stack of its own, into UTF-16 or UTF-8.
#include <cmath>
#include <vector>

#include <quorvel/Platform/Foundation/JSONShapes.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {
namespace json {
namespace {

template <class Unit>
class Writer {
 public:
  explicit Writer(std::uint64_t options)
      : pretty_((options & NSJSONSerialization::kPrettyPrinted) != 0),
        sorted_((options & NSJSONSerialization::kSortedKeys) != 0) {}

  /// False for a value that JSON cannot hold.
  bool write(const Value& root) {
    if (!writeValue(root)) return false;
    while (depth_ > 0) {
      Frame& frame = frames_[depth_ - 1];
      if (frame.next == frame.count) {
        close(frame);
      } else if (!writeNext(frame)) {
        return false;
      }
    }
    return true;
  }

  [[nodiscard]] const Sink<Unit>& sink() const { return sink_; }

 private:
  struct Frame {
    const Value* elements;  // of a list
    const Entry* entries;   // of a dictionary
    std::size_t count;
    std::size_t next;
    std::size_t order;    // of a sorted dictionary without a shape: where its entries begin in `order_`
    std::uint32_t shape;  // of a dictionary
  };

  bool writeValue(const Value& value) {
    if (value.isString()) return sink_.putQuoted(value);
    switch (value.kind()) {
      case Value::Kind::Number:
        return writeNumber(*value.asNumber());
      case Value::Kind::Null:
        sink_.putASCII("null");
        return true;
      case Value::Kind::List:
        return open({value.asList()->begin(), nullptr, value.asList()->size(), 0, 0, Shapes<Unit>::kNone});
      case Value::Kind::Dictionary:
        return open({nullptr, value.asDictionary()->begin(), value.asDictionary()->size(), 0, 0, Shapes<Unit>::kNone},
                    true);
      case Value::Kind::Nil:
      case Value::Kind::String:
      case Value::Kind::Date:
      case Value::Kind::Data:
      case Value::Kind::Object:
        return false;
    }
    return false;
  }

  bool open(const Frame& frame, bool isDictionary = false) {
    if (depth_ == limits::kJSONDepth) return false;
    sink_.ensure(2);
    sink_.put(isDictionary ? '{' : '[');
    if (frame.count == 0) {
      if (pretty_) sink_.put('\n');
      if (pretty_) breakLine();
      sink_.put(isDictionary ? '}' : ']');
      return true;
    }
    frames_[depth_++] = frame;
    return !isDictionary || order(frames_[depth_ - 1]);
  }

  void close(const Frame& frame) {
    const bool isList = frame.elements != nullptr;
    if (frame.shape != Shapes<Unit>::kNone) {
      shapes_.leave(frame.shape);
    } else if (!isList) {
      order_.resize(frame.order);
    }
    --depth_;
    if (pretty_) breakLine();
    sink_.ensure(1);
    sink_.put(isList ? ']' : '}');
  }

  bool writeNext(Frame& frame) {
    const std::size_t index = frame.next++;
    sink_.ensure(1);
    if (index != 0) sink_.put(',');
    if (pretty_) breakLine();
    if (frame.elements) return writeValue(frame.elements[index]);
    if (frame.shape == Shapes<Unit>::kNone) return writeEntry(*order_[frame.order + index]);
    const Shape<Unit>& shape = shapes_[frame.shape];
    shape.putKey(index, sink_);
    return writeValue(frame.entries[shape.place(index)].value);
  }

  bool writeEntry(const Entry& entry) {
    if (!sink_.putQuoted(entry.key)) return false;
    sink_.putASCII(pretty_ ? " : " : ":");
    return writeValue(entry.value);
  }

  /// Puts the entries of a dictionary into the order in which they are written.
  bool order(Frame& frame) {
    bool valid = true;
    frame.shape = shapes_.use(frame.entries, frame.count, valid);
    if (frame.shape != Shapes<Unit>::kNone || !valid) return valid;
    frame.order = order_.size();
    for (const Entry* entry = frame.entries; entry != frame.entries + frame.count; ++entry) {
      if (!entry->key.isString()) return false;
      order_.push_back(entry);
    }
    if (sorted_) {
      std::sort(order_.begin() + static_cast<std::ptrdiff_t>(frame.order), order_.end(),
                [](const Entry* a, const Entry* b) { return a->key.text() < b->key.text(); });
    }
    return true;
  }

  void breakLine() {
    sink_.ensure(1);
    sink_.put('\n');
    sink_.fill(' ', 2 * depth_);
  }

  bool writeNumber(Number number) {
    switch (number.kind()) {
      case Number::Kind::Boolean:
        sink_.putASCII(number.boolValue() ? "true" : "false");
        return true;
      case Number::Kind::Integer:
      case Number::Kind::Unsigned:
        writeInteger(number);
        return true;
      case Number::Kind::Double:
      case Number::Kind::Float:
        if (!std::isfinite(number.doubleValue())) return false;
        sink_.putASCII(numberText(number).ascii());
        return true;
    }
    return false;
  }

  void writeInteger(Number number) {
    const bool negative = number.kind() == Number::Kind::Integer && number.longLongValue() < 0;
    std::uint64_t left = negative ? 0 - number.bits() : number.bits();
    char digits[20];
    char* first = digits + sizeof digits;
    for (; left >= 10; left /= 10) *--first = static_cast<char>('0' + left % 10);
    *--first = static_cast<char>('0' + left);
    sink_.ensure(sizeof digits + 1);
    if (negative) sink_.put('-');
    for (; first != digits + sizeof digits; ++first) sink_.put(*first);
  }

  bool pretty_;
  bool sorted_;
  Sink<Unit> sink_;
  Shapes<Unit> shapes_{sorted_, pretty_};
  std::vector<const Entry*> order_;
  std::size_t depth_ = 0;
  Frame frames_[limits::kJSONDepth];
};

}  // namespace
}  // namespace json

namespace NSJSONSerialization {

std::optional<String> write(const Value& value, std::uint64_t options) {
  if (!value.isList() && !value.isDictionary()) return nil;
  json::Writer<char16_t> writer(options);
  if (!writer.write(value) || writer.sink().size() > limits::kStringLength) return nil;
  return String(writer.sink().begin(), writer.sink().size());
}

std::optional<std::string> writeFragmentUTF8(const Value& value, std::uint64_t options) {
  json::Writer<char> writer(options);
  if (!writer.write(value)) return nil;
  return std::string(writer.sink().begin(), writer.sink().size());
}

}  // namespace NSJSONSerialization
}  // namespace quorvel
