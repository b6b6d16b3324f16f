#include "filter/filter.h"
#include "filter/separable_tile.h"

namespace norvala {
namespace {

StatusCode Filter(const SeparableCall<FLOAT32, FLOAT32>& call) {
  if (const StatusCode status = call.CheckPointersAndSizes(); status != StatusCode::Success) return status;
  if (const StatusCode status = call.CheckSteps(); status != StatusCode::Success) return status;
  SeparableTile<double> tile;
  tile.Filter(
      call, 0.0, [](FLOAT32 pixel) { return static_cast<double>(pixel); },
      [](double sum) { return static_cast<FLOAT32>(sum); });
  return StatusCode::Success;
}

}  // namespace

StatusCode FilterRowFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                            RegionSize size, const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  return Filter({Direction::AlongRow, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor});
}

StatusCode FilterColumnFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep,
                               RegionSize size, const FLOAT32* kernel, std::int32_t kernelSize, std::int32_t anchor) {
  return Filter({Direction::AlongColumn, src, srcStep, dst, dstStep, size, kernel, kernelSize, anchor});
}

}  // namespace norvala
