#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "support/guarded_memory.h"

namespace norvala_test {

using Random = std::mt19937;

inline int RandomInt(Random& random, int low, int high) {
  return std::uniform_int_distribution<int>(low, high)(random);
}

// A width or height worth testing: mostly 1 to 70, now and then some hundreds or thousands.
inline int RandomSize(Random& random) {
  return RandomInt(random, 0, 15) == 0 ? RandomInt(random, 71, 3000) : RandomInt(random, 1, 70);
}

// Values at which float code goes wrong, mixed with ordinary ones of several magnitudes.
inline float RandomFloat(Random& random) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
  static constexpr float kSpecial[] = {0.0F,          -0.0F,          0.5F,      -0.5F,      1.5F,
                                       254.5F,        255.0F,         65534.5F,  65535.0F,   1e-40F,
                                       3.4028235e38F, -3.4028235e38F, kInfinity, -kInfinity, kNaN};
  const int kind = RandomInt(random, 0, 19);
  if (kind == 0) return kSpecial[RandomInt(random, 0, static_cast<int>(std::size(kSpecial)) - 1)];
  const float unit = std::uniform_real_distribution<float>(-1.0F, 1.0F)(random);
  if (kind < 8) return unit * 300.0F;
  if (kind < 12) return unit * 70000.0F;
  if (kind < 16) return static_cast<float>(RandomInt(random, -600, 600)) * 0.5F;
  return unit * 1e30F;
}

template <class T>
T RandomValue(Random& random) {
  if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(RandomFloat(random));
  } else {
    return static_cast<T>(random());
  }
}

// Where an image lies in its memory.
struct Layout {
  int margin = 0;    // readable pixels on every side of the region
  int padding = 0;   // bytes between the end of a row (margins included) and the next, any number
  int misalign = 0;  // bytes by which the first pixel misses the alignment of its type
};

inline Layout RandomLayout(Random& random, int margin = 0) {
  const bool odd = RandomInt(random, 0, 1) != 0;
  return {margin, odd ? RandomInt(random, 0, 9) : 4 * RandomInt(random, 0, 4), odd ? RandomInt(random, 0, 3) : 0};
}

// An image in guarded memory: the last byte of its last row (its margin included) lies against a no-access page, or,
// flush at the start, the first byte of its first row does. Padding bytes hold a pattern whose change can be told.
template <class T>
class Image {
 public:
  Image(int width, int height, Layout layout = {}, GuardedMemory::Flush flush = GuardedMemory::Flush::End)
      : width_(width),
        height_(height),
        layout_(layout),
        flush_(flush),
        margin_(layout.margin),
        step_((width + 2 * layout.margin) * static_cast<int>(sizeof(T)) + layout.padding),
        memory_(ByteCount(width, height, layout, step_), flush) {
    // The last row ends the memory; flush at the end, misalignment follows from trailing bytes left unused.
    const std::ptrdiff_t first = flush == GuardedMemory::Flush::End ? 0 : layout.misalign;
    origin_ = memory_.data() + first + std::ptrdiff_t{margin_} * step_ + margin_ * static_cast<int>(sizeof(T));
    for (std::size_t i = 0; i < memory_.size(); ++i) memory_.data()[i] = static_cast<unsigned char>(0xA5 ^ i);
  }

  // A copy with the same layout and the same bytes, to which a naive reference is applied.
  Image(const Image& other) : Image(other.width_, other.height_, other.layout_, other.flush_) {
    SetBytes(other.Bytes());
  }

  int width() const { return width_; }
  int height() const { return height_; }
  int step() const { return step_; }
  T* data() const { return reinterpret_cast<T*>(origin_); }

  // Reads or writes one pixel; coordinates may reach into the margin.
  T Get(int x, int y) const {
    T value;
    std::memcpy(&value, Address(x, y), sizeof value);
    return value;
  }
  void Set(int x, int y, T value) { std::memcpy(Address(x, y), &value, sizeof value); }

  // Fills region and margin.
  template <class Make>
  void Fill(Make make) {
    for (int y = -margin_; y < height_ + margin_; ++y) {
      for (int x = -margin_; x < width_ + margin_; ++x) Set(x, y, make());
    }
  }
  void FillRandom(Random& random) {
    Fill([&] { return RandomValue<T>(random); });
  }

  // Makes every pixel of the region from its place, row by row from the top.
  template <class Make>
  void FillAt(Make make) {
    for (int y = 0; y < height_; ++y) {
      for (int x = 0; x < width_; ++x) Set(x, y, make(x, y));
    }
  }

  // All bytes of the image, margins and padding included: equal bytes mean that nothing else was written.
  std::vector<unsigned char> Bytes() const { return {memory_.data(), memory_.data() + memory_.size()}; }
  void SetBytes(const std::vector<unsigned char>& bytes) { std::memcpy(memory_.data(), bytes.data(), bytes.size()); }

 private:
  static std::size_t ByteCount(int width, int height, Layout layout, int step) {
    const int rows = height + 2 * layout.margin;
    return static_cast<std::size_t>(rows - 1) * static_cast<std::size_t>(step) +
           static_cast<std::size_t>(width + 2 * layout.margin) * sizeof(T) + static_cast<std::size_t>(layout.misalign);
  }
  unsigned char* Address(int x, int y) const {
    return origin_ + std::ptrdiff_t{y} * step_ + x * static_cast<std::ptrdiff_t>(sizeof(T));
  }

  int width_;
  int height_;
  Layout layout_;
  GuardedMemory::Flush flush_;
  int margin_;
  int step_;
  GuardedMemory memory_;
  unsigned char* origin_;
};

}  // namespace norvala_test
