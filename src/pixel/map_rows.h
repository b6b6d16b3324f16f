#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "frame/types.h"

// The row loops that the pixel-wise operations share.

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
// rows are one long row. The kernel gets its rows as plain memory, since their elements may be misaligned.
template <class Kernel, class... T>
inline void ForEachRow(RegionSize size, Kernel kernel, Rows<T>... images) {
  auto count = static_cast<std::size_t>(size.width);
  if ((images.IsUnpadded(size.width) && ...)) {
    count *= static_cast<std::size_t>(size.height);
    size.height = 1;
  }
  for (std::int32_t y = 0; y < size.height; ++y) {
    kernel(count, static_cast<std::conditional_t<std::is_const_v<T>, const void, void>*>(
                      Row(images.first, images.step, y))...);
  }
}

inline const std::uint8_t* BytesAt(const void* row, std::size_t offset) {
  return static_cast<const std::uint8_t*>(row) + offset;
}
inline std::uint8_t* BytesAt(void* row, std::size_t offset) { return static_cast<std::uint8_t*>(row) + offset; }

// Prefetches the line of a destination that is written some lines later: where images exceed the nearer caches, stores
// wait for their lines longer than loads, for which the processor prefetches by itself.
inline void PrefetchDestination(const void* row, std::size_t at) {
  constexpr std::size_t kAhead = 2048;
  Prefetch(row, static_cast<std::ptrdiff_t>(at + kAhead));
}

// dst[x] = op(sources[x]...) for a row of T. The operation takes and gives lanes as well as single pixels. The
// destination may be one of the sources.
template <class T, class Op, std::convertible_to<const void*>... Sources>
inline void MapRow(Op op, std::size_t count, void* dst, Sources... sources) {
  using V = Lanes<T, 16 / sizeof(T)>;
  constexpr int kUnrolled = 4;  // a cache line
  const std::size_t bytes = count * sizeof(T);
  std::size_t at = 0;
  for (; bytes - at >= kUnrolled * sizeof(V); at += kUnrolled * sizeof(V)) {
    PrefetchDestination(dst, at);
    for (std::size_t i = 0; i < kUnrolled * sizeof(V); i += sizeof(V)) {
      StoreUnaligned<V>(BytesAt(dst, at + i), op(LoadUnaligned<V>(BytesAt(sources, at + i))...));
    }
  }
  for (; at < bytes; at += sizeof(T)) {
    StoreUnaligned<T>(BytesAt(dst, at), static_cast<T>(op(LoadUnaligned<T>(BytesAt(sources, at))...)));
  }
}

}  // namespace norvala
