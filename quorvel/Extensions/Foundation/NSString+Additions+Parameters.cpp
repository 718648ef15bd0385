#include <quorvel/Extensions/Foundation/NSString+Additions+Parameters.h>
#include <quorvel/Platform/Foundation/Description.h>
#include <quorvel/Platform/Foundation/PercentEncoding.h>

namespace quorvel::NSStringAdditions {
namespace {

constexpr PercentAllowed kQueryValueAllowed = PercentAllowed::allBut(":/?&=;+!@#$()',*");

String escaped(const String& text) { return addingPercentEncoding(text, kQueryValueAllowed).value_or(u"(null)"); }

}  // namespace

std::optional<String> qv_percentEscapedQueryStringValueFromStringWithEncoding(StringView text, std::uint64_t) {
  if (text.isNil()) return nil;
  return addingPercentEncoding(text, kQueryValueAllowed);
}

String qv_parameterStringWithKey(const Value& key, const Value& value) {
  StringBuilder text;
  text.append(escaped(description(key)));
  text.append(u'=');
  text.append(escaped(description(value)));
  return text.finish();
}

std::optional<String> qv_parameterStringWithArray(const Value& strings) {
  const List* list = strings.asList();
  if (!list || list->isEmpty()) return nil;
  StringBuilder text;
  for (const Value& element : *list) {
    if (&element != list->begin()) text.append(u'&');
    text.append(description(element));
  }
  return text.finish();
}

}  // namespace quorvel::NSStringAdditions
