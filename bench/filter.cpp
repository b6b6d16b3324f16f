#include "bench.h"

namespace norvala_bench {

void AddFilterRows() {}

}  // namespace norvala_bench
