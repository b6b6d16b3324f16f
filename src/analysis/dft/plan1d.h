#pragma once

#include "analysis/dft/bluestein.h"
#include "analysis/dft/direct.h"
#include "analysis/dft/lanes.h"
#include "analysis/dft/roots.h"
#include "analysis/dft/stockham.h"
#include "frame/aligned_memory.h"
#include "frame/memory.h"
#include "frame/status.h"

// One-dimensional transforms. Their specifications live in aligned memory and release what they own; the tables of
// roots that they are made from are shared among those made together.

namespace norvala {
namespace dft {

// Which directions of a transform are scaled, and by what.
struct Normalisation {
  bool forwardScaled = false;
  bool inverseScaled = false;
  double scale = 0.0;

  // `flag` is 1, 2, 4 or 8.
  StatusCode Set(std::int32_t flag, std::int32_t length);
  // Multiplies `count` floats at any address by the scale, if the forward direction is scaled.
  void ScaleForward(void* values, std::ptrdiff_t count) const;
};

enum class Values { Real, Complex };

enum class Method : std::int32_t {
  Small,      // up to 4 values: formulas, no tables
  Stockham,   // a product of small factors
  Direct,     // the defining sum
  Bluestein,  // a convolution through a transform of a power of two
};

// How n values are transformed: the method, and its plan for `length` values. An even number n of real values above 4
// is transformed as n / 2 complex ones, an odd one with that of a second row as the parts of n complex ones, or by
// itself where the method is the direct sum.
struct Plan1D {
  Method method = Method::Small;
  std::int32_t length = 0;
  std::ptrdiff_t rootStride = 1;  // the roots of n values have the order length * rootStride
  // The one of the method is filled.
  StockhamPlan stockham;  // of small lengths, too: one butterfly
  DirectPlan direct;
  BluesteinPlan bluestein;

  void Choose(std::int32_t n, Values values);
  StatusCode Create(SharedRoots& roots);
  // Whether the scratch holds a work area and more: not that of the direct sum and of up to 4 values.
  bool IsFast() const { return method == Method::Stockham || method == Method::Bluestein; }
  // Transforms `data`, which is overwritten; `work` has room for as many values, or for those of the Bluestein plan.
  // Returns where the result lies.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const {
    if (method == Method::Direct) return direct.Run(data, work);
    if (method == Method::Bluestein) return bluestein.Run(data, work);
    return stockham.Run(data, work);
  }
};

// What the specifications for real and for complex values have in common.
struct Spec1D {
  std::int32_t tag = 0;
  std::int32_t length = 0;
  Normalisation normalisation;
  std::int32_t hint = 0;
  std::int64_t scratchSize = 0;
  Plan1D plan;
};

}  // namespace dft

// Complex values in natural order.
struct DftSpec1DComplex : dft::Spec1D {
  static constexpr std::int32_t kTag = 13;
};

// Real values to a packed spectrum of as many floats: R0, R1, I1, R2, I2, ... and, for an even length, R(n/2) last.
struct DftSpec1DReal : dft::Spec1D {
  static constexpr std::int32_t kTag = 15;

  // Even lengths above 4: entry k of (n + 3) / 4 is (0.5 re, 0.5 im + 0.5) of the root w^k of order n, and w^k itself.
  AlignedVector<dft::Root> rebuildTable;
  AlignedVector<dft::Root> rebuildRoots;

  // Whether two rows are transformed as the parts of one complex row.
  bool PairsRows() const { return length % 2 != 0 && plan.IsFast(); }
};

template <class Spec>  // DftSpec1DComplex, DftSpec1DReal
StatusCode CreateDftSpec1D(Spec** spec, std::int32_t length, std::int32_t normalisation, std::int32_t hint,
                           dft::SharedRoots& roots);
template <class Spec>
void FreeDftSpec1D(Spec* spec);

namespace dft {

// Transforms the rows of src[0] to those of dst[0] and, where rows are paired, those of src[1] to dst[1], without
// scaling; rows may be repeated. `scratch` is aligned for V. For rows of four values (F32x4) it holds length *
// sizeof(V) bytes and the specification's scratchSize; for a single row (float) scratchSize is enough.
template <class V>
void RunRealRows(const DftSpec1DReal& spec, const SourceRows<V> (&src)[2], const DestinationRows<V> (&dst)[2],
                 void* scratch);

}  // namespace dft
}  // namespace norvala
