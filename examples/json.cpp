// JSON text to values and back.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSArray+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSDictionary+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSString+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/String+JSON.h>

using namespace quorvel;

int main() {
  const Dictionary message{{u"text", u"\"여행\" a/b\n\x01"},
                           {u"sizes", List{0, 2.0, 0.1, 1e21, -0.0, UINT64_MAX}},
                           {u"read", true},
                           {u"topic", null},
                           {u"attach", Dictionary{}},
                           {u"Room", u"🇰🇷"}};
  std::cout << toJSONString(message) << '\n' << toJSONString(message, 1) << '\n';
  std::cout << toJSONString(List{}) << ", " << toJSONString(List{u"é", List{}}) << '\n';
  std::cout << toJSONString(List{Date{0}}) << ", " << toJSONString(Dictionary{{1, u"x"}}) << '\n';
  const String texts[] = {u" {\"b\": [1, 2.50], \"a\": \"\\ud55c\\/\"} ",
                          u"[1e2, 1e-7]",
                          u"{\"a\":1,\"a\":2}",
                          u"[18446744073709551616]",
                          u"[1,]",
                          u"[\"\\ud800\"]",
                          u"[01]",
                          u"42",
                          u"nul",
                          u""};
  for (const String& text : texts) {
    const Value value = objectFromJSONString(text);
    std::cout << text << "  ->  ";
    if (const Dictionary* record = value.asDictionary()) std::cout << toJSONString(*record);
    if (const List* list = value.asList()) std::cout << toJSONString(*list);
    std::cout << (value.isNil() ? "<nil>" : "") << (jsonObject(text) ? ", a record" : "") << '\n';
  }
}
