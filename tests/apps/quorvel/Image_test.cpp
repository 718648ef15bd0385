#include <algorithm>
#include <cstring>
#include <filesystem>
#include <functional>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <tests/support/Command.h>
#include <tests/support/ImageFiles.h>
#include <tests/support/Images.h>
#include <tests/support/Row.h>
#include <tests/support/TemporaryFolder.h>

#include <quorvel/Extensions/UIKit/UIImage+Color.h>
#include <quorvel/Extensions/UIKit/UIImage+Extension.h>
#include <quorvel/Extensions/UIKit/UIImage+ImageEffects.h>
#include <quorvel/Extensions/UIKit/UIImage+Tools.h>
#include <quorvel/Platform/Foundation/NSJSONSerialization.h>
#include <quorvel/Platform/ImageIO/CGImageDestination.h>
#include <quorvel/Platform/ImageIO/CGImageSource.h>
#include <quorvel/Platform/ImageIO/PNGWriter.h>

namespace quorvel {
namespace {

namespace fs = std::filesystem;
using test::modeOf;
using test::namesIn;
using test::Outcome;
using test::readFile;
using test::runCommand;
using test::TemporaryFolder;
using test::writeFile;
using Words = std::vector<std::string>;

std::string textOf(const std::optional<Data>& data) {
  if (!data) return {};
  const auto bytes = data->bytes();
  return {bytes.begin(), bytes.end()};
}

/// Red, green, blue and half-transparent white quarters.
CGImage quarters(std::int64_t width = 40, std::int64_t height = 32) {
  return test::picture(width, height, [&](std::size_t x, std::size_t y) {
    constexpr std::uint32_t kColors[] = {0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0x80808080};
    const bool isRight = 2 * static_cast<std::int64_t>(x) >= width;
    const bool isBelow = 2 * static_cast<std::int64_t>(y) >= height;
    return kColors[(isRight ? 1 : 0) + (isBelow ? 2 : 0)];
  });
}
std::string quartersPNG() { return textOf(encodePNG(quarters().bitmap())); }

/// `block` as its EXIF.
std::string quartersJPEG(const test::FileBytes& block) {
  std::string file = textOf(encodeJPEG(quarters().bitmap()));
  const test::FileBytes segment = test::jpegExif(block);
  return file.insert(2, std::string(segment.begin(), segment.end()));
}

CGImage imageOf(const std::string& bytes) {
  auto source = CGImageSource::withData(Data({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
  return source ? source->image().value_or(CGImage()) : CGImage();
}

CGImage imageAt(const std::string& path) { return imageOf(readFile(path)); }

/// Where the pictures differ, or an empty text. What was wanted is stored and read too: colours that a strong
/// saturation makes brighter than their alpha are cut then.
std::string difference(const CGImage& made, const std::optional<UIImage>& wanted) {
  if (!wanted || !made.hasPixels()) return made.hasPixels() ? "nothing wanted" : "nothing made";
  const CGImage expected = imageOf(textOf(encodePNG(wanted->bitmap().bitmap())));
  if (made.width() != expected.width() || made.height() != expected.height()) {
    return std::to_string(made.width()) + " x " + std::to_string(made.height());
  }
  for (std::size_t y = 0; y < made.height(); ++y) {
    const std::uint8_t* const row = expected.bitmap().row(y);
    if (std::memcmp(made.bitmap().row(y), row, 4 * made.width()) != 0) return "row " + std::to_string(y);
  }
  return "";
}

/// Each line of standard output as a dictionary; what is none fails the test.
std::vector<Dictionary> recordsOf(const Outcome& outcome) {
  std::vector<Dictionary> records;
  EXPECT_TRUE(outcome.out.empty() || outcome.out.back() == '\n') << outcome.out;
  for (std::size_t at = 0; at < outcome.out.size();) {
    const std::size_t end = std::min(outcome.out.find('\n', at), outcome.out.size());
    const Value value = NSJSONSerialization::parse(std::string_view(outcome.out).substr(at, end - at));
    const Dictionary* record = value.asDictionary();
    EXPECT_TRUE(record) << outcome.out.substr(at, end - at);
    if (record) records.push_back(*record);
    at = end + 1;
  }
  return records;
}

Outcome run(const char* command, Words words, const Words& files = {}) {
  words.insert(words.begin(), command);
  words.insert(words.end(), files.begin(), files.end());
  return runCommand(words);
}

struct ActionRow {
  Words words;  // without the file
  std::function<std::optional<UIImage>(const UIImage&)> wanted;
};

TEST(ImageCommand, MakesWhatTheOperationsMake) {
  const TemporaryFolder folder;
  writeFile(folder.path("mask.png"), textOf(encodePNG(test::picture(40, 32, [](std::size_t x, std::size_t) {
                                                        return x < 12 ? 0xFF000000 : 0;
                                                      }).bitmap())));
  const UIImage mask(imageAt(folder.path("mask.png")));
  const ActionRow rows[] = {
      {{"thumb", "1000"}, [](const UIImage& p) { return p; }},
      {{"thumb", "20"}, [](const UIImage&) { return UIImage(quarters(20, 16)); }},
      {{"crop", "10,8,20,16"}, [](const UIImage& p) { return cropImageWithSize(p, {10, 8, 20, 16}); }},
      {{"crop", "39,-5,1e9,6"}, [](const UIImage& p) { return cropImageWithSize(p, {39, 0, 1, 1}); }},
      {{"gray"}, [](const UIImage& p) { return convertToGrayscale(p); }},
      {{"mask", "rgb(255 128 0 / 50%)"},
       [](const UIImage& p) { return maskedImageWithColor(p, {1, 128 / 255.0, 0, 0.5}); }},
      {{"tint", "teal"},
       [](const UIImage& p) { return applyTintEffectWithColor(p, {0, 128 / 255.0, 128 / 255.0, 1}); }},
      {{"fit", "1e300"}, [](const UIImage& p) { return p; }},
      {{"fit", "120"}, [](const UIImage& p) { return scaledImageLimitedLength(p, 120); }},
      {{"blur"}, [](const UIImage& p) { return applyLightEffect(p); }},
      {{"blur", "--preset=extra-light"}, [](const UIImage& p) { return applyExtraLightEffect(p); }},
      {{"blur", "--preset", "dark"}, [](const UIImage& p) { return applyDarkEffect(p); }},
      {{"blur", "--gaussian"}, [](const UIImage& p) { return UIImageTools::blurWithCoreImage(p); }},
      {{"blur", "--radius", "3"}, [](const UIImage& p) { return applyBlurWithRadius(p, 3, nil, 1.8, nil); }},
      {{"blur", "--radius", "1e300", "--saturation", "0"},
       [](const UIImage& p) { return applyBlurWithRadius(p, 1e300, nil, 0, nil); }},
      {{"blur", "--wash", "#ff800040"},
       [&](const UIImage& p) { return applyBlurWithRadius(p, 30, UIColor(1, 128 / 255.0, 0, 64 / 255.0), 1.8, nil); }},
      {{"blur", "--mask", folder.path("mask.png")},
       [&](const UIImage& p) { return applyBlurWithRadius(p, 30, nil, 1.8, mask); }},
  };
  writeFile(folder.path("p.png"), quartersPNG());
  for (const auto& [words, wanted] : rows) {
    const Outcome outcome = run("image", words, {folder.path("p.png")});
    const std::string made = folder.path("p-" + words[0] + ".png");
    const std::string shown = testing::PrintToString(words);
    EXPECT_EQ(outcome.status, 0) << shown << outcome.err;
    EXPECT_EQ(outcome.err, "") << shown;
    EXPECT_EQ(difference(imageAt(made), wanted(UIImage(quarters()))), "") << shown;
    fs::remove(made);
  }
  EXPECT_EQ(namesIn(folder.path()), "mask.png p.png") << "nothing else";
}

TEST(ImageCommand, TurnsUprightAndWritesTheFormatThatIsMeant) {
  const TemporaryFolder folder;
  writeFile(folder.path("p.jpg"), quartersJPEG(test::exifWithOrientation(6)));
  const test::Row<Words, const char*, const char*, test::Why> rows[] = {
      {{"resize", "16"}, "p-resize.jpg", "public.jpeg", "usual for resize"},
      {{"resize", "16", "--format=png"}, "p-resize.png", "public.png", "named"},
      {{"thumb", "16", "--output", folder.path("A.JPG")}, "A.JPG", "public.jpeg", "by a name in capitals"},
      {{"thumb", "16", "--output", folder.path("b.jpeg"), "--format", "png"}, "b.jpeg", "public.png", "named again"},
      {{"thumb", "16", "--output", folder.path("c")}, "c", "public.png", "usual for all others"},
  };
  for (const auto& [words, name, type, why] : rows) {
    EXPECT_EQ(run("image", words, {folder.path("p.jpg")}).status, 0) << why;
    const std::string bytes = readFile(folder.path(name));
    auto source = CGImageSource::withData(Data({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}));
    ASSERT_TRUE(source) << why;
    EXPECT_EQ(String(source->type()).toUTF8Replacing(), type) << why;
    const UIImage image(source->image().value_or(CGImage()));
    ASSERT_EQ(image.size(), (CGSize{13, 16})) << why;
    // Turned to the right, the blue quarter comes to the top left and the red one to the top right.
    EXPECT_GT(test::channelOf(test::pixel(image, 2, 2), 0), 200) << why;
    EXPECT_GT(test::channelOf(test::pixel(image, 10, 2), 2), 200) << why;
    EXPECT_LT(test::channelOf(test::pixel(image, 10, 2), 0), 60) << why;
  }
}

TEST(ImageCommand, GoesOnAfterFilesThatAreNoImages) {
  const TemporaryFolder folder;
  const std::string good = quartersPNG();
  writeFile(folder.path("a.png"), good);
  fs::create_directory(folder.path("folder.png"));
  ASSERT_EQ(::mkfifo(folder.path("fifo.png").c_str(), 0600), 0);
  writeFile(folder.path("cut.png"), std::string_view(good).substr(0, 45));
  writeFile(folder.path("text.png"), "<html>");
  writeFile(folder.path("empty.png"), "");
  writeFile(folder.path("huge.png"), good.substr(0, 16) + std::string("\0\1\0\0\0\1\0\0", 8) + good.substr(24));
  writeFile(folder.path("not\xFF.png"), good);
  fs::create_directory(folder.path("out"));
  const char* const kBad[] = {"absent.png", "folder.png", "fifo.png", "cut.png",
                              "text.png",   "empty.png",  "huge.png", "line\n\x1b[31m.png"};
  Words words = {"image", "thumb", "20", "--output", folder.path("out"), folder.path("a.png")};
  for (const char* name : kBad) words.push_back(folder.path(name));
  words.push_back(folder.path("not\xFF.png"));

  const Outcome plain = runCommand(words);
  EXPECT_EQ(plain.status, 1);
  for (const char* name : kBad) {
    if (std::strchr(name, '\n')) continue;
    EXPECT_NE(plain.err.find(folder.path(name) + ": "), std::string::npos) << name;
  }
  EXPECT_EQ(plain.err.find('\x1b'), std::string::npos) << "a name cannot reach the terminal";
  EXPECT_EQ(std::ranges::count(plain.out, '\n'), 2) << plain.out;
  EXPECT_EQ(namesIn(folder.path("out")), "a-thumb.png not\xFF-thumb.png");
  EXPECT_EQ(imageAt(folder.path("out") + "/not\xFF-thumb.png").width(), 20U);

  words.push_back("--json");
  words.push_back("--force");
  const Outcome json = runCommand(words);
  EXPECT_EQ(json.status, 1);
  EXPECT_EQ(json.err, "");
  const auto records = recordsOf(json);
  ASSERT_EQ(records.size(), std::size(kBad) + 2);
  for (std::size_t i = 0; i < records.size(); ++i) {
    const bool isGood = i == 0 || i + 1 == records.size();
    EXPECT_EQ(records[i][u"width"], isGood ? Value(20) : Value()) << i;
    EXPECT_EQ(records[i][u"error"].asString() != nullptr, !isGood) << i;
    EXPECT_EQ(records[i][u"file"], Value(String::fromUTF8Replacing(words[5 + i])));
  }
}

TEST(ImageCommand, ReplacesNothingUnlessItIsTold) {
  const TemporaryFolder folder;
  writeFile(folder.path("p.png"), quartersPNG());
  writeFile(folder.path("victim"), "precious");
  for (const auto& [what, plant] : test::kPlanted) {
    plant(folder.path("p-gray.png"), folder.path("victim"));
    const unsigned before = modeOf(folder.path("p-gray.png"));
    const Outcome outcome = runCommand({"image", "gray", folder.path("p.png")});
    EXPECT_EQ(outcome.status, 1) << what;
    EXPECT_NE(outcome.err.find("is there already (--force)"), std::string::npos) << what << outcome.err;
    EXPECT_EQ(modeOf(folder.path("p-gray.png")), before) << what;
    EXPECT_EQ(readFile(folder.path("victim")), "precious") << what;
    fs::remove(folder.path("p-gray.png"));
    EXPECT_EQ(namesIn(folder.path()), "p.png victim") << what;
  }
  EXPECT_EQ(runCommand({"image", "gray", folder.path("p.png"), "--output", folder.path("victim"), "--force"}).status,
            0);
  EXPECT_EQ(imageAt(folder.path("victim")).width(), 40U);
}

TEST(ImageCommand, LosesNoPictureOfTheSameRun) {
  const TemporaryFolder folder;
  writeFile(folder.path("p.png"), quartersPNG());
  writeFile(folder.path("p.jpg"), quartersJPEG(test::exifWithOrientation(6)));
  const Words rows[] = {
      {"image", "gray", folder.path("p.png"), folder.path("./p.jpg"), "--force"},
      {"image", "gray", folder.path("p.png"), folder.path("p.jpg"), "--force", "--output", folder.path("p-gray.png")}};
  for (const Words& words : rows) {
    const Outcome outcome = runCommand(words);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("p.jpg: "), std::string::npos) << outcome.err;
    EXPECT_EQ(imageAt(folder.path("p-gray.png")).width(), 40U) << "of the first file";
  }
}

TEST(ImageCommand, FilesHaveTheModesThatUsersExpect) {
  const TemporaryFolder folder;
  const test::Umask umask(027);
  writeFile(folder.path("p.png"), quartersPNG());
  EXPECT_EQ(runCommand({"image", "thumb", "9", folder.path("p.png")}).status, 0);
  EXPECT_EQ(modeOf(folder.path("p-thumb.png")) & 0777, 0640U) << "the umask's";
  ASSERT_EQ(::chmod(folder.path("p-thumb.png").c_str(), 0604), 0);
  EXPECT_EQ(runCommand({"image", "thumb", "8", folder.path("p.png"), "--force"}).status, 0);
  EXPECT_EQ(modeOf(folder.path("p-thumb.png")) & 0777, 0604U) << "that of the file before";
  EXPECT_EQ(runCommand({"image", "gray", folder.path("p.png"), "--force"}).status, 0);
  EXPECT_EQ(modeOf(folder.path("p-gray.png")) & 0777, 0640U) << "the umask's, though it might have replaced one";
}

TEST(ImageCommand, ResizesInPlace) {
  const TemporaryFolder folder;
  writeFile(folder.path("p.jpg"), quartersJPEG(test::exifWithOrientation(6)));
  writeFile(folder.path("text.jpg"), "text");
  ASSERT_EQ(::chmod(folder.path("p.jpg").c_str(), 0604), 0);
  const Outcome outcome =
      runCommand({"image", "resize", "16", "--in-place", "--json", folder.path("text.jpg"), folder.path("p.jpg")});
  EXPECT_EQ(outcome.status, 1);
  const auto records = recordsOf(outcome);
  ASSERT_EQ(records.size(), 2U);
  EXPECT_TRUE(records[0][u"error"].asString());
  EXPECT_EQ(records[1][u"width"], Value(13));
  EXPECT_EQ(records[1][u"height"], Value(16));
  EXPECT_EQ(imageAt(folder.path("p.jpg")).height(), 16U);
  EXPECT_EQ(modeOf(folder.path("p.jpg")) & 0777, 0604U);
  EXPECT_EQ(readFile(folder.path("text.jpg")), "text");
  EXPECT_EQ(namesIn(folder.path()), "p.jpg text.jpg");
}

TEST(ImageCommand, TellsWhatAFileIs) {
  test::TIFFWriter exif(true);
  const auto camera = exif.add({exif.rationals(33434, {1, 0}), test::TIFFWriter::text(36867, "2026:11:24 22:21:48")});
  const auto place = exif.add({test::TIFFWriter::text(1, "S"), exif.rationals(2, {37, 1, 30, 1, 0, 1}),
                               test::TIFFWriter::text(3, "E"), exif.rationals(4, {126, 1, 0, 1, 0, 0})});
  const auto block =
      exif.file(exif.add({test::TIFFWriter::text(271, "Ma\x1b[31mker"), exif.shorts(274, {6}),
                          exif.rationals(282, {1, 0}), exif.longs(34665, {camera}), exif.longs(34853, {place})}));
  const TemporaryFolder folder;
  writeFile(folder.path("p.png"), quartersJPEG(block));
  const Outcome text = runCommand({"image", "info", folder.path("p.png")});
  EXPECT_EQ(text.status, 0) << text.err;
  for (const char* part : {"JPEG", "40 x 32", "orientation  6", "2026:11:24 22:21:48", "37.5 S", "another format"}) {
    EXPECT_NE(text.out.find(part), std::string::npos) << part << "\n" << text.out;
  }
  EXPECT_EQ(text.out.find('\x1b'), std::string::npos) << "a maker cannot reach the terminal";
  const auto records = recordsOf(runCommand({"image", "info", folder.path("p.png"), "--json"}));
  ASSERT_EQ(records.size(), 1U) << "quotients by zero are no numbers of JSON";
  EXPECT_EQ(records[0][u"format"], Value(u"JPEG"));
  EXPECT_EQ(records[0][u"width"], Value(40)) << "as stored";
  EXPECT_EQ(records[0][u"orientation"], Value(6));
  EXPECT_EQ(records[0][u"extensionContradicts"], Value(true));
  EXPECT_TRUE(records[0][u"properties"].asDictionary());
  EXPECT_EQ(namesIn(folder.path()), "p.png") << "nothing is written";
}

TEST(ImageCommand, RefusesWhatItDoesNotUnderstand) {
  const test::Row<Words, const char*> rows[] = {
      {Words(), "expected info, thumb"},
      {{"frobnicate", "p"}, "expected info, thumb"},
      {{"thumb"}, "expected a file"},
      {{"thumb", "100"}, "expected a file"},
      {{"thumb", "p"}, "a number from 1 up, not 'p'"},
      {{"thumb", "0.9", "p"}, "a number from 1 up"},
      {{"thumb", "1e999", "p"}, "a number from 1 up"},
      {{"thumb", "100px", "p"}, "a number from 1 up"},
      {{"crop", "1,2,3", "p"}, "X,Y,WIDTH,HEIGHT"},
      {{"crop", "1,2,3,4,5", "p"}, "X,Y,WIDTH,HEIGHT"},
      {{"crop", "1,2,0,4", "p"}, "X,Y,WIDTH,HEIGHT"},
      {{"crop", "1,2,3,nan", "p"}, "X,Y,WIDTH,HEIGHT"},
      {{"tint", "re\x1b[31md", "p"}, "a colour, not 're"},
      {{"mask", "", "p"}, "a colour"},
      {{"blur", "p", "--radius"}, "--radius needs a value"},
      {{"blur", "p", "--radius", "-1"}, "a number from 0 up"},
      {{"blur", "p", "--preset", "heavy"}, "light, extra-light or dark"},
      {{"blur", "p", "--preset", "dark", "--radius", "4"}, "--preset goes with no other blur"},
      {{"blur", "p", "--gaussian", "--preset", "dark"}, "--gaussian goes with no other blur"},
      {{"gray", "p", "--preset", "dark"}, "do not go with gray"},
      {{"gray", "p", "--wash", "red"}, "--wash"},
      {{"gray", "p", "--in-place"}, "--in-place goes with resize"},
      {{"resize", "9", "p", "--in-place", "--format", "png"}, "--in-place goes with resize"},
      {{"gray", "p", "--output="}, "needs a path"},
      {{"gray", "p", "--format", "gif"}, "png or jpeg"},
      {{"info", "p", "--output", "q"}, "info writes no files"},
      {{"gray", "--", "--force", "--x"}, ""},
  };
  for (const auto& [words, message] : rows) {
    const Outcome refused = run("image", words);
    EXPECT_EQ(refused.status, *message ? 2 : 1) << message;
    EXPECT_NE(refused.err.find(message), std::string::npos) << refused.err;
    EXPECT_EQ(refused.err.find('\x1b'), std::string::npos) << "what was typed cannot reach the terminal";
    EXPECT_EQ(refused.out, "");
  }
}

TEST(ImageCommand, SaysWhyAPictureCannotBeMade) {
  const TemporaryFolder folder;
  writeFile(folder.path("p.png"), quartersPNG());
  writeFile(folder.path("v.svg"), "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/>");
  const test::Row<Words, const char*> rows[] = {
      {{"crop", "40,0,5,5", folder.path("p.png")}, "nothing of the picture lies there"},
      {{"fit", "1", folder.path("p.png")}, "when it cannot shrink any more"},
      {{"gray", folder.path("v.svg")}, "in a format that is not read here"},
      {{"blur", folder.path("p.png"), "--mask", folder.path("absent")}, "absent: "},
      {{"gray", folder.path("p.png"), "--output", folder.path("absent/x.png")}, "absent/x.png: "},
  };
  for (const auto& [words, message] : rows) {
    const Outcome outcome = run("image", words);
    EXPECT_EQ(outcome.status, 1) << message;
    EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.out, "") << message;
  }
  EXPECT_EQ(namesIn(folder.path()), "p.png v.svg");
}

TEST(GalleryCommand, ShowsEverythingAndAlwaysTheSame) {
  const TemporaryFolder folder;
  const Outcome own = runCommand({"gallery", folder.path("a.png")});
  EXPECT_EQ(own.status, 0) << own.err;
  EXPECT_EQ(own.out.find("(missing)"), std::string::npos) << own.out;
  const auto rows = static_cast<std::size_t>(std::ranges::count(own.out, '\n'));
  EXPECT_GE(rows, 9U) << own.out;
  EXPECT_EQ(imageAt(folder.path("a.png")).height(), rows * 128 + 8) << "a row of tiles for each line";
  EXPECT_EQ(runCommand({"gallery", folder.path("b.png")}).out, own.out);
  EXPECT_TRUE(readFile(folder.path("a.png")) == readFile(folder.path("b.png")));
  writeFile(folder.path("p.jpg"), quartersJPEG(test::exifWithOrientation(6)));
  EXPECT_EQ(runCommand({"gallery", "--force", folder.path("b.png"), "--picture", folder.path("p.jpg")}).out, own.out);
  EXPECT_FALSE(readFile(folder.path("a.png")) == readFile(folder.path("b.png")));
}

TEST(GalleryCommand, RefusesWhatItCannotDo) {
  const TemporaryFolder folder;
  const std::string there = folder.path("there.png");
  writeFile(there, "precious");
  const test::Row<Words, int, const char*> rows[] = {
      {{there}, 1, "is there already"},
      {{folder.path("new.png"), "--picture", there}, 1, "cannot be read as an image"},
      {{folder.path("absent/new.png")}, 1, "absent/new.png: "},
      {Words(), 2, "expected a file"},
      {{"a", "b"}, 2, "unexpected 'b'"},
      {{"a", "--\x1b[31m"}, 2, "unknown option '--"},
  };
  for (const auto& [words, status, message] : rows) {
    const Outcome outcome = run("gallery", words);
    EXPECT_EQ(outcome.status, status) << message;
    EXPECT_NE(outcome.err.find(message), std::string::npos) << outcome.err;
    EXPECT_EQ(outcome.err.find('\x1b'), std::string::npos) << message;
    EXPECT_EQ(outcome.out, "") << message;
  }
  EXPECT_EQ(namesIn(folder.path()), "there.png");
  EXPECT_EQ(readFile(there), "precious");
}

}  // namespace
}  // namespace quorvel
