#include <apps/quorvel/Binding.h>
#include <apps/quorvel/operations/Tables.h>

#include <quorvel/Extensions/UIKit/NSData+ImageDetect.h>
#include <quorvel/Extensions/UIKit/NSData+ImageFormat.h>
#include <quorvel/Extensions/UIKit/NSURL+Image+Writing.h>
#include <quorvel/Extensions/UIKit/NSURL+Image.h>
#include <quorvel/Extensions/UIKit/NSURL+ImageDetect.h>

namespace quorvel::command {
namespace {

constexpr const char* kFormat = "NSData(ImageFormat)";

constexpr Operation kRows[] = {
    op<&isJPG>(kFormat, "isJPG", "data", "do bytes begin as a JPEG?", R"([{"$data": "/9j/4AA="}])"),
    op<&isPNG>(kFormat, "isPNG", "data", "do bytes begin as a PNG?", R"([{"$data": "iVBORwA="}])"),
    op<&isAnimatedGIF>(kFormat, "isAnimatedGIF", "data", "are bytes a GIF of two frames or more?",
                       R"([{"$data": "R0lGODlhAQABAAAAADs="}])"),
    op<&metadata>(kFormat, "metadata", "data", "size, colours, EXIF, position and profile of image bytes",
                  R"([{"$data": "Qk0aAAAAAAAAABoAAAAMAAAAAwACAAEAGAA="}])"),
    op<&isImageData>("NSData(ImageDetect)", "isImageData", "data", "do bytes begin as a PNG or a JPEG?",
                     R"([{"$data": "iVBORwA="}])"),
    onDevice(op<[](StringView url) {
      const auto parsed = NSURL::withString(url);
      return parsed && isImage(*parsed);
    },
                &isImage>("NSURL(ImageDetect)", "isImage", "url", "does a file begin as a PNG or a JPEG?",
                          R"(["file:///dev/null"])")),
    onDevice(op<[](StringView url) {
      const auto parsed = NSURL::withString(url);
      const CGSize size = parsed ? imageFileDimensionSize(*parsed) : CGSize();
      return List{size.width, size.height};
    },
                &imageFileDimensionSize>("NSURL(Image)", "imageFileDimensionSize", "url",
                                         "pixels of the image in a file, across and down", R"(["file:///dev/null"])")),
    onDevice(op<[](StringView url, double largestSide) {
      const auto parsed = NSURL::withString(url);
      return parsed && resizeImageAtPixel(*parsed, largestSide);
    },
                &resizeImageAtPixel>("NSURL(Image)", "resizeImageAtPixel:", "url, largestSide",
                                     "rewrites an image file as a JPEG no larger than so many pixels",
                                     R"(["file:///dev/null", 100])")),
};

}  // namespace

std::span<const Operation> imageOperations() { return kRows; }

}  // namespace quorvel::command
