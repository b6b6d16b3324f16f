#include <cmath>

#include "analysis/analysis.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// The modulus as it is defined: the root of the sum of squares, both in double, rounded to float.
inline F32x4 FourModuli(const ComplexFLOAT32Number* src) {
  const auto rootsOfTwo = [](const ComplexFLOAT32Number* two) {
    F64x2x2 parts = ConvertToDoubles(LoadUnaligned<F32x4>(two));
    parts = parts * parts;
    const F64x2 sums = EvenLanes(parts.low, parts.high) + OddLanes(parts.low, parts.high);
    return F64x2{std::sqrt(sums[0]), std::sqrt(sums[1])};
  };
  return ConvertFromDoubles<F32x4>(rootsOfTwo(src), rootsOfTwo(src + 2));
}

// Four moduli with float roots, which take half the time of double ones, division included. Each root is improved by
// one step of Newton's method and kept where the float nearest to it is certain:
//   root = r + (s - r * r) / (2 * r), where s is the sum of squares and r the float root of s rounded to float.
// How far that is from the root of s, relative to r, where s is at least 2^-70 and finite as a float:
// - r is within 1.5 * 2^-24 of the root of s, so that what Newton's step leaves out is below 1.3 * 2^-48.
// - The residual s - r * r is exact in double and below 3.1 * 2^-24 * r * r. It is rounded to float, as are the inverse
//   slope, the step and its sum with the margin, floats that are normal or 0: together below 7 * 2^-48.
// - The double root of the definition is within 2^-53.
// The root of the definition thus lies within 2^-44 of r plus the step. Rounding to float keeps order: where r plus the
// step rounds to the same float when a margin of 2^-43 is added and when it is taken away, that float is the modulus.
// Two parts that are 0 give 0 both ways. Other sums below 2^-70 are excluded by a test. Sums that overflow, infinite
// parts and NaN make both bounds NaN, which are not equal. A root half-way between two floats is never certain: the
// double root decides it.
// Returns whether all four moduli are certain; `moduli` is set if so.
inline bool FastModuli(const ComplexFLOAT32Number* src, F32x4& moduli) {
  const auto first = LoadUnaligned<F32x4>(src);
  const auto second = LoadUnaligned<F32x4>(src + 2);
  const F32x4 re = EvenLanes(first, second);
  const F32x4 im = OddLanes(first, second);
  const F64x2x2 wideRe = ConvertToDoubles(re), wideIm = ConvertToDoubles(im);
  const F64x2x2 wideSums = wideRe * wideRe + wideIm * wideIm;
  const auto sums = ConvertFromDoubles<F32x4>(wideSums);
  const auto anyBit = BitCastLanes<F32x4>(BitCastLanes<I32x4>(re) | BitCastLanes<I32x4>(im));
  const I32x4 inRange = (sums >= 0x1p-70F) | (anyBit == 0.0F);
  const F32x4 roots = {std::sqrt(sums[0]), std::sqrt(sums[1]), std::sqrt(sums[2]), std::sqrt(sums[3])};
  // The addend changes the root 0 alone, whose step is then 0 and not NaN.
  const F32x4 inverseSlopes = 0.5F / (roots + 0x1p-100F);
  const F64x2x2 wideRoots = ConvertToDoubles(roots);
  const F32x4 steps = ConvertFromDoubles<F32x4>(wideSums - wideRoots * wideRoots) * inverseSlopes;
  const F32x4 margins = roots * 0x1p-43F;
  moduli = roots + (steps - margins);
  const auto certain = BitCastLanes<I64x2>((moduli == roots + (steps + margins)) & inRange);
  return (certain[0] & certain[1]) == -1;
}

}  // namespace

StatusCode MagnitudeRowFLOAT32(const ComplexFLOAT32Number* src, FLOAT32* dst, std::int32_t count) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (count < 1) return StatusCode::NonPositiveSize;
  // Nearly all time goes to double roots. Of twelve numbers, eight keep the processor's unit for roots and divisions
  // busy; the last four need it less, and use the multipliers and adders that would be idle.
  std::ptrdiff_t i = 0;
  for (; i + 12 <= count; i += 12) {
    F32x4 moduli;
    const bool certain = FastModuli(src + i + 8, moduli);
    StoreUnaligned(dst + i, FourModuli(src + i));
    StoreUnaligned(dst + i + 4, FourModuli(src + i + 4));
    if (!certain) moduli = FourModuli(src + i + 8);
    StoreUnaligned(dst + i + 8, moduli);
  }
  for (; i + 4 <= count; i += 4) StoreUnaligned(dst + i, FourModuli(src + i));
  for (; i < count; ++i) {
    const auto [re, im] = LoadUnaligned<ComplexFLOAT32Number>(src + i);
    StoreUnaligned(dst + i, static_cast<FLOAT32>(std::sqrt(double{re} * re + double{im} * im)));
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
