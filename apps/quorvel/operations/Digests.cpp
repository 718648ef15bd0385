#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/Foundation/NSString+Additions+Base64.h>
#include <quorvel/Extensions/Foundation/NSString+Hash.h>
#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+Base64.h>

namespace quorvel::command {
namespace {

constexpr const char* kHash = "NSString(Hash)";

constexpr Operation kRows[] = {
    op<&stringFromMD5>(kHash, "stringFromMD5", "text", "the MD5 in hexadecimal; nil of nothing", R"(["abc"])"),
    op<&hashMD5>(kHash, "hashMD5", "text", "the MD5 in hexadecimal, of the empty text too", R"([""])"),
    op<&qv_HMAC_SHA256HashWithKey>(kHash, "qv_HMAC_SHA256HashWithKey:", "text, key",
                                   "the HMAC-SHA256 under a key, in Base64",
                                   R"(["The quick brown fox jumps over the lazy dog", "key"])"),
    op<&NSStringAdditions::qv_URLSafeBase64StringWithData>(
        "NSString(Additions)", "qv_URLSafeBase64StringWithData:", "data", "bytes in Base64 with - and _, padding kept",
        R"([{"$data": "+/8="}])"),
    op<&stringByEncodingBase64>("NSString(URLEncoding)", "stringByEncodingBase64", "text",
                                "the UTF-8 bytes in Base64, + / = escaped", R"(["?>"])"),
    op<&base64Encoded>("String extension", "base64Encoded", "text",
                       "the UTF-8 bytes in Base64, every character escaped", R"(["ab"])"),
};

}  // namespace

std::span<const Operation> digestOperations() { return kRows; }

}  // namespace quorvel::command
