#pragma once

#include <algorithm>

#include "frame/types.h"

// Points, boxes, quadrilaterals and polygons.

namespace norvala {

struct Point {
  double x;
  double y;

  bool operator==(const Point&) const = default;
};

inline Point operator+(const Point& a, const Point& b) { return {a.x + b.x, a.y + b.y}; }
inline Point operator-(const Point& a, const Point& b) { return {a.x - b.x, a.y - b.y}; }

// Positive where `b` points clockwise from `a` on the screen.
inline double Cross(const Point& a, const Point& b) { return a.x * b.y - a.y * b.x; }

// A rectangle's image lists top-left, top-right, bottom-right, bottom-left.
struct Quadrilateral {
  Point vertices[4];
};

// Maps (x, y) to (c00 x + c01 y + c02, c10 x + c11 y + c12).
struct AffineCoefficients {
  double c00, c01, c02;
  double c10, c11, c12;
};

// An axis-parallel box between two inclusive corners: pixel centres for a rectangle of pixels, any points for a bound.
struct Box {
  double left, top;
  double right, bottom;
};

inline Point Map(const AffineCoefficients& c, const Point& p) {
  return {c.c00 * p.x + c.c01 * p.y + c.c02, c.c10 * p.x + c.c11 * p.y + c.c12};
}

inline bool Contains(const Box& box, const Point& p) {
  return p.x >= box.left && p.x <= box.right && p.y >= box.top && p.y <= box.bottom;
}

// The box with each side moved outwards.
inline Box Expanded(const Box& box, double by) {
  return {box.left - by, box.top - by, box.right + by, box.bottom + by};
}

inline bool IsOutOfRange(Rect r) { return r.x < 0 || r.y < 0 || r.width < 1 || r.height < 1; }

inline bool Misses(Rect region, RegionSize image) { return region.x >= image.width || region.y >= image.height; }

// The part of the region that lies in the image, which it must not miss.
inline Rect LimitToImage(Rect region, RegionSize image) {
  return {region.x, region.y, std::min(region.width, image.width - region.x),
          std::min(region.height, image.height - region.y)};
}

// The centres of a rectangle's corner pixels.
inline Box Corners(Rect r) {
  return {static_cast<double>(r.x), static_cast<double>(r.y), static_cast<double>(r.x) + r.width - 1,
          static_cast<double>(r.y) + r.height - 1};
}

inline Quadrilateral MapRectangleCorners(const AffineCoefficients& c, const Box& box) {
  return {{Map(c, {box.left, box.top}), Map(c, {box.right, box.top}), Map(c, {box.right, box.bottom}),
           Map(c, {box.left, box.bottom})}};
}

// How the corners turn, on the screen. One that is straight or not a number makes the quadrilateral not convex.
enum class QuadrilateralShape { NotConvex, CounterClockwise, Clockwise };

QuadrilateralShape ClassifyQuadrilateral(const Quadrilateral& quad);

Box BoundOf(const Quadrilateral& quad);

// A convex polygon. A quadrilateral cut to a rectangle has at most eight vertices; the rest is room for the few more
// that rounding can make of nearly straight corners.
struct Polygon {
  static constexpr int kCapacity = 16;

  Point vertices[kCapacity];
  int count = 0;

  Polygon() = default;
  explicit Polygon(const Quadrilateral& quad);

  // Appends a vertex unless it repeats the last one.
  void Append(const Point& p);

  // The vertex that follows vertex `i`.
  const Point& After(int i) const { return vertices[i + 1 < count ? i + 1 : 0]; }
};

// The part of a convex polygon that lies in the box, edges included: vertices in the same order, none repeated. It may
// be reduced to a segment or to one point. Empty where the two do not meet, or where a vertex lies so far away that the
// crossings cannot be computed.
Polygon ClipPolygon(const Polygon& polygon, const Box& box);

}  // namespace norvala
