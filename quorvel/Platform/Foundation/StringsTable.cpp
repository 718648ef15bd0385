// The reader of `.strings` tables.
#include <algorithm>
#include <charconv>

#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

std::optional<String> textOfUTF16(std::string_view bytes, bool bigEndian) {
  if (bytes.size() % 2 != 0) return nil;
  return String::build(bytes.size() / 2, [&](char16_t* out) {
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
      const auto first = static_cast<unsigned char>(bytes[i]);
      const auto second = static_cast<unsigned char>(bytes[i + 1]);
      *out++ = static_cast<char16_t>(bigEndian ? first << 8 | second : second << 8 | first);
    }
    return bytes.size() / 2;
  });
}

std::optional<String> textOf(std::string_view bytes) {
  if (bytes.starts_with("\xFE\xFF") || bytes.starts_with("\xFF\xFE")) {
    return textOfUTF16(bytes.substr(2), bytes[0] == '\xFE');
  }
  return String::fromUTF8(bytes.substr(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0));
}

constexpr bool isSpace(char16_t unit) {
  return unit == u' ' || (unit >= 0x09 && unit <= 0x0D) || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

constexpr bool isWordUnit(char16_t unit) {
  const char16_t letter = unit | 0x20;
  return (letter >= u'a' && letter <= u'z') || (unit >= u'-' && unit <= u':') || unit == u'_' || unit == u'$';
}

class TableReader {
 public:
  explicit TableReader(StringView text) : text_(text) {}

  std::optional<Dictionary> read() {
    Dictionary table;
    while (true) {
      if (!skipSpace()) return nil;
      if (at_ == text_.size()) return table;
      if (!readPair(table)) return nil;
    }
  }

  [[nodiscard]] std::size_t line() const {
    const StringView before = text_.sub(0, at_);
    return 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), u'\n'));
  }

 private:
  [[nodiscard]] bool isAt(char16_t unit) const { return at_ < text_.size() && text_[at_] == unit; }
  [[nodiscard]] bool isAtComment() const {
    return isAt(u'/') && at_ + 1 < text_.size() && (text_[at_ + 1] == u'/' || text_[at_ + 1] == u'*');
  }

  bool take(char16_t unit) {
    if (!isAt(unit)) return false;
    ++at_;
    return true;
  }

  /// Moves past white space and comments; false in a comment without an end.
  bool skipSpace() {
    while (at_ < text_.size()) {
      if (isSpace(text_[at_])) {
        ++at_;
      } else if (!isAtComment()) {
        return true;
      } else if (!skipComment()) {
        return false;
      }
    }
    return true;
  }

  bool skipComment() {
    const bool isLine = text_[at_ + 1] == u'/';
    const std::size_t end = isLine ? unicode::findUnit(text_, u'\n', at_) : unicode::findLiteral(text_, u"*/", at_ + 2);
    if (end == unicode::kInvalid && !isLine) return false;
    at_ = isLine ? std::min(end, text_.size()) : end + 2;
    return true;
  }

  bool readPair(Dictionary& table) {
    const std::optional<String> key = readText();
    if (!key || !skipSpace()) return false;
    std::optional<String> value = key;
    if (take(u'=')) {
      if (!skipSpace()) return false;
      value = readText();
      if (!value || !skipSpace()) return false;
    }
    if (!take(u';')) return false;
    table.set(*key, *value);
    return true;
  }

  std::optional<String> readText() { return take(u'"') ? readQuoted() : readWord(); }

  std::optional<String> readWord() {
    const std::size_t start = at_;
    while (at_ < text_.size() && isWordUnit(text_[at_]) && !isAtComment()) ++at_;
    if (at_ == start) return nil;
    return String(text_.sub(start, at_ - start));
  }

  std::optional<String> readQuoted() {
    StringBuilder out;
    while (at_ < text_.size()) {
      const char16_t unit = text_[at_++];
      if (unit == u'"') {
        if (!unicode::isWellFormed(out.view())) return nil;
        return out.finish();
      }
      if (unit != u'\\') {
        out.append(unit);
      } else if (!readEscape(out)) {
        return nil;
      }
    }
    return nil;
  }

  bool readEscape(StringBuilder& out) {
    if (at_ == text_.size()) return false;
    const char16_t unit = text_[at_++];
    if (unit == u'U' || unit == u'u') return readDigits(out, 16, 4, 4);
    if (unit >= u'0' && unit <= u'7') {
      --at_;
      return readDigits(out, 8, 1, 3);
    }
    constexpr std::u16string_view kNames = u"abtnvfr";  // U+0007 to U+000D
    const std::size_t control = kNames.find(unit);
    out.append(control == kNames.npos ? unit : static_cast<char16_t>(7 + control));
    return true;
  }

  /// At least `least` and at most `most` digits, as one unit.
  bool readDigits(StringBuilder& out, int base, std::size_t least, std::size_t most) {
    char digits[4];
    std::size_t count = 0;
    while (count < most && at_ + count < text_.size() && text_[at_ + count] < 0x80) {
      digits[count] = static_cast<char>(text_[at_ + count]);
      ++count;
    }
    std::uint16_t value = 0;
    const auto [end, error] = std::from_chars(digits, digits + count, value, base);
    const auto read = static_cast<std::size_t>(end - digits);
    if (error != std::errc() || read < least) return false;
    at_ += read;
    out.append(static_cast<char16_t>(value));
    return true;
  }

  StringView text_;
  std::size_t at_ = 0;
};

}  // namespace

std::optional<Dictionary> parseStringsTable(std::string_view bytes, std::size_t* errorLine) {
  const std::optional<String> text = textOf(bytes);
  if (!text) {
    if (errorLine) *errorLine = 0;
    return nil;
  }
  TableReader reader(*text);
  std::optional<Dictionary> table = reader.read();
  if (!table && errorLine) *errorLine = reader.line();
  return table;
}

}  // namespace quorvel
