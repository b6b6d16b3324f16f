// Prints, for every export and many seeds, a hash of what the call returned and wrote; results that rest on the
// runtime's sine and cosine are printed as numbers. Builds are compared by comparing this text.

#include <cstdio>

#include "support/catalogue.h"

int main() {
  constexpr std::uint32_t kSeeds = 150;
  for (const norvala_test::Call& call : norvala_test::Catalogue()) {
    norvala_test::Outcome all;
    for (std::uint32_t seed = 0; seed < kSeeds; ++seed) {
      norvala_test::Choices choices(seed);
      norvala_test::Outcome outcome;
      call.run(choices, outcome);
      all.Add(static_cast<std::int64_t>(outcome.hash()));
      if (seed >= 20 || outcome.approximate().empty()) continue;
      std::printf("~ %s %u", call.name, static_cast<unsigned>(seed));
      for (const double value : outcome.approximate()) std::printf(" %.9g", value);
      std::printf("\n");
    }
    std::printf("= %s %016llx\n", call.name, static_cast<unsigned long long>(all.hash()));
  }
  return 0;
}
