// Geometric transforms.

#include "geometry/geometry.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

#include "support/operation.h"

namespace norvala_test {
namespace {

using namespace norvala;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

constexpr std::int32_t kNearest = 1;
constexpr std::int32_t kLinear = 2;
constexpr std::int32_t kCubic = 4;
constexpr std::int32_t kReduce = 8;
constexpr std::int32_t kEightPoint = 16;
constexpr std::int32_t kSmoothEdge = INT32_MIN;

struct Place {
  double x, y;
};
using Quad = std::array<Place, 4>;

Quad ReadQuad(const Value& address) {
  const View values(static_cast<const double*>(address.pointer));
  return {{{values(0), values(1)}, {values(2), values(3)}, {values(4), values(5)}, {values(6), values(7)}}};
}
const double* QuadArray(Trial& t, const Quad& q) {
  return t.Array<double>({q[0].x, q[0].y, q[1].x, q[1].y, q[2].x, q[2].y, q[3].x, q[3].y});
}
const std::int32_t* RectArray(Trial& t, const Rect& r) { return t.Array<std::int32_t>({r.x, r.y, r.width, r.height}); }

Change WriteInt(int argument, int index, std::int32_t value) {
  return [=](Arguments& a) { View(static_cast<std::int32_t*>(a[argument].pointer)).Set(index, 0, value); };
}
Change Both(const Change& first, const Change& second) {
  return [=](Arguments& a) {
    first(a);
    second(a);
  };
}
Change WriteDoubles(int argument, std::vector<double> values) {
  return [=](Arguments& a) {
    const View array(static_cast<double*>(a[argument].pointer));
    for (std::size_t i = 0; i < values.size(); ++i) array.Set(static_cast<int>(i), 0, values[i]);
  };
}

// Origin and size of a region.
Checks RegionChecks(int argument) {
  constexpr auto kSize = StatusCode::NonPositiveSize;
  Checks checks;
  for (const int i : {0, 1}) checks.push_back({kSize, {WriteInt(argument, i, -1), WriteInt(argument, i, INT32_MIN)}});
  for (const int i : {2, 3}) {
    checks.push_back({kSize, {WriteInt(argument, i, 0), WriteInt(argument, i, INT32_MIN)}, {WriteInt(argument, i, 1)}});
  }
  return checks;
}

Rect CutTo(const Rect& r, RegionSize size) {
  return {r.x, r.y, std::min(r.width, size.width - r.x), std::min(r.height, size.height - r.y)};
}
bool Contains(const Rect& r, Place p, double margin) {
  return p.x >= r.x - margin && p.x <= r.x + r.width - 1 + margin && p.y >= r.y - margin &&
         p.y <= r.y + r.height - 1 + margin;
}

// A region that begins inside an image and may reach `beyond` it.
Rect DrawRegion(Trial& t, RegionSize size, int beyond) {
  if (t.OneIn(3)) return {0, 0, size.width, size.height};
  const int x = t.OneIn(2) ? 0 : t.Int(0, size.width - 1);
  const int y = t.OneIn(2) ? 0 : t.Int(0, size.height - 1);
  return {x, y, t.Int(1, size.width - x + beyond), t.Int(1, size.height - y + beyond)};
}

// ---- Interpolation ----

std::int32_t FitKernel(std::int32_t kernel, RegionSize size) {
  if (size.width == 1 || size.height == 1) return kNearest;
  return kernel == kCubic && (size.width < 4 || size.height < 4) ? kLinear : kernel;
}

std::array<double, 4> CubicWeights(double v, int first) {
  const volatile float single = static_cast<float>(v - 1 - first);
  const double t = single;
  const double w0 = t == 1 || t == 2 ? 0 : -(t * t * t) / 6 + t * t / 2 - t / 3;
  return {w0, t * t * t / 2 - t * t - t / 2 + 1, -(t * t * t) / 2 + t * t / 2 + t, t * t * t / 6 - t / 6};
}

// The value at a position; for 8-bit pixels half a unit more, to be cut off.
template <class T>
double Interpolate(View<const T> src, RegionSize size, Place p, std::int32_t kernel) {
  constexpr bool kIsByte = sizeof(T) == 1;
  const auto pixel = [&](int x, int y) { return static_cast<double>(src(x, y)); };
  const auto x = static_cast<int>(p.x + 1e-7);
  const auto y = static_cast<int>(p.y + 1e-7);
  if (kernel == kLinear) {
    const int left = std::min(x, size.width - 2);
    const int above = std::min(y, size.height - 2);
    const double fx = left < x ? 1.0 : p.x - left;
    const double fy = above < y ? 1.0 : p.y - above;
    const double top = pixel(left, above) + (pixel(left + 1, above) - pixel(left, above)) * fx;
    const double bottom = pixel(left, above + 1) + (pixel(left + 1, above + 1) - pixel(left, above + 1)) * fx;
    return kIsByte ? top + 0.5 + fy * (bottom - top) : top + fy * (bottom - top);
  }
  const auto first = [](int i, int length) { return i >= length - 2 ? length - 4 : std::max(i - 1, 0); };
  const int left = first(x, size.width);
  const int above = first(y, size.height);
  const auto combine = [](const std::array<double, 4>& w, auto value) {
    return w[0] * value(0) + w[1] * value(1) + w[2] * value(2) + w[3] * value(3);
  };
  const auto across = CubicWeights(p.x, left);
  const double sum = combine(CubicWeights(p.y, above),
                             [&](int j) { return combine(across, [&](int i) { return pixel(left + i, above + j); }); });
  return kIsByte ? std::clamp(sum, 0.0, 255.0) + 0.5 : sum;
}

template <class T>
T Sample(View<const T> src, RegionSize size, Place p, std::int32_t kernel) {
  if (kernel == kNearest) return src(static_cast<int>(p.x + 0.5), static_cast<int>(p.y + 0.5));
  return static_cast<T>(Interpolate(src, size, p, kernel));
}

// ---- Quadrilaterals ----

double Cross(Place a, Place b) { return a.x * b.y - b.x * a.y; }
Place Minus(Place a, Place b) { return {a.x - b.x, a.y - b.y}; }

bool IsConvex(const Quad& q) {
  int turns = 0;
  for (std::size_t k = 0; k < 4; ++k) {
    const double turn = Cross(Minus(q[k], q[(k + 3) % 4]), Minus(q[(k + 1) % 4], q[k]));
    if (!(turn != 0)) return false;
    turns += turn > 0 ? 1 : -1;
  }
  return std::abs(turns) == 4;
}

// The vertex that makes a parallelogram of the first three.
Place FourthOf(const Quad& q) { return {q[0].x + q[2].x - q[1].x, q[0].y + q[2].y - q[1].y}; }

// How far a point lies inside a convex quadrilateral of either order; below 0 outside.
double Depth(const Quad& q, Place p) {
  double least = kInfinity;
  double most = -kInfinity;
  for (std::size_t k = 0; k < 4; ++k) {
    const Place edge = Minus(q[(k + 1) % 4], q[k]);
    const double distance = Cross(edge, Minus(p, q[k])) / std::hypot(edge.x, edge.y);
    least = std::min(least, distance);
    most = std::max(most, distance);
  }
  return std::max(least, -most);
}

// ---- Warps ----

// The arguments of a warp by name. A quadrilateral warp has quadrilaterals where an affine one has coefficients; behind
// the export's arguments come the size of the destination image, the depth code, and for quadrilaterals whether all
// arithmetic is exact.
template <class T>
struct WarpCall {
  WarpCall(const Arguments& a, bool quads)
      : size{static_cast<int>(a[1].integer), static_cast<int>(a[2].integer)},
        src(static_cast<const T*>(a[0].pointer), static_cast<std::ptrdiff_t>(a[3].integer)),
        dst(static_cast<T*>(a[quads ? 6 : 5].pointer), static_cast<std::ptrdiff_t>(a[quads ? 7 : 6].integer)),
        from(ReadRect(a[4])),
        to(ReadRect(a[quads ? 8 : 7])),
        kernel(FitKernel(static_cast<std::int32_t>(a[quads ? 10 : 9].integer) & INT32_MAX, size)),
        smooth(a[quads ? 10 : 9].integer < 0),
        dstSize{static_cast<int>(a[quads ? 11 : 10].integer), static_cast<int>(a[quads ? 12 : 11].integer)},
        rowsOverlap(a[quads ? 7 : 6].integer < dstSize.width * static_cast<int>(sizeof(T))) {}
  static Rect ReadRect(const Value& address) {
    const View r(static_cast<const std::int32_t*>(address.pointer));
    return {r(0), r(1), r(2), r(3)};
  }

