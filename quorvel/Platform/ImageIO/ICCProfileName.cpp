#include <quorvel/Platform/ImageIO/ICCProfileName.h>
#include <quorvel/Platform/ImageIO/TIFFDirectory.h>

namespace quorvel {
namespace {

constexpr std::uint64_t kTagTable = 128;
constexpr std::uint64_t kTagSize = 12;
constexpr std::uint64_t kRecordSize = 12;
constexpr std::uint64_t kNameBytes = 1024;

/// Version 2: ASCII that ends in a NUL.
std::optional<String> plainName(ByteView tag) {
  const std::uint32_t count = tag.big32(8);
  if (count == 0 || !tag.has(12, count)) return std::nullopt;
  return textOfBytes(tag.part(12, std::min<std::uint64_t>(count, kNameBytes)));
}

/// Version 4: a record for each language, its text as UTF-16.
std::optional<String> localizedName(ByteView tag) {
  const std::uint64_t count =
      std::min<std::uint64_t>(tag.big32(8), (tag.size() - std::min<std::uint64_t>(tag.size(), 16)) / kRecordSize);
  if (count == 0 || tag.big32(12) != kRecordSize) return std::nullopt;
  std::uint64_t chosen = 16;
  for (std::uint64_t i = count; i-- > 0;) {
    if (tag.is(16 + i * kRecordSize, "en")) chosen = 16 + i * kRecordSize;
  }
  const std::uint64_t length = tag.big32(chosen + 4);
  const std::uint64_t location = tag.big32(chosen + 8);
  if (!tag.has(location, length)) return std::nullopt;
  StringBuilder text;
  for (std::uint64_t i = 0; i + 2 <= std::min(length, kNameBytes) && tag.big16(location + i); i += 2) {
    text.append(tag.big16(location + i));
  }
  return text.finish();
}

}  // namespace

std::optional<String> iccProfileName(ImageBytes bytes) {
  const ByteView profile(bytes);
  if (!profile.is(36, "acsp")) return std::nullopt;
  const std::uint32_t count = profile.big32(kTagTable);
  for (std::uint64_t i = 0, at = kTagTable + 4; i < count && profile.has(at, kTagSize); ++i, at += kTagSize) {
    if (!profile.is(at, "desc")) continue;
    const ByteView tag(profile.part(profile.big32(at + 4), profile.big32(at + 8)));
    const auto name = tag.is(0, "mluc") ? localizedName(tag) : tag.is(0, "desc") ? plainName(tag) : std::nullopt;
    return name && !name->isEmpty() ? name : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace quorvel
