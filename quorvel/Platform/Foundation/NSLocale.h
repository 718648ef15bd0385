// NSLocale: what a locale's identifier says.
// Not here: which localisation fits a user (LanguageMatch.h), which languages an application supports (LocaleUtils.h).
#pragma once

#include <string>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel {

class NSLocale {
 public:
  /// `localeWithLocaleIdentifier:`: a locale of any identifier, with "-" or "_" between its parts. What is not ASCII,
  /// and nil, has no parts.
  [[nodiscard]] static NSLocale withIdentifier(StringView identifier);

  /// `NSLocaleLanguageCode`: in lower case, two letters where the language has such a code; empty when there is none.
  [[nodiscard]] String languageCode() const;
  /// `NSLocaleScriptCode`: only a script that the identifier writes, as in 'Hans'; empty when there is none.
  [[nodiscard]] String scriptCode() const;

 private:
  explicit NSLocale(std::string identifier) : identifier_(std::move(identifier)) {}
  std::string identifier_;
};

}  // namespace quorvel
