// ImageProperties: the properties dictionary of an image file, without a pixel being decoded.
// Not here: what the file is (ImageSniff.h), pixels (ImageReader.h), files (CGImageSource.h).
#pragma once

#include <quorvel/Platform/Foundation/Value.h>
#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

// Keys of the dictionary.
inline constexpr char16_t kCGImagePropertyPixelWidth[] = u"PixelWidth";  // a number, as stored
inline constexpr char16_t kCGImagePropertyPixelHeight[] = u"PixelHeight";
inline constexpr char16_t kCGImagePropertyDepth[] = u"Depth";              // bits of a component
inline constexpr char16_t kCGImagePropertyOrientation[] = u"Orientation";  // EXIF's 1 to 8
inline constexpr char16_t kCGImagePropertyColorModel[] = u"ColorModel";    // one of the models below
inline constexpr char16_t kCGImagePropertyHasAlpha[] = u"HasAlpha";        // true; left out otherwise
inline constexpr char16_t kCGImagePropertyProfileName[] = u"ProfileName";
inline constexpr char16_t kCGImagePropertyTIFFDictionary[] = u"{TIFF}";
inline constexpr char16_t kCGImagePropertyExifDictionary[] = u"{Exif}";
inline constexpr char16_t kCGImagePropertyGPSDictionary[] = u"{GPS}";
inline constexpr char16_t kCGImagePropertyGIFDictionary[] = u"{GIF}";

// Models of colours.
inline constexpr char16_t kCGImagePropertyColorModelRGB[] = u"RGB";
inline constexpr char16_t kCGImagePropertyColorModelGray[] = u"Gray";
inline constexpr char16_t kCGImagePropertyColorModelCMYK[] = u"CMYK";
inline constexpr char16_t kCGImagePropertyColorModelLab[] = u"Lab";

// Keys of "{GIF}": seconds of the first frame, a delay of at most a hundredth counting as a tenth as viewers have it,
// and as it stands; how often the animation is shown, 0 for without end.
inline constexpr char16_t kCGImagePropertyGIFDelayTime[] = u"DelayTime";
inline constexpr char16_t kCGImagePropertyGIFUnclampedDelayTime[] = u"UnclampedDelayTime";
inline constexpr char16_t kCGImagePropertyGIFLoopCount[] = u"LoopCount";

// Keys of "{TIFF}", "{Exif}" and "{GPS}" that are asked for most; EXIFProperties.cpp has all.
inline constexpr char16_t kCGImagePropertyTIFFMake[] = u"Make";
inline constexpr char16_t kCGImagePropertyTIFFModel[] = u"Model";
inline constexpr char16_t kCGImagePropertyTIFFSoftware[] = u"Software";
inline constexpr char16_t kCGImagePropertyTIFFDateTime[] = u"DateTime";
inline constexpr char16_t kCGImagePropertyExifDateTimeOriginal[] = u"DateTimeOriginal";
inline constexpr char16_t kCGImagePropertyExifExposureTime[] = u"ExposureTime";  // seconds
inline constexpr char16_t kCGImagePropertyExifFNumber[] = u"FNumber";
inline constexpr char16_t kCGImagePropertyExifISOSpeedRatings[] = u"ISOSpeedRatings";  // a list
inline constexpr char16_t kCGImagePropertyExifFocalLength[] = u"FocalLength";          // mm
inline constexpr char16_t kCGImagePropertyExifLensModel[] = u"LensModel";
inline constexpr char16_t kCGImagePropertyGPSLatitude[] = u"Latitude";  // degrees, 0 or more
inline constexpr char16_t kCGImagePropertyGPSLatitudeRef[] = u"LatitudeRef";
inline constexpr char16_t kCGImagePropertyGPSLongitude[] = u"Longitude";
inline constexpr char16_t kCGImagePropertyGPSLongitudeRef[] = u"LongitudeRef";
inline constexpr char16_t kCGImagePropertyGPSAltitude[] = u"Altitude";  // metres

/// The properties of the first image in a file whose facts these are, each left out where the file does not say it.
/// "Orientation" stands only where it is still to be applied: not for HEIC and AVIF, whose decoder turns the picture.
/// nil when the file holds no image.
[[nodiscard]] std::optional<Dictionary> imageProperties(ImageBytes file, const ImageFacts& facts);

}  // namespace quorvel
