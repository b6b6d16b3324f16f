#pragma once

#include <algorithm>

#include "filter/separable_window.h"
#include "frame/lanes.h"

namespace norvala {

// The separable convolution by tiles: source pixels are converted to the type of the sums once and meet all taps from
// there. Lies on the stack, some 40 KiB.
//
// The codec fixes the types and the conversions:
//   Pixel, Sum                              a pixel and a sum
//   Pixels                                  as many pixels as kVectors vectors of sums hold
//   void Widen(Pixels, Vector (&)[kVectors]) const     pixels to sums
//   Pixels Narrow(const Vector (&)[kVectors]) const    sums to pixels
//   Sum start                               where every sum starts
//   bool isExact                            whether sums are the same in whatever order products are added
template <class Codec>
class SeparableTile {
 public:
  using Pixel = typename Codec::Pixel;
  using Pixels = typename Codec::Pixels;
  using Sum = typename Codec::Sum;
  using Vector = Lanes<Sum, 16 / sizeof(Sum)>;

  explicit SeparableTile(const Codec& codec) : codec_(codec) {}

  // Filters the whole region. Every sum takes its products in the order of increasing source position.
  template <class Tap>
  void Filter(const SeparableCall<Pixel, Tap>& call) {
    const SeparableWindow<Pixel> window(call);
    const bool alongRow = call.direction == Direction::AlongRow;
    const int tileRows = alongRow ? 1 : kRows;
    const int tileColumns = alongRow ? kLongRow : kColumns;
    for (int y = 0, rows = 0; y < call.size.height; y += rows) {
      rows = std::min(tileRows, call.size.height - y);
      for (int x = 0, columns = 0; x < call.size.width; x += columns) {
        columns = std::min(tileColumns, call.size.width - x);
        for (int tap = 0, taps = 0; tap < call.kernelSize; tap += taps) {
          taps = std::min(kTaps, call.kernelSize - tap);
          for (int j = 0; j < taps; ++j) taps_[j] = Vector{} + static_cast<Sum>(call.MirroredTap(tap + j));
          const int reach = taps - 1;
          const int sourceRows = alongRow ? 1 : rows + reach;
          for (int row = 0; row < sourceRows; ++row) {
            const Pixel* pixels = window.Source(x, y, std::ptrdiff_t{tap} + row);
            Load(pixels, alongRow ? columns + reach : columns, source_ + row * kColumns, alongRow ? reach : 0);
          }
          const Part part = {taps, alongRow ? 1 : kColumns, tap == 0, call.kernelSize - tap == taps,
                             codec_.isExact && call.kernelSize == taps && call.IsSymmetric()};
          for (int row = 0; row < rows; ++row) {
            Pixel* pixels = window.Destination(x, std::ptrdiff_t{y} + row);
            Convolve(source_ + row * kColumns, part, sums_ + row * kColumns, pixels, columns);
          }
        }
      }
    }
  }

 private:
  static constexpr int kLanes = 16 / static_cast<int>(sizeof(Sum));
  static constexpr int kVectors = 4;
  static constexpr int kBlock = kVectors * kLanes;
  static constexpr int kBlocksAtOnce = sizeof(void*) == 8 ? 2 : 1;  // as the registers allow

  static constexpr int kTaps = 16;  // taken at once
  // A tile holds kRows rows of kColumns sums for taps along columns, one longer row for taps along rows.
  static constexpr int kRows = 32;
  static constexpr int kColumns = 64;
  static constexpr int kLongRow = kRows * kColumns;

  // The taps taken at once: sums of all but the first ones continue, sums of all but the last ones are kept.
  struct Part {
    int taps;
    int tapStep;
    bool isFirst;
    bool isLast;
    bool isSymmetric;  // opposite taps are equal and all are here, in exact sums
  };

  // Converts `count` pixels, and zeros after them up to whole blocks and `reach` more.
  void Load(const Pixel* pixels, int count, Sum* source, int reach) const {
    const int end = (count - reach + kBlock - 1) / kBlock * kBlock + reach;
    for (int i = 0; i < end; i += kBlock) {
      // The next tile: too many rows at once for the processor to foresee by itself.
      __builtin_prefetch(
          reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(pixels + i) + kColumns * sizeof(Pixel)));
      Pixels block{};
      const int valid = std::max(0, std::min(kBlock, count - i));
      if (valid == kBlock) {
        std::memcpy(&block, pixels + i, sizeof block);
      } else {
        std::memcpy(&block, pixels + i, static_cast<std::size_t>(valid) * sizeof(Pixel));
      }
      Vector vectors[kVectors];
      codec_.Widen(block, vectors);
      for (int k = 0; k < kVectors; ++k) StoreLanes(source + i + k * kLanes, vectors[k]);
    }
  }

