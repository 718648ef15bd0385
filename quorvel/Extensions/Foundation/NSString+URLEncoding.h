// NSString(URLEncoding): percent coding of text through its UTF-8 bytes (RFC 3986, section 2.1), character cleaners,
// and the lenient query parser. Not here: the query builder and the other parser (NSDictionary+URL.h,
// NSString+Query.h), Base64 of bytes (NSString+Additions+Base64.h).
#pragma once

#include <quorvel/Platform/Foundation/CharacterSet.h>
#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// `forceEncodingCharacterSet`: every character but the 28 of \ ! * ' " ( ) ; : @ & = + $ , / ? % # [ ] { } ^ | < > and
/// the space. Built once; the receiver plays no part.
[[nodiscard]] const NSCharacterSet& forceEncodingCharacterSet(StringView text);

/// `stringByEncodingCharacterSet`: the receiver with what `forceEncodingCharacterSet` lacks as %XX; the receiver itself
/// when it holds an unpaired surrogate.
///
///     stringByEncodingCharacterSet(u"a b&c=d")   // "a%20b%26c%3Dd"
[[nodiscard]] String stringByEncodingCharacterSet(const String& text);

/// `stringByDecodingPercentChars`: `urlDecodeString`, or the receiver itself where that is nil. '100%' gives '100%'.
[[nodiscard]] String stringByDecodingPercentChars(const String& text);

/// `stringByURLEncoding`: the receiver with everything but A-Z a-z 0-9 ! $ & ' ( ) * + , - . / : ; = ? @ [ ] _ ~ as
/// %XX; nil when it holds an unpaired surrogate.
[[nodiscard]] std::optional<String> stringByURLEncoding(const String& text);

/// `urlEncodeString`: the receiver with everything but A-Z a-z 0-9 - . _ ~ = as %XX; nil when it holds an unpaired
/// surrogate.
///
///     urlEncodeString(u"a+b=c d")   // "a%2Bb=c%20d"
[[nodiscard]] std::optional<String> urlEncodeString(const String& text);

/// `urlDecodeString`: undoes percent escapes; a "+" stays. nil when a "%" lacks two hexadecimal digits or the bytes are
/// not UTF-8.
[[nodiscard]] std::optional<String> urlDecodeString(const String& text);

/// `stringByEncodingBase64`: the receiver's UTF-8 bytes in Base64, then `stringByEncodingCharacterSet`, which writes
/// "+", "/" and "=" as %2B, %2F and %3D. nil for nil and for an unpaired surrogate.
///
///     stringByEncodingBase64(u"?>")   // "Pz4%3D"
[[nodiscard]] std::optional<String> stringByEncodingBase64(StringView text);

/// `removeControlCharacterSet`: each character of the categories Cc and Cf but the line feed replaced by one space; CR
/// LF becomes space LF.
[[nodiscard]] String removeControlCharacterSet(const String& text);

/// `removeWhiteCharacterSet`: each tab and each character of the category Zs replaced by one space; line feeds stay.
[[nodiscard]] String removeWhiteCharacterSet(const String& text);

/// `parameterInfo`: the pairs of query text, 'key=value' between "&", keys as they stand, values with "+" read as a
/// space and then decoded like `stringByDecodingPercentChars`. Pieces without exactly one "=" are skipped; a later pair
/// replaces an earlier one of the same key.
///
///     parameterInfo(u"x=a+b%2B")   // {"x": "a b+"}
[[nodiscard]] Dictionary parameterInfo(const String& text);

}  // namespace quorvel
