// The tests' own main: an application that has adopted the user's locale, where QUORVEL_TEST_LOCALE names one.
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <locale>

#include <gtest/gtest.h>

namespace {

/// As applications begin: for C functions and for streams. False, and says so, when the machine has no such locale.
bool adopt(const char* name) {
  if (!std::setlocale(LC_ALL, name)) {
    std::fprintf(stderr, "quorvel-tests: no locale %s (LOCPATH, package locales)\n", name);
    return false;
  }
  std::locale::global(std::locale(name));
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  const char* locale = std::getenv("QUORVEL_TEST_LOCALE");
  if (locale && !adopt(locale)) return 1;
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
