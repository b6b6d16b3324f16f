#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <random>
#include <span>
#include <type_traits>
#include <vector>

#include "support/choices.h"

namespace norvala_test {

// Memory between two pages that may not be touched.
class GuardedPages {
 public:
  explicit GuardedPages(std::size_t bytes);
  GuardedPages(GuardedPages&& other) noexcept;
  GuardedPages& operator=(GuardedPages&&) = delete;
  ~GuardedPages();

  // Whole pages: at least the bytes asked for.
  std::span<unsigned char> bytes() const { return {data_, size_}; }

 private:
  unsigned char* data_;
  std::size_t size_;
};

// Which steps an operation serves, so which may be drawn for it.
enum class Steps {
  Any,       // zero and negative ones, too
  Positive,  // rows may overlap
  Row,       // a row must fit
};

// What may be used around an image's region, in elements, and what is known of its step.
struct Around {
  int left = 0, right = 0, above = 0, below = 0;
  Steps steps = Steps::Row;
  int multiple = 1;      // the step is a multiple of this
  int unit = 1;          // the operation rounds the step down to a multiple of this
  bool bits = false;     // floats are compared as bits; otherwise every NaN is as good as another
  bool scratch = false;  // what a call leaves in the region is its own affair
};

// A value at which code goes wrong, or an ordinary one of some magnitude.
template <class T>
T Noise(std::mt19937& random);

// An image in memory of its own: exactly the bytes that its rows span, whatever the step, up to a no-access page on one
// side. A kernel, a list of pointers or one result is an image, too. Filled with noise.
class Image {
 public:
  enum class Kind { Bits, Float32, Float64, Pointers };

  template <class T>
  static Image Of(Choices& choices, RegionSize size, const Around& around) {
    Image image(choices, size, around, sizeof(T),
                std::is_pointer_v<T>                          ? Kind::Pointers
                : !std::is_floating_point_v<T> || around.bits ? Kind::Bits
                : sizeof(T) == 4                              ? Kind::Float32
                                                              : Kind::Float64);
    std::mt19937 random(choices.Word());
    if constexpr (!std::is_pointer_v<T>) image.Fill<T>([&] { return Noise<T>(random); });
    return image;
  }

  void* data() const { return origin_; }
  int step() const { return step_; }
  std::ptrdiff_t origin() const { return origin_ - memory_.bytes().data(); }  // where the region begins

  template <class T>
  void Set(int x, int y, T value) {
    std::memcpy(Address(x, y), &value, sizeof value);
  }
  // Makes all elements, those around the region included, row by row.
  template <class T, class Make>
  void Fill(Make make) {
    ForEachElement([&](int x, int y) { Set<T>(x, y, make()); });
  }

  // All of the memory, what lies outside of the rows included: equal bytes mean that nothing else was written.
  std::vector<unsigned char> Bytes() const;
  void SetBytes(const std::vector<unsigned char>& bytes);
  // Makes all NaNs one and the same, unless they are compared as bits, and clears scratch memory.
  void UnifyNaNs();
  // The elements of a float image, those around the region included, row by row; none of any other.
  std::vector<double> Values() const;
  void SetValues(const std::vector<double>& values);
  bool IsFloat() const { return kind_ == Kind::Float32 || kind_ == Kind::Float64; }
  bool IsPointers() const { return kind_ == Kind::Pointers; }

 private:
  Image(Choices& choices, RegionSize size, const Around& around, int elementSize, Kind kind);
  unsigned char* Address(int x, int y) const {
    return origin_ + std::ptrdiff_t{y} * rowStep_ + std::ptrdiff_t{x} * elementSize_;
  }
  template <class F>
  void ForEachElement(F f) const {
    for (int y = -around_.above; y < size_.height + around_.below; ++y) {
      for (int x = -around_.left; x < size_.width + around_.right; ++x) f(x, y);
    }
  }
  template <class T>
  void UnifyNaNsOf();

  RegionSize size_;
  int elementSize_;
  Around around_;
  Kind kind_;
  int step_;
  std::ptrdiff_t rowStep_;
  GuardedPages memory_;
  unsigned char* origin_ = nullptr;
};

// The pixels of an image as a naive reference sees them: any address, any step.
template <class T>
class View {
 public:
  using Pixel = std::remove_const_t<T>;

  View(T* data, std::ptrdiff_t step = 0) : data_(reinterpret_cast<std::uintptr_t>(data)), step_(step) {}
  Pixel operator()(int x, int y = 0) const {
    Pixel value;
    std::memcpy(&value, Address(x, y), sizeof value);
    return value;
  }
  // The same with its step rounded down to whole pixels.
  View Whole() const {
    constexpr auto kPixel = static_cast<std::ptrdiff_t>(sizeof(T));
    return {reinterpret_cast<T*>(data_), step_ / kPixel * kPixel};
  }
  void Set(int x, int y, T value) const { std::memcpy(Address(x, y), &value, sizeof value); }

 private:
  unsigned char* Address(int x, int y) const {
    return reinterpret_cast<unsigned char*>(data_ + static_cast<std::uintptr_t>(y * step_) +
                                            static_cast<std::uintptr_t>(x * static_cast<std::ptrdiff_t>(sizeof(T))));
  }
  std::uintptr_t data_;
  std::ptrdiff_t step_;
};

template <class F>
void ForEachPixel(RegionSize size, F f) {
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) f(x, y);
  }
}

}  // namespace norvala_test
