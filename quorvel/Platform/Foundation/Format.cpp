#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/Format.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

enum class Length { None, Byte, Short, Long };

struct Conversion {
  bool left = false;
  bool plus = false;
  bool space = false;
  bool alternate = false;
  bool zero = false;
  int width = 0;
  std::optional<int> precision;
  Length length = Length::None;
  std::optional<std::size_t> position;  // counted from 1
  char16_t letter = 0;
};

constexpr bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }
constexpr bool isLetter(char16_t unit) { return (unit | 0x20) >= u'a' && (unit | 0x20) <= u'z'; }
constexpr bool isOneOf(char16_t unit, std::u16string_view units) { return units.find(unit) != units.npos; }

/// Which argument comes next.
class Arguments {
 public:
  explicit Arguments(std::span<const Value> values) : values_(values) {}

  const Value& take(std::optional<std::size_t> position) {
    static const Value kNone;
    const std::size_t index = position ? *position - 1 : next_++;
    return index < values_.size() ? values_[index] : kNone;
  }

 private:
  std::span<const Value> values_;
  std::size_t next_ = 0;
};

Number numberOf(const Value& value) { return value.asNumber().value_or(Number(0)); }

int boundedWidth(std::int64_t value) {
  return static_cast<int>(std::clamp<std::int64_t>(value, -limits::kFormatWidth, limits::kFormatWidth));
}

/// Reads one conversion after its "%": [position$] flags [width] [.precision] [length] letter, each star of an object
/// format without an argument.
class ConversionReader {
 public:
  ConversionReader(StringView format, std::size_t at, Arguments* stars) : format_(format), at_(at), stars_(stars) {}

  /// nil when no letter, "@" or "%" ends it.
  std::optional<Conversion> read() {
    Conversion result;
    result.position = readPosition();
    readFlags(result);
    setWidth(result, readSize());
    if (peek() == u'.') {
      ++at_;
      const int precision = readSize();
      if (precision >= 0) result.precision = precision;
    }
    readLength(result);
    result.letter = peek();
    if (!isLetter(result.letter) && result.letter != u'@' && result.letter != u'%') return nil;
    ++at_;
    return result;
  }
  [[nodiscard]] std::size_t end() const { return at_; }

 private:
  [[nodiscard]] char16_t peek() const { return at_ < format_.size() ? format_[at_] : u'\0'; }

  /// Digits, as a number that does not leave the range of an int.
  int readDigits() {
    int value = 0;
    for (; isDigit(peek()); ++at_) value = std::min(value * 10 + (peek() - u'0'), 99'999'999);
    return value;
  }

  /// "n$", or nothing read.
  std::optional<std::size_t> readPosition() {
    const std::size_t start = at_;
    const int digits = readDigits();
    if (at_ > start && peek() == u'$') {
      ++at_;
      return static_cast<std::size_t>(digits);
    }
    at_ = start;
    return nil;
  }

  void readFlags(Conversion& result) {
    for (;; ++at_) {
      switch (peek()) {
        case u'-':
          result.left = true;
          break;
        case u'+':
          result.plus = true;
          break;
        case u' ':
          result.space = true;
          break;
        case u'#':
          result.alternate = true;
          break;
        case u'0':
          result.zero = true;
          break;
        case u'\'':
          break;  // grouping belongs to a locale
        default:
          return;
      }
    }
  }

  /// A width or a precision: digits, or a star's argument.
  int readSize() {
    if (peek() != u'*') return std::min(readDigits(), limits::kFormatWidth);
    ++at_;
    const std::optional<std::size_t> position = readPosition();
    return stars_ ? boundedWidth(numberOf(stars_->take(position)).longLongValue()) : 0;
  }

  static void setWidth(Conversion& result, int width) {
    if (width < 0) result.left = true;
    result.width = std::abs(width);
  }

  void readLength(Conversion& result) {
    for (; isOneOf(peek(), u"hlqLzjt") && at_ + 1 < format_.size(); ++at_) {
      if (peek() != u'h') {
        result.length = Length::Long;
      } else {
        result.length = result.length == Length::Short ? Length::Byte : Length::Short;
      }
    }
  }

  StringView format_;
  std::size_t at_;
  Arguments* stars_;
};

/// Sign or prefix, then zeros, then the digits: the parts between which zeros may be filled in.
struct NumberParts {
  std::string_view sign;
  std::string_view prefix;
  std::size_t zeros = 0;
  std::string_view digits;

  [[nodiscard]] std::size_t size() const { return sign.size() + prefix.size() + zeros + digits.size(); }
};

std::string_view signOf(const Conversion& conversion, bool negative) {
  return negative ? "-" : conversion.plus ? "+" : conversion.space ? " " : "";
}

void appendParts(StringBuilder& out, const Conversion& conversion, NumberParts parts, bool zeroFills) {
  const auto width = static_cast<std::size_t>(conversion.width);
  std::size_t padding = width > parts.size() ? width - parts.size() : 0;
  if (zeroFills && conversion.zero && !conversion.left) parts.zeros += std::exchange(padding, 0);
  if (!conversion.left) out.append(padding, u' ');
  out.appendASCII(parts.sign);
  out.appendASCII(parts.prefix);
  out.append(parts.zeros, u'0');
  out.appendASCII(parts.digits);
  if (conversion.left) out.append(padding, u' ');
}

