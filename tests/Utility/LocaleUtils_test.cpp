#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

#include <quorvel/Extensions/Foundation/NSBundle+Extension.h>
#include <quorvel/Platform/Foundation/NSBundle.h>
#include <quorvel/Utility/LocaleUtils.h>

namespace quorvel {
namespace {

struct CodeRow {
  StringView identifier;
  String code;
  const char* why;
};

TEST(LocaleUtils, TheLanguageCodeKeepsAWrittenScriptOnly) {
  const CodeRow rows[] = {
      {u"zh-Hans", u"zh-Hans", "as the folder is named"},
      {u"zh-Hant-TW", u"zh-Hant", "the region goes"},
      {u"zh_hant_TW", u"zh-Hant", "in its usual case"},
      {u"zh_CN", u"zh", "none is inferred from the region"},
      {u"en-GB", u"en", "no script"},
      {u"KO", u"ko", "in lower case"},
      {u"", u"", "nothing written, not the process's own locale"},
      {nil, u"", "no identifier"},
      {u"_KR", u"", "a region alone"},
      {u"한국어", u"", "not ASCII"},
      {std::u16string_view(u"ko\0x", 4), u"", "a zero inside"},
  };
  for (const auto& [identifier, code, why] : rows) EXPECT_EQ(LocaleUtils::languageCode(identifier), code) << why;
}

TEST(LocaleUtils, OnlyFiveCodesAreSupported) {
  for (const String& code : {String(u"ko"), String(u"ja"), String(u"en"), String(u"zh-Hans"), String(u"zh-Hant")}) {
    EXPECT_EQ(LocaleUtils::isValidateSupportInApp(code), code);
  }
  for (const StringView code : {StringView(u"zh"), StringView(u"KO"), StringView(u"ko "), StringView(nil)}) {
    EXPECT_EQ(LocaleUtils::isValidateSupportInApp(code), u"en") << code;
  }
  EXPECT_EQ(LocaleUtils::systemCodeFromLocaleCode(u"zh_TW"), std::optional<String>(u"zh-Hant"));
  EXPECT_EQ(LocaleUtils::systemCodeFromLocaleCode(u"fr_FR"), std::optional<String>(u"fr_FR"));
  EXPECT_EQ(LocaleUtils::systemCodeFromLocaleCode(u"zh-TW"), std::optional<String>(u"zh-TW")) << "literally";
  EXPECT_EQ(LocaleUtils::systemCodeFromLocaleCode(nil), std::nullopt);
}

/// A main bundle of its own with five localisations, and the user's languages put back afterwards.
class MainBundle : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "quorvel-locale-XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    for (const char* name : {"en", "ko", "ja", "zh-Hans", "zh-Hant", "Base"}) {
      std::filesystem::create_directory(folder_ / (std::string(name) + ".lproj"));
    }
    for (const char* name : {"LANGUAGE", "LC_ALL"}) {
      const char* value = std::getenv(name);
      saved_.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
      unsetenv(name);
    }
  }
  void TearDown() override {
    for (const auto& [name, value] : saved_) value ? setenv(name, value->c_str(), 1) : unsetenv(name);
    NSBundle::setMain(before_);
    LocaleUtils::forcelyRefreshedLanguage();
    std::filesystem::remove_all(folder_);
  }
  void use(const char* locale) {
    setenv("LC_ALL", locale, 1);
    NSBundle::setMain(NSBundle::at(folder_.string()));
    LocaleUtils::forcelyRefreshedLanguage();
  }
  void write(const std::string& name, const std::string& text) {
    std::ofstream(folder_ / name, std::ios::binary) << text;
  }

  std::filesystem::path folder_;
  NSBundle before_ = NSBundle::main();
  std::vector<std::pair<const char*, std::optional<std::string>>> saved_;
};

struct LanguageRow {
  const char* locale;
  String code;
  std::int64_t index;
  String localeCode;
  String region;
  String notice;
};

