// The rules of text matching carried out word by word, place by place, to hold the fast matcher against.
#pragma once

#include <string>
#include <vector>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <quorvel/Platform/Foundation/CanonicalText.h>
#include <quorvel/Platform/Foundation/TextMatcher.h>

namespace quorvel::test {

class NaiveMatch {
 public:
  NaiveMatch(StringView term, MatchOptions options) : options_(options) {
    if (term.size() > 128) options_.partialHangul = false;
    for (const Sequence& sequence : sequences(term)) term_ += sequence.form;
  }

  [[nodiscard]] std::vector<NSRange> ranges(StringView text) const {
    std::vector<NSRange> result;
    const std::vector<Sequence> all = sequences(text);
    for (std::size_t i = 0; i < all.size() && !term_.empty();) {
      const std::size_t end = all[i].form.empty() ? 0 : matchEnd(all, i);
      if (end > 0) result.push_back({all[i].start, all[end - 1].end - all[i].start});
      i = end > 0 ? end : i + 1;
    }
    return result;
  }

 private:
  struct Sequence {
    std::size_t start;
    std::size_t end;
    std::u16string form;
  };

  [[nodiscard]] std::vector<Sequence> sequences(StringView text) const {
    std::vector<Sequence> result;
    for (std::size_t start = 0, end = 0; start < text.size(); start = end) {
      const auto isInside = [&] {
        const bool isSoundMark = options_.ignoresWidth && (text[end] == 0xFF9E || text[end] == 0xFF9F);
        return end < text.size() && (isSoundMark || !isSequenceBoundary(text, end));
      };
      for (end = start + 1; end < text.size() && isInside();) ++end;
      result.push_back({start, end, formOf(text.sub(start, end - start))});
    }
    return result;
  }

  [[nodiscard]] std::u16string formOf(StringView sequence) const {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2& nfc = *icu::Normalizer2::getNFCInstance(status);
    const icu::Normalizer2& nfd = *icu::Normalizer2::getNFDInstance(status);
    const icu::Normalizer2& nfkc = *icu::Normalizer2::getNFKCInstance(status);
    icu::UnicodeString wide;
    const icu::UnicodeString source(false, sequence.data(), static_cast<int32_t>(sequence.size()));
    for (int32_t i = 0; i < source.length(); i = source.moveIndex32(i, 1)) {
      const UChar32 scalar = source.char32At(i);
      const int32_t type = u_getIntPropertyValue(scalar, UCHAR_DECOMPOSITION_TYPE);
      icu::UnicodeString plain;
      const bool isWide = options_.ignoresWidth && (type == U_DT_WIDE || type == U_DT_NARROW);
      if (isWide && nfkc.getRawDecomposition(scalar, plain)) {
        wide.append(plain);
      } else {
        wide.append(scalar);
      }
    }
    icu::UnicodeString form = withoutAccents(nfd.normalize(wide, status));
    if (options_.ignoresCase) form = withoutAccents(nfd.normalize(form.foldCase(), status));
    form = nfc.normalize(form, status);
    const std::u16string units(form.getBuffer(), static_cast<std::size_t>(form.length()));
    return options_.partialHangul && units.size() == 1 ? keysOfLetter(units[0]) : units;
  }
  [[nodiscard]] icu::UnicodeString withoutAccents(const icu::UnicodeString& text) const {
    if (!options_.ignoresAccents) return text;
    icu::UnicodeString kept;
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
      const UChar32 scalar = text.char32At(i);
      const int mark = u_getCombiningClass(scalar);
      const bool isAccent = mark == 1 || (mark >= 10 && mark <= 36) || (mark >= 202 && mark <= 240);
      if (!isAccent) kept.append(scalar);
    }
    return kept;
  }

