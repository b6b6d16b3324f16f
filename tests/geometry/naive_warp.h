#pragma once

#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

#include "norvala.h"
#include "support/image.h"

// Warps in their plainest form, pixel by pixel, as the yardstick of the library's.

namespace norvala_test {

using Affine = std::array<double, 6>;
using Quad = std::array<double, 8>;

inline constexpr std::int32_t kNearest = 1;
inline constexpr std::int32_t kLinear = 2;
inline constexpr std::int32_t kCubic = 4;
inline constexpr std::int32_t kKernels[] = {kNearest, kLinear, kCubic};

inline Quad CornersOf(const Rect& r) {
  const double right = r.x + r.width - 1.0;
  const double bottom = r.y + r.height - 1.0;
  return {double(r.x), double(r.y), right, double(r.y), right, bottom, double(r.x), bottom};
}

inline Quad MapCorners(const Affine& c, const Rect& r) {
  Quad quad = CornersOf(r);
  for (std::size_t i = 0; i < 8; i += 2) {
    const double x = quad[i];
    const double y = quad[i + 1];
    quad[i] = c[0] * x + c[1] * y + c[2];
    quad[i + 1] = c[3] * x + c[4] * y + c[5];
  }
  return quad;
}

inline Affine InverseOfCorners(const Quad& q, const Rect& r) {
  const double a = q[2] - q[0];
  const double b = q[4] - q[2];
  const double c = q[3] - q[1];
  const double e = q[5] - q[3];
  const double d = a * e - b * c;
  const double sx = (r.width - 1.0) / d;
  const double sy = (r.height - 1.0) / d;
  const double d0 = e * sx;
  const double d1 = -b * sx;
  const double d3 = -c * sy;
  const double d4 = a * sy;
  return {d0, d1, r.x - d1 * q[1] - d0 * q[0], d3, d4, r.y - d3 * q[0] - d4 * q[1]};
}

// The columns that row y of a convex quadrilateral crosses, where it crosses any.
struct Interval {
  long double low;
  long double high;
};
inline std::optional<Interval> CrossRow(const Quad& q, double y) {
  std::optional<Interval> interval;
  const auto add = [&](long double x) {
    if (!interval) interval = Interval{x, x};
    interval->low = std::min(interval->low, x);
    interval->high = std::max(interval->high, x);
  };
  for (std::size_t i = 0; i < 8; i += 2) {
    const long double x0 = q[i];
    const long double y0 = q[i + 1];
    const long double x1 = q[(i + 2) % 8];
    const long double y1 = q[(i + 3) % 8];
    if (y0 == y) add(x0);
    if ((y0 < y && y1 > y) || (y0 > y && y1 < y)) add(x0 + (y - y0) / (y1 - y0) * (x1 - x0));
  }
  return interval;
}

// The rows that a quadrilateral has in common with a rectangle, and the columns to be written in each.
struct NaiveSpans {
  int firstRow = 0;
  std::vector<std::pair<int, int>> columns;
  bool doubtful = false;  // an end lies so close to a pixel that rounding decides
};
inline NaiveSpans SpansOf(const Quad& q, const Rect& r) {
  constexpr long double kDoubt = 1e-9L;
  NaiveSpans spans;
  const auto isNearInteger = [](long double v) { return std::fabs(v - std::nearbyint(v)) < kDoubt; };
  for (std::size_t i = 1; i < 8; i += 2) spans.doubtful |= isNearInteger(q[i]);
  for (int y = r.y; y < r.y + r.height; ++y) {
    const auto interval = CrossRow(q, y);
    const long double right = r.x + r.width - 1;
    if (!interval || interval->low > right || interval->high < r.x) continue;
    for (const long double end : {interval->low, interval->high}) {
      spans.doubtful |= end > r.x - 0.5L && end < right + 0.5L && isNearInteger(end);
    }
    if (spans.columns.empty()) spans.firstRow = y;
    spans.columns.emplace_back(static_cast<int>(std::ceil(std::max<long double>(interval->low, r.x))),
                               static_cast<int>(std::floor(std::min(interval->high, right))));
  }
  return spans;
}

template <class T>
T NaiveSample(const Image<T>& src, double x, double y, std::int32_t kernel) {
  const int w = src.width();
  const int h = src.height();
  const auto limit = [](double v, int size) {
    if (!(v >= -1e-7)) return 0.0;
    return v > size - 1 + 1e-7 ? size - 1.0 : v;
  };
  x = limit(x, w);
  y = limit(y, h);
  if (kernel == kCubic && (w < 4 || h < 4)) kernel = kLinear;
  if (w == 1 || h == 1) kernel = kNearest;
  if (kernel == kNearest) return src.Get(static_cast<int>(x + 0.5), static_cast<int>(y + 0.5));
  int xi = static_cast<int>(x + 1e-7);
  int yi = static_cast<int>(y + 1e-7);
  double sum = 0;
  if (kernel == kLinear) {
    double fx = x - xi;
    double fy = y - yi;
    if (xi >= w - 1) {
      xi = w - 2;
      fx = 1;
    }
    if (yi >= h - 1) {
      yi = h - 2;
      fy = 1;
    }
    const double p00 = src.Get(xi, yi);
    const double p01 = src.Get(xi + 1, yi);
    const double p10 = src.Get(xi, yi + 1);
    const double p11 = src.Get(xi + 1, yi + 1);
    const double top = p00 + (p01 - p00) * fx;
    const double bottom = p10 + (p11 - p10) * fx;
    if constexpr (sizeof(T) == 1) return static_cast<T>(top + 0.5 + fy * (bottom - top));
    sum = top + fy * (bottom - top);
  } else {
    const auto block = [](int i, int size) { return i >= size - 2 ? size - 4 : i > 0 ? i - 1 : 0; };
    const int bx = block(xi, w);
    const int by = block(yi, h);
    const auto weights = [](double position, int first) {
      const double t = static_cast<float>(position - 1 - first);
      std::array<double, 4> v = {-(t * t * t) / 6 + t * t / 2 - t / 3, t * t * t / 2 - t * t - t / 2 + 1,
                                 -(t * t * t) / 2 + t * t / 2 + t, t * t * t / 6 - t / 6};
      if (t == 1 || t == 2) v[0] = 0;  // exactly on a pixel, no other one counts
      return v;
    };
    const auto wx = weights(x, bx);
    const auto wy = weights(y, by);
    std::array<double, 4> rows;
    for (int j = 0; j < 4; ++j) {
      const auto p = [&](int i) { return static_cast<double>(src.Get(bx + i, by + j)); };
      rows[static_cast<std::size_t>(j)] = wx[0] * p(0) + wx[1] * p(1) + wx[2] * p(2) + wx[3] * p(3);
    }
    sum = wy[0] * rows[0] + wy[1] * rows[1] + wy[2] * rows[2] + wy[3] * rows[3];
    if constexpr (sizeof(T) == 1) {
      if (sum > 255) return 255;
      return sum < 0 ? T{0} : static_cast<T>(sum + 0.5);
    }
  }
  return static_cast<T>(sum);
}

// Which NaN arithmetic yields is nobody's promise: makes them all the same.
template <class T>
void UnifyNaNs(Image<T>& image) {
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const T value = image.Get(x, y);
      if (value != value) image.Set(x, y, std::numeric_limits<T>::quiet_NaN());
    }
  }
}

