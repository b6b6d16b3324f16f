#include <cmath>

#include "pixel/pixel.h"
#include "pixel/rows.h"

namespace norvala {

StatusCode AddFLOAT32_C1IR(const FLOAT32* src, std::int32_t srcStep, FLOAT32* srcDst, std::int32_t srcDstStep,
                           RegionSize size) {
  if (src == nullptr || srcDst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  const Rows image{srcDst, srcDstStep};
  MapRows(
      size, [](auto sum, auto added) { return sum + added; }, image, image, Rows{src, srcStep});
  return StatusCode::Success;
}

StatusCode DivCFLOAT32_C1IR(FLOAT32 divisor, FLOAT32* image, std::int32_t step, RegionSize size) {
  if (image == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (step < 1) return StatusCode::NonPositiveStep;
  if (divisor == 0.0F || std::isnan(divisor)) return StatusCode::DivisionByZero;
  const auto reciprocal = static_cast<FLOAT32>(1.0 / static_cast<FLOAT64>(divisor));
  // The exact product of two floats fits a double, so its rounding to a float is the float product.
  const Rows rows{image, step};
  MapRows(
      size, [reciprocal](auto pixel) { return pixel * reciprocal; }, rows, rows);
  return StatusCode::Success;
}

}  // namespace norvala
