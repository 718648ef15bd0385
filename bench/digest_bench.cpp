// Digests and Base64 of bytes, beside libcrypto with contexts that are kept, and versions compared.
// The library's own calls answer a text, libcrypto's bytes: the floor is what the digest alone takes.
#include <vector>

#include <bench/Cases.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>

#include <quorvel/Extensions/Foundation/NSString+Hash.h>
#include <quorvel/Platform/CommonCrypto/CommonCrypto.h>
#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Utility/VersionHelper.h>

#if QUORVEL_HAVE_QT
#include <QByteArray>
#include <QVersionNumber>
#endif

namespace quorvel::bench {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytes(std::size_t size) {
  Bytes out(size);
  std::uint32_t state = 1;
  for (std::uint8_t& byte : out) byte = static_cast<std::uint8_t>((state = state * 1664525 + 1013904223) >> 24);
  return out;
}

void addDigests(std::size_t size) {
  const Bytes data = bytes(size);
  const Bytes key = bytes(32);
  add("digest/md5", size, "ours", [data] { return CC_MD5(data); });
  add("digest/md5", size, "floor:kept context",
      [data, context = EVP_MD_CTX_new(), md5 = EVP_MD_fetch(nullptr, "MD5", nullptr)] {
        std::array<std::uint8_t, 16> digest{};
        EVP_DigestInit_ex2(context, md5, nullptr);
        EVP_DigestUpdate(context, data.data(), data.size());
        EVP_DigestFinal_ex(context, digest.data(), nullptr);
        return digest;
      });
  add("digest/hmac", size, "ours", [data, key] { return CCHmacSHA256(key, data); });
  EVP_MAC_CTX* const keyed = EVP_MAC_CTX_new(EVP_MAC_fetch(nullptr, "HMAC", nullptr));
  char digest[] = "SHA256";
  const OSSL_PARAM parameters[] = {OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, digest, 0),
                                   OSSL_PARAM_construct_end()};
  EVP_MAC_init(keyed, key.data(), key.size(), parameters);
  add("digest/hmac", size, "floor:kept keyed context", [data, keyed] {
    std::array<std::uint8_t, 32> code{};
    std::size_t written = 0;
    EVP_MAC_init(keyed, nullptr, 0, nullptr);
    EVP_MAC_update(keyed, data.data(), data.size());
    EVP_MAC_final(keyed, code.data(), &written, code.size());
    return code;
  });
  const String latin = text(Script::Latin, size);
  add("digest/hashMD5 of text", size, "ours", [latin] { return hashMD5(latin); });
}

void addBase64(std::size_t size) {
  const Bytes data = bytes(size);
  std::string out(base64Length(size) + 1, '\0');
  add("base64/encode to bytes", size, "ours", [data, out]() mutable {
    encodeBase64(data, out.data());
    return out[0];
  });
  add("base64/encode to bytes", size, "EVP_EncodeBlock", [data, out]() mutable {
    return EVP_EncodeBlock(reinterpret_cast<unsigned char*>(out.data()), data.data(), static_cast<int>(data.size()));
  });
  add("base64/encode to text", size, "ours", [data] { return base64EncodedString(data); });
#if QUORVEL_HAVE_QT
  const QByteArray array(reinterpret_cast<const char*>(data.data()), static_cast<qsizetype>(size));
  add("base64/encode to text", size, "Qt", [array] { return QString::fromLatin1(array.toBase64()); });
#endif
  add("base64/decode", size, "ours", [text = base64EncodedString(data)] { return decodeBase64(text); });
}

void addVersions() {
  const String first = u"12.10.3";
  const String second = u"12.10.30";
  add("version/compare", first.size(), "ours", [first, second] { return VersionHelper::compare(first, second); });
#if QUORVEL_HAVE_QT
  const QString a = QStringLiteral("12.10.3");
  const QString b = QStringLiteral("12.10.30");
  add("version/compare", first.size(), "Qt",
      [a, b] { return QVersionNumber::compare(QVersionNumber::fromString(a), QVersionNumber::fromString(b)); });
#endif
}

}  // namespace
}  // namespace quorvel::bench

int main(int argc, char** argv) {
  for (const std::size_t size : {std::size_t{16}, std::size_t{1024}, std::size_t{1} << 20}) {
    quorvel::bench::addDigests(size);
    quorvel::bench::addBase64(size);
  }
  quorvel::bench::addVersions();
  return quorvel::bench::run(argc, argv);
}
