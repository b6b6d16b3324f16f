#pragma once

#include "frame/lanes.h"

// Complex arithmetic for one transform at a time (V is float) or four side by side, one in each lane (V is F32x4).

namespace norvala::dft {

template <class V>
struct Complex {
  V re;
  V im;
};
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

// Values as doubles, and back.
inline double Widen(float value) { return value; }
inline F64x2x2 Widen(F32x4 v) { return ConvertToDoubles(v); }
inline float Narrow(double value) { return static_cast<float>(value); }
inline F32x4 Narrow(F64x2x2 v) { return ConvertFromDoubles<F32x4>(v); }

}  // namespace norvala::dft
