#include <cmath>

#include "geometry/geometry.h"
#include "geometry/warp/affine_rows.h"
#include "geometry/warp/quad_checks.h"
#include "geometry/warp/smooth_edge.h"

namespace norvala {
namespace {

// The affine map that takes the first three vertices of `s` to those of `t`.
AffineCoefficients MapThreeVertices(const Quadrilateral& s, const Quadrilateral& t) {
  const auto& v = s.vertices;
  const auto& w = t.vertices;
  const double a = v[1].x - v[0].x;
  const double b = v[2].x - v[1].x;
  const double c = v[1].y - v[0].y;
  const double e = v[2].y - v[1].y;
  const double k = 1 / (a * e - b * c);
  const double p = w[1].x - w[0].x;
  const double q = w[2].x - w[1].x;
  const double r = w[1].y - w[0].y;
  const double u = w[2].y - w[1].y;
  AffineCoefficients m;
  m.c00 = (e * p - q * c) * k;
  m.c01 = (q * a - p * b) * k;
  m.c02 = w[2].x - m.c00 * v[2].x - m.c01 * v[2].y;
  m.c10 = (e * r - c * u) * k;
  m.c11 = (u * a - b * r) * k;
  m.c12 = w[2].y - m.c10 * v[2].x - m.c11 * v[2].y;
  return m;
}

// Relative to the mapped coordinate, or absolute where that is tiny.
bool Misses(double mapped, double target) {
  return std::fabs(mapped) > 1e-200 ? std::fabs((mapped - target) / mapped) > 1e-12 : std::fabs(target) > 1e-12;
}

}  // namespace

StatusCode WarpAffineQuad(const void* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion,
                          const double* srcQuad, void* dst, std::int32_t dstStep, Rect dstRegion, const double* dstQuad,
                          PixelDepthCode depth, std::int32_t interpolation) {
  const WarpRequest request = {src, srcSize, srcStep, srcRegion, dst, dstStep, dstRegion, depth, interpolation};
  QuadPair quads;
  if (const StatusCode status = CheckQuadWarp(request, srcQuad, dstQuad, quads); status != StatusCode::Success) {
    return status;
  }
  const AffineCoefficients forward = MapThreeVertices(quads.source, quads.destination);
  const Point fourth = Map(forward, quads.source.vertices[3].x, quads.source.vertices[3].y);
  const Point& target = quads.destination.vertices[3];
  const bool isAffine = !Misses(fourth.x, target.x) && !Misses(fourth.y, target.y);
  const AffineCoefficients inverse = MapThreeVertices(quads.destination, quads.source);

  Polygon written(quads.destination);
  if (!quads.sourceInside) {
    written = ClipPolygon(Polygon(quads.source), Corners(request.EffectiveRegion()));
    for (int i = 0; i < written.count; ++i) {
      written.vertices[i] = Map(forward, written.vertices[i].x, written.vertices[i].y);
    }
  }
  const Box box = request.DestinationBox();
  {
    const RowSpans spans(ClipPolygon(written, box), box, quads.clockwise);
    if (!spans) return StatusCode::NoDestinationOverlap;
    WarpRowsAffine(request.Source(), inverse, spans, depth, request.Kernel(), dst, dstStep);
  }
  if (request.HasSmoothEdge() && quads.sourceInside) {
    SmoothEdge(dst, dstStep, depth, quads.destination, box, quads.clockwise);
  }
  return isAffine ? StatusCode::Success : StatusCode::QuadNotAffine;
}

}  // namespace norvala
