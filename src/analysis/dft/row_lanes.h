#pragma once

#include <cstddef>

#include "frame/lanes.h"
#include "frame/memory.h"

// Rows of floats at any address, one for each lane of V: loads turn rows into lanes, stores turn them back.

namespace norvala::dft {

template <class V>
inline constexpr int kLanes = sizeof(V) / sizeof(float);

template <class V>
struct SourceRows {
  const unsigned char* rows[kLanes<V>];

  V Load(std::ptrdiff_t x) const {
    const auto lane = [&](int i) { return LoadUnaligned<float>(rows[i] + x * 4); };
    if constexpr (kLanes<V> == 1) {
      return lane(0);
    } else {
      return V{lane(0), lane(1), lane(2), lane(3)};
    }
  }
  // Elements x .. x + 3.
  void LoadFour(std::ptrdiff_t x, V (&v)[4]) const {
    if constexpr (kLanes<V> == 1) {
      for (int i = 0; i < 4; ++i) v[i] = Load(x + i);
    } else {
      for (int i = 0; i < 4; ++i) v[i] = LoadUnaligned<V>(rows[i] + x * 4);
      TransposeLanes(v);
    }
  }
};

template <class V>
struct DestinationRows {
  unsigned char* rows[kLanes<V>];

  void Store(std::ptrdiff_t x, V value) const {
    if constexpr (kLanes<V> == 1) {
      StoreUnaligned(rows[0] + x * 4, value);
    } else {
      for (int i = 0; i < kLanes<V>; ++i) StoreUnaligned(rows[i] + x * 4, static_cast<float>(value[i]));
    }
  }
  // Elements x .. x + 3.
  void StoreFour(std::ptrdiff_t x, V (&v)[4]) const {
    if constexpr (kLanes<V> == 1) {
      for (int i = 0; i < 4; ++i) Store(x + i, v[i]);
    } else {
      TransposeLanes(v);
      for (int i = 0; i < 4; ++i) StoreUnaligned(rows[i] + x * 4, v[i]);
    }
  }
};

}  // namespace norvala::dft
