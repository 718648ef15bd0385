#include <cstdio>
#include <ctime>

#include <apps/quorvel/Hit.h>
#include <apps/quorvel/Terminal.h>

#include <quorvel/Extensions/Foundation/NSDictionary+Addtion.h>
#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>
#include <quorvel/Extensions/Foundation/TimeFormatConvertible.h>
#include <quorvel/Extensions/UIKit/UIColor+ColorWithHex.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Utility/StringUtils.h>

namespace quorvel::command {
namespace {

constexpr std::string_view kIndent = "    ";
// The default colours of highlighting.
constexpr std::uint32_t kBaseColor = 0xFF222222;
constexpr std::uint32_t kHighlightColor = 0xFF157EFB;

bool isHighlighted(const Span& span) {
  const auto* color = span.attributes[kForegroundColorAttribute].as<UIColor>();
  return color && *color == UIColorWithHex::colorWithAlphaHex(kHighlightColor);
}

/// Servers write flags as "Y"/"N", "true"/"false", booleans or 1/0.
bool isSet(const Dictionary& record, StringView key) {
  return boolValueFromStringYnForKeyOrNil(record, key) || boolValueForKey(record, key);
}

/// "2017-07-14 11:40" in the reader's time zone.
std::string timeText(Date date) {
  const auto seconds = static_cast<std::time_t>(date.secondsSince1970);
  std::tm parts{};
  if (!::localtime_r(&seconds, &parts)) return {};
  char text[64];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
                parts.tm_hour, parts.tm_min);
  return text;
}

void appendHead(std::string& out, const Dictionary& record, bool colored) {
  out += colored ? "\x1b[1m" : "";
  appendPlain(out, stringOrEmptyForKey(record, u"room"), kIndent);
  out += colored ? "\x1b[0m" : "";
  out += "  ";
  appendPlain(out, stringOrEmptyForKey(record, u"sender"), kIndent);
  if (const std::optional<Date> sent = dateForKeyOrNil(record, u"sentAt")) out += "  " + timeText(*sent);
  const std::optional<Number> unread = integerNumberForKeyOrNil(record, u"unread");
  if (unread && unread->longLongValue() > 0) out += "  " + std::to_string(unread->longLongValue()) + " unread";
  if (isSet(record, u"edited")) out += "  (edited)";
  out += '\n';
}

void appendAttachment(std::string& out, const Dictionary& attachment) {
  out += kIndent;
  out += "+ ";
  appendPlain(out, stringOrEmptyForKey(attachment, u"name"), kIndent);
  if (const std::optional<Number> size = integerNumberForKeyOrNil(attachment, u"size")) {
    out += "  " + humanReadableSize(*size).toUTF8Replacing();
  }
  if (const std::optional<Number> seconds = integerNumberForKeyOrNil(attachment, u"seconds")) {
    out += "  " + QVStringTimeIntervalInSeconds(seconds->doubleValue()).toUTF8Replacing();
  }
  out += '\n';
}

}  // namespace

NSAttributedString highlighted(StringView text, StringView keywords) {
  const auto result = StringUtils::searchKeywordInText(text, keywords, nil, nil);
  return result ? NSAttributedString(*result) : NSAttributedString();
}

NSAttributedString highlighted(StringView text, const std::vector<NSRange>& ranges) {
  const auto color = [](std::uint32_t hex) {
    return Attributes{{kForegroundColorAttribute, UIColorWithHex::colorWithAlphaHex(hex)}};
  };
  NSMutableAttributedString result(text, color(kBaseColor));
  result.addAttributes(color(kHighlightColor), ranges);
  return NSAttributedString(result);
}

void appendHit(std::string& out, const Dictionary& record, const NSAttributedString& text, bool colored) {
  appendHead(out, record, colored);
  out += kIndent;
  if (colored) {
    appendColored(out, text, UIColorWithHex::colorWithAlphaHex(kBaseColor), kIndent);
  } else {
    appendPlain(out, text.string(), kIndent);
  }
  out += '\n';
  const Value attachment = valueForKeyOrNil(record, u"attach");
  if (NSDictionaryAddtion::isNotEmpty(attachment)) appendAttachment(out, *attachment.asDictionary());
  out += '\n';
}

void appendHitJSON(std::string& out, const Dictionary& record, const NSAttributedString& text) {
  List ranges;
  for (const Span& span : text.spans()) {
    if (isHighlighted(span)) ranges.append(List{span.range.location, span.range.length});
  }
  const Dictionary line{{u"record", record}, {u"ranges", ranges}};
  // A record that was read from JSON can always be written as JSON.
  out += NSJSONSerialization::writeFragmentUTF8(line, 0).value_or("null");
  out += '\n';
}

}  // namespace quorvel::command
