#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/QueryPairs.h>
#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Platform/Foundation/PercentEncoding.h>
#include <quorvel/Platform/Foundation/StringOperations.h>

namespace quorvel {
namespace {

constexpr char kForceEncoded[] = "\\!*'\"();:@&=+$,/?%#[]{}^|<> ";
constexpr PercentAllowed kForceAllowed = PercentAllowed::allBut(kForceEncoded);
constexpr PercentAllowed kURLAllowed =
    PercentAllowed::only("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$&'()*+,-./:;=?@[]_~");
constexpr PercentAllowed kStrictAllowed =
    PercentAllowed::only("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~=");

}  // namespace

const NSCharacterSet& forceEncodingCharacterSet(StringView) {
  static const NSCharacterSet set = NSCharacterSet::withCharactersIn(String::fromASCII(kForceEncoded)).inverted();
  return set;
}

String stringByEncodingCharacterSet(const String& text) {
  return addingPercentEncoding(text, kForceAllowed).value_or(text);
}

String stringByDecodingPercentChars(const String& text) { return removingPercentEncoding(text).value_or(text); }

std::optional<String> stringByURLEncoding(const String& text) { return addingPercentEncoding(text, kURLAllowed); }

std::optional<String> urlEncodeString(const String& text) { return addingPercentEncoding(text, kStrictAllowed); }

std::optional<String> urlDecodeString(const String& text) { return removingPercentEncoding(text); }

std::optional<String> stringByEncodingBase64(StringView text) {
  const std::optional<String> base64 = base64EncodedUTF8(text);
  if (!base64) return nil;
  return stringByEncodingCharacterSet(*base64);
}

String removeControlCharacterSet(const String& text) {
  static const NSCharacterSet set = NSCharacterSet::control().removing(u"\n");
  return replacingCharacters(text, set, u" ");
}

String removeWhiteCharacterSet(const String& text) {
  return replacingCharacters(text, NSCharacterSet::whitespace(), u" ");
}

Dictionary parameterInfo(const String& text) {
  Dictionary result;
  detail::forEachQueryPair(text, [&](StringView key, StringView value) {
    result.set(key, stringByDecodingPercentChars(replacingOccurrences(value, u"+", u" ")));
  });
  return result;
}

}  // namespace quorvel
