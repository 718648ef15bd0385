#include <algorithm>
#include <mutex>

#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Platform/Foundation/NSLocale.h>
#include <quorvel/Utility/LocaleUtils.h>

namespace quorvel {
namespace {

struct Language {
  StringView code;
  std::int64_t index;
  StringView locale;
  StringView region;
};

constexpr Language kLanguages[] = {
    {u"en", 0, u"en_US", u"US"},      {u"ko", 1, u"ko_KR", u"KR"},      {u"ja", 2, u"ja_JP", u"JP"},
    {u"zh-Hans", 3, u"zh_CN", u"CN"}, {u"zh-Hant", 4, u"zh_TW", u"TW"},
};

/// The entry of the language in use; that of English for any that is not supported.
const Language& supported(StringView code) {
  const auto* found = std::find_if(std::begin(kLanguages), std::end(kLanguages),
                                   [code](const Language& language) { return language.code == code; });
  return found == std::end(kLanguages) ? kLanguages[0] : *found;
}

/// The language in use. Whoever asks first computes it, while the others wait.
struct Current {
  std::mutex mutex;
  const Language* language = nullptr;
};

Current& current() {
  static Current holder;
  return holder;
}

const Language& preferredLanguage() {
  const std::vector<String> preferred = NSBundle::main().preferredLocalizations();
  return supported(LocaleUtils::languageCode(preferred.empty() ? StringView(nil) : StringView(preferred.front())));
}

const Language& languageInUse() {
  Current& holder = current();
  const std::lock_guard guard(holder.mutex);
  if (!holder.language) holder.language = &preferredLanguage();
  return *holder.language;
}

}  // namespace

String LocaleUtils::languageCode() { return languageInUse().code; }

void LocaleUtils::forcelyRefreshedLanguage() {
  Current& holder = current();
  const std::lock_guard guard(holder.mutex);
  holder.language = &preferredLanguage();
}

String LocaleUtils::languageCode(StringView localeIdentifier) {
  const NSLocale locale = NSLocale::withIdentifier(localeIdentifier);
  const String script = locale.scriptCode();
  StringBuilder code;
  code.append(locale.languageCode());
  if (!script.isEmpty()) {
    code.append(u'-');
    code.append(script);
  }
  return code.finish();
}

String LocaleUtils::isValidateSupportInApp(StringView languageCode) { return supported(languageCode).code; }

String LocaleUtils::localeCode() { return languageInUse().locale; }

String LocaleUtils::localeCodeForISO3166alpha2() { return languageInUse().region; }

String LocaleUtils::languageCodeForVelkaNotice() {
  const StringView locale = languageInUse().locale;
  return String::build(locale.size(), [locale](char16_t* out) {
    std::replace_copy(locale.begin(), locale.end(), out, u'_', u'-');
    return locale.size();
  });
}

std::int64_t LocaleUtils::deviceLanguage() { return languageInUse().index; }

Dictionary LocaleUtils::preferredLanguageIndexMap() {
  static const Dictionary map = [] {
    Dictionary numbered{{languageCode(), 0}};
    for (const String& name : NSBundle::main().localizations()) {
      numbered.insert(name, static_cast<std::int64_t>(numbered.size()));
    }
    return numbered;
  }();
  return map;
}

std::optional<String> LocaleUtils::systemCodeFromLocaleCode(StringView localeCode) {
  if (localeCode.isNil()) return nil;
  for (const Language& language : kLanguages) {
    if (language.locale == localeCode) return String(language.code);
  }
  return String(localeCode);
}

}  // namespace quorvel
