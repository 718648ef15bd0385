#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

#include <cairo.h>

#include <quorvel/Platform/CoreGraphics/CGContext.h>
#include <quorvel/Platform/ImageIO/AreaShrink.h>

namespace quorvel {
namespace {

struct Release {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
  void operator()(cairo_pattern_t* pattern) const { cairo_pattern_destroy(pattern); }
};
using Canvas = std::unique_ptr<cairo_t, Release>;
using Surface = std::unique_ptr<cairo_surface_t, Release>;
using Pattern = std::unique_ptr<cairo_pattern_t, Release>;

/// Of the transparency layers that are open at once; who draws on the screen opens a few.
constexpr std::size_t kLayerBytes = std::size_t{1} << 30;

/// A surface over pixels that outlive it. Cairo takes them for writable; those of an image are only read.
Surface surfaceOver(const CGBitmap& bitmap) {
  auto* data = const_cast<unsigned char*>(bitmap.data());
  return Surface(cairo_image_surface_create_for_data(data, CAIRO_FORMAT_ARGB32, static_cast<int>(bitmap.width()),
                                                     static_cast<int>(bitmap.height()),
                                                     static_cast<int>(bitmap.bytesPerRow())));
}

bool isFinite(const CGRect& rectangle) {
  return std::isfinite(rectangle.x) && std::isfinite(rectangle.y) && std::isfinite(rectangle.width) &&
         std::isfinite(rectangle.height);
}

cairo_operator_t operatorOf(CGBlendMode mode) {
  switch (mode) {
    case CGBlendMode::Multiply:
      return CAIRO_OPERATOR_MULTIPLY;
    case CGBlendMode::SourceIn:
      return CAIRO_OPERATOR_IN;
    case CGBlendMode::SourceAtop:
      return CAIRO_OPERATOR_ATOP;
    case CGBlendMode::DestinationOver:
      return CAIRO_OPERATOR_DEST_OVER;
    case CGBlendMode::Normal:
      break;
  }
  return CAIRO_OPERATOR_OVER;
}

bool isWhole(double value) { return std::abs(value - std::round(value)) < 1e-6; }

/// Pixels fall on pixels: nothing to filter, and each value stays what it is.
bool isPixelExact(const cairo_matrix_t& m) {
  const auto isUnit = [](double value) { return std::abs(std::abs(value) - 1) < 1e-9; };
  const bool straight = isUnit(m.xx) && isUnit(m.yy) && m.xy == 0 && m.yx == 0;
  const bool turned = isUnit(m.xy) && isUnit(m.yx) && m.xx == 0 && m.yy == 0;
  return (straight || turned) && isWhole(m.x0) && isWhole(m.y0);
}

/// Not by `cairo_get_source`: of a context in error it gives a new pattern each time, which nobody frees.
void setSource(cairo_t* target, cairo_surface_t& pixels, cairo_extend_t extend, cairo_filter_t filter) {
  const Pattern pattern(cairo_pattern_create_for_surface(&pixels));
  cairo_pattern_set_extend(pattern.get(), extend);
  cairo_pattern_set_filter(pattern.get(), filter);
  cairo_set_source(target, pattern.get());
}

/// A rectangle as the path, in the coordinates in force, which are not turned by less than a quarter. Far off the
/// bitmap it is cut: cairo's coordinates wrap around at 2^23 pixels.
void addRectangle(cairo_t* target, const CGRect& rectangle) {
  constexpr double kLargest = 1e300;  // a greater one times 0 would be no number
  constexpr double kFar = 1 << 20;
  cairo_matrix_t m;
  cairo_get_matrix(target, &m);
  double startX = rectangle.x;
  double startY = rectangle.y;
  double endX = std::clamp(rectangle.x + rectangle.width, -kLargest, kLargest);
  double endY = std::clamp(rectangle.y + rectangle.height, -kLargest, kLargest);
  cairo_matrix_transform_point(&m, &startX, &startY);
  cairo_matrix_transform_point(&m, &endX, &endY);
  for (double* const end : {&startX, &startY, &endX, &endY}) *end = std::clamp(*end, -kFar, kFar);
  cairo_identity_matrix(target);
  cairo_rectangle(target, startX, startY, endX - startX, endY - startY);
  cairo_set_matrix(target, &m);
}

/// How many pixels a side of so many covers when each of them is brought to `length`; no more than it has.
std::size_t coveredPixels(std::size_t side, double length) {
  const double covered = static_cast<double>(side) * length;
  if (!(covered < static_cast<double>(side))) return side;
  const double whole = isWhole(covered) ? std::round(covered) : std::ceil(covered);
  return std::max<std::size_t>(1, static_cast<std::size_t>(whole));
}

/// The image brought to the given size by the mean of the areas; none without memory.
CGImage shrunk(const CGImage& image, std::size_t width, std::size_t height) {
  auto result = CGBitmap::make(static_cast<std::int64_t>(width), static_cast<std::int64_t>(height));
  if (!result) return {};
  const PixelSize size{static_cast<std::uint32_t>(image.width()), static_cast<std::uint32_t>(image.height())};
  auto shrink = AreaShrink::make(size, *result);
  if (!shrink) return {};
  for (std::size_t y = 0; y < image.height(); ++y) shrink->addRow(image.bitmap().row(y));
  return CGImage(std::move(result));
}

/// An image and the way of its pixels.
struct Placed {
  CGImage image;
  cairo_matrix_t toUser;