void appendText(StringBuilder& out, const Conversion& conversion, StringView text) {
  std::size_t size = text.size();
  if (conversion.precision) size = std::min(size, static_cast<std::size_t>(*conversion.precision));
  if (size > 0 && size < text.size() && unicode::isHighSurrogate(text[size - 1]) &&
      unicode::isLowSurrogate(text[size])) {
    --size;
  }
  const auto width = static_cast<std::size_t>(conversion.width);
  const std::size_t padding = width > size ? width - size : 0;
  if (!conversion.left) out.append(padding, u' ');
  out.append(text.sub(0, size));
  if (conversion.left) out.append(padding, u' ');
}

/// The signed value as wide as the conversion reads it.
std::int64_t narrowed(std::int64_t value, Length length) {
  if (length == Length::Byte) return static_cast<std::int8_t>(value);
  if (length == Length::Short) return static_cast<std::int16_t>(value);
  return value;
}

std::uint64_t narrowedUnsigned(Number number, Length length) {
  const bool isLarge = number.kind() == Number::Kind::Unsigned;
  const std::int64_t value = number.longLongValue();
  const std::uint64_t bits = isLarge ? number.bits() : static_cast<std::uint64_t>(value);
  if (length == Length::Byte) return static_cast<std::uint8_t>(bits);
  if (length == Length::Short) return static_cast<std::uint16_t>(bits);
  const bool fits32 = !isLarge && value >= INT32_MIN && value <= INT32_MAX;
  return length == Length::None && fits32 ? static_cast<std::uint32_t>(bits) : bits;
}

void appendInteger(StringBuilder& out, const Conversion& conversion, bool negative, std::uint64_t magnitude, int base,
                   std::string_view prefix) {
  char digits[24];
  const char* end = std::to_chars(digits, digits + sizeof digits, magnitude, base).ptr;
  if (conversion.letter == u'X') {
    for (char& digit : digits) digit = digit >= 'a' && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
  }
  NumberParts parts{signOf(conversion, negative), prefix, 0, {digits, end}};
  const auto least = static_cast<std::size_t>(conversion.precision.value_or(1));
  if (least == 0 && magnitude == 0) parts.digits = {};
  if (least > parts.digits.size()) parts.zeros = least - parts.digits.size();
  if (base == 8 && conversion.alternate && parts.zeros == 0 && magnitude != 0) parts.zeros = 1;
  appendParts(out, conversion, parts, !conversion.precision);
}

void appendSigned(StringBuilder& out, const Conversion& conversion, Number number) {
  if (number.kind() == Number::Kind::Unsigned) return appendInteger(out, conversion, false, number.bits(), 10, "");
  const std::int64_t value = narrowed(number.longLongValue(), conversion.length);
  const auto bits = static_cast<std::uint64_t>(value);
  appendInteger(out, conversion, value < 0, value < 0 ? 0 - bits : bits, 10, "");
}

void appendUnsigned(StringBuilder& out, Conversion conversion, Number number, int base) {
  conversion.plus = conversion.space = false;
  const std::uint64_t value = narrowedUnsigned(number, conversion.length);
  std::string_view prefix;
  if (conversion.letter == u'p' || (base == 16 && conversion.alternate && value != 0)) {
    prefix = conversion.letter == u'X' ? "0X" : "0x";
  }
  appendInteger(out, conversion, false, value, base, prefix);
}

/// Digits of a floating conversion: no sign, no prefix.
class FloatingText {
 public:
  FloatingText(double magnitude, const Conversion& conversion) : magnitude_(magnitude), conversion_(conversion) {
    const char16_t kind = conversion.letter | 0x20;
    const int precision = conversion.precision.value_or(6);
    if (kind == u'a') {
      writeHexadecimal();
    } else if (kind == u'g') {
      writeGeneral(std::max(precision, 1));
    } else {
      write(kind == u'e' ? std::chars_format::scientific : std::chars_format::fixed, precision);
      if (precision == 0 && conversion.alternate) insertPoint();
    }
    if (conversion.letter < u'a') upperCase();
  }
  [[nodiscard]] std::string_view ascii() const { return {bytes_.data(), size_}; }

 private:
  void write(std::chars_format format, int precision) {
    char* const start = bytes_.data();
    const auto result = std::to_chars(start, start + bytes_.size() - 1, magnitude_, format, precision);
    size_ = static_cast<std::size_t>(result.ptr - start);
  }

  void writeHexadecimal() {
    if (conversion_.precision) return write(std::chars_format::hex, *conversion_.precision);
    char* const start = bytes_.data();
    size_ = static_cast<std::size_t>(
        std::to_chars(start, start + bytes_.size() - 1, magnitude_, std::chars_format::hex).ptr - start);
  }

