#include <quorvel/Platform/ImageIO/GIFBlocks.h>
#include <quorvel/Platform/ImageIO/ISOBoxes.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>
#include <quorvel/Platform/ImageIO/JPEGMarkers.h>
#include <quorvel/Platform/ImageIO/PNGChunks.h>
#include <quorvel/Platform/ImageIO/SVGRoot.h>
#include <quorvel/Platform/ImageIO/SmallImageHeaders.h>
#include <quorvel/Platform/ImageIO/TIFFDirectory.h>
#include <quorvel/Platform/ImageIO/WebPChunks.h>

namespace quorvel {
namespace {

struct Container {
  bool (*matches)(ByteView file);
  void (*read)(ByteView file, ImageFacts& facts);
};

// Fixed marks first; a PDF may have anything before its own.
constexpr Container kContainers[] = {
    {isJPEGFile, readJPEGFacts}, {isPNGFile, readPNGFacts}, {isGIFFile, readGIFFacts}, {isWebPFile, readWebPFacts},
    {isTIFFFile, readTIFFFacts}, {isISOFile, readISOFacts}, {isBMPFile, readBMPFacts}, {isICOFile, readICOFacts},
    {isSVGFile, readSVGFacts},   {isPDFFile, readPDFFacts},
};

struct Extension {
  StringView text;
  ImageFormat format;
};
constexpr Extension kExtensions[] = {
    {u"jpg", ImageFormat::JPEG},  {u"jpeg", ImageFormat::JPEG}, {u"jpe", ImageFormat::JPEG},
    {u"jfif", ImageFormat::JPEG}, {u"png", ImageFormat::PNG},   {u"apng", ImageFormat::PNG},
    {u"gif", ImageFormat::GIF},   {u"webp", ImageFormat::WebP}, {u"tif", ImageFormat::TIFF},
    {u"tiff", ImageFormat::TIFF}, {u"heic", ImageFormat::HEIC}, {u"heif", ImageFormat::HEIC},
    {u"hif", ImageFormat::HEIC},  {u"avif", ImageFormat::AVIF}, {u"avifs", ImageFormat::AVIF},
    {u"bmp", ImageFormat::BMP},   {u"dib", ImageFormat::BMP},   {u"ico", ImageFormat::ICO},
    {u"cur", ImageFormat::ICO},   {u"svg", ImageFormat::SVG},   {u"pdf", ImageFormat::PDF},
};

/// `lower` in lower case already.
bool isSameIgnoringCase(StringView text, StringView lower) {
  const auto lowered = [](char16_t unit) { return unit >= u'A' && unit <= u'Z' ? unit + 32 : +unit; };
  return std::ranges::equal(text.units(), lower.units(), {}, lowered);
}

}  // namespace

ImageFacts sniff(ImageBytes bytes) {
  const ByteView file(bytes);
  ImageFacts facts;
  facts.isComplete = file.size() >= kSVGBytes;
  for (const Container& container : kContainers) {
    if (!container.matches(file)) continue;
    facts.isComplete = false;
    container.read(file, facts);
    break;
  }
  // Boxes may hold pictures of a codec that is none of ours.
  const bool isComplete = facts.isComplete;
  if (facts.format == ImageFormat::Unknown) facts = {};
  facts.isComplete = isComplete;
  facts.decodedBytes = std::uint64_t{facts.width} * facts.height;
  facts.decodedBytes = facts.decodedBytes > UINT64_MAX / 4 ? UINT64_MAX : facts.decodedBytes * 4;
  return facts;
}

bool extensionContradicts(StringView pathExtension, ImageFormat format) {
  if (format == ImageFormat::Unknown) return false;
  if (format == ImageFormat::APNG) format = ImageFormat::PNG;
  for (const Extension& known : kExtensions) {
    if (isSameIgnoringCase(pathExtension, known.text)) return known.format != format;
  }
  return false;
}

StringView typeIdentifier(ImageFormat format) {
  static constexpr StringView kIdentifiers[] = {nil,
                                                u"public.jpeg",
                                                u"public.png",
                                                u"public.png",
                                                u"com.compuserve.gif",
                                                u"org.webmproject.webp",
                                                u"public.tiff",
                                                u"public.heic",
                                                u"public.avif",
                                                u"com.microsoft.bmp",
                                                u"com.microsoft.ico",
                                                u"public.svg-image",
                                                u"com.adobe.pdf"};
  return kIdentifiers[static_cast<std::size_t>(format)];
}

}  // namespace quorvel
