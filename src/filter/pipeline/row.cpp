#include <algorithm>
#include <cstring>

#include "filter/filter.h"
#include "filter/pipeline/pipeline.h"
#include "frame/memory.h"

namespace norvala {
namespace {

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

// Writes `count` border pixels, the first of them beside the row, each following one `direction` further away.
void WriteBorder(const Unaligned<BW8>* row, std::int32_t width, Border border, std::int32_t direction,
                 std::int64_t count, BW8* nearest) {
  std::int32_t position = direction > 0 ? width - 1 : 0;
  std::int32_t inwards = direction;
  for (std::int64_t i = 0; i < count; ++i) {
    position = NextPosition(border.type, width, position, inwards);
    *nearest = border.type == BorderType::Constant ? border.value : row[position];
    nearest += direction;
  }
}

// Writes the pixels from position `first` up to `last` (exclusive), of which at least one lies in the row.
void ExtendRow(const Unaligned<BW8>* row, std::int32_t width, Border border, std::int64_t first, std::int64_t last,
               BW8* extended) {
  const std::int64_t begin = std::max<std::int64_t>(first, 0);
  const std::int64_t end = std::min<std::int64_t>(last, width);
  BW8* const inside = extended + static_cast<std::ptrdiff_t>(begin - first);
  std::memcpy(inside, row + static_cast<std::ptrdiff_t>(begin), static_cast<std::size_t>(end - begin));
  WriteBorder(row, width, border, -1, begin - first, inside - 1);
  WriteBorder(row, width, border, 1, last - end, inside + static_cast<std::ptrdiff_t>(end - begin));
}

struct RowKernel {
  RowKernel(const Tap* kernel, std::int32_t kernelSize, std::int32_t divisor)
      : taps(kernel), count(kernelSize), factor(1.0 / divisor), divide(divisor) {
    const TapSums sums = AddTaps(kernel, kernelSize);
    narrow = FitsSixteenBits(sums, UINT8_MAX, divide);
    negativeTaps = sums.negative;
  }

  const Tap* taps;
  std::int32_t count;
  double factor;
  Divider divide;
  bool narrow;        // whether the sums fit 16 bits and can be divided there
  bool negativeTaps;  // narrow sums are signed
};

template <class Divide>
struct UnsignedQuotient {
  std::int16_t operator()(std::uint16_t sum) const { return static_cast<std::int16_t>(divide(sum)); }

  Divide divide;
};

template <class Divide>
struct SignedQuotient {
  std::int16_t operator()(std::uint16_t sum) const {
    const auto sign = static_cast<std::uint16_t>(static_cast<std::int16_t>(sum) >> 15);
    const std::uint16_t quotient = divide(static_cast<std::uint16_t>((sum ^ sign) - sign));
    return static_cast<std::int16_t>((quotient ^ sign) - sign);
  }

  Divide divide;
};

// Filters `width` pixels of an extended row, which begins with the pixel under tap 0 of the first of them.
void Filter(const RowKernel& kernel, const Unaligned<BW8>* extended, std::int32_t width, Unaligned<std::int16_t>* dst) {
  const auto tap = [&](std::int32_t i) { return kernel.taps[i]; };
  for (std::int32_t x = 0; x < width; x += kStrip) {
    const std::int32_t count = std::min(kStrip, width - x);
    const auto line = [&](std::int32_t i) { return extended + x + i; };
    if (!kernel.narrow) {
      std::uint32_t sums[kStrip];
      SumLines<BW8>(line, tap, kernel.count, count, sums);
      ScaleSums<std::int16_t>(reinterpret_cast<const std::int32_t*>(sums), count, kernel.factor, INT16_MIN, INT16_MAX,
                              dst + x);
      continue;
    }
    kernel.divide.With([&]<class Divide>(Divide divide) {
      if (kernel.negativeTaps) {
        FilterNarrow<BW8, std::int16_t>(line, tap, kernel.count, count, SignedQuotient<Divide>{divide}, dst + x);
      } else {
        FilterNarrow<BW8, std::int16_t>(line, tap, kernel.count, count, UnsignedQuotient<Divide>{divide}, dst + x);
      }
    });
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
  const RowKernel rowKernel(kernel, kernelSize, divisor);
  const Border border = {static_cast<BorderType>(borderType), borderValue};
  const std::int64_t width = size.width;
  const std::int64_t reach = std::int64_t{kernelSize} - 1;
  // The buffer takes the whole extended row or, one after the other, its two ends: as far as the results go that need
  // the border, and at least so many that they run in vectors.
  constexpr std::int32_t kVector = 16;
  const bool whole = width + reach <= 4 * std::int64_t{kernelSize} + 64;
  const std::int32_t left = std::max(anchor, kVector);
  const std::int32_t right = std::max(kernelSize - 1 - anchor, kVector);
  for (std::int32_t y = 0; y < size.height; ++y) {
    const Unaligned<BW8>* const row = Row(src, srcStep, y);
    Unaligned<std::int16_t>* const dst = rows[y];
    if (dst == nullptr) return StatusCode::NullPointer;
    if (whole) {
      ExtendRow(row, size.width, border, -anchor, width + reach - anchor, buffer);
      Filter(rowKernel, buffer, size.width, dst);
    } else {
      const std::int32_t end = size.width - right;
      ExtendRow(row, size.width, border, -anchor, left + reach - anchor, buffer);
      Filter(rowKernel, buffer, left, dst);
      Filter(rowKernel, row + left - anchor, end - left, dst + left);
      ExtendRow(row, size.width, border, end - anchor, width + reach - anchor, buffer);
      Filter(rowKernel, buffer, right, dst + end);
    }
  }
  return StatusCode::Success;
}

}  // namespace norvala
