#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "frame/types.h"

// The loops over rows that the pixel-wise operations share.

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

// dst = op(sources...) pixel by pixel. The operation takes and gives lanes as well as single pixels. The destination
// may be one of the sources.
template <class T, class Op, class... S>
inline void MapRows(RegionSize size, Op op, Rows<T> dst, Rows<S>... sources) {
  const auto mapRow = [op](std::size_t count, std::uint8_t* to, const auto*... from) {
    using V = Lanes<T, 16 / sizeof(T)>;
    const std::size_t bytes = count * sizeof(T);
    std::size_t at =
        StoreLines(to, bytes, [=](std::size_t i) { StoreUnaligned<V>(to + i, op(LoadUnaligned<V>(from + i)...)); });
    for (; at < bytes; at += sizeof(T)) {
      StoreUnaligned<T>(to + at, static_cast<T>(op(LoadUnaligned<T>(from + at)...)));
    }
  };
  ForEachRow(size, mapRow, dst, sources...);
}

}  // namespace norvala
