#include <algorithm>

#include "filter/filter.h"
#include "filter/pyramid/layer.h"
#include "frame/aligned_memory.h"
#include "frame/memory.h"

namespace norvala {
namespace {

// ---- The block ----
//
// Its size is fixed by contract, whatever its areas take. They fit: the record takes at most 48 bytes, the tap behind
// the kernel 2, and the alignment of each of the three areas at most 30, together kRecordBytes. For an image that is
// not larger than the kernel, the lines take 16 bytes a row cell, 2 a tap and 2, and the ring, which never holds more
// rows than the image has, 4 * height a row cell; (kernelSize + height) * (kernelSize + rowCells) * 4 + rowCells * 4 is
// more than that, since kernelSize is at least 3. For larger images the ring has kernelSize * rowCells cells of its
// own, and nothing relies on the other terms of the size.

constexpr std::int64_t kCellBytes = 4;
constexpr std::int64_t kRecordBytes = 48 + 2 + 3 * 30;
constexpr std::int64_t kLargeImageExtraBytes = 100;
constexpr std::int64_t kLargeImageBytesPerTap = 20 + 32;

std::int64_t RowCells(RegionSize size, std::int64_t channels) {
  return AlignUp<std::int64_t>(channels * size.width, kColumnsAtOnce);
}

// Bytes of the kernel and the first work area.
std::int64_t CommonBytes(RegionSize size, std::int64_t kernelSize, std::int64_t channels) {
  const std::int64_t rowCells = RowCells(size, channels);
  const std::int64_t longest = std::max<std::int64_t>(size.height, rowCells);
  return 2 * kernelSize + (kernelSize + size.height) * (kernelSize + rowCells) * kCellBytes +
         longest * channels * kCellBytes;
}

// Bytes of the whole block, or a number beyond what can be allocated.
std::int64_t BlockBytes(RegionSize size, std::int64_t kernelSize, std::int64_t channels) {
  const std::int64_t rowCells = RowCells(size, channels);
  // The product in CommonBytes would overflow only far beyond that.
  if ((kernelSize + size.height) > INT32_MAX / (kernelSize + rowCells)) return INT64_MAX;
  const std::int64_t bytes = CommonBytes(size, kernelSize, channels) + kRecordBytes;
  if (!IsLargerThanKernel(size, kernelSize)) return bytes;
  return bytes + kLargeImageExtraBytes + kLargeImageBytesPerTap * kernelSize +
         kernelSize * channels * (kernelSize / 2 + kernelSize) * 2 + rowCells * kCellBytes * kernelSize;
}

template <class T>
T* AlignedArea(void* address) {
  return reinterpret_cast<T*>(AlignUp(static_cast<std::uint8_t*>(address), kBufferAlignment));
}

// ---- The kernel ----

// Scales the taps to a sum of 8192 (13 fractional bits): each is formed with 14, half added and truncated towards zero,
// cut to 16 bits, and shifted down by one. Only the centre and the left half of the kernel count; returns whether the
// right half mirrors the left. `normalised` is zeroed and has room for one tap more than `size`.
bool NormaliseKernel(const std::int16_t* kernel, std::int32_t size, std::int16_t* normalised) {
  const auto tap = [=](std::ptrdiff_t i) { return LoadUnaligned<std::int16_t>(kernel + i); };
  const std::ptrdiff_t centre = size / 2;
  const std::ptrdiff_t last = size - 1;
  bool symmetric = true;
  std::int64_t left = 0;
  for (std::ptrdiff_t i = 0; i < centre; ++i) {
    symmetric = symmetric && tap(i) == tap(last - i);
    left += tap(i);
  }
  const std::int64_t sum = tap(centre) + 2 * left;
  const double half = 4.0 * static_cast<double>(sum) * 0.5;
  // Without a sum to scale by the taps are stored as they are. By contract the left half is mirrored one place too far
  // right then, so that the copy of the first comes to lie behind the last.
  const auto stored = [&](std::int16_t value) {
    if (sum == 0) return value;
    const auto fourteenBits = static_cast<std::int32_t>(4.0 * value / half * 8192 + 0.5);
    return static_cast<std::int16_t>(static_cast<std::int16_t>(fourteenBits) >> 1);
  };
  const std::ptrdiff_t mirrorOfFirst = sum == 0 ? size : last;
  normalised[centre] = stored(tap(centre));
  for (std::ptrdiff_t i = 0; i < centre; ++i) normalised[i] = normalised[mirrorOfFirst - i] = stored(tap(i));
  return symmetric;
}

}  // namespace

StatusCode PyramidLayerDownInitAlloc(PyramidLayerState** statePtrOut, RegionSize size, FLOAT32 rate,
                                     const std::int16_t* kernel, std::int32_t kernelSize, std::int32_t mode,
                                     std::int32_t elementType, std::int32_t channels) {
  if (statePtrOut == nullptr || kernel == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (mode != 2 || !IsLayerRate(rate) || kernelSize < 3 || kernelSize % 2 == 0) return StatusCode::BadArgument;
  if (channels != 1 && channels != 3) return StatusCode::UnsupportedChannels;
  if (elementType != 1 && elementType != 3 && elementType != 9) return StatusCode::UnsupportedDataType;

  AlignedVector<std::uint8_t> block(BlockBytes(size, kernelSize, channels));
  if (!block) return StatusCode::WorkBufferUnavailable;
  auto* const state = reinterpret_cast<PyramidLayerState*>(block.data());
  auto* const taps = AlignedArea<std::int16_t>(state + 1);
  auto* const work = AlignedArea<std::uint8_t>(taps + kernelSize + 1);
  // Images that are not larger than the kernel keep their ring of rows in the first area, behind the lines.
  const std::int64_t firstArea = IsLargerThanKernel(size, kernelSize)
                                     ? CommonBytes(size, kernelSize, channels) - 2 * std::int64_t{kernelSize}
                                     : LayerLines::ByteCount(size.width, kernelSize);
  auto* const work2 = AlignedArea<std::uint8_t>(work + static_cast<std::ptrdiff_t>(firstArea));
  *state = {taps, work, work2, kernelSize, elementType, size.width, size.height, mode, rate};
  std::fill_n(taps, kernelSize + 1, std::int16_t{0});
  const bool symmetric = NormaliseKernel(kernel, kernelSize, taps);
  block.Release();
  *statePtrOut = state;
  return symmetric ? StatusCode::Success : StatusCode::AsymmetricKernel;
}

StatusCode PyramidLayerDownFree(PyramidLayerState* state) {
  kFree1D(state);
  return StatusCode::Success;
}

}  // namespace norvala
