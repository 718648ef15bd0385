// The attributes of a keychain item, as they are sealed and digested: UTF-16 units, so that names need no conversion
// and any text has exactly one form.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include <quorvel/Platform/Foundation/Value.h>

namespace quorvel {

enum class Accessibility : std::uint8_t {
  WhenUnlocked = 1,
  AfterFirstUnlock,
  Always,
  WhenPasscodeSetThisDeviceOnly,
  WhenUnlockedThisDeviceOnly,
  AfterFirstUnlockThisDeviceOnly,
  AlwaysThisDeviceOnly,
};

/// The constant of SecItem.h, and back.
[[nodiscard]] StringView textOf(Accessibility accessible);
[[nodiscard]] std::optional<Accessibility> accessibilityOf(StringView text);

/// Attributes that somebody else holds.
struct AttributesView {
  StringView service = u"";
  StringView account = u"";
  StringView group = u"";
  std::span<const std::uint8_t> generic;
  bool hasGeneric = false;
  Accessibility accessible = Accessibility::WhenUnlocked;
};

/// The encoded form: the class, service, account and group (the identity), the accessibility, the generic bytes.
class EncodedAttributes {
 public:
  EncodedAttributes() = default;
  EncodedAttributes(const EncodedAttributes&) = default;
  EncodedAttributes& operator=(const EncodedAttributes&) = default;
  EncodedAttributes(EncodedAttributes&&) = default;
  EncodedAttributes& operator=(EncodedAttributes&&) = default;
  ~EncodedAttributes();

  void encode(const AttributesView& attributes);
  /// The identity alone, as a lookup needs it.
  void encodeIdentity(StringView service, StringView account, StringView group);
  /// The attributes, held by this object; nothing when the bytes are no encoded form.
  [[nodiscard]] std::optional<AttributesView> decode(std::span<const std::uint8_t> bytes);
  /// The same of what it holds.
  [[nodiscard]] std::optional<AttributesView> decode();

  [[nodiscard]] std::span<const std::uint8_t> identity() const { return first(identitySize_); }
  [[nodiscard]] std::span<const std::uint8_t> all() const { return first(units_.size()); }

 private:
  [[nodiscard]] std::span<const std::uint8_t> first(std::size_t units) const {
    return {reinterpret_cast<const std::uint8_t*>(units_.data()), units * sizeof(char16_t)};
  }
  void append(StringView text);

  std::vector<char16_t> units_;
  std::size_t identitySize_ = 0;
};

}  // namespace quorvel
