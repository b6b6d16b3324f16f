#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/memory.h"
#include "frame/types.h"
#include "geometry/cubic_weights.h"
#include "geometry/warp/sampling.h"

// The interpolations at one source position, in their plain form. They serve every position: those near the image's
// border and outside it, and those that the vectorised loops (`*_run.h`) leave over; those give the same values.

namespace norvala {

// What rounding explains: positions this little before a pixel count as lying on it, and those this little outside of
// an image or a region as lying inside.
inline constexpr double kPositionTolerance = 1e-7;

// The coordinate, limited to the image where it lies outside by more than rounding explains.
inline double LimitCoordinate(double x, std::int32_t size) {
  const double last = static_cast<double>(size) - 1;
  if (!(x >= -kPositionTolerance)) return 0;
  return x > last + kPositionTolerance ? last : x;
}

template <class T>
inline double PixelAt(const SourceImage& source, std::int32_t x, std::int32_t y) {
  return static_cast<double>(Row(static_cast<const T*>(source.pixels), source.step, y)[x]);
}

// A sum as a pixel: bytes are limited to 0..255 and rounded half up.
template <class T>
inline T ToPixel(double sum) {
  if constexpr (std::is_floating_point_v<T>) return static_cast<T>(sum);
  return static_cast<T>(std::clamp(sum, 0.0, 255.0) + 0.5);
}

template <class T>
inline void SampleNearest(const SourceImage& source, double x, double y, Unaligned<T>* dst) {
  // Bit patterns: a signalling NaN passes through unchanged.
  using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, T>;
  const auto column = static_cast<std::int32_t>(LimitCoordinate(x, source.size.width) + 0.5);
  const auto row = static_cast<std::int32_t>(LimitCoordinate(y, source.size.height) + 0.5);
  *reinterpret_cast<Unaligned<Bits>*>(dst) = Row(static_cast<const Bits*>(source.pixels), source.step, row)[column];
}

// The first of the two pixels that a coordinate lies between, and the distance from it.
struct LinearPlace {
  std::int32_t first;
  double fraction;

  LinearPlace(double x, std::int32_t size) {
    const double limited = LimitCoordinate(x, size);
    first = static_cast<std::int32_t>(limited + kPositionTolerance);
    fraction = limited - first;
    if (first >= size - 1) {
      first = size - 2;
      fraction = 1;
    }
  }
};

template <class T>
inline void SampleLinear(const SourceImage& source, double x, double y, Unaligned<T>* dst) {
  const LinearPlace h(x, source.size.width);
  const LinearPlace v(y, source.size.height);
  const auto lerp = [&](std::int32_t row) {
    const double p = PixelAt<T>(source, h.first, row);
    return p + (PixelAt<T>(source, h.first + 1, row) - p) * h.fraction;
  };
  const double top = lerp(v.first);
  const double bottom = lerp(v.first + 1);
  *dst = static_cast<T>((sizeof(T) == 1 ? top + 0.5 : top) + v.fraction * (bottom - top));
}

// The first of the four pixels around a coordinate, and their weights. At the borders all four lie inside the image.
struct CubicPlace {
  std::int32_t first;
  double weights[4];

  CubicPlace(double x, std::int32_t size) {
    const double limited = LimitCoordinate(x, size);
    const auto pixel = static_cast<std::int32_t>(limited + kPositionTolerance);
    first = pixel >= size - 2 ? size - 4 : pixel > 0 ? pixel - 1 : 0;
    const auto t = static_cast<double>(static_cast<float>(limited - 1 - first));
    CubicWeights(t, weights);
    // Here rounding leaves 1e-16 of the first pixel, which would show where the pixel itself is 0.
    if (t == 1 || t == 2) weights[0] = 0;
  }
};

template <class T>
inline void SampleCubic(const SourceImage& source, double x, double y, Unaligned<T>* dst) {
  const CubicPlace h(x, source.size.width);
  const CubicPlace v(y, source.size.height);
  const auto row = [&](std::int32_t j) {
    const double* w = h.weights;
    const auto p = [&](std::int32_t i) { return PixelAt<T>(source, h.first + i, v.first + j); };
    return w[0] * p(0) + w[1] * p(1) + w[2] * p(2) + w[3] * p(3);
  };
  const double* w = v.weights;
  *dst = ToPixel<T>(w[0] * row(0) + w[1] * row(1) + w[2] * row(2) + w[3] * row(3));
}

}  // namespace norvala
