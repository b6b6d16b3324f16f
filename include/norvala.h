/** @file
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

/** @defgroup types Types and constants
 *  @{ */
/** @name Pixels and elements
 *  @{ */
typedef uint8_t BW8;    /**< unsigned 8-bit pixel */
typedef uint16_t BW16;  /**< 16-bit pixel: unsigned, but read as signed by the 16-bit filters */
typedef uint32_t BW32;  /**< 32-bit pixel */
typedef float FLOAT32;  /**< 32-bit IEEE float */
typedef double FLOAT64; /**< 64-bit IEEE float */

/** Complex number of two floats. */
typedef struct ComplexFLOAT32Number {
  FLOAT32 re; /**< real part */
  FLOAT32 im; /**< imaginary part */
} ComplexFLOAT32Number;
/** @} */

/** @name Sizes and rectangles
 *  @{ */
/** Width and height in pixels. */
typedef struct NorvalaRegionSize {
  int32_t width;  /**< pixels in a row */
  int32_t height; /**< rows */
} NorvalaRegionSize;

/** A rectangle in pixels: column and row of its first pixel, then its size. */
typedef struct NorvalaRect {
  int32_t x;      /**< first column */
  int32_t y;      /**< first row */
  int32_t width;  /**< columns */
  int32_t height; /**< rows */
} NorvalaRect;
/** @} */

#if !defined(NORVALA_NO_SHORT_NAMES)
/** @name Short names
 *  Define NORVALA_NO_SHORT_NAMES before the header where they collide with names of your own.
 *  @{ */
typedef NorvalaRect Rect;             /**< see NorvalaRect */
typedef NorvalaRegionSize RegionSize; /**< see NorvalaRegionSize */
#if !defined(_BASETSD_H) && !defined(_BASETSD_H_)
typedef int32_t INT32; /**< signed 32-bit element; the Windows headers define the same name for the same type */
#endif
/** @} */
#endif

/** @name Values of arguments
 *  @{ */
/** How float pixels become integers. */
enum NorvalaRounding {
  NORVALA_ROUND_TO_ZERO = 0,   /**< towards zero, as any other value but 1 */
  NORVALA_ROUND_TO_NEAREST = 1 /**< to the nearest integer, halves to the even one: 2.5 gives 2, 3.5 gives 4 */
};

/** The masks of Norvala_FilterGauss. */
enum NorvalaGaussMask {
  NORVALA_GAUSS_3X3 = 33, /**< 3 rows of 3 weights: reads 1 pixel around the region */
  NORVALA_GAUSS_5X5 = 55  /**< 5 rows of 5 weights: reads 2 pixels around the region */
};

/** What lies outside a row for Norvala_FilterRowBorderPipelineBW8. */
enum NorvalaBorder {
  NORVALA_BORDER_CONSTANT = 0,        /**< a constant */
  NORVALA_BORDER_REPLICATE = 1,       /**< the nearest edge pixel (0 0 | 0 1 2) */
  NORVALA_BORDER_WRAP = 2,            /**< the row again (1 2 | 0 1 2) */
  NORVALA_BORDER_MIRROR = 3,          /**< the row mirrored about its edge pixel (2 1 | 0 1 2) */
  NORVALA_BORDER_MIRROR_WITH_EDGE = 4 /**< the row mirrored, its edge pixel repeated (1 0 | 0 1 2) */
};

/** The mode of Norvala_PyramidLayerDownInitAllocBW8. */
enum NorvalaLayerMode {
  NORVALA_LAYER_MODE = 2 /**< the only one */
};

/** How warps and Norvala_Resize read between pixels. */
enum NorvalaInterpolation {
  NORVALA_NEAREST = 1,             /**< the nearest pixel */
  NORVALA_LINEAR = 2,              /**< straight lines through 2 x 2 pixels */
  NORVALA_CUBIC = 4,               /**< cubic Lagrange polynomials through 4 x 4 pixels */
  NORVALA_REDUCE = 8,              /**< the mean over the area that a pixel covers; Norvala_Resize only */
  NORVALA_EIGHT_POINT = 16,        /**< windowed sinc over 8 x 8 pixels; Norvala_Resize only */
  NORVALA_SMOOTH_EDGES = INT32_MIN /**< added to one of the first three: warps smooth the edges of what they write */
};
/** @} */
/** @} */

/** @defgroup version Version
 *  @{ */
/** Version of the library.
 *  @return the constant text "1.0.0.0": static memory, the same pointer at every call, not to be changed or
 *  released. */
NORVALA_API const char* NORVALA_CALL Norvala_GetVersion(void);
/** @} */

/** @defgroup memory Aligned memory
 *  Vectors and images that start on a 32-byte boundary. The contents are not initialised. Whatever one of these
 *  functions returns belongs to the caller until it is passed to Norvala_1DFree (vectors) or Norvala_2DFree (images).
 *  @{ */
/** Allocates a vector of `count` unsigned bytes.
 *  @return the vector, or null when `count` is below 1 or the memory cannot be had. */
NORVALA_API BW8* NORVALA_CALL Norvala_1DMallocBW8(int32_t count);
/** Allocates a vector of `count` floats; otherwise as Norvala_1DMallocBW8. */
NORVALA_API FLOAT32* NORVALA_CALL Norvala_1DMallocFLOAT32(int32_t count);
/** Allocates a vector of `count` signed 32-bit integers; otherwise as Norvala_1DMallocBW8. */
NORVALA_API int32_t* NORVALA_CALL Norvala_1DMallocINT32(int32_t count);
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

/** @defgroup copy Copy, set and border replication
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

/** @defgroup convert Type conversions
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
 *  @param rounding #NORVALA_ROUND_TO_NEAREST, halves to the even integer (2.5 gives 2, 3.5 gives 4), or
 *                  #NORVALA_ROUND_TO_ZERO
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

/** @defgroup logic Logical and shift operations
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
 *  @param count  bits to shift by: 0 leaves the image as it is, more than 15 (so a negative number, too) make every
 *                pixel 0
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
 *  as Norvala_RShiftCBW16. */
