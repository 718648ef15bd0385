// The reader: one pass over the text straight into owning values, without recursion.
#include <algorithm>
#include <cstdlib>
#include <new>

#include <quorvel/Platform/Foundation/JSONKeys.h>
#include <quorvel/Platform/Foundation/JSONNumber.h>
#include <quorvel/Platform/Foundation/ValueBlocks.h>

namespace quorvel {
namespace json {
namespace {

/// Finished values that wait for the end of their container, as raw memory above `size`.
class ValueStack {
 public:
  ValueStack() = default;
  ValueStack(const ValueStack&) = delete;
  ValueStack& operator=(const ValueStack&) = delete;
  ~ValueStack() {
    for (std::size_t i = 0; i < size_; ++i) values_[i].~Value();
    if (!isInline()) std::free(static_cast<void*>(values_));
  }

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] Value* from(std::size_t index) { return values_ + index; }
  /// Memory for one value more, which counts after `push`.
  [[nodiscard]] Value* place() {
    if (size_ == capacity_) grow();
    return values_ + size_;
  }
  void push() { ++size_; }
  /// Forgets the values from `size` on, which have moved away as bytes.
  void forget(std::size_t size) { size_ = size; }

 private:
  static constexpr std::size_t kInline = 128;

  [[nodiscard]] bool isInline() const { return static_cast<const void*>(values_) == inline_; }
  void grow() {
    void* memory = std::realloc(isInline() ? nullptr : static_cast<void*>(values_), 2 * capacity_ * sizeof(Value));
    if (!memory) throw std::bad_alloc();
    if (isInline()) std::memcpy(memory, inline_, size_ * sizeof(Value));
    values_ = static_cast<Value*>(memory);
    capacity_ *= 2;
  }

  alignas(Value) unsigned char inline_[kInline * sizeof(Value)];
  Value* values_ = reinterpret_cast<Value*>(inline_);
  std::size_t size_ = 0;
  std::size_t capacity_ = kInline;
};

template <class Unit>
class Reader {
 public:
  Reader(const Unit* text, std::size_t size) : source_{text, text + size, {}}, pages_(kBytesForUnit * size) {}

  Value read(bool fragment, JSONError* error) {
    if (readDocument(fragment)) return std::move(*values_.from(0));
    if (error) *error = source_.error;
    return nil;
  }

 private:
  struct Frame {
    std::size_t first;  // of its values on the stack
    bool isDictionary;
    SeenKeys keys;
  };

  const Unit* readDocument(bool fragment) {
    const Unit* at = source_.skipSpace(behindByteOrderMark());
    if (!fragment && !source_.isAt(at, '[') && !source_.isAt(at, '{')) return source_.unexpected(at, topReason(at));
    at = readTree(at);
    if (!at) return nullptr;
    at = source_.skipSpace(at);
    return at == source_.end ? at : source_.fail(at, reason::kAfterEnd);
  }

  [[nodiscard]] const Unit* behindByteOrderMark() const {
    static constexpr Unit kMark[] = {sizeof(Unit) == 1 ? Unit(0xEF) : Unit(0xFEFF), Unit(0xBB), Unit(0xBF)};
    constexpr std::size_t kSize = sizeof(Unit) == 1 ? 3 : 1;
    const Unit* const at = source_.start;
    return source_.left(at) >= kSize && std::equal(kMark, kMark + kSize, at) ? at + kSize : at;
  }

  [[nodiscard]] const char* topReason(const Unit* at) const {
    static constexpr std::string_view kFragments = "\"-0123456789tfn";
    const bool isFragment =
        at != source_.end && *at < Unit{0x7F} && kFragments.find(static_cast<char>(*at)) != std::string_view::npos;
    return isFragment ? reason::kNoContainer : reason::kUnexpected;
  }

  /// Reads one value and all that it holds.
  const Unit* readTree(const Unit* at) {
    while (true) {
      if (source_.isAt(at, '{') || source_.isAt(at, '[')) {
        at = open(at);
        if (!at) return nullptr;
        if (!isAtClosing(at)) {
          if (frames_[depth_ - 1].isDictionary) at = readKey(at);
          if (!at) return nullptr;
          continue;
        }
      } else {
        at = readScalar(at, values_.place());
        if (!at) return nullptr;
        values_.push();
      }
      at = goOn(at);
      if (!at || depth_ == 0) return at;
    }
  }

