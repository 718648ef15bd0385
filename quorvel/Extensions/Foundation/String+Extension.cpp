#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/Format.h>
#include <quorvel/Platform/Foundation/Log.h>
#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Platform/Foundation/UnitScan.h>

namespace quorvel {
namespace {

using unitscan::AnyOf;

/// Calls `piece(view)` for each piece between the characters, empty ones included.
template <class Piece>
void forEachPiece(StringView text, const AnyOf& characters, Piece piece) {
  std::size_t start = 0;
  while (true) {
    std::size_t length = 0;
    const std::size_t found = characters.find(text, start, length);
    piece(text.sub(start, found - start));
    if (found == text.size()) return;
    start = found + length;
  }
}

constexpr StringView kEmptyCharacters = u"\r\t";
constexpr StringView kNoBreakSpace = u"\u00A0";

String without(StringView text, const AnyOf& characters) {
  return String::build(text.size(), [&](char16_t* out) { return characters.copyWithout(text, out); });
}

/// What `trimmedString()` leaves, as a view: units are copied only when a no-break space stands between others.
class Trimmed {
 public:
  explicit Trimmed(StringView text) : view_(trimmedOfWhitespace(text)) {
    // No-break spaces at the ends are white space, and go with it whether they are removed first or not.
    if (unicode::findUnit(view_, kNoBreakSpace[0]) != unicode::kInvalid) {
      copy_ = without(view_, AnyOf(kNoBreakSpace));
      view_ = copy_;
    }
    view_ = trimmed(view_, NSCharacterSet::control());
  }
  Trimmed(const Trimmed&) = delete;
  Trimmed& operator=(const Trimmed&) = delete;

  [[nodiscard]] StringView view() const { return view_; }

 private:
  String copy_;
  StringView view_;
};

}  // namespace

bool StringExtension::isEmpty(StringView text) { return isBlankText(text); }
bool StringExtension::isNotEmpty(StringView text) { return !isBlankText(text); }

bool StringExtension::isEqualString(StringView lhs, StringView rhs) {
  const bool isLeftBlank = isBlankText(lhs);
  const bool isRightBlank = isBlankText(rhs);
  if (isLeftBlank || isRightBlank) return isLeftBlank && isRightBlank;
  const Trimmed left(lhs);
  const Trimmed right(rhs);
  return !left.view().isEmpty() && !right.view().isEmpty() && isCanonicallyEqual(left.view(), right.view());
}

String localized(const String& text) {
  const NSBundle bundle = NSBundle::main();
  for (const StringView table : {StringView(nil), StringView(u"NoTranslation")}) {
    String found = bundle.localizedString(text, u"", table);
    if (!isCanonicallyEqual(found, text)) return found;
  }
  return bundle.localizedString(text, u"", u"Localizable_dev");
}

String localizedFormat(const String& text, std::span<const Value> arguments) {
  return formatValues(localized(text), arguments);
}

std::optional<String> trimmedString(StringView text) {
  const Trimmed left(text);  // owns what the view may point into
  return left.view().isEmpty() ? std::nullopt : std::optional(String(left.view()));
}

std::size_t count(StringView text) { return countOfClusters(text); }

NSRange nsRangeOf(StringView text, StringView string, bool ignoreCase) {
  if (!ignoreCase || text.isNil() || string.isNil()) return rangeOfString(text, string);
  return rangeOfString(lowercased(text), lowercased(string));
}

StringView nsSubstringFrom(StringView text, std::int64_t from) {
  contract(from >= 0, "nsSubstring(from:)", "a negative index");
  return static_cast<std::uint64_t>(from) > text.size() ? text : text.sub(static_cast<std::size_t>(from));
}

StringView nsSubstringTo(StringView text, std::int64_t to) {
  contract(to >= 0, "nsSubstring(to:)", "a negative index");
  return static_cast<std::uint64_t>(to) < text.size() ? text.sub(0, static_cast<std::size_t>(to)) : text;
}

String separatedBy(const String& text, StringView characters) {
  const AnyOf any(characters);
  std::size_t length = 0;
  return any.find(text, 0, length) == text.size() ? text : without(text, any);
}

String separatedEmptyCharacters(const String& text) { return separatedBy(text, kEmptyCharacters); }

String replacingCharacters(StringView text, StringView characters, StringView replacement) {
  StringBuilder out;
  bool first = true;
  forEachPiece(text, AnyOf(characters), [&](StringView piece) {
    if (piece.isEmpty()) return;
    if (!std::exchange(first, false)) out.append(replacement);
    out.append(piece);
  });
  return out.finish();
}

bool containsCaseInsensitive(StringView text, StringView string) {
  return rangeOfStringCaseInsensitive(text, string).isFound();
}

}  // namespace quorvel
