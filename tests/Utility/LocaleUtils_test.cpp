#include <atomic>

#include <gtest/gtest.h>
#include <tests/support/BundleFolder.h>
#include <tests/support/Crowd.h>
#include <tests/support/Row.h>

#include <quorvel/Extensions/Foundation/NSBundle+Extension.h>
#include <quorvel/Utility/LocaleUtils.h>

namespace quorvel {
namespace {

TEST(LocaleUtils, TheLanguageCodeKeepsAWrittenScriptOnly) {
  const test::Row<StringView, String, test::Why> rows[] = {
      {u"zh-Hans", u"zh-Hans", "as the folder is named"},
      {u"zh-Hant-TW", u"zh-Hant", "the region goes"},
      {u"zh_hant_TW", u"zh-Hant", "in its usual case"},
      {u"zh_CN", u"zh", "none is inferred from the region"},
      {u"KO", u"ko", "in lower case"},
      {u"", u"", "nothing written, not the process's own locale"},
      {nil, u"", "no identifier"},
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

/// A main bundle of its own with five localisations.
class MainBundle : public test::BundleFolder {
 protected:
  void SetUp() override {
    BundleFolder::SetUp();
    for (const char* name : {"en", "ko", "ja", "zh-Hans", "zh-Hant", "Base"}) {
      std::filesystem::create_directory(folder_ / (std::string(name) + ".lproj"));
    }
  }
  void TearDown() override {
    BundleFolder::TearDown();
    LocaleUtils::forcelyRefreshedLanguage();
  }
  void use(const char* locale) {
    setenv("LC_ALL", locale, 1);
    NSBundle::setMain(NSBundle::at(folder_.string()));
    LocaleUtils::forcelyRefreshedLanguage();
  }
};

TEST_F(MainBundle, TheUsersLanguageGivesAllCodes) {
  const test::Row<const char*, String, std::int64_t, String, String, String> rows[] = {
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
  test::onThreads(4, [&wrong](int i) {
    for (int n = 0; n < 300; ++n) {
      if (i == 0) LocaleUtils::forcelyRefreshedLanguage();
      wrong += LocaleUtils::languageCode() != u"zh-Hans" || LocaleUtils::localeCode() != u"zh_CN";
      wrong += LocaleUtils::preferredLanguageIndexMap().isEmpty();
    }
  });
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
