#include <quorvel/Extensions/Foundation/NSBundle+Extension.h>
#include <quorvel/Platform/Foundation/NSBundle.h>

namespace quorvel::NSBundleExtension {
namespace {

std::optional<String> textOf(const Dictionary& information, StringView key) {
  const String* text = information[key].asString();
  return text ? std::optional<String>(*text) : std::nullopt;
}
std::optional<String> plain(StringView key) { return textOf(NSBundle::main().infoDictionary(), key); }
std::optional<String> localized(StringView key) { return textOf(NSBundle::main().localizedInfoDictionary(), key); }

}  // namespace

std::optional<String> bundleVersion() { return plain(u"CFBundleVersion"); }
std::optional<String> bundleShortVersion() { return plain(u"CFBundleShortVersionString"); }
std::optional<String> bundleName() { return localized(u"CFBundleName"); }
std::optional<String> bundleDisplayName() { return localized(u"CFBundleDisplayName"); }
std::optional<String> keychainAccessGroup() { return plain(u"KeyChain-AccessGroup"); }
std::optional<String> appGroup() { return plain(u"Shared-AppGroup"); }

}  // namespace quorvel::NSBundleExtension
