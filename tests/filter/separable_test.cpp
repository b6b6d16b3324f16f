#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#ifndef _WIN32
#include <unistd.h>

#include <csignal>
#endif

#include "norvala.h"
#include "support/image.h"

namespace norvala_test {
namespace {

enum class Along { Row, Column };

template <class Tap>
struct Job {
  Along along;
  int width;
  int height;
  std::vector<Tap> kernel;
  int anchor;
  std::int32_t divisor = 1;  // integer taps only

  int taps() const { return static_cast<int>(kernel.size()); }
};

int Call(const Job<std::int32_t>& job, const BW8* src, int srcStep, BW8* dst, int dstStep) {
  const auto filter = job.along == Along::Row ? Norvala_FilterRowBW8 : Norvala_FilterColumnBW8;
  return filter(src, srcStep, dst, dstStep, job.width, job.height, job.kernel.data(), job.taps(), job.anchor,
                job.divisor);
}
int Call(const Job<std::int32_t>& job, const BW16* src, int srcStep, BW16* dst, int dstStep) {
  const auto filter = job.along == Along::Row ? Norvala_FilterRowBW16 : Norvala_FilterColumnBW16;
  return filter(src, srcStep, dst, dstStep, job.width, job.height, job.kernel.data(), job.taps(), job.anchor,
                job.divisor);
}
int Call(const Job<float>& job, const BW16* src, int srcStep, BW16* dst, int dstStep) {
  const auto filter = job.along == Along::Row ? Norvala_FilterRow32fBW16 : Norvala_FilterColumn32fBW16;
  return filter(src, srcStep, dst, dstStep, job.width, job.height, job.kernel.data(), job.taps(), job.anchor);
}
int Call(const Job<float>& job, const FLOAT32* src, int srcStep, FLOAT32* dst, int dstStep) {
  const auto filter = job.along == Along::Row ? Norvala_FilterRowFLOAT32 : Norvala_FilterColumnFLOAT32;
  return filter(src, srcStep, dst, dstStep, job.width, job.height, job.kernel.data(), job.taps(), job.anchor);
}

// `pixels` holds what the taps of one output pixel meet, in the order of the taps.
BW8 Naive(const Job<std::int32_t>& job, const std::vector<BW8>& pixels) {
  std::uint32_t wrapped = 0;
  for (std::size_t i = 0; i < pixels.size(); ++i) wrapped += static_cast<std::uint32_t>(job.kernel[i]) * pixels[i];
  const auto sum = static_cast<std::int32_t>(wrapped);
  if (job.divisor > 0 && std::has_single_bit(static_cast<std::uint32_t>(job.divisor))) {
    if (sum <= 0) return 0;
    return static_cast<BW8>(std::min<std::int64_t>((std::int64_t{sum} + job.divisor / 2) / job.divisor, 255));
  }
  const auto factor = static_cast<float>(1.0 / job.divisor);
  const double value = static_cast<double>(sum) * static_cast<double>(factor);
  if (value <= 0.0) return 0;
  return value >= 255.0 ? BW8{255} : static_cast<BW8>(value + 0.5);
}

template <class T>
double NaiveSum(const std::vector<float>& kernel, const std::vector<T>& pixels) {
  double sum = 0.0;
  for (std::size_t i = pixels.size(); i-- > 0;) {
    sum += static_cast<double>(pixels[i]) * static_cast<double>(kernel[i]);
  }
  return sum;
}

BW16 Naive(const Job<float>& job, const std::vector<BW16>& pixels) {
  double sum = NaiveSum(job.kernel, std::vector<std::int16_t>(pixels.begin(), pixels.end()));
  if (std::isnan(sum)) return 0;
  if (sum > 0.0) sum += 0.5;
  if (sum < 0.0) sum -= 0.5;
  if (sum > 32767.0) return 32767;
  if (sum < -32768.0) return 0x8000;
  return static_cast<BW16>(static_cast<std::int16_t>(sum));
}

BW16 Naive(const Job<std::int32_t>& job, const std::vector<BW16>& pixels) {
  const auto factor = static_cast<float>(1.0 / job.divisor);
  std::vector<float> scaled;
  for (const std::int32_t tap : job.kernel) {
    const auto converted = static_cast<float>(tap);
    scaled.push_back(static_cast<float>(static_cast<double>(converted) * static_cast<double>(factor)));
  }
  return Naive(Job<float>{job.along, job.width, job.height, scaled, job.anchor}, pixels);
}

FLOAT32 Naive(const Job<float>& job, const std::vector<FLOAT32>& pixels) {
  return static_cast<FLOAT32>(NaiveSum(job.kernel, pixels));
}

// The same bits, or not a number on both sides.
template <class T>
bool Same(T a, T b) {
  if constexpr (std::is_same_v<T, float>) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
  }
  return a == b;
}

// Filters a region whose readable surroundings end where the kernel's reach ends, at a no-access page before or behind.
template <class T, class Tap>
void Check(Random& random, const Job<Tap>& job) {
  SCOPED_TRACE(testing::Message() << (job.along == Along::Row ? "row " : "column ") << job.width << "x" << job.height
                                  << ", " << job.taps() << " taps, anchor " << job.anchor << ", first tap "
                                  << job.kernel[0] << ", divisor " << job.divisor);
  constexpr int kSize = sizeof(T);
  const bool row = job.along == Along::Row;
  // Steps are taken down to whole pixels; the images have whole ones, the calls may not.
  const auto layout = [&] { return Layout{0, kSize * RandomInt(random, 0, 5), RandomInt(random, 0, kSize - 1)}; };
  const auto flush = RandomInt(random, 0, 1) != 0 ? GuardedMemory::Flush::End : GuardedMemory::Flush::Start;
  Image<T> reach(job.width + (row ? job.taps() - 1 : 0), job.height + (row ? 0 : job.taps() - 1), layout(), flush);
  reach.FillRandom(random);
  Image<T> dst(job.width, job.height, layout());
  const Image<T> before(dst);
  const std::vector<unsigned char> source = reach.Bytes();

  const int outside = job.taps() - 1 - job.anchor;
  const auto origin = reinterpret_cast<std::uintptr_t>(reach.data()) +
                      static_cast<std::uintptr_t>(static_cast<std::intptr_t>(outside) * (row ? kSize : reach.step()));
  ASSERT_EQ(Call(job, reinterpret_cast<const T*>(origin), reach.step() + RandomInt(random, 0, kSize - 1), dst.data(),
                 dst.step() + RandomInt(random, 0, kSize - 1)),
            0);

  std::vector<T> pixels(job.kernel.size());
  for (int y = 0; y < job.height; ++y) {
    for (int x = 0; x < job.width; ++x) {
      for (int i = 0; i < job.taps(); ++i) {
        const int position = job.taps() - 1 - i;
        pixels[static_cast<std::size_t>(i)] = row ? reach.Get(x + position, y) : reach.Get(x, y + position);
      }
      const T expected = Naive(job, pixels);
      ASSERT_TRUE(Same(dst.Get(x, y), expected))
          << "at " << x << ", " << y << ": " << +dst.Get(x, y) << " for " << +expected;
      dst.Set(x, y, before.Get(x, y));
    }
  }
  ASSERT_EQ(dst.Bytes(), before.Bytes()) << "bytes outside the region";
  ASSERT_EQ(reach.Bytes(), source);
}

template <class Tap>
Job<Tap> RandomJob(Random& random) {
  Job<Tap> job{};
  job.along = RandomInt(random, 0, 1) != 0 ? Along::Row : Along::Column;
  job.width = RandomInt(random, 0, 30) == 0 ? RandomInt(random, 100, 1200) : RandomInt(random, 1, 70);
  job.height = RandomInt(random, 1, job.width > 70 ? 4 : 20);
  if (RandomInt(random, 0, 30) == 0) {  // so tall that column filters move on to further rows of their own
    job.width = RandomInt(random, 1, 10);
    job.height = RandomInt(random, 100, 300);
  }
  const int taps = RandomInt(random, 0, 9) == 0 ? RandomInt(random, 17, 70) : RandomInt(random, 1, 16);
  job.kernel.resize(static_cast<std::size_t>(taps));
  job.anchor = RandomInt(random, 0, 4) == 0 ? RandomInt(random, -40, 100) : RandomInt(random, 0, taps - 1);
  return job;
}

// Makes every other kernel symmetric.
template <class Tap>
void Mirror(Random& random, std::vector<Tap>& kernel) {
  if (RandomInt(random, 0, 1) == 0) return;
  for (std::size_t i = 0; i < kernel.size() / 2; ++i) kernel[kernel.size() - 1 - i] = kernel[i];
}

std::int32_t RandomDivisor(Random& random) {
  switch (RandomInt(random, 0, 7)) {
    case 0:
      return 1;
    case 1:
      return 1 << RandomInt(random, 1, 16);
    case 2:
      return 1 << RandomInt(random, 17, 30);
    case 3:
      return -RandomInt(random, 1, 3000);
    case 4:
      return RandomInt(random, 3, 100000);
    case 5:
      return RandomInt(random, 0, 1) != 0 ? INT32_MAX : -INT32_MAX;
    default:
      return RandomInt(random, 3, 300);
  }
}

// Taps of all magnitudes, so that sums of 16, 24 and 31 bits and those that wrap occur, each with all divisors; half
// the time the divisor is the sum of the taps, as in kernels that people use.
TEST(FilterBW8Test, EqualsTheNaiveOne) {
  Random random(1);
  for (int round = 0; round < 4000; ++round) {
    Job<std::int32_t> job = RandomJob<std::int32_t>(random);
    static constexpr int kMagnitudes[] = {3, 20, 60, 200, 3000, 30000, 400000, INT32_MAX};
    const int most = kMagnitudes[RandomInt(random, 0, 7)];
    const int least = RandomInt(random, 0, 1) == 0 ? 0 : -most;
    std::int64_t sum = 0;
    for (std::int32_t& tap : job.kernel) tap = RandomInt(random, least, most);
    if (most == INT32_MAX && RandomInt(random, 0, 1) == 0) job.kernel[0] = INT32_MIN;
    Mirror(random, job.kernel);
    for (const std::int32_t tap : job.kernel) sum += tap;
    job.divisor = RandomDivisor(random);
    if (RandomInt(random, 0, 1) == 0 && sum != 0 && std::abs(sum) < INT32_MAX) job.divisor = static_cast<int>(sum);
    Check<BW8>(random, job);
    if (HasFatalFailure()) return;
  }
}

TEST(FilterBW16Test, EqualsTheNaiveOne) {
  Random random(2);
  for (int round = 0; round < 2000; ++round) {
    Job<std::int32_t> job = RandomJob<std::int32_t>(random);
    const int most = RandomInt(random, 0, 3) == 0 ? INT32_MAX : RandomInt(random, 1, 2000);
    for (std::int32_t& tap : job.kernel) tap = RandomInt(random, -most, most);
    Mirror(random, job.kernel);
    job.divisor = RandomInt(random, 0, 20) == 0 ? INT32_MIN : RandomDivisor(random);
    Check<BW16>(random, job);
    if (HasFatalFailure()) return;
  }
}

TEST(Filter32fBW16Test, EqualsTheNaiveOne) {
  Random random(3);
  for (int round = 0; round < 2000; ++round) {
    Job<float> job = RandomJob<float>(random);
    const float scale = RandomInt(random, 0, 1) != 0 ? 1.0F : 1.0F / 256.0F;
    for (float& tap : job.kernel) tap = RandomFloat(random) * scale;
    Check<BW16>(random, job);
    // Taps without surprises, whose sums land near and on halves.
    for (float& tap : job.kernel) tap = static_cast<float>(RandomInt(random, -8, 8)) / 16.0F;
    Check<BW16>(random, job);
    // Full mantissas of few or many exponents, which decides whether the order of the products matters.
    const int exponents = RandomInt(random, 1, 30);
    for (float& tap : job.kernel) {
      const float mantissa = std::uniform_real_distribution<float>(-1.0F, 1.0F)(random);
      tap = std::ldexp(mantissa, 5 - RandomInt(random, 0, exponents));
    }
    Mirror(random, job.kernel);
    Check<BW16>(random, job);
    if (HasFatalFailure()) return;
  }
}

TEST(FilterFloatTest, EqualsTheNaiveOne) {
  Random random(4);
  for (int round = 0; round < 3000; ++round) {
    Job<float> job = RandomJob<float>(random);
    const bool special = RandomInt(random, 0, 1) != 0;
    for (float& tap : job.kernel) {
      tap = special ? RandomFloat(random) : std::uniform_real_distribution<float>(-1.0F, 1.0F)(random);
    }
    Check<FLOAT32>(random, job);
    if (HasFatalFailure()) return;
  }
}

TEST(FilterFloatTest, SumsStartAtPositiveZero) {
  const float src = -0.0F;
  const float tap = 1.0F;
  float dst = 1.0F;
  ASSERT_EQ(Norvala_FilterRowFLOAT32(&src, 4, &dst, 4, 1, 1, &tap, 1, 0), 0);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(dst), 0U);
}

