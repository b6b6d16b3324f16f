#include "filter/separable/narrow.h"

#include <algorithm>
#include <bit>

#include "filter/reciprocal.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

constexpr int kMostTaps = 32;
constexpr int kGroup = 16;  // pixels; the even and the odd ones make up a vector each
constexpr int kStrip = 2 * kGroup;

struct NarrowRule {
  int taps;
  U16x8 tap[kMostTaps];
  // Sums are kept modulo 2^16 above `zero`, so that negative ones need no sign; they start at `start`, which holds the
  // rounding of the division.
  U16x8 zero;
  U16x8 start;
  std::uint16_t multiplier;  // 0 for powers of two
  int shift;
};

U16x8 Broadcast(std::int64_t value) { return U16x8{} + static_cast<std::uint16_t>(value); }

// Sixteen pixels as eight pairs, the even pixel in the low byte of each.
inline U16x8 LoadPairs(const unsigned char* pixels, int count) {
  U16x8 pairs{};
  std::memcpy(&pairs, pixels, static_cast<std::size_t>(count));
  return pairs;
}

// The sums of adjacent groups, clamped at zero: of each those of the even pixels, then those of the odd ones.
template <int fixedTaps, bool symmetric, int groups>
inline void SumGroups(const NarrowRule& rule, const unsigned char* src, std::ptrdiff_t tapStep, int count,
                      std::uint16_t* sums) {
  // Pairs as they are times a tap give the even product plus 256 times the odd one; the odd sums take that out again.
  U16x8 both[groups];
  U16x8 odd[groups];
  for (int g = 0; g < groups; ++g) {
    both[g] = rule.start;
    odd[g] = U16x8{};
  }
  const int taps = fixedTaps > 0 ? fixedTaps : rule.taps;
  const int pairs = symmetric ? taps / 2 : 0;
  for (int j = 0; j < pairs; ++j) {
    const unsigned char* pixels = Row(src, tapStep, j);
    const unsigned char* opposite = Row(src, tapStep, taps - 1 - j);
    for (int g = 0; g < groups; ++g) {
      const U16x8 a = LoadPairs(pixels + g * kGroup, count);
      const U16x8 b = LoadPairs(opposite + g * kGroup, count);
      both[g] += (a + b) * rule.tap[j];
      odd[g] += ((a >> 8) + (b >> 8)) * rule.tap[j];
    }
  }
  for (int j = pairs; j < taps - pairs; ++j) {
    const unsigned char* pixels = Row(src, tapStep, j);
    for (int g = 0; g < groups; ++g) {
      const U16x8 a = LoadPairs(pixels + g * kGroup, count);
      both[g] += a * rule.tap[j];
      odd[g] += (a >> 8) * rule.tap[j];
    }
  }
  for (int g = 0; g < groups; ++g) {
    const U16x8 even = both[g] - (odd[g] << 8);
    odd[g] += rule.start;
    StoreUnaligned(sums + g * kGroup, (even > rule.zero ? even : rule.zero) - rule.zero);
    StoreUnaligned(sums + g * kGroup + 8, (odd[g] > rule.zero ? odd[g] : rule.zero) - rule.zero);
  }
}

// The high halves of the products. Not inlined: on its own the loop is sure to become whole vectors of them.
[[gnu::noinline]] void MultiplyHigh(std::uint16_t* sums, int groups, std::uint16_t multiplier) {
  for (int g = 0; g < groups; ++g, sums += kGroup) {
    for (int i = 0; i < kGroup; ++i) sums[i] = static_cast<std::uint16_t>((std::uint32_t{sums[i]} * multiplier) >> 16);
  }
}

