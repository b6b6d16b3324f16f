#include <gtest/gtest.h>

#include <thread>

#include "support/operation.h"

namespace norvala_test {
namespace {

TEST(ThreadsTest, EightThreadsGetTheBytesOfOne) {
  constexpr std::uint32_t kSeeds = 15;
  std::vector<std::vector<RunOutcome>> together(8);
  {
    std::vector<std::jthread> threads;
    for (std::uint32_t i = 0; i < together.size(); ++i) {
      threads.emplace_back([&together, i] { together[i] = RunAll(i % 2 * kSeeds, kSeeds); });
    }
  }
  const std::vector<RunOutcome> alone[] = {RunAll(0, kSeeds), RunAll(kSeeds, kSeeds)};
  for (std::size_t i = 0; i < together.size(); ++i) EXPECT_TRUE(together[i] == alone[i % 2]) << "thread " << i;
}

}  // namespace
}  // namespace norvala_test
