// How Hangul syllables are made of letters (Unicode, chapter 3.12), and how two letters are typed for one.
// Included by sources only. Not here: what else counts as a letter of a search term (NSString+TextSearch.h).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace quorvel::hangul {

inline constexpr char16_t kFirstSyllable = 0xAC00;
inline constexpr unsigned kSyllables = 11172;
inline constexpr unsigned kFinals = 28;  // the first of them: none
inline constexpr unsigned kPerInitial = 21 * kFinals;
inline constexpr char16_t kFirstVowelLetter = 0x314F;
inline constexpr unsigned kVowels = 21;

/// The letters (U+3131 to U+3163) of the initial consonants and, from the second on, of the final ones.
inline constexpr std::u16string_view kInitialLetters = u"ㄱㄲㄴㄷㄸㄹㅁㅂㅃㅅㅆㅇㅈㅉㅊㅋㅌㅍㅎ";
inline constexpr std::u16string_view kFinalLetters = u" ㄱㄲㄳㄴㄵㄶㄷㄹㄺㄻㄼㄽㄾㄿㅀㅁㅂㅄㅅㅆㅇㅈㅊㅋㅌㅍㅎ";

struct Pair {
  char16_t letter;
  char16_t typed[2];
};
/// Consonant letters that are typed as two.
inline constexpr Pair kPairs[] = {{u'ㄳ', {u'ㄱ', u'ㅅ'}}, {u'ㄵ', {u'ㄴ', u'ㅈ'}}, {u'ㄶ', {u'ㄴ', u'ㅎ'}},
                                  {u'ㄺ', {u'ㄹ', u'ㄱ'}}, {u'ㄻ', {u'ㄹ', u'ㅁ'}}, {u'ㄼ', {u'ㄹ', u'ㅂ'}},
                                  {u'ㄽ', {u'ㄹ', u'ㅅ'}}, {u'ㄾ', {u'ㄹ', u'ㅌ'}}, {u'ㄿ', {u'ㄹ', u'ㅍ'}},
                                  {u'ㅀ', {u'ㄹ', u'ㅎ'}}, {u'ㅄ', {u'ㅂ', u'ㅅ'}}};
inline constexpr char16_t kFirstPair = u'ㄳ';
inline constexpr char16_t kLastPair = u'ㅄ';

[[nodiscard]] constexpr const Pair* pairOf(char16_t letter) {
  for (const Pair& pair : kPairs) {
    if (pair.letter == letter) return &pair;
  }
  return nullptr;
}

[[nodiscard]] constexpr bool isSyllable(char16_t unit) {
  return unit >= kFirstSyllable && unit < kFirstSyllable + kSyllables;
}
[[nodiscard]] constexpr bool isVowelLetter(char16_t unit) {
  return unit >= kFirstVowelLetter && unit < kFirstVowelLetter + kVowels;
}

/// The first of the syllables that begin with the consonant `letter`; 0 when none does.
[[nodiscard]] constexpr char16_t firstSyllableOf(char16_t letter) {
  const std::size_t initial = kInitialLetters.find(letter);
  if (initial == std::u16string_view::npos) return 0;
  return static_cast<char16_t>(kFirstSyllable + initial * kPerInitial);
}

/// How many vowels from `vowel` on are typed beginning with it: ㅗ leads to ㅘ, ㅙ and ㅚ.
[[nodiscard]] constexpr unsigned typedVowels(unsigned vowel) {
  constexpr std::u16string_view kLeading = u"ㅗㅜㅡ";
  const std::size_t leading = kLeading.find(static_cast<char16_t>(kFirstVowelLetter + vowel));
  return leading == std::u16string_view::npos ? 1 : leading == 2 ? 2 : 4;
}

/// The letter for a conjoining one (U+1100 to U+1112, U+1161 to U+1175, U+11A8 to U+11C2); 0 for any other unit.
[[nodiscard]] constexpr char16_t letterOfConjoining(char16_t unit) {
  if (unit >= 0x1100 && unit < 0x1100 + kInitialLetters.size()) return kInitialLetters[unit - 0x1100U];
  if (unit >= 0x1161 && unit < 0x1161 + kVowels) return static_cast<char16_t>(kFirstVowelLetter + (unit - 0x1161));
  if (unit > 0x11A7 && unit < 0x11A7 + kFinals) return kFinalLetters[unit - 0x11A7U];
  return 0;
}

}  // namespace quorvel::hangul
