#include <quorvel/Platform/Foundation/ReplacementTemplate.h>

namespace quorvel {
namespace {

constexpr bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

}  // namespace

ReplacementTemplate::ReplacementTemplate(StringView source, std::size_t groupCount) {
  for (std::size_t i = 0; i < source.size();) i = read(source, i, groupCount);
  pieces_.push_back({literal_.size(), kNoGroup});
}

/// Reads what stands at `i` and answers where the next piece does.
std::size_t ReplacementTemplate::read(StringView source, std::size_t i, std::size_t groupCount) {
  const char16_t unit = source[i];
  const bool hasNext = i + 1 < source.size();
  if (unit == u'$' && hasNext && isDigit(source[i + 1])) return readGroup(source, i + 1, groupCount);
  if (unit == u'\\' && hasNext) ++i;
  literal_ += source[i];
  return i + 1;
}

/// The first digit always belongs to the number, the next ones as long as such a group exists.
std::size_t ReplacementTemplate::readGroup(StringView source, std::size_t i, std::size_t groupCount) {
  std::size_t number = source[i++] - u'0';
  while (i < source.size() && isDigit(source[i]) && number * 10 + (source[i] - u'0') <= groupCount) {
    number = number * 10 + (source[i++] - u'0');
  }
  pieces_.push_back({literal_.size(), number <= groupCount ? number : kNoGroup});
  return i;
}

}  // namespace quorvel
