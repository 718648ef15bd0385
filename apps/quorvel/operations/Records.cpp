#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/Dictionary+Extension.h>
#include <quorvel/Extensions/Foundation/NSDictionary+Addtion.h>
#include <quorvel/Extensions/Foundation/NSMutableDictionary+VelkaAdditions.h>
#include <quorvel/Extensions/Foundation/NSObject+ConvertString.h>
#include <quorvel/Extensions/Foundation/Optional+Extension.h>

namespace quorvel::command {
namespace {

constexpr const char* kReads = "NSDictionary(Addtion)";
constexpr const char* kWrites = "NSMutableDictionary(VelkaAdditions)";
constexpr const char* kObject = "NSObject(ConvertString)";
constexpr const char* kValue = "Dictionary extension";

using BoolOr = bool (*)(const Dictionary&, StringView, bool);
using Bool = bool (*)(const Dictionary&, StringView);
using Filter = Dictionary (*)(const Dictionary&);
using Merging = Dictionary (*)(const Dictionary&, const Dictionary&);
using Merge = void (*)(Dictionary&, const Dictionary&);
using Subscript = String (*)(const Dictionary&, const Value&);
using OptionalSubscript = std::optional<String> (*)(const Dictionary&, const Value&);
using ToString = String (*)(const Value&);

constexpr Operation kRows[] = {
    op<&stringForKeyOrNil>(kReads, "stringForKeyOrNil:", "record, key", "the value as text", R"([{"n": 42}, "n"])"),
    op<&stringNotEmptyForKeyOrNil>(kReads, "stringNotEmptyForKeyOrNil:", "record, key",
                                   "the value as trimmed text; nil when it is blank", R"([{"a": "  ab "}, "a"])"),
    op<&stringOrEmptyForKey>(kReads, "stringOrEmptyForKey:", "record, key", "the value as trimmed text, or empty text",
                             R"([{"a": "   "}, "a"])"),
    op<&integerNumberForKeyOrNil>(kReads, "integerNumberForKeyOrNil:", "record, key",
                                  "a number as it is, a text's leading integer", R"([{"a": "12abc"}, "a"])"),
    op<&dateForKeyOrNil>(kReads, "dateForKeyOrNil:", "record, key", "milliseconds since 1970 as a date",
                         R"([{"at": 1500000000000}, "at"])"),
    op<&arrayForKeyOfNil>(kReads, "arrayForKeyOfNil:", "record, key", "the value when it is a list",
                          R"([{"a": [1, 2]}, "a"])"),
    op<static_cast<BoolOr>(&boolValueForKey)>(kReads, "boolValueForKey:defaultValue:", "record, key, defaultValue",
                                              "a number's truth, a text's \"true\", else the default",
                                              R"([{"a": "TRUE"}, "a", false])"),
    op<static_cast<Bool>(&boolValueForKey)>(kReads, "boolValueForKey:", "record, key",
                                            "a number's truth, a text's \"true\", else false", R"([{"a": 1}, "a"])"),
    op<&boolValueFromStringYnForKeyOrNil>(kReads, "boolValueFromStringYnForKeyOrNil:", "record, key",
                                          "whether the value is \"Y\" or \"y\"", R"([{"a": "y"}, "a"])"),

    op<&setObjectIfNotNil>(kWrites, "setObjectIfNotNil:forKey:", "record, value, key",
                           "stores a value unless it is nil", R"([{}, [1], "a"])"),
    op<&setString>(kWrites, "setString:forKey:", "record, text, key", "stores a text unless it is nil",
                   R"([{}, "x", "a"])"),
    op<&setDouble>(kWrites, "setDouble:forKey:", "record, value, key", "stores a floating number", R"([{}, 2.5, "a"])"),
    op<&setInt>(kWrites, "setInt:forKey:", "record, value, key", "stores an integer number", R"([{}, 7, "a"])"),
    op<&setBool>(kWrites, "setBool:forKey:", "record, value, key", "stores the integer number 1 or 0",
                 R"([{}, true, "a"])"),
    op<&setStringOfInt>(kWrites, "setStringOfInt:forKey:", "record, value, key", "stores an integer's decimal text",
                        R"([{}, -5, "a"])"),
    op<&setIntOfString>(kWrites, "setIntOfString:forKey:", "record, text, key", "stores the integer that a text is",
                        R"([{}, "007", "a"])"),
    op<&setStringOfIntKey>(kWrites, "setStringOfIntKey:forKey:", "record, text, key",
                           "stores a text under an integer key", R"([{}, "x", 5])"),

    op<&NSDictionaryAddtion::isNotEmpty>(kReads, "isNotEmpty:", "value", "whether the value is a record with an entry",
                                         R"([{"a": 1}])"),
    op<&NSDictionaryAddtion::isEmpty>(kReads, "isEmpty:", "value", "the negation of isNotEmpty:", "[{}]"),
    op<&objectForKeyOrNil>(kReads, "objectForKeyOrNil:", "record, key", "the entry of a key of any kind; null is nil",
                           R"([{"$entries": [[5, "x"]]}, 5])"),
    op<&valueForKeyOrNil>(kReads, "valueForKeyOrNil:", "record, key", "the entry of a key, or a property behind '@'",
                          R"([{"a": 1, "b": 2}, "@count"])"),
    op<&valueForKeyPathOrNil>(kReads, "valueForKeyPathOrNil:", "record, path", "the entry at the end of a dotted path",
                              R"([{"a": {"b": 1}}, "a.b"])"),
    op<&valueOrNil>(kReads, "valueOrNil:", "record, value", "the value, with the null marker as nil",
                    R"([{}, {"$null": true}])"),
    op<&mergeToDictionary>(kReads, "mergeToDictionary:", "record, other",
                           "both records' entries, the other's win, lists are joined",
                           R"([{"a": [1], "b": 1}, {"a": [2], "b": 2}])"),

    op<static_cast<String (*)(const Value&)>(&className)>(kObject, "className", "value",
                                                          "the name of the value's class", R"(["a"])"),
    op<&toStringValue>(kObject, "toStringValue", "value", "text as it is, a number's digits, else the description",
                       "[2.5]"),

    op<static_cast<Filter>(&swiftDictionary)>(kValue, "swiftDictionary()", "dictionary",
                                              "the entries whose keys are strings",
                                              R"([{"$entries": [["a", 1], [2, 3]]}])"),
    op<static_cast<Merging>(&merging)>(kValue, "merging(_:)", "dictionary, other",
                                       "with the other's entries whose keys are missing",
                                       R"([{"a": 1}, {"a": 2, "b": 3}])"),
    op<static_cast<Merge>(&merge)>(kValue, "merge(_:)", "dictionary, other", "stores the other's entries over its own",
                                   R"([{"a": 1}, {"a": 2, "b": 3}])"),
    op<[](const Tuples& tuples) { return dictionaryFromTuples(tuples); }>(
        kValue, "init(tuples:)", "tuples", "a dictionary of [key, value] pairs, the last of a key wins",
        R"([[["a", 1], ["a", 2]]])"),
    op<static_cast<OptionalSubscript>(&subscriptStringOrNil)>(kValue, "subscript(stringOrNil:)", "dictionary, key",
                                                              "a string or a number as text, else nil",
                                                              R"([{"a": true}, "a"])"),
    op<static_cast<Subscript>(&subscriptString)>(kValue, "subscript(string:)", "dictionary, key",
                                                 "a string or a number as text, else empty text", R"([{}, "a"])"),

    op<static_cast<ToString>(&toString)>("Optional extension", "toString()", "value",
                                         "the value's own text; '<nil>' for none", "[1.5]"),
};

}  // namespace

std::span<const Operation> recordOperations() { return kRows; }

}  // namespace quorvel::command