// Every sum that one tap makes, against every divisor with a fast rule and some beyond: the thresholds between bytes.
TEST(FilterBW8Test, DividesEverySumOfAPixelRight) {
  BW8 src[256];
  for (int i = 0; i < 256; ++i) src[i] = static_cast<BW8>(i);
  for (std::int32_t divisor = 1; divisor < 9000; divisor += divisor < 600 ? 1 : 97) {
    for (const std::int32_t tap : {1, 2, 7, 100, 255, 257, 1000, 32000, -1}) {
      const Job<std::int32_t> job{Along::Row, 256, 1, {tap}, 0, divisor};
      BW8 dst[256];
      ASSERT_EQ(Call(job, src, 256, dst, 256), 0);
      for (int i = 0; i < 256; ++i) {
        ASSERT_EQ(dst[i], Naive(job, std::vector<BW8>{src[i]})) << i << " * " << tap << " / " << divisor;
      }
    }
  }
}

BW8 FilterOne(std::int32_t pixel, std::int32_t tap, std::int32_t divisor) {
  const auto src = static_cast<BW8>(pixel);
  BW8 dst = 77;
  EXPECT_EQ(Norvala_FilterColumnBW8(&src, 1, &dst, 1, 1, 1, &tap, 1, 0, divisor), 0);
  return dst;
}

