#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "analysis/analysis.h"
#include "support/failing_heap.h"

namespace norvala {
namespace {

using norvala_test::HeapWatch;

TEST(MagnitudeStatusTest, ChecksInOrder) {
  const ComplexFLOAT32Number z[1] = {{3, 4}};
  FLOAT32 modulus[1] = {7};
  EXPECT_EQ(kMagnitudeFLOAT32(nullptr, 0, modulus, 0, {0, 0}), StatusCode::NullPointer);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 0, nullptr, 0, {0, 0}), StatusCode::NullPointer);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 0, modulus, 0, {1, 0}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 0, modulus, 0, {0, 1}), StatusCode::NonPositiveSize);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 0, modulus, 4, {1, 1}), StatusCode::NonPositiveStep);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 8, modulus, 0, {1, 1}), StatusCode::NonPositiveStep);
  EXPECT_EQ(kMagnitudeRowFLOAT32(nullptr, modulus, 0), StatusCode::NullPointer);
  EXPECT_EQ(kMagnitudeRowFLOAT32(z, nullptr, 0), StatusCode::NullPointer);
  EXPECT_EQ(kMagnitudeRowFLOAT32(z, modulus, 0), StatusCode::NonPositiveSize);
  EXPECT_EQ(modulus[0], 7);
  EXPECT_EQ(kMagnitudeRowFLOAT32(z, modulus, 1), StatusCode::Success);
  EXPECT_EQ(modulus[0], 5);
}

