#pragma once

#include <cmath>
#include <complex>
#include <cstdint>
#include <map>
#include <vector>

namespace norvala_test {

using Spectrum = std::vector<std::complex<double>>;

inline const Spectrum& Roots(int order) {
  static std::map<int, Spectrum> tables;
  Spectrum& table = tables[order];
  for (int k = static_cast<int>(table.size()); k < order; ++k) {
    const long double angle = -2.0L * 3.14159265358979323846264338327950288L * k / order;
    table.emplace_back(static_cast<double>(std::cos(angle)), static_cast<double>(std::sin(angle)));
  }
  return table;
}

// The transform of `n` values in double precision: the defining sum, split by the smallest prime factor of the length
// so that large sizes can be checked too.
inline Spectrum ReferenceDft(const std::complex<double>* x, int n, int stride = 1) {
  int factor = 2;
  while (factor < n && n % factor != 0) ++factor;
  const Spectrum& roots = Roots(n);
  Spectrum result(static_cast<std::size_t>(n));
  if (factor >= n) {
    for (int k = 0; k < n; ++k) {
      std::complex<double> sum = 0;
      for (int j = 0; j < n; ++j) {
        const auto w = roots[static_cast<std::size_t>(static_cast<std::int64_t>(j) * k % n)];
        const std::complex<double> v = x[static_cast<std::ptrdiff_t>(j) * stride];
        sum +=
            std::complex<double>(v.real() * w.real() - v.imag() * w.imag(), v.real() * w.imag() + v.imag() * w.real());
      }
      result[static_cast<std::size_t>(k)] = sum;
    }
    return result;
  }
  const int part = n / factor;
  for (int j = 0; j < factor; ++j) {
    const Spectrum sub = ReferenceDft(x + static_cast<std::ptrdiff_t>(j) * stride, part, stride * factor);
    for (int k = 0; k < n; ++k) {
      result[static_cast<std::size_t>(k)] += sub[static_cast<std::size_t>(k % part)] *
                                             roots[static_cast<std::size_t>(static_cast<std::int64_t>(j) * k % n)];
    }
  }
  return result;
}

// The transform of a real image, row after row.
inline Spectrum ReferenceDft2D(const std::vector<float>& image, int width, int height) {
  Spectrum spectrum(image.begin(), image.end());
  for (int y = 0; y < height; ++y) {
    const auto row = spectrum.begin() + static_cast<std::ptrdiff_t>(y) * width;
    const Spectrum result = ReferenceDft(&*row, width);
    std::copy(result.begin(), result.end(), row);
  }
  for (int x = 0; x < width; ++x) {
    const Spectrum result = ReferenceDft(spectrum.data() + x, height, width);
    for (int y = 0; y < height; ++y) {
      spectrum[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] =
          result[static_cast<std::size_t>(y)];
    }
  }
  return spectrum;
}

// Collects the relative error of a result in the Euclidean norm.
class RelativeError {
 public:
  void Add(std::complex<double> expected, std::complex<double> actual) {
    error_ += std::norm(actual - expected);
    size_ += std::norm(expected);
  }
  double value() const { return size_ == 0.0 ? std::sqrt(error_) : std::sqrt(error_ / size_); }

 private:
  double error_ = 0.0;
  double size_ = 0.0;
};

}  // namespace norvala_test
