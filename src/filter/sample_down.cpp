#include "filter/filter.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// Pixels are read in pairs, one a byte of a word.
using Pairs = Unaligned<const std::uint16_t>;

void SampleDownRow(const Pairs* upper, const Pairs* lower, Unaligned<BW8>* __restrict dst, std::int32_t count) {
  const auto sum = [](std::uint16_t pair) { return (pair & 255) + (pair >> 8); };
  for (std::int32_t x = 0; x < count; ++x) dst[x] = static_cast<BW8>((sum(upper[x]) + sum(lower[x]) + 3) >> 2);
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
    const auto* const upper = reinterpret_cast<const Pairs*>(Row(Row(src, srcStep, y), srcStep, y));
    SampleDownRow(upper, Row(upper, srcStep, 1), Row(dst, dstStep, y), dstSize.width);
  }
  return StatusCode::Success;
}

}  // namespace norvala
