#include <limits>

#include <gtest/gtest.h>
#include <tests/support/Crowd.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/ApplicationFolders.h>
#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/Foundation/NSUserDefaults.h>

namespace quorvel {
namespace {

using test::modeOf;
using test::readFile;

class Defaults : public testing::Test {
 protected:
  [[nodiscard]] static NSUserDefaults suite(StringView name = u"group.chat") {
    return NSUserDefaults::withSuiteName(name).value();
  }
  [[nodiscard]] std::string file(const std::string& name = "group.chat.json") const {
    return folder_.path("quorvel/defaults/" + name);
  }

  test::TemporaryFolder folder_;
  test::Environment configuration_{"XDG_CONFIG_HOME", folder_.path()};
};

struct ValueRow {
  Value value;
  bool isKept;
  const char* why;
};

TEST_F(Defaults, KeepEveryPropertyValueAndRefuseOthers) {
  const std::uint8_t bytes[] = {0, 255, 10};
  const Dictionary date{{u"$date", Date{1.5}}};
  const ValueRow rows[] = {
      {u"text \x00\n\" 한", true, "text with controls"},
      {true, true, "a boolean"},
      {std::uint64_t{18446744073709551615U}, true, "an unsigned number"},
      {0.1, true, "a fraction"},
      {Date{1500000000.25}, true, "a date"},
      {Data(bytes), true, "bytes"},
      {Data(), true, "no bytes"},
      {List{1, List{Date{-1}, Data(bytes)}, Dictionary{{u"k", Date{2}}}}, true, "nested"},
      {List(), true, "an empty list"},
      {date, true, "a dictionary that looks like a stored date"},
      {Dictionary{{u"$date", 1}}, true, "the stored form itself as a value"},
      {Dictionary{{u"$dictionary", Dictionary{{u"$data", u"AA=="}}}}, true, "the escape itself as a value"},
      {Dictionary{{u"$data", u"no Base64"}, {u"b", 1}}, true, "a marked key beside another"},
      {null, false, "the null marker"},
      {List{null}, false, "a null marker inside"},
      {std::numeric_limits<double>::infinity(), false, "infinity"},
      {Date{std::numeric_limits<double>::quiet_NaN()}, false, "a date that is none"},
      {Dictionary{{1, u"a"}}, false, "a key that is no text"},
      {u"\xD800", false, "an unpaired surrogate"},
  };
  for (const auto& [value, isKept, why] : rows) {
    ASSERT_TRUE(suite().setObject(u"before", u"key")) << why;
    EXPECT_EQ(suite().setObject(value, u"key"), isKept) << why;
    const Value kept = suite().objectForKey(u"key");
    EXPECT_EQ(kept, isKept ? value : Value(u"before")) << why;
    EXPECT_EQ(kept.kind(), isKept ? value.kind() : Value::Kind::String) << why;
  }
  const auto boolean = suite().setObject(true, u"b") ? suite().objectForKey(u"b").asNumber() : nil;
  EXPECT_TRUE(boolean && boolean->isBoolean());
  EXPECT_FALSE(suite().setObject(1, nil));
  EXPECT_TRUE(suite().setObject(1, u"")) << "an empty key is a key";
  EXPECT_EQ(suite().objectForKey(u""), 1);
  EXPECT_TRUE(suite().removeObjectForKey(u"key") && suite().removeObjectForKey(u"key"));
  EXPECT_EQ(suite().dictionaryRepresentation(), (Dictionary{{u"b", true}, {u"", 1}}));
}

TEST_F(Defaults, RefuseNestingAndSizeThatCouldNotBeReadBack) {
  Value deep = List();
  for (std::size_t i = 0; i < limits::kJSONDepth - 2; ++i) deep = List{deep};
  EXPECT_TRUE(suite().setObject(deep, u"deep"));
  EXPECT_EQ(suite().objectForKey(u"deep"), deep);
  EXPECT_FALSE(suite().setObject(List{deep}, u"deep"));
  EXPECT_EQ(suite().objectForKey(u"deep"), deep);
  Value shared = u"x";
  for (int i = 0; i < 60; ++i) shared = List{shared, shared};
  EXPECT_FALSE(suite().setObject(shared, u"shared")) << "2^60 texts when written out";
  EXPECT_FALSE(suite().setObject(String(std::u16string(limits::kStoreFileBytes, u'x')), u"large"));
  EXPECT_EQ(suite().objectForKey(u"deep"), deep);
}

TEST_F(Defaults, NamesStayInTheFolder) {
  for (const char16_t* name : {u"", u".", u"..", u"../x", u"a/b", u"/etc/x", u".hidden", u"\xD800"}) {
    EXPECT_FALSE(NSUserDefaults::withSuiteName(std::u16string(name))) << String(std::u16string(name));
  }
  EXPECT_FALSE(NSUserDefaults::withSuiteName(std::u16string(u"a\0b", 3)));
  EXPECT_FALSE(NSUserDefaults::withSuiteName(std::u16string(201, u'a')));
  EXPECT_FALSE(NSUserDefaults::withSuiteName(std::u16string(101, u'é'))) << "bytes count";
  for (const char16_t* name : {u"a", u"a..b", u"한글", u"a b\n"}) {
    const auto store = NSUserDefaults::withSuiteName(std::u16string(name));
    ASSERT_TRUE(store && store->setObject(1, u"k")) << String(std::u16string(name));
    EXPECT_TRUE(S_ISREG(modeOf(file(store->suiteName() + ".json"))));
  }
  ASSERT_TRUE(NSUserDefaults::withSuiteName(nil)->setObject(7, u"own"));
  EXPECT_EQ(NSUserDefaults::standardUserDefaults().objectForKey(u"own"), 7);
  EXPECT_EQ(NSUserDefaults::standardUserDefaults().suiteName(), folders::applicationName());
}

TEST_F(Defaults, FilesAndFoldersArePrivateUnderAnyUmask) {
  for (const mode_t mask : {0000U, 0022U, 0077U}) {
    const test::Umask guard(mask);
    std::filesystem::remove_all(folder_.path("quorvel"));
    ASSERT_TRUE(suite().setObject(1, u"k")) << std::oct << mask;
    EXPECT_EQ(modeOf(folder_.path("quorvel")), S_IFDIR | 0700U) << std::oct << mask;
    EXPECT_EQ(modeOf(folder_.path("quorvel/defaults")), S_IFDIR | 0700U) << std::oct << mask;
    EXPECT_EQ(modeOf(file()), S_IFREG | 0600U) << std::oct << mask;
    EXPECT_EQ(modeOf(file(".group.chat.json.lock")), S_IFREG | 0600U) << std::oct << mask;
  }
  ASSERT_EQ(::chmod(folder_.path("quorvel").c_str(), 0777), 0);
  ASSERT_EQ(::chmod(file().c_str(), 0666), 0);
  ASSERT_TRUE(suite().setObject(2, u"k"));
  EXPECT_EQ(modeOf(folder_.path("quorvel")), S_IFDIR | 0700U);
  EXPECT_EQ(modeOf(file()), S_IFREG | 0600U);
}

TEST_F(Defaults, WhatIsPlantedIsNotFollowedAndAnswersAtOnce) {
  const std::string paths[] = {"quorvel", "quorvel/defaults", "quorvel/defaults/group.chat.json",
                               "quorvel/defaults/.group.chat.json.lock"};
  const std::string victim = folder_.path("victim");
  for (const std::string& path : paths) {
    for (const auto& [what, plant] : test::kPlanted) {
      SCOPED_TRACE(path + ": " + what);
      std::filesystem::remove_all(folder_.path("quorvel"));
      std::filesystem::create_directories(std::filesystem::path(folder_.path(path)).parent_path());
      test::writeFile(victim, "{\"k\":0}");
      ASSERT_EQ(::chmod(victim.c_str(), 0644), 0);
      plant(folder_.path(path), victim);
      const test::Stopwatch watch;
      static_cast<void>(suite().objectForKey(u"k"));
      const bool isSet = suite().setObject(1, u"k");
      EXPECT_EQ(suite().objectForKey(u"k") == 1, isSet) << "an answer that can be trusted";
      EXPECT_LT(watch.elapsed(), isSet ? test::kWriting : test::kRefusing);
      EXPECT_EQ(readFile(victim), "{\"k\":0}");
      EXPECT_EQ(modeOf(victim), S_IFREG | 0644U);
      EXPECT_EQ(modeOf(victim + ".absent"), 0U);
    }
  }
}

TEST_F(Defaults, AFileThatIsNoStoreIsKeptAside) {
  for (const char* bytes : {"", "{\"a\":", "[1]", "\xFF", "{\"a\":1}x"}) {
    test::writeFile(file(), bytes);
    EXPECT_EQ(suite().objectForKey(u"a"), Value(nil)) << bytes;
    EXPECT_EQ(readFile(file()), bytes) << "reading changes nothing";
    ASSERT_TRUE(suite().setObject(1, u"k")) << bytes;
    EXPECT_EQ(suite().dictionaryRepresentation(), (Dictionary{{u"k", 1}})) << bytes;
    EXPECT_EQ(readFile(file("group.chat.json.damaged")), bytes);
  }
}

TEST_F(Defaults, NoFolderMeansNoStore) {
  const test::Environment none("XDG_CONFIG_HOME", std::nullopt);
  const test::Environment home("HOME", "");
  EXPECT_FALSE(suite().setObject(1, u"k"));
  EXPECT_EQ(suite().objectForKey(u"k"), Value(nil));
}

TEST_F(Defaults, EightProcessesWithTwoThreadsEachLoseNothing) {
  constexpr int kProcesses = 8;
  constexpr int kKeys = 50;
  const auto key = [](int process, int number) {
    const std::string text = std::to_string(process) + "." + std::to_string(number);
    return String::fromASCII(text);
  };
  const auto fill = [&key](int writer) {
    int failures = 0;
    for (int i = 0; i < kKeys; ++i) failures += !suite().setObject(i, key(writer, i));
    return failures;
  };
  const int good =
      test::inChildren(kProcesses, fill, [&] { test::onThreads(2, [&](int i) { fill(kProcesses + i); }); });
  EXPECT_EQ(good, kProcesses);
  int found = 0;
  const Dictionary all = suite().dictionaryRepresentation();
  for (int process = 0; process < kProcesses + 2; ++process) {
    for (int i = 0; i < kKeys; ++i) found += all[key(process, i)] == Value(i);
  }
  EXPECT_EQ(found, (kProcesses + 2) * kKeys);
  EXPECT_EQ(test::namesIn(folder_.path("quorvel/defaults")), ".group.chat.json.lock group.chat.json");
}

struct UserDirectoryRow {
  const char* text;
  const char* path;  // nullptr for none
  const char* why;
};

TEST(ApplicationFolders, ReadsUserDirsAsTheShellWould) {
  const UserDirectoryRow rows[] = {
      {"XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n", "/home/u/Dokumente", "in the home folder"},
      {"XDG_DOCUMENTS_DIR=\"/srv/docs/\"", "/srv/docs", "absolute, without a line end"},
      {" XDG_DOCUMENTS_DIR = \"$HOME\" # x\n", "/home/u", "spaces and a comment; the home folder itself"},
      {"XDG_DOCUMENTS_DIR=\"$HOME/\"", "/home/u", "with a slash"},
      {"XDG_DOCUMENTS_DIR=\"$HOME/a\\\"b\\\\c\\$d\"", "/home/u/a\"b\\c$d", "escapes"},
      {"XDG_DOCUMENTS_DIR=\"/a\"\n#XDG_DOCUMENTS_DIR=\"/c\"\nXDG_DOCUMENTS_DIR=\"/b\"\n", "/b", "the last; no comment"},
      {"XDG_DOCUMENTS_DIR=\"/a\"\nXDG_DOCUMENTS_DIR=\"b\"\n", "/a", "a relative path counts as none"},
      {"XDG_DOCUMENTS_DIR=\"$HOMER/x\"", nullptr, "another variable"},
      {"XDG_DOCUMENTS_DIR=\"/a", nullptr, "no closing mark"},
      {"XDG_DOCUMENTS_DIR=\"/a\\", nullptr, "nothing behind the escape"},
      {"XDG_DOCUMENTS_DIR=/a", nullptr, "no quotation marks"},
      {"XDG_DOCUMENTS_DIRS=\"/a\"", nullptr, "another name"},
      {"XDG_DOWNLOAD_DIR=\"/a\"", nullptr, "another folder"},
      {"", nullptr, "nothing"},
  };
  for (const auto& [text, path, why] : rows) {
    const auto found = folders::userDirectory(text, "XDG_DOCUMENTS_DIR", "/home/u");
    EXPECT_EQ(found, path ? std::optional<std::string>(path) : std::nullopt) << why;
  }
}

TEST(ApplicationFolders, FollowTheEnvironment) {
  const test::TemporaryFolder folder;
  const test::Environment home("HOME", folder.path() + "/");
  const test::Environment configuration("XDG_CONFIG_HOME", "relative");
  EXPECT_EQ(folders::home(), folder.path());
  EXPECT_EQ(folders::configuration(), folder.path(".config")) << "a relative value counts as none";
  EXPECT_EQ(folders::documents(), folder.path("Documents"));
  test::writeFile(folder.path("dots"), "XDG_DOCUMENTS_DIR=\"$HOME/D\"\n");
  std::filesystem::create_directory(folder.path(".config"));
  std::filesystem::create_symlink("../dots", folder.path(".config/user-dirs.dirs"));
  EXPECT_EQ(folders::documents(), folder.path("D")) << "the user's own link is followed";
  std::filesystem::remove(folder.path(".config/user-dirs.dirs"));
  ASSERT_EQ(::mkfifo(folder.path(".config/user-dirs.dirs").c_str(), 0600), 0);
  EXPECT_EQ(folders::documents(), folder.path("Documents")) << "a FIFO is not waited for";
  const test::Environment noHome("HOME", "");
  EXPECT_EQ(folders::documents(), std::nullopt);
}

}  // namespace
}  // namespace quorvel
