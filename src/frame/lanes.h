#pragma once

#include <cstdint>
#include <cstring>

// Names for the compilers' generic vector types, where a plain loop stays behind what the vectoriser can do: the same
// source for GCC and Clang on every processor. Arithmetic, comparison, shifts and the ?: selection work lane by lane.

namespace norvala {

// A type of `lanes` lanes of T, such as Lanes<float, 4>.
template <class T, int lanes>
struct LanesOf {
  typedef T type __attribute__((vector_size(lanes * sizeof(T))));
};
template <class T, int lanes>
using Lanes = typename LanesOf<T, lanes>::type;

using U8x8 = Lanes<std::uint8_t, 8>;
using U8x16 = Lanes<std::uint8_t, 16>;
using I16x8 = Lanes<std::int16_t, 8>;
using U16x8 = Lanes<std::uint16_t, 8>;
using I32x4 = Lanes<std::int32_t, 4>;
using U32x4 = Lanes<std::uint32_t, 4>;
using F32x4 = Lanes<float, 4>;
using F64x2 = Lanes<double, 2>;

// Loads and stores at any address.
template <class V>
inline V LoadLanes(const void* source) {
  V v;
  std::memcpy(&v, source, sizeof v);
  return v;
}
template <class V>
inline void StoreLanes(void* destination, V v) {
  std::memcpy(destination, &v, sizeof v);
}

// Lane by lane conversion, as a static_cast of every lane.
template <class To, class From>
inline To ConvertLanes(From v) {
  return __builtin_convertvector(v, To);
}

// The same bits read as another vector type.
template <class To, class From>
inline To BitCastLanes(From v) {
  static_assert(sizeof(To) == sizeof(From));
  return reinterpret_cast<To>(v);
}

// The lower and the upper half of the lanes, zero-extended to twice their width.
inline U16x8 WidenLow(U8x16 v) {
  return BitCastLanes<U16x8>(
      __builtin_shufflevector(v, U8x16{}, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23));
}
inline U16x8 WidenHigh(U8x16 v) {
  return BitCastLanes<U16x8>(
      __builtin_shufflevector(v, U8x16{}, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31));
}
inline I32x4 WidenLow(U16x8 v) {
  return BitCastLanes<I32x4>(__builtin_shufflevector(v, U16x8{}, 0, 8, 1, 9, 2, 10, 3, 11));
}
inline I32x4 WidenHigh(U16x8 v) {
  return BitCastLanes<I32x4>(__builtin_shufflevector(v, U16x8{}, 4, 12, 5, 13, 6, 14, 7, 15));
}

// The low byte of every lane, `low` first.
inline U8x16 NarrowToBytes(U16x8 low, U16x8 high) {
  return __builtin_shufflevector(BitCastLanes<U8x16>(low), BitCastLanes<U8x16>(high), 0, 2, 4, 6, 8, 10, 12, 14, 16, 18,
                                 20, 22, 24, 26, 28, 30);
}

// The upper halves of the 32-bit products, in one instruction: the compilers know this loop.
inline U16x8 MulHigh(U16x8 a, U16x8 b) {
  U16x8 high;
  for (int i = 0; i < 8; ++i) high[i] = static_cast<std::uint16_t>((std::uint32_t{a[i]} * b[i]) >> 16);
  return high;
}

}  // namespace norvala
