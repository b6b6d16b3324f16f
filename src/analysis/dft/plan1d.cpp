#include "analysis/dft/plan1d.h"

#include <cmath>
#include <cstring>
#include <new>
#include <type_traits>

#include "frame/types.h"

namespace norvala {

using namespace dft;

namespace {

constexpr std::int32_t kLargestSmall = 4;
// Where the transforms of Bluestein's method take over from the direct sum, whose time grows with the square of the
// length; a sum over real values takes half the time of one over complex ones. The methods round differently, so that
// these limits show in the results.
constexpr std::int32_t kLargestDirect = 150;
constexpr std::int32_t kLargestDirectReal = 180;

StatusCode MakeRebuildTables(DftSpec1DReal& spec, SharedRoots& sharedRoots) {
  const Root* const roots = sharedRoots.OfOrder(spec.length);
  if (roots == nullptr) return StatusCode::WorkBufferUnavailable;
  const std::ptrdiff_t count = (std::ptrdiff_t{spec.length} + 3) / 4;
  spec.rebuildTable = AlignedVector<Root>(count);
  spec.rebuildRoots = AlignedVector<Root>(count);
  if (!spec.rebuildTable || !spec.rebuildRoots) return StatusCode::WorkBufferUnavailable;
  for (std::ptrdiff_t k = 0; k < count; ++k) {
    spec.rebuildTable[k] = {0.5F * roots[k].re, 0.5F * roots[k].im + 0.5F};
    spec.rebuildRoots[k] = roots[k];
  }
  return StatusCode::Success;
}

template <class Spec, class T>
StatusCode CheckRun(const T* src, const T* dst, const Spec* spec) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (spec->tag != Spec::kTag) return StatusCode::WrongStateKind;
  return src == nullptr || dst == nullptr ? StatusCode::NullPointer : StatusCode::Success;
}

}  // namespace

StatusCode Normalisation::Set(std::int32_t flag, std::int32_t length) {
  if (flag != 1 && flag != 2 && flag != 4 && flag != 8) return StatusCode::BadNormalisation;
  forwardScaled = flag == 1 || flag == 4;
  inverseScaled = flag == 2 || flag == 4;
  if (flag != 8) scale = 1.0 / (flag == 4 ? std::sqrt(static_cast<double>(length)) : static_cast<double>(length));
  return StatusCode::Success;
}

void Normalisation::ScaleForward(void* values, std::ptrdiff_t count) const {
  if (!forwardScaled) return;
  auto* const floats = static_cast<Unaligned<float>*>(values);
  for (std::ptrdiff_t i = 0; i < count; ++i) floats[i] = static_cast<float>(floats[i] * scale);
}

void Plan1D::Choose(std::int32_t n, Values values) {
  length = n;
  if (n <= kLargestSmall) {
    if (n > 1) stockham.factors.Append(n, n);
    return;
  }
  std::int32_t largestDirect = kLargestDirect;
  if (values == Values::Real && n % 2 == 0) {
    length = n / 2;
    rootStride = 2;
  } else if (values == Values::Real) {
    largestDirect = kLargestDirectReal;
    direct.real = true;
  }
  if (Factorise(length, stockham.factors)) {
    method = Method::Stockham;
  } else {
    method = length <= largestDirect ? Method::Direct : Method::Bluestein;
  }
}

template <class Spec>
void FreeDftSpec1D(Spec* spec) {
  if (spec == nullptr) return;
  spec->tag = 0;
  spec->~Spec();
  kFree1D(spec);
}

template <class Spec>
StatusCode CreateDftSpec1D(Spec** spec, std::int32_t length, std::int32_t normalisation, std::int32_t hint,
                           SharedRoots& roots) {
  constexpr bool real = std::is_same_v<Spec, DftSpec1DReal>;
  if (spec == nullptr) return StatusCode::NullPointer;
  if (length < 1) return StatusCode::NonPositiveSize;
  AlignedVector<Spec> memory(1);
  if (!memory) return StatusCode::WorkBufferUnavailable;
  auto* const created = new (memory.Release()) Spec;
  created->tag = Spec::kTag;
  created->length = length;
  created->hint = hint;
  created->plan.Choose(length, real ? Values::Real : Values::Complex);
  StatusCode status = created->normalisation.Set(normalisation, length);
  if constexpr (real) {
    if (status == StatusCode::Success && created->plan.length != length) status = MakeRebuildTables(*created, roots);
  }
  if (status == StatusCode::Success) status = created->plan.Create(roots);
  if (status != StatusCode::Success) {
    FreeDftSpec1D(created);
    return status;
  }
  created->scratchSize = created->plan.ScratchSize();
  *spec = created;
  return StatusCode::Success;
}

template StatusCode CreateDftSpec1D(DftSpec1DComplex**, std::int32_t, std::int32_t, std::int32_t, SharedRoots&);
template StatusCode CreateDftSpec1D(DftSpec1DReal**, std::int32_t, std::int32_t, std::int32_t, SharedRoots&);
template void FreeDftSpec1D(DftSpec1DComplex*);
template void FreeDftSpec1D(DftSpec1DReal*);

StatusCode RunDft1DComplex(const Complex<float>* src, Complex<float>* dst, const DftSpec1DComplex* spec,
                           void* scratch) {
  if (const StatusCode status = CheckRun(src, dst, spec); status != StatusCode::Success) return status;
  const Scratch memory(scratch, spec->scratchSize);
  if (!memory && spec->scratchSize > 0) return StatusCode::WorkBufferUnavailable;
  Complex<float> few[kLargestSmall];
  auto* const data = spec->scratchSize > 0 ? reinterpret_cast<Complex<float>*>(memory.data()) : few;
  const std::ptrdiff_t n = spec->length;
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof *src;
  std::memcpy(data, src, bytes);
  // The destination serves as work area where that is no longer than it.
  const Complex<float>* const result = spec->plan.Run(data, spec->plan.WorkLength() <= n ? dst : data + n);
  if (result != dst) std::memcpy(dst, result, bytes);
  spec->normalisation.ScaleForward(dst, 2 * n);
  return StatusCode::Success;
}

StatusCode RunDft1DReal(const FLOAT32* src, FLOAT32* dst, const DftSpec1DReal* spec, void* scratch) {
  if (const StatusCode status = CheckRun(src, dst, spec); status != StatusCode::Success) return status;
  const Scratch memory(scratch, spec->scratchSize);
  if (!memory && spec->scratchSize > 0) return StatusCode::WorkBufferUnavailable;
  const SourceRows<float> from = {{reinterpret_cast<const unsigned char*>(src)}};
  const DestinationRows<float> to = {{reinterpret_cast<unsigned char*>(dst)}};
  RunRealRows<float>(*spec, {from, from}, {to, to}, memory.data());
  spec->normalisation.ScaleForward(dst, spec->length);
  return StatusCode::Success;
}

}  // namespace norvala
