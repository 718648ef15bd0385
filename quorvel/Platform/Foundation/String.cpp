#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <ostream>

#include <quorvel/Platform/Foundation/BlockPages.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/String.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

// Before the units of a shared text stand its count of references, in the upper byte the class of its block, and in the
// two bytes below it the place of the block in its page.
using References = std::atomic<std::uint64_t>;
constexpr std::size_t kHeader = sizeof(References);
static_assert(kHeader == 8);
constexpr int kClassShift = 56;
constexpr int kPlaceShift = 40;
constexpr std::uint64_t kCount = (std::uint64_t{1} << kPlaceShift) - 1;

References* referencesOf(const char16_t* units) {
  return reinterpret_cast<References*>(reinterpret_cast<char*>(const_cast<char16_t*>(units)) - kHeader);
}

blockcache::SizeClass classOf(std::uint64_t references) {
  return static_cast<blockcache::SizeClass>(references >> kClassShift);
}

void giveBlock(References* block, std::uint64_t references) {
  const auto place = static_cast<blockcache::PagePlace>(references >> kPlaceShift);
  if (place != 0) return blockcache::Pages::give(block, place);
  blockcache::give(block, classOf(references));
}

}  // namespace

std::strong_ordering operator<=>(StringView a, StringView b) {
  if (a.isNil() || b.isNil()) return !a.isNil() <=> !b.isNil();
  const std::size_t common = std::min(a.size(), b.size());
  const std::size_t same = unicode::commonPrefix(a.data(), b.data(), common);
  if (same < common) return a[same] <=> b[same];
  return a.size() <=> b.size();
}

char16_t* String::allocateUnits(std::size_t capacity) {
  contract(capacity <= limits::kStringLength, "String", "a text longer than the limit");
  const std::size_t bytes = kHeader + capacity * sizeof(char16_t);
  const blockcache::SizeClass sizeClass = blockcache::classFor(bytes);
  void* block = blockcache::take(sizeClass, bytes);
  if (!block) throw std::bad_alloc();
  new (block) References(std::uint64_t{sizeClass} << kClassShift | 1);
  return reinterpret_cast<char16_t*>(static_cast<char*>(block) + kHeader);
}

char16_t* String::reallocateUnits(char16_t* units, std::size_t capacity) {
  contract(capacity <= limits::kStringLength, "String", "a text longer than the limit");
  const std::size_t bytes = kHeader + capacity * sizeof(char16_t);
  const blockcache::SizeClass sizeClass = classOf(referencesOf(units)->load(std::memory_order_relaxed));
  if (sizeClass != blockcache::kLarge) {
    if (bytes <= blockcache::bytesOf(sizeClass)) return units;
    char16_t* larger = allocateUnits(capacity);
    std::memcpy(larger, units, blockcache::bytesOf(sizeClass) - kHeader);
    freeUnits(units);
    return larger;
  }
  void* block = std::realloc(static_cast<void*>(referencesOf(units)), bytes);
  if (!block) throw std::bad_alloc();
  return reinterpret_cast<char16_t*>(static_cast<char*>(block) + kHeader);
}

void String::freeUnits(char16_t* units) {
  References* references = referencesOf(units);
  blockcache::give(references, classOf(references->load(std::memory_order_relaxed)));
}

String String::adopt(char16_t* units, std::size_t size) {
  String result;
  if (size > kInlineCapacity) {
    result.setRemote(units, size, kSharedTag);
    return result;
  }
  std::memcpy(result.inline_, units, size * sizeof(char16_t));
  result.tag_ = static_cast<std::uint8_t>(size);
  freeUnits(units);
  return result;
}

String::String(StringView text) : String() {
  if (text.size() <= kInlineCapacity) {
    if (text.size()) std::memcpy(inline_, text.data(), text.size() * sizeof(char16_t));
    tag_ = static_cast<std::uint8_t>(text.size());
    return;
  }
  char16_t* units = allocateUnits(text.size());
  std::memcpy(units, text.data(), text.size() * sizeof(char16_t));
  setRemote(units, text.size(), kSharedTag);
}

