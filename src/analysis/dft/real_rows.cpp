#include "analysis/dft/plan1d.h"

// Real-input transforms of rows. An even number 2m of real values is transformed as m complex ones, from whose spectrum
// that of the real ones is rebuilt; of an odd number, two rows are transformed as the parts of one complex row. The
// direct sum has too little scratch for a whole spectrum: its results go to the destination one by one.

namespace norvala::dft {
namespace {

bool IsPowerOfTwo(std::ptrdiff_t n) { return (n & (n - 1)) == 0; }

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

template <class V>
void RunSmallRows(const SourceRows<V>& src, const DestinationRows<V>& dst, std::ptrdiff_t n) {
  V x[4];
  for (std::ptrdiff_t i = 0; i < n; ++i) x[i] = src.Load(i);
  switch (n) {
    case 2: {
      const V sum = x[0] + x[1];
      x[1] = x[0] - x[1];
      x[0] = sum;
      break;
    }
    case 3: {
      V v[3];
      InDouble({&x[0], &x[1], &x[2]}, v, [](auto& d) {
        const auto sum = d[1] + d[2], difference = d[1] - d[2];
        d[1] = d[0] + sum * -0.5;
        d[0] += sum;
        d[2] = difference * -0.8660254;
      });
      for (int i = 0; i < 3; ++i) x[i] = v[i];
      break;
    }
    case 4: {
      const V a = x[0] + x[2], b = x[1] + x[3];
      const V re = x[0] - x[2], im = x[3] - x[1];
      x[0] = a + b;
      x[1] = re;
      x[2] = im;
      x[3] = a - b;
      break;
    }
    default:
      break;
  }
  for (std::ptrdiff_t i = 0; i < n; ++i) dst.Store(i, x[i]);
}

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

// The packed rows of 2m real values from the transform of their halves.
template <bool inDouble, class V>
void StoreRebuilt(const Complex<V>* halves, std::ptrdiff_t m, const Root* table, const DestinationRows<V>& dst) {
  StoreEnds(dst, m, halves[0]);
  std::ptrdiff_t k = 1;
  for (; 2 * (k + 1) < m; k += 2) {
    Complex<V> a[2], b[2];
    Rebuild<inDouble>(table[k], halves[k], halves[m - k], a[0], b[0]);
    Rebuild<inDouble>(table[k + 1], halves[k + 1], halves[m - k - 1], a[1], b[1]);
    StorePairs(dst, k, a[0], a[1]);
    StorePairs(dst, m - k - 1, b[1], b[0]);
  }
  if (2 * k < m) {
    Complex<V> a, b;
    Rebuild<inDouble>(table[k], halves[k], halves[m - k], a, b);
    StorePair(dst, k, a);
    StorePair(dst, m - k, b);
  }
  if (m % 2 == 0) StorePair(dst, m / 2, Conjugate(halves[m / 2]));
}

// An even number of real values. Powers of two are rebuilt in float, other numbers in double.
template <class V>
void RunEvenRows(const DftSpec1DReal& spec, const SourceRows<V>& src, const DestinationRows<V>& dst, Complex<V>* data) {
  const std::ptrdiff_t m = spec.length / 2;
  const Root* const table = spec.rebuildTable.data();
  LoadHalves(src, m, data);
  const Complex<V>* const halves = spec.plan.Run(data, data + m);
  if (IsPowerOfTwo(m)) {
    StoreRebuilt<false>(halves, m, table, dst);
  } else {
    StoreRebuilt<true>(halves, m, table, dst);
  }
}

// An even number of real values by the direct sum.
template <class V>
void RunEvenRowsDirectly(const DftSpec1DReal& spec, const SourceRows<V>& src, const DestinationRows<V>& dst,
                         Complex<V>* data) {
  const std::ptrdiff_t m = spec.length / 2;
  LoadHalves(src, m, data);
  spec.plan.direct.Run(data, [&, table = spec.rebuildTable.data()](std::ptrdiff_t k, Complex<V> x, Complex<V> y) {
    if (k == 0) return StoreEnds(dst, m, x);
    Complex<V> a, b;
    Rebuild<true>(table[k], x, y, a, b);
    StorePair(dst, k, a);
    StorePair(dst, m - k, b);
  });
}

// An odd number of real values by the direct sum.
template <class V>
void RunOddRowsDirectly(const DftSpec1DReal& spec, const SourceRows<V>& src, const DestinationRows<V>& dst, V* data) {
  for (std::ptrdiff_t x = 0; x < spec.length; ++x) data[x] = src.Load(x);
  spec.plan.direct.RunReal(
      data, [&](V first) { dst.Store(0, first); },
      [&](std::ptrdiff_t k, Complex<V> value) { StorePair(dst, k, value); });
}

// The transforms of the two real rows that were the parts of one complex row, from frequencies k and n - k of its
// transform.
template <class V>
inline void Separate(Complex<V> z, Complex<V> mirrored, Complex<V>& first, Complex<V>& second) {
  first = {(z.re + mirrored.re) * 0.5F, (z.im - mirrored.im) * 0.5F};
  second = {(z.im + mirrored.im) * 0.5F, (mirrored.re - z.re) * 0.5F};
}

// An odd number of real values, two rows at once.
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
  std::ptrdiff_t k = 1;
  for (; k + 1 <= n / 2; k += 2) {
    Complex<V> first[2], second[2];
    Separate(z[k], z[n - k], first[0], second[0]);
    Separate(z[k + 1], z[n - k - 1], first[1], second[1]);
    StorePairs(dst[0], k, first[0], first[1]);
    StorePairs(dst[1], k, second[0], second[1]);
  }
  if (k <= n / 2) {
    Complex<V> first, second;
    Separate(z[k], z[n - k], first, second);
    StorePair(dst[0], k, first);
    StorePair(dst[1], k, second);
  }
}

}  // namespace

template <class V>
void RunRealRows(const DftSpec1DReal& spec, const SourceRows<V> (&src)[2], const DestinationRows<V> (&dst)[2],
                 void* scratch) {
  const bool even = spec.length % 2 == 0;
  if (spec.plan.method == Method::Small) {
    RunSmallRows(src[0], dst[0], spec.length);
  } else if (spec.plan.method == Method::Direct && even) {
    RunEvenRowsDirectly(spec, src[0], dst[0], static_cast<Complex<V>*>(scratch));
  } else if (spec.plan.method == Method::Direct) {
    RunOddRowsDirectly(spec, src[0], dst[0], static_cast<V*>(scratch));
  } else if (even) {
    RunEvenRows(spec, src[0], dst[0], static_cast<Complex<V>*>(scratch));
  } else {
    RunPairedRows(spec, src, dst, static_cast<Complex<V>*>(scratch));
  }
}

template void RunRealRows(const DftSpec1DReal&, const SourceRows<float> (&)[2], const DestinationRows<float> (&)[2],
                          void*);
template void RunRealRows(const DftSpec1DReal&, const SourceRows<F32x4> (&)[2], const DestinationRows<F32x4> (&)[2],
                          void*);

}  // namespace norvala::dft
