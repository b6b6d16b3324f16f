#include "filter/pyramid/step.h"

#include "filter/filter.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// All sums fit 16 unsigned bits: 16 * 255 in a row, 256 * 255 + 128 over rows.
using Sum = std::uint16_t;

Sum RowSum(const BW8* src, std::int64_t width, std::int64_t x) {
  const auto at = [&](std::int64_t i) { return static_cast<unsigned>(src[MirrorIndex(i, width)]); };
  return static_cast<Sum>(6 * at(x) + 4 * (at(x - 1) + at(x + 1)) + at(x - 2) + at(x + 2));
}

// The sums of a row at its even columns.
void FilterRow(const BW8* __restrict src, std::int32_t width, Sum* __restrict sums) {
  const std::int32_t count = HalfSize(width);
  sums[0] = RowSum(src, width, 0);
  std::int32_t j = 1;
  // A vector of eight sums reads the 20 pixels from 2j - 2; as 16-bit lanes, even columns are the low bytes.
  for (; j <= width / 2 - 9; j += 8) {
    const BW8* p = src + 2 * std::ptrdiff_t{j};
    const auto left = LoadUnaligned<U16x8>(p - 2);
    const auto centre = LoadUnaligned<U16x8>(p);
    const auto right = LoadUnaligned<U16x8>(p + 2);
    const U16x8 odd = (left >> 8) + (centre >> 8);
    const U16x8 outer = (left & 255) + (right & 255);
    StoreUnaligned(sums + j, (centre & 255) * 6 + (odd << 2) + outer);
  }
  for (; j < count; ++j) sums[j] = RowSum(src, width, 2 * std::int64_t{j});
}

template <class V>
V ColumnSum(V above2, V above, V centre, V below, V below2) {
  return static_cast<V>(centre * 6 + ((above + below) << 2) + above2 + below2 + 128);
}

void CombineRows(const Sum* const (&rows)[5], std::int32_t count, BW8* __restrict dst) {
  std::int32_t j = 0;
  const auto sum = [&](std::int32_t at) {
    return ColumnSum(LoadUnaligned<U16x8>(rows[0] + at), LoadUnaligned<U16x8>(rows[1] + at),
                     LoadUnaligned<U16x8>(rows[2] + at), LoadUnaligned<U16x8>(rows[3] + at),
                     LoadUnaligned<U16x8>(rows[4] + at));
  };
  for (; j <= count - 16; j += 16) {
    const auto low = BitCastLanes<U8x16>(sum(j));
    const auto high = BitCastLanes<U8x16>(sum(j + 8));
    StoreUnaligned(dst + j,
                   __builtin_shufflevector(low, high, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31));
  }
  for (; j < count; ++j) {
    dst[j] = static_cast<BW8>(ColumnSum<std::int32_t>(rows[0][j], rows[1][j], rows[2][j], rows[3][j], rows[4][j]) >> 8);
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

StatusCode PyrDownGauss5x5BW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                              std::uint8_t* buffer) {
  const StatusCode status = CheckPyramidStep(src, srcStep, dst, dstStep, size, buffer, 1);
  if (status != StatusCode::Success) return status;
  const std::int32_t dstWidth = HalfSize(size.width);
  ReduceRows(
      src, srcStep, dst, dstStep, size, RowAccumulators<Sum>(buffer, dstWidth),
      [&](const BW8* row, Sum* sums) { FilterRow(row, size.width, sums); },
      [&](const Sum* const(&rows)[5], BW8* row) { CombineRows(rows, dstWidth, row); });
  return StatusCode::Success;
}

}  // namespace norvala
