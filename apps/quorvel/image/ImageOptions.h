// What the words after `quorvel image` ask for.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <quorvel/Platform/CoreGraphics/CGGeometry.h>
#include <quorvel/Platform/UIKit/UIColor.h>

namespace quorvel::command {

enum class ImageAction : std::uint8_t { Info, Thumb, Resize, Blur, Tint, Gray, Crop, Mask, Fit };
enum class OutputFormat : std::uint8_t { PNG, JPEG };
enum class BlurPreset : std::uint8_t { Light, ExtraLight, Dark };

struct ImageOptions {
  ImageAction action = ImageAction::Info;
  double number = 0;             // thumb and resize: pixels of the longer side; fit: bytes
  std::optional<UIColor> color;  // tint, mask; the wash of blur
  CGRect rectangle;              // crop, in pixels of the upright picture
  std::vector<std::string> files;

  std::string output;  // a file, or a folder that is there; beside each file when empty
  std::optional<OutputFormat> format;
  bool replaces = false;
  bool inPlace = false;
  bool json = false;

  std::optional<BlurPreset> preset;
  bool isGaussian = false;
  std::optional<double> radius;  // points
  std::optional<double> saturation;
  std::string mask;  // a file

  /// A blur of the user's own, with which there is no preset.
  [[nodiscard]] bool isOwnBlur() const {
    return action == ImageAction::Blur && (radius || saturation || color || !mask.empty());
  }
};

extern const char kImageUsage[];

/// "thumb", as the action is called.
[[nodiscard]] std::string_view nameOf(ImageAction action);

/// False, and why in `error`.
[[nodiscard]] bool readImageOptions(std::span<const std::string_view> words, ImageOptions& options, std::string& error);

}  // namespace quorvel::command