  RegionSize size;
  View<const T> src;
  View<T> dst;
  Rect from, to;
  std::int32_t kernel;
  bool smooth;
  RegionSize dstSize;
  bool rowsOverlap;  // those of the destination
};

// What the library makes of a call where the rules leave something open: the status and all pixels of the destination
// image, which is left as it was. Writing outside the region gives a status that no warp has.
template <class T>
struct Observed {
  Observed(const WarpCall<T>& call, const Export& warp, Model primitive, const Arguments& a)
      : width(call.dstSize.width) {
    std::vector<T> before;
    ForEachPixel(call.dstSize, [&](int x, int y) { before.push_back(call.dst(x, y)); });
    status = primitive != nullptr                ? primitive(a)
             : warp.invoke(warp.address, a) == 0 ? StatusCode::Success
                                                 : StatusCode::NoDestinationOverlap;
    ForEachPixel(call.dstSize, [&](int x, int y) {
      pixels.push_back(call.dst(x, y));
      const T old = before[pixels.size() - 1];
      const bool isInside = call.rowsOverlap || Contains(call.to, {double(x), double(y)}, 0);
      if (!isInside && std::memcmp(&old, &pixels.back(), sizeof old) != 0) status = StatusCode::UnsupportedChannels;
    });
    pixels.swap(before);
    Accept(call);
    pixels.swap(before);
  }
  T operator()(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
  // All that the library wrote.
  StatusCode Accept(const WarpCall<T>& call) const {
    ForEachPixel(call.dstSize, [&](int x, int y) { call.dst.Set(x, y, (*this)(x, y)); });
    return status;
  }

  int width;
  StatusCode status;
  std::vector<T> pixels;
};

// The rows that a convex quadrilateral has in common with a rectangle, and the columns to be written in each.
struct Spans {
  int firstRow = 0;
  std::vector<std::array<int, 2>> columns;
  bool doubtful = false;  // the rectangle cuts it, and the cut's rounding decides about a pixel or the status
};
Spans SpansOf(const Quad& q, const Rect& r) {
  Spans spans;
  const auto [top, bottom] = std::minmax({q[0].y, q[1].y, q[2].y, q[3].y});
  const auto [least, most] = std::minmax({q[0].x, q[1].x, q[2].x, q[3].x});
  const double last = r.x + r.width - 1.0;
  const auto isNearInteger = [](double v) { return std::fabs(v - std::nearbyint(v)) < 1e-9; };
  bool isCut = false;
  bool isNear = false;
  bool isWritten = false;
  for (const Place& p : q) {
    isCut |= !Contains(r, p, 0);
    isNear |= isNearInteger(p.y);
  }
  if (!isCut && std::ceil(least) > std::floor(most)) return spans;
  for (int y = r.y; y < r.y + r.height; ++y) {
    double left = kInfinity;
    double right = -kInfinity;
    for (std::size_t k = 0; k < 4; ++k) {
      Place from = q[k];
      Place to = q[(k + 1) % 4];
      if (from.y > to.y) std::swap(from, to);
      if (from.y > y || to.y < y || (to.y == y && y != bottom) || from.y == to.y) continue;
      const double x = (y - from.y) * ((to.x - from.x) / (to.y - from.y)) + from.x;
      left = std::min(left, x);
      right = std::max(right, x);
    }
    if (left > last || right < r.x || y < top) continue;
    for (const double end : {left, right}) isNear |= end > r.x - 0.5 && end < last + 0.5 && isNearInteger(end);
    double first = std::ceil(left);
    if (left + 1 - first < 1e-14) first -= 1;
    double end = std::floor(right);
    if (1 - (right - end) < 1e-14) end += 1;
    if (spans.columns.empty()) spans.firstRow = y;
    spans.columns.push_back({static_cast<int>(std::max<double>(first, r.x)), static_cast<int>(std::min(end, last))});
    isWritten |= spans.columns.back()[0] <= spans.columns.back()[1];
  }
  spans.doubtful = isCut && (isNear || !isWritten);
  return spans;
}

bool IsExtreme(double v) { return !(std::fabs(v) < 1e6) || (v != 0 && std::fabs(v) < 1e-6); }

template <class T, auto call, const auto& order>
StatusCode AffineRule(const Arguments& a) {
  const WarpCall<T> w(a, false);
  const View c(static_cast<const double*>(a[8].pointer));
  const double p = c(0) * c(4);
  const double q = c(1) * c(3);
  if (!((std::fabs(p) > 1e-200 ? std::fabs((p - q) / p) : std::fabs(q)) > 1e-12)) return StatusCode::BadCoefficients;
  if (w.from.x >= w.size.width || w.from.y >= w.size.height) return StatusCode::NoSourceOverlap;
  const Rect from = CutTo(w.from, w.size);
  if (from.width < 2 || from.height < 2) return StatusCode::RegionTooSmall;
  const Observed<T> observed(w, Call<call>(), order(), a);
  bool isExtreme = w.rowsOverlap;
  for (int i = 0; i < 6; ++i) isExtreme |= IsExtreme(c(i));
  if (isExtreme) return observed.Accept(w);

  const double right = from.x + from.width - 1.0;
  const double bottom = from.y + from.height - 1.0;
  const auto map = [&](double x, double y) { return Place{c(0) * x + c(1) * y + c(2), c(3) * x + c(4) * y + c(5)}; };
  const double left = from.x;
  const double top = from.y;
  const Quad quad = {map(left, top), map(right, top), map(right, bottom), map(left, bottom)};
  const Place along = Minus(quad[1], quad[0]);
  const Place down = Minus(quad[2], quad[1]);
  const double area = Cross(along, down);
  const Spans spans = SpansOf(quad, w.to);
  if (spans.doubtful || std::fabs(area) < 1e-3 * (right - left) * (bottom - top)) {
    // Whatever it writes, these coefficients are not to be refused.
    const StatusCode status = observed.Accept(w);
    return static_cast<int>(status) < 0 ? StatusCode::Success : status;
  }
  if (spans.columns.empty()) return StatusCode::NoDestinationOverlap;

  const double sx = (right - left) / area;
  const double sy = (bottom - top) / area;
  const double d[6] = {down.y * sx,   -down.x * sx, left - -down.x * sx * quad[0].y - down.y * sx * quad[0].x,
                       -along.y * sy, along.x * sy, top - -along.y * sy * quad[0].x - along.x * sy * quad[0].y};
  Place row = {d[1] * spans.firstRow + d[2], d[4] * spans.firstRow + d[5]};
  for (std::size_t i = 0; i < spans.columns.size(); ++i) {
    const auto [first, last] = spans.columns[i];
    const int y = spans.firstRow + static_cast<int>(i);
    Place at = {d[0] * first + row.x, d[3] * first + row.y};
    for (int x = first; x <= last; ++x) {
      w.dst.Set(x, y, Sample(w.src, w.size, at, w.kernel));
      at = {at.x + d[0], at.y + d[3]};
    }
    row = {row.x + d[1], row.y + d[4]};
  }
  // How edges are smoothed is tested apart; it does not reach farther than this.
  if (w.smooth) {
    ForEachPixel(w.dstSize, [&](int x, int y) {
      if (std::fabs(Depth(quad, {double(x), double(y)})) < 1.5) w.dst.Set(x, y, observed(x, y));
    });
  }
  return StatusCode::Success;
}

// Mostly a rotation, scaling and shear that brings some point of one region to some point of the other; coefficients in
// units of a grain put edges and positions on pixels or a rounding error beside them. Else an exact map, a nearly
// singular or an enormous one.
std::array<double, 6> DrawAffine(Trial& t, const Rect& from, const Rect& to) {
  if (t.OneIn(4)) {
    const double right = from.x + from.width - 1.0;
    const double x = t.Int(-3, 3);
    return t.OneOf<std::array<double, 6>>({{1, 0, 0, 0, 1, 0},
                                           {1, 0, x, 0, 1, 1},
                                           {2, 0, 0, 0, 2, 0},
                                           {0, 1, 0, -1, 0, right},
                                           {0, 1, 0, 1, 0, 0},
                                           {1, 0, x - right, 0, 1, x},
                                           {1, 0.5, x, 0, 1, 0.25},
                                           {1, 1, x, 1, 1 + 1e-9, x},
                                           {1, 1, 0, 1, 1 + 1.2e-12, 0}});
  }
  std::array<double, 6> m;
  if (t.OneIn(12)) {
    for (double& v : m) {
      v = t.OneOf({0.0, 1.0,   -1.0,  1e-7,  -1e-7, 1e-12, 1e7, 1e15,    1e-300,    5e-324,
                   0.5, -1e18, 1e150, 1e200, 1e300, 3.0,   2e9, -1e-160, kInfinity, kNaN});
    }
    return m;
  }
  const double grain = t.OneOf({0.0, 0.0, 0.25, 1.0 / 3});
  const auto snap = [&](double v) { return grain > 0 ? std::round(v / grain) * grain : v; };
  const double angle = t.Real(0, 2 * std::numbers::pi);
  const double scale = std::exp(t.Real(-1.5, 1.5));
  const double c = scale * std::cos(angle);
  const double s = scale * std::sin(angle);
  const double shear = t.Real(-0.5, 0.5);
  const double flip = t.OneOf({1, -1});
  m = {snap(c), snap(s + shear * c), 0, snap(-s * flip), snap((c - shear * s) * flip), 0};
  const Place p = {from.x + t.Real(0, from.width), from.y + t.Real(0, from.height)};
  m[2] = snap(to.x + t.Real(0, to.width) - m[0] * p.x - m[1] * p.y);
  m[5] = snap(to.y + t.Real(0, to.height) - m[3] * p.x - m[4] * p.y);
  return m;
}

RegionSize DrawImageSize(Trial& t) {
  const auto side = [&](int most) { return t.OneIn(8) ? t.Int(1, 4) : t.Int(2, most); };
  return {t.OneIn(8) ? t.Int(257, 600) : side(90), side(50)};
}

template <class T>
Arguments DrawWarpAffine(Trial& t) {
  const std::int32_t kernel = t.OneOf({kNearest, kLinear, kCubic});
  const RegionSize size = DrawImageSize(t);
  const RegionSize dstSize = DrawImageSize(t);
  Image& src = t.New<T>(size, {.steps = Steps::Positive, .bits = kernel == kNearest});
  if (t.OneIn(2)) src.Fill<T>([&] { return static_cast<T>(t.OneIn(2) ? 0 : t.Int(0, 255)); });
  const Image& dst = t.New<T>(dstSize, {.steps = Steps::Row, .bits = kernel == kNearest});
  const Rect from = DrawRegion(t, size, 5);
  const Rect to = DrawRegion(t, dstSize, 0);
  const auto m = DrawAffine(t, CutTo(from, size), to);
  return {src.data(),
          size,
          src.step(),
          RectArray(t, from),
          dst,
          RectArray(t, to),
          t.Array<double>({m[0], m[1], m[2], m[3], m[4], m[5]}),
          kernel | (t.OneIn(4) ? kSmoothEdge : 0),
          dstSize,
          static_cast<int>(sizeof(T) == 1 ? PixelDepthCode::Unsigned8 : PixelDepthCode::Float32)};
}

Checks WarpChecks(bool quads) {
  const int dst = quads ? 6 : 5;
  const Checks pointersAndSizes = {NotNull(0), NotNull(dst), Size(1), Size(2)};
  return pointersAndSizes + RegionChecks(4) + RegionChecks(dst + 2) +
         Checks{Step(3), Step(dst + 1),
                NoneOf(quads ? 10 : 9, {0, 3, 5, 6, 8, INT32_MIN, INT32_MIN + 3}, {1, INT32_MIN + 4},
                       StatusCode::UnknownInterpolation)};
}
// Arguments that pass all checks before a check: the drawn ones may not.
const Change kSoundCoefficients = WriteDoubles(8, {1, 0, 0, 0, 1, 0});
const std::vector<double> kSquare = {0, 0, 8, 0, 8, 8, 0, 8};
const Change kSoundQuads = Both(WriteDoubles(5, kSquare), WriteDoubles(9, kSquare));

// The region of the source must begin inside the image.
Check StartsInside(const Change& mend) {
  const auto moveTo = [=](int index, int behind) {
    return Both(mend, [=](Arguments& a) { WriteInt(4, index, static_cast<int>(a[1 + index].integer) + behind)(a); });
  };
  return {StatusCode::NoSourceOverlap, {moveTo(0, 0), moveTo(1, 0), moveTo(0, 7)}, {moveTo(0, -1), moveTo(1, -1)}};
}

template <class T, auto call>
Operation WarpAffineOf() {
  static constexpr auto kPrimitive = [] { return Primitive<kWarpAffine, 0, 1, 2, 3, 4, 5, 6, 7, 12, 8, 9>(); };
  const auto narrow = [](int index) {
    const Change atOrigin = Both(WriteInt(4, 0, 0), WriteInt(4, 1, 0));
    return Both(Both(kSoundCoefficients, atOrigin), WriteInt(4, index, 1));
  };
  Checks checks = WarpChecks(false);
  // One test of the coefficients is relative to c00 * c11, the other, where that is tiny, absolute.
  checks.push_back({StatusCode::BadCoefficients,
                    {WriteDoubles(8, {1, 2, 0, 2, 4, 0}), WriteDoubles(8, {1, 1, 0, 1, 1 + 0.8e-12, 0}),
                     WriteDoubles(8, {0, 1e-7, 0, 1e-7, 0, 0}), WriteDoubles(8, {kNaN, 0, 0, 0, 1, 0})},
                    {WriteDoubles(8, {1, 1, 0, 1, 1 + 1.2e-12, 0}), WriteDoubles(8, {0, 1, 0, 1, 0, 0}),
                     WriteDoubles(8, {1e-7, 0, 0, 0, 1e-7, 0})}});
  checks.push_back(StartsInside(kSoundCoefficients));
  checks.push_back({StatusCode::RegionTooSmall, {narrow(2), narrow(3)}});
  return {Call<call>(), kPrimitive(), DrawWarpAffine<T>, AffineRule<T, call, kPrimitive>, checks};
}

// ---- Quadrilateral warps ----

// A parallelogram whose sides run along the axes or are sheared by powers of two, on quarter pixels: all that one
// computes with it is exact.
Quad DrawExactQuad(Trial& t, RegionSize size) {
  const auto side = [&](int length) {
    return std::exp2(t.Int(1, std::max(1, static_cast<int>(std::log2(std::max(length - 1, 2))))));
  };
  Place along = {side(size.width), 0};
  Place down = {0, side(size.height)};
  (t.OneIn(2) ? along.y : down.x) = t.OneIn(2) ? 0 : down.y * t.OneOf({0.5, -0.25, 1.0});
  if (along.y != 0) down.x = 0;
  Place first = {t.Int(-8, 4 * size.width) * 0.25, t.Int(-8, 4 * size.height) * 0.25};
  if (t.OneIn(2)) first = {double(t.Int(0, 3)), double(t.Int(0, 3))};
  if (size.width == 1) first.x = t.OneOf({0.0, -0.5, -1.0});
  if (size.height == 1) first.y = t.OneOf({0.0, -0.5, -1.0});
  if (t.OneIn(3)) {
    first.x += along.x;
    along.x = -along.x;
  }
  const auto plus = [](Place a, Place b) { return Place{a.x + b.x, a.y + b.y}; };
  return {first, plus(first, along), plus(first, plus(along, down)), plus(first, down)};
}

// A convex quadrilateral with vertices near the corners of a rectangle, in either order.
Quad DrawQuad(Trial& t, const Rect& r, double deviation) {
  deviation = std::min(deviation, 0.2 * (std::min(r.width, r.height) - 1));
  const auto near = [&](double v) { return v + t.Real(-deviation, deviation); };
  const double right = r.x + r.width - 1.0;
  const double bottom = r.y + r.height - 1.0;
  Quad quad = {
      {{near(r.x), near(r.y)}, {near(right), near(r.y)}, {near(right), near(bottom)}, {near(r.x), near(bottom)}}};
  if (t.OneIn(2)) std::swap(quad[1], quad[3]);
  return quad;
}

template <bool affine>
Arguments DrawWarpQuad(Trial& t) {
  const std::int32_t kernel = t.OneOf({kNearest, kLinear, kCubic});
  const bool exact = t.OneIn(2);
  const auto side = [&](int most) { return exact && t.OneIn(4) ? t.OneOf({1, 1, 3}) : t.Int(10, most); };
  RegionSize size = {side(140), side(60)};
  const RegionSize dstSize = {t.OneIn(4) ? t.Int(257, 600) : side(140), side(60)};
  const Image& src = t.New<BW8>(size, {.steps = Steps::Positive});
  const Image& dst = t.New<BW8>(dstSize, {.steps = Steps::Row});
  const Rect from = t.OneIn(2) ? Rect{0, 0, size.width, size.height} : DrawRegion(t, size, 5);
  const Rect to = DrawRegion(t, dstSize, 0);
  Quad source =
      exact ? DrawExactQuad(t, size) : DrawQuad(t, {2, 2, size.width - 4, size.height - 4}, t.OneOf({1.5, 4.0}));
  Quad target =
      exact ? DrawExactQuad(t, dstSize) : DrawQuad(t, t.OneIn(2) ? to : Rect{0, 0, dstSize.width, dstSize.height}, 3);
  if (affine && !exact) {
    for (Quad* q : {&source, &target}) (*q)[3] = FourthOf(*q);
  }
  // The fourth vertex off by less or more than its tolerance, which is relative unless it lies on an axis.
  if (affine && t.OneIn(2)) {
    double& vertex = t.OneIn(2) ? target[3].x : target[3].y;
    if (exact && t.OneIn(2)) {
      const double left = target[3].x;
      const double sign = target[2].x < left ? -1 : 1;
      for (Place& p : target) p.x = sign * (p.x - left);
    }
    const double off = t.OneOf({0.0, 0.5e-12, 2e-12, 2e-12, 0.4});
    vertex = std::fabs(vertex) > 1e-9 ? vertex * (1 + (off < 0.1 ? off : off / std::fabs(vertex))) : vertex + off;
  }
  if (t.OneIn(12)) {
    for (Quad* q : {&source, &target}) {
      (*q)[static_cast<std::size_t>(t.Int(0, 3))].x =
          t.OneOf({1e-300, 1e-12, 1e7, -1e7, 3e9, -1e18, 1e155, 1e308, kInfinity, kNaN});
    }
  }
  return {src.data(),
          size,
          src.step(),
          RectArray(t, from),
          QuadArray(t, source),
          dst,
          RectArray(t, to),
          QuadArray(t, target),
          kernel | (t.OneIn(4) ? kSmoothEdge : 0),
          dstSize,
          static_cast<int>(PixelDepthCode::Unsigned8),
          static_cast<int>(exact)};
}

// The map from the destination to the source: by three vertices, or the projection by all four from the linear
// equations for its eight unknowns.
class WayBack {
 public:
  WayBack(const Quad& from, const Quad& to, bool affine) : from_(from), to_(to), affine_(affine) {
    if (!affine) Solve();
  }

