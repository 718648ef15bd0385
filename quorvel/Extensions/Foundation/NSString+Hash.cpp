#include <quorvel/Extensions/Foundation/NSString+Hash.h>
#include <quorvel/Platform/CommonCrypto/CommonCrypto.h>
#include <quorvel/Platform/Foundation/Base64.h>
#include <quorvel/Platform/Foundation/Unicode.h>

namespace quorvel {
namespace {

/// The UTF-8 of a text; short ones stay on the stack.
class Bytes {
 public:
  explicit Bytes(StringView text) {
    if (text.size() <= kShortUnits) {
      size_ = unicode::utf16ToUTF8(text, short_);
    } else if (std::optional<std::string> bytes = unicode::toUTF8(text)) {
      long_ = std::move(*bytes);
      size_ = long_.size();
    } else {
      size_ = unicode::kInvalid;
    }
  }
  [[nodiscard]] bool isValid() const { return size_ != unicode::kInvalid; }
  [[nodiscard]] std::span<const std::uint8_t> span() const {
    const char* bytes = long_.empty() ? short_ : long_.data();
    return {reinterpret_cast<const std::uint8_t*>(bytes), size_};
  }

 private:
  static constexpr std::size_t kShortUnits = 256;
  char short_[kShortUnits * 3 + unicode::kUTF8Slack];
  std::string long_;
  std::size_t size_ = 0;
};

String hexadecimal(std::span<const std::uint8_t> bytes) {
  return String::build(bytes.size() * 2, [&](char16_t* out) {
    for (const std::uint8_t byte : bytes) {
      *out++ = u"0123456789abcdef"[byte >> 4];
      *out++ = u"0123456789abcdef"[byte & 15];
    }
    return bytes.size() * 2;
  });
}

std::span<const std::uint8_t> spanOf(const std::string& bytes) {
  return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
}

}  // namespace

String hashMD5(const String& text) {
  // As a C string, which a U+0000 ends.
  const StringView hashed = StringView(text).sub(0, unicode::findUnit(text, u'\0'));
  const Bytes bytes(hashed);
  if (bytes.isValid()) return hexadecimal(CC_MD5(bytes.span()));
  return hexadecimal(CC_MD5(spanOf(unicode::toUTF8Replacing(hashed))));
}

std::optional<String> stringFromMD5(StringView text) {
  if (text.isEmpty()) return nil;
  return hashMD5(text);
}

std::optional<String> qv_HMAC_SHA256HashWithKey(StringView text, StringView key) {
  if (text.isNil() || key.isNil()) return nil;
  const Bytes keyBytes(key);
  const Bytes bytes(text);
  if (!keyBytes.isValid() || !bytes.isValid()) return nil;
  return base64EncodedString(CCHmacSHA256(keyBytes.span(), bytes.span()));
}

}  // namespace quorvel
