#include "bench.h"

namespace norvala_bench {

void AddWarpRows() {}

}  // namespace norvala_bench
