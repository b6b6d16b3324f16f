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

std::vector<RunOutcome> RunHostile() {
  return RunAll(0, 25, [](AnyFunction address) {
    norvala_hostile_target = address;
    return norvala_hostile_call;
  });
}

class HostileTest : public testing::Test {
 protected:
  void SetUp() override { norvala_hostile_violations = 0; }
  void TearDown() override {
    norvala_hostile_shift = 0;
    norvala_hostile_x87 = 0x37F;
    norvala_hostile_mxcsr = 0x1F80;
    EXPECT_EQ(norvala_hostile_violations, 0U) << "calls that changed the processor's state";
  }
};

TEST_F(HostileTest, StackAlignedToFourBytes) {
  for (const std::uint32_t shift : {0U, 4U, 8U, 12U}) {
    norvala_hostile_shift = shift;
    EXPECT_TRUE(RunHostile() == RunAll(0, 25)) << shift;
  }
}

// The runtime's sine may use the old unit.
TEST_F(HostileTest, SinglePrecisionOfTheOldUnit) {
  norvala_hostile_x87 = 0x07F;
  const std::vector<RunOutcome> hostile = RunHostile();
  const std::vector<RunOutcome> plain = RunAll(0, 25);
  for (std::size_t i = 0; i < plain.size(); ++i) {
    ASSERT_EQ(hostile[i].hash, plain[i].hash) << i;
    ASSERT_EQ(hostile[i].approximate.size(), plain[i].approximate.size()) << i;
    ASSERT_LE(RelativeError(hostile[i].approximate, plain[i].approximate), 1e-3) << i;
  }
}

// Results may differ here; what must hold is that nothing crashes and the state stays as the host set it.
TEST_F(HostileTest, FlushToZeroAndOtherRoundings) {
  for (const std::uint32_t mxcsr : {0x9FC0U, 0x3F80U, 0x5F80U, 0x7F80U}) {
    norvala_hostile_mxcsr = mxcsr;
    RunHostile();
  }
}

}  // namespace
}  // namespace norvala_test