TEST(FilterBW8Test, RoundsClampsAndWraps) {
  EXPECT_EQ(FilterOne(5, 1, 3), 2);
  EXPECT_EQ(FilterOne(5, -1, 3), 0);
  EXPECT_EQ(FilterOne(5, 1, -3), 0);
  EXPECT_EQ(FilterOne(5, -1, -3), 2);
  EXPECT_EQ(FilterOne(6, 1, 4), 2);
  EXPECT_EQ(FilterOne(5, 1, 4), 1);
  EXPECT_EQ(FilterOne(255, 2, 1), 255);
  EXPECT_EQ(FilterOne(1, INT32_MIN, -1), 255);
  EXPECT_EQ(FilterOne(2, INT32_MIN, -1), 0);
  EXPECT_EQ(FilterOne(255, 16843010, 1 << 24), 0);  // 2^32 + 254 wraps to 254
  EXPECT_EQ(FilterOne(1, INT32_MAX, 1 << 30), 2);   // the rounding does not wrap
}

std::int16_t FilterOne(std::int16_t pixel, float tap) {
  const auto src = static_cast<BW16>(pixel);
  BW16 dst = 77;
  EXPECT_EQ(Norvala_FilterRow32fBW16(&src, 2, &dst, 2, 1, 1, &tap, 1, 0), 0);
  return static_cast<std::int16_t>(dst);
}

