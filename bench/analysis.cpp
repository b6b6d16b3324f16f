#include "bench.h"

namespace norvala_bench {

void AddAnalysisRows() {}

}  // namespace norvala_bench