  /// C's %g: the exponent that the scientific form would have chooses the form.
  void writeGeneral(int precision) {
    write(std::chars_format::scientific, precision - 1);
    const std::size_t mark = ascii().rfind('e');
    int exponent = 0;
    const char* digits = bytes_.data() + mark + 1;
    std::from_chars(*digits == '+' ? digits + 1 : digits, bytes_.data() + size_, exponent);
    const bool fixed = exponent >= -4 && exponent < precision;
    if (fixed) write(std::chars_format::fixed, precision - 1 - exponent);
    const std::size_t end = fixed ? size_ : mark;
    if (!conversion_.alternate) {
      dropTrailingZeros(end);
    } else if (ascii().find('.') == std::string_view::npos) {
      insertPoint();
    }
  }

  /// Of the digits before `end`, when they have a point.
  void dropTrailingZeros(std::size_t end) {
    if (ascii().substr(0, end).find('.') == std::string_view::npos) return;
    std::size_t kept = end;
    while (bytes_[kept - 1] == '0') --kept;
    if (bytes_[kept - 1] == '.') --kept;
    std::copy(bytes_.data() + end, bytes_.data() + size_, bytes_.data() + kept);
    size_ -= end - kept;
  }

  void insertPoint() {
    const std::size_t at = std::min(ascii().find('e'), size_);
    std::copy_backward(bytes_.data() + at, bytes_.data() + size_, bytes_.data() + size_ + 1);
    bytes_[at] = '.';
    ++size_;
  }

  void upperCase() {
    for (std::size_t i = 0; i < size_; ++i) {
      if (bytes_[i] >= 'a' && bytes_[i] <= 'z') bytes_[i] = static_cast<char>(bytes_[i] - 'a' + 'A');
    }
  }

  double magnitude_;
  const Conversion& conversion_;
  std::array<char, limits::kFormatWidth + 330> bytes_;
  std::size_t size_ = 0;
};

void appendFloating(StringBuilder& out, const Conversion& conversion, double value) {
  const bool isUpper = conversion.letter < u'a';
  NumberParts parts{signOf(conversion, std::signbit(value) && !std::isnan(value)), {}, 0, {}};
  if (!std::isfinite(value)) {
    parts.digits = std::isnan(value) ? (isUpper ? "NAN" : "nan") : isUpper ? "INF" : "inf";
    return appendParts(out, conversion, parts, false);
  }
  const FloatingText text(std::fabs(value), conversion);
  if ((conversion.letter | 0x20) == u'a') parts.prefix = isUpper ? "0X" : "0x";
  parts.digits = text.ascii();
  appendParts(out, conversion, parts, true);
}

void appendCharacter(StringBuilder& out, Conversion conversion, Number number) {
  const auto unit = static_cast<char16_t>(number.longLongValue());
  conversion.precision = nil;
  appendText(out, conversion, StringView(&unit, 1));
}

void appendNumber(StringBuilder& out, const Conversion& conversion, const Value& argument) {
  switch (conversion.letter) {
    case u'd':
    case u'D':
    case u'i':
      return appendSigned(out, conversion, numberOf(argument));
    case u'u':
    case u'U':
      return appendUnsigned(out, conversion, numberOf(argument), 10);
    case u'x':
    case u'X':
    case u'p':
      return appendUnsigned(out, conversion, numberOf(argument), 16);
    case u'o':
    case u'O':
      return appendUnsigned(out, conversion, numberOf(argument), 8);
    case u'c':
    case u'C':
      return appendCharacter(out, conversion, numberOf(argument));
    case u's':
    case u'S':
      return appendText(out, conversion, description(argument));
    default:
      return appendFloating(out, conversion, numberOf(argument).doubleValue());
  }
}

enum class Takes { ObjectsAlone, AllValues };

void convert(StringBuilder& out, const Conversion& conversion, Arguments& arguments, Takes takes) {
  if (conversion.letter == u'%') return out.append(u'%');
  if (conversion.letter == u'@') return appendText(out, conversion, description(arguments.take(conversion.position)));
  if (takes == Takes::ObjectsAlone || !isOneOf(conversion.letter, u"dDiuUxXpoOcCsSfFeEgGaA")) return;
  appendNumber(out, conversion, arguments.take(conversion.position));
}

String format(StringView text, std::span<const Value> values, Takes takes) {
  StringBuilder out;
  Arguments arguments(values);
  std::size_t at = 0;
  while (at < text.size() && out.size() < limits::kFormatLength) {
    const std::size_t percent = std::min(unicode::findUnit(text, u'%', at), text.size());
    out.append(text.sub(at, percent - at));
    if (percent == text.size()) break;
    ConversionReader reader(text, percent + 1, takes == Takes::AllValues ? &arguments : nullptr);
    const std::optional<Conversion> conversion = reader.read();
    at = reader.end();
    conversion ? convert(out, *conversion, arguments, takes) : out.append(text.sub(percent, at - percent));
  }
  return out.finish();
}

}  // namespace

String formatObjects(StringView text, std::span<const Value> arguments) {
  return format(text, arguments, Takes::ObjectsAlone);
}

String formatValues(StringView text, std::span<const Value> arguments) {
  return format(text, arguments, Takes::AllValues);
}

}  // namespace quorvel
