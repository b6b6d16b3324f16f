#include <algorithm>
#include <cstring>

#include "filter/filter.h"
#include "filter/index.h"
#include "filter/pipeline/lines.h"
#include "frame/memory.h"

namespace norvala {
namespace {

using Pixels = Unaligned<const BW8>;
using Values = Unaligned<std::int16_t>;

enum class BorderType : std::int32_t { Constant, Replicate, Wrap, Mirror, MirrorWithEdge };

// The position in the row that stands for one outside, with any border but a constant one.
std::int64_t PositionInside(BorderType type, std::int64_t position, std::int64_t width) {
  const auto wrapped = [=](std::int64_t period) { return (position % period + period) % period; };
  switch (type) {
    case BorderType::Wrap:
      return wrapped(width);
    case BorderType::Mirror:
      return MirrorIndex(position, width);
    case BorderType::MirrorWithEdge: {  // -1 becomes 0, width becomes width - 1
      const std::int64_t inPeriod = wrapped(2 * width);
      return std::min(inPeriod, 2 * width - 1 - inPeriod);
    }
    default:  // Replicate
      return position < 0 ? 0 : width - 1;
  }
}

// The pixels from position `first` on: none, or some of which at least one lies in the row.
void ExtendRow(const Pixels* row, std::int32_t width, BorderType border, BW8 constant, std::ptrdiff_t first,
               std::ptrdiff_t count, BW8* extended) {
  const std::ptrdiff_t begin = std::max<std::ptrdiff_t>(-first, 0);
  const std::ptrdiff_t end = std::min(width - first, count);
  const auto outside = [&](std::ptrdiff_t i) {
    return border == BorderType::Constant ? constant : row[PositionInside(border, first + i, width)];
  };
  for (std::ptrdiff_t i = 0; i < begin; ++i) extended[i] = outside(i);
  std::memcpy(extended + begin, row + first + begin, static_cast<std::size_t>(end - begin));
  for (std::ptrdiff_t i = end; i < count; ++i) extended[i] = outside(i);
}

// The pixels of one row, of which line i begins with pixel i. The even columns of a block come before the odd ones: the
// low bytes of words at any address are every second pixel, and neighbouring pixels are those of neighbouring lines.
template <int fixed>
struct ShiftedLines {
  const BW8* first;

  template <int taps>
  auto Of() const {
    return ShiftedLines<taps>{first};
  }
  U16x8 Words(std::int32_t i, std::int32_t x, int half) const {
    const std::int32_t at = x + i + half;
    const bool isHigh = fixed > 0 && (i + half) % 2 != 0;  // the high bytes of words that are loaded anyway
    return isHigh ? LoadUnaligned<U16x8>(first + at - 1) >> 8 : LoadUnaligned<U16x8>(first + at) & 0xFF;
  }
  static void Store(const I16x8 (&results)[2], Values* dst) {
    StoreUnaligned(dst, InterleaveLow(results[0], results[1]));
    StoreUnaligned(dst + kBlock / 2, InterleaveHigh(results[0], results[1]));
  }
};

// Sums wrap in 32 bits.
void MakeRowPlainly(const PipelineKernel& kernel, const BW8* extended, std::int32_t width, Values* dst) {
  for (std::ptrdiff_t x = 0; x < width; ++x) {
    std::uint32_t sum = 0;
    for (std::int32_t i = 0; i < kernel.count(); ++i) {
      sum += static_cast<std::uint32_t>(extended[x + i] * kernel.taps()[i]);
    }
    dst[x] = kernel.division().Divide(static_cast<std::int32_t>(sum));
  }
}

}  // namespace

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
  const auto border = static_cast<BorderType>(borderType);
  const PipelineKernel rowKernel(kernel, kernelSize, divisor, {0, UINT8_MAX});
  const bool isPlain = rowKernel.arithmetic() == Arithmetic::Plain || size.width < kBlock;
  // What needs the border is made from extended pixels in the caller's buffer of 4 * kernelSize + 64 bytes, the rest of
  // a long row from the row itself. Loads may touch the byte behind the last pixel that a strip needs.
  const std::int64_t longestStrip = 3 * std::int64_t{kernelSize} + 64;
  for (std::int32_t y = 0; y < size.height; ++y) {
    const Pixels* const row = Row(src, srcStep, y);
    Values* const dst = rows[y];
    if (dst == nullptr) return StatusCode::NullPointer;
    const auto filterExtended = [&](std::int32_t begin, std::int32_t end) {
      const std::ptrdiff_t first = std::ptrdiff_t{begin} - anchor;
      const std::ptrdiff_t count = std::ptrdiff_t{end} - begin + kernelSize - 1;
      ExtendRow(row, size.width, border, borderValue, first, count, buffer);
      if (isPlain) {
        MakeRowPlainly(rowKernel, buffer, end - begin, dst + begin);
      } else if (begin < end) {
        MakeRow(rowKernel, ShiftedLines<0>{buffer}, end - begin, dst + begin);
      }
    };
    if (isPlain || size.width <= longestStrip) {
      for (std::int32_t x = 0, end = 0; x < size.width; x = end) {
        end = x + static_cast<std::int32_t>(std::min<std::int64_t>(longestStrip, size.width - x));
        filterExtended(x, end);
      }
    } else {
      const std::int32_t left = AlignUp(anchor, kBlock);
      const std::int32_t right = AlignUp(kernelSize - anchor, kBlock);
      filterExtended(0, left);
      MakeRow(rowKernel, ShiftedLines<0>{row + left - anchor}, size.width - right - left, dst + left);
      filterExtended(size.width - right, size.width);
    }
  }
  return StatusCode::Success;
}

}  // namespace norvala
