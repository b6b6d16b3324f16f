#include "analysis/dft/bluestein.h"

#include <utility>

namespace norvala::dft {

StatusCode BluesteinPlan::Create(std::int32_t newLength, std::ptrdiff_t /*stride*/, SharedRoots& sharedRoots) {
  length = newLength;
  const std::int64_t period = 2 * std::int64_t{length};
  int order = 0;
  while ((std::int64_t{1} << order) < period - 1) ++order;
  if (order > 30) return StatusCode::BadTransformOrder;
  const std::int32_t size = std::int32_t{1} << order;
  Factorise(size, fft.factors);
  SharedRoots fftRoots;
  const StatusCode status = fft.Create(size, 1, fftRoots);
  if (status != StatusCode::Success) return status;

  const Root* const roots = sharedRoots.OfOrder(period);
  if (roots == nullptr) return StatusCode::WorkBufferUnavailable;
  chirp = AlignedVector<Root>(length);
  if (!chirp) return StatusCode::WorkBufferUnavailable;
  std::int64_t index = 0;  // k^2 mod 2 m
  for (std::ptrdiff_t k = 0; k < length; ++k) {
    chirp[k] = roots[index];
    index = (index + 2 * std::int64_t{k} + 1) % period;
  }

  AlignedVector<Root> values(size);
  AlignedVector<Root> work(size);
  if (!values || !work) return StatusCode::WorkBufferUnavailable;
  for (std::ptrdiff_t k = 0; k < size; ++k) values[k] = Root{};
  for (std::ptrdiff_t k = 0; k < length; ++k) {
    values[k] = values[(size - k) % size] = Conjugate(chirp[k]);
  }
  kernel = fft.Run(values.data(), work.data()) == values.data() ? std::move(values) : std::move(work);
  const double scale = 1.0 / static_cast<double>(size);
  for (std::ptrdiff_t k = 0; k < size; ++k) {
    kernel[k] = {static_cast<float>(kernel[k].re * scale), static_cast<float>(kernel[k].im * scale)};
  }
  return StatusCode::Success;
}

template <class V>
Complex<V>* BluesteinPlan::Run(Complex<V>* data, Complex<V>* work) const {
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

template Complex<float>* BluesteinPlan::Run(Complex<float>*, Complex<float>*) const;
template ComplexLanes* BluesteinPlan::Run(ComplexLanes*, ComplexLanes*) const;

}  // namespace norvala::dft
