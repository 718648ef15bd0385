// One blur by boxes as the kernels take it: pointers, and the plans of both directions. Included by sources only.
#pragma once

#include <quorvel/Platform/Accelerate/BoxPlan.h>
#include <quorvel/Platform/Accelerate/PixelView.h>

namespace quorvel::pixels {

struct BoxRun {
  PixelView view;
  BoxPlan columns;
  BoxPlan rows;
};

/// False when stopped.
[[nodiscard]] bool runBoxes(const BoxRun& run, const ImageWork& work);
/// For sides whose sums take 64 bits.
[[nodiscard]] bool runLongBoxes(const BoxRun& run, const ImageWork& work);
#if defined(__x86_64__)
[[nodiscard]] bool runBoxesWide(const BoxRun& run, const ImageWork& work);
#endif

}  // namespace quorvel::pixels
