#if defined(__x86_64__)

#include <quorvel/Platform/Accelerate/PixelLanesWide.h>

#define QUORVEL_KERNEL QUORVEL_WIDE
#include <quorvel/Platform/Accelerate/BoxKernel.h>

namespace quorvel::pixels {

QUORVEL_WIDE bool runBoxesWide(const BoxRun& run, const ImageWork& work) { return BoxBands<WideLanes>(run).run(work); }

}  // namespace quorvel::pixels

#endif
