#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <type_traits>
#include <vector>

#include "support/choices.h"

namespace norvala_test {

// Whole pages, at least the bytes asked for, between two pages that may not be touched.
class GuardedPages {
 public:
  explicit GuardedPages(std::size_t bytes);
  std::span<unsigned char> bytes() const { return {pages_.get(), size_}; }

 private:
  std::size_t size_;
  std::shared_ptr<unsigned char> pages_;
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

// The pixels of an image as a naive reference sees them: any address, any step.
template <class T>
class View {
 public:
  using Pixel = std::remove_const_t<T>;
  static constexpr auto kPixel = static_cast<std::ptrdiff_t>(sizeof(T));

  View(T* data, std::ptrdiff_t step = 0) : data_(reinterpret_cast<std::uintptr_t>(data)), step_(step) {}
  Pixel operator()(int x, int y = 0) const {
    Pixel value;
    std::memcpy(&value, Address(x, y), sizeof value);
    return value;
  }
  // The same with its step rounded down to whole pixels.
  View Whole() const { return {reinterpret_cast<T*>(data_), step_ / kPixel * kPixel}; }
  void Set(int x, int y, T value) const { std::memcpy(Address(x, y), &value, sizeof value); }

 private:
  unsigned char* Address(int x, int y) const {
    return reinterpret_cast<unsigned char*>(data_ + static_cast<std::uintptr_t>(y * step_ + x * kPixel));
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

// An image in memory of its own: exactly the bytes that its rows span, whatever the step, up to a no-access page on one
// side, filled with noise. A kernel, a list of pointers or one result is an image, too.
class Image {
 public:
  Image(Choices& choices, RegionSize size, const Around& around, int elementSize, bool holdsFloats, bool holdsPointers);

  void* data() const { return origin_; }
  int step() const { return step_; }
  bool holdsPointers() const { return holdsPointers_; }
  std::ptrdiff_t origin() const { return origin_ - memory_.bytes().data(); }  // where the region begins

  template <class T>
  void Set(int x, int y, T value) {
    As<T>().Set(x, y, value);
  }
  // Makes all elements, those around the region included, row by row.
  template <class T, class Make>
  void Fill(Make make) {
    Map<T>([&](T) { return make(); });
  }
  // Replaces all floats by what `map` makes of them; does nothing where NaNs are compared as bits, or with integers.
  template <class F>
  void MapFloats(F map) {
    if (!holdsFloats_) return;
    elementSize_ == sizeof(float) ? Map<float>(map) : Map<double>(map);
  }
  // The floats, row by row.
  std::vector<double> Values() {
    std::vector<double> values;
    MapFloats([&](double value) { return values.emplace_back(value); });
    return values;
  }

  // All of the memory, what lies outside of the rows included: equal bytes mean that nothing else was written.
  std::vector<unsigned char> Bytes() const;
  void SetBytes(const std::vector<unsigned char>& bytes);
  // Makes all NaNs one and the same and clears scratch memory.
  void Unify();

 private:
  template <class T>
  View<T> As() const {
    return {static_cast<T*>(data()), rowStep_};
  }
  template <class T, class F>
  void Map(F map) {
    for (int y = -around_.above; y < size_.height + around_.below; ++y) {
      for (int x = -around_.left; x < size_.width + around_.right; ++x) Set(x, y, static_cast<T>(map(As<T>()(x, y))));
    }
  }

  RegionSize size_;
  Around around_;
  int elementSize_;
  bool holdsFloats_, holdsPointers_;
  int step_;
  std::ptrdiff_t rowStep_;
  GuardedPages memory_;
  unsigned char* origin_;
};

}  // namespace norvala_test
