// Drives every export with arguments taken from the fuzzer's input: the first byte chooses the export.

#include <cstddef>
#include <cstdint>

#include "support/catalogue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const auto calls = norvala_test::Catalogue();
  norvala_test::Choices choices(data + 1, size - 1);
  norvala_test::Outcome outcome;
  calls[data[0] % calls.size()].run(choices, outcome);
  return 0;
}
