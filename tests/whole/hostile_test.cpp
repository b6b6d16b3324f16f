#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <set>
#include <string>

#include "support/catalogue.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <dlfcn.h>
#endif

// The exports that the catalogue calls are thunks that lead through norvala_hostile_call (hostile_call.S), which calls
// the real ones of the loaded library.
extern "C" {
extern const char* const norvala_hostile_names[];
extern const int norvala_hostile_count;
void* norvala_hostile_targets[128];
std::uint32_t norvala_hostile_shift = 0;
std::uint16_t norvala_hostile_x87 = 0x37F;
std::uint32_t norvala_hostile_mxcsr = 0x1F80;
std::uint32_t norvala_hostile_violations = 0;
}

namespace norvala_test {
namespace {

void* Find(const char* name) {
#ifdef _WIN32
  static const HMODULE library = LoadLibraryA("Norvala.dll");
  return library == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(library, name));
#else
  static void* const library = dlopen("./libNorvala.so", RTLD_NOW | RTLD_LOCAL);
  return library == nullptr ? nullptr : dlsym(library, name);
#endif
}

struct Results {
  std::vector<std::uint64_t> hashes;
  std::vector<double> approximate;
};

Results RunAll() {
  Results results;
  for (const Call& call : Catalogue()) {
    for (std::uint32_t seed = 0; seed < 25; ++seed) {
      Choices choices(seed);
      Outcome outcome;
      call.run(choices, outcome);
      results.hashes.push_back(outcome.hash());
      results.approximate.insert(results.approximate.end(), outcome.approximate().begin(), outcome.approximate().end());
    }
  }
  return results;
}

class HostileTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    for (int i = 0; i < norvala_hostile_count; ++i) {
      norvala_hostile_targets[i] = Find(norvala_hostile_names[i]);
      ASSERT_NE(norvala_hostile_targets[i], nullptr) << norvala_hostile_names[i];
    }
    plain_ = RunAll();
  }
  void SetUp() override { norvala_hostile_violations = 0; }
  void TearDown() override {
    norvala_hostile_shift = 0;
    norvala_hostile_x87 = 0x37F;
    norvala_hostile_mxcsr = 0x1F80;
    EXPECT_EQ(norvala_hostile_violations, 0U) << "calls that changed the processor's state";
  }

  static inline Results plain_;
};

TEST_F(HostileTest, StackAlignedToFourBytes) {
  for (const std::uint32_t shift : {4U, 8U, 12U}) {
    norvala_hostile_shift = shift;
    const Results results = RunAll();
    EXPECT_EQ(results.hashes, plain_.hashes);
    EXPECT_EQ(results.approximate, plain_.approximate);
  }
}

TEST_F(HostileTest, SinglePrecisionOfTheOldUnit) {
  norvala_hostile_x87 = 0x07F;
  const Results results = RunAll();
  EXPECT_EQ(results.hashes, plain_.hashes);
  ASSERT_EQ(results.approximate.size(), plain_.approximate.size());
  for (std::size_t i = 0; i < results.approximate.size(); ++i) {
    ASSERT_NEAR(results.approximate[i], plain_.approximate[i], 1.0);
  }
}

// Results may differ here; what must hold is that nothing crashes and the state stays as the host set it.
TEST_F(HostileTest, FlushToZeroAndOtherRoundings) {
  for (const std::uint32_t mxcsr : {0x9FC0U, 0x3F80U, 0x5F80U, 0x7F80U}) {
    norvala_hostile_mxcsr = mxcsr;
    EXPECT_EQ(RunAll().hashes.size(), plain_.hashes.size());
  }
}

}  // namespace
}  // namespace norvala_test