NORVALA_API int32_t NORVALA_CALL Norvala_LShiftCBW32(uint32_t count, BW32* image, int32_t step, int32_t width,
                                                     int32_t height);
/** @} */

/** @defgroup arithmetic Arithmetic and statistics
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
 *  @param divisor neither 0 nor NaN; the reciprocal of one within 2^-128 of 0 is infinite
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
 *  @param width  pixels in a row, at least 1; the sum of a row is a signed 32-bit integer, which more than 8421504
 *                pixels can make wrap
 *  @param height rows, at least 1; the number of pixels is counted in a signed 32-bit integer, which wraps too
 *  @param mean   receives the mean, 0 to 255 where nothing wraps; not written on failure
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

/** @defgroup grey Colour to grey
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

/** @defgroup separable Separable filters
 *  Convolution of a one-channel image with a one-dimensional kernel, along rows or along columns. Running one after the
 *  other filters with a separable two-dimensional kernel.
 *
 *  With K = `kernelSize` taps and a = `anchor`, the sum for column x and row y is that of tap i * source(x + a - i, y)
 *  (row filters) or tap i * source(x, y + a - i) (column filters) over i = 0 .. K - 1: a true convolution, which
 *  meets the kernel mirrored. The pixels beyond the region that the kernel reaches must exist in memory: K - 1 - a
 *  before and a after each row, or as many rows above and below the region. An anchor outside 0 .. K - 1 moves the
 *  whole reach before or after the output pixel. Any number of taps serves.
 *  @{ */
/** Filters 8-bit pixels along rows with an integer kernel.
 *
 *  @warning With the divisor -2147483648 the call never returns.
 *
 *  The sum, which wraps in 32 bits, is divided by the divisor,
 *  rounded and clamped to 0..255: exact and half up for powers of two; for other divisors, negative ones included, as
 *  the product with the reciprocal in single precision, half up.
 *  @param src        first source pixel of the region
 *  @param srcStep    source row step in bytes, at least `width` + `kernelSize` - 1
 *  @param dst        first destination pixel; must not overlap the source
 *  @param dstStep    destination row step in bytes, at least `width`
 *  @param width      pixels in a row, at least 1
 *  @param height     rows, at least 1
 *  @param kernel     the taps
 *  @param kernelSize number of taps, at least 1
 *  @param anchor     index of the tap that weighs the pixel at the output position; any value
 *  @param divisor    any value but 0 and -2147483648
 *  @return 0, or -1 with nothing written when
 *          - a pointer is null
 *          - a size is below 1
 *          - the divisor is 0
 *          - a step is too small */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterRowBW8(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep,
                                                      int32_t width, int32_t height, const int32_t* kernel,
                                                      int32_t kernelSize, int32_t anchor, int32_t divisor);
/** Filters 8-bit pixels along columns; otherwise as Norvala_FilterRowBW8, but `srcStep` need only be at least `width`.
 *
 *  @warning With the divisor -2147483648 the call never returns. */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterColumnBW8(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep,
                                                         int32_t width, int32_t height, const int32_t* kernel,
                                                         int32_t kernelSize, int32_t anchor, int32_t divisor);
/** Filters 16-bit pixels along rows with an integer kernel. Pixels are read and written as signed: 0xFFFF is -1. The
 *  divisor divides the taps, not the sum: each tap times the reciprocal, in single precision, is a tap of
 *  Norvala_FilterRow32fBW16, which does the rest. Allocates a float for each tap during the call.
 *  @param src        first source pixel of the region
 *  @param srcStep    source row step in bytes, at least (`width` + `kernelSize` - 1) * 2; an odd step is taken one less
 *  @param dst        first destination pixel; must not overlap the source
 *  @param dstStep    destination row step in bytes, at least `width` * 2; an odd step is taken one less
 *  @param width      pixels in a row, at least 1
 *  @param height     rows, at least 1
 *  @param kernel     the taps
 *  @param kernelSize number of taps, at least 1
 *  @param anchor     index of the tap that weighs the pixel at the output position; any value
 *  @param divisor    any value but 0
 *  @return 0, or -1 with nothing written when
 *          - a pointer is null
 *          - a size is below 1
 *          - the divisor is 0
 *          - a step is too small
 *          - the memory cannot be had */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterRowBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep,
                                                       int32_t width, int32_t height, const int32_t* kernel,
                                                       int32_t kernelSize, int32_t anchor, int32_t divisor);
/** Filters 16-bit pixels along columns; otherwise as Norvala_FilterRowBW16, but `srcStep` need only be at least
 *  `width` * 2. */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterColumnBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep,
                                                          int32_t width, int32_t height, const int32_t* kernel,
                                                          int32_t kernelSize, int32_t anchor, int32_t divisor);
/** Filters 16-bit pixels along rows with a float kernel. Pixels are read and written as signed: 0xFFFF is -1. Sums are
 *  formed in double precision from the lowest source position upwards, rounded half away from zero and saturated to
 *  -32768..32767; a sum that is not a number gives 0.
 *  @param src        first source pixel of the region
 *  @param srcStep    source row step in bytes, at least (`width` + `kernelSize` - 1) * 2; an odd step is taken one less
 *  @param dst        first destination pixel; must not overlap the source
 *  @param dstStep    destination row step in bytes, at least `width` * 2; an odd step is taken one less
 *  @param width      pixels in a row, at least 1
 *  @param height     rows, at least 1
 *  @param kernel     the taps
 *  @param kernelSize number of taps, at least 1
 *  @param anchor     index of the tap that weighs the pixel at the output position; any value
 *  @return 0, or -1 with nothing written when
 *          - a pointer is null
 *          - a size is below 1
 *          - a step is too small */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterRow32fBW16(const BW16* src, int32_t srcStep, BW16* dst, int32_t dstStep,
                                                          int32_t width, int32_t height, const FLOAT32* kernel,
                                                          int32_t kernelSize, int32_t anchor);