  /// An image that `toDevice` makes smaller is brought near its size first: cairo's own filter looks at too few pixels.
  Placed(const CGImage& whole, const cairo_matrix_t& userToDevice, const cairo_matrix_t& toUserSpace)
      : image(whole), toUser(toUserSpace) {
    cairo_matrix_t toDevice;
    cairo_matrix_multiply(&toDevice, &toUser, &userToDevice);
    const std::size_t width = coveredPixels(image.width(), std::hypot(toDevice.xx, toDevice.yx));
    const std::size_t height = coveredPixels(image.height(), std::hypot(toDevice.xy, toDevice.yy));
    if (width == image.width() && height == image.height()) return;
    CGImage small = shrunk(image, width, height);
    if (!small.hasPixels()) return;
    cairo_matrix_t enlarge;
    cairo_matrix_init_scale(&enlarge, static_cast<double>(image.width()) / static_cast<double>(width),
                            static_cast<double>(image.height()) / static_cast<double>(height));
    cairo_matrix_multiply(&toUser, &enlarge, &toUser);
    image = std::move(small);
  }
};

/// From pixels of a stored image of the given size to the unit square of the upright picture.
cairo_matrix_t placement(double width, double height, UIImageOrientation orientation) {
  cairo_matrix_t m;
  cairo_matrix_init_scale(&m, 1 / width, 1 / height);
  cairo_matrix_t turn;
  cairo_matrix_init_identity(&turn);
  switch (orientation) {
    case UIImageOrientation::Up:
      break;
    case UIImageOrientation::Down:
      cairo_matrix_init(&turn, -1, 0, 0, -1, 1, 1);
      break;
    case UIImageOrientation::Left:  // turned a quarter against the clock
      cairo_matrix_init(&turn, 0, -1, 1, 0, 0, 1);
      break;
    case UIImageOrientation::Right:  // turned a quarter with the clock
      cairo_matrix_init(&turn, 0, 1, -1, 0, 1, 0);
      break;
    case UIImageOrientation::UpMirrored:
      cairo_matrix_init(&turn, -1, 0, 0, 1, 1, 0);
      break;
    case UIImageOrientation::DownMirrored:
      cairo_matrix_init(&turn, 1, 0, 0, -1, 0, 1);
      break;
    case UIImageOrientation::LeftMirrored:
      cairo_matrix_init(&turn, 0, 1, 1, 0, 0, 0);
      break;
    case UIImageOrientation::RightMirrored:
      cairo_matrix_init(&turn, 0, -1, -1, 0, 1, 1);
      break;
  }
  cairo_matrix_multiply(&m, &m, &turn);
  return m;
}

}  // namespace

/// The cairo context keeps no state of its own between two operations, so that it can move to a copy of the bitmap when
/// an image holds on to the one drawn so far.
struct CGContext::Drawing {
  struct State {
    cairo_matrix_t transform{};
    ColorRGBA fill{0, 0, 0, 1};
    double alpha = 1;
    CGBlendMode blend = CGBlendMode::Normal;
    std::shared_ptr<cairo_surface_t> mask;  // alpha alone, as large as the bitmap
  };

  /// What a transparency layer lies over.
  struct Under {
    std::shared_ptr<CGBitmap> bitmap;
    State state;
    std::vector<State> saved;
    bool isBlank;
  };

  std::shared_ptr<CGBitmap> bitmap;
  Surface surface;
  Canvas canvas;
  State state;
  std::vector<State> saved;
  std::vector<Under> under;
  bool isBlank = false;  // all pixels are still zero

