// Random texts over small alphabets of pieces that are hard on text operations.
#pragma once

#include <algorithm>
#include <array>
#include <random>
#include <span>
#include <string>
#include <string_view>

namespace quorvel::test {

using namespace std::string_view_literals;

/// The pieces of a text between bars, of which there are `kCount`.
template <std::size_t kCount>
consteval std::array<std::u16string_view, kCount> pieces(std::u16string_view text) {
  std::array<std::u16string_view, kCount> result;
  for (std::u16string_view& piece : result) {
    piece = text.substr(0, text.find(u'|'));
    text.remove_prefix(std::min(text.size(), piece.size() + 1));
  }
  return result;
}

/// Marks in and out of order, composed letters, letters whose case changes their length, syllables and their letters,
/// emoji sequences, flags, line ends, and halves of surrogate pairs.
inline constexpr auto kHardPieces = pieces<73>(
    u"e|E|\u00E9|\u0301|\u0323|\u0344|\u0345|\u03B1|\u1FB3|\u03A3|\u03C2|\u0130|i|I|\u0307|\u00DF|ss|"
    u"\u1E9E|\u01C5|\uFB03|\u212A|k|\u1100|\u1161|\u11A8|\uAC00|\uAC01|\u1112|\u4E00|\uF900|\u3042|\u3099|"
    u"\u304B|\u304C|\r|\n| |\u00A0|\u200D|\uFE0F|\u0600|\u0903|\u0915|\u0416|\u0436|\u0451|\u0401|\u00B5|"
    u"\u03BC|\u0149|\xD83D|\xDE00|\xD801|\xDC00|\xD83D\xDC69|\xD83C\xDDF0\xD83C\xDDF7|\xD83C\xDFFD|"
    u"\xD834\xDD5E|\xD834\xDD65|\xD87E\xDC00|\xD801\xDC28|plain words|\uD55C\uAE00\uD55C\uAE00 ab|\x0000|"
    u"\uFFFF|\u0419|\u0418|\u0306|\u2126|\u03C9|\u1EE4\u0302|\u00E5|\u212B"sv);

/// `count` pieces of the alphabet.
template <class Random>
[[nodiscard]] std::u16string randomText(Random& random, std::span<const std::u16string_view> pieces,
                                        std::size_t count) {
  std::u16string text;
  for (std::size_t i = 0; i < count; ++i) text += pieces[random() % pieces.size()];
  return text;
}

/// The units in hexadecimal, for messages.
[[nodiscard]] inline std::string hex(std::u16string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string out;
  for (const char16_t unit : text) {
    for (const int shift : {12, 8, 4, 0}) out += kDigits[static_cast<std::size_t>(unit >> shift & 15)];
    out += ' ';
  }
  return out;
}

}  // namespace quorvel::test
