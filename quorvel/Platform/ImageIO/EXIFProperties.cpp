#include <bitset>
#include <cmath>
#include <span>

#include <quorvel/Platform/ImageIO/EXIFProperties.h>
#include <quorvel/Platform/ImageIO/TIFFDirectory.h>

namespace quorvel {
namespace {

enum class Form : std::uint8_t {
  Number,
  List,  // of numbers, even of one
  Text,
  Comment,  // a text behind eight bytes that name its character code
  Digits,   // characters for the digits of a version: a list of numbers
  Bytes,    // a list of numbers, or the number where there is one
  Degrees,  // with minutes and seconds
  Time,     // hours, minutes, seconds
};

struct Tag {
  std::uint16_t number;
  Form form;
  StringView name;
};

constexpr std::uint16_t kExifDirectory = 34665;
constexpr std::uint16_t kGPSDirectory = 34853;

constexpr Tag kTIFFTags[] = {
    {259, Form::Number, u"Compression"}, {262, Form::Number, u"PhotometricInterpretation"},
    {269, Form::Text, u"DocumentName"},  {270, Form::Text, u"ImageDescription"},
    {271, Form::Text, u"Make"},          {272, Form::Text, u"Model"},
    {274, Form::Number, u"Orientation"}, {282, Form::Number, u"XResolution"},
    {283, Form::Number, u"YResolution"}, {296, Form::Number, u"ResolutionUnit"},
    {305, Form::Text, u"Software"},      {306, Form::Text, u"DateTime"},
    {315, Form::Text, u"Artist"},        {316, Form::Text, u"HostComputer"},
    {318, Form::List, u"WhitePoint"},    {319, Form::List, u"PrimaryChromaticities"},
    {33432, Form::Text, u"Copyright"},
};

constexpr Tag kExifTags[] = {
    {33434, Form::Number, u"ExposureTime"},
    {33437, Form::Number, u"FNumber"},
    {34850, Form::Number, u"ExposureProgram"},
    {34852, Form::Text, u"SpectralSensitivity"},
    {34855, Form::List, u"ISOSpeedRatings"},
    {34864, Form::Number, u"SensitivityType"},
    {34865, Form::Number, u"StandardOutputSensitivity"},
    {34866, Form::Number, u"RecommendedExposureIndex"},
    {34867, Form::Number, u"ISOSpeed"},
    {36864, Form::Digits, u"ExifVersion"},
    {36867, Form::Text, u"DateTimeOriginal"},
    {36868, Form::Text, u"DateTimeDigitized"},
    {36880, Form::Text, u"OffsetTime"},
    {36881, Form::Text, u"OffsetTimeOriginal"},
    {36882, Form::Text, u"OffsetTimeDigitized"},
    {37121, Form::Bytes, u"ComponentsConfiguration"},
    {37122, Form::Number, u"CompressedBitsPerPixel"},
    {37377, Form::Number, u"ShutterSpeedValue"},
    {37378, Form::Number, u"ApertureValue"},
    {37379, Form::Number, u"BrightnessValue"},
    {37380, Form::Number, u"ExposureBiasValue"},
    {37381, Form::Number, u"MaxApertureValue"},
    {37382, Form::Number, u"SubjectDistance"},
    {37383, Form::Number, u"MeteringMode"},
    {37384, Form::Number, u"LightSource"},
    {37385, Form::Number, u"Flash"},
    {37386, Form::Number, u"FocalLength"},
    {37396, Form::List, u"SubjectArea"},
    {37510, Form::Comment, u"UserComment"},
    {37520, Form::Text, u"SubsecTime"},
    {37521, Form::Text, u"SubsecTimeOriginal"},
    {37522, Form::Text, u"SubsecTimeDigitized"},
    {40960, Form::Digits, u"FlashPixVersion"},
    {40961, Form::Number, u"ColorSpace"},
    {40962, Form::Number, u"PixelXDimension"},
    {40963, Form::Number, u"PixelYDimension"},
    {40964, Form::Text, u"RelatedSoundFile"},
    {41486, Form::Number, u"FocalPlaneXResolution"},
    {41487, Form::Number, u"FocalPlaneYResolution"},
    {41488, Form::Number, u"FocalPlaneResolutionUnit"},
    {41492, Form::List, u"SubjectLocation"},
    {41493, Form::Number, u"ExposureIndex"},
    {41495, Form::Number, u"SensingMethod"},
    {41728, Form::Bytes, u"FileSource"},
    {41729, Form::Bytes, u"SceneType"},
    {41985, Form::Number, u"CustomRendered"},
    {41986, Form::Number, u"ExposureMode"},
    {41987, Form::Number, u"WhiteBalance"},
    {41988, Form::Number, u"DigitalZoomRatio"},
    {41989, Form::Number, u"FocalLenIn35mmFilm"},
    {41990, Form::Number, u"SceneCaptureType"},
    {41991, Form::Number, u"GainControl"},
    {41992, Form::Number, u"Contrast"},
    {41993, Form::Number, u"Saturation"},
    {41994, Form::Number, u"Sharpness"},
    {41996, Form::Number, u"SubjectDistRange"},
    {42016, Form::Text, u"ImageUniqueID"},
    {42032, Form::Text, u"CameraOwnerName"},
    {42033, Form::Text, u"BodySerialNumber"},
    {42034, Form::List, u"LensSpecification"},
    {42035, Form::Text, u"LensMake"},
    {42036, Form::Text, u"LensModel"},
    {42037, Form::Text, u"LensSerialNumber"},
    {42240, Form::Number, u"Gamma"},
};

constexpr Tag kGPSTags[] = {
    {0, Form::Bytes, u"GPSVersion"},         {1, Form::Text, u"LatitudeRef"},
    {2, Form::Degrees, u"Latitude"},         {3, Form::Text, u"LongitudeRef"},
    {4, Form::Degrees, u"Longitude"},        {5, Form::Number, u"AltitudeRef"},
    {6, Form::Number, u"Altitude"},          {7, Form::Time, u"TimeStamp"},
    {8, Form::Text, u"Satellites"},          {9, Form::Text, u"Status"},
    {10, Form::Text, u"MeasureMode"},        {11, Form::Number, u"DOP"},
    {12, Form::Text, u"SpeedRef"},           {13, Form::Number, u"Speed"},
    {14, Form::Text, u"TrackRef"},           {15, Form::Number, u"Track"},
    {16, Form::Text, u"ImgDirectionRef"},    {17, Form::Number, u"ImgDirection"},
    {18, Form::Text, u"MapDatum"},           {19, Form::Text, u"DestLatitudeRef"},
    {20, Form::Degrees, u"DestLatitude"},    {21, Form::Text, u"DestLongitudeRef"},
    {22, Form::Degrees, u"DestLongitude"},   {23, Form::Text, u"DestBearingRef"},
    {24, Form::Number, u"DestBearing"},      {25, Form::Text, u"DestDistanceRef"},
    {26, Form::Number, u"DestDistance"},     {27, Form::Comment, u"ProcessingMethod"},
    {28, Form::Comment, u"AreaInformation"}, {29, Form::Text, u"DateStamp"},
    {30, Form::Number, u"Differental"},      {31, Form::Number, u"HPositioningError"},
};

constexpr std::uint64_t kListLength = 64;
constexpr double kLargestWhole = 9007199254740992;  // of those that a double tells from their neighbours

/// A whole number as an integer, so that it is written as one.
Value valueOf(double number) {
  if (!std::isfinite(number)) return nil;
  const bool isWhole = std::fabs(number) <= kLargestWhole && std::trunc(number) == number;
  return isWhole ? Value(static_cast<std::int64_t>(number)) : Value(number);
}

Value valueOf(std::optional<double> number) { return number ? valueOf(*number) : Value(nil); }

Value textValue(ImageBytes bytes) {
  String text = textOfBytes(bytes);
  return text.isEmpty() ? Value(nil) : Value(std::move(text));
}

class Fields {
 public:
  Fields(const TIFFBlock& block, const TIFFField& field) : block_(block), field_(field) {}

