#include <algorithm>

#include "filter/filter.h"
#include "filter/pyramid/step.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

using Pixel = Unaligned<FLOAT32>;

constexpr double kScale = 0.00390625;  // 1 / 256

// Every sum is formed in double, in the order written, and rounded to float once: the order of the additions is part of
// the result.

// [1 4 6 4 1] applied to five neighbours.
template <class V>
V FiveSum(V before2, V before, V centre, V after, V after2) {
  return (centre * 6 + (before + after) * 4) + before2 + after2;
}

// The same where one side of the kernel mirrors the other.
FLOAT32 EdgeSum(FLOAT32 edge, FLOAT32 inner, FLOAT32 inner2) {
  return static_cast<FLOAT32>((double{edge} * 6 + double{inner} * 8) + double{inner2} * 2);
}

FLOAT32 LastSumOfEvenWidth(const Pixel* end) {
  return static_cast<FLOAT32>(((double{end[-3]} + end[-1]) * 4 + end[-4]) + double{end[-2]} * 7);
}

// The whole of a direction of one or two pixels, from the sums across it at its first and last pixel.
FLOAT32 TwoSums(FLOAT32 first, FLOAT32 last) { return static_cast<FLOAT32>((double{first} + last) * 8 * kScale); }

// The sums of a row at its even columns.
void FilterRow(const Pixel* __restrict src, std::int32_t width, FLOAT32* __restrict sums) {
  const std::int32_t count = HalfSize(width);
  sums[0] = EdgeSum(src[0], src[MirrorIndex(1, width)], src[MirrorIndex(2, width)]);
  if (width < 3) return;
  // Every pixel is converted once, block by block.
  constexpr std::int32_t kBlock = 128;
  double evens[kBlock + 2];
  double odds[kBlock + 2];
  for (std::int32_t begin = 1; begin < count - 1; begin += kBlock) {
    const std::int32_t sumCount = std::min(kBlock, count - 1 - begin);
    const Pixel* const p = src + 2 * std::ptrdiff_t{begin} - 2;
    FLOAT32* __restrict const blockSums = sums + begin;
    for (std::int32_t i = 0; i <= sumCount; ++i) {
      evens[i] = p[2 * i];
      odds[i] = p[2 * i + 1];
    }
    evens[sumCount + 1] = p[2 * sumCount + 2];
    for (std::int32_t i = 0; i < sumCount; ++i) {
      blockSums[i] = static_cast<FLOAT32>(FiveSum(evens[i], odds[i], evens[i + 1], odds[i + 1], evens[i + 2]));
    }
  }
  const Pixel* const end = src + width;
  sums[count - 1] = width % 2 != 0 ? EdgeSum(end[-1], end[-2], end[-3]) : LastSumOfEvenWidth(end);
}

void CombineRows(const FLOAT32* const (&rows)[5], std::int32_t count, Pixel* __restrict dst) {
  const FLOAT32 *above2 = rows[0], *above = rows[1], *centre = rows[2], *below = rows[3], *below2 = rows[4];
  const auto two = [&](std::int32_t j) {
    return FiveSum(LoadFloatsAsDoubles(above2 + j), LoadFloatsAsDoubles(above + j), LoadFloatsAsDoubles(centre + j),
                   LoadFloatsAsDoubles(below + j), LoadFloatsAsDoubles(below2 + j)) *
           kScale;
  };
  std::int32_t j = 0;
  for (; j <= count - 4; j += 4) StoreUnaligned(dst + j, ConvertFromDoubles<F32x4>(two(j), two(j + 2)));
  for (; j < count; ++j) {
    dst[j] = static_cast<FLOAT32>(FiveSum<double>(above2[j], above[j], centre[j], below[j], below2[j]) * kScale);
  }
}

// One or two rows: the row sums of the first and the last row.
void ReduceLow(const FLOAT32* src, std::int32_t srcStep, Pixel* dst, RegionSize size,
               const RowAccumulators<FLOAT32>& accumulators) {
  FLOAT32* const first = accumulators.Of(0);
  FLOAT32* const last = accumulators.Of(size.height - 1);
  for (std::int32_t y = 0; y < size.height; ++y) FilterRow(Row(src, srcStep, y), size.width, accumulators.Of(y));
  for (std::int32_t j = 0; j < HalfSize(size.width); ++j) dst[j] = TwoSums(first[j], last[j]);
}

// One or two columns of three rows or more: the column sums of the first and the last column.
void ReduceNarrow(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep, RegionSize size) {
  const auto columnSum = [&](std::int32_t x, std::int64_t y) {
    const auto at = [&](std::int64_t row) {
      return Row(src, srcStep, static_cast<std::ptrdiff_t>(MirrorIndex(row, size.height)))[x];
    };
    return static_cast<FLOAT32>(FiveSum<double>(at(y - 2), at(y - 1), at(y), at(y + 1), at(y + 2)));
  };
  for (std::int32_t k = 0; k < HalfSize(size.height); ++k) {
    const std::int64_t y = 2 * std::int64_t{k};
    Row(dst, dstStep, k)[0] = TwoSums(columnSum(0, y), columnSum(size.width - 1, y));
  }
}

}  // namespace

StatusCode PyrDownGauss5x5FLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                                  RegionSize size, std::uint8_t* buffer) {
  const StatusCode status = CheckPyramidStep(src, srcStep, dst, dstStep, size, buffer, sizeof(FLOAT32));
  if (status != StatusCode::Success) return status;
  if (srcStep % 4 != 0 || dstStep % 4 != 0) return StatusCode::MisalignedStep;
  const std::int32_t dstWidth = HalfSize(size.width);
  const RowAccumulators<FLOAT32> accumulators(buffer, dstWidth);
  if (size.height < 3) {
    ReduceLow(src, srcStep, Row(dst, dstStep, 0), size, accumulators);
  } else if (size.width < 3) {
    ReduceNarrow(src, srcStep, dst, dstStep, size);
  } else {
    ReduceRows(
        src, srcStep, dst, dstStep, size, accumulators,
        [&](const Pixel* row, FLOAT32* sums) { FilterRow(row, size.width, sums); },
        [&](const FLOAT32* const(&rows)[5], Pixel* row) { CombineRows(rows, dstWidth, row); });
  }
  return StatusCode::Success;
}

}  // namespace norvala
