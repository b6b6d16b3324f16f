#include <algorithm>
#include <cmath>

#include "frame/memory.h"
#include "geometry/geometry.h"
#include "geometry/warp/request.h"
#include "geometry/warp/row_spans.h"

namespace norvala {
namespace {

// ---- Coefficients ----

// By their difference relative to the first value or, where that is tiny, by the second value alone.
bool AreNearlyEqual(double a, double b) {
  const double difference = std::fabs(a) > 1e-200 ? std::fabs((a - b) / a) : std::fabs(b);
  return !(difference > 1e-12);
}

// The map from the quadrilateral back to the rectangle.
AffineCoefficients InvertToRectangle(const Quadrilateral& quad, const Box& box) {
  const auto& v = quad.vertices;
  const Point a = v[1] - v[0];
  const Point b = v[2] - v[1];
  const double determinant = Cross(a, b);
  const double sx = (box.right - box.left) / determinant;
  const double sy = (box.bottom - box.top) / determinant;
  AffineCoefficients d;
  d.c00 = b.y * sx;
  d.c01 = -b.x * sx;
  d.c02 = box.left - d.c01 * v[0].y - d.c00 * v[0].x;
  d.c10 = -a.y * sy;
  d.c11 = a.x * sy;
  d.c12 = box.top - d.c10 * v[0].x - d.c11 * v[0].y;
  return d;
}

// The affine map that takes the first three vertices of `s` to those of `t`.
AffineCoefficients MapThreeVertices(const Quadrilateral& s, const Quadrilateral& t) {
  const auto& v = s.vertices;
  const auto& w = t.vertices;
  const Point a = v[1] - v[0];
  const Point b = v[2] - v[1];
  const Point p = w[1] - w[0];
  const Point q = w[2] - w[1];
  const double k = 1 / Cross(a, b);
  AffineCoefficients m;
  m.c00 = (p.x * b.y - a.y * q.x) * k;
  m.c01 = (a.x * q.x - p.x * b.x) * k;
  m.c02 = w[2].x - m.c00 * v[2].x - m.c01 * v[2].y;
  m.c10 = (p.y * b.y - a.y * q.y) * k;
  m.c11 = (a.x * q.y - p.y * b.x) * k;
  m.c12 = w[2].y - m.c10 * v[2].x - m.c11 * v[2].y;
  return m;
}

// ---- Rows ----

// Each row's additions wait for one another; several rows at once keep the adder busy.
constexpr int kRows = 4;
constexpr std::int32_t kListLength = 128;

// From a source pixel to the first one of its neighbourhood that the next rows of the destination will sample: when the
// source is turned, its lines come from memory in no order that the processor's own prefetching recognises.
std::ptrdiff_t PrefetchOffset(const SourceImage& source, Position rowStep, PixelDepthCode depth) {
  constexpr double kReach = 3;  // of the largest kernel
  const auto pixelsAhead = [&](double step) {
    const double way = kRows * step + (step > 0 ? kReach : -kReach);
    return static_cast<std::uintptr_t>(way > -100 && way < 100 ? static_cast<std::intptr_t>(way) : 0);
  };
  return static_cast<std::ptrdiff_t>(pixelsAhead(rowStep[1]) * static_cast<std::uintptr_t>(source.step) +
                                     pixelsAhead(rowStep[0]) * static_cast<std::uintptr_t>(PixelBytes(depth)));
}

// Writes the polygon's pixels of the destination region, each sampled from the source at the position that `inverse`
// maps the pixel to. Positions are accumulated from row to row and from pixel to pixel, which fixes their rounding.
StatusCode WarpPolygon(const WarpRequest& request, const Polygon& polygon, bool clockwise,
                       const AffineCoefficients& inverse) {
  const RowSpans spans(polygon, request.DestinationBox(), clockwise);
  if (!spans) return StatusCode::NoDestinationOverlap;
  const Position pixelStep = {inverse.c00, inverse.c10};
  const Position rowStep = {inverse.c01, inverse.c11};
  const double firstRow = spans.firstRow();
  SourceImage source = request.Source();
  source.prefetchOffset = PrefetchOffset(source, rowStep, request.depth);
  Sampler sample(source, request.depth, request.Kernel());
  Position base = {inverse.c01 * firstRow + inverse.c02, inverse.c11 * firstRow + inverse.c12};

  for (std::int32_t y = 0; y < spans.rows(); y += kRows) {
    Position next[kRows] = {};
    std::int64_t left[kRows] = {};
    char* out[kRows] = {};
    std::int64_t longest = 0;
    for (int r = 0; r < kRows && r < spans.rows() - y; ++r) {
      const RowSpan span = spans[y + r];
      next[r] = pixelStep * static_cast<double>(span.first) + base;
      base += rowStep;
      left[r] = std::int64_t{span.last} - span.first + 1;
      out[r] = request.DestinationPixel(span.first, std::ptrdiff_t{spans.firstRow()} + y + r);
      longest = std::max(longest, left[r]);
    }
    for (; longest > 0; longest -= kListLength) {
      Position lists[kRows][kListLength];
      const auto length = static_cast<std::int32_t>(std::min<std::int64_t>(longest, kListLength));
      for (std::int32_t k = 0; k < length; ++k) {
        for (int r = 0; r < kRows; ++r) {
          lists[r][k] = next[r];
          next[r] += pixelStep;
        }
      }
      for (int r = 0; r < kRows; ++r) {
        if (left[r] <= 0) continue;
        const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(left[r], length));
        sample(lists[r], count, kMonotone, out[r]);
        left[r] -= count;
        out[r] += count * PixelBytes(request.depth);
      }
    }
  }
  return StatusCode::Success;
}

}  // namespace

