#include <gtest/gtest.h>

#include <set>
#include <string>

#include "support/catalogue.h"
#include "support/failing_heap.h"

namespace norvala_test {
namespace {

// A call that reports failure has written no destination image, but for the warnings that come with a result.
TEST(FaultsTest, FailureWritesNothing) {
  const std::set<std::string> mayWarn = {"Norvala_WarpAffineQuad", "Norvala_PyramidLayerDownInitAllocBW8",
                                         "Norvala_PyramidLayerDownFreeBW8", "Norvala_PyramidLayerDownBW8"};
  for (const Call& call : Catalogue()) {
    if (mayWarn.contains(call.name)) continue;
    for (std::uint32_t seed = 0; seed < 300; ++seed) {
      Choices choices(seed);
      Outcome outcome;
      call.run(choices, outcome);
      EXPECT_FALSE(outcome.failed() && outcome.wrote()) << call.name << " seed " << seed;
    }
  }
}

// Every allocation of every export fails once: the call reports it, releases what it had and has written no
// destination image.
TEST(FaultsTest, EveryFailedAllocationIsReportedAndReleased) {
  std::set<std::string> allocating;
  for (const Call& call : Catalogue()) {
    const std::string name = call.name;
    const bool isAllocator = name.find("Malloc") != std::string::npos || name.ends_with("DFree");
    const bool keepsItsState = name == "Norvala_RandUniform_BW8";
    for (std::uint32_t seed = 0; seed < 60; ++seed) {
      HeapWatch heap;
      const auto run = [&] {
        Choices choices(seed);
        Outcome outcome;
        call.run(choices, outcome);
        return outcome;
      };
      const bool failsAnyway = run().failed();
      const int allocations = heap.allocations();
      EXPECT_EQ(heap.live(), keepsItsState && !failsAnyway ? 2 : 0) << name << " seed " << seed;
      if (allocations > 0) allocating.insert(name);
      for (int i = 0; i < allocations; ++i) {
        const int before = heap.live();
        heap.FailAt(i);
        const Outcome outcome = run();
        EXPECT_EQ(heap.live(), before) << name << " seed " << seed << " allocation " << i;
        if (!isAllocator) {
          EXPECT_TRUE(outcome.failed()) << name << " seed " << seed << " allocation " << i;
          EXPECT_FALSE(outcome.wrote()) << name << " seed " << seed << " allocation " << i;
        }
      }
    }
  }
  // The exports that take memory: nine of the allocator, two filters, the Gaussian, three of the layers, four warps,
  // resize, transform and random fill.
  EXPECT_EQ(allocating.size(), 22U);
}

}  // namespace
}  // namespace norvala_test
