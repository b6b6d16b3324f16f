#pragma once

#include "geometry/quadrilateral.h"

namespace norvala {

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
};

// The part of a convex polygon that lies in the box, edges included: vertices in the same order, none repeated. It may
// be reduced to a segment or to one point. Empty where the two do not meet, or where a vertex lies so far away that the
// crossings cannot be computed.
Polygon ClipPolygon(const Polygon& polygon, const Box& box);

}  // namespace norvala