TEST(Filter32fBW16Test, RoundsHalfAwayFromZeroAndSaturates) {
  EXPECT_EQ(FilterOne(-1, 0.5F), -1);
  EXPECT_EQ(FilterOne(1, 0.5F), 1);
  EXPECT_EQ(FilterOne(1, 0.49F), 0);
  EXPECT_EQ(FilterOne(-1, 0.49F), 0);
  EXPECT_EQ(FilterOne(1, 32767.4F), 32767);
  EXPECT_EQ(FilterOne(1, 32767.6F), 32767);
  EXPECT_EQ(FilterOne(-1, 32768.4F), -32768);
  EXPECT_EQ(FilterOne(20000, -2.0F), -32768);
  // On both sides of what needs no saturation.
  EXPECT_EQ(FilterOne(-32768, 1.0F), -32768);
  EXPECT_EQ(FilterOne(-32768, 1.00001F), -32768);
  EXPECT_EQ(FilterOne(32767, 1.00001F), 32767);
  EXPECT_EQ(FilterOne(32767, 1.00002F), 32767);
  EXPECT_EQ(FilterOne(-32768, -1.0F), 32767);
  EXPECT_EQ(FilterOne(0, std::numeric_limits<float>::infinity()), 0);  // not a number
  EXPECT_EQ(FilterOne(-3, std::numeric_limits<float>::infinity()), -32768);
}

// A sum so large that a product after it is lost; in another order it would not be.
TEST(Filter32fBW16Test, AddsInTheOrderOfThePixels) {
  const std::int16_t src[] = {-100, 1, 100};
  const std::vector<float> kernel = {1e16F, 1.25F, 1e16F};
  for (const Along along : {Along::Row, Along::Column}) {
    BW16 dst = 77;
    const auto* center = reinterpret_cast<const BW16*>(src) + 1;
    ASSERT_EQ(Call(Job<float>{along, 1, 1, kernel, 1}, center, along == Along::Row ? 6 : 2, &dst, 2), 0);
    EXPECT_EQ(dst, 0);
  }
}

