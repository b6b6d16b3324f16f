#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

#include "filter/filter.h"
#include "filter/pyramid_layer.h"
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
  EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(INT32_MAX, 1, 1, &size), StatusCode::NonPositiveSize);
  EXPECT_EQ(size, 7);
  for (const int type : {1, 2, 9}) EXPECT_EQ(kPyrDownGetBufSizeGauss5x5(1, type, 3, &size), StatusCode::Success);
  EXPECT_EQ(size, 16 * 6 + 32);
}

TEST(PyramidStepStatusTest, ReductionsCheckInOrder) {
  alignas(4) std::array<std::uint8_t, 4096> a{};
  BW8* const p = a.data();
  EXPECT_EQ(kPyrDownGauss5x5BW8(nullptr, 0, p, 0, {0, 0}, p), StatusCode::NullPointer);
  EXPECT_EQ(kPyrDownGauss5x5BW8(p, 0, nullptr, 0, {0, 0}, p), StatusCode::NullPointer);
  EXPECT_EQ(kPyrDownGauss5x5BW8(p, 0, p, 0, {0, 0}, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kPyrDownGauss5x5BW8(p, 0, p, 0, {0, 1}, p), StatusCode::NonPositiveSize);
  EXPECT_EQ(kPyrDownGauss5x5BW8(p, 0, p, 0, {1, 0}, p), StatusCode::NonPositiveSize);
  EXPECT_EQ(kPyrDownGauss5x5BW8(p, 4, p, 3, {5, 5}, p), StatusCode::NonPositiveStep);
  EXPECT_EQ(kPyrDownGauss5x5BW8(p, 5, p, 2, {5, 5}, p), StatusCode::NonPositiveStep);

  auto* const f = reinterpret_cast<FLOAT32*>(p);
  EXPECT_EQ(kPyrDownGauss5x5FLOAT32(f, 0, f, 0, {0, 1}, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kPyrDownGauss5x5FLOAT32(f, 0, f, 0, {0, 1}, p), StatusCode::NonPositiveSize);
  EXPECT_EQ(kPyrDownGauss5x5FLOAT32(f, 18, f, 12, {5, 5}, p), StatusCode::NonPositiveStep);
  EXPECT_EQ(kPyrDownGauss5x5FLOAT32(f, 20, f, 11, {5, 5}, p), StatusCode::NonPositiveStep);
  EXPECT_EQ(kPyrDownGauss5x5FLOAT32(f, 22, f, 12, {5, 5}, p), StatusCode::MisalignedStep);
  EXPECT_EQ(kPyrDownGauss5x5FLOAT32(f, 20, f, 14, {5, 5}, p), StatusCode::MisalignedStep);
}

using Kernel = std::vector<std::int16_t>;

StatusCode Create(PyramidLayerState** state, RegionSize size, float rate, const Kernel& kernel) {
  return kPyramidLayerDownInitAlloc(state, size, rate, kernel.data(), static_cast<std::int32_t>(kernel.size()), 2, 1,
                                    1);
}

TEST(PyramidLayerStatusTest, CreationChecksInOrder) {
  const HeapWatch heap;
  PyramidLayerState* state = nullptr;
  const std::int16_t taps[] = {1, 2, 1, 0};
  const RegionSize size = {9, 8};
  EXPECT_EQ(kPyramidLayerDownInitAlloc(nullptr, {0, 0}, 0, taps, 0, 0, 0, 0), StatusCode::NullPointer);
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, {0, 0}, 0, nullptr, 0, 0, 0, 0), StatusCode::NullPointer);
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, {0, 1}, 0, taps, 0, 0, 0, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, {1, 0}, 0, taps, 0, 0, 0, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, size, 2, taps, 3, 1, 0, 0), StatusCode::BadArgument);
  for (const float rate : {1.0F, 10.5F, -2.0F, std::numeric_limits<float>::quiet_NaN()}) {
    EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, size, rate, taps, 3, 2, 0, 0), StatusCode::BadArgument) << rate;
  }
  for (const int kernelSize : {-3, 1, 4}) {
    EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, size, 2, taps, kernelSize, 2, 0, 0), StatusCode::BadArgument);
  }
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, size, 2, taps, 3, 2, 2, 2), StatusCode::UnsupportedChannels);
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, size, 2, taps, 3, 2, 2, 3), StatusCode::UnsupportedDataType);
  // Sizes that no block can have; the taps are not looked at.
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, {INT32_MAX, INT32_MAX}, 2, taps, INT32_MAX, 2, 1, 3),
            StatusCode::WorkBufferUnavailable);
  EXPECT_EQ(kPyramidLayerDownInitAlloc(&state, {30000, 30000}, 2, taps, 3, 2, 1, 1), StatusCode::WorkBufferUnavailable);
  EXPECT_EQ(heap.allocations(), 0);
  EXPECT_EQ(state, nullptr);
}

