#include "analysis/dft/method.h"

#include "analysis/dft/small.h"

namespace norvala::dft {
namespace {

constexpr std::int32_t kLargestSmall = 4;
constexpr std::int32_t kLargestDirect = 150;         // of complex values
constexpr std::int32_t kLargestDirectOddReal = 180;  // of real ones

Method ChooseByFactors(std::int32_t length, std::int32_t largestDirect, FactorList& factors) {
  if (Factorise(length, factors)) return Method::MixedRadix;
  return length > largestDirect ? Method::LargePrime : Method::Direct;
}

}  // namespace

Method ChooseComplexMethod(std::int32_t length, FactorList& factors) {
  if (length <= kLargestSmall) return Method::Small;
  if (IsPowerOfTwo(length)) return Method::PowerOfTwo;
  return ChooseByFactors(length, kLargestDirect, factors);
}

Method ChooseRealMethod(std::int32_t length, FactorList& factors) {
  if (length <= kLargestSmall) return Method::Small;
  if (IsPowerOfTwo(length)) return Method::PowerOfTwo;
  return length % 2 == 0 ? ChooseByFactors(length / 2, kLargestDirect, factors)
                         : ChooseByFactors(length, kLargestDirectOddReal, factors);
}

StatusCode MethodSpec::Create(Method newMethod, const FactorList& factors, std::int32_t newLength,
                              std::int32_t normalisation, std::int32_t hint, const Root* roots, std::ptrdiff_t stride) {
  method = newMethod;
  length = newLength;
  switch (method) {
    case Method::Small:
      return StatusCode::Success;
    case Method::PowerOfTwo: {
      std::int32_t order = 0;
      while ((std::int64_t{1} << order) < length) ++order;
      return powerOfTwo.Create(order, normalisation, hint, roots, stride);
    }
    case Method::MixedRadix:
      mixedRadix.factors = factors;
      return mixedRadix.Create(roots, stride);
    case Method::Direct:
      return direct.Create(length, roots, stride);
    default:
      return largePrime.Create(length, roots);
  }
}

template <class V>
Complex<V>* MethodSpec::Run(Complex<V>* data, Complex<V>* work) const {
  switch (method) {
    case Method::Small:
      RunSmall(data, length);
      return data;
    case Method::PowerOfTwo:
      return powerOfTwo.Run(data, work);
    case Method::MixedRadix:
      return mixedRadix.Run(data, work);
    case Method::LargePrime:
      largePrime.Run(data, work);
      return data;
    default:
      break;
  }
  const std::ptrdiff_t m = length;
  Fold(data, m);
  RunDirect(direct, data, m, [=](std::ptrdiff_t k, Complex<V> value, Complex<V> mirrored) {
    work[k] = value;
    if (k > 0) work[m - k] = mirrored;
  });
  return work;
}

std::int64_t MethodSpec::workLength() const {
  switch (method) {
    case Method::Small:
      return 0;
    case Method::LargePrime:
      return 2 * largePrime.fft.length();
    default:
      return length;
  }
}

template Complex<float>* MethodSpec::Run(Complex<float>*, Complex<float>*) const;
template ComplexLanes* MethodSpec::Run(ComplexLanes*, ComplexLanes*) const;

}  // namespace norvala::dft
