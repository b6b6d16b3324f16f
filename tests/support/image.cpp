#include "support/image.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <random>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace norvala_test {
namespace {

constexpr std::size_t kPage = 4096;
constexpr int kMostMisaligned = 3;

// Pages between two no-access pages.
unsigned char* Map(std::size_t size) {
#ifdef _WIN32
  void* const mapping = VirtualAlloc(nullptr, size + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS);
  auto* const data = static_cast<unsigned char*>(mapping) + kPage;
  const bool ok = VirtualAlloc(data, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
#else
  void* const mapping = mmap(nullptr, size + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  auto* const data = static_cast<unsigned char*>(mapping) + kPage;
  const bool ok = mprotect(data, size, PROT_READ | PROT_WRITE) == 0;
#endif
  if (!ok) std::abort();
  return data;
}

// A value at which code goes wrong, or an ordinary one of some magnitude.
template <class T>
T Noise(std::mt19937& random) {
  const auto word = static_cast<std::uint32_t>(random());
  if constexpr (std::is_floating_point_v<T>) {
    using Limits = std::numeric_limits<T>;
    constexpr T kSpecial[] = {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN(), -0.0,    0,
                              T(1e-40),           T(3.4028235e38),     T(-3.4028235e38),    65534.5, 254.5};
    const auto number = static_cast<T>(static_cast<std::int32_t>(word) >> 8);
    if (word % 64 == 0) return kSpecial[(word >> 6) % std::size(kSpecial)];
    return number * (word % 64 == 1 ? T(1e30) : word % 2 != 0 ? T(0x1p-14) : T(0.0078125));
  }
  return static_cast<T>(word);
}

// Mappings that can be used again, by size. They live as long as their thread.
thread_local std::multimap<std::size_t, unsigned char*> spare;

// A step that is served; it keeps the rows within memory that can be had.
int DrawStep(Choices& c, RegionSize size, const Around& around, int elementSize) {
  const int payload = std::max(size.width + (around.left + around.right), size.width) * elementSize;
  const int kind = c.Int(0, 9);
  if (kind == 0) return payload + c.Int(0, 17);
  if (kind == 1 && around.steps != Steps::Row) return elementSize * c.Int(1, payload / elementSize);
  if (kind == 2) return around.steps == Steps::Any ? elementSize * c.Int(-2 * (payload / elementSize), 1) : payload + 1;
  if (kind == 3 && size.height + around.above + around.below == 1) return INT32_MAX;
  return kind == 4 || kind == 5 ? payload + elementSize * c.Int(0, 5) : payload;
}

}  // namespace

GuardedPages::GuardedPages(std::size_t bytes) : size_((std::max<std::size_t>(bytes, 1) + kPage - 1) / kPage * kPage) {
  const auto found = spare.extract(size_);
  const auto putBack = [size = size_](unsigned char* pages) { spare.emplace(size, pages); };
  pages_ = {found.empty() ? Map(size_) : found.mapped(), putBack};
}

Image::Image(Choices& choices, RegionSize size, const Around& around, int elementSize, bool holdsFloats,
             bool holdsPointers)
    : size_(size),
      around_(around),
      elementSize_(elementSize),
      holdsFloats_(holdsFloats && !around.bits),
      holdsPointers_(holdsPointers),
      step_(DrawStep(choices, size, around, elementSize) / around.multiple * around.multiple),
      rowStep_(step_ < 1 ? step_ : step_ / around.unit * around.unit),
      memory_(static_cast<std::size_t>(std::abs((size.height + around.above + around.below - 1) * rowStep_) +
                                       (size.width + around.left + around.right) * std::ptrdiff_t{elementSize} +
                                       kMostMisaligned)) {
  const std::span<unsigned char> bytes = memory_.bytes();
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(0xA5 ^ i);
  const auto [low, high] = std::minmax({-around.above * rowStep_, (size.height + around.below - 1) * rowStep_});
  const std::ptrdiff_t misalign = choices.OneIn(4) ? choices.Int(1, kMostMisaligned) : 0;
  origin_ = choices.OneIn(4) ? bytes.data() + misalign - low + std::ptrdiff_t{around.left} * elementSize
                             : bytes.data() + bytes.size() - misalign - high -
                                   (size.width + std::ptrdiff_t{around.right}) * elementSize;
  std::mt19937 random(choices.Word());
  if (holdsPointers) return;
  const auto fill = [&]<class T>(T) { Fill<T>([&] { return Noise<T>(random); }); };
  if (elementSize == 1) fill(std::uint8_t{});
  if (elementSize == 2) fill(std::uint16_t{});
  if (elementSize == 4) holdsFloats ? fill(float{}) : fill(std::uint32_t{});
  if (elementSize == 8) fill(double{});
}

std::vector<unsigned char> Image::Bytes() const { return {memory_.bytes().begin(), memory_.bytes().end()}; }
void Image::SetBytes(const std::vector<unsigned char>& bytes) {
  std::copy(bytes.begin(), bytes.end(), memory_.bytes().begin());
}

void Image::Unify() {
  if (around_.scratch) std::memset(origin_, 0, static_cast<std::size_t>(size_.width * elementSize_));
  MapFloats([](double value) { return std::isnan(value) ? std::numeric_limits<double>::quiet_NaN() : value; });
}

}  // namespace norvala_test
