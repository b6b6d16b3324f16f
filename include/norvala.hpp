/** @file
 * The library for C++17: images that own their memory or view another's, and the functions on them. A function that
 * returns -1 throws norvala::Error with its name; arguments that do not fit together throw std::invalid_argument with
 * it. What each does, and the ranges of its arguments, is said in norvala.h. The pipeline filters and the random fill,
 * which work on rows and vectors, are called as they are.
 */
#ifndef NORVALA_HPP
#define NORVALA_HPP

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "norvala_helpers.h"

namespace norvala {

/** What is thrown when a function returns -1; what() is the function's name. */
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** Throws Error where the result of a function is not 0. */
inline void Check(int32_t result, const char* function) {
  if (result != 0) throw Error(function);
}

/** Pixels of memory that belongs to someone else: a pointer to the first, the step in bytes between rows, the size. */
template <class T>
struct View {
  T* data = nullptr;
  int32_t step = 0;
  int32_t width = 0;
  int32_t height = 0;

  View() = default;
  View(T* pixels, int32_t stepInBytes, int32_t columns, int32_t rows)
      : data(pixels), step(stepInBytes), width(columns), height(rows) {}
  /** A view that writes is one that reads, too. */
  template <class U, class = std::enable_if_t<std::is_same_v<const U, T>>>
  View(const View<U>& other) : View(other.data, other.step, other.width, other.height) {}

  T* Row(int32_t y) const {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return reinterpret_cast<T*>(reinterpret_cast<Byte*>(data) + static_cast<std::ptrdiff_t>(y) * step);
  }
  NorvalaRect Whole() const { return {0, 0, width, height}; }
  /** A part of the view; throws where it is not inside. */
  View Part(const NorvalaRect& part) const {
    if (part.x < 0 || part.y < 0 || part.width < 1 || part.height < 1 || part.width > width - part.x ||
        part.height > height - part.y) {
      throw std::invalid_argument("View::Part");
    }
    return {Row(part.y) + part.x, step, part.width, part.height};
  }
};

/** An image of the aligned allocator: it owns its pixels, which are not initialised, and can be moved. */
template <class T>
class Image {
 public:
  Image(int32_t width, int32_t height) : view_(nullptr, 0, width, height) {
    constexpr int32_t kBytes = sizeof(T);
    if (width > INT32_MAX / kBytes) throw std::bad_alloc();
    pixels_.reset(Norvala_2DMallocBW8(width * kBytes, height, &view_.step));
    if (pixels_ == nullptr) throw std::bad_alloc();
    view_.data = reinterpret_cast<T*>(pixels_.get());
  }

  int32_t width() const { return view_.width; }
  int32_t height() const { return view_.height; }
  int32_t step() const { return view_.step; }
  T* Row(int32_t y) { return view_.Row(y); }
  const T* Row(int32_t y) const { return view_.Row(y); }
  View<T> Part(const NorvalaRect& part) { return view_.Part(part); }
  View<const T> Part(const NorvalaRect& part) const { return view_.Part(part); }
  operator View<T>() { return view_; }
  operator View<const T>() const { return view_; }

