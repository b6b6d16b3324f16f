#include <gtest/gtest.h>

#include <array>
#include <limits>

#include "analysis/analysis.h"
#include "support/failing_heap.h"

namespace norvala {
namespace {

using enum StatusCode;
using norvala_test::HeapWatch;

TEST(MagnitudeStatusTest, ChecksInOrder) {
  const ComplexFLOAT32Number z[1] = {{3, 4}};
  FLOAT32 modulus[1] = {7};
  EXPECT_EQ(kMagnitudeFLOAT32(nullptr, 0, modulus, 0, {0, 0}), NullPointer);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 0, nullptr, 0, {0, 0}), NullPointer);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 0, modulus, 0, {1, 0}), NonPositiveSize);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 0, modulus, 0, {INT32_MIN, 1}), NonPositiveSize);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 0, modulus, 4, {1, 1}), NonPositiveStep);
  EXPECT_EQ(kMagnitudeFLOAT32(z, 8, modulus, -4, {1, 1}), NonPositiveStep);
  EXPECT_EQ(kMagnitudeRowFLOAT32(nullptr, modulus, 0), NullPointer);
  EXPECT_EQ(kMagnitudeRowFLOAT32(z, nullptr, 0), NullPointer);
  EXPECT_EQ(kMagnitudeRowFLOAT32(z, modulus, 0), NonPositiveSize);
  EXPECT_EQ(Norvala_MagnitudeFLOAT32(z, 0, modulus, 4, 1, 1), -1);
  EXPECT_EQ(modulus[0], 7);
  EXPECT_EQ(kMagnitudeRowFLOAT32(z, modulus, 1), Success);
  EXPECT_EQ(modulus[0], 5);
}

TEST(DistanceStatusTest, ChecksInOrder) {
  const BW8 mask[2] = {1, 0};
  FLOAT32 distances[2] = {7, 7};
  const FLOAT32 good[2] = {1, 1.5F};
  const FLOAT32 zero[2] = {1, 0};
  constexpr auto& transform = kDistanceTransform3x3BW8ToFLOAT32;
  EXPECT_EQ(transform(nullptr, 0, distances, 0, {0, 0}, zero), NullPointer);
  EXPECT_EQ(transform(mask, 0, nullptr, 0, {0, 0}, zero), NullPointer);
  EXPECT_EQ(transform(mask, 0, distances, 0, {0, 0}, nullptr), NullPointer);
  EXPECT_EQ(transform(mask, 0, distances, 0, {0, 1}, zero), NonPositiveSize);
  EXPECT_EQ(transform(mask, 0, distances, 0, {1, -1}, zero), NonPositiveSize);
  EXPECT_EQ(transform(mask, 1, distances, 9, {2, 1}, zero), NonPositiveStep);
  EXPECT_EQ(transform(mask, 2, distances, 7, {2, 1}, zero), NonPositiveStep);
  EXPECT_EQ(transform(mask, 2, distances, -8, {2, 1}, zero), NonPositiveStep);
  EXPECT_EQ(transform(mask, INT32_MAX, distances, INT32_MAX - 3, {INT32_MAX, 1}, zero), NonPositiveStep);
  EXPECT_EQ(transform(mask, 2, distances, 9, {2, 1}, zero), MisalignedStep);
  constexpr FLOAT32 kNaN = std::numeric_limits<FLOAT32>::quiet_NaN();
  for (const std::array<FLOAT32, 2> bad : {std::array{0.0F, 1.0F}, {1, 0}, {-0.0F, 1}, {1, -1}, {kNaN, 1}, {1, kNaN}}) {
    EXPECT_EQ(transform(mask, 2, distances, 8, {2, 1}, bad.data()), BadCoefficients) << bad[0] << " " << bad[1];
  }
  EXPECT_EQ(Norvala_DistanceTransform3x3_BW8ToFLOAT32(mask, 2, distances, 8, 2, 1, zero), -1);
  EXPECT_EQ(distances[0], 7);
  EXPECT_EQ(transform(mask, 2, distances, 8, {2, 1}, good), Success);
  EXPECT_EQ(distances[0], 1);
}

