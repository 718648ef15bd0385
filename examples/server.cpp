// A server's loop: a message as a line of JSON in, what may be stored and shown of it as a line of JSON out.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSDictionary+Addtion.h>
#include <quorvel/Extensions/Foundation/NSDictionary+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSMutableDictionary+VelkaAdditions.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Cleaning.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Links.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>

using namespace quorvel;

int main() {
  for (std::string line; std::getline(std::cin, line);) {
    const Value request = NSJSONSerialization::parse(line);
    const Dictionary* message = request.asDictionary();
    Dictionary answer;
    if (message) {
      const String text = stringOrEmptyForKey(*message, u"text");
      setString(answer, stringNotEmptyForKeyOrNil(*message, u"room"), u"room");
      setString(answer, qv_appendToEscapedSymbol(removeControlCharacterSet(text)), u"markup");
      setString(answer, truncatedStringWithMaxLength(stringByRemovingNewLineCharacters(text), 12), u"preview");
      for (const auto& link : qv_linkDetector().matches(text)) setString(answer, link.url.absoluteString(), u"link");
    }
    std::cout << toJSONString(answer) << '\n' << std::flush;
  }
}
