/*
 * Norvala: image and signal processing primitives over pixel buffers.
 *
 * Conventions of every image function, unless its own text says otherwise:
 *
 * - Result: 0 on success, -1 on any failure or warning. The reason is not passed out. Arguments are checked before
 *   anything is written, so a call that fails a check leaves all caller memory as it was.
 * - Pixels: a pointer names the first pixel of a region; a step is the distance in bytes between the starts of two
 *   successive rows and may exceed the row's payload; widths, heights, counts and borders are in pixels.
 * - Memory: a function reads and writes exactly the pixels of its regions (and the border pixels that its text names).
 *   It never writes the padding between rows. Pointers and steps need no alignment unless stated.
 * - Pointers must not be null; a null image pointer gives -1. Source and destination must not overlap unless stated.
 * - Ownership: the caller owns every buffer that it passes, and releases what an allocation function returned with the
 *   matching release function. Functions keep no pointer after they return.
 * - Threads: all functions may run at the same time in any number of threads as long as their destinations (and work
 *   buffers) are distinct.
 */
#ifndef NORVALA_H
#define NORVALA_H

#include <stdint.h>

/* Building the library itself, or a program that contains it statically: define NORVALA_STATIC. */
#if defined(_WIN32)
#define NORVALA_CALL __cdecl
#if defined(NORVALA_STATIC)
#define NORVALA_API
#else
#define NORVALA_API __declspec(dllimport)
#endif
#else
#define NORVALA_CALL
#define NORVALA_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** @name Pixel and element types
 *  @{ */
typedef uint8_t BW8;    /**< unsigned 8-bit pixel */
typedef uint16_t BW16;  /**< 16-bit pixel: unsigned, but read as signed by the 16-bit filters */
typedef uint32_t BW32;  /**< 32-bit pixel */
typedef float FLOAT32;  /**< 32-bit IEEE float */
typedef double FLOAT64; /**< 64-bit IEEE float */
#if !defined(_BASETSD_H) && !defined(_BASETSD_H_)
typedef int32_t INT32; /**< signed 32-bit element; the Windows headers define the same name for the same type */
#endif

/** Complex number of two floats. */
typedef struct ComplexFLOAT32Number {
  FLOAT32 re; /**< real part */
  FLOAT32 im; /**< imaginary part */
} ComplexFLOAT32Number;
/** @} */

/** @name Sizes and rectangles
 *  @{ */
/** Width and height in pixels. */
typedef struct RegionSize {
  int32_t width;
  int32_t height;
} RegionSize;

/** A rectangle in pixels: column and row of its first pixel, then its size. */
typedef struct Rect {
  int32_t x;
  int32_t y;
  int32_t width;
  int32_t height;
} Rect;
/** @} */

/** @name Version
 *  @{ */
/** Version of the library.
 *  @return the constant text "1.0.0.0": static memory, the same pointer at every call, not to be changed or
 *  released. */
NORVALA_API const char* NORVALA_CALL Norvala_GetVersion(void);
/** @} */

/** @name Aligned memory
 *  Vectors and images that start on a 32-byte boundary. The contents are not initialised. Whatever one of these
 *  functions returns belongs to the caller until it is passed to Norvala_1DFree (vectors) or Norvala_2DFree (images).
 *  @{ */
/** Allocates a vector of `count` unsigned bytes.
 *  @return the vector, or null when `count` is below 1 or the memory cannot be had. */
NORVALA_API BW8* NORVALA_CALL Norvala_1DMallocBW8(int32_t count);
/** Allocates a vector of `count` floats; otherwise as Norvala_1DMallocBW8. */
NORVALA_API FLOAT32* NORVALA_CALL Norvala_1DMallocFLOAT32(int32_t count);
/** Allocates a vector of `count` signed 32-bit integers; otherwise as Norvala_1DMallocBW8. */
NORVALA_API INT32* NORVALA_CALL Norvala_1DMallocINT32(int32_t count);
/** Allocates a vector of `count` doubles; otherwise as Norvala_1DMallocBW8. */
NORVALA_API FLOAT64* NORVALA_CALL Norvala_1DMallocFLOAT64(int32_t count);
/** Releases a vector.
 *  @param aligned what a Norvala_1DMalloc function returned; null is allowed and does nothing
 *  @return always 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_1DFree(void* aligned);
/** Allocates an 8-bit image whose rows all start on 32-byte boundaries.
 *  @param width  pixels in a row, at least 1
 *  @param height rows, at least 1
 *  @param step   receives the distance between rows in bytes: the row's payload rounded up to a multiple of 32; 0 when
 *                the width or height is below 1 or the step does not fit; the computed step when only the memory is
 *                lacking. Null makes the call fail with nothing written.
 *  @return the image, or null when a size is below 1, `step` is null or the memory cannot be had */
NORVALA_API BW8* NORVALA_CALL Norvala_2DMallocBW8(int32_t width, int32_t height, int32_t* step);
/** Allocates a float image; otherwise as Norvala_2DMallocBW8. */
NORVALA_API FLOAT32* NORVALA_CALL Norvala_2DMallocFLOAT32(int32_t width, int32_t height, int32_t* step);
/** Allocates an image of complex numbers, 8 bytes a pixel; otherwise as Norvala_2DMallocBW8. */
NORVALA_API ComplexFLOAT32Number* NORVALA_CALL Norvala_2DMallocComplexFLOAT32Number(int32_t width, int32_t height,
                                                                                    int32_t* step);
/** Releases an image.
 *  @param aligned what a Norvala_2DMalloc function returned; null is allowed and does nothing */
NORVALA_API void NORVALA_CALL Norvala_2DFree(void* aligned);
/** @} */

/** @name Copy, set and border replication
 *  Pixels move as bit patterns: NaN payloads and negative zero survive.
 *  @{ */
/** Copies a region of 8-bit pixels. Steps are not checked: zero and negative steps are used as given. Overlapping
 *  regions behave as a copy row by row from the top and pixel by pixel from the left.
 *  @param src     first source pixel
 *  @param srcStep source row step in bytes
 *  @param dst     first destination pixel
 *  @param dstStep destination row step in bytes
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @return 0, or -1 when a pointer is null or a size is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_CopyBW8(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep,
                                                 int32_t width, int32_t height);
/** Copies a region of 16-bit pixels; otherwise as Norvala_CopyBW8. */
NORVALA_API int32_t NORVALA_CALL Norvala_CopyBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep,
                                                  int32_t width, int32_t height);
