#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The pixel-wise primitives and their tables. Arguments and behaviour are those of the exports of the same name.

namespace norvala {

// ---- Copy, set and border replication ----

StatusCode CopyBW8(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size);
StatusCode CopyBW16(const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep, RegionSize size);
StatusCode CopyFLOAT32(const FLOAT32* src, std::int32_t srcStep, FLOAT32* dst, std::int32_t dstStep, RegionSize size);
StatusCode SetBW8(BW8 value, BW8* dst, std::int32_t dstStep, RegionSize size);
StatusCode SetFLOAT32(FLOAT32 value, FLOAT32* dst, std::int32_t dstStep, RegionSize size);
StatusCode CopyReplicateBorderBW8(BW8* image, std::int32_t step, RegionSize inner, RegionSize outer, std::int32_t top,
                                  std::int32_t left);
StatusCode CopyReplicateBorderBW16(BW16* image, std::int32_t step, RegionSize inner, RegionSize outer, std::int32_t top,
                                   std::int32_t left);
StatusCode CopyReplicateBorderFLOAT32(FLOAT32* image, std::int32_t step, RegionSize inner, RegionSize outer,
                                      std::int32_t top, std::int32_t left);

inline constexpr PrimitiveTable kCopyBW8{CopyBW8};
inline constexpr PrimitiveTable kCopyBW16{CopyBW16};
inline constexpr PrimitiveTable kCopyFLOAT32{CopyFLOAT32};
inline constexpr PrimitiveTable kSetBW8{SetBW8};
inline constexpr PrimitiveTable kSetFLOAT32{SetFLOAT32};
inline constexpr PrimitiveTable kCopyReplicateBorderBW8{CopyReplicateBorderBW8};
inline constexpr PrimitiveTable kCopyReplicateBorderBW16{CopyReplicateBorderBW16};
inline constexpr PrimitiveTable kCopyReplicateBorderFLOAT32{CopyReplicateBorderFLOAT32};

// ---- Type conversions ----

// ---- Logical and shift operations ----

// ---- Arithmetic and statistics ----

// ---- Colour to grey ----

}  // namespace norvala
