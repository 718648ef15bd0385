#include <algorithm>

#include <quorvel/Extensions/UIKit/NSData+ImageFormat.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>

namespace quorvel {
namespace {

/// One byte more than is compared.
constexpr std::size_t kLeastBytes = 5;

bool beginsWith(const Data& data, std::initializer_list<std::uint8_t> mark) {
  const auto bytes = data.bytes();
  return bytes.size() >= kLeastBytes && std::equal(mark.begin(), mark.end(), bytes.begin());
}

}  // namespace

bool isJPG(const Data& data) {
  constexpr std::uint8_t kFirstMarkers[] = {0xDB, 0xE0, 0xE1, 0xE2, 0xE3, 0xE8};
  return beginsWith(data, {0xFF, 0xD8, 0xFF}) &&
         std::ranges::find(kFirstMarkers, data.bytes()[3]) != std::end(kFirstMarkers);
}

bool isPNG(const Data& data) { return beginsWith(data, {0x89, 'P', 'N', 'G'}); }

bool isAnimatedGIF(const Data& data) {
  auto source = CGImageSource::withData(data);
  return source && source->type() == u"com.compuserve.gif" && source->count() >= 2;
}

std::optional<Dictionary> metadata(const Data& data) {
  auto source = CGImageSource::withData(data);
  return source ? source->properties() : std::nullopt;
}

}  // namespace quorvel