/** Filters 16-bit pixels along columns with a float kernel; otherwise as Norvala_FilterRow32fBW16, but `srcStep` need
 *  only be at least `width` * 2. */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterColumn32fBW16(const BW16* src, int32_t srcStep, BW16* dst,
                                                             int32_t dstStep, int32_t width, int32_t height,
                                                             const FLOAT32* kernel, int32_t kernelSize, int32_t anchor);
/** Filters float pixels along rows. Sums are formed in double precision from the lowest source position upwards and
 *  rounded once, to float; nothing is clamped.
 *  @param src        first source pixel of the region
 *  @param srcStep    source row step in bytes, at least (`width` + `kernelSize` - 1) * 4; taken down to a multiple of 4
 *  @param dst        first destination pixel; must not overlap the source
 *  @param dstStep    destination row step in bytes, at least `width` * 4; taken down to a multiple of 4
 *  @param width      pixels in a row, at least 1
 *  @param height     rows, at least 1
 *  @param kernel     the taps
 *  @param kernelSize number of taps, at least 1
 *  @param anchor     index of the tap that weighs the pixel at the output position; any value
 *  @return 0, or -1 with nothing written when
 *          - a pointer is null
 *          - a size is below 1
 *          - a step is too small */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterRowFLOAT32(const FLOAT32* src, int32_t srcStep, FLOAT32* dst,
                                                          int32_t dstStep, int32_t width, int32_t height,
                                                          const FLOAT32* kernel, int32_t kernelSize, int32_t anchor);
/** Filters float pixels along columns; otherwise as Norvala_FilterRowFLOAT32, but `srcStep` need only be at least
 *  `width` * 4. */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterColumnFLOAT32(const FLOAT32* src, int32_t srcStep, FLOAT32* dst,
                                                             int32_t dstStep, int32_t width, int32_t height,
                                                             const FLOAT32* kernel, int32_t kernelSize, int32_t anchor);
/** @} */

/** @defgroup pipeline Pipeline filters
 *  A separable filter as a pipeline of rows: the row filter turns 8-bit source rows into signed 16-bit intermediate
 *  rows and completes their left and right borders itself; the column filter combines runs of intermediate rows into
 *  8-bit rows. Both reach the intermediate rows through an array of pointers, so that a caller may keep them in a ring,
 *  filter each source row once, and repeat pointers to make borders at the top and bottom.
 *
 *  Kernels are applied unmirrored (correlation): tap i weighs the i-th pixel or row of the run that it covers. Sums are
 *  multiplied by 1 / divisor in double precision, clamped to the range of the result and truncated toward zero; nothing
 *  is rounded. Since the factor is a rounded reciprocal, a sum that the divisor divides may come out 1 nearer to zero:
 *  49 with divisor 49 gives 0.
 *
 *  Work buffers belong to the caller, need no alignment, hold nothing between calls and must not be shared by
 *  concurrent calls.
 *  @{ */
/** Size of the work buffer of Norvala_FilterRowBorderPipelineBW8.
 *  @param width      pixels in a row, at least 1
 *  @param height     rows, at least 1
 *  @param kernelSize taps, at least 1
 *  @param bufferSize receives the size in bytes, 4 * `kernelSize` + 64; left as it was on failure
 *  @return 0, or -1 when the pointer is null, a size is below 1 or the result does not fit 32 bits */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterRowBorderPipelineGetBufferSizeBW8(int32_t width, int32_t height,
                                                                                 int32_t kernelSize,
                                                                                 int32_t* bufferSize);
/** Size of the work buffer of Norvala_FilterColumnPipelineBW8; otherwise as
 *  Norvala_FilterRowBorderPipelineGetBufferSizeBW8. */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterColumnPipelineGetBufferSizeBW8(int32_t width, int32_t height,
                                                                              int32_t kernelSize, int32_t* bufferSize);
/** Filters 8-bit rows horizontally into signed 16-bit rows. Result x of a row is the sum of tap i times pixel
 *  x + i - `anchor`, wrapped to 32 bits, divided as described above and clamped to -32768..32767.
 *  @param src         first source pixel; only the `width` pixels of each row are read
 *  @param srcStep     source row step in bytes, at least `width`
 *  @param dstRows     `height` pointers to destination rows of `width` values each
 *  @param width       pixels in a row, at least 1
 *  @param height      rows, at least 1
 *  @param kernel      `kernelSize` taps
 *  @param kernelSize  at least 1, even or odd
 *  @param anchor      0 .. `kernelSize` - 1: the tap that weighs the pixel at the output position, which is the number
 *                     of border pixels before the row
 *  @param borderType  the pixels outside the row: #NORVALA_BORDER_CONSTANT, #NORVALA_BORDER_REPLICATE,
 *                     #NORVALA_BORDER_WRAP, #NORVALA_BORDER_MIRROR or #NORVALA_BORDER_MIRROR_WITH_EDGE. Borders longer
 *                     than the row continue in the same manner.
 *  @param borderValue the value of #NORVALA_BORDER_CONSTANT, ignored by the others
 *  @param divisor     any value but 0
 *  @param buffer      work buffer of the size that Norvala_FilterRowBorderPipelineGetBufferSizeBW8 reports
 *  @return 0, or -1 when
 *          - a pointer is null
 *          - a size is below 1
 *          - the anchor lies outside the kernel
 *          - the step is below `width`
 *          - the border type is none of the above
 *          - the divisor is 0
 *          - an entry of `dstRows` is null: the rows before that entry are complete then, and no later one is touched
 */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterRowBorderPipelineBW8(
    const BW8* src, int32_t srcStep, int16_t* const* dstRows, int32_t width, int32_t height, const int16_t* kernel,
    int32_t kernelSize, int32_t anchor, int32_t borderType, BW8 borderValue, int32_t divisor, BW8* buffer);