  bool attach() {
    surface = surfaceOver(*bitmap);
    canvas.reset(cairo_create(surface.get()));
    return cairo_status(canvas.get()) == CAIRO_STATUS_SUCCESS;
  }

  /// The bitmap to draw into, of no image; false without memory.
  bool own() {
    if (bitmap.use_count() == 1) return true;
    cairo_surface_flush(surface.get());
    auto copy = bitmap->copy();
    if (!copy) return false;
    bitmap = std::move(copy);
    return attach();
  }

  bool beginLayer() {
    if ((under.size() + 1) * bitmap->bytesPerRow() * bitmap->height() > kLayerBytes) return false;
    auto layer =
        CGBitmap::make(static_cast<std::int64_t>(bitmap->width()), static_cast<std::int64_t>(bitmap->height()));
    if (!layer) return false;
    cairo_surface_flush(surface.get());
    under.push_back({std::exchange(bitmap, std::move(layer)), state, std::exchange(saved, {}), isBlank});
    if (!attach()) return returnToUnder(), false;
    isBlank = true;
    state.alpha = 1;
    state.blend = CGBlendMode::Normal;
    state.mask = nullptr;
    return true;
  }
  void returnToUnder() {
    bitmap = std::move(under.back().bitmap);
    state = std::move(under.back().state);
    saved = std::move(under.back().saved);
    isBlank = under.back().isBlank;
    under.pop_back();
    attach();
  }
  void endLayer() {
    cairo_surface_flush(surface.get());
    const CGImage layer(bitmap);
    returnToUnder();
    cairo_matrix_t toUser = state.transform;
    if (cairo_matrix_invert(&toUser) == CAIRO_STATUS_SUCCESS) paintImage(layer, toUser);
  }

  /// Calls `draw(canvas)` with the state in force; what it draws passes the mask. An error of cairo's would stop all
  /// that follows: then a new context is made.
  template <class Draw>
  void paint(Draw draw) {
    if (!own()) return;
    // Multiplied with nothing, everything stays what it is; cairo takes ten times as long to find that out.
    const bool isPlain = std::exchange(isBlank, false) && state.blend == CGBlendMode::Multiply;
    const cairo_operator_t blend = operatorOf(isPlain ? CGBlendMode::Normal : state.blend);
    cairo_t* const target = canvas.get();
    cairo_save(target);
    cairo_set_matrix(target, &state.transform);
    if (state.mask) cairo_push_group(target);
    if (!state.mask) cairo_set_operator(target, blend);
    draw(target);
    if (state.mask) {
      cairo_pop_group_to_source(target);
      cairo_identity_matrix(target);
      cairo_set_operator(target, blend);
      cairo_mask_surface(target, state.mask.get(), 0, 0);
    }
    cairo_restore(target);
    if (cairo_status(target) != CAIRO_STATUS_SUCCESS) attach();
    cairo_surface_mark_dirty(surface.get());
  }