TEST(PyramidLayerStatusTest, AFailedAllocationLeavesNothing) {
  HeapWatch heap;
  PyramidLayerState* state = nullptr;
  heap.FailAt(0);
  EXPECT_EQ(Create(&state, {9, 9}, 2, {1, 2, 1}), StatusCode::WorkBufferUnavailable);
  EXPECT_EQ(state, nullptr);
  EXPECT_EQ(heap.live(), 0);
}

TEST(PyramidLayerStatusTest, ReductionChecksInOrder) {
  const HeapWatch heap;
  PyramidLayerState* state = nullptr;
  ASSERT_EQ(Create(&state, {10, 10}, 2, {1, 2, 1}), StatusCode::Success);
  std::array<BW8, 256> a{};
  BW8* const p = a.data();
  EXPECT_EQ(kPyramidLayerDownBW8(nullptr, 0, {0, 0}, p, 0, {0, 0}, state), StatusCode::NullPointer);
  EXPECT_EQ(kPyramidLayerDownBW8(p, 0, {0, 0}, nullptr, 0, {0, 0}, state), StatusCode::NullPointer);
  EXPECT_EQ(kPyramidLayerDownBW8(p, 0, {0, 0}, p, 0, {0, 0}, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kPyramidLayerDownBW8(p, 0, {0, 1}, p, 0, {0, 0}, state), StatusCode::NonPositiveSize);
  EXPECT_EQ(kPyramidLayerDownBW8(p, 9, {10, 10}, p, 5, {5, 5}, state), StatusCode::NonPositiveStep);
  EXPECT_EQ(kPyramidLayerDownBW8(p, 10, {10, 10}, p, 4, {5, 5}, state), StatusCode::NonPositiveStep);
  EXPECT_EQ(kPyramidLayerDownBW8(p, 10, {10, 10}, p, 5, {5, 4}, state), StatusCode::NonPositiveSize);
  state->rate = 11;
  EXPECT_EQ(kPyramidLayerDownBW8(p, 10, {10, 10}, p, 5, {5, 4}, state), StatusCode::BadArgument);
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

// Blocks of all small shapes hold what a reduction writes: the sanitizers' heap tells.
TEST(PyramidLayerStateTest, BlocksAreLargeEnough) {
  const HeapWatch heap;
  std::array<BW8, 40 * 40> pixels{};
  std::array<BW8, 40 * 40> results{};
  for (const std::int32_t size : {3, 5, 7, 15, 17, 31, 33}) {
    Kernel kernel(static_cast<std::size_t>(size), 1);
    for (int width = 1; width <= 40; ++width) {
      for (int height = 1; height <= 40; height += height < 8 ? 1 : 8) {
        // The second kernel sums to 0.
        for (const std::int32_t centre : {1, 1 - size}) {
          kernel[static_cast<std::size_t>(size / 2)] = static_cast<std::int16_t>(centre);
          PyramidLayerState* state = nullptr;
          ASSERT_EQ(Create(&state, {width, height}, 1.1F, kernel), StatusCode::Success);
          EXPECT_EQ(kPyramidLayerDownBW8(pixels.data(), 40, {width, height}, results.data(), 40,
                                         {ReducedSize(width, 1.1F), ReducedSize(height, 1.1F)}, state),
                    StatusCode::Success);
          kPyramidLayerDownFree(state);
        }
      }
    }
  }
  EXPECT_EQ(heap.live(), 0);
}

}  // namespace
}  // namespace norvala