/** Filters signed 16-bit rows vertically into 8-bit rows. Destination row y is the sum of tap i times source row y + i,
 *  divided as described above and clamped to 0..255: the caller places the anchor by the choice of the first row.
 *  @param srcRows    `height` + `kernelSize` - 1 pointers to source rows of `width` values each; may repeat rows
 *  @param dst        first destination pixel
 *  @param dstStep    destination row step in bytes, at least `width`
 *  @param width      pixels in a row, at least 1
 *  @param height     destination rows, at least 1
 *  @param kernel     `kernelSize` taps
 *  @param kernelSize at least 1, even or odd
 *  @param divisor    any value but 0
 *  @param buffer     work buffer of the size that Norvala_FilterColumnPipelineGetBufferSizeBW8 reports
 *  @return 0, or -1 with nothing written when
 *          - a pointer or an entry of `srcRows` is null
 *          - a size is below 1
 *          - the step is below `width`
 *          - the divisor is 0 */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterColumnPipelineBW8(const int16_t* const* srcRows, BW8* dst,
                                                                 int32_t dstStep, int32_t width, int32_t height,
                                                                 const int16_t* kernel, int32_t kernelSize,
                                                                 int32_t divisor, BW8* buffer);
/** @} */

/** @defgroup gauss Gaussian filter
 *  @{ */
/** Smooths 8-bit pixels with a fixed Gaussian mask. Reads the pixels around the region, 1 on every side with the 3x3
 *  mask and 2 with the 5x5 mask, and never invents any: the caller sees to it that they exist (with
 *  Norvala_CopyReplicateBorderBW8, for example).
 *
 *  The 3x3 mask is the product of the column 1 2 1 with the row 1 2 1, divided by 16, ties rounded to even. The 5x5
 *  mask is
 *
 *       2   7  12   7   2
 *       7  31  52  31   7
 *      12  52 127  52  12
 *       7  31  52  31   7
 *       2   7  12   7   2
 *
 *  divided by its sum, 571, and rounded to nearest. A constant image stays as it is.
 *  @param src      first source pixel of the region
 *  @param srcStep  source row step in bytes, at least 1
 *  @param dst      first destination pixel
 *  @param dstStep  destination row step in bytes, at least 1
 *  @param width    pixels in a row, at least 1
 *  @param height   rows, at least 1
 *  @param maskCode #NORVALA_GAUSS_3X3 or #NORVALA_GAUSS_5X5
 *  @return 0, or -1 with nothing written when
 *          - a pointer is null
 *          - a size or a step is below 1
 *          - the mask code is another
 *          - work memory is lacking: 12 or 48 bytes for each pixel of a row */
NORVALA_API int32_t NORVALA_CALL Norvala_FilterGauss(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep,
                                                     int32_t width, int32_t height, int32_t maskCode);
/** @} */

/** @defgroup step Gaussian pyramid step
 *  Halves a one-channel image in both directions. It is smoothed with the outer product of [1 4 6 4 1] / 16 with itself
 *  first (P. Burt, E. Adelson, "The Laplacian Pyramid as a Compact Image Code", 1983). The result has
 *  (width + 1) / 2 x (height + 1) / 2 pixels, divisions rounded down; its pixel (j, k) is centred on source pixel
 *  (2j, 2k). Beyond the edges the image is mirrored about its edge pixels, which are not repeated (..2 1 | 0 1 2..):
 *  only the region itself is read.
 *  @{ */
/** Tells the size of the work buffer that the reductions below need; it serves both pixel types.
 *  @param width      source width in pixels, at least 1
 *  @param channels   1 (3 is accepted and reports what three interleaved channels would need)
 *  @param bufferSize receives the size in bytes; left alone on failure
 *  @return 0, or -1 when the pointer is null, the width is below 1, the channels are neither 1 nor 3, or the size does
 *          not fit 32 signed bits */
NORVALA_API int32_t NORVALA_CALL Norvala_PyrDownGetBufSizeGauss5x5BW8(int32_t width, int32_t channels,
                                                                      int32_t* bufferSize);
/** Reduces an 8-bit image by half. Sums are exact; the result is rounded to nearest, halves up.
 *  @param src     first source pixel
 *  @param srcStep source row step in bytes, at least `width`
 *  @param dst     first destination pixel
 *  @param dstStep destination row step in bytes, at least (width + 1) / 2
 *  @param width   pixels in a source row, at least 1
 *  @param height  source rows, at least 1
 *  @param buffer  work buffer of the size that Norvala_PyrDownGetBufSizeGauss5x5BW8 reports, at any address; its
 *                 contents do not matter before the call and mean nothing after it. Calls that run at the same time
 *                 need a buffer each.
 *  @return 0, or -1 when a pointer is null, a size is below 1 or a step is too small */
NORVALA_API int32_t NORVALA_CALL Norvala_PyrDownGauss5x5BW8(const BW8* src, int32_t srcStep, BW8* dst, int32_t dstStep,
                                                            int32_t width, int32_t height, uint8_t* buffer);
/** Reduces a float image by half; otherwise as Norvala_PyrDownGauss5x5BW8. Row sums are formed in double precision and
 *  rounded to float, sums of them are formed in double precision and rounded to float; results are not clamped.
 *  @param src     first source pixel
 *  @param srcStep source row step in bytes, at least 4 * `width` and a multiple of 4
 *  @param dst     first destination pixel
 *  @param dstStep destination row step in bytes, at least 4 * ((width + 1) / 2) and a multiple of 4
 *  @param width   pixels in a source row, at least 1
 *  @param height  source rows, at least 1
 *  @param buffer  work buffer, as above
 *  @return 0, or -1 when a pointer is null, a size is below 1, or a step is too small or no multiple of 4 */
