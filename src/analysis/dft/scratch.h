#pragma once

#include <cstddef>
#include <cstdint>

#include "frame/aligned_memory.h"

namespace norvala::dft {

inline constexpr std::size_t kScratchAlignment = 16;

// A caller's scratch from its next 16-byte boundary on, or scratch of its own where the caller gives none.
class Scratch {
 public:
  Scratch(void* given, std::int64_t size)
      : own_(given == nullptr ? (size + kUnit - 1) / kUnit : 0), data_(reinterpret_cast<unsigned char*>(own_.data())) {
    if (given == nullptr) return;
    const std::uintptr_t past = reinterpret_cast<std::uintptr_t>(given) + kScratchAlignment - 1;
    data_ = reinterpret_cast<unsigned char*>(past & ~static_cast<std::uintptr_t>(kScratchAlignment - 1));
  }

  explicit operator bool() const { return data_ != nullptr; }
  unsigned char* data() const { return data_; }

 private:
  // A vector of bytes ends at 2 GiB.
  static constexpr std::int64_t kUnit = sizeof(std::uint64_t);

  AlignedVector<std::uint64_t> own_;
  unsigned char* data_;
};

}  // namespace norvala::dft
