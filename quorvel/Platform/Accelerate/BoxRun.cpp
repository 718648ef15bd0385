#include <quorvel/Platform/Accelerate/BoxKernel.h>
#include <quorvel/Platform/Accelerate/BoxRun.h>

namespace quorvel::pixels {

bool runBoxes(const BoxRun& run, const ImageWork& work) { return BoxBands<Lanes>(run).run(work); }

}  // namespace quorvel::pixels
