#pragma once

#include <cstddef>
#include <cstring>

#include "frame/lanes.h"

// Rows of floats at any address, one for each lane: loads turn rows into lanes, stores turn them back.

namespace norvala::dft {

template <class V>
struct RowLanes;

template <>
struct RowLanes<float> {
  static constexpr int kRows = 1;
  unsigned char* rows[kRows];

  float Load(std::ptrdiff_t x) const { return LoadLanes<float>(rows[0] + x * 4); }
  void Store(std::ptrdiff_t x, float value) const { StoreLanes(rows[0] + x * 4, value); }
  // Elements x .. x + 3.
  void LoadFour(std::ptrdiff_t x, float (&v)[4]) const { std::memcpy(v, rows[0] + x * 4, sizeof v); }
  void StoreFour(std::ptrdiff_t x, const float (&v)[4]) const { std::memcpy(rows[0] + x * 4, v, sizeof v); }
};

inline void Transpose(F32x4 (&v)[4]) {
  const F32x4 a = __builtin_shufflevector(v[0], v[1], 0, 4, 1, 5);
  const F32x4 b = __builtin_shufflevector(v[0], v[1], 2, 6, 3, 7);
  const F32x4 c = __builtin_shufflevector(v[2], v[3], 0, 4, 1, 5);
  const F32x4 d = __builtin_shufflevector(v[2], v[3], 2, 6, 3, 7);
  v[0] = __builtin_shufflevector(a, c, 0, 1, 4, 5);
  v[1] = __builtin_shufflevector(a, c, 2, 3, 6, 7);
  v[2] = __builtin_shufflevector(b, d, 0, 1, 4, 5);
  v[3] = __builtin_shufflevector(b, d, 2, 3, 6, 7);
}

template <>
struct RowLanes<F32x4> {
  static constexpr int kRows = 4;
  unsigned char* rows[kRows];

  F32x4 Load(std::ptrdiff_t x) const {
    return F32x4{LoadLanes<float>(rows[0] + x * 4), LoadLanes<float>(rows[1] + x * 4),
                 LoadLanes<float>(rows[2] + x * 4), LoadLanes<float>(rows[3] + x * 4)};
  }
  void Store(std::ptrdiff_t x, F32x4 value) const {
    for (int i = 0; i < kRows; ++i) StoreLanes(rows[i] + x * 4, static_cast<float>(value[i]));
  }
  void LoadFour(std::ptrdiff_t x, F32x4 (&v)[4]) const {
    for (int i = 0; i < kRows; ++i) v[i] = LoadLanes<F32x4>(rows[i] + x * 4);
    Transpose(v);
  }
  void StoreFour(std::ptrdiff_t x, F32x4 (&v)[4]) const {
    Transpose(v);
    for (int i = 0; i < kRows; ++i) StoreLanes(rows[i] + x * 4, v[i]);
  }
};

}  // namespace norvala::dft
