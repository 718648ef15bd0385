// NSString(Additions): file names, and path segments of URL strings.
// Not here: the platform's path operations (PathOperations.h, String+Paths.h).
#pragma once

#include <optional>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

/// `createNewFileName`: the name with the next number: the number n of the first match of "\s(\()(\d+)(\))(.\w*)" makes
/// n + 1 (at most the largest signed integer) in every match; without a match ' (1)' goes before the extension. Digits
/// other than ASCII count as 0.
///
///     createNewFileName(u"a.txt")       // "a (1).txt"
///     createNewFileName(u"a (1).txt")   // "a (2).txt"
[[nodiscard]] String createNewFileName(const String& name);

/// `checkFileNameValidity`: true for a name that neither begins nor ends with "." and holds none of < > : " | ? * / \.
/// The empty name and nil are not valid.
[[nodiscard]] bool checkFileNameValidity(StringView name);

/// `removeMatchingFirstPattern:`: what the pattern first matches, ignoring case, in the receiver without white space
/// and newlines at its ends; that text itself when nothing matches or the pattern does not compile. A view into the
/// receiver; nil for nil.
///
///     removeMatchingFirstPattern(u"  ab12cd ", u"\\d+")   // "12"
[[nodiscard]] StringView removeMatchingFirstPattern(StringView text, StringView pattern);

/// `URLStringByAppendingPathComponent:`: the receiver, read as scheme "://" host "/" segments "#" fragment "?" query,
/// with the path's segments that are not blank after its own, of which blank ones are dropped. A fragment is looked for
/// in the last segment only, and an empty segment before it stays. Without a host
/// the path stands behind "://" and a slash; without "://" plain path joining.
///
///     URLStringByAppendingPathComponent(u"proto://host/a#top?x=1", u"b/c/")   // "proto://host/a/b/c#top?x=1"
[[nodiscard]] String URLStringByAppendingPathComponent(const String& url, StringView path);

/// `URLStringByDeletingLastPathComponent`: the URL without its last path segment (NSURL.h), or the path without its
/// last component where the receiver is no URL.
[[nodiscard]] String URLStringByDeletingLastPathComponent(const String& url);

}  // namespace quorvel
