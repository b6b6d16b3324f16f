#pragma once

#include "analysis/dft/complex_lanes.h"
#include "analysis/dft/stockham.h"

namespace norvala::dft {

// Transforms 1 to 4 complex values in place.
template <class V>
inline void RunSmall(Complex<V>* data, std::ptrdiff_t length) {
  const auto run = [data]<int n>(Complex<V>(&x)[n]) {
    for (int j = 0; j < n; ++j) x[j] = data[j];
    Butterfly(x);
    for (int j = 0; j < n; ++j) data[j] = x[j];
  };
  Complex<V> two[2], three[3], four[4];
  switch (length) {
    case 2:
      run(two);
      break;
    case 3:
      run(three);
      break;
    case 4:
      run(four);
      break;
    default:
      break;
  }
}

}  // namespace norvala::dft
