#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Utility/LocaleUtils.h>

namespace quorvel::command {
namespace {

constexpr const char* kFamily = "LocaleUtils";

using InUse = String (*)();
using OfIdentifier = String (*)(StringView);

constexpr Operation kRows[] = {
    op<static_cast<InUse>(&LocaleUtils::languageCode)>(kFamily, "languageCode", "", "the supported language in use"),
    op<[] {
      LocaleUtils::forcelyRefreshedLanguage();
      return Value(null);
    }>(kFamily, "forcelyRefreshedLanguage", "", "asks for the user's language anew; no result"),
    op<static_cast<OfIdentifier>(&LocaleUtils::languageCode)>(kFamily, "languageCode:", "localeIdentifier",
                                                              "the language and the script that is written",
                                                              R"(["zh-Hant-TW"])"),
    op<&LocaleUtils::isValidateSupportInApp>(kFamily, "isValidateSupportInApp:", "languageCode",
                                             "the code itself, or en when it is not supported", R"(["fr"])"),
    op<&LocaleUtils::localeCode>(kFamily, "localeCode", "", "the language in use with its region"),
    op<&LocaleUtils::localeCodeForISO3166alpha2>(kFamily, "localeCodeForISO3166alpha2", "",
                                                 "the region of the language in use"),
    op<&LocaleUtils::languageCodeForVelkaNotice>(kFamily, "languageCodeForVelkaNotice", "", "localeCode with a hyphen"),
    op<&LocaleUtils::deviceLanguage>(kFamily, "deviceLanguage", "", "the number of the language in use"),
    op<&LocaleUtils::preferredLanguageIndexMap>(kFamily, "preferredLanguageIndexMap", "",
                                                "the main bundle's localisations, numbered"),
    op<&LocaleUtils::systemCodeFromLocaleCode>(kFamily, "systemCodeFromLocaleCode:", "localeCode",
                                               "the language of a locale code", R"(["zh_TW"])"),
};

}  // namespace

std::span<const Operation> localeOperations() { return kRows; }

}  // namespace quorvel::command
