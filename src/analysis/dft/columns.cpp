#include <algorithm>
#include <cstring>
#include <utility>

#include "analysis/dft/plan2d.h"
#include "frame/memory.h"

namespace norvala::dft {
namespace {

// Transforms a column of elements of any type by way of the scratch.
template <class T, class Spec>
StatusCode TransformColumn(StatusCode (*run)(const T*, T*, const Spec*, void*), const FLOAT32* src,
                           std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep, const Spec& spec,
                           unsigned char* scratch) {
  auto* const values = reinterpret_cast<T*>(scratch);
  for (std::ptrdiff_t y = 0; y < spec.length; ++y) std::memcpy(values + y, Row(src, srcStep, y), sizeof(T));
  const StatusCode status = run(values, values, &spec, values + spec.length);
  if (status != StatusCode::Success) return status;
  for (std::ptrdiff_t y = 0; y < spec.length; ++y) std::memcpy(Row(dst, dstStep, y), values + y, sizeof(T));
  return StatusCode::Success;
}

// Complex columns are transformed in blocks of four, one column a lane. Several blocks are moved at once, for whole
// cache lines of the image's rows.
constexpr int kMostBlocks = 4;
constexpr std::ptrdiff_t kBlockWidth = 8;  // floats

// As many blocks as the scratch holds beside the work area of one transform: at least one.
int BlocksAtOnce(const DftSpec2D& spec) {
  constexpr std::int64_t kValueBytes = sizeof(ComplexLanes);
  const std::int64_t workBytes = kValueBytes * spec.columnComplexSpec->plan.WorkLength();
  return static_cast<int>(
      std::min<std::int64_t>(kMostBlocks, (spec.workSize - workBytes) / (kValueBytes * spec.height)));
}

void TransformBlocks(FLOAT32* columns, std::int32_t step, int count, const DftSpec1DComplex& spec,
                     unsigned char* scratch) {
  const std::ptrdiff_t height = spec.length;
  auto* work = reinterpret_cast<ComplexLanes*>(scratch);
  ComplexLanes* blocks[kMostBlocks];
  for (int i = 0; i < count; ++i, work += height) blocks[i] = work;
  const auto forEachRowOfBlocks = [&](auto move) {
    for (std::ptrdiff_t y = 0; y < height; ++y) {
      unsigned char* at = reinterpret_cast<unsigned char*>(Row(columns, step, y));
      for (int i = 0; i < count; ++i, at += 2 * sizeof(F32x4)) move(at, blocks[i][y]);
    }
  };
  forEachRowOfBlocks([](const unsigned char* from, ComplexLanes& values) {
    const auto a = LoadUnaligned<F32x4>(from), b = LoadUnaligned<F32x4>(from + sizeof a);
    values = {EvenLanes(a, b), OddLanes(a, b)};
  });
  for (int i = 0; i < count; ++i) {
    // A result in the work area stays there; the block's own memory serves the next one.
    ComplexLanes* const result = spec.plan.Run(blocks[i], work);
    if (result != blocks[i]) work = std::exchange(blocks[i], result);
    spec.normalisation.ScaleForward(result, kBlockWidth * height);
  }
  forEachRowOfBlocks([](unsigned char* to, const ComplexLanes& values) {
    StoreUnaligned(to, InterleaveLow(values.re, values.im));
    StoreUnaligned(to + sizeof values.re, InterleaveHigh(values.re, values.im));
  });
}

}  // namespace

StatusCode TransformRealColumn(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                               const DftSpec1DReal& spec, unsigned char* scratch) {
  return TransformColumn(RunDft1DReal, src, srcStep, dst, dstStep, spec, scratch);
}

StatusCode TransformColumns(FLOAT32* packed, std::int32_t step, const DftSpec2D& spec, unsigned char* scratch) {
  const DftSpec1DReal& real = spec.RealColumns();
  const DftSpec1DComplex& complex = *spec.columnComplexSpec;
  StatusCode status = TransformRealColumn(packed, step, packed, step, real, scratch);
  if (status != StatusCode::Success) return status;
  const std::ptrdiff_t last = spec.width - 1;
  std::ptrdiff_t x = 1;
  for (std::ptrdiff_t blocks = last / kBlockWidth; blocks > 0;) {
    const auto count = static_cast<int>(std::min<std::ptrdiff_t>(blocks, BlocksAtOnce(spec)));
    TransformBlocks(packed + x, step, count, complex, scratch);
    blocks -= count;
    x += count * kBlockWidth;
  }
  for (; x < last; x += 2) {
    status = TransformColumn(RunDft1DComplex, packed + x, step, packed + x, step, complex, scratch);
    if (status != StatusCode::Success) return status;
  }
  return spec.width % 2 == 0 ? TransformRealColumn(packed + last, step, packed + last, step, real, scratch)
                             : StatusCode::Success;
}

}  // namespace norvala::dft
