#include "analysis/dft/spec2d.h"

#include <algorithm>
#include <new>

#include "analysis/analysis.h"

namespace norvala {
namespace {

StatusCode Fill(DftSpec2D& spec, std::int32_t normalisation) {
  const std::int64_t width = spec.width;
  const std::int64_t height = spec.height;
  // A bad flag is told before a size that is too large, and that before long tables are made for it.
  StatusCode status = dft::Normalisation{}.Set(normalisation, spec.width);
  if (status != StatusCode::Success) return status;
  if (std::max(width * 16, height * 64) > UINT32_MAX) return StatusCode::WorkBufferUnavailable;
  dft::SharedRoots roots;
  status = CreateDftSpec1DReal(&spec.rowRealSpec, spec.width, normalisation, spec.hint, roots);
  if (status != StatusCode::Success) return status;
  const DftSpec1DReal* columnReal = spec.rowRealSpec;
  if (height != width) {
    status = CreateDftSpec1DReal(&spec.columnRealSpec, spec.height, normalisation, spec.hint, roots);
    if (status != StatusCode::Success) return status;
    columnReal = spec.columnRealSpec;
  }
  status = CreateDftSpec1DComplex(&spec.columnComplexSpec, spec.height, normalisation, spec.hint, roots);
  if (status != StatusCode::Success) return status;
  const std::int64_t workSize =
      std::max({width * 16 + spec.rowRealSpec->scratchSize, height * 16 + columnReal->scratchSize,
                height * 64 + spec.columnComplexSpec->scratchSize});
  if (workSize > UINT32_MAX) return StatusCode::WorkBufferUnavailable;
  spec.workSize = static_cast<std::uint32_t>(workSize);
  return StatusCode::Success;
}

void Release(DftSpec2D* spec) {
  FreeDftSpec1DComplex(spec->reservedSpec);
  FreeDftSpec1DComplex(spec->columnComplexSpec);
  FreeDftSpec1DReal(spec->rowRealSpec);
  FreeDftSpec1DReal(spec->columnRealSpec);
  spec->tag = 0;
  kFree1D(spec);
}

}  // namespace

StatusCode CreateDftSpec2D(DftSpec2D** spec, std::int32_t width, std::int32_t height, std::int32_t normalisation,
                           std::int32_t hint) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (IsEmpty({width, height})) return StatusCode::NonPositiveSize;
  AlignedVector<DftSpec2D> memory(1);
  if (!memory) return StatusCode::WorkBufferUnavailable;
  auto* const created = new (memory.Release()) DftSpec2D{};
  created->tag = kDftSpec2DTag;
  created->width = width;
  created->height = height;
  created->hint = hint;
  const StatusCode status = Fill(*created, normalisation);
  if (status == StatusCode::Success) {
    *spec = created;
  } else {
    Release(created);
  }
  return status;
}

StatusCode FreeDftSpec2D(DftSpec2D* spec) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (spec->tag != kDftSpec2DTag) return StatusCode::WrongStateKind;
  Release(spec);
  return StatusCode::Success;
}

}  // namespace norvala
