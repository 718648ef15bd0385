// String extension, percent coding: the forms of the value type.
// Not here: the class-level forms (NSString+URLEncoding.h).
#pragma once

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// `urlEncodedString(_:)`: combining marks (categories Mn, Mc, Me) stay; with `keepsURLCharacters` so do A-Z a-z 0-9
/// and ! $ & ' ( ) * + , - . / : ; = ? @ [ ] _ ~; everything else, without it ASCII letters and digits too, becomes
/// %XX. The empty text when the receiver holds an unpaired surrogate.
///
///     urlEncodedString(u"abc", false)   // "%61%62%63"
[[nodiscard]] String urlEncodedString(const String& text, bool keepsURLCharacters);

/// `urlDecoded`: `stringByDecodingPercentChars`: the decoded text, or the receiver itself when it cannot be decoded.
[[nodiscard]] String urlDecoded(const String& text);

}  // namespace quorvel
