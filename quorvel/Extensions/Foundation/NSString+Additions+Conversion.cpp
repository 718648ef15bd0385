#include <quorvel/Extensions/Foundation/NSObject+ConvertString.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Conversion.h>
#include <quorvel/Platform/Foundation/NumberText.h>

namespace quorvel {

std::optional<String> NSStringAdditions::stringValue(const Value& value) { return toStringValue(value); }
String NSStringAdditions::qv_valueOfString(bool flag) { return flag ? String(u"true") : String(u"false"); }
String NSStringAdditions::qv_valueOfYN(bool flag) { return flag ? String(u"Y") : String(u"N"); }

std::optional<std::int64_t> integerNumberObject(StringView text) {
  const std::int64_t number = longLongValue(text);
  if (number == 0) return nil;
  return number;
}

bool qv_boolValueOfYN(StringView text) { return text == u"Y" || text == u"y"; }  // nothing else upper-cases to "Y"

}  // namespace quorvel
