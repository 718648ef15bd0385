#include <apps/quorvel/Operation.h>
#include <apps/quorvel/Terminal.h>
#include <apps/quorvel/image/ImageInfo.h>

#include <quorvel/Extensions/Foundation/NSNumber+HumanReadable.h>
#include <quorvel/Platform/Foundation/NumberText.h>
#include <quorvel/Platform/Foundation/PathOperations.h>
#include <quorvel/Platform/ImageIO/ImageProperties.h>
#include <quorvel/Platform/ImageIO/ImageSniff.h>

namespace quorvel::command {
namespace {

constexpr const char* kFormats[] = {"unknown", "JPEG", "PNG", "APNG", "GIF", "WebP", "TIFF",
                                    "HEIC",    "AVIF", "BMP", "ICO",  "SVG", "PDF"};

const char* formatOf(const ImageFacts& facts) { return kFormats[static_cast<std::size_t>(facts.format)]; }

bool contradicts(const std::string& path, const ImageFacts& facts) {
  return extensionContradicts(paths::pathExtension(String::fromUTF8Replacing(path)), facts.format);
}

std::string bytesText(std::uint64_t bytes) {
  return humanReadableSize(Number(static_cast<std::int64_t>(bytes))).toUTF8Replacing();
}

void addLine(std::string& text, const char* name, const std::string& value) {
  if (!value.empty()) text += joined({"  ", name, std::string(13 - std::string_view(name).size(), ' '), value, "\n"});
}

std::string shown(const Value& value) {
  std::string text;
  if (const String* string = value.asString()) appendPlain(text, *string, "");
  if (const auto number = value.asNumber()) text = stringValue(*number).toUTF8Replacing();
  return text;
}

Dictionary sectionOf(const Dictionary& properties, StringView name) {
  const Dictionary* section = properties[name].asDictionary();
  return section ? *section : Dictionary();
}

std::string placeText(const Dictionary& gps) {
  const std::string latitude = shown(gps[kCGImagePropertyGPSLatitude]);
  const std::string longitude = shown(gps[kCGImagePropertyGPSLongitude]);
  if (latitude.empty() || longitude.empty()) return {};
  return joined({latitude, " ", shown(gps[kCGImagePropertyGPSLatitudeRef]), ", ", longitude, " ",
                 shown(gps[kCGImagePropertyGPSLongitudeRef])});
}

std::string kindText(const ImageFacts& facts) {
  std::string text = formatOf(facts);
  if (facts.isProgressive) text += facts.format == ImageFormat::JPEG ? ", progressive" : ", interlaced";
  if (facts.isAnimated) text += ", animated";
  if (facts.frameCount > 1) text += joined({", ", std::to_string(facts.frameCount), " images"});
  return text;
}

}  // namespace

Dictionary infoRecord(const std::string& path, CGImageSource& source) {
  const ImageFacts& facts = source.facts();
  Dictionary record;
  record.set(u"file", String::fromUTF8Replacing(path));
  record.set(u"type", String(source.type()));
  record.set(u"format", String::fromASCII(formatOf(facts)));
  record.set(u"width", std::int64_t{facts.width});
  record.set(u"height", std::int64_t{facts.height});
  record.set(u"orientation", std::int64_t{facts.exifOrientation});
  record.set(u"images", static_cast<std::int64_t>(facts.frameCount));
  record.set(u"animated", facts.isAnimated);
  record.set(u"progressive", facts.isProgressive);
  record.set(u"alpha", facts.hasAlpha);
  record.set(u"decodedBytes", static_cast<std::int64_t>(facts.decodedBytes));
  record.set(u"extensionContradicts", contradicts(path, facts));
  if (const auto properties = source.properties()) record.set(u"properties", *properties);
  return record;
}

std::string infoText(const std::string& path, CGImageSource& source) {
  const ImageFacts& facts = source.facts();
  const Dictionary properties = source.properties().value_or(Dictionary());
  const Dictionary camera = sectionOf(properties, kCGImagePropertyTIFFDictionary);
  const Dictionary exif = sectionOf(properties, kCGImagePropertyExifDictionary);
  std::string text;
  appendPlain(text, String::fromUTF8Replacing(path), "");
  text += "\n";
  addLine(text, "format", kindText(facts));
  addLine(text, "pixels",
          joined({std::to_string(facts.width), " x ", std::to_string(facts.height), ", ", bytesText(facts.decodedBytes),
                  " decoded"}));
  if (facts.exifOrientation != 1) addLine(text, "orientation", std::to_string(facts.exifOrientation));
  addLine(text, "profile", shown(properties[kCGImagePropertyProfileName]));
  std::string maker = shown(camera[kCGImagePropertyTIFFMake]);
  const std::string model = shown(camera[kCGImagePropertyTIFFModel]);
  if (!maker.empty() && !model.empty()) maker += " ";
  addLine(text, "camera", maker + model);
  addLine(text, "taken", shown(exif[kCGImagePropertyExifDateTimeOriginal]));
  addLine(text, "place", placeText(sectionOf(properties, kCGImagePropertyGPSDictionary)));
  if (contradicts(path, facts)) addLine(text, "name", "its extension is that of another format");
  return text;
}

}  // namespace quorvel::command
