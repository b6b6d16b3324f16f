// Drives every export with arguments taken from the fuzzer's input: the first byte chooses the export.

#include <cstddef>
#include <cstdint>

#include "support/operation.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::vector<norvala_test::Operation> operations = norvala_test::WithExport();
  if (size == 0) return 0;
  const norvala_test::Operation& operation = operations[data[0] % operations.size()];
  norvala_test::Trial trial(data + 1, size - 1);
  Run(operation, trial, operation.call.address);
  return 0;
}
