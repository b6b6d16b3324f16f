#include <algorithm>

#include "filter/filter.h"
#include "filter/separable_tile.h"
#include "frame/aligned_memory.h"

// 16-bit pixels are read and written as signed.

namespace norvala {
namespace {

// Rounds half away from zero and saturates. Both bounds are whole numbers, so that it makes no difference whether they
// are applied before or after rounding; a sum that is not a number becomes 0.
std::int16_t RoundToShort(double sum) {
  double value = sum < 32767.0 ? sum : 32767.0;
  value = value > -32768.0 ? value : -32768.0;
  value += value < 0.0 ? -0.5 : 0.5;
  return static_cast<std::int16_t>(static_cast<std::int32_t>(sum == sum ? value : 0.0));
}

StatusCode FilterFloatKernel(const SeparableCall<BW16, FLOAT32>& call) {
  if (const StatusCode status = call.CheckPointersAndSizes(); status != StatusCode::Success) return status;
  if (const StatusCode status = call.CheckSteps(); status != StatusCode::Success) return status;
  SeparableTile<double> tile;
  tile.Filter(
      call, 0.0, [](BW16 pixel) { return static_cast<double>(static_cast<std::int16_t>(pixel)); },
      [](double sum) { return static_cast<BW16>(RoundToShort(sum)); });
  return StatusCode::Success;
}

using FloatKernelTable = PrimitiveTable<decltype(FilterRow32fBW16)>;

// The divisor scales the taps, not the sums.
StatusCode FilterIntegerKernel(const FloatKernelTable& filter, const BW16* src, std::int32_t srcStep, BW16* dst,
                               std::int32_t dstStep, RegionSize size, const std::int32_t* kernel,
                               std::int32_t kernelSize, std::int32_t anchor, std::int32_t divisor) {
  if (kernel == nullptr) return StatusCode::NullPointer;
  if (kernelSize < 1) return StatusCode::NonPositiveSize;
  if (divisor == 0) return StatusCode::ZeroDivisor;
  const AlignedVector<FLOAT32> scaled(kernelSize);
  if (!scaled) return StatusCode::WorkBufferUnavailable;
  const auto* taps = reinterpret_cast<const Unaligned<std::int32_t>*>(kernel);
  const auto factor = static_cast<FLOAT32>(1.0 / divisor);
  // The product of two floats is exact in double precision: rounding it to float is the float product.
  for (std::int32_t i = 0; i < kernelSize; ++i) scaled[i] = static_cast<FLOAT32>(taps[i]) * factor;
  return filter(src, srcStep, dst, dstStep, size, scaled.data(), kernelSize, anchor);
}

}  // namespace

StatusCode FilterRow32fBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                            const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  return FilterFloatKernel({Direction::AlongRow, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor});
}

StatusCode FilterColumn32fBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                               const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  return FilterFloatKernel({Direction::AlongColumn, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor});
}

StatusCode FilterRowBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                         const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                         std::int32_t divisor) {
  return FilterIntegerKernel(kFilterRow32fBW16, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor, divisor);
}

StatusCode FilterColumnBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size,
                            const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                            std::int32_t divisor) {
  return FilterIntegerKernel(kFilterColumn32fBW16, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor,
                             divisor);
}

}  // namespace norvala
