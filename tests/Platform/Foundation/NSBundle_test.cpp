#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tests/support/BundleFolder.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/Foundation/LanguageMatch.h>
#include <quorvel/Platform/Foundation/Limits.h>

namespace quorvel {
namespace {

TEST(NSBundle, MatchesLanguagesWithoutMixingScripts) {
  const std::vector<String> chinese{u"Base", u"en", u"zh-Hans", u"zh-Hant"};
  const test::Row<const char*, const char*, std::vector<String>, std::vector<String>, test::Why> rows[] = {
      {"", "zh_CN.UTF-8", chinese, {u"zh-Hans"}, "China writes simplified"},
      {"", "zh_HK.UTF-8", chinese, {u"zh-Hant"}, "Hong Kong writes traditional"},
      {"", "zh", chinese, {u"zh-Hans"}, "zh alone is simplified"},
      {"zh_TW:en", "", {u"en", u"zh-Hans"}, {u"en"}, "another script is no match"},
      {"", "zh_TW", {u"zh_CN", u"zh_TW"}, {u"zh_TW"}, "folder names with an underscore"},
      {"", "en_GB", {u"en", u"en-GB", u"en-US"}, {u"en-GB"}, "the same region"},
      {"", "en_NZ", {u"en-US", u"en"}, {u"en"}, "no region before another one"},
      {"", "en", {u"en-GB", u"en-US"}, {u"en-US"}, "the likely region before another one"},
      {"", "de_AT", {u"English", u"German"}, {u"German"}, "old names"},
      {"ko:fr", "de_DE", {u"de", u"fr"}, {u"fr", u"de"}, "in the order of the user's languages"},
      {"fr", "C", {u"fr"}, {}, "C turns languages off"},
      {"", "POSIX.UTF-8", {u"en"}, {}, "so does POSIX"},
      {":", "sr_RS@latin", {u"sr", u"sr-Latn"}, {u"sr-Latn"}, "a modifier that names a script"},
      {"", "\xFF_\xFF", {u"en"}, {}, "no locale at all"},
      {"", "", {u"Base"}, {}, "nothing asked for"},
  };
  for (const auto& [language, locale, localizations, preferred, why] : rows) {
    EXPECT_EQ(detail::matchLocalizations(detail::userLanguages(language, locale), localizations), preferred) << why;
  }
}

using test::BundleFolder;

TEST_F(BundleFolder, LooksInThePreferredLocalizationThenAtTheTop) {
  write("ko.lproj/Localizable.strings", "\"hello\" = \"안녕\"; \"empty\" = \"\";");
  write("en.lproj/Localizable.strings", "\"hello\" = \"Hello\";");
  write("Localizable.strings", "\"hello\" = \"top\"; \"only\" = \"top\";");
  write("Other.strings", "\"hello\" = \"other\";");
  setenv("LANG", "ko_KR.UTF-8", 1);
  const NSBundle bundle = NSBundle::at(folder_.string());
  EXPECT_EQ(bundle.localizations(), (std::vector<String>{u"en", u"ko"}));
  EXPECT_EQ(bundle.preferredLocalizations(), (std::vector<String>{u"ko"}));
  EXPECT_EQ(bundle.localizedString(u"hello", nil, nil), u"안녕");
  EXPECT_EQ(bundle.localizedString(u"only", u"", nil), u"top");
  EXPECT_EQ(bundle.localizedString(u"empty", u"v", nil), u"");
  EXPECT_EQ(bundle.localizedString(u"hello", nil, u"Other"), u"other");
  EXPECT_EQ(bundle.localizedString(u"missing", nil, nil), u"missing");
  EXPECT_EQ(bundle.localizedString(u"missing", u"value", nil), u"value");
  EXPECT_EQ(bundle.localizedString(u"hello", nil, u"ko.lproj/Localizable"), u"hello") << "a name is no path";
  setenv("LC_ALL", "fr_FR", 1);
  EXPECT_EQ(NSBundle::at(folder_.string()).preferredLocalizations(), (std::vector<String>{u"en"})) << "else the first";
  EXPECT_EQ(NSBundle::at("/nowhere/at/all").localizedString(u"k", nil, nil), u"k");
}

TEST_F(BundleFolder, PassesOverWhatIsNoSmallRegularFile) {
  ASSERT_EQ(mkfifo((folder_ / "Pipe.strings").c_str(), 0600), 0);
  std::filesystem::create_directory(folder_ / "Folder.strings");
  std::filesystem::create_symlink("/dev/zero", folder_ / "Device.strings");
  write("Large.strings", "\"k\" = \"v\";" + std::string(limits::kResourceFileBytes, ' '));
  write("Broken.strings", "\"k\" = \"v\"");
  write("Real.strings", "\"k\" = \"v\";");
  std::filesystem::create_symlink("Real.strings", folder_ / "Link.strings");
  const NSBundle bundle = NSBundle::at(folder_.string());
  for (const char16_t* name : {u"Pipe", u"Folder", u"Device", u"Large", u"Broken"}) {
    const String table = std::u16string(name);
    EXPECT_EQ(bundle.localizedString(u"k", nil, table), u"k") << table;
  }
  EXPECT_EQ(bundle.localizedString(u"k", nil, u"Link"), u"v");
}

TEST_F(BundleFolder, MainIsWhatWasSet) {
  write("Localizable.strings", "\"k\" = \"v\";");
  NSBundle::setMain(NSBundle::at(folder_.string()));
  EXPECT_EQ(NSBundle::main().localizedString(u"k", nil, nil), u"v");
  std::filesystem::remove(folder_ / "Localizable.strings");
  EXPECT_EQ(NSBundle::main().localizedString(u"k", nil, nil), u"v") << "not read again";
}

}  // namespace
}  // namespace quorvel
