#include "analysis/dft/plan2d.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "analysis/analysis.h"
#include "frame/memory.h"

namespace norvala {

using namespace dft;

namespace {

// The scratch of an image is the most that one of its passes is given: a share for each element of a row (w) or column
// (h), and the scratchSize of the specification. That is 96 bytes and more for each of the n values that a fast method
// transforms (n = w, w / 2 for an even w, h), or for the M >= 2 n values of the FFT of Bluestein's method. In bytes:
//
//   Pass                            Share   Used of both
//   rows, 4 (even w) or 8 at once   16 w    32 n for the values, then 32 n or 64 M for the work area
//   rows by the direct sum          16 w    16 w; the results go straight to the destination
//   a real column                   16 h    4 h, then the scratchSize of one transform
//   complex columns, 16 at once     64 h    4 blocks of 32 h, then 32 h or 64 M
//   complex columns, direct sum     64 h    32 h, then 32 h
constexpr std::int64_t kRowBytes = sizeof(F32x4);
constexpr std::int64_t kColumnBytes = 2 * sizeof(ComplexLanes);

StatusCode Fill(DftSpec2D& spec, std::int32_t normalisation) {
  const std::int64_t rowBytes = kRowBytes * spec.width;
  const std::int64_t realColumnBytes = kRowBytes * spec.height;
  const std::int64_t columnBytes = kColumnBytes * spec.height;
  // A bad flag is reported before a size that is too large, and that before long tables are made for it.
  StatusCode status = Normalisation{}.Set(normalisation, spec.width);
  if (status != StatusCode::Success) return status;
  if (std::max(rowBytes, columnBytes) > UINT32_MAX) return StatusCode::WorkBufferUnavailable;
  SharedRoots roots;
  const auto create = [&](auto*& nested, std::int32_t length) {
    if (status == StatusCode::Success) status = CreateDftSpec1D(&nested, length, normalisation, spec.hint, roots);
  };
  create(spec.rowRealSpec, spec.width);
  if (spec.height != spec.width) create(spec.columnRealSpec, spec.height);
  create(spec.columnComplexSpec, spec.height);
  if (status != StatusCode::Success) return status;
  const std::int64_t workSize =
      std::max({rowBytes + spec.rowRealSpec->scratchSize, realColumnBytes + spec.RealColumns().scratchSize,
                columnBytes + spec.columnComplexSpec->scratchSize});
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
      from[i / kRows].rows[i % kRows] = Row(src, srcStep, row);
      to[i / kRows].rows[i % kRows] = Row(dst, dstStep, row);
    }
    RunRealRows<F32x4>(spec, from, to, scratch);
  }
  for (std::ptrdiff_t y = 0; y < height; ++y) spec.normalisation.ScaleForward(Row(dst, dstStep, y), spec.length);
}

// Complex columns are transformed in blocks of four, one column a lane. Several blocks are moved at once, for whole
// cache lines of the image's rows.
constexpr std::ptrdiff_t kBlockWidth = 8;  // floats
constexpr std::ptrdiff_t kMostBlocks = 4;

// One row of a block, two floats a column. Where it has a `width` below that of a block, the columns are moved as the
// bits of doubles, and the lanes of those that are absent are 0.
inline ComplexLanes LoadBlockRow(const Unaligned<FLOAT32>* from, std::ptrdiff_t width) {
  const auto column = [=](std::ptrdiff_t i) { return 2 * i < width ? LoadUnaligned<double>(from + 2 * i) : 0.0; };
  const bool isWhole = width >= kBlockWidth;
  const auto a = isWhole ? LoadUnaligned<F32x4>(from) : BitCastLanes<F32x4>(F64x2{column(0), column(1)});
  const auto b = isWhole ? LoadUnaligned<F32x4>(from + 4) : BitCastLanes<F32x4>(F64x2{column(2), 0.0});
  return {EvenLanes(a, b), OddLanes(a, b)};
}
inline void StoreBlockRow(const ComplexLanes& values, Unaligned<FLOAT32>* to, std::ptrdiff_t width) {
  if (width >= kBlockWidth) {
    StoreUnaligned(to, InterleaveLow(values.re, values.im));
    StoreUnaligned(to + 4, InterleaveHigh(values.re, values.im));
    return;
  }
  const auto a = BitCastLanes<F64x2>(InterleaveLow(values.re, values.im));
  const auto b = BitCastLanes<F64x2>(InterleaveHigh(values.re, values.im));
  StoreUnaligned(to, a[0]);
  if (width > 2) StoreUnaligned(to + 2, a[1]);
  if (width > 4) StoreUnaligned(to + 4, b[0]);
}

