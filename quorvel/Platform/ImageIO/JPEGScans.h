// JPEGScans: which scans of a JPEG file a decoder needs (ITU-T T.81, annexes B and G), and the profile in front of
// them. Not here: sides and orientation (ImageSniff.h), pixels (JPEGReader.h).
#pragma once

#include <array>
#include <optional>
#include <vector>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel::jpeg {

struct Range {
  std::size_t start = 0;
  std::size_t end = 0;
};

/// The colour profile in front of the first scan, put together from its pieces; empty when there is none, when a piece
/// is missing or doubled, and beyond `limit` bytes.
[[nodiscard]] std::vector<std::uint8_t> profileOf(ImageBytes file, std::size_t limit);

/// How much of a component's blocks is wanted: their means, which are the first coefficients; the others without their
/// last bits; all.
enum class Detail : std::uint8_t { Means, Coarse, Full };

/// Of the components of a picture of several scans.
struct ScanWishes {
  struct Component {
    std::uint8_t identifier = 0;
    Detail detail = Detail::Full;
  };
  std::array<Component, 4> components{};
  /// Wanted scans after whose data the picture ends.
  int lastScan = limits::kImageScans;
};

/// The file without the scans that are not wanted; no range is empty.
struct ScanPlan {
  std::array<Range, limits::kImageScans + 1> kept{};
  std::size_t keptCount = 0;
  int scanCount = 0;
  bool isShortened = false;
};

/// `start` is where the entropy-coded data of the first scan begin, which is always kept. nil when there are more scans
/// than `limits::kImageScans`.
[[nodiscard]] std::optional<ScanPlan> planScans(ImageBytes file, std::size_t start, const ScanWishes& wishes);

}  // namespace quorvel::jpeg
