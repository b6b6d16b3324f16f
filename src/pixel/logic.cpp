// And, or and shifts of whole words.

#include <algorithm>

#include "pixel/copy_rows.h"
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

StatusCode Check(const void* src, std::int32_t srcStep, const void* dst, std::int32_t dstStep, RegionSize size) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  return StatusCode::Success;
}

template <class T, class Op>
void MapRows(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size, Op op) {
  ForEachRow(
      size, [op](std::size_t count, const void* from, void* to) { MapRow<T>(op, count, to, from); }, Rows{src, srcStep},
      Rows{dst, dstStep});
}

StatusCode Copy32(const BW32* src, std::int32_t srcStep, BW32* dst, std::int32_t dstStep, RegionSize size) {
  return kCopyFLOAT32(reinterpret_cast<const FLOAT32*>(src), srcStep, reinterpret_cast<FLOAT32*>(dst), dstStep, size);
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
  const StatusCode status = Check(src, srcStep, dst, dstStep, size);
  if (status != StatusCode::Success) return status;
  MapRows(src, srcStep, dst, dstStep, size, [constant](auto pixels) { return pixels & constant; });
  return StatusCode::Success;
}

StatusCode RShiftCBW16(std::uint32_t count, const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep,
                       RegionSize size) {
  const StatusCode status = Check(src, srcStep, dst, dstStep, size);
  if (status != StatusCode::Success) return status;
  if (count == 0) return kCopyBW16(src, srcStep, dst, dstStep, size);
  if (count > 15) {
    FillRows<BW16>(0, dst, dstStep, size);
  } else {
    MapRows(src, srcStep, dst, dstStep, size, [count](auto pixels) { return pixels >> count; });
  }
  return StatusCode::Success;
}

StatusCode RShiftCBW32(std::uint32_t count, const BW32* src, std::int32_t srcStep, BW32* dst, std::int32_t dstStep,
                       RegionSize size) {
  const StatusCode status = Check(src, srcStep, dst, dstStep, size);
  if (status != StatusCode::Success) return status;
  if (count == 0) return Copy32(src, srcStep, dst, dstStep, size);
  const auto places = static_cast<std::int32_t>(std::min<std::uint32_t>(count, 31));  // 31 leaves only the sign
  MapRows(reinterpret_cast<const std::int32_t*>(src), srcStep, reinterpret_cast<std::int32_t*>(dst), dstStep, size,
          [places](auto pixels) { return pixels >> places; });
  return StatusCode::Success;
}

StatusCode LShiftCBW32(std::uint32_t count, const BW32* src, std::int32_t srcStep, BW32* dst, std::int32_t dstStep,
                       RegionSize size) {
  const StatusCode status = Check(src, srcStep, dst, dstStep, size);
  if (status != StatusCode::Success) return status;
  if (count == 0) return Copy32(src, srcStep, dst, dstStep, size);
  if (count > 31) {
    FillRows<BW32>(0, dst, dstStep, size);
  } else {
    MapRows(src, srcStep, dst, dstStep, size, [count](auto pixels) { return pixels << count; });
  }
  return StatusCode::Success;
}

}  // namespace norvala
