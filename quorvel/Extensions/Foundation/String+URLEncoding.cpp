#include <quorvel/Extensions/Foundation/NSString+URLEncoding.h>
#include <quorvel/Extensions/Foundation/String+URLEncoding.h>
#include <quorvel/Platform/Foundation/PercentEncoding.h>

namespace quorvel {
namespace {

constexpr PercentAllowed kMarks = PercentAllowed::only("", PercentAllowed::NonASCII::NonBase);
constexpr PercentAllowed kMarksAndURLCharacters =
    PercentAllowed::only("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789!$&'()*+,-./:;=?@[]_~",
                         PercentAllowed::NonASCII::NonBase);

}  // namespace

String urlEncodedString(const String& text, bool keepsURLCharacters) {
  return addingPercentEncoding(text, keepsURLCharacters ? kMarksAndURLCharacters : kMarks).value_or(String());
}

String urlDecoded(const String& text) { return stringByDecodingPercentChars(text); }

}  // namespace quorvel
