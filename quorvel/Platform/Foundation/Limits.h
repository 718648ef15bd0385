// The guards against hostile or runaway input, in one place; LIMITS.md explains each to users.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace quorvel::limits {

/// Nesting of JSON text, read and written; one level deeper is nil.
inline constexpr std::size_t kJSONDepth = 512;
/// Nesting that a description writes out; deeper lists and dictionaries are written as "(...)" and "{...}".
inline constexpr std::size_t kDescriptionDepth = 512;
/// UTF-16 units of the description of a list or a dictionary; what would follow is written as "...".
inline constexpr std::size_t kDescriptionLength = 16 * 1024 * 1024;
/// UTF-16 units of a formatted text; what would follow is left out.
inline constexpr std::size_t kFormatLength = 64 * 1024 * 1024;
/// Time that one regular-expression call may take, then it answers "no match".
inline constexpr std::chrono::milliseconds kRegularExpressionTime{250};
/// Memory that the backtracking of one regular-expression call may take, then it answers "no match".
inline constexpr std::int32_t kRegularExpressionBytes = 64 * 1024 * 1024;
/// Character classes of a pattern, weighed by how long ICU takes for them: 1 for a set, 8 for an escape such as \d or
/// \p, 64 for what holds nearly all characters. A pattern with more counts as one that does not compile.
inline constexpr std::size_t kRegularExpressionClasses = 1024;
/// Quantifiers of a pattern times its length; beyond it counts as a pattern that does not compile, because ICU moves
/// the rest of the pattern for each.
inline constexpr std::size_t kRegularExpressionQuantifiers = std::size_t{1} << 25;
/// Memory of the matches with all their groups that one regular-expression call answers, else it answers "no match".
inline constexpr std::size_t kRegularExpressionMatchBytes = 256 * 1024 * 1024;
/// Compiled patterns that are kept for the next call, in all threads together.
inline constexpr std::size_t kRegularExpressionCache = 64;
/// UTF-16 units of the longest pattern that is compiled; a longer one counts as a pattern that does not compile.
inline constexpr std::size_t kRegularExpressionPattern = 64 * 1024;
/// UTF-16 units of the longest search term that counts as half typed; a longer one matches as it is.
inline constexpr std::size_t kTypedTerm = 128;
/// Width and precision of a conversion in a format; a larger one is taken as this.
inline constexpr int kFormatWidth = 4096;
/// Decimals of a byte size; a larger count is taken as this.
inline constexpr int kSizeDecimals = 1100;
/// Bytes of a string table or a property list of a bundle; a larger file is passed over.
inline constexpr std::size_t kResourceFileBytes = 16 * 1024 * 1024;
/// Nesting of a property list, and objects of one in the binary form; beyond them it is nil.
inline constexpr std::size_t kPropertyListDepth = 512;
inline constexpr std::size_t kPropertyListObjects = 1'000'000;
/// Pixels of a side of an image, and of a whole one. With one more on a side, cairo draws nothing and tells nobody.
inline constexpr std::int64_t kImageSide = 32'766;
inline constexpr std::int64_t kImagePixels = 100'000'000;
/// Bytes of an image file that is read, and of the pixels that a full decode may take.
inline constexpr std::size_t kImageFileBytes = 64 * 1024 * 1024;
inline constexpr std::size_t kImageDecodedBytes = 256 * 1024 * 1024;
/// Scans of a progressive picture that are decoded.
inline constexpr int kImageScans = 100;

/// Bytes of a store that the library keeps as one JSON file (defaults, cookies); a change beyond it is refused.
inline constexpr std::size_t kStoreFileBytes = 16 * 1024 * 1024;
/// Time that a change of such a store waits for another process, then it is refused.
inline constexpr std::chrono::milliseconds kLockTime{10'000};
/// Bytes of a keychain item's value, and bytes of all its attributes together; more is a bad parameter.
inline constexpr std::size_t kKeychainValueBytes = 16 * 1024 * 1024;
inline constexpr std::size_t kKeychainAttributeBytes = 1024 * 1024;
/// UTF-16 units of the longest string.
inline constexpr std::size_t kStringLength = UINT32_MAX;

}  // namespace quorvel::limits
