#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "library.h"
#include "picture.h"

namespace gallery {

// An image in the library's own aligned memory, as a host would hold it.
template <class T>
class Plane {
 public:
  Plane(const Library& library, int width, int height) : width_(width), height_(height) {
    const auto release = library.Function<decltype(Norvala_2DFree)>("Norvala_2DFree");
    pixels_ = {Allocate(library), [release](T* pixels) { release(pixels); }};
    if (pixels_ == nullptr) throw std::bad_alloc();
  }

  int width() const { return width_; }
  int height() const { return height_; }
  std::int32_t step() const { return step_; }
  T* data() const { return pixels_.get(); }
  T* row(int y) const {
    return reinterpret_cast<T*>(reinterpret_cast<unsigned char*>(data()) + std::ptrdiff_t{y} * step_);
  }

 private:
  // Pixels without an allocator of their own are so many bytes.
  T* Allocate(const Library& library) {
    if constexpr (std::is_same_v<T, FLOAT32>) {
      return library.Function<decltype(Norvala_2DMallocFLOAT32)>("Norvala_2DMallocFLOAT32")(width_, height_, &step_);
    } else if constexpr (std::is_same_v<T, ComplexFLOAT32Number>) {
      return library.Function<decltype(Norvala_2DMallocComplexFLOAT32Number)>("Norvala_2DMallocComplexFLOAT32Number")(
          width_, height_, &step_);
    } else {
      return reinterpret_cast<T*>(library.Function<decltype(Norvala_2DMallocBW8)>("Norvala_2DMallocBW8")(
          width_ * static_cast<int>(sizeof(T)), height_, &step_));
    }
  }

  int width_;
  int height_;
  std::int32_t step_ = 0;
  std::unique_ptr<T, std::function<void(T*)>> pixels_;
};

// A vector in the library's own aligned memory.
template <class T>
class Vector {
 public:
  Vector(const Library& library, int size) : size_(size) {
    const auto release = library.Function<decltype(Norvala_1DFree)>("Norvala_1DFree");
    elements_ = {Allocate(library, size), [release](T* elements) { release(elements); }};
    if (elements_ == nullptr) throw std::bad_alloc();
  }
  Vector(const Library& library, const std::vector<T>& elements) : Vector(library, static_cast<int>(elements.size())) {
    std::copy(elements.begin(), elements.end(), data());
  }

  int size() const { return size_; }
  T* data() const { return elements_.get(); }

 private:
  static T* Allocate(const Library& library, int size) {
    if constexpr (std::is_same_v<T, BW8>) {
      return library.Function<decltype(Norvala_1DMallocBW8)>("Norvala_1DMallocBW8")(size);
    } else if constexpr (std::is_same_v<T, FLOAT32>) {
      return library.Function<decltype(Norvala_1DMallocFLOAT32)>("Norvala_1DMallocFLOAT32")(size);
    } else if constexpr (std::is_same_v<T, FLOAT64>) {
      return library.Function<decltype(Norvala_1DMallocFLOAT64)>("Norvala_1DMallocFLOAT64")(size);
    } else {
      return library.Function<decltype(Norvala_1DMallocINT32)>("Norvala_1DMallocINT32")(size);
    }
  }

  int size_;
  std::unique_ptr<T, std::function<void(T*)>> elements_;
};

// The contact sheet: runs calls, times them, writes one PNG a picture and, at the end, index.html.
class Sheet {
 public:
  Sheet(const Library& library, Picture photo, std::string folder);

  const Library& library() const { return library_; }
  const Picture& photo() const { return photo_; }
  // The photograph in grey, made by the library.
  const Plane<BW8>& grey() const { return grey_; }

  // Starts a section of the page.
  void Section(const std::string& title, const std::string& text);

  // Runs a call, which must return 0, and returns its time in milliseconds (the least of a few runs unless `once`:
  // work in place that must not be repeated).
  enum class Repeat { Few, Once };
  double Run(const std::string& what, const std::function<int()>& call, Repeat repeat = Repeat::Few) const;

  // Adds a picture: file name without ending, what it shows, the call in short, the time of the call.
  void Show(const std::string& file, const std::string& caption, const std::string& call, double milliseconds,
            const Picture& picture);

  // Writes index.html.
  void Finish() const;

 private:
  const Library& library_;
  Picture photo_;
  std::string folder_;
  Plane<BW8> grey_;
  std::string html_;
  bool inSection_ = false;
};

// An 8-bit plane as a picture.
Picture ToPicture(const Plane<BW8>& plane);
// A plane holding a grey picture.
Plane<BW8> ToPlane(const Library& library, const Picture& picture);
// The same pixels as floats.
Plane<FLOAT32> ToFloat(const Library& library, const Plane<BW8>& plane);

// The pages, one for each family of exports.
void ShowPixel(Sheet& sheet);
void ShowFilter(Sheet& sheet);
void ShowSeparable(Sheet& sheet);
void ShowPyramid(Sheet& sheet);
void ShowWarp(Sheet& sheet);
void ShowResize(Sheet& sheet);
void ShowSpectrum(Sheet& sheet);
void ShowAnalysis(Sheet& sheet);

}  // namespace gallery
