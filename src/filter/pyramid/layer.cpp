#include "filter/pyramid/layer.h"

#include <algorithm>
#include <cstring>

#include "filter/filter.h"
#include "frame/aligned_memory.h"
#include "frame/memory.h"

namespace norvala {
namespace {

template <class T>
T* AlignUp(void* address) {
  return reinterpret_cast<T*>((reinterpret_cast<std::uintptr_t>(address) + kBufferAlignment - 1) &
                              ~static_cast<std::uintptr_t>(kBufferAlignment - 1));
}

constexpr std::int64_t kLargestBlock = INT32_MAX;

bool ValidRate(FLOAT32 rate) { return rate > 1.0F && rate <= 10.0F; }

// Whether images of this size are filtered with whole row sums, which needs a work area of its own.
bool LargerThanKernel(RegionSize size, std::int32_t kernelSize) {
  return size.width > kernelSize && size.height > kernelSize;
}

// Bytes of the kernel and the first work area.
std::int64_t CommonBytes(RegionSize size, std::int64_t kernelSize, std::int64_t channels) {
  const std::int64_t rowCells = (channels * size.width + 7) & ~std::int64_t{7};
  const std::int64_t longest = std::max<std::int64_t>(size.height, rowCells);
  return 2 * kernelSize + (kernelSize + size.height) * (kernelSize + rowCells) * 4 + longest * channels * 4;
}

// Bytes of the whole block, or a number beyond kLargestBlock.
std::int64_t BlockBytes(RegionSize size, std::int64_t kernelSize, std::int64_t channels) {
  const std::int64_t rowCells = (channels * size.width + 7) & ~std::int64_t{7};
  // The product below would overflow only far beyond what can be allocated.
  if ((kernelSize + size.height) > kLargestBlock / (kernelSize + rowCells)) return INT64_MAX;
  const std::int64_t common = CommonBytes(size, kernelSize, channels);
  if (!LargerThanKernel(size, static_cast<std::int32_t>(kernelSize))) return common + 140;
  return 20 * kernelSize + kernelSize * channels * (kernelSize / 2 + kernelSize) * 2 + 32 * kernelSize +
         rowCells * 4 * kernelSize + common + 240;
}

}  // namespace

StatusCode PyramidLayerDownInitAlloc(PyramidLayerState** statePtrOut, RegionSize size, FLOAT32 rate,
                                     const std::int16_t* kernel, std::int32_t kernelSize, std::int32_t mode,
                                     std::int32_t elementType, std::int32_t channels) {
  if (statePtrOut == nullptr || kernel == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (mode != 2 || !ValidRate(rate) || kernelSize < 3 || kernelSize % 2 == 0) return StatusCode::BadArgument;
  if (channels != 1 && channels != 3) return StatusCode::UnsupportedChannels;
  if (elementType != 1 && elementType != 3 && elementType != 9) return StatusCode::UnsupportedDataType;

  AlignedVector<std::uint8_t> block(BlockBytes(size, kernelSize, channels));
  if (!block) return StatusCode::WorkBufferUnavailable;
  auto* const state = reinterpret_cast<PyramidLayerState*>(block.data());
  state->kernel = AlignUp<std::int16_t>(state + 1);
  state->work = AlignUp<std::uint8_t>(state->kernel + kernelSize + 1);
  // Images that are not larger than the kernel keep their ring of rows in the first area, behind the lines.
  const std::int64_t firstArea = LargerThanKernel(size, kernelSize)
                                     ? CommonBytes(size, kernelSize, channels) - 2 * std::int64_t{kernelSize}
                                     : LayerLines::ByteCount(size.width, kernelSize);
  state->work2 = AlignUp<std::uint8_t>(state->work + static_cast<std::ptrdiff_t>(firstArea));
  state->kernelSize = kernelSize;
  state->elementType = elementType;
  state->width = size.width;
  state->height = size.height;
  state->mode = mode;
  state->rate = rate;
  std::memset(state->kernel, 0, static_cast<std::size_t>(state->work - reinterpret_cast<std::uint8_t*>(state->kernel)));
  const bool symmetric = NormaliseLayerKernel(kernel, kernelSize, state->kernel);
  block.Release();
  *statePtrOut = state;
  return symmetric ? StatusCode::Success : StatusCode::AsymmetricKernel;
}

StatusCode PyramidLayerDownFree(PyramidLayerState* state) {
  kFree1D(state);
  return StatusCode::Success;
}

StatusCode PyramidLayerDownBW8(const BW8* src, std::int32_t srcStep, RegionSize srcSize, BW8* dst, std::int32_t dstStep,
                               RegionSize dstSize, PyramidLayerState* state) {
  if (src == nullptr || dst == nullptr || state == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(srcSize)) return StatusCode::NonPositiveSize;
  if (srcStep < srcSize.width || dstStep < dstSize.width) return StatusCode::NonPositiveStep;
  if (!ValidRate(state->rate)) return StatusCode::BadArgument;
  if (dstSize.width != ReducedSize(srcSize.width, state->rate) ||
      dstSize.height != ReducedSize(srcSize.height, state->rate)) {
    return StatusCode::NonPositiveSize;
  }
  if (srcSize.width > state->width || srcSize.height > state->height) return StatusCode::NonPositiveSize;
  ReduceLayer(src, srcStep, srcSize, dst, dstStep, dstSize, *state);
  return StatusCode::Success;
}

}  // namespace norvala
