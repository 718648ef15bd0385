#include <gtest/gtest.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Platform/Foundation/Limits.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/ImageIO/ImageProperties.h>

namespace quorvel {
namespace {

using namespace test;

std::string_view textOf(const FileBytes& bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

std::optional<CGImageSource> sourceOf(const std::string& path) {
  return CGImageSource::withURL(*NSURL::fileURLWithPath(String::fromUTF8(path)));
}

/// Files whose facts lie in the first step of reading, in the second, and behind both.
TEST(CGImageSource, AnswersTheSameOfAFileAndOfItsBytes) {
  const auto comments = [](int count) {
    FileBytes segments;
    for (int i = 0; i < count; ++i) segments = joined({segments, jpegSegment(0xFE, FileBytes(60'000))});
    return segments;
  };
  TIFFWriter tiff;
  (void)tiff.add({{700, 7, 100'000, FileBytes(100'000)}});
  const FileBytes farDirectory = tiff.file(tiff.add({tiff.shorts(256, {7}), tiff.shorts(257, {5})}));
  TIFFWriter across;
  (void)across.add({{700, 7, 4054, FileBytes(4054)}});
  const std::uint64_t directory = across.add({across.shorts(256, {7}), across.shorts(257, {5})});
  EXPECT_EQ(directory, 4080) << "the width is within the first step, the height behind it";
  FileBytes frames;
  for (int i = 0; i < 9'000; ++i) frames = std::move(ByteWriter().add(frames).add(gifFrame(7, 5)).file);
  const FileBytes meta = isoMeta({{1, "hvc1", {1}}}, isoSize(7, 5));
  struct FileRow {
    const char* what;
    FileBytes file;
    StringView type;
    std::size_t count;
  };
  const FileRow rows[] = {
      {"at once", jpegFile(7, 5), u"public.jpeg", 1},
      {"second step", jpegFile(7, 5, {.segments = comments(1)}), u"public.jpeg", 1},
      {"all of it", jpegFile(7, 5, {.segments = joined({comments(3), jpegExif(exifWithOrientation(6))})}),
       u"public.jpeg", 1},
      {"directory at the end", farDirectory, u"public.tiff", 1},
      {"directory across the first step", across.file(directory), u"public.tiff", 1},
      {"frames to the end", gifFile(7, 5, frames), u"com.compuserve.gif", 9'000},
      {"open brand, what it holds at the end", joined({isoType("mif1"), isoBox("mdat", FileBytes(70'000)), meta}),
       u"public.heic", 1},
      {"element behind a long comment", textBytes("<!--" + std::string(9'000, ' ') + "--><svg width='7' height='5'/>"),
       u"public.svg-image", 1},
  };
  const TemporaryFolder folder;
  for (const auto& [what, file, type, count] : rows) {
    writeFile(folder.path("image"), textOf(file));
    auto bytes = CGImageSource::withData(Data(file));
    ASSERT_TRUE(bytes) << what;
    // A source for each question, since an answer may leave more read for the next.
    EXPECT_EQ(sourceOf(folder.path("image"))->type(), type) << what;
    EXPECT_EQ(sourceOf(folder.path("image"))->count(), count) << what;
    EXPECT_EQ(sourceOf(folder.path("image"))->pixelSize(), (PixelSize{7, 5})) << what;
    EXPECT_EQ(sourceOf(folder.path("image"))->properties(), bytes->properties()) << what;
    EXPECT_EQ(bytes->pixelSize(), (PixelSize{7, 5})) << what;
  }
}

TEST(CGImageSource, OpensRegularFilesOfURLsOnly) {
  const TemporaryFolder folder;
  const FileBytes png = pngFile(3, 4);
  writeFile(folder.path("victim"), textOf(png));
  for (const Planted& planted : kPlanted) {
    planted.plant(folder.path(planted.what), folder.path("victim"));
    const Stopwatch watch;
    const bool isOpened = sourceOf(folder.path(planted.what)).has_value();
    EXPECT_LT(watch.elapsed(), kRefusing) << planted.what;
    const bool isFile =
        std::string_view(planted.what) == "symbolic link" || std::string_view(planted.what) == "hard link";
    EXPECT_EQ(isOpened, isFile) << planted.what;
  }
  const auto source = [&](const std::string& scheme) {
    return CGImageSource::withURL(*NSURL::withString(String::fromUTF8(scheme + folder.path("victim"))));
  };
  EXPECT_TRUE(source("FILE://"));
  EXPECT_FALSE(source("http://h"));
  EXPECT_FALSE(source(""));
  EXPECT_FALSE(source("file:///%FF"));
}

TEST(CGImageSource, RefusesWhatIsNoImageOrTooLarge) {
  const TemporaryFolder folder;
  for (const char* text : {"", "G", "no image at all"}) {
    writeFile(folder.path("text"), text);
    EXPECT_FALSE(sourceOf(folder.path("text"))) << text;
    EXPECT_FALSE(CGImageSource::withData(Data(textBytes(text)))) << text;
  }
  writeFile(folder.path("large"), textOf(pngFile(3, 4)));
  std::filesystem::resize_file(folder.path("large"), limits::kImageFileBytes);
  EXPECT_TRUE(sourceOf(folder.path("large")));
  std::filesystem::resize_file(folder.path("large"), limits::kImageFileBytes + 1);
  EXPECT_FALSE(sourceOf(folder.path("large")));
}

TEST(CGImageSource, NoPicturesOfWhatHasNone) {
  auto bomb = CGImageSource::withData(Data(pngFile(60'000, 60'000)));
  EXPECT_EQ(bomb->pixelSize(), (PixelSize{60'000, 60'000}));
  EXPECT_FALSE(bomb->thumbnail(100)) << "beyond the limits";
  EXPECT_FALSE(bomb->image());
  auto document = CGImageSource::withData(Data(textBytes("%PDF-1.4")));
  EXPECT_EQ(document->type(), u"com.adobe.pdf");
  EXPECT_EQ(document->properties(), Dictionary());
  EXPECT_FALSE(document->thumbnail(100));
}

}  // namespace
}  // namespace quorvel
