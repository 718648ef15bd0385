#include <atomic>
#include <cstdlib>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <tests/support/Command.h>
#include <tests/support/Crowd.h>
#include <tests/support/Row.h>

#include <quorvel/Platform/CommonCrypto/CommonCrypto.h>

namespace quorvel {
namespace {

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string hexadecimal(std::span<const std::uint8_t> bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += "0123456789abcdef"[byte >> 4];
    text += "0123456789abcdef"[byte & 15];
  }
  return text;
}

TEST(CommonCrypto, MD5GivesTheStandardsDigests) {
  const test::Row<std::string, const char*> rows[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
       "57edf4a22be3c955ac49da2e2107b67a"},
  };
  for (const auto& [text, digest] : rows) EXPECT_EQ(hexadecimal(CC_MD5(bytesOf(text))), digest) << text;
}

struct CodeRow {
  std::string key;
  std::string text;
  const char* code;
  const char* why;
};

const std::vector<CodeRow>& codeRows() {
  static const std::vector<CodeRow> rows = {
      {"", "", "b613679a0814d9ec772f95d778c35fc5ff1697c493715653c6c712144292c5ad", "nothing under no key"},
      {std::string(20, '\x0b'), "Hi There", "b0344c61d8db38535ca8afceaf0bf12b881dc200c9833da726e9376c2e32cff7",
       "RFC 4231, case 1"},
      {"Jefe", "what do ya want for nothing?", "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843",
       "RFC 4231, case 2"},
      {std::string(131, '\xaa'), "Test Using Larger Than Block-Size Key - Hash Key First",
       "60e431591ee0b67f0d8a26aacbf5b77f8e0bc6213728c5140546040f0ee37f54", "RFC 4231, case 6"},
  };
  return rows;
}

TEST(CommonCrypto, HmacGivesTheStandardsCodes) {
  for (const auto& [key, text, code, why] : codeRows()) {
    EXPECT_EQ(hexadecimal(CCHmacSHA256(bytesOf(key), bytesOf(text))), code) << why;
  }
}

TEST(CommonCrypto, AKeptKeyAnswersForItselfAlone) {
  const std::string key = "Jefe";
  const auto first = CCHmacSHA256(bytesOf(key), bytesOf("one"));
  const auto prefix = CCHmacSHA256(bytesOf("Jef"), bytesOf("one"));
  EXPECT_NE(prefix, first);
  EXPECT_NE(CCHmacSHA256(bytesOf("Jefg"), bytesOf("one")), first) << "of the same length";
  for (const auto& [rowKey, text, code, why] : codeRows()) {
    for (int again = 0; again < 3; ++again) {
      EXPECT_EQ(hexadecimal(CCHmacSHA256(bytesOf(rowKey), bytesOf(text))), code) << why;
      EXPECT_EQ(CCHmacSHA256(bytesOf(rowKey), bytesOf("one")), CCHmacSHA256(bytesOf(rowKey), bytesOf("one"))) << why;
    }
  }
  EXPECT_EQ(CCHmacSHA256(bytesOf(key), bytesOf("one")), first);
}

TEST(CommonCrypto, ThreadsDoNotShareState) {
  std::atomic<int> wrong = 0;
  test::onThreads(4, [&wrong](int i) {
    const CodeRow& row = codeRows()[static_cast<std::size_t>(i)];
    for (int n = 0; n < 500; ++n) {
      wrong += hexadecimal(CCHmacSHA256(bytesOf(row.key), bytesOf(row.text))) != row.code;
      wrong += hexadecimal(CC_MD5(bytesOf("abc"))) != "900150983cd24fb0d6963f7d28e17f72";
    }
  });
  EXPECT_EQ(wrong, 0);
}

TEST(CommonCrypto, MD5AnswersWhereOnlyApprovedAlgorithmsAreAllowed) {
  const std::string configuration = test::temporaryFile("approved.cnf",
                                                        "openssl_conf = start\n[start]\nalg_section = algorithms\n"
                                                        "[algorithms]\ndefault_properties = fips=yes\n");
  setenv("OPENSSL_CONF", configuration.c_str(), 1);
  const test::Outcome outcome = test::runCommand({"call", "NSString(Hash)", "hashMD5", "\"abc\""});
  unsetenv("OPENSSL_CONF");
  EXPECT_EQ(outcome.out, "\"900150983cd24fb0d6963f7d28e17f72\"\n") << outcome.err;
}

}  // namespace
}  // namespace quorvel
