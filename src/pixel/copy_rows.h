#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/lanes.h"
#include "frame/memory.h"
#include "frame/types.h"
#include "pixel/map_rows.h"

// Moving and filling whole rows of pixels as bit patterns. The runtime's block routines are not used: several of them
// hand rows of a few kilobytes to string-move instructions, which run many times slower than plain loads and stores
// when source and destination lie at the same place of their pages, as the rows of two images often do.

namespace norvala {

// Copies the first and the last sizeof(V) bytes of a block, which may share bytes.
template <class V>
inline void CopyEnds(const std::uint8_t* src, std::uint8_t* dst, std::size_t bytes) {
  const auto first = LoadUnaligned<V>(src);
  const auto last = LoadUnaligned<V>(src + bytes - sizeof(V));
  StoreUnaligned(dst, first);
  StoreUnaligned(dst + bytes - sizeof(V), last);
}

// Copies a block. What is written early is never read later as long as the destination does not start inside the
// source: it may overlap it from below.
inline void CopyBlock(const std::uint8_t* src, std::uint8_t* dst, std::size_t bytes) {
  if (bytes >= 16) {
    const auto last = LoadUnaligned<U8x16>(src + bytes - 16);
    std::size_t at = 0;
    for (; bytes - at >= 64; at += 64) {
      PrefetchDestination(dst, at);
      const auto a = LoadUnaligned<U8x16>(src + at);
      const auto b = LoadUnaligned<U8x16>(src + at + 16);
      const auto c = LoadUnaligned<U8x16>(src + at + 32);
      const auto d = LoadUnaligned<U8x16>(src + at + 48);
      StoreUnaligned(dst + at, a);
      StoreUnaligned(dst + at + 16, b);
      StoreUnaligned(dst + at + 32, c);
      StoreUnaligned(dst + at + 48, d);
    }
    for (; bytes - at > 16; at += 16) StoreUnaligned(dst + at, LoadUnaligned<U8x16>(src + at));
    StoreUnaligned(dst + bytes - 16, last);
  } else if (bytes >= 8) {
    CopyEnds<std::uint64_t>(src, dst, bytes);
  } else if (bytes >= 4) {
    CopyEnds<std::uint32_t>(src, dst, bytes);
  } else {
    for (std::size_t i = 0; i < bytes; ++i) dst[i] = src[i];
  }
}

// Copies `count` pixels as a loop from left to right does: a destination that starts inside the source row repeats
// pixels, every other overlap reads each pixel before it is overwritten.
template <class T>
inline void CopyRow(const void* src, void* dst, std::size_t count) {
  const std::size_t bytes = count * sizeof(T);
  const std::uintptr_t ahead = reinterpret_cast<std::uintptr_t>(dst) - reinterpret_cast<std::uintptr_t>(src);
  if (ahead == 0) return;
  if (ahead >= bytes) {
    CopyBlock(BytesAt(src, 0), BytesAt(dst, 0), bytes);
  } else {
    for (std::size_t at = 0; at < bytes; at += sizeof(T))
      StoreUnaligned(BytesAt(dst, at), LoadUnaligned<T>(BytesAt(src, at)));
  }
}

template <class T>
inline void CopyRows(const T* src, std::ptrdiff_t srcStep, T* dst, std::ptrdiff_t dstStep, RegionSize size) {
  ForEachRow(
      size, [](std::size_t count, const void* from, void* to) { CopyRow<T>(from, to, count); }, Rows{src, srcStep},
      Rows{dst, dstStep});
}

template <class T>
inline void FillRow(T value, void* row, std::size_t count) {
  const auto values = Lanes<T, 16 / sizeof(T)>{} + value;
  const std::size_t bytes = count * sizeof(T);
  std::uint8_t* const dst = BytesAt(row, 0);
  if (bytes < 16) {
    std::uint8_t pattern[16];
    StoreUnaligned(pattern, values);
    CopyBlock(pattern, dst, bytes);
    return;
  }
  std::size_t at = 0;
  for (; bytes - at >= 64; at += 64) {
    PrefetchDestination(dst, at);
    StoreUnaligned(dst + at, values);
    StoreUnaligned(dst + at + 16, values);
    StoreUnaligned(dst + at + 32, values);
    StoreUnaligned(dst + at + 48, values);
  }
  for (; bytes - at > 16; at += 16) StoreUnaligned(dst + at, values);
  StoreUnaligned(dst + bytes - 16, values);
}

template <class T>
inline void FillRows(T value, T* dst, std::ptrdiff_t dstStep, RegionSize size) {
  ForEachRow(
      size, [value](std::size_t count, void* to) { FillRow<T>(value, to, count); }, Rows{dst, dstStep});
}

}  // namespace norvala