  static constexpr std::u16string_view kInitials = u"ㄱㄲㄴㄷㄸㄹㅁㅂㅃㅅㅆㅇㅈㅉㅊㅋㅌㅍㅎ";
  static constexpr std::u16string_view kVowels[] = {u"ㅏ",   u"ㅐ",   u"ㅑ",   u"ㅒ",   u"ㅓ",   u"ㅔ",   u"ㅕ",
                                                    u"ㅖ",   u"ㅗ",   u"ㅗㅏ", u"ㅗㅐ", u"ㅗㅣ", u"ㅛ",   u"ㅜ",
                                                    u"ㅜㅓ", u"ㅜㅔ", u"ㅜㅣ", u"ㅠ",   u"ㅡ",   u"ㅡㅣ", u"ㅣ"};
  static constexpr std::u16string_view kFinals[] = {u"",     u"ㄱ",   u"ㄲ",   u"ㄱㅅ", u"ㄴ",   u"ㄴㅈ", u"ㄴㅎ",
                                                    u"ㄷ",   u"ㄹ",   u"ㄹㄱ", u"ㄹㅁ", u"ㄹㅂ", u"ㄹㅅ", u"ㄹㅌ",
                                                    u"ㄹㅍ", u"ㄹㅎ", u"ㅁ",   u"ㅂ",   u"ㅂㅅ", u"ㅅ",   u"ㅆ",
                                                    u"ㅇ",   u"ㅈ",   u"ㅊ",   u"ㅋ",   u"ㅌ",   u"ㅍ",   u"ㅎ"};

  static bool isSyllable(char16_t unit) { return unit >= 0xAC00 && unit <= 0xD7A3; }
  /// The keys that are pressed for a syllable; a letter by itself.
  static std::u16string keys(char16_t unit) {
    if (!isSyllable(unit)) return {unit};
    const unsigned index = unit - 0xAC00U;
    std::u16string result(1, kInitials[index / 588]);
    return result.append(kVowels[index % 588 / 28]).append(kFinals[index % 28]);
  }
  /// A conjoining letter by itself as the ordinary one; consonant letters of two keys as two letters.
  static std::u16string keysOfLetter(char16_t unit) {
    if (unit >= 0x1100 && unit <= 0x1112) return {kInitials[unit - 0x1100U]};
    if (unit >= 0x1161 && unit <= 0x1175) return {static_cast<char16_t>(unit - 0x1161 + 0x314F)};
    if (unit >= 0x11A8 && unit <= 0x11C2) return std::u16string(kFinals[unit - 0x11A7U]);
    constexpr std::u16string_view kLetters = u"ㄳㄵㄶㄺㄻㄼㄽㄾㄿㅀㅄ";
    constexpr std::u16string_view kKeys[] = {u"ㄱㅅ", u"ㄴㅈ", u"ㄴㅎ", u"ㄹㄱ", u"ㄹㅁ", u"ㄹㅂ",
                                             u"ㄹㅅ", u"ㄹㅌ", u"ㄹㅍ", u"ㄹㅎ", u"ㅂㅅ"};
    const std::size_t place = kLetters.find(unit);
    return place == std::u16string_view::npos ? std::u16string(1, unit) : std::u16string(kKeys[place]);
  }

  /// How many sequences from the start on, up to which one, are the term; 0 when they are not.
  [[nodiscard]] std::size_t matchEnd(const std::vector<Sequence>& all, std::size_t from) const {
    std::u16string units;
    for (std::size_t i = from; i < all.size() && units.size() <= term_.size(); ++i) {
      units += all[i].form;
      if (isTerm(units)) return i + 1;
    }
    return 0;
  }
  [[nodiscard]] bool isTerm(const std::u16string& units) const {
    if (!options_.partialHangul) return units == term_;
    const std::size_t last = term_.size() - 1;
    if (units.size() < term_.size() || units.size() > term_.size() + 1) return false;
    for (std::size_t i = 0; i < last; ++i) {
      if (!stands(term_[i], units[i])) return false;
    }
    return endsAs(term_[last], std::u16string_view(units).substr(last));
  }
  static bool stands(char16_t wanted, char16_t unit) {
    return unit == wanted || (isSyllable(unit) && keys(unit)[0] == wanted);
  }
  /// The last of the term: what is typed beginning with its keys.
  static bool endsAs(char16_t wanted, std::u16string_view units) {
    if (isSyllable(wanted)) {
      if (!isSyllable(units[0]) || (units.size() == 2 && (wanted - 0xAC00) % 28 == 0)) return false;
      std::u16string typed = keys(units[0]);
      if (units.size() == 2 && typed.starts_with(keys(wanted))) return false;
      if (units.size() == 2) typed += keys(units[1]);
      return typed.starts_with(keys(wanted));
    }
    if (units.size() == 2) return false;
    const bool areVowels = wanted >= 0x314F && wanted <= 0x3163 && units[0] >= 0x314F && units[0] <= 0x3163;
    if (areVowels) return kVowels[units[0] - 0x314FU].starts_with(kVowels[wanted - 0x314FU]);
    return stands(wanted, units[0]);
  }

  MatchOptions options_;
  std::u16string term_;
};

}  // namespace quorvel::test