  [[nodiscard]] bool isAtClosing(const Unit* at) const {
    return source_.isAt(at, frames_[depth_ - 1].isDictionary ? '}' : ']');
  }

  /// From the end of a value to the next one that begins, or to the end of the outermost container.
  const Unit* goOn(const Unit* at) {
    while (depth_ > 0) {
      at = source_.skipSpace(at);
      if (source_.isAt(at, ',')) {
        at = source_.skipSpace(at + 1);
        return frames_[depth_ - 1].isDictionary ? readKey(at) : at;
      }
      if (!isAtClosing(at)) return source_.unexpected(at);
      at = close(at);
      if (!at) return nullptr;
    }
    return at;
  }

  const Unit* open(const Unit* at) {
    if (depth_ == limits::kJSONDepth) return source_.fail(at, reason::kTooDeep);
    frames_[depth_++] = {values_.size(), *at == Unit{'{'}, keys_.none()};
    return source_.skipSpace(at + 1);
  }

  const Unit* close(const Unit* at) {
    const Frame& frame = frames_[--depth_];
    const std::size_t count = values_.size() - frame.first;
    if (count > UINT32_MAX) return source_.fail(at, reason::kTooLong);
    Value* children = values_.from(frame.first);
    Value container =
        frame.isDictionary
            ? Value(detail::ValueBulk::dictionary(children, count / 2, keys_.areDistinct(frame.keys), pages_))
            : Value(detail::ValueBulk::list(children, count, pages_));
    values_.forget(frame.first);
    new (values_.place()) Value(std::move(container));
    values_.push();
    return at + 1;
  }

  const Unit* readKey(const Unit* at) {
    if (!source_.isAt(at, '"')) return source_.unexpected(at);
    at = keys_.read(at + 1, values_.place(), frames_[depth_ - 1].keys);
    if (!at) return nullptr;
    values_.push();
    at = source_.skipSpace(at);
    return source_.isAt(at, ':') ? source_.skipSpace(at + 1) : source_.unexpected(at);
  }

  const Unit* readScalar(const Unit* at, Value* place) {
    if (source_.isAt(at, '"')) return text_.read(at + 1, place);
    if (source_.isDigitAt(at) || source_.isAt(at, '-')) return NumberReader<Unit>(source_, place).read(at);
    if (source_.isAt(at, 't')) return readWord("true", at, place, true);
    if (source_.isAt(at, 'f')) return readWord("false", at, place, false);
    if (source_.isAt(at, 'n')) return readWord("null", at, place, null);
    return source_.unexpected(at);
  }

  template <class Meaning>
  const Unit* readWord(std::string_view word, const Unit* at, Value* place, Meaning meaning) {
    for (const char letter : word) {
      if (!source_.isAt(at, letter)) return source_.unexpected(at);
      ++at;
    }
    new (place) Value(meaning);
    return at;
  }

  /// What values take for a unit of text, in short replies of records.
  static constexpr std::size_t kBytesForUnit = 3;

  Source<Unit> source_;
  blockcache::Pages pages_;
  TextReader<Unit> text_{source_, pages_};
  KeyReader<Unit> keys_{source_, text_};
  ValueStack values_;
  std::size_t depth_ = 0;
  Frame frames_[limits::kJSONDepth];
};

}  // namespace
}  // namespace json

namespace NSJSONSerialization {

Value parse(std::string_view utf8, JSONError* error) {
  return json::Reader<char>(utf8.data(), utf8.size()).read(false, error);
}

Value parse(StringView text, JSONError* error) {
  return json::Reader<char16_t>(text.data(), text.size()).read(false, error);
}

Value parseFragment(std::string_view utf8, JSONError* error) {
  return json::Reader<char>(utf8.data(), utf8.size()).read(true, error);
}

}  // namespace NSJSONSerialization
}  // namespace quorvel
