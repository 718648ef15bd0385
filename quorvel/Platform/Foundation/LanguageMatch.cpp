#include <algorithm>
#include <array>

#include <unicode/uloc.h>

#include <quorvel/Platform/Foundation/LanguageMatch.h>

namespace quorvel::detail {
namespace {

struct Tag {
  std::string language;
  std::string script;
  std::string region;       // likely
  std::string givenRegion;  // empty when the name has none
  std::string givenScript;
};

struct OldName {
  std::string_view name;
  std::string_view language;
};
constexpr OldName kOldNames[] = {
    {"English", "en"}, {"French", "fr"},  {"German", "de"},     {"Italian", "it"}, {"Japanese", "ja"},
    {"Korean", "ko"},  {"Spanish", "es"}, {"Portuguese", "pt"}, {"Dutch", "nl"},   {"Chinese", "zh"},
};

using Subtag = std::array<char, ULOC_FULLNAME_CAPACITY>;
using SubtagGetter = int32_t(const char*, char*, int32_t, UErrorCode*);

std::string subtag(SubtagGetter* get, const std::string& name) {
  Subtag buffer{};
  UErrorCode status = U_ZERO_ERROR;
  get(name.c_str(), buffer.data(), static_cast<int32_t>(buffer.size()) - 1, &status);
  return U_SUCCESS(status) ? std::string(buffer.data()) : std::string();
}

/// The name without encoding; a modifier that names a script becomes a subtag.
std::string withoutEncoding(std::string_view name) {
  const std::string_view modifier = name.substr(std::min(name.find('@'), name.size()));
  std::string result(name.substr(0, name.find_first_of(".@")));
  const std::string_view script = modifier == "@latin" ? "_Latn" : modifier == "@cyrillic" ? "_Cyrl" : "";
  return result.insert(std::min(result.find('_'), result.size()), script);
}

Tag tagOf(const std::string& name) {
  const auto* old = std::find_if(std::begin(kOldNames), std::end(kOldNames),
                                 [&](const OldName& candidate) { return candidate.name == name; });
  const std::string known = old != std::end(kOldNames) ? std::string(old->language) : name;
  const std::string likely = subtag(uloc_addLikelySubtags, known);
  const auto script = [](const std::string& from) { return subtag(uloc_getScript, from); };
  const auto region = [](const std::string& from) { return subtag(uloc_getCountry, from); };
  return {subtag(uloc_getLanguage, likely), script(likely), region(likely), region(known), script(known)};
}

/// 0 when the localisation does not fit.
int fitness(const Tag& wanted, const Tag& offered) {
  if (wanted.language.empty() || wanted.language != offered.language || wanted.script != offered.script) return 0;
  if (wanted.givenRegion == offered.givenRegion && wanted.givenScript == offered.givenScript) return 4;
  if (offered.givenRegion.empty()) return 2;
  return offered.region == wanted.region ? 3 : 1;
}

}  // namespace

std::vector<std::string> userLanguages(std::string_view language, std::string_view locale) {
  const std::string last = withoutEncoding(locale);
  if (last == "C" || last == "POSIX") return {};
  std::vector<std::string> result;
  while (!language.empty()) {
    const std::size_t end = std::min(language.find(':'), language.size());
    if (end > 0) result.push_back(withoutEncoding(language.substr(0, end)));
    language.remove_prefix(std::min(end + 1, language.size()));
  }
  if (!last.empty()) result.push_back(last);
  return result;
}

std::vector<String> matchLocalizations(const std::vector<std::string>& languages,
                                       const std::vector<String>& localizations) {
  std::vector<Tag> offered;
  offered.reserve(localizations.size());
  for (const String& name : localizations) offered.push_back(name == u"Base" ? Tag{} : tagOf(name.toUTF8Replacing()));
  std::vector<String> result;
  for (const std::string& language : languages) {
    const Tag wanted = tagOf(language);
    int best = 0;
    std::size_t place = 0;
    for (std::size_t i = 0; i < offered.size(); ++i) {
      const int fits = fitness(wanted, offered[i]);
      if (fits > best) place = i;
      best = std::max(best, fits);
    }
    if (best > 0 && std::find(result.begin(), result.end(), localizations[place]) == result.end()) {
      result.push_back(localizations[place]);
    }
  }
  return result;
}

}  // namespace quorvel::detail
