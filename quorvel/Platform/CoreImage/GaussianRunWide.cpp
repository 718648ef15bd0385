#if defined(__x86_64__)

#include <quorvel/Platform/Accelerate/PixelLanesWide.h>

#define QUORVEL_KERNEL QUORVEL_WIDE
#include <quorvel/Platform/CoreImage/GaussianKernel.h>

namespace quorvel::pixels {

QUORVEL_WIDE bool runGaussianWide(const GaussianRun& run, const ImageWork& work) {
  return GaussianBands<WideLanes>(run).run(work);
}

}  // namespace quorvel::pixels

#endif
