// Geometric transforms.

#include "geometry/geometry.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <map>
#include <numbers>

#include "support/operation.h"

namespace norvala_test {
namespace {

using namespace norvala;

constexpr double kInfinity = INFINITY;
constexpr double kNaN = NAN;
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
using AffineMap = std::array<double, 6>;

// Several doubles, at any address.
template <class T>
T Read(const double* from) {
  T values;
  std::memcpy(&values, from, sizeof values);
  return values;
}
template <class T>
void Write(const T& values, double* to) {
  std::memcpy(to, &values, sizeof values);
}
template <class T>
double* Doubles(Trial& t, const T& values) {
  auto* const array = t.Result<double>(sizeof values / sizeof(double));
  Write(values, array);
  return array;
}
const std::int32_t* RectArray(Trial& t, const Rect& r) { return t.Array<std::int32_t>({r.x, r.y, r.width, r.height}); }

Change All(const std::vector<Change>& changes) {
  return [=](Arguments& a) {
    for (const Change& change : changes) change(a);
  };
}
Change WriteDoubles(int argument, const std::vector<double>& values) {
  return [=](Arguments& a) { std::memcpy(a[argument].pointer, values.data(), values.size() * sizeof(double)); };
}
Change WriteInt(int argument, int index, std::int32_t value) {
  return [=](Arguments& a) { View(static_cast<std::int32_t*>(a[argument].pointer)).Set(index, 0, value); };
}

// Origin and size of a region.
Checks RegionChecks(int argument) {
  Checks checks;
  for (int i = 0; i < 4; ++i) {
    const auto to = [&](std::int32_t value) { return WriteInt(argument, i, value); };
    const int least = i < 2 ? 0 : 1;
    checks.push_back({StatusCode::NonPositiveSize, {to(least - 1), to(INT32_MIN)}, {to(least)}});
  }
  return checks;
}
// The region of the source must begin inside the image.
Check StartsInside(const Change& mend = [](Arguments&) {}) {
  const auto moveTo = [=](int index, int behind) {
    return All({mend, [=](Arguments& a) { WriteInt(4, index, static_cast<int>(a[1 + index].integer) + behind)(a); }});
  };
  return {StatusCode::NoSourceOverlap, {moveTo(0, 0), moveTo(1, 0), moveTo(0, 7)}, {moveTo(0, -1), moveTo(1, -1)}};
}

Rect CutTo(const Rect& r, RegionSize size) {
  return {r.x, r.y, std::min(r.width, size.width - r.x), std::min(r.height, size.height - r.y)};
}
bool Contains(const Rect& r, Place p, double margin = 0) {
  return p.x >= r.x - margin && p.x <= r.x + r.width - 1 + margin && p.y >= r.y - margin &&
         p.y <= r.y + r.height - 1 + margin;
}

// A region that begins inside an image and may reach `beyond` it.
Rect DrawRegion(Trial& t, RegionSize size, int beyond) {
  if (t.OneIn(3)) return {0, 0, size.width, size.height};
  const int x = t.OneIn(2) ? 0 : t.Int(0, size.width - 1);
  const int y = t.OneIn(2) ? 0 : t.Int(0, size.height - 1);
  const int width = t.Int(1, size.width - x + beyond);
  return {x, y, width, t.Int(1, size.height - y + beyond)};
}

// ---- Interpolation ----

std::array<double, 4> CubicWeights(double v, int first) {
  const double t = static_cast<float>(v - 1 - first);
  const double w0 = t == 1 || t == 2 ? 0 : -(t * t * t) / 6 + t * t / 2 - t / 3;
  return {w0, t * t * t / 2 - t * t - t / 2 + 1, -(t * t * t) / 2 + t * t / 2 + t, t * t * t / 6 - t / 6};
}

// Pixels travel as bits, so that Nearest may be seen to keep those of a NaN; all words with these bits are one.
constexpr BW32 kNaNs = 0x7F800000;
template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 1, BW8, BW32>;

template <class T>
BitsOf<T> Sample(View<const BitsOf<T>> src, RegionSize size, Place p, std::int32_t kernel) {
  const auto pixel = [&](int x, int y) { return static_cast<double>(std::bit_cast<T>(src(x, y))); };
  constexpr bool kIsByte = sizeof(T) == 1;
  const int side = std::min(size.width, size.height);
  if (kernel == kNearest || side == 1) return src(static_cast<int>(p.x + 0.5), static_cast<int>(p.y + 0.5));
  const auto x = static_cast<int>(p.x + 1e-7);
  const auto y = static_cast<int>(p.y + 1e-7);
  double sum = 0;
  if (kernel == kLinear || side < 4) {
    const int left = std::min(x, size.width - 2);
    const int above = std::min(y, size.height - 2);
    const double fx = left < x ? 1.0 : p.x - left;
    const double fy = above < y ? 1.0 : p.y - above;
    const double top = pixel(left, above) + (pixel(left + 1, above) - pixel(left, above)) * fx;
    const double bottom = pixel(left, above + 1) + (pixel(left + 1, above + 1) - pixel(left, above + 1)) * fx;
    sum = (kIsByte ? top + 0.5 : top) + fy * (bottom - top);
  } else {
    const auto first = [](int i, int length) { return i >= length - 2 ? length - 4 : std::max(i - 1, 0); };
    const int left = first(x, size.width);
    const int above = first(y, size.height);
    const auto combine = [](const std::array<double, 4>& w, auto value) {
      return w[0] * value(0) + w[1] * value(1) + w[2] * value(2) + w[3] * value(3);
    };
    const auto across = CubicWeights(p.x, left);
    sum = combine(CubicWeights(p.y, above),
                  [&](int j) { return combine(across, [&](int i) { return pixel(left + i, above + j); }); });
    if (kIsByte) sum = std::clamp(sum, 0.0, 255.0) + 0.5;
  }
  return std::bit_cast<BitsOf<T>>(static_cast<T>(sum));
}

// ---- Quadrilaterals ----

Place Map(const AffineMap& c, Place p) { return {c[0] * p.x + c[1] * p.y + c[2], c[3] * p.x + c[4] * p.y + c[5]}; }
Quad Map(const AffineMap& c, const Quad& q) { return {Map(c, q[0]), Map(c, q[1]), Map(c, q[2]), Map(c, q[3])}; }

Quad CornersOf(const Rect& r) {
  const Place first = {double(r.x), double(r.y)};
  const Place last = {first.x + r.width - 1, first.y + r.height - 1};
  return {first, {last.x, first.y}, last, {first.x, last.y}};
}

// Twice the area of a triangle, by its sense of rotation.
double Area(Place a, Place b, Place c) { return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x); }

bool IsConvex(const Quad& q) {
  int turns = 0;
  for (std::size_t k = 0; k < 4; ++k) {
    const double turn = Area(q[k], q[(k + 1) % 4], q[(k + 2) % 4]);
    turns += turn > 0 ? 1 : turn < 0 ? -1 : 0;
  }
  return std::abs(turns) == 4;
}

// How far a point lies inside a convex quadrilateral of either order; below 0 outside.
double Depth(const Quad& q, Place p) {
  double least = kInfinity;
  double most = -kInfinity;
  for (std::size_t k = 0; k < 4; ++k) {
    const Place next = q[(k + 1) % 4];
    const double distance = Area(q[k], next, p) / std::hypot(next.x - q[k].x, next.y - q[k].y);
    least = std::min(least, distance);
    most = std::max(most, distance);
  }
  return std::max(least, -most);
}

// Takes a weighted mean of three vertices to the mean of three others by the same weights. A projection multiplies
// these by factors that also take the fourth vertex to the fourth.
Place MapBetween(const Quad& from, const Quad& to, Place p, bool isProjection) {
  const auto parts = [](const Quad& q, Place at) {
    return std::array{Area(at, q[1], q[2]), Area(q[0], at, q[2]), Area(q[0], q[1], at)};
  };
  auto w = parts(from, p);
  if (isProjection) {
    const auto fourth = parts(from, from[3]);
    const auto wanted = parts(to, to[3]);
    for (std::size_t i = 0; i < 3; ++i) w[i] *= wanted[i] * fourth[(i + 1) % 3] * fourth[(i + 2) % 3];
  }
  const double sum = w[0] + w[1] + w[2];
  return {(w[0] * to[0].x + w[1] * to[1].x + w[2] * to[2].x) / sum + 0.0,  // no -0
          (w[0] * to[0].y + w[1] * to[1].y + w[2] * to[2].y) / sum + 0.0};
}

// ---- Warps ----

enum class By { Coefficients, ThreeVertices, FourVertices };

// How much of the result is known: that nothing outside the region changes; what lies well inside and outside of the
// edges, but for rounding; every pixel, since all arithmetic is exact.
enum class Known { Little, Roughly, Exactly };

// The arguments of a warp. Behind the export's come the size of the destination image, what is known, and the depth
// code.
template <class T, By by>
struct WarpCall {
  using Bits = BitsOf<T>;
  Reader reader;
  const Bits* srcPixels = reader.Read<const Bits*>();
  RegionSize size = reader.Read<RegionSize>();
  View<const Bits> src{srcPixels, reader.Read<std::int32_t>()};
  Rect from = CutTo(reader.Read<Rect>(), size);
  const double* sourceQuad = by == By::Coefficients ? nullptr : reader.Read<const double*>();
  View<Bits> dst = reader.Read<View<Bits>>();
  Rect to = reader.Read<Rect>();
  const double* map = reader.Read<const double*>();
  std::int32_t interpolation = reader.Read<std::int32_t>();
  RegionSize dstSize = reader.Read<RegionSize>();
  Known known = reader.Read<Known>();
};

// What is not known is what the library makes of it. How edges are smoothed is tested apart.
template <class T, By by, const auto& primitive>
StatusCode WarpRule(const Arguments& a) {
  constexpr bool kIsProjection = by == By::FourVertices;
  const WarpCall<T, by> w{Reader(a)};
  Quad source = CornersOf(w.from);
  Quad target;
  if constexpr (by == By::Coefficients) {
    const auto c = Read<AffineMap>(w.map);
    const double p = c[0] * c[4];
    const double q = c[1] * c[3];
    if (!((std::fabs(p) > 1e-200 ? std::fabs((p - q) / p) : std::fabs(q)) > 1e-12)) return StatusCode::BadCoefficients;
    target = Map(c, source);
  } else {
    source = Read<Quad>(w.sourceQuad);
    target = Read<Quad>(w.map);
    if (!IsConvex(source) || !IsConvex(target)) return StatusCode::BadQuadrilateral;
  }
  const int least = std::min(w.from.width, w.from.height);
  if (least < 1) return StatusCode::NoSourceOverlap;
  if (by == By::Coefficients && least < 2) return StatusCode::RegionTooSmall;

  std::vector<BitsOf<T>> before;
  ForEachPixel(w.dstSize, [&](int x, int y) { before.push_back(w.dst(x, y)); });
  const StatusCode status = primitive()(a);
  // Rows that overlap leave nothing to compare.
  if (a[by == By::Coefficients ? 6 : 7].integer < w.dstSize.width * int{sizeof(T)}) return status;

  const bool isSmooth = w.interpolation < 0 && !kIsProjection &&
                        std::all_of(source.begin(), source.end(), [&](Place p) { return Contains(w.from, p); });
  const bool isExact = w.known == Known::Exactly && !isSmooth;
  const double margin = w.known == Known::Little ? kInfinity : !isExact ? 2 : kIsProjection ? 1e-9 : 0;
  const std::int32_t kernel = w.interpolation & INT32_MAX;
  bool isWritten = false;
  auto old = before.begin();
  ForEachPixel(w.dstSize, [&](int x, int y) {
    auto expected = *old++;
    const auto result = w.dst(x, y);
    const Place p = {double(x), double(y)};
    bool isSure = true;
    if (Contains(w.to, p)) {
      const double depth = Depth(target, p);
      const Place at = MapBetween(target, source, p, kIsProjection);
      isSure = std::fabs(depth) >= margin;
      if (depth >= 0 && Contains(w.from, at, isExact ? 1e-9 : 1e-6)) {
        expected = Sample<T>(w.src, w.size, at, kernel);
        isWritten = true;
        const bool isNear = sizeof(T) == 4 || kernel == kNearest || std::abs(int(expected) - int(result)) <= 1;
        isSure &= isExact || (Contains(w.from, at, -1e-6) && !isNear);
      }
    }
    w.dst.Set(x, y, isSure ? expected : result);
  });
  const bool isWrong = static_cast<int>(status) < 0 || (isExact && isWritten);
  return isWrong && w.known != Known::Little ? StatusCode::Success : status;
}

// A map that brings some point of one region to some point of the other. Exact ones are of powers of two, with edges
// along the axes, sheared, or turned. With others, a grain puts edges and positions on pixels or a rounding error
// beside them.
AffineMap DrawMap(Trial& t, bool isExact, const Rect& from, const Rect& to) {
  const auto power = [&] { return t.OneOf({1.0, 1.0, -1.0, 2.0, 0.5, -0.5, 4.0}); };
  const double a = power();
  const double b = power();
  const double s = t.OneOf({1.0, -1.0, 0.5, 2.0});
  auto m =
      t.OneOf<std::array<double, 4>>({{a, 0, 0, b}, {0, a, b, 0}, {a, s, 0, b}, {a, 0, s, b}, {a, s, -a * b / s, b}});
  const double grain = isExact ? t.OneOf({0.25, 1.0, 1.0}) : t.OneOf({0x1p-30, 0x1p-30, 0.25, 1.0 / 3});
  const auto snap = [&](double v) { return std::round(v / grain) * grain; };
  if (!isExact) std::generate(m.begin(), m.end(), [&] { return snap(t.Real(-2, 2)); });
  const double right = t.Real(0, 1);
  const double down = t.Real(0, 1);
  const double x = std::round(from.x + right * from.width);
  const double y = std::round(from.y + down * from.height);
  return {m[0], m[1], snap(to.x + right * to.width - m[0] * x - m[1] * y),
          m[2], m[3], snap(to.y + down * to.height - m[2] * x - m[3] * y)};
}

RegionSize DrawImageSize(Trial& t, bool isWide) {
  const auto side = [&](int most) { return t.OneIn(5) ? t.OneOf({1, 1, 1, 2, 3}) : t.Int(2, most); };
  const int width = isWide ? t.Int(257, 600) : side(90);
  return {width, side(50)};
}

template <class T, By by>
Arguments DrawWarp(Trial& t) {
  const std::int32_t kernel = t.OneOf({kNearest, kLinear, kCubic});
  const bool isExact = t.OneIn(2);
  const bool isWide = t.OneIn(4);
  const RegionSize size = DrawImageSize(t, isWide);
  const RegionSize dstSize = DrawImageSize(t, isWide);
  Image& src = t.New<T>(size, {.steps = Steps::Positive, .bits = kernel == kNearest});
  if (kernel == kNearest) src.Fill<BitsOf<T>>([&] { return static_cast<BitsOf<T>>(t.Word() | kNaNs); });
  const Image& dst = t.New<T>(dstSize, {.steps = Steps::Row, .bits = kernel == kNearest});
  Rect from = isWide ? Rect{0, 0, size.width, size.height} : DrawRegion(t, size, 5);
  const Rect to = isWide ? Rect{0, 0, dstSize.width, dstSize.height} : DrawRegion(t, dstSize, 0);
  Rect shown = CutTo(from, size);
  if (isExact) {
    for (auto* side : {&shown.width, &shown.height}) *side = (1 << std::ilogb(std::max(*side, 2) - 1)) + 1;
    if (by == By::Coefficients) from = shown;
  }
  const AffineMap map = DrawMap(t, isExact, shown, to);
  Quad source = CornersOf(shown);
  const double unit = t.OneOf({0.0, 0.0, 0.25, 1.0});
  const double right = t.Int(-8, 8) * unit;
  const double down = t.Int(-8, 8) * unit;
  for (Place& p : source) {
    p.x += isExact ? right : t.Real(-4, 4) * unit;
    p.y += isExact ? down : t.Real(-4, 4) * unit;
  }
  Quad target = Map(map, source);
  const bool isExtreme = !isExact && t.OneIn(12);
  const bool isOff = by == By::ThreeVertices && t.OneIn(8);
  if (isOff) target[3].y += 0.4;
  for (Quad* const quad : {&source, &target}) {
    if (by != By::FourVertices || t.OneIn(2)) continue;
    // Toward another vertex or away from it.
    const auto other = static_cast<std::size_t>(t.Int(1, 3));
    const double part = t.Int(-4, 3) * 0.125;
    for (auto axis : {&Place::x, &Place::y}) (*quad)[0].*axis += part * ((*quad)[other].*axis - (*quad)[0].*axis);
  }

  Arguments a = {src.data(), size, src.step(), RectArray(t, from)};
  if (by != By::Coefficients) a.Add(Doubles(t, source));
  a.Add(dst);
  a.Add(RectArray(t, to));
  a.Add(by == By::Coefficients ? Doubles(t, map) : Doubles(t, target));
  a.Add(kernel | (t.OneIn(4) ? kSmoothEdge : 0));
  a.Add(dstSize);
  a.Add(static_cast<int>(isExtreme || isOff ? Known::Little : isExact ? Known::Exactly : Known::Roughly));
  a.Add(static_cast<int>(sizeof(T) == 1 ? PixelDepthCode::Unsigned8 : PixelDepthCode::Float32));
  for (int i = 0; isExtreme && i < 6; ++i) {
    const View array(static_cast<double*>(a[by == By::Coefficients ? 8 : t.OneOf({5, 9})].pointer));
    const auto number = t.OneOf({0.0, 1.0, 1e-12, 1e7, 1e15, 5e-324, -1e18, 1e150, 1e300, kInfinity, kNaN});
    if (t.OneIn(3)) array.Set(i, 0, number);
  }
  return a;
}

template <class T, By by, auto call, const auto& table>
Operation Warp() {
  static constexpr bool kHasQuads = by != By::Coefficients;
  constexpr int kSource = 5;  // quadrilateral
  constexpr int kDst = kHasQuads ? 6 : 5;
  constexpr int kMap = kDst + 3;
  static constexpr auto kPrimitive = [] {
    if constexpr (kHasQuads) return Primitive<table, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 14, 10>();
    if constexpr (!kHasQuads) return Primitive<table, 0, 1, 2, 3, 4, 5, 6, 7, 13, 8, 9>();
  };
  const auto map = [](const std::vector<double>& values) {
    return All({WriteDoubles(kMap, values), Set(kMap + 4, static_cast<int>(Known::Roughly))});
  };
  // Arguments that pass all checks before a check: the drawn ones may not.
  const std::vector<double> square = {0, 0, 8, 0, 8, 8, 0, 8};
  const Change sound = kHasQuads ? All({WriteDoubles(kSource, square), map(square)}) : map({1, 0, 0, 0, 1, 0});
  Checks checks = Checks{NotNull(0), NotNull(kDst), Size(1), Size(2)} + RegionChecks(4) + RegionChecks(kDst + 2) +
                  Checks{Step(3), Step(kDst + 1),
                         NoneOf(kMap + 1, {0, 3, 5, 6, 8, INT32_MIN, INT32_MIN + 3}, {1, INT32_MIN + 4},
                                StatusCode::UnknownInterpolation)};
  for (const int quad : {kSource, kMap}) {
    const auto write = [&](const std::vector<double>& values) { return All({sound, WriteDoubles(quad, values)}); };
    if (kHasQuads) {
      checks.push_back({StatusCode::BadQuadrilateral,
                        {write({0, 0, 7, 5, 7, 0, 0, 5}), write({0, 0, 4, 0, 1, 1, 0, 4}),
                         write({0, 0, 4, 0, 8, 0, 0, 4}), write({0, 0, 4, 0, 4, 4, 0, kNaN})}});
    }
  }
  // One test of the coefficients is relative to c00 * c11, the other, where that is tiny, absolute.
  const Check singular = {StatusCode::BadCoefficients,
                          {map({1, 2, 0, 2, 4, 0}), map({1, 1, 0, 1, 1 + 0.8e-12, 0}), map({0, 1e-7, 0, 1e-7, 0, 0}),
                           map({kNaN, 0, 0, 0, 1, 0})},
                          {map({1, 1, 0, 1, 1 + 1.2e-12, 0}), map({0, 1, 0, 1, 0, 0}), map({1e-7, 0, 0, 0, 1e-7, 0})}};
  const auto narrow = [&](int index) {
    return All({sound, WriteInt(4, 0, 0), WriteInt(4, 1, 0), WriteInt(4, index, 1)});
  };
  const Check wide = {StatusCode::RegionTooSmall, {narrow(2), narrow(3)}};
  checks = checks + (kHasQuads ? Checks{StartsInside(sound)} : Checks{singular, StartsInside(sound), wide});
  return {Call<call>(), kPrimitive(), DrawWarp<T, by>, WarpRule<T, by, kPrimitive>, checks};
}

// ---- Bounds and rotation ----

void WriteBound(const Quad& q, double* bound) {
  Write(std::array{std::min({q[0].x, q[1].x, q[2].x, q[3].x}), std::min({q[0].y, q[1].y, q[2].y, q[3].y}),
                   std::max({q[0].x, q[1].x, q[2].x, q[3].x}), std::max({q[0].y, q[1].y, q[2].y, q[3].y})},
        bound);
}
Rect DrawAnyRegion(Trial& t) {
  Rect region = DrawRegion(t, {50, 50}, 450);
  if (t.OneIn(8)) region.x = INT32_MAX;
  if (t.OneIn(8)) region.width = INT32_MAX;
  return region;
}

Arguments DrawAffineBound(Trial& t) {
  const AffineMap map = t.OneIn(6) ? AffineMap{} : DrawMap(t, t.OneIn(2), {0, 0, 20, 20}, {0, 0, 20, 20});
  const auto* const region = RectArray(t, DrawAnyRegion(t));
  auto* const bound = t.Result<double>(4);
  return {region, bound, Doubles(t, map)};
}
StatusCode AffineBound(Rect region, double* bound, const double* coefficients) {
  const Quad quad = Map(Read<AffineMap>(coefficients), CornersOf(region));
  WriteBound(quad, bound);
  return IsConvex(quad) ? StatusCode::Success : StatusCode::BadCoefficients;
}

double DrawAngle(Trial& t) {
  const double angle = t.OneIn(2)    ? 90.0 * t.Int(-9, 9)
                       : t.OneIn(16) ? t.OneOf({90 + 360.0 * INT32_MAX, kInfinity, kNaN})
                                     : t.Real(-2000, 2000);
  t.tolerance = std::isfinite(angle) && std::fmod(angle, 90) != 0 ? 1e-12 : 0;
  return angle;
}
// Cosine and sine.
Place Direction(double angle) {
  const double turned = std::fmod(angle, 360);
  const double reduced = turned < 0 ? turned + 360 : turned;
  constexpr Place kTurns[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  if (std::fmod(reduced, 90) == 0) return kTurns[static_cast<int>(reduced / 90)];
  const double radians = reduced / 180 * 3.141592653589793;
  return {std::cos(radians), std::sin(radians)};
}

Arguments DrawShift(Trial& t) {
  const double x = t.Int(-40, 2000) * 0.25;
  const double y = t.Int(-40, 2000) * 0.25;
  const double angle = DrawAngle(t);
  auto* const xShift = t.Result<double>();
  return {x, y, angle, xShift, t.Result<double>()};
}
void RotateShift(double x, double y, double angle, double* xShift, double* yShift) {
  const auto [c, s] = Direction(angle);
  Write(x - x * c - y * s, xShift);
  Write(y - y * c + x * s, yShift);
}

template <int numbers>
Arguments DrawRotation(Trial& t) {
  const double angle = DrawAngle(t);
  const auto* const region = RectArray(t, DrawAnyRegion(t));
  auto* const result = t.Result<double>(numbers);
  const double xShift = t.Int(-400, 400) * 0.25;
  return {region, result, angle, xShift, t.Int(-400, 400) * 0.25};
}
template <auto write>
void Rotate(Rect region, double* result, double angle, double xShift, double yShift) {
  const auto [c, s] = Direction(angle);
  write(Map({c, s, xShift, -s, c, yShift}, CornersOf(region)), result);
}

// ---- Resize ----

// Source pixels and their weights in one direction for destination pixel `d`, from the definitions; what rounding
// leaves of a weight does not count.
std::map<int, double> Weights(std::int32_t interpolation, int length, double factor, int d) {
  const auto sinc = [](double v) { return v == 0 ? 1.0 : std::sin(std::numbers::pi * v) / (std::numbers::pi * v); };
  const auto kernel = [&](int i) {
    const double x = (d + 0.5) / factor - 0.5 - i;
    const double a = std::fabs(x);
    switch (interpolation) {
      case kNearest:
        return x >= -0.5 && x < 0.5 ? 1.0 : 0.0;
      case kLinear:
        return std::max(0.0, 1 - a);
      case kCubic:
        return a < 1 ? (1 - a * a) * (2 - a) / 2 : a < 2 ? (1 - a) * (2 - a) * (3 - a) / 6 : 0.0;
      case kReduce:  // the part of the pixel that is covered
        return i < length ? std::max(0.0, std::min(i + 1.0, (d + 1) / factor) - std::max(1.0 * i, d / factor)) : 0.0;
      default:
        return a < 4 ? sinc(x) * sinc(x / 4) : 0.0;
    }
  };
  std::map<int, double> weights;
  for (int i = -4; i < length + 4; ++i) {
    if (std::fabs(kernel(i)) > 1e-9) weights[std::clamp(i, 0, length - 1)] += kernel(i);
  }
  return weights;
}

// Pixels to be written, 0 for none.
int Extent(int length, double factor, int dstLength) {
  const double scaled = length * factor + 1e-7;
  if (scaled >= dstLength) return dstLength;
  return scaled >= 1 ? static_cast<int>(scaled) : scaled < 0.5 ? 0 : 1;
}

StatusCode Resize(const BW32* src, RegionSize srcSize, std::int32_t srcStep, Rect region, BW32* dst,
                  std::int32_t dstStep, RegionSize dstSize, double xFactor, double yFactor,
                  std::int32_t interpolation) {
  if (region.x >= srcSize.width || region.y >= srcSize.height) return StatusCode::NoSourceOverlap;
  const Rect r = CutTo(region, srcSize);
  const RegionSize extent = {Extent(r.width, xFactor, dstSize.width), Extent(r.height, yFactor, dstSize.height)};
  if (IsEmpty(extent)) return StatusCode::ResultRegionEmpty;
  const int side = std::min(srcSize.width, srcSize.height);
  if (interpolation == kEightPoint && side < 8) interpolation = kCubic;
  if (interpolation == kCubic && side < 4) interpolation = kLinear;
  if (interpolation == kLinear && side < 2) interpolation = kNearest;
  std::vector<std::map<int, double>> across;
  for (int x = 0; x < extent.width; ++x) across.push_back(Weights(interpolation, r.width, xFactor, x));
  std::map<int, double> down;
  ForEachPixel(extent, [&](int x, int y) {
    if (x == 0) down = Weights(interpolation, r.height, yFactor, y);
    double sum = 0;
    double total = 0;
    BW32 only = 0;  // a single pixel passes as it is, whatever its bits
    int pixels = 0;
    for (const auto& [v, rowWeight] : down) {
      for (const auto& [u, weight] : across[static_cast<std::size_t>(x)]) {
        only = View(src, srcStep)(r.x + u, r.y + v);
        sum += rowWeight * weight * static_cast<double>(std::bit_cast<FLOAT32>(only));
        total += rowWeight * weight;
        ++pixels;
      }
    }
    View(dst, dstStep).Set(x, y, pixels == 1 ? only : std::bit_cast<BW32>(static_cast<FLOAT32>(sum / total)));
  });
  return StatusCode::Success;
}

Arguments DrawResize(Trial& t) {
  const std::int32_t interpolation = t.OneOf({kNearest, kLinear, kCubic, kReduce, kEightPoint});
  const bool isWide = t.OneIn(4);
  const RegionSize size = DrawImageSize(t, isWide);
  const RegionSize dstSize = DrawImageSize(t, isWide);
  Image& src = t.New<FLOAT32>(size, {.steps = Steps::Any, .bits = interpolation == kNearest});
  const Rect region = t.OneIn(2) ? Rect{0, 0, size.width, size.height} : DrawRegion(t, size, 9);
  const Rect cut = CutTo(region, size);
  const bool isDyadic = t.OneIn(2);
  const auto factor = [&](int length) {
    const double f = isDyadic      ? t.OneOf({0.5, 0.5, 0.5, 0.25, 1.0, 2.0})
                     : t.OneIn(2)  ? t.OneOf({1.0, 1.0 / 3, 0.1, 0.61, 1.7, 3.0, 1.0 / 7, 1.0 / 49})
                     : t.OneIn(12) ? t.OneOf({0.4 / length, 0.6 / length, 1e12, 1e300, kInfinity})
                                   : t.Real(0.2, 4);
    return interpolation == kReduce && f > 1 ? std::max(1 / f, 1e-300) : f;
  };
  const double xFactor = factor(cut.width);
  const double yFactor = t.OneIn(3) ? factor(cut.height) : xFactor;
  Image& dst = t.New<FLOAT32>(dstSize, {.steps = Steps::Row, .bits = interpolation == kNearest});
  if (interpolation == kNearest) {
    src.Fill<BW32>([&] { return t.Word() | kNaNs; });
  } else {
    // Outside of the region is what would show if it were read; inside, one number, or whole ones, or such as leave the
    // range when they are added up.
    const FLOAT32 constant = t.OneOf({0.1F, -77.7F, 3e38F, -3.4028235e38F, 1e-45F, 1.2e-38F, 16777215.0F});
    const bool isConstant = t.OneIn(4);
    const bool isExact = isDyadic && (interpolation == kLinear || interpolation == kReduce) && !t.OneIn(3);
    const bool isHuge = isExact && t.OneIn(3);
    src.Fill<FLOAT32>([] { return NAN; });
    ForEachPixel({cut.width, cut.height}, [&](int x, int y) {
      const FLOAT32 number = static_cast<FLOAT32>(t.Int(-9999, 9999)) / (isExact ? 1 : 7);
      src.Set(cut.x + x, cut.y + y, isConstant ? constant : isHuge ? t.OneOf({0.0F, 0x1p126F, 0x1p127F}) : number);
    });
    dst.Fill<FLOAT32>([] { return 1.0F; });  // not to outweigh errors
    t.slack = isConstant || isExact ? 0 : 2e-5;
    if (interpolation == kEightPoint) t.tolerance = t.slack;
  }
  const std::int32_t* const where = RectArray(t, region);
  return {src.data(), size, src.step(), where, dst, dstSize, xFactor, yFactor, interpolation};
}

Checks ResizeChecks() {
  Check interpolation =
      NoneOf(11, {0, 3, 5, 6, 17, 32, -1, INT32_MIN, INT32_MIN + 2}, {}, StatusCode::UnknownInterpolation);
  for (const int factor : {9, 10}) {
    interpolation.refused.push_back(All({Set(9, 1.0), Set(10, 1.0), Set(factor, 1.0000001), Set(11, kReduce)}));
  }
  return Checks{NotNull(0), NotNull(5), Size(1), Size(2)} + RegionChecks(4) +
         Checks{StartsInside(),
                Size(7),
                Size(8),
                NoneOf(9, {0.0, -1.0, kNaN, -kInfinity}, {}, StatusCode::BadResizeFactor),
                NoneOf(10, {0.0, -1.0, kNaN, -kInfinity}, {}, StatusCode::BadResizeFactor),
                interpolation,
                {StatusCode::ResultRegionEmpty, {Set(9, 1e-300), Set(10, 5e-324)}}};
}

}  // namespace

std::vector<Operation> GeometryOperations() {
  return {
      Warp<BW8, By::Coefficients, Norvala_WarpAffine_BW8, kWarpAffine>(),
      Warp<FLOAT32, By::Coefficients, Norvala_WarpAffine_FLOAT32, kWarpAffine>(),
      Warp<BW8, By::ThreeVertices, Norvala_WarpAffineQuad, kWarpAffineQuad>(),
      Warp<BW8, By::FourVertices, Norvala_WarpPerspectiveQuad, kWarpPerspectiveQuad>(),
      Row<Norvala_GetAffineBound, kGetAffineBound, DrawAffineBound, AffineBound>(RegionChecks(0)),
      Row<Norvala_GetRotateShift, kGetRotateShift, DrawShift, RotateShift>({NotNull(3), NotNull(4)}),
      Row<Norvala_GetRotateQuad, kGetRotateQuad, DrawRotation<8>, Rotate<Write<Quad>>>(RegionChecks(0)),
      Row<Norvala_GetRotateBound, kGetRotateBound, DrawRotation<4>, Rotate<WriteBound>>(RegionChecks(0)),
      Row<Norvala_Resize, kResizeFLOAT32, DrawResize, Resize>(ResizeChecks()),
  };
}

}  // namespace norvala_test
