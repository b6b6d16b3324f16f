#include "filter/filter.h"
#include "filter/separable_divisor.h"
#include "filter/separable_narrow.h"
#include "filter/separable_tile.h"

namespace norvala {
namespace {

// Sums of floats, exact below 2^24 in steps of 1 and below 2^23 in steps of 1/2.
bool FilterFloatSums(const SeparableCallBW8& call, std::int64_t magnitude, RoundedDivision division) {
  // Half a unit keeps the quotients of whole sums away from whole numbers by 1 / (2 * divisor), where the errors of the
  // float reciprocal and product, at most 2^-15 in the range of bytes, do not matter. The reciprocal of a power of two
  // has no error.
  const bool isExact = RoundedDivision::IsPowerOfTwo(division.divisor);
  const float start = static_cast<float>(division.addend) + (isExact ? 0.0F : 0.5F);
  const std::int64_t limit = isExact ? 1 << 24 : 1 << 23;
  if (magnitude * 255 + division.addend >= limit) return false;
  const float factor = 1.0F / static_cast<float>(division.divisor);
  SeparableTile<float> tile;
  tile.Filter(
      call, start, [](BW8 pixel) { return static_cast<float>(pixel); },
      [factor](float sum) {
        const float value = sum * factor;
        const float positive = value > 0.0F ? value : 0.0F;
        return static_cast<BW8>(static_cast<std::int32_t>(positive < 255.0F ? positive : 255.0F));
      });
  return true;
}

// Sums of doubles, for those that 32 bits hold. All three modes of the output rule are one product here: the reciprocal
// of a power of two is exact, and half a unit in the product is the addend in the sum.
bool FilterDoubleSums(const SeparableCallBW8& call, std::int64_t magnitude, std::int32_t divisor) {
  if (magnitude * 255 > INT32_MAX) return false;
  const double factor = static_cast<float>(1.0 / divisor);
  SeparableTile<double> tile;
  tile.Filter(
      call, 0.0, [](BW8 pixel) { return static_cast<double>(pixel); },
      [factor](double sum) {
        const double value = sum * factor;
        const double positive = value > 0.0 ? value : 0.0;
        return static_cast<BW8>(static_cast<std::int32_t>((positive < 255.0 ? positive : 255.0) + 0.5));
      });
  return true;
}

void FilterWrappingSums(const SeparableCallBW8& call, const DivisorScale& scale) {
  SeparableTile<std::uint32_t> tile;
  tile.Filter(
      call, 0U, [](BW8 pixel) { return std::uint32_t{pixel}; },
      [scale](std::uint32_t sum) { return ScaleSum(static_cast<std::int32_t>(sum), scale); });
}

StatusCode Filter(const SeparableCallBW8& call, std::int32_t divisor) {
  if (const StatusCode status = call.CheckPointersAndSizes(); status != StatusCode::Success) return status;
  if (divisor == 0) return StatusCode::ZeroDivisor;
  if (const StatusCode status = call.CheckSteps(); status != StatusCode::Success) return status;
  const DivisorScale scale = DeriveDivisorScale(divisor);

  // The narrowest sums that hold whatever the pixels are give the same bytes as 32-bit ones.
  std::int64_t positive = 0;
  std::int64_t negative = 0;
  for (std::int32_t j = 0; j < call.kernelSize; ++j) {
    const std::int64_t tap = call.MirroredTap(j);
    (tap > 0 ? positive : negative) += tap > 0 ? tap : -tap;
  }
  const std::int64_t magnitude = std::min(positive + negative, std::int64_t{INT32_MAX});
  if (RoundedDivision::Serves(divisor)) {
    const RoundedDivision division = RoundedDivision::Of(divisor, scale);
    if (FilterNarrow(call, positive, negative, division)) return StatusCode::Success;
    if (FilterFloatSums(call, magnitude, division)) return StatusCode::Success;
  }
  if (!FilterDoubleSums(call, magnitude, divisor)) FilterWrappingSums(call, scale);
  return StatusCode::Success;
}

}  // namespace

StatusCode FilterRowBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                        const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                        std::int32_t divisor) {
  return Filter({Direction::AlongRow, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor}, divisor);
}

StatusCode FilterColumnBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                           const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor,
                           std::int32_t divisor) {
  return Filter({Direction::AlongColumn, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor}, divisor);
}

}  // namespace norvala
