#include <gtest/gtest.h>
#include <tests/support/Crowd.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/NSHTTPCookieStorage.h>

namespace quorvel {
namespace {

using test::modeOf;
using test::readFile;

constexpr Date kNow{1'000'000};

Dictionary with(const Dictionary& more) {
  Dictionary properties{{u"Name", u"n"}, {u"Value", u"v"}, {u"Domain", u"h.kr"}, {u"Path", u"/"}};
  for (const auto& [key, value] : more) properties.set(key, value);
  return properties;
}

Dictionary without(const char16_t* key) {
  Dictionary properties = with({});
  properties.remove(StringView(std::u16string_view(key)));
  return properties;
}

NSHTTPCookie cookie(const Dictionary& more) { return NSHTTPCookie::withProperties(with(more), kNow).value(); }

struct MadeRow {
  Dictionary properties;
  const char16_t* domain;  // nullptr: no cookie is made
  const char* why;
};

TEST(NSHTTPCookie, NeedsNameValuePathAndDomain) {
  const MadeRow rows[] = {
      {with({}), u"h.kr", "all four"},
      {without(u"Name"), nullptr, "no name"},
      {without(u"Value"), nullptr, "no value"},
      {without(u"Path"), nullptr, "no path"},
      {without(u"Domain"), nullptr, "no domain"},
      {with({{u"Domain", u""}, {u"OriginURL", u"http://u@O.kr:80/x"}}), u"o.kr", "an origin as text; its host alone"},
      {with({{u"Domain", u""}, {u"OriginURL", *NSURL::withString(u"http://[::1]:8/")}}), u"[::1]", "an NSURL"},
      {with({{u"Domain", u".a.b"}, {u"OriginURL", u"http://h/"}}), u".a.b", "the domain counts"},
      {with({{u"Domain", u""}, {u"OriginURL", u"mailto:a@b"}}), nullptr, "an origin without a host"},
      {with({{u"Domain", u""}, {u"OriginURL", u"file:///x"}}), nullptr, "an origin with an empty host"},
      {with({{u"Domain", u".H.KR"}}), u".h.kr", "the leading dot stays, letters become small"},
      {with({{u"Domain", u"."}}), nullptr, "a dot is no domain"},
      {with({{u"Domain", u"h/x"}}), nullptr, "a path in the domain"},
      {with({{u"Domain", 1}}), nullptr, "a number is no domain"},
      {with({{u"Name", u""}}), nullptr, "an empty name"},
      {with({{u"Value", u""}}), u"h.kr", "an empty value"},
      {with({{u"Value", 1}}), nullptr, "a value that is no text"},
      {with({{u"Name", u"a=b"}}), nullptr, "a name that would read otherwise in a header"},
      {with({{u"Value", u"a=b, c"}}), u"h.kr", "a value may hold it"},
      {with({{u"Value", u"a\r\nSet-Cookie: x"}}), nullptr, "a line break would begin another header"},
      {with({{u"Value", u"a;Secure"}}), nullptr, "a semicolon would begin an attribute"},
      {with({{u"Value", u"\xD800"}}), nullptr, "an unpaired surrogate"},
      {with({{u"Path", u""}}), nullptr, "an empty path"},
      {with({{u"Path", u"a"}}), nullptr, "a relative path"},
  };
  for (const auto& [properties, domain, why] : rows) {
    const auto made = NSHTTPCookie::withProperties(properties, kNow);
    EXPECT_EQ(made ? StringView(made->domain()) : StringView(nil),
              domain ? StringView(std::u16string_view(domain)) : StringView(nil))
        << why;
    if (made) {
      EXPECT_EQ(NSHTTPCookie::withProperties(made->properties(), kNow), made) << why;
    }
  }
}

struct ExpiryRow {
  Dictionary more;
  std::optional<double> end;
  const char* why;
};

TEST(NSHTTPCookie, EndsAtItsExpiryOrWithTheSession) {
  const ExpiryRow rows[] = {
      {{}, nil, "of the session"},
      {{{u"Expires", Date{5}}}, 5, "a date"},
      {{{u"Expires", u"Wed, 21 Oct 2015 07:28:00 GMT"}}, nil, "a text is no date"},
      {{{u"Max-Age", 10}}, 1'000'010, "seconds from now on"},
      {{{u"Max-Age", u"10"}, {u"Expires", Date{5}}}, 1'000'010, "the age counts"},
      {{{u"Max-Age", u"-1"}}, 999'999, "a past one"},
      {{{u"Max-Age", u"1x"}}, nil, "no number"},
      {{{u"Max-Age", u"-"}}, nil, "no digits"},
      {{{u"Max-Age", String(std::u16string(400, u'9'))}}, nil, "beyond all numbers"},
      {{{u"Max-Age", 10}, {u"Discard", u"TRUE"}}, nil, "discarded with the session"},
      {{{u"Max-Age", 10}, {u"Discard", u"FALSE"}}, 1'000'010, "or not"},
  };
  for (const auto& [more, end, why] : rows) {
    const auto expires = cookie(more).expiresDate();
    EXPECT_EQ(expires ? std::optional(expires->secondsSince1970) : nil, end) << why;
  }
  EXPECT_TRUE(cookie({{u"Expires", kNow}}).isExpired(kNow));
  EXPECT_FALSE(cookie({{u"Max-Age", 1}}).isExpired(kNow));
}

struct BelongsRow {
  Dictionary more;
  const char16_t* url;
  bool belongs;
  const char* why;
};

TEST(NSHTTPCookie, BelongsToHostsAndPaths) {
  const Dictionary dotted{{u"Domain", u".h.kr"}};
  const Dictionary path{{u"Path", u"/a"}};
  const BelongsRow rows[] = {
      {{}, u"http://H.kr:80/x?y", true, "its host, whatever the case, port and path"},
      {{}, u"http://a.h.kr/", false, "without a dot no host below it"},
      {dotted, u"http://h.kr/", true, "with a dot the host itself"},
      {dotted, u"http://a.b.h.kr/", true, "and those below it"},
      {dotted, u"http://ah.kr/", false, "but none that only ends alike"},
      {dotted, u"http://.h.kr/", false, "an empty label is no host below it"},
      {dotted, u"http://kr/", false, "nor a shorter one"},
      {{}, u"h.kr/x", false, "a relative reference has no host"},
      {{}, u"http://h.kr", true, "no path is the path /"},
      {{}, u"http://u:p@h.kr/", true, "user information is not the host"},
      {path, u"http://h.kr/a", true, "the path itself"},
      {path, u"http://h.kr/a/b", true, "below it"},
      {path, u"http://h.kr/ab", false, "not a longer name"},
      {path, u"http://h.kr/", false, "not above it"},
      {{{u"Path", u"/a/"}}, u"http://h.kr/a/b", true, "a slash at the cookie's end"},
      {{{u"Secure", u"TRUE"}}, u"http://h.kr/", false, "a secure one stays off the open line"},
      {{{u"Secure", true}}, u"HTTPS://h.kr/", true, "and takes the closed one"},
  };
  for (const auto& [more, url, belongs, why] : rows) {
    EXPECT_EQ(cookie(more).belongsTo(*NSURL::withString(std::u16string_view(url))), belongs) << why;
  }
}

class CookieStorage : public testing::Test {
 protected:
  [[nodiscard]] std::string file() const { return folder_.path("jar/cookies.json"); }
  [[nodiscard]] std::string names() const {
    std::string text;
    const auto cookies = storage_.cookies();
    if (!cookies) return "unreadable";
    for (const NSHTTPCookie& each : *cookies)
      text += each.name().toUTF8Replacing() + "=" + each.value().toUTF8Replacing() + " ";
    return text;
  }

  test::TemporaryFolder folder_;
  NSHTTPCookieStorage storage_ = NSHTTPCookieStorage::at(folder_.path("jar"));
};

TEST_F(CookieStorage, ReplacesDeletesAndKeeps) {
  EXPECT_EQ(names(), "") << "no file is an empty storage";
  EXPECT_EQ(modeOf(folder_.path("jar")), 0U) << "reading makes nothing";
  const Dictionary late{{u"Expires", Date{1e12}}};
  ASSERT_TRUE(storage_.setCookie(cookie(late)));
  ASSERT_TRUE(storage_.setCookie(cookie({{u"Name", u"m"}})));
  ASSERT_TRUE(storage_.setCookie(cookie({{u"Value", u"w"}, {u"Domain", u"H.KR"}, {u"Expires", Date{1e12}}})));
  EXPECT_EQ(names(), "n=w m=v ") << "the same name, domain and path: replaced in its place";
  ASSERT_TRUE(storage_.setCookie(cookie({{u"Domain", u".h.kr"}})));
  ASSERT_TRUE(storage_.setCookie(cookie({{u"Path", u"/x"}, {u"Expires", Date{1e12 + 0.5}}})));
  EXPECT_EQ(names(), "n=w m=v n=v n=v ") << "another domain, another path";
  EXPECT_EQ(storage_.cookies()->back().expiresDate(), Date{1e12 + 0.5});
  ASSERT_TRUE(storage_.setCookie(cookie({{u"Name", u"m"}, {u"Expires", Date{1}}})));
  EXPECT_EQ(names(), "n=w n=v n=v ") << "an expired one deletes";
  EXPECT_TRUE(storage_.deleteCookie(cookie({{u"Name", u"absent"}}))) << "nothing to delete";
  ASSERT_TRUE(storage_.removeSessionCookies());
  EXPECT_EQ(names(), "n=w n=v ");
  ASSERT_TRUE(storage_.deleteCookie(cookie({})));
  EXPECT_EQ(names(), "n=v ");
  storage_.setCookieAcceptPolicy(NSHTTPCookieStorage::AcceptPolicy::Never);
  EXPECT_FALSE(storage_.setCookie(cookie({})));
  EXPECT_EQ(names(), "n=v ");
}

TEST_F(CookieStorage, GivesLongerPathsFirst) {
  for (const char16_t* path : {u"/", u"/a/b", u"/a", u"/c"}) {
    ASSERT_TRUE(storage_.setCookie(
        cookie({{u"Path", String(std::u16string(path))}, {u"Value", String(std::u16string(path))}})));
  }
  std::string order;
  for (const NSHTTPCookie& each : storage_.cookiesForURL(*NSURL::withString(u"http://h.kr/a/b/c"))) {
    order += each.value().toUTF8Replacing() + " ";
  }
  EXPECT_EQ(order, "/a/b /a / ");
}

TEST_F(CookieStorage, IsPrivateAndFollowsNothing) {
  for (const mode_t mask : {0000U, 0077U}) {
    const test::Umask guard(mask);
    std::filesystem::remove_all(folder_.path("jar"));
    ASSERT_TRUE(storage_.setCookie(cookie({})));
    EXPECT_EQ(modeOf(folder_.path("jar")), S_IFDIR | 0700U);
    EXPECT_EQ(modeOf(file()), S_IFREG | 0600U);
  }
  for (const auto& [what, plant] : test::kPlanted) {
    std::filesystem::remove(file());
    const std::string victim = folder_.path("victim");
    test::writeFile(victim, "{}");
    plant(file(), victim);
    const bool isFile = S_ISREG(modeOf(file()));
    const test::Stopwatch watch;
    EXPECT_EQ(storage_.cookies().has_value(), isFile) << what;
    EXPECT_EQ(storage_.setCookie(cookie({})), isFile) << what;
    EXPECT_EQ(storage_.cookies().has_value(), isFile) << what;
    EXPECT_LT(watch.elapsed(), isFile ? test::kWriting : test::kRefusing) << what;
    EXPECT_EQ(readFile(victim), "{}") << what;
    std::filesystem::remove_all(file());
  }
}

TEST_F(CookieStorage, PassesOverWhatIsNoCookie) {
  test::writeFile(file(), R"({"other":1,"cookies":[1,null,[],{},{"Name":"a","Value":"b","Domain":"c"},)"
                          R"({"Name":"a","Value":"b","Domain":"c","Path":"/","Expires":1},)"
                          R"({"Name":"a","Value":"b","Domain":"c","Path":"/","Max-Age":"5"},)"
                          R"({"Name":"k","Value":"b\r\n","Domain":"c","Path":"/"}]})");
  EXPECT_EQ(names(), "a=b ");
  EXPECT_TRUE(storage_.cookies()->front().isSessionOnly()) << "an age would begin anew at each reading";
  ASSERT_TRUE(storage_.setCookie(cookie({})));
  EXPECT_EQ(names(), "a=b n=v ");
  EXPECT_NE(readFile(file()).find("\"other\""), std::string::npos) << "what others keep beside the cookies stays";
  test::writeFile(file(), "{\"cookies\":7}");
  EXPECT_EQ(names(), "");
}

TEST_F(CookieStorage, ProcessesAndThreadsLoseNothing) {
  const auto fill = [&](int writer) {
    int failures = 0;
    for (int i = 0; i < 25; ++i) {
      const String name = String::fromASCII(std::to_string(writer) + "." + std::to_string(i));
      failures += !storage_.setCookie(cookie({{u"Name", name}}));
    }
    return failures;
  };
  EXPECT_EQ(test::inChildren(4, fill, [&] { test::onThreads(2, [&](int i) { fill(100 + i); }); }), 4);
  EXPECT_EQ(storage_.cookies()->size(), 150U);
}

}  // namespace
}  // namespace quorvel