// Transforms columns of `width` floats in place: whole blocks or less than one.
void TransformBlocks(FLOAT32* columns, std::int32_t step, std::ptrdiff_t width, const DftSpec1DComplex& spec,
                     unsigned char* scratch) {
  const std::ptrdiff_t height = spec.length;
  const std::ptrdiff_t count = (width + kBlockWidth - 1) / kBlockWidth;
  auto* work = reinterpret_cast<ComplexLanes*>(scratch);
  ComplexLanes* blocks[kMostBlocks];
  for (std::ptrdiff_t i = 0; i < count; ++i, work += height) blocks[i] = work;
  const auto forEachRow = [&](auto move) {
    for (std::ptrdiff_t y = 0; y < height; ++y) {
      Unaligned<FLOAT32>* const row = Row(columns, step, y);
      for (std::ptrdiff_t i = 0; i < count; ++i) move(row + i * kBlockWidth, blocks[i][y]);
    }
  };
  forEachRow([=](Unaligned<FLOAT32>* from, ComplexLanes& values) { values = LoadBlockRow(from, width); });
  for (int i = 0; i < count; ++i) {
    // A result in the work area stays there; the block's own memory serves the next one.
    ComplexLanes* const result = spec.plan.Run(blocks[i], work);
    if (result != blocks[i]) work = std::exchange(blocks[i], result);
    spec.normalisation.ScaleForward(result, kBlockWidth * height);
  }
  forEachRow([=](Unaligned<FLOAT32>* to, const ComplexLanes& values) { StoreBlockRow(values, to, width); });
}

// Transforms one row.
void TransformRow(const FLOAT32* src, FLOAT32* dst, const DftSpec1DReal& spec, unsigned char* scratch) {
  const SourceRows<float> from = {{src}};
  const DestinationRows<float> to = {{dst}};
  RunRealRows<float>(spec, {from, from}, {to, to}, scratch);
  spec.normalisation.ScaleForward(dst, spec.length);
}

// Transforms the column at `src` to that at `dst` by way of the scratch.
void TransformRealColumn(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                         const DftSpec1DReal& spec, unsigned char* scratch) {
  auto* const values = reinterpret_cast<FLOAT32*>(scratch);
  for (std::ptrdiff_t y = 0; y < spec.length; ++y) values[y] = *Row(src, srcStep, y);
  TransformRow(values, values, spec, reinterpret_cast<unsigned char*>(values + spec.length));
  for (std::ptrdiff_t y = 0; y < spec.length; ++y) *Row(dst, dstStep, y) = values[y];
}

// Transforms the columns of an image of transformed rows in place.
void TransformColumns(FLOAT32* packed, std::int32_t step, const DftSpec2D& spec, unsigned char* scratch) {
  const auto transformReal = [&](FLOAT32* column) {
    TransformRealColumn(column, step, column, step, spec.RealColumns(), scratch);
  };
  const DftSpec1DComplex& complex = *spec.columnComplexSpec;
  const std::ptrdiff_t most = complex.plan.IsFast() ? kMostBlocks * kBlockWidth : kBlockWidth;
  const std::ptrdiff_t end = 1 + (std::ptrdiff_t{spec.width} - 1) / 2 * 2;
  transformReal(packed);
  for (std::ptrdiff_t x = 1, width; x < end; x += width) {
    width = end - x < kBlockWidth ? end - x : std::min((end - x) / kBlockWidth * kBlockWidth, most);
    TransformBlocks(packed + x, step, width, complex, scratch);
  }
  if (end < spec.width) transformReal(packed + end);
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
  // A vector of bytes ends at 2 GiB.
  const AlignedVector<std::uint64_t> own(scratch == nullptr ? (std::int64_t{spec->workSize} + 7) / 8 : 0);
  if (scratch == nullptr) scratch = own.data();
  auto* const memory = AlignUp(static_cast<unsigned char*>(scratch), kScratchAlignment);
  if (memory == nullptr) return StatusCode::WorkBufferUnavailable;
  if (const StatusCode status = CheckNestedSpecs(*spec); status != StatusCode::Success) return status;

  if (spec->height == 1) {
    TransformRow(src, dst, *spec->rowRealSpec, memory);
  } else if (spec->width == 1) {
    TransformRealColumn(src, srcStep, dst, dstStep, spec->RealColumns(), memory);
  } else {
    TransformRows(src, srcStep, dst, dstStep, spec->height, *spec->rowRealSpec, memory);
    TransformColumns(dst, dstStep, *spec, memory);
  }
  return StatusCode::Success;
}

}  // namespace norvala
