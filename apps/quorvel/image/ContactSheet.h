// Pictures in rows, each in a tile of its own.
#pragma once

#include <string>
#include <vector>

#include <quorvel/Platform/UIKit/UIImage.h>

namespace quorvel::command {

class ContactSheet {
 public:
  /// Sides of a tile in pixels.
  static constexpr double kTile = 120;
  static constexpr double kGap = 8;

  void beginRow(std::string name) { rows_.push_back({std::move(name), {}}); }
  /// An image that is missing leaves its tile empty. Smaller ones keep their size; larger ones are shrunk.
  void add(const std::string& name, const std::optional<UIImage>& image);

  /// All rows over a chequered ground, which shows through what is transparent; nil beyond the limits of images.
  [[nodiscard]] std::optional<UIImage> picture() const;
  /// A line for each row: its name, and those of its tiles from left to right.
  [[nodiscard]] std::string legend() const;

 private:
  struct Tile {
    std::string name;
    std::optional<UIImage> image;
  };
  struct Row {
    std::string name;
    std::vector<Tile> tiles;
  };
  std::vector<Row> rows_;
};

}  // namespace quorvel::command
