#pragma once

#include <cstddef>
#include <cstring>

#include "frame/lanes.h"
#include "frame/memory.h"

// Rows of floats at any address, one for each lane: loads turn rows into lanes, stores turn them back.

namespace norvala::dft {

template <class V>
struct RowLanes;

template <>
struct RowLanes<float> {
  static constexpr int kRows = 1;
  unsigned char* rows[kRows];

  float Load(std::ptrdiff_t x) const { return LoadUnaligned<float>(rows[0] + x * 4); }
  void Store(std::ptrdiff_t x, float value) const { StoreUnaligned(rows[0] + x * 4, value); }
  // Elements x .. x + 3.
  void LoadFour(std::ptrdiff_t x, float (&v)[4]) const { std::memcpy(v, rows[0] + x * 4, sizeof v); }
  void StoreFour(std::ptrdiff_t x, const float (&v)[4]) const { std::memcpy(rows[0] + x * 4, v, sizeof v); }
};

template <>
struct RowLanes<F32x4> {
  static constexpr int kRows = 4;
  unsigned char* rows[kRows];

  F32x4 Load(std::ptrdiff_t x) const {
    return F32x4{LoadUnaligned<float>(rows[0] + x * 4), LoadUnaligned<float>(rows[1] + x * 4),
                 LoadUnaligned<float>(rows[2] + x * 4), LoadUnaligned<float>(rows[3] + x * 4)};
  }
  void Store(std::ptrdiff_t x, F32x4 value) const {
    for (int i = 0; i < kRows; ++i) StoreUnaligned(rows[i] + x * 4, static_cast<float>(value[i]));
  }
  void LoadFour(std::ptrdiff_t x, F32x4 (&v)[4]) const {
    for (int i = 0; i < kRows; ++i) v[i] = LoadUnaligned<F32x4>(rows[i] + x * 4);
    TransposeLanes(v);
  }
  void StoreFour(std::ptrdiff_t x, F32x4 (&v)[4]) const {
    TransposeLanes(v);
    for (int i = 0; i < kRows; ++i) StoreUnaligned(rows[i] + x * 4, v[i]);
  }
};

}  // namespace norvala::dft
