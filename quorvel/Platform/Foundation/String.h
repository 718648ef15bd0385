// String and StringView: text as UTF-16 code units. Every length, index and range counts UTF-16 units.
// Not here: comparison beyond code units (Comparison.h), character sets (CharacterSet.h), UTF-8 kernels (Unicode.h).
#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <quorvel/Platform/Foundation/Nil.h>

namespace quorvel::blockcache {
class Pages;
}

namespace quorvel {

class String;

/// A borrowed text: pointer and length, or nil. The text must outlive it, as with `std::string_view`.
class StringView {
 public:
  constexpr StringView(Nil) {}
  constexpr StringView(std::nullopt_t) {}
  template <std::size_t N>
  constexpr StringView(const char16_t (&literal)[N]) : data_(literal), size_(N - 1) {}
  constexpr StringView(const char16_t* data, std::size_t size) : data_(data ? data : u""), size_(size) {}
  constexpr StringView(std::u16string_view text) : StringView(text.data(), text.size()) {}
  StringView(const std::u16string& text) : data_(text.data()), size_(text.size()) {}
  StringView(const String& text);
  StringView(const std::optional<String>& text);

  [[nodiscard]] constexpr bool isNil() const { return data_ == nullptr; }
  [[nodiscard]] constexpr bool isEmpty() const { return size_ == 0; }
  /// UTF-16 units; 0 for nil.
  [[nodiscard]] constexpr std::size_t size() const { return size_; }
  [[nodiscard]] constexpr const char16_t* data() const { return data_; }
  [[nodiscard]] constexpr const char16_t* begin() const { return data_; }
  [[nodiscard]] constexpr const char16_t* end() const { return data_ + size_; }
  [[nodiscard]] constexpr char16_t operator[](std::size_t index) const { return data_[index]; }
  [[nodiscard]] constexpr char16_t front() const { return data_[0]; }
  [[nodiscard]] constexpr char16_t back() const { return data_[size_ - 1]; }

  /// The units from `from`, at most `count` of them; positions past the end give an empty text.
  [[nodiscard]] constexpr StringView sub(std::size_t from, std::size_t count = SIZE_MAX) const {
    if (from > size_) from = size_;
    const std::size_t room = size_ - from;
    return StringView(data_ + from, count < room ? count : room);
  }
  /// True when both views name the same place in memory.
  [[nodiscard]] constexpr bool isSameAs(StringView other) const { return data_ == other.data_ && size_ == other.size_; }
  [[nodiscard]] constexpr std::u16string_view units() const { return {data_, size_}; }

 private:
  constexpr StringView() = default;

  const char16_t* data_ = nullptr;
  std::size_t size_ = 0;
};

/// Literal equality: the same units; nil equals nil alone.
[[nodiscard]] inline bool operator==(StringView a, StringView b) {
  if (a.size() != b.size() || a.isNil() != b.isNil()) return false;
  return a.size() == 0 || std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0;
}
/// Order by code unit; nil first.
[[nodiscard]] std::strong_ordering operator<=>(StringView a, StringView b);

/// Immutable text, never nil. Copying is O(1); up to seven units are held inline in its 16 bytes.
class String {
 public:
  constexpr String() noexcept : inline_{}, unused_(0), tag_(0) {}
  String(StringView text);  // nil gives the empty text
  template <std::size_t N>
  String(const char16_t (&text)[N]) : String(StringView(text)) {}
  String(std::u16string_view text) : String(StringView(text)) {}
  String(const std::u16string& text) : String(StringView(text)) {}
  String(const char16_t* data, std::size_t size) : String(StringView(data, size)) {}
  String(const String& other) noexcept {
    std::memcpy(static_cast<void*>(this), &other, sizeof *this);
    if (isShared()) retain();
  }
  String(String&& other) noexcept {
    std::memcpy(static_cast<void*>(this), &other, sizeof *this);
    other.tag_ = 0;
  }
  String& operator=(const String& other) noexcept {
    String(other).swap(*this);
    return *this;
  }
  String& operator=(String&& other) noexcept {
    other.swap(*this);
    return *this;
  }
  ~String() {
    if (isShared()) release();
  }

