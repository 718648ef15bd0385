// What a search field finds while a Korean word is typed into it, key after key; and what may be left out of account.
#include <iostream>

#include <quorvel/Utility/TextMatch.h>

using namespace quorvel;

namespace {

/// The text with its matches in brackets.
void show(StringView term, StringView text, const std::vector<NSRange>& ranges) {
  std::cout << "'" << term << "': ";
  std::size_t at = 0;
  for (const NSRange range : ranges) {
    std::cout << text.sub(at, range.location - at) << '[' << text.sub(range.location, range.length) << ']';
    at = range.end();
  }
  std::cout << text.sub(at) << '\n';
}

}  // namespace

int main() {
  constexpr StringView text = u"한국어 학교에서 한글과 각시를 배운다";
  for (const StringView term :
       {StringView(u"ㅎ"), StringView(u"하"), StringView(u"한"), StringView(u"한ㄱ"), StringView(u"한그"),
        StringView(u"한글"), StringView(u"한글고"), StringView(u"한글과")}) {
    show(term, text, hangulMatch(text, term));
  }
  for (const StringView term : {StringView(u"ㅎㄱ"), StringView(u"각"), StringView(u"갃"), StringView(u"하 ")}) {
    show(term, text, hangulMatch(text, term));
  }

  constexpr StringView menu = u"CAFÉ Straße ＣＡＦＥ ｶﾞｽ";
  show(u"cafe", menu, matchRanges(menu, u"cafe", {.ignoresCase = true}));
  show(u"cafe", menu, matchRanges(menu, u"cafe", {.ignoresCase = true, .ignoresAccents = true}));
  show(u"cafe", menu, matchRanges(menu, u"cafe", {.ignoresCase = true, .ignoresAccents = true, .ignoresWidth = true}));
  show(u"STRASSE", menu, matchRanges(menu, u"STRASSE", {.ignoresCase = true}));
  show(u"ガス", menu, matchRanges(menu, u"ガス", {.ignoresWidth = true}));
}
