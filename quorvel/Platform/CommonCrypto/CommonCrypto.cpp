#include <algorithm>
#include <memory>

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <quorvel/Platform/CommonCrypto/CommonCrypto.h>
#include <quorvel/Platform/Foundation/Log.h>

namespace quorvel {
namespace {

template <auto Free>
struct FreeBy {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};
using DigestContext = std::unique_ptr<EVP_MD_CTX, FreeBy<&EVP_MD_CTX_free>>;
using CodeContext = std::unique_ptr<EVP_MAC_CTX, FreeBy<&EVP_MAC_CTX_free>>;

/// What is fetched once in the process, in a library context of our own: the application's configuration may allow only
/// approved algorithms and keys of some length, and reading it takes longer than most digests. Kept until the process
/// ends, since threads that still run then may use them.
struct Algorithms {
  OSSL_LIB_CTX* context = OSSL_LIB_CTX_new();
  OSSL_PROVIDER* provider = OSSL_PROVIDER_load(context, "default");
  EVP_MD* md5 = EVP_MD_fetch(context, "MD5", "-fips");
  EVP_MAC* hmac = EVP_MAC_fetch(context, "HMAC", nullptr);
};

const Algorithms& algorithms() {
  static const Algorithms fetched;
  return fetched;
}

/// The built-in provider always has both algorithms; without memory the process ends here as with any allocation.
void require(bool done, const char* operation) { contract(done, operation, "libcrypto cannot serve it"); }

/// One thread's code context and the key that it was last set up with.
class KeyedContext {
 public:
  KeyedContext() : context_(EVP_MAC_CTX_new(algorithms().hmac)) {}
  KeyedContext(const KeyedContext&) = delete;
  KeyedContext& operator=(const KeyedContext&) = delete;
  ~KeyedContext() { OPENSSL_cleanse(key_.data(), key_.size()); }

  /// Ready for a new text under `key`.
  [[nodiscard]] EVP_MAC_CTX* start(std::span<const std::uint8_t> key) {
    if (!context_) return nullptr;
    if (hasKey(key)) return EVP_MAC_init(context_.get(), nullptr, 0, nullptr) == 1 ? context_.get() : nullptr;
    keptSize_ = kNone;
    char digest[] = "SHA256";
    const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0),
                                     OSSL_PARAM_construct_end()};
    const std::uint8_t nothing = 0;
    if (EVP_MAC_init(context_.get(), key.empty() ? &nothing : key.data(), key.size(), parameters) != 1) return nullptr;
    keep(key);
    return context_.get();
  }

 private:
  [[nodiscard]] bool hasKey(std::span<const std::uint8_t> key) const {
    return key.size() == keptSize_ && CRYPTO_memcmp(key.data(), key_.data(), key.size()) == 0;
  }
  void keep(std::span<const std::uint8_t> key) {
    OPENSSL_cleanse(key_.data(), key_.size());
    if (key.size() > key_.size()) return;
    std::copy(key.begin(), key.end(), key_.begin());
    keptSize_ = key.size();
  }

  static constexpr std::size_t kNone = SIZE_MAX;
  CodeContext context_;
  std::array<std::uint8_t, 64> key_{};
  std::size_t keptSize_ = kNone;
};

}  // namespace

std::array<std::uint8_t, kMD5DigestBytes> CC_MD5(std::span<const std::uint8_t> bytes) {
  thread_local const DigestContext context(EVP_MD_CTX_new());
  std::array<std::uint8_t, kMD5DigestBytes> digest{};
  EVP_MD_CTX* const state = context.get();
  require(state && EVP_DigestInit_ex2(state, algorithms().md5, nullptr) == 1 &&
              EVP_DigestUpdate(state, bytes.data(), bytes.size()) == 1 &&
              EVP_DigestFinal_ex(state, digest.data(), nullptr) == 1,
          "CC_MD5");
  return digest;
}

std::array<std::uint8_t, kSHA256DigestBytes> CCHmacSHA256(std::span<const std::uint8_t> key,
                                                          std::span<const std::uint8_t> bytes) {
  static thread_local KeyedContext context;
  std::array<std::uint8_t, kSHA256DigestBytes> code{};
  std::size_t size = 0;
  EVP_MAC_CTX* const state = context.start(key);
  require(state && EVP_MAC_update(state, bytes.data(), bytes.size()) == 1 &&
              EVP_MAC_final(state, code.data(), &size, code.size()) == 1,
          "CCHmac");
  return code;
}

}  // namespace quorvel
