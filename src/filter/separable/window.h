#pragma once

#include "filter/filter.h"
#include "frame/memory.h"

// What the row and the column filters share: a column filter is a row filter whose taps lie a row apart.

namespace norvala {

// The arguments of one separable filter.
template <class Pixel, class Tap>
struct SeparableCall {
  Axis axis;
  const Pixel* src;
  std::int32_t srcStep;
  Pixel* dst;
  std::int32_t dstStep;
  RegionSize size;
  const Tap* kernel;
  std::int32_t kernelSize;
  std::int32_t anchor;
  std::int32_t divisor = 1;  // of sums

  // Only the filters along rows demand a source step that holds the kernel's reach.
  StatusCode Check() const {
    constexpr std::int64_t kPixel = sizeof(Pixel);
    if (src == nullptr || dst == nullptr || kernel == nullptr) return StatusCode::NullPointer;
    if (IsEmpty(size) || kernelSize < 1) return StatusCode::NonPositiveSize;
    if (divisor == 0) return StatusCode::ZeroDivisor;
    const std::int64_t reach = axis == Axis::Row ? std::int64_t{kernelSize} - 1 : 0;
    if (srcStep < (size.width + reach) * kPixel || dstStep < size.width * kPixel) return StatusCode::NonPositiveStep;
    return StatusCode::Success;
  }

  // Tap `j` of the mirrored kernel: the order in which the taps meet the source from left to right or top to bottom.
  Tap MirroredTap(std::int32_t j) const { return LoadUnaligned<Tap>(kernel + (kernelSize - 1 - j)); }

  bool IsSymmetric() const {
    for (std::int32_t j = 0; j < kernelSize / 2; ++j) {
      if (MirroredTap(j) != MirroredTap(kernelSize - 1 - j)) return false;
    }
    return true;
  }
};

// Where a filter reads and writes: mirrored tap j of the sum for column x and row y weighs the pixel x pixels after
// Row(Row(first, rowStep, y), tapStep, j). Checked steps only; both are whole numbers of pixels.
template <class Pixel>
struct SeparableWindow {
  const Pixel* first;
  std::ptrdiff_t rowStep;
  std::ptrdiff_t tapStep;
  Pixel* dst;
  std::ptrdiff_t dstStep;

  template <class Tap>
  explicit SeparableWindow(const SeparableCall<Pixel, Tap>& call)
      : rowStep(WholePixels(call.srcStep)),
        tapStep(call.axis == Axis::Row ? static_cast<std::ptrdiff_t>(sizeof(Pixel)) : rowStep),
        dst(call.dst),
        dstStep(WholePixels(call.dstStep)) {
    const std::int64_t taps = std::int64_t{call.anchor} - call.kernelSize + 1;
    first = reinterpret_cast<const Pixel*>(Row(call.src, tapStep, static_cast<std::ptrdiff_t>(taps)));
  }

  const Unaligned<const Pixel>* Source(std::ptrdiff_t x, std::ptrdiff_t y, std::ptrdiff_t tap) const {
    return Row(reinterpret_cast<const Pixel*>(Row(first, rowStep, y)), tapStep, tap) + x;
  }
  Unaligned<Pixel>* Destination(std::ptrdiff_t x, std::ptrdiff_t y) const { return Row(dst, dstStep, y) + x; }

 private:
  static std::ptrdiff_t WholePixels(std::int32_t step) {
    return step - step % static_cast<std::int32_t>(sizeof(Pixel));
  }
};

}  // namespace norvala
