#include "analysis/dft/plan2d.h"

#include <algorithm>
#include <new>

#include "analysis/analysis.h"
#include "frame/memory.h"

namespace norvala {

using namespace dft;

namespace {

// The scratch of an image is the most that one of its passes needs, each pass being a share for its data, in bytes an
// element, and the scratchSize of its specification:
// - Rows, 4 at once or 8 paired (odd lengths), hold plan.length ComplexLanes of data, all of the share, or twice the
//   share where rows are paired, and the work area, which the direct sum does without: its results go to the
//   destination. An odd length by the direct sum holds as many F32x4, all of the share; up to 4 elements need nothing.
// - A real column holds its elements, then the scratch. So does a single complex column.
// - Complex columns, 4 a block: the share is two blocks. One block and its work area always fit: the work area is no
//   longer than the data, but for Bluestein's method, whose scratchSize includes it. More blocks use what is left.
constexpr std::int64_t kRowShare = sizeof(F32x4);
constexpr std::int64_t kColumnShare = 2 * sizeof(ComplexLanes);

StatusCode Fill(DftSpec2D& spec, std::int32_t normalisation) {
  const std::int64_t rowShare = kRowShare * spec.width;
  const std::int64_t realColumnShare = kRowShare * spec.height;
  const std::int64_t columnShare = kColumnShare * spec.height;
  // A bad flag is reported before a size that is too large, and that before long tables are made for it.
  StatusCode status = Normalisation{}.Set(normalisation, spec.width);
  if (status != StatusCode::Success) return status;
  if (std::max(rowShare, columnShare) > UINT32_MAX) return StatusCode::WorkBufferUnavailable;
  SharedRoots roots;
  const auto create = [&](auto*& nested, std::int32_t length) {
    if (status == StatusCode::Success) status = CreateDftSpec1D(&nested, length, normalisation, spec.hint, roots);
  };
  create(spec.rowRealSpec, spec.width);
  if (spec.height != spec.width) create(spec.columnRealSpec, spec.height);
  create(spec.columnComplexSpec, spec.height);
  if (status != StatusCode::Success) return status;
  const std::int64_t workSize =
      std::max({rowShare + spec.rowRealSpec->scratchSize, realColumnShare + spec.RealColumns().scratchSize,
                columnShare + spec.columnComplexSpec->scratchSize});
  if (workSize > UINT32_MAX) return StatusCode::WorkBufferUnavailable;
  spec.workSize = static_cast<std::uint32_t>(workSize);
  return StatusCode::Success;
}

void Release(DftSpec2D* spec) {
  FreeDftSpec1D(spec->reservedSpec);
  FreeDftSpec1D(spec->columnComplexSpec);
  FreeDftSpec1D(spec->rowRealSpec);
  FreeDftSpec1D(spec->columnRealSpec);
  spec->tag = 0;
  kFree1D(spec);
}

StatusCode CheckNestedSpecs(const DftSpec2D& spec) {
  if (spec.rowRealSpec == nullptr || spec.columnComplexSpec == nullptr) return StatusCode::NullPointer;
  const auto isWrong = [](const auto* nested) { return nested != nullptr && nested->tag != nested->kTag; };
  const bool anyWrong = isWrong(spec.rowRealSpec) || isWrong(spec.columnRealSpec) || isWrong(spec.columnComplexSpec) ||
                        isWrong(spec.reservedSpec);
  return anyWrong ? StatusCode::WrongStateKind : StatusCode::Success;
}

// Every row of the source into the packed image, four or eight rows at once. The last ones are repeated where the
// height is no multiple of that.
void TransformRows(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep, std::int32_t height,
                   const DftSpec1DReal& spec, unsigned char* scratch) {
  constexpr int kRows = kLanes<F32x4>;
  const int rowsAtOnce = spec.PairsRows() ? 2 * kRows : kRows;
  for (std::ptrdiff_t y = 0; y < height; y += rowsAtOnce) {
    SourceRows<F32x4> from[2];
    DestinationRows<F32x4> to[2];
    for (int i = 0; i < 2 * kRows; ++i) {
      const std::ptrdiff_t row = std::min<std::ptrdiff_t>(y + i % rowsAtOnce, height - 1);
      from[i / kRows].rows[i % kRows] = reinterpret_cast<const unsigned char*>(Row(src, srcStep, row));
      to[i / kRows].rows[i % kRows] = reinterpret_cast<unsigned char*>(Row(dst, dstStep, row));
    }
    RunRealRows<F32x4>(spec, from, to, scratch);
  }
  for (std::ptrdiff_t y = 0; y < height; ++y) spec.normalisation.ScaleForward(Row(dst, dstStep, y), spec.length);
}

}  // namespace

StatusCode CreateDftSpec2D(DftSpec2D** spec, std::int32_t width, std::int32_t height, std::int32_t normalisation,
                           std::int32_t hint) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (IsEmpty({width, height})) return StatusCode::NonPositiveSize;
  AlignedVector<DftSpec2D> memory(1);
  if (!memory) return StatusCode::WorkBufferUnavailable;
  auto* const created =
      new (memory.Release()) DftSpec2D{.tag = kDftSpec2DTag, .width = width, .height = height, .hint = hint};
  const StatusCode status = Fill(*created, normalisation);
  if (status != StatusCode::Success) {
    Release(created);
    return status;
  }
  *spec = created;
  return StatusCode::Success;
}

StatusCode FreeDftSpec2D(DftSpec2D* spec) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (spec->tag != kDftSpec2DTag) return StatusCode::WrongStateKind;
  Release(spec);
  return StatusCode::Success;
}

StatusCode TransformPackedFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                                  const DftSpec2D* spec, void* scratch) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (spec->tag != kDftSpec2DTag) return StatusCode::WrongStateKind;
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  const Scratch memory(scratch, spec->workSize);
  if (!memory) return StatusCode::WorkBufferUnavailable;
  if (const StatusCode status = CheckNestedSpecs(*spec); status != StatusCode::Success) return status;

  if (spec->height == 1) return RunDft1DReal(src, dst, spec->rowRealSpec, memory.data());
  if (spec->width == 1) {
    const DftSpec1DReal& column = spec->RealColumns();
    constexpr std::int32_t kContiguous = sizeof(FLOAT32);
    if (srcStep == kContiguous && dstStep == kContiguous) return RunDft1DReal(src, dst, &column, memory.data());
    return TransformRealColumn(src, srcStep, dst, dstStep, column, memory.data());
  }
  TransformRows(src, srcStep, dst, dstStep, spec->height, *spec->rowRealSpec, memory.data());
  return TransformColumns(dst, dstStep, *spec, memory.data());
}

}  // namespace norvala
