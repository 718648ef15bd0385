#include <algorithm>

#include <quorvel/Extensions/Foundation/NSString+Additions+Version.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {
namespace {

__extension__ using Wide = __int128;  // holds 10^6 times any part

constexpr std::size_t kParts = 4;
constexpr std::size_t kSafeDigits = 18;  // so many digits fit 64 bits

/// What `integerValue` answers for the units from `at` up to the next "." or the end, where `at` moves.
std::int64_t partAt(StringView text, std::size_t& at) {
  const std::size_t start = at;
  std::int64_t value = 0;
  while (at < text.size() && text[at] >= u'0' && text[at] <= u'9') {
    if (at - start == kSafeDigits) break;
    value = value * 10 + (text[at++] - u'0');
  }
  if (at == text.size() || text[at] == u'.') return value;
  while (at < text.size() && text[at] != u'.') ++at;
  return integerValue(text.sub(start, at - start));
}

}  // namespace

std::int64_t convertVersionNumeric(StringView text) {
  Wide sum = 0;
  std::size_t at = 0;
  for (std::size_t part = 0; part < kParts; ++part) {
    sum = sum * 100 + (at < text.size() ? partAt(text, at) : 0);
    ++at;  // past the "."
  }
  return static_cast<std::int64_t>(std::clamp<Wide>(sum, INT64_MIN, INT64_MAX));
}

}  // namespace quorvel