/** Copies a region of float pixels as 32-bit patterns; otherwise as Norvala_CopyBW8. */
NORVALA_API int32_t NORVALA_CALL Norvala_CopyFLOAT32(const FLOAT32* src, int32_t srcStep, FLOAT32* dst, int32_t dstStep,
                                                     int32_t width, int32_t height);
/** Fills a region of 8-bit pixels with one value.
 *  @param value   the value
 *  @param dst     first pixel
 *  @param dstStep row step in bytes, at least 1
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @return 0, or -1 when the pointer is null, or a size or the step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_SetBW8(BW8 value, BW8* dst, int32_t dstStep, int32_t width, int32_t height);
/** Fills a region of float pixels with the bit pattern of one value; otherwise as Norvala_SetBW8. */
NORVALA_API int32_t NORVALA_CALL Norvala_SetFLOAT32(FLOAT32 value, FLOAT32* dst, int32_t dstStep, int32_t width,
                                                    int32_t height);
/** Replicates the edge pixels of a region outwards into the border around it, in place. The buffer holds an outer
 *  region of `outerWidth` x `outerHeight` pixels; the inner region lies `top` rows and `left` pixels inside it. The
 *  border takes the nearest edge pixel, the corners the corner pixels. Nothing outside the outer region is touched.
 *  @param image       first pixel of the inner region
 *  @param step        row step in bytes of inner and outer region alike, at least 1
 *  @param innerWidth  pixels in a row of the inner region, at least 1
 *  @param innerHeight rows of the inner region, at least 1
 *  @param outerWidth  at least `left` + `innerWidth`
 *  @param outerHeight at least `top` + `innerHeight`
 *  @param top         rows above the inner region, at least 0
 *  @param left        pixels before the inner region, at least 0
 *  @return 0, or -1 when the pointer is null, the step is below 1 or a size is out of its range */
