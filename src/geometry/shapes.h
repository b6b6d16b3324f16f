#pragma once

#include <cstdint>

#include "frame/status.h"
#include "frame/types.h"

// Points, boxes, quadrilaterals and polygons.

namespace norvala {

struct Point {
  double x;
  double y;
};

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

inline Point Map(const AffineCoefficients& c, double x, double y) {
  return {c.c00 * x + c.c01 * y + c.c02, c.c10 * x + c.c11 * y + c.c12};
}

inline bool Contains(const Box& box, const Point& p) {
  return p.x >= box.left && p.x <= box.right && p.y >= box.top && p.y <= box.bottom;
}

inline bool IsOutOfRange(Rect r) { return r.x < 0 || r.y < 0 || r.width < 1 || r.height < 1; }

// The centres of a rectangle's corner pixels.
inline Box Corners(Rect r) {
  return {static_cast<double>(r.x), static_cast<double>(r.y), static_cast<double>(r.x) + r.width - 1,
          static_cast<double>(r.y) + r.height - 1};
}

Quadrilateral MapRectangleCorners(const AffineCoefficients& c, const Box& box);

// How the corners turn, on the screen. A degenerate quadrilateral has a corner that is straight or not a number.
enum class QuadrilateralShape { Degenerate = -5, NotConvex = -4, CounterClockwise = 0, Clockwise = 1 };

inline bool IsConvex(QuadrilateralShape shape) {
  return shape == QuadrilateralShape::CounterClockwise || shape == QuadrilateralShape::Clockwise;
}

QuadrilateralShape ClassifyQuadrilateral(const Quadrilateral& quad);

// NonPositiveSize when the region is out of range, otherwise maps the centres of its corner pixels by six coefficients
// and reports BadCoefficients when their image is degenerate or not convex.
StatusCode MapRegionToQuadrilateral(Rect region, Quadrilateral& quad, const double* coefficients);

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