  [[nodiscard]] Value as(Form form) const {
    switch (form) {
      case Form::Number:
        return valueOf(block_.number(field_));
      case Form::List:
        return list();
      case Form::Text:
        return textValue(block_.bytes(field_));
      case Form::Comment:
        return comment();
      case Form::Digits:
        return bytes('0');
      case Form::Bytes:
        return field_.count == 1 ? Value(std::int64_t{block_.bytes(field_)[0]}) : bytes(0);
      case Form::Degrees:
        return degrees();
      case Form::Time:
        return time();
    }
    return nil;
  }

 private:
  [[nodiscard]] Value list() const {
    List numbers;
    for (std::uint64_t i = 0; i < std::min(field_.count, kListLength); ++i) {
      // A division by zero stands for "unknown", and keeps its place; so does what is no finite number.
      const Value number = valueOf(block_.number(field_, i));
      numbers.append(number.isNil() ? Value(0) : number);
    }
    return numbers.isEmpty() ? Value(nil) : Value(std::move(numbers));
  }

  [[nodiscard]] Value bytes(std::uint8_t zero) const {
    List numbers;
    for (const std::uint8_t byte : block_.bytes(field_).first(std::min(field_.length, kListLength))) {
      numbers.append(std::int64_t{byte} - zero);
    }
    return numbers.isEmpty() ? Value(nil) : Value(std::move(numbers));
  }

