#include <quorvel/Platform/ImageIO/JPEGMarkers.h>
#include <quorvel/Platform/ImageIO/TIFFDirectory.h>

namespace quorvel {
namespace {

constexpr std::uint8_t kStartOfImage = 0xD8;
constexpr std::uint8_t kEndOfImage = 0xD9;
constexpr std::uint8_t kStartOfScan = 0xDA;
constexpr std::uint8_t kExif = 0xE1;
constexpr std::uint8_t kProfile = 0xE2;
constexpr std::string_view kExifMark("Exif\0", 5);  // a sixth byte follows, which some writers fill with 0xFF
constexpr std::string_view kProfileMark("ICC_PROFILE\0", 12);

struct Segment {
  std::uint8_t marker = 0;
  std::uint64_t body = 0;
  std::uint64_t length = 0;
};

constexpr bool hasNoBody(std::uint8_t marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= kStartOfImage); }

constexpr bool isFrame(std::uint8_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

/// Segments one after the other, up to the first scan's header and with it. Bytes that belong to none are skipped.
class SegmentWalk {
 public:
  explicit SegmentWalk(ByteView file) : file_(file) {}

  bool next(Segment& segment) {
    if (isAtEnd_) return false;
    do {
      at_ = file_.find(at_, 0xFF);
      while (file_.u8(at_) == 0xFF) ++at_;
      segment.marker = file_.u8(at_++);
    } while (at_ < file_.size() && (segment.marker == 0 || hasNoBody(segment.marker)));
    isAtEnd_ = segment.marker == kStartOfScan || segment.marker == kEndOfImage;
    if (segment.marker == kEndOfImage) return false;
    segment.length = file_.big16(at_);
    segment.body = at_ + 2;
    if (segment.length < 2 || !file_.has(at_, segment.length)) return isAtEnd_ = false;
    at_ += segment.length;
    segment.length -= 2;
    return true;
  }
  /// The first scan or the end of the image was met.
  [[nodiscard]] bool isAtEnd() const { return isAtEnd_; }

 private:
  ByteView file_;
  std::uint64_t at_ = 2;
  bool isAtEnd_ = false;
};

ImageColorModel modelOf(unsigned components) {
  switch (components) {
    case 1:
      return ImageColorModel::Gray;
    case 3:
      return ImageColorModel::RGB;
    case 4:
      return ImageColorModel::CMYK;
    default:
      return ImageColorModel::Unknown;
  }
}

void readFrame(ByteView file, const Segment& segment, ImageFacts& facts) {
  if (segment.length < 6 || facts.frameCount) return;
  facts.frameCount = 1;
  facts.bitsPerComponent = file.u8(segment.body);
  facts.height = file.big16(segment.body + 1);
  facts.width = file.big16(segment.body + 3);
  facts.colorModel = modelOf(file.u8(segment.body + 5));
  facts.isProgressive = (segment.marker & 3) == 2;
}

bool isProfilePiece(ByteView file, const Segment& segment) {
  return segment.marker == kProfile && segment.length > 14 && file.is(segment.body, kProfileMark);
}

}  // namespace

bool isJPEGFile(ByteView file) { return file.is(0, "\xFF\xD8\xFF"); }

void readJPEGFacts(ByteView file, ImageFacts& facts) {
  facts.format = ImageFormat::JPEG;
  unsigned components = 0;
  Segment segment;
  SegmentWalk walk(file);
  while (walk.next(segment)) {
    if (isFrame(segment.marker)) {
      readFrame(file, segment, facts);
      components = file.u8(segment.body + 5);
    } else if (segment.marker == kExif && !facts.exif.length && segment.length > 6 &&
               file.is(segment.body, kExifMark)) {
      facts.exif = {segment.body + 6, segment.length - 6};
    } else if (isProfilePiece(file, segment) && file.u8(segment.body + 13) == 1) {
      facts.profile = {segment.body + 14, segment.length - 14};
    } else if (segment.marker == kStartOfScan && facts.frameCount) {
      facts.isProgressive = facts.isProgressive || file.u8(segment.body) < components;
    }
  }
  facts.isComplete = walk.isAtEnd();
  facts.exifOrientation = orientationOfTIFFBlock(file.part(facts.exif.location, facts.exif.length));
}

ImageBytes beginningOfJPEGProfile(ByteView file) {
  Segment segment;
  SegmentWalk walk(file);
  while (walk.next(segment)) {
    if (isProfilePiece(file, segment)) return file.part(segment.body + 14, segment.length - 14);
  }
  return {};
}

}  // namespace quorvel
