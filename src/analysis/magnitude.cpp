#include <cmath>

#include "analysis/analysis.h"

namespace norvala {

StatusCode MagnitudeRowFLOAT32(const ComplexFLOAT32Number* src, FLOAT32* dst, std::int32_t count) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (count < 1) return StatusCode::NonPositiveSize;
  const Unaligned<FLOAT32>* __restrict parts = reinterpret_cast<const Unaligned<FLOAT32>*>(src);
  Unaligned<FLOAT32>* __restrict moduli = reinterpret_cast<Unaligned<FLOAT32>*>(dst);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const double re = parts[2 * i];
    const double im = parts[2 * i + 1];
    moduli[i] = static_cast<FLOAT32>(std::sqrt(re * re + im * im));
  }
  return StatusCode::Success;
}

StatusCode MagnitudeFLOAT32(const ComplexFLOAT32Number* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                            RegionSize size) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (srcStep < 1 || dstStep < 1) return StatusCode::NonPositiveStep;
  StatusCode first = StatusCode::Success;
  for (std::int32_t y = 0; y < size.height; ++y) {
    const auto* from = Row(reinterpret_cast<const FLOAT32*>(src), srcStep, y);
    auto* to = Row(dst, dstStep, y);
    const StatusCode status = kMagnitudeRowFLOAT32(reinterpret_cast<const ComplexFLOAT32Number*>(from),
                                                   reinterpret_cast<FLOAT32*>(to), size.width);
    if (first == StatusCode::Success) first = status;
  }
  return first;
}

}  // namespace norvala
