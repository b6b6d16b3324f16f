#include <cmath>

#include "analysis/analysis.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {

namespace {

// The definition, whose time is that of the double roots in the divider.
void Moduli(const ComplexFLOAT32Number* src, FLOAT32* dst, std::ptrdiff_t count) {
  const Unaligned<FLOAT32>* __restrict parts = reinterpret_cast<const Unaligned<FLOAT32>*>(src);
  Unaligned<FLOAT32>* __restrict moduli = reinterpret_cast<Unaligned<FLOAT32>*>(dst);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    const double re = parts[2 * i];
    const double im = parts[2 * i + 1];
    moduli[i] = static_cast<FLOAT32>(std::sqrt(re * re + im * im));
  }
}

// Four moduli as defined.
inline F32x4 FourModuli(const ComplexFLOAT32Number* src) {
  const auto rootsOfTwo = [](const ComplexFLOAT32Number* two) {
    F64x2 first, second;
    ConvertToDoubles(LoadUnaligned<F32x4>(two), first, second);
    first *= first;
    second *= second;
    const F64x2 sums = __builtin_shufflevector(first, second, 0, 2) + __builtin_shufflevector(first, second, 1, 3);
    return F64x2{std::sqrt(sums[0]), std::sqrt(sums[1])};
  };
  return ConvertFromDoubles<F32x4>(rootsOfTwo(src), rootsOfTwo(src + 2));
}

// Four moduli by float roots, which with the division take half of the divider's time, and one Newton step from them:
//   root = r + (s - r * r) / (2 * r), s the sum of squares, r the float root of s rounded to float.
// Where s is at least 2^-70 and finite as a float, r is within 1.5 * 2^-24 of the root of s (all errors relative to
// r). The residual s - r * r is exact in double and below 3.1 * 2^-24 * r * r, so what Newton's step leaves out is
// below 1.3 * 2^-48 and the roundings of the step and of its sum with the margin, all of floats that are normal or 0,
// stay below 7 * 2^-48. The root of s lies thus within 2^-44 of r plus the step, and so does that root rounded to
// double. Rounding to float keeps order: where r plus the step rounds to the same float 2^-43 below and above, that
// float is the modulus. Two zero parts come out as 0 in both. The other small sums are left out by the test of s, and
// sums that overflow to infinity, infinite parts and NaN by the bounds, which are NaN and differ.
class FastModuli {
 public:
  // Separate from Finish for the double roots of other numbers to be put between them.
  explicit FastModuli(const ComplexFLOAT32Number* src) {
    const auto first = LoadUnaligned<F32x4>(src);
    const auto second = LoadUnaligned<F32x4>(src + 2);
    const F32x4 re = __builtin_shufflevector(first, second, 0, 2, 4, 6);
    const F32x4 im = __builtin_shufflevector(first, second, 1, 3, 5, 7);
    F64x2 reLow, reHigh, imLow, imHigh;
    ConvertToDoubles(re, reLow, reHigh);
    ConvertToDoubles(im, imLow, imHigh);
    sumsLow_ = reLow * reLow + imLow * imLow;
    sumsHigh_ = reHigh * reHigh + imHigh * imHigh;
    const auto sums = ConvertFromDoubles<F32x4>(sumsLow_, sumsHigh_);
    const auto anyBit = BitCastLanes<F32x4>(BitCastLanes<I32x4>(re) | BitCastLanes<I32x4>(im));
    inRange_ = (sums >= 0x1p-70F) | (anyBit == 0.0F);
    roots_ = F32x4{std::sqrt(sums[0]), std::sqrt(sums[1]), std::sqrt(sums[2]), std::sqrt(sums[3])};
    // The addend changes the root 0 alone, whose step is then 0 and not NaN.
    slopes_ = 0.5F / (roots_ + 0x1p-100F);
  }

  // Whether all four moduli are sure; `moduli` is set if so.
  bool Finish(F32x4& moduli) const {
    F64x2 rootsLow, rootsHigh;
    ConvertToDoubles(roots_, rootsLow, rootsHigh);
    const auto residuals = ConvertFromDoubles<F32x4>(sumsLow_ - rootsLow * rootsLow, sumsHigh_ - rootsHigh * rootsHigh);
    const F32x4 steps = residuals * slopes_;
    const F32x4 margins = roots_ * 0x1p-43F;
    moduli = roots_ + (steps - margins);
    const auto sure = BitCastLanes<I64x2>((moduli == roots_ + (steps + margins)) & inRange_);
    return (sure[0] & sure[1]) == -1;
  }

 private:
  F64x2 sumsLow_;
  F64x2 sumsHigh_;
  I32x4 inRange_;
  F32x4 roots_;
  F32x4 slopes_;
};

}  // namespace

StatusCode MagnitudeRowFLOAT32(const ComplexFLOAT32Number* src, FLOAT32* dst, std::int32_t count) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (count < 1) return StatusCode::NonPositiveSize;
  // The divider works on eight numbers while the multipliers and adders, idle otherwise, work on four.
  std::ptrdiff_t i = 0;
  for (; i + 12 <= count; i += 12) {
    const FastModuli fast(src + i + 8);
    StoreUnaligned(dst + i, FourModuli(src + i));
    StoreUnaligned(dst + i + 4, FourModuli(src + i + 4));
    F32x4 moduli;
    if (!fast.Finish(moduli)) moduli = FourModuli(src + i + 8);
    StoreUnaligned(dst + i + 8, moduli);
  }
  Moduli(src + i, dst + i, count - i);
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
