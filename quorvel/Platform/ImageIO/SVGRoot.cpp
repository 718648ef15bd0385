#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include <quorvel/Platform/ImageIO/SVGRoot.h>

namespace quorvel {
namespace {

constexpr std::string_view kSpaces = " \t\r\n";
constexpr auto kNowhere = std::string_view::npos;

void skip(std::string_view& text, std::size_t count) { text.remove_prefix(std::min(count, text.size())); }
void skipSpaces(std::string_view& text) { skip(text, text.find_first_not_of(kSpaces)); }

/// Past the next `end`; false when there is none.
bool skipPast(std::string_view& text, std::string_view end) {
  const std::size_t at = text.find(end);
  if (at != kNowhere) skip(text, at + end.size());
  return at != kNowhere;
}

/// The place of the ">" that ends a tag or a document type: the first that stands neither in brackets nor in quotation
/// marks.
std::size_t findEndOfMark(std::string_view text) {
  bool isInBrackets = false;
  char quote = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char unit = text[i];
    if (quote) {
      if (unit == quote) quote = 0;
    } else if (unit == '"' || unit == '\'') {
      quote = unit;
    } else if (unit == '[' || unit == ']') {
      isInBrackets = unit == '[';
    } else if (unit == '>' && !isInBrackets) {
      return i;
    }
  }
  return kNowhere;
}

bool skipMark(std::string_view& text) {
  const std::size_t end = findEndOfMark(text);
  if (end != kNowhere) skip(text, end + 1);
  return end != kNowhere;
}

/// The attributes of the root element, when that is "svg" and its tag ends.
std::optional<std::string_view> attributesOfRoot(ByteView file) {
  const ImageBytes bytes = file.part(0, kSVGBytes);
  std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.starts_with("\xEF\xBB\xBF")) skip(text, 3);
  for (;;) {
    skipSpaces(text);
    bool isSkipped = false;
    if (text.starts_with("<?")) isSkipped = skipPast(text, "?>");
    if (text.starts_with("<!--")) isSkipped = skipPast(text, "-->");
    if (text.starts_with("<!DOCTYPE")) isSkipped = skipMark(text);
    if (!isSkipped) break;
  }
  if (!text.starts_with('<')) return std::nullopt;
  skip(text, 1);
  const std::size_t end = text.find_first_of(" \t\r\n/>");
  const std::string_view name = text.substr(0, end);
  if (end == kNowhere || name.substr(name.find(':') + 1) != "svg") return std::nullopt;
  skip(text, end);
  const std::size_t close = findEndOfMark(text);
  return close == kNowhere ? std::nullopt : std::optional(text.substr(0, close + 1));
}

/// The value of an attribute of the element whose attributes these are.
std::optional<std::string_view> attribute(std::string_view text, std::string_view wanted) {
  for (;;) {
    skipSpaces(text);
    const std::size_t end = text.find_first_of("= \t\r\n/>");
    if (end == kNowhere || end == 0) return std::nullopt;
    const std::string_view name = text.substr(0, end);
    skip(text, end);
    skipSpaces(text);
    if (!text.starts_with('=')) return std::nullopt;
    skip(text, 1);
    skipSpaces(text);
    if (text.empty() || (text[0] != '"' && text[0] != '\'')) return std::nullopt;
    const std::size_t close = text.find(text[0], 1);
    if (close == kNowhere) return std::nullopt;
    if (name == wanted) return text.substr(1, close - 1);
    skip(text, close + 1);
  }
}

/// Takes a number off the front.
std::optional<double> takeNumber(std::string_view& text) {
  skip(text, text.find_first_not_of(" \t\r\n,"));
  if (text.starts_with('+')) skip(text, 1);
  double number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc()) return std::nullopt;
  skip(text, static_cast<std::size_t>(result.ptr - text.data()));
  return number;
}

struct Unit {
  std::string_view name;
  double pixels;
};
constexpr Unit kUnits[] = {{"", 1},    {"px", 1},         {"pt", 96.0 / 72}, {"pc", 16},
                           {"in", 96}, {"cm", 96 / 2.54}, {"mm", 96 / 25.4}, {"Q", 96 / 101.6}};

/// In px; nil when it is missing or relative to what is around the picture.
std::optional<double> length(std::string_view attributes, std::string_view name) {
  auto text = attribute(attributes, name);
  const auto number = text ? takeNumber(*text) : std::nullopt;
  if (!number) return std::nullopt;
  const std::string_view unit = text->substr(0, text->find_last_not_of(kSpaces) + 1);
  for (const Unit& known : kUnits) {
    if (known.name == unit) return *number * known.pixels;
  }
  return std::nullopt;
}

std::uint32_t wholeSide(double pixels) {
  return pixels >= 0.5 && pixels < UINT32_MAX ? static_cast<std::uint32_t>(std::round(pixels)) : 0;
}

struct Size {
  double width = 0;
  double height = 0;
};

Size viewBox(std::string_view attributes) {
  auto text = attribute(attributes, "viewBox");
  double numbers[4] = {};
  for (double& number : numbers) {
    const auto taken = text ? takeNumber(*text) : std::nullopt;
    if (!taken) return {};
    number = *taken;
  }
  return {numbers[2], numbers[3]};
}

}  // namespace

bool isSVGFile(ByteView file) { return attributesOfRoot(file).has_value(); }

void readSVGFacts(ByteView file, ImageFacts& facts) {
  facts.format = ImageFormat::SVG;
  facts.frameCount = 1;
  facts.hasAlpha = true;
  facts.isComplete = true;
  const std::string_view attributes = attributesOfRoot(file).value_or("");
  const auto width = length(attributes, "width");
  const auto height = length(attributes, "height");
  const Size box = viewBox(attributes);
  const double ratio = box.width > 0 && box.height > 0 ? box.width / box.height : 0;
  facts.width = wholeSide(width ? *width : height && ratio > 0 ? *height * ratio : box.width);
  facts.height = wholeSide(height ? *height : width && ratio > 0 ? *width / ratio : box.height);
}

}  // namespace quorvel
