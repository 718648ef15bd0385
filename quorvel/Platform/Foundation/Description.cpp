#include <cmath>
#include <ostream>

#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/SmallStack.h>

namespace quorvel {
namespace {

constexpr std::size_t kIndentation = 4;
constexpr std::size_t kDataWhole = 24;
constexpr std::size_t kDataHead = 16;
constexpr std::size_t kDataTail = 8;

constexpr std::int64_t kSecondsPerDay = 86400;
constexpr double kFirstSecond = -62135596800.0;  // 0001-01-01 00:00:00
constexpr double kPastSeconds = 253402300800.0;  // 10000-01-01 00:00:00

struct CivilDay {
  std::int64_t year;
  std::int64_t month;
  std::int64_t day;
};

/// The proleptic Gregorian day. Years are counted from 1 March, so that the leap day comes last; months of such a year
/// begin at day (153 * month + 2) / 5.
CivilDay civilDay(std::int64_t daysSince1970) {
  constexpr std::int64_t kDaysBefore1970 = 719468;  // from 0000-03-01
  constexpr std::int64_t kDaysPerEra = 146097;      // 400 years
  const std::int64_t days = daysSince1970 + kDaysBefore1970;
  const std::int64_t era = days / kDaysPerEra;
  const std::int64_t dayOfEra = days % kDaysPerEra;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t month = (5 * dayOfYear + 2) / 153;
  return {era * 400 + yearOfEra + (month >= 10), month < 10 ? month + 3 : month - 9,
          dayOfYear - (153 * month + 2) / 5 + 1};
}

void appendPadded(StringBuilder& out, std::int64_t value, int digits) {
  char16_t* place = out.extend(static_cast<std::size_t>(digits));
  for (int i = digits - 1; i >= 0; --i, value /= 10) place[i] = static_cast<char16_t>(u'0' + value % 10);
}

void appendDate(StringBuilder& out, Date date) {
  const double seconds = std::floor(date.secondsSince1970);
  if (!(seconds >= kFirstSecond && seconds < kPastSeconds)) {
    out.append(u"<date ");
    out.appendASCII(doubleText(date.secondsSince1970).ascii());
    return out.append(u'>');
  }
  const auto whole = static_cast<std::int64_t>(seconds);
  const std::int64_t ofDay = (whole % kSecondsPerDay + kSecondsPerDay) % kSecondsPerDay;
  const CivilDay day = civilDay((whole - ofDay) / kSecondsPerDay);
  const std::int64_t parts[] = {day.month, day.day, ofDay / 3600, ofDay / 60 % 60, ofDay % 60};
  appendPadded(out, day.year, 4);
  for (std::size_t i = 0; i < std::size(parts); ++i) {
    out.append(u"-- ::"[i]);
    appendPadded(out, parts[i], 2);
  }
  out.append(u" +0000");
}

void appendHex(StringBuilder& out, std::span<const std::uint8_t> bytes) {
  constexpr char16_t kDigits[] = u"0123456789abcdef";
  char16_t* place = out.extend(bytes.size() * 2);
  for (const std::uint8_t byte : bytes) {
    *place++ = kDigits[byte >> 4];
    *place++ = kDigits[byte & 15];
  }
}

void appendData(StringBuilder& out, std::span<const std::uint8_t> bytes) {
  out.append(u"{length = ");
  out.appendASCII(unsignedText(bytes.size()).ascii());
  out.append(u", bytes = 0x");
  if (bytes.size() <= kDataWhole) {
    appendHex(out, bytes);
  } else {
    appendHex(out, bytes.first(kDataHead));
    out.append(u" ... ");
    appendHex(out, bytes.last(kDataTail));
  }
  out.append(u'}');
}

constexpr bool standsUnquoted(char16_t unit) {
  const char16_t letter = unit | 0x20;
  return (letter >= u'a' && letter <= u'z') || (unit >= u'0' && unit <= u':') || unit == u'_' || unit == u'$' ||
         unit == u'/' || unit == u'.';
}

void appendControl(StringBuilder& out, char16_t unit) {
  constexpr char16_t kShort[] = u"abtnvfr";  // U+0007 to U+000D
  if (unit >= 7 && unit <= 13) return out.append(kShort[unit - 7]);
  for (const int shift : {6, 3, 0}) out.append(static_cast<char16_t>(u'0' + (unit >> shift & 7)));
}

void appendQuoted(StringBuilder& out, StringView text) {
  out.append(u'"');
  for (const char16_t unit : text) {
    if (out.size() > limits::kDescriptionLength) return;
    const bool isControl = unit < 0x20 || unit == 0x7F;
    if (isControl || unit == u'"' || unit == u'\\') out.append(u'\\');
    isControl ? appendControl(out, unit) : out.append(unit);
  }
  out.append(u'"');
}

void appendNestedText(StringBuilder& out, StringView text) {
  for (const char16_t unit : text) {
    if (!standsUnquoted(unit)) return appendQuoted(out, text);
  }
  text.isEmpty() ? out.append(u"\"\"") : out.append(text);
}

/// Everything but lists, dictionaries and texts, which stand differently inside others.
void appendPlain(StringBuilder& out, const Value& value) {
  switch (value.kind()) {
    case Value::Kind::Null:
      return out.append(u"<null>");
    case Value::Kind::Number:
      return out.appendASCII(numberText(*value.asNumber()).ascii());
    case Value::Kind::Date:
      return appendDate(out, *value.asDate());
    case Value::Kind::Data:
      return appendData(out, value.asData()->bytes());
    case Value::Kind::Object:
      return out.append(value.asObject()->description());
    default:
      return out.append(u"(null)");
  }
}

/// One loop over the open lists and dictionaries. The tree that shared parts unfold to may be far larger than the
/// value, so the length is bounded too.
class ContainerWriter {
 public:
  String run(const Value& root) {
    open(root);
    while (!stack_.isEmpty()) {
      if (out_.size() > limits::kDescriptionLength) {
        out_.append(u"...");
        break;
      }
      Frame& frame = stack_.top();
      frame.next < frame.count ? writeChild(frame) : close(frame);
    }
    return out_.finish();
  }

