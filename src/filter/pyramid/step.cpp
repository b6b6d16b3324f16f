#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "filter/filter.h"
#include "filter/index.h"
#include "frame/lanes.h"
#include "frame/memory.h"

// The 5x5 pyramid step: smoothing by the outer product of [1 4 6 4 1] with itself and keeping every second pixel of
// every second row (P. Burt, E. Adelson, "The Laplacian Pyramid as a Compact Image Code", 1983). Rows are filtered once
// each into accumulators in the caller's buffer, output rows combine five of them.

namespace norvala {
namespace {

// The accumulator of a row among the six in the caller's buffer, each with 4 bytes a destination pixel. Row y uses
// accumulator y mod 6, so the five rows around an output row are always there together.
template <class Sum>
Sum* AccumulatorOf(std::int64_t row, std::uint8_t* buffer, std::int32_t dstWidth) {
  static_assert(sizeof(Sum) <= 4);
  const auto size = AlignUp<std::size_t>(static_cast<std::size_t>(dstWidth) * 4, 16);
  return reinterpret_cast<Sum*>(AlignUp(buffer, 32) + static_cast<std::size_t>(row % 6) * size);
}

// ---- Bytes ----

// All sums fit 16 unsigned bits: 16 * 255 in a row, 256 * 255 + 128 over rows.
using WordSum = std::uint16_t;

WordSum RowSum(const BW8* src, std::int64_t width, std::int64_t x) {
  const auto at = [&](std::int64_t i) { return static_cast<unsigned>(src[MirrorIndex(i, width)]); };
  return static_cast<WordSum>(6 * at(x) + 4 * (at(x - 1) + at(x + 1)) + at(x - 2) + at(x + 2));
}

// The sums of a row at its even columns.
void FilterRow(const BW8* __restrict src, std::int32_t width, WordSum* __restrict sums) {
  sums[0] = RowSum(src, width, 0);
  // A vector of eight sums reads the 20 pixels from 2j - 2; as 16-bit lanes, even columns are the low bytes. The
  // last vector may overlap the one before.
  const auto sumEight = [=](std::int32_t j) {
    const BW8* const p = src + 2 * std::ptrdiff_t{j};
    const auto left = LoadUnaligned<U16x8>(p - 2);
    const auto centre = LoadUnaligned<U16x8>(p);
    const auto right = LoadUnaligned<U16x8>(p + 2);
    const U16x8 odd = (left >> 8) + (centre >> 8);
    const U16x8 outer = (left & 255) + (right & 255);
    StoreUnaligned(sums + j, (centre & 255) * 6 + (odd << 2) + outer);
  };
  const std::int32_t last = width / 2 - 9;
  std::int32_t j = 1;
  for (; j <= last; j += 8) sumEight(j);
  if (last > 0) {
    sumEight(last);
    j = last + 8;
  }
  for (; j < HalfCount(width); ++j) sums[j] = RowSum(src, width, 2 * std::int64_t{j});
}

void CombineRows(const WordSum* const (&rows)[5], std::int32_t count, BW8* __restrict dst) {
  const WordSum *above2 = rows[0], *above = rows[1], *centre = rows[2], *below = rows[3], *below2 = rows[4];
  for (std::int32_t j = 0; j < count; ++j) {
    const auto sum = static_cast<WordSum>(6 * centre[j] + 4 * (above[j] + below[j]) + above2[j] + below2[j] + 128);
    dst[j] = static_cast<BW8>(sum >> 8);
  }
}

// ---- Floats ----

using FloatPixel = Unaligned<FLOAT32>;

constexpr double kScale = 0.00390625;  // 1 / 256

// Every sum is formed in double, in the order written, and rounded to float once: the order of the additions is part of
// the result.

// [1 4 6 4 1] applied to five neighbours.
double FiveSum(double before2, double before, double centre, double after, double after2) {
  return (centre * 6 + (before + after) * 4) + before2 + after2;
}

// The same where one side of the kernel mirrors the other.
FLOAT32 EdgeSum(FLOAT32 edge, FLOAT32 inner, FLOAT32 inner2) {
  return static_cast<FLOAT32>((double{edge} * 6 + double{inner} * 8) + double{inner2} * 2);
}

// The column beyond the last one mirrors the one before it, which has the weights 6 and 1 then.
FLOAT32 LastSumOfEvenWidth(const FloatPixel* end) {
  return static_cast<FLOAT32>(((double{end[-3]} + end[-1]) * 4 + end[-4]) + double{end[-2]} * 7);
}

// The sum along a direction of one or two pixels, from the sums across it at the first and at the last. Of two pixels
// each stands for weights of 8 in all: 1 + 6 + 1 and, mirrored, 4 + 4. A single one is first and last.
FLOAT32 TwoSums(FLOAT32 first, FLOAT32 last) { return static_cast<FLOAT32>((double{first} + last) * 8 * kScale); }

// The sums of a row at its even columns.
void FilterRow(const FloatPixel* __restrict src, std::int32_t width, FLOAT32* __restrict sums) {
  const std::int32_t count = HalfCount(width);
  sums[0] = EdgeSum(src[0], src[MirrorIndex(1, width)], src[MirrorIndex(2, width)]);
  if (width < 3) return;
  // Every pixel is converted once, block by block.
  constexpr std::int32_t kBlock = 128;
  double evens[kBlock + 2];
  double odds[kBlock + 2];
  for (std::int32_t begin = 1; begin < count - 1; begin += kBlock) {
    const std::int32_t sumCount = std::min(kBlock, count - 1 - begin);
    const FloatPixel* const p = src + 2 * std::ptrdiff_t{begin} - 2;
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
  const FloatPixel* const end = src + width;
  sums[count - 1] = width % 2 != 0 ? EdgeSum(end[-1], end[-2], end[-3]) : LastSumOfEvenWidth(end);
}

void CombineRows(const FLOAT32* const (&rows)[5], std::int32_t count, FloatPixel* __restrict dst) {
  const FLOAT32 *above2 = rows[0], *above = rows[1], *centre = rows[2], *below = rows[3], *below2 = rows[4];
  for (std::int32_t j = 0; j < count; ++j) {
    dst[j] = static_cast<FLOAT32>(FiveSum(above2[j], above[j], centre[j], below[j], below2[j]) * kScale);
  }
}

// One or two rows: the row sums of the first and the last row.
void ReduceLow(const FLOAT32* src, std::int32_t srcStep, FloatPixel* dst, RegionSize size, std::uint8_t* buffer) {
  const std::int32_t dstWidth = HalfCount(size.width);
  const auto sums = [&](std::int32_t y) { return AccumulatorOf<FLOAT32>(y, buffer, dstWidth); };
  for (std::int32_t y = 0; y < size.height; ++y) FilterRow(Row(src, srcStep, y), size.width, sums(y));
  for (std::int32_t j = 0; j < dstWidth; ++j) dst[j] = TwoSums(sums(0)[j], sums(size.height - 1)[j]);
}

// One or two columns of three rows or more: the column sums of the first and the last column.
void ReduceNarrow(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep, RegionSize size) {
  const auto columnSum = [&](std::int32_t x, std::int64_t y) {
    const auto at = [&](std::int64_t row) {
      return Row(src, srcStep, static_cast<std::ptrdiff_t>(MirrorIndex(row, size.height)))[x];
    };
    return static_cast<FLOAT32>(FiveSum(at(y - 2), at(y - 1), at(y), at(y + 1), at(y + 2)));
  };
  for (std::int32_t k = 0; k < HalfCount(size.height); ++k) {
    const std::int64_t y = 2 * std::int64_t{k};
    Row(dst, dstStep, k)[0] = TwoSums(columnSum(0, y), columnSum(size.width - 1, y));
  }
}

// ---- The step ----

// Runs the step from top to bottom: filters every source row once and combines the rows 2k - 2 to 2k + 2 to every
// output row k.
template <class Sum, class Pixel>
void ReduceRows(const Pixel* src, std::int32_t srcStep, Pixel* dst, std::int32_t dstStep, RegionSize size,
                std::uint8_t* buffer) {
  const std::int64_t height = size.height;
  const std::int32_t dstWidth = HalfCount(size.width);
  const auto sums = [&](std::int64_t y) { return AccumulatorOf<Sum>(y, buffer, dstWidth); };
  std::int64_t filtered = 0;
  for (std::int64_t y = 0; y < height; y += 2) {
    for (; filtered < std::min(y + 3, height); ++filtered) {
      FilterRow(Row(src, srcStep, static_cast<std::ptrdiff_t>(filtered)), size.width, sums(filtered));
    }
    const Sum* rows[5];
    // Beyond the first and the last row the image is mirrored without repeating them.
    for (int i = 0; i < 5; ++i) rows[i] = sums(MirrorIndex(y - 2 + i, height));
    CombineRows(rows, dstWidth, Row(dst, dstStep, static_cast<std::ptrdiff_t>(y / 2)));
  }
}

}  // namespace

StatusCode PyrDownGetBufSizeGauss5x5(std::int32_t width, std::int32_t elementType, std::int32_t channels,
                                     std::int32_t* bufferSize) {
  if (bufferSize == nullptr) return StatusCode::NullPointer;
  if (width < 1) return StatusCode::NonPositiveSize;
  if (channels != 1 && channels != 3) return StatusCode::UnsupportedChannels;
  if (elementType != 1 && elementType != 2 && elementType != 9) return StatusCode::UnsupportedDataType;
  const std::int64_t accumulator = AlignUp<std::int64_t>(std::int64_t{width} * channels * 4, 16);
  const std::int64_t size = accumulator * 6 + 32;
  if (size > INT32_MAX) return StatusCode::NonPositiveSize;
  StoreUnaligned(bufferSize, static_cast<std::int32_t>(size));
  return StatusCode::Success;
}

template <class T>
StatusCode PyrDownGauss5x5(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size,
                           std::uint8_t* buffer) {
  constexpr std::int64_t kPixel = sizeof(T);
  if (src == nullptr || dst == nullptr || buffer == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (srcStep < size.width * kPixel || dstStep < HalfCount(size.width) * kPixel) return StatusCode::NonPositiveStep;
  if (srcStep % kPixel != 0 || dstStep % kPixel != 0) return StatusCode::MisalignedStep;
  if constexpr (std::is_same_v<T, BW8>) {
    ReduceRows<WordSum>(src, srcStep, dst, dstStep, size, buffer);
  } else if (size.height < 3) {
    ReduceLow(src, srcStep, dst, size, buffer);
  } else if (size.width < 3) {
    ReduceNarrow(src, srcStep, dst, dstStep, size);
  } else {
    ReduceRows<FLOAT32>(src, srcStep, dst, dstStep, size, buffer);
  }
  return StatusCode::Success;
}

template StatusCode PyrDownGauss5x5(const BW8*, std::int32_t, BW8*, std::int32_t, RegionSize, std::uint8_t*);
template StatusCode PyrDownGauss5x5(const FLOAT32*, std::int32_t, FLOAT32*, std::int32_t, RegionSize, std::uint8_t*);

}  // namespace norvala
