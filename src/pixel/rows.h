#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "frame/types.h"

// The loops over rows that the pixel-wise operations share: any operation pixel by pixel, copying, filling.

namespace norvala {

// An image as its first pixel and the distance of its rows in bytes.
template <class T>
struct Rows {
  T* first;
  std::ptrdiff_t step;

  bool IsUnpadded(std::int32_t width) const { return step == width * static_cast<std::int64_t>(sizeof(T)); }
};
template <class T>
Rows(T*, std::ptrdiff_t) -> Rows<T>;

// Calls kernel(count, row of every image) for each row from the top; images that all lie without padding between their
// rows are one long row. The kernel gets its rows as bytes, since their elements may be misaligned.
template <class Kernel, class... T>
inline void ForEachRow(RegionSize size, Kernel kernel, Rows<T>... images) {
  auto count = static_cast<std::size_t>(size.width);
  if ((images.IsUnpadded(size.width) && ...)) {
    count *= static_cast<std::size_t>(size.height);
    size.height = 1;
  }
  for (std::int32_t y = 0; y < size.height; ++y) {
    kernel(count, reinterpret_cast<std::conditional_t<std::is_const_v<T>, const std::uint8_t, std::uint8_t>*>(
                      Row(images.first, images.step, y))...);
  }
}

// Calls store(at) for all vectors of 16 bytes in the whole cache lines of a destination row, and returns their end.
// Prefetches the lines that are written later: where images exceed the nearer caches, stores wait for their lines
// longer than loads, for which the processor prefetches by itself.
template <class Store>
inline std::size_t StoreLines(const void* dst, std::size_t bytes, Store store) {
  constexpr std::size_t kLine = 64;
  constexpr std::size_t kAhead = 2048;
  std::size_t at = 0;
  for (; bytes - at >= kLine; at += kLine) {
    Prefetch(dst, static_cast<std::ptrdiff_t>(at + kAhead));
    for (std::size_t i = 0; i < kLine; i += 16) store(at + i);
  }
  return at;
}

// ---- Operations ----

// dst[x] = op(sources[x]...) for a row of T. The operation takes and gives lanes as well as single pixels. The
// destination may be one of the sources.
template <class T, class Op, std::same_as<const std::uint8_t*>... Sources>
inline void MapRow(Op op, std::size_t count, std::uint8_t* dst, Sources... sources) {
  using V = Lanes<T, 16 / sizeof(T)>;
  const std::size_t bytes = count * sizeof(T);
  std::size_t at =
      StoreLines(dst, bytes, [=](std::size_t i) { StoreUnaligned<V>(dst + i, op(LoadUnaligned<V>(sources + i)...)); });
  for (; at < bytes; at += sizeof(T)) {
    StoreUnaligned<T>(dst + at, static_cast<T>(op(LoadUnaligned<T>(sources + at)...)));
  }
}

template <class T, class Op, class... S>
inline void MapRows(RegionSize size, Op op, Rows<T> dst, Rows<S>... sources) {
  const auto map = [op](std::size_t count, std::uint8_t* to, std::convertible_to<const std::uint8_t*> auto... from) {
    MapRow<T>(op, count, to, static_cast<const std::uint8_t*>(from)...);
  };
  ForEachRow(size, map, dst, sources...);
}

// ---- Copying and filling ----
//
// The runtime's block routines are not used: several of them hand rows of a few kilobytes to string-move instructions,
// which run many times slower than plain loads and stores when source and destination lie at the same place of their
// pages, as the rows of two images often do.

// A pixel as a bit pattern, which floating-point operations need not keep.
template <class T>
using Bits = std::conditional_t<std::is_same_v<T, FLOAT32>, BW32, T>;

// Copies `count` pixels as a loop from left to right does: a destination that starts inside the source row repeats
// pixels, every other overlap reads each pixel before it is overwritten.
template <class T>
inline void CopyRow(const void* srcRow, void* dstRow, std::size_t count) {
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

template <class T>
inline void CopyRows(RegionSize size, Rows<const T> src, Rows<T> dst) {
  ForEachRow(
      size, [](std::size_t count, const void* from, void* to) { CopyRow<T>(from, to, count); }, src, dst);
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

template <class T>
inline void FillRows(T value, RegionSize size, Rows<T> dst) {
  const auto fill = [bits = std::bit_cast<Bits<T>>(value)](std::size_t count, void* to) { FillRow(bits, to, count); };
  ForEachRow(size, fill, dst);
}

}  // namespace norvala
