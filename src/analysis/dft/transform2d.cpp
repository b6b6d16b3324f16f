#include <algorithm>
#include <utility>

#include "analysis/analysis.h"
#include "analysis/dft/scratch.h"
#include "analysis/dft/spec2d.h"
#include "frame/memory.h"

namespace norvala {

using namespace dft;

namespace {

// The packed image while its passes run.
struct Packed {
  FLOAT32* image;
  std::int32_t step;
  std::int32_t width;
  std::int32_t height;
  unsigned char* scratch;

  // Element (x, y) as an address.
  unsigned char* At(std::ptrdiff_t x, std::ptrdiff_t y) const {
    return reinterpret_cast<unsigned char*>(Row(image, step, y)) + x * 4;
  }
  // The work area behind gathered columns of so many bytes an element.
  unsigned char* Behind(std::ptrdiff_t elementBytes) const { return scratch + elementBytes * height; }
};

unsigned char* Bytes(const FLOAT32* image, std::int32_t step, std::ptrdiff_t y) {
  return reinterpret_cast<unsigned char*>(Row(const_cast<FLOAT32*>(image), step, y));
}

// Every row of the source into the packed image, four or eight rows at once. The last ones are repeated where the
// height is no multiple of that.
void TransformRows(const FLOAT32* src, std::int32_t srcStep, const Packed& packed, const DftSpec1DReal& spec) {
  constexpr int kRows = RowLanes<F32x4>::kRows;
  const int rowsAtOnce = spec.pairsRows() ? 2 * kRows : kRows;
  for (std::ptrdiff_t y = 0; y < packed.height; y += rowsAtOnce) {
    RowLanes<F32x4> from[2], to[2];
    for (int i = 0; i < 2 * kRows; ++i) {
      const std::ptrdiff_t row = std::min<std::ptrdiff_t>(y + i % rowsAtOnce, packed.height - 1);
      from[i / kRows].rows[i % kRows] = Bytes(src, srcStep, row);
      to[i / kRows].rows[i % kRows] = packed.At(0, row);
    }
    RunRealRows<F32x4>(spec, from, to, packed.scratch);
  }
  if (!spec.normalisation.forwardScaled) return;
  for (std::ptrdiff_t y = 0; y < packed.height; ++y) spec.normalisation.Scale(packed.At(0, y), packed.width);
}

// Moves `bytes` of every row between column x of an image and the scratch.
void Gather(const Packed& image, std::ptrdiff_t x, std::size_t bytes) {
  unsigned char* to = image.scratch;
  for (std::ptrdiff_t y = 0; y < image.height; ++y, to += bytes) std::memcpy(to, image.At(x, y), bytes);
}
void Scatter(const Packed& packed, std::ptrdiff_t x, std::size_t bytes) {
  const unsigned char* from = packed.scratch;
  for (std::ptrdiff_t y = 0; y < packed.height; ++y, from += bytes) std::memcpy(packed.At(x, y), from, bytes);
}

// `from` is the packed image itself or one of the same size that shares its scratch.
StatusCode TransformRealColumn(const Packed& from, const Packed& packed, std::ptrdiff_t x, const DftSpec1DReal& spec) {
  Gather(from, x, sizeof(FLOAT32));
  auto* const column = reinterpret_cast<FLOAT32*>(packed.scratch);
  const StatusCode status = RunDft1DReal(column, column, &spec, packed.Behind(sizeof(FLOAT32)));
  if (status == StatusCode::Success) Scatter(packed, x, sizeof(FLOAT32));
  return status;
}

StatusCode TransformComplexColumn(const Packed& packed, std::ptrdiff_t x, const DftSpec1DComplex& spec) {
  using Element = Complex<float>;
  Gather(packed, x, sizeof(Element));
  auto* const column = reinterpret_cast<Element*>(packed.scratch);
  const StatusCode status = RunDft1DComplex(column, column, &spec, packed.Behind(sizeof(Element)));
  if (status == StatusCode::Success) Scatter(packed, x, sizeof(Element));
  return status;
}

// Complex columns are transformed in blocks of four, one column a lane. Several blocks are moved at once, for whole
// cache lines of the image's rows.
constexpr int kMostBlocks = 4;
constexpr std::ptrdiff_t kBlockWidth = 8;  // floats

void GatherBlocks(const Packed& packed, std::ptrdiff_t x, ComplexLanes* const* blocks, int count) {
  for (std::ptrdiff_t y = 0; y < packed.height; ++y) {
    const unsigned char* from = packed.At(x, y);
    for (int i = 0; i < count; ++i, from += kBlockWidth * sizeof(FLOAT32)) {
      const auto a = LoadUnaligned<F32x4>(from);
      const auto b = LoadUnaligned<F32x4>(from + sizeof a);
      blocks[i][y] = {__builtin_shufflevector(a, b, 0, 2, 4, 6), __builtin_shufflevector(a, b, 1, 3, 5, 7)};
    }
  }
}

void ScatterBlocks(const Packed& packed, std::ptrdiff_t x, ComplexLanes* const* blocks, int count) {
  for (std::ptrdiff_t y = 0; y < packed.height; ++y) {
    unsigned char* to = packed.At(x, y);
    for (int i = 0; i < count; ++i, to += kBlockWidth * sizeof(FLOAT32)) {
      const F32x4 re = blocks[i][y].re, im = blocks[i][y].im;
      StoreUnaligned(to, __builtin_shufflevector(re, im, 0, 4, 1, 5));
      StoreUnaligned(to + sizeof re, __builtin_shufflevector(re, im, 2, 6, 3, 7));
    }
  }
}

// As many blocks as the scratch holds beside the work area of one transform.
int BlocksAtOnce(const DftSpec2D& spec) {
  const std::int64_t blockBytes = std::int64_t{spec.height} * static_cast<std::int64_t>(sizeof(ComplexLanes));
  const std::int64_t workBytes =
      spec.columnComplexSpec->method.workLength() * static_cast<std::int64_t>(sizeof(ComplexLanes));
  return static_cast<int>(std::min<std::int64_t>(kMostBlocks, (spec.workSize - workBytes) / blockBytes));
}

void TransformBlocks(const Packed& packed, std::ptrdiff_t x, int count, const DftSpec1DComplex& spec) {
  auto* work = reinterpret_cast<ComplexLanes*>(packed.scratch);
  ComplexLanes* blocks[kMostBlocks];
  for (int i = 0; i < count; ++i, work += packed.height) blocks[i] = work;
  GatherBlocks(packed, x, blocks, count);
  for (int i = 0; i < count; ++i) {
    // A result in the work area stays there; the block's own memory serves the next one.
    ComplexLanes* const result = spec.method.Run(blocks[i], work);
    if (result != blocks[i]) work = std::exchange(blocks[i], result);
    if (spec.normalisation.forwardScaled) spec.normalisation.Scale(result, kBlockWidth * packed.height);
  }
  ScatterBlocks(packed, x, blocks, count);
}

StatusCode TransformColumns(const Packed& packed, const DftSpec2D& spec, const DftSpec1DReal& real) {
  StatusCode status = TransformRealColumn(packed, packed, 0, real);
  if (status != StatusCode::Success) return status;
  const DftSpec1DComplex& complex = *spec.columnComplexSpec;
  const std::ptrdiff_t last = packed.width - 1;
  std::ptrdiff_t x = 1;
  for (std::ptrdiff_t blocks = last / kBlockWidth; blocks > 0;) {
    const auto count = static_cast<int>(std::min<std::ptrdiff_t>(blocks, BlocksAtOnce(spec)));
    TransformBlocks(packed, x, count, complex);
    blocks -= count;
    x += count * kBlockWidth;
  }
  for (; x < last; x += 2) {
    status = TransformComplexColumn(packed, x, complex);
    if (status != StatusCode::Success) return status;
  }
  return packed.width % 2 == 0 ? TransformRealColumn(packed, packed, last, real) : StatusCode::Success;
}

StatusCode CheckNestedSpecs(const DftSpec2D& spec) {
  if (spec.rowRealSpec == nullptr || spec.columnComplexSpec == nullptr) return StatusCode::NullPointer;
  const auto isWrong = [](const auto* nested, std::int32_t tag) { return nested != nullptr && nested->tag != tag; };
  if (isWrong(spec.rowRealSpec, kDftSpec1DRealTag) || isWrong(spec.columnRealSpec, kDftSpec1DRealTag) ||
      isWrong(spec.columnComplexSpec, kDftSpec1DComplexTag) || isWrong(spec.reservedSpec, kDftSpec1DComplexTag)) {
    return StatusCode::WrongStateKind;
  }
  return StatusCode::Success;
}

}  // namespace

StatusCode TransformPackedFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                                  const DftSpec2D* spec, void* scratch) {
  if (spec == nullptr) return StatusCode::NullPointer;
  if (spec->tag != kDftSpec2DTag) return StatusCode::WrongStateKind;
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  const Scratch memory(scratch, spec->workSize);
  if (!memory) return StatusCode::WorkBufferUnavailable;
  if (const StatusCode status = CheckNestedSpecs(*spec); status != StatusCode::Success) return status;

  const DftSpec1DReal& columnReal = spec->columnRealSpec == nullptr ? *spec->rowRealSpec : *spec->columnRealSpec;
  const Packed packed = {dst, dstStep, spec->width, spec->height, memory.data()};
  if (packed.height == 1) return RunDft1DReal(src, dst, spec->rowRealSpec, memory.data());
  if (packed.width == 1) {
    constexpr std::int32_t kContiguous = sizeof(FLOAT32);
    if (srcStep == kContiguous && dstStep == kContiguous) return RunDft1DReal(src, dst, &columnReal, memory.data());
    Packed source = packed;
    source.image = const_cast<FLOAT32*>(src);
    source.step = srcStep;
    return TransformRealColumn(source, packed, 0, columnReal);
  }
  TransformRows(src, srcStep, packed, *spec->rowRealSpec);
  return TransformColumns(packed, *spec, columnReal);
}

}  // namespace norvala
