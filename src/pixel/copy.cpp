#include <bit>
#include <type_traits>

#include "pixel/pixel.h"
#include "pixel/rows.h"

// The runtime's block routines are not used: several of them hand rows of a few kilobytes to string-move instructions,
// which run many times slower than plain loads and stores when source and destination lie at the same place of their
// pages, as the rows of two images often do.

namespace norvala {
namespace {

// A pixel as a bit pattern, which floating-point operations need not keep.
template <class T>
using Bits = std::conditional_t<std::is_same_v<T, FLOAT32>, BW32, T>;

// Copies `count` pixels as a loop from left to right does: a destination that starts inside the source row repeats
// pixels, every other overlap reads each pixel before it is overwritten.
template <class T>
inline void CopyRow(std::size_t count, const void* srcRow, void* dstRow) {
  const auto* const src = static_cast<const std::uint8_t*>(srcRow);
  auto* const dst = static_cast<std::uint8_t*>(dstRow);
  const std::size_t bytes = count * sizeof(T);
  const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(dst) - reinterpret_cast<std::uintptr_t>(src);
  if (ahead == 0) return;
  if (ahead < bytes || bytes < 16) {
    for (std::size_t at = 0; at < bytes; at += sizeof(T)) StoreUnaligned(dst + at, LoadUnaligned<Bits<T>>(src + at));
    return;
  }
  const auto last = LoadUnaligned<U8x16>(src + bytes - 16);
  const auto copy = [=](std::size_t at) { StoreUnaligned(dst + at, LoadUnaligned<U8x16>(src + at)); };
  for (std::size_t at = StoreLines(dst, bytes, copy); bytes - at > 16; at += 16) copy(at);
  StoreUnaligned(dst + bytes - 16, last);
}

// `value` is a bit pattern.
template <class T>
inline void FillRow(T value, void* row, std::size_t count) {
  auto* const dst = static_cast<std::uint8_t*>(row);
  const auto values = Lanes<T, 16 / sizeof(T)>{} + value;
  const std::size_t bytes = count * sizeof(T);
  if (bytes < 8) {
    for (std::size_t at = 0; at < bytes; at += sizeof(T)) StoreUnaligned(dst + at, value);
    return;
  }
  if (bytes < 16) {
    const std::uint64_t eight = BitCastLanes<U64x2>(values)[0];
    StoreUnaligned(dst, eight);
    StoreUnaligned(dst + bytes - 8, eight);
    return;
  }
  const auto fill = [=](std::size_t at) { StoreUnaligned(dst + at, values); };
  for (std::size_t at = StoreLines(dst, bytes, fill); bytes - at > 16; at += 16) fill(at);
  fill(bytes - 16);
}

}  // namespace

template <class T>
StatusCode Copy(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  ForEachRow(size, CopyRow<T>, Rows{src, srcStep}, Rows{dst, dstStep});
  return StatusCode::Success;
}

template StatusCode Copy(const BW8*, std::int32_t, BW8*, std::int32_t, RegionSize);
template StatusCode Copy(const BW16*, std::int32_t, BW16*, std::int32_t, RegionSize);
template StatusCode Copy(const FLOAT32*, std::int32_t, FLOAT32*, std::int32_t, RegionSize);

template <class T>
StatusCode Set(T value, T* dst, std::int32_t dstStep, RegionSize size) {
  if (dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (dstStep < 1) return StatusCode::NonPositiveStep;
  const auto fill = [bits = std::bit_cast<Bits<T>>(value)](std::size_t count, void* row) { FillRow(bits, row, count); };
  ForEachRow(size, fill, Rows{dst, dstStep});
  return StatusCode::Success;
}

template StatusCode Set(BW8, BW8*, std::int32_t, RegionSize);
template StatusCode Set(FLOAT32, FLOAT32*, std::int32_t, RegionSize);

template <class T>
StatusCode CopyReplicateBorder(T* image, std::int32_t step, RegionSize inner, RegionSize outer, std::int32_t top,
                               std::int32_t left) {
  if (image == nullptr) return StatusCode::NullPointer;
  if (step < 1) return StatusCode::NonPositiveStep;
  if (IsEmpty(inner) || top < 0 || left < 0 || std::int64_t{left} + inner.width > outer.width ||
      std::int64_t{top} + inner.height > outer.height) {
    return StatusCode::NonPositiveSize;
  }
  const auto innerWidth = static_cast<std::size_t>(inner.width);
  const auto outerWidth = static_cast<std::size_t>(outer.width);
  const auto before = static_cast<std::size_t>(left);
  const std::size_t after = outerWidth - innerWidth - before;
  const std::int32_t bottom = outer.height - inner.height - top;
  const auto widen = [&](Unaligned<T>* row) {
    FillRow(LoadUnaligned<Bits<T>>(row), row - before, before);
    FillRow(LoadUnaligned<Bits<T>>(row + innerWidth - 1), row + innerWidth, after);
  };

  // The topmost rows are copies of the first inner row with its side borders, and so on downwards: the order matters
  // where a small step makes rows overlap.
  widen(Row(image, step, 0));
  const Unaligned<T>* const first = Row(image, step, 0) - before;
  for (std::int32_t y = -top; y < 0; ++y) CopyRow<T>(outerWidth, first, Row(image, step, y) - before);
  for (std::int32_t y = 1; y < inner.height; ++y) widen(Row(image, step, y));
  const Unaligned<T>* const last = Row(image, step, inner.height - 1) - before;
  for (std::int32_t y = 0; y < bottom; ++y) {
    CopyRow<T>(outerWidth, last, Row(image, step, std::ptrdiff_t{inner.height} + y) - before);
  }
  return StatusCode::Success;
}

template StatusCode CopyReplicateBorder(BW8*, std::int32_t, RegionSize, RegionSize, std::int32_t, std::int32_t);
template StatusCode CopyReplicateBorder(BW16*, std::int32_t, RegionSize, RegionSize, std::int32_t, std::int32_t);
template StatusCode CopyReplicateBorder(FLOAT32*, std::int32_t, RegionSize, RegionSize, std::int32_t, std::int32_t);

}  // namespace norvala