 private:
  struct Release {
    void operator()(BW8* pixels) const { Norvala_2DFree(pixels); }
  };
  std::unique_ptr<BW8, Release> pixels_;
  View<T> view_;
};

/** The taps of a kernel. */
template <class T>
using Kernel = std::vector<T>;

namespace detail {

inline void Require(bool fits, const char* function) {
  if (!fits) throw std::invalid_argument(function);
}

/** Calls a function of a source and a destination of equal size. */
template <class Function, class S, class D, class... Rest>
void Map(const char* name, Function function, View<S> src, View<D> dst, Rest... rest) {
  Require(src.width == dst.width && src.height == dst.height, name);
  Check(function(src.data, src.step, dst.data, dst.step, dst.width, dst.height, rest...), name);
}

/** Calls a filter along rows or columns. */
template <class Function, class S, class D, class T, class... Rest>
void Filter(const char* name, Function function, View<S> src, View<D> dst, const Kernel<T>& kernel, Rest... rest) {
  Map(name, function, src, dst, kernel.data(), static_cast<int32_t>(kernel.size()), rest...);
}

/** Calls a function of two sources and a destination of equal size. */
template <class Function, class S, class D>
void Combine(const char* name, Function function, View<S> src1, View<S> src2, View<D> dst) {
  Require(src1.width == dst.width && src1.height == dst.height, name);
  Require(src2.width == dst.width && src2.height == dst.height, name);
  Check(function(src1.data, src1.step, src2.data, src2.step, dst.data, dst.step, dst.width, dst.height), name);
}

/** Calls a function of one image that takes a constant first. */
template <class Function, class C, class T>
void WithConstant(const char* name, Function function, C constant, View<T> image) {
  Check(function(constant, image.data, image.step, image.width, image.height), name);
}

/** Calls a function that fills the border around a part of an image. */
template <class Function, class T>
void Border(const char* name, Function function, View<T> outer, const NorvalaRect& inner) {
  Check(function(outer.Part(inner).data, outer.step, inner.width, inner.height, outer.width, outer.height, inner.y,
                 inner.x),
        name);
}

/** Calls a warp of the whole source into the whole destination. */
template <class Function, class S, class D>
void Warp(const char* name, Function function, View<S> src, View<D> dst, int32_t interpolation, const double* map) {
  const NorvalaRect from = src.Whole(), to = dst.Whole();
  Check(function(src.data, src.width, src.height, src.step, &from, dst.data, dst.step, &to, map, interpolation), name);
}

template <class Function>
void WarpQuad(const char* name, Function function, View<const BW8> src, const double* srcQuad, View<BW8> dst,
              const double* dstQuad, int32_t interpolation) {
  const NorvalaRect from = src.Whole(), to = dst.Whole();
  Check(function(src.data, src.width, src.height, src.step, &from, srcQuad, dst.data, dst.step, &to, dstQuad,
                 interpolation),
        name);
}

/** Calls a reduction by half, with its work buffer. */
template <class Function, class S, class D>
void Halve(const char* name, Function function, View<S> src, View<D> dst) {
  int32_t bytes = 0;
  Require(src.width / 2 + src.width % 2 == dst.width && src.height / 2 + src.height % 2 == dst.height, name);
  Check(Norvala_PyrDownGetBufSizeGauss5x5BW8(src.width, 1, &bytes), "Norvala_PyrDownGetBufSizeGauss5x5BW8");
  std::vector<BW8> buffer(static_cast<std::size_t>(bytes));
  Check(function(src.data, src.step, dst.data, dst.step, src.width, src.height, buffer.data()), name);
}

}  // namespace detail

// ---- Copies, fills, borders and conversions ----

inline void Copy(View<const BW8> src, View<BW8> dst) { detail::Map("Norvala_CopyBW8", Norvala_CopyBW8, src, dst); }
inline void Copy(View<const BW16> src, View<BW16> dst) { detail::Map("Norvala_CopyBW16", Norvala_CopyBW16, src, dst); }
inline void Copy(View<const FLOAT32> src, View<FLOAT32> dst) {
  detail::Map("Norvala_CopyFLOAT32", Norvala_CopyFLOAT32, src, dst);
}
inline void Set(BW8 value, View<BW8> dst) { detail::WithConstant("Norvala_SetBW8", Norvala_SetBW8, value, dst); }
inline void Set(FLOAT32 value, View<FLOAT32> dst) {
  detail::WithConstant("Norvala_SetFLOAT32", Norvala_SetFLOAT32, value, dst);
}
/** Replicates the edge pixels of the part `inner` of `outer` into the rest of it. */
inline void ReplicateBorder(View<BW8> outer, const NorvalaRect& inner) {
  detail::Border("Norvala_CopyReplicateBorderBW8", Norvala_CopyReplicateBorderBW8, outer, inner);
}
inline void ReplicateBorder(View<BW16> outer, const NorvalaRect& inner) {
  detail::Border("Norvala_CopyReplicateBorderBW16", Norvala_CopyReplicateBorderBW16, outer, inner);
}
inline void ReplicateBorder(View<FLOAT32> outer, const NorvalaRect& inner) {
  detail::Border("Norvala_CopyReplicateBorderFLOAT32", Norvala_CopyReplicateBorderFLOAT32, outer, inner);
}
inline void Convert(View<const FLOAT32> src, View<BW8> dst, int32_t rounding) {
  detail::Map("Norvala_ConvertFLOAT32toBW8", Norvala_ConvertFLOAT32toBW8, src, dst, rounding);
}
inline void Convert(View<const FLOAT32> src, View<BW16> dst, int32_t rounding) {
  detail::Map("Norvala_ConvertFLOAT32toBW16", Norvala_ConvertFLOAT32toBW16, src, dst, rounding);
}
inline void Convert(View<const BW8> src, View<FLOAT32> dst) {
  detail::Map("Norvala_ConvertBW8toFLOAT32", Norvala_ConvertBW8toFLOAT32, src, dst);
}
inline void Convert(View<const BW8> src, View<BW16> dst) {
  detail::Map("Norvala_ConvertBW8toBW16", Norvala_ConvertBW8toBW16, src, dst);
}
inline void Convert(View<const BW16> src, View<BW8> dst) {
  detail::Map("Norvala_ConvertBW16ToBW8", Norvala_ConvertBW16ToBW8, src, dst);
}
inline void Convert(View<const BW16> src, View<BW32> dst) {
  detail::Map("Norvala_ConvertBW16toBW32", Norvala_ConvertBW16toBW32, src, dst);
}

// ---- Logic, shifts, arithmetic and statistics ----

inline void And(View<const BW32> src1, View<const BW32> src2, View<BW32> dst) {
  detail::Combine("Norvala_AndBW32", Norvala_AndBW32, src1, src2, dst);
}
inline void Or(View<const BW32> src1, View<const BW32> src2, View<BW32> dst) {
  detail::Combine("Norvala_OrBW32", Norvala_OrBW32, src1, src2, dst);
}
inline void And(BW16 constant, View<BW16> image) {
  detail::WithConstant("Norvala_AndCBW16", Norvala_AndCBW16, constant, image);
}
inline void ShiftRight(uint32_t count, View<BW16> image) {
  detail::WithConstant("Norvala_RShiftCBW16", Norvala_RShiftCBW16, count, image);
}
inline void ShiftRight(uint32_t count, View<BW32> image) {
  detail::WithConstant("Norvala_RShiftCBW32", Norvala_RShiftCBW32, count, image);
}
inline void ShiftLeft(uint32_t count, View<BW32> image) {
  detail::WithConstant("Norvala_LShiftCBW32", Norvala_LShiftCBW32, count, image);
}
inline void Divide(FLOAT32 divisor, View<FLOAT32> image) {
  detail::WithConstant("Norvala_DivCFLOAT32_C1IR", Norvala_DivCFLOAT32_C1IR, divisor, image);
}
inline void Add(View<const FLOAT32> src, View<FLOAT32> dst) {
  detail::Map("Norvala_AddFLOAT32_C1IR", Norvala_AddFLOAT32_C1IR, src, dst);
}
inline double Mean(View<const BW8> src) {
  double mean = 0;
  Check(Norvala_MeanBW8_C1R(src.data, src.step, src.width, src.height, &mean), "Norvala_MeanBW8_C1R");
  return mean;
}
inline double Mean(View<const FLOAT32> src) {
  double mean = 0;
  Check(Norvala_MeanFLOAT32_C1R(src.data, src.step, src.width, src.height, &mean, 0), "Norvala_MeanFLOAT32_C1R");
  return mean;
}
struct Maximum {
  BW8 value;
  int32_t column, row;
};
inline Maximum FindMaximum(View<const BW8> src) {
  Maximum found = {};
  Check(Norvala_MaxIndx_BW8(src.data, src.step, src.width, src.height, &found.value, &found.column, &found.row),
        "Norvala_MaxIndx_BW8");
  return found;
}
/** Grey from colour; a row of `src` holds three bytes for each pixel of `dst`. */
inline void RGBToGray(View<const BW8> src, View<BW8> dst) {
  detail::Require(src.width / 3 == dst.width && src.width % 3 == 0, "Norvala_RGBToGray_BW8_C3C1R");
  src.width /= 3;
  detail::Map("Norvala_RGBToGray_BW8_C3C1R", Norvala_RGBToGray_BW8_C3C1R, src, dst);
}

// ---- Filters: the memory around `src` holds the pixels that they reach ----

inline void FilterRow(View<const BW8> src, View<BW8> dst, const Kernel<int32_t>& kernel, int32_t anchor,
                      int32_t divisor) {
  detail::Filter("Norvala_FilterRowBW8", Norvala_FilterRowBW8, src, dst, kernel, anchor, divisor);
}
inline void FilterRow(View<const BW16> src, View<BW16> dst, const Kernel<int32_t>& kernel, int32_t anchor,
                      int32_t divisor) {
  detail::Filter("Norvala_FilterRowBW16", Norvala_FilterRowBW16, src, dst, kernel, anchor, divisor);
}
inline void FilterRow(View<const BW16> src, View<BW16> dst, const Kernel<FLOAT32>& kernel, int32_t anchor) {
  detail::Filter("Norvala_FilterRow32fBW16", Norvala_FilterRow32fBW16, src, dst, kernel, anchor);
}
inline void FilterRow(View<const FLOAT32> src, View<FLOAT32> dst, const Kernel<FLOAT32>& kernel, int32_t anchor) {
  detail::Filter("Norvala_FilterRowFLOAT32", Norvala_FilterRowFLOAT32, src, dst, kernel, anchor);
}
inline void FilterColumn(View<const BW8> src, View<BW8> dst, const Kernel<int32_t>& kernel, int32_t anchor,
                         int32_t divisor) {
  detail::Filter("Norvala_FilterColumnBW8", Norvala_FilterColumnBW8, src, dst, kernel, anchor, divisor);
}
inline void FilterColumn(View<const BW16> src, View<BW16> dst, const Kernel<int32_t>& kernel, int32_t anchor,
                         int32_t divisor) {
  detail::Filter("Norvala_FilterColumnBW16", Norvala_FilterColumnBW16, src, dst, kernel, anchor, divisor);
}
inline void FilterColumn(View<const BW16> src, View<BW16> dst, const Kernel<FLOAT32>& kernel, int32_t anchor) {
  detail::Filter("Norvala_FilterColumn32fBW16", Norvala_FilterColumn32fBW16, src, dst, kernel, anchor);
}
inline void FilterColumn(View<const FLOAT32> src, View<FLOAT32> dst, const Kernel<FLOAT32>& kernel, int32_t anchor) {
  detail::Filter("Norvala_FilterColumnFLOAT32", Norvala_FilterColumnFLOAT32, src, dst, kernel, anchor);
}
inline void FilterGauss(View<const BW8> src, View<BW8> dst, int32_t maskCode) {
  detail::Map("Norvala_FilterGauss", Norvala_FilterGauss, src, dst, maskCode);
}

// ---- Pyramids ----

inline void PyrDown(View<const BW8> src, View<BW8> dst) {
  detail::Halve("Norvala_PyrDownGauss5x5BW8", Norvala_PyrDownGauss5x5BW8, src, dst);
}
inline void PyrDown(View<const FLOAT32> src, View<FLOAT32> dst) {
  detail::Halve("Norvala_PyrDownGauss5x5FLOAT32", Norvala_PyrDownGauss5x5FLOAT32, src, dst);
}

/** The state of a pyramid layer: a rate, a kernel and work memory for images up to a size. */
class Layer {
 public:
  Layer(int32_t width, int32_t height, FLOAT32 rate, const Kernel<int16_t>& kernel) : rate_(rate) {
    PyramidLayerState* state = nullptr;
    const int32_t result = Norvala_PyramidLayerDownInitAllocBW8(
        &state, width, height, rate, kernel.data(), static_cast<int32_t>(kernel.size()), NORVALA_LAYER_MODE);
    state_.reset(state);
    Check(result, "Norvala_PyramidLayerDownInitAllocBW8");
  }
  /** What a width or height reduces to. */
  int32_t Reduced(int32_t size) const { return NorvalaLayerSize(size, rate_); }
  void Reduce(View<const BW8> src, View<BW8> dst) {
    Check(Norvala_PyramidLayerDownBW8(src.data, src.step, src.width, src.height, dst.data, dst.step, dst.width,
                                      dst.height, state_.get()),
          "Norvala_PyramidLayerDownBW8");
  }