NORVALA_API int32_t NORVALA_CALL Norvala_PyrDownGauss5x5FLOAT32(const FLOAT32* src, int32_t srcStep, FLOAT32* dst,
                                                                int32_t dstStep, int32_t width, int32_t height,
                                                                uint8_t* buffer);
/** @} */

/** @defgroup layers Pyramid layers
 *  Reduces 8-bit images by any rate above 1 and up to 10: smoothing with a symmetric kernel, then linear interpolation
 *  (at rates from 1.99998 to 2.00002, every second pixel of every second row). A state holds the kernel and all work
 *  memory; it is created once and serves any number of reductions, one at a time.
 *
 *  A direction of n pixels reduces to d pixels, where d is the one number for which
 *  upper(d - 1) < n <= upper(d), with upper(0) = 0 and upper(d) the larger of d + 1 and d * rate, the product rounded
 *  to single precision and its fraction dropped. That is n / rate, give or take one: 10 pixels at rate 2 give 5.
 *  At rates from 1.99998 to just below 2 that may be more than every second pixel fills: what is left over, commonly
 *  the last row and column, keeps its values (10 x 10 at 1.99999 gives 6 x 6, of which 5 x 5 are written).
 *  Source pixel 0 falls on destination pixel 0. Beyond its edges the image is mirrored about the edge pixels, which
 *  are not repeated.
 *  @{ */
/** What a pyramid layer keeps between reductions. */
typedef struct PyramidLayerState PyramidLayerState;

/** Creates the state of a pyramid layer.
 *  @param statePtrOut receives the state, which belongs to the caller until it is passed to
 *                     Norvala_PyramidLayerDownFreeBW8; null when none was created. If the pointer itself is null the
 *                     call fails.
 *  @param width       source width in pixels, at least 1
 *  @param height      source height in pixels, at least 1
 *  @param rate        reduction rate, above 1 and up to 10
 *  @param kernel      `kernelSize` taps of any common scale: they are normalised to keep the level of flat regions, in
 *                     13 fractional bits, so that a tap should be less than twice the sum of all. The kernel should be
 *                     symmetric: only its centre and left half count. Taps that sum to 0 are not normalised. The kernel
 *                     is copied.
 *  @param kernelSize  number of taps, odd and at least 3
 *  @param mode        #NORVALA_LAYER_MODE
 *  @return 0, or -1 when
 *          - a pointer is null
 *          - an argument is out of its range
 *          - the memory cannot be had
 *          - the kernel is not symmetric, as a warning: `statePtrOut` holds a live state, which works with the left
 *            half and must be released */
NORVALA_API int32_t NORVALA_CALL Norvala_PyramidLayerDownInitAllocBW8(PyramidLayerState** statePtrOut, int32_t width,
                                                                      int32_t height, FLOAT32 rate,
                                                                      const int16_t* kernel, int32_t kernelSize,
                                                                      int32_t mode);
/** Releases a state.
 *  @param state what Norvala_PyramidLayerDownInitAllocBW8 stored; null is allowed and does nothing
 *  @return 0 */
NORVALA_API int32_t NORVALA_CALL Norvala_PyramidLayerDownFreeBW8(PyramidLayerState* state);
/** Reduces an 8-bit image by the rate of a state. Allocates nothing.
 *  @param src       first source pixel
 *  @param srcStep   source row step in bytes, at least `srcWidth`
 *  @param srcWidth  pixels in a source row, at least 1 and at most the width that the state was created for
 *  @param srcHeight source rows, at least 1 and at most the height that the state was created for
 *  @param dst       first destination pixel
 *  @param dstStep   destination row step in bytes, at least `dstWidth`
 *  @param dstWidth  pixels in a destination row: exactly what `srcWidth` reduces to, see above; NorvalaLayerSize of
 *                  norvala_helpers.h tells it
 *  @param dstHeight destination rows: exactly what `srcHeight` reduces to
 *  @param state     the layer's state; its work memory is written, so calls that run at the same time need a state each
 *  @return 0, or -1 when
 *          - a pointer is null
 *          - a source size is out of its range
 *          - a step is too small
 *          - the destination size is not what the source reduces to */
NORVALA_API int32_t NORVALA_CALL Norvala_PyramidLayerDownBW8(const BW8* src, int32_t srcStep, int32_t srcWidth,
                                                             int32_t srcHeight, BW8* dst, int32_t dstStep,
                                                             int32_t dstWidth, int32_t dstHeight,
                                                             PyramidLayerState* state);
/** @} */

/** @defgroup sampledown 2x2 down-sampling
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

/** @defgroup affine Affine warp
 *  Coordinates are those of whole images: the first pixel of an image is the point (0, 0), and every pixel's centre is
 *  an integer point. A region therefore does not move the pointer: pass the image's first pixel and say in the region
 *  where to work. `coefficients` are six doubles c00, c01, c02, c10, c11, c12 that take the source point (x, y) to the
 *  destination point (c00 x + c01 y + c02, c10 x + c11 y + c12).
 *
 *  The corner pixels' centres of the source region (limited to the source image) are mapped to a quadrilateral. The
 *  pixels of the destination region whose centres lie in that quadrilateral, its edges included, are written, and in
 *  the first columns those up to 1e-14 pixels beside it; all others keep their values. Each written pixel is mapped
 *  back and sampled from the source image by `interpolation`:
 *  - #NORVALA_NEAREST: the pixel whose centre is nearest, moved unchanged;
 *  - #NORVALA_LINEAR: between the four pixels around the position;
 *  - #NORVALA_CUBIC: the Lagrange cubic through the four by four pixels around the position, extrapolated at the
 *    image's border from the outermost block; 8-bit results saturate.
 *
 *  An image with a side of 1 pixel is sampled by nearest, one with a side below 4 pixels by linear in place of cubic.
 *  Adding #NORVALA_SMOOTH_EDGES (`NORVALA_LINEAR | NORVALA_SMOOTH_EDGES`, say) smooths the quadrilateral's edges
 *  afterwards: in each column that a flat edge passes, and in each row that a steep one passes, the pixel that the edge
 *  crosses there becomes a mixture of its neighbour just inside and its neighbour just outside, by the part of the
 *  pixel that lies inside. The background must therefore be filled before the call. Edges on the destination region's
 *  own sides, and pixels whose neighbours would lie outside that region, stay as they are.
 *  @{ */