TEST(RandUniformStateTest, ChecksInOrderAndContinuesTheSequence) {
  EXPECT_EQ(kRandUniformCreateBW8(nullptr, 1, 2, 3), NullPointer);
  RandUniformState* state = nullptr;
  ASSERT_EQ(kRandUniformCreateBW8(&state, 200, 100, 7), Success);
  EXPECT_EQ(state->tag, 35);
  EXPECT_EQ(state->seed, 7U);
  BW8 value = 9;
  EXPECT_EQ(kRandUniformBW8(nullptr, 0, state), NullPointer);
  EXPECT_EQ(kRandUniformBW8(&value, 0, nullptr), NullPointer);
  state->tag = 28;
  EXPECT_EQ(kRandUniformBW8(&value, 0, state), NonPositiveSize);
  EXPECT_EQ(kRandUniformBW8(&value, 1, state), WrongStateKind);
  EXPECT_EQ(kRandUniformFreeBW8(state), WrongStateKind);
  EXPECT_EQ(kRandUniformFreeBW8(nullptr), NullPointer);
  EXPECT_EQ(value, 9);
  state->tag = 35;
  std::array<BW8, 9> parts, whole;
  EXPECT_EQ(kRandUniformBW8(parts.data(), 4, state), Success);
  EXPECT_EQ(kRandUniformBW8(parts.data() + 4, 5, state), Success);
  EXPECT_EQ(Norvala_RandUniform_BW8(whole.data(), 9, 200, 100, 7), 0);
  EXPECT_EQ(parts, whole);
  EXPECT_EQ(kRandUniformFreeBW8(state), Success);
}

// The most negative draw falls just below the lower bound.
TEST(RandUniformStateTest, MostNegativeDraw) {
  struct Case {
    BW8 low, high, value;
  };
  for (const Case c : {Case{10, 20, 9}, {1, 255, 0}, {0, 255, 0}, {30, 31, 30}, {8, 8, 8}, {20, 10, 20}}) {
    RandUniformState* state = nullptr;
    ASSERT_EQ(kRandUniformCreateBW8(&state, c.low, c.high, 1), Success);
    const std::uint32_t lcg = state->lcg * 69069U + 1013904243U;
    // The difference is what is missing to 2^31 once the correction by 18 of a negative difference is undone.
    const std::uint32_t word = 0x80000000U - lcg;
    state->x2 = static_cast<std::int32_t>(word) < 0 ? word + 18 : word;
    state->x3 = 0;
    state->borrow = 0;
    BW8 value = 77;
    ASSERT_EQ(kRandUniformBW8(&value, 1, state), Success);
    EXPECT_EQ(state->lcg + state->x1, 0x80000000U);
    EXPECT_EQ(value, c.value) << int{c.low} << ".." << int{c.high};
    EXPECT_EQ(kRandUniformFreeBW8(state), Success);
  }
}

// Draws so rare that no seed shows them: the sign counts before the correction by 18 turns it.
TEST(RandUniformStateTest, BorrowsByTheUncorrectedSign) {
  RandUniformState* state = nullptr;
  ASSERT_EQ(kRandUniformCreateBW8(&state, 0, 255, 1), Success);
  for (const std::uint32_t difference : {17U, 0x7FFFFFFFU, 0x80000000U, 0x80000011U}) {
    const bool negative = difference > 0x7FFFFFFFU;
    state->x2 = difference;
    state->x3 = 0;
    state->borrow = 0;
    BW8 value;
    ASSERT_EQ(kRandUniformBW8(&value, 1, state), Success);
    EXPECT_EQ(state->borrow, negative ? -1 : 0) << difference;
    EXPECT_EQ(state->x1, negative ? difference - 18 : difference) << difference;
  }
  EXPECT_EQ(kRandUniformFreeBW8(state), Success);
}

TEST(RandUniformTest, KeepsItsStateOnSuccessOnly) {
  HeapWatch heap;
  BW8 value = 77;
  EXPECT_EQ(Norvala_RandUniform_BW8(nullptr, 1, 0, 255, 1), -1);
  EXPECT_EQ(Norvala_RandUniform_BW8(&value, 0, 0, 255, 1), -1);
  EXPECT_EQ(Norvala_RandUniform_BW8(&value, INT32_MIN, 0, 255, 1), -1);
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
