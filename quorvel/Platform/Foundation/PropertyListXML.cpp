// The XML form of property lists, without recursion.
#include <charconv>
#include <chrono>
#include <vector>

#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/PropertyList.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

constexpr bool isSpace(char16_t unit) { return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r'; }

StringView trimmed(StringView text) {
  while (!text.isEmpty() && isSpace(text.front())) text = text.sub(1);
  while (!text.isEmpty() && isSpace(text.back())) text = text.sub(0, text.size() - 1);
  return text;
}

/// The characters as bytes, 0xFF for what is not ASCII.
std::string asciiOf(StringView text) {
  std::string ascii;
  for (const char16_t unit : text) ascii += unit < 0x80 ? static_cast<char>(unit) : '\xFF';
  return ascii;
}

template <class T, class... Format>
bool readNumber(std::string_view digits, T& value, Format... format) {
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, format...);
  return !digits.empty() && error == std::errc() && end == digits.data() + digits.size();
}

std::optional<Value> integerOf(StringView text) {
  const std::string ascii = asciiOf(trimmed(text));
  std::string_view digits = ascii;
  const bool isNegative = digits.starts_with('-');
  if (isNegative || digits.starts_with('+')) digits.remove_prefix(1);
  const bool isHexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
  if (isHexadecimal) digits.remove_prefix(2);
  std::uint64_t magnitude = 0;
  if (!readNumber(digits, magnitude, isHexadecimal ? 16 : 10)) return std::nullopt;
  if (!isNegative) return magnitude;
  if (magnitude > std::uint64_t{1} << 63) return std::nullopt;
  return static_cast<std::int64_t>(0 - magnitude);
}

std::optional<Value> realOf(StringView text) {
  const std::string ascii = asciiOf(trimmed(text));
  std::string_view digits = ascii;
  if (digits.starts_with('+')) digits.remove_prefix(1);
  double value = 0;
  if (digits.starts_with("+") || !readNumber(digits, value)) return std::nullopt;
  return value;
}

/// 2017-07-14T02:40:00Z
std::optional<Value> dateOf(StringView text) {
  const std::string ascii = asciiOf(trimmed(text));
  constexpr std::string_view kShape = "dddd-dd-ddTdd:dd:ddZ";
  if (ascii.size() != kShape.size()) return std::nullopt;
  for (std::size_t i = 0; i < kShape.size(); ++i) {
    const bool isDigit = ascii[i] >= '0' && ascii[i] <= '9';
    if (kShape[i] == 'd' ? !isDigit : ascii[i] != kShape[i]) return std::nullopt;
  }
  const auto number = [&](std::size_t at, std::size_t size) {
    int value = 0;
    return readNumber(std::string_view(ascii).substr(at, size), value) ? value : -1;
  };
  const std::chrono::year_month_day day(std::chrono::year(number(0, 4)),
                                        std::chrono::month(static_cast<unsigned>(number(5, 2))),
                                        std::chrono::day(static_cast<unsigned>(number(8, 2))));
  if (!day.ok() || number(11, 2) > 23 || number(14, 2) > 59 || number(17, 2) > 59) return std::nullopt;
  const std::int64_t days = std::chrono::sys_days(day).time_since_epoch().count();
  const std::int64_t seconds = (std::int64_t{number(11, 2)} * 60 + number(14, 2)) * 60 + number(17, 2);
  return Date{static_cast<double>(days * 86400 + seconds)};
}

std::optional<Value> dataOf(StringView text) {
  std::u16string digits;
  for (const char16_t unit : text) {
    if (!isSpace(unit)) digits += unit;
  }
  const auto bytes = decodeBase64(digits);
  if (!bytes) return std::nullopt;
  return Data(*bytes);
}

class XMLReader {
 public:
  explicit XMLReader(StringView text) : text_(text) {}

