#include <bit>
#include <cstring>
#include <optional>

#include "filter/reciprocal.h"
#include "filter/separable/blocks.h"
#include "filter/separable/bw8.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// ---- Sums ----
//
// Sums of bytes times 16-bit taps in lanes of 32 bits, two products to an operation (MultiplyAddPairs). They wrap.
// Constructors take the taps as a function of their index, which gives 0 for an index outside of the kernel.

U32x4 Products(I16x8 words, I16x8 taps) { return BitCastLanes<U32x4>(MultiplyAddPairs(words, taps)); }

// Sums along a row. Bytes become words without unpacking: the even or the odd bytes at an address, masked or shifted,
// are the pixels x, x + 2, x + 4 and so on. So a pair of words holds the pixels 4 m and 4 m + 2 after the first one,
// and is weighed by the taps j and j + 2; vector c of the sums is that of the columns c, c + 4, c + 8 and c + 12.
class RowPairs {
 public:
  static constexpr int kRows = 1;
  static constexpr int kColumns = 16;
  static constexpr int kVectors = 4;

  template <class TapAt>
  RowPairs(TapAt tap, int taps) : count_(PairsFor(taps)) {
    for (int p = 0; p < count_; ++p) {
      const int first = p / 2 * 4 + p % 2;
      pairs_[p] = SplatPair(tap(first), tap(first + 2));
    }
  }

  // Calls block(pixels, tapStep, x, count) for all blocks of a row of results, see ForEachBlockOfRow.
  template <class Block>
  static void ForEachBlock(const BW8* src, std::ptrdiff_t, int width, int taps, Block block) {
    ForEachBlockOfRow<kColumns>(src, width, taps, kColumns + 2 * PairsFor(taps), block);
  }

  // Adds the products of a block; fixedTaps is 0 or the number of the taps, whose loop is unrolled then.
  template <int fixedTaps>
  void AddProducts(const BW8* pixels, std::ptrdiff_t, U32x4 (&sums)[kVectors]) const {
    U16x8 bytes = LoadUnaligned<U16x8>(pixels);
    const int count = fixedTaps > 0 ? PairsFor(fixedTaps) : count_;
    const auto isBoth = [](int p) { return fixedTaps == 0 || fixedTaps > 2 * p + 1; };
    AddGroup(pixels, 0, isBoth(0), bytes, sums);  // apart, since there is nothing to add to
    for (int p = 2; p < count; p += 2) AddGroup(pixels, p, isBoth(p), bytes, sums);
  }

  // The bytes of quotients that lie in the order of the sums: vectors 0 and 1 in the first words, 2 and 3 in the
  // second.
  static U8x16 Pack(I16x8 words01, I16x8 words23) {
    return InterleaveHalves(PackSaturated(InterleaveLow(words01, words23), InterleaveHigh(words01, words23)));
  }

 private:
  // Groups of four taps make two pairs each.
  static constexpr int PairsFor(int taps) { return (taps + 3) / 4 * 2; }

  // Adds the products of pair p and, for `both`, of the next one. `bytes` are those at 2 * p before and at 2 * p + 4
  // after.
  void AddGroup(const BW8* pixels, int p, bool both, U16x8& bytes, U32x4 (&sums)[kVectors]) const {
    const auto add = [this, p, both](I16x8 words, I16x8 next, U32x4& sum) {
      sum += both ? Products(words, pairs_[p]) + Products(next, pairs_[p + 1]) : Products(words, pairs_[p]);
    };
    const I16x8 first = BitCastLanes<I16x8>(bytes & 255);
    const I16x8 second = BitCastLanes<I16x8>(bytes >> 8);
    add(first, second, sums[0]);
    bytes = LoadUnaligned<U16x8>(pixels + 2 * p + 2);
    const I16x8 third = BitCastLanes<I16x8>(bytes & 255);
    add(second, third, sums[1]);
    const I16x8 fourth = BitCastLanes<I16x8>(bytes >> 8);
    add(third, fourth, sums[2]);
    if (both) bytes = LoadUnaligned<U16x8>(pixels + 2 * p + 4);
    add(fourth, BitCastLanes<I16x8>(bytes & 255), sums[3]);
  }

  int count_;
  I16x8 pairs_[kMostReducedTaps / 2];
};

// Sums along columns, of one row or of two at once, which share the words: the sums of the second row meet pixels of a
// pair of rows with the taps before those of the first row.
template <int rows_, int columns>
class ColumnPairs {
 public:
  static constexpr int kRows = rows_;
  static constexpr int kColumns = columns;
  static constexpr int kVectors = kRows * kColumns / 4;  // row by row

  template <class TapAt>
  ColumnPairs(TapAt tap, int taps) : count_(PairsFor(taps)), isOdd_((taps + kRows - 1) % 2 != 0) {
    for (int p = 0; p < count_; ++p) {
      for (int r = 0; r < kRows; ++r) pairs_[r][p] = SplatPair(tap(2 * p - r), tap(2 * p + 1 - r));
    }
  }

  template <class Block>
  static void ForEachBlock(const BW8* src, std::ptrdiff_t rowStep, int width, int taps, Block block) {
    ForEachBlockOfColumns<kColumns, kMostReducedTaps + kRows - 1>(src, rowStep, width, taps + kRows - 1, block);
  }