String String::among(StringView text, blockcache::Pages& pages) {
  if (text.size() <= kInlineCapacity) return String(text);
  blockcache::PagePlace place;
  void* block = pages.take(kHeader + text.size() * sizeof(char16_t), place);
  if (!block) throw std::bad_alloc();
  new (block) References(std::uint64_t{blockcache::kLarge} << kClassShift | std::uint64_t{place} << kPlaceShift | 1);
  auto* units = reinterpret_cast<char16_t*>(static_cast<char*>(block) + kHeader);
  std::memcpy(units, text.data(), text.size() * sizeof(char16_t));
  String result;
  result.setRemote(units, text.size(), kSharedTag);
  return result;
}

void String::retain() const noexcept { referencesOf(remote().data)->fetch_add(1, std::memory_order_relaxed); }

void String::release() noexcept {
  References* references = referencesOf(remote().data);
  const std::uint64_t before = references->load(std::memory_order_acquire);
  // A sole owner needs no locked instruction: nobody else can reach the text to copy it.
  if ((before & kCount) == 1 || (references->fetch_sub(1, std::memory_order_acq_rel) & kCount) == 1) {
    giveBlock(references, before);
  }
}

std::optional<String> String::fromUTF8(std::string_view bytes) {
  constexpr std::size_t kShort = 128;
  if (bytes.size() <= kShort) {
    char16_t units[kShort];
    const std::size_t size = unicode::utf8ToUTF16(bytes, units);
    return size == unicode::kInvalid ? std::nullopt : std::optional<String>(std::in_place, units, size);
  }
  const std::size_t size = unicode::utf16Length(bytes);
  if (size > limits::kStringLength) return nil;
  bool valid = true;
  String result = build(size, [&](char16_t* out) {
    const std::size_t written = unicode::utf8ToUTF16(bytes, out);
    valid = written != unicode::kInvalid;
    return valid ? written : 0;
  });
  if (!valid) return nil;
  return result;
}

String String::fromUTF8Replacing(std::string_view bytes) {
  return build(bytes.size(), [&](char16_t* out) { return unicode::utf8ToUTF16Replacing(bytes, out); });
}

String String::fromASCII(std::string_view bytes) {
  return build(bytes.size(), [&](char16_t* out) {
    for (const char byte : bytes) *out++ = static_cast<unsigned char>(byte);
    return bytes.size();
  });
}

std::optional<std::string> String::toUTF8() const { return unicode::toUTF8(*this); }

std::string String::toUTF8Replacing() const { return unicode::toUTF8Replacing(*this); }

std::ostream& operator<<(std::ostream& out, StringView text) {
  if (text.isNil()) return out << "<nil>";
  return out << unicode::toUTF8Replacing(text);
}

std::ostream& operator<<(std::ostream& out, const String& text) { return out << StringView(text); }

void StringBuilder::grow(std::size_t needed) {
  const std::size_t capacity = std::max(needed, std::min(capacity_ * 2, limits::kStringLength));
  if (units_ != stack_) {
    units_ = String::reallocateUnits(units_, capacity);
  } else {
    units_ = String::allocateUnits(capacity);
    std::memcpy(units_, stack_, size_ * sizeof(char16_t));
  }
  capacity_ = capacity;
}

String StringBuilder::finish() {
  String result;
  if (units_ == stack_) {
    result = String(view());
  } else {
    if (size_ < capacity_ - capacity_ / 8) units_ = String::reallocateUnits(units_, std::max<std::size_t>(size_, 1));
    result = String::adopt(units_, size_);
    units_ = stack_;
    capacity_ = kStackCapacity;
  }
  size_ = 0;
  return result;
}

}  // namespace quorvel
