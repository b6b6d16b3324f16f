#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The pixel-wise primitives and their tables. Arguments and behaviour are those of the exports of the same name.

namespace norvala {

// ---- Copy, set and border replication ----

template <class T>  // BW8, BW16, FLOAT32
StatusCode Copy(const T* src, std::int32_t srcStep, T* dst, std::int32_t dstStep, RegionSize size);
template <class T>  // BW8, FLOAT32
StatusCode Set(T value, T* dst, std::int32_t dstStep, RegionSize size);
template <class T>  // BW8, BW16, FLOAT32
StatusCode CopyReplicateBorder(T* image, std::int32_t step, RegionSize inner, RegionSize outer, std::int32_t top,
                               std::int32_t left);

inline constexpr PrimitiveTable kCopyBW8{Copy<BW8>};
inline constexpr PrimitiveTable kCopyBW16{Copy<BW16>};
inline constexpr PrimitiveTable kCopyFLOAT32{Copy<FLOAT32>};
inline constexpr PrimitiveTable kSetBW8{Set<BW8>};
inline constexpr PrimitiveTable kSetFLOAT32{Set<FLOAT32>};
inline constexpr PrimitiveTable kCopyReplicateBorderBW8{CopyReplicateBorder<BW8>};
inline constexpr PrimitiveTable kCopyReplicateBorderBW16{CopyReplicateBorder<BW16>};
inline constexpr PrimitiveTable kCopyReplicateBorderFLOAT32{CopyReplicateBorder<FLOAT32>};

// ---- Type conversions ----

template <class D>  // BW8, BW16
StatusCode ConvertFloat(const FLOAT32* src, std::int32_t srcStep, D* dst, std::int32_t dstStep, RegionSize size,
                        std::int32_t rounding);
template <class S, class D>  // BW8 to FLOAT32 and BW16, BW16 to BW8 and BW32
StatusCode Convert(const S* src, std::int32_t srcStep, D* dst, std::int32_t dstStep, RegionSize size);

inline constexpr PrimitiveTable kConvertFLOAT32toBW8{ConvertFloat<BW8>};
inline constexpr PrimitiveTable kConvertFLOAT32toBW16{ConvertFloat<BW16>};
inline constexpr PrimitiveTable kConvertBW8toFLOAT32{Convert<BW8, FLOAT32>};
inline constexpr PrimitiveTable kConvertBW8toBW16{Convert<BW8, BW16>};
inline constexpr PrimitiveTable kConvertBW16ToBW8{Convert<BW16, BW8>};
inline constexpr PrimitiveTable kConvertBW16toBW32{Convert<BW16, BW32>};

// ---- Logical and shift operations ----
// The destination may be a source; the exports in place pass their one image as both.

StatusCode AndBW32(const BW32* src1, std::int32_t src1Step, const BW32* src2, std::int32_t src2Step, BW32* dst,
                   std::int32_t dstStep, RegionSize size);
StatusCode OrBW32(const BW32* src1, std::int32_t src1Step, const BW32* src2, std::int32_t src2Step, BW32* dst,
                  std::int32_t dstStep, RegionSize size);
StatusCode AndCBW16(BW16 constant, const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep,
                    RegionSize size);
StatusCode RShiftCBW16(std::uint32_t count, const BW16* src, std::int32_t srcStep, BW16* dst, std::int32_t dstStep,
                       RegionSize size);
StatusCode RShiftCBW32(std::uint32_t count, const BW32* src, std::int32_t srcStep, BW32* dst, std::int32_t dstStep,
                       RegionSize size);
StatusCode LShiftCBW32(std::uint32_t count, const BW32* src, std::int32_t srcStep, BW32* dst, std::int32_t dstStep,
                       RegionSize size);

inline constexpr PrimitiveTable kAndBW32{AndBW32};
inline constexpr PrimitiveTable kOrBW32{OrBW32};
inline constexpr PrimitiveTable kAndCBW16{AndCBW16};
inline constexpr PrimitiveTable kRShiftCBW16{RShiftCBW16};
inline constexpr PrimitiveTable kRShiftCBW32{RShiftCBW32};
inline constexpr PrimitiveTable kLShiftCBW32{LShiftCBW32};

// ---- Arithmetic and statistics ----

StatusCode AddFLOAT32_C1IR(const FLOAT32* src, std::int32_t srcStep, FLOAT32* srcDst, std::int32_t srcDstStep,
                           RegionSize size);
StatusCode DivCFLOAT32_C1IR(FLOAT32 divisor, FLOAT32* image, std::int32_t step, RegionSize size);
StatusCode MeanBW8_C1R(const BW8* src, std::int32_t step, RegionSize size, FLOAT64* mean);
StatusCode MeanFLOAT32_C1R(const FLOAT32* src, std::int32_t step, RegionSize size, FLOAT64* mean, std::int32_t hint);
StatusCode MaxIndx_BW8(const BW8* src, std::int32_t step, RegionSize size, BW8* maximum, std::int32_t* column,
                       std::int32_t* row);

inline constexpr PrimitiveTable kAddFLOAT32_C1IR{AddFLOAT32_C1IR};
inline constexpr PrimitiveTable kDivCFLOAT32_C1IR{DivCFLOAT32_C1IR};
inline constexpr PrimitiveTable kMeanBW8_C1R{MeanBW8_C1R};
inline constexpr PrimitiveTable kMeanFLOAT32_C1R{MeanFLOAT32_C1R};
inline constexpr PrimitiveTable kMaxIndx_BW8{MaxIndx_BW8};

// ---- Colour to grey ----

StatusCode RGBToGray_BW8_C3C1R(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size);

inline constexpr PrimitiveTable kRGBToGray_BW8_C3C1R{RGBToGray_BW8_C3C1R};

// The same with three weights of the caller's, for red, green and blue; no export has it. Each is taken as a multiple
// of 1/4096: scaled by 4096, 0.5 added, truncated; NaN and what does not fit 32 bits count as 0. The sums wrap modulo
// 2^32, and the lowest 8 bits above their fraction are stored.
StatusCode WeighToGray_BW8_C3C1R(const BW8* src, std::int32_t srcStep, BW8* dst, std::int32_t dstStep, RegionSize size,
                                 const FLOAT32 (&weights)[3]);

}  // namespace norvala