/** Warps a region of an 8-bit image.
 *  @param src           first pixel of the source image
 *  @param srcWidth      width of the source image in pixels, at least 1
 *  @param srcHeight     height of the source image in pixels, at least 1
 *  @param srcStep       source row step in bytes, at least 1
 *  @param srcRegion     the source region; x and y at least 0, sizes at least 1; it may reach beyond the image, whose
 *                       part of it must be at least 2 by 2 pixels. Must not be null.
 *  @param dst           first pixel of the destination image
 *  @param dstStep       destination row step in bytes, at least 1
 *  @param dstRegion     the destination region, all of it readable and writable: #NORVALA_SMOOTH_EDGES also reads
 *                       pixels that are not written; x and y at least 0, sizes at least 1. Must not be null.
 *  @param coefficients  six doubles, as above. Must not be null.
 *  @param interpolation #NORVALA_NEAREST, #NORVALA_LINEAR or #NORVALA_CUBIC, with or without #NORVALA_SMOOTH_EDGES
 *  @return 0, also where the quadrilateral is so thin that no pixel's centre lies in it; or -1 with nothing written
 *          when
 *          - a pointer is null
 *          - a size, a step or a region is out of its range
 *          - the interpolation is unknown
 *          - the coefficients are singular or not finite
 *          - the source region misses the image or leaves less than 2 by 2 pixels of it
 *          - no row or no column of the destination region's pixels crosses the quadrilateral
 *          - work memory is lacking: 8 bytes for each row that the call writes */
NORVALA_API int32_t NORVALA_CALL Norvala_WarpAffine_BW8(const BW8* src, int32_t srcWidth, int32_t srcHeight,
                                                        int32_t srcStep, const NorvalaRect* srcRegion, BW8* dst,
                                                        int32_t dstStep, const NorvalaRect* dstRegion,
                                                        const double* coefficients, int32_t interpolation);
/** Warps a region of a float image; otherwise as Norvala_WarpAffine_BW8. Nearest moves bit patterns. Results are
 *  computed in double precision, not limited to any range. */
NORVALA_API int32_t NORVALA_CALL Norvala_WarpAffine_FLOAT32(const FLOAT32* src, int32_t srcWidth, int32_t srcHeight,
                                                            int32_t srcStep, const NorvalaRect* srcRegion, FLOAT32* dst,
                                                            int32_t dstStep, const NorvalaRect* dstRegion,
                                                            const double* coefficients, int32_t interpolation);
/** @} */

/** @defgroup quadrilateral Quadrilateral warps
 *  Bring the content of a quadrilateral of the source image onto a quadrilateral of the destination image. A
 *  quadrilateral is eight doubles, the points x0, y0, x1, y1, x2, y2, x3, y3 in the order in which its sides join them;
 *  vertex k of the one goes to vertex k of the other. Both must be finite and convex, without three vertices on a line.
 *  The rectangle of pixels (left, top) to (right, bottom) is the quadrilateral of its corner pixels' centres: (left,
 *  top), (right, top), (right, bottom), (left, bottom). Vertices may lie outside the images; source positions outside
 *  the source image are limited to it. Images, regions and interpolations are those of the affine warp.
 *  @{ */
/** Warps by the affine map that takes the first three vertices of the source quadrilateral to those of the
 *  destination's. Where the source quadrilateral lies in the source region, all pixels of the destination quadrilateral
 *  inside the destination region are written, otherwise those that the part in the source region maps to; then edges
 *  are not smoothed.
 *  @param src           first pixel of the source image
 *  @param srcWidth      width of the source image in pixels, at least 1
 *  @param srcHeight     height of the source image in pixels, at least 1
 *  @param srcStep       source row step in bytes, at least 1
 *  @param srcRegion     the source region; x and y at least 0, sizes at least 1. Must not be null.
 *  @param srcQuad       the source quadrilateral, eight doubles. Must not be null.
 *  @param dst           first pixel of the destination image
 *  @param dstStep       destination row step in bytes, at least 1
 *  @param dstRegion     the destination region, all of it readable and writable: #NORVALA_SMOOTH_EDGES also reads
 *                       pixels that are not written; x and y at least 0, sizes at least 1. Must not be null.
 *  @param dstQuad       the destination quadrilateral, eight doubles. Must not be null.
 *  @param interpolation #NORVALA_NEAREST, #NORVALA_LINEAR or #NORVALA_CUBIC, with or without #NORVALA_SMOOTH_EDGES
 *  @return 0, also where the area is so thin that no pixel's centre lies in it; -1 with the warp done when the fourth
 *          vertices do not fit the map, to about 12 digits; -1 with nothing written when
 *          - a pointer is null
 *          - a size, a step or a region is out of its range
 *          - the interpolation is unknown
 *          - a quadrilateral is degenerate, not convex or not a number
 *          - the source region misses the image
 *          - no row or no column of the destination region's pixels crosses what is to be written
 *          - work memory is lacking: 8 bytes for each row that the call writes */
NORVALA_API int32_t NORVALA_CALL Norvala_WarpAffineQuad(const BW8* src, int32_t srcWidth, int32_t srcHeight,
                                                        int32_t srcStep, const NorvalaRect* srcRegion,
                                                        const double* srcQuad, BW8* dst, int32_t dstStep,
                                                        const NorvalaRect* dstRegion, const double* dstQuad,
                                                        int32_t interpolation);
