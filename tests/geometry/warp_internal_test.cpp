#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "geometry/geometry.h"
#include "geometry/warp/linear_run.h"
#include "geometry/warp/polygon.h"
#include "geometry/warp/projected_row.h"
#include "geometry/warp/row_spans.h"
#include "geometry/warp/sample_pixel.h"
#include "support/failing_heap.h"
#include "support/old_image.h"

namespace norvala {
namespace {

using norvala_test::Image;
using norvala_test::Random;
using norvala_test::RandomInt;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Pixels = std::array<BW8, 48>;
using Vertices = std::array<double, 8>;
constexpr Vertices kCorners = {0, 0, 7, 0, 7, 5, 0, 5};
constexpr Vertices kCrossed = {0, 0, 7, 5, 7, 0, 0, 5};
Pixels from = [] {
  Pixels ones;
  ones.fill(1);
  return ones;
}();
Pixels to;

// The arguments of all warps, with nearly all that is checked of them wrong.
struct Arguments {
  const BW8* src = nullptr;
  BW8* dst = to.data();
  RegionSize size = {0, 0};
  Rect srcRegion = {-1, -1, 0, 0};
  Rect dstRegion = {-1, -1, 0, 0};
  std::int32_t srcStep = 0;
  std::int32_t dstStep = 0;
  std::int32_t interpolation = 3;
  std::array<double, 6> coefficients = {1, 2, 0, 2, 4, 0};
  Vertices srcQuad = kCrossed;
  Vertices dstQuad = kCrossed;
};
constexpr Rect kWhole = {0, 0, 8, 6};
const Arguments kRight = {from.data(), to.data(),          {8, 6},   kWhole,  kWhole, 8, 8,
                          1,           {1, 0, 0, 0, 1, 0}, kCorners, kCorners};

StatusCode WarpBy(const decltype(kWarpAffine)& warp, const Arguments& a) {
  return warp(a.src, a.size, a.srcStep, a.srcRegion, a.dst, a.dstStep, a.dstRegion, PixelDepthCode::Unsigned8,
              a.coefficients.data(), a.interpolation);
}
StatusCode WarpBy(const decltype(kWarpAffineQuad)& warp, const Arguments& a) {
  return warp(a.src, a.size, a.srcStep, a.srcRegion, a.srcQuad.data(), a.dst, a.dstStep, a.dstRegion, a.dstQuad.data(),
              PixelDepthCode::Unsigned8, a.interpolation);
}

// A status, and what to mend for the next one.
struct Check {
  StatusCode status;
  void (*mend)(Arguments&);
};

void MendOneByOne(const auto& warp, std::initializer_list<Check> ownChecks) {
  constexpr auto kSize = StatusCode::NonPositiveSize;
  std::vector<Check> checks = {
      {StatusCode::NullPointer, [](Arguments& a) { a = {.src = from.data(), .dst = nullptr}; }},
      {StatusCode::NullPointer, [](Arguments& a) { a.dst = to.data(); }},
      {kSize, [](Arguments& a) { a.size.width = 8; }},
      {kSize, [](Arguments& a) { a.size.height = 6; }},
      {kSize, [](Arguments& a) { a.srcRegion.x = 8; }},
      {kSize, [](Arguments& a) { a.srcRegion.y = 0; }},
      {kSize, [](Arguments& a) { a.srcRegion.width = 1; }},
      {kSize, [](Arguments& a) { a.srcRegion.height = 1; }},
      {kSize, [](Arguments& a) { a.dstRegion.x = 100; }},
      {kSize, [](Arguments& a) { a.dstRegion.y = 0; }},
      {kSize, [](Arguments& a) { a.dstRegion.width = 8; }},
      {kSize, [](Arguments& a) { a.dstRegion.height = 6; }},
      {StatusCode::NonPositiveStep, [](Arguments& a) { a.srcStep = 8; }},
      {StatusCode::NonPositiveStep, [](Arguments& a) { a.dstStep = 8; }},
      {StatusCode::UnknownInterpolation, [](Arguments& a) { a.interpolation = INT32_MIN; }},
      {StatusCode::UnknownInterpolation, [](Arguments& a) { a.interpolation = 5; }},
      {StatusCode::UnknownInterpolation, [](Arguments& a) { a.interpolation = 1; }},
  };
  checks.insert(checks.end(), ownChecks);
  Arguments a;
  to = {};
  for (const Check& check : checks) {
    ASSERT_EQ(WarpBy(warp, a), check.status) << "check " << &check - checks.data();
    ASSERT_EQ(to, Pixels{});
    check.mend(a);
  }
  EXPECT_EQ(WarpBy(warp, a), StatusCode::Success);
}

TEST(WarpStatusTest, AffineChecksInOrder) {
  MendOneByOne(kWarpAffine,
               {{StatusCode::BadCoefficients, [](Arguments& a) { a.coefficients = {1, 0, kNaN, 0, 1, 0}; }},
                {StatusCode::NoSourceOverlap,
                 [](Arguments& a) {
                   a.srcRegion = {0, 6, 5, 5};
                 }},
                {StatusCode::NoSourceOverlap,
                 [](Arguments& a) {
                   a.srcRegion = {7, 0, 5, 5};
                 }},
                {StatusCode::RegionTooSmall,
                 [](Arguments& a) {
                   a.srcRegion = {0, 5, INT32_MAX, INT32_MAX};
                 }},
                {StatusCode::RegionTooSmall, [](Arguments& a) { a.srcRegion = kWhole; }},
                {StatusCode::BadCoefficients, [](Arguments& a) { a.coefficients = {1, 0, 9, 0, 1, 0}; }},
                {StatusCode::NoDestinationOverlap,
                 [](Arguments& a) {
                   a.dstRegion = {INT32_MAX, 0, INT32_MAX, 5};
                 }},
                {StatusCode::NoDestinationOverlap, [](Arguments& a) { a.dstRegion = kWhole; }},
                {StatusCode::NoDestinationOverlap, [](Arguments& a) { a.coefficients = kRight.coefficients; }}});
  // One test of the coefficients is relative to c00 c11, the other, where that is tiny, absolute.
  const struct {
    std::array<double, 6> coefficients;
    StatusCode status;
  } cases[] = {{{0, 1e-7, 0, 1e-7, 0, 0}, StatusCode::BadCoefficients},
               {{kNaN, 1, 0, 1, kNaN, 0}, StatusCode::BadCoefficients},
               {{1, 0, kInfinity, 0, 1, 0}, StatusCode::BadCoefficients},
               {{0.01, 0, 0.5, 0, 1, 0}, StatusCode::NoDestinationOverlap},  // between two columns
               {{1, 0, 0, 0, 0.01, 0.5}, StatusCode::NoDestinationOverlap},  // between two rows
               {{0, 1, 0, 1, 0, 0}, StatusCode::Success},
               {{1e-7, 0, 0, 0, 1e-7, 0}, StatusCode::Success}};
  for (const auto& c : cases) {
    Arguments a = kRight;
    a.coefficients = c.coefficients;
    EXPECT_EQ(WarpBy(kWarpAffine, a), c.status) << &c - cases;
  }
}

TEST(WarpStatusTest, QuadsCheckInOrder) {
  for (const auto& warp : {kWarpAffineQuad, kWarpPerspectiveQuad}) {
    MendOneByOne(warp, {{StatusCode::BadQuadrilateral, [](Arguments& a) { a.srcQuad = kCorners; }},
                        {StatusCode::BadQuadrilateral, [](Arguments& a) { std::swap(a.srcQuad, a.dstQuad); }},
                        {StatusCode::BadQuadrilateral, [](Arguments& a) { a.srcQuad = a.dstQuad; }},
                        {StatusCode::NoSourceOverlap,
                         [](Arguments& a) {
                           a.srcRegion = {0, 6, 8, 6};
                         }},
                        {StatusCode::NoSourceOverlap, [](Arguments& a) { a.srcRegion = kWhole; }},
                        {StatusCode::NoDestinationOverlap,
                         [](Arguments& a) {
                           a.dstRegion = {8, 6, 8, 6};
                         }},
                        {StatusCode::NoDestinationOverlap, [](Arguments& a) { a.dstRegion = kWhole; }}});
    Arguments a = kRight;
    a.srcRegion = {3, 3, 1, 1};  // one pixel is enough
    EXPECT_EQ(WarpBy(warp, a), StatusCode::Success);
  }
  Arguments a = kRight;
  a.dstQuad[7] = 4;
  EXPECT_EQ(WarpBy(kWarpAffineQuad, a), StatusCode::QuadNotAffine);
  // The source quadrilateral misses the source region: nothing is left of it.
  a.srcQuad = {1, 1, 6, 1, 6, 5, 1, 5};
  a.srcRegion = {0, 0, 1, 1};
  EXPECT_EQ(WarpBy(kWarpAffineQuad, a), StatusCode::NoDestinationOverlap);
}

TEST(WarpStatusTest, WithoutMemoryNothingIsWritten) {
  const auto check = [](const auto& warp) {
    to = {};
    norvala_test::HeapWatch heap;
    heap.FailAt(0);
    EXPECT_EQ(WarpBy(warp, kRight), StatusCode::NoDestinationOverlap);
    EXPECT_EQ(to, Pixels{});
    heap.FailAt(-1);
    EXPECT_EQ(WarpBy(warp, kRight), StatusCode::Success);
    EXPECT_EQ(to, from);
    EXPECT_EQ(heap.allocations(), 1);
    EXPECT_EQ(heap.live(), 0);
  };
  check(kWarpAffine);
  check(kWarpAffineQuad);
  check(kWarpPerspectiveQuad);
}

TEST(ClassifyTest, TurnsAtTheCorners) {
  const struct {
    Quadrilateral quad;
    QuadrilateralShape shape;
  } cases[] = {{{{{0, 0}, {4, 0}, {4, 4}, {0, 4}}}, QuadrilateralShape::Clockwise},
               {{{{0, 0}, {0, 4}, {4, 4}, {4, 0}}}, QuadrilateralShape::CounterClockwise},
               {{{{0, 0}, {4, 0}, {1, 1}, {0, 4}}}, QuadrilateralShape::NotConvex},
               {{{{0, 0}, {4, 4}, {4, 0}, {0, 4}}}, QuadrilateralShape::NotConvex},
               {{{{0, 0}, {4, 0}, {8, 0}, {0, 4}}}, QuadrilateralShape::Degenerate},
               {{{{0, 0}, {4, 0}, {1, 1}, {2, 2}}}, QuadrilateralShape::Degenerate},
               {{{{0, 0}, {4, 0}, {4, 4}, {0, kNaN}}}, QuadrilateralShape::Degenerate}};
  for (const auto& c : cases) EXPECT_EQ(ClassifyQuadrilateral(c.quad), c.shape);
}

// Columns that end on pixels and a hair beside them.
TEST(RowSpansTest, TakesInPixelsAHairOutside) {
  const struct {
    double beside;
    RowSpan span;
  } cases[] = {{0, {3, 9}}, {5e-15, {3, 9}}, {2e-14, {4, 8}}, {-1e-9, {3, 9}}};
  for (const auto& c : cases) {
    const double left = 3 + c.beside;
    const double right = 9 - c.beside;
    const RowSpans spans(Polygon(Quadrilateral{{{left, 1}, {right, 1}, {right, 3}, {left, 3}}}), {0, 0, 20, 20}, true);
    ASSERT_EQ(spans.rows(), 3);
    EXPECT_EQ(spans[1].first, c.span.first) << &c - cases;
    EXPECT_EQ(spans[1].last, c.span.last) << &c - cases;
  }
}

template <class T>
class SamplingTest : public testing::Test {};
using PixelTypes = testing::Types<BW8, FLOAT32>;
TYPED_TEST_SUITE(SamplingTest, PixelTypes);

// The vectorised loops against the plain kernels, with positions on and around pixels, at borders and outside.
TYPED_TEST(SamplingTest, FastEqualsPlain) {
  Random random(1);
  const auto coordinate = [&](int size) {
    const double whole = RandomInt(random, 0, size - 1);
    const double rare[] = {kNaN, whole * 1e12 - 1e6};
    const double places[] = {whole,
                             whole + 0.5,
                             whole - 5e-8,
                             whole - 1.5e-7,
                             std::nextafter(whole, -1.0),
                             std::nextafter(whole + 0.5, 0.0),
                             RandomInt(random, 0, 10) != 0 ? whole : rare[random() % 2]};
    return random() % 2 != 0 ? places[random() % std::size(places)]
                             : std::uniform_real_distribution<double>(0, size - 1)(random);
  };
  constexpr struct {
    Interpolation kernel;
    int side;
    void (*sample)(const SourceImage&, double, double, Unaligned<TypeParam>*);
  } kPlain[] = {{Interpolation::Nearest, 1, SampleNearest<TypeParam>},
                {Interpolation::Linear, 2, SampleLinear<TypeParam>},
                {Interpolation::Cubic, 4, SampleCubic<TypeParam>}};
  for (int round = 0; round < 3000; ++round) {
    const int low = round % 4 == 0 ? 1 : 4;
    Image<TypeParam> src(RandomInt(random, low, 40), RandomInt(random, low, 40), norvala_test::RandomLayout(random));
    src.Fill([&] { return static_cast<TypeParam>(random() % 256); });
    const SourceImage source = {src.data(), src.step(), {src.width(), src.height()}};
    const int count = RandomInt(random, 1, 70);
    // Not on the heap, which need not be aligned for vectors.
    Position positions[70];
    for (Position& p : positions) {
      p = Position{coordinate(src.width()), coordinate(src.height())};
      // Away from the borders, so that long runs take the fast loops.
      if (round % 2 != 0) p = Position{p[0] * 0.4 + src.width() * 0.25, p[1] * 0.4 + src.height() * 0.25};
    }
    Image<TypeParam> fast(count, 1, norvala_test::RandomLayout(random));
    Image<TypeParam> plain(fast);
    for (const auto& [kernel, side, sample] : kPlain) {
      if (src.width() < side || src.height() < side) continue;
      Sampler fastSampler(source, sizeof(TypeParam) == 1 ? PixelDepthCode::Unsigned8 : PixelDepthCode::Float32, kernel);
      fastSampler(positions, count, kAnyOrder, fast.data());
      for (int k = 0; k < count; ++k) sample(source, positions[k][0], positions[k][1], Row(plain.data(), 0, 0) + k);
      ASSERT_EQ(fast.Bytes(), plain.Bytes()) << side << " round " << round;
    }
  }
}

// One sampler over lists of positions of which most, some or none lie on ties, so that it goes to doubles and back, and
// a hair before pixels where the slopes on both sides differ most, which is where single precision is furthest off.
TEST(LinearRunTest, DoubtfulSumsEqualPlain) {
  Random random(2);
  const auto uniform = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  for (int round = 0; round < 20; ++round) {
    Image<BW8> src(100, 50);
    src.Fill([&] { return static_cast<BW8>(round % 2 != 0 ? random() % 256 : random() % 2 * 255); });
    const SourceImage source = {src.data(), src.step(), {src.width(), src.height()}};
    Sampler sample(source, PixelDepthCode::Unsigned8, Interpolation::Linear);
    for (int list = 0; list < 100; ++list) {
      const int kind = RandomInt(random, 0, 4);
      const auto coordinate = [&](int size) {
        const double whole = RandomInt(random, 2, size - 3);
        const double near[] = {whole + 0.5, whole - uniform(0, 1e-7), whole + RandomInt(random, 0, 255) / 510.0};
        const bool isTie = kind != 0 && (kind != 1 || random() % 32 == 0);
        return isTie ? near[std::max(kind - 2, 0)] + (kind == 4 ? uniform(-1e-6, 1e-6) : 0) : uniform(1, size - 2);
      };
      constexpr int kCount = 160;
      Position positions[kCount];
      for (Position& p : positions) p = Position{coordinate(src.width()), coordinate(src.height())};
      BW8 fast[kCount];
      BW8 plain[kCount];
      sample(positions, kCount, kAnyOrder, fast);
      for (int k = 0; k < kCount; ++k) SampleLinear<BW8>(source, positions[k][0], positions[k][1], plain + k);
      ASSERT_TRUE(std::equal(fast, fast + kCount, plain)) << "round " << round << " list " << list;
    }
  }
}

// Both sides of the longest side that coordinates in single precision reach.
TEST(LinearRunTest, LongImagesEqualPlain) {
  Random random(3);
  for (const int longest : {(1 << 19) - 1, 1 << 19, (1 << 19) + 1, (1 << 19) + 100}) {
    EXPECT_EQ(LinearInSingles::Serves({longest, 2}), longest <= 1 << 19);
    EXPECT_EQ(LinearInSingles::Serves({2, longest}), longest <= 1 << 19);
    std::vector<BW8> pixels(2 * std::size_t(longest));
    for (BW8& pixel : pixels) pixel = static_cast<BW8>(random());
    for (const bool isWide : {true, false}) {
      const SourceImage source = {pixels.data(), isWide ? longest : 2, {isWide ? longest : 2, isWide ? 2 : longest}};
      constexpr int kCount = 64;
      Position positions[kCount];
      for (int k = 0; k < kCount; ++k) {
        const double far = longest - 1.5 - (kCount - 1 - k) * 0.7;
        const double near = k / 126.0;
        positions[k] = isWide ? Position{far, near} : Position{near, far};
      }
      BW8 fast[kCount];
      BW8 plain[kCount];
      Sampler(source, PixelDepthCode::Unsigned8, Interpolation::Linear)(positions, kCount, kMonotone, fast);
      for (int k = 0; k < kCount; ++k) SampleLinear<BW8>(source, positions[k][0], positions[k][1], plain + k);
      ASSERT_TRUE(std::equal(fast, fast + kCount, plain)) << longest << isWide;
    }
  }
}

// Just inside and just outside each of its conditions.
TEST(ProjectedRowTest, SlackHasConditions) {
  constexpr double kFew = 0x1p-10;
  const struct {
    ProjectedRow row;
    double slack;
  } cases[] = {
      {{{1, 1}, {0, 0}, 0, 1}, kFew},
      {{{1, 1}, {0, 0}, 0, -1}, kFew},
      {{{1, 1}, {0, 0}, 0, 0}, kAnyOrder},
      {{{1, 1}, {0, 0}, -0.01, 1.5}, kFew},  // the denominator falls to 0.5 at the last pixel
      {{{1, 1}, {0, 0}, -0.01, 0.5}, kAnyOrder},
      {{{1, 1}, {0, 0}, -1, 100 + 200.0 / 254.5}, kFew},
      {{{1, 1}, {0, 0}, -1, 100 + 200.0 / 255.5}, kAnyOrder},
      {{{0x1p32, 0}, {0x1p39 - 100 * 0x1p32, 0}, 0, 1}, kFew},
      {{{0x1p32, 0}, {0x1p39 - 99 * 0x1p32, 0}, 0, 1}, kAnyOrder},
      {{{0, -0x1p32}, {0, 0x1p39 - 100 * 0x1p32}, 0, 1}, kFew},
      {{{0, -0x1p32}, {0, 0x1p39 - 99 * 0x1p32}, 0, 1}, kAnyOrder},
      {{{0, 0}, {0, 0}, 0, 1.001e-200}, kFew},
      {{{0, 0}, {0, 0}, 0, 0.999e-200}, kAnyOrder},
      {{{0, 0}, {0, 0}, 0, 0.999e200}, kFew},
      {{{0, 0}, {0, 0}, 0, 1.001e200}, kAnyOrder},
      {{{kNaN, 0}, {0, 0}, 0, 1}, kAnyOrder},
      {{{0, 0}, {0, kInfinity}, 0, 1}, kAnyOrder},
      {{{0, 0}, {0, 0}, kNaN, 1}, kAnyOrder},
      {{{0, 0}, {0, 0}, 1, kInfinity}, kAnyOrder},
  };
  for (const auto& c : cases) EXPECT_EQ(c.row.Slack(0, 100), c.slack) << &c - cases;
}

// Cancelling terms make the quotients jump about: by less than the slack, wherever there is one.
TEST(ProjectedRowTest, SlackHolds) {
  Random random(4);
  const auto uniform = [&](double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  };
  int held = 0;
  for (int round = 0; round < 20000; ++round) {
    const double first = RandomInt(random, 0, 1) != 0 ? 0 : RandomInt(random, 0, INT32_MAX - 300);
    const double last = first + RandomInt(random, 0, 255);
    ProjectedRow row;
    row.scaleStep = uniform(-1, 1);
    row.scaleBase = -row.scaleStep * last + std::ldexp(uniform(-1, 1), RandomInt(random, -3, 30));
    for (int i = 0; i < 2; ++i) {
      row.step[i] = std::ldexp(uniform(-1, 1), RandomInt(random, 0, 30));
      row.base[i] = -row.step[i] * (random() % 2 != 0 ? first : last) + uniform(0, 1000) * row.Scale(first);
    }
    const double slack = row.Slack(first, last);
    const Position a = row.At(first);
    const Position b = row.At(last);
    if (slack == kAnyOrder || !(std::fabs(a[0]) < INT32_MAX && std::fabs(b[0]) < INT32_MAX) ||
        !(std::fabs(a[1]) < INT32_MAX && std::fabs(b[1]) < INT32_MAX)) {
      continue;
    }
    ++held;
    for (double x = first; x <= last; ++x) {
      for (int i = 0; i < 2; ++i) {
        const double q = row.At(x)[i];
        ASSERT_TRUE(q >= std::min(a[i], b[i]) - slack && q <= std::max(a[i], b[i]) + slack) << round;
      }
    }
  }
  EXPECT_GT(held, 1000);
}

}  // namespace
}  // namespace norvala
