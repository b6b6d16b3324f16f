#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// Access to memory that the caller owns: it may be misaligned for its elements, and rows lie any number of bytes apart.

namespace norvala {

// T as it lies in memory that may be misaligned for it and hold values of other types: its alignment is 1, and it may
// alias every type. A plain T& or T* must not refer to it.
template <class T>
struct UnalignedElement {
  typedef T type __attribute__((aligned(1), may_alias));
};
template <class T>
using Unaligned = typename UnalignedElement<T>::type;

// Loads and stores a value at any address: an element, a vector or a whole record.
template <class T>
inline T LoadUnaligned(const void* source) {
  T value;
  std::memcpy(&value, source, sizeof value);
  return value;
}
template <class T>
inline void StoreUnaligned(void* destination, T value) {
  std::memcpy(destination, &value, sizeof value);
}

// Row `y` of an image whose rows lie `step` bytes apart. The offset is formed in unsigned arithmetic, so that steps
// which no check bounds (zero, negative, huge) wrap as addresses do.
template <class T>
inline Unaligned<T>* Row(T* image, std::ptrdiff_t step, std::ptrdiff_t y) {
  const auto address = reinterpret_cast<std::uintptr_t>(image);
  const auto offset = static_cast<std::uintptr_t>(step) * static_cast<std::uintptr_t>(y);
  return reinterpret_cast<Unaligned<T>*>(address + offset);
}

// The least multiple of `unit`, a power of two, that is not below the value.
template <class T>
constexpr T AlignUp(T value, T unit) {
  return (value + unit - 1) & ~(unit - 1);
}

// The first address from `address` on that is a multiple of `unit`.
template <class T>
inline T* AlignUp(T* address, std::size_t unit) {
  return reinterpret_cast<T*>(AlignUp(reinterpret_cast<std::uintptr_t>(address), std::uintptr_t{unit}));
}

// Hints that the cache line at an offset from an address is needed soon. It need not belong to anything.
inline void Prefetch(const void* from, std::ptrdiff_t offset) {
  __builtin_prefetch(
      reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(from) + static_cast<std::uintptr_t>(offset)));
}

}  // namespace norvala
