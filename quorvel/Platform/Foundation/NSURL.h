// NSURL: a URL or relative reference as text that was checked, and its parts (RFC 3986, section 3).
// Not here: links in free text (NSDataDetector.h), percent coding (PercentEncoding.h), resource values of
// files (NSURLResourceValues.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// Immutable, and cheap to copy. A Value may carry one.
class NSURL {
 public:
  /// `URLWithString:`: nil for a nil or empty text and for one that holds what RFC 3986 allows nowhere: a space, a
  /// control, one of " < > \ ^ ` { | }, a character beyond ASCII, a "%" without two hexadecimal digits, or a second
  /// "#". Relative references are accepted; schemes are not looked at.
  [[nodiscard]] static std::optional<NSURL> withString(StringView text);

  /// `fileURLWithPath:`: "file://" and the path, percent-encoded; a relative path is taken from the working folder. nil
  /// for a nil or empty path and for one with a NUL or an unpaired surrogate.
  [[nodiscard]] static std::optional<NSURL> fileURLWithPath(StringView path);

  /// `absoluteString`: the text, with brackets outside the host as %5B and %5D.
  [[nodiscard]] const String& absoluteString() const { return text_; }
  /// `scheme`, its case as it stands; nil when there is none. A view into the URL.
  [[nodiscard]] StringView scheme() const;
  /// `host`: the authority without user information and port, as it stands; nil when there is none. A view into the
  /// URL.
  [[nodiscard]] StringView host() const;
  /// `path`: percent escapes undone, without a slash at its end unless it is "/". Empty when there is none; nil when
  /// the escapes are not UTF-8.
  [[nodiscard]] std::optional<String> path() const;
  /// `lastPathComponent` of `path`.
  [[nodiscard]] std::optional<String> lastPathComponent() const;
  /// `URLByDeletingLastPathComponent`: the path without its last segment, ending in "/"; query and fragment stay. One
  /// slash at the end does not count as a segment. The path "/" and one that ends in a segment "." or ".." get "../"
  /// appended, a single relative segment becomes "./". An empty path, and one behind a scheme that does not begin with
  /// "/", leave the URL unchanged.
  ///
  ///     http://h/a/b?q   // http://h/a/?q
  ///     http://h/        // http://h/../
  [[nodiscard]] NSURL byDeletingLastPathComponent() const;

  friend bool operator==(const NSURL& a, const NSURL& b) { return a.text_ == b.text_; }

  [[nodiscard]] static String className() { return u"NSURL"; }
  [[nodiscard]] String description() const { return text_; }
  [[nodiscard]] std::uint64_t hash() const { return Value(text_).hash(); }

 private:
  explicit NSURL(String text);
  [[nodiscard]] StringView encodedPath() const;

  String text_;
  std::uint32_t schemeSize_ = 0;  // without its colon; 0 for none
  std::uint32_t pathStart_ = 0;
  std::uint32_t pathEnd_ = 0;
};

}  // namespace quorvel
