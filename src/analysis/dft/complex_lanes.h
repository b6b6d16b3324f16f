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
// An entry of a table of roots of unity, shared by all lanes.
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
inline Complex<V> Multiply(Complex<V> a, Complex<V> b) {
  return {a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im};
}
template <class V>
inline Complex<V> Conjugate(Complex<V> a) {
  return {a.re, -a.im};
}
template <class V>
inline Complex<V> TimesMinusI(Complex<V> a) {
  return {a.im, -a.re};
}

template <class V>
V Broadcast(float value);
template <>
inline float Broadcast<float>(float value) {
  return value;
}
template <>
inline F32x4 Broadcast<F32x4>(float value) {
  return F32x4{value, value, value, value};
}
template <class V>
inline Complex<V> Broadcast(Root root) {
  return {Broadcast<V>(root.re), Broadcast<V>(root.im)};
}

// Replaces `v` by the results of a computation in double precision, each rounded once. `compute` changes an array of as
// many doubles, or of pairs of lanes: one half of the lanes after the other, so that all stay in registers.
template <int n, class Compute>
inline void InDouble(float (&v)[n], Compute compute) {
  double wide[n];
  for (int i = 0; i < n; ++i) wide[i] = v[i];
  compute(wide);
  for (int i = 0; i < n; ++i) v[i] = static_cast<float>(wide[i]);
}
template <int n, class Compute>
inline void InDouble(F32x4 (&v)[n], Compute compute) {
  F32x4 low[n];
  F64x2 wide[n];
  for (int i = 0; i < n; ++i) wide[i] = F64x2{v[i][0], v[i][1]};
  compute(wide);
  for (int i = 0; i < n; ++i) low[i] = F32x4{static_cast<float>(wide[i][0]), static_cast<float>(wide[i][1]), 0, 0};
  for (int i = 0; i < n; ++i) wide[i] = F64x2{v[i][2], v[i][3]};
  compute(wide);
  for (int i = 0; i < n; ++i) {
    const F32x4 high = {static_cast<float>(wide[i][0]), static_cast<float>(wide[i][1]), 0, 0};
    v[i] = __builtin_shufflevector(low[i], high, 0, 1, 4, 5);
  }
}

// Four lanes of sums in double precision.
struct WideLanes {
  F64x2 low;
  F64x2 high;
};
inline WideLanes operator+(WideLanes a, WideLanes b) { return {a.low + b.low, a.high + b.high}; }
inline WideLanes operator-(WideLanes a, WideLanes b) { return {a.low - b.low, a.high - b.high}; }
inline WideLanes operator*(WideLanes a, double b) { return {a.low * b, a.high * b}; }

inline double Widen(float value) { return value; }
inline WideLanes Widen(F32x4 v) { return {F64x2{v[0], v[1]}, F64x2{v[2], v[3]}}; }
template <class V>
inline auto WideZero() {
  return decltype(Widen(V{})){};
}
inline float Narrow(double value) { return static_cast<float>(value); }
inline F32x4 Narrow(WideLanes w) {
  return F32x4{static_cast<float>(w.low[0]), static_cast<float>(w.low[1]), static_cast<float>(w.high[0]),
               static_cast<float>(w.high[1])};
}

}  // namespace norvala::dft
