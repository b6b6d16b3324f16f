#include <bit>

#include "analysis/dft/plan1d.h"

// Real-input transforms of rows. An even number 2m of real values is transformed as m complex ones, from whose spectrum
// that of the real ones is rebuilt; of an odd number, two rows are transformed as the parts of one complex row. The
// direct sum has too little scratch for a whole spectrum: its results go to the destination one by one.

namespace norvala::dft {
namespace {

// Where the real and imaginary part of frequency k lie in a packed row: here and in the next element.
constexpr std::ptrdiff_t PairAt(std::ptrdiff_t k) { return 2 * k - 1; }

template <class V>
void StorePair(const DestinationRows<V>& dst, std::ptrdiff_t k, Complex<V> value) {
  dst.Store(PairAt(k), value.re);
  dst.Store(PairAt(k) + 1, value.im);
}

// Frequencies k and k + 1.
template <class V>
void StorePairs(const DestinationRows<V>& dst, std::ptrdiff_t k, Complex<V> first, Complex<V> second) {
  V four[4] = {first.re, first.im, second.re, second.im};
  dst.StoreFour(PairAt(k), four);
}

// Frequencies k of `first` and of `second`, or m - k of it where that is mirrored, for 0 < k < m / 2. Both come from
// the values k and m - k of a spectrum: combine(k, z[k], z[m - k], its results).
template <bool mirrored, class V, class Combine>
void StoreCombined(const Complex<V>* z, std::ptrdiff_t m, const DestinationRows<V>& first,
                   const DestinationRows<V>& second, Combine combine) {
  const std::ptrdiff_t last = (m - 1) / 2;
  std::ptrdiff_t k = 1;
  for (; k + 1 <= last; k += 2) {
    Complex<V> a[2], b[2];
    combine(k, z[k], z[m - k], a[0], b[0]);
    combine(k + 1, z[k + 1], z[m - k - 1], a[1], b[1]);
    StorePairs(first, k, a[0], a[1]);
    StorePairs(second, mirrored ? m - k - 1 : k, b[mirrored ? 1 : 0], b[mirrored ? 0 : 1]);
  }
  if (k <= last) {
    Complex<V> a, b;
    combine(k, z[k], z[m - k], a, b);
    StorePair(first, k, a);
    StorePair(second, mirrored ? m - k : k, b);
  }
}

// ---- Up to 4 values ----

template <class V>
void RunSmallRows(const SourceRows<V>& src, const DestinationRows<V>& dst, std::ptrdiff_t n) {
  V x[4];
  for (std::ptrdiff_t i = 0; i < n; ++i) x[i] = src.Load(i);
  if (n == 1) dst.Store(0, x[0]);
  if (n == 2) {
    dst.Store(0, x[0] + x[1]);
    dst.Store(1, x[0] - x[1]);
  }
  if (n == 3) {
    const auto first = Widen(x[0]), sum = Widen(x[1]) + Widen(x[2]), difference = Widen(x[1]) - Widen(x[2]);
    dst.Store(0, Narrow(first + sum));
    dst.Store(1, Narrow(first + sum * -0.5));
    dst.Store(2, Narrow(difference * -0.8660254));
  }
  if (n == 4) {
    const V even = x[0] + x[2], odd = x[1] + x[3];
    dst.Store(0, even + odd);
    dst.Store(1, x[0] - x[2]);
    dst.Store(2, x[3] - x[1]);
    dst.Store(3, even - odd);
  }
}

// ---- An even number of values ----

// Elements 2j and 2j + 1 of the rows as the parts of m complex values.
template <class V>
void LoadHalves(const SourceRows<V>& src, std::ptrdiff_t m, Complex<V>* data) {
  std::ptrdiff_t j = 0;
  for (; j + 2 <= m; j += 2) {
    V four[4];
    src.LoadFour(2 * j, four);
    data[j] = {four[0], four[1]};
    data[j + 1] = {four[2], four[3]};
  }
  if (j < m) data[j] = {src.Load(2 * j), src.Load(2 * j + 1)};
}

// Frequencies k and m - k of 2m real values, a and b, from those of the transform of their halves, x and y, and entry k
// of the rebuilding table.
template <bool inDouble, class V>
inline void Rebuild(Root entry, const Complex<V>& x, const Complex<V>& y, Complex<V>& a, Complex<V>& b) {
  const auto rebuild = [](auto re, auto im, auto& v) {
    const auto xr = v[0], xi = v[1], yr = v[2], yi = v[3];
    const auto difference = xr - yr, sum = xi + yi;
    const auto s = difference * im + sum * re;
    const auto t = sum * im - difference * re;
    v[0] = yr + s;
    v[1] = t - yi;
    v[2] = xr - s;
    v[3] = t - xi;
  };
  V v[4] = {x.re, x.im, y.re, y.im};
  if constexpr (inDouble) {
    InDouble({&x.re, &x.im, &y.re, &y.im}, v,
             [&](auto& d) { rebuild(static_cast<double>(entry.re), static_cast<double>(entry.im), d); });
  } else {
    rebuild(entry.re, entry.im, v);
  }
  a = {v[0], v[1]};
  b = {v[2], v[3]};
}

template <class V>
inline void StoreEnds(const DestinationRows<V>& dst, std::ptrdiff_t m, Complex<V> first) {
  dst.Store(0, first.re + first.im);
  dst.Store(2 * m - 1, first.re - first.im);
}

template <bool inDouble, class V>
void StoreRebuilt(const Complex<V>* halves, std::ptrdiff_t m, const Root* table, const DestinationRows<V>& dst) {
  StoreEnds(dst, m, halves[0]);
  StoreCombined<true>(halves, m, dst, dst,
                      [table](std::ptrdiff_t k, const Complex<V>& x, const Complex<V>& y, Complex<V>& a,
                              Complex<V>& b) { Rebuild<inDouble>(table[k], x, y, a, b); });
  if (m % 2 == 0) StorePair(dst, m / 2, Conjugate(halves[m / 2]));
}

// Powers of two are rebuilt in float, other numbers in double.
template <class V>
void RunEvenRows(const DftSpec1DReal& spec, const SourceRows<V>& src, const DestinationRows<V>& dst, Complex<V>* data) {
  const std::ptrdiff_t m = spec.length / 2;
  const Root* const table = spec.rebuildTable.data();
  LoadHalves(src, m, data);
  if (spec.plan.method == Method::Direct) {
    return spec.plan.direct.Sum(data, [&](std::ptrdiff_t k, auto even, auto odd) {
      if (k == 0) return StoreEnds(dst, m, Narrow(even));
      Complex<V> a, b;
      Rebuild<true>(table[k], Narrow(even - TimesMinusI(odd)), Narrow(even + TimesMinusI(odd)), a, b);
      StorePair(dst, k, a);
      StorePair(dst, m - k, b);
    });
  }
  const Complex<V>* const halves = spec.plan.Run(data, data + m);
  return std::has_single_bit(static_cast<std::size_t>(m)) ? StoreRebuilt<false>(halves, m, table, dst)
                                                          : StoreRebuilt<true>(halves, m, table, dst);
}

// ---- An odd number of values ----

template <class V>
void RunOddRowsDirectly(const DftSpec1DReal& spec, const SourceRows<V>& src, const DestinationRows<V>& dst, V* data) {
  for (std::ptrdiff_t x = 0; x < spec.length; ++x) data[x] = src.Load(x);
  spec.plan.direct.Sum(data, [&](std::ptrdiff_t k, auto even, auto odd) {
    if (k == 0) return dst.Store(0, Narrow(even));
    StorePair(dst, k, Complex<V>{Narrow(even), Narrow(odd)});
  });
}

// Two rows as the parts z of one complex row: their transforms are the even and the odd part of its transform.
template <class V>
void RunPairedRows(const DftSpec1DReal& spec, const SourceRows<V> (&src)[2], const DestinationRows<V> (&dst)[2],
                   Complex<V>* data) {
  const std::ptrdiff_t n = spec.length;
  std::ptrdiff_t x = 0;
  for (; x + 4 <= n; x += 4) {
    V re[4], im[4];
    src[0].LoadFour(x, re);
    src[1].LoadFour(x, im);
    for (int i = 0; i < 4; ++i) data[x + i] = {re[i], im[i]};
  }
  for (; x < n; ++x) data[x] = {src[0].Load(x), src[1].Load(x)};

  const Complex<V>* const z = spec.plan.Run(data, data + n);
  dst[0].Store(0, z[0].re);
  dst[1].Store(0, z[0].im);
  StoreCombined<false>(z, n, dst[0], dst[1],
                       [](std::ptrdiff_t, const Complex<V>& p, const Complex<V>& q, Complex<V>& a, Complex<V>& b) {
                         a = {(p.re + q.re) * 0.5F, (p.im - q.im) * 0.5F};
                         b = {(p.im + q.im) * 0.5F, (q.re - p.re) * 0.5F};
                       });
}

}  // namespace

template <class V>
void RunRealRows(const DftSpec1DReal& spec, const SourceRows<V> (&src)[2], const DestinationRows<V> (&dst)[2],
                 void* scratch) {
  if (spec.plan.method == Method::Small) {
    RunSmallRows(src[0], dst[0], spec.length);
  } else if (spec.length % 2 == 0) {
    RunEvenRows(spec, src[0], dst[0], static_cast<Complex<V>*>(scratch));
  } else if (spec.PairsRows()) {
    RunPairedRows(spec, src, dst, static_cast<Complex<V>*>(scratch));
  } else {
    RunOddRowsDirectly(spec, src[0], dst[0], static_cast<V*>(scratch));
  }
}

template void RunRealRows(const DftSpec1DReal&, const SourceRows<float> (&)[2], const DestinationRows<float> (&)[2],
                          void*);
template void RunRealRows(const DftSpec1DReal&, const SourceRows<F32x4> (&)[2], const DestinationRows<F32x4> (&)[2],
                          void*);

}  // namespace norvala::dft
