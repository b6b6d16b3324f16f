#include <bit>

#include "pixel/copy_rows.h"
#include "pixel/pixel.h"

namespace norvala {
namespace {

template <class T>
StatusCode Copy(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  CopyRows(src, srcStep, dst, dstStep, size);
  return StatusCode::Success;
}

template <class T>
StatusCode Set(T value, T* dst, std::int32_t dstStep, RegionSize size) {
  if (dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (dstStep < 1) return StatusCode::NonPositiveStep;
  FillRows(value, dst, dstStep, size);
  return StatusCode::Success;
}

}  // namespace

StatusCode CopyBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size) {
  return Copy(src, srcStep, dst, dstStep, size);
}

StatusCode CopyBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size) {
  return Copy(src, srcStep, dst, dstStep, size);
}

StatusCode CopyFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep, RegionSize size) {
  return Copy(reinterpret_cast<const BW32*>(src), srcStep, reinterpret_cast<BW32*>(dst), dstStep, size);
}

StatusCode SetBW8(BW8 value, BW8* dst, std::int32_t dstStep, RegionSize size) { return Set(value, dst, dstStep, size); }

StatusCode SetFLOAT32(FLOAT32 value, FLOAT32* dst, std::int32_t dstStep, RegionSize size) {
  return Set(std::bit_cast<BW32>(value), reinterpret_cast<BW32*>(dst), dstStep, size);
}

}  // namespace norvala