  template <int fixedTaps>
  void AddProducts(const BW8* pixels, std::ptrdiff_t step, U32x4 (&sums)[kVectors]) const {
    const std::ptrdiff_t lastStep = isOdd_ ? 0 : step;  // the row after the last one may not be read
    const int last = (fixedTaps > 0 ? PairsFor(fixedTaps) : count_) - 1;
    AddPair(pixels, last > 0 ? step : lastStep, 0, sums);  // apart, since there is nothing to add to
    for (int p = 1; p < last; ++p) AddPair(Row(pixels, 2 * step, p), step, p, sums);
    if (last > 0) AddPair(Row(pixels, 2 * step, last), lastStep, last, sums);
  }

  static U8x16 Pack(I16x8 words01, I16x8 words23) { return PackSaturated(words01, words23); }

 private:
  static constexpr int PairsFor(int taps) { return (taps + kRows) / 2; }

  static U8x16 Load(const BW8* pixels) {
    if constexpr (kColumns == 16) return LoadUnaligned<U8x16>(pixels);
    return BitCastLanes<U8x16>(F64x2{LoadUnaligned<double>(pixels), 0.0});  // one instruction
  }

  // Adds the products of two rows and pair p of the taps.
  void AddPair(const BW8* pixels, std::ptrdiff_t step, int p, U32x4 (&sums)[kVectors]) const {
    const auto add = [&](U16x8 words, int vector) {
      for (int r = 0; r < kRows; ++r) {
        sums[r * (kColumns / 4) + vector] += Products(BitCastLanes<I16x8>(words), pairs_[r][p]);
      }
    };
    const U8x16 a = Load(pixels);
    const U8x16 b = Load(pixels + step);
    const U8x16 low = InterleaveLow(a, b);
    add(WidenLow(low), 0);
    add(WidenHigh(low), 1);
    if constexpr (kColumns == 16) {
      const U8x16 high = InterleaveHigh(a, b);
      add(WidenLow(high), 2);
      add(WidenHigh(high), 3);
    }
  }

  int count_;
  bool isOdd_;
  I16x8 pairs_[kRows][kMostReducedTaps / 2 + 1];
};

// ---- Divisions ----
//
// Two vectors of sums to rounded quotients, of which those that no word holds saturate.

struct ShiftDivision {
  explicit ShiftDivision(RoundedDivision division)
      : addend(Splat<U32x4>(division.addend)), shift(std::countr_zero(static_cast<std::uint32_t>(division.divisor))) {}

  I16x8 operator()(U32x4 a, U32x4 b) const { return PackSaturated(Quotient(a), Quotient(b)); }
  I32x4 Quotient(U32x4 sum) const { return shift.Right(BitCastLanes<I32x4>(sum + addend)); }

  U32x4 addend;
  ShiftCount shift;
};

struct FloatDivision {
  static_assert(RoundedDivision::kLargestOther < kRoundingReciprocalEnd);

  explicit FloatDivision(RoundedDivision division)
      : reciprocal(Splat<F32x4>(RoundingReciprocal(division.divisor, division.HalvesGoDown()))) {}

  I16x8 operator()(U32x4 a, U32x4 b) const { return PackSaturated(Quotient(a), Quotient(b)); }
  I32x4 Quotient(U32x4 sum) const { return RoundLanes(ConvertLanes<F32x4>(BitCastLanes<I32x4>(sum)) * reciprocal); }

  F32x4 reciprocal;
};

// ---- Regions ----

// The products of all taps. Taps of more than 16 bits are the sum of two: `high`, in units of 2^16, and `low`.
template <class Pairs, bool wide>
class AllProducts {
 public:
  explicit AllProducts(const ReducedKernel& kernel)
      : low_([&kernel](int j) { return LowHalf(Tap(kernel, j)); }, kernel.call.kernelSize) {
    if constexpr (wide) high_.emplace([&kernel](int j) { return HighHalf(Tap(kernel, j)); }, kernel.call.kernelSize);
  }

  template <int fixedTaps>
  void Sum(const BW8* pixels, std::ptrdiff_t tapStep, U32x4 (&sums)[Pairs::kVectors]) const {
    for (U32x4& sum : sums) sum = U32x4{};
    if constexpr (wide) {
      high_->template AddProducts<fixedTaps>(pixels, tapStep, sums);
      for (U32x4& sum : sums) sum <<= 16;
    }
    low_.template AddProducts<fixedTaps>(pixels, tapStep, sums);
  }

 private:
  static std::int32_t Tap(const ReducedKernel& kernel, int j) {
    return j < 0 || j >= kernel.call.kernelSize ? 0 : kernel.MirroredTap(j);
  }

  Pairs low_;
  std::optional<Pairs> high_;
};

// Filters the rows from `top` on, in groups of Pairs::kRows, and returns the row after them.
template <class Pairs, int fixedTaps, bool wide, class Division>
int FilterRows(const ReducedKernel& kernel, Division divide, int top) {
  const AllProducts<Pairs, wide> products(kernel);
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
  constexpr int kColumns = sizeof(void*) == 8 ? 16 : 8;  // as the registers allow
  if (kernel.call.axis == Axis::Row) {
    FilterRows<RowPairs, fixedTaps, wide>(kernel, divide, 0);
  } else {
    const int y = FilterRows<ColumnPairs<2, kColumns>, fixedTaps, wide>(kernel, divide, 0);
    FilterRows<ColumnPairs<1, 16>, 0, wide>(kernel, divide, y);
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
  const RoundedDivision division = kernel.division;
  RoundedDivision::IsPowerOfTwo(division.divisor) ? FilterBy(kernel, ShiftDivision(division))
                                                  : FilterBy(kernel, FloatDivision(division));
}

}  // namespace norvala
