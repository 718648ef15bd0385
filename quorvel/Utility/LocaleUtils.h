// LocaleUtils: which of the five supported languages is in use, and the codes that go with it.
// Not here: how the bundle's localisation is chosen (NSBundle.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

/// All operations may be called from any thread, refreshing included.
class LocaleUtils {
 public:
  LocaleUtils() = delete;

  /// `languageCode`: "en", "ko", "ja", "zh-Hans" or "zh-Hant"; computed on the first call and kept.
  [[nodiscard]] static String languageCode();
  /// `forcelyRefreshedLanguage`: computes the language anew, from the first of the main bundle's preferred
  /// localisations.
  static void forcelyRefreshedLanguage();

  /// `languageCode:`: the language of a locale identifier, with "-" and the script where one is written. Empty for nil.
  ///
  ///     LocaleUtils::languageCode(u"zh-Hant-TW")   // "zh-Hant"
  [[nodiscard]] static String languageCode(StringView localeIdentifier);
  /// `isValidateSupportInApp:`: the argument when it is a supported language code, else "en".
  [[nodiscard]] static String isValidateSupportInApp(StringView languageCode);

  /// `localeCode`: the language in use with its region: "en_US", "ko_KR", "ja_JP", "zh_CN", "zh_TW".
  [[nodiscard]] static String localeCode();
  /// `localeCodeForISO3166alpha2`: the region alone: "US", "KR", "JP", "CN", "TW".
  [[nodiscard]] static String localeCodeForISO3166alpha2();
  /// `languageCodeForVelkaNotice`: `localeCode` with "-" for "_".
  [[nodiscard]] static String languageCodeForVelkaNotice();
  /// `deviceLanguage`: 0 for "en", 1 "ko", 2 "ja", 3 "zh-Hans", 4 "zh-Hant".
  [[nodiscard]] static std::int64_t deviceLanguage();

  /// `preferredLanguageIndexMap`: the language in use under 0, then the main bundle's other localisations in their
  /// order from 1 on. Built on the first call and never again.
  [[nodiscard]] static Dictionary preferredLanguageIndexMap();

  /// `systemCodeFromLocaleCode:`: the language of one of the five locale codes, 'zh-Hant' for 'zh_TW'; any other text
  /// is answered as it is, nil as nil.
  [[nodiscard]] static std::optional<String> systemCodeFromLocaleCode(StringView localeCode);
};

}  // namespace quorvel
