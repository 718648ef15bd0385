#include <cmath>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/Format.h>
#include <quorvel/Platform/Foundation/Limits.h>

namespace quorvel {
namespace {

std::span<const Value> spanOf(const List& list) { return {list.begin(), list.size()}; }

TEST(Format, ObjectsAlone) {
  const test::Row<std::string, List, std::string> rows[] = {
      {"%@-%@", {u"a"}, "a-(null)"},
      {"%2$@%1$@%@", {u"a", 2}, "2aa"},
      {"%0$@ %99999999999999999999$@", {1}, "(null) (null)"},
      {"%d%n%s%*d%1000000000d%@", {u"first"}, "first"},
      {"100%", {}, "100%"},
      {"(50%) 5 %\n%", {}, "(50%) 5 %\n%"},
      {"%%@ %5%", {u"x"}, "%@ %"},
      {"%4@|%-4@|%.2@", {u"ab", u"ab", u"abc"}, "  ab|ab  |ab"},
      {"%.1@%.2@", {u"\U0001F600", u"\U0001F600"}, "😀"},
      {"%한", {}, "%한"},
      {"%@", {Value(List{null})}, "(\n    <null>\n)"},
  };
  for (const auto& [format, arguments, text] : rows) {
    EXPECT_EQ(formatObjects(*String::fromUTF8(format), spanOf(arguments)).toUTF8Replacing(), text) << format;
  }
  EXPECT_EQ(formatObjects(nil, {}), u"");
}

TEST(Format, NumbersAsCPrintsThem) {
  const test::Row<std::string, List, std::string> rows[] = {
      {"%d %i %5d|%-5d|%05d|%+d|% d|%.3d", {1, -2, 3, 4, -5, 6, 7, 8}, "1 -2     3|4    |-0005|+6| 7|008"},
      {"%08.3d|%.0d|", {5, 0}, "     005||"},
      {"%x %X %#x %#X %o %#o %#x", {255, 255, 255, 255, 8, 8, 0}, "ff FF 0xff 0XFF 10 010 0"},
      {"%x %lx %hhx %hx", {-1, -1, -1, -1}, "ffffffff ffffffffffffffff ff ffff"},
      {"%hhd %hd %lld %zd %qd", {300, 70000, INT64_MIN, 1, 2}, "44 4464 -9223372036854775808 1 2"},
      {"%d %u", {5'000'000'000, UINT64_MAX}, "5000000000 18446744073709551615"},
      {"%f %.2f %.0f %#.0f %8.3f|%-8.1f|%08.2f",
       {1.5, 2.675, 2.5, 2.0, M_PI, 1.25, -1.5},
       "1.500000 2.67 2 2.    3.142|1.2     |-0001.50"},
      {"%e %.0e %#.0E %E", {12345.678, 5.0, 5.0, 0.0}, "1.234568e+04 5e+00 5.E+00 0.000000E+00"},
      {"%g %g %g %.3g %#g %G",
       {100000.0, 1e6, 0.0001, 1234.5, 1.0, 1e-10},
       "100000 1e+06 0.0001 1.23e+03 1.00000 1E-10"},
      {"%a %A %.1a", {1.0, 255.5, 1.96875}, "0x1p+0 0X1.FFP+7 0x2.0p+0"},
      {"%f %F %+e %05f", {INFINITY, INFINITY, -INFINITY, std::nan("")}, "inf INF -inf   nan"},
      {"%c%C%s|%5s|%.2S", {65, 0xD55C, u"text", u"r", u"cut"}, "A한text|    r|cu"},
      {"%*d|%-*d|%*d|%.*f", {4, 1, 4, 2, -4, 3, 1, 0.25}, "   1|2   |3   |0.2"},
      {"%2$*1$d", {4, 7}, "   7"},
      {"%p", {4096}, "0x1000"},
      {"%d %f %@", {u"no number", List{}, u"x"}, "0 0.000000 x"},
      {"%n%y%@", {u"first"}, "first"},
      {"%d", {2.9}, "2"},
  };
  for (const auto& [format, arguments, text] : rows) {
    EXPECT_EQ(formatValues(*String::fromUTF8(format), spanOf(arguments)).toUTF8Replacing(), text) << format;
  }
}

TEST(Format, HostileWidthsAreBounded) {
  const auto widest = static_cast<std::size_t>(limits::kFormatWidth);
  const Value huge[] = {INT64_MIN, 1, INT64_MAX, 1.0};
  EXPECT_EQ(formatValues(u"%1000000000d", huge).size(), widest);
  EXPECT_EQ(formatValues(u"%*d", huge).size(), widest);
  EXPECT_EQ(formatValues(u"%4$.1000000000f", huge).size(), widest + 2);
  EXPECT_EQ(formatValues(u"%4$#.1000000000e", huge).size(), widest + 6);
  EXPECT_EQ(formatValues(u"%4$.1000000000d", huge).size(), widest);
  std::u16string format;
  while (format.size() < 6 * 20'000) format += u"%4096@";
  EXPECT_LE(formatObjects(format, {}).size(), limits::kFormatLength + widest);
}

}  // namespace
}  // namespace quorvel
