#include <filesystem>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/NSURL.h>

namespace quorvel {

// scheme: nullptr for none
TEST(NSURL, Parts) {
  const test::Row<const char16_t*, const char16_t*, const char16_t*, const char16_t*, const char16_t*, test::Why>
      rows[] = {
          {u"http://h/a/b.txt?q=1#f", u"http://h/a/b.txt?q=1#f", u"http", u"/a/b.txt", u"b.txt", "all parts"},
          {u"a/b", u"a/b", nullptr, u"a/b", u"b", "relative"},
          {u"//h/x/", u"//h/x/", nullptr, u"/x", u"x", "authority without scheme; the last slash goes"},
          {u"1a:b", u"1a:b", nullptr, u"1a:b", u"1a:b", "a scheme begins with a letter"},
          {u":b", u":b", nullptr, u":b", u":b", "no scheme before the colon"},
          {u"a/b:c", u"a/b:c", nullptr, u"a/b:c", u"b:c", "a colon behind a slash ends no scheme"},
          {u"mailto:a@b.kr", u"mailto:a@b.kr", u"mailto", u"a@b.kr", u"a@b.kr", "no authority"},
          {u"http://h/%ED%95%9C%2Fx", u"http://h/%ED%95%9C%2Fx", u"http", u"/한/x", u"x", "escapes are undone"},
          {u"http://[::1]:8/[a]?[b]#[c]", u"http://[::1]:8/%5Ba%5D?%5Bb%5D#%5Bc%5D", u"http", u"/[a]", u"[a]",
           "brackets stay in the host alone"},
          {u"http://[u]@[::1]/", u"http://%5Bu%5D@[::1]/", u"http", u"/", u"/", "user information is not the host"},
      };
  for (const auto& [text, absolute, scheme, path, last, why] : rows) {
    const auto url = NSURL::withString(std::u16string_view(text));
    ASSERT_TRUE(url) << why;
    EXPECT_EQ(url->absoluteString(), String(std::u16string(absolute))) << why;
    EXPECT_TRUE(url->scheme() == (scheme ? StringView(std::u16string_view(scheme)) : StringView(nil))) << why;
    EXPECT_EQ(url->path(), String(std::u16string(path))) << why;
    EXPECT_EQ(url->lastPathComponent(), String(std::u16string(last))) << why;
  }
  EXPECT_EQ(NSURL::withString(u"http://h/%FF")->path(), std::nullopt);
}

TEST(NSURL, RefusesWhatMayStandNowhere) {
  EXPECT_FALSE(NSURL::withString(nil));
  EXPECT_FALSE(NSURL::withString(u""));
  for (const char16_t* piece : {u"%", u"%4", u"%4g", u"%g4", u"#a#"}) {
    EXPECT_FALSE(NSURL::withString(u"http://h/" + std::u16string(piece))) << String(std::u16string(piece));
  }
  // What passes is exactly: unreserved, reserved and "%" with two digits.
  const std::u16string_view allowed =
      u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~:/?#[]@!$&'()*+,;=";
  for (std::uint32_t unit = 0; unit < 0x10000; ++unit) {
    const auto text = static_cast<char16_t>(unit);
    ASSERT_EQ(NSURL::withString(StringView(&text, 1)).has_value(), allowed.find(text) != allowed.npos) << unit;
  }
}

TEST(NSURL, DeletesTheLastPathComponent) {
  const test::Row<const char16_t*, const char16_t*> rows[] = {
      {u"http://h/a/b", u"http://h/a/"},
      {u"http://h/a?x=/y#/z", u"http://h/?x=/y#/z"},
      {u"http://h/dir/", u"http://h/"},
      {u"http://h/", u"http://h/../"},
      {u"http://h/..", u"http://h/../../"},
      {u"http://h/a/../", u"http://h/a/../../"},
      {u"http://h/a/.", u"http://h/a/./../"},
      {u"http://h", u"http://h"},
      {u"http://h?q", u"http://h?q"},
      {u"a/b", u"a/"},
      {u"a", u"./"},
      {u"mailto:a@b.kr", u"mailto:a@b.kr"},
      {u"http://[::1]/[a]/b", u"http://[::1]/%5Ba%5D/"},
  };
  for (const auto& [text, expected] : rows) {
    const auto url = NSURL::withString(std::u16string_view(text));
    ASSERT_TRUE(url) << String(std::u16string(text));
    EXPECT_EQ(url->byDeletingLastPathComponent().absoluteString(), String(std::u16string(expected)));
  }
}

struct HostRow {
  const char16_t* text;
  const char16_t* host;  // nullptr for none
  const char* why;
};

TEST(NSURL, HostsAreWithoutUserAndPort) {
  const HostRow rows[] = {
      {u"http://H.kr/x", u"H.kr", "case stays"},        {u"http://u:p@h:80", u"h", "user, password, port"},
      {u"http://a@b@h/", u"h", "the last at sign"},     {u"http://[::1]", u"[::1]", "the colons of an address"},
      {u"http://[::1]:8/", u"[::1]", "and a port"},     {u"//h:/x", u"h", "no scheme, an empty port"},
      {u"file:///x", u"", "an empty authority"},        {u"file://", u"", "nothing behind it"},
      {u"mailto:a@b", nullptr, "no authority"},         {u"a//b", nullptr, "slashes in a path"},
      {u"http://h?a@b:1/", u"h", "a query is no host"},
  };
  for (const auto& [text, host, why] : rows) {
    const auto url = NSURL::withString(std::u16string_view(text));
    ASSERT_TRUE(url) << why;
    EXPECT_TRUE(url->host() == (host ? StringView(std::u16string_view(host)) : StringView(nil))) << why;
  }
}

TEST(NSURL, FilePathsComeBack) {
  for (const char16_t* path : {u"/", u"/a b/한글%20#?;[x]", u"//a", u"/\U0001F600\n"}) {
    const auto url = NSURL::fileURLWithPath(std::u16string_view(path));
    ASSERT_TRUE(url) << String(std::u16string(path));
    EXPECT_EQ(url->path(), String(std::u16string(path)));
    EXPECT_TRUE(url->scheme() == u"file");
    EXPECT_EQ(NSURL::withString(url->absoluteString()), url) << "nothing in it that a URL may not hold";
  }
  EXPECT_EQ(NSURL::fileURLWithPath(u"/a/")->path(), u"/a");
  EXPECT_EQ(NSURL::fileURLWithPath(u"b")->path(), String::fromUTF8(std::filesystem::current_path().string() + "/b"));
  EXPECT_FALSE(NSURL::fileURLWithPath(nil));
  EXPECT_FALSE(NSURL::fileURLWithPath(u""));
  EXPECT_FALSE(NSURL::fileURLWithPath(u"/\xD800"));
  EXPECT_FALSE(NSURL::fileURLWithPath(std::u16string_view(u"/a\0b", 4)));
}

}  // namespace quorvel
