#include <filesystem>

#include <gtest/gtest.h>
#include <tests/support/Command.h>
#include <unistd.h>

namespace quorvel::test {
namespace {

class KeychainCommand : public testing::Test {
 protected:
  KeychainCommand() {
    std::string name = testing::TempDir() + "quorvel-keychain-XXXXXX";
    root_ = ::mkdtemp(name.data());
  }
  ~KeychainCommand() override { std::filesystem::remove_all(root_); }

  [[nodiscard]] Outcome run(std::vector<std::string> words, std::string_view input = {}) const {
    words.insert(words.begin(), "keychain");
    words.insert(words.end(), {"--folder", (root_ / "k").string()});
    return runCommand(words, input);
  }

  std::filesystem::path root_;
};

TEST_F(KeychainCommand, KeepsASecretAndNeverPrintsItElsewhere) {
  const std::string secret("se\0cret\xFF\n", 9);
  EXPECT_EQ(run({"doctor"}).status, 1) << "there is none yet";
  EXPECT_EQ(run({"put", "--group", "G", "kim\tlee"}, secret).status, 0);
  EXPECT_EQ(run({"put", "--group", "G", "kim\tlee"}, secret).status, 1) << "there already";
  EXPECT_EQ(run({"get", "--group", "G", "kim\tlee"}).out, secret);
  EXPECT_EQ(run({"get", "--group", "H", "kim\tlee"}).status, 1) << "another group";
  const Outcome list = run({"list"});
  EXPECT_EQ(list.out, "G\tTKLogin\tkim\\x09lee\tAfterFirstUnlock\t9\n");
  const Outcome doctor = run({"doctor"});
  EXPECT_EQ(doctor.status, 0);
  EXPECT_NE(doctor.out.find("source      file\nmaster key  ready\nitems       1, 0 of"), std::string::npos)
      << doctor.out;
  EXPECT_EQ(doctor.out.find("cret"), std::string::npos);
  EXPECT_EQ(run({"update", "--group", "G", "kim\tlee"}, "new").status, 0);
  EXPECT_EQ(run({"get", "--group", "G", "kim\tlee"}).out, "new");
  EXPECT_EQ(run({"delete", "--group", "G", "kim\tlee"}).status, 0);
  EXPECT_EQ(run({"list"}).out, "");
}

TEST_F(KeychainCommand, RotatesAndMigrates) {
  const std::string key = temporaryFile("key", "0123456789abcdef0123456789abcdef");
  ASSERT_EQ(run({"put", "--group", "G", "kim"}, "v").status, 0);
  EXPECT_EQ(run({"rotate"}).status, 0);
  EXPECT_EQ(run({"migrate", "--to", "handed-in"}).status, 1) << "no key given";
  EXPECT_EQ(run({"migrate", "--to", "handed-in", "--new-key", key}).status, 0);
  EXPECT_EQ(run({"get", "--group", "G", "kim"}).status, 1) << "without the key";
  EXPECT_EQ(run({"get", "--group", "G", "kim", "--key", key}).out, "v");
  EXPECT_EQ(run({"migrate", "--to", "file", "--key", key}).status, 0);
  EXPECT_EQ(run({"get", "--group", "G", "kim"}).out, "v");
  std::filesystem::remove(key);
}

TEST_F(KeychainCommand, RefusesWordsThatAreNoCommand) {
  const std::vector<std::string> rows[] = {{},
                                           {"open"},
                                           {"migrate", "--to", "cloud"},
                                           {"put", "kim"},
                                           {"put", "--group", "G"},
                                           {"list", "kim"},

                                           {"put", "--group", "G", "kim", "--source", "cloud"},
                                           {"get", "--group", "G", "kim", "lee"},
                                           {"doctor", "--all"},
                                           {"list", "--key", "/nonexistent"}};
  for (const auto& words : rows) {
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(words);
    EXPECT_EQ(outcome.out, "") << testing::PrintToString(words);
    EXPECT_NE(outcome.err, "") << testing::PrintToString(words);
  }
  EXPECT_FALSE(std::filesystem::exists(root_ / "k"));
}

}  // namespace
}  // namespace quorvel::test
