#include <array>

#include <unicode/uchar.h>

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr std::size_t kPlanes = 17;
constexpr char32_t kPlaneSize = 0x10000;

/// One bit for each scalar of a plane.
using Plane = std::array<std::uint64_t, kPlaneSize / 64>;

}  // namespace

/// A plane without members is nullptr.
struct NSCharacterSet::Members {
  std::array<std::shared_ptr<const Plane>, kPlanes> planes;

  void add(char32_t scalar) {
    // The planes of a set that is being built belong to it alone.
    auto& plane = planes[scalar / kPlaneSize];
    if (!plane) plane = std::make_shared<Plane>();
    bitWord(*std::const_pointer_cast<Plane>(plane), scalar) |= std::uint64_t{1} << (scalar % 64);
  }
  static std::uint64_t& bitWord(Plane& plane, char32_t scalar) { return plane[scalar % kPlaneSize / 64]; }

  template <class Combine>
  static std::shared_ptr<Members> combined(const Members& a, const Members& b, Combine combine) {
    static const Plane kEmpty{};
    auto result = std::make_shared<Members>();
    for (std::size_t i = 0; i < kPlanes; ++i) {
      const Plane& left = a.planes[i] ? *a.planes[i] : kEmpty;
      const Plane& right = b.planes[i] ? *b.planes[i] : kEmpty;
      auto plane = std::make_shared<Plane>();
      for (std::size_t word = 0; word < plane->size(); ++word) (*plane)[word] = combine(left[word], right[word]);
      if (*plane != kEmpty) result->planes[i] = std::move(plane);
    }
    return result;
  }

  static std::shared_ptr<Members> ofCategories(std::uint32_t categories) {
    struct Context {
      Members& members;
      std::uint32_t wanted;
    };
    auto result = std::make_shared<Members>();
    const Context context{*result, categories};
    u_enumCharTypes(
        [](const void* opaque, UChar32 start, UChar32 limit, UCharCategory type) -> UBool {
          const auto& [members, wanted] = *static_cast<const Context*>(opaque);
          if ((U_MASK(type) & wanted) == 0) return true;
          for (UChar32 scalar = start; scalar < limit; ++scalar) members.add(static_cast<char32_t>(scalar));
          return true;
        },
        &context);
    return result;
  }
  static std::shared_ptr<Members> ofText(StringView text) {
    auto result = std::make_shared<Members>();
    for (std::size_t i = 0; i < text.size();) result->add(unicode::nextScalar(text, i));
    return result;
  }
};

NSCharacterSet::NSCharacterSet() : members_(std::make_shared<Members>()) {}
NSCharacterSet::NSCharacterSet(std::shared_ptr<const Members> members) : members_(std::move(members)) {}

NSCharacterSet NSCharacterSet::withCharactersIn(StringView text) { return NSCharacterSet(Members::ofText(text)); }

const NSCharacterSet& NSCharacterSet::whitespaceAndNewline() {
  static const NSCharacterSet set =
      NSCharacterSet(Members::ofCategories(U_GC_Z_MASK)).unionWith(withCharactersIn(u"\t\n\v\f\r\u0085"));
  return set;
}
const NSCharacterSet& NSCharacterSet::whitespace() {
  static const NSCharacterSet set =
      NSCharacterSet(Members::ofCategories(U_GC_ZS_MASK)).unionWith(withCharactersIn(u"\t"));
  return set;
}
const NSCharacterSet& NSCharacterSet::newline() {
  static const NSCharacterSet set = withCharactersIn(u"\n\v\f\r\u0085\u2028\u2029");
  return set;
}
const NSCharacterSet& NSCharacterSet::control() {
  static const NSCharacterSet set(Members::ofCategories(U_GC_CC_MASK | U_GC_CF_MASK));
  return set;
}
const NSCharacterSet& NSCharacterSet::nonBase() {
  static const NSCharacterSet set(Members::ofCategories(U_GC_M_MASK));
  return set;
}
const NSCharacterSet& NSCharacterSet::decimalDigit() {
  static const NSCharacterSet set(Members::ofCategories(U_GC_ND_MASK));
  return set;
}

