// Every primitive, in a program that contains the library over a heap of the test's own: equal to its reference, with
// its argument checks in their order and at their bounds, and whole after a failed allocation.

#include <gtest/gtest.h>

#include "support/failing_heap.h"
#include "support/operation.h"

namespace norvala_test {
namespace {

class PrimitiveTest : public testing::TestWithParam<Operation> {};
INSTANTIATE_TEST_SUITE_P(All, PrimitiveTest, testing::ValuesIn(WithPrimitive()), NameOfRow);

TEST_P(PrimitiveTest, EqualsItsReference) {
  for (std::uint32_t seed = 1000; seed < 1050; ++seed) {
    ASSERT_EQ(Compare(GetParam(), false, seed), "") << "trial " << seed;
  }
}

// Each refused value gives its check's status, alone and together with what all later checks refuse, and nothing
// changes. The first values that a check lets through are served.
TEST_P(PrimitiveTest, ChecksItsArgumentsInOrder) {
  const Checks& checks = GetParam().checks;
  std::uint32_t seed = 0;
  for (std::size_t i = 0; i < checks.size(); ++i) {
    for (const Change& spoil : checks[i].refused) {
      for (const bool withLater : {false, true}) {
        const auto refused = [&](Arguments& arguments) {
          for (std::size_t later = checks.size() - 1; withLater && later > i; --later) {
            checks[later].refused[seed % checks[later].refused.size()](arguments);
          }
          spoil(arguments);
        };
        ++seed;
        ASSERT_EQ(Compare(GetParam(), false, seed, refused, checks[i].status), "")
            << "check " << i << ", trial " << seed;
      }
    }
    for (const Change& mend : checks[i].served) {
      ++seed;
      ASSERT_EQ(Compare(GetParam(), false, seed, mend), "") << "bound of check " << i << ", trial " << seed;
    }
  }
}

class FailingHeapTest : public testing::TestWithParam<Operation> {};
INSTANTIATE_TEST_SUITE_P(All, FailingHeapTest, testing::ValuesIn(WithExport()), NameOfRow);

// Every allocation fails once: the export reports it, releases what it had, and has written nothing.
TEST_P(FailingHeapTest, IsReportedAndLeavesNothing) {
  const int kept = GetParam().call.name == "Norvala_RandUniform_BW8" ? 2 : 0;
  for (std::uint32_t seed = 0; seed < 40; ++seed) {
    HeapWatch heap;
    bool fails = true;
    for (int failing = 0; fails; ++failing) {
      Trial trial(seed);
      const Arguments arguments = GetParam().draw(trial);
      const Snapshot before = Take(trial);
      const int live = heap.live();
      heap.FailAt(failing);
      const std::int64_t result = GetParam().CallExport(arguments);
      fails = failing < heap.allocations();
      ASSERT_EQ(heap.live() - live, fails ? 0 : kept) << "trial " << seed << ", allocation " << failing;
      ASSERT_TRUE(!fails || (result == -1 && Take(trial) == before)) << "trial " << seed << ", allocation " << failing;
    }
  }
}

}  // namespace
}  // namespace norvala_test
