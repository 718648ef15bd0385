#include <quorvel/Platform/Foundation/PatternTraits.h>
#include <quorvel/Platform/Foundation/UnitScan.h>

namespace quorvel {
namespace {

constexpr bool isLetterOrDigit(char16_t unit) {
  const char16_t letter = unitscan::foldASCII(unit);
  return (letter >= u'a' && letter <= u'z') || (unit >= u'0' && unit <= u'9') || unitscan::isSyllableOrIdeograph(unit);
}

/// Characters that stand for themselves outside of sets.
constexpr bool isPlain(char16_t unit) {
  constexpr std::u16string_view kMarks = u" !\"%&',-/:;<=>@_`~";
  return isLetterOrDigit(unit) || kMarks.find(unit) != std::u16string_view::npos;
}
/// Characters that stand for themselves after a reverse solidus.
constexpr bool isEscapable(char16_t unit) {
  constexpr std::u16string_view kMarks = u"!#$%&()*+,-./:;=?@[\\]^_{|}~";
  return kMarks.find(unit) != std::u16string_view::npos;
}
constexpr bool isQuantifier(char16_t unit) { return unit == u'*' || unit == u'+' || unit == u'?' || unit == u'{'; }

}  // namespace

String literalPrefix(StringView pattern) {
  if (pattern.units().find(u'|') != std::u16string_view::npos) return {};
  StringBuilder prefix;
  std::size_t i = 0;
  while (i < pattern.size()) {
    const bool isEscape = pattern[i] == u'\\' && i + 1 < pattern.size() && isEscapable(pattern[i + 1]);
    if (!isEscape && !isPlain(pattern[i])) break;
    prefix.append(pattern[isEscape ? i + 1 : i]);
    i += isEscape ? 2 : 1;
  }
  // The last character may be there any number of times, or not at all.
  if (i < pattern.size() && isQuantifier(pattern[i]) && prefix.size() > 0) prefix.truncate(prefix.size() - 1);
  return prefix.finish();
}

}  // namespace quorvel
