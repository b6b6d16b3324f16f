#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/lanes.h"
#include "frame/memory.h"

// Arithmetic for one transform at a time (V is float) or four side by side, one in each lane (V is F32x4).

namespace norvala::dft {

template <class V>
inline constexpr int kLanes = sizeof(V) / sizeof(float);

// Scratch starts at a multiple of this, and scratch sizes include what is lost by that.
inline constexpr std::int64_t kScratchAlignment = alignof(F32x4);

// ---- Complex values ----

template <class V>
struct Complex {
  V re;
  V im;
};
template <class V>
Complex(V, V) -> Complex<V>;
// The same value of four transforms.
using ComplexLanes = Complex<F32x4>;
// A root of unity, the same for all lanes.
using Root = Complex<float>;

template <class V>
inline Complex<V> operator+(Complex<V> a, Complex<V> b) {
  return {a.re + b.re, a.im + b.im};
}
template <class V>
inline Complex<V> operator-(Complex<V> a, Complex<V> b) {
  return {a.re - b.re, a.im - b.im};
}
template <class V, class T>
inline Complex<V> operator*(Complex<V> a, T factor) {
  return {a.re * factor, a.im * factor};
}
template <class V>
inline Complex<V> Multiply(Complex<V> a, Root w) {
  return {a.re * w.re - a.im * w.im, a.im * w.re + a.re * w.im};
}
template <class V>
inline Complex<V> Conjugate(Complex<V> a) {
  return {a.re, -a.im};
}
template <class V>
inline Complex<V> TimesMinusI(Complex<V> a) {
  return {a.im, -a.re};
}

// ---- Double precision ----

// Values as doubles, and back.
inline double Widen(float value) { return value; }
inline F64x2x2 Widen(F32x4 v) { return ConvertToDoubles(v); }
template <class V>
inline auto Widen(Complex<V> v) {
  return Complex{Widen(v.re), Widen(v.im)};
}
inline float Narrow(double value) { return static_cast<float>(value); }
inline F32x4 Narrow(F64x2x2 v) { return ConvertFromDoubles<F32x4>(v); }
template <class V>
inline auto Narrow(Complex<V> v) {
  return Complex{Narrow(v.re), Narrow(v.im)};
}

// Computes in double precision from floats in memory and rounds every result once. `compute` replaces an array of n
// values by their results. Four lanes are computed two by two, so that all values of two stay in registers.
template <int n, class Compute>
inline void InDouble(const float* const (&from)[n], float (&to)[n], Compute compute) {
  double wide[n];
  for (int i = 0; i < n; ++i) wide[i] = *from[i];
  compute(wide);
  for (int i = 0; i < n; ++i) to[i] = static_cast<float>(wide[i]);
}
template <int n, class Compute>
inline void InDouble(const F32x4* const (&from)[n], F32x4 (&to)[n], Compute compute) {
  F64x2 low[n], high[n];
  for (int i = 0; i < n; ++i) low[i] = LoadFloatsAsDoubles(from[i]);
  compute(low);
  for (int i = 0; i < n; ++i) high[i] = LoadFloatsAsDoubles(reinterpret_cast<const unsigned char*>(from[i]) + 8);
  compute(high);
  for (int i = 0; i < n; ++i) to[i] = ConvertFromDoubles<F32x4>(low[i], high[i]);
}

// ---- Rows of floats at any address, one for each lane: loads turn rows into lanes, stores turn them back ----

template <class V, class T>  // T is float or const float
struct LaneRows {
  Unaligned<T>* rows[kLanes<V>];

  V Load(std::ptrdiff_t x) const {
    if constexpr (kLanes<V> == 1) {
      return rows[0][x];
    } else {
      return V{rows[0][x], rows[1][x], rows[2][x], rows[3][x]};
    }
  }
  void Store(std::ptrdiff_t x, V value) const {
    if constexpr (kLanes<V> == 1) {
      rows[0][x] = value;
    } else {
      for (int i = 0; i < kLanes<V>; ++i) rows[i][x] = value[i];
    }
  }
  // Elements x .. x + 3.
  void LoadFour(std::ptrdiff_t x, V (&v)[4]) const {
    if constexpr (kLanes<V> == 1) {
      for (int i = 0; i < 4; ++i) v[i] = Load(x + i);
    } else {
      for (int i = 0; i < 4; ++i) v[i] = LoadUnaligned<V>(rows[i] + x);
      TransposeLanes(v);
    }
  }
  void StoreFour(std::ptrdiff_t x, V (&v)[4]) const {
    if constexpr (kLanes<V> == 1) {
      for (int i = 0; i < 4; ++i) Store(x + i, v[i]);
    } else {
      TransposeLanes(v);
      for (int i = 0; i < 4; ++i) StoreUnaligned(rows[i] + x, v[i]);
    }
  }
};
template <class V>
using SourceRows = LaneRows<V, const float>;
template <class V>
using DestinationRows = LaneRows<V, float>;

}  // namespace norvala::dft
