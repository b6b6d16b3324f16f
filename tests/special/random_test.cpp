#include <gtest/gtest.h>

#include <array>

#include "analysis/analysis.h"

namespace norvala {
namespace {

using enum StatusCode;

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

}  // namespace
}  // namespace norvala
