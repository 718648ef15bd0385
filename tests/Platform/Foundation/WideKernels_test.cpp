#include <random>

#include <gtest/gtest.h>

#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+Extension.h>
#include <quorvel/Platform/Foundation/Comparison.h>
#include <quorvel/Platform/Foundation/LiteralSearch.h>
#include <quorvel/Platform/Foundation/StringOperations.h>
#include <quorvel/Platform/Foundation/Unicode.h>
#include <quorvel/Platform/Foundation/WideKernels.h>

namespace quorvel {
namespace {

#if defined(__x86_64__)

/// What `run` answers without the wide kernels and with them.
template <class Run>
auto bothWays(Run run) {
  wide::setEnabled(false);
  auto portable = run();
  wide::setEnabled(true);
  return std::pair(std::move(portable), run());
}

/// Units of one kind in runs, so that blocks are whole, mixed, and cut at every place.
class Texts {
 public:
  std::u16string next(std::size_t size) {
    std::u16string text;
    while (text.size() < size) {
      const std::size_t run = random_() % 40;
      const unsigned kind = random_() % 8;
      for (std::size_t i = 0; i < run && text.size() < size; ++i) text += character(kind);
    }
    return text;
  }
  std::size_t below(std::size_t bound) { return random_() % bound; }

 private:
  std::u16string character(unsigned kind) {
    static constexpr char16_t kFirst[] = {u'a', u'A', 0x7E, 0xAC00, 0x7FE, 0xD7FE, 0xE000, 0};
    if (kind == 7) return random_() % 40 == 0 ? std::u16string(1, char16_t(0xD800 + random_() % 2048)) : u"\U0001F600";
    return {static_cast<char16_t>(kFirst[kind] + random_() % (kind < 2 ? 26 : 4))};
  }
  std::mt19937 random_{20260114};
};

TEST(WideKernels, ConvertAsThePortableCodeDoes) {
  Texts texts;
  for (std::size_t round = 0; round < 20000; ++round) {
    const std::u16string text = texts.next(texts.below(300));
    const auto [utf8, wideUTF8] = bothWays([&] { return unicode::toUTF8(text); });
    ASSERT_EQ(utf8, wideUTF8) << round;
    const auto [replaced, wideReplaced] = bothWays([&] { return unicode::toUTF8Replacing(text); });
    ASSERT_EQ(replaced, wideReplaced) << round;
    std::string bytes = replaced;
    // Every third text is broken somewhere: a byte changed, or the end cut off.
    if (round % 3 == 0 && !bytes.empty()) bytes[texts.below(bytes.size())] = static_cast<char>(texts.below(256));
    if (round % 3 == 1) bytes.resize(texts.below(bytes.size() + 1));
    const auto [units, wideUnits] = bothWays([&] { return String::fromUTF8(bytes); });
    ASSERT_EQ(units, wideUnits) << round;
    const auto [kept, wideKept] = bothWays([&] { return String::fromUTF8Replacing(bytes); });
    ASSERT_EQ(kept, wideKept) << round;
  }
}

TEST(WideKernels, FindAsThePortableCodeDoes) {
  Texts texts;
  for (std::size_t round = 0; round < 20000; ++round) {
    const std::u16string text = texts.next(1 + texts.below(300));
    const StringView view = text;
    const StringView needle = view.sub(texts.below(text.size()), 1 + texts.below(5));
    const auto check = [&](const char* what, auto run) {
      const auto [portable, wide] = bothWays(run);
      ASSERT_EQ(portable, wide) << what << " in round " << round;
    };
    check("isWellFormed", [&] { return unicode::isWellFormed(view); });
    check("findUnit", [&] { return unicode::findUnit(view, needle[0], text.size() / 3); });
    check("commonPrefix",
          [&] { return unicode::commonPrefix(view.data(), view.data() + view.size() / 2, view.size() / 2); });
    check("findLiteral", [&] { return unicode::findLiteral(view, needle, text.size() / 3); });
    check("rangeOfString", [&] { return rangeOfString(view, needle); });
    check("ignoring case", [&] { return rangeOfStringCaseInsensitive(view, uppercased(needle)); });
    check("LiteralSearch", [&] { return LiteralSearch(needle, true).ranges(view); });
    check("percent encoding", [&] { return urlEncodeString(String(view)); });
    check("percent decoding", [&] { return urlDecodeString(urlEncodeString(String(view)).value_or(String(view))); });
    check("separatedBy", [&] { return separatedBy(String(view), StringView(u"aA ~").sub(round % 4)); });
    check("lowercased", [&] { return lowercased(view); });
  }
}

TEST(WideKernels, EscapeEveryUnit) {
  std::u16string text;
  for (char16_t unit = 0x800; unit != 0; ++unit) {
    if (unit % 5 == 0) text += static_cast<char16_t>(unit % 0x80);
    if (!unicode::isSurrogate(unit)) text += unit;
  }
  const auto [portable, wide] = bothWays([&] { return urlEncodeString(String(text)); });
  EXPECT_EQ(portable, wide);
  EXPECT_EQ(urlDecodeString(*wide), text);
}

#endif

}  // namespace
}  // namespace quorvel
