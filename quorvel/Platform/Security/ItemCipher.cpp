#include <algorithm>
#include <cstring>
#include <new>

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/kdf.h>
#include <openssl/provider.h>
#include <sys/mman.h>

#include <quorvel/Platform/Security/ItemCipher.h>

namespace quorvel {
namespace {

constexpr std::size_t kTagBytes = 16;
constexpr std::size_t kNonceBytes = NonceBlock::kNonceBytes;

template <auto Free>
struct FreeBy {
  template <class T>
  void operator()(T* object) const {
    Free(object);
  }
};
using CipherContext = std::unique_ptr<EVP_CIPHER_CTX, FreeBy<&EVP_CIPHER_CTX_free>>;
using CodeContext = std::unique_ptr<EVP_MAC_CTX, FreeBy<&EVP_MAC_CTX_free>>;
using DerivationContext = std::unique_ptr<EVP_KDF_CTX, FreeBy<&EVP_KDF_CTX_free>>;

/// What is fetched once in the process, in a library context of our own that no configuration file reaches. Kept until
/// the process ends, since threads that still run then may use them.
struct Algorithms {
  OSSL_LIB_CTX* context = OSSL_LIB_CTX_new();
  OSSL_PROVIDER* provider = context ? OSSL_PROVIDER_load(context, "default") : nullptr;
  EVP_CIPHER* gcm = provider ? EVP_CIPHER_fetch(context, "AES-256-GCM", nullptr) : nullptr;
  EVP_MAC* hmac = provider ? EVP_MAC_fetch(context, "HMAC", nullptr) : nullptr;
  EVP_KDF* hkdf = provider ? EVP_KDF_fetch(context, "HKDF", nullptr) : nullptr;

  Algorithms() {
    if (!gcm || !hmac || !hkdf) {
      drop();
      throw std::bad_alloc();  // leaves the static unset, so that the next call tries again
    }
  }

 private:
  void drop() {
    EVP_KDF_free(hkdf);
    EVP_MAC_free(hmac);
    EVP_CIPHER_free(gcm);
    if (provider) OSSL_PROVIDER_unload(provider);
    OSSL_LIB_CTX_free(context);
  }
};

const Algorithms& algorithms() {
  static const Algorithms fetched;
  return fetched;
}

std::array<OSSL_PARAM, 2> sha256Parameter(char* name) {
  return {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, name, 0), OSSL_PARAM_construct_end()};
}

bool update(EVP_CIPHER_CTX* context, std::uint8_t* out, ConstBytes bytes) {
  int written = 0;
  return bytes.empty() || EVP_CipherUpdate(context, out, &written, bytes.data(), static_cast<int>(bytes.size())) == 1;
}

}  // namespace

struct NonceBlock::Page {
  std::uint32_t left;
  std::array<std::uint8_t, 128 * kNonceBytes> nonces;
};

NonceBlock::NonceBlock() {
  void* page = ::mmap(nullptr, sizeof(Page), PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (page == MAP_FAILED) return;
  // Without this a child would go on with its parent's nonces.
  if (::madvise(page, sizeof(Page), MADV_WIPEONFORK) == 0) {
    page_ = static_cast<Page*>(page);
  } else {
    ::munmap(page, sizeof(Page));
  }
}
NonceBlock::~NonceBlock() {
  if (page_) ::munmap(page_, sizeof(Page));
}

bool NonceBlock::next(std::uint8_t* nonce) {
  if (!page_) return fillRandom({nonce, kNonceBytes});
  if (page_->left == 0) {
    if (!fillRandom(page_->nonces)) return false;
    page_->left = static_cast<std::uint32_t>(page_->nonces.size() / kNonceBytes);
  }
  std::memcpy(nonce, page_->nonces.data() + --page_->left * kNonceBytes, kNonceBytes);
  return true;
}

struct ItemCipher::State {
  CipherContext sealing{EVP_CIPHER_CTX_new()};
  CipherContext opening{EVP_CIPHER_CTX_new()};
  NonceBlock nonces;
};

ItemCipher::ItemCipher(std::unique_ptr<State> state) : state_(std::move(state)) {}
ItemCipher::ItemCipher(ItemCipher&&) noexcept = default;
ItemCipher& ItemCipher::operator=(ItemCipher&&) noexcept = default;
ItemCipher::~ItemCipher() = default;

std::optional<ItemCipher> ItemCipher::withKey(ConstBytes key) {
  auto state = std::make_unique<State>();
  EVP_CIPHER* const gcm = algorithms().gcm;
  const bool ready = key.size() == kKeyBytes && state->sealing && state->opening &&
                     EVP_EncryptInit_ex2(state->sealing.get(), gcm, key.data(), nullptr, nullptr) == 1 &&
                     EVP_DecryptInit_ex2(state->opening.get(), gcm, key.data(), nullptr, nullptr) == 1;
  if (!ready) return std::nullopt;
  return ItemCipher(std::move(state));
}

bool ItemCipher::seal(ConstBytes authenticated, ConstBytes plain, std::uint8_t* sealed) {
  EVP_CIPHER_CTX* const context = state_->sealing.get();
  std::uint8_t* const text = sealed + kNonceBytes;
  int rest = 0;
  return state_->nonces.next(sealed) && EVP_EncryptInit_ex2(context, nullptr, nullptr, sealed, nullptr) == 1 &&
         update(context, nullptr, authenticated) && update(context, text, plain) &&
         EVP_EncryptFinal_ex(context, text + plain.size(), &rest) == 1 &&
         EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_GET_TAG, kTagBytes, text + plain.size()) == 1;
}

