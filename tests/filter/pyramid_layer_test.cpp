#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "filter/naive_mirror.h"
#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

using Kernel = std::vector<std::int16_t>;
using State = std::unique_ptr<PyramidLayerState, decltype(&Norvala_PyramidLayerDownFreeBW8)>;

State MakeState(int width, int height, float rate, const Kernel& kernel) {
  PyramidLayerState* state = nullptr;
  Norvala_PyramidLayerDownInitAllocBW8(&state, width, height, rate, kernel.data(), static_cast<int>(kernel.size()), 2);
  EXPECT_NE(state, nullptr);
  return State(state, Norvala_PyramidLayerDownFreeBW8);
}

// ---- A reduction step by step, whole images at a time ----

int ReducedSize(int n, float rate) {
  const auto product = [rate](int d) { return static_cast<int>(static_cast<float>(d * static_cast<double>(rate))); };
  const auto lower = [&](int d) { return d == 1 ? 1 : std::max(d + 1, product(d - 1) + 1); };
  const auto upper = [&](int d) { return std::max(d + 1, product(d)); };
  int d = std::max(1, static_cast<int>(static_cast<float>(n) / rate + 0.5F));
  while (n < lower(d) || n > upper(d)) d += n < lower(d) ? -1 : 1;
  return d;
}

// The stored taps and the place behind them: kernels that sum to 0 mirror their left half one place further right.
Kernel Normalised(const Kernel& taps) {
  const std::size_t size = taps.size();
  const std::size_t c = size / 2;
  Kernel stored(size + 1);
  double s4 = 4.0 * taps[c];
  for (std::size_t j = 0; j < c; ++j) s4 += 8.0 * taps[j];
  if (s4 == 0) {
    stored[c] = taps[c];
    for (std::size_t j = 0; j < c; ++j) stored[j] = stored[size - j] = taps[j];
    return stored;
  }
  const auto q = [h = s4 * 0.5](std::int16_t t) {
    const auto low = static_cast<std::int16_t>(static_cast<int>(4.0 * t / h * 8192 + 0.5) & 0xFFFF);
    return static_cast<std::int16_t>(low >> 1);
  };
  stored[c] = q(taps[c]);
  for (std::size_t j = 0; j < c; ++j) stored[j] = stored[size - 1 - j] = q(taps[j]);
  return stored;
}

Image<std::int16_t> Filtered(const Image<BW8>& src, const Kernel& k, int size) {
  const int w = src.width();
  const int h = src.height();
  const int b = size / 2;
  const bool large = w > size && h > size;
  const auto tap = [&](int i) { return static_cast<int>(k[static_cast<std::size_t>(i)]); };
  Image<std::int32_t> sums(w, h);
  Image<std::int16_t> filtered(w, h);
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const auto p = [&](int j) { return static_cast<int>(src.Get(Mirror(x + j - b, w), y)); };
      std::uint32_t sum = large ? static_cast<std::uint32_t>(p(b) * tap(b)) : 0;
      for (int j = 0; j < (large ? b : size); ++j) {
        sum += static_cast<std::uint32_t>(large ? (p(j) + p(size - 1 - j)) * tap(j) : (p(j) * tap(j)) >> 8);
      }
      sums.Set(x, y, static_cast<std::int32_t>(sum) >> (large ? 8 : 0));
    }
  }
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      std::uint32_t sum = 1U << 14;
      for (int i = 0; i < size; ++i) {
        sum += static_cast<std::uint32_t>(sums.Get(x, Mirror(y + i - b, h))) * static_cast<std::uint32_t>(tap(i));
      }
      const std::int32_t value = static_cast<std::int32_t>(sum) >> 15;
      filtered.Set(x, y, static_cast<std::int16_t>(std::clamp(value, -32768, 32767)));
    }
  }
  return filtered;
}

BW8 ToPixel(int value) { return static_cast<BW8>(std::clamp((value + 4) >> 3, 0, 255)); }

void NaiveReduce(const Image<BW8>& src, double rate, const Kernel& taps, Image<BW8>& dst) {
  Image<std::int16_t> f = Filtered(src, Normalised(taps), static_cast<int>(taps.size()));
  const int w = src.width();
  const int h = src.height();
  if (rate >= 1.99998 && rate <= 2.00002) {
    for (int j = 0; 2 * j < h && j < dst.height(); ++j) {
      for (int i = 0; 2 * i < w && i < dst.width(); ++i) dst.Set(i, j, ToPixel(f.Get(2 * i, 2 * j)));
    }
    return;
  }
  const auto blend = [rate](int i, int size, auto value) {
    const double position = i * rate;
    const int q = static_cast<int>(position);
    const double fraction = position - q;
    if (q + 1 >= size) return static_cast<int>(value(q));
    return static_cast<int>(value(q) * (1 - fraction) + value(q + 1) * fraction + 0.5);
  };
  for (int i = 0; i < dst.width(); ++i) {
    // In place: no later column reads this one.
    for (int y = 0; y < h; ++y) {
      f.Set(i, y, static_cast<std::int16_t>(blend(i, w, [&](int x) { return f.Get(x, y); })));
    }
    for (int j = 0; j < dst.height(); ++j) {
      dst.Set(i, j, ToPixel(blend(j, h, [&](int y) { return f.Get(i, y); })));
    }
  }
}

// ---- Tests ----

