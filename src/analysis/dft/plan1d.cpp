#include "analysis/dft/plan1d.h"

#include <cmath>
#include <new>
#include <type_traits>

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

std::int64_t ScratchSize(const Plan1D& plan, std::int64_t valueBytes) {
  if (plan.method == Method::Small) return 0;
  // The values of one transform. Results go straight to the destination or, for columns, to the share of plan2d.cpp.
  if (plan.method == Method::Direct) return valueBytes + kScratchAlignment;
  // Room for three blocks of four transforms side by side, by the length of the FFT for Bluestein's method. A single
  // transform needs less; blocks of an image's columns use it (table in plan2d.cpp). Bluestein's method adds 8 bytes a
  // value of its FFT and another alignment, which nothing uses: they count in the total, which decides what sizes are
  // too large.
  const bool chirped = plan.method == Method::Bluestein;
  const std::int64_t length = chirped ? plan.bluestein.fft.length : plan.length;
  const std::int64_t buffers = 3 * static_cast<std::int64_t>(sizeof(ComplexLanes)) * length + kScratchAlignment;
  return chirped ? buffers + static_cast<std::int64_t>(sizeof(Root)) * length + kScratchAlignment : buffers;
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
  const bool small = n <= kLargestSmall;
  const bool halved = values == Values::Real && n % 2 == 0 && !small;
  length = halved ? n / 2 : n;
  rootStride = halved ? 2 : 1;
  const bool factorised = stockham.Factorise(length);
  const std::int32_t largestDirect = values == Values::Real && !halved ? kLargestDirectReal : kLargestDirect;
  method = small                     ? Method::Small
           : factorised              ? Method::Stockham
           : length <= largestDirect ? Method::Direct
                                     : Method::Bluestein;
}

StatusCode Plan1D::Create(SharedRoots& roots) {
  if (method == Method::Direct) return direct.Create(length, rootStride, roots);
  if (method == Method::Bluestein) return bluestein.Create(length, roots);
  return stockham.Create(rootStride, roots);
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
  created->scratchSize = ScratchSize(created->plan, (real ? 4 : 8) * std::int64_t{length});
  *spec = created;
  return StatusCode::Success;
}

template StatusCode CreateDftSpec1D(DftSpec1DComplex**, std::int32_t, std::int32_t, std::int32_t, SharedRoots&);
template StatusCode CreateDftSpec1D(DftSpec1DReal**, std::int32_t, std::int32_t, std::int32_t, SharedRoots&);
template void FreeDftSpec1D(DftSpec1DComplex*);
template void FreeDftSpec1D(DftSpec1DReal*);

}  // namespace norvala
