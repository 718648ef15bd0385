// TurnedBitmap: pixels moved to where an orientation wants them, exactly.
// Not here: drawing turned (CoreGraphics/CGContext.h).
#pragma once

#include <memory>

#include <quorvel/Platform/CoreGraphics/CGContext.h>
#include <quorvel/Platform/CoreGraphics/ImageWork.h>

namespace quorvel {

/// The bitmap as it is shown when its stored pixels have the orientation; the bitmap itself for one that is upright.
/// nullptr for none, when there is no memory, and when the work was stopped.
[[nodiscard]] std::shared_ptr<const CGBitmap> turnedBitmap(std::shared_ptr<const CGBitmap> bitmap,
                                                           UIImageOrientation orientation, const ImageWork& work = {});

}  // namespace quorvel
