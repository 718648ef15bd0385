#include <bit>

#include <gtest/gtest.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/PropertyList.h>

namespace quorvel {
namespace {

std::optional<Value> readXML(const std::string& body) {
  return parsePropertyList("<?xml version=\"1.0\"?><plist version=\"1.0\">" + body + "</plist>");
}

// value: nil: refused
TEST(PropertyList, ReadsXMLValues) {
  const std::uint8_t bytes[] = {1, 2, 3};
  const test::Row<std::string, Value, test::Why> rows[] = {
      {"<string>한글</string>", u"한글", "text in UTF-8"},
      {"<string> a\r\nb\r</string>", u" a\nb\n", "spaces stay, line ends are one unit"},
      {"<string>&lt;&amp;&#x1F600;&#65;<!-- c --><![CDATA[<&]]></string>", u"<&\U0001F600A<&", "entities and sections"},
      {"<integer>18446744073709551615</integer>", UINT64_MAX, "the highest keeps its sign"},
      {"<integer>0xff</integer>", 255, "hexadecimal"},
      {"<real>1.5e3</real>", 1500.0, "a double"},
      {"<date>2001-01-01T00:00:00Z</date>", Date{978307200}, "a date"},
      {"<date>2000-02-29T23:59:59Z</date>", Date{951868799}, "a leap day"},
      {"<data> AQ\n ID </data>", Data(bytes), "bytes with line breaks"},
      {"<array><true/><false></false></array>", List{true, false}, "booleans"},
      {"<dict><key>a</key><array/><key>a</key><dict/></dict>", Dictionary{{u"a", Dictionary()}}, "the last one stays"},
      {"<!-- <array> --><true />", true, "comments and spaces"},

      {"", nil, "nothing"},
      {"<true/><true/>", nil, "two values"},
      {"<dict><key>a</key></dict>", nil, "a key without value"},
      {"<dict><true/></dict>", nil, "a value without key"},
      {"<array><key>a</key></array>", nil, "a key in a list"},
      {"<array><dict></array></dict>", nil, "crossed"},
      {"<string>a", nil, "no end"},
      {"<string>a</integer>", nil, "another end"},
      {"<string>&other;</string>", nil, "an entity that is not known"},
      {"<string>&#xD800;</string>", nil, "half of a pair"},
      {"<string>&#0;</string>", nil, "no XML character"},
      {"<string>\x01</string>", nil, "a control character"},
      {"<integer>1.5</integer>", nil, "no integer"},
      {"<integer>18446744073709551616</integer>", nil, "beyond 64 bits"},
      {"<integer>--1</integer>", nil, "two signs"},
      {"<date>2001-02-29T00:00:00Z</date>", nil, "no such day"},
      {"<date>2001-01-01T24:00:00Z</date>", nil, "no such hour"},
      {"<data>A</data>", nil, "no Base64"},
      {"<other/>", nil, "a tag that is not known"},
  };
  for (const auto& [body, value, why] : rows) EXPECT_EQ(readXML(body).value_or(Value()), value) << why;
  EXPECT_EQ(parsePropertyList("<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><true/></plist>"), std::nullopt);
  EXPECT_EQ(parsePropertyList("<!DOCTYPE plist PUBLIC \"-//x\"><plist><true/></plist>"), std::optional<Value>(true));
  EXPECT_EQ(parsePropertyList("<plist><true/></plist>x"), std::nullopt) << "more behind the end";
}

TEST(PropertyList, XMLNestingIsBounded) {
  const auto nested = [](std::size_t levels) {
    std::string body;
    for (std::size_t i = 0; i < levels; ++i) body += "<array>";
    for (std::size_t i = 0; i < levels; ++i) body += "</array>";
    return readXML(body);
  };
  EXPECT_TRUE(nested(limits::kPropertyListDepth));
  EXPECT_FALSE(nested(limits::kPropertyListDepth + 1));
  EXPECT_FALSE(nested(500000));
}

/// A binary list of these objects, the first on top, with references and offsets of two bytes.
std::string binary(const std::vector<std::string>& objects) {
  const auto number = [](std::size_t value, int size) {
    std::string bytes;
    while (size-- > 0) bytes += static_cast<char>(value >> (8 * size));
    return bytes;
  };
  std::string out = "bplist00";
  std::string table;
  for (const std::string& object : objects) {
    table += number(out.size(), 2);
    out += object;
  }
  const std::size_t place = out.size();
  return out + table + std::string(6, '\0') + "\2\2" + number(objects.size(), 8) + number(0, 8) + number(place, 8);
}

std::string reference(std::size_t object) { return {static_cast<char>(object >> 8), static_cast<char>(object & 0xFF)}; }

// value: nil: refused
TEST(PropertyList, ReadsBinaryValues) {
  using namespace std::string_literals;
  const std::uint8_t bytes[] = {7, 8};
  const test::Row<std::vector<std::string>, Value, test::Why> rows[] = {
      {{"\x09"}, true, "true"},
      {{"\x10\xFF"}, 255, "one byte has no sign"},
      {{"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE"}, -2, "eight bytes have one"},
      {{"\x14"s + std::string(8, '\0') + std::string(8, '\xFF')}, UINT64_MAX, "sixteen bytes for the upper half"},
      {{"\x23\x3F\xF8\0\0\0\0\0\0"s}, 1.5, "a double"},
      {{"\x33\x3F\xF0\0\0\0\0\0\0"s}, Date{978307201}, "a second after 2001"},
      {{"\x42\x07\x08"}, Data(bytes), "bytes"},
      {{"Sabc"}, u"abc", "ASCII"},
      {{"\x61\xD5\x5C"}, u"한", "UTF-16"},
      {{"_\x10\x10"s + "0123456789abcdef"}, u"0123456789abcdef", "a count beyond the marker"},
      {{"\xA2" + reference(1) + reference(1), "Qa"}, List{u"a", u"a"}, "an object named twice"},
      {{"\xD1" + reference(1) + reference(2), "Qa", "\x08"}, Dictionary{{u"a", false}}, "a dictionary"},

      {{"\xA1" + reference(0)}, nil, "a list that holds itself"},
      {{"\xA1" + reference(1), "\xA1" + reference(0)}, nil, "a longer circle"},
      {{"\xD1" + reference(1) + reference(1), "\x08"}, nil, "a key that is no text"},
      {{"\x51\xE9"}, nil, "not ASCII"},
      {{"\x61\xD8\x01"}, nil, "half of a pair"},
      {{"\x5F\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}, nil, "longer than the file"},
      {{"\xAF\x13\x80\0\0\0\0\0\0\0"s}, nil, "a count whose bytes overflow"},
      {{"\x14"s + std::string(16, '\1')}, nil, "beyond 64 bits"},
      {{"\x80\x01"}, nil, "an archive's reference"},
  };
  for (const auto& [objects, value, why] : rows) {
    const std::string file = binary(objects);
    EXPECT_EQ(parsePropertyList(file).value_or(Value()), value) << why;
    for (std::size_t size = 0; size < file.size(); ++size) {
      const std::vector<char> exact(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_FALSE(parsePropertyList({exact.data(), size})) << why << ": cut to " << size;
    }
  }
}

TEST(PropertyList, BinaryWorkIsLinear) {
  std::vector<std::string> chain;
  std::vector<std::string> doubled;
  for (std::size_t i = 1; i <= limits::kPropertyListDepth; ++i) {
    chain.push_back("\xA1" + reference(i));
    if (i <= 60) doubled.push_back("\xA2" + reference(i) + reference(i));
  }
  chain.emplace_back("\x08");
  doubled.emplace_back("\x08");
  EXPECT_TRUE(parsePropertyList(binary(chain)));
  chain.insert(chain.begin(), "\xA1" + reference(1));
  for (std::size_t i = 0; i + 1 < chain.size(); ++i) chain[i] = "\xA1" + reference(i + 1);
  EXPECT_FALSE(parsePropertyList(binary(chain))) << "one level too deep";
  const std::optional<Value> shared = parsePropertyList(binary(doubled));
  ASSERT_TRUE(shared) << "2^60 leaves, sixty-one objects";
  const List& top = *shared->asList();
  EXPECT_TRUE(top[0].asList()->isSameAs(*top[1].asList()));
}

}  // namespace
}  // namespace quorvel
