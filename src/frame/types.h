#pragma once

#include <cstddef>
#include <cstdint>

#include "norvala.h"

namespace norvala {

// Host memory may be misaligned for its element type; every access to it goes through this alias, which tells the
// compiler to assume byte alignment and no type-based aliasing.
template <class T>
struct UnalignedElement {
  typedef T type __attribute__((aligned(1), may_alias));
};
template <class T>
using Unaligned = typename UnalignedElement<T>::type;

// Row `y` of an image whose rows lie `step` bytes apart. The offset is formed in unsigned arithmetic, so that steps
// which no check bounds (zero, negative, huge) wrap as addresses do.
template <class T>
inline Unaligned<T>* Row(T* image, std::ptrdiff_t step, std::ptrdiff_t y) {
  const auto address = reinterpret_cast<std::uintptr_t>(image);
  const auto offset = static_cast<std::uintptr_t>(step) * static_cast<std::uintptr_t>(y);
  return reinterpret_cast<Unaligned<T>*>(address + offset);
}

inline bool IsEmpty(RegionSize size) { return size.width < 1 || size.height < 1; }

// Asks for the cache line at an offset from an address; it may lie outside of what the address belongs to.
inline void Prefetch(const void* from, std::ptrdiff_t offset) {
  __builtin_prefetch(
      reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(from) + static_cast<std::uintptr_t>(offset)));
}

}  // namespace norvala
