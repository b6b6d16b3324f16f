#include <algorithm>
#include <bit>
#include <cstring>

#include "filter/reciprocal.h"
#include "filter/separable/blocks.h"
#include "filter/separable/bw8.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

constexpr int kGroup = 16;          // pixels; the even and the odd ones make up a vector each
constexpr int kBlock = 2 * kGroup;  // so that a tap is read once for two groups

// Turns sums into bytes. Sums are kept modulo 2^16 above `zero`, so that negative ones need no sign; they start at
// `start`, which holds the rounding of the division.
struct WordDivision {
  explicit WordDivision(const ReducedKernel& kernel)
      : zero(Splat<U16x8>(static_cast<std::uint16_t>(-kernel.lowest))),
        start(zero + static_cast<std::uint16_t>(kernel.division.addend)) {
    const std::int32_t divisor = kernel.division.divisor;
    if (RoundedDivision::IsPowerOfTwo(divisor)) {
      shift = ShiftCount(std::countr_zero(static_cast<std::uint32_t>(divisor)));
    } else {
      const WordReciprocal reciprocal(divisor);
      multiplier = reciprocal.multiplier;
      shift = ShiftCount(reciprocal.shift);
    }
  }

  U8x16 Divide(U16x8 evenSums, U16x8 oddSums) const {
    return InterleaveHalves(PackSaturated(Quotients(evenSums), Quotients(oddSums)));
  }
  I16x8 Quotients(U16x8 sums) const {
    sums = MaxLanes(sums, zero) - zero;
    if (multiplier != 0) sums = HighProducts(sums, Splat<U16x8>(multiplier));
    return BitCastLanes<I16x8>(shift.Right(sums));
  }

  U16x8 zero;
  U16x8 start;
  std::uint16_t multiplier = 0;  // 0 for powers of two
  ShiftCount shift{0};
};

struct WordTaps {
  int count;
  U16x8 tap[kMostReducedTaps];
};

// The bytes of a block. fixedTaps is 0 or the number of the taps, whose loop is unrolled then.
template <int fixedTaps, bool symmetric>
inline void FilterBlock(const WordTaps& kernel, const WordDivision& divide, const BW8* src, std::ptrdiff_t tapStep,
                        U8x16 (&bytes)[2]) {
  // A pair of bytes as it is times a tap is the even product and 256 times the odd one, which the odd sums take out
  // again.
  U16x8 both[2] = {divide.start, divide.start};
  U16x8 odd[2] = {};
  const auto add = [&both, &odd](const BW8* pixels, U16x8 tap) {
    for (int g = 0; g < 2; ++g) {
      const auto a = LoadUnaligned<U16x8>(pixels + g * kGroup);
      both[g] += a * tap;
      odd[g] += (a >> 8) * tap;
    }
  };
  const auto addOpposite = [&both, &odd](const BW8* pixels, const BW8* opposite, U16x8 tap) {
    for (int g = 0; g < 2; ++g) {
      const auto a = LoadUnaligned<U16x8>(pixels + g * kGroup);
      const auto b = LoadUnaligned<U16x8>(opposite + g * kGroup);
      both[g] += (a + b) * tap;
      odd[g] += ((a >> 8) + (b >> 8)) * tap;
    }
  };
  const int taps = fixedTaps > 0 ? fixedTaps : kernel.count;
  if constexpr (symmetric) {
    const int middle = taps / 2;
    if (taps % 2 != 0) add(src + middle * tapStep, kernel.tap[middle]);
    for (int j = 0; j < middle; ++j) {
      addOpposite(Row(src, tapStep, j), Row(src, tapStep, taps - 1 - j), kernel.tap[j]);
    }
  } else {
    for (int j = 0; j < taps; ++j) add(Row(src, tapStep, j), kernel.tap[j]);
  }
  for (int g = 0; g < 2; ++g) bytes[g] = divide.Divide(both[g] - (odd[g] << 8), odd[g] + divide.start);
}

template <int fixedTaps, bool symmetric>
void FilterRows(const WordTaps& kernel, const WordDivision& divide, const SeparableCallBW8& call) {
  const SeparableWindow<BW8> window(call);
  for (int y = 0; y < call.size.height; ++y) {
    const BW8* const src = window.Source(0, y, 0);
    BW8* const dst = window.Destination(0, y);
    const auto block = [&kernel, divide, dst](const BW8* pixels, std::ptrdiff_t tapStep, int x, int count) {
      U8x16 bytes[2];
      FilterBlock<fixedTaps, symmetric>(kernel, divide, pixels, tapStep, bytes);
      std::memcpy(dst + x, &bytes[0], static_cast<std::size_t>(std::min(count, kGroup)));
      if (count > kGroup) std::memcpy(dst + x + kGroup, &bytes[1], static_cast<std::size_t>(count - kGroup));
    };
    if (call.axis == Axis::Row) {
      ForEachBlockOfRow<kBlock>(src, call.size.width, kernel.count, kBlock + kernel.count - 1, block);
    } else {
      ForEachBlockOfColumns<kBlock, kMostReducedTaps>(src, window.rowStep, call.size.width, kernel.count, block);
    }
  }
}

// Loops over few taps are unrolled. Opposite pixels of a symmetric kernel are added before they are weighed.
template <bool symmetric>
void FilterRows(const WordTaps& kernel, const WordDivision& divide, const SeparableCallBW8& call) {
  switch (kernel.count) {
    case 3:
      return FilterRows<3, symmetric>(kernel, divide, call);
    case 5:
      return FilterRows<5, symmetric>(kernel, divide, call);
    default:
      return FilterRows<0, symmetric>(kernel, divide, call);
  }
}

}  // namespace

void FilterInWords(const ReducedKernel& kernel) {
  WordTaps taps;
  taps.count = kernel.call.kernelSize;
  for (int j = 0; j < taps.count; ++j) taps.tap[j] = Splat<U16x8>(static_cast<std::uint16_t>(kernel.MirroredTap(j)));
  const WordDivision divide(kernel);
  kernel.call.IsSymmetric() ? FilterRows<true>(taps, divide, kernel.call)
                            : FilterRows<false>(taps, divide, kernel.call);
}

}  // namespace norvala
