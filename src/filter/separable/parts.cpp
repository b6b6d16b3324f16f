#include <algorithm>
#include <cstring>
#include <iterator>

#include "filter/separable/blocks.h"
#include "filter/separable/bw8.h"
#include "filter/separable/pair_sums.h"

namespace norvala {
namespace {

constexpr int kTaps = 64;     // taken at once
constexpr int kStrip = 1024;  // columns whose sums are kept

// The output rule in double precision. All three modes are one product: the reciprocal of a power of two is exact, and
// half a unit added to the product is the addend added to the sum.
struct DoubleDivision {
  explicit DoubleDivision(std::int32_t divisor) : factor(Splat<F64x2>(static_cast<float>(1.0 / divisor))) {}

  I16x8 operator()(U32x4 a, U32x4 b) const { return PackSaturated(Quotient(a), Quotient(b)); }
  I32x4 Quotient(U32x4 sums) const {
    const F64x2x2 values = ConvertToDoubles(BitCastLanes<I32x4>(sums));
    return ConvertFromDoubles<I32x4>(Rounded(values.low), Rounded(values.high));
  }
  F64x2 Rounded(F64x2 sum) const { return MinLanes(MaxLanes(sum * factor, lowest), highest) + 0.5; }

  F64x2 factor;
  F64x2 lowest = Splat<F64x2>(Opaque(0.0));
  F64x2 highest = Splat<F64x2>(Opaque(255.0));
};

// The sums of a strip of a row, and the bytes that they become.
template <class Pairs>
class Strip {
 public:
  Strip(const SeparableCallBW8& call, const DoubleDivision& divide) : call_(call), window_(call), divide_(divide) {}

  // Filters up to kStrip columns.
  void Filter(int x, int y, int width) {
    std::fill(std::begin(sums_), std::end(sums_), U32x4{});
    AddProducts(x, y, width, HighHalf);
    for (U32x4& sum : sums_) sum <<= 16;
    AddProducts(x, y, width, LowHalf);
    BW8* const dst = window_.Destination(x, y);
    for (int i = 0; i < width; i += Pairs::kColumns) {
      const U32x4* sums = sums_ + i / 4;
      const U8x16 bytes = Pairs::Pack(divide_(sums[0], sums[1]), divide_(sums[2], sums[3]));
      std::memcpy(dst + i, &bytes, static_cast<std::size_t>(std::min(Pairs::kColumns, width - i)));
    }
  }

 private:
  void AddProducts(int x, int y, int width, std::int16_t (*half)(std::int32_t)) {
    for (std::int32_t first = 0, taps = 0; first < call_.kernelSize; first += taps) {
      taps = std::min(kTaps, call_.kernelSize - first);
      const auto tap = [this, half, first, taps](int j) {
        return j < 0 || j >= taps ? std::int16_t{0} : half(call_.MirroredTap(first + j));
      };
      const Pairs pairs(tap, taps);
      const auto block = [this, &pairs](const BW8* pixels, std::ptrdiff_t tapStep, int i, int) {
        U32x4 sums[4];
        std::copy_n(sums_ + i / 4, 4, sums);
        pairs.template AddProducts<0>(pixels, tapStep, sums);
        std::copy_n(sums, 4, sums_ + i / 4);
      };
      Pairs::ForEachBlock(window_.Source(x, y, first), window_.rowStep, width, taps, block);
    }
  }

  const SeparableCallBW8& call_;
  const SeparableWindow<BW8> window_;
  const DoubleDivision& divide_;
  U32x4 sums_[kStrip / 4];
};

template <class Pairs>
void FilterStrips(const SeparableCallBW8& call, const DoubleDivision& divide) {
  Strip<Pairs> strip(call, divide);
  for (int y = 0; y < call.size.height; ++y) {
    for (int x = 0, width = 0; x < call.size.width; x += width) {
      width = std::min(kStrip, call.size.width - x);
      strip.Filter(x, y, width);
    }
  }
}

}  // namespace

void FilterInParts(const SeparableCallBW8& call, std::int32_t divisor) {
  const DoubleDivision divide(divisor);
  call.axis == Axis::Row ? FilterStrips<RowPairs<kTaps>>(call, divide)
                         : FilterStrips<ColumnPairs<kTaps, 1, 16>>(call, divide);
}

}  // namespace norvala
