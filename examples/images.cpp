// A picture drawn, written, recognised, shrunk and turned into frosted glass.
#include <iostream>

#include <quorvel/Extensions/UIKit/NSData+ImageFormat.h>
#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/UIKit/UIImagePNG.h>

using namespace quorvel;

namespace {

/// A sun over the sea.
UIImage picture() {
  const UIGraphicsImageContext drawing({400, 300});
  CGContext& context = *drawing.context();
  context.setFillColor({0.5, 0.7, 1, 1});
  context.fillRect({0, 0, 400, 200});
  context.setFillColor({1, 0.9, 0.3, 1});
  context.fillRect({300, 40, 50, 50});
  context.setFillColor({0.1, 0.3, 0.6, 1});
  context.fillRect({0, 200, 400, 100});
  return *drawing.image();
}

void print(StringView name, const std::optional<UIImage>& image) {
  std::cout << name << ": ";
  if (!image) return void(std::cout << "nothing\n");
  const std::uint8_t* pixel = image->bitmap().bitmap().row(0);
  std::cout << image->size().width << " x " << image->size().height << " points, first pixel blue " << +pixel[0]
            << ", green " << +pixel[1] << ", red " << +pixel[2] << ", alpha " << +pixel[3] << '\n';
}

}  // namespace

int main() {
  const UIImage image = picture();
  const Data png = *UIImagePNGRepresentation(image);
  const Data jpeg = *encodeJPEG(image.bitmap().bitmap());
  std::cout << std::boolalpha << "PNG by its bytes: " << isPNG(png) << ", JPEG: " << isJPG(jpeg)
            << ", an animation: " << isAnimatedGIF(png) << '\n';

  auto source = CGImageSource::withData(jpeg);
  std::cout << source->type() << ", " << source->pixelSize().width << " x " << source->pixelSize().height
            << " pixels\n";
  print(u"thumbnail of 100 pixels", UIImage(*source->thumbnail(100)));

  print(u"cut", cropImageWithSize(image, {300, 40, 50, 50}));
  print(u"grey", convertToGrayscale(image));
  print(u"light frosted glass", applyLightEffect(image));
  print(u"halved until its PNG takes 200 bytes", scaledImageLimitedLength(image, 200));
}
