#include <algorithm>
#include <vector>

#include <quorvel/Extensions/Foundation/NSString+Additions+FileNames.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Platform/Foundation/NSURL.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/PathOperations.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr char16_t kNumberPattern[] = u"\\s(\\()(\\d+)(\\))(.\\w*)";
constexpr std::size_t kDigits = 2;

/// The name with its number raised by one; nil when it has none.
std::optional<String> withNextNumber(const String& name) {
  if (unicode::findUnit(name, u'(') == unicode::kInvalid) return nil;
  const auto expression = NSRegularExpression::withPattern(kNumberPattern, RegularExpressionOptions::CaseInsensitive);
  const std::vector<NSRange> digits = expression->groupRanges(name, kDigits);
  if (digits.empty()) return nil;
  const std::int64_t number = integerValue(StringView(name).sub(digits[0].location, digits[0].length));
  StringBuilder replacement;
  replacement.append(u" (");
  replacement.appendASCII(integerText(number == INT64_MAX ? number : number + 1).ascii());
  replacement.append(u")$4");
  return expression->replacingMatches(name, replacement.view());
}

/// Appends the pieces between slashes that are not blank.
void appendSegments(std::vector<StringView>& segments, StringView path) {
  for (const StringView piece : componentsSeparatedBy(path, u"/")) {
    if (!isBlankText(piece)) segments.push_back(piece);
  }
}

/// Appends `lead` and the text unless it is blank.
void appendPart(StringBuilder& out, char16_t lead, StringView text) {
  if (isBlankText(text)) return;
  out.append(lead);
  out.append(text);
}

/// Cuts `text` before the first `mark` and answers what follows it; nil when there is none.
StringView cutBehind(StringView& text, char16_t mark) {
  const std::size_t place = unicode::findUnit(text, mark);
  if (place == unicode::kInvalid) return nil;
  const StringView behind = text.sub(place + 1);
  text = text.sub(0, place);
  return behind;
}

/// Cuts `segment` before its first "#" and answers what follows its last one; nil when there is none.
StringView cutFragment(StringView& segment) {
  const StringView behind = cutBehind(segment, u'#');
  const std::size_t last = behind.units().rfind(u'#');
  return last == std::u16string_view::npos ? behind : behind.sub(last + 1);
}

}  // namespace

String createNewFileName(const String& name) {
  if (std::optional<String> next = withNextNumber(name)) return std::move(*next);
  StringBuilder numbered;
  numbered.append(paths::stringByDeletingPathExtension(name));
  numbered.append(u" (1)");
  const StringView extension = paths::pathExtension(name);
  return paths::stringByAppendingPathExtension(numbered.finish(), extension).value_or(String());
}

bool checkFileNameValidity(StringView name) {
  if (name.isEmpty() || name.front() == u'.' || name.back() == u'.') return false;
  return name.units().find_first_of(u"<>:\"|?*/\\") == std::u16string_view::npos;
}

StringView removeMatchingFirstPattern(StringView text, StringView pattern) {
  const StringView trimmed = trimmedOfWhitespace(text);
  if (trimmed.isNil()) return nil;
  const auto expression = NSRegularExpression::withPattern(pattern, RegularExpressionOptions::CaseInsensitive);
  if (!expression) return trimmed;
  const std::optional<NSRange> match = expression->firstMatch(trimmed, {0, trimmed.size()});
  return match ? trimmed.sub(match->location, match->length) : trimmed;
}

String URLStringByAppendingPathComponent(const String& url, StringView path) {
  const StringView text = url;
  const std::size_t schemeEnd = unicode::findLiteral(text, u"://");
  if (schemeEnd == unicode::kInvalid) return paths::stringByAppendingPathComponent(url, path);
  StringView rest = text.sub(schemeEnd + 1);
  const StringView query = cutBehind(rest, u'?');
  std::vector<StringView> segments;
  appendSegments(segments, rest);
  StringView fragment = nil;
  if (segments.size() > 1) fragment = cutFragment(segments.back());
  if (segments.empty()) segments.push_back(u"");  // no host: the path's pieces must not become one
  appendSegments(segments, path);

  StringBuilder out;
  out.append(text.sub(0, schemeEnd + 3));
  for (std::size_t i = 0; i < segments.size(); ++i) {
    if (i) out.append(u'/');
    out.append(segments[i]);
  }
  appendPart(out, u'#', fragment);
  appendPart(out, u'?', query);
  return out.finish();
}

String URLStringByDeletingLastPathComponent(const String& url) {
  if (const std::optional<NSURL> parsed = NSURL::withString(url)) {
    return parsed->byDeletingLastPathComponent().absoluteString();
  }
  return paths::stringByDeletingLastPathComponent(url);
}

}  // namespace quorvel
