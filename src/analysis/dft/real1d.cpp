#include "analysis/dft/scratch.h"
#include "analysis/dft/spec1d.h"

namespace norvala {

using namespace dft;

namespace {

StatusCode MakeRebuildTables(DftSpec1DReal& spec, const Root* roots) {
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

std::int64_t ScratchSize(const DftSpec1DReal& spec) {
  const std::int64_t n = spec.method.length;
  switch (spec.method.method) {
    case Method::PowerOfTwo:
      return spec.method.powerOfTwo.scratchSize();
    case Method::LargePrime:
      return spec.method.largePrime.scratchSize();
    // Two buffers of four transforms side by side, less the room that their real input has.
    case Method::MixedRadix:
      return (spec.pairsRows() ? 48 : 32) * n + 16;
    default:
      return (spec.length % 2 == 0 ? 8 : 4) * n + 16;
  }
}

StatusCode Fill(DftSpec1DReal& spec, std::int32_t length, std::int32_t normalisation, std::int32_t hint,
                SharedRoots& shared) {
  spec.length = length;
  spec.hint = hint;
  StatusCode status = spec.normalisation.Set(normalisation, length);
  if (status != StatusCode::Success) return status;
  FactorList factors;
  const Method method = ChooseRealMethod(length, factors);
  if (method == Method::Small) return spec.method.Create(method, factors, length, normalisation, hint, nullptr, 1);

  const std::int64_t n = length;
  const bool even = length % 2 == 0;
  const Root* const roots = shared.OfOrder(!even && method == Method::LargePrime ? 2 * n : n);
  if (roots == nullptr) return StatusCode::WorkBufferUnavailable;
  if (even) status = MakeRebuildTables(spec, roots);
  if (status != StatusCode::Success) return status;
  status = spec.method.Create(method, factors, even ? length / 2 : length, normalisation, hint, roots, even ? 2 : 1);
  spec.scratchSize = ScratchSize(spec);
  return status;
}

}  // namespace

StatusCode CreateDftSpec1DReal(DftSpec1DReal** spec, std::int32_t length, std::int32_t normalisation, std::int32_t hint,
                               SharedRoots& roots) {
  return dft::CreateSpec1D(spec, length,
                           [&](DftSpec1DReal& created) { return Fill(created, length, normalisation, hint, roots); });
}

void FreeDftSpec1DReal(DftSpec1DReal* spec) { dft::FreeSpec1D(spec); }

StatusCode RunDft1DReal(const FLOAT32* src, FLOAT32* dst, const DftSpec1DReal* spec, void* scratch) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (spec->tag != kDftSpec1DRealTag) return StatusCode::WrongStateKind;
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  const RowLanes<float> from = {{reinterpret_cast<unsigned char*>(const_cast<FLOAT32*>(src))}};
  const RowLanes<float> to = {{reinterpret_cast<unsigned char*>(dst)}};
  if (spec->scratchSize > 0) {
    const Scratch memory(scratch, spec->scratchSize);
    if (!memory) return StatusCode::WorkBufferUnavailable;
    RunRealRows<float>(*spec, {from, from}, {to, to}, memory.data());
  } else {
    RunRealRows<float>(*spec, {from, from}, {to, to}, nullptr);
  }
  if (spec->normalisation.forwardScaled) spec->normalisation.Scale(dst, spec->length);
  return StatusCode::Success;
}

}  // namespace norvala
