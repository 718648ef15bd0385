// NSCharacterSet: sets of Unicode scalars with exact membership (general categories of Unicode 15). Membership is by
// scalar, without canonical equivalence; an unpaired surrogate is asked as its code point.
// Not here: what is done with a set (StringOperations.h, PercentEncoding.h).
#pragma once

#include <memory>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// An immutable set, cheap to copy. The standard sets are built once, on first use.
class NSCharacterSet {
 public:
  /// The empty set.
  NSCharacterSet();
  /// The scalars of `text`.
  [[nodiscard]] static NSCharacterSet withCharactersIn(StringView text);

  [[nodiscard]] static const NSCharacterSet& whitespaceAndNewline();  // U+0009-000D, U+0085, Zs, Zl, Zp
  [[nodiscard]] static const NSCharacterSet& whitespace();            // U+0009, Zs
  [[nodiscard]] static const NSCharacterSet& newline();               // U+000A-000D, U+0085, U+2028, U+2029
  [[nodiscard]] static const NSCharacterSet& control();               // Cc, Cf
  [[nodiscard]] static const NSCharacterSet& nonBase();               // Mn, Mc, Me
  [[nodiscard]] static const NSCharacterSet& decimalDigit();          // Nd
  [[nodiscard]] static const NSCharacterSet& urlUserAllowed();
  [[nodiscard]] static const NSCharacterSet& urlPasswordAllowed();
  [[nodiscard]] static const NSCharacterSet& urlHostAllowed();
  [[nodiscard]] static const NSCharacterSet& urlPathAllowed();
  [[nodiscard]] static const NSCharacterSet& urlQueryAllowed();
  [[nodiscard]] static const NSCharacterSet& urlFragmentAllowed();

  [[nodiscard]] bool contains(char32_t scalar) const;
  /// The first place at or after `from` where a member begins, or the text's size; `length` becomes the member's units.
  [[nodiscard]] std::size_t find(StringView text, std::size_t from, std::size_t& length) const;
  [[nodiscard]] NSCharacterSet inverted() const;
  [[nodiscard]] NSCharacterSet unionWith(const NSCharacterSet& other) const;
  [[nodiscard]] NSCharacterSet intersectionWith(const NSCharacterSet& other) const;
  /// The set without the scalars of `text`.
  [[nodiscard]] NSCharacterSet removing(StringView text) const;

  friend bool operator==(const NSCharacterSet& a, const NSCharacterSet& b);

 private:
  struct Members;
  explicit NSCharacterSet(std::shared_ptr<const Members> members);
  std::shared_ptr<const Members> members_;
};

/// True for the members of `NSCharacterSet::whitespaceAndNewline`; inline, for the hot paths of trimming.
[[nodiscard]] constexpr bool isWhitespaceOrNewline(char32_t scalar) {
  if (scalar < 0x1680) return (scalar >= 0x09 && scalar <= 0x0D) || scalar == 0x20 || scalar == 0x85 || scalar == 0xA0;
  if (scalar > 0x3000) return false;
  return scalar == 0x1680 || (scalar >= 0x2000 && scalar <= 0x200A) || scalar == 0x2028 || scalar == 0x2029 ||
         scalar == 0x202F || scalar == 0x205F || scalar == 0x3000;
}

}  // namespace quorvel