TEST(SeparableFailureTest, WritesNothing) {
  Image<BW8> bytes(8, 8, {4, 0, 0});
  Image<BW16> shorts(8, 8, {4, 0, 0});
  Image<FLOAT32> floats(8, 8, {4, 0, 0});
  const std::int32_t taps[] = {1, 2, 1};
  const float weights[] = {1, 2, 1};
  const auto fails = [&](auto filter, auto& image, const auto* kernel, auto... divisor) {
    auto* p = image.data();
    using Pixel = std::remove_pointer_t<decltype(p)>;
    const auto before = image.Bytes();
    const int step = image.step();
    const int tight = 8 * static_cast<int>(sizeof(Pixel));
    Pixel* null = nullptr;
    EXPECT_EQ(filter(null, step, p, step, 8, 8, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(filter(p, step, null, step, 8, 8, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(filter(p, step, p, step, 8, 8, decltype(kernel){nullptr}, 3, 1, divisor...), -1);
    EXPECT_EQ(filter(p, step, p, step, 0, 8, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(filter(p, step, p, step, 8, -1, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(filter(p, step, p, step, 8, 8, kernel, 0, 1, divisor...), -1);
    EXPECT_EQ(filter(p, tight - 1, p, step, 8, 8, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(filter(p, step, p, tight - 1, 8, 8, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(filter(p, step, p, step, INT32_MAX, 8, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(filter(p, INT32_MIN, p, INT32_MIN, 8, 8, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(image.Bytes(), before);
  };
  fails(Norvala_FilterRowBW8, bytes, taps, 4);
  fails(Norvala_FilterColumnBW8, bytes, taps, 4);
  fails(Norvala_FilterRowBW16, shorts, taps, 4);
  fails(Norvala_FilterColumnBW16, shorts, taps, 4);
  fails(Norvala_FilterRow32fBW16, shorts, weights);
  fails(Norvala_FilterColumn32fBW16, shorts, weights);
  fails(Norvala_FilterRowFLOAT32, floats, weights);
  fails(Norvala_FilterColumnFLOAT32, floats, weights);
  EXPECT_EQ(Norvala_FilterRowBW8(bytes.data(), 16, bytes.data(), 16, 8, 8, taps, 3, 1, 0), -1);
  EXPECT_EQ(Norvala_FilterColumnBW16(shorts.data(), 32, shorts.data(), 32, 8, 8, taps, 3, 1, 0), -1);
}

// Only filters along rows ask for a source step that holds the reach.
TEST(SeparableFailureTest, StepsOfRowFiltersHoldTheReach) {
  const std::int32_t taps[] = {0, 1, 0};
  const float weights[] = {0, 1, 0};
  Image<FLOAT32> memory(30, 3);
  memory.Fill([] { return 0.0F; });
  const auto check = [&](auto row, auto column, auto pixel, const auto* kernel, auto... divisor) {
    constexpr int kSize = sizeof pixel;
    auto* src = reinterpret_cast<decltype(pixel)*>(memory.data()) + 12;
    auto* dst = reinterpret_cast<decltype(pixel)*>(memory.data()) + 60;
    EXPECT_EQ(row(src, 10 * kSize, dst, 8 * kSize, 8, 1, kernel, 3, 1, divisor...), 0);
    EXPECT_EQ(row(src, 10 * kSize - 1, dst, 8 * kSize, 8, 1, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(column(src, 8 * kSize, dst, 8 * kSize, 8, 1, kernel, 3, 1, divisor...), 0);
    EXPECT_EQ(column(src, 8 * kSize - 1, dst, 8 * kSize, 8, 1, kernel, 3, 1, divisor...), -1);
    EXPECT_EQ(row(src, INT32_MAX, dst, 8 * kSize, 8, 1, kernel, INT32_MAX, 1, divisor...), -1);
  };
  check(Norvala_FilterRowBW8, Norvala_FilterColumnBW8, BW8{}, taps, 1);
  check(Norvala_FilterRow32fBW16, Norvala_FilterColumn32fBW16, BW16{}, weights);
  check(Norvala_FilterRowFLOAT32, Norvala_FilterColumnFLOAT32, FLOAT32{}, weights);
}

#ifndef _WIN32
// A second later the call has not returned.
TEST(FilterBW8DeathTest, NeverReturnsForTheLowestDivisor) {
  const BW8 src[3] = {1, 2, 3};
  const std::int32_t tap = 1;
  BW8 dst[3];
  EXPECT_EXIT(
      {
        alarm(1);
        Norvala_FilterRowBW8(src, 3, dst, 3, 3, 1, &tap, 1, 0, INT32_MIN);
      },
      testing::KilledBySignal(SIGALRM), "");
  // The checks come first.
  EXPECT_EQ(Norvala_FilterRowBW8(src, 2, dst, 3, 3, 1, &tap, 1, 0, INT32_MIN), -1);
}
#endif

}  // namespace
}  // namespace norvala_test
