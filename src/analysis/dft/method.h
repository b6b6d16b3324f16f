#pragma once

#include "analysis/dft/direct.h"
#include "analysis/dft/large_prime.h"
#include "analysis/dft/mixed_radix.h"
#include "analysis/dft/power_of_two.h"
#include "frame/status.h"

namespace norvala::dft {

enum class Method : std::int32_t {
  Small,       // up to 4 values: formulas, no tables
  PowerOfTwo,  // 2^order values
  MixedRadix,  // a product of small factors
  Direct,      // the defining sum
  LargePrime,  // a convolution through a transform of a power of two
};

// The method for complex values. `factors` is filled for MixedRadix.
Method ChooseComplexMethod(std::int32_t length, FactorList& factors);
// The method for real values: of an even length above 4, it transforms half as many complex values.
Method ChooseRealMethod(std::int32_t length, FactorList& factors);

// Whatever a transform of `length` complex values (or of an odd number of real ones) needs by its method; the members
// of the other methods stay empty.
struct MethodSpec {
  Method method = Method::Small;
  std::int32_t length = 0;
  PowerOfTwoSpec powerOfTwo;
  MixedRadixSpec mixedRadix;
  DirectSpec direct;
  LargePrimeSpec largePrime;

  // `roots` has the order newLength * stride, for LargePrime twice that: 2 * newLength, stride 1.
  StatusCode Create(Method newMethod, const FactorList& factors, std::int32_t newLength, std::int32_t normalisation,
                    std::int32_t hint, const Root* roots, std::ptrdiff_t stride);
  // Transforms `data`, which is overwritten; `work` has room for workLength() values. Returns where the result lies.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const;
  std::int64_t workLength() const;
};

}  // namespace norvala::dft
