#include <algorithm>

#include "analysis/analysis.h"
#include "analysis/dft/scratch.h"
#include "analysis/dft/spec2d.h"

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

// Moves `bytes` of every row between column x of the packed image and the scratch.
void Gather(const Packed& packed, std::ptrdiff_t x, std::size_t bytes) {
  unsigned char* to = packed.scratch;
  for (std::ptrdiff_t y = 0; y < packed.height; ++y, to += bytes) std::memcpy(to, packed.At(x, y), bytes);
}
void Scatter(const Packed& packed, std::ptrdiff_t x, std::size_t bytes) {
  const unsigned char* from = packed.scratch;
  for (std::ptrdiff_t y = 0; y < packed.height; ++y, from += bytes) std::memcpy(packed.At(x, y), from, bytes);
}

StatusCode TransformRealColumn(const Packed& packed, std::ptrdiff_t x, const DftSpec1DReal& spec) {
  Gather(packed, x, sizeof(FLOAT32));
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

// Four complex columns side by side, one in each lane.
void TransformFourColumns(const Packed& packed, std::ptrdiff_t x, const DftSpec1DComplex& spec) {
  const std::ptrdiff_t height = packed.height;
  auto* const columns = reinterpret_cast<ComplexLanes*>(packed.scratch);
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    const auto a = LoadLanes<F32x4>(packed.At(x, y));
    const auto b = LoadLanes<F32x4>(packed.At(x + 4, y));
    columns[y] = {__builtin_shufflevector(a, b, 0, 2, 4, 6), __builtin_shufflevector(a, b, 1, 3, 5, 7)};
  }
  ComplexLanes* const spectrum = spec.method.Run(columns, columns + height);
  if (spec.normalisation.forwardScaled) spec.normalisation.Scale(spectrum, 8 * height);
  for (std::ptrdiff_t y = 0; y < height; ++y) {
    const F32x4 re = spectrum[y].re, im = spectrum[y].im;
    StoreLanes(packed.At(x, y), __builtin_shufflevector(re, im, 0, 4, 1, 5));
    StoreLanes(packed.At(x + 4, y), __builtin_shufflevector(re, im, 2, 6, 3, 7));
  }
}

StatusCode TransformColumns(const Packed& packed, const DftSpec1DReal& real, const DftSpec1DComplex& complex) {
  StatusCode status = TransformRealColumn(packed, 0, real);
  if (status != StatusCode::Success) return status;
  const std::ptrdiff_t end = packed.width - 1;
  std::ptrdiff_t x = 1;
  for (; x + 8 <= end + 1; x += 8) TransformFourColumns(packed, x, complex);
  for (; x < end; x += 2) {
    status = TransformComplexColumn(packed, x, complex);
    if (status != StatusCode::Success) return status;
  }
  return packed.width % 2 == 0 ? TransformRealColumn(packed, end, real) : StatusCode::Success;
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

  const DftSpec1DReal& columnReal = spec->columnRealSpec == nullptr ? *spec->rowRealSpec : *spec->columnRealSpec;
  const Packed packed = {dst, dstStep, spec->width, spec->height, memory.data()};
  if (packed.height == 1) return RunDft1DReal(src, dst, spec->rowRealSpec, memory.data());
  if (packed.width == 1) {
    constexpr std::int32_t kContiguous = sizeof(FLOAT32);
    if (srcStep == kContiguous && dstStep == kContiguous) return RunDft1DReal(src, dst, &columnReal, memory.data());
    for (std::ptrdiff_t y = 0; y < packed.height; ++y) {
      std::memcpy(packed.At(0, y), Bytes(src, srcStep, y), sizeof(FLOAT32));
    }
    return TransformRealColumn(packed, 0, columnReal);
  }
  TransformRows(src, srcStep, packed, *spec->rowRealSpec);
  return TransformColumns(packed, columnReal, *spec->columnComplexSpec);
}

}  // namespace norvala
