#include <quorvel/Extensions/UIKit/NSData+ImageDetect.h>
#include <quorvel/Extensions/UIKit/NSURL+ImageDetect.h>
#include <quorvel/Platform/ImageIO/ImageFile.h>

namespace quorvel {

bool isImage(const NSURL& url) {
  constexpr std::size_t kBytes = 10;
  const FileDescriptor file = openImageFile(url);
  std::vector<std::uint8_t> bytes;
  if (file.isOpen()) readOn(file, kBytes, bytes);
  return isImageData(Data(bytes));
}

}  // namespace quorvel
