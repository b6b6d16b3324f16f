#include "bench.h"

namespace norvala_bench {

void AddResizeRows() {}

}  // namespace norvala_bench