  std::optional<Value> read() {
    if (!skipMisc()) return std::nullopt;
    const std::optional<Tag> root = readTag();
    if (!root || root->name != u"plist" || root->kind != Tag::Kind::Start) return std::nullopt;
    while (!isClosed_) {
      if (!skipMisc() || !readElement()) return std::nullopt;
    }
    if (!skipMisc() || at_ != text_.size() || result_.isNil()) return std::nullopt;
    return std::move(result_);
  }

 private:
  struct Tag {
    enum class Kind : std::uint8_t { Start, End, Empty } kind;
    StringView name;
  };
  struct Frame {
    bool isDictionary;
    Value value;  // the list or dictionary so far
    std::optional<String> key;
  };

  [[nodiscard]] bool isAt(StringView token) const { return text_.sub(at_, token.size()) == token; }
  bool take(StringView token) {
    if (!isAt(token)) return false;
    at_ += token.size();
    return true;
  }
  /// Moves past the next `token`, if there is one.
  bool skipPast(StringView token) {
    const std::size_t found = unicode::findLiteral(text_, token, at_);
    if (found == unicode::kInvalid) return false;
    at_ = found + token.size();
    return true;
  }

  /// White space, comments, processing instructions and the document type.
  bool skipMisc() {
    while (at_ < text_.size()) {
      if (isSpace(text_[at_])) {
        ++at_;
      } else if (take(u"<!--")) {
        if (!skipPast(u"-->")) return false;
      } else if (take(u"<?")) {
        if (!skipPast(u"?>")) return false;
      } else if (take(u"<!DOCTYPE")) {
        if (!skipDocumentType()) return false;
      } else {
        return true;
      }
    }
    return true;
  }
  bool skipDocumentType() {
    const std::size_t start = at_;
    if (hasDocumentType_ || !skipPast(u">")) return false;
    hasDocumentType_ = true;
    return unicode::findUnit(text_.sub(start, at_ - start), u'[') == unicode::kInvalid;
  }

  std::optional<Tag> readTag() {
    if (!take(u"<")) return std::nullopt;
    const bool isEnd = take(u"/");
    const std::size_t start = at_;
    while (at_ < text_.size() && !isSpace(text_[at_]) && text_[at_] != u'>' && text_[at_] != u'/') ++at_;
    const StringView name = text_.sub(start, at_ - start);
    // Attributes have no meaning here; a ">" inside of one's value is not looked for.
    const std::size_t end = unicode::findUnit(text_, u'>', at_);
    if (end == unicode::kInvalid || name.isEmpty()) return std::nullopt;
    const bool isEmpty = text_[end - 1] == u'/' && end > start + name.size();
    at_ = end + 1;
    if (isEnd && isEmpty) return std::nullopt;
    return Tag{isEnd ? Tag::Kind::End : isEmpty ? Tag::Kind::Empty : Tag::Kind::Start, name};
  }

  bool readElement() {
    const std::optional<Tag> tag = readTag();
    if (!tag) return false;
    if (tag->kind == Tag::Kind::End) return close(tag->name);
    if (tag->name == u"dict" || tag->name == u"array") return openContainer(*tag);
    StringBuilder text;
    if (tag->kind == Tag::Kind::Start && !readText(text, tag->name)) return false;
    if (tag->name == u"key") return setKey(text.finish());
    std::optional<Value> value = leafOf(tag->name, text);
    return value && add(std::move(*value));
  }

  static std::optional<Value> leafOf(StringView name, StringBuilder& text) {
    if (name == u"string") return text.finish();
    if (name == u"integer") return integerOf(text.view());
    if (name == u"real") return realOf(text.view());
    if (name == u"date") return dateOf(text.view());
    if (name == u"data") return dataOf(text.view());
    if (!trimmed(text.view()).isEmpty()) return std::nullopt;
    if (name == u"true") return Value(true);
    if (name == u"false") return Value(false);
    return std::nullopt;
  }

  bool openContainer(const Tag& tag) {
    const bool isDictionary = tag.name == u"dict";
    Value value = isDictionary ? Value(Dictionary()) : Value(List());
    if (tag.kind == Tag::Kind::Empty) return add(std::move(value));
    if (open_.size() >= limits::kPropertyListDepth || !canAdd()) return false;
    open_.push_back({isDictionary, std::move(value), nil});
    return true;
  }