  /// The codes that are neither ASCII nor unnamed would need their tables, or tell no byte order.
  [[nodiscard]] Value comment() const {
    const ByteView view(block_.bytes(field_));
    const bool isText =
        view.is(0, std::string_view("ASCII\0\0\0", 8)) || view.is(0, std::string_view("\0\0\0\0\0\0\0\0", 8));
    return isText ? textValue(view.part(8)) : Value(nil);
  }

  [[nodiscard]] Value degrees() const {
    const auto whole = block_.number(field_, 0);
    if (!whole) return nil;
    return valueOf(*whole + block_.number(field_, 1).value_or(0) / 60 + block_.number(field_, 2).value_or(0) / 3600);
  }

  [[nodiscard]] Value time() const {
    constexpr double kEnds[] = {24, 60, 61};
    StringBuilder text;
    for (std::uint64_t i = 0; i < std::size(kEnds); ++i) {
      const auto number = block_.number(field_, i);
      if (!number || !(*number >= 0 && *number < kEnds[i])) return nil;  // nor what is no number
      if (i) text.append(u':');
      const auto whole = static_cast<unsigned>(*number);
      text.append(static_cast<char16_t>(u'0' + whole / 10));
      text.append(static_cast<char16_t>(u'0' + whole % 10));
    }
    return text.finish();
  }

  const TIFFBlock& block_;
  const TIFFField& field_;
};

Dictionary readDirectory(const TIFFBlock& block, std::uint64_t directory, std::span<const Tag> tags) {
  Dictionary values;
  std::bitset<128> seen;  // what a tag says more than once is not read again, whatever it said
  const std::uint64_t count = block.entryCount(directory);
  for (std::uint64_t i = 0; i < count; ++i) {
    const TIFFField field = block.entry(directory, i);
    const auto tag = std::ranges::lower_bound(tags, field.tag, {}, &Tag::number);
    if (tag == tags.end() || tag->number != field.tag || field.count == 0) continue;
    const auto index = static_cast<std::size_t>(tag - tags.begin());
    if (!seen[index]) values.set(tag->name, Fields(block, field).as(tag->form));
    seen.set(index);
  }
  return values;
}

}  // namespace

EXIFProperties exifProperties(ImageBytes bytes) {
  const auto block = TIFFBlock::open(bytes);
  if (!block) return {};
  const std::uint64_t first = block->firstDirectory();
  return {readDirectory(*block, first, kTIFFTags),
          readDirectory(*block, block->integer(first, kExifDirectory).value_or(0), kExifTags),
          readDirectory(*block, block->integer(first, kGPSDirectory).value_or(0), kGPSTags)};
}

}  // namespace quorvel
