#pragma once

#include <algorithm>
#include <cstring>

#include "filter/separable/window.h"
#include "frame/lanes.h"
#include "frame/memory.h"

namespace norvala {

// The separable convolution in double precision, by tiles on the stack (less than 40 KiB): source pixels are converted
// to double once and meet all taps from there.
//
// The pixel traits fix the conversions:
//   Pixel                                                          a pixel
//   vectors                                                        how many vectors of sums make up a block
//   void Widen(const void* pixels, F64x2 (&)[vectors]) const       a block of pixels to doubles
//   void Narrow(const F64x2 (&)[vectors], void* pixels) const      a block of sums to pixels
//   tapScale                                                       what the taps are multiplied with
//   bool isExact                            whether sums are the same in whatever order products are added
template <class Traits>
class SeparableTile {
 public:
  using Pixel = typename Traits::Pixel;
  using Call = SeparableCall<Pixel, FLOAT32>;

  explicit SeparableTile(const Call& call)
      : call_(call),
        window_(call),
        isWhole_(call.kernelSize <= kTaps),
        isSymmetric_(Traits::isExact && isWhole_ && call.IsSymmetric()) {
    if (isWhole_) TakeTaps(0, call.kernelSize);
  }

  // Filters the whole region. Every sum takes its products in the order of increasing source position.
  void Filter() { call_.axis == Axis::Row ? FilterAlongRows() : FilterAlongColumns(); }

 private:
  static constexpr int kLanes = 2;
  static constexpr int kVectors = Traits::vectors;
  static constexpr int kBlock = kVectors * kLanes;
  static constexpr int kBlocksAtOnce = sizeof(void*) == 8 ? 2 : 1;  // as the registers allow

  static constexpr int kTaps = 32;  // taken at once
  // For taps along columns a tile holds kRows rows of kColumns pixels, for taps along rows a piece of one row.
  static constexpr int kRows = 48;
  static constexpr int kColumns = (64 + kBlock - 1) / kBlock * kBlock;
  static constexpr int kPiece = (kRows - kTaps) * kColumns;
  // Tiles move down over so many rows before the next columns follow. Rows of large images lie on memory pages of their
  // own, and the processor keeps the addresses of so many pages at a time (its TLB).
  static constexpr int kBand = 128;

  // The taps taken at once: sums of all but the first part continue, sums of all but the last part are kept.
  struct Part {
    std::int32_t first;
    int taps;
    int tapStep;  // not a constant along rows, lest the compiler carry pixels from tap to tap in too few registers
    bool isFirst;
    bool isLast;

    int Reach() const { return taps - 1; }
  };

  void TakeTaps(std::int32_t first, int taps) {
    for (int j = 0; j < taps; ++j) {
      taps_[j] = Splat<F64x2>(static_cast<double>(call_.MirroredTap(first + j)) * Traits::tapScale);
    }
  }

  // Calls use(part) for the parts of the kernel, from the left or the top on.
  template <class Use>
  void ForEachPart(int tapStep, Use use) {
    for (std::int32_t first = 0, taps = 0; first < call_.kernelSize; first += taps) {
      taps = std::min(kTaps, call_.kernelSize - first);
      if (!isWhole_) TakeTaps(first, taps);
      use(Part{first, taps, tapStep, first == 0, call_.kernelSize - first == taps});
    }
  }

  void FilterAlongRows() {
    for (int y = 0; y < call_.size.height; ++y) {
      for (int x = 0, columns = 0; x < call_.size.width; x += columns) {
        columns = std::min(kPiece, call_.size.width - x);
        ForEachPart(1, [this, x, y, columns](const Part& part) {
          Load(window_.Source(x, y, part.first), columns, part.Reach(), source_);
          Convolve<Axis::Row>(source_, part, sums_, window_.Destination(x, y), columns);
        });
      }
    }
  }

  void FilterAlongColumns() {
    const int tileRows = kRows - std::min(call_.kernelSize, kTaps) + 1;
    for (int top = 0, bottom = 0; top < call_.size.height; top = bottom) {
      bottom = top + std::min(kBand, call_.size.height - top);
      for (int x = 0, columns = 0; x < call_.size.width; x += columns) {
        columns = std::min(kColumns, call_.size.width - x);
        for (int y = top, rows = 0; y < bottom; y += rows) {
          rows = std::min(tileRows, bottom - y);
          ForEachPart(kColumns, [this, x, y, columns, rows, isTop = y == top](const Part& part) {
            // The rows that this tile shares with the one above are there already, unless another part came between.
            const int loaded = isWhole_ && !isTop ? MoveUp(part.Reach()) : 0;
            FilterRows(part, x, y, columns, rows, loaded);
          });
        }
      }
    }
  }

  // Moves the last rows of a full tile to its top.
  int MoveUp(int rows) {
    const double* const last = source_ + (kRows - rows) * kColumns;
    for (int i = 0; i < rows * kColumns; i += kLanes) StoreUnaligned(source_ + i, LoadUnaligned<F64x2>(last + i));
    return rows;
  }

  // Filters rows of a tile whose first `loaded` source rows are there.
  void FilterRows(const Part& part, int x, int y, int columns, int rows, int loaded) {
    for (int row = 0; row < rows; ++row) {
      for (; loaded <= row + part.Reach(); ++loaded) {
        const Pixel* pixels = window_.Source(x, y, std::ptrdiff_t{part.first} + loaded);
        PrefetchRow(pixels, window_.rowStep, columns);
        Load(pixels, columns, 0, source_ + loaded * kColumns);
      }
      Pixel* pixels = window_.Destination(x, std::ptrdiff_t{y} + row);
      PrefetchRow(pixels, window_.dstStep, columns);
      double* const sums = sums_ + (isWhole_ ? 0 : row * kColumns);  // kept only where taps are left over
      Convolve<Axis::Column>(source_ + row * kColumns, part, sums, pixels, columns);
    }
  }

