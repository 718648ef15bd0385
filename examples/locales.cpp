// The language that an application speaks, for users of several locales.
#include <cstdlib>
#include <filesystem>
#include <iostream>

#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Utility/LocaleUtils.h>

using namespace quorvel;

int main() {
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "quorvel-example-locales";
  for (const char* language : {"en", "ko", "ja", "zh-Hans", "zh-Hant"}) {
    std::filesystem::create_directories(folder / (std::string(language) + ".lproj"));
  }
  unsetenv("LANGUAGE");
  for (const char* locale : {"ko_KR.UTF-8", "zh_HK.UTF-8", "zh_CN.UTF-8", "en_GB.UTF-8", "fr_FR.UTF-8"}) {
    setenv("LC_ALL", locale, 1);
    NSBundle::setMain(NSBundle::at(folder.string()));
    LocaleUtils::forcelyRefreshedLanguage();
    std::cout << locale << ": " << LocaleUtils::languageCode() << ' ' << LocaleUtils::localeCode() << ' '
              << LocaleUtils::localeCodeForISO3166alpha2() << ' ' << LocaleUtils::languageCodeForVelkaNotice() << ' '
              << LocaleUtils::deviceLanguage() << '\n';
  }
  for (const StringView identifier : std::initializer_list<StringView>{u"zh-Hant-TW", u"en-GB", u"KO"}) {
    std::cout << identifier << ": " << LocaleUtils::languageCode(identifier) << '\n';
  }
  std::cout << LocaleUtils::isValidateSupportInApp(u"fr") << ' ' << LocaleUtils::systemCodeFromLocaleCode(u"zh_TW")
            << '\n';
  std::filesystem::remove_all(folder);
}
