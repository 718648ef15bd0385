// Which search terms are ready to be sent while Korean is typed letter by letter, and what is left of those that are
// not.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSString+TextSearch.h>

using namespace quorvel;
using namespace quorvel::NSStringTextSearch;

int main() {
  std::cout << std::boolalpha;
  constexpr StringView terms[] = {u"ㅇ",
                                  u"여",
                                  u"여ㅎ",
                                  u"여해",
                                  u"여행 ",
                                  u"여행 ㅅ",
                                  u"여행 사ㅈㅣ",
                                  u"ㅋㅋㅋ",
                                  u" a",
                                  u"Trip",
                                  u"ﾎﾃﾙ",
                                  u"🧳",
                                  u"하\u1112\u1161\u11AB",
                                  u" "};
  for (const StringView term : terms) {
    std::cout << "'" << term << "': ready " << isSearchableString(term) << ", sent as '" << removeInvaildSearchStr(term)
              << "'\n";
  }
  constexpr StringView beginnings[] = {u"ㄱ나", u"가ㄴ", u"\u1100", u"ﾡ"};
  for (const StringView text : beginnings) {
    std::cout << text << " begins with a letter of a syllable: " << isFirstLetterJamo(text) << '\n';
  }
  std::cout << "units of '한a🧳': " << stringArrayOfEachLetters(u"한a🧳").size() << '\n';
}
