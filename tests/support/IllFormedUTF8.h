// Bytes that are no UTF-8, for everything that decodes it.
#pragma once

#include <string_view>

namespace quorvel::test {

/// Stray, overlong, cut off, a surrogate, beyond the last scalar: each is refused whatever follows that does not
/// continue it.
inline constexpr std::string_view kIllFormedUTF8[] = {
    "\x80",         "\xBF",         "\xC0\x80",         "\xC1\xBF",         "\xC3",         "\xC3(",
    "\xE0\x9F\xBF", "\xED\xA0\x80", "\xED\xBF\xBF",     "\xEA\xB0",         "\xEA\xB0x",    "\xEA(\xB0",
    "\xF0\x90\x80", "\xF0\x8F\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80", "\xFF"};

}  // namespace quorvel::test
