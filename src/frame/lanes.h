#pragma once

#include <cstdint>
#include <type_traits>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "frame/memory.h"

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

using U8x16 = Lanes<std::uint8_t, 16>;
using I16x8 = Lanes<std::int16_t, 8>;
using U16x8 = Lanes<std::uint16_t, 8>;
using I32x4 = Lanes<std::int32_t, 4>;
using U32x4 = Lanes<std::uint32_t, 4>;
using F32x4 = Lanes<float, 4>;
using U64x2 = Lanes<std::uint64_t, 2>;
using I64x2 = Lanes<std::int64_t, 2>;
using F64x2 = Lanes<double, 2>;
using F64x4 = Lanes<double, 4>;

template <class V>
inline constexpr int kLaneCount = sizeof(V) / sizeof(V{}[0]);

// Every lane the same value.
template <class V, class T>
inline V Splat(T value) {
  return static_cast<std::remove_cvref_t<decltype(V{}[0])>>(value) - V{};  // subtracting 0 keeps even the sign of -0
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

// Four lanes of double in two registers: the compilers pass wider vectors through memory.
struct F64x2x2 {
  F64x2 low, high;
};
inline F64x2x2 operator+(F64x2x2 a, F64x2x2 b) { return {a.low + b.low, a.high + b.high}; }
inline F64x2x2 operator-(F64x2x2 a) { return {-a.low, -a.high}; }
inline F64x2x2 operator-(F64x2x2 a, F64x2x2 b) { return {a.low - b.low, a.high - b.high}; }
inline F64x2x2 operator*(F64x2x2 a, F64x2x2 b) { return {a.low * b.low, a.high * b.high}; }
inline F64x2x2 operator*(F64x2x2 a, double b) { return {a.low * b, a.high * b}; }

// Four lanes as doubles, and back.
template <class V>
inline F64x2x2 ConvertToDoubles(V v) {
  const auto all = __builtin_convertvector(v, F64x4);
  return {__builtin_shufflevector(all, all, 0, 1), __builtin_shufflevector(all, all, 2, 3)};
}
template <class V>
inline V ConvertFromDoubles(F64x2 low, F64x2 high) {
  return __builtin_convertvector(__builtin_shufflevector(low, high, 0, 1, 2, 3), V);
}
template <class V>
inline V ConvertFromDoubles(F64x2x2 v) {
  return ConvertFromDoubles<V>(v.low, v.high);
}

// The lower and the upper halves of both in turns: a[0], b[0], a[1], b[1] and so on.
template <class V>
inline V InterleaveLow(V a, V b) {
  if constexpr (kLaneCount<V> == 4) return __builtin_shufflevector(a, b, 0, 4, 1, 5);
  if constexpr (kLaneCount<V> == 8) return __builtin_shufflevector(a, b, 0, 8, 1, 9, 2, 10, 3, 11);
  if constexpr (kLaneCount<V> == 16) {
    return __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
  }
}
template <class V>
inline V InterleaveHigh(V a, V b) {
  if constexpr (kLaneCount<V> == 4) return __builtin_shufflevector(a, b, 2, 6, 3, 7);
  if constexpr (kLaneCount<V> == 8) return __builtin_shufflevector(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
  if constexpr (kLaneCount<V> == 16) {
    return __builtin_shufflevector(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
  }
}

// The bytes of the lower half and of the upper half in turn.
inline U8x16 InterleaveHalves(U8x16 v) {
  // The upper half moves by lanes of 64 bits: GCC takes the bytes one by one through other registers otherwise.
  const auto halves = BitCastLanes<I64x2>(v);
  return InterleaveLow(v, BitCastLanes<U8x16>(__builtin_shufflevector(halves, halves, 1, 1)));
}

// The lower and the upper half of the lanes, each widened by zeros.
inline U16x8 WidenLow(U8x16 v) { return BitCastLanes<U16x8>(InterleaveLow(v, U8x16{})); }
inline U16x8 WidenHigh(U8x16 v) { return BitCastLanes<U16x8>(InterleaveHigh(v, U8x16{})); }
inline U32x4 WidenLow(U16x8 v) { return BitCastLanes<U32x4>(InterleaveLow(v, U16x8{})); }
inline U32x4 WidenHigh(U16x8 v) { return BitCastLanes<U32x4>(InterleaveHigh(v, U16x8{})); }

// The lanes at even or odd places of `a`, then those of `b`: on a little-endian processor the low or high halves of
// lanes twice as wide.
template <class V>
inline V EvenLanes(V a, V b) {
  if constexpr (kLaneCount<V> == 2) return __builtin_shufflevector(a, b, 0, 2);
  if constexpr (kLaneCount<V> == 4) return __builtin_shufflevector(a, b, 0, 2, 4, 6);
  if constexpr (kLaneCount<V> == 16) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
  }
}
template <class V>
inline V OddLanes(V a, V b) {
  if constexpr (kLaneCount<V> == 2) return __builtin_shufflevector(a, b, 1, 3);
  if constexpr (kLaneCount<V> == 4) return __builtin_shufflevector(a, b, 1, 3, 5, 7);
  if constexpr (kLaneCount<V> == 16) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
  }
}
// By lanes twice as wide, whose even or odd places are one instruction; compilers unpack the lanes of 16 bits in three
// rounds.
inline U16x8 EvenLanes(U16x8 a, U16x8 b) {
  const auto wideA = BitCastLanes<U32x4>(a);
  const auto wideB = BitCastLanes<U32x4>(b);
  return BitCastLanes<U16x8>((EvenLanes(wideA, wideB) & 0xFFFFU) | (OddLanes(wideA, wideB) << 16));
}

// The smaller and the larger lanes; the second operand where one is not a number. With float bounds from Opaque these
// are one instruction each: GCC does not see that a compared and a selected constant are the same.
template <class V>
inline V MinLanes(V a, V b) {
  return a < b ? a : b;
}
template <class V>
inline V MaxLanes(V a, V b) {
  return a > b ? a : b;
}

// A value that the compiler does not know to be constant. Costs a store and a load.
template <class T>
inline T Opaque(T value) {
  volatile T hidden = value;
  return hidden;
}

// ---- Operations that generic vectors lack ----
//
// The portable body is the rule. Where the processor has the very operation as one instruction that compilers do not
// make of that body, it stands beside it.

// The products of corresponding lanes, neighbours added: a[0] * b[0] + a[1] * b[1] and so on, modulo 2^32.
inline I32x4 MultiplyAddPairs(I16x8 a, I16x8 b) {
#if defined(__SSE2__)
  return reinterpret_cast<I32x4>(_mm_madd_epi16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
  using I32x8 = Lanes<std::int32_t, 8>;
  using U32x8 = Lanes<std::uint32_t, 8>;
  const auto products = BitCastLanes<U32x8>(ConvertLanes<I32x8>(a) * ConvertLanes<I32x8>(b));
  return BitCastLanes<I32x4>(__builtin_shufflevector(products, products, 0, 2, 4, 6) +
                             __builtin_shufflevector(products, products, 1, 3, 5, 7));
#endif
}

// Two values in turns, as factors for MultiplyAddPairs.
inline I16x8 SplatPair(std::int16_t first, std::int16_t second) {
  const std::uint32_t low = static_cast<std::uint16_t>(first);
  const std::uint32_t high = static_cast<std::uint16_t>(second);
  return BitCastLanes<I16x8>(Splat<U32x4>(low | high << 16));
}

// The high halves of the products of corresponding lanes.
inline U16x8 HighProducts(U16x8 a, U16x8 b) {
#if defined(__SSE2__)
  return reinterpret_cast<U16x8>(_mm_mulhi_epu16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
  using U32x8 = Lanes<std::uint32_t, 8>;
  return ConvertLanes<U16x8>(ConvertLanes<U32x8>(a) * ConvertLanes<U32x8>(b) >> 16);
#endif
}

// The lanes of `a`, then those of `b`, each limited to what the narrower lane holds.
inline I16x8 PackSaturated(I32x4 a, I32x4 b) {
#if defined(__SSE2__)
  return reinterpret_cast<I16x8>(_mm_packs_epi32(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
  auto v = __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7);
  v = MinLanes(MaxLanes(v, Splat<decltype(v)>(INT16_MIN)), Splat<decltype(v)>(INT16_MAX));
  return ConvertLanes<I16x8>(v);
#endif
}
inline U8x16 PackSaturated(I16x8 a, I16x8 b) {
#if defined(__SSE2__)
  return reinterpret_cast<U8x16>(_mm_packus_epi16(reinterpret_cast<__m128i>(a), reinterpret_cast<__m128i>(b)));
#else
  auto v = __builtin_shufflevector(a, b, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  v = MinLanes(MaxLanes(v, Splat<decltype(v)>(0)), Splat<decltype(v)>(255));
  return ConvertLanes<U8x16>(v);
#endif
}

// The nearest whole numbers of floats that 32 bits hold, halves to even.
inline I32x4 RoundLanes(F32x4 v) {
#if defined(__SSE2__)
  return reinterpret_cast<I32x4>(_mm_cvtps_epi32(reinterpret_cast<__m128>(v)));
#else
  // The sum with 1.5 * 2^52 has no fraction, and its low bits are those of the whole number.
  return ConvertLanes<I32x4>(BitCastLanes<Lanes<std::int64_t, 4>>(ConvertLanes<F64x4>(v) + 0x1.8p52));
#endif
}

// The sums of the lower and of the upper eight bytes.
inline U64x2 SumBytes(U8x16 v) {
#if defined(__SSE2__)
  return reinterpret_cast<U64x2>(_mm_sad_epu8(reinterpret_cast<__m128i>(v), __m128i{}));
#else
  const auto words = BitCastLanes<U16x8>(v);
  auto sums = BitCastLanes<U64x2>((words & 0xFF) + (words >> 8));
  sums += sums >> 32;
  sums += sums >> 16;
  return sums & 0xFFFF;
#endif
}

// Shifts all lanes right by one count that stays in a vector register: a 32-bit GCC takes plain counts through memory
// for every shift where it runs out of other registers.
class ShiftCount {
 public:
  explicit ShiftCount(int count) : count_{count, 0} {}

#if defined(__SSE2__)
  I32x4 Right(I32x4 v) const {
    return reinterpret_cast<I32x4>(_mm_sra_epi32(reinterpret_cast<__m128i>(v), reinterpret_cast<__m128i>(count_)));
  }
  U16x8 Right(U16x8 v) const {
    return reinterpret_cast<U16x8>(_mm_srl_epi16(reinterpret_cast<__m128i>(v), reinterpret_cast<__m128i>(count_)));
  }
#else
  I32x4 Right(I32x4 v) const { return v >> static_cast<std::int32_t>(count_[0]); }
  U16x8 Right(U16x8 v) const { return v >> static_cast<std::uint16_t>(count_[0]); }
#endif

 private:
  I64x2 count_;
};

// Two floats at an address as doubles.
inline F64x2 LoadFloatsAsDoubles(const void* source) {
#if defined(__SSE2__)
  return reinterpret_cast<F64x2>(_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(static_cast<const __m128i*>(source)))));
#else
  return ConvertLanes<F64x2>(LoadUnaligned<Lanes<float, 2>>(source));
#endif
}

// Rows to columns of four vectors of four.
inline void TransposeLanes(F32x4 (&v)[4]) {
  const F32x4 low01 = InterleaveLow(v[0], v[1]);
  const F32x4 high01 = InterleaveHigh(v[0], v[1]);
  const F32x4 low23 = InterleaveLow(v[2], v[3]);
  const F32x4 high23 = InterleaveHigh(v[2], v[3]);
  v[0] = __builtin_shufflevector(low01, low23, 0, 1, 4, 5);
  v[1] = __builtin_shufflevector(low01, low23, 2, 3, 6, 7);
  v[2] = __builtin_shufflevector(high01, high23, 0, 1, 4, 5);
  v[3] = __builtin_shufflevector(high01, high23, 2, 3, 6, 7);
}

}  // namespace norvala
