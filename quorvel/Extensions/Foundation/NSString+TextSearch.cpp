#include <quorvel/Extensions/Foundation/NSString+TextSearch.h>
#include <quorvel/Platform/Foundation/StringOperations.h>

namespace quorvel {

List stringArrayOfEachLetters(StringView text) {
  List letters;
  letters.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) letters.append(text.sub(i, 1));
  return letters;
}

namespace NSStringTextSearch {

bool isFirstLetterJamo(StringView text) { return !text.isEmpty() && isJamo(text.front()); }

bool isSearchableString(StringView text) {
  const StringView trimmed = trimmedOfWhitespace(text);
  return trimmed.size() >= 2 && !isJamo(trimmed.back());
}

std::optional<String> removeInvaildSearchStr(StringView text) {
  if (text.isNil()) return nil;
  StringView left = text;
  // Trimming again after a unit is gone looks at the new end alone, so each unit is looked at once.
  while (left.size() >= 2) {
    left = trimmedOfWhitespace(left);
    if (isSearchableString(left)) break;
    if (left.size() >= 2) left = left.sub(0, left.size() - 1);
  }
  return String(left);
}

}  // namespace NSStringTextSearch
}  // namespace quorvel
