// The writer: one walk over the value with a stack of its own, into UTF-16 or UTF-8.
#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Platform/Foundation/Vector.h>

namespace quorvel {
namespace {

using vector::Units;

/// Grows a text of either encoding at its end. What is written goes behind `at`, after `ensure`.
template <class Unit>
class Sink {
 public:
  Unit* at = inline_;

  void ensure(std::size_t count) {
    if (static_cast<std::size_t>(end_ - at) < count) grow(count);
  }
  void putASCII(std::string_view text) {
    ensure(text.size());
    for (const char byte : text) *at++ = static_cast<Unit>(byte);
  }
  void put(char byte) { *at++ = static_cast<Unit>(byte); }
  void fill(char byte, std::size_t count) {
    ensure(count);
    at = std::fill_n(at, count, static_cast<Unit>(byte));
  }
  [[nodiscard]] const Unit* begin() const { return begin_; }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(at - begin_); }

 private:
  static constexpr std::size_t kInline = 4096 / sizeof(Unit);

  [[gnu::noinline]] void grow(std::size_t count) {
    const std::size_t used = size();
    const std::size_t capacity = (used + count) * 2;
    auto larger = std::make_unique_for_overwrite<Unit[]>(capacity);
    std::memcpy(larger.get(), begin_, used * sizeof(Unit));
    heap_ = std::move(larger);
    begin_ = heap_.get();
    at = begin_ + used;
    end_ = begin_ + capacity;
  }

