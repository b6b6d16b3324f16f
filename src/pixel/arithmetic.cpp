#include <cmath>

#include "pixel/map_rows.h"
#include "pixel/pixel.h"

namespace norvala {

StatusCode AddFLOAT32_C1IR(const FLOAT32* src, std::int32_t srcStep, FLOAT32* srcDst, std::int32_t srcDstStep,
                           RegionSize size) {
  if (src == nullptr || srcDst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  ForEachRow(
      size,
      [](std::size_t count, const void* from, void* to) {
        MapRow<FLOAT32>([](auto sum, auto added) { return sum + added; }, count, to, to, from);
      },
      Rows{src, srcStep}, Rows{srcDst, srcDstStep});
  return StatusCode::Success;
}

StatusCode DivCFLOAT32_C1IR(FLOAT32 divisor, FLOAT32* image, std::int32_t step, RegionSize size) {
  if (image == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (step < 1) return StatusCode::NonPositiveStep;
  if (divisor == 0.0F || std::isnan(divisor)) return StatusCode::DivisionByZero;
  const auto reciprocal = static_cast<FLOAT32>(1.0 / static_cast<FLOAT64>(divisor));
  // The exact product of two floats fits a double, so its rounding to a float is the float product.
  ForEachRow(
      size,
      [reciprocal](std::size_t count, void* pixels) {
        MapRow<FLOAT32>([reciprocal](auto pixel) { return pixel * reciprocal; }, count, pixels, pixels);
      },
      Rows{image, step});
  return StatusCode::Success;
}

}  // namespace norvala
