#include <random>

#include <gtest/gtest.h>
#include <tests/support/RandomText.h>
#include <unicode/unorm2.h>

#include <quorvel/Platform/Foundation/CanonicalText.h>
#include <quorvel/Platform/Foundation/Comparison.h>

namespace quorvel {
namespace {

/// Marks of several classes, ones that decompose to two, ones beyond the basic plane, and now and then a starter: one
/// that decomposes, one of class 0 among marks, and half of a pair.
constexpr std::u16string_view kMarks[] = {u"\u0301",       u"\u0323", u"\u0345",       u"\u0344", u"\u0F71",
                                          u"\u0F73",       u"\u0F81", u"\u05B8",       u"\u3099", u"\u0327",
                                          u"\xD834\xDD65", u"\u0334", u"\xD834\xDD6D", u"\u0301", u"\u0323"};
constexpr std::u16string_view kStarters[] = {u"\u00E9", u"\u034F", u"\xD83D", u"\xDE00",
                                             u"\u1EAD", u"\uAC00", u"plain"};

std::u16string decomposedByICU(std::u16string_view text) {
  UErrorCode status = U_ZERO_ERROR;
  std::u16string out(text.size() * 4 + 16, u'\0');
  const std::int32_t size =
      unorm2_normalize(unorm2_getNFDInstance(&status), text.data(), static_cast<std::int32_t>(text.size()), out.data(),
                       static_cast<std::int32_t>(out.size()), &status);
  out.resize(static_cast<std::size_t>(size));
  return out;
}

TEST(CanonicalText, LongRunsOfMarksAreOrderedAsICUOrdersThem) {
  std::mt19937 random(6);
  for (int round = 0; round < 2000; ++round) {
    std::u16string text;
    for (std::size_t run = 0; run < 1 + random() % 4; ++run) {
      text += test::randomText(random, kStarters, random() % 3);
      text += test::randomText(random, kMarks, random() % 150);
    }
    StringBuilder out;
    appendDecomposed(text, false, out);
    ASSERT_EQ(String(out.view()), String(decomposedByICU(text))) << test::hex(text);
  }
}

TEST(CanonicalText, ManyMarksOutOfOrderTakeLinearWork) {
  std::u16string above = u"a";
  std::u16string apart = u"a";
  for (int i = 0; i < 200'000; ++i) above += u"\u0301\u0323";
  apart.append(200'000, u'\u0323').append(200'000, u'\u0301');
  EXPECT_EQ(caseInsensitiveCompare(above, apart), std::weak_ordering::equivalent);
  EXPECT_EQ(rangeOfString(above, apart), (NSRange{0, 400'001}));
  EXPECT_EQ(rangeOfStringCaseInsensitive(apart, above), (NSRange{0, 400'001}));
}

}  // namespace
}  // namespace quorvel