  Place operator()(Place p) const {
    if (affine_) {
      const Place along = Minus(from_[1], from_[0]);
      const Place down = Minus(from_[2], from_[1]);
      const double area = Cross(along, down);
      const double u = Cross(Minus(p, from_[0]), down) / area;
      const double v = Cross(along, Minus(p, from_[0])) / area;
      const Place toAlong = Minus(to_[1], to_[0]);
      const Place toDown = Minus(to_[2], to_[1]);
      return {to_[0].x + u * toAlong.x + v * toDown.x, to_[0].y + u * toAlong.y + v * toDown.y};
    }
    const long double w = m_[6] * p.x + m_[7] * p.y + 1;
    return {static_cast<double>((m_[0] * p.x + m_[1] * p.y + m_[2]) / w),
            static_cast<double>((m_[3] * p.x + m_[4] * p.y + m_[5]) / w)};
  }

 private:
  void Solve() {
    std::array<std::array<long double, 9>, 8> rows{};
    for (std::size_t i = 0; i < 4; ++i) {
      const long double x = from_[i].x;
      const long double y = from_[i].y;
      const long double u = to_[i].x;
      const long double v = to_[i].y;
      rows[2 * i] = {x, y, 1, 0, 0, 0, -u * x, -u * y, u};
      rows[2 * i + 1] = {0, 0, 0, x, y, 1, -v * x, -v * y, v};
    }
    for (std::size_t c = 0; c < 8; ++c) {
      const auto pivot =
          std::max_element(rows.begin() + static_cast<std::ptrdiff_t>(c), rows.end(),
                           [&](const auto& a, const auto& b) { return std::fabs(a[c]) < std::fabs(b[c]); });
      std::swap(rows[c], *pivot);
      for (std::size_t r = 0; r < 8; ++r) {
        const long double factor = r == c ? 0 : rows[r][c] / rows[c][c];
        for (std::size_t k = c; k < 9; ++k) rows[r][k] -= factor * rows[c][k];
      }
    }
    for (std::size_t i = 0; i < 8; ++i) m_[i] = rows[i][8] / rows[i][i];
  }

