// Exports of the pixel-wise operations.

#include "pixel/pixel.h"
#include "norvala.h"

using namespace norvala;

int32_t Norvala_CopyBW8(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width, int32_t height) {
  return Fold(kCopyBW8(src, srcStep, dst, dstStep, {width, height}));
}

int32_t Norvala_CopyBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep, int32_t width, int32_t height) {
  return Fold(kCopyBW16(src, srcStep, dst, dstStep, {width, height}));
}

int32_t Norvala_CopyFLOAT32(const FLOAT32* src, int32_t srcStep, FLOAT32* dst, int32_t dstStep, int32_t width,
                            int32_t height) {
  return Fold(kCopyFLOAT32(src, srcStep, dst, dstStep, {width, height}));
}

int32_t Norvala_SetBW8(BW8 value, BW8* dst, int32_t dstStep, int32_t width, int32_t height) {
  return Fold(kSetBW8(value, dst, dstStep, {width, height}));
}

int32_t Norvala_SetFLOAT32(FLOAT32 value, FLOAT32* dst, int32_t dstStep, int32_t width, int32_t height) {
  return Fold(kSetFLOAT32(value, dst, dstStep, {width, height}));
}

int32_t Norvala_CopyReplicateBorderBW8(BW8* image, int32_t step, int32_t innerWidth, int32_t innerHeight,
                                       int32_t outerWidth, int32_t outerHeight, int32_t top, int32_t left) {
  return Fold(kCopyReplicateBorderBW8(image, step, {innerWidth, innerHeight}, {outerWidth, outerHeight}, top, left));
}

int32_t Norvala_CopyReplicateBorderBW16(BW16* image, int32_t step, int32_t innerWidth, int32_t innerHeight,
                                        int32_t outerWidth, int32_t outerHeight, int32_t top, int32_t left) {
  return Fold(kCopyReplicateBorderBW16(image, step, {innerWidth, innerHeight}, {outerWidth, outerHeight}, top, left));
}

int32_t Norvala_CopyReplicateBorderFLOAT32(FLOAT32* image, int32_t step, int32_t innerWidth, int32_t innerHeight,
                                           int32_t outerWidth, int32_t outerHeight, int32_t top, int32_t left) {
  return Fold(
      kCopyReplicateBorderFLOAT32(image, step, {innerWidth, innerHeight}, {outerWidth, outerHeight}, top, left));
}

int32_t Norvala_ConvertFLOAT32toBW8(const FLOAT32* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width,
                                    int32_t height, int32_t rounding) {
  return Fold(kConvertFLOAT32toBW8(src, srcStep, dst, dstStep, {width, height}, rounding));
}

int32_t Norvala_ConvertFLOAT32toBW16(const FLOAT32* src, int32_t srcStep, BW16* dst, int32_t dstStep, int32_t width,
                                     int32_t height, int32_t rounding) {
  return Fold(kConvertFLOAT32toBW16(src, srcStep, dst, dstStep, {width, height}, rounding));
}

int32_t Norvala_ConvertBW8toFLOAT32(const BW8* src, int32_t srcStep, FLOAT32* dst, int32_t dstStep, int32_t width,
                                    int32_t height) {
  return Fold(kConvertBW8toFLOAT32(src, srcStep, dst, dstStep, {width, height}));
}

int32_t Norvala_ConvertBW8toBW16(const BW8* src, int32_t srcStep, BW16* dst, int32_t dstStep, int32_t width,
                                 int32_t height) {
  return Fold(kConvertBW8toBW16(src, srcStep, dst, dstStep, {width, height}));
}

int32_t Norvala_ConvertBW16ToBW8(const BW16* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width,
                                 int32_t height) {
  return Fold(kConvertBW16ToBW8(src, srcStep, dst, dstStep, {width, height}));
}

int32_t Norvala_ConvertBW16toBW32(const BW16* src, int32_t srcStep, BW32* dst, int32_t dstStep, int32_t width,
                                  int32_t height) {
  return Fold(kConvertBW16toBW32(src, srcStep, dst, dstStep, {width, height}));
}

int32_t Norvala_AndBW32(const BW32* src1, int32_t src1Step, const BW32* src2, int32_t src2Step, BW32* dst,
                        int32_t dstStep, int32_t width, int32_t height) {
  return Fold(kAndBW32(src1, src1Step, src2, src2Step, dst, dstStep, {width, height}));
}

int32_t Norvala_OrBW32(const BW32* src1, int32_t src1Step, const BW32* src2, int32_t src2Step, BW32* dst,
                       int32_t dstStep, int32_t width, int32_t height) {
  return Fold(kOrBW32(src1, src1Step, src2, src2Step, dst, dstStep, {width, height}));
}

int32_t Norvala_AndCBW16(BW16 constant, BW16* image, int32_t step, int32_t width, int32_t height) {
  return Fold(kAndCBW16(constant, image, step, image, step, {width, height}));
}

int32_t Norvala_RShiftCBW16(uint32_t count, BW16* image, int32_t step, int32_t width, int32_t height) {
  return Fold(kRShiftCBW16(count, image, step, image, step, {width, height}));
}

int32_t Norvala_RShiftCBW32(uint32_t count, BW32* image, int32_t step, int32_t width, int32_t height) {
  return Fold(kRShiftCBW32(count, image, step, image, step, {width, height}));
}

int32_t Norvala_LShiftCBW32(uint32_t count, BW32* image, int32_t step, int32_t width, int32_t height) {
  return Fold(kLShiftCBW32(count, image, step, image, step, {width, height}));
}

int32_t Norvala_AddFLOAT32_C1IR(const FLOAT32* src, int32_t srcStep, FLOAT32* srcDst, int32_t srcDstStep, int32_t width,
                                int32_t height) {
  return Fold(kAddFLOAT32_C1IR(src, srcStep, srcDst, srcDstStep, {width, height}));
}

int32_t Norvala_DivCFLOAT32_C1IR(FLOAT32 divisor, FLOAT32* image, int32_t step, int32_t width, int32_t height) {
  return Fold(kDivCFLOAT32_C1IR(divisor, image, step, {width, height}));
}

int32_t Norvala_MeanBW8_C1R(const BW8* src, int32_t step, int32_t width, int32_t height, FLOAT64* mean) {
  return Fold(kMeanBW8_C1R(src, step, {width, height}, mean));
}

int32_t Norvala_MeanFLOAT32_C1R(const FLOAT32* src, int32_t step, int32_t width, int32_t height, FLOAT64* mean,
                                int32_t hint) {
  return Fold(kMeanFLOAT32_C1R(src, step, {width, height}, mean, hint));
}

int32_t Norvala_MaxIndx_BW8(const BW8* src, int32_t step, int32_t width, int32_t height, BW8* maximum, int32_t* column,
                            int32_t* row) {
  return Fold(kMaxIndx_BW8(src, step, {width, height}, maximum, column, row));
}

int32_t Norvala_RGBToGray_BW8_C3C1R(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep, int32_t width,
                                    int32_t height) {
  return Fold(kRGBToGray_BW8_C3C1R(src, srcStep, dst, dstStep, {width, height}));
}
