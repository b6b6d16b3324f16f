#include <algorithm>
#include <cstring>

#include "filter/filter.h"
#include "filter/pipeline/pipeline.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// A row of intermediate values, and the caller's array of them.
using Values = Unaligned<const std::int16_t>;
using RowPointer = Unaligned<const std::int16_t*>;

// Results are made in blocks of 16 columns, in two halves.
constexpr std::int32_t kBlock = 16;
constexpr std::int32_t kHalf = kBlock / 2;

ValueRange RangeOfValues(const RowPointer* rows, std::int64_t count, std::int32_t width) {
  std::int16_t low = 0;
  std::int16_t high = 0;
  for (std::int64_t i = 0; i < count; ++i) {
    const Values* const row = rows[static_cast<std::size_t>(i)];
#pragma GCC unroll 4
    for (std::int32_t x = 0; x < width; ++x) {
      const std::int16_t value = row[x];
      low = value < low ? value : low;
      high = value > high ? value : high;
    }
  }
  return {low, high};
}

// Half a block of a row, or as many values as there are.
template <bool whole>
I16x8 LoadValues(const Values* values, std::int32_t count) {
  if (whole || count >= kHalf) return LoadUnaligned<I16x8>(values);
  std::int16_t padded[kHalf] = {};
  if (count > 0) std::memcpy(padded, values, static_cast<std::size_t>(count) * sizeof *padded);
  return LoadUnaligned<I16x8>(padded);
}

// The run of rows that `lines` lines need. Those of a fixed number of taps are held by value.
template <int lines, int tapCount>
class Run {
 public:
  explicit Run(const RowPointer* rows) : rows_(rows) {
    for (int i = 0; i < kFixed; ++i) fixed_[i] = rows[i];
  }
  const Values* operator[](std::int32_t i) const { return tapCount > 0 ? fixed_[i] : rows_[i]; }

 private:
  static constexpr int kFixed = tapCount > 0 ? tapCount + lines - 1 : 0;

  const RowPointer* rows_;
  const Values* fixed_[kFixed + 1];
};

// The functions below make a block of each line. load(i, half) gives the values of row i of the run.

// From sums of 16 bits.
template <bool symmetric, int lines, int tapCount, class Load>
void WordBlock(TruncatedDivision divide, const TapVectors<tapCount>& taps, Load load, I16x8 (&results)[lines][2]) {
  const std::int32_t last = taps.count() - 1;
  const std::int32_t mirrored = symmetric ? taps.count() / 2 : 0;
  const auto at = [&](std::int32_t i, int half) { return BitCastLanes<U16x8>(load(i, half)); };
  U16x8 sums[lines][2] = {};
  for (std::int32_t i = 0; i < mirrored; ++i) {
    const auto tap = BitCastLanes<U16x8>(taps[i]);
    for (int line = 0; line < lines; ++line) {
      for (int half = 0; half < 2; ++half) {
        sums[line][half] += tap * (at(i + line, half) + at(last - i + line, half));
      }
    }
  }
  for (std::int32_t i = mirrored; i <= last - mirrored; ++i) {
    const auto tap = BitCastLanes<U16x8>(taps[i]);
    for (int line = 0; line < lines; ++line) {
      for (int half = 0; half < 2; ++half) sums[line][half] += tap * at(i + line, half);
    }
  }
  for (int line = 0; line < lines; ++line) {
    for (int half = 0; half < 2; ++half) results[line][half] = divide.Divide(sums[line][half]);
  }
}

// From sums of 32 bits. Two lines share the pairs of rows: row i meets tap i in the upper line, i - 1 in the lower.
template <Arithmetic arithmetic, int lines, int tapCount, class Load>
void PairBlock(TruncatedDivision divide, const TapVectors<tapCount>& taps, Load load, I16x8 (&results)[lines][2]) {
  const std::int32_t last = taps.count() + lines - 2;
  for (int half = 0; half < 2; ++half) {
    U32x4 low[lines] = {};
    U32x4 high[lines] = {};
    for (std::int32_t i = 0; i <= last; i += 2) {
      const I16x8 upper = load(i, half);
      const I16x8 lower = load(std::min(i + 1, last), half);  // meets a tap of 0 where it is the same row
      for (int line = 0; line < lines; ++line) {
        low[line] += BitCastLanes<U32x4>(MultiplyAddPairs(InterleaveLow(upper, lower), taps[i + line]));
        high[line] += BitCastLanes<U32x4>(MultiplyAddPairs(InterleaveHigh(upper, lower), taps[i + line]));
      }
    }
    for (int line = 0; line < lines; ++line) results[line][half] = divide.Divide<arithmetic>(low[line], high[line]);
  }
}

// From sums in double precision, to which the taps are added in their order.
template <int lines, class Load>
void DoubleBlock(const PipelineKernel& kernel, Load load, I16x8 (&results)[lines][2]) {
  for (int half = 0; half < 2; ++half) {
    for (int line = 0; line < lines; ++line) {
      F64x2x2 low = {};
      F64x2x2 high = {};
      for (std::int32_t i = 0; i < kernel.count(); ++i) {
        const I16x8 values = load(i + line, half);
        const double tap = kernel.TapAt(i);
        low = low + ConvertToDoubles(BitCastLanes<I32x4>(InterleaveLow(values, values)) >> 16) * tap;
        high = high + ConvertToDoubles(BitCastLanes<I32x4>(InterleaveHigh(values, values)) >> 16) * tap;
      }
      results[line][half] = kernel.division().Divide(low, high);
    }
  }
}