/** Warps by the projection that takes all four vertices of the source quadrilateral to those of the destination's;
 *  arguments as for Norvala_WarpAffineQuad. Where the source quadrilateral lies in the source region, all pixels of the
 *  destination quadrilateral inside the destination region are written; otherwise those whose position in the source
 *  falls outside the source region by more than 1e-7 keep their values. Edges are not smoothed: #NORVALA_SMOOTH_EDGES
 *  is accepted without effect.
 *  @return 0, or -1 with nothing written for the reasons of Norvala_WarpAffineQuad but the fourth vertices. A source
 *          quadrilateral wholly outside the source region gives 0 with nothing written. */
NORVALA_API int32_t NORVALA_CALL Norvala_WarpPerspectiveQuad(const BW8* src, int32_t srcWidth, int32_t srcHeight,
                                                             int32_t srcStep, const NorvalaRect* srcRegion,
                                                             const double* srcQuad, BW8* dst, int32_t dstStep,
                                                             const NorvalaRect* dstRegion, const double* dstQuad,
                                                             int32_t interpolation);
/** @} */

/** @defgroup bounds Bounds and rotation
 *  Where an affine warp will put a region, without doing it. Points are pixel centres, so a region of width w spans
 *  w - 1 in x. A bound is four doubles: least x, least y, greatest x, greatest y.
 *
 *  Angles are in degrees, counter-clockwise on the screen where rows grow downwards. A rotation by a with a shift is
 *  the affine map with the coefficients cos a, sin a, xShift, -sin a, cos a, yShift; at 90, 180 and 270 degrees (and
 *  whole turns more or less) its elements are exactly 0, 1 and -1. Angles of 2^31 turns or more, infinite ones and NaN
 *  give meaningless numbers.
 *  @{ */
/** The bound of a region after an affine map.
 *  @param region       the region; x and y at least 0, sizes at least 1. Must not be null.
 *  @param bound        receives four doubles. Must not be null.
 *  @param coefficients six doubles, as for Norvala_WarpAffine_BW8. Must not be null.
 *  @return 0; -1 with the bound written when the mapped region is degenerate (a region one pixel wide or high, singular
 *          coefficients) or not finite; -1 with nothing written when the region is out of its range */
NORVALA_API int32_t NORVALA_CALL Norvala_GetAffineBound(const NorvalaRect* region, double* bound,
                                                        const double* coefficients);
/** The shift that makes a rotation keep a point in its place.
 *  @param xCentre column of the point
 *  @param yCentre row of the point
 *  @param angle   degrees
 *  @param xShift  receives the shift in x
 *  @param yShift  receives the shift in y
 *  @return 0, or -1 with nothing written when a pointer is null */
NORVALA_API int32_t NORVALA_CALL Norvala_GetRotateShift(double xCentre, double yCentre, double angle, double* xShift,
                                                        double* yShift);
/** The quadrilateral of a region's corner pixels after a rotation and a shift.
 *  @param region the region; x and y at least 0, sizes at least 1. Must not be null.
 *  @param quad   receives eight doubles, the images of the top-left, top-right, bottom-right and bottom-left corner.
 *                Must not be null.
 *  @param angle  degrees
 *  @param xShift shift in x
 *  @param yShift shift in y
 *  @return 0, or -1 with nothing written when the region is out of its range */
NORVALA_API int32_t NORVALA_CALL Norvala_GetRotateQuad(const NorvalaRect* region, double* quad, double angle,
                                                       double xShift, double yShift);
/** The bound of Norvala_GetRotateQuad's quadrilateral; `bound` receives four doubles, otherwise as there. */
NORVALA_API int32_t NORVALA_CALL Norvala_GetRotateBound(const NorvalaRect* region, double* bound, double angle,
                                                        double xShift, double yShift);
/** @} */

/** @defgroup resize Resize
 *  @{ */
/** Scales a region of a float image by one factor across and one down. The destination extent is the region (cut to
 *  the image where it reaches beyond it) times the factors plus 1e-7, rounded down, but at least one pixel where half
 *  a pixel or more is left, and at most the destination size; exactly that many pixels from the first one on are
 *  written, all others keep their values. Pixel (i, j) of the destination lies at ((i + 0.5) / xFactor - 0.5,
 *  (j + 0.5) / yFactor - 0.5) of the region. Beyond its edges the region continues with its edge pixels; nothing
 *  outside it is read. A direction with the factor 1 copies, and a constant region stays constant.
 *
 *  | interpolation | number | value of a pixel |
 *  |---|---|---|
 *  | #NORVALA_NEAREST | 1 | the nearest source pixel, moved as a bit pattern |
 *  | #NORVALA_LINEAR | 2 | straight lines through 2 x 2 pixels |
 *  | #NORVALA_CUBIC | 4 | cubic Lagrange polynomials through 4 x 4 pixels |
 *  | #NORVALA_REDUCE | 8 | the mean over the area that the pixel covers in the source; both factors at most 1 |
 *  | #NORVALA_EIGHT_POINT | 16 | windowed sinc over 8 x 8 pixels |
 *
 *  In small images, whatever the region, EightPoint needs 8 source rows and columns and becomes Cubic below, Cubic
 *  needs 4 and becomes Linear, Linear needs 2 and becomes Nearest. Nearest to EightPoint look at a fixed number of
 *  source pixels: for shrinking to less than about half take Reduce, which sees them all.
 *  @param src           first pixel of the source image (of the image, not of the region)
 *  @param srcWidth      pixels in a row of the source image, at least 1
 *  @param srcHeight     rows of the source image, at least 1
 *  @param srcStep       source row step in bytes; not checked: zero and negative steps are used as given
 *  @param srcRegion     the region to scale; must not be null. Its origin lies inside the image, its sizes are at
 *                       least 1
 *  @param dst           first destination pixel
 *  @param dstStep       destination row step in bytes; not checked
 *  @param dstWidth      largest number of pixels to write in a row, at least 1
 *  @param dstHeight     largest number of rows to write, at least 1
 *  @param xFactor       destination width over source width, above 0
 *  @param yFactor       destination height over source height, above 0
 *  @param interpolation one of the above
 *  @return 0, or -1 with nothing written when
 *          - `src` or `dst` is null
 *          - a size or the origin of the region is out of its range
 *          - a factor is not above 0
 *          - the interpolation is none of the above, or #NORVALA_REDUCE with a factor above 1
 *          - less than half a pixel would be left in a direction
 *          - work memory cannot be had */