  /// A text over units that live as long as the program, without a copy.
  template <std::size_t N>
  [[nodiscard]] static String literal(const char16_t (&text)[N]) {
    return String(Static{text, N - 1});
  }
  /// nil when the bytes are not valid UTF-8 (RFC 3629), or more than `limits::kStringLength` units.
  [[nodiscard]] static std::optional<String> fromUTF8(std::string_view bytes);
  /// Each maximal ill-formed piece becomes U+FFFD (Unicode, chapter 3.9).
  [[nodiscard]] static String fromUTF8Replacing(std::string_view bytes);
  /// Bytes 0 to 127, each one unit.
  [[nodiscard]] static String fromASCII(std::string_view bytes);
  /// A copy whose units lie among other blocks of `pages`.
  [[nodiscard]] static String among(StringView text, blockcache::Pages& pages);
  /// A text of at most `capacity` units, which `fill(char16_t* out)` writes; it returns how many it wrote.
  template <class Fill>
  [[nodiscard]] static String build(std::size_t capacity, Fill&& fill);

  /// nil when the text holds an unpaired surrogate.
  [[nodiscard]] std::optional<std::string> toUTF8() const;
  /// Unpaired surrogates become U+FFFD.
  [[nodiscard]] std::string toUTF8Replacing() const;

  [[nodiscard]] std::size_t size() const noexcept { return tag_ <= kInlineCapacity ? tag_ : remote().size; }
  [[nodiscard]] bool isEmpty() const noexcept { return tag_ == 0; }
  [[nodiscard]] const char16_t* data() const noexcept { return tag_ <= kInlineCapacity ? inline_ : remote().data; }
  [[nodiscard]] const char16_t* begin() const noexcept { return data(); }
  [[nodiscard]] const char16_t* end() const noexcept { return data() + size(); }
  [[nodiscard]] char16_t operator[](std::size_t index) const noexcept { return data()[index]; }

  void swap(String& other) noexcept {
    alignas(String) unsigned char bytes[sizeof(String)];
    std::memcpy(bytes, static_cast<const void*>(this), sizeof bytes);
    std::memcpy(static_cast<void*>(this), &other, sizeof bytes);
    std::memcpy(static_cast<void*>(&other), bytes, sizeof bytes);
  }

  /// The 16 bytes end in a tag: 0 to 7 the length of an inline text, then where the units are kept. `Value` keeps its
  /// own kinds in the same byte, beyond these.
  static constexpr std::uint8_t kInlineCapacity = 7;
  static constexpr std::uint8_t kStaticTag = 8;
  static constexpr std::uint8_t kSharedTag = 9;

 private:
  struct Remote {
    const char16_t* data;
    std::uint32_t size;
  };
  struct Static {
    const char16_t* data;
    std::size_t size;
  };
  friend class StringBuilder;

  explicit String(Static text) noexcept { setRemote(text.data, text.size, kStaticTag); }
  /// Takes over units from `allocateUnits`; short texts move inline and the units are freed.
  static String adopt(char16_t* units, std::size_t size);
  /// Units with a count of references before them, for `adopt`.
  static char16_t* allocateUnits(std::size_t capacity);
  static char16_t* reallocateUnits(char16_t* units, std::size_t capacity);
  static void freeUnits(char16_t* units);

  [[nodiscard]] bool isShared() const noexcept { return tag_ == kSharedTag; }
  [[nodiscard]] Remote remote() const noexcept {
    Remote result;
    std::memcpy(&result.data, inline_, sizeof result.data);
    std::memcpy(&result.size, inline_ + 4, sizeof result.size);
    return result;
  }
  void setRemote(const char16_t* data, std::size_t size, std::uint8_t tag) noexcept {
    const auto size32 = static_cast<std::uint32_t>(size);
    std::memcpy(inline_, &data, sizeof data);
    std::memcpy(inline_ + 4, &size32, sizeof size32);
    tag_ = tag;
  }
  void retain() const noexcept;
  void release() noexcept;

