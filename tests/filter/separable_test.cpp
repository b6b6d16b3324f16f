#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numeric>
#ifndef _WIN32
#include <unistd.h>

#include <csignal>
#endif

#include "norvala.h"
#include "support/old_image.h"

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

template <class T, class Tap>
int Call(const Job<Tap>& job, const T* src, int srcStep, T* dst, int dstStep) {
  const bool row = job.along == Along::Row;
  const auto call = [&](auto filter, auto... divisor) {
    return filter(src, srcStep, dst, dstStep, job.width, job.height, job.kernel.data(), job.taps(), job.anchor,
                  divisor...);
  };
  if constexpr (std::is_same_v<T, BW8>) {
    return call(row ? Norvala_FilterRowBW8 : Norvala_FilterColumnBW8, job.divisor);
  } else if constexpr (std::is_same_v<T, FLOAT32>) {
    return call(row ? Norvala_FilterRowFLOAT32 : Norvala_FilterColumnFLOAT32);
  } else if constexpr (std::is_same_v<Tap, float>) {
    return call(row ? Norvala_FilterRow32fBW16 : Norvala_FilterColumn32fBW16);
  } else {
    return call(row ? Norvala_FilterRowBW16 : Norvala_FilterColumnBW16, job.divisor);
  }
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
  const double factor = static_cast<float>(1.0 / job.divisor);
  Job<float> scaled{job.along, job.width, job.height, {}, job.anchor};
  for (const std::int32_t tap : job.kernel) {
    scaled.kernel.push_back(static_cast<float>(static_cast<double>(static_cast<float>(tap)) * factor));
  }
  return Naive(scaled, pixels);
}

FLOAT32 Naive(const Job<float>& job, const std::vector<FLOAT32>& pixels) {
  return static_cast<FLOAT32>(NaiveSum(job.kernel, pixels));
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
  Image<T> expected(dst);
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
      const T value = Naive(job, pixels);
      // One NaN is as good as another.
      const bool bothNan = value != value && dst.Get(x, y) != dst.Get(x, y);
      expected.Set(x, y, bothNan ? dst.Get(x, y) : value);
    }
  }
  ASSERT_EQ(dst.Bytes(), expected.Bytes());
  ASSERT_EQ(reach.Bytes(), source);
}

// A job whose taps come from `tap`; every other kernel is symmetric.
template <class Tap, class MakeTap>
Job<Tap> RandomJob(Random& random, MakeTap tap) {
  Job<Tap> job{};
  job.along = RandomInt(random, 0, 1) != 0 ? Along::Row : Along::Column;
  job.width = RandomInt(random, 0, 30) == 0 ? RandomInt(random, 100, 1400) : RandomInt(random, 1, 70);
  job.height = RandomInt(random, 1, job.width > 70 ? 4 : 20);
  if (RandomInt(random, 0, 30) == 0) {  // so tall that column filters move on to further rows of their own
    job.width = RandomInt(random, 1, 10);
    job.height = RandomInt(random, 100, 300);
  }
  const int taps = RandomInt(random, 0, 9) == 0 ? RandomInt(random, 17, 70) : RandomInt(random, 1, 16);
  job.kernel.resize(static_cast<std::size_t>(taps));
  std::generate(job.kernel.begin(), job.kernel.end(), tap);
  if (RandomInt(random, 0, 1) != 0) std::copy_n(job.kernel.begin(), taps / 2, job.kernel.rbegin());
  job.anchor = RandomInt(random, 0, 4) == 0 ? RandomInt(random, -40, 100) : RandomInt(random, 0, taps - 1);
  return job;
}

std::int32_t RandomDivisor(Random& random) {
  const std::int32_t divisors[] = {1,
                                   1 << RandomInt(random, 1, 16),
                                   1 << RandomInt(random, 17, 30),
                                   RandomInt(random, 3, 300),
                                   RandomInt(random, 3, 300),
                                   RandomInt(random, 3, 100000),
                                   -RandomInt(random, 1, 3000),
                                   RandomInt(random, 0, 1) != 0 ? INT32_MAX : -INT32_MAX};
  return divisors[RandomInt(random, 0, 7)];
}

// Taps of all magnitudes, so that sums of 16, 24 and 31 bits and those that wrap occur, each with all divisors; half
// the time the divisor is the sum of the taps, as in kernels that people use.
TEST(FilterBW8Test, EqualsTheNaiveOne) {
  Random random(1);
  for (int round = 0; round < 4000; ++round) {
    static constexpr int kMagnitudes[] = {3, 20, 60, 200, 3000, 30000, 400000, INT32_MAX};
    const int most = kMagnitudes[RandomInt(random, 0, 7)];
    const int least = RandomInt(random, 0, 1) == 0 ? 0 : -most;
    auto job = RandomJob<std::int32_t>(random, [&] { return RandomInt(random, least, most); });
    if (most == INT32_MAX && RandomInt(random, 0, 1) == 0) job.kernel[0] = INT32_MIN;
    const std::int64_t sum = std::accumulate(job.kernel.begin(), job.kernel.end(), std::int64_t{0});
    const bool normalised = RandomInt(random, 0, 1) == 0 && sum != 0 && std::abs(sum) < INT32_MAX;
    job.divisor = normalised ? static_cast<std::int32_t>(sum) : RandomDivisor(random);
    ASSERT_NO_FATAL_FAILURE(Check<BW8>(random, job));
  }
}

