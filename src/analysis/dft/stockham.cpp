#include "analysis/dft/stockham.h"

namespace norvala::dft {

AlignedVector<Root> MakeTwiddles(const FactorList& factors, const Root* roots, std::ptrdiff_t stride) {
  std::int64_t count = 0;
  for (const FactorRecord& record : factors) count += std::int64_t{record.remaining} * (record.factor - 1);
  AlignedVector<Root> twiddles(count);
  if (!twiddles) return twiddles;
  Root* next = twiddles.data();
  for (const FactorRecord& record : factors) {
    const std::ptrdiff_t step = record.before * stride;
    for (std::ptrdiff_t p = 0; p < record.remaining; ++p) {
      for (std::ptrdiff_t k = 1; k < record.factor; ++k) *next++ = roots[p * k * step];
    }
  }
  return twiddles;
}

}  // namespace norvala::dft
