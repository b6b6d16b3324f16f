#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "frame/types.h"

// Moving and filling whole rows of pixels as bit patterns.

namespace norvala {

// Copies `count` pixels as a loop from left to right does: a destination that starts inside the source row repeats
// pixels, every other overlap reads each pixel before it is overwritten.
template <class T>
inline void CopyRow(const Unaligned<T>* src, Unaligned<T>* dst, std::size_t count) {
  const std::size_t bytes = count * sizeof(T);
  const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(dst) - reinterpret_cast<std::uintptr_t>(src);
  const std::uintptr_t behind = 0 - ahead;
  if (ahead >= bytes && behind >= bytes) {
    std::memcpy(dst, src, bytes);
  } else if (ahead >= bytes) {
    std::memmove(dst, src, bytes);
  } else {
    for (std::size_t x = 0; x < count; ++x) dst[x] = src[x];
  }
}

template <class T>
inline void CopyRows(const T* src, std::ptrdiff_t srcStep, T* dst, std::ptrdiff_t dstStep, RegionSize size) {
  auto count = static_cast<std::size_t>(size.width);
  const std::int64_t payload = static_cast<std::int64_t>(size.width) * static_cast<std::int64_t>(sizeof(T));
  if (srcStep == payload && dstStep == payload) {
    count *= static_cast<std::size_t>(size.height);
    size.height = 1;
  }
  for (std::int32_t y = 0; y < size.height; ++y) CopyRow<T>(Row(src, srcStep, y), Row(dst, dstStep, y), count);
}

template <class T>
inline void FillRow(T value, Unaligned<T>* dst, std::size_t count) {
  if constexpr (sizeof(T) == 1) {
    std::memset(dst, value, count);
  } else {
    for (std::size_t x = 0; x < count; ++x) dst[x] = value;
  }
}

template <class T>
inline void FillRows(T value, T* dst, std::ptrdiff_t dstStep, RegionSize size) {
  for (std::int32_t y = 0; y < size.height; ++y) {
    FillRow<T>(value, Row(dst, dstStep, y), static_cast<std::size_t>(size.width));
  }
}

}  // namespace norvala
