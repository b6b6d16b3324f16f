// Prints, for every export and many seeds, a hash of what the call returned and wrote; results that rest on the
// runtime's sine and cosine are printed as numbers. Builds are compared by comparing this text.

#include <cstdio>

#include "support/operation.h"

int main() {
  constexpr std::uint32_t kSeeds = 150;
  for (const norvala_test::Operation& operation : norvala_test::WithExport()) {
    const char* const name = operation.call.name.c_str();
    std::uint64_t all = 0;
    for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
      norvala_test::Trial trial(seed);
      const norvala_test::RunOutcome outcome = Run(operation, trial, operation.call.address);
      all = (all ^ outcome.hash) * 1099511628211ULL;
      if (seed >= 20 || outcome.approximate.empty()) continue;
      std::printf("~ %s %u", name, static_cast<unsigned>(seed));
      for (const double value : outcome.approximate) std::printf(" %.9g", value);
      std::printf("\n");
    }
    std::printf("= %s %016llx\n", name, static_cast<unsigned long long>(all));
  }
  return 0;
}
