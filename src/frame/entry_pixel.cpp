// Exports of the pixel-wise operations.

#include "norvala.h"
#include "pixel/pixel.h"

using namespace norvala;

// ---- Copy, set and border replication ----

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

// ---- Type conversions ----

// ---- Logical and shift operations ----

// ---- Arithmetic and statistics ----

// ---- Colour to grey ----
