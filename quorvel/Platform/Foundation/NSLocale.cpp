#include <algorithm>
#include <array>

#include <unicode/uloc.h>

#include <quorvel/Platform/Foundation/NSLocale.h>

namespace quorvel {
namespace {

using SubtagGetter = int32_t(const char*, char*, int32_t, UErrorCode*);

String subtag(SubtagGetter* get, const std::string& identifier) {
  std::array<char, ULOC_FULLNAME_CAPACITY> buffer{};
  UErrorCode status = U_ZERO_ERROR;
  const int32_t size = get(identifier.c_str(), buffer.data(), static_cast<int32_t>(buffer.size()), &status);
  if (U_FAILURE(status) || status == U_STRING_NOT_TERMINATED_WARNING) return {};
  return String::fromASCII({buffer.data(), static_cast<std::size_t>(size)});
}

}  // namespace

NSLocale NSLocale::withIdentifier(StringView identifier) {
  std::string ascii;
  for (const char16_t unit : identifier) {
    if (unit == 0 || unit >= 0x80) return NSLocale({});
    ascii += static_cast<char>(unit);
  }
  return NSLocale(std::move(ascii));
}

// An empty identifier would stand for ICU's default locale.
String NSLocale::languageCode() const { return identifier_.empty() ? String() : subtag(uloc_getLanguage, identifier_); }

String NSLocale::scriptCode() const { return identifier_.empty() ? String() : subtag(uloc_getScript, identifier_); }

}  // namespace quorvel