TEST(DistanceStatusTest, ChecksInOrder) {
  const BW8 mask[2] = {1, 0};
  FLOAT32 distances[2] = {7, 7};
  const FLOAT32 good[2] = {1, 1.5F};
  const FLOAT32 zero[2] = {1, 0};
  const FLOAT32 nan[2] = {std::numeric_limits<FLOAT32>::quiet_NaN(), 1};
  constexpr auto& transform = kDistanceTransform3x3BW8ToFLOAT32;
  EXPECT_EQ(transform(nullptr, 0, distances, 0, {0, 0}, zero), StatusCode::NullPointer);
  EXPECT_EQ(transform(mask, 0, nullptr, 0, {0, 0}, zero), StatusCode::NullPointer);
  EXPECT_EQ(transform(mask, 0, distances, 0, {0, 0}, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(transform(mask, 0, distances, 0, {0, 1}, zero), StatusCode::NonPositiveSize);
  EXPECT_EQ(transform(mask, 0, distances, 0, {1, 0}, zero), StatusCode::NonPositiveSize);
  EXPECT_EQ(transform(mask, 1, distances, 9, {2, 1}, zero), StatusCode::NonPositiveStep);
  EXPECT_EQ(transform(mask, 2, distances, 7, {2, 1}, zero), StatusCode::NonPositiveStep);
  EXPECT_EQ(transform(mask, 2, distances, 9, {2, 1}, zero), StatusCode::MisalignedStep);
  EXPECT_EQ(transform(mask, 2, distances, 8, {2, 1}, zero), StatusCode::BadCoefficients);
  EXPECT_EQ(transform(mask, 2, distances, 8, {2, 1}, nan), StatusCode::BadCoefficients);
  EXPECT_EQ(distances[0], 7);
  EXPECT_EQ(transform(mask, 2, distances, 8, {2, 1}, good), StatusCode::Success);
  EXPECT_EQ(distances[0], 1);
}

TEST(RandUniformStateTest, StartsFromTheSeed) {
  EXPECT_EQ(kRandUniformCreateBW8(nullptr, 1, 2, 3), StatusCode::NullPointer);
  RandUniformState* state = nullptr;
  ASSERT_EQ(kRandUniformCreateBW8(&state, 200, 100, 7), StatusCode::Success);
  EXPECT_EQ(state->tag, 35);
  EXPECT_EQ(state->seed, 7U);
  EXPECT_EQ(state->low, 200);
  EXPECT_EQ(state->high, 100);
  EXPECT_EQ(state->mid, 150.0);
  EXPECT_EQ(state->scale, -100 * 2.3283064365387e-10);
  EXPECT_EQ(state->lcg, 1131199209U);
  EXPECT_EQ(state->x1, 7U);
  EXPECT_EQ(state->x2, 7U * 69069U + 1013904243U);
  EXPECT_EQ(state->x3, state->x2 * 69069U + 1013904243U);
  EXPECT_EQ(state->borrow, -1);

  BW8 value = 9;
  EXPECT_EQ(kRandUniformBW8(nullptr, 0, state), StatusCode::NullPointer);
  EXPECT_EQ(kRandUniformBW8(&value, 0, nullptr), StatusCode::NullPointer);
  EXPECT_EQ(kRandUniformBW8(&value, 0, state), StatusCode::NonPositiveSize);
  state->tag = 28;
  EXPECT_EQ(kRandUniformBW8(&value, 0, state), StatusCode::NonPositiveSize);
  EXPECT_EQ(kRandUniformBW8(&value, 1, state), StatusCode::WrongStateKind);
  EXPECT_EQ(kRandUniformFreeBW8(state), StatusCode::WrongStateKind);
  EXPECT_EQ(kRandUniformFreeBW8(nullptr), StatusCode::NullPointer);
  EXPECT_EQ(value, 9);
  state->tag = 35;
  EXPECT_EQ(kRandUniformFreeBW8(state), StatusCode::Success);
}

TEST(RandUniformStateTest, ContinuesTheSequence) {
  RandUniformState* whole = nullptr;
  RandUniformState* parts = nullptr;
  ASSERT_EQ(kRandUniformCreateBW8(&whole, 0, 255, 99), StatusCode::Success);
  ASSERT_EQ(kRandUniformCreateBW8(&parts, 0, 255, 99), StatusCode::Success);
  std::array<BW8, 2000> expected{};
  std::array<BW8, 2000> actual{};
  ASSERT_EQ(kRandUniformBW8(expected.data(), 2000, whole), StatusCode::Success);
  for (int done = 0; done < 2000; done += 125) {
    ASSERT_EQ(kRandUniformBW8(actual.data() + done, 125, parts), StatusCode::Success);
  }
  EXPECT_EQ(actual, expected);
  EXPECT_EQ(kRandUniformFreeBW8(whole), StatusCode::Success);
  EXPECT_EQ(kRandUniformFreeBW8(parts), StatusCode::Success);
}

// The most negative draw falls just below the lower bound.
TEST(RandUniformStateTest, MostNegativeDraw) {
  struct Case {
    BW8 low, high, value;
  };
  for (const Case c : {Case{10, 20, 9}, {1, 255, 0}, {0, 255, 0}, {30, 31, 30}, {8, 8, 8}, {20, 10, 20}}) {
    RandUniformState* state = nullptr;
    ASSERT_EQ(kRandUniformCreateBW8(&state, c.low, c.high, 1), StatusCode::Success);
    const std::uint32_t lcg = state->lcg * 69069U + 1013904243U;
    // The difference is what is missing to 2^31 once the correction by 18 of a negative difference is undone.
    const std::uint32_t word = 0x80000000U - lcg;
    const std::uint32_t difference = static_cast<std::int32_t>(word) < 0 ? word + 18 : word;
    state->x3 = 0;
    state->borrow = 0;
    state->x2 = difference;
    BW8 value = 77;
    ASSERT_EQ(kRandUniformBW8(&value, 1, state), StatusCode::Success);
    EXPECT_EQ(state->lcg + state->x1, 0x80000000U);
    EXPECT_EQ(value, c.value) << int{c.low} << ".." << int{c.high};
    EXPECT_EQ(kRandUniformFreeBW8(state), StatusCode::Success);
  }
}

TEST(RandUniformTest, KeepsItsStateOnSuccessOnly) {
  HeapWatch heap;
  BW8 value = 77;
  EXPECT_EQ(Norvala_RandUniform_BW8(nullptr, 1, 0, 255, 1), -1);
  EXPECT_EQ(Norvala_RandUniform_BW8(&value, 0, 0, 255, 1), -1);
  EXPECT_EQ(heap.live(), 0);
  for (int failing = 0; failing < 2; ++failing) {
    heap.FailAt(failing);
    EXPECT_EQ(Norvala_RandUniform_BW8(&value, 1, 0, 255, 1), -1);
    EXPECT_EQ(heap.live(), 0) << failing;
  }
  EXPECT_EQ(value, 77);
  heap.FailAt(-1);
  EXPECT_EQ(Norvala_RandUniform_BW8(&value, 1, 5, 6, 1), 0);
  EXPECT_EQ(value, 5);
  EXPECT_EQ(heap.allocations(), 2);
  EXPECT_EQ(heap.live(), 2);
}

}  // namespace
}  // namespace norvala
