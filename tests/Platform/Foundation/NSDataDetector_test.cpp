#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Links.h>
#include <quorvel/Platform/Foundation/StringOperations.h>

namespace quorvel {
namespace {

/// The links of `text` with one space between, each as its units and, unless its URL is the same, an arrow and the URL;
/// one that was given "http://" is its units behind a "+".
String linksOf(StringView text) {
  StringBuilder out;
  for (const NSTextCheckingResult& match : qv_linkDetector().matches(text)) {
    if (out.size()) out.append(u' ');
    const String units = text.sub(match.range.location, match.range.length);
    const String url = match.url.absoluteString();
    const bool isBare = url == joined({u"http://", units}, u"");
    out.append(isBare ? joined({u"+", units}, u"") : units);
    if (!isBare && url != units) out.append(joined({u"→", url}, u""));
  }
  return out.finish();
}

struct LinkRow {
  StringView text;
  StringView links;
};

TEST(Links, AreFoundAsReadersSeeThem) {
  const LinkRow rows[] = {
      // behind a scheme
      {u"see https://example.com/a?b=c#d now", u"https://example.com/a?b=c#d"},
      {u"HTTP://Example.COM", u"HTTP://Example.COM"},
      {u"http://u:p@h.example:80/", u"http://u:p@h.example:80/"},
      {u"http://[::1]:8080/a", u"http://[::1]:8080/a"},
      {u"git+ssh://h/x", u"git+ssh://h/x"},
      {u"see-http://a.com", u"http://a.com"},
      {u"tel:+82-2-123-4567.", u"tel:+82-2-123-4567"},
      {u"http:// http:/// https://? :// a:b http://-", u""},
      {u"http://http://a.com", u"http://a.com"},
      {u"http://a..b", u"http://a"},
      {u"javascript://%0aalert(1)", u""},
      {u"http://a.com/%zz%41#x#y", u"http://a.com/%zz%41#x#y→http://a.com/%25zz%41#x%23y"},
      {u"http://a.com/[x]", u"http://a.com/[x]→http://a.com/%5Bx%5D"},
      // bare hosts
      {u"go to example.com today", u"+example.com"},
      {u"www.example.co.kr/a/b.html?x", u"+www.example.co.kr/a/b.html?x"},
      {u"example.com:8080", u"+example.com:8080"},
      {u"example.com:80a example.com:0 example.com:65536", u"+example.com +example.com +example.com"},
      {u"not a link", u""},
      {u"a.b e.g. i.e. 3.14 1.2.3 x.invalid Node.js", u""},
      {u"co.kr com .com www.com.", u"+www.com"},
      {u"1.2.3.4 but 1.2.3.4:80 and 1.2.3.4/x and 1.2.3.400/x", u"+1.2.3.4:80 +1.2.3.4/x"},
      {u"README.md main.rs", u""},
      {u"www.readme.md readme.md/x a.readme.md", u"+www.readme.md +readme.md/x +a.readme.md"},
      {u"Done.It was late.So it was", u""},
      {u"at 9.am or 163.com", u"+163.com"},
      {u"/etc/a.com src\\a.com @a.com", u""},
      {u"-a.com- a-.com a_b.example.com", u"+a_b.example.com"},
      {u"example.com? example.com?a=1 example.com/?", u"+example.com +example.com?a=1 +example.com/"},
      {u"a.com..b.org", u"+a.com +b.org"},
      // mail
      {u"to a.b+c@example.com, please", u"a.b+c@example.com→mailto:a.b+c@example.com"},
      {u"mailto:a@b.com?subject=x", u"mailto:a@b.com?subject=x"},
      {u"메일은abc@b.com으로", u"abc@b.com→mailto:abc@b.com"},
      {u"x.com+a@b.com", u"x.com+a@b.com→mailto:x.com+a@b.com"},
      {u"..a@b.com", u"a@b.com→mailto:a@b.com"},
      {u"a@한글.com", u"a@한글.com→mailto:a@xn--bj0bj06e.com"},
      // punctuation around them
      {u"(http://a.com/b)", u"http://a.com/b"},
      {u"http://a.com/b_(c)", u"http://a.com/b_(c)"},
      {u"(http://a.com/b_(c)).", u"http://a.com/b_(c)"},
      {u"[t](http://a.com/b) [http://a.com/c](x)", u"http://a.com/b http://a.com/c"},
      {u"http://a.com/b(", u"http://a.com/b"},
      {u"“http://a.com/b” 「http://a.com/c」。", u"http://a.com/b http://a.com/c"},
      {u"http://a.com/b... http://a.com/c!? http://a.com/d~", u"http://a.com/b http://a.com/c http://a.com/d"},
      {u"<http://a.com/b>http://a.com/c|", u"http://a.com/b http://a.com/c"},
      {u"http://a.com, http://b.com.", u"http://a.com http://b.com"},
      {u"http://a.com/b\u00A0c\u200Bd\xD800", u"http://a.com/b"},
      // particles and other text without spaces
      {u"a.com을 a.co.kr에서도", u"+a.com +a.co.kr"},
      {u"http://a.com/b를, http://a.com/에서.", u"http://a.com/b http://a.com/"},
      {u"http://localhost:3000에서 localhost는", u"http://localhost:3000"},
      {u"a.com:8080으로 a.com:3위", u"+a.com:8080 +a.com"},
      {u"http://a.com/한국", u"http://a.com/한국→http://a.com/%ED%95%9C%EA%B5%AD"},
      {u"http://a.com/경기도", u"http://a.com/경기도→http://a.com/%EA%B2%BD%EA%B8%B0%EB%8F%84"},
      {u"http://a.com/?q=나", u"http://a.com/?q=나→http://a.com/?q=%EB%82%98"},
      {u"请访问example.com。", u"+example.com"},
      {u"naver.com.그리고", u"+naver.com"},
      {u"한글.한국에서", u"한글.한국→http://xn--bj0bj06e.xn--3e0b707e"},
      {u"안녕.반가워요", u""},
      {u"http://a.com/b를보세요", u"http://a.com/b를보세요→http://a.com/b%EB%A5%BC%EB%B3%B4%EC%84%B8%EC%9A%94"},
      // international names
      {u"bücher.example.de/ü", u"bücher.example.de/ü→http://xn--bcher-kva.example.de/%C3%BC"},
      {u"http://faß.de", u"http://faß.de→http://xn--fa-hia.de"},
      {u"xn--bj0bj06e.com", u"+xn--bj0bj06e.com"},
      {u"пример.рф", u"пример.рф→http://xn--e1afmkfd.xn--p1ai"},
      {u"http://u한@a.com", u""},
  };
  for (const auto& [text, links] : rows) EXPECT_EQ(linksOf(text), String(links)) << text;
}

TEST(Links, RangesCountUnits) {
  const auto matches = qv_linkDetector().matches(u"\xD83D\xDE00 a.com \xD83D\xDE00 b.com");
  ASSERT_EQ(matches.size(), 2U);
  EXPECT_EQ(matches[0].range, (NSRange{3, 5}));
  EXPECT_EQ(matches[1].range, (NSRange{12, 5}));
  EXPECT_EQ(NSDataDetector::withTypes(1).has_value(), false);
  EXPECT_TRUE(NSDataDetector::withTypes(32 | 8).has_value());
}

TEST(Links, FirstURLOrTheWholeText) {
  EXPECT_EQ(qv_URL(u"see example.com/a, and b.com")->absoluteString(), u"http://example.com/a");
  EXPECT_EQ(qv_URL(u"a/b")->absoluteString(), u"a/b");
  EXPECT_EQ(qv_URL(u"not a link"), std::nullopt);
  EXPECT_EQ(qv_URL(u""), std::nullopt);
  EXPECT_EQ(qv_URL(nil), std::nullopt);
}

/// Links are in order, apart, found again alone, and their URLs are URLs.
TEST(Links, HoldForAnyText) {
  constexpr std::u16string_view kPieces[] = {
      u"http://", u"://",  u"a",       u"com",    u".",      u"..",     u":",      u"@",       u"/",    u"?",
      u"#",       u"(",    u")",       u"[",      u"]",      u" ",      u"-",      u"_",       u"%",    u"%41",
      u"80",      u"한글", u"에서",    u"é",      u"\xD83D", u"\xDE00", u"\u0301", u"mailto:", u"tel:", u"www.",
      u".com",    u".kr",  u"example", u"\u200D", u"，",     u"'",      u"[::1]",  u"1.2.3.4"};
  std::mt19937 random(3);
  for (int round = 0; round < 20000; ++round) {
    const std::u16string text = test::randomText(random, kPieces, 1 + random() % 12);
    std::uint64_t end = 0;
    for (const NSTextCheckingResult& match : qv_linkDetector().matches(text)) {
      ASSERT_GE(match.range.location, end) << test::hex(text);
      ASSERT_GT(match.range.length, 0U) << test::hex(text);
      end = match.range.end();
      ASSERT_LE(end, text.size()) << test::hex(text);
      ASSERT_TRUE(NSURL::withString(match.url.absoluteString())) << test::hex(text);
      ASSERT_FALSE(match.url.scheme().isNil()) << test::hex(text);
    }
  }
}

}  // namespace
}  // namespace quorvel
