#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <vector>

#include "filter/filter.h"
#include "filter/pyramid/layer.h"
#include "support/failing_heap.h"

namespace norvala {
namespace {

using norvala_test::HeapWatch;

TEST(PyramidStepStatusTest, BufferSizeChecksInOrder) {
  std::int32_t size = 7;
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(0, 0, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(0, 0, 0, &size), StatusCode::NonPositiveSize);
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(1, 0, 2, &size), StatusCode::UnsupportedChannels);
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(1, 3, 3, &size), StatusCode::UnsupportedDataType);
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(89478485, 1, 1, &size), StatusCode::NonPositiveSize);  // does not fit
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(INT32_MAX, 1, 3, &size), StatusCode::NonPositiveSize);
  EXPECT_EQ(size, 7);
  for (const int type : {1, 2, 9}) EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(11, type, 3, &size), StatusCode::Success);
  EXPECT_EQ(size, 144 * 6 + 32);
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(89478480, 1, 1, &size), StatusCode::Success);
  EXPECT_EQ(size, 89478480 * 24 + 32);
}

// Every call fails all later checks as well; `p` serves as source, destination and buffer.
template <class Pixel, class Table>
void ExpectStepChecksInOrder(const Table& reduce) {
  constexpr int kPixel = sizeof(Pixel);
  std::array<Pixel, 1024> a;
  a.fill(7);
  Pixel* const p = a.data();
  auto* const buffer = reinterpret_cast<std::uint8_t*>(p);
  EXPECT_EQ(reduce(nullptr, 0, p, 0, {0, 0}, buffer), StatusCode::NullPointer);
  EXPECT_EQ(reduce(p, 0, nullptr, 0, {0, 0}, buffer), StatusCode::NullPointer);
  EXPECT_EQ(reduce(p, 0, p, 0, {0, 0}, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(reduce(p, 0, p, 0, {0, 1}, buffer), StatusCode::NonPositiveSize);
  EXPECT_EQ(reduce(p, 0, p, 0, {1, 0}, buffer), StatusCode::NonPositiveSize);
  EXPECT_EQ(reduce(p, 5 * kPixel - 1, p, 3 * kPixel + 2, {5, 5}, buffer), StatusCode::NonPositiveStep);
  EXPECT_EQ(reduce(p, 5 * kPixel + 2, p, 3 * kPixel - 1, {5, 5}, buffer), StatusCode::NonPositiveStep);
  EXPECT_EQ(reduce(p, INT32_MAX - 1, p, 3 * kPixel, {INT32_MAX, 5}, buffer), StatusCode::NonPositiveStep);
  if (kPixel == 4) {
    EXPECT_EQ(reduce(p, 5 * kPixel + 2, p, 3 * kPixel, {5, 5}, buffer), StatusCode::MisalignedStep);
    EXPECT_EQ(reduce(p, 5 * kPixel, p, 3 * kPixel + 2, {5, 5}, buffer), StatusCode::MisalignedStep);
  }
  EXPECT_TRUE(std::all_of(a.begin(), a.end(), [](Pixel pixel) { return pixel == 7; }));
}

TEST(PyramidStepStatusTest, ReductionsCheckInOrder) {
  ExpectStepChecksInOrder<BW8>(kPyrDownGauss5x5BW8);
  ExpectStepChecksInOrder<FLOAT32>(kPyrDownGauss5x5FLOAT32);
}

using Kernel = std::vector<std::int16_t>;

StatusCode Create(PyramidLayerState** state, RegionSize size, float rate, const Kernel& kernel) {
  return kPyramidLayerDownInitAlloc(state, size, rate, kernel.data(), static_cast<std::int32_t>(kernel.size()), 2, 1,
                                    1);
}

TEST(PyramidLayerStatusTest, CreationChecksInOrder) {
  struct Case {
    RegionSize size;
    float rate;
    std::int32_t kernelSize, mode, elementType, channels;
    StatusCode expected;
  };
  constexpr RegionSize kSize = {9, 8};
  const Case cases[] = {
      {{0, 1}, 0, 0, 0, 0, 0, StatusCode::NonPositiveSize},
      {{1, 0}, 0, 0, 0, 0, 0, StatusCode::NonPositiveSize},
      {kSize, 2, 3, 1, 0, 0, StatusCode::BadArgument},
      {kSize, 1, 3, 2, 0, 0, StatusCode::BadArgument},
      {kSize, 10.000001F, 3, 2, 0, 0, StatusCode::BadArgument},
      {kSize, std::numeric_limits<float>::quiet_NaN(), 3, 2, 0, 0, StatusCode::BadArgument},
      {kSize, 2, -3, 2, 0, 0, StatusCode::BadArgument},
      {kSize, 2, 1, 2, 0, 0, StatusCode::BadArgument},
      {kSize, 2, 4, 2, 0, 0, StatusCode::BadArgument},
      {kSize, 2, 3, 2, 2, 2, StatusCode::UnsupportedChannels},
      {kSize, 2, 3, 2, 2, 3, StatusCode::UnsupportedDataType},
      // Sizes that no block can have; the taps are not looked at.
      {{INT32_MAX, INT32_MAX}, 2, INT32_MAX, 2, 1, 3, StatusCode::WorkBufferUnavailable},
      {{30000, 30000}, 2, 3, 2, 1, 1, StatusCode::WorkBufferUnavailable},
  };
  HeapWatch heap;
  PyramidLayerState* state = nullptr;
  const std::int16_t taps[] = {1, 2, 1, 0};
  EXPECT_EQ(kPyramidLayerDownInitAlloc(nullptr, {0, 0}, 0, taps, 0, 0, 0, 0), StatusCode::NullPointer);
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, {0, 0}, 0, nullptr, 0, 0, 0, 0), StatusCode::NullPointer);
  for (const Case& c : cases) {
    EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, c.size, c.rate, taps, c.kernelSize, c.mode, c.elementType, c.channels),
              c.expected)
        << &c - cases;
  }
  EXPECT_EQ(heap.allocations(), 0);
  heap.FailAt(0);
  EXPECT_EQ(Create(&state, kSize, 2, {1, 2, 1}), StatusCode::WorkBufferUnavailable);
  EXPECT_EQ(state, nullptr);
  EXPECT_EQ(heap.live(), 0);
}

