#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>

#include "bench.h"

namespace norvala_bench {
namespace {

// Address space; only what is used becomes memory.
constexpr std::size_t kReserved = std::size_t{256} << 20;
constexpr std::size_t kPage = 4096;
// Every block starts at another place of its page than the ones before it: a load that lies a multiple of 4096 bytes
// behind a store in flight waits for it.
constexpr std::size_t kStagger = 1088;

struct Arena {
  std::uint8_t* first = nullptr;
  std::size_t used = 0;
  std::size_t blocks = 0;
  int live = 0;
};

std::uint8_t* Reserve() {
  void* const memory =
      mmap(nullptr, kReserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  madvise(memory, kReserved, MADV_HUGEPAGE);
  return static_cast<std::uint8_t*>(memory);
}

}  // namespace

std::shared_ptr<void> TakeImageMemory(std::size_t bytes) {
  static Arena arena;
  if (arena.first == nullptr) arena.first = Reserve();
  const std::size_t start = (arena.used + kPage - 1) / kPage * kPage + arena.blocks * kStagger % kPage;
  if (arena.first == nullptr || start > kReserved || bytes > kReserved - start) {
    std::fputs("norvala_bench: out of memory for images\n", stderr);
    std::abort();
  }
  arena.used = start + bytes;
  ++arena.blocks;
  ++arena.live;
  return {arena.first + start, [](void*) {
            if (--arena.live == 0) arena.used = arena.blocks = 0;
          }};
}

}  // namespace norvala_bench
