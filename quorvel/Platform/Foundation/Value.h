// Value, List, Dictionary, Date, Data: the dynamically typed values that records are made of.
// Not here: their textual forms (Description.h), JSON (NSJSONSerialization.h), coercing getters
// (NSDictionary+Addtion.h).
//
// All are values: copying is O(1) and shares, changing copies first what is shared. None of the operations recurses on
// nesting depth, so a million nested lists may be compared, copied, hashed and destroyed on a small stack.
#pragma once

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

#include <quorvel/Platform/Foundation/Number.h>
#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

class Value;
class List;
class Dictionary;

/// The null marker of a decoded record: a value, unlike nil.
struct Null {
  friend constexpr bool operator==(Null, Null) = default;
};
inline constexpr Null null{};

/// A moment, in seconds since 1970-01-01 00:00:00 UTC, fractions kept.
struct Date {
  double secondsSince1970 = 0;
  friend constexpr bool operator==(Date, Date) = default;
  friend constexpr auto operator<=>(Date, Date) = default;
};

/// Anything else that a list, a dictionary or a span's attributes can hold: attributed text, a colour, a font.
/// Instances are immutable once they are in a Value.
class Object {
 public:
  virtual ~Object() = default;
  [[nodiscard]] virtual bool isEqual(const Object& other) const = 0;
  [[nodiscard]] virtual std::uint64_t hash() const = 0;
  [[nodiscard]] virtual String className() const = 0;
  [[nodiscard]] virtual String description() const = 0;
};

namespace detail {

/// What every counted block begins with.
struct Block;
struct ListBlock;
struct DictionaryBlock;
struct DataBlock;
struct ValueBulk;

}  // namespace detail

