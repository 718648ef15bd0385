#include <algorithm>
#include <span>

#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/Format.h>
#include <quorvel/Platform/Foundation/NSRegularExpression.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/PathOperations.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel {
namespace {

constexpr std::size_t kFormatArguments = 21;

/// Where the text's last line terminator begins, as ICU's "$" sees it: CR LF is one.
std::size_t lastTerminator(StringView text) {
  if (text.isEmpty()) return 0;
  const std::size_t last = text.size() - 1;
  const char16_t unit = text[last];
  if (unit == u'\n' && last > 0 && text[last - 1] == u'\r') return last - 1;
  const bool terminates = (unit >= u'\n' && unit <= u'\r') || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
  return terminates ? last : text.size();
}

bool isAllDigits(StringView text) {
  for (std::size_t i = 0; i < text.size();) {
    const char32_t scalar = unicode::nextScalar(text, i);
    if (scalar >= u'0' && scalar <= u'9') continue;
    if (scalar < 0x660 || !NSCharacterSet::decimalDigit().contains(scalar)) return false;
  }
  return !text.isEmpty();
}

}  // namespace

bool StringUtils::isEmpty(StringView text) { return isBlankText(text); }
bool StringUtils::isBlank(StringView text) { return isBlankText(text); }
StringView StringUtils::trim(StringView text) { return trimmedOfWhitespace(text); }

bool StringUtils::equals(StringView first, StringView second) { return first.isSameAs(second) || first == second; }

bool StringUtils::equalsCaseInsensitive(StringView first, StringView second) {
  return caseInsensitiveCompare(first, second) == 0;
}

bool StringUtils::matches(StringView text, StringView pattern) {
  if (isEmpty(text)) return false;
  const auto expression = NSRegularExpression::withPattern(pattern, RegularExpressionOptions::CaseInsensitive);
  return expression && expression->hasMatch(text);
}

PatternResult StringUtils::matchesResult(StringView text, StringView pattern) {
  PatternError error;
  const auto expression = NSRegularExpression::withPattern(pattern, RegularExpressionOptions::CaseInsensitive, &error);
  if (!expression) return {PatternOutcome::BadPattern, error.offset, error.reason};
  if (isEmpty(text)) return {};
  auto how = NSRegularExpression::Outcome::Complete;
  const bool found = expression->hasMatch(text, &how);
  if (how == NSRegularExpression::Outcome::LimitReached) return {PatternOutcome::LimitReached};
  return {found ? PatternOutcome::Match : PatternOutcome::NoMatch};
}

// "^\d+$" without an expression: the same answers from one look at each unit.
bool StringUtils::isNumber(StringView text) { return isAllDigits(text.sub(0, lastTerminator(text))); }

std::optional<String> StringUtils::collectionToCommaDelimitedString(const std::optional<List>& list) {
  if (!list || list->isEmpty()) return nil;
  StringBuilder out;
  for (const Value& element : *list) {
    if (&element != list->begin()) out.append(u',');
    if (const std::optional<Number> number = element.asNumber()) {
      out.appendASCII(numberText(*number).ascii());
    } else {
      out.append(description(element));
    }
  }
  return out.finish();
}

String StringUtils::stringWithFormat(StringView format, const std::optional<List>& args) {
  Value objects[kFormatArguments];
  const std::size_t count = args ? std::min(args->size(), kFormatArguments) : 0;
  std::copy_n(args ? args->begin() : nullptr, count, objects);
  return formatObjects(format, objects);
}

std::optional<String> StringUtils::replaceToHEICImageExtension(const std::optional<String>& path,
                                                               StringView extension) {
  if (!path || lowercased(paths::pathExtension(*path)) != String(u"heic")) return path;
  return paths::stringByAppendingPathExtension(paths::stringByDeletingPathExtension(*path), extension);
}

}  // namespace quorvel