  void Convolve(const Sum* source, Part part, Sum* sums, Pixel* pixels, int count) const {
    int i = 0;
    if constexpr (kBlocksAtOnce == 1) {
      // Chains of additions: four at a time are too few to hide the latency of many taps. Six fill the registers; the
      // sums then go through memory.
      if (part.taps >= 7 && !part.isSymmetric) {
        const int end = (count + kBlock - 1) / kBlock * kBlock;
        for (; i + 6 * kLanes <= end; i += 6 * kLanes) AddProducts<6>(source + i, part, sums + i);
        for (; i < end; i += 2 * kLanes) AddProducts<2>(source + i, part, sums + i);
        for (i = 0; part.isLast && i < count; i += kBlock) {
          Vector sum[kVectors];
          for (int k = 0; k < kVectors; ++k) sum[k] = LoadLanes<Vector>(sums + i + k * kLanes);
          Store(sum, pixels + i, count - i);
        }
        return;
      }
    }
    if constexpr (kBlocksAtOnce > 1) {
      for (; i + (kBlocksAtOnce - 1) * kBlock < count; i += kBlocksAtOnce * kBlock) {
        ConvolveBlocks<kBlocksAtOnce>(source + i, part, sums + i, pixels + i, count - i);
      }
    }
    for (; i < count; i += kBlock) ConvolveBlocks<1>(source + i, part, sums + i, pixels + i, count - i);
  }

  // Volatile, so that a tap is read once and stays in a register instead of being read again for every product.
  Vector Tap(int j) const { return *static_cast<const volatile Vector*>(&taps_[j]); }

  template <int blocks>
  void ConvolveBlocks(const Sum* source, Part part, Sum* sums, Pixel* pixels, int count) const {
    Vector sum[blocks][kVectors];
    for (int b = 0; b < blocks; ++b) {
      for (int k = 0; k < kVectors; ++k) {
        sum[b][k] = part.isFirst ? Vector{} + codec_.start : LoadLanes<Vector>(sums + b * kBlock + k * kLanes);
      }
    }
    int j = 0;
    int end = part.taps;
    if (codec_.isExact && part.isSymmetric) {
      const Sum* opposite = source + (end - 1) * part.tapStep;
      for (; j + 1 < end; ++j, --end, source += part.tapStep, opposite -= part.tapStep) {
        const Vector tap = Tap(j);
        for (int b = 0; b < blocks; ++b) {
          for (int k = 0; k < kVectors; ++k) {
            const int at = b * kBlock + k * kLanes;
            sum[b][k] += (LoadLanes<Vector>(source + at) + LoadLanes<Vector>(opposite + at)) * tap;
          }
        }
      }
    }
    for (; j < end; ++j, source += part.tapStep) {
      const Vector tap = Tap(j);
      for (int b = 0; b < blocks; ++b) {
        for (int k = 0; k < kVectors; ++k) {
          sum[b][k] += LoadLanes<Vector>(source + b * kBlock + k * kLanes) * tap;
        }
      }
    }
    for (int b = 0; b < blocks; ++b, count -= kBlock) {
      if (!part.isLast) {
        for (int k = 0; k < kVectors; ++k) StoreLanes(sums + b * kBlock + k * kLanes, sum[b][k]);
        continue;
      }
      Store(sum[b], pixels + b * kBlock, count);
    }
  }

  template <int vectors>
  void AddProducts(const Sum* source, Part part, Sum* sums) const {
    Vector sum[vectors];
    for (int k = 0; k < vectors; ++k) {
      sum[k] = part.isFirst ? Vector{} + codec_.start : LoadLanes<Vector>(sums + k * kLanes);
    }
    for (int j = 0; j < part.taps; ++j, source += part.tapStep) {
      const Vector tap = Tap(j);
      for (int k = 0; k < vectors; ++k) sum[k] += LoadLanes<Vector>(source + k * kLanes) * tap;
    }
    for (int k = 0; k < vectors; ++k) StoreLanes(sums + k * kLanes, sum[k]);
  }

  // Stores a block of which `count` pixels lie in the region.
  void Store(const Vector (&sum)[kVectors], Pixel* pixels, int count) const {
    const Pixels block = codec_.Narrow(sum);
    if (count >= kBlock) {
      std::memcpy(pixels, &block, sizeof block);
    } else {
      std::memcpy(pixels, &block, static_cast<std::size_t>(count) * sizeof(Pixel));
    }
  }

  const Codec codec_;
  Vector taps_[kTaps];
  alignas(16) Sum source_[(kRows + kTaps) * kColumns];
  alignas(16) Sum sums_[kRows * kColumns];
};

}  // namespace norvala
