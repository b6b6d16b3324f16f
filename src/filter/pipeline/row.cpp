#include <algorithm>
#include <cstring>

#include "filter/filter.h"
#include "filter/pipeline/pipeline.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {
namespace {

using Pixels = Unaligned<const BW8>;
using Values = Unaligned<std::int16_t>;

// ---- Borders ----

enum class BorderType : std::int32_t { Constant, Replicate, Wrap, Mirror, MirrorWithEdge };

struct Border {
  BorderType type;
  BW8 value;  // of the constant border
};

// The next position on a way that runs over a row in a direction of 1 or -1 and leaves it at one of its ends: where it
// enters the row again, and which way it goes on from there.
std::int32_t NextPosition(BorderType type, std::int32_t width, std::int32_t position, std::int32_t& direction) {
  const std::int32_t next = position + direction;
  if (next >= 0 && next < width) return next;
  switch (type) {
    case BorderType::Wrap:
      return direction > 0 ? 0 : width - 1;
    case BorderType::Mirror:
      direction = -direction;
      return width == 1 ? 0 : position + direction;
    case BorderType::MirrorWithEdge:
      direction = -direction;
      return position;
    default:
      return position;
  }
}

// Writes `count` border pixels, the first of them beside the row, each following one `outwards` (1 or -1) further away.
void WriteBorder(const Pixels* row, std::int32_t width, Border border, std::int32_t outwards, std::int64_t count,
                 BW8* nearest) {
  std::int32_t position = outwards > 0 ? width - 1 : 0;
  std::int32_t direction = outwards;
  for (std::int64_t i = 0; i < count; ++i) {
    position = NextPosition(border.type, width, position, direction);
    *nearest = border.type == BorderType::Constant ? border.value : row[position];
    nearest += outwards;
  }
}

// Writes the pixels from position `first` up to `last` (exclusive), of which at least one lies in the row.
void ExtendRow(const Pixels* row, std::int32_t width, Border border, std::int64_t first, std::int64_t last,
               BW8* extended) {
  const std::int64_t begin = std::max<std::int64_t>(first, 0);
  const std::int64_t end = std::min<std::int64_t>(last, width);
  BW8* const inside = extended + static_cast<std::ptrdiff_t>(begin - first);
  std::memcpy(inside, row + static_cast<std::ptrdiff_t>(begin), static_cast<std::size_t>(end - begin));
  WriteBorder(row, width, border, -1, begin - first, inside - 1);
  WriteBorder(row, width, border, 1, last - end, inside + static_cast<std::ptrdiff_t>(end - begin));
}

// ---- Sums ----

// Results are made in blocks of 16 pixels. From 16 bytes at an even offset the low bytes are the pixels at even places,
// the high bytes those at odd ones.
constexpr std::int32_t kBlock = 16;
// Bytes beyond a block's last pixel that loads may touch.
constexpr std::int32_t kReadAhead = 4;

U16x8 LowBytes(U16x8 v) { return v & 0xFF; }
U16x8 HighBytes(U16x8 v) { return v >> 8; }

void StoreResults(I16x8 even, I16x8 odd, Values* dst) {
  StoreUnaligned(dst, InterleaveLow(even, odd));
  StoreUnaligned(dst + kBlock / 2, InterleaveHigh(even, odd));
}

// From sums of 16 bits.
template <int tapCount>
void WordBlock(TruncatedDivision divide, const TapVectors<tapCount>& taps, const Pixels* pixels, Values* dst) {
  const auto tap = [&](std::int32_t i) { return BitCastLanes<U16x8>(taps[i]); };
  U16x8 even = {};
  U16x8 odd = {};
  auto v = LoadUnaligned<U16x8>(pixels);
  for (std::int32_t i = 0; i + 1 < taps.count(); i += 2) {
    const auto next = LoadUnaligned<U16x8>(pixels + i + 2);
    even += tap(i) * LowBytes(v) + tap(i + 1) * HighBytes(v);
    odd += tap(i) * HighBytes(v) + tap(i + 1) * LowBytes(next);
    v = next;
  }
  if (taps.count() % 2 != 0) {
    even += tap(taps.count() - 1) * LowBytes(v);
    odd += tap(taps.count() - 1) * HighBytes(v);
  }
  StoreResults(divide.Divide(even), divide.Divide(odd), dst);
}

// The same for a symmetric kernel of an odd number of taps.
template <int tapCount>
void SymmetricWordBlock(TruncatedDivision divide, const TapVectors<tapCount>& taps, const Pixels* pixels, Values* dst) {
  U16x8 at[tapCount + 1];  // every second pixel from i on
  for (int i = 0; i < tapCount; i += 2) {
    const auto v = LoadUnaligned<U16x8>(pixels + i);
    at[i] = LowBytes(v);
    at[i + 1] = HighBytes(v);
  }
  constexpr int last = tapCount - 1;
  const auto tap = [&](int i) { return BitCastLanes<U16x8>(taps[i]); };
  U16x8 even = tap(last / 2) * at[last / 2];
  U16x8 odd = tap(last / 2) * at[last / 2 + 1];
  for (int i = 0; i < last / 2; ++i) {
    even += tap(i) * (at[i] + at[last - i]);
    odd += tap(i) * (at[i + 1] + at[last - i + 1]);
  }
  StoreResults(divide.Divide(even), divide.Divide(odd), dst);
}

// From sums of 32 bits: those of every fourth pixel together.
template <int tapCount, Arithmetic arithmetic>
void PairBlock(TruncatedDivision divide, const TapVectors<tapCount>& taps, const Pixels* pixels, Values* dst) {
  const auto addPairs = [](U32x4& sum, U16x8 values, I16x8 pair) {
    sum += BitCastLanes<U32x4>(MultiplyAddPairs(BitCastLanes<I16x8>(values), pair));
  };
  U32x4 sums[4] = {};
  auto v = LoadUnaligned<U16x8>(pixels);
  for (std::int32_t i = 0; i < taps.count(); i += 4) {
    const auto v2 = LoadUnaligned<U16x8>(pixels + i + 2);
    const auto v4 = LoadUnaligned<U16x8>(pixels + i + 4);
    const I16x8 taps02 = taps[i / 2];
    addPairs(sums[0], LowBytes(v), taps02);
    addPairs(sums[1], HighBytes(v), taps02);
    addPairs(sums[2], LowBytes(v2), taps02);
    addPairs(sums[3], HighBytes(v2), taps02);
    if (i + 1 < taps.count()) {
      const I16x8 taps13 = taps[i / 2 + 1];
      addPairs(sums[0], HighBytes(v), taps13);
      addPairs(sums[1], LowBytes(v2), taps13);
      addPairs(sums[2], HighBytes(v2), taps13);
      addPairs(sums[3], LowBytes(v4), taps13);
    }
    v = v4;
  }
  const I16x8 even = divide.Divide<arithmetic>(sums[0], sums[2]);  // 0 4 8 12 2 6 10 14
  const I16x8 odd = divide.Divide<arithmetic>(sums[1], sums[3]);   // 1 5 9 13 3 7 11 15
  const auto low = BitCastLanes<I32x4>(InterleaveLow(even, odd));
  const auto high = BitCastLanes<I32x4>(InterleaveHigh(even, odd));
  StoreUnaligned(dst, __builtin_shufflevector(low, high, 0, 4, 1, 5));
  StoreUnaligned(dst + kBlock / 2, __builtin_shufflevector(low, high, 2, 6, 3, 7));
}

// Makes at least one block: the last may overlap the one before.
template <int tapCount>
void FilterBlocks(const PipelineKernel& kernel, const Pixels* pixels, std::int32_t width, Values* dst) {
  const TapVectors<tapCount> taps(kernel);
  const TruncatedDivision divide = kernel.division();
  const auto each = [&](auto makeBlock) {
    for (std::int32_t x = 0; x < width; x += kBlock) {
      const std::int32_t begin = std::min(x, width - kBlock);
      makeBlock(divide, taps, pixels + begin, dst + begin);
    }
  };
  switch (kernel.arithmetic()) {
    case Arithmetic::Words:
      if constexpr (tapCount > 0) {
        if (kernel.symmetric()) {
          each(SymmetricWordBlock<tapCount>);
          break;
        }
      }
      each(WordBlock<tapCount>);
      break;
    case Arithmetic::Single:
      each(PairBlock<tapCount, Arithmetic::Single>);
      break;
    case Arithmetic::Shift:
      each(PairBlock<tapCount, Arithmetic::Shift>);
      break;
    case Arithmetic::Double:
      each(PairBlock<tapCount, Arithmetic::Double>);
      break;
  }
}

void FilterPixels(const PipelineKernel& kernel, const Pixels* pixels, std::int32_t width, Values* dst) {
  if (width < kBlock) {
    std::int16_t block[kBlock];
    FilterBlocks<kAnyTaps>(kernel, pixels, kBlock, block);
    std::memcpy(dst, block, static_cast<std::size_t>(width) * sizeof *block);
  } else if (kernel.count() == 3) {
    FilterBlocks<3>(kernel, pixels, width, dst);
  } else if (kernel.count() == 5) {
    FilterBlocks<5>(kernel, pixels, width, dst);
  } else if (kernel.count() <= PipelineKernel::kMostKeptTaps) {
    FilterBlocks<kAnyKeptTaps>(kernel, pixels, width, dst);
  } else {
    FilterBlocks<kAnyTaps>(kernel, pixels, width, dst);
  }
}

}  // namespace