 private:
  struct Frame {
    const Value* items;
    const Entry* entries;
    std::size_t count;  // of a dictionary keys and values
    std::size_t next;
    bool isList;
  };

  void open(const Value& container) {
    const List* list = container.asList();
    const Dictionary* dictionary = container.asDictionary();
    if (stack_.size() >= limits::kDescriptionDepth) return out_.append(list ? u"(...)" : u"{...}");
    out_.append(list ? u'(' : u'{');
    stack_.push(list ? Frame{list->begin(), nullptr, list->size(), 0, true}
                     : Frame{nullptr, dictionary->begin(), dictionary->size() * 2, 0, false});
  }

  void writeChild(Frame& frame) {
    const std::size_t index = frame.next++;
    const bool isList = frame.isList;
    const bool isValue = !isList && index % 2 == 1;
    if (isValue) {
      out_.append(u" = ");
    } else {
      if (index > 0) out_.append(isList ? u',' : u';');
      breakLine(stack_.size());
    }
    if (isList) return write(frame.items[index]);
    write(isValue ? frame.entries[index / 2].value : frame.entries[index / 2].key);
  }

  void write(const Value& value) {
    if (const String* text = value.asString()) return appendNestedText(out_, *text);
    if (!value.isList() && !value.isDictionary()) return appendPlain(out_, value);
    out_.append(stack_.size() * kIndentation, u' ');
    open(value);
  }

  void close(const Frame& frame) {
    const bool isList = frame.isList;
    if (!isList && frame.count > 0) out_.append(u';');
    stack_.pop();
    breakLine(stack_.size());
    out_.append(isList ? u')' : u'}');
  }

  void breakLine(std::size_t level) {
    out_.append(u'\n');
    out_.append(level * kIndentation, u' ');
  }

  detail::SmallStack<Frame> stack_;
  StringBuilder out_;
};

}  // namespace

String description(const Value& value) {
  if (const String* text = value.asString()) return *text;
  if (value.isList() || value.isDictionary()) return ContainerWriter().run(value);
  StringBuilder out;
  appendPlain(out, value);
  return out.finish();
}

String className(const Value& value) {
  switch (value.kind()) {
    case Value::Kind::Nil:
      return {};
    case Value::Kind::Null:
      return u"NSNull";
    case Value::Kind::Number:
      return String::literal(u"NSNumber");
    case Value::Kind::String:
      return String::literal(u"NSString");
    case Value::Kind::Date:
      return u"NSDate";
    case Value::Kind::Data:
      return u"NSData";
    case Value::Kind::List:
      return u"NSArray";
    case Value::Kind::Dictionary:
      return String::literal(u"NSDictionary");
    case Value::Kind::Object:
      return value.asObject()->className();
  }
  return {};
}

std::ostream& writeDescription(std::ostream& out, const Value& value) { return out << description(value); }

}  // namespace quorvel
