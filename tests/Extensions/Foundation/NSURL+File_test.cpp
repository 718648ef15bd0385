#include <gtest/gtest.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Extensions/Foundation/NSURL+File.h>

namespace quorvel {
namespace {

TEST(NSURLFile, SizesOfFileURLsOnly) {
  const test::TemporaryFolder folder;
  test::writeFile(folder.path("a b"), "12345");
  test::writeFile(folder.path("empty"), "");
  const std::string base = "file://" + folder.path();
  const auto size = [](const std::string& text) { return fileSize(*NSURL::withString(String::fromUTF8(text))); };
  EXPECT_EQ(size(base + "/a%20b"), 5);
  EXPECT_EQ(size(base + "/a%20b?q#f"), 5) << "query and fragment are not the path";
  EXPECT_EQ(size(base + "/empty"), 0);
  EXPECT_EQ(size(base + "/none"), Value(nil));
  EXPECT_EQ(size(base + "/a%00b"), Value(nil)) << "a NUL names nothing";
  EXPECT_EQ(size(base + "/%FF"), Value(nil)) << "no text";
  EXPECT_EQ(size("FILE://" + folder.path() + "/a%20b"), 0) << "the scheme's case counts";
  EXPECT_EQ(size("http://h/a"), 0);
  EXPECT_EQ(size(folder.path() + "/empty"), 0) << "no scheme";
}

}  // namespace
}  // namespace quorvel
