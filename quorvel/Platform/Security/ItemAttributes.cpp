#include <algorithm>

#include <quorvel/Platform/Security/ItemAttributes.h>
#include <quorvel/Platform/Security/SecItem.h>
#include <quorvel/Platform/Security/SecretBytes.h>

namespace quorvel {
namespace {

constexpr char16_t kGenericPassword = 0x0101;  // first form, class 1
constexpr char16_t kNoGeneric = 0xFFFF;

constexpr std::pair<Accessibility, StringView> kAccessibilities[] = {
    {Accessibility::AfterFirstUnlock, kSecAttrAccessibleAfterFirstUnlock},
    {Accessibility::AfterFirstUnlockThisDeviceOnly, kSecAttrAccessibleAfterFirstUnlockThisDeviceOnly},
    {Accessibility::WhenUnlocked, kSecAttrAccessibleWhenUnlocked},
    {Accessibility::WhenUnlockedThisDeviceOnly, kSecAttrAccessibleWhenUnlockedThisDeviceOnly},
    {Accessibility::WhenPasscodeSetThisDeviceOnly, kSecAttrAccessibleWhenPasscodeSetThisDeviceOnly},
    {Accessibility::Always, kSecAttrAccessibleAlways},
    {Accessibility::AlwaysThisDeviceOnly, kSecAttrAccessibleAlwaysThisDeviceOnly},
};

/// Takes units from the front.
class UnitReader {
 public:
  explicit UnitReader(std::span<const char16_t> units) : left_(units) {}
  [[nodiscard]] bool failed() const { return failed_; }
  [[nodiscard]] bool isAtEnd() const { return left_.empty(); }
  [[nodiscard]] std::size_t left() const { return left_.size(); }
  char16_t unit() { return take(1).data()[0]; }
  std::size_t length() {
    const std::size_t low = unit();
    return low | std::size_t{unit()} << 16;
  }
  StringView text() { return take(length()); }
  StringView take(std::size_t count) {
    if (count > left_.size()) {
      failed_ = true;
      return u"\0";
    }
    const auto taken = left_.first(count);
    left_ = left_.subspan(count);
    return StringView(taken.data(), taken.size());
  }

 private:
  std::span<const char16_t> left_;
  bool failed_ = false;
};

}  // namespace

StringView textOf(Accessibility accessible) {
  for (const auto& [known, text] : kAccessibilities) {
    if (known == accessible) return text;
  }
  return nil;
}

std::optional<Accessibility> accessibilityOf(StringView text) {
  for (const auto& [known, its] : kAccessibilities) {
    if (its == text) return known;
  }
  return std::nullopt;
}

EncodedAttributes::~EncodedAttributes() {
  wipe({reinterpret_cast<std::uint8_t*>(units_.data()), units_.size() * sizeof(char16_t)});
}

void EncodedAttributes::append(StringView text) {
  units_.push_back(static_cast<char16_t>(text.size() & 0xFFFF));
  units_.push_back(static_cast<char16_t>(text.size() >> 16));
  units_.insert(units_.end(), text.begin(), text.end());
}

void EncodedAttributes::encodeIdentity(StringView service, StringView account, StringView group) {
  units_.clear();
  units_.reserve(16 + service.size() + account.size() + group.size());
  units_.push_back(kGenericPassword);
  append(service);
  append(account);
  append(group);
  identitySize_ = units_.size();
}

void EncodedAttributes::encode(const AttributesView& attributes) {
  encodeIdentity(attributes.service, attributes.account, attributes.group);
  units_.push_back(static_cast<char16_t>(attributes.accessible));
  if (!attributes.hasGeneric) {
    units_.push_back(kNoGeneric);
    return;
  }
  const std::size_t size = attributes.generic.size();
  units_.push_back(static_cast<char16_t>(size % 2));
  const std::size_t start = units_.size();
  units_.resize(start + (size + 1) / 2);
  std::copy(attributes.generic.begin(), attributes.generic.end(), reinterpret_cast<std::uint8_t*>(&units_[0] + start));
}

std::optional<AttributesView> EncodedAttributes::decode(std::span<const std::uint8_t> bytes) {
  if (bytes.size() % sizeof(char16_t) != 0) return std::nullopt;
  units_.resize(bytes.size() / sizeof(char16_t));
  std::copy(bytes.begin(), bytes.end(), reinterpret_cast<std::uint8_t*>(units_.data()));
  return decode();
}

std::optional<AttributesView> EncodedAttributes::decode() {
  UnitReader reader(units_);
  AttributesView view;
  if (reader.unit() != kGenericPassword) return std::nullopt;
  view.service = reader.text();
  view.account = reader.text();
  view.group = reader.text();
  const std::size_t identity = units_.size() - reader.left();
  const char16_t accessible = reader.unit();
  const char16_t generic = reader.unit();
  if (reader.failed() || accessible < 1 || accessible > 7 || (generic > 1 && generic != kNoGeneric))
    return std::nullopt;
  view.accessible = static_cast<Accessibility>(accessible);
  view.hasGeneric = generic != kNoGeneric;
  const StringView rest = reader.take(reader.left());
  if (view.hasGeneric ? generic == 1 && rest.isEmpty() : !rest.isEmpty()) return std::nullopt;
  const std::size_t padding = generic == 1 ? 1 : 0;
  view.generic = {reinterpret_cast<const std::uint8_t*>(rest.data()), rest.size() * sizeof(char16_t) - padding};
  if (!view.hasGeneric) view.generic = {};
  identitySize_ = identity;
  return view;
}

}  // namespace quorvel
