#include "pixel/pixel.h"
#include "pixel/rows.h"

namespace norvala {
namespace {

// Whether `inside` pixels fit into `outside` behind `before` others.
bool Fits(std::int32_t inside, std::int32_t outside, std::int32_t before) {
  return static_cast<std::int64_t>(before) + inside <= outside;
}

}  // namespace

template <class T>
StatusCode Copy(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size) {
  if (src == nullptr || dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  CopyRows(size, Rows{src, srcStep}, Rows{dst, dstStep});
  return StatusCode::Success;
}

template StatusCode Copy(const BW8*, std::int32_t, BW8*, std::int32_t, RegionSize);
template StatusCode Copy(const BW16*, std::int32_t, BW16*, std::int32_t, RegionSize);
template StatusCode Copy(const FLOAT32*, std::int32_t, FLOAT32*, std::int32_t, RegionSize);

template <class T>
StatusCode Set(T value, T* dst, std::int32_t dstStep, RegionSize size) {
  if (dst == nullptr) return StatusCode::NullPointer;
  if (IsEmpty(size)) return StatusCode::NonPositiveSize;
  if (dstStep < 1) return StatusCode::NonPositiveStep;
  FillRows(value, size, Rows{dst, dstStep});
  return StatusCode::Success;
}

template StatusCode Set(BW8, BW8*, std::int32_t, RegionSize);
template StatusCode Set(FLOAT32, FLOAT32*, std::int32_t, RegionSize);

template <class T>
StatusCode CopyReplicateBorder(T* image, std::int32_t step, RegionSize inner, RegionSize outer, std::int32_t top,
                               std::int32_t left) {
  if (image == nullptr) return StatusCode::NullPointer;
  if (step < 1) return StatusCode::NonPositiveStep;
  if (IsEmpty(inner) || IsEmpty(outer) || top < 0 || left < 0 || !Fits(inner.width, outer.width, left) ||
      !Fits(inner.height, outer.height, top)) {
    return StatusCode::NonPositiveSize;
  }
  const auto innerWidth = static_cast<std::size_t>(inner.width);
  const auto outerWidth = static_cast<std::size_t>(outer.width);
  const auto before = static_cast<std::size_t>(left);
  const std::size_t after = outerWidth - innerWidth - before;
  const std::int32_t bottom = outer.height - inner.height - top;
  const auto widen = [&](Unaligned<T>* row) {
    FillRow(LoadUnaligned<Bits<T>>(row), row - before, before);
    FillRow(LoadUnaligned<Bits<T>>(row + innerWidth - 1), row + innerWidth, after);
  };

  // The topmost rows are copies of the first inner row with its side borders, and so on downwards: the order matters
  // where a small step makes rows overlap.
  widen(Row(image, step, 0));
  const Unaligned<T>* const first = Row(image, step, 0) - before;
  for (std::int32_t y = -top; y < 0; ++y) CopyRow<T>(first, Row(image, step, y) - before, outerWidth);
  for (std::int32_t y = 1; y < inner.height; ++y) widen(Row(image, step, y));
  const Unaligned<T>* const last = Row(image, step, inner.height - 1) - before;
  for (std::int32_t y = 0; y < bottom; ++y) {
    CopyRow<T>(last, Row(image, step, std::ptrdiff_t{inner.height} + y) - before, outerWidth);
  }
  return StatusCode::Success;
}

template StatusCode CopyReplicateBorder(BW8*, std::int32_t, RegionSize, RegionSize, std::int32_t, std::int32_t);
template StatusCode CopyReplicateBorder(BW16*, std::int32_t, RegionSize, RegionSize, std::int32_t, std::int32_t);
template StatusCode CopyReplicateBorder(FLOAT32*, std::int32_t, RegionSize, RegionSize, std::int32_t, std::int32_t);

}  // namespace norvala
