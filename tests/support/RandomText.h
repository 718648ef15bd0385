// Random texts over small alphabets of pieces that are hard on text operations.
#pragma once

#include <random>
#include <span>
#include <string>
#include <string_view>

namespace quorvel::test {

/// Marks in and out of order, composed letters, letters whose case changes their length, syllables and their letters,
/// emoji sequences, flags, line ends, and halves of surrogate pairs.
inline constexpr std::u16string_view kHardPieces[] = {u"e",
                                                      u"E",
                                                      u"\u00E9",
                                                      u"\u0301",
                                                      u"\u0323",
                                                      u"\u0344",
                                                      u"\u0345",
                                                      u"\u03B1",
                                                      u"\u1FB3",
                                                      u"\u03A3",
                                                      u"\u03C2",
                                                      u"\u0130",
                                                      u"i",
                                                      u"I",
                                                      u"\u0307",
                                                      u"\u00DF",
                                                      u"ss",
                                                      u"\u1E9E",
                                                      u"\u01C5",
                                                      u"\uFB03",
                                                      u"\u212A",
                                                      u"k",
                                                      u"\u1100",
                                                      u"\u1161",
                                                      u"\u11A8",
                                                      u"\uAC00",
                                                      u"\uAC01",
                                                      u"\u1112",
                                                      u"\u4E00",
                                                      u"\uF900",
                                                      u"\u3042",
                                                      u"\u3099",
                                                      u"\u304B",
                                                      u"\u304C",
                                                      u"\r",
                                                      u"\n",
                                                      u" ",
                                                      u"\u00A0",
                                                      u"\u200D",
                                                      u"\uFE0F",
                                                      u"\u0600",
                                                      u"\u0903",
                                                      u"\u0915",
                                                      u"\u0416",
                                                      u"\u0436",
                                                      u"\u0451",
                                                      u"\u0401",
                                                      u"\u00B5",
                                                      u"\u03BC",
                                                      u"\u0149",
                                                      u"\xD83D",
                                                      u"\xDE00",
                                                      u"\xD801",
                                                      u"\xDC00",
                                                      u"\xD83D\xDC69",
                                                      u"\xD83C\xDDF0\xD83C\xDDF7",
                                                      u"\xD83C\xDFFD",
                                                      u"\xD834\xDD5E",
                                                      u"\xD834\xDD65",
                                                      u"\xD87E\xDC00",
                                                      u"\xD801\xDC28",
                                                      u"plain words",
                                                      u"\uD55C\uAE00\uD55C\uAE00 ab",
                                                      u"\x0000",
                                                      u"\uFFFF",
                                                      u"\u0419",
                                                      u"\u0418",
                                                      u"\u0306",
                                                      u"\u2126",
                                                      u"\u03C9",
                                                      u"\u1EE4\u0302",
                                                      u"\u00E5",
                                                      u"\u212B"};

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