  /// Draws an image whose pixels `toUser` brings into user space.
  void paintImage(const CGImage& whole, const cairo_matrix_t& toUserSpace) {
    const Placed placed(whole, state.transform, toUserSpace);
    if (copyImage(placed.image, placed.toUser)) return;
    paint([&placed, this](cairo_t* target) { placeImage(target, placed.image, placed.toUser, state.alpha); });
  }
  /// What fills empty pixels one by one is copied; false when the image is not so.
  bool copyImage(const CGImage& image, const cairo_matrix_t& toUser) {
    if (!isBlank || state.mask || state.alpha != 1 || state.blend != CGBlendMode::Normal) return false;
    cairo_matrix_t m;
    cairo_matrix_multiply(&m, &toUser, &state.transform);
    constexpr double kFar = 1e6;
    if (!isPixelExact(m) || m.xx < 0.5 || !(std::abs(m.x0) < kFar) || !(std::abs(m.y0) < kFar) || !own()) return false;
    isBlank = false;
    cairo_surface_flush(surface.get());
    copyRows(image.bitmap(), std::lround(m.x0), std::lround(m.y0), m.yy < 0);
    cairo_surface_mark_dirty(surface.get());
    return true;
  }
  /// Puts the pixels' left edge at `left`, their top edge, or their bottom row's lower edge where they are turned
  /// upside down, at `top`.
  void copyRows(const CGBitmap& from, std::int64_t left, std::int64_t top, bool isUpsideDown) {
    const std::int64_t start = std::max<std::int64_t>(left, 0);
    const std::int64_t end = std::min<std::int64_t>(left + static_cast<std::int64_t>(from.width()),
                                                    static_cast<std::int64_t>(bitmap->width()));
    if (start >= end) return;
    for (std::size_t y = 0; y < from.height(); ++y) {
      const auto row = static_cast<std::int64_t>(y);
      const std::int64_t place = isUpsideDown ? top - 1 - row : top + row;
      if (place < 0 || place >= static_cast<std::int64_t>(bitmap->height())) continue;
      std::memcpy(bitmap->row(static_cast<std::size_t>(place)) + 4 * start, from.row(y) + 4 * (start - left),
                  static_cast<std::size_t>(4 * (end - start)));
    }
  }
  static void placeImage(cairo_t* target, const CGImage& image, const cairo_matrix_t& toUser, double alpha) {
    const Surface pixels = surfaceOver(image.bitmap());
    cairo_transform(target, &toUser);
    cairo_matrix_t toDevice;
    cairo_get_matrix(target, &toDevice);
    setSource(target, *pixels, CAIRO_EXTEND_PAD, isPixelExact(toDevice) ? CAIRO_FILTER_NEAREST : CAIRO_FILTER_GOOD);
    addRectangle(target, {0, 0, static_cast<double>(image.width()), static_cast<double>(image.height())});
    cairo_clip(target);
    cairo_paint_with_alpha(target, alpha);
  }
};

namespace {

/// Where `CGContextDrawImage` puts the pixels: the last row at the smaller y.
cairo_matrix_t flippedPlacement(const CGRect& rectangle, const CGImage& image) {
  cairo_matrix_t m;
  cairo_matrix_init(&m, rectangle.width / static_cast<double>(image.width()), 0, 0,
                    -rectangle.height / static_cast<double>(image.height()), rectangle.x,
                    rectangle.y + rectangle.height);
  return m;
}

/// NaN is 0.
double limited(double component) { return component > 0 ? std::min(component, 1.0) : 0.0; }
ColorRGBA limited(const ColorRGBA& c) { return {limited(c.red), limited(c.green), limited(c.blue), limited(c.alpha)}; }

bool canPlace(const CGRect& rectangle, const CGImage& image) {
  return image.hasPixels() && isFinite(rectangle) && rectangle.width > 0 && rectangle.height > 0;
}

/// A tile enlarged to what it covers of the bitmap, so that filtering does not mix one edge with the opposite one,
/// which lies beside it; the tile itself where its sides do not come to whole pixels.
CGImage enlargedTile(const CGImage& image, double width, double height) {
  constexpr double kLargest = 1e5;
  const bool isSame = width == static_cast<double>(image.width()) && height == static_cast<double>(image.height());
  if (isSame || !isWhole(width) || !isWhole(height) || width > kLargest || height > kLargest) return image;
  const auto context = CGContext::make(std::lround(width), std::lround(height));
  if (!context) return image;
  context->drawUpright({0, 0, width, height}, image, UIImageOrientation::Up);
  return context->image();
}

}  // namespace

CGContext::CGContext(std::unique_ptr<Drawing> drawing) : drawing_(std::move(drawing)) {}
CGContext::~CGContext() = default;

std::shared_ptr<CGContext> CGContext::make(std::int64_t width, std::int64_t height, double scale) {
  if (!(scale > 0) || !std::isfinite(scale)) return nullptr;
  auto context = over(CGBitmap::make(width, height), scale);
  if (context) context->drawing_->isBlank = true;
  return context;
}

std::shared_ptr<CGContext> CGContext::over(std::shared_ptr<CGBitmap> bitmap, double scale) {
  if (!bitmap || !(scale > 0) || !std::isfinite(scale)) return nullptr;
  auto drawing = std::make_unique<Drawing>();
  drawing->bitmap = std::move(bitmap);
  if (!drawing->attach()) return nullptr;
  cairo_matrix_init_scale(&drawing->state.transform, scale, scale);
  return std::shared_ptr<CGContext>(new CGContext(std::move(drawing)));
}

void CGContext::saveGState() { drawing_->saved.push_back(drawing_->state); }
void CGContext::restoreGState() {
  if (drawing_->saved.empty()) return;
  drawing_->state = std::move(drawing_->saved.back());
  drawing_->saved.pop_back();
}

bool CGContext::beginTransparencyLayer() { return drawing_->beginLayer(); }
void CGContext::endTransparencyLayer() {
  if (!drawing_->under.empty()) drawing_->endLayer();
}

void CGContext::scaleCTM(double x, double y) { cairo_matrix_scale(&drawing_->state.transform, x, y); }
void CGContext::translateCTM(double x, double y) { cairo_matrix_translate(&drawing_->state.transform, x, y); }
void CGContext::setBlendMode(CGBlendMode mode) { drawing_->state.blend = mode; }
void CGContext::setAlpha(double alpha) { drawing_->state.alpha = limited(alpha); }
void CGContext::setFillColor(const ColorRGBA& color) { drawing_->state.fill = color; }

void CGContext::fillRect(const CGRect& rectangle) {
  if (!isFinite(rectangle)) return;
  const ColorRGBA fill = limited(drawing_->state.fill);
  drawing_->paint([&](cairo_t* target) {
    cairo_set_source_rgba(target, fill.red, fill.green, fill.blue, fill.alpha * drawing_->state.alpha);
    addRectangle(target, rectangle);
    cairo_fill(target);
  });
}

void CGContext::drawImage(const CGRect& rectangle, const CGImage& image) {
  if (canPlace(rectangle, image)) drawing_->paintImage(image, flippedPlacement(rectangle, image));
}

void CGContext::drawUpright(const CGRect& rectangle, const CGImage& image, UIImageOrientation orientation) {
  if (!canPlace(rectangle, image)) return;
  cairo_matrix_t m = placement(static_cast<double>(image.width()), static_cast<double>(image.height()), orientation);
  cairo_matrix_t toRectangle;
  cairo_matrix_init(&toRectangle, rectangle.width, 0, 0, rectangle.height, rectangle.x, rectangle.y);
  cairo_matrix_multiply(&m, &m, &toRectangle);
  drawing_->paintImage(image, m);
}

void CGContext::drawTiled(const CGRect& rectangle, const CGImage& image, const CGSize& tile) {
  if (!canPlace(rectangle, image) || !(tile.width > 0) || !(tile.height > 0)) return;
  const cairo_matrix_t& toDevice = drawing_->state.transform;
  const CGImage drawn = enlargedTile(image, tile.width * std::abs(toDevice.xx), tile.height * std::abs(toDevice.yy));
  drawing_->paint([&](cairo_t* target) {
    addRectangle(target, rectangle);
    cairo_clip(target);
    cairo_translate(target, rectangle.x, rectangle.y);
    cairo_scale(target, tile.width / static_cast<double>(drawn.width()),
                tile.height / static_cast<double>(drawn.height()));
    cairo_matrix_t pixelsToDevice;
    cairo_get_matrix(target, &pixelsToDevice);
    const Surface pixels = surfaceOver(drawn.bitmap());
    setSource(target, *pixels, CAIRO_EXTEND_REPEAT,
              isPixelExact(pixelsToDevice) ? CAIRO_FILTER_NEAREST : CAIRO_FILTER_GOOD);
    cairo_paint_with_alpha(target, drawing_->state.alpha);
  });
}

void CGContext::clipToMask(const CGRect& rectangle, const CGImage& mask) {
  Drawing::State& state = drawing_->state;
  const Surface alpha(
      cairo_image_surface_create(CAIRO_FORMAT_A8, static_cast<int>(width()), static_cast<int>(height())));
  const Canvas canvas(cairo_create(alpha.get()));
  cairo_set_matrix(canvas.get(), &state.transform);
  if (canPlace(rectangle, mask)) {
    const Placed placed(mask, state.transform, flippedPlacement(rectangle, mask));
    Drawing::placeImage(canvas.get(), placed.image, placed.toUser, 1);
  }
  if (state.mask) {
    cairo_reset_clip(canvas.get());
    cairo_identity_matrix(canvas.get());
    cairo_set_operator(canvas.get(), CAIRO_OPERATOR_DEST_IN);
    cairo_set_source_surface(canvas.get(), state.mask.get(), 0, 0);
    cairo_paint(canvas.get());
  }
  cairo_surface_flush(alpha.get());
  state.mask = std::shared_ptr<cairo_surface_t>(cairo_surface_reference(alpha.get()), Release());
}

CGImage CGContext::image() {
  cairo_surface_flush(drawing_->surface.get());
  return CGImage(drawing_->bitmap);
}

CGBitmap* CGContext::pixels() {
  if (!drawing_->own()) return nullptr;
  drawing_->isBlank = false;
  cairo_surface_flush(drawing_->surface.get());
  cairo_surface_mark_dirty(drawing_->surface.get());
  return drawing_->bitmap.get();
}

std::size_t CGContext::width() const { return drawing_->bitmap->width(); }
std::size_t CGContext::height() const { return drawing_->bitmap->height(); }

}  // namespace quorvel
