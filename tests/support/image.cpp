#include "support/image.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <map>
#include <utility>

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
  void* mapping = VirtualAlloc(nullptr, size + 2 * kPage, MEM_RESERVE, PAGE_NOACCESS);
  auto* const data = static_cast<unsigned char*>(mapping) + kPage;
  const bool ok = mapping != nullptr && VirtualAlloc(data, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
#else
  void* mapping = mmap(nullptr, size + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  auto* const data = static_cast<unsigned char*>(mapping) + kPage;
  const bool ok = mapping != MAP_FAILED && mprotect(data, size, PROT_READ | PROT_WRITE) == 0;
#endif
  if (!ok) std::abort();
  return data;
}

// Mappings that can be used again, by size. They live as long as their thread.
thread_local std::multimap<std::size_t, unsigned char*> spare;

template <class T>
T NoiseOfFloats(std::mt19937& random) {
  static constexpr T kInfinity = std::numeric_limits<T>::infinity();
  static constexpr T kSpecial[] = {kInfinity,
                                   -kInfinity,
                                   std::numeric_limits<T>::quiet_NaN(),
                                   T(-0.0),
                                   T(0),
                                   T(1e-40),
                                   T(3.4028235e38),
                                   T(-3.4028235e38),
                                   T(65534.5),
                                   T(254.5)};
  const auto word = static_cast<std::uint32_t>(random());
  const auto number = static_cast<T>(static_cast<std::int32_t>(word) >> 8);
  switch (word % 64) {
    case 0:
      return kSpecial[(word >> 6) % std::size(kSpecial)];
    case 1:
      return number * T(1e30);
    default:
      return number * (word % 2 != 0 ? T(0x1p-14) : T(0.0078125));
  }
}

}  // namespace

GuardedPages::GuardedPages(std::size_t bytes) : size_((std::max<std::size_t>(bytes, 1) + kPage - 1) / kPage * kPage) {
  const auto found = spare.find(size_);
  if (found == spare.end()) {
    data_ = Map(size_);
    return;
  }
  data_ = found->second;
  spare.erase(found);
}

GuardedPages::GuardedPages(GuardedPages&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(other.size_) {}

GuardedPages::~GuardedPages() {
  if (data_ != nullptr) spare.emplace(size_, data_);
}

template <class T>
T Noise(std::mt19937& random) {
  if constexpr (std::is_floating_point_v<T>) {
    return NoiseOfFloats<T>(random);
  } else {
    return static_cast<T>(random());
  }
}
template std::uint8_t Noise(std::mt19937&);
template std::uint16_t Noise(std::mt19937&);
template std::int16_t Noise(std::mt19937&);
template std::uint32_t Noise(std::mt19937&);
template std::int32_t Noise(std::mt19937&);
template float Noise(std::mt19937&);
template double Noise(std::mt19937&);

namespace {

// A step for rows of `payload` bytes that is served; it keeps the rows within memory that can be had.
int DrawStep(Choices& c, int payload, int rows, Steps steps, int elementSize) {
  switch (c.Int(0, 9)) {
    case 0:
      return payload + c.Int(0, 17);
    case 1:
      return steps == Steps::Row ? payload : elementSize * c.Int(1, payload / elementSize);
    case 2:
      return steps == Steps::Any ? elementSize * c.Int(-2 * (payload / elementSize), 1) : payload + 1;
    case 3:
      return rows == 1 ? INT32_MAX : payload;
    case 4:
    case 5:
      return payload + elementSize * c.Int(0, 5);
    default:
      return payload;
  }
}

}  // namespace

Image::Image(Choices& choices, RegionSize size, const Around& around, int elementSize, Kind kind)
    : size_(size),
      elementSize_(elementSize),
      around_(around),
      kind_(kind),
      step_(DrawStep(choices, std::max(size.width + (around.left + around.right), size.width) * elementSize,
                     size.height + (around.above + around.below), around.steps, elementSize) /
            around.multiple * around.multiple),
      rowStep_(step_ < 1 ? step_ : step_ / around.unit * around.unit),
      memory_(static_cast<std::size_t>(std::abs((size.height + around.above + around.below - 1) * rowStep_) +
                                       (size.width + around.left + around.right) * std::ptrdiff_t{elementSize} +
                                       kMostMisaligned)) {
  const std::span<unsigned char> bytes = memory_.bytes();
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(0xA5 ^ i);
  const std::ptrdiff_t first = -around.above * rowStep_;
  const std::ptrdiff_t last = (size.height + around.below - 1) * rowStep_;
  const std::ptrdiff_t low = std::min(first, last) - std::ptrdiff_t{around.left} * elementSize;
  const std::ptrdiff_t high = std::max(first, last) + (size.width + std::ptrdiff_t{around.right}) * elementSize;
  const std::ptrdiff_t misalign = choices.OneIn(4) ? choices.Int(1, kMostMisaligned) : 0;
  origin_ =
      bytes.data() + (choices.OneIn(4) ? misalign - low : static_cast<std::ptrdiff_t>(bytes.size()) - misalign - high);
}

std::vector<unsigned char> Image::Bytes() const { return {memory_.bytes().begin(), memory_.bytes().end()}; }
void Image::SetBytes(const std::vector<unsigned char>& bytes) {
  std::copy(bytes.begin(), bytes.end(), memory_.bytes().begin());
}

template <class T>
void Image::UnifyNaNsOf() {
  ForEachElement([&](int x, int y) {
    T value;
    std::memcpy(&value, Address(x, y), sizeof value);
    if (std::isnan(value)) Set(x, y, std::numeric_limits<T>::quiet_NaN());
  });
}

void Image::UnifyNaNs() {
  if (around_.scratch) std::memset(origin_, 0, static_cast<std::size_t>(size_.width * elementSize_));
  if (kind_ == Kind::Float32) UnifyNaNsOf<float>();
  if (kind_ == Kind::Float64) UnifyNaNsOf<double>();
}

std::vector<double> Image::Values() const {
  std::vector<double> values;
  if (!IsFloat()) return values;
  ForEachElement([&](int x, int y) {
    values.push_back(kind_ == Kind::Float64 ? View(static_cast<double*>(data()), rowStep_)(x, y)
                                            : View(static_cast<float*>(data()), rowStep_)(x, y));
  });
  return values;
}

void Image::SetValues(const std::vector<double>& values) {
  auto value = values.begin();
  ForEachElement(
      [&](int x, int y) { kind_ == Kind::Float64 ? Set(x, y, *value++) : Set(x, y, static_cast<float>(*value++)); });
}

}  // namespace norvala_test
