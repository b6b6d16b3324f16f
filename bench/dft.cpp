#include "bench.h"

namespace norvala_bench {

void AddDftRows() {}

}  // namespace norvala_bench
