#include "analysis/dft/large_prime.h"

#include <utility>

#include "analysis/dft/roots.h"

namespace norvala::dft {

std::int64_t LargePrimeSpec::scratchSize() const {
  return fft.scratchSize() + fft.length() * static_cast<std::int64_t>(sizeof(Root)) + 16;
}

StatusCode LargePrimeSpec::Create(std::int32_t newLength, const Root* roots) {
  constexpr std::int32_t kUnnormalised = 8;
  constexpr std::int32_t kHint = 0;
  length = newLength;
  std::int32_t order = 0;
  while ((std::int64_t{1} << order) < 2 * std::int64_t{length} - 1) ++order;
  const AlignedVector<Root> fftRoots = MakeRoots(std::int64_t{1} << order);
  if (!fftRoots) return StatusCode::WorkBufferUnavailable;
  const StatusCode status = fft.Create(order, kUnnormalised, kHint, fftRoots.data(), 1);
  if (status != StatusCode::Success) return status;

  chirp = AlignedVector<Root>(length);
  if (!chirp) return StatusCode::WorkBufferUnavailable;
  const std::int64_t period = 2 * std::int64_t{length};
  std::int64_t index = 0;  // k^2 mod 2 m
  for (std::int64_t k = 0; k < length; ++k) {
    chirp[static_cast<std::ptrdiff_t>(k)] = roots[index];
    index = (index + 2 * k + 1) % period;
  }
  return MakeKernel();
}

StatusCode LargePrimeSpec::MakeKernel() {
  const auto size = static_cast<std::ptrdiff_t>(fft.length());
  AlignedVector<Root> values(size);
  AlignedVector<Root> work(size);
  if (!values || !work) return StatusCode::WorkBufferUnavailable;
  for (std::ptrdiff_t k = 0; k < size; ++k) values[k] = Root{};
  for (std::ptrdiff_t k = 0; k < length; ++k) {
    values[k] = Conjugate(chirp[k]);
    if (k > 0) values[size - k] = Conjugate(chirp[k]);
  }
  kernel = fft.Run(values.data(), work.data()) == values.data() ? std::move(values) : std::move(work);
  const double scale = 1.0 / static_cast<double>(size);
  for (std::ptrdiff_t k = 0; k < size; ++k) {
    kernel[k] = {static_cast<float>(kernel[k].re * scale), static_cast<float>(kernel[k].im * scale)};
  }
  return StatusCode::Success;
}

template <class V>
void LargePrimeSpec::Run(Complex<V>* data, Complex<V>* work) const {
  const auto size = static_cast<std::ptrdiff_t>(fft.length());
  for (std::ptrdiff_t k = 0; k < length; ++k) work[k] = Multiply(data[k], Broadcast<V>(chirp[k]));
  for (std::ptrdiff_t k = length; k < size; ++k) work[k] = {V{}, V{}};
  Complex<V>* const product = fft.Run(work, work + size);
  // The inverse transform is the conjugate of the forward one of the conjugate.
  for (std::ptrdiff_t k = 0; k < size; ++k) {
    product[k] = Conjugate(Multiply(product[k], Broadcast<V>(kernel[k])));
  }
  const Complex<V>* const convolved = fft.Run(product, product == work ? work + size : work);
  for (std::ptrdiff_t k = 0; k < length; ++k) {
    data[k] = Multiply(Conjugate(convolved[k]), Broadcast<V>(chirp[k]));
  }
}

template void LargePrimeSpec::Run(Complex<float>*, Complex<float>*) const;
template void LargePrimeSpec::Run(ComplexLanes*, ComplexLanes*) const;

}  // namespace norvala::dft