// Filters `count` pixels of a row, less than two strips. The last group ends with the last pixel and may overlap the
// one before; nothing is written before all is read.
template <int fixedTaps, bool symmetric>
inline void FilterStrip(const NarrowRule& rule, const BW8* src, std::ptrdiff_t tapStep, BW8* dst, int count) {
  alignas(16) std::uint16_t sums[2 * kStrip];
  const int groups = (count + kGroup - 1) / kGroup;
  const auto offset = [count](int group) { return std::max(0, std::min(group * kGroup, count - kGroup)); };
  if (count == kStrip) {
    SumGroups<fixedTaps, symmetric, 2>(rule, src, tapStep, kGroup, sums);
  } else {
    for (int g = 0; g < groups; ++g) {
      SumGroups<fixedTaps, symmetric, 1>(rule, src + offset(g), tapStep, std::min(count, kGroup), sums + g * kGroup);
    }
  }
  if (rule.multiplier != 0) MultiplyHigh(sums, groups, rule.multiplier);
  for (int g = 0; g < groups; ++g) {
    const auto most = BitCastLanes<I16x8>(Broadcast(255));
    auto even = BitCastLanes<I16x8>(LoadUnaligned<U16x8>(sums + g * kGroup) >> rule.shift);
    auto odd = BitCastLanes<I16x8>(LoadUnaligned<U16x8>(sums + g * kGroup + 8) >> rule.shift);
    even = even < most ? even : most;
    odd = odd < most ? odd : most;
    const I16x8 pairs = even | odd << 8;
    std::memcpy(dst + offset(g), &pairs, static_cast<std::size_t>(std::min(count, kGroup)));
  }
}

template <int fixedTaps, bool symmetric>
void FilterRows(const NarrowRule& rule, const SeparableCallBW8& call) {
  const SeparableWindow<BW8> window(call);
  for (int y = 0; y < call.size.height; ++y) {
    const BW8* src = window.Source(0, y, 0);
    BW8* dst = window.Destination(0, y);
    int left = call.size.width;
    for (; left >= 2 * kStrip; left -= kStrip, src += kStrip, dst += kStrip) {
      FilterStrip<fixedTaps, symmetric>(rule, src, window.tapStep, dst, kStrip);
    }
    FilterStrip<fixedTaps, symmetric>(rule, src, window.tapStep, dst, left);
  }
}

// Loops over few taps are unrolled; more of them would not find their registers.
template <bool symmetric>
void FilterRows(const NarrowRule& rule, const SeparableCallBW8& call) {
  switch (rule.taps) {
    case 3:
      return FilterRows<3, symmetric>(rule, call);
    case 5:
      return FilterRows<5, symmetric>(rule, call);
    default:
      return FilterRows<0, symmetric>(rule, call);
  }
}

}  // namespace

bool FilterNarrow(const SeparableCallBW8& call, std::int64_t positive, std::int64_t negative,
                  RoundedDivision division) {
  if (call.kernelSize > kMostTaps || positive > 257 || negative > 257) return false;
  const std::int64_t highest = positive * 255 + division.addend;
  const std::int64_t zero = negative * 255;
  if (zero + highest > UINT16_MAX) return false;
  const bool isPower = RoundedDivision::IsPowerOfTwo(division.divisor);
  const WordReciprocal reciprocal(std::max(2, division.divisor));
  // Quotients of 255 and more may come out larger.
  const std::int64_t quotients = 255 * std::int64_t{division.divisor};
  if (!isPower && reciprocal.largest < std::min(highest, quotients - 1)) return false;
  // No lane can be shifted by all of its 16 bits.
  if (division.divisor > UINT16_MAX) return false;
  // Clamping takes the quotients as signed.
  if (division.divisor == 1 && highest > INT16_MAX) return false;
  NarrowRule rule;
  rule.taps = call.kernelSize;
  for (int j = 0; j < rule.taps; ++j) rule.tap[j] = Broadcast(call.MirroredTap(j));
  rule.start = Broadcast(zero + division.addend);
  rule.zero = Broadcast(zero);
  rule.multiplier = isPower ? std::uint16_t{0} : reciprocal.multiplier;
  rule.shift = isPower ? std::countr_zero(static_cast<std::uint32_t>(division.divisor)) : reciprocal.shift;
  call.IsSymmetric() ? FilterRows<true>(rule, call) : FilterRows<false>(rule, call);
  return true;
}

}  // namespace norvala
