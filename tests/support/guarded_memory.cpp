#include "support/guarded_memory.h"

#include <cstdlib>
#include <utility>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace norvala_test {
namespace {

constexpr std::size_t kPage = 4096;

unsigned char* MapWithGuards(std::size_t size) {
#ifdef _WIN32
  void* mapping = VirtualAlloc(nullptr, size, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
  DWORD old;
  const bool ok = mapping != nullptr && VirtualProtect(mapping, kPage, PAGE_NOACCESS, &old) != 0 &&
                  VirtualProtect(static_cast<char*>(mapping) + size - kPage, kPage, PAGE_NOACCESS, &old) != 0;
#else
  void* mapping = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  const bool ok = mapping != MAP_FAILED && mprotect(mapping, kPage, PROT_NONE) == 0 &&
                  mprotect(static_cast<char*>(mapping) + size - kPage, kPage, PROT_NONE) == 0;
#endif
  if (!ok) std::abort();
  return static_cast<unsigned char*>(mapping);
}

}  // namespace

GuardedMemory::GuardedMemory(std::size_t bytes, Flush flush) : size_(bytes) {
  const std::size_t payload = (bytes + kPage - 1) / kPage * kPage;
  mappingSize_ = payload + 2 * kPage;
  mapping_ = MapWithGuards(mappingSize_);
  data_ = mapping_ + kPage + (flush == Flush::End ? payload - bytes : 0);
}

GuardedMemory::GuardedMemory(GuardedMemory&& other) noexcept
    : mapping_(std::exchange(other.mapping_, nullptr)),
      mappingSize_(other.mappingSize_),
      data_(other.data_),
      size_(other.size_) {}

GuardedMemory::~GuardedMemory() {
  if (mapping_ == nullptr) return;
#ifdef _WIN32
  VirtualFree(mapping_, 0, MEM_RELEASE);
#else
  munmap(mapping_, mappingSize_);
#endif
}

}  // namespace norvala_test
