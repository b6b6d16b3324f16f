#pragma once

#include <new>

#include "analysis/dft/complex_lanes.h"
#include "analysis/dft/method.h"
#include "analysis/dft/roots.h"
#include "analysis/dft/row_lanes.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

// One-dimensional transforms. Their specifications live in aligned memory and release what they own; the tables of
// roots that they are made from are shared among those made together. Scratch is null (it is then allocated) or holds
// the specification's scratchSize bytes.

namespace norvala {

// Kind tags at the start of every specification.
inline constexpr std::int32_t kDftSpec1DComplexTag = 13;
inline constexpr std::int32_t kDftSpec1DRealTag = 15;
inline constexpr std::int32_t kDftSpec2DTag = 28;

namespace dft {

// Which directions of a transform are scaled, and by what.
struct Normalisation {
  bool forwardScaled = false;
  bool inverseScaled = false;
  double scale = 0.0;

  // `flag` is 1, 2, 4 or 8.
  StatusCode Set(std::int32_t flag, std::int32_t length);
  // Multiplies `count` floats at any address by the scale.
  void Scale(void* values, std::ptrdiff_t count) const;
};

// Release and creation as both kinds share them: `fill` makes the object ready; what it has is released when it fails.
template <class Spec>
void FreeSpec1D(Spec* spec) {
  if (spec == nullptr) return;
  spec->tag = 0;
  spec->~Spec();
  kFree1D(spec);
}
template <class Spec, class Fill>
StatusCode CreateSpec1D(Spec** spec, std::int32_t length, Fill fill) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (length < 1) return StatusCode::NonPositiveSize;
  AlignedVector<Spec> memory(1);
  if (!memory) return StatusCode::WorkBufferUnavailable;
  auto* const created = new (memory.Release()) Spec;
  const StatusCode status = fill(*created);
  if (status == StatusCode::Success) {
    *spec = created;
  } else {
    FreeSpec1D(created);
  }
  return status;
}

}  // namespace dft

// Complex values in natural order. Source and destination may be the same.
struct DftSpec1DComplex {
  std::int32_t tag = kDftSpec1DComplexTag;
  std::int32_t length = 0;
  dft::Normalisation normalisation;
  std::int32_t hint = 0;
  std::int64_t scratchSize = 0;
  dft::MethodSpec method;
};

StatusCode CreateDftSpec1DComplex(DftSpec1DComplex** spec, std::int32_t length, std::int32_t normalisation,
                                  std::int32_t hint, dft::SharedRoots& roots);
void FreeDftSpec1DComplex(DftSpec1DComplex* spec);
StatusCode RunDft1DComplex(const dft::Complex<float>* src, dft::Complex<float>* dst, const DftSpec1DComplex* spec,
                           void* scratch);

// Real values to a packed spectrum of as many floats: R0, R1, I1, R2, I2, ... and, for an even length, R(n/2) last.
// Source and destination may be the same and may be misaligned.
struct DftSpec1DReal {
  std::int32_t tag = kDftSpec1DRealTag;
  std::int32_t length = 0;
  dft::Normalisation normalisation;
  std::int32_t hint = 0;
  std::int64_t scratchSize = 0;
  // Transforms half as many complex values where the length is even and above 4, as many where it is odd.
  dft::MethodSpec method;
  // Even lengths above 4: entry k of (n + 3) / 4 is (0.5 re, 0.5 im + 0.5) of the root w^k of order n, and w^k itself.
  AlignedVector<dft::Root> rebuildTable;
  AlignedVector<dft::Root> rebuildRoots;

  // An odd number of real values has no half: two rows are transformed as the parts of one complex row.
  bool pairsRows() const {
    return length % 2 != 0 && (method.method == dft::Method::MixedRadix || method.method == dft::Method::LargePrime);
  }
};

StatusCode CreateDftSpec1DReal(DftSpec1DReal** spec, std::int32_t length, std::int32_t normalisation, std::int32_t hint,
                               dft::SharedRoots& roots);
void FreeDftSpec1DReal(DftSpec1DReal* spec);
StatusCode RunDft1DReal(const FLOAT32* src, FLOAT32* dst, const DftSpec1DReal* spec, void* scratch);

namespace dft {

// Transforms the rows of src[0] to those of dst[0] and, where rows are paired, those of src[1] to dst[1], without
// scaling; rows may be repeated. `scratch` is aligned for V and holds length * sizeof(V) + scratchSize bytes.
template <class V>
void RunRealRows(const DftSpec1DReal& spec, const RowLanes<V> (&src)[2], const RowLanes<V> (&dst)[2], void* scratch);

}  // namespace dft
}  // namespace norvala
