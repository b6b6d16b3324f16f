#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "frame/dispatch.h"
#include "frame/memory.h"
#include "frame/platform_heap.h"
#include "frame/types.h"

namespace norvala {

// Every buffer of the library starts on this boundary, and so does every row of a two-dimensional one.
inline constexpr std::size_t kBufferAlignment = 32;

// Whether an allocator hints that the line 128 bytes past the start is needed soon. Addresses and steps are the same.
enum class AllocationHint { None, Prefetch };

// Null where the block cannot be had. The word before the aligned start holds the raw block's address. A block is asked
// for with room for that word and for the distance to the next boundary, so the word always lies inside the block and
// the elements always fit.
inline void* AllocateAligned(std::uint64_t bytes, AllocationHint hint) {
  constexpr std::uint64_t kOverhead = kBufferAlignment + sizeof(void*);
  if (bytes > UINT32_MAX - kOverhead) return nullptr;
  void* const raw = PlatformAllocate(static_cast<std::size_t>(bytes + kOverhead));
  if (raw == nullptr) return nullptr;
  unsigned char* const aligned = AlignUp(static_cast<unsigned char*>(raw) + sizeof raw, kBufferAlignment);
  StoreUnaligned(aligned - sizeof raw, raw);
  if (hint == AllocationHint::Prefetch) Prefetch(aligned, 128);
  return aligned;
}

inline void FreeAligned(void* aligned) {
  if (aligned != nullptr) PlatformRelease(LoadUnaligned<void*>(static_cast<unsigned char*>(aligned) - sizeof aligned));
}

template <int elementSize, AllocationHint hint = AllocationHint::None>
void* Malloc1D(std::int32_t count) {
  return count < 1 ? nullptr : AllocateAligned(static_cast<std::uint64_t>(count) * elementSize, hint);
}

template <int elementSize, AllocationHint hint = AllocationHint::None>
void* Malloc2D(std::int32_t width, std::int32_t height, std::int32_t* step) {
  if (step == nullptr) return nullptr;
  StoreUnaligned<std::int32_t>(step, 0);
  if (width < 1 || height < 1) return nullptr;
  const auto rowStep = AlignUp<std::uint64_t>(static_cast<std::uint64_t>(width) * elementSize, kBufferAlignment);
  if (rowStep > INT32_MAX) return nullptr;
  StoreUnaligned(step, static_cast<std::int32_t>(rowStep));
  return AllocateAligned(rowStep * static_cast<std::uint64_t>(height), hint);
}

inline constexpr PrimitiveTable kMalloc1DBW8{Malloc1D<1>, Malloc1D<1, AllocationHint::Prefetch>};
inline constexpr PrimitiveTable kMalloc1DFLOAT32{Malloc1D<4>, Malloc1D<4, AllocationHint::Prefetch>};
inline constexpr PrimitiveTable kMalloc1DINT32{Malloc1D<4>, Malloc1D<4, AllocationHint::Prefetch>};
inline constexpr PrimitiveTable kMalloc1DFLOAT64{Malloc1D<8>, Malloc1D<8, AllocationHint::Prefetch>};
inline constexpr PrimitiveTable kFree1D{FreeAligned};
inline constexpr PrimitiveTable kMalloc2DBW8{Malloc2D<1>, Malloc2D<1, AllocationHint::Prefetch>};
inline constexpr PrimitiveTable kMalloc2DFLOAT32{Malloc2D<4>, Malloc2D<4, AllocationHint::Prefetch>};
inline constexpr PrimitiveTable kMalloc2DComplexFLOAT32Number{Malloc2D<8>, Malloc2D<8, AllocationHint::Prefetch>};
inline constexpr PrimitiveTable kFree2D{FreeAligned};

// A vector from the aligned allocator, released at the end of its scope. Holds null when the count is below 1, does
// not fit or cannot be had. The elements are not initialised. There are no exceptions: whoever makes one tests it and
// returns a failure, as a rule WorkBufferUnavailable, before the first write, so that a call without memory changes
// nothing.
template <class T>
class AlignedVector {
 public:
  AlignedVector() = default;
  explicit AlignedVector(std::int64_t count) {
    if (count < 1 || count > INT32_MAX) return;
    // In units of the largest elements that the allocator has.
    const std::int64_t units = (count * static_cast<std::int64_t>(sizeof(T)) + 7) / 8;
    if (units <= INT32_MAX) data_ = static_cast<T*>(kMalloc1DFLOAT64(static_cast<std::int32_t>(units)));
  }
  AlignedVector(AlignedVector&& other) noexcept : data_(other.Release()) {}
  AlignedVector& operator=(AlignedVector&& other) noexcept {
    std::swap(data_, other.data_);
    return *this;
  }
  ~AlignedVector() { kFree1D(data_); }

  explicit operator bool() const { return data_ != nullptr; }
  T* data() const { return data_; }
  T& operator[](std::ptrdiff_t i) const { return data_[i]; }

  // Gives up ownership.
  T* Release() { return std::exchange(data_, nullptr); }

 private:
  T* data_ = nullptr;
};

}  // namespace norvala
