#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "norvala.h"
#include "support/old_image.h"

// Warps in their plainest form, pixel by pixel, as the yardstick of the library's.

namespace norvala_test {

using Affine = std::array<double, 6>;
using Quad = std::array<double, 8>;

inline constexpr std::int32_t kNearest = 1;
inline constexpr std::int32_t kLinear = 2;
inline constexpr std::int32_t kCubic = 4;
inline constexpr std::int32_t kKernels[] = {kNearest, kLinear, kCubic};
inline constexpr std::int32_t kSmoothEdge = INT32_MIN;

inline double RandomDouble(Random& random, double low, double high) {
  return std::uniform_real_distribution<double>(low, high)(random);
}

template <class T>
Rect WholeOf(const Image<T>& image) {
  return {0, 0, image.width(), image.height()};
}

inline Rect LimitTo(const Rect& r, int width, int height) {
  return {r.x, r.y, std::min(r.width, width - r.x), std::min(r.height, height - r.y)};
}

inline bool Contains(const Rect& r, double x, double y, double margin = 0) {
  return x >= r.x - margin && x <= r.x + r.width - 1 + margin && y >= r.y - margin && y <= r.y + r.height - 1 + margin;
}

// A region that begins inside an image and may reach beyond it.
inline Rect RandomRegion(Random& random, int width, int height, int beyond) {
  const int x = RandomInt(random, 0, 1) != 0 ? 0 : RandomInt(random, 0, width - 1);
  const int y = RandomInt(random, 0, 1) != 0 ? 0 : RandomInt(random, 0, height - 1);
  return {x, y, RandomInt(random, 1, width - x + beyond), RandomInt(random, 1, height - y + beyond)};
}

// Takes the pixels of a region over from another image.
template <class T>
void CopyRegion(const Image<T>& from, Image<T>& to, const Rect& r) {
  for (int y = r.y; y < r.y + r.height; ++y) {
    for (int x = r.x; x < r.x + r.width; ++x) to.Set(x, y, from.Get(x, y));
  }
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

// How far a point lies inside a convex quadrilateral of either order; below 0 outside.
inline double Depth(const Quad& q, double x, double y) {
  double least = 1e9;
  double most = -1e9;
  for (std::size_t i = 0; i < 8; i += 2) {
    const double dx = q[(i + 2) % 8] - q[i];
    const double dy = q[(i + 3) % 8] - q[i + 1];
    const double distance = (dx * (y - q[i + 1]) - dy * (x - q[i])) / std::hypot(dx, dy);
    least = std::min(least, distance);
    most = std::max(most, distance);
  }
  return std::max(least, -most);
}

// The rows that a convex quadrilateral has in common with a rectangle, and the columns to be written in each.
struct NaiveSpans {
  int firstRow = 0;
  std::vector<std::pair<int, int>> columns;
  bool doubtful = false;  // the rectangle cuts it, and an end lies so close to a pixel that the cut's rounding decides
};
inline NaiveSpans SpansOf(const Quad& q, const Rect& r) {
  NaiveSpans spans;
  const double bottom = std::max({q[1], q[3], q[5], q[7]});
  const double last = r.x + r.width - 1;
  const auto isNearInteger = [](double v) { return std::fabs(v - std::nearbyint(v)) < 1e-9; };
  bool cut = false;
  bool near = false;
  for (std::size_t i = 0; i < 8; i += 2) {
    cut |= !Contains(r, q[i], q[i + 1]);
    near |= isNearInteger(q[i + 1]);
  }
  for (int y = r.y; y < r.y + r.height; ++y) {
    double left = 1e300;
    double right = -1e300;
    for (std::size_t i = 0; i < 8; i += 2) {
      std::size_t from = i;
      std::size_t to = (i + 2) % 8;
      if (q[from + 1] > q[to + 1]) std::swap(from, to);
      if (q[from + 1] > y || q[to + 1] < y || (q[to + 1] == y && y != bottom) || q[from + 1] == q[to + 1]) continue;
      const double x = (y - q[from + 1]) * ((q[to] - q[from]) / (q[to + 1] - q[from + 1])) + q[from];
      left = std::min(left, x);
      right = std::max(right, x);
    }
    if (left > last || right < r.x) continue;
    for (const double end : {left, right}) near |= end > r.x - 0.5 && end < last + 0.5 && isNearInteger(end);
    double first = std::ceil(left);
    if (left + 1 - first < 1e-14) first -= 1;
    double end = std::floor(right);
    if (1 - (right - end) < 1e-14) end += 1;
    if (spans.columns.empty()) spans.firstRow = y;
    spans.columns.emplace_back(static_cast<int>(std::max<double>(first, r.x)), static_cast<int>(std::min(end, last)));
  }
  spans.doubtful = cut && near;
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
  const auto pixel = [&](int i, int j) { return static_cast<double>(src.Get(i, j)); };
  if (kernel == kLinear) {
    const auto place = [](double v, int size) {
      const int i = static_cast<int>(v + 1e-7);
      return i >= size - 1 ? std::pair(size - 2, 1.0) : std::pair(i, v - i);
    };
    const auto [i, fx] = place(x, w);
    const auto [j, fy] = place(y, h);
    const double top = pixel(i, j) + (pixel(i + 1, j) - pixel(i, j)) * fx;
    const double bottom = pixel(i, j + 1) + (pixel(i + 1, j + 1) - pixel(i, j + 1)) * fx;
    if constexpr (sizeof(T) == 1) return static_cast<T>(top + 0.5 + fy * (bottom - top));
    return static_cast<T>(top + fy * (bottom - top));
  }
  std::array<double, 4> weights[2];
  int first[2];
  for (int axis = 0; axis < 2; ++axis) {
    const double v = axis == 0 ? x : y;
    const int size = axis == 0 ? w : h;
    const int i = static_cast<int>(v + 1e-7);
    first[axis] = i >= size - 2 ? size - 4 : i > 0 ? i - 1 : 0;
    const volatile float single = static_cast<float>(v - 1 - first[axis]);
    const double t = single;
    weights[axis] = {-(t * t * t) / 6 + t * t / 2 - t / 3, t * t * t / 2 - t * t - t / 2 + 1,
                     -(t * t * t) / 2 + t * t / 2 + t, t * t * t / 6 - t / 6};
    if (t == 1 || t == 2) weights[axis][0] = 0;  // exactly on a pixel, no other one counts
  }
  const auto combine = [](const std::array<double, 4>& w4, auto value) {
    return w4[0] * value(0) + w4[1] * value(1) + w4[2] * value(2) + w4[3] * value(3);
  };
  const double sum = combine(
      weights[1], [&](int j) { return combine(weights[0], [&](int i) { return pixel(first[0] + i, first[1] + j); }); });
  if constexpr (sizeof(T) == 1) return static_cast<T>(std::clamp(sum, 0.0, 255.0) + 0.5);
  return static_cast<T>(sum);
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

}  // namespace norvala_test
