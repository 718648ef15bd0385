#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/PathOperations.h>

namespace quorvel {

TEST(PathOperations, TakeAPathApart) {
  const test::Row<const char16_t*, const char16_t*, const char16_t*, const char16_t*, const char16_t*> rows[] = {
      {u"", u"", u"", u"", u""},
      {u"/", u"/", u"", u"/", u"/"},
      {u"/tmp/scratch.tiff", u"scratch.tiff", u"tiff", u"/tmp/scratch", u"/tmp"},
      {u"/tmp/", u"tmp", u"", u"/tmp", u"/"},
      {u"/hello/there/..", u"..", u"", u"/hello/there/..", u"/hello/there"},
      {u"//host/share", u"share", u"", u"/host/share", u"/host"},
      {u"a//b.c//d.e///", u"d.e", u"e", u"a/b.c/d", u"a/b.c"},
      {u"/foo/.zip", u".zip", u"", u"/foo/.zip", u"/foo"},
      {u"/.zip", u".zip", u"", u"/.zip", u"/"},
      {u"foo.", u"foo.", u"", u"foo.", u""},
      {u"..", u"..", u"", u"..", u""},
      {u"..zip", u"..zip", u"", u"..zip", u""},
      {u"...a.b", u"...a.b", u"b", u"...a", u""},
      {u".scratch.tiff", u".scratch.tiff", u"tiff", u".scratch", u""},
      {u"scratch..tiff", u"scratch..tiff", u"tiff", u"scratch.", u""},
      {u"a.b c", u"a.b c", u"", u"a.b c", u""},
      {u"a.b/c", u"c", u"", u"a.b/c", u"a.b"},
      {u"사진.한글", u"사진.한글", u"한글", u"사진", u""},
      {u"a.\xD83D\xDE00", u"a.\xD83D\xDE00", u"\xD83D\xDE00", u"a", u""},
  };
  for (const auto& [path, last, extension, withoutExtension, withoutLast] : rows) {
    const String text = std::u16string(path);
    EXPECT_EQ(String(paths::lastPathComponent(text)), String(std::u16string(last))) << text;
    EXPECT_EQ(String(paths::pathExtension(text)), String(std::u16string(extension))) << text;
    EXPECT_EQ(paths::stringByDeletingPathExtension(text), String(std::u16string(withoutExtension))) << text;
    EXPECT_EQ(paths::stringByDeletingLastPathComponent(text), String(std::u16string(withoutLast))) << text;
  }
}

// extension: nullptr where the platform refuses
TEST(PathOperations, JoinAPath) {
  const test::Row<const char16_t*, const char16_t*, const char16_t*, const char16_t*> rows[] = {
      {u"/tmp", u"a.b", u"/tmp/a.b", u"/tmp.a.b"},
      {u"/tmp/", u"tiff", u"/tmp/tiff", u"/tmp.tiff"},
      {u"/tmp//", u"//a//b//", u"/tmp/a/b", nullptr},
      {u"a//b", u"c", u"a/b/c", u"a/b.c"},
      {u"", u"/usr/", u"/usr", nullptr},
      {u"", u"", u"", nullptr},
      {u"", u"/", u"/", nullptr},
      {u"/", u"a", u"/a", nullptr},
      {u"a/", u"", u"a", u"a"},
      {u"folder.", u"x", u"folder./x", u"folder..x"},
  };
  for (const auto& [path, piece, component, extension] : rows) {
    const String text = std::u16string(path);
    const String second = std::u16string(piece);
    EXPECT_EQ(paths::stringByAppendingPathComponent(text, second), String(std::u16string(component)))
        << text << " with " << second;
    const auto expected = extension ? std::optional<String>(std::u16string(extension)) : std::nullopt;
    EXPECT_EQ(paths::stringByAppendingPathExtension(text, second), expected) << text << " with " << second;
  }
  EXPECT_EQ(paths::stringByAppendingPathExtension(u"a", nil), std::nullopt);
}

TEST(PathOperations, ShareWhatDoesNotChange) {
  const String path = u"/var/mobile/attachments/no extension";
  EXPECT_EQ(paths::stringByDeletingPathExtension(path).data(), path.data());
  EXPECT_EQ(paths::stringByAppendingPathComponent(path, u"").data(), path.data());
  EXPECT_EQ(paths::stringByAppendingPathExtension(path, u"")->data(), path.data());
}

}  // namespace quorvel