// Makes `lines` destination rows from the run of rows that begins at `rows`. Whole blocks, of which the last may
// overlap the one before, or a part of one.
template <int lines, int tapCount, bool whole = true>
void FilterBlocks(const PipelineKernel& kernel, const RowPointer* rows, std::int32_t width, BW8* dst,
                  std::int32_t dstStep) {
  const TapVectors<tapCount> taps(kernel);
  const Run<lines, tapCount> run(rows);
  const TruncatedDivision divide = kernel.division();
  const auto each = [&](auto makeBlock) {
    for (std::int32_t x = 0; x < width; x += kBlock) {
      const std::int32_t begin = whole ? std::min(x, width - kBlock) : x;
      const auto load = [&](std::int32_t i, int half) {
        const std::int32_t at = begin + kHalf * half;
        return LoadValues<whole>(run[i] + at, width - at);
      };
      I16x8 results[lines][2];
      makeBlock(load, results);
      for (int line = 0; line < lines; ++line) {
        const U8x16 bytes = PackSaturated(results[line][0], results[line][1]);
        std::memcpy(Row(dst, dstStep, line) + begin, &bytes,
                    static_cast<std::size_t>(whole ? kBlock : std::min(kBlock, width - begin)));
      }
    }
  };
  switch (kernel.arithmetic()) {
    case Arithmetic::Words:
      if (tapCount > 0 && kernel.symmetric()) {
        each([&](auto load, auto& results) { WordBlock<true>(divide, taps, load, results); });
      } else {
        each([&](auto load, auto& results) { WordBlock<false>(divide, taps, load, results); });
      }
      break;
    case Arithmetic::Single:
      each([&](auto load, auto& results) { PairBlock<Arithmetic::Single>(divide, taps, load, results); });
      break;
    case Arithmetic::Shift:
      each([&](auto load, auto& results) { PairBlock<Arithmetic::Shift>(divide, taps, load, results); });
      break;
    case Arithmetic::Double:
      if (tapCount != kAnyTaps || kernel.sumsFit32Bits()) {
        each([&](auto load, auto& results) { PairBlock<Arithmetic::Double>(divide, taps, load, results); });
      } else {
        each([&](auto load, auto& results) { DoubleBlock(kernel, load, results); });
      }
      break;
  }
}

template <int lines>
void FilterLines(const PipelineKernel& kernel, const RowPointer* rows, std::int32_t width, BW8* dst,
                 std::int32_t dstStep) {
  if (width < kBlock || kernel.count() > PipelineKernel::kMostKeptTaps || !kernel.sumsFit32Bits()) {
    for (int line = 0; line < lines; ++line) {
      BW8* const out = Row(dst, dstStep, line);
      width < kBlock ? FilterBlocks<1, kAnyTaps, false>(kernel, rows + line, width, out, dstStep)
                     : FilterBlocks<1, kAnyTaps>(kernel, rows + line, width, out, dstStep);
    }
  } else if (kernel.count() == 3) {
    FilterBlocks<lines, 3>(kernel, rows, width, dst, dstStep);
  } else if (kernel.count() == 5) {
    FilterBlocks<lines, 5>(kernel, rows, width, dst, dstStep);
  } else {
    FilterBlocks<lines, kAnyKeptTaps>(kernel, rows, width, dst, dstStep);
  }
}

}  // namespace

StatusCode FilterColumnPipelineGetBufferSizeBW8(RegionSize size, std::int32_t kernelSize, std::int32_t* bufferSize) {
  return WritePipelineBufferSize(size, kernelSize, bufferSize);
}

StatusCode FilterColumnPipelineBW8(const std::int16_t* const* srcRows, BW8* dst, std::int32_t dstStep, RegionSize size,
                                   const std::int16_t* kernel, std::int32_t kernelSize, std::int32_t divisor,
                                   BW8* buffer) {
  if (srcRows == nullptr || dst == nullptr || kernel == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size) || kernelSize < 1) return StatusCode::NonPositiveSize;
  if (dstStep < size.width) return StatusCode::NonPositiveStep;
  if (buffer == nullptr) return StatusCode::NullPointer;
  if (divisor == 0) return StatusCode::BadArgument;
  const RowPointer* const rows = srcRows;
  const std::int64_t rowCount = std::int64_t{size.height} + kernelSize - 1;
  for (std::int64_t i = 0; i < rowCount; ++i) {
    if (rows[static_cast<std::size_t>(i)] == nullptr) return StatusCode::NullPointer;
  }

  // Taps need no memory of the caller's: the work buffer stays as it is.
  const PipelineKernel columnKernel(kernel, kernelSize, divisor, RangeOfValues(rows, rowCount, size.width),
                                    TapLayout::ColumnPairs);
  std::int32_t y = 0;
  for (; size.height - y >= 2; y += 2)
    FilterLines<2>(columnKernel, rows + y, size.width, Row(dst, dstStep, y), dstStep);
  if (y < size.height) FilterLines<1>(columnKernel, rows + y, size.width, Row(dst, dstStep, y), dstStep);
  return StatusCode::Success;
}

}  // namespace norvala
