#include <gtest/gtest.h>

#include "support/operation.h"

// In hostile_call.S: calls the target in the state that the variables below choose.
extern "C" {
void norvala_hostile_call();
norvala_test::AnyFunction norvala_hostile_target = nullptr;
std::uint32_t norvala_hostile_shift = 0;
std::uint16_t norvala_hostile_x87 = 0x37F;
std::uint32_t norvala_hostile_mxcsr = 0x1F80;
std::uint32_t norvala_hostile_violations = 0;
}

namespace norvala_test {
namespace {

std::vector<RunOutcome> RunHostile(std::uint32_t shift, std::uint16_t x87, std::uint32_t mxcsr) {
  norvala_hostile_shift = shift;
  norvala_hostile_x87 = x87;
  norvala_hostile_mxcsr = mxcsr;
  norvala_hostile_violations = 0;
  const std::vector<RunOutcome> outcomes = RunAll(0, 25, [](AnyFunction address) {
    norvala_hostile_target = address;
    return norvala_hostile_call;
  });
  EXPECT_EQ(norvala_hostile_violations, 0U) << "calls that changed the processor's state";
  return outcomes;
}

TEST(HostileTest, StackAlignedToFourBytes) {
  for (const std::uint32_t shift : {0U, 4U, 8U, 12U}) {
    EXPECT_TRUE(RunHostile(shift, 0x37F, 0x1F80) == RunAll(0, 25)) << shift;
  }
}

// The runtime's sine may use the old unit.
TEST(HostileTest, SinglePrecisionOfTheOldUnit) {
  const std::vector<RunOutcome> hostile = RunHostile(0, 0x07F, 0x1F80);
  const std::vector<RunOutcome> plain = RunAll(0, 25);
  for (std::size_t i = 0; i < plain.size(); ++i) {
    ASSERT_EQ(hostile[i].hash, plain[i].hash) << i;
    ASSERT_LE(RelativeError(hostile[i].approximate, plain[i].approximate), 1e-3) << i;
  }
}

// Results may differ here; what must hold is that nothing crashes and the state stays as the host set it.
TEST(HostileTest, FlushToZeroAndOtherRoundings) {
  for (const std::uint32_t mxcsr : {0x9FC0U, 0x3F80U, 0x5F80U, 0x7F80U}) RunHostile(0, 0x37F, mxcsr);
}

}  // namespace
}  // namespace norvala_test
