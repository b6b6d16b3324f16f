#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "analysis/analysis.h"

namespace norvala {
namespace {

using enum StatusCode;

TEST(RandUniformStateTest, ChecksInOrderAndContinuesTheSequence) {
  EXPECT_EQ(kRandUniformCreateBW8(nullptr, 1, 2, 3), NullPointer);
  RandUniformState* state = nullptr;
  ASSERT_EQ(kRandUniformCreateBW8(&state, 200, 100, 7), Success);
  EXPECT_EQ(state->seed, 7U);
  EXPECT_EQ(std::exchange(state->tag, 28), 35);
  std::vector<BW8> parts(9, 9), whole(9);
  EXPECT_EQ(kRandUniformBW8(nullptr, 0, state), NullPointer);
  EXPECT_EQ(kRandUniformBW8(parts.data(), 0, nullptr), NullPointer);
  EXPECT_EQ(kRandUniformBW8(parts.data(), 0, state), NonPositiveSize);
  EXPECT_EQ(kRandUniformBW8(parts.data(), 1, state), WrongStateKind);
  EXPECT_EQ(kRandUniformFreeBW8(state), WrongStateKind);
  EXPECT_EQ(kRandUniformFreeBW8(nullptr), NullPointer);
  EXPECT_EQ(parts, std::vector<BW8>(9, 9));
  state->tag = 35;
  EXPECT_EQ(kRandUniformBW8(parts.data(), 4, state), Success);
  EXPECT_EQ(kRandUniformBW8(parts.data() + 4, 5, state), Success);
  EXPECT_EQ(kRandUniformFreeBW8(state), Success);
  EXPECT_EQ(Norvala_RandUniform_BW8(whole.data(), 9, 200, 100, 7), 0);
  EXPECT_EQ(parts, whole);
}

// The byte of a new state whose next difference is the given one: its sign counts before the correction by 18 turns it.
BW8 Draw(BW8 low, BW8 high, std::uint32_t difference) {
  RandUniformState* state = nullptr;
  EXPECT_EQ(kRandUniformCreateBW8(&state, low, high, 1), Success);
  state->x2 = difference;
  state->x3 = 0;
  state->borrow = 0;
  BW8 value = 77;
  EXPECT_EQ(kRandUniformBW8(&value, 1, state), Success);
  const bool negative = difference > INT32_MAX;
  EXPECT_EQ(state->borrow, negative ? -1 : 0) << difference;
  EXPECT_EQ(state->x1, negative ? difference - 18 : difference) << difference;
  EXPECT_EQ(kRandUniformFreeBW8(state), Success);
  return value;
}

TEST(RandUniformStateTest, MakesDrawsThatNoSeedShows) {
  for (const std::uint32_t difference : {17U, 0x7FFFFFFFU, 0x80000000U, 0x80000011U}) Draw(0, 255, difference);
  // The most negative draw falls just below the lower bound.
  const std::uint32_t word = 0x80000000U - (1131199209U * 69069 + 1013904243);
  const std::uint32_t difference = word > INT32_MAX ? word + 18 : word;
  const BW8 cases[][3] = {{10, 20, 9}, {1, 255, 0}, {0, 255, 0}, {30, 31, 30}, {8, 8, 8}, {20, 10, 20}};
  for (const auto& [low, high, value] : cases) EXPECT_EQ(Draw(low, high, difference), value) << int{low};
}

}  // namespace
}  // namespace norvala
