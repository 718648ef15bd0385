// Which localisation fits a user's language. Included by sources of the platform and tests alone.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <quorvel/Platform/Foundation/String.h>

namespace quorvel::detail {

/// The user's languages, best first, as POSIX locale names without encoding: those of `language` (LANGUAGE, names
/// between colons), then `locale`; only `locale`, or nothing, when that is C or POSIX.
[[nodiscard]] std::vector<std::string> userLanguages(std::string_view language, std::string_view locale);

/// For each language the localisation that fits best, without repetition: the same language and script after adding
/// likely subtags, among those the same name, the same region, no region, another region. Names of localisations are
/// BCP 47 tags, with "_" for "-" too, or old English names of languages.
[[nodiscard]] std::vector<String> matchLocalizations(const std::vector<std::string>& languages,
                                                     const std::vector<String>& localizations);

}  // namespace quorvel::detail