bool ItemCipher::open(ConstBytes authenticated, ConstBytes sealed, std::uint8_t* plain) {
  if (sealed.size() < kOverheadBytes) return false;
  EVP_CIPHER_CTX* const context = state_->opening.get();
  const ConstBytes text = sealed.subspan(kNonceBytes, sealed.size() - kOverheadBytes);
  std::array<std::uint8_t, kTagBytes> tag{};
  std::copy_n(text.end(), kTagBytes, tag.begin());
  int rest = 0;
  std::uint8_t nothing = 0;
  const bool opened = EVP_DecryptInit_ex2(context, nullptr, nullptr, sealed.data(), nullptr) == 1 &&
                      update(context, nullptr, authenticated) && update(context, plain, text) &&
                      EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_SET_TAG, kTagBytes, tag.data()) == 1 &&
                      EVP_DecryptFinal_ex(context, &nothing, &rest) == 1;
  if (!opened) wipe({plain, text.size()});  // what it wrote was never authenticated
  return opened;
}

struct KeyedDigest::State {
  CodeContext context;
};

KeyedDigest::KeyedDigest(std::unique_ptr<State> state) : state_(std::move(state)) {}
KeyedDigest::KeyedDigest(KeyedDigest&&) noexcept = default;
KeyedDigest& KeyedDigest::operator=(KeyedDigest&&) noexcept = default;
KeyedDigest::~KeyedDigest() = default;

std::optional<KeyedDigest> KeyedDigest::withKey(ConstBytes key) {
  auto state = std::make_unique<State>();
  state->context.reset(EVP_MAC_CTX_new(algorithms().hmac));
  char digest[] = "SHA256";
  const auto parameters = sha256Parameter(digest);
  if (!state->context || EVP_MAC_init(state->context.get(), key.data(), key.size(), parameters.data()) != 1) {
    return std::nullopt;
  }
  return KeyedDigest(std::move(state));
}

bool KeyedDigest::digest(ConstBytes bytes, Bytes& out) {
  EVP_MAC_CTX* const context = state_->context.get();
  std::array<std::uint8_t, 32> whole{};
  std::size_t written = 0;
  const bool done = EVP_MAC_init(context, nullptr, 0, nullptr) == 1 &&
                    EVP_MAC_update(context, bytes.data(), bytes.size()) == 1 &&
                    EVP_MAC_final(context, whole.data(), &written, whole.size()) == 1;
  std::copy_n(whole.begin(), out.size(), out.begin());
  return done;
}

bool deriveKey(ConstBytes from, ConstBytes salt, std::string_view purpose, std::span<std::uint8_t> key) {
  const DerivationContext context(EVP_KDF_CTX_new(algorithms().hkdf));
  char digest[] = "SHA256";
  constexpr std::uint8_t kNoSalt[32] = {};  // what the standard takes for an absent one
  if (salt.empty()) salt = kNoSalt;
  // The parameters take pointers that may be written through; derivation only reads them.
  const auto octets = [](const char* name, const void* bytes, std::size_t size) {
    return OSSL_PARAM_construct_octet_string(name, const_cast<void*>(bytes), size);
  };
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
      octets(OSSL_KDF_PARAM_KEY, from.data(), from.size()), octets(OSSL_KDF_PARAM_SALT, salt.data(), salt.size()),
      octets(OSSL_KDF_PARAM_INFO, purpose.data(), purpose.size()), OSSL_PARAM_construct_end()};
  return context && EVP_KDF_derive(context.get(), key.data(), key.size(), parameters) == 1;
}

}  // namespace quorvel
