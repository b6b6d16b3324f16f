#pragma once

#include <algorithm>

#include "filter/separable/window.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {

// The separable convolution by tiles: source pixels are converted to the type of the sums once and meet all taps from
// there. A filter along columns slides its tile down the image and moves the rows that two tiles share. Lies on the
// stack, less than 40 KiB.
//
// The codec fixes the types and the conversions:
//   Pixel, Sum                              a pixel and a sum
//   vectors                                 how many vectors of sums make up a block
//   void Widen(const void* pixels, Vector (&)[vectors]) const      a block of pixels to sums
//   void Narrow(const Vector (&)[vectors], void* pixels) const     a block of sums to pixels
//   tapScale                                what the taps are multiplied with
//   Sum start                               where every sum starts
//   bool isExact                            whether sums are the same in whatever order products are added
template <class Codec>
class SeparableTile {
 public:
  using Pixel = typename Codec::Pixel;
  using Sum = typename Codec::Sum;
  using Vector = Lanes<Sum, 16 / sizeof(Sum)>;

  explicit SeparableTile(const Codec& codec) : codec_(codec) {}

  // Filters the whole region. Every sum takes its products in the order of increasing source position.
  template <class Tap>
  void Filter(const SeparableCall<Pixel, Tap>& call) {
    const SeparableWindow<Pixel> window(call);
    const bool alongRow = call.direction == Direction::AlongRow;
    const int mostTaps = std::min(call.kernelSize, kTaps);
    const int tileRows = alongRow ? 1 : kRows - mostTaps + 1;
    const int tileColumns = alongRow ? kLongRow : kColumns;
    const int band = alongRow ? 1 : kBand;
    const bool isWhole = call.kernelSize == mostTaps;
    const bool isSymmetric = codec_.isExact && isWhole && call.IsSymmetric();
    for (int top = 0, bottom = 0; top < call.size.height; top = bottom) {
      bottom = top + std::min(band, call.size.height - top);
      for (int x = 0, columns = 0; x < call.size.width; x += columns) {
        columns = std::min(tileColumns, call.size.width - x);
        for (int y = top, rows = 0; y < bottom; y += rows) {
          rows = std::min(tileRows, bottom - y);
          for (int tap = 0, taps = 0; tap < call.kernelSize; tap += taps) {
            taps = std::min(mostTaps, call.kernelSize - tap);
            const int reach = taps - 1;
            int loaded = 0;
            if (!isWhole || y == top) {
              for (int j = 0; j < taps; ++j)
                taps_[j] = Vector{} + static_cast<Sum>(call.MirroredTap(tap + j)) * Codec::tapScale;
            } else if (!alongRow) {
              loaded = reach;
              for (int i = 0; i < reach * kColumns; i += kLanes) {
                StoreUnaligned(source_ + i, LoadUnaligned<Vector>(source_ + tileRows * kColumns + i));
              }
            }
            const Part part = {taps, alongRow ? 1 : kColumns, tap == 0, call.kernelSize - tap == taps, isSymmetric};
            for (int row = 0; row < rows; ++row) {
              for (; loaded <= (alongRow ? 0 : row + reach); ++loaded) {
                const Pixel* pixels = window.Source(x, y, std::ptrdiff_t{tap} + loaded);
                if (!alongRow) Prefetch(pixels, window.rowStep, columns);
                Load(pixels, columns, alongRow ? reach : 0, source_ + loaded * kColumns);
              }
              Pixel* pixels = window.Destination(x, std::ptrdiff_t{y} + row);
              if (alongRow) {
                Convolve<Direction::AlongRow>(source_, part, sums_, pixels, columns);
              } else {
                Prefetch(pixels, window.dstStep, columns);
                Sum* const sums = sums_ + (isWhole ? 0 : row * kColumns);  // kept only where taps are left over
                Convolve<Direction::AlongColumn>(source_ + row * kColumns, part, sums, pixels, columns);
              }
            }
          }
        }
      }
    }
  }

 private:
  static constexpr int kLanes = 16 / static_cast<int>(sizeof(Sum));
  static constexpr int kVectors = Codec::vectors;
  static constexpr int kBlock = kVectors * kLanes;
  static constexpr int kBlocksAtOnce = sizeof(void*) == 8 ? 2 : 1;  // as the registers allow

  static constexpr int kTaps = 32;  // taken at once
  // A tile holds rows of kColumns pixels for taps along columns, one longer row for taps along rows. Tiles slide down
  // bands: no more rows than the processor keeps the page addresses of.
  static constexpr int kRows = 48;
  static constexpr int kColumns = (512 / static_cast<int>(sizeof(Sum)) + kBlock - 1) / kBlock * kBlock;
  static constexpr int kBand = 128;
  static constexpr int kLongRow = (kRows - kTaps) * kColumns;

  // The taps taken at once: sums of all but the first ones continue, sums of all but the last ones are kept.
  struct Part {
    int taps;
    int tapStep;  // not a constant along rows, lest the compiler carry pixels from tap to tap in too few registers
    bool isFirst;
    bool isLast;
    bool isSymmetric;  // opposite taps are equal and all are here, in exact sums
  };

