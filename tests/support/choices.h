#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <random>

#include "norvala.h"

namespace norvala_test {

// Where the arguments of a call come from: an endless pseudo-random sequence, or the bytes of a fuzzer's input (zeros
// once they are used up). The same on every platform.
class Choices {
 public:
  explicit Choices(std::uint32_t seed) : random_(seed) {}
  Choices(const std::uint8_t* data, std::size_t size) : data_(data), size_(size), finite_(true) {}

  std::uint32_t Word();
  int Int(int low, int high);  // both included
  bool OneIn(int n) { return Int(0, n - 1) == n - 1; }
  double Real(double low, double high);

  template <class T>
  T OneOf(std::initializer_list<T> values) {
    return values.begin()[Int(0, static_cast<int>(values.size()) - 1)];
  }

  // Sizes worth testing: mostly small, now and then some hundreds, widths up to some thousands.
  int Width(int small = 70);
  int Height(int small = 12);
  RegionSize Size() {
    const int width = Width();
    return {width, Height()};
  }

 private:
  std::uint8_t Byte();

  std::mt19937 random_;
  const std::uint8_t* data_ = nullptr;
  std::size_t size_ = 0;
  bool finite_ = false;
};

}  // namespace norvala_test
