#include <bit>
#include <cstring>
#include <optional>

#include "filter/reciprocal.h"
#include "filter/separable/blocks.h"
#include "filter/separable/bw8.h"
#include "filter/separable/pair_sums.h"

namespace norvala {
namespace {

// Divisions: two vectors of sums to quotients, of which those that no word holds saturate.

struct ShiftDivision {
  explicit ShiftDivision(std::int32_t divisor) : shift(std::countr_zero(static_cast<std::uint32_t>(divisor))) {}

  I16x8 operator()(U32x4 a, U32x4 b) const {
    return PackSaturated(shift.Right(BitCastLanes<I32x4>(a)), shift.Right(BitCastLanes<I32x4>(b)));
  }

  ShiftCount shift;
};

// Quotients of 256 and more need not be exact, and all smaller ones are: 256 * RoundedDivision::kLargestOther is below
// kLargestFloatDividend.
struct FloatDivision {
  static_assert(256 * RoundedDivision::kLargestOther < kLargestFloatDividend);

  explicit FloatDivision(std::int32_t divisor) : reciprocal(Splat<F32x4>(FloatReciprocal(divisor))) {}

  I16x8 operator()(U32x4 a, U32x4 b) const { return PackSaturated(Quotient(a), Quotient(b)); }
  I32x4 Quotient(U32x4 sum) const {
    return ConvertLanes<I32x4>(ConvertLanes<F32x4>(BitCastLanes<I32x4>(sum)) * reciprocal);
  }

  F32x4 reciprocal;
};

// The products of all taps. Taps of more than 16 bits are the sum of two: `high`, in units of 2^16, and `low`.
template <class Pairs, bool wide>
class Products {
 public:
  explicit Products(const ReducedKernel& kernel)
      : start_(Splat<U32x4>(kernel.division.addend)),
        low_([&kernel](int j) { return LowHalf(Tap(kernel, j)); }, kernel.call.kernelSize) {
    if constexpr (wide) high_.emplace([&kernel](int j) { return HighHalf(Tap(kernel, j)); }, kernel.call.kernelSize);
  }

  template <int fixedTaps>
  void Sum(const BW8* pixels, std::ptrdiff_t tapStep, U32x4 (&sums)[Pairs::kVectors]) const {
    for (U32x4& sum : sums) sum = wide ? U32x4{} : start_;
    if constexpr (wide) {
      high_->template AddProducts<fixedTaps>(pixels, tapStep, sums);
      for (U32x4& sum : sums) sum = (sum << 16) + start_;
    }
    low_.template AddProducts<fixedTaps>(pixels, tapStep, sums);
  }

 private:
  static std::int32_t Tap(const ReducedKernel& kernel, int j) {
    return j < 0 || j >= kernel.call.kernelSize ? 0 : kernel.MirroredTap(j);
  }

  U32x4 start_;
  Pairs low_;
  std::optional<Pairs> high_;
};

// Filters the rows from `top` on, in groups of Pairs::kRows, and returns the row after them.
template <class Pairs, int fixedTaps, bool wide, class Division>
int FilterRows(const ReducedKernel& kernel, Division divide, int top) {
  const Products<Pairs, wide> products(kernel);
  const SeparableWindow<BW8> window(kernel.call);
  int y = top;
  for (; kernel.call.size.height - y >= Pairs::kRows; y += Pairs::kRows) {
    const auto block = [&products, divide, dst = window.Destination(0, y), dstStep = window.dstStep](
                           const BW8* pixels, std::ptrdiff_t tapStep, int x, int count) {
      U32x4 sums[Pairs::kVectors];
      products.template Sum<fixedTaps>(pixels, tapStep, sums);
      U8x16 bytes[Pairs::kVectors / 4];
      for (int k = 0; k < Pairs::kVectors; k += 4) {
        bytes[k / 4] = Pairs::Pack(divide(sums[k], sums[k + 1]), divide(sums[k + 2], sums[k + 3]));
      }
      for (int r = 0; r < Pairs::kRows; ++r) {
        const auto* row = reinterpret_cast<const BW8*>(bytes) + r * Pairs::kColumns;
        std::memcpy(Row(dst, dstStep, r) + x, row, static_cast<std::size_t>(count));
      }
    };
    Pairs::ForEachBlock(window.Source(0, y, 0), window.rowStep, kernel.call.size.width, kernel.call.kernelSize, block);
  }
  return y;
}

template <int fixedTaps, bool wide, class Division>
void FilterRegion(const ReducedKernel& kernel, Division divide) {
  constexpr int kTaps = kMostReducedTaps;
  constexpr int kColumns = sizeof(void*) == 8 ? 16 : 8;  // as the registers allow
  if (kernel.call.axis == Axis::Row) {
    FilterRows<RowPairs<kTaps>, fixedTaps, wide>(kernel, divide, 0);
  } else {
    const int y = FilterRows<ColumnPairs<kTaps, 2, kColumns>, fixedTaps, wide>(kernel, divide, 0);
    FilterRows<ColumnPairs<kTaps, 1, 16>, 0, wide>(kernel, divide, y);
  }
}

// Loops over few taps are unrolled.
template <class Division>
void FilterBy(const ReducedKernel& kernel, Division divide) {
  for (std::int32_t j = 0; j < kernel.call.kernelSize; ++j) {
    if (HighHalf(kernel.MirroredTap(j)) != 0) return FilterRegion<0, true>(kernel, divide);
  }
  switch (kernel.call.kernelSize) {
    case 3:
      return FilterRegion<3, false>(kernel, divide);
    case 5:
      return FilterRegion<5, false>(kernel, divide);
    default:
      return FilterRegion<0, false>(kernel, divide);
  }
}

}  // namespace

void FilterInPairs(const ReducedKernel& kernel) {
  const std::int32_t divisor = kernel.division.divisor;
  RoundedDivision::IsPowerOfTwo(divisor) ? FilterBy(kernel, ShiftDivision(divisor))
                                         : FilterBy(kernel, FloatDivision(divisor));
}

}  // namespace norvala