TEST(PyramidLayerStatusTest, ReductionChecksInOrder) {
  const HeapWatch heap;
  PyramidLayerState* state = nullptr;
  ASSERT_EQ(Create(&state, {10, 10}, 2, {1, 2, 1}), StatusCode::Success);
  std::array<BW8, 256> a;
  a.fill(7);
  BW8* const p = a.data();
  const auto reduce = [&](std::int32_t srcStep, RegionSize srcSize, std::int32_t dstStep, RegionSize dstSize) {
    return kPyramidLayerDownBW8(p, srcStep, srcSize, p, dstStep, dstSize, state);
  };
  EXPECT_EQ(kPyramidLayerDownBW8(nullptr, 0, {0, 0}, p, 0, {0, 0}, state), StatusCode::NullPointer);
  EXPECT_EQ(kPyramidLayerDownBW8(p, 0, {0, 0}, nullptr, 0, {0, 0}, state), StatusCode::NullPointer);
  EXPECT_EQ(kPyramidLayerDownBW8(p, 0, {0, 0}, p, 0, {0, 0}, nullptr), StatusCode::NullPointer);
  for (const float rate : {11.0F, 2.0F}) {
    state->rate = rate;
    EXPECT_EQ(reduce(0, {0, 1}, 0, {1, 1}), StatusCode::NonPositiveSize);
    EXPECT_EQ(reduce(0, {1, 0}, 0, {1, 1}), StatusCode::NonPositiveSize);
    EXPECT_EQ(reduce(9, {10, 10}, 5, {5, 4}), StatusCode::NonPositiveStep);
    EXPECT_EQ(reduce(10, {10, 10}, 4, {5, 4}), StatusCode::NonPositiveStep);
    const StatusCode last = rate > 10 ? StatusCode::BadArgument : StatusCode::NonPositiveSize;
    EXPECT_EQ(reduce(10, {10, 10}, 5, {5, 4}), last);
    EXPECT_EQ(reduce(10, {10, 10}, 5, {INT32_MIN, 5}), last);
    EXPECT_EQ(reduce(11, {11, 10}, 6, {6, 5}), last);  // larger than the state was made for
    EXPECT_EQ(reduce(10, {10, 11}, 5, {5, 6}), last);
  }
  EXPECT_TRUE(std::all_of(a.begin(), a.end(), [](BW8 pixel) { return pixel == 7; }));
  EXPECT_EQ(kPyramidLayerDownFree(state), StatusCode::Success);
  EXPECT_EQ(heap.live(), 0);
}

TEST(PyramidLayerStateTest, HoldsTheNormalisedKernel) {
  const auto stored = [](const Kernel& kernel, StatusCode expected) {
    PyramidLayerState* state = nullptr;
    EXPECT_EQ(Create(&state, {20, 10}, 2, kernel), expected);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state->kernel) % 32, 0U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state->work) % 32, 0U);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(state->work2) % 32, 0U);
    const Kernel taps(state->kernel, state->kernel + kernel.size() + 1);
    kPyramidLayerDownFree(state);
    return taps;
  };
  EXPECT_EQ(stored({1, 2, 1}, StatusCode::Success), (Kernel{2048, 4096, 2048, 0}));
  EXPECT_EQ(stored({-1, -2, -1}, StatusCode::Success), (Kernel{2048, 4096, 2048, 0}));
  EXPECT_EQ(stored({1, 1, 1}, StatusCode::Success), (Kernel{2730, 2730, 2730, 0}));
  EXPECT_EQ(stored({1, 2, 3}, StatusCode::AsymmetricKernel), (Kernel{2048, 4096, 2048, 0}));
  // trunc(-5461.33 + 0.5) = -5460; the shift floors. 3 / 1 * 16384 does not fit 16 bits and wraps to -16384.
  EXPECT_EQ(stored({-1, 5, -1}, StatusCode::Success), (Kernel{-2730, 13653, -2730, 0}));
  EXPECT_EQ(stored({-1, 3, -1}, StatusCode::Success), (Kernel{-8192, -8192, -8192, 0}));
  // Taps that sum to 0 are kept, mirrored one place too far.
  EXPECT_EQ(stored({1, -2, 1}, StatusCode::Success), (Kernel{1, -2, 0, 1}));
  EXPECT_EQ(stored({-3, 1, 4, 1, -3}, StatusCode::Success), (Kernel{-3, 1, 4, 0, 1, -3}));
}

}  // namespace
}  // namespace norvala