// Positions accumulated along rows and columns, as the affine warps do.
template <class T>
void NaiveAffineRows(const Image<T>& src, Image<T>& dst, const NaiveSpans& spans, const Affine& d,
                     std::int32_t kernel) {
  double rx = d[1] * spans.firstRow + d[2];
  double ry = d[4] * spans.firstRow + d[5];
  int row = spans.firstRow;
  for (const auto& [first, last] : spans.columns) {
    double x = d[0] * first + rx;
    double y = d[3] * first + ry;
    for (int column = first; column <= last; ++column) {
      dst.Set(column, row, NaiveSample(src, x, y, kernel));
      x += d[0];
      y += d[3];
    }
    rx += d[1];
    ry += d[4];
    ++row;
  }
}

inline double RandomDouble(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

// A region that begins inside an image and may reach beyond it.
inline Rect RandomRegion(Random& random, int width, int height, int beyond) {
  const int x = RandomInt(random, 0, 1) != 0 ? 0 : RandomInt(random, 0, width - 1);
  const int y = RandomInt(random, 0, 1) != 0 ? 0 : RandomInt(random, 0, height - 1);
  return {x, y, RandomInt(random, 1, width - x + beyond), RandomInt(random, 1, height - y + beyond)};
}

inline Rect LimitTo(const Rect& r, int width, int height) {
  return {r.x, r.y, std::min(r.width, width - r.x), std::min(r.height, height - r.y)};
}

}  // namespace norvala_test