  Unit inline_[kInline];
  std::unique_ptr<Unit[]> heap_;
  Unit* begin_ = inline_;
  Unit* end_ = inline_ + kInline;
};

/// The second character of a short escape, 'u' for a long one, 0 for a unit that stands for itself.
constexpr char escapeOf(char16_t unit) {
  switch (unit) {
    case u'"':
    case u'\\':
    case u'/':
      return static_cast<char>(unit);
    case u'\b':
      return 'b';
    case u'\f':
      return 'f';
    case u'\n':
      return 'n';
    case u'\r':
      return 'r';
    case u'\t':
      return 't';
    default:
      return unit < 0x20 ? 'u' : '\0';
  }
}

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
    std::size_t order;      // of a sorted dictionary: where its entries begin in `order_`
    std::size_t count;
    std::size_t next;
  };

  // Structure

  bool writeValue(const Value& value) {
    switch (value.kind()) {
      case Value::Kind::Null:
        sink_.putASCII("null");
        return true;
      case Value::Kind::Number:
        return writeNumber(*value.asNumber());
      case Value::Kind::String:
        return writeText(value.text());
      case Value::Kind::List:
        return open('[', value.asList()->begin(), nullptr, value.asList()->size());
      case Value::Kind::Dictionary:
        return open('{', nullptr, value.asDictionary()->begin(), value.asDictionary()->size());
      case Value::Kind::Nil:
      case Value::Kind::Date:
      case Value::Kind::Data:
      case Value::Kind::Object:
        return false;
    }
    return false;
  }

  bool open(char bracket, const Value* elements, const Entry* entries, std::size_t count) {
    if (depth_ == limits::kJSONDepth) return false;
    sink_.ensure(4);
    sink_.put(bracket);
    if (count == 0) {
      if (pretty_) sink_.put('\n');
      if (pretty_) breakLine();
      sink_.ensure(1);
      sink_.put(bracket == '[' ? ']' : '}');
      return true;
    }
    frames_[depth_++] = {elements, entries, order_.size(), count, 0};
    return !entries || !sorted_ || sortEntries(entries, count);
  }

  void close(const Frame& frame) {
    const bool isList = frame.elements != nullptr;
    order_.resize(frame.order);
    --depth_;
    if (pretty_) breakLine();
    sink_.ensure(1);
    sink_.put(isList ? ']' : '}');
  }

  bool writeNext(Frame& frame) {
    sink_.ensure(2);
    if (frame.next != 0) sink_.put(',');
    if (pretty_) breakLine();
    const std::size_t place = frame.next++;
    if (frame.elements) return writeValue(frame.elements[place]);
    const Entry& entry = sorted_ ? *order_[frame.order + place] : frame.entries[place];
    if (!entry.key.isString() || !writeText(entry.key.text())) return false;
    sink_.putASCII(pretty_ ? " : " : ":");
    return writeValue(entry.value);
  }

  bool sortEntries(const Entry* entries, std::size_t count) {
    for (const Entry* entry = entries; entry != entries + count; ++entry) {
      if (!entry->key.isString()) return false;
      order_.push_back(entry);
    }
    std::sort(order_.end() - static_cast<std::ptrdiff_t>(count), order_.end(),
              [](const Entry* a, const Entry* b) { return a->key.text() < b->key.text(); });
    return true;
  }

  void breakLine() {
    sink_.ensure(1);
    sink_.put('\n');
    sink_.fill(' ', 2 * depth_);
  }

  // Leaves

  bool writeNumber(Number number) {
    if (number.isBoolean()) {
      sink_.putASCII(number.boolValue() ? "true" : "false");
      return true;
    }
    if (number.isFloating() && !std::isfinite(number.doubleValue())) return false;
    sink_.putASCII(numberText(number).ascii());
    return true;
  }

  bool writeText(StringView text) {
    sink_.ensure(text.size() + 2);
    sink_.put('"');
    const char16_t* at = text.begin();
    while (at != text.end()) {
      at = copyRun(at, text.end());
      if (at == text.end()) break;
      if (unicode::isSurrogate(*at)) {
        if (!writePair(at, text.end())) return false;
        at += 2;
      } else {
        writeEscape(*at++);
      }
    }
    sink_.ensure(1);
    sink_.put('"');
    return true;
  }

  /// Copies units that stand for themselves and answers where they end.
  const char16_t* copyRun(const char16_t* at, const char16_t* end) {
    while (static_cast<std::size_t>(end - at) >= vector::kLanes) {
      sink_.ensure(3 * vector::kLanes);
      const Units units = Units::load(at);
      const unsigned count = plainUnits(units);
      if constexpr (sizeof(Unit) == sizeof(char16_t)) {
        units.store(sink_.at);
        sink_.at += count;
      } else if (atMost(units, Units::splat(0x7F)).lanesSet().all()) {
        units.narrow(sink_.at);
        sink_.at += count;
      } else {
        for (unsigned i = 0; i < count; ++i) putPlain(at[i]);
      }
      at += count;
      if (count != vector::kLanes) return at;
    }
    sink_.ensure(3 * vector::kLanes);
    while (at != end && escapeOf(*at) == 0 && !unicode::isSurrogate(*at)) putPlain(*at++);
    return at;
  }

  static unsigned plainUnits(Units units) {
    const Units stops = equal(units, Units::splat(u'"')) | equal(units, Units::splat(u'\\')) |
                        equal(units, Units::splat(u'/')) | atMost(units, Units::splat(0x1F)) |
                        vector::inRange(units, 0xD800, 0x7FF);
    return stops.noneSet() ? unsigned{vector::kLanes} : stops.lanesSet().first();
  }

  /// A unit that is no surrogate, with room for it.
  void putPlain(char16_t unit) {
    if (sizeof(Unit) == sizeof(char16_t) || unit < 0x80) {
      *sink_.at++ = static_cast<Unit>(unit);
    } else if (unit < 0x800) {
      sink_.put(static_cast<char>(0xC0 | unit >> 6));
      sink_.put(static_cast<char>(0x80 | (unit & 0x3F)));
    } else {
      sink_.put(static_cast<char>(0xE0 | unit >> 12));
      sink_.put(static_cast<char>(0x80 | (unit >> 6 & 0x3F)));
      sink_.put(static_cast<char>(0x80 | (unit & 0x3F)));
    }
  }

  /// False for a surrogate that is not one of a pair.
  bool writePair(const char16_t* at, const char16_t* end) {
    if (!unicode::isHighSurrogate(at[0]) || end - at < 2 || !unicode::isLowSurrogate(at[1])) return false;
    sink_.ensure(4);
    if constexpr (sizeof(Unit) == sizeof(char16_t)) {
      *sink_.at++ = at[0];
      *sink_.at++ = at[1];
    } else {
      const char32_t scalar = unicode::scalarOf(at[0], at[1]);
      sink_.put(static_cast<char>(0xF0 | scalar >> 18));
      sink_.put(static_cast<char>(0x80 | (scalar >> 12 & 0x3F)));
      sink_.put(static_cast<char>(0x80 | (scalar >> 6 & 0x3F)));
      sink_.put(static_cast<char>(0x80 | (scalar & 0x3F)));
    }
    return true;
  }

  void writeEscape(char16_t unit) {
    const char letter = escapeOf(unit);
    sink_.ensure(6);
    sink_.put('\\');
    sink_.put(letter);
    if (letter != 'u') return;
    sink_.put('0');
    sink_.put('0');
    sink_.put("0123456789abcdef"[unit >> 4]);
    sink_.put("0123456789abcdef"[unit & 15]);
  }

  Sink<Unit> sink_;
  std::vector<const Entry*> order_;
  bool pretty_;
  bool sorted_;
  std::size_t depth_ = 0;
  Frame frames_[limits::kJSONDepth];
};

}  // namespace

namespace NSJSONSerialization {

std::optional<String> write(const Value& value, std::uint64_t options) {
  if (!value.isList() && !value.isDictionary()) return nil;
  Writer<char16_t> writer(options);
  if (!writer.write(value) || writer.sink().size() > limits::kStringLength) return nil;
  return String(writer.sink().begin(), writer.sink().size());
}

std::optional<std::string> writeFragmentUTF8(const Value& value, std::uint64_t options) {
  Writer<char> writer(options);
  if (!writer.write(value)) return nil;
  return std::string(writer.sink().begin(), writer.sink().size());
}

}  // namespace NSJSONSerialization
}  // namespace quorvel