  alignas(8) char16_t inline_[kInlineCapacity];
  [[maybe_unused]] std::uint8_t unused_;
  std::uint8_t tag_;
};
static_assert(sizeof(String) == 16);

inline StringView::StringView(const String& text) : data_(text.data()), size_(text.size()) {}
inline StringView::StringView(const std::optional<String>& text)
    : data_(text ? text->data() : nullptr), size_(text ? text->size() : 0) {}

// Exact overloads, so that texts of two types compare without a choice of conversions.
[[nodiscard]] inline bool operator==(const String& a, const String& b) { return StringView(a) == StringView(b); }
[[nodiscard]] inline std::strong_ordering operator<=>(const String& a, const String& b) {
  return StringView(a) <=> StringView(b);
}

std::ostream& operator<<(std::ostream& out, StringView text);
std::ostream& operator<<(std::ostream& out, const String& text);

/// Grows a text at its end. The first 120 units stay on the stack.
class StringBuilder {
 public:
  StringBuilder() = default;
  StringBuilder(const StringBuilder&) = delete;
  StringBuilder& operator=(const StringBuilder&) = delete;
  ~StringBuilder() {
    if (units_ != stack_) String::freeUnits(units_);
  }

  void reserve(std::size_t capacity) {
    if (capacity > capacity_) grow(capacity);
  }
  void append(char16_t unit) {
    if (size_ == capacity_) grow(size_ + 1);
    units_[size_++] = unit;
  }
  void append(StringView text) {
    if (text.size()) std::memcpy(extend(text.size()), text.data(), text.size() * sizeof(char16_t));
  }
  void appendASCII(std::string_view bytes) {
    char16_t* out = extend(bytes.size());
    for (const char byte : bytes) *out++ = static_cast<unsigned char>(byte);
  }
  void appendScalar(char32_t scalar) {
    if (scalar > 0xFFFF) append(static_cast<char16_t>(0xD7C0 + (scalar >> 10)));
    append(static_cast<char16_t>(scalar > 0xFFFF ? 0xDC00 | (scalar & 0x3FF) : scalar));
  }
  void append(std::size_t count, char16_t unit) {
    char16_t* out = extend(count);
    for (std::size_t i = 0; i < count; ++i) out[i] = unit;
  }
  /// Room for `count` units more at the end, to be written by the caller.
  [[nodiscard]] char16_t* extend(std::size_t count) {
    if (count > capacity_ - size_) grow(size_ + count);
    char16_t* place = units_ + size_;
    size_ += count;
    return place;
  }
  /// Drops all units from `size` on.
  void truncate(std::size_t size) { size_ = size < size_ ? size : size_; }

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] StringView view() const { return StringView(units_, size_); }
  [[nodiscard]] char16_t* data() { return units_; }
  /// The text built so far; the builder is empty afterwards.
  [[nodiscard]] String finish();

 private:
  void grow(std::size_t needed);

  static constexpr std::size_t kStackCapacity = 120;
  char16_t stack_[kStackCapacity];
  char16_t* units_ = stack_;
  std::size_t size_ = 0;
  std::size_t capacity_ = kStackCapacity;
};

template <class Fill>
String String::build(std::size_t capacity, Fill&& fill) {
  if (capacity <= kInlineCapacity) {
    String result;
    result.tag_ = static_cast<std::uint8_t>(fill(result.inline_));
    return result;
  }
  char16_t* units = allocateUnits(capacity);
  const std::size_t size = fill(units);
  if (size < capacity - capacity / 4 && size > kInlineCapacity) units = reallocateUnits(units, size);
  return adopt(units, size);
}

}  // namespace quorvel
