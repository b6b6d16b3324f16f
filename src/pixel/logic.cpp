#include "pixel/map_rows.h"
#include "pixel/pixel.h"

namespace norvala {
namespace {

template <class Op>
StatusCode Combine(const BW32* src1, std::int32_t src1Step, const BW32* src2, std::int32_t src2Step, BW32* dst,
                   std::int32_t dstStep, RegionSize size, Op op) {
  if (src1 == nullptr || src2 == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (src1Step < 1 || src2Step < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  ForEachRow(
      size, [op](std::size_t count, const void* a, const void* b, void* to) { MapRow<BW32>(op, count, to, a, b); },
      Rows{src1, src1Step}, Rows{src2, src2Step}, Rows{dst, dstStep});
  return StatusCode::Success;
}

}  // namespace

StatusCode AndBW32(const BW32* src1, std::int32_t src1Step, const BW32* src2, std::int32_t src2Step, BW32* dst,
                   std::int32_t dstStep, RegionSize size) {
  return Combine(src1, src1Step, src2, src2Step, dst, dstStep, size, [](auto a, auto b) { return a & b; });
}

StatusCode OrBW32(const BW32* src1, std::int32_t src1Step, const BW32* src2, std::int32_t src2Step, BW32* dst,
                  std::int32_t dstStep, RegionSize size) {
  return Combine(src1, src1Step, src2, src2Step, dst, dstStep, size, [](auto a, auto b) { return a | b; });
}

StatusCode AndCBW16(BW16 constant, const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep,
                    RegionSize size) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  ForEachRow(
      size,
      [constant](std::size_t count, const void* from, void* to) {
        MapRow<BW16>([constant](auto pixels) { return pixels & constant; }, count, to, from);
      },
      Rows{src, srcStep}, Rows{dst, dstStep});
  return StatusCode::Success;
}

}  // namespace norvala
