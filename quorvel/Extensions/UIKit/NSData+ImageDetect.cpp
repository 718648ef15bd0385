#include <quorvel/Extensions/UIKit/NSData+ImageDetect.h>
#include <quorvel/Extensions/UIKit/NSData+ImageFormat.h>

namespace quorvel {

bool isImageData(const Data& data) { return isPNG(data) || isJPG(data); }

}  // namespace quorvel