// Smooth, small, extreme, single-tap and binomial kernels, smooth ones with a centre that makes their sum 0, and
// lopsided ones.
Kernel RandomKernel(Random& random, int size) {
  const std::size_t kind = static_cast<std::size_t>(RandomInt(random, 0, 7));
  const int c = size / 2;
  Kernel taps(static_cast<std::size_t>(size));
  int sum = 0;
  for (int i = 0; i <= c; ++i) {
    const int smooth = RandomInt(random, 0, 40) + 40 * i;
    const int binomial = i == 0 ? 1 : i == 2 ? 6 : size - 1;
    const int tap[] = {RandomInt(random, -100, 100),
                       RandomInt(random, -32768, 32767),
                       RandomInt(random, 0, 1) * 32767,
                       i == c ? 1 : 0,
                       binomial,
                       smooth,
                       i == c ? -sum : smooth,
                       smooth};
    sum += 2 * tap[kind];
    taps[static_cast<std::size_t>(i)] = taps[static_cast<std::size_t>(size - 1 - i)] =
        static_cast<std::int16_t>(tap[kind]);
  }
  if (kind == 7) ++taps.back();
  return taps;
}

float RandomRate(Random& random) {
  static constexpr float kSpecial[] = {1.0000001F, 1.5F, 2.0F, 1.4142135F, 3.0F, 9.999999F, 10.0F,
                                       // 13 pixels make 10 only because 10 times this rounds up to 13 in float.
                                       1.3F,
                                       // Floats on both sides of the bounds of decimation.
                                       1.99998F, 1.9999801F, 2.00002F, 2.0000198F};
  if (RandomInt(random, 0, 1) != 0) return kSpecial[RandomInt(random, 0, static_cast<int>(std::size(kSpecial)) - 1)];
  return std::uniform_real_distribution<float>(1.0000001F, RandomInt(random, 0, 1) != 0 ? 10.0F : 2.5F)(random);
}

void ExpectReduction(Random& random, int width, int height, float rate, const Kernel& kernel,
                     PyramidLayerState* state) {
  SCOPED_TRACE(testing::Message() << width << "x" << height << " rate " << rate << " taps " << kernel.size()
                                  << " centre " << kernel[kernel.size() / 2]);
  const auto flush = RandomInt(random, 0, 1) != 0 ? GuardedMemory::Flush::Start : GuardedMemory::Flush::End;
  Image<BW8> src(width, height, RandomLayout(random), flush);
  const int step = RandomInt(random, 0, 2) == 0 ? 255 : 1;
  src.Fill([&] { return static_cast<BW8>(RandomInt(random, 0, 255 / step) * step); });
  Image<BW8> dst(ReducedSize(width, rate), ReducedSize(height, rate), RandomLayout(random), flush);
  Image<BW8> expected(dst);
  const auto reduce = [&](int dstStep, int dstWidth, int dstHeight) {
    return Norvala_PyramidLayerDownBW8(src.data(), src.step(), width, height, dst.data(), dstStep, dstWidth, dstHeight,
                                       state);
  };
  // A size has exactly one reduced size: one more or less is refused.
  for (const int off : {-1, 1}) {
    ASSERT_EQ(reduce(dst.step() + 1, dst.width() + off, dst.height()), -1);
    ASSERT_EQ(reduce(dst.step(), dst.width(), dst.height() + off), -1);
  }
  ASSERT_EQ(dst.Bytes(), expected.Bytes());
  NaiveReduce(src, rate, kernel, expected);
  ASSERT_EQ(reduce(dst.step(), dst.width(), dst.height()), 0);
  ASSERT_EQ(dst.Bytes(), expected.Bytes());
}

TEST(PyramidLayerTest, SmoothsThenResamples) {
  Random random(1);
  for (int round = 0; round < 1600; ++round) {
    // All small sizes first: borders bounce between the edges.
    const bool small = round < 400;
    const int width = small ? round % 10 + 1 : RandomSize(random);
    const int height = small ? round / 10 % 10 + 1 : RandomInt(random, 1, width > 70 ? 12 : 40);
    const int size = 2 * (RandomInt(random, 0, 9) == 0 ? RandomInt(random, 5, 20) : RandomInt(random, 1, 4)) + 1;
    const Kernel kernel = RandomKernel(random, size);
    const float rate = RandomRate(random);
    const State state = MakeState(width, height, rate, kernel);
    ASSERT_NO_FATAL_FAILURE(ExpectReduction(random, width, height, rate, kernel, state.get()));
    // The state serves again, and smaller images too.
    ASSERT_NO_FATAL_FAILURE(
        ExpectReduction(random, RandomInt(random, 1, width), RandomInt(random, 1, height), rate, kernel, state.get()));
  }
}

TEST(PyramidLayerStateTest, IsStoredInEveryCase) {
  const Kernel symmetric = {1, 2, 1};
  const Kernel lopsided = {1, 2, 3};
  PyramidLayerState* state = nullptr;
  EXPECT_EQ(Norvala_PyramidLayerDownInitAllocBW8(&state, 9, 9, 2.0F, lopsided.data(), 3, 2), -1);
  ASSERT_NE(state, nullptr);  // a warning: the state is live
  EXPECT_EQ(Norvala_PyramidLayerDownFreeBW8(state), 0);
  EXPECT_EQ(Norvala_PyramidLayerDownInitAllocBW8(&state, 9, 9, 1.0F, symmetric.data(), 3, 2), -1);
  EXPECT_EQ(state, nullptr);
  EXPECT_EQ(Norvala_PyramidLayerDownInitAllocBW8(nullptr, 9, 9, 2.0F, symmetric.data(), 3, 2), -1);
  EXPECT_EQ(Norvala_PyramidLayerDownFreeBW8(nullptr), 0);
}

}  // namespace
}  // namespace norvala_test
