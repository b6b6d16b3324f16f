#include "geometry/warp/smooth_edge.h"

#include <algorithm>
#include <cmath>

#include "frame/memory.h"
#include "geometry/warp/polygon.h"
#include "geometry/warp/sample_pixel.h"

namespace norvala {
namespace {

template <class T>
class EdgeBlender {
 public:
  EdgeBlender(void* dst, std::int32_t dstStep, const Box& region, bool clockwise)
      : dst_(static_cast<T*>(dst)), step_(dstStep), region_(region), clockwise_(clockwise) {}

  void BlendEdge(const Point& p, const Point& q) const {
    if (IsOnRegionSide(p, q)) return;
    // Going along the edge of a clockwise polygon, the inside lies to the right on the screen.
    if (std::fabs(q.x - p.x) > std::fabs(q.y - p.y)) {
      Walk<true>(p, q, (q.x > p.x) == clockwise_);
    } else {
      Walk<false>(p, q, (q.y < p.y) == clockwise_);
    }
  }

 private:
  bool IsOnRegionSide(const Point& p, const Point& q) const {
    return (p.x == q.x && (p.x == region_.left || p.x == region_.right)) ||
           (p.y == q.y && (p.y == region_.top || p.y == region_.bottom));
  }

  // `flat` edges are walked from column to column and blended vertically, steep ones the other way round.
  // `insideAfter` tells that the larger coordinates across the edge lie inside.
  template <bool flat>
  void Walk(const Point& p, const Point& q, bool insideAfter) const {
    constexpr auto kAlong = flat ? &Point::x : &Point::y;
    constexpr auto kAcross = flat ? &Point::y : &Point::x;
    const Point& from = p.*kAlong <= q.*kAlong ? p : q;
    const Point& to = p.*kAlong <= q.*kAlong ? q : p;
    const double low = flat ? region_.top : region_.left;
    const double high = flat ? region_.bottom : region_.right;
    const double slope = (to.*kAcross - from.*kAcross) / (to.*kAlong - from.*kAlong);
    const double end = std::floor(to.*kAlong);
    for (double along = std::ceil(from.*kAlong); along <= end; ++along) {
      const double crossing = (along - from.*kAlong) * slope + from.*kAcross;
      const double across = std::floor(crossing + 0.5);
      if (!(across - 1 >= low && across + 1 <= high)) continue;
      const double before = std::clamp(crossing + 0.5 - across, 0.0, 1.0);
      const double inside = insideAfter ? 1 - before : before;
      const auto a = static_cast<std::int32_t>(along);
      const auto b = static_cast<std::int32_t>(across);
      const std::int32_t inward = insideAfter ? 1 : -1;
      Blend(At<flat>(a, b), *At<flat>(a, b + inward), *At<flat>(a, b - inward), inside);
    }
  }

  template <bool flat>
  Unaligned<T>* At(std::int32_t along, std::int32_t across) const {
    const std::int32_t x = flat ? along : across;
    const std::int32_t y = flat ? across : along;
    return Row(Row(dst_, step_, y), sizeof(T), x);
  }

  static void Blend(Unaligned<T>* pixel, T inner, T outer, double inside) {
    const double sum = inside * static_cast<double>(inner) + (1 - inside) * static_cast<double>(outer);
    if constexpr (std::is_floating_point_v<T>) {
      *pixel = static_cast<T>(sum);
    } else {
      *pixel = RoundToPixel(sum);
    }
  }

  T* dst_;
  std::int32_t step_;
  Box region_;
  bool clockwise_;
};

template <class T>
void BlendEdges(const EdgeBlender<T>& blender, const Polygon& polygon) {
  for (int i = 0; i < polygon.count; ++i) {
    blender.BlendEdge(polygon.vertices[i], polygon.vertices[i + 1 < polygon.count ? i + 1 : 0]);
  }
}

}  // namespace

void SmoothEdge(void* dst, std::int32_t dstStep, PixelDepthCode depth, const Quadrilateral& quad, const Box& region,
                bool clockwise) {
  const Polygon polygon = ClipPolygon(Polygon(quad), region);
  if (polygon.count < 3) return;
  if (depth == PixelDepthCode::Unsigned8) {
    BlendEdges(EdgeBlender<BW8>(dst, dstStep, region, clockwise), polygon);
  } else {
    BlendEdges(EdgeBlender<FLOAT32>(dst, dstStep, region, clockwise), polygon);
  }
}

}  // namespace norvala
