#include <algorithm>

#include "geometry/geometry.h"
#include "geometry/warp/projected_row.h"
#include "geometry/warp/request.h"
#include "geometry/warp/row_spans.h"
#include "geometry/warp/sample_pixel.h"

namespace norvala {
namespace {

// Three by three, row by row: maps (x, y) to the first two rows' products divided by the third's.
struct Projection {
  double m[3][3];
};

// The projection that takes the unit square to the quadrilateral (Heckbert, "Fundamentals of Texture Mapping and Image
// Warping", 1989).
Projection SquareToQuadrilateral(const Quadrilateral& quad) {
  const auto& v = quad.vertices;
  const Point sum = v[0] - v[1] + v[2] - v[3];
  const Point a = v[1] - v[2];
  const Point b = v[3] - v[2];
  const double reciprocal = 1 / Cross(a, b);
  const double g = Cross(sum, b) * reciprocal;
  const double h = Cross(a, sum) * reciprocal;
  return {{{v[1].x - v[0].x + g * v[1].x, v[3].x - v[0].x + h * v[3].x, v[0].x},
           {v[1].y - v[0].y + g * v[1].y, v[3].y - v[0].y + h * v[3].y, v[0].y},
           {g, h, 1}}};
}

// The inverse but for its scale, which a projection does not feel.
Projection Adjugate(const Projection& p) {
  Projection adjugate;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      const int r1 = (j + 1) % 3;
      const int r2 = (j + 2) % 3;
      const int c1 = (i + 1) % 3;
      const int c2 = (i + 2) % 3;
      adjugate.m[i][j] = p.m[r1][c1] * p.m[r2][c2] - p.m[r1][c2] * p.m[r2][c1];
    }
  }
  return adjugate;
}

Projection Product(const Projection& a, const Projection& b) {
  Projection product;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      product.m[i][j] = a.m[i][0] * b.m[0][j] + a.m[i][1] * b.m[1][j] + a.m[i][2] * b.m[2][j];
    }
  }
  return product;
}

// Where `limit` is given, only positions inside it are sampled; the pixels of the others keep their values.
void WarpRows(const WarpRequest& request, const Projection& inverse, const RowSpans& spans, const Box* limit) {
  constexpr std::int32_t kListLength = 256;
  Sampler sample(request.Source(), request.depth, request.Kernel());
  const auto& d = inverse.m;
  const double firstRow = spans.firstRow();
  const Position rowStep = {d[0][1], d[1][1]};
  ProjectedRow row = {{d[0][0], d[1][0]},
                      {d[0][1] * firstRow + d[0][2], d[1][1] * firstRow + d[1][2]},
                      d[2][0],
                      d[2][1] * firstRow + d[2][2]};

  for (std::int32_t y = 0; y < spans.rows(); ++y) {
    const RowSpan span = spans[y];
    for (std::int64_t first = span.first; first <= span.last; first += kListLength) {
      Position positions[kListLength];
      const auto count = static_cast<std::int32_t>(std::min<std::int64_t>(span.last - first + 1, kListLength));
      const auto x = static_cast<double>(first);
      for (std::int32_t k = 0; k < count; ++k) positions[k] = row.At(x + k);
      const double slack = row.Slack(x, x + count - 1);
      char* out = request.DestinationPixel(static_cast<std::ptrdiff_t>(first), std::ptrdiff_t{spans.firstRow()} + y);
      if (limit == nullptr) {
        sample(positions, count, slack, out);
        continue;
      }
      for (std::int32_t begin = 0; begin < count;) {
        const std::int32_t end = EndOfRun(*limit, positions, begin, count, slack);
        sample(positions + begin, end - begin, slack, out + begin * PixelBytes(request.depth));
        begin = end + 1;
      }
    }
    row.base += rowStep;
    row.scaleBase += d[2][1];
  }
}

}  // namespace

StatusCode WarpPerspectiveQuad(const void* src, RegionSize srcSize, std::int32_t srcStep, Rect srcRegion,
                               const double* srcQuad, void* dst, std::int32_t dstStep, Rect dstRegion,
                               const double* dstQuad, PixelDepthCode depth, std::int32_t interpolation) {
  const WarpRequest request = {src, srcSize, srcStep, srcRegion, dst, dstStep, dstRegion, depth, interpolation};
  QuadPair quads;
  if (const StatusCode status = request.CheckQuads(srcQuad, dstQuad, quads); status != StatusCode::Success) {
    return status;
  }
  const Projection inverse =
      Product(SquareToQuadrilateral(quads.source), Adjugate(SquareToQuadrilateral(quads.destination)));

  const RowSpans spans(Polygon(quads.destination), request.DestinationBox(), quads.clockwise);
  if (!spans) return StatusCode::NoDestinationOverlap;

  // The map takes the destination's convex quadrilateral to that of the source. With all corners of the latter in the
  // source region so are all positions, and none is tested; the sampler limits those that rounding puts outside of the
  // image. Otherwise those inside of the region, a little wider for the rounding of the division, are sampled: the two
  // ends of a run of positions tell of all where they keep their order (EndOfRun), else each is tested.
  const Box limit = Expanded(Corners(request.EffectiveRegion()), kPositionTolerance);
  WarpRows(request, inverse, spans, quads.sourceInside ? nullptr : &limit);
  return StatusCode::Success;
}

}  // namespace norvala
