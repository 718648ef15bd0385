// Query text from records and records from query text.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSDictionary+URL.h>
#include <quorvel/Extensions/Foundation/NSDictionary+UrlEncoding.h>
#include <quorvel/Extensions/Foundation/NSString+Query.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>

using namespace quorvel;

void print(const char* operation, const Dictionary& pairs) {
  std::cout << "  " << operation << ':';
  for (const auto& [key, value] : pairs) std::cout << " '" << key.text() << "' = '" << value.text() << "'";
  std::cout << '\n';
}

int main() {
  const Dictionary search{{u"q", u"여행 사진"}, {u"page", 2}, {u"exact", true}, {u"min", 0.5}, {u"k=v", u"a=b&c"}};
  std::cout << queryString(search) << '\n' << urlEncodedString(search) << '\n';
  std::cout << queryString(Dictionary{}) << ", '" << urlEncodedString(Dictionary{}) << "'\n";
  std::cout << queryString(Dictionary{{u"a", 1}, {u"tags", List{1, 2}}, {u"none", null}, {u"b", u""}}) << '\n';
  const String texts[] = {u"a=1&b=2&a=3", u"?q=%EC%97%AC%ED%96%89+%2B", u"k%20=v%21&x=100%", u"a=&=b&c&d=1=2", u""};
  for (const String& text : texts) {
    std::cout << "'" << text << "'\n";
    print("parseQuery", parseQuery(text));
    print("parameterInfo", parameterInfo(text));
  }
}