 private:
  struct Release {
    void operator()(PyramidLayerState* state) const { Norvala_PyramidLayerDownFreeBW8(state); }
  };
  std::unique_ptr<PyramidLayerState, Release> state_;
  FLOAT32 rate_;
};

inline void SampleDownH2V2(View<const BW8> src, View<BW8> dst) {
  detail::Require(dst.width <= src.width / 2 && dst.height <= src.height / 2, "Norvala_SampleDownH2V2_JPEGBW8");
  Check(Norvala_SampleDownH2V2_JPEGBW8(src.data, src.step, src.width, src.height, dst.data, dst.step, dst.width,
                                       dst.height),
        "Norvala_SampleDownH2V2_JPEGBW8");
}

// ---- Geometry ----

using Coefficients = std::array<double, 6>;  ///< of an affine map
using Quad = std::array<double, 8>;          ///< the points of a quadrilateral
using Bound = std::array<double, 4>;         ///< least x, least y, greatest x, greatest y

inline void WarpAffine(View<const BW8> src, View<BW8> dst, const Coefficients& map, int32_t interpolation) {
  detail::Warp("Norvala_WarpAffine_BW8", Norvala_WarpAffine_BW8, src, dst, interpolation, map.data());
}
inline void WarpAffine(View<const FLOAT32> src, View<FLOAT32> dst, const Coefficients& map, int32_t interpolation) {
  detail::Warp("Norvala_WarpAffine_FLOAT32", Norvala_WarpAffine_FLOAT32, src, dst, interpolation, map.data());
}
inline void WarpAffineQuad(View<const BW8> src, const Quad& srcQuad, View<BW8> dst, const Quad& dstQuad,
                           int32_t interpolation) {
  detail::WarpQuad("Norvala_WarpAffineQuad", Norvala_WarpAffineQuad, src, srcQuad.data(), dst, dstQuad.data(),
                   interpolation);
}
inline void WarpPerspectiveQuad(View<const BW8> src, const Quad& srcQuad, View<BW8> dst, const Quad& dstQuad,
                                int32_t interpolation) {
  detail::WarpQuad("Norvala_WarpPerspectiveQuad", Norvala_WarpPerspectiveQuad, src, srcQuad.data(), dst, dstQuad.data(),
                   interpolation);
}
inline Quad RotateQuad(const NorvalaRect& region, double angle, double xShift, double yShift) {
  Quad quad;
  Check(Norvala_GetRotateQuad(&region, quad.data(), angle, xShift, yShift), "Norvala_GetRotateQuad");
  return quad;
}
inline Bound RotateBound(const NorvalaRect& region, double angle, double xShift, double yShift) {
  Bound bound;
  Check(Norvala_GetRotateBound(&region, bound.data(), angle, xShift, yShift), "Norvala_GetRotateBound");
  return bound;
}
inline Bound AffineBound(const NorvalaRect& region, const Coefficients& map) {
  Bound bound;
  Check(Norvala_GetAffineBound(&region, bound.data(), map.data()), "Norvala_GetAffineBound");
  return bound;
}
/** The shifts in x and y by which a rotation keeps a point in its place. */
inline std::array<double, 2> RotateShift(double xCentre, double yCentre, double angle) {
  std::array<double, 2> shift;
  Check(Norvala_GetRotateShift(xCentre, yCentre, angle, &shift[0], &shift[1]), "Norvala_GetRotateShift");
  return shift;
}
inline void Resize(View<const FLOAT32> src, View<FLOAT32> dst, double xFactor, double yFactor, int32_t interpolation) {
  const NorvalaRect whole = src.Whole();
  Check(Norvala_Resize(src.data, src.width, src.height, src.step, &whole, dst.data, dst.step, dst.width, dst.height,
                       xFactor, yFactor, interpolation),
        "Norvala_Resize");
}

// ---- Transforms ----

inline void DFT(View<const FLOAT32> src, View<ComplexFLOAT32Number> dst) {
  detail::Map("Norvala_DFTFwdFLOAT32", Norvala_DFTFwdFLOAT32, src, dst);
}
inline void Magnitude(View<const ComplexFLOAT32Number> src, View<FLOAT32> dst) {
  detail::Map("Norvala_MagnitudeFLOAT32", Norvala_MagnitudeFLOAT32, src, dst);
}
inline void DistanceTransform(View<const BW8> src, View<FLOAT32> dst, const std::array<FLOAT32, 2>& metrics) {
  detail::Map("Norvala_DistanceTransform3x3_BW8ToFLOAT32", Norvala_DistanceTransform3x3_BW8ToFLOAT32, src, dst,
              metrics.data());
}

}  // namespace norvala

#endif
