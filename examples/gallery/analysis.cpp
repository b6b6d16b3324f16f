#include <algorithm>
#include <array>
#include <cmath>

#include "sheet.h"

namespace gallery {
namespace {

// Half the difference of the neighbours in each direction: x as the real part, y as the imaginary part.
Plane<ComplexFLOAT32Number> Gradient(const Library& library, const Plane<BW8>& grey) {
  Plane<ComplexFLOAT32Number> gradient(library, grey.width(), grey.height());
  const auto at = [&](int x, int y) {
    return static_cast<float>(grey.row(std::clamp(y, 0, grey.height() - 1))[std::clamp(x, 0, grey.width() - 1)]);
  };
  for (int y = 0; y < grey.height(); ++y) {
    for (int x = 0; x < grey.width(); ++x) {
      gradient.row(y)[x] = {(at(x + 1, y) - at(x - 1, y)) / 2, (at(x, y + 1) - at(x, y - 1)) / 2};
    }
  }
  return gradient;
}

// Dark where the values are large, full black from `black` on.
Picture Ink(const Plane<FLOAT32>& plane, float black) {
  Picture picture(plane.width(), plane.height(), 1);
  for (int y = 0; y < plane.height(); ++y) {
    for (int x = 0; x < plane.width(); ++x) {
      *picture.at(x, y) = static_cast<std::uint8_t>(255.0F - 255.0F * std::min(plane.row(y)[x] / black, 1.0F));
    }
  }
  return picture;
}

// The value that `part` of the pixels do not exceed.
float Quantile(const Plane<FLOAT32>& plane, double part) {
  std::vector<float> values;
  for (int y = 0; y < plane.height(); ++y) values.insert(values.end(), plane.row(y), plane.row(y) + plane.width());
  const auto rank = static_cast<std::ptrdiff_t>(static_cast<double>(values.size() - 1) * part);
  std::nth_element(values.begin(), values.begin() + rank, values.end());
  return values[static_cast<std::size_t>(rank)];
}

// 0 above the threshold, 255 elsewhere.
Plane<BW8> ZeroAbove(const Library& library, const Plane<FLOAT32>& plane, float threshold) {
  Plane<BW8> mask(library, plane.width(), plane.height());
  for (int y = 0; y < plane.height(); ++y) {
    for (int x = 0; x < plane.width(); ++x) mask.row(y)[x] = plane.row(y)[x] > threshold ? 0 : 255;
  }
  return mask;
}

// A colour scale from dark blue over green to yellow, of even steps in lightness; `t` from 0 to 1.
std::array<std::uint8_t, 3> ScaleColour(float t) {
  static constexpr float kAnchors[][3] = {{68, 1, 84},    {71, 44, 122}, {59, 81, 139},  {44, 113, 142}, {33, 144, 141},
                                          {39, 173, 129}, {92, 200, 99}, {170, 220, 50}, {253, 231, 37}};
  constexpr int kIntervals = static_cast<int>(std::size(kAnchors)) - 1;
  const float position = std::clamp(t, 0.0F, 1.0F) * static_cast<float>(kIntervals);
  const int interval = std::min(static_cast<int>(position), kIntervals - 1);
  std::array<std::uint8_t, 3> colour{};
  for (std::size_t c = 0; c < 3; ++c) {
    const float low = kAnchors[interval][c];
    const float high = kAnchors[interval + 1][c];
    colour[c] = static_cast<std::uint8_t>(low + (high - low) * (position - static_cast<float>(interval)) + 0.5F);
  }
  return colour;
}

// Distances in colour, with the scale from 0 to `largest` below them and a mark on it at every multiple of `mark`.
Picture InColour(const Plane<FLOAT32>& distances, float largest, float mark) {
  constexpr int kGap = 4;
  constexpr int kBar = 12;
  const int width = distances.width();
  const int height = distances.height();
  Picture picture(width, height + kGap + kBar, 3);
  std::fill(picture.pixels.begin(), picture.pixels.end(), std::uint8_t{255});
  for (int x = 0; x < width; ++x) {
    for (int y = 0; y < height; ++y) std::ranges::copy(ScaleColour(distances.row(y)[x] / largest), picture.at(x, y));
    const auto value = [&](int column) { return largest * static_cast<float>(column) / static_cast<float>(width); };
    const bool marked = x > 0 && std::floor(value(x) / mark) != std::floor(value(x - 1) / mark);
    for (int y = 0; y < kBar; ++y) {
      const auto colour = marked ? std::array<std::uint8_t, 3>{255, 255, 255} : ScaleColour(value(x) / largest);
      std::ranges::copy(colour, picture.at(x, height + kGap + y));
    }
  }
  return picture;
}

// Rings of distance around the centre of a square, light and dark by turns every 16 units.
Picture Rings(const Plane<FLOAT32>& distances) {
  Picture picture(distances.width(), distances.height(), 1);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      *picture.at(x, y) = static_cast<int>(distances.row(y)[x] / 16.0F) % 2 != 0 ? 230 : 60;
    }
  }
  return picture;
}

