// Typed reads from decoded records, whose values come in whatever type the producer chose; writes and merges.
#include <iostream>

#include <quorvel/Extensions/Foundation/NSDictionary+Addtion.h>
#include <quorvel/Extensions/Foundation/NSMutableDictionary+VelkaAdditions.h>
#include <quorvel/Extensions/Foundation/NSObject+ConvertString.h>

using namespace quorvel;

int main() {
  const Dictionary record{{u"count", 42},       {u"ratio", 2.5},
                          {u"unread", u"12건"}, {u"room", u" 가족\n"},
                          {u"title", u" 　"},   {u"edited", u"TRUE"},
                          {u"read", u"y"},      {u"pinned", true},
                          {u"topic", null},     {u"sentAt", u"1500000000000"}};
  std::cout << std::boolalpha;
  constexpr StringView keys[] = {u"count",  u"ratio", u"unread", u"room",  u"title",
                                 u"edited", u"read",  u"pinned", u"topic", u"missing"};
  for (const StringView key : keys) {
    std::cout << key << ": '" << stringForKeyOrNil(record, key) << "', trimmed '"
              << stringNotEmptyForKeyOrNil(record, key) << "', number "
              << toStringValue(integerNumberForKeyOrNil(record, key)) << ", true " << boolValueForKey(record, key)
              << ", true by default " << boolValueForKey(record, key, true) << ", Y "
              << boolValueFromStringYnForKeyOrNil(record, key) << '\n';
  }
  std::cout << "sentAt: " << toStringValue(dateForKeyOrNil(record, u"sentAt"))
            << ", topic: " << toStringValue(dateForKeyOrNil(record, u"topic")) << '\n';
  const Dictionary nested{{u"attach", Dictionary{{u"name", u"여행.zip"}, {u"seconds", null}}}};
  std::cout << toStringValue(valueForKeyPathOrNil(nested, u"attach.name")) << ", "
            << toStringValue(valueForKeyPathOrNil(nested, u"attach.seconds")) << '\n';

  Dictionary settings;
  setBool(settings, true, u"sound");
  setStringOfInt(settings, -5, u"offset");
  setIntOfString(settings, u"007", u"limit");
  setIntOfString(settings, u"12a", u"not a number");
  setString(settings, nil, u"nothing");
  const Dictionary other{{u"limit", 9}, {u"rooms", List{u"가족", u"d 1"}}};
  std::cout << settings << '\n' << mergeToDictionary(mergeToDictionary(settings, other), other) << '\n';
}
