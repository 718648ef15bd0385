#include <algorithm>

#include <apps/quorvel/image/ContactSheet.h>

namespace quorvel::command {
namespace {

constexpr double kPitch = ContactSheet::kTile + ContactSheet::kGap;

void drawGround(CGContext& context, const CGSize& size) {
  constexpr int kSquare = 8;
  context.setFillColor({1, 1, 1, 1});
  context.fillRect({0, 0, size.width, size.height});
  context.setFillColor({0.9, 0.9, 0.9, 1});
  const int columns = static_cast<int>(size.width) / kSquare + 1;
  const int rows = static_cast<int>(size.height) / kSquare + 1;
  for (int row = 0; row < rows; ++row) {
    for (int column = row % 2; column < columns; column += 2) {
      context.fillRect({static_cast<double>(column * kSquare), static_cast<double>(row * kSquare), kSquare, kSquare});
    }
  }
}

/// In the middle of its tile.
void drawTile(const UIImage& image, double x, double y) {
  const CGSize size = image.size();
  const double factor = std::min({1.0, ContactSheet::kTile / size.width, ContactSheet::kTile / size.height});
  const double width = size.width * factor;
  const double height = size.height * factor;
  image.drawInRect({x + (ContactSheet::kTile - width) / 2, y + (ContactSheet::kTile - height) / 2, width, height});
}

}  // namespace

void ContactSheet::add(const std::string& name, const std::optional<UIImage>& image) {
  if (rows_.empty()) beginRow({});
  rows_.back().tiles.push_back({name, image});
}

std::optional<UIImage> ContactSheet::picture() const {
  std::size_t columns = 1;
  for (const Row& row : rows_) columns = std::max(columns, row.tiles.size());
  const CGSize size{static_cast<double>(columns) * kPitch + kGap, static_cast<double>(rows_.size()) * kPitch + kGap};
  const UIGraphicsImageContext drawing(size, 1);
  if (!drawing.context()) return nil;
  drawGround(*drawing.context(), size);
  for (std::size_t y = 0; y < rows_.size(); ++y) {
    for (std::size_t x = 0; x < rows_[y].tiles.size(); ++x) {
      const auto& image = rows_[y].tiles[x].image;
      if (image) drawTile(*image, kGap + static_cast<double>(x) * kPitch, kGap + static_cast<double>(y) * kPitch);
    }
  }
  return drawing.image();
}

std::string ContactSheet::legend() const {
  std::string text;
  for (const Row& row : rows_) {
    text += row.name + ":";
    const char* between = " ";
    for (const Tile& tile : row.tiles) {
      text += between + tile.name + (tile.image ? "" : " (missing)");
      between = ", ";
    }
    text += "\n";
  }
  return text;
}

}  // namespace quorvel::command