// Every sum that one tap makes, against every divisor with a fast rule and some beyond: the thresholds between bytes.
TEST(FilterBW8Test, DividesEverySumOfAPixelRight) {
  BW8 src[256];
  std::iota(std::begin(src), std::end(src), BW8{0});
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

// Small sums of parts of any size: no partial sum may lose a bit.
TEST(FilterBW8Test, SumsThatCancelKeepEveryBit) {
  for (std::int32_t large = 1; large < 1 << 30; large += large / 3 + 1) {
    for (const std::int32_t divisor : {1, 2, 3}) {
      const Job<std::int32_t> job{Along::Row, 1, 1, {large, 77, divisor - 77 - large}, 1, divisor};
      for (int level = 0; level < 256; ++level) {
        const std::vector<BW8> src(3, static_cast<BW8>(level));
        BW8 dst = 77;
        ASSERT_EQ(Call(job, src.data() + 1, 3, &dst, 1), 0);
        ASSERT_EQ(dst, level) << "large tap " << large << ", divisor " << divisor;
      }
    }
  }
}

// Kernels on both sides of every bound that chooses how 8-bit sums are formed and divided, over pixels that reach the
// ends of the sums' range.
TEST(FilterBW8Test, EqualsTheNaiveOneAtTheBoundsOfItsForms) {
  const auto ones = [](int count) { return std::vector<std::int32_t>(static_cast<std::size_t>(count), 1); };
  const std::pair<std::vector<std::int32_t>, std::int32_t> kernels[] = {
      // Sums of 16 bits: up to 65535 with the rounding, or 32767 where nothing divides them.
      {{255, 1}, 2},
      {{256, 1}, 2},
      {{-128, 1, 128}, 3},
      {{-128, 1, 129}, 3},
      {{127, 1}, 1},
      {{128, 1}, 1},
      {{-128, 1, 127}, 1},
      {{1}, 32768},
      {{1}, 65536},
      // A divisor whose multiplier of 16 bits serves all sums below 255 times the divisor, and one of those that do
      // not.
      {{7, 180, 70}, 179},
      {{7, 180, 70}, 197},
      {{255, 1}, 253},
      // The number of taps.
      {ones(64), 64},
      {ones(65), 64},
      {ones(64), 61},
      {ones(65), 61},
      {ones(129), 129},
      // Taps of 16 bits.
      {{32767, 5, -32768}, 16},
      {{32768, 5, -32768}, 17},
      {{32767, 5, -32769}, 17},
      {{100001, -5, 3, 70000, 1}, 1 << 18},
      {{200002, -10, 6, 140000, 2}, 10},
      // Sums of 32 bits, without and with the rounding.
      {{8421503, 1}, 255},
      {{8421503, 1}, 257},
      {{8421503, 2}, 255},
      {{8421503, 1}, 1 << 29},
      {{-8421503, -1, 3}, 7},
      {{-8421503, -3, 3}, 7},
      {{-8421503, -3, 4}, 1},
      // Divisors that the integer rules serve: up to 2^14, and powers of two.
      {{16382, 3, 7000}, 16383},
      {{16382, 3, 7001}, 16385},
      {{8191, 8191, 3}, 16382},
      {{70001, 3, 7000}, 1 << 16},
      {{70001, 3, 7000}, (1 << 16) + 1},
      {{8400000, 3, 7000}, 1 << 30},
      {{1, 2, 1}, -4},
      {{-1, -2, -1}, -4},
      // Halves of even divisors with an odd common divisor, and the other way round.
      {{35, 7, 14}, 98},
      {{36, 6, 12}, 42},
      {{49, 49}, 98},
  };
  Random random(5);
  constexpr int kWidth = 83;
  for (const auto& [taps, divisor] : kernels) {
    for (const Along along : {Along::Row, Along::Column}) {
      const int reach = static_cast<int>(taps.size()) - 1;
      const int step = kWidth + reach;
      const Job<std::int32_t> job{along, kWidth, 3, taps, 0, divisor};
      // With anchor 0 the taps meet the pixels up to `reach` before the region.
      std::vector<BW8> src(static_cast<std::size_t>(step * (3 + reach)));
      for (BW8& pixel : src) {
        const int kind = RandomInt(random, 0, 3);
        pixel = static_cast<BW8>(kind == 0 ? 0 : kind == 3 ? RandomInt(random, 0, 255) : 255);
      }
      const int tapStep = along == Along::Row ? 1 : step;
      const BW8* const region = src.data() + reach * tapStep;
      std::vector<BW8> dst(kWidth * 3);
      ASSERT_EQ(Call(job, region, step, dst.data(), kWidth), 0);
      std::vector<BW8> pixels(taps.size());
      for (int i = 0; i < kWidth * 3; ++i) {
        const BW8* pixel = region + i / kWidth * step + i % kWidth;
        for (BW8& met : pixels) {
          met = *pixel;
          pixel -= tapStep;
        }
        ASSERT_EQ(dst[static_cast<std::size_t>(i)], Naive(job, pixels))
            << i << ", " << taps.size() << " taps, first " << taps[0] << ", divisor " << divisor;
      }
    }
  }
}

TEST(FilterBW16Test, EqualsTheNaiveOne) {
  Random random(2);
  for (int round = 0; round < 2000; ++round) {
    const int most = RandomInt(random, 0, 3) == 0 ? INT32_MAX : RandomInt(random, 1, 2000);
    auto job = RandomJob<std::int32_t>(random, [&] { return RandomInt(random, -most, most); });
    job.divisor = RandomInt(random, 0, 20) == 0 ? INT32_MIN : RandomDivisor(random);
    ASSERT_NO_FATAL_FAILURE(Check<BW16>(random, job));
  }
}

TEST(Filter32fBW16Test, EqualsTheNaiveOne) {
  Random random(3);
  for (int round = 0; round < 2000; ++round) {
    const float scale = RandomInt(random, 0, 1) != 0 ? 1.0F : 1.0F / 256.0F;
    const auto special = [&] { return RandomFloat(random) * scale; };
    ASSERT_NO_FATAL_FAILURE(Check<BW16>(random, RandomJob<float>(random, special)));
    // Sums that land near and on halves.
    const auto halves = [&] { return static_cast<float>(RandomInt(random, -8, 8)) / 16.0F; };
    ASSERT_NO_FATAL_FAILURE(Check<BW16>(random, RandomJob<float>(random, halves)));
    // Full mantissas of few or many exponents, which decides whether the order of the products matters.
    const int exponents = RandomInt(random, 1, 30);
    const auto full = [&] {
      const float mantissa = std::uniform_real_distribution<float>(-1.0F, 1.0F)(random);
      return std::ldexp(mantissa, 5 - RandomInt(random, 0, exponents));
    };
    ASSERT_NO_FATAL_FAILURE(Check<BW16>(random, RandomJob<float>(random, full)));
  }
}

TEST(Filter32fBW16Test, SaturatesOnlySumsOutOfRange) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  const struct {
    int pixel;
    float tap;
    int result;
  } cases[] = {{-32768, 1.0F, -32768}, {-32768, 1.00001F, -32768}, {32767, 1.00001F, 32767}, {32767, 1.00002F, 32767},
               {-32768, -1.0F, 32767}, {0, kInfinity, 0},          {-3, kInfinity, -32768}};
  for (const auto& [pixel, tap, result] : cases) {
    const auto src = static_cast<BW16>(pixel);
    BW16 dst = 77;
    ASSERT_EQ(Call(Job<float>{Along::Row, 1, 1, {tap}, 0}, &src, 2, &dst, 2), 0);
    EXPECT_EQ(static_cast<std::int16_t>(dst), result) << pixel << " by " << tap;
  }
}