StatusCode FilterRowBorderPipelineGetBufferSizeBW8(RegionSize size, std::int32_t kernelSize, std::int32_t* bufferSize) {
  return WritePipelineBufferSize(size, kernelSize, bufferSize);
}

StatusCode FilterRowBorderPipelineBW8(const BW8* src, std::int32_t srcStep, std::int16_t* const* dstRows,
                                      RegionSize size, const std::int16_t* kernel, std::int32_t kernelSize,
                                      std::int32_t anchor, std::int32_t borderType, BW8 borderValue,
                                      std::int32_t divisor, BW8* buffer) {
  if (src == nullptr || dstRows == nullptr || kernel == nullptr || buffer == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size) || kernelSize < 1) return StatusCode::NonPositiveSize;
  if (anchor < 0 || anchor >= kernelSize) return StatusCode::AnchorOutsideKernel;
  if (srcStep < size.width) return StatusCode::NonPositiveStep;
  if (borderType < 0 || borderType > static_cast<std::int32_t>(BorderType::MirrorWithEdge)) {
    return StatusCode::BadArgument;
  }
  if (divisor == 0) return StatusCode::BadArgument;

  const Unaligned<std::int16_t* const>* const rows = dstRows;
  const PipelineKernel rowKernel(kernel, kernelSize, divisor, {0, UINT8_MAX}, TapLayout::RowPairs);
  // The buffer takes the whole extended row or, one after the other, its two ends: as far as results go that need the
  // border or whose loads touch it.
  const Border border = {static_cast<BorderType>(borderType), borderValue};
  const std::int64_t width = size.width;
  const std::int64_t reach = std::int64_t{kernelSize} - 1;
  const bool whole = std::max<std::int64_t>(width, kBlock) + reach + kReadAhead <= 4 * std::int64_t{kernelSize} + 64;
  const std::int32_t left = AlignUp(std::max(anchor, 1), kBlock);
  const std::int32_t right = std::max(kernelSize - 1 - anchor + kReadAhead, kBlock);
  for (std::int32_t y = 0; y < size.height; ++y) {
    const Pixels* const row = Row(src, srcStep, y);
    Values* const dst = rows[y];
    if (dst == nullptr) return StatusCode::NullPointer;
    if (whole) {
      ExtendRow(row, size.width, border, -anchor, width + reach - anchor, buffer);
      FilterPixels(rowKernel, buffer, size.width, dst);
    } else {
      const std::int32_t middle = (size.width - right - left) / kBlock * kBlock;
      const std::int32_t end = left + middle;
      ExtendRow(row, size.width, border, -anchor, left + reach - anchor, buffer);
      FilterPixels(rowKernel, buffer, left, dst);
      if (middle > 0) FilterPixels(rowKernel, row + left - anchor, middle, dst + left);
      ExtendRow(row, size.width, border, end - anchor, width + reach - anchor, buffer);
      FilterPixels(rowKernel, buffer, size.width - end, dst + end);
    }
  }
  return StatusCode::Success;
}

}  // namespace norvala
