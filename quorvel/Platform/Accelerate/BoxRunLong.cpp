#include <quorvel/Platform/Accelerate/BoxKernel.h>
#include <quorvel/Platform/Accelerate/BoxRun.h>

namespace quorvel::pixels {

bool runLongBoxes(const BoxRun& run, const ImageWork& work) { return BoxBands<LongLanes>(run).run(work); }

}  // namespace quorvel::pixels
