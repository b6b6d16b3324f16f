#pragma once

#include <cstddef>

namespace norvala {

// The runtime's heap. Only the aligned allocator calls it; a program that links its own definitions instead of
// platform_heap.cpp sees, and may refuse, every allocation of the library.
void* PlatformAllocate(std::size_t bytes);
void PlatformRelease(void* block);

}  // namespace norvala