NORVALA_API int32_t NORVALA_CALL Norvala_CopyReplicateBorderBW8(BW8* image, int32_t step, int32_t innerWidth,
                                                                int32_t innerHeight, int32_t outerWidth,
                                                                int32_t outerHeight, int32_t top, int32_t left);
/** Replicates the border of 16-bit pixels; otherwise as Norvala_CopyReplicateBorderBW8. */
NORVALA_API int32_t NORVALA_CALL Norvala_CopyReplicateBorderBW16(BW16* image, int32_t step, int32_t innerWidth,
                                                                 int32_t innerHeight, int32_t outerWidth,
                                                                 int32_t outerHeight, int32_t top, int32_t left);
/** Replicates the border of float pixels as 32-bit patterns; otherwise as Norvala_CopyReplicateBorderBW8. */
NORVALA_API int32_t NORVALA_CALL Norvala_CopyReplicateBorderFLOAT32(FLOAT32* image, int32_t step, int32_t innerWidth,
                                                                    int32_t innerHeight, int32_t outerWidth,
                                                                    int32_t outerHeight, int32_t top, int32_t left);
/** @} */

/** @name Type conversions
 *  From a source image into a separate destination image. Steps must hold a whole row.
 *  @{ */
/** Converts float pixels to 8 bits with saturation. Values of 255 and above, infinity included, give 255; zero,
 *  negative values and NaN give 0; everything between is rounded.
 *  @param src      first source pixel
 *  @param srcStep  source row step in bytes, at least 1
 *  @param dst      first destination pixel
 *  @param dstStep  destination row step in bytes, at least 1
 *  @param width    pixels in a row, at least 1
 *  @param height   rows, at least 1
 *  @param rounding 1: to the nearest integer, halves to the even one (2.5 gives 2, 3.5 gives 4); any other value:
 *                  towards zero
 *  @return 0, or -1 when a pointer is null, or a size or step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_ConvertFLOAT32toBW8(const FLOAT32* src, int32_t srcStep, BW8* dst,
                                                             int32_t dstStep, int32_t width, int32_t height,
                                                             int32_t rounding);
/** Converts float pixels to unsigned 16 bits, saturating at 65535; otherwise as Norvala_ConvertFLOAT32toBW8. */
NORVALA_API int32_t NORVALA_CALL Norvala_ConvertFLOAT32toBW16(const FLOAT32* src, int32_t srcStep, BW16* dst,
                                                              int32_t dstStep, int32_t width, int32_t height,
                                                              int32_t rounding);
/** Converts 8-bit pixels to floats of the same value, 0 to 255.
 *  @param src     first source pixel
 *  @param srcStep source row step in bytes, at least 1
 *  @param dst     first destination pixel
 *  @param dstStep destination row step in bytes, at least 1
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @return 0, or -1 when a pointer is null, or a size or step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_ConvertBW8toFLOAT32(const BW8* src, int32_t srcStep, FLOAT32* dst,
                                                             int32_t dstStep, int32_t width, int32_t height);
/** Widens 8-bit pixels to 16 bits, keeping their values; otherwise as Norvala_ConvertBW8toFLOAT32. */
NORVALA_API int32_t NORVALA_CALL Norvala_ConvertBW8toBW16(const BW8* src, int32_t srcStep, BW16* dst, int32_t dstStep,
                                                          int32_t width, int32_t height);
/** Narrows unsigned 16-bit pixels to 8 bits: values above 255 give 255; otherwise as Norvala_ConvertBW8toFLOAT32. */
NORVALA_API int32_t NORVALA_CALL Norvala_ConvertBW16ToBW8(const BW16* src, int32_t srcStep, BW8* dst, int32_t dstStep,
                                                          int32_t width, int32_t height);
/** Widens unsigned 16-bit pixels to 32 bits, keeping their values; otherwise as Norvala_ConvertBW8toFLOAT32. */
NORVALA_API int32_t NORVALA_CALL Norvala_ConvertBW16toBW32(const BW16* src, int32_t srcStep, BW32* dst, int32_t dstStep,
                                                           int32_t width, int32_t height);
/** @} */

/** @name Logical and shift operations
 *  @{ */
