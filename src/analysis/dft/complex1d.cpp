#include <cstring>

#include "analysis/dft/scratch.h"
#include "analysis/dft/spec1d.h"

namespace norvala {

using namespace dft;

namespace {

StatusCode Fill(DftSpec1DComplex& spec, std::int32_t length, std::int32_t normalisation, std::int32_t hint,
                SharedRoots& shared) {
  spec.length = length;
  spec.hint = hint;
  StatusCode status = spec.normalisation.Set(normalisation, length);
  if (status != StatusCode::Success) return status;
  FactorList factors;
  const Method method = ChooseComplexMethod(length, factors);
  if (method == Method::Small) return spec.method.Create(method, factors, length, normalisation, hint, nullptr, 1);

  const std::int64_t n = length;
  const Root* const roots = shared.OfOrder(method == Method::LargePrime ? 2 * n : n);
  if (roots == nullptr) return StatusCode::WorkBufferUnavailable;
  status = spec.method.Create(method, factors, length, normalisation, hint, roots, 1);
  switch (method) {
    case Method::PowerOfTwo:
      spec.scratchSize = spec.method.powerOfTwo.scratchSize();
      break;
    case Method::LargePrime:
      spec.scratchSize = spec.method.largePrime.scratchSize();
      break;
    // A second buffer of four transforms side by side.
    case Method::MixedRadix:
      spec.scratchSize = n * static_cast<std::int64_t>(sizeof(ComplexLanes)) + 16;
      break;
    default:
      spec.scratchSize = n * static_cast<std::int64_t>(sizeof(Root)) + 16;
      break;
  }
  return status;
}

}  // namespace

StatusCode CreateDftSpec1DComplex(DftSpec1DComplex** spec, std::int32_t length, std::int32_t normalisation,
                                  std::int32_t hint, SharedRoots& roots) {
  return dft::CreateSpec1D(
      spec, length, [&](DftSpec1DComplex& created) { return Fill(created, length, normalisation, hint, roots); });
}

void FreeDftSpec1DComplex(DftSpec1DComplex* spec) { dft::FreeSpec1D(spec); }

StatusCode RunDft1DComplex(const Complex<float>* src, Complex<float>* dst, const DftSpec1DComplex* spec,
                           void* scratch) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (spec->tag != kDftSpec1DComplexTag) return StatusCode::WrongStateKind;
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  const std::size_t bytes = static_cast<std::size_t>(spec->length) * sizeof(Complex<float>);
  if (spec->method.method == Method::Small) {
    if (src != dst) std::memcpy(dst, src, bytes);
    spec->method.Run(dst, dst);
  } else {
    const Scratch memory(scratch, spec->scratchSize);
    if (!memory) return StatusCode::WorkBufferUnavailable;
    auto* const data = reinterpret_cast<Complex<float>*>(memory.data());
    std::memcpy(data, src, bytes);
    // The direct sum writes straight to the destination: its scratch holds the folded input alone.
    auto* const work = spec->method.method == Method::Direct ? dst : data + spec->length;
    const Complex<float>* const result = spec->method.Run(data, work);
    if (result != dst) std::memcpy(dst, result, bytes);
  }
  if (spec->normalisation.forwardScaled) spec->normalisation.Scale(dst, std::ptrdiff_t{2} * spec->length);
  return StatusCode::Success;
}

}  // namespace norvala
