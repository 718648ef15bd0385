#include <algorithm>
#include <cstring>
#include <string_view>

#include <quorvel/Platform/ImageIO/JPEGScans.h>

namespace quorvel::jpeg {
namespace {

constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kEndOfImage = 0xD9;
constexpr std::uint8_t kStartOfScan = 0xDA;
constexpr std::uint8_t kProfileMarker = 0xE2;

/// 0xFF, code, and for most a body; the length counts itself.
struct Marker {
  std::size_t start = 0;
  std::uint8_t code = 0;
  Range body{};
};

constexpr bool isRestart(std::uint8_t code) { return code >= 0xD0 && code <= 0xD7; }
constexpr bool hasBody(std::uint8_t code) {
  return code != 0x01 && !isRestart(code) && code != kStartOfImage && code != kEndOfImage;
}

/// The next marker at or after `at` that is neither stuffing within coded data nor a restart.
std::optional<Marker> nextMarker(ImageBytes file, std::size_t at) {
  while (at + 1 < file.size()) {
    const void* const found = std::memchr(file.data() + at, 0xFF, file.size() - at - 1);
    if (!found) return std::nullopt;
    at = static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - file.data());
    const std::uint8_t code = file[at + 1];
    if (code == 0xFF) {
      ++at;  // fill bytes
    } else if (code == 0 || isRestart(code)) {
      at += 2;
    } else {
      break;
    }
  }
  if (at + 1 >= file.size()) return std::nullopt;
  Marker marker{at, file[at + 1], {at + 2, at + 2}};
  if (!hasBody(marker.code)) return marker;
  if (file.size() - at < 4) return std::nullopt;
  const std::size_t length = static_cast<std::size_t>(file[at + 2]) << 8 | file[at + 3];
  if (length < 2 || length > file.size() - at - 2) return std::nullopt;
  marker.body = {at + 4, at + 2 + length};
  return marker;
}

/// Of coded data with no whole marker behind them: a marker that is cut off is left out.
std::size_t endOfData(ImageBytes file, std::size_t at) {
  while (at + 1 < file.size()) {
    const bool isMarker = file[at] == 0xFF && file[at + 1] != 0 && file[at + 1] != 0xFF && !isRestart(file[at + 1]);
    if (isMarker) return at;
    ++at;
  }
  return file.size();
}

struct Piece {
  std::uint8_t number;
  std::uint8_t count;
  Range bytes;
};

std::optional<Piece> pieceIn(ImageBytes file, const Marker& marker) {
  constexpr std::string_view kName{"ICC_PROFILE\0", 12};
  const std::size_t size = marker.body.end - marker.body.start;
  if (marker.code != kProfileMarker || size < kName.size() + 2) return std::nullopt;
  const std::uint8_t* const body = file.data() + marker.body.start;
  if (std::memcmp(body, kName.data(), kName.size()) != 0) return std::nullopt;
  return Piece{body[kName.size()], body[kName.size() + 1], {marker.body.start + kName.size() + 2, marker.body.end}};
}

/// Progressive scans beyond the first coefficient are of one component.
bool isWanted(ImageBytes file, const Marker& scan, const ScanWishes& wishes) {
  const std::size_t size = scan.body.end - scan.body.start;
  const std::uint8_t* const body = file.data() + scan.body.start;
  if (size != 6 || body[0] != 1 || body[3] == 0) return true;
  const auto found = std::find_if(wishes.components.begin(), wishes.components.end(),
                                  [&](const auto& component) { return component.identifier == body[1]; });
  if (found == wishes.components.end() || found->detail == Detail::Full) return true;
  const bool isRefinement = body[5] >> 4 != 0;
  return found->detail == Detail::Coarse && !isRefinement;
}

}  // namespace

std::vector<std::uint8_t> profileOf(ImageBytes file, std::size_t limit) {
  std::array<Range, 256> pieces{};
  std::size_t count = 0;
  std::size_t found = 0;
  std::size_t size = 0;
  for (auto marker = nextMarker(file, 2); marker && marker->code != kStartOfScan && marker->code != kEndOfImage;
       marker = nextMarker(file, marker->body.end)) {
    const auto piece = pieceIn(file, *marker);
    if (!piece) continue;
    if (piece->number == 0 || piece->number > piece->count || (count && count != piece->count)) return {};
    if (pieces[piece->number].end) return {};
    pieces[piece->number] = piece->bytes;
    count = piece->count;
    ++found;
    size += piece->bytes.end - piece->bytes.start;
  }
  if (found != count || size > limit) return {};
  std::vector<std::uint8_t> profile;
  profile.reserve(size);
  for (std::size_t i = 1; i <= count; ++i) {
    const ImageBytes bytes = file.subspan(pieces[i].start, pieces[i].end - pieces[i].start);
    profile.insert(profile.end(), bytes.begin(), bytes.end());
  }
  return profile;
}

std::optional<ScanPlan> planScans(ImageBytes file, std::size_t start, const ScanWishes& wishes) {
  ScanPlan plan;
  std::size_t keptFrom = start;
  int keptScans = 1;
  bool isKept = true;
  std::size_t at = start;
  for (plan.scanCount = 1;;) {
    const auto marker = nextMarker(file, at);
    const bool isEnd = !marker || marker->code == kEndOfImage;
    const bool isScan = !isEnd && marker->code == kStartOfScan;
    if (isScan && ++plan.scanCount > limits::kImageScans) return std::nullopt;
    // Tables between scans are kept whatever they stand behind.
    const bool keeps = !isEnd && (isScan ? isWanted(file, *marker, wishes) : keptScans < wishes.lastScan);
    const bool isLast = isEnd || (isScan && keeps && ++keptScans > wishes.lastScan);
    if (isScan && !keeps) plan.isShortened = true;
    const std::size_t here = marker ? marker->start : endOfData(file, at);
    if (isKept && (isLast || !keeps) && keptFrom < here) plan.kept[plan.keptCount++] = {keptFrom, here};
    if (isLast) return plan;
    if (keeps && !isKept) keptFrom = here;
    isKept = keeps;
    at = marker->body.end;
  }
}

}  // namespace quorvel::jpeg