/** Bitwise AND of two images: dst = src1 & src2. The destination may be one of the sources.
 *  @param src1     first pixel of the first source
 *  @param src1Step its row step in bytes, at least 1
 *  @param src2     first pixel of the second source
 *  @param src2Step its row step in bytes, at least 1
 *  @param dst      first destination pixel
 *  @param dstStep  destination row step in bytes, at least 1
 *  @param width    pixels in a row, at least 1
 *  @param height   rows, at least 1
 *  @return 0, or -1 when a pointer is null, or a size or step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_AndBW32(const BW32* src1, int32_t src1Step, const BW32* src2, int32_t src2Step,
                                                 BW32* dst, int32_t dstStep, int32_t width, int32_t height);
/** Bitwise OR of two images: dst = src1 | src2; otherwise as Norvala_AndBW32. */
NORVALA_API int32_t NORVALA_CALL Norvala_OrBW32(const BW32* src1, int32_t src1Step, const BW32* src2, int32_t src2Step,
                                                BW32* dst, int32_t dstStep, int32_t width, int32_t height);
/** Bitwise AND of an image with a constant, in place.
 *  @param constant the bits to keep in every pixel
 *  @param image    first pixel
 *  @param step     row step in bytes, at least 1
 *  @param width    pixels in a row, at least 1
 *  @param height   rows, at least 1
 *  @return 0, or -1 when the pointer is null, or a size or the step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_AndCBW16(BW16 constant, BW16* image, int32_t step, int32_t width,
                                                  int32_t height);
/** Shifts unsigned 16-bit pixels to the right, in place, with zeros shifted in.
 *  @param count  bits to shift by: 0 leaves the image as it is, more than 15 make every pixel 0
 *  @param image  first pixel
 *  @param step   row step in bytes, at least 1
 *  @param width  pixels in a row, at least 1
 *  @param height rows, at least 1
 *  @return 0, or -1 when the pointer is null, or a size or the step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_RShiftCBW16(uint32_t count, BW16* image, int32_t step, int32_t width,
                                                     int32_t height);
/** Shifts 32-bit pixels to the right as signed numbers, in place: copies of the sign bit are shifted in, and a count
 *  above 31 leaves -1 where the pixel was negative and 0 elsewhere; otherwise as Norvala_RShiftCBW16. */
NORVALA_API int32_t NORVALA_CALL Norvala_RShiftCBW32(uint32_t count, BW32* image, int32_t step, int32_t width,
                                                     int32_t height);
/** Shifts 32-bit pixels to the left, in place, with zeros shifted in; a count above 31 makes every pixel 0; otherwise
 * as Norvala_RShiftCBW16. */
NORVALA_API int32_t NORVALA_CALL Norvala_LShiftCBW32(uint32_t count, BW32* image, int32_t step, int32_t width,
                                                     int32_t height);
/** @} */

/** @name Arithmetic and statistics
 *  @{ */
/** Adds an image to another in place: srcDst = srcDst + src, each sum rounded to a float. Steps are not checked: zero
 *  and negative steps are used as given.
 *  @param src        first pixel to add
 *  @param srcStep    its row step in bytes
 *  @param srcDst     first pixel that is added to; may be `src` itself
 *  @param srcDstStep its row step in bytes
 *  @param width      pixels in a row, at least 1
 *  @param height     rows, at least 1
 *  @return 0, or -1 when a pointer is null or a size is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_AddFLOAT32_C1IR(const FLOAT32* src, int32_t srcStep, FLOAT32* srcDst,
                                                         int32_t srcDstStep, int32_t width, int32_t height);
/** Divides an image by a constant in place, as a product with the constant's reciprocal rounded to a float. It can
 *  differ from the true quotient in the last bit.
 *  @param divisor neither 0 nor NaN
 *  @param image   first pixel
 *  @param step    row step in bytes, at least 1
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @return 0, or -1 when the pointer is null, a size or the step is below 1, or the divisor is 0, -0 or NaN */
NORVALA_API int32_t NORVALA_CALL Norvala_DivCFLOAT32_C1IR(FLOAT32 divisor, FLOAT32* image, int32_t step, int32_t width,
                                                          int32_t height);