StatusCode WarpAffine(const void* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion, void* dst,
                      std::int32_t dstStep, Rect dstRegion, PixelDepthCode depth, const double* coefficients,
                      std::int32_t interpolation) {
  const WarpRequest request = {src, srcSize, srcStep, srcRegion, dst, dstStep, dstRegion, depth, interpolation};
  if (const StatusCode status = request.Check(); status != StatusCode::Success) return status;
  const auto forward = LoadUnaligned<AffineCoefficients>(coefficients);
  const bool isSingular = AreNearlyEqual(forward.c00 * forward.c11, forward.c01 * forward.c10);
  if (isSingular) return StatusCode::BadCoefficients;
  if (Misses(srcRegion, srcSize)) return StatusCode::NoSourceOverlap;
  const Rect region = request.EffectiveRegion();
  if (region.width < 2 || region.height < 2) return StatusCode::RegionTooSmall;

  const Box corners = Corners(region);
  const Quadrilateral quad = MapRectangleCorners(forward, corners);
  const QuadrilateralShape shape = ClassifyQuadrilateral(quad);
  if (shape == QuadrilateralShape::NotConvex) return StatusCode::BadCoefficients;
  const bool clockwise = shape == QuadrilateralShape::Clockwise;
  const StatusCode status = WarpPolygon(request, Polygon(quad), clockwise, InvertToRectangle(quad, corners));
  if (status == StatusCode::Success && request.HasSmoothEdge()) SmoothEdge(request, quad, clockwise);
  return status;
}

StatusCode WarpAffineQuad(const void* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion,
                          const double* srcQuad, void* dst, std::int32_t dstStep, Rect dstRegion, const double* dstQuad,
                          PixelDepthCode depth, std::int32_t interpolation) {
  const WarpRequest request = {src, srcSize, srcStep, srcRegion, dst, dstStep, dstRegion, depth, interpolation};
  QuadPair quads;
  if (const StatusCode status = request.CheckQuads(srcQuad, dstQuad, quads); status != StatusCode::Success) {
    return status;
  }
  const AffineCoefficients forward = MapThreeVertices(quads.source, quads.destination);
  Polygon written(quads.destination);
  if (!quads.sourceInside) {
    written = ClipPolygon(Polygon(quads.source), Corners(request.EffectiveRegion()));
    for (int i = 0; i < written.count; ++i) written.vertices[i] = Map(forward, written.vertices[i]);
  }
  const AffineCoefficients inverse = MapThreeVertices(quads.destination, quads.source);
  const StatusCode status = WarpPolygon(request, written, quads.clockwise, inverse);
  if (status != StatusCode::Success) return status;
  // The edges of a polygon that was cut are not the destination's: they stay as they are.
  if (request.HasSmoothEdge() && quads.sourceInside) SmoothEdge(request, quads.destination, quads.clockwise);

  const Point fourth = Map(forward, quads.source.vertices[3]);
  const Point& target = quads.destination.vertices[3];
  const bool isAffine = AreNearlyEqual(fourth.x, target.x) && AreNearlyEqual(fourth.y, target.y);
  return isAffine ? StatusCode::Success : StatusCode::QuadNotAffine;
}

}  // namespace norvala
