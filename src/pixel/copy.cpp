#include "pixel/pixel.h"
#include "pixel/rows.h"

namespace norvala {

template <class T>
StatusCode Copy(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  CopyRows(size, Rows{src, srcStep}, Rows{dst, dstStep});
  return StatusCode::Success;
}

template StatusCode Copy(const BW8*, std::int32_t, BW8*, std::int32_t, RegionSize);
template StatusCode Copy(const BW16*, std::int32_t, BW16*, std::int32_t, RegionSize);
template StatusCode Copy(const FLOAT32*, std::int32_t, FLOAT32*, std::int32_t, RegionSize);

template <class T>
StatusCode Set(T value, T* dst, std::int32_t dstStep, RegionSize size) {
  if (dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (dstStep < 1) return StatusCode::NonPositiveStep;
  FillRows(value, size, Rows{dst, dstStep});
  return StatusCode::Success;
}

template StatusCode Set(BW8, BW8*, std::int32_t, RegionSize);
template StatusCode Set(FLOAT32, FLOAT32*, std::int32_t, RegionSize);

}  // namespace norvala
