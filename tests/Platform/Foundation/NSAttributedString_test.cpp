#include <random>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/AttributedText.h>

namespace quorvel {
namespace {

using Spans = std::vector<Span>;

TEST(NSMutableAttributedString, AddsOverRanges) {
  const test::Row<std::vector<NSRange>, Spans, test::Why> rows[] = {
      {{{2, UINT64_MAX}}, {{{0, 2}, {}}, {{2, 2}, {{u"k", 1}}}}, "clipped without overflow"},
      {{NSRange::notFound()}, {{{0, 4}, {}}}, "not found"},
  };
  for (const auto& [ranges, expected, why] : rows) {
    NSMutableAttributedString text(u"abcd");
    text.addAttributes(Attributes{{u"k", 1}}, ranges);
    EXPECT_EQ(text.spans(), expected) << why;
  }
}

TEST(NSMutableAttributedString, AppendKeepsBothAndJoinsEqualBorders) {
  NSMutableAttributedString text(u"ab", Attributes{{u"k", 1}});
  text.append(NSAttributedString(u"cd", Attributes{{u"k", 1.0}}));
  EXPECT_EQ(text.spans(), (Spans{{{0, 4}, {{u"k", 1}}}})) << "equal by value";
  text.append(NSAttributedString(u"e"));
  text.append(text);
  EXPECT_EQ(text.string(), String(u"abcdeabcde"));
  EXPECT_EQ(text.spans().size(), 4U) << "to itself";
  text.append(NSAttributedString());
  EXPECT_EQ(text.spans().size(), 4U);
  EXPECT_TRUE(NSAttributedString(u"", Attributes{{u"k", 1}}).spans().empty()) << "no text, no span";
}

TEST(NSMutableAttributedString, AgreesWithAttributesKeptForEachUnit) {
  std::mt19937 random(3);
  for (int round = 0; round < 300; ++round) {
    NSMutableAttributedString text(std::u16string(20, u'x'));
    std::vector<Attributes> units(20);
    for (int step = 0; step < 6; ++step) {
      const char16_t name[] = {static_cast<char16_t>(u'a' + random() % 3), 0};
      const Attributes added{{StringView(name), static_cast<int>(random() % 2)}};
      std::vector<NSRange> ranges;
      for (auto i = random() % 5; i > 0; --i) ranges.push_back({random() % 22, random() % 8});
      for (const NSRange range : ranges) {
        for (std::uint64_t i = range.location; i < range.end() && i < 20; ++i) {
          units[i].set(added.begin()->key, added.begin()->value);
        }
      }
      text.addAttributes(added, ranges);
    }
    std::uint64_t at = 0;
    for (const Span& span : text.spans()) {
      ASSERT_EQ(span.range.location, at);
      ASSERT_TRUE(at == 0 || units[at] != units[at - 1]) << "neighbours differ";
      for (; at < span.range.end(); ++at) {
        ASSERT_EQ(span.attributes, units[at]);
        ASSERT_EQ(text.attributesAt(at), units[at]);
      }
    }
    ASSERT_EQ(at, 20U);
    ASSERT_EQ(text.attributesAt(20), Attributes{}) << "past the end";
  }
}

TEST(AttributedText, IsBoxedByItsForm) {
  const Value changeable = AttributedText(NSMutableAttributedString(u"a"));
  const Value fixed = AttributedText(NSAttributedString(u"a"));
  EXPECT_NE(changeable.as<NSMutableAttributedString>(), nullptr);
  EXPECT_NE(fixed.as<NSAttributedString>(), nullptr);
  EXPECT_EQ(fixed.as<NSMutableAttributedString>(), nullptr);
  EXPECT_EQ(fixed, Value(NSAttributedString(u"a")));
}

}  // namespace
}  // namespace quorvel