  bool close(StringView name) {
    if (open_.empty()) {
      isClosed_ = name == u"plist";
      return isClosed_;
    }
    Frame& frame = open_.back();
    if (frame.key || (name == u"dict") != frame.isDictionary || (name == u"array") == frame.isDictionary) return false;
    Value value = std::move(frame.value);
    open_.pop_back();
    return add(std::move(value));
  }

  bool setKey(String key) {
    if (open_.empty() || !open_.back().isDictionary || open_.back().key) return false;
    open_.back().key = std::move(key);
    return true;
  }

  /// Whether a value may stand here.
  [[nodiscard]] bool canAdd() const {
    return open_.empty() ? result_.isNil() : !open_.back().isDictionary || open_.back().key.has_value();
  }
  bool add(Value value) {
    if (!canAdd()) return false;
    if (open_.empty()) {
      result_ = std::move(value);
    } else if (open_.back().isDictionary) {
      open_.back().value.mutableDictionary()->set(std::move(*open_.back().key), std::move(value));
      open_.back().key.reset();
    } else {
      open_.back().value.mutableList()->append(std::move(value));
    }
    return true;
  }

  /// Text up to the end tag of `name`, which is taken too.
  bool readText(StringBuilder& out, StringView name) {
    while (at_ < text_.size()) {
      const char16_t unit = text_[at_];
      if (take(u"<![CDATA[")) {
        const std::size_t start = at_;
        if (!skipPast(u"]]>")) return false;
        out.append(text_.sub(start, at_ - 3 - start));
      } else if (take(u"<!--")) {
        if (!skipPast(u"-->")) return false;
      } else if (unit == u'<') {
        const std::optional<Tag> tag = readTag();
        return tag && tag->kind == Tag::Kind::End && tag->name == name;
      } else if (unit == u'&') {
        if (!readEntity(out)) return false;
      } else {
        ++at_;
        if (unit == u'\r') take(u"\n");
        out.append(unit == u'\r' ? u'\n' : unit);
      }
    }
    return false;
  }

  bool readEntity(StringBuilder& out) {
    constexpr std::pair<std::u16string_view, char16_t> kNames[] = {
        {u"&lt;", u'<'}, {u"&gt;", u'>'}, {u"&amp;", u'&'}, {u"&quot;", u'"'}, {u"&apos;", u'\''}};
    for (const auto& [name, unit] : kNames) {
      if (!take(name)) continue;
      out.append(unit);
      return true;
    }
    return take(u"&#") && readReference(out);
  }
  bool readReference(StringBuilder& out) {
    const bool isHexadecimal = take(u"x");
    const std::string digits = asciiOf(text_.sub(at_, std::min(unicode::findUnit(text_, u';', at_) - at_, kDigits)));
    std::uint32_t scalar = 0;
    if (!readNumber(digits, scalar, isHexadecimal ? 16 : 10)) return false;
    at_ += digits.size();
    if (scalar < 0x20 ? !isSpace(static_cast<char16_t>(scalar)) : scalar > 0x10FFFF || unicode::isSurrogate(scalar)) {
      return false;
    }
    out.appendScalar(scalar);
    return take(u";");
  }

  static constexpr std::size_t kDigits = 8;
  StringView text_;
  std::size_t at_ = 0;
  bool hasDocumentType_ = false;
  bool isClosed_ = false;
  std::vector<Frame> open_;
  Value result_;
};

}  // namespace

std::optional<Value> detail::parseXMLPropertyList(std::string_view bytes) {
  const std::optional<String> text = String::fromUTF8(bytes.substr(bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0));
  if (!text) return std::nullopt;
  for (const char16_t unit : *text) {
    if (unit < 0x20 && !isSpace(unit)) return std::nullopt;
  }
  return XMLReader(*text).read();
}

}  // namespace quorvel
