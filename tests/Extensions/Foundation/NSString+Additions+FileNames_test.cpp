#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+FileNames.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel {

TEST(FileNames, CreateNewFileName) {
  const test::Row<const char16_t*, const char16_t*, test::Why> rows[] = {
      {u"photo.jpg", u"photo (1).jpg", "no number yet"},
      {u"photo (9).jpg", u"photo (10).jpg", "one digit more"},
      {u"photo (007).jpg", u"photo (8).jpg", "leading zeros go"},
      {u"photo(1).jpg", u"photo(1) (1).jpg", "white space must stand before the parenthesis"},
      {u"photo\t(1).jpg", u"photo (2).jpg", "any white space, written as a space"},
      {u"photo (3)-edited.jpg", u"photo (4)-edited.jpg", "group 4 is no dot"},
      {u"a (1).b (5).c", u"a (2).b (2).c", "every match takes the first number plus one"},
      {u"folder", u"folder (1)", "no extension, no dot"},
      {u"folder (1)", u"folder (1) (1)", "a character must follow the parenthesis"},
      {u".profile", u".profile (1)", "a leading dot begins no extension"},
      {u"사진 (1).한글 b", u"사진 (2).한글 b", "letters of any script are word characters"},
      {u"a (1)\xD83D\xDE00.b", u"a (2)\xD83D\xDE00.b", "one character is two units"},
      {u"a (9223372036854775807).b", u"a (9223372036854775807).b", "does not wrap"},
      {u"a (99999999999999999999).b", u"a (9223372036854775807).b", "saturates"},
      {u"a (\u0663).b", u"a (1).b", "other digits match, and count as 0"},
      {u"a (1.b", u"a (1 (1).b", "no closing parenthesis"},
      {u"a/b.c/", u"a/b (1).c", "slashes are a path's"},
      {u"", u" (1)", "the empty name"},
      {u"$4 (1).$4", u"$4 (2).$4", "the name is no template"},
  };
  for (const auto& [name, expected, why] : rows) {
    EXPECT_EQ(createNewFileName(std::u16string(name)), String(std::u16string(expected))) << why;
  }
}

TEST(FileNames, Validity) {
  const StringView valid[] = {u"a.txt", u"my file (2).txt", u"한글\n.txt\n", u" "};
  for (const StringView name : valid) EXPECT_TRUE(checkFileNameValidity(name)) << name;
  const StringView invalid[] = {nil, u"", u".profile", u"a.", u"a*b\n", u"/\n"};
  for (const StringView name : invalid) EXPECT_FALSE(checkFileNameValidity(name)) << name;
  for (const char16_t forbidden : std::u16string_view(u"/:\\<>\"|?*")) {
    EXPECT_FALSE(checkFileNameValidity(std::u16string(1, forbidden))) << String(&forbidden, 1);
    EXPECT_FALSE(checkFileNameValidity(std::u16string{u'a', forbidden, u'b'})) << String(&forbidden, 1);
  }
}

TEST(FileNames, FirstMatchOfAPattern) {
  const test::Row<StringView, StringView, const char16_t*> rows[] = {
      {u"  ab12cd34 ", u"\\d+", u"12"},
      {u"  ab12cd ", u"x", u"ab12cd"},
      {u" ab ", u"(", u"ab"},
      {u" ab ", u"", u"ab"},
      {u" ab ", nil, u"ab"},
      {u" AB ", u"b", u"B"},
      {u" ab ", u"x*", u""},
      {u" \n", u".", u""},
      {u"\tab\n", u"^ab$", u"ab"},
  };
  for (const auto& [text, pattern, expected] : rows) {
    EXPECT_EQ(String(removeMatchingFirstPattern(text, pattern)), String(std::u16string(expected))) << String(text);
  }
  EXPECT_TRUE(removeMatchingFirstPattern(nil, u"a").isNil());
}

TEST(FileNames, AppendToURLStrings) {
  const test::Row<const char16_t*, StringView, const char16_t*> rows[] = {
      {u"proto://host/a/b#top?x=1", u"c/d/", u"proto://host/a/b/c/d#top?x=1"},
      {u"proto://host", u"x", u"proto://host/x"},
      {u"proto://host//a///", u"", u"proto://host/a"},
      {u"proto://host/ /a", u" / b", u"proto://host/a/ b"},
      {u"proto://host/a", nil, u"proto://host/a"},
      {u"proto://host?x=a://b#c", u"d", u"proto://host/d?x=a://b#c"},
      {u"proto://host/a#1#2#3", u"b", u"proto://host/a/b#3"},
      {u"proto://host/a#1#", u"b", u"proto://host/a/b"},
      {u"proto://host#top", u"b", u"proto://host#top/b"},
      {u"proto://host/a? ", u"b", u"proto://host/a/b"},
      {u"proto://", u"b", u"proto:///b"},
      {u"proto://host/한 글", u"é", u"proto://host/한 글/é"},
      {u"dir/file", u"x", u"dir/file/x"},
      {u"dir/file?a=b", u"x", u"dir/file?a=b/x"},
  };
  for (const auto& [url, path, expected] : rows) {
    EXPECT_EQ(URLStringByAppendingPathComponent(std::u16string(url), path), String(std::u16string(expected)));
  }
}

TEST(FileNames, DeleteFromURLStrings) {
  EXPECT_EQ(URLStringByDeletingLastPathComponent(u"http://h/a/b?q"), u"http://h/a/?q");
  EXPECT_EQ(URLStringByDeletingLastPathComponent(u"http://h/a/한"), u"http:/h/a") << "no URL, so a path";
  EXPECT_EQ(URLStringByDeletingLastPathComponent(u"/a b/c"), u"/a b");
  EXPECT_EQ(URLStringByDeletingLastPathComponent(u""), u"");
}

TEST(FileNames, ReplaceTheImageExtension) {
  const test::Row<const char16_t*, const char16_t*> rows[] = {
      {u"a.heic", u"a.jpg"},      {u"a.HeIc", u"a.jpg"},      {u"a.png", u"a.png"},
      {u"heic", u"heic"},         {u".heic", u".heic"},       {u"a.heics", u"a.heics"},
      {u"x/a.heic/", u"x/a.jpg"}, {u"b.heic/a", u"b.heic/a"}, {u"a.HE\u0130C", u"a.HE\u0130C"},
  };
  for (const auto& [path, expected] : rows) {
    EXPECT_EQ(StringUtils::replaceToHEICImageExtension(String(std::u16string(path)), u"jpg"),
              String(std::u16string(expected)));
  }
  EXPECT_EQ(StringUtils::replaceToHEICImageExtension(nil, u"jpg"), std::nullopt);
  EXPECT_EQ(StringUtils::replaceToHEICImageExtension(String(u"a.heic"), u"a/b"), std::nullopt);
}

}  // namespace quorvel
