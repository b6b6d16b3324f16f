#include <cmath>
#include <functional>

#include "pixel/pixel.h"
#include "pixel/rows.h"

namespace norvala {
namespace {

StatusCode CheckMean(const void* src, std::int32_t step, RegionSize size, const FLOAT64* mean) {
  if (mean == nullptr || src == nullptr) return StatusCode::NullPointer;
  if (step < 1) return StatusCode::NonPositiveStep;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  return StatusCode::Success;
}

// The pixel count as the mean divides by it: a signed 32-bit product that wraps.
FLOAT64 PixelCount(RegionSize size) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(size.width) * static_cast<std::uint32_t>(size.height));
}

// Sum of a row modulo 2^32.
std::uint32_t SumRow(std::size_t count, const Unaligned<BW8>* row) {
  U64x2 sums{};
  std::size_t x = 0;
#pragma GCC unroll 4
  for (; count - x >= 16; x += 16) sums += SumBytes(LoadUnaligned<U8x16>(row + x));
  auto sum = static_cast<std::uint32_t>(sums[0] + sums[1]);
  for (; x < count; ++x) sum += row[x];
  return sum;
}

BW8 MaxOfRow(std::size_t count, const Unaligned<BW8>* row) {
  BW8 maximum = 0;
#pragma GCC unroll 4
  for (std::size_t x = 0; x < count; ++x) {
    const BW8 pixel = row[x];
    maximum = pixel > maximum ? pixel : maximum;
  }
  return maximum;
}

}  // namespace

StatusCode AddFLOAT32_C1IR(const FLOAT32* src, std::int32_t srcStep, FLOAT32* srcDst, std::int32_t srcDstStep,
                           RegionSize size) {
  if (src == nullptr || srcDst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  const Rows image{srcDst, srcDstStep};
  MapRows(size, std::plus{}, image, image, Rows{src, srcStep});
  return StatusCode::Success;
}

StatusCode DivCFLOAT32_C1IR(FLOAT32 divisor, FLOAT32* image, std::int32_t step, RegionSize size) {
  if (image == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (step < 1) return StatusCode::NonPositiveStep;
  if (divisor == 0.0F || std::isnan(divisor)) return StatusCode::DivisionByZero;
  const auto reciprocal = static_cast<FLOAT32>(1.0 / static_cast<FLOAT64>(divisor));
  // The exact product of two floats fits a double, so its rounding to a float is the float product.
  const Rows rows{image, step};
  MapRows(
      size, [reciprocal](auto pixel) { return pixel * reciprocal; }, rows, rows);
  return StatusCode::Success;
}

StatusCode MeanBW8_C1R(const BW8* src, std::int32_t step, RegionSize size, FLOAT64* mean) {
  const StatusCode status = CheckMean(src, step, size, mean);
  if (status != StatusCode::Success) return status;
  FLOAT64 total = 0.0;
  for (std::int32_t y = 0; y < size.height; ++y) {
    total += static_cast<std::int32_t>(SumRow(static_cast<std::size_t>(size.width), Row(src, step, y)));
  }
  StoreUnaligned<FLOAT64>(mean, total / PixelCount(size));
  return StatusCode::Success;
}

StatusCode MeanFLOAT32_C1R(const FLOAT32* src, std::int32_t step, RegionSize size, FLOAT64* mean, std::int32_t) {
  const StatusCode status = CheckMean(src, step, size, mean);
  if (status != StatusCode::Success) return status;
  FLOAT64 even = 0.0;
  FLOAT64 odd = 0.0;
  for (std::int32_t y = 0; y < size.height; ++y) {
    const Unaligned<const FLOAT32>* const row = Row(src, step, y);
    std::int32_t x = 0;
    for (; x < size.width - 1; x += 2) {
      even += static_cast<FLOAT64>(row[x]);
      odd += static_cast<FLOAT64>(row[x + 1]);
    }
    if (x < size.width) even += static_cast<FLOAT64>(row[x]);
  }
  StoreUnaligned<FLOAT64>(mean, (odd + even) / PixelCount(size));
  return StatusCode::Success;
}

// The first of equal maxima wins, row by row from the left. Nothing exceeds 255, so that the scan may end there.
StatusCode MaxIndx_BW8(const BW8* src, std::int32_t step, RegionSize size, BW8* maximum, std::int32_t* column,
                       std::int32_t* row) {
  if (src == nullptr || maximum == nullptr || column == nullptr || row == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (step < 1) return StatusCode::NonPositiveStep;
  BW8 best = *src;
  std::int32_t bestX = 0;
  std::int32_t bestY = 0;
  for (std::int32_t y = 0; y < size.height && best < 255; ++y) {
    const Unaligned<const BW8>* const pixels = Row(src, step, y);
    const BW8 top = MaxOfRow(static_cast<std::size_t>(size.width), pixels);
    if (top <= best) continue;
    best = top;
    bestX = 0;
    while (pixels[bestX] != top) ++bestX;
    bestY = y;
  }
  *maximum = best;
  StoreUnaligned(column, bestX);
  StoreUnaligned(row, bestY);
  return StatusCode::Success;
}

}  // namespace norvala