NORVALA_API int32_t NORVALA_CALL Norvala_Resize(const FLOAT32* src, int32_t srcWidth, int32_t srcHeight,
                                                int32_t srcStep, const NorvalaRect* srcRegion, FLOAT32* dst,
                                                int32_t dstStep, int32_t dstWidth, int32_t dstHeight, FLOAT64 xFactor,
                                                FLOAT64 yFactor, int32_t interpolation);
/** @} */

/** @defgroup dft Discrete Fourier transform
 *  @{ */
/** Two-dimensional forward discrete Fourier transform of a real image, not normalised:
 *  dst(k, l) = sum over x, y of src(x, y) * exp(-2 pi i (k x / width + l y / height)). The whole spectrum is written,
 *  its zero frequency at column 0, row 0; it is exactly conjugate symmetric: dst((width - k) mod width,
 *  (height - l) mod height) is the conjugate of dst(k, l). Sizes whose prime factors are small are fastest, powers of
 *  two above all; sizes with a prime factor above 150 cost a few times as much. NaN and infinities in the image spread
 *  through the spectrum.
 *  The call allocates and releases its own work memory: an image of the source's size and scratch of up to 480 bytes
 *  for every row or 432 for every column, whichever are more. These alone limit the size: each must fit in 4 GiB.
 *  @param src     first pixel of the real image
 *  @param srcStep source row step in bytes, at least 1
 *  @param dst     first number of the spectrum, `width` x `height` complex numbers
 *  @param dstStep spectrum row step in bytes, at least 1
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @return 0, or -1 with nothing written when
 *          - a pointer is null
 *          - a size or a step is below 1
 *          - the work memory cannot be had */
NORVALA_API int32_t NORVALA_CALL Norvala_DFTFwdFLOAT32(const FLOAT32* src, int32_t srcStep, ComplexFLOAT32Number* dst,
                                                       int32_t dstStep, int32_t width, int32_t height);
/** @} */

/** @defgroup magnitude Magnitude
 *  @{ */
/** Moduli of complex pixels, such as those of a spectrum: sqrt(re * re + im * im), summed and rooted in double
 *  precision and rounded to float, so that squares cannot overflow. Infinite and NaN parts propagate.
 *  @param src     first source pixel
 *  @param srcStep source row step in bytes, at least 1
 *  @param dst     first destination pixel
 *  @param dstStep destination row step in bytes, at least 1
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @return 0, or -1 when a pointer is null or a size or step is below 1 */
NORVALA_API int32_t NORVALA_CALL Norvala_MagnitudeFLOAT32(const ComplexFLOAT32Number* src, int32_t srcStep,
                                                          FLOAT32* dst, int32_t dstStep, int32_t width, int32_t height);
/** @} */

/** @defgroup distance Distance transform
 *  @{ */
/** Distance of every pixel of a mask to its nearest zero pixel, along paths of horizontal, vertical and diagonal
 *  steps (two-pass chamfer distance; G. Borgefors, "Distance transformations in digital images", 1986). Zero pixels
 *  get 0. The distances have the unit of the two step weights: 1 and 1.5 give roughly pixels, 0.955 and 1.3693 are
 *  the closest to Euclidean ones. A diagonal weight of at least twice the straight one leaves diagonals out (city-block
 *  distance), a single row or column uses only straight steps, and distances end at the largest float: a mask without a
 *  zero pixel gives that everywhere. With a diagonal weight below the straight one, two columns along the last row cost
 *  at most two diagonal steps, as if one more row lay below it; no such row is assumed on the other sides.
 *  @param src     first mask pixel
 *  @param srcStep mask row step in bytes, at least `width`
 *  @param dst     first destination pixel
 *  @param dstStep destination row step in bytes, at least 4 * `width` and a multiple of 4
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @param metrics two weights, both above 0: of a horizontal or vertical step, then of a diagonal step
 *  @return 0, or -1 when
 *          - a pointer is null
 *          - a size is below 1
 *          - a step is out of its range
 *          - a weight is not above 0 (NaN included) */
NORVALA_API int32_t NORVALA_CALL Norvala_DistanceTransform3x3_BW8ToFLOAT32(const BW8* src, int32_t srcStep,
                                                                           FLOAT32* dst, int32_t dstStep, int32_t width,
                                                                           int32_t height, const FLOAT32* metrics);
/** @} */

/** @defgroup random Random fill
 *  @{ */
/** Fills a vector with uniformly distributed pseudo-random bytes. The same seed and bounds give the same bytes at every
 *  call. With `low` below `high` the values are `low` to `high` - 1, except that one draw in 2^32 may give `low` - 1;
 *  equal bounds give that value throughout; with `low` above `high` the values are `high` to `low`. The generator adds
 *  a congruential sequence to a subtract-with-borrow one (G. Marsaglia and A. Zaman, "Some portable very-long-period
 *  random number generators", 1994).
 *
 *  @warning Every successful call keeps about 150 bytes of memory until the process ends.
 *  @param dst    first byte to fill
 *  @param length bytes to fill, at least 1
 *  @param low    first bound; only its low 8 bits are used
 *  @param high   second bound; only its low 8 bits are used
 *  @param seed   start of the sequence, any value
 *  @return 0, or -1 when the pointer is null, the length is below 1 or the memory cannot be had */
NORVALA_API int32_t NORVALA_CALL Norvala_RandUniform_BW8(BW8* dst, int32_t length, int32_t low, int32_t high,
                                                         uint32_t seed);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
