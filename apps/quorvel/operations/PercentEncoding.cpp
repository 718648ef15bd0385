#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSDictionary+UrlEncoding.h>
#include <quorvel/Extensions/Foundation/NSString+Additions+Parameters.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+URLEncoding.h>

namespace quorvel::command {
namespace {

constexpr const char* kText = "NSString(URLEncoding)";
constexpr const char* kRecord = "NSDictionary(UrlEncoding)";
constexpr const char* kParameters = "NSString(Additions)";
constexpr const char* kValue = "String extension";

using EncodeRecord = String (*)(const Dictionary&);
using EncodeText = String (*)(const String&, bool);

constexpr Operation kRows[] = {
    op<&forceEncodingCharacterSet>(kText, "forceEncodingCharacterSet", "text",
                                   "the characters that stringByEncodingCharacterSet leaves", R"([""])"),
    op<&stringByEncodingCharacterSet>(kText, "stringByEncodingCharacterSet", "text",
                                      "percent-encodes 28 ASCII characters; all others stay", R"(["a b&c=d"])"),
    op<&stringByDecodingPercentChars>(kText, "stringByDecodingPercentChars", "text",
                                      "undoes percent escapes; the text itself when it cannot", R"(["100%"])"),
    op<&stringByURLEncoding>(kText, "stringByURLEncoding", "text", "percent-encodes what no part of a URL allows",
                             R"(["a b#c"])"),
    op<&urlEncodeString>(kText, "urlEncodeString", "text",
                         "percent-encodes all but A-Z a-z 0-9 - . _ ~ =", R"(["a+b=c d"])"),
    op<&urlDecodeString>(kText, "urlDecodeString", "text", "undoes percent escapes; nil when it cannot",
                         R"(["%ED%95%9C"])"),
    op<&removeControlCharacterSet>(kText, "removeControlCharacterSet", "text",
                                   "each control character but the line feed as a space", R"(["a\t\tb"])"),
    op<&removeWhiteCharacterSet>(kText, "removeWhiteCharacterSet", "text", "each tab and each kind of space as a space",
                                 R"(["a\u00a0b"])"),

    op<&urlEncode>(kRecord, "urlEncode", "value", "the value's description, encoded", R"([5])"),
    op<static_cast<EncodeRecord>(&urlEncodedString)>(
        kRecord, "urlEncodedString", "record", "encoded key=value pairs with & between", R"([{"a": "x y", "b": 1}])"),

    op<&NSStringAdditions::qv_percentEscapedQueryStringValueFromStringWithEncoding>(
        kParameters, "qv_percentEscapedQueryStringValueFromStringWithEncoding:encoding:", "text, encoding",
        "percent-encodes 16 ASCII characters that would break a query", R"(["a&b=c d", 4])"),
    op<&NSStringAdditions::qv_parameterStringWithKey>(kParameters, "qv_parameterStringWithKey:value:", "key, value",
                                                      "key=value, both escaped for a query", R"(["q", "a&b=c d"])"),
    op<&NSStringAdditions::qv_parameterStringWithArray>(kParameters, "qv_parameterStringWithArray:", "strings",
                                                        "the strings joined with &; nil for none",
                                                        R"([["a=1", "b=2"]])"),

    op<static_cast<EncodeText>(&urlEncodedString)>(kValue, "urlEncodedString(_:)", "text, keepsURLCharacters",
                                                   "percent-encodes all but combining marks, or all but URL characters",
                                                   R"(["abc", false])"),
    op<&urlDecoded>(kValue, "urlDecoded", "text", "undoes percent escapes; the text itself when it cannot",
                    R"(["a%20b"])"),
};

}  // namespace

std::span<const Operation> percentEncodingOperations() { return kRows; }

}  // namespace quorvel::command