  Quad from_, to_;
  bool affine_;
  std::array<long double, 8> m_{};
};

// Whether the fourth vertex fits the affine map of the other three.
bool FourthFits(const Quad& source, const Quad& target) {
  const Place mapped = WayBack(source, target, true)(source[3]);
  const auto fits = [](double value, double given) {
    return std::fabs(value) > 1e-200 ? !(std::fabs((value - given) / value) > 1e-12) : !(std::fabs(given) > 1e-12);
  };
  return fits(mapped.x, target[3].x) && fits(mapped.y, target[3].y);
}

template <bool affine, auto call, const auto& order>
StatusCode QuadRule(const Arguments& a) {
  const WarpCall<BW8> w(a, true);
  const Quad source = ReadQuad(a[5]);
  const Quad target = ReadQuad(a[9]);
  if (!IsConvex(source) || !IsConvex(target)) return StatusCode::BadQuadrilateral;
  if (w.from.x >= w.size.width || w.from.y >= w.size.height) return StatusCode::NoSourceOverlap;
  const Observed<BW8> observed(w, Call<call>(), order(), a);
  if (w.rowsOverlap) return observed.Accept(w);
  for (const Quad& quad : {source, target}) {
    for (const Place& p : quad) {
      if (!(std::fabs(p.x) < 1e6) || !(std::fabs(p.y) < 1e6)) return observed.Accept(w);
    }
  }
  const Rect from = CutTo(w.from, w.size);
  bool isInside = true;
  for (const Place& p : source) isInside &= Contains(from, p, 0);
  const bool fits = !affine || FourthFits(source, target);
  const bool isExact = a[14].integer != 0 && Depth(target, target[3]) == 0 &&
                       WayBack(source, target, true)(source[3]).x == target[3].x &&
                       WayBack(source, target, true)(source[3]).y == target[3].y;
  const double margin = isExact ? 0 : 1e-7;
  const WayBack back(target, source, affine || isExact);
  // A source that was cut bounds what is written by what the first three vertices map it to.
  Quad bound = target;
  if (affine && !isInside) bound[3] = FourthOf(target);
  bool isWritten = false;
  ForEachPixel(w.dstSize, [&](int x, int y) {
    const Place p = {double(x), double(y)};
    if (!Contains(w.to, p, 0)) return;
    const double depth = Depth(bound, p);
    const Place at = back(p);
    const bool isSmoothed = affine && w.smooth && isInside && std::fabs(depth) < 1.5;
    if (!isSmoothed && (depth < -margin || (!isInside && !Contains(from, at, margin)))) return;
    const bool isInImage = Contains({0, 0, w.size.width, w.size.height}, at, 1e-7);  // else a fourth vertex is far off
    const bool isSure = isInImage && depth >= margin && (isInside || Contains(from, at, -margin));
    if (!isSure || isSmoothed) {
      w.dst.Set(x, y, observed(x, y));
      return;
    }
    isWritten = true;
    const BW8 expected = Sample(w.src, w.size, at, w.kernel);
    const auto isNearInteger = [](double v, double distance) { return std::fabs(v - std::nearbyint(v)) < distance; };
    const bool isDoubtful =
        !isExact && (w.kernel == kNearest ? isNearInteger(at.x + 0.5, 1e-6) || isNearInteger(at.y + 0.5, 1e-6)
                                          : isNearInteger(Interpolate(w.src, w.size, at, w.kernel), 2e-3) &&
                                                std::abs(observed(x, y) - expected) <= 1);
    w.dst.Set(x, y, isDoubtful ? observed(x, y) : expected);
  });
  // Near an axis rounding decides whether the fourth vertex fits, unless all is exact.
  const bool isNearAxis = std::fabs(target[3].x) < 1 || std::fabs(target[3].y) < 1;
  if ((!isWritten || (affine && a[14].integer == 0 && isNearAxis)) && static_cast<int>(observed.status) >= 0) {
    return observed.status;
  }
  return fits ? StatusCode::Success : StatusCode::QuadNotAffine;
}

template <bool affine, auto call, const auto& table>
Operation WarpQuadOf() {
  static constexpr auto kPrimitive = [] { return Primitive<table, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 13, 10>(); };
  Checks checks = WarpChecks(true);
  for (const int quad : {5, 9}) {
    const auto write = [=](std::vector<double> values) { return Both(kSoundQuads, WriteDoubles(quad, values)); };
    checks.push_back({StatusCode::BadQuadrilateral,
                      {write({0, 0, 7, 5, 7, 0, 0, 5}), write({0, 0, 4, 0, 1, 1, 0, 4}),
                       write({0, 0, 4, 0, 8, 0, 0, 4}), write({0, 0, 4, 0, 4, 4, 0, kNaN})}});
  }
  checks.push_back(StartsInside(kSoundQuads));
  return {Call<call>(), kPrimitive(), DrawWarpQuad<affine>, QuadRule<affine, call, kPrimitive>, checks};
}

// ---- Bounds and rotation ----

Place Map(const std::array<double, 6>& c, double x, double y) {
  return {c[0] * x + c[1] * y + c[2], c[3] * x + c[4] * y + c[5]};
}
Quad MapCorners(const std::array<double, 6>& c, const Rect& r) {
  const double right = static_cast<double>(r.x) + r.width - 1;
  const double bottom = static_cast<double>(r.y) + r.height - 1;
  return {Map(c, r.x, r.y), Map(c, right, r.y), Map(c, right, bottom), Map(c, r.x, bottom)};
}
void WriteBound(const Quad& q, double* bound) {
  const View out(bound);
  out.Set(0, 0, std::min({q[0].x, q[1].x, q[2].x, q[3].x}));
  out.Set(1, 0, std::min({q[0].y, q[1].y, q[2].y, q[3].y}));
  out.Set(2, 0, std::max({q[0].x, q[1].x, q[2].x, q[3].x}));
  out.Set(3, 0, std::max({q[0].y, q[1].y, q[2].y, q[3].y}));
}
Rect DrawAnyRegion(Trial& t) {
  const auto size = [&] { return t.OneIn(8) ? t.OneOf({1, INT32_MAX}) : t.Int(1, 500); };
  return {t.OneIn(8) ? INT32_MAX : t.Int(0, 50), t.Int(0, 50), size(), size()};
}

Arguments DrawAffineBound(Trial& t) {
  const auto m = t.OneIn(6) ? std::array<double, 6>{} : DrawAffine(t, {0, 0, 20, 20}, {0, 0, 20, 20});
  const auto* const region = RectArray(t, DrawAnyRegion(t));
  auto* const bound = t.Result<double>(4);
  std::array<double, 6> moderate;
  std::transform(m.begin(), m.end(), moderate.begin(), [](double v) { return IsExtreme(v) ? 0 : v; });
  return {region, bound,
          t.Array<double>({moderate[0], moderate[1], moderate[2], moderate[3], moderate[4], moderate[5]})};
}
StatusCode AffineBound(Rect region, double* bound, const double* coefficients) {
  const View c(coefficients);
  const Quad quad = MapCorners({c(0), c(1), c(2), c(3), c(4), c(5)}, region);
  WriteBound(quad, bound);
  return IsConvex(quad) ? StatusCode::Success : StatusCode::BadCoefficients;
}

double DrawAngle(Trial& t) {
  const double angle = t.OneIn(2) ? 90.0 * t.Int(-9, 9) : t.OneIn(16) ? 90 + 360.0 * INT32_MAX : t.Real(-2000, 2000);
  t.tolerance = std::fmod(angle, 90) == 0 ? 0 : 1e-12;
  return angle;
}
double Reduce(double angle) {
  const double reduced = angle - std::trunc(angle / 360) * 360;
  return reduced < 0 ? reduced + 360 : reduced;
}
Place Direction(double reduced) {
  if (reduced == 90) return {0, 1};
  if (reduced == 180) return {-1, 0};
  if (reduced == 270) return {0, -1};
  const double radians = reduced / 180 * 3.141592653589793;
  return {std::cos(radians), std::sin(radians)};
}

Arguments DrawShift(Trial& t) {
  const double x = t.Int(-40, 2000) * 0.25;
  const double angle = DrawAngle(t);
  auto* const xShift = t.Result<double>();
  return {x, t.Int(-40, 2000) * 0.25, angle, xShift, t.Result<double>()};
}
void RotateShift(double x, double y, double angle, double* xShift, double* yShift) {
  const double a = Reduce(angle);
  const auto [c, s] = Direction(a);
  Place shift = {x - x * c - y * s, y - y * c + x * s};
  if (a == 0) shift = {0, 0};
  if (a == 90) shift = {x - y, x + y};
  if (a == 180) shift = {2 * x, 2 * y};
  if (a == 270) shift = {x + y, y - x};
  View(xShift).Set(0, 0, shift.x);
  View(yShift).Set(0, 0, shift.y);
}

template <int numbers>
Arguments DrawRotation(Trial& t) {
  const double angle = DrawAngle(t);
  const auto* const region = RectArray(t, DrawAnyRegion(t));
  auto* const result = t.Result<double>(numbers);
  return {region, result, angle, t.Int(-400, 400) * 0.25, t.Int(-400, 400) * 0.25};
}
Quad Rotated(Rect region, double angle, double xShift, double yShift) {
  const auto [c, s] = Direction(Reduce(angle));
  return MapCorners({c, s, xShift, -s, c, yShift}, region);
}
void RotateQuad(Rect region, double* quad, double angle, double xShift, double yShift) {
  const Quad q = Rotated(region, angle, xShift, yShift);
  for (int i = 0; i < 8; ++i) {
    const Place& p = q[static_cast<std::size_t>(i / 2)];
    View(quad).Set(i, 0, i % 2 == 0 ? p.x : p.y);
  }
}
void RotateBound(Rect region, double* bound, double angle, double xShift, double yShift) {
  WriteBound(Rotated(region, angle, xShift, yShift), bound);
}

// ---- Resize ----

double Kernel(std::int32_t interpolation, double x) {
  const auto sinc = [](double v) { return v == 0 ? 1.0 : std::sin(std::numbers::pi * v) / (std::numbers::pi * v); };
  const double a = std::fabs(x);
  switch (interpolation) {
    case kLinear:
      return std::max(0.0, 1 - a);
    case kCubic:
      return a < 1 ? (1 - a * a) * (2 - a) / 2 : a < 2 ? (1 - a) * (2 - a) * (3 - a) / 6 : 0.0;
    default:
      return a < 4 ? sinc(x) * sinc(x / 4) : 0.0;
  }
}

// The weight of every source pixel in one direction for destination pixel `d`, from the definitions. What rounding
// leaves of a weight does not count.
std::vector<double> Weights(std::int32_t interpolation, int length, double factor, int d) {
  std::vector<double> weights(static_cast<std::size_t>(length));
  const auto weight = [&](int i) -> double& { return weights[static_cast<std::size_t>(std::clamp(i, 0, length - 1))]; };
  const double position = (d + 0.5) / factor - 0.5;
  if (interpolation == kNearest) {
    weight(static_cast<int>(position + 0.5)) = 1;
  } else if (interpolation == kReduce) {
    for (int i = 0; i < length; ++i) {
      weight(i) = std::max(0.0, std::min(i + 1.0, (d + 1) / factor) - std::max(1.0 * i, d / factor));
    }
  } else {
    const auto centre = static_cast<int>(std::floor(position));
    for (int i = centre - 3; i <= centre + 4; ++i) weight(i) += Kernel(interpolation, position - i);
  }
  double sum = 0;
  for (const double w : weights) sum += w;
  for (double& w : weights) w = std::fabs(w / sum) > 1e-9 ? w / sum : 0;
  return weights;
}

// Pixels to be written, 0 for none.
int Extent(int length, double factor, int dstLength) {
  const double scaled = length * factor + 1e-7;
  if (scaled >= dstLength) return dstLength;
  return scaled >= 1 ? static_cast<int>(scaled) : scaled < 0.5 ? 0 : 1;
}

// By halves Linear and Reduce are the mean of 2 x 2 pixels: in single precision, rows first, unless that leaves its
// range.
bool IsHalving(const Rect& r, double xFactor, double yFactor, std::int32_t interpolation) {
  return xFactor == 0.5 && yFactor == 0.5 && r.width >= 2 && r.height >= 2 &&
         (interpolation == kLinear || interpolation == kReduce);
}
FLOAT32 MeanOfFour(View<const FLOAT32> src, int x, int y) {
  const volatile FLOAT32 left = src(x, y) + src(x, y + 1);
  const volatile FLOAT32 right = src(x + 1, y) + src(x + 1, y + 1);
  const FLOAT32 sum = left + right;
  if (std::isfinite(sum)) return sum * 0.25F;
  const auto pixel = [&](int i, int j) { return static_cast<double>(src(x + i, y + j)); };
  return static_cast<FLOAT32>(((pixel(0, 0) + pixel(0, 1)) + (pixel(1, 0) + pixel(1, 1))) * 0.25);
}

StatusCode Resize(const FLOAT32* src, RegionSize srcSize, std::int32_t srcStep, Rect region, FLOAT32* dst,
                  std::int32_t dstStep, RegionSize dstSize, double xFactor, double yFactor,
                  std::int32_t interpolation) {
  const View from(src, srcStep);
  const View to(dst, dstStep);
  if (region.x >= srcSize.width || region.y >= srcSize.height) return StatusCode::NoSourceOverlap;
  const Rect r = CutTo(region, srcSize);
  const RegionSize extent = {Extent(r.width, xFactor, dstSize.width), Extent(r.height, yFactor, dstSize.height)};
  if (IsEmpty(extent)) return StatusCode::ResultRegionEmpty;
  const int side = std::min(srcSize.width, srcSize.height);
  if (interpolation == kEightPoint && side < 8) interpolation = kCubic;
  if (interpolation == kCubic && side < 4) interpolation = kLinear;
  if (interpolation == kLinear && side < 2) interpolation = kNearest;
  if (xFactor == 1 && yFactor == 1) interpolation = kNearest;
  const bool isHalving = side > 1 && IsHalving(r, xFactor, yFactor, interpolation);
  std::vector<std::vector<double>> across;
  for (int x = 0; x < extent.width; ++x) across.push_back(Weights(interpolation, r.width, xFactor, x));
  std::vector<double> down;
  ForEachPixel(extent, [&](int x, int y) {
    if (isHalving) {
      to.Set(x, y, MeanOfFour(from, r.x + 2 * x, r.y + 2 * y));
      return;
    }
    if (x == 0) down = Weights(interpolation, r.height, yFactor, y);
    double sum = 0;
    std::optional<FLOAT32> only;  // equal pixels give their value, to the bit
    bool isConstant = true;
    for (int v = 0; v < r.height; ++v) {
      for (int u = 0; u < r.width; ++u) {
        const double weight =
            down[static_cast<std::size_t>(v)] * across[static_cast<std::size_t>(x)][static_cast<std::size_t>(u)];
        if (weight == 0) continue;
        const FLOAT32 pixel = from(r.x + u, r.y + v);
        sum += weight * static_cast<double>(pixel);
        if (!only) only = pixel;
        isConstant &= std::memcmp(&pixel, &*only, sizeof pixel) == 0;
      }
    }
    to.Set(x, y, isConstant ? *only : static_cast<FLOAT32>(sum));
  });
  return StatusCode::Success;
}

Arguments DrawResize(Trial& t) {
  const std::int32_t interpolation = t.OneOf({kNearest, kLinear, kCubic, kReduce, kEightPoint});
  const auto side = [&](int most) { return t.OneIn(6) ? t.Int(1, 9) : t.Int(8, most); };
  const RegionSize size = {side(60), side(40)};
  Image& src = t.New<FLOAT32>(size, {.steps = Steps::Any, .bits = interpolation == kNearest});
  const Rect region = t.OneIn(2) ? Rect{0, 0, size.width, size.height} : DrawRegion(t, size, 9);
  const Rect cut = CutTo(region, size);
  const auto factor = [&](int length) {
    const double f = t.OneIn(2)
                         ? t.OneOf({0.5, 0.5, 1.0, 1.0, 2.0, 0.25, 1.0 / 3, 0.1, 0.61, 1.7, 3.0, 1.0 / 7, 1.0 / 49})
                     : t.OneIn(12) ? t.OneOf({0.4 / length, 0.6 / length, 1e12, 1e300, kInfinity})
                                   : std::exp2(t.Real(-2.5, 2));
    return interpolation == kReduce && f > 1 ? 1 / f : f;
  };
  const double xFactor = std::max(factor(cut.width), 1e-300);
  const double yFactor = t.OneIn(3) ? std::max(factor(cut.height), 1e-300) : xFactor;
  const RegionSize dstSize = {t.Int(1, 90), t.Int(1, 60)};
  const Image& dst = t.New<FLOAT32>(dstSize, {.steps = Steps::Row, .bits = interpolation == kNearest});
  // Outside of the region is what would show if it were read; inside, pixels of one magnitude, or all equal.
  if (interpolation != kNearest) {
    const FLOAT32 constant = t.OneOf({0.1F, -77.7F, 3e38F, -3.4028235e38F, 1e-45F, 1.2e-38F, 16777215.0F});
    const bool isConstant = t.OneIn(4);
    src.Fill<FLOAT32>([] { return std::numeric_limits<FLOAT32>::quiet_NaN(); });
    ForEachPixel({cut.width, cut.height}, [&](int x, int y) {
      src.Set(cut.x + x, cut.y + y, isConstant ? constant : static_cast<FLOAT32>(t.Int(-9999, 9999)) / 7.0F);
    });
    const bool isHalving = IsHalving(cut, xFactor, yFactor, interpolation);
    if (isHalving && t.OneIn(2)) {
      src.Fill<FLOAT32>([&] {
        return t.OneIn(9) ? t.OneOf({3e38F, -3e38F, -INFINITY}) : static_cast<FLOAT32>(t.Int(0, 999)) / 7;
      });
    }
    t.slack = isConstant || isHalving ? 0 : 1e-6;
  }
  if (interpolation == kEightPoint) t.tolerance = t.slack;
  const std::int32_t* const where = RectArray(t, region);
  return {src.data(), size, src.step(), where, dst, dstSize, xFactor, yFactor, interpolation};
}

Checks ResizeChecks() {
  const auto factors = [](int argument) {
    return NoneOf(argument, {0.0, -1.0, kNaN, -kInfinity}, {}, StatusCode::BadResizeFactor);
  };
  const auto enlarge = [](int argument) {
    return [=](Arguments& a) {
      a[9] = 1.0;
      a[10] = 1.0;
      a[argument] = 1.0000001;
      a[11] = kReduce;
    };
  };
  Check interpolation =
      NoneOf(11, {0, 3, 5, 6, 17, 32, -1, INT32_MIN, INT32_MIN + 2}, {}, StatusCode::UnknownInterpolation);
  interpolation.refused.insert(interpolation.refused.end(), {enlarge(9), enlarge(10)});
  const Checks sizes = {NotNull(0), NotNull(5), Size(1), Size(2)};
  return sizes + RegionChecks(4) +
         Checks{StartsInside([](Arguments&) {}),
                Size(7),
                Size(8),
                factors(9),
                factors(10),
                interpolation,
                {StatusCode::ResultRegionEmpty, {Set(9, 1e-300), Set(10, 5e-324)}}};
}

}  // namespace

std::vector<Operation> GeometryOperations() {
  return {
      WarpAffineOf<BW8, Norvala_WarpAffine_BW8>(),
      WarpAffineOf<FLOAT32, Norvala_WarpAffine_FLOAT32>(),
      WarpQuadOf<true, Norvala_WarpAffineQuad, kWarpAffineQuad>(),
      WarpQuadOf<false, Norvala_WarpPerspectiveQuad, kWarpPerspectiveQuad>(),
      {Call<Norvala_GetAffineBound>(), Primitive<kGetAffineBound>(), DrawAffineBound, Reference<AffineBound>(),
       RegionChecks(0)},
      {Call<Norvala_GetRotateShift>(), Primitive<kGetRotateShift>(), DrawShift, Reference<RotateShift>(),
       Checks{NotNull(3), NotNull(4)}},
      {Call<Norvala_GetRotateQuad>(), Primitive<kGetRotateQuad>(), DrawRotation<8>, Reference<RotateQuad>(),
       RegionChecks(0)},
      {Call<Norvala_GetRotateBound>(), Primitive<kGetRotateBound>(), DrawRotation<4>, Reference<RotateBound>(),
       RegionChecks(0)},
      {Call<Norvala_Resize>(), Primitive<kResizeFLOAT32>(), DrawResize, Reference<Resize>(), ResizeChecks()},
  };
}

}  // namespace norvala_test