  // Prefetches the pixels some rows below. The processor itself does so only within a page.
  static void PrefetchRow(const Pixel* pixels, std::ptrdiff_t step, int count) {
    constexpr int kRowsAhead = 8;
    constexpr int kCacheLine = 64;
    for (int byte = 0; byte < count * static_cast<int>(sizeof(Pixel)); byte += kCacheLine) {
      Prefetch(Row(pixels, step, kRowsAhead), byte);
    }
  }

  // Converts `count` pixels and `reach` more, and zeros after them up to whole blocks.
  void Load(const Pixel* pixels, int count, int reach, double* source) const {
    const int end = (count + kBlock - 1) / kBlock * kBlock + reach;
    count += reach;
    int i = 0;
    for (; i + kBlock <= count; i += kBlock) {
      Prefetch(pixels, (std::ptrdiff_t{i} + kColumns) * static_cast<std::ptrdiff_t>(sizeof(Pixel)));
      LoadBlock(pixels + i, source + i);
    }
    for (; i < end; i += kBlock) {
      Pixel block[kBlock] = {};
      if (i < count) std::memcpy(block, pixels + i, static_cast<std::size_t>(count - i) * sizeof(Pixel));
      LoadBlock(block, source + i);
    }
  }
  void LoadBlock(const void* pixels, double* source) const {
    F64x2 vectors[kVectors];
    traits_.Widen(pixels, vectors);
    for (int k = 0; k < kVectors; ++k) StoreUnaligned(source + k * kLanes, vectors[k]);
  }

  // Makes a row of pixels, or of sums to be continued. Not inlined, since the loops below need all registers.
  template <Axis axis>
  [[gnu::noinline]] void Convolve(const double* source, const Part& part, double* sums, Pixel* pixels,
                                  int count) const {
    int i = 0;
    if constexpr (kBlocksAtOnce > 1) {
      for (; i + kBlocksAtOnce * kBlock <= count; i += kBlocksAtOnce * kBlock) {
        ConvolveBlocks<axis, kBlocksAtOnce>(source + i, part, sums + i, pixels + i);
      }
    }
    for (; i + kBlock <= count; i += kBlock) ConvolveBlocks<axis, 1>(source + i, part, sums + i, pixels + i);
    if (i < count) {
      Pixel block[kBlock];
      ConvolveBlocks<axis, 1>(source + i, part, sums + i, block);
      if (part.isLast) std::memcpy(pixels + i, block, static_cast<std::size_t>(count - i) * sizeof(Pixel));
    }
  }

  template <Axis axis, int blocks>
  void ConvolveBlocks(const double* source, const Part& part, double* sums, void* pixels) const {
    constexpr int kSums = blocks * kVectors;
    const int tapStep = axis == Axis::Column ? kColumns : part.tapStep;
    F64x2 sum[kSums];
    for (int k = 0; k < kSums; ++k) {
      sum[k] = part.isFirst ? F64x2{} : LoadUnaligned<F64x2>(sums + k * kLanes);
    }
    const F64x2* tap = taps_;
    if (Traits::isExact && isSymmetric_) {
      const int middle = part.taps / 2;
      if (part.taps % 2 != 0) {
        const double* row = source + middle * tapStep;
        AddProducts([=](int k) { return At<axis>(row, k); }, tap + middle, sum);
      }
      const double* opposite = source + (part.taps - 1) * tapStep;
      for (; source < opposite; ++tap, source += tapStep, opposite -= tapStep) {
        AddProducts([=](int k) { return At<axis>(source, k) + At<axis>(opposite, k); }, tap, sum);
      }
    } else {
      for (const F64x2* const end = tap + part.taps; tap != end; ++tap, source += tapStep) {
        AddProducts([=](int k) { return At<axis>(source, k); }, tap, sum);
      }
    }
    for (int b = 0; b < blocks; ++b) {
      F64x2 block[kVectors];
      for (int k = 0; k < kVectors; ++k) block[k] = sum[b * kVectors + k];
      if (part.isLast) {
        traits_.Narrow(block, static_cast<Pixel*>(pixels) + b * kBlock);
      } else {
        for (int k = 0; k < kVectors; ++k) StoreUnaligned(sums + b * kBlock + k * kLanes, block[k]);
      }
    }
  }

  // Vector `k` of a row. Those of whole rows are aligned, those at an offset of some taps are not.
  template <Axis axis>
  static F64x2 At(const double* row, int k) {
    const double* at = row + k * kLanes;
    return LoadUnaligned<F64x2>(axis == Axis::Column ? __builtin_assume_aligned(at, sizeof(F64x2)) : at);
  }

  template <int sums, class Values>
  static void AddProducts(Values values, const F64x2* tap, F64x2 (&sum)[sums]) {
    // Volatile, so that the tap is read once and stays in a register instead of being read again for every product.
    const F64x2 weight = *static_cast<const volatile F64x2*>(tap);
    for (int k = 0; k < sums; ++k) sum[k] += values(k) * weight;
  }

  const Call& call_;
  const SeparableWindow<Pixel> window_;
  const Traits traits_ = {};
  const bool isWhole_;      // all taps are taken at once
  const bool isSymmetric_;  // opposite taps are equal and all are here, in exact sums
  F64x2 taps_[kTaps];
  alignas(16) double source_[kRows * kColumns];
  alignas(16) double sums_[(kRows - kTaps + 1) * kColumns];
};

}  // namespace norvala
