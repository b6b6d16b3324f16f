#include <gtest/gtest.h>

#include <cmath>

#include "filter/naive_mirror.h"
#include "norvala.h"
#include "support/old_image.h"

namespace norvala_test {
namespace {

template <class T>
int Reduce(const Image<T>& src, const Image<T>& dst, std::uint8_t* buffer) {
  const auto reduce = [&](auto step) {
    return step(src.data(), src.step(), dst.data(), dst.step(), src.width(), src.height(), buffer);
  };
  if constexpr (std::is_same_v<T, BW8>) return reduce(Norvala_PyrDownGauss5x5BW8);
  if constexpr (std::is_same_v<T, FLOAT32>) return reduce(Norvala_PyrDownGauss5x5FLOAT32);
}

BW8 Naive(const Image<BW8>& src, int j, int k) {
  static constexpr int kTaps[] = {1, 4, 6, 4, 1};
  int sum = 128;
  for (int y = 0; y < 5; ++y) {
    for (int x = 0; x < 5; ++x) {
      sum += kTaps[y] * kTaps[x] * src.Get(Mirror(2 * j + x - 2, src.width()), Mirror(2 * k + y - 2, src.height()));
    }
  }
  return static_cast<BW8>(sum >> 8);
}

float NaiveRowSum(const Image<FLOAT32>& src, int j, int y) {
  const int w = src.width();
  const auto p = [&](int x) { return static_cast<double>(src.Get(Mirror(x, w), y)); };
  const int x = 2 * j;
  if (j == 0) return static_cast<float>((p(0) * 6 + p(1) * 8) + p(2) * 2);
  if (x == w - 1) return static_cast<float>((p(x) * 6 + p(x - 1) * 8) + p(x - 2) * 2);
  if (x == w - 2) return static_cast<float>(((p(w - 3) + p(w - 1)) * 4 + p(w - 4)) + p(w - 2) * 7);
  return static_cast<float>(((p(x) * 6 + (p(x - 1) + p(x + 1)) * 4) + p(x - 2)) + p(x + 2));
}

FLOAT32 Naive(const Image<FLOAT32>& src, int j, int k) {
  const int w = src.width();
  const int h = src.height();
  const auto mirroredTwo = [](float first, float last) {
    return static_cast<float>((static_cast<double>(first) + static_cast<double>(last)) * 8 * 0.00390625);
  };
  if (h < 3) return mirroredTwo(NaiveRowSum(src, j, 0), NaiveRowSum(src, j, h - 1));
  const auto vertical = [&](auto at) {
    const auto s = [&](int i) { return static_cast<double>(at(Mirror(2 * k + i, h))); };
    return ((s(0) * 6 + (s(-1) + s(1)) * 4) + s(-2)) + s(2);
  };
  if (w < 3) {
    const auto column = [&](int x) { return static_cast<float>(vertical([&](int y) { return src.Get(x, y); })); };
    return mirroredTwo(column(0), column(w - 1));
  }
  return static_cast<float>(vertical([&](int y) { return NaiveRowSum(src, j, y); }) * 0.00390625);
}

// One NaN is as good as another.
bool IsNan(BW8) { return false; }
bool IsNan(FLOAT32 value) { return std::isnan(value); }

template <class T>
class PyramidStepTest : public testing::Test {};
using StepTypes = testing::Types<BW8, FLOAT32>;
TYPED_TEST_SUITE(PyramidStepTest, StepTypes);

TYPED_TEST(PyramidStepTest, IsTheMirroredBinomialOfEverySecondPixel) {
  using Flush = GuardedMemory::Flush;
  Random random(1);
  for (int round = 0; round < 1500; ++round) {
    // All small sizes in both directions first: they have rules of their own.
    const int width = round < 256 ? round % 16 + 1 : RandomSize(random);
    const int height = round < 256 ? round / 16 + 1 : RandomInt(random, 1, 20);
    const Flush flush = round % 2 != 0 ? Flush::Start : Flush::End;
    Layout srcLayout = RandomLayout(random);
    Layout dstLayout = RandomLayout(random);
    if (sizeof(TypeParam) == 4) srcLayout.padding *= 4, dstLayout.padding *= 4;
    Image<TypeParam> src(width, height, srcLayout, flush);
    Image<TypeParam> dst((width + 1) / 2, (height + 1) / 2, dstLayout, flush);
    if (round % 3 == 0) {
      src.Fill([&] { return static_cast<TypeParam>(RandomInt(random, 0, 3) == 0 ? RandomInt(random, 0, 255) : 255); });
    } else {
      src.FillRandom(random);
    }
    std::int32_t size = 0;
    ASSERT_EQ(Norvala_PyrDownGetBufSizeGauss5x5BW8(width, 1, &size), 0);
    // The buffer at any address, with bytes before and after it that must stay.
    std::vector<std::uint8_t> memory(static_cast<std::size_t>(size) + 64, 0xCD);
    const int before = RandomInt(random, 0, 64);
    const auto source = src.Bytes();
    Image<TypeParam> expected(dst);
    ASSERT_EQ(Reduce(src, dst, memory.data() + before), 0);
    for (int k = 0; k < dst.height(); ++k) {
      for (int j = 0; j < dst.width(); ++j) {
        const TypeParam value = Naive(src, j, k);
        expected.Set(j, k, IsNan(value) && IsNan(dst.Get(j, k)) ? dst.Get(j, k) : value);
      }
    }
    ASSERT_EQ(dst.Bytes(), expected.Bytes()) << width << "x" << height;
    ASSERT_EQ(src.Bytes(), source);
    memory.erase(memory.begin() + before, memory.begin() + before + size);
    ASSERT_EQ(memory, std::vector<std::uint8_t>(64, 0xCD)) << width << "x" << height;
  }
}

}  // namespace
}  // namespace norvala_test
