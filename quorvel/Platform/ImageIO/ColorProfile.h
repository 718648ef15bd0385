// ColorProfile: pixels of an embedded ICC profile brought to sRGB.
// Not here: where files keep their profile (ImageFacts.h and the readers).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include <quorvel/Platform/ImageIO/ImageFacts.h>

namespace quorvel {

/// May be used by several threads at once.
class ColorProfile {
 public:
  /// What the file's pixels are; of grey ones, blue, green and red hold the same. Adobe's files hold CMYK inverted.
  enum class Model : std::uint8_t { Gray, RGB, CMYK, InvertedCMYK };

  /// nil where there is nothing to convert: no profile, a broken one, one beyond `kLongest` bytes or for another model,
  /// and one whose colours are sRGB's to within one level.
  [[nodiscard]] static std::optional<ColorProfile> make(ImageBytes profile, Model model);
  static constexpr std::size_t kLongest = std::size_t{4} * 1024 * 1024;
  ColorProfile(ColorProfile&&) noexcept;
  ColorProfile& operator=(ColorProfile&&) noexcept;
  ~ColorProfile();

  /// Gray and RGB, in place; premultiplied, blue, green, red, alpha.
  void convertRow(std::uint8_t* premultipliedBGRA, std::size_t pixels) const;
  /// CMYK as the file holds it, to opaque pixels.
  void convertCMYKRow(const std::uint8_t* cmyk, std::uint8_t* toBGRA, std::size_t pixels) const;

 private:
  struct Transform;
  explicit ColorProfile(std::unique_ptr<Transform> transform);

  std::unique_ptr<Transform> transform_;
};

/// CMYK without a profile: each of red, green and blue is what its ink and the black leave of white.
void convertPlainCMYKRow(const std::uint8_t* cmyk, bool isInverted, std::uint8_t* toBGRA, std::size_t pixels);

}  // namespace quorvel
