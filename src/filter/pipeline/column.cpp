#include <algorithm>

#include "filter/filter.h"
#include "filter/pipeline/lines.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// A row of intermediate values, and the caller's array of them.
using Values = Unaligned<const std::int16_t>;
using RowPointer = Unaligned<const std::int16_t*>;

// The values of rows of at least a block. Where none is negative, the OR of all stands for the highest one: it is less
// than twice as high, and takes half of the time.
ValueRange<std::int64_t> RangeOfValues(const RowPointer* rows, std::int64_t count, std::int32_t width) {
  I16x8 bits[2] = {};
  for (std::int64_t i = 0; i < count; ++i) {
    const auto take = [&, row = rows[static_cast<std::size_t>(i)]](std::int32_t x) {
      for (int h = 0; h < 2; ++h) {
        bits[h] |= LoadUnaligned<I16x8>(static_cast<const Values*>(row) + x + h * (kBlock / 2));
      }
    };
    std::int32_t x = 0;
    for (; x <= width - 2 * kBlock; x += 2 * kBlock) {  // two blocks at once
      take(x);
      take(x + kBlock);
    }
    for (; x < width; x += kBlock) take(std::min(x, width - kBlock));
  }
  std::int16_t all = 0;
  for (int k = 0; k < kBlock / 2; ++k) all |= static_cast<std::int16_t>(bits[0][k] | bits[1][k]);
  if (all >= 0) return {0, all};

  std::int16_t low = 0;
  std::int16_t high = 0;
  for (std::int64_t i = 0; i < count; ++i) {
    const Values* const row = rows[static_cast<std::size_t>(i)];
    for (std::int32_t x = 0; x < width; ++x) {
      const std::int16_t value = row[x];
      low = std::min(low, value);
      high = std::max(high, value);
    }
  }
  return {low, high};
}

// Successive rows, the first ones by value.
template <int fixed>
struct RowLines {
  const RowPointer* rows;
  const Values* first[fixed + 1] = {};  // an array must have an element

  explicit RowLines(const RowPointer* successive) : rows(successive) {
    for (int i = 0; i < fixed; ++i) first[i] = rows[i];
  }
  template <int more>
  auto Of() const {
    return RowLines<more>(rows);
  }
  const Values* operator[](std::int32_t i) const {
    if constexpr (fixed > 0) return first[i];
    return rows[i];
  }

  U16x8 Words(std::int32_t i, std::int32_t x, int half) const {
    return LoadUnaligned<U16x8>((*this)[i] + x + half * (kBlock / 2));
  }
  static void Store(const I16x8 (&results)[2], BW8* dst) { StoreUnaligned(dst, PackSaturated(results[0], results[1])); }
};

// Sums are in double precision, to which the products are added in the order of the taps.
void MakeRowPlainly(const PipelineKernel& kernel, const RowPointer* rows, std::int32_t width, BW8* dst) {
  for (std::int32_t x = 0; x < width; ++x) {
    double sum = 0;
    for (std::int32_t i = 0; i < kernel.count(); ++i) {
      const Values* const row = rows[i];
      sum += static_cast<double>(row[x]) * kernel.taps()[i];
    }
    dst[x] = static_cast<BW8>(std::clamp<int>(kernel.division().Divide(sum), 0, 255));
  }
}

}  // namespace

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
  const bool isNarrow = size.width < kBlock;  // made plainly, whatever the values are
  const PipelineKernel columnKernel(kernel, kernelSize, divisor,
                                    isNarrow ? ValueRange<std::int64_t>{} : RangeOfValues(rows, rowCount, size.width));
  const bool isPlain = columnKernel.arithmetic() == Arithmetic::Plain || isNarrow;
  for (std::int32_t y = 0; y < size.height; ++y) {
    BW8* const dstRow = Row(dst, dstStep, y);
    if (isPlain) {
      MakeRowPlainly(columnKernel, rows + y, size.width, dstRow);
    } else {
      MakeRow(columnKernel, RowLines<0>(rows + y), size.width, dstRow);
    }
  }
  return StatusCode::Success;
}

}  // namespace norvala
