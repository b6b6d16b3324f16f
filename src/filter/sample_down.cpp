#include "filter/filter.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// Sums of neighbouring bytes.
inline U16x8 SumPairs(const Unaligned<BW8>* pixels) {
  const auto v = LoadUnaligned<U16x8>(pixels);
  return (v & 0xFF) + (v >> 8);
}

inline U16x8 MeanOfBlocks(const Unaligned<BW8>* upper, const Unaligned<BW8>* lower) {
  return (SumPairs(upper) + SumPairs(lower) + 3) >> 2;
}

void SampleDownRow(const Unaligned<BW8>* upper, const Unaligned<BW8>* lower, Unaligned<BW8>* dst, std::int32_t count) {
  const auto n = static_cast<std::size_t>(count);
  std::size_t x = 0;
  for (; n - x >= 16; x += 16) {
    const auto low = BitCastLanes<U8x16>(MeanOfBlocks(upper + 2 * x, lower + 2 * x));
    const auto high = BitCastLanes<U8x16>(MeanOfBlocks(upper + 2 * x + 16, lower + 2 * x + 16));
    StoreUnaligned(dst + x, EvenLanes(low, high));
  }
  for (; x < n; ++x) {
    dst[x] = static_cast<BW8>((upper[2 * x] + upper[2 * x + 1] + lower[2 * x] + lower[2 * x + 1] + 3) >> 2);
  }
}

}  // namespace

StatusCode SampleDownH2V2_JPEGBW8(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst,
                                  std::int32_t dstStep, RegionSize dstSize) {
  if (src == nullptr) return StatusCode::NullPointer;
  if (srcStep < 1) return StatusCode::NonPositiveStep;
  if (IsEmpty(srcSize)) return StatusCode::NonPositiveSize;
  if (dst == nullptr) return StatusCode::NullPointer;
  if (dstStep < 1) return StatusCode::NonPositiveStep;
  if (IsEmpty(dstSize)) return StatusCode::NonPositiveSize;
  for (std::int32_t y = 0; y < dstSize.height; ++y) {
    // Row 2 * y, in two steps because twice a step or a row number may not fit its type.
    const Unaligned<const BW8>* const upper = Row(Row(src, srcStep, y), srcStep, y);
    SampleDownRow(upper, Row(upper, srcStep, 1), Row(dst, dstStep, y), dstSize.width);
  }
  return StatusCode::Success;
}

}  // namespace norvala
