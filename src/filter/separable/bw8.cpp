#include "filter/separable/bw8.h"

#include <algorithm>

#include "filter/filter.h"
#include "filter/reciprocal.h"
#include "filter/taps.h"

// The three forms of the 8-bit filters. The first one that fits a kernel and divisor, whatever the pixels are, filters
// the region; all make the same bytes.
//
// - FilterInWords: sums of 16 bits, where WordsServe.
// - FilterInPairs: sums of 32 bits, two products at a time, shifted or multiplied by a RoundingReciprocal.
// - FilterPlainly: sums of 32 bits that wrap, divided in double precision. Any kernel and divisor.
//
// The first two take at most 64 taps, a divisor that RoundedDivision serves and no sum of products beyond 32 bits. They
// work without the common divisor of the taps and the divisor: {250, 500, 250} / 1000 is {1, 2, 1} / 4.

namespace norvala {
namespace {

// Whether 16 bits hold every sum, counted from the lowest one and with the rounding addend, and the quotient is exact.
bool WordsServe(const ReducedKernel& kernel) {
  if (kernel.highest - kernel.lowest > UINT16_MAX) return false;
  const std::int32_t divisor = kernel.division.divisor;
  if (divisor == 1) return kernel.highest <= INT16_MAX;  // bytes are packed from signed words
  if (RoundedDivision::IsPowerOfTwo(divisor))
    return divisor <= UINT16_MAX;  // lanes cannot be shifted by all their bits
  // Larger sums need not divide exactly: any quotient of 255 or more makes the byte 255.
  return std::min(kernel.highest, 255 * std::int64_t{divisor} - 1) <= WordReciprocal(divisor).largest;
}

// Filters the region in words or in pairs; returns false where neither serves.
bool FilterReduced(const SeparableCallBW8& call, const DivisorScale& scale) {
  if (!RoundedDivision::Serves(call.divisor) || call.kernelSize > kMostReducedTaps) return false;
  const auto tap = [&](std::int32_t j) { return call.MirroredTap(j); };
  const auto sums = RangeOfSums<std::int64_t>(call.kernelSize, tap, {0, UINT8_MAX});
  if (sums.low < INT32_MIN || sums.high > INT32_MAX) return false;  // they wrap
  const std::int32_t common = CommonDivisor(call.divisor, call.kernelSize, tap);
  const RoundedDivision division = RoundedDivision::Of(call.divisor, scale).Reduced(common);
  const ReducedKernel kernel = {call, common, division, sums.high / common + division.addend, sums.low / common};
  const bool wordsServe = WordsServe(kernel);
  if (!wordsServe && kernel.highest > INT32_MAX) return false;
  wordsServe ? FilterInWords(kernel) : FilterInPairs(kernel);
  return true;
}

// The three modes of the output rule are one product: the reciprocal of a power of two is exact, and half a unit added
// to the product is the addend added to the sum.
void FilterPlainly(const SeparableCallBW8& call) {
  constexpr int kStrip = 1024;  // columns whose sums are kept
  const double factor = static_cast<float>(1.0 / call.divisor);
  const SeparableWindow<BW8> window(call);
  for (int y = 0; y < call.size.height; ++y) {
    for (int x = 0, width = 0; x < call.size.width; x += width) {
      width = std::min(kStrip, call.size.width - x);
      std::uint32_t sums[kStrip] = {};
      for (std::int32_t j = 0; j < call.kernelSize; ++j) {
        const BW8* const pixels = window.Source(x, y, j);
        // Products of 16-bit factors, which are quick.
        const std::int16_t low = LowHalf(call.MirroredTap(j));
        const std::int16_t high = HighHalf(call.MirroredTap(j));
        for (int i = 0; i < width; ++i) sums[i] += static_cast<std::uint32_t>(pixels[i] * low);
        if (high == 0) continue;
        for (int i = 0; i < width; ++i) sums[i] += static_cast<std::uint32_t>(pixels[i] * high) << 16;
      }
      BW8* const dst = window.Destination(x, y);
      for (int i = 0; i < width; ++i) {
        const double quotient = static_cast<std::int32_t>(sums[i]) * factor;
        dst[i] = static_cast<BW8>(static_cast<std::int32_t>(std::clamp(quotient, 0.0, 255.0) + 0.5));
      }
    }
  }
}

}  // namespace

template <Axis axis>
StatusCode FilterBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                     const std::int32_t* kernel, std::int32_t kernelSize, std::int32_t anchor, std::int32_t divisor) {
  const SeparableCallBW8 call = {axis, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor, divisor};
  if (const StatusCode status = call.Check(); status != StatusCode::Success) return status;
  const DivisorScale scale = DeriveDivisorScale(divisor);
  if (!FilterReduced(call, scale)) FilterPlainly(call);
  return StatusCode::Success;
}

template decltype(FilterBW8<Axis::Row>) FilterBW8<Axis::Row>;
template decltype(FilterBW8<Axis::Column>) FilterBW8<Axis::Column>;

}  // namespace norvala