namespace {

// Built on demand from the letters and digits that all six URL sets share.
NSCharacterSet lettersDigitsAnd(StringView others) {
  return NSCharacterSet::withCharactersIn(u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789")
      .unionWith(NSCharacterSet::withCharactersIn(others));
}

}  // namespace

const NSCharacterSet& NSCharacterSet::urlUserAllowed() {
  static const NSCharacterSet set = lettersDigitsAnd(u"!$&'()*+,-.;=_~");
  return set;
}
const NSCharacterSet& NSCharacterSet::urlPasswordAllowed() { return urlUserAllowed(); }
const NSCharacterSet& NSCharacterSet::urlHostAllowed() {
  static const NSCharacterSet set = lettersDigitsAnd(u"!$&'()*+,-.;=_~:[]");
  return set;
}
const NSCharacterSet& NSCharacterSet::urlPathAllowed() {
  static const NSCharacterSet set = lettersDigitsAnd(u"!$&'()*+,-./:=@_~");
  return set;
}
const NSCharacterSet& NSCharacterSet::urlQueryAllowed() {
  static const NSCharacterSet set = lettersDigitsAnd(u"!$&'()*+,-./:;=?@_~");
  return set;
}
const NSCharacterSet& NSCharacterSet::urlFragmentAllowed() { return urlQueryAllowed(); }

bool NSCharacterSet::contains(char32_t scalar) const {
  if (scalar >= kPlanes * kPlaneSize) return false;
  const auto& plane = members_->planes[scalar / kPlaneSize];
  return plane && ((*plane)[scalar % kPlaneSize / 64] >> (scalar % 64) & 1) != 0;
}

std::size_t NSCharacterSet::find(StringView text, std::size_t from, std::size_t& length) const {
  const Plane* const basic = members_->planes[0].get();
  length = 1;
  while (from < text.size()) {
    const char16_t unit = text[from];
    if (!unicode::isSurrogate(unit)) {
      if (basic && ((*basic)[unit / 64] >> (unit % 64) & 1) != 0) return from;
      ++from;
      continue;
    }
    std::size_t next = from;
    const bool isMember = contains(unicode::nextScalar(text, next));
    length = next - from;
    if (isMember) return from;
    length = 1;
    from = next;
  }
  return from;
}

NSCharacterSet NSCharacterSet::inverted() const {
  return NSCharacterSet(Members::combined(*members_, *members_, [](std::uint64_t a, std::uint64_t) { return ~a; }));
}
NSCharacterSet NSCharacterSet::unionWith(const NSCharacterSet& other) const {
  return NSCharacterSet(
      Members::combined(*members_, *other.members_, [](std::uint64_t a, std::uint64_t b) { return a | b; }));
}
NSCharacterSet NSCharacterSet::intersectionWith(const NSCharacterSet& other) const {
  return NSCharacterSet(
      Members::combined(*members_, *other.members_, [](std::uint64_t a, std::uint64_t b) { return a & b; }));
}
NSCharacterSet NSCharacterSet::removing(StringView text) const {
  return NSCharacterSet(
      Members::combined(*members_, *Members::ofText(text), [](std::uint64_t a, std::uint64_t b) { return a & ~b; }));
}

bool operator==(const NSCharacterSet& a, const NSCharacterSet& b) {
  for (std::size_t i = 0; i < kPlanes; ++i) {
    const auto& left = a.members_->planes[i];
    const auto& right = b.members_->planes[i];
    if (left == right) continue;
    static const Plane kEmpty{};
    if ((left ? *left : kEmpty) != (right ? *right : kEmpty)) return false;
  }
  return true;
}

}  // namespace quorvel
