// Which texts are blank, numbers, equal or matched, and how they are trimmed and measured.
#include <iostream>

#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Utility/StringUtils.h>

using namespace quorvel;

int main() {
  std::cout << std::boolalpha;
  constexpr StringView texts[] = {u"", u" \u3000", u"12345", u"١٢", u" 12 ", u"여행 12"};
  for (const StringView text : texts) {
    std::cout << "'" << text << "': empty " << StringUtils::isEmpty(text) << ", number " << StringUtils::isNumber(text)
              << ", trimmed '" << StringUtils::trim(text) << "'\n";
  }
  for (const auto& [first, second] : {std::pair<String, String>(u"Budget", u"BUDGET"),
                                      {u"Straße", u"STRASSE"},
                                      {u"é", u"e\u0301"},
                                      {u"\u00A0회의 ", u"회의"}}) {
    std::cout << "'" << first << "' and '" << second << "': equal " << StringUtils::equals(first, second)
              << ", ignoring case " << StringUtils::equalsCaseInsensitive(first, second) << ", trimmed "
              << StringExtension::isEqualString(first, second) << '\n';
  }
  constexpr StringView patterns[] = {u"^\\d시", u"[A-Z]{2}$", u"("};
  for (const StringView pattern : patterns) {
    std::cout << "'3시 회의 ok' matches " << pattern << ": " << StringUtils::matches(u"3시 회의 ok", pattern) << '\n';
  }
  constexpr StringView characters[] = {u"한글", u"👨‍👩‍👧‍👦🇰🇷", u"👍🏽1️⃣e\u0301"};
  for (const StringView text : characters) {
    std::cout << text << ": " << count(text) << " characters, " << length(text) << " units\n";
  }
  std::cout << "'" << trimmedString(u"\uFEFF \u00A0이름\u00A0 \n") << "', '" << trimmedString(u"\u00A0") << "'\n"
            << replacingCharacters(u",월,,수,금,", u",", u" / ") << ", " << separatedBy(u"010-1234_5678", u"-_") << '\n'
            << nsSubstringTo(u"여행 사진", 2) << ", " << nsSubstringFrom(u"여행 사진", 3) << '\n'
            << StringUtils::collectionToCommaDelimitedString(List{1, 22, u"삼"}) << ", "
            << StringUtils::stringWithFormat(u"%2$@님 %1$@개 %3$@", List{3, u"하린"}) << '\n';
}
