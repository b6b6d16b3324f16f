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

// The lanes at even places of `a`, then those of `b`: on a little-endian processor the low halves of lanes twice as
// wide.
inline U8x16 EvenLanes(U8x16 a, U8x16 b) {
  return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}
inline U16x8 EvenLanes(U16x8 a, U16x8 b) { return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14); }

}  // namespace norvala
