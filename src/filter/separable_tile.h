#pragma once

#include <algorithm>

#include "filter/separable_window.h"
#include "frame/lanes.h"

namespace norvala {

// The separable convolution with sums of type Sum: double, float or wrapping unsigned 32-bit. Tiles of source pixels
// are converted to Sum once and meet all taps from there. Lies on the stack, some 20 KiB.
template <class Sum>
class SeparableTile {
 public:
  // Filters the whole region. `load` converts a pixel to a Sum, `store` a sum to a pixel. Every sum starts at `start`
  // and takes its products in the order of increasing source position.
  template <class Pixel, class Tap, class Load, class Store>
  void Filter(const SeparableCall<Pixel, Tap>& call, Sum start, Load load, Store store) {
    const SeparableWindow<Pixel> window(call);
    const bool alongRow = call.direction == Direction::AlongRow;
    const int tileRows = alongRow ? 1 : kRows;
    const int tileColumns = alongRow ? kLongRow : kColumns;
    for (int x = 0, columns = 0; x < call.size.width; x += columns) {
      columns = std::min(tileColumns, call.size.width - x);
      for (int y = 0, rows = 0; y < call.size.height; y += rows) {
        rows = std::min(tileRows, call.size.height - y);
        std::fill_n(sums_, rows * tileColumns, start);
        for (int tap = 0, taps = 0; tap < call.kernelSize; tap += taps) {
          taps = std::min(kTaps, call.kernelSize - tap);
          for (int j = 0; j < taps; ++j) taps_[j] = Vector{} + static_cast<Sum>(call.MirroredTap(tap + j));
          const int sourceRows = alongRow ? 1 : rows + taps - 1;
          const int sourceColumns = alongRow ? columns + taps - 1 : columns;
          for (int row = 0; row < sourceRows; ++row) {
            const auto* pixels = window.Source(x, y, std::ptrdiff_t{tap} + row);
            Sum* source = source_ + row * kColumns;
            for (int i = 0; i < sourceColumns; ++i) source[i] = load(pixels[i]);
          }
          const int tapStep = alongRow ? 1 : kColumns;
          for (int row = 0; row < rows; ++row) {
            AddProducts(source_ + row * kColumns, tapStep, taps, sums_ + row * kColumns, columns);
          }
        }
        for (int row = 0; row < rows; ++row) {
          auto* pixels = window.Destination(x, std::ptrdiff_t{y} + row);
          const Sum* sums = sums_ + row * kColumns;
          for (int i = 0; i < columns; ++i) pixels[i] = store(sums[i]);
        }
      }
    }
  }

 private:
  static constexpr int kLanes = 16 / static_cast<int>(sizeof(Sum));
  using Vector = Lanes<Sum, kLanes>;

  static constexpr int kTaps = 16;  // taken at once
  // A tile holds kRows rows of kColumns sums for taps along columns, one longer row for taps along rows.
  static constexpr int kRows = 16;
  static constexpr int kColumns = 32;
  static constexpr int kLongRow = kRows * kColumns;

  // Adds to each sum the products of the taps and the source pixels that lie tapStep apart.
  void AddProducts(const Sum* source, std::ptrdiff_t tapStep, int taps, Sum* sums, int count) const {
    constexpr int kVectors = 4;
    int i = 0;
    for (; i + kVectors * kLanes <= count; i += kVectors * kLanes) {
      Vector sum[kVectors];
      for (int k = 0; k < kVectors; ++k) sum[k] = LoadLanes<Vector>(sums + i + k * kLanes);
      const Sum* pixels = source + i;
      for (int j = 0; j < taps; ++j, pixels += tapStep) {
        for (int k = 0; k < kVectors; ++k) sum[k] += LoadLanes<Vector>(pixels + k * kLanes) * taps_[j];
      }
      for (int k = 0; k < kVectors; ++k) StoreLanes(sums + i + k * kLanes, sum[k]);
    }
    for (; i < count; ++i) {
      for (int j = 0; j < taps; ++j) sums[i] += source[i + j * tapStep] * taps_[j][0];
    }
  }

  Vector taps_[kTaps];
  alignas(16) Sum source_[(kRows + kTaps) * kColumns];
  alignas(16) Sum sums_[kRows * kColumns];
};

}  // namespace norvala
