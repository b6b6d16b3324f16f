#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "geometry/warp/linear_run.h"
#include "geometry/warp/projected_row.h"
#include "geometry/warp/sample_pixel.h"
#include "geometry/warp/sampling.h"

// The ranges of the quick forms that sample rows of positions.

namespace norvala {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

class Random {
 public:
  explicit Random(unsigned seed) : generator_(seed) {}
  int Int(int low, int high) { return low + static_cast<int>(generator_() % static_cast<unsigned>(high - low + 1)); }
  double Real(double low, double high) { return low + (high - low) * (static_cast<double>(generator_()) * 0x1p-32); }
  std::vector<BW8> Pixels(int count, int values) {
    std::vector<BW8> pixels(static_cast<std::size_t>(count));
    for (BW8& pixel : pixels) pixel = static_cast<BW8>(Int(0, values - 1) * 255 / (values - 1));
    return pixels;
  }

 private:
  std::mt19937 generator_;
};

template <int count>
void EqualsPlain(Sampler& sampler, const SourceImage& source, const Position (&positions)[count], double slack) {
  BW8 fast[count];
  BW8 plain[count];
  sampler(positions, count, slack, fast);
  for (int k = 0; k < count; ++k) SampleLinear<BW8>(source, positions[k][0], positions[k][1], plain + k);
  ASSERT_TRUE(std::equal(fast, fast + count, plain));
}

// One sampler over lists of positions of which most, some or none lie on ties, so that it goes to doubles and back, and
// a hair before pixels where the slopes on both sides differ most, which is where single precision is furthest off.
TEST(LinearRunTest, DoubtfulSumsEqualPlain) {
  Random random(2);
  for (int round = 0; round < 20; ++round) {
    const std::vector<BW8> pixels = random.Pixels(100 * 50, round % 2 != 0 ? 256 : 2);
    const SourceImage source = {pixels.data(), 100, {100, 50}};
    Sampler sampler(source, PixelDepthCode::Unsigned8, Interpolation::Linear);
    for (int list = 0; list < 100; ++list) {
      const int kind = random.Int(0, 4);
      const auto coordinate = [&](int size) {
        const double whole = random.Int(2, size - 3);
        const double near[] = {whole + 0.5, whole - random.Real(0, 1e-7), whole + random.Int(0, 255) / 510.0};
        const bool isTie = kind != 0 && (kind != 1 || random.Int(0, 31) == 0);
        return isTie ? near[std::max(kind - 2, 0)] + (kind == 4 ? random.Real(-1e-6, 1e-6) : 0)
                     : random.Real(1, size - 2);
      };
      Position positions[160];
      for (Position& p : positions) p = Position{coordinate(100), coordinate(50)};
      EqualsPlain(sampler, source, positions, kAnyOrder);
    }
  }
}

// Both sides of the longest side that coordinates in single precision reach.
TEST(LinearRunTest, LongImagesEqualPlain) {
  Random random(3);
  for (const int longest : {(1 << 19) - 1, 1 << 19, (1 << 19) + 1, (1 << 19) + 100}) {
    EXPECT_EQ(LinearInSingles::Serves({longest, 2}), longest <= 1 << 19);
    EXPECT_EQ(LinearInSingles::Serves({2, longest}), longest <= 1 << 19);
    const std::vector<BW8> pixels = random.Pixels(2 * longest, 256);
    for (const bool isWide : {true, false}) {
      const SourceImage source = {pixels.data(), isWide ? longest : 2, {isWide ? longest : 2, isWide ? 2 : longest}};
      Position positions[64];
      for (int k = 0; k < 64; ++k) {
        const double far = longest - 1.5 - (63 - k) * 0.7;
        const double near = k / 126.0;
        positions[k] = isWide ? Position{far, near} : Position{near, far};
      }
      Sampler sampler(source, PixelDepthCode::Unsigned8, Interpolation::Linear);
      EqualsPlain(sampler, source, positions, kMonotone);
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
  int held = 0;
  for (int round = 0; round < 20000; ++round) {
    const double first = random.Int(0, 1) != 0 ? 0 : random.Int(0, 1 << 30);
    const double last = first + random.Int(0, 255);
    ProjectedRow row;
    row.scaleStep = random.Real(-1, 1);
    row.scaleBase = -row.scaleStep * last + std::ldexp(random.Real(-1, 1), random.Int(-3, 30));
    for (int i = 0; i < 2; ++i) {
      row.step[i] = std::ldexp(random.Real(-1, 1), random.Int(0, 30));
      row.base[i] = -row.step[i] * (random.Int(0, 1) != 0 ? first : last) + random.Real(0, 1000) * row.Scale(first);
    }
    const double slack = row.Slack(first, last);
    const Position a = row.At(first);
    const Position b = row.At(last);
    const auto isNear = [](const Position& p) { return std::fabs(p[0]) < 0x1p31 && std::fabs(p[1]) < 0x1p31; };
    if (slack == kAnyOrder || !isNear(a) || !isNear(b)) continue;
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