  // Asks for the row that comes some rows later: the processor foresees a row by itself, but not a strip of many.
  static void Prefetch(const Pixel* pixels, std::ptrdiff_t step, int count) {
    constexpr int kRowsAhead = 8;
    constexpr int kCacheLine = 64;
    const Pixel* later = Row(pixels, step, kRowsAhead);
    const int lines = (count * static_cast<int>(sizeof(Pixel)) + kCacheLine - 1) / kCacheLine;
    for (int line = 0; line < lines; ++line) __builtin_prefetch(Row(later, kCacheLine, line));
  }

  // Converts `count` pixels and `reach` more, and zeros after them up to whole blocks.
  void Load(const Pixel* pixels, int count, int reach, Sum* source) const {
    const int end = (count + kBlock - 1) / kBlock * kBlock + reach;
    count += reach;
    int i = 0;
    for (; i + kBlock <= count; i += kBlock) {
      __builtin_prefetch(Row(pixels, static_cast<std::ptrdiff_t>(sizeof(Pixel)), i + kColumns));
      LoadBlock(pixels + i, source + i);
    }
    for (; i < end; i += kBlock) {
      Pixel block[kBlock] = {};
      if (i < count) std::memcpy(block, pixels + i, static_cast<std::size_t>(count - i) * sizeof(Pixel));
      LoadBlock(block, source + i);
    }
  }
  void LoadBlock(const void* pixels, Sum* source) const {
    Vector vectors[kVectors];
    codec_.Widen(pixels, vectors);
    for (int k = 0; k < kVectors; ++k) StoreUnaligned(source + k * kLanes, vectors[k]);
  }

  // Makes a row of pixels, or of sums to be continued. Not inlined, since the loops below need all registers.
  template <Direction direction>
  [[gnu::noinline]] void Convolve(const Sum* source, const Part& part, Sum* sums, Pixel* pixels, int count) const {
    int i = 0;
    if constexpr (kBlocksAtOnce > 1) {
      for (; i + kBlocksAtOnce * kBlock <= count; i += kBlocksAtOnce * kBlock) {
        ConvolveBlocks<direction, kBlocksAtOnce>(source + i, part, sums + i, pixels + i);
      }
    }
    for (; i + kBlock <= count; i += kBlock) ConvolveBlocks<direction, 1>(source + i, part, sums + i, pixels + i);
    if (i < count) {
      Pixel block[kBlock];
      ConvolveBlocks<direction, 1>(source + i, part, sums + i, block);
      if (part.isLast) std::memcpy(pixels + i, block, static_cast<std::size_t>(count - i) * sizeof(Pixel));
    }
  }

  template <Direction direction, int blocks>
  void ConvolveBlocks(const Sum* source, const Part& part, Sum* sums, void* pixels) const {
    constexpr int kSums = blocks * kVectors;
    const int tapStep = direction == Direction::AlongColumn ? kColumns : part.tapStep;
    Vector sum[kSums];
    for (int k = 0; k < kSums; ++k) {
      sum[k] = part.isFirst ? Vector{} + codec_.start : LoadUnaligned<Vector>(sums + k * kLanes);
    }
    const Vector* tap = taps_;
    if (codec_.isExact && part.isSymmetric) {
      const int middle = part.taps / 2;
      if (part.taps % 2 != 0) {
        const Sum* row = source + middle * tapStep;
        AddProducts([=](int k) { return At<direction>(row, k); }, tap + middle, sum);
      }
      const Sum* opposite = source + (part.taps - 1) * tapStep;
      for (; source < opposite; ++tap, source += tapStep, opposite -= tapStep) {
        AddProducts([=](int k) { return At<direction>(source, k) + At<direction>(opposite, k); }, tap, sum);
      }
    } else {
      for (const Vector* const end = tap + part.taps; tap != end; ++tap, source += tapStep) {
        AddProducts([=](int k) { return At<direction>(source, k); }, tap, sum);
      }
    }
    for (int b = 0; b < blocks; ++b) {
      Vector block[kVectors];
      for (int k = 0; k < kVectors; ++k) block[k] = sum[b * kVectors + k];
      if (part.isLast) {
        codec_.Narrow(block, static_cast<Pixel*>(pixels) + b * kBlock);
      } else {
        for (int k = 0; k < kVectors; ++k) StoreUnaligned(sums + b * kBlock + k * kLanes, block[k]);
      }
    }
  }

  // Vector `k` of a row. Those of whole rows are aligned, those at an offset of some taps are not.
  template <Direction direction>
  static Vector At(const Sum* row, int k) {
    const Sum* at = row + k * kLanes;
    return LoadUnaligned<Vector>(direction == Direction::AlongColumn ? __builtin_assume_aligned(at, sizeof(Vector))
                                                                     : at);
  }

  template <int sums, class Values>
  static void AddProducts(Values values, const Vector* tap, Vector (&sum)[sums]) {
    // Volatile, so that the tap is read once and stays in a register instead of being read again for every product.
    const Vector weight = *static_cast<const volatile Vector*>(tap);
    for (int k = 0; k < sums; ++k) sum[k] += values(k) * weight;
  }

  const Codec codec_;
  Vector taps_[kTaps];
  alignas(16) Sum source_[kRows * kColumns];
  alignas(16) Sum sums_[(kRows - kTaps + 1) * kColumns];
};

}  // namespace norvala
