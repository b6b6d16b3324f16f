#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>

#include "norvala.h"

namespace norvala_test {

// Where the arguments of a call come from: an endless pseudo-random sequence, or the bytes of a fuzzer's input (zeros
// once they are used up). The same on every platform.
class Choices {
 public:
  explicit Choices(std::uint32_t seed);
  Choices(const std::uint8_t* data, std::size_t size);

  std::uint32_t Word();
  int Int(int low, int high);  // both included
  bool OneIn(int n) { return Int(0, n - 1) == n - 1; }
  double Real(double low, double high) { return low + (high - low) * (Word() * 0x1p-32); }

  template <class List>
  const auto& Pick(const List& list) {
    return list.begin()[Int(0, static_cast<int>(list.size()) - 1)];
  }
  template <class T>
  T OneOf(std::initializer_list<T> values) {
    return Pick(values);
  }

  // Sizes worth testing: mostly small, now and then some hundreds, widths up to some thousands.
  int Width(int small = 70) { return OneIn(32) ? Int(1, 3000) : OneIn(8) ? Int(1, 5 * small) : Int(1, small); }
  int Height(int small = 12) { return OneIn(16) ? Int(1, 5 * small) : Int(1, small); }
  RegionSize Size() {
    const int width = Width();
    return {width, Height()};
  }

 private:
  std::function<std::uint8_t()> byte_;
};

}  // namespace norvala_test
