#pragma once

#include <algorithm>
#include <array>
#include <type_traits>

#include "filter/pipeline/kernel.h"

// Sums over lines of values: a result weighs the values of its column in all lines, one by each tap. The lines of the
// column filter are rows; those of the row filter all lie in one row, each a pixel further on. Each filter has a class
// of lines, which also says in what order the results of a block are made:
//   Of<fixed>()              the same lines for a number of taps that the compiler knows, or any for 0
//   U16x8 Words(i, x, half)  half of the values of line i in the block from column x on
//   void Store(results, dst)  a block whose halves are in that order

namespace norvala {

constexpr std::int32_t kBlock = 16;  // results made at once

// The words that tap i weighs: those of line i and, for a symmetric kernel, those of the opposite line added to them.
template <bool symmetric, class Lines>
inline U16x8 WeighedWords(const Lines& lines, std::int32_t i, std::int32_t count, std::int32_t x, int half) {
  const U16x8 words = lines.Words(i, x, half);
  const std::int32_t opposite = count - 1 - i;
  return symmetric && i < opposite ? words + lines.Words(opposite, x, half) : words;
}

// The results of a block, from sums of 16 bits.
template <bool symmetric, class Taps, class Lines>
inline void MakeBlockInWords(const TruncatedDivision& divide, const Taps& taps, std::int32_t count, const Lines& lines,
                             std::int32_t x, I16x8 (&results)[2]) {
  const std::int32_t weighed = symmetric ? (count + 1) / 2 : count;
  U16x8 sums[2] = {};
  for (std::int32_t i = 0; i < weighed; ++i) {
    for (int h = 0; h < 2; ++h) {
      sums[h] += BitCastLanes<U16x8>(taps[i]) * WeighedWords<symmetric>(lines, i, count, x, h);
    }
  }
  for (int h = 0; h < 2; ++h) results[h] = divide.Divide(sums[h]);
}

// The same from sums of 32 bits, two products at a time.
template <bool symmetric, bool single, class Taps, class Lines>
inline void MakeBlockInPairs(const TruncatedDivision& divide, const Taps& taps, std::int32_t count, const Lines& lines,
                             std::int32_t x, I16x8 (&results)[2]) {
  const std::int32_t weighed = symmetric ? (count + 1) / 2 : count;
  U32x4 sums[4] = {};
  for (std::int32_t i = 0; i < weighed; i += 2) {
    const std::int32_t next = std::min(i + 1, weighed - 1);  // a line by itself meets a tap of 0
    for (int h = 0; h < 2; ++h) {
      const auto first = BitCastLanes<I16x8>(WeighedWords<symmetric>(lines, i, count, x, h));
      const auto second = BitCastLanes<I16x8>(WeighedWords<symmetric>(lines, next, count, x, h));
      sums[2 * h] += BitCastLanes<U32x4>(MultiplyAddPairs(InterleaveLow(first, second), taps[i / 2]));
      sums[2 * h + 1] += BitCastLanes<U32x4>(MultiplyAddPairs(InterleaveHigh(first, second), taps[i / 2]));
    }
  }
  I32x4 quotients[4];
  for (int k = 0; k < 4; ++k) quotients[k] = single ? divide.DivideInSingle(sums[k]) : divide.DivideInDouble(sums[k]);
  for (int h = 0; h < 2; ++h) results[h] = PackSaturated(quotients[2 * h], quotients[2 * h + 1]);
}

// Makes a row of at least kBlock results: whole blocks, of which the last may overlap the one before.
template <Arithmetic arithmetic, class Taps, class Lines, class Result>
void MakeRow(const TruncatedDivision& division, const Taps& taps, std::int32_t count, const Lines& lines,
             std::int32_t width, Result* dst) {
  const TruncatedDivision divide = division;
  for (std::int32_t x = 0; x < width; x += kBlock) {
    const std::int32_t begin = std::min(x, width - kBlock);
    I16x8 results[2];
    constexpr bool kSymmetric = arithmetic == Arithmetic::SymmetricWords || arithmetic == Arithmetic::SymmetricSingle;
    if constexpr (arithmetic == Arithmetic::SymmetricWords || arithmetic == Arithmetic::Words) {
      MakeBlockInWords<kSymmetric>(divide, taps, count, lines, begin, results);
    } else {
      MakeBlockInPairs<kSymmetric, arithmetic != Arithmetic::Double>(divide, taps, count, lines, begin, results);
    }
    lines.Store(results, dst + begin);
  }
}

// The first elements of an array by value, so that they stay in registers, or all by their address.
template <int count, class T>
inline auto TakeFirst(T* elements) {
  if constexpr (count == 0) {
    return elements;
  } else {
    std::array<std::remove_cv_t<T>, count> first;
    std::copy_n(elements, count, first.begin());
    return first;
  }
}
// `fixed` is 0 or the number of taps, whose loop is unrolled then.
template <int fixed, class Lines, class Result>
void MakeRowOf(const PipelineKernel& kernel, const Lines& allLines, std::int32_t width, Result* dst) {
  const auto taps = TakeFirst<fixed>(kernel.tapVectors());
  const auto lines = allLines.template Of<fixed>();
  const std::int32_t count = fixed > 0 ? fixed : kernel.count();
  switch (kernel.arithmetic()) {
    case Arithmetic::SymmetricWords:
      return MakeRow<Arithmetic::SymmetricWords>(kernel.division(), taps, count, lines, width, dst);
    case Arithmetic::Words:
      return MakeRow<Arithmetic::Words>(kernel.division(), taps, count, lines, width, dst);
    case Arithmetic::SymmetricSingle:
      return MakeRow<Arithmetic::SymmetricSingle>(kernel.division(), taps, count, lines, width, dst);
    case Arithmetic::Single:
      return MakeRow<Arithmetic::Single>(kernel.division(), taps, count, lines, width, dst);
    default:
      return MakeRow<Arithmetic::Double>(kernel.division(), taps, count, lines, width, dst);
  }
}

// Makes a row of at least kBlock results by a kernel that is not plain.
template <class Lines, class Result>
void MakeRow(const PipelineKernel& kernel, const Lines& lines, std::int32_t width, Result* dst) {
  switch (kernel.count()) {
    case 3:
      return MakeRowOf<3>(kernel, lines, width, dst);
    case 5:
      return MakeRowOf<5>(kernel, lines, width, dst);
    default:
      return MakeRowOf<0>(kernel, lines, width, dst);
  }
}

}  // namespace norvala
