// Pixels to filter in tests, made by formulas, and their exact means in floating point.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <ostream>
#include <random>
#include <vector>

#include <quorvel/Platform/Accelerate/vImage.h>

namespace quorvel::test {

struct Picture {
  std::size_t width;
  std::size_t height;
  std::size_t rowBytes;
  std::vector<std::uint8_t> bytes;

  /// Ends exactly with its last pixel, so that a sanitizer sees what reads on; `gap` bytes part the rows.
  Picture(std::size_t w, std::size_t h, std::size_t gap = 0)
      : width(w), height(h), rowBytes(4 * w + gap), bytes(rowBytes * (h - 1) + 4 * w) {}

  [[nodiscard]] vImage_Buffer buffer() { return {bytes.data(), height, width, rowBytes}; }
  [[nodiscard]] std::uint8_t& at(std::size_t x, std::size_t y, std::size_t channel) {
    return bytes[y * rowBytes + 4 * x + channel];
  }
  [[nodiscard]] std::uint8_t at(std::size_t x, std::size_t y, std::size_t channel) const {
    return bytes[y * rowBytes + 4 * x + channel];
  }
};

enum class Motif { Noise, Extremes, Slope, Steps, Corner, Dot };
inline constexpr Motif kMotifs[] = {Motif::Noise, Motif::Extremes, Motif::Slope,
                                    Motif::Steps, Motif::Corner,   Motif::Dot};
inline std::ostream& operator<<(std::ostream& out, Motif motif) {
  constexpr const char* kNames[] = {"noise", "extremes", "slope", "steps", "corner", "dot"};
  return out << kNames[static_cast<std::size_t>(motif)];
}

inline Picture draw(Motif motif, std::size_t width, std::size_t height, std::size_t gap = 0) {
  Picture picture(width, height, gap);
  std::mt19937 random(static_cast<std::uint32_t>(width * 131 + height));
  const auto value = [&](std::size_t x, std::size_t y, std::size_t channel) -> std::size_t {
    switch (motif) {
      case Motif::Noise:
        return random() & 255;
      case Motif::Extremes:
        return random() % 2 * 255;
      case Motif::Slope:
        return (y * 255 + channel * 20) / (height + channel);
      case Motif::Steps:
        return x * 5 / width % 2 * 255;
      case Motif::Corner:
        return x < width / 3 + channel && y < height / 3 + 1 ? 255 : 3;
      case Motif::Dot:
        return x == width / 2 && y == height / 2 ? 255 : 0;
    }
    return 0;
  };
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      for (std::size_t channel = 0; channel < 4; ++channel) {
        picture.at(x, y, channel) = static_cast<std::uint8_t>(value(x, y, channel));
      }
    }
  }
  return picture;
}

/// Channels of all pixels, row by row, as numbers.
using Exact = std::vector<double>;

inline Exact exactOf(const Picture& picture) {
  Exact values;
  for (std::size_t y = 0; y < picture.height; ++y) {
    for (std::size_t i = 0; i < 4 * picture.width; ++i) values.push_back(picture.bytes[y * picture.rowBytes + i]);
  }
  return values;
}

/// Filters every row and every column of channels by `filter`, which is given a line and answers the filtered one.
inline void filterLines(Exact& values, std::size_t width, std::size_t height,
                        const std::function<Exact(const Exact&)>& filter) {
  const auto one = [&](std::size_t first, std::size_t stride, std::size_t count) {
    Exact line(count);
    for (std::size_t i = 0; i < count; ++i) line[i] = values[first + i * stride];
    const Exact result = filter(line);
    for (std::size_t i = 0; i < count; ++i) values[first + i * stride] = result[i];
  };
  for (std::size_t channel = 0; channel < 4 * width; ++channel) one(channel, 4 * width, height);
  for (std::size_t y = 0; y < height; ++y) {
    for (std::size_t channel = 0; channel < 4; ++channel) one(y * 4 * width + channel, 4, width);
  }
}

/// Each place the mean of those around it, weighted by `weights[distance]`; the ends are repeated.
inline Exact weightedMeans(const Exact& line, const std::vector<double>& weights) {
  Exact means(line.size());
  const auto last = static_cast<std::ptrdiff_t>(line.size()) - 1;
  const auto at = [&](std::ptrdiff_t i) {
    return line[static_cast<std::size_t>(std::clamp<std::ptrdiff_t>(i, 0, last))];
  };
  for (std::ptrdiff_t i = 0; i <= last; ++i) {
    double sum = weights[0] * at(i);
    double area = weights[0];
    for (std::ptrdiff_t k = 1; k < static_cast<std::ptrdiff_t>(weights.size()); ++k) {
      const double weight = weights[static_cast<std::size_t>(k)];
      sum += weight * (at(i - k) + at(i + k));
      area += 2 * weight;
    }
    means[static_cast<std::size_t>(i)] = sum / area;
  }
  return means;
}

/// The same with equal weights up to the distance `reach`, which may be far beyond the line.
inline Exact boxMeans(const Exact& line, std::ptrdiff_t reach) {
  Exact means(line.size());
  const auto last = static_cast<std::ptrdiff_t>(line.size()) - 1;
  for (std::ptrdiff_t i = 0; i <= last; ++i) {
    const std::ptrdiff_t low = std::max<std::ptrdiff_t>(0, i - reach);
    const std::ptrdiff_t high = std::min(last, i + reach);
    double sum =
        static_cast<double>(reach - (i - low)) * line.front() + static_cast<double>(reach - (high - i)) * line.back();
    for (std::ptrdiff_t k = low; k <= high; ++k) sum += line[static_cast<std::size_t>(k)];
    means[static_cast<std::size_t>(i)] = sum / static_cast<double>(2 * reach + 1);
  }
  return means;
}

struct Deviation {
  double largest = 0;
  double mean = 0;
};
inline Deviation deviation(const Picture& picture, const Exact& exact) {
  Deviation result;
  const Exact values = exactOf(picture);
  for (std::size_t i = 0; i < values.size(); ++i) {
    result.largest = std::max(result.largest, std::fabs(values[i] - exact[i]));
    result.mean += (values[i] - exact[i]) / static_cast<double>(values.size());
  }
  return result;
}

}  // namespace quorvel::test
