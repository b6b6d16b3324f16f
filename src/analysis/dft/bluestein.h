#pragma once

#include <bit>
#include <utility>

#include "analysis/dft/lanes.h"
#include "analysis/dft/stockham.h"
#include "frame/aligned_memory.h"
#include "frame/status.h"

namespace norvala::dft {

// A transform of any length m as a convolution with a chirp, through transforms of a power of two (Bluestein, A linear
// filtering approach to the computation of discrete Fourier transform, 1970): with c[k] = exp(-pi i k^2 / m),
// X[k] = c[k] * sum over j of x[j] c[j] conj(c[k - j]).
struct BluesteinPlan {
  std::int32_t length = 0;     // m
  StockhamPlan fft;            // of the smallest power of two M not below 2 m - 1
  AlignedVector<Root> chirp;   // c
  AlignedVector<Root> kernel;  // the transform of conj(c), wrapped around M, divided by M

  // The chirp is taken from the roots of order 2 m.
  StatusCode Create(std::int32_t newLength, SharedRoots& sharedRoots) {
    length = newLength;
    const std::int64_t period = 2 * std::int64_t{length};
    const auto size = static_cast<std::int64_t>(std::bit_ceil(static_cast<std::uint64_t>(period - 1)));
    if (size > std::int64_t{1} << 30) return StatusCode::BadTransformOrder;
    fft.Factorise(static_cast<std::int32_t>(size));
    SharedRoots fftRoots;
    const StatusCode status = fft.Create(1, fftRoots);
    if (status != StatusCode::Success) return status;

    const Root* const roots = sharedRoots.OfOrder(period);
    chirp = AlignedVector<Root>(length);
    AlignedVector<Root> values(size), work(size);
    if (roots == nullptr || !chirp || !values || !work) return StatusCode::WorkBufferUnavailable;
    for (std::ptrdiff_t k = 0; k < size; ++k) values[k] = Root{};
    std::int64_t index = 0;  // k^2 mod 2 m
    for (std::ptrdiff_t k = 0; k < length; ++k) {
      chirp[k] = roots[index];
      index = (index + 2 * std::int64_t{k} + 1) % period;
      values[k] = values[static_cast<std::ptrdiff_t>((size - k) % size)] = Conjugate(chirp[k]);
    }
    kernel = fft.Run(values.data(), work.data()) == values.data() ? std::move(values) : std::move(work);
    const double scale = 1.0 / static_cast<double>(size);
    for (std::ptrdiff_t k = 0; k < size; ++k) kernel[k] = Narrow(Widen(kernel[k]) * scale);
    return StatusCode::Success;
  }

  // Transforms `data` in place and returns it. `work` has room for 2 M values.
  template <class V>
  Complex<V>* Run(Complex<V>* data, Complex<V>* work) const {
    const std::ptrdiff_t size = fft.length;
    for (std::ptrdiff_t k = 0; k < length; ++k) work[k] = Multiply(data[k], chirp[k]);
    for (std::ptrdiff_t k = length; k < size; ++k) work[k] = {V{}, V{}};
    Complex<V>* const product = fft.Run(work, work + size);
    // The inverse transform is the conjugate of the forward one of the conjugate.
    for (std::ptrdiff_t k = 0; k < size; ++k) product[k] = Conjugate(Multiply(product[k], kernel[k]));
    const Complex<V>* const convolved = fft.Run(product, product == work ? work + size : work);
    for (std::ptrdiff_t k = 0; k < length; ++k) data[k] = Multiply(Conjugate(convolved[k]), chirp[k]);
    return data;
  }
};

}  // namespace norvala::dft
