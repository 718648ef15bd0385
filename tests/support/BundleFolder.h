// A folder to make bundles of, with no language asked for; what was there before is put back.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <quorvel/Platform/Foundation/NSBundle.h>

namespace quorvel::test {

class BundleFolder : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = testing::TempDir() + "quorvel-bundle-XXXXXX";
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    folder_ = pattern;
    for (const char* name : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
      const char* value = std::getenv(name);
      saved_.emplace_back(name, value ? std::optional<std::string>(value) : std::nullopt);
      ::unsetenv(name);
    }
  }
  void TearDown() override {
    NSBundle::setMain(before_);
    for (const auto& [name, value] : saved_) value ? ::setenv(name, value->c_str(), 1) : ::unsetenv(name);
    std::filesystem::remove_all(folder_);
  }
  void write(const std::string& name, const std::string& text) {
    std::filesystem::create_directories((folder_ / name).parent_path());
    std::ofstream(folder_ / name, std::ios::binary) << text;
  }

  std::filesystem::path folder_;

 private:
  NSBundle before_ = NSBundle::main();
  std::vector<std::pair<const char*, std::optional<std::string>>> saved_;
};

}  // namespace quorvel::test
