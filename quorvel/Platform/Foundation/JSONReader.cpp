// The reader: one pass over the text straight into owning values, without recursion.
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
  Reader(const Unit* text, std::size_t size) : cursor_{text, text, text + size, {}} {}

  Value read(bool fragment, JSONError* error) {
    Value result;
    if (readDocument(fragment)) {
      result = std::move(*values_.from(0));
    } else if (error) {
      *error = cursor_.error;
    }
    return result;
  }

 private:
  struct Frame {
    std::size_t first;  // of its values on the stack
    std::uint64_t seen;
    bool isDictionary;
    bool distinct;
  };

  bool readDocument(bool fragment) {
    skipByteOrderMark();
    cursor_.skipSpace();
    if (!fragment && !cursor_.isAt('[') && !cursor_.isAt('{')) return cursor_.unexpected(topReason());
    if (!readTree()) return false;
    cursor_.skipSpace();
    return cursor_.at == cursor_.end || cursor_.fail(cursor_.at, reason::kAfterEnd);
  }

  void skipByteOrderMark() {
    static constexpr Unit kMark[] = {sizeof(Unit) == 1 ? Unit(0xEF) : Unit(0xFEFF), Unit(0xBB), Unit(0xBF)};
    constexpr std::size_t kSize = sizeof(Unit) == 1 ? 3 : 1;
    if (cursor_.left() >= kSize && std::memcmp(cursor_.at, kMark, kSize * sizeof(Unit)) == 0) cursor_.at += kSize;
  }

  [[nodiscard]] const char* topReason() const {
    static constexpr std::string_view kFragments = "\"-0123456789tfn";
    const bool isFragment = cursor_.at != cursor_.end && *cursor_.at < Unit{0x7F} &&
                            kFragments.find(static_cast<char>(*cursor_.at)) != std::string_view::npos;
    return isFragment ? reason::kNoContainer : reason::kUnexpected;
  }

  /// Reads one value and all that it holds.
  bool readTree() {
    do {
      if (cursor_.isAt('{') || cursor_.isAt('[')) {
        if (!open()) return false;
      } else {
        if (!readScalar()) return false;
        values_.push();
      }
    } while (goOn());
    return cursor_.error.reason[0] == '\0';
  }

  /// What follows a value or an opening bracket: closes containers, and stops before the next value. False when all
  /// are closed, or at a failure.
  bool goOn() {
    while (depth_ > 0) {
      Frame& frame = frames_[depth_ - 1];
      cursor_.skipSpace();
      const bool opened = std::exchange(opened_, false);
      if (cursor_.take(frame.isDictionary ? '}' : ']')) {
        if (!close(frame)) return false;
        continue;
      }
      if (!opened) {
        if (!cursor_.take(',')) return cursor_.unexpected();
        cursor_.skipSpace();
      }
      return !frame.isDictionary || readKey(frame);
    }
    return false;
  }

  bool open() {
    if (depth_ == limits::kJSONDepth) return cursor_.fail(cursor_.at, reason::kTooDeep);
    frames_[depth_++] = {values_.size(), 0, *cursor_.at == Unit{'{'}, true};
    ++cursor_.at;
    opened_ = true;
    return true;
  }

  bool close(const Frame& frame) {
    const std::size_t count = values_.size() - frame.first;
    if (count > UINT32_MAX) return cursor_.fail(cursor_.at, reason::kTooLong);
    Value* children = values_.from(frame.first);
    Value container = frame.isDictionary ? Value(detail::ValueBulk::dictionary(children, count / 2, frame.distinct))
                                         : Value(detail::ValueBulk::list(children, count));
    values_.forget(frame.first);
    new (values_.place()) Value(std::move(container));
    values_.push();
    --depth_;
    return true;
  }

  bool readKey(Frame& frame) {
    if (!cursor_.take('"')) return cursor_.unexpected();
    if (!keys_.read(values_.place(), frame.seen, frame.distinct)) return false;
    values_.push();
    cursor_.skipSpace();
    if (!cursor_.take(':')) return cursor_.unexpected();
    cursor_.skipSpace();
    return true;
  }

  bool readScalar() {
    Value* place = values_.place();
    if (cursor_.take('"')) return text_.read(place);
    if (cursor_.isAtDigit() || cursor_.isAt('-')) return NumberReader<Unit>(cursor_).read(place);
    if (cursor_.isAt('t')) return readWord("true", place, true);
    if (cursor_.isAt('f')) return readWord("false", place, false);
    if (cursor_.isAt('n')) return readWord("null", place, null);
    return cursor_.unexpected();
  }

  template <class Meaning>
  bool readWord(std::string_view word, Value* place, Meaning meaning) {
    for (const char letter : word) {
      if (!cursor_.take(letter)) return cursor_.unexpected();
    }
    new (place) Value(meaning);
    return true;
  }

  Cursor<Unit> cursor_;
  TextReader<Unit> text_{cursor_};
  KeyReader<Unit> keys_{cursor_, text_};
  ValueStack values_;
  std::size_t depth_ = 0;
  bool opened_ = false;  // an opening bracket has just been passed
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