TEST_F(MainBundle, TheUsersLanguageGivesAllCodes) {
  const LanguageRow rows[] = {
      {"ko_KR.UTF-8", u"ko", 1, u"ko_KR", u"KR", u"ko-KR"},
      {"ja_JP", u"ja", 2, u"ja_JP", u"JP", u"ja-JP"},
      {"zh_CN.UTF-8", u"zh-Hans", 3, u"zh_CN", u"CN", u"zh-CN"},
      {"zh_HK", u"zh-Hant", 4, u"zh_TW", u"TW", u"zh-TW"},
      {"en_GB", u"en", 0, u"en_US", u"US", u"en-US"},
      {"fr_FR", u"en", 0, u"en_US", u"US", u"en-US"},
  };
  for (const auto& [locale, code, index, localeCode, region, notice] : rows) {
    use(locale);
    EXPECT_EQ(LocaleUtils::languageCode(), code) << locale;
    EXPECT_EQ(LocaleUtils::deviceLanguage(), index) << locale;
    EXPECT_EQ(LocaleUtils::localeCode(), localeCode) << locale;
    EXPECT_EQ(LocaleUtils::localeCodeForISO3166alpha2(), region) << locale;
    EXPECT_EQ(LocaleUtils::languageCodeForVelkaNotice(), notice) << locale;
  }
}

TEST_F(MainBundle, TheLanguageIsKeptUntilItIsRefreshed) {
  use("ko_KR");
  setenv("LC_ALL", "ja_JP", 1);
  NSBundle::setMain(NSBundle::at(folder_.string()));
  EXPECT_EQ(LocaleUtils::languageCode(), u"ko");
  LocaleUtils::forcelyRefreshedLanguage();
  EXPECT_EQ(LocaleUtils::languageCode(), u"ja");
  const Dictionary map = LocaleUtils::preferredLanguageIndexMap();
  use("zh_TW");
  EXPECT_TRUE(LocaleUtils::preferredLanguageIndexMap().isSameAs(map)) << "built once";
}

TEST_F(MainBundle, ThreadsReadWholeCodesWhileOthersRefresh) {
  use("zh_CN");
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&wrong, i] {
      for (int n = 0; n < 300; ++n) {
        if (i == 0) LocaleUtils::forcelyRefreshedLanguage();
        wrong += LocaleUtils::languageCode() != u"zh-Hans" || LocaleUtils::localeCode() != u"zh_CN";
        wrong += LocaleUtils::preferredLanguageIndexMap().isEmpty();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

TEST_F(MainBundle, FactsComeFromTheInformationAndItsLocalizedForm) {
  write("Info.plist",
        "<plist><dict><key>CFBundleVersion</key><string>42</string><key>CFBundleShortVersionString</key><integer>2"
        "</integer><key>CFBundleName</key><string>plain</string><key>CFBundleDisplayName</key><string>shown</string>"
        "<key>Shared-AppGroup</key><string>group.a</string></dict></plist>");
  write("ko.lproj/InfoPlist.strings", "CFBundleName = \"이름\"; CFBundleVersion = \"43\";");
  use("ko_KR");
  using Text = std::optional<String>;
  EXPECT_EQ(NSBundleExtension::bundleVersion(), Text(u"42")) << "never the localised one";
  EXPECT_EQ(NSBundleExtension::bundleShortVersion(), Text()) << "a number is no string";
  EXPECT_EQ(NSBundleExtension::bundleName(), Text(u"이름"));
  EXPECT_EQ(NSBundleExtension::bundleDisplayName(), Text(u"shown")) << "not in the localised form";
  EXPECT_EQ(NSBundleExtension::keychainAccessGroup(), Text());
  EXPECT_EQ(NSBundleExtension::appGroup(), Text(u"group.a"));
  use("ja_JP");
  EXPECT_EQ(NSBundleExtension::bundleName(), Text(u"plain"));
}

}  // namespace
}  // namespace quorvel
