#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include <apps/quorvel/Operation.h>
#include <apps/quorvel/OptionWords.h>
#include <apps/quorvel/image/ImageOptions.h>

#include <quorvel/Extensions/UIKit/UIColor+Companions.h>

namespace quorvel::command {

const char kImageUsage[] =
    "usage: quorvel image info FILE... [--json]\n"
    "       quorvel image thumb PIXELS FILE... [option ...]\n"
    "       quorvel image resize PIXELS FILE... [option ...]\n"
    "       quorvel image blur FILE... [option ...]\n"
    "       quorvel image tint COLOR FILE... [option ...]\n"
    "       quorvel image gray FILE... [option ...]\n"
    "       quorvel image crop X,Y,WIDTH,HEIGHT FILE... [option ...]\n"
    "       quorvel image mask COLOR FILE... [option ...]\n"
    "       quorvel image fit BYTES FILE... [option ...]\n"
    "\n"
    "Pictures are turned upright first. COLOR is a colour as CSS writes it.\n"
    "\n"
    "  info    what a file is: format, pixels, frames, orientation, camera, time and place; nothing is decoded\n"
    "  thumb   the picture, its longer side at most PIXELS, decoded no larger than that takes\n"
    "  resize  the same as a JPEG file; with --in-place in the file's own place, keeping its mode and attributes\n"
    "  blur    frosted glass\n"
    "  tint    the picture blurred, its colours turned, and washed with COLOR\n"
    "  gray    without colours\n"
    "  crop    a part of the picture, in pixels from the top left\n"
    "  mask    the picture's shape in COLOR\n"
    "  fit     the picture as it is, or halved until its PNG file has at most BYTES\n"
    "\n"
    "  --output PATH     a file, or a folder that is there; photo-blur.png beside photo.jpg unless it is given\n"
    "  --format FORMAT   png or jpeg; else by the end of PATH, else jpeg for resize and png for all others\n"
    "  --force           replace files that are there\n"
    "  --in-place        resize: replace the file itself\n"
    "  --preset NAME     blur: light (the default), extra-light or dark\n"
    "  --radius POINTS   blur: without a preset (30)\n"
    "  --saturation F    blur: without a preset (1.8)\n"
    "  --wash COLOR      blur: without a preset; a colour with alpha laid over it\n"
    "  --mask FILE       blur: without a preset; only where this picture has alpha\n"
    "  --gaussian        blur: a true Gaussian of 30 pixels, washed with a little white\n"
    "  --json            one JSON object a file and line on standard output, nothing else there\n"
    "\n"
    "A file that cannot be used is told on standard error, or under \"error\" with --json, and the others go on; the\n"
    "exit status is 1 then, and 2 when the words are not understood.\n";

namespace {

using enum ImageAction;

/// More would be no whole number any more.
constexpr double kLargestNumber = 0x1p53;

/// What stands between the action and the files.
enum class Operand : std::uint8_t { None, Pixels, Bytes, Color, Rectangle };

struct ActionWords {
  std::string_view name;
  ImageAction action;
  Operand operand;
};
constexpr ActionWords kActions[] = {
    {"info", Info, Operand::None},  {"thumb", Thumb, Operand::Pixels},  {"resize", Resize, Operand::Pixels},
    {"blur", Blur, Operand::None},  {"tint", Tint, Operand::Color},     {"gray", Gray, Operand::None},
    {"mask", Mask, Operand::Color}, {"crop", Crop, Operand::Rectangle}, {"fit", Fit, Operand::Bytes},
};

std::optional<double> numberOf(std::string_view text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && end == text.data() + text.size();
  return isWhole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<CGRect> rectangleOf(std::string_view text) {
  std::array<double, 4> numbers{};
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    const std::size_t comma = i + 1 < numbers.size() ? text.find(',') : text.size();
    const auto number = comma == text.npos ? std::nullopt : numberOf(text.substr(0, comma));
    if (!number) return std::nullopt;
    numbers[i] = *number;
    text.remove_prefix(std::min(comma + 1, text.size()));
  }
  if (!(numbers[2] > 0 && numbers[3] > 0)) return std::nullopt;
  return CGRect{numbers[0], numbers[1], numbers[2], numbers[3]};
}

std::string wrong(std::string_view name, std::string_view wanted, std::string_view given) {
  return joined({name, " takes ", wanted, ", not '", given, "'"});
}

std::string storeColor(ImageOptions& options, std::string_view name, std::string_view text) {
  options.color = colorFromCSS(String::fromUTF8(text));
  return options.color ? "" : wrong(name, "a colour", text);
}

/// An error text, or an empty one.
std::string storeOperand(ImageOptions& options, const ActionWords& action, std::string_view text) {
  const auto number = numberOf(text);
  switch (action.operand) {
    case Operand::Pixels:
    case Operand::Bytes:
      if (!number || *number < 1) return wrong(action.name, "a number from 1 up", text);
      options.number = std::fmin(std::floor(*number), kLargestNumber);
      return {};
    case Operand::Color:
      return storeColor(options, action.name, text);
    case Operand::Rectangle: {
      const auto rectangle = rectangleOf(text);
      if (!rectangle) return wrong(action.name, "X,Y,WIDTH,HEIGHT", text);
      options.rectangle = *rectangle;
      return {};
    }
    case Operand::None:
      break;
  }
  return {};
}

struct Flag {
  std::string_view name;
  bool ImageOptions::* member;
};
constexpr Flag kFlags[] = {{"--force", &ImageOptions::replaces},
                           {"--in-place", &ImageOptions::inPlace},
                           {"--json", &ImageOptions::json},
                           {"--gaussian", &ImageOptions::isGaussian}};

constexpr std::string_view kOptions[] = {"--force",   "--in-place",    "--json",    "--gaussian",
                                         "--output=", "--mask=",       "--format=", "--preset=",
                                         "--radius=", "--saturation=", "--wash="};

template <class Choice, std::size_t N>
bool choose(const std::pair<std::string_view, Choice> (&choices)[N], std::string_view name, Choice& chosen) {
  const auto* choice = std::ranges::find(choices, name, &std::pair<std::string_view, Choice>::first);
  if (choice == std::end(choices)) return false;
  chosen = choice->second;
  return true;
}

std::string storeNumber(std::optional<double>& member, std::string_view name, std::string_view value) {
  member = numberOf(value);
  return member && *member >= 0 ? "" : wrong(name, "a number from 0 up", value);
}

std::string storeOption(ImageOptions& options, std::string_view name, std::string_view value) {
  constexpr std::pair<std::string_view, OutputFormat> kFormats[] = {
      {"png", OutputFormat::PNG}, {"jpeg", OutputFormat::JPEG}, {"jpg", OutputFormat::JPEG}};
  constexpr std::pair<std::string_view, BlurPreset> kPresets[] = {
      {"light", BlurPreset::Light}, {"extra-light", BlurPreset::ExtraLight}, {"dark", BlurPreset::Dark}};
  if (name == "--output" || name == "--mask") {
    (name == "--mask" ? options.mask : options.output) = value;
    return value.empty() ? joined({name, " needs a path"}) : std::string();
  }
  if (name == "--format") {
    return choose(kFormats, value, options.format.emplace()) ? "" : wrong(name, "png or jpeg", value);
  }
  if (name == "--preset") {
    return choose(kPresets, value, options.preset.emplace()) ? "" : wrong(name, "light, extra-light or dark", value);
  }
  if (name == "--radius") return storeNumber(options.radius, name, value);
  if (name == "--saturation") return storeNumber(options.saturation, name, value);
  if (name == "--wash" && options.action == Blur) return storeColor(options, name, value);
  return joined({"unknown option '", name, "'"});
}

/// An error text where options do not go together, or an empty one.
std::string conflict(const ImageOptions& options) {
  if (options.files.empty()) return "expected a file";
  const bool changesBlur =
      options.preset || options.radius || options.saturation || options.isGaussian || !options.mask.empty();
  if (changesBlur && options.action != Blur) return joined({"options of blur do not go with ", nameOf(options.action)});
  if (options.isGaussian && (options.preset || options.isOwnBlur())) return "--gaussian goes with no other blur";
  if (options.preset && options.isOwnBlur()) return "--preset goes with no other blur";
  const bool namesOutput = !options.output.empty() || options.format;
  if (options.inPlace && (options.action != Resize || namesOutput)) {
    return "--in-place goes with resize alone, and without --output and --format";
  }
  if (options.action == Info && (namesOutput || options.replaces)) return "info writes no files";
  return {};
}

}  // namespace

std::string_view nameOf(ImageAction action) { return std::ranges::find(kActions, action, &ActionWords::action)->name; }

bool readImageOptions(std::span<const std::string_view> given, ImageOptions& options, std::string& error) {
  const auto* action = given.empty() ? std::end(kActions) : std::ranges::find(kActions, given[0], &ActionWords::name);
  if (action == std::end(kActions)) {
    error = "expected info, thumb, resize, blur, tint, gray, crop, mask or fit";
    return false;
  }
  options.action = action->action;
  bool needsOperand = action->operand != Operand::None;
  OptionWords words(given.subspan(1), kOptions);
  while (error.empty() && words.next()) {
    const auto* flag = std::ranges::find(kFlags, words.name, &Flag::name);
    if (flag != std::end(kFlags)) {
      options.*flag->member = true;
    } else if (!words.name.empty()) {
      error = storeOption(options, words.name, words.value);
    } else if (std::exchange(needsOperand, false)) {
      error = storeOperand(options, *action, words.value);
    } else {
      options.files.emplace_back(words.value);
    }
  }
  if (error.empty()) error = words.error.empty() ? conflict(options) : words.error;
  return error.empty();
}

}  // namespace quorvel::command
