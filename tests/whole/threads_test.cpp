#include <gtest/gtest.h>

#include <thread>

#include "support/catalogue.h"

namespace norvala_test {
namespace {

std::vector<std::uint64_t> RunAll(std::uint32_t firstSeed, std::uint32_t seeds) {
  std::vector<std::uint64_t> hashes;
  for (const Call& call : Catalogue()) {
    for (std::uint32_t seed = firstSeed; seed < firstSeed + seeds; ++seed) {
      Choices choices(seed);
      Outcome outcome;
      call.run(choices, outcome);
      hashes.push_back(outcome.hash());
    }
  }
  return hashes;
}

TEST(ThreadsTest, EightThreadsGetTheBytesOfOne) {
  constexpr int kThreads = 8;
  constexpr std::uint32_t kSeeds = 15;
  std::vector<std::vector<std::uint64_t>> together(kThreads);
  {
    std::vector<std::jthread> threads;
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&together, i] {
        together[static_cast<std::size_t>(i)] = RunAll(1000 + static_cast<std::uint32_t>(i % 2) * kSeeds, kSeeds);
      });
    }
  }
  const std::vector<std::uint64_t> alone[] = {RunAll(1000, kSeeds), RunAll(1000 + kSeeds, kSeeds)};
  for (int i = 0; i < kThreads; ++i) EXPECT_EQ(together[static_cast<std::size_t>(i)], alone[i % 2]) << "thread " << i;
}

}  // namespace
}  // namespace norvala_test