/// An immutable byte buffer, shared by its copies.
class Data {
 public:
  constexpr Data() noexcept = default;
  explicit Data(std::span<const std::uint8_t> bytes);
  /// Bytes that are overwritten before their memory is given back.
  [[nodiscard]] static Data secret(std::span<const std::uint8_t> bytes);
  /// The same, to be written through `room` before anyone else sees them.
  [[nodiscard]] static Data secret(std::size_t size, std::span<std::uint8_t>& room);
  Data(const Data& other) noexcept;
  Data(Data&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  Data& operator=(Data other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~Data();

  [[nodiscard]] std::span<const std::uint8_t> bytes() const noexcept;
  [[nodiscard]] std::size_t size() const noexcept { return bytes().size(); }
  friend bool operator==(const Data& a, const Data& b);

 private:
  detail::DataBlock* block_ = nullptr;
};

/// A list of values, copied on write.
class List {
 public:
  constexpr List() noexcept = default;
  List(std::initializer_list<Value> values);
  List(const List& other) noexcept;
  List(List&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  List& operator=(List other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~List();

  [[nodiscard]] std::size_t size() const noexcept;
  [[nodiscard]] bool isEmpty() const noexcept { return size() == 0; }
  [[nodiscard]] const Value* begin() const noexcept;
  [[nodiscard]] const Value* end() const noexcept;
  [[nodiscard]] const Value& operator[](std::size_t index) const;

  void reserve(std::size_t capacity);
  void append(Value value);
  void appendContentsOf(const List& values);
  void insert(std::size_t index, Value value);
  void remove(std::size_t index);
  void set(std::size_t index, Value value);
  /// The element itself, to be changed in place; the list is made the only owner of its elements first.
  [[nodiscard]] Value& mutableAt(std::size_t index);

  /// True when both share one block, so that they are equal without a look at the elements.
  [[nodiscard]] bool isSameAs(const List& other) const noexcept { return block_ == other.block_; }
  friend bool operator==(const List& a, const List& b);

 private:
  friend class Value;
  friend struct ValueWalk;
  friend struct detail::ValueBulk;
  void makeUnique(std::size_t capacity);

  detail::ListBlock* block_ = nullptr;
};

struct Entry;

/// Entries from keys (any value; strings mostly) to values, in the order in which the keys came first; copied on write.
/// Lookup takes constant time on average, removal linear time.
class Dictionary {
 public:
  constexpr Dictionary() noexcept = default;
  Dictionary(std::initializer_list<Entry> entries);  // a later entry replaces an earlier one of the same key
  Dictionary(const Dictionary& other) noexcept;
  Dictionary(Dictionary&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  Dictionary& operator=(Dictionary other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~Dictionary();

  [[nodiscard]] std::size_t size() const noexcept;
  [[nodiscard]] bool isEmpty() const noexcept { return size() == 0; }
  [[nodiscard]] const Entry* begin() const noexcept;
  [[nodiscard]] const Entry* end() const noexcept;

  /// nullptr when there is no such key.
  [[nodiscard]] const Value* find(StringView key) const;
  [[nodiscard]] const Value* find(const String& key) const { return find(StringView(key)); }
  [[nodiscard]] const Value* find(const Value& key) const;
  /// A nil value when there is no such key.
  [[nodiscard]] const Value& operator[](StringView key) const;

  void reserve(std::size_t capacity);
  /// Stores under the key, in place of what was there. A nil value removes the key.
  void set(Value key, Value value);
  /// Stores unless the key is there already; says whether it stored.
  bool insert(Value key, Value value);
  bool remove(const Value& key);
  /// The value itself, to be changed in place, or nullptr; the dictionary is made the only owner of its entries first.
  [[nodiscard]] Value* mutableFind(StringView key);

  [[nodiscard]] bool isSameAs(const Dictionary& other) const noexcept { return block_ == other.block_; }
  /// The same keys with equal values, in whatever order.
  friend bool operator==(const Dictionary& a, const Dictionary& b);

 private:
  friend class Value;
  friend struct ValueWalk;
  friend struct detail::ValueBulk;
  void makeUnique(std::size_t capacity);
  [[nodiscard]] std::size_t indexOf(const Value& key) const;
  void appendNew(Value key, Value value);

  detail::DictionaryBlock* block_ = nullptr;
};

/// A type whose copies a Value may carry as an Object: equality, a hash, a class name and a description.
template <class T>
concept Boxable = std::is_class_v<T> && requires(const T& value) {
  { T::className() } -> std::same_as<String>;
  { value.description() } -> std::same_as<String>;
  { value.hash() } -> std::same_as<std::uint64_t>;
};

/// A value of any kind, or nil. 16 bytes; short texts and all numbers are held inside.
class Value {
 public:
  enum class Kind : std::uint8_t { Nil, Null, Number, String, Date, Data, List, Dictionary, Object };

  constexpr Value() noexcept : pad_{}, tag_(kNilTag) {}
  constexpr Value(Nil) noexcept : Value() {}
  constexpr Value(std::nullopt_t) noexcept : Value() {}
  Value(Null) noexcept : Value() { tag_ = kNullTag; }
  Value(Number number) noexcept;
  template <Arithmetic T>
  Value(T number) noexcept : Value(Number(number)) {}
  Value(const String& text) noexcept { new (static_cast<void*>(this)) String(text); }
  Value(String&& text) noexcept { new (static_cast<void*>(this)) String(std::move(text)); }
  Value(StringView text);  // a nil view gives nil
  template <std::size_t N>
  Value(const char16_t (&text)[N]) : Value(StringView(text)) {}
  Value(Date date) noexcept;
  Value(Data data) noexcept;
  Value(List list) noexcept;
  Value(Dictionary dictionary) noexcept;
  /// nullptr gives nil.
  explicit Value(std::shared_ptr<const Object> object);
  template <Boxable T>
  Value(T value);
  template <class T>
    requires std::constructible_from<Value, const T&>
  Value(const std::optional<T>& value) : Value() {
    if (value) *this = Value(*value);
  }

  Value(const Value& other) noexcept {
    std::memcpy(static_cast<void*>(this), &other, sizeof *this);
    if (isCounted()) retain();
  }
  Value(Value&& other) noexcept {
    std::memcpy(static_cast<void*>(this), &other, sizeof *this);
    other.tag_ = kNilTag;
  }
  Value& operator=(const Value& other) noexcept {
    Value(other).swap(*this);
    return *this;
  }
  Value& operator=(Value&& other) noexcept {
    Value taken(std::move(other));
    taken.swap(*this);
    return *this;
  }
  ~Value() {
    if (isCounted()) release();
  }
  void swap(Value& other) noexcept {
    alignas(Value) unsigned char bytes[16];
    std::memcpy(bytes, static_cast<const void*>(this), sizeof bytes);
    std::memcpy(static_cast<void*>(this), &other, sizeof bytes);
    std::memcpy(static_cast<void*>(&other), bytes, sizeof bytes);
  }

  [[nodiscard]] Kind kind() const noexcept;
  [[nodiscard]] bool isNil() const noexcept { return tag_ == kNilTag; }
  [[nodiscard]] bool isNull() const noexcept { return tag_ == kNullTag; }
  [[nodiscard]] bool isString() const noexcept { return tag_ <= String::kSharedTag; }
  [[nodiscard]] bool isNumber() const noexcept { return tag_ >= kNumberTag && tag_ < kNumberTag + 5; }
  [[nodiscard]] bool isList() const noexcept { return tag_ == kListTag; }
  [[nodiscard]] bool isDictionary() const noexcept { return tag_ == kDictionaryTag; }

  // Each answers nullptr (or nothing) when the value is of another kind.
  [[nodiscard]] const String* asString() const noexcept { return isString() ? place<String>() : nullptr; }
  [[nodiscard]] std::optional<Number> asNumber() const noexcept;
  [[nodiscard]] std::optional<Date> asDate() const noexcept;
  [[nodiscard]] const Data* asData() const noexcept { return tag_ == kDataTag ? place<Data>() : nullptr; }
  [[nodiscard]] const List* asList() const noexcept { return isList() ? place<List>() : nullptr; }
  [[nodiscard]] const Dictionary* asDictionary() const noexcept {
    return isDictionary() ? place<Dictionary>() : nullptr;
  }
  [[nodiscard]] const Object* asObject() const noexcept;
  [[nodiscard]] List* mutableList() noexcept { return isList() ? place<List>() : nullptr; }
  [[nodiscard]] Dictionary* mutableDictionary() noexcept { return isDictionary() ? place<Dictionary>() : nullptr; }
  /// The boxed value of a type that the library or a program put in, or nullptr.
  template <Boxable T>
  [[nodiscard]] const T* as() const noexcept;
  /// The text of a string; nil for every other kind.
  [[nodiscard]] StringView text() const noexcept { return isString() ? StringView(*place<String>()) : StringView(nil); }

  /// Numbers by exact value whatever their kind, strings unit by unit, lists in order, dictionaries by their entries.
  /// Linear in the size of both, shared parts counted once.
  friend bool operator==(const Value& a, const Value& b);
  /// Equal values have equal hashes, whatever their kind. The seed differs between processes.
  [[nodiscard]] std::uint64_t hash() const;

 private:
  friend struct ValueWalk;
  friend struct detail::ValueBulk;

  static constexpr std::uint8_t kNilTag = 16;
  static constexpr std::uint8_t kNullTag = 17;
  static constexpr std::uint8_t kNumberTag = 18;  // and four more, in the order of Number::Kind
  static constexpr std::uint8_t kDateTag = 23;
  static constexpr std::uint8_t kCountedTags = 32;  // from here on the first eight bytes point at a counted block
  static constexpr std::uint8_t kDataTag = 32;
  static constexpr std::uint8_t kListTag = 33;
  static constexpr std::uint8_t kDictionaryTag = 34;
  static constexpr std::uint8_t kObjectTag = 35;

  [[nodiscard]] bool isCounted() const noexcept { return tag_ >= kCountedTags || tag_ == String::kSharedTag; }
  void retain() const noexcept;
  void release() noexcept;
  [[nodiscard]] detail::Block* block() const noexcept {
    detail::Block* result;
    std::memcpy(static_cast<void*>(&result), pad_, sizeof result);
    return result;
  }
  template <class T>
  [[nodiscard]] T* place() noexcept {
    return std::launder(reinterpret_cast<T*>(this));
  }
  template <class T>
  [[nodiscard]] const T* place() const noexcept {
    return std::launder(reinterpret_cast<const T*>(this));
  }

  alignas(8) unsigned char pad_[15];
  std::uint8_t tag_;
};
static_assert(sizeof(Value) == 16);

struct Entry {
  Value key;
  Value value;
};

namespace detail {

template <Boxable T>
class Box final : public Object {
 public:
  explicit Box(T value) : value_(std::move(value)) {}
  [[nodiscard]] const T& value() const { return value_; }
  [[nodiscard]] bool isEqual(const Object& other) const override {
    const auto* box = dynamic_cast<const Box*>(&other);
    return box != nullptr && value_ == box->value_;
  }
  [[nodiscard]] std::uint64_t hash() const override { return value_.hash(); }
  [[nodiscard]] String className() const override { return T::className(); }
  [[nodiscard]] String description() const override { return value_.description(); }

 private:
  T value_;
};

}  // namespace detail

/// Writes the description, for diagnostics and tests. A template, so that nothing that merely converts to a Value is
/// written by it.
std::ostream& writeDescription(std::ostream& out, const Value& value);
template <class T>
  requires(std::same_as<T, Value> || std::same_as<T, List> || std::same_as<T, Dictionary>)
std::ostream& operator<<(std::ostream& out, const T& value) {
  return writeDescription(out, value);
}

template <Boxable T>
Value::Value(T value) : Value(std::make_shared<const detail::Box<T>>(std::move(value))) {}

template <Boxable T>
const T* Value::as() const noexcept {
  const auto* box = dynamic_cast<const detail::Box<T>*>(asObject());
  return box ? &box->value() : nullptr;
}

}  // namespace quorvel