// How often every value occurs: a column of two pixels a value, the mean of the values that occur at two thirds of the
// height.
Picture Histogram(const Plane<BW8>& plane) {
  std::array<int, 256> counts{};
  for (int y = 0; y < plane.height(); ++y) {
    for (int x = 0; x < plane.width(); ++x) ++counts[plane.row(y)[x]];
  }
  const auto present = 256 - std::ranges::count(counts, 0);
  const double mean = static_cast<double>(plane.width()) * plane.height() / static_cast<double>(present);
  constexpr int kHeight = 256;
  Picture picture(512, kHeight, 1);
  for (int x = 0; x < picture.width; ++x) {
    const double bar = counts[static_cast<std::size_t>(x / 2)] / mean * kHeight * 2 / 3;
    for (int y = 0; y < kHeight; ++y) *picture.at(x, y) = kHeight - y <= bar ? 40 : 235;
  }
  return picture;
}

}  // namespace

void ShowAnalysis(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const int width = grey.width();
  const int height = grey.height();

  sheet.Section("Magnitude and distance",
                "The strength of the edges from their slope in x and y, and how far every pixel lies from an edge.");
  const auto magnitude = library.Function<decltype(Norvala_MagnitudeFLOAT32)>("Norvala_MagnitudeFLOAT32");
  const Plane<ComplexFLOAT32Number> gradient = Gradient(library, grey);
  Plane<FLOAT32> slope(library, width, height);
  const double magnitudeTime = sheet.Run("Norvala_MagnitudeFLOAT32", [&] {
    return magnitude(gradient.data(), gradient.step(), slope.data(), slope.step(), width, height);
  });
  sheet.Show("magnitude", "Steepness: the magnitude of the gradient, black for 40 grey values a pixel",
             "Norvala_MagnitudeFLOAT32(gradient, ...)", magnitudeTime, Ink(slope, 40.0F));

  const auto transform = library.Function<decltype(Norvala_DistanceTransform3x3_BW8ToFLOAT32)>(
      "Norvala_DistanceTransform3x3_BW8ToFLOAT32");
  const Plane<BW8> edges = ZeroAbove(library, slope, Quantile(slope, 0.94));
  Plane<FLOAT32> distances(library, width, height);
  const FLOAT32 nearEuclidean[2] = {0.955F, 1.3693F};
  const double transformTime = sheet.Run("Norvala_DistanceTransform3x3_BW8ToFLOAT32", [&] {
    return transform(edges.data(), edges.step(), distances.data(), distances.step(), width, height, nearEuclidean);
  });
  sheet.Show(
      "distance",
      "The steepest 6 % of the pixels as zeros of a mask, and the distance of every pixel to the nearest of them; "
      "the scale has a mark every 10 pixels and ends at the distance that 2 % exceed",
      "Norvala_DistanceTransform3x3_BW8ToFLOAT32(edges, ..., {0.955, 1.3693})", transformTime,
      SideBySide({ToPicture(edges), InColour(distances, std::max(Quantile(distances, 0.98), 1.0F), 10.0F)}));

  constexpr int kSide = 201;
  Plane<BW8> point(library, kSide, kSide);
  for (int y = 0; y < kSide; ++y) std::fill_n(point.row(y), kSide, BW8{1});
  point.row(kSide / 2)[kSide / 2] = 0;
  Plane<FLOAT32> around(library, kSide, kSide);
  std::vector<Picture> rings;
  double ringsTime = 0.0;
  for (const std::array<FLOAT32, 2> weights : {std::array{1.0F, 2.0F}, {1.0F, 1.0F}, {0.955F, 1.3693F}}) {
    ringsTime = sheet.Run("Norvala_DistanceTransform3x3_BW8ToFLOAT32", [&] {
      return transform(point.data(), point.step(), around.data(), around.step(), kSide, kSide, weights.data());
    });
    rings.push_back(Rings(around));
  }
  sheet.Show(
      "metrics",
      "Rings of 16 pixels around one zero pixel: city-block distance (1, 2), chessboard distance (1, 1), and close "
      "to the Euclidean distance (0.955, 1.3693)",
      "Norvala_DistanceTransform3x3_BW8ToFLOAT32(point, ..., weights)", ringsTime, SideBySide(rings));

  sheet.Section("Noise", "Uniformly distributed bytes from a seed: the same seed gives the same noise.");
  const auto fill = library.Function<decltype(Norvala_RandUniform_BW8)>("Norvala_RandUniform_BW8");
  constexpr int kNoiseSide = 256;  // rows of a multiple of 32 bytes leave no gap: the image is one vector
  Plane<BW8> noise(library, kNoiseSide, kNoiseSide);
  const double fillTime =
      sheet.Run("Norvala_RandUniform_BW8", [&] { return fill(noise.data(), kNoiseSide * kNoiseSide, 64, 192, 2024); });
  sheet.Show("noise", "Noise of the values 64 to 191, and how often each of the values 0 to 255 occurs in it",
             "Norvala_RandUniform_BW8(noise, 256 * 256, 64, 192, 2024)", fillTime,
             SideBySide({ToPicture(noise), Histogram(noise)}));
}

}  // namespace gallery
