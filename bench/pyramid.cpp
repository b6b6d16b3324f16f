#include "bench.h"

namespace norvala_bench {

void AddPyramidRows() {}

}  // namespace norvala_bench
