#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSArray+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSDictionary+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/NSString+ConvertJSON.h>
#include <quorvel/Extensions/Foundation/String+JSON.h>

namespace quorvel::command {
namespace {

using Text = std::optional<String>;

constexpr Operation kRows[] = {
    op<&objectFromJSONString>("NSString(ConvertJSON)", "objectFromJSONString", "text",
                              "the list or record that a JSON text is; nil for anything else", R"(["{\"a\":[1,2]}"])"),
    op<static_cast<Text (*)(const Dictionary&)>(&toJSONString)>("NSDictionary(ConvertJSON)", "toJSONString", "record",
                                                                "the record as JSON text with sorted keys",
                                                                R"([{"b": 1, "a": 2}])"),
    op<static_cast<Text (*)(const Dictionary&, std::uint64_t)>(&toJSONString)>(
        "NSDictionary(ConvertJSON)", "toJSONString:", "record, options",
        "the record as JSON text with sorted keys; option 1 lays it out in lines", R"([{"a": 2}, 1])"),
    op<static_cast<Text (*)(const List&)>(&toJSONString)>("NSArray(ConvertJSON)", "toJSONString", "list",
                                                          "the list as JSON text with sorted keys", R"([[1, "a"]])"),
    op<static_cast<Text (*)(const List&, std::uint64_t)>(&toJSONString)>(
        "NSArray(ConvertJSON)", "toJSONString:", "list, options",
        "the list as JSON text with sorted keys; option 1 lays it out in lines", R"([[1], 1])"),
    op<&jsonObject>("String extension", "jsonObject", "text", "the record that a JSON text is; nil for anything else",
                    R"(["{\"a\":1}"])"),
};

}  // namespace

std::span<const Operation> jsonOperations() { return kRows; }

}  // namespace quorvel::command
