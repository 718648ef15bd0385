#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

#include <quorvel/Extensions/UIKit/UIColor+CSSNames.h>
#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Extensions/UIKit/UIColor+Companions.h>
#include <quorvel/Extensions/UIKit/UIColor+HSL.h>

namespace quorvel {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }
bool isWhite(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f'; }
/// Of text in lower case.
bool startsName(char c) { return (c >= 'a' && c <= 'z') || c == '_' || c == '-'; }

double limited(double value) { return value > 0 ? std::fmin(value, 1.0) : 0.0; }

/// The text in ASCII lower case; nothing for one with another character, or without any.
std::optional<std::string> lowerASCII(StringView text) {
  std::string lower;
  for (const char16_t unit : text.units()) {
    if (unit >= 0x80) return std::nullopt;
    const auto c = static_cast<char>(unit);
    lower += c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
  }
  while (!lower.empty() && isWhite(lower.back())) lower.pop_back();
  lower.erase(0, std::min(lower.size(), lower.find_first_not_of(" \t\n\r\f")));
  return lower.empty() ? std::nullopt : std::optional(lower);
}

std::optional<UIColor> hexColor(std::string_view digits) {
  std::uint32_t value = 0;
  const bool isShort = digits.size() == 3 || digits.size() == 4;
  if (!isShort && digits.size() != 6 && digits.size() != 8) return std::nullopt;
  for (const char c : digits) {
    const int digit = isDigit(c) ? c - '0' : c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
    if (digit < 0) return std::nullopt;
    value = isShort ? value << 8 | static_cast<std::uint32_t>(digit * 0x11)
                    : value << 4 | static_cast<std::uint32_t>(digit);
  }
  if (digits.size() % 4 == 0) return UIColorWithHex::colorWithAlphaHexRGBA(value);
  return UIColorWithHex::colorWithHex(value);
}

/// A number, a percentage, an angle in degrees, or "none", which is 0.
struct Component {
  enum class Kind : std::uint8_t { Number, Percentage, Angle, None } kind = Kind::None;
  double value = 0;

  [[nodiscard]] bool isOf(std::initializer_list<Kind> kinds) const { return std::ranges::count(kinds, kind) != 0; }
  /// As a part of 1, where a number counts in `whole`s.
  [[nodiscard]] double part(double whole) const { return value / (kind == Kind::Number ? whole : 100); }
};
using Kind = Component::Kind;

/// Reads the inside of a function: components, with white space, commas and a slash between them.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  bool skipWhite() {
    const std::size_t start = at_;
    while (isWhite(peek())) ++at_;
    return at_ != start;
  }
  /// White space, then the character if it is there.
  bool take(char c) {
    skipWhite();
    if (peek() != c) return false;
    ++at_;
    return true;
  }
  [[nodiscard]] bool isAtEnd() {
    skipWhite();
    return at_ == text_.size();
  }

  std::optional<Component> component() {
    skipWhite();
    if (startsName(peek()) && !startsNumber()) {
      return name() == "none" ? std::optional(Component{}) : std::nullopt;
    }
    const auto value = number();
    if (!value) return std::nullopt;
    if (peek() == '%') return ++at_, Component{Kind::Percentage, *value};
    const bool hasUnit = startsName(peek()) && !startsNumber();
    return hasUnit ? angle(*value, name()) : Component{Kind::Number, *value};
  }

 private:
  [[nodiscard]] char peek(std::size_t ahead = 0) const {
    return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
  }
  [[nodiscard]] bool startsNumber() const {
    std::size_t i = peek() == '+' || peek() == '-' ? 1 : 0;
    if (peek(i) == '.') ++i;
    return isDigit(peek(i));
  }
  std::string_view name() {
    const std::size_t start = at_;
    while (startsName(peek()) || isDigit(peek())) ++at_;
    return text_.substr(start, at_ - start);
  }
  void skipDigits() {
    while (isDigit(peek())) ++at_;
  }
  std::optional<double> number() {
    if (!startsNumber()) return std::nullopt;
    if (peek() == '+') ++at_;  // which from_chars does not know
    const std::size_t start = at_;
    if (peek() == '-') ++at_;
    skipDigits();
    if (peek() == '.' && isDigit(peek(1))) {
      ++at_;
      skipDigits();
    }
    if (peek() == 'e') {
      const std::size_t digits = peek(1) == '+' || peek(1) == '-' ? 2 : 1;
      if (isDigit(peek(digits))) {
        at_ += digits;
        skipDigits();
      }
    }
    return valueOf(text_.substr(start, at_ - start));
  }
  /// Beyond the range of numbers nothing: no colour is meant by that.
  static std::optional<double> valueOf(std::string_view digits) {
    double value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return error == std::errc() ? std::optional(value) : std::nullopt;
  }
  static std::optional<Component> angle(double value, std::string_view unit) {
    constexpr std::pair<std::string_view, double> kDegrees[] = {
        {"deg", 1}, {"grad", 0.9}, {"rad", 57.295779513082320877}, {"turn", 360}};
    for (const auto& [name, degrees] : kDegrees) {
      if (unit != name) continue;
      const bool isFinite = std::isfinite(value * degrees);  // else as of numbers beyond their range
      return isFinite ? std::optional(Component{Kind::Angle, value * degrees}) : std::nullopt;
    }
    return std::nullopt;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

struct Arguments {
  Component values[3];
  Component alpha{Kind::Number, 1};
  bool hasCommas = false;
};

std::optional<Arguments> argumentsOf(std::string_view text) {
  Scanner scanner(text);
  Arguments arguments;
  for (std::size_t i = 0; i < 3; ++i) {
    const bool comma = i > 0 && scanner.take(',');
    if (i == 1) arguments.hasCommas = comma;
    if (i == 2 && comma != arguments.hasCommas) return std::nullopt;
    const auto value = scanner.component();
    if (!value) return std::nullopt;
    arguments.values[i] = *value;
  }
  if (scanner.take(arguments.hasCommas ? ',' : '/')) {
    const auto alpha = scanner.component();
    if (!alpha || alpha->kind == Kind::Angle) return std::nullopt;
    arguments.alpha = *alpha;
  }
  if (!scanner.isAtEnd()) return std::nullopt;
  // The older form with commas does not know "none".
  const bool hasNone = std::ranges::any_of(arguments.values, [](const Component& c) { return c.kind == Kind::None; });
  if (arguments.hasCommas && (hasNone || arguments.alpha.kind == Kind::None)) return std::nullopt;
  return arguments;
}

std::optional<UIColor> rgbColor(const Arguments& a, double alpha) {
  double parts[3];
  for (std::size_t i = 0; i < 3; ++i) {
    if (a.values[i].kind == Kind::Angle) return std::nullopt;
    if (a.hasCommas && a.values[i].kind != a.values[0].kind) return std::nullopt;
    parts[i] = limited(a.values[i].part(255));
  }
  return UIColor(parts[0], parts[1], parts[2], alpha);
}

/// As a part of a turn, from 0 to below 1.
double turnOf(const Component& hue) {
  const double degrees = std::fmod(hue.value, 360.0);
  return (degrees < 0 ? degrees + 360 : degrees) / 360;
}

UIColor fromHSL(double hue, double saturation, double lightness, double alpha) {
  const UIColor color = UIColorHSL::colorWithHue(hue, saturation, lightness, alpha);
  return {limited(color.red()), limited(color.green()), limited(color.blue()), alpha};
}

std::optional<UIColor> hueColor(const Arguments& a, double alpha, bool isHWB) {
  const auto& [hue, second, third] = a.values;
  if (!hue.isOf({Kind::Number, Kind::Angle, Kind::None}) || second.kind == Kind::Angle || third.kind == Kind::Angle) {
    return std::nullopt;
  }
  const bool areBothPercentages = second.kind == Kind::Percentage && third.kind == Kind::Percentage;
  if (a.hasCommas && (isHWB || !areBothPercentages)) return std::nullopt;
  const double x = limited(second.part(100));
  const double y = limited(third.part(100));
  if (!isHWB) return fromHSL(turnOf(hue), x, y, alpha);
  if (x + y >= 1) return UIColor::white(x / (x + y), alpha);
  const UIColor pure = fromHSL(turnOf(hue), 1, 0.5, alpha);
  const auto mixed = [&](double component) { return limited(component * (1 - x - y) + x); };
  return UIColor(mixed(pure.red()), mixed(pure.green()), mixed(pure.blue()), alpha);
}

std::optional<UIColor> functionColor(std::string_view name, std::string_view inside) {
  const bool isRGB = name == "rgb" || name == "rgba";
  const bool isHWB = name == "hwb";
  if (!isRGB && !isHWB && name != "hsl" && name != "hsla") return std::nullopt;
  const auto arguments = argumentsOf(inside);
  if (!arguments) return std::nullopt;
  const double alpha = limited(arguments->alpha.part(1));
  return isRGB ? rgbColor(*arguments, alpha) : hueColor(*arguments, alpha, isHWB);
}

std::optional<UIColor> namedColor(std::string_view name) {
  if (name == "transparent") return UIColor(0, 0, 0, 0);
  const auto* const found = std::ranges::lower_bound(kCSSNames, name, {}, &CSSName::name);
  if (found == std::end(kCSSNames) || found->name != name) return std::nullopt;
  return UIColorWithHex::colorWithHex(found->rgb);
}

}  // namespace

std::optional<UIColor> colorFromCSS(StringView text) {
  const auto lower = lowerASCII(text);
  if (!lower) return std::nullopt;
  const std::string_view color = *lower;
  if (color.front() == '#') return hexColor(color.substr(1));
  const std::size_t open = color.find('(');
  if (open == color.npos) return namedColor(color);
  if (color.back() != ')') return std::nullopt;
  return functionColor(color.substr(0, open), color.substr(open + 1, color.size() - open - 2));
}

}  // namespace quorvel