/** Mean of 8-bit pixels.
 *  @param src    first pixel
 *  @param step   row step in bytes, at least 1
 *  @param width  pixels in a row, at least 1; rows of more than 8421504 pixels can overflow their sum
 *  @param height rows, at least 1; the number of pixels is counted in a signed 32-bit integer, which wraps
 *  @param mean   receives the mean, 0 to 255; not written on failure
 *  @return 0, or -1 when a pointer is null, or a size or the step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_MeanBW8_C1R(const BW8* src, int32_t step, int32_t width, int32_t height,
                                                     FLOAT64* mean);
/** Mean of float pixels, summed in double precision in two fixed sequences: pixels in even and in odd columns.
 *  @param src    first pixel
 *  @param step   row step in bytes, at least 1
 *  @param width  pixels in a row, at least 1
 *  @param height rows, at least 1; the number of pixels is counted in a signed 32-bit integer, which wraps
 *  @param mean   receives the mean; not written on failure
 *  @param hint   ignored
 *  @return 0, or -1 when a pointer is null, or a size or the step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_MeanFLOAT32_C1R(const FLOAT32* src, int32_t step, int32_t width,
                                                         int32_t height, FLOAT64* mean, int32_t hint);
/** Largest 8-bit pixel and where it lies. Among equals the topmost counts, and in its row the leftmost.
 *  @param src     first pixel
 *  @param step    row step in bytes, at least 1
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @param maximum receives the largest pixel; not written on failure, like the two others
 *  @param column  receives its column, counted from 0
 *  @param row     receives its row, counted from 0
 *  @return 0, or -1 when a pointer is null, or a size or the step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_MaxIndx_BW8(const BW8* src, int32_t step, int32_t width, int32_t height,
                                                     BW8* maximum, int32_t* column, int32_t* row);
/** @} */

/** @name Colour to grey
 *  @{ */
/** Grey from interleaved colour: (1225 * red + 2404 * green + 467 * blue) / 4096, truncated; the luma weights of ITU-R
 *  BT.601 in 12 bits. Steps are not checked: zero and negative steps are used as given.
 *  @param src     first source pixel: three bytes a pixel, in the order red, green, blue
 *  @param srcStep source row step in bytes
 *  @param dst     first destination pixel, one byte a pixel
 *  @param dstStep destination row step in bytes
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @return 0, or -1 when a pointer is null or a size is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_RGBToGray_BW8_C3C1R(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep,
                                                             int32_t width, int32_t height);
/** @} */

/* ---- Separable filters ---- */

/* ---- Pipeline filters ---- */

/* ---- Gaussian filter ---- */

/* ---- Gaussian pyramid step ---- */

/* ---- Pyramid layers ---- */

/** @name 2x2 down-sampling
 *  @{ */
/** Halves an 8-bit plane in both directions, as a JPEG encoder does with chroma planes: each destination pixel is the
 *  mean of a block of 2x2 source pixels, (a + b + c + d + 3) / 4, any fraction rounded up.
 *  @param src       first source pixel; 2 * `dstWidth` columns and 2 * `dstHeight` rows are read, which is not checked
 *                   against the source size
 *  @param srcStep   source row step in bytes, at least 1
 *  @param srcWidth  pixels in a source row, at least 1; not used otherwise
 *  @param srcHeight source rows, at least 1; not used otherwise
 *  @param dst       first destination pixel
 *  @param dstStep   destination row step in bytes, at least 1
 *  @param dstWidth  pixels in a destination row, at least 1
 *  @param dstHeight destination rows, at least 1
 *  @return 0, or -1 when a pointer is null, or a size or step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_SampleDownH2V2_JPEGBW8(const BW8* src, int32_t srcStep, int32_t srcWidth,
                                                                int32_t srcHeight, BW8* dst, int32_t dstStep,
                                                                int32_t dstWidth, int32_t dstHeight);
/** @} */

/* ---- Affine warp ---- */

/* ---- Quadrilateral warps ---- */

/* ---- Bounds and rotation ---- */

/* ---- Resize ---- */

/* ---- Discrete Fourier transform ---- */

/* ---- Magnitude ---- */

/* ---- Distance transform ---- */

/* ---- Random fill ---- */

#ifdef __cplusplus
}
#endif

#endif
