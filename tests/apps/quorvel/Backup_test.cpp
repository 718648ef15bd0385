#include <cstdlib>

#include <apps/quorvel/Backup.h>
#include <gtest/gtest.h>
#include <sys/xattr.h>
#include <tests/support/Command.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/BackupExclusion.h>

namespace quorvel::command {
namespace {

struct PatternRow {
  std::string path;
  const char* restic;  // nullptr: cannot be written
  const char* rsync;
  const char* borg;
  const char* why;
};

TEST(BackupPatterns, QuoteWhatEachToolReadsOtherwise) {
  const PatternRow rows[] = {
      {"", "/r", "/*", "pp:/r", "the root itself"},
      {"a/b", "/r/a/b", "/a/b", "pp:/r/a/b", "plain"},
      {"한 글", "/r/한 글", "/한 글", "pp:/r/한 글", "letters and a space inside"},
      {"a*?[b]", "/r/a\\*\\?\\[b]", "/a\\*\\?\\[b]", "pp:/r/a*?[b]", "wildcards"},
      {"a\\b", "/r/a\\\\b", "/a\\b", "pp:/r/a\\b", "rsync takes it literally where there is no wildcard"},
      {"a\\b*", "/r/a\\\\b\\*", "/a\\\\b\\*", "pp:/r/a\\b*", "and as an escape where there is one"},
      {"$HOME", "/r/$$HOME", "/$HOME", "pp:/r/$HOME", "a variable"},
      {"a ", "/r/a[ ]", "/a ", "re:^r/a\\x20(?:/|$)", "a space at the end"},
      {"a \t", "/r/a [\t]", "/a \t", "re:^r/a\\x20\\x09(?:/|$)", "two of them"},
      {"a\xC2\xA0", "/r/a[\xC2\xA0]", "/a\xC2\xA0", "re:^r/a\\u00a0(?:/|$)", "a space that does not break"},
      {"a\nb", nullptr, nullptr, "re:^r/a\\x0ab(?:/|$)", "a line feed"},
      {"a\rb", "/r/a\rb", nullptr, "re:^r/a\\x0db(?:/|$)", "a carriage return"},
      {"\xFF", "/r/\xFF", "/\xFF", "re:^r/\\udcff(?:/|$)", "no UTF-8"},
      {"\U0001F600\x01", "/r/\U0001F600\x01", "/\U0001F600\x01", "re:^r/\\U0001f600\\x01(?:/|$)", "a surrogate pair"},
  };
  const auto text = [](const std::optional<std::string>& line) { return line.value_or("none"); };
  for (const auto& [path, restic, rsync, borg, why] : rows) {
    EXPECT_EQ(text(resticPattern("/r", path)), restic ? restic : "none") << why;
    EXPECT_EQ(text(rsyncPattern("/r", path)), rsync ? rsync : "none") << why;
    EXPECT_EQ(text(borgPattern("/r", path)), borg) << why;
  }
  EXPECT_EQ(text(resticPattern("/", "a")), "/a");
  EXPECT_EQ(text(borgPattern("/", "")), "re:.");
}

// Names that a careless line would lose or mistake, and one beside each that must stay in the backup.
const char* const kNames[] = {"plain",       "a*b",  "aXb",  "q?",        "qX",         "[x]",        "x",
                              "back\\slash", "w\\*", "end ", "end",       "$HOME",      "#hash",      "!not",
                              "tab\t",       "tab",  "한글", "dir/inner", "dir2/inner", "nb\xC2\xA0", "nb"};
const char* const kExcluded[] = {"a*b",   "q?",   "[x]",   "back\\slash", "w\\*", "end ",      "$HOME",
                                 "#hash", "!not", "tab\t", "한글",        "dir",  "nb\xC2\xA0"};

bool isExcluded(const std::string& name) {
  for (const std::string excluded : kExcluded) {
    if (name == excluded || name.starts_with(excluded + "/")) return true;
  }
  return false;
}

class BackupTools : public testing::Test {
 protected:
  void SetUp() override {
    for (const std::string name : kNames) test::writeFile(source(name), "x");
    for (const std::string name : kExcluded) {
      if (backup::setExcluded(source(name), true)) GTEST_SKIP() << "this file system holds no mark on files";
    }
  }
  [[nodiscard]] std::string source(const std::string& name) const { return folder_.path("source/" + name); }
  /// Runs a backup with the list of that format; `script` copies the source to the folder "copy".
  void expectOnlyTheRest(const std::string& format, const std::string& script) {
    if (std::system(("command -v " + format + " >/dev/null").c_str()) != 0)
      GTEST_SKIP() << format << " is not installed";
    const test::Outcome list = test::runCommand({"backup", "list", folder_.path("source"), "--format", format});
    ASSERT_EQ(list.status, 0) << list.err;
    test::writeFile(folder_.path("list"), list.out);
    const std::string command =
        "cd '" + folder_.path() + "' && export HOME=$PWD/home && mkdir home copy && {\n" + script + "\n} >log 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << test::readFile(folder_.path("log"));
    for (const std::string name : kNames) {
      EXPECT_EQ(test::modeOf(folder_.path("copy/" + name)) != 0, !isExcluded(name)) << format << ": " << name;
    }
  }

  test::TemporaryFolder folder_;
};

TEST_F(BackupTools, Rsync) { expectOnlyTheRest("rsync", "rsync -a --exclude-from list source/ copy"); }

TEST_F(BackupTools, Restic) {
  expectOnlyTheRest("restic",
                    "export RESTIC_PASSWORD=x RESTIC_REPOSITORY=$PWD/repo RESTIC_CACHE_DIR=$PWD/cache; restic init &&\n"
                    "restic backup --exclude-file list \"$PWD/source\" && restic restore latest --target out &&\n"
                    "mv \"out$PWD/source/\"* copy/");
}

TEST_F(BackupTools, Borg) {
  expectOnlyTheRest(
      "borg",
      "export BORG_BASE_DIR=$PWD/base LC_ALL=C.UTF-8; borg init -e none repo &&\n"
      "borg create --exclude-from list repo::a \"$PWD/source\" && (mkdir out; cd out; borg extract ../repo::a) &&\n"
      "mv \"out$PWD/source/\"* copy/");
}

TEST(BackupList, TellsWhatItCannotReadOrWrite) {
  const test::TemporaryFolder folder;
  test::writeFile(folder.path("d/a\nb"), "");
  test::writeFile(folder.path("d/c"), "");
  if (backup::setExcluded(folder.path("d/a\nb"), true) || backup::setExcluded(folder.path("d/c"), true)) {
    GTEST_SKIP() << "this file system holds no mark on files";
  }
  const test::Outcome listed = test::runCommand({"backup", "list", folder.path("d")});
  EXPECT_EQ(listed.status, 1);
  EXPECT_EQ(listed.out, folder.path("d/c") + "\n");
  EXPECT_EQ(listed.err, "quorvel backup: " + folder.path("d/a?b") + ": the name cannot be written in this format\n");
  const test::Outcome missing = test::runCommand({"backup", "list", folder.path("none")});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "quorvel backup: " + folder.path("none") + ": No such file or directory\n");
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{"backup"},
                                             {"backup", "list"},
                                             {"backup", "list", "a", "b"},
                                             {"backup", "list", "a", "--format"},
                                             {"backup", "list", "a", "--format=zip"},
                                             {"backup", "list", "--all"}}) {
    EXPECT_EQ(test::runCommand(words).status, 2) << words.back();
  }
}

}  // namespace
}  // namespace quorvel::command
