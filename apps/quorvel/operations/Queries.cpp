#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSDictionary+URL.h>
#include <quorvel/Extensions/Foundation/NSString+Query.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>

namespace quorvel::command {
namespace {

constexpr Operation kRows[] = {
    op<&queryString>("NSDictionary(URL)", "queryString", "record", "?key=value pairs with & between; nil for none",
                     R"([{"a": "x y", "n": 5}])"),
    op<&parseQuery>("NSString(Query)", "parseQuery", "text", "the pairs of a query, keys and values decoded",
                    R"(["a=1&b=%EC%97%AC%ED%96%89"])"),
    op<&parameterInfo>("NSString(URLEncoding)", "parameterInfo", "text",
                       "the pairs of a query, values decoded with + as a space", R"(["x=a+b%2B"])"),
};

}  // namespace

std::span<const Operation> queryOperations() { return kRows; }

}  // namespace quorvel::command