// The number before 0.5 and a half make 1 in double precision.
TEST(Filter32fBW16Test, RoundsByAddingAHalf) {
  const BW16 src[] = {1, 1};
  for (const float half : {0.5F, -0.5F}) {
    const Job<float> job{Along::Row, 1, 1, {half, -half * 0x1p-53F}, 0};
    BW16 dst = 77;
    ASSERT_EQ(Call(job, src + 1, 4, &dst, 2), 0);
    EXPECT_EQ(static_cast<std::int16_t>(dst), half > 0.0F ? 1 : -1);
  }
}

// A sum so large that a product after it is lost; added in another order it would not be.
TEST(Filter32fBW16Test, AddsInTheOrderOfThePixels) {
  const BW16 src[] = {static_cast<BW16>(-32767), 1, 32767};
  for (const Along along : {Along::Row, Along::Column}) {
    const Job<float> job{along, 1, 1, {0x1p40F, 1.25F, 0x1p40F}, 1};
    BW16 dst = 77;
    ASSERT_EQ(Call(job, src + 1, along == Along::Row ? 6 : 2, &dst, 2), 0);
    EXPECT_EQ(dst, 0);
  }
}

TEST(FilterFloatTest, EqualsTheNaiveOne) {
  Random random(4);
  for (int round = 0; round < 3000; ++round) {
    const bool special = RandomInt(random, 0, 1) != 0;
    const auto tap = [&] {
      return special ? RandomFloat(random) : std::uniform_real_distribution<float>(-1.0F, 1.0F)(random);
    };
    ASSERT_NO_FATAL_FAILURE(Check<FLOAT32>(random, RandomJob<float>(random, tap)));
  }
}

#ifndef _WIN32
// A second later the call has not returned.
TEST(FilterBW8DeathTest, NeverReturnsForTheLowestDivisor) {
  EXPECT_EXIT(
      {
        const BW8 src = 1;
        BW8 dst;
        alarm(1);
        Call(Job<std::int32_t>{Along::Row, 1, 1, {1}, 0, INT32_MIN}, &src, 1, &dst, 1);
      },
      testing::KilledBySignal(SIGALRM), "");
}
#endif

}  // namespace
}  // namespace norvala_test
