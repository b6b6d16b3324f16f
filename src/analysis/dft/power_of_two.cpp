#include "analysis/dft/power_of_two.h"

#include <utility>

#include "analysis/dft/stockham.h"

namespace norvala::dft {

// Buffers of four transforms side by side: more than the one that a transform needs lets the columns of an image pass
// several blocks at once.
constexpr std::int64_t kLaneBuffers = 3;

std::int64_t PowerOfTwoSpec::scratchSize() const {
  return kLaneBuffers * static_cast<std::int64_t>(sizeof(ComplexLanes)) * length() + 16;
}

StatusCode PowerOfTwoSpec::Create(std::int32_t newOrder, std::int32_t newNormalisation, std::int32_t newHint,
                                  const Root* roots, std::ptrdiff_t stride) {
  if (newOrder < 0 || newOrder > 30) return StatusCode::BadTransformOrder;
  order = newOrder;
  normalisation = newNormalisation;
  hint = newHint;
  if (order == 0) return StatusCode::Success;
  // Radix 4, behind one pass of radix 2 where the order is odd.
  const auto n = static_cast<std::int32_t>(length());
  if (order % 2 != 0) factors.Append(2, n);
  for (int i = 0; i < order / 2; ++i) factors.Append(4, n);
  twiddles = MakeTwiddles(factors, roots, stride);
  return twiddles ? StatusCode::Success : StatusCode::WorkBufferUnavailable;
}

template <class V>
Complex<V>* PowerOfTwoSpec::Run(Complex<V>* data, Complex<V>* work) const {
  const Root* w = twiddles.data();
  for (const FactorRecord& record : factors) {
    if (record.factor == 2) {
      Pass<2>(data, work, record, w);
    } else {
      Pass<4>(data, work, record, w);
    }
    w += std::ptrdiff_t{record.remaining} * (record.factor - 1);
    std::swap(data, work);
  }
  return data;
}

template Complex<float>* PowerOfTwoSpec::Run(Complex<float>*, Complex<float>*) const;
template ComplexLanes* PowerOfTwoSpec::Run(ComplexLanes*, ComplexLanes*) const;

}  // namespace norvala::dft
