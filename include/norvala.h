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

/* ---- Type conversions ---- */

/* ---- Logical and shift operations ---- */

/* ---- Arithmetic and statistics ---- */

/* ---- Colour to grey ---- */

/* ---- Separable filters ---- */

/* ---- Pipeline filters ---- */

/* ---- Gaussian filter ---- */

/* ---- Gaussian pyramid step ---- */

/* ---- Pyramid layers ---- */

/* ---- 2x2 down-sampling ---- */

/* ---- Affine warp ---- */

/* ---- Quadrilateral warps ---- */

/* ---- Bounds and rotation ---- */

/* ---- Resize ---- */

/* ---- Discrete Fourier transform ---- */

/* ---- Magnitude ---- */

/** @name Magnitude
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

/* ---- Distance transform ---- */

/** @name Distance transform
 *  @{ */
/** Distance of every pixel of a mask to its nearest zero pixel, along paths of horizontal, vertical and diagonal
 *  steps (two-pass chamfer distance; G. Borgefors, "Distance transformations in digital images", 1986). Zero pixels
 *  get 0. The distances have the unit of the two step weights: 1 and 1.5 give roughly pixels, 0.955 and 1.3693 are
 *  the closest to Euclidean ones. A diagonal weight of at least twice the straight one leaves diagonals out (city-block
 *  distance), a single row or column uses only straight steps, and distances end at the largest float: a mask without a
 *  zero pixel gives that everywhere.
 *  @param src     first mask pixel
 *  @param srcStep mask row step in bytes, at least `width`
 *  @param dst     first destination pixel
 *  @param dstStep destination row step in bytes, at least 4 * `width` and a multiple of 4
 *  @param width   pixels in a row, at least 1
 *  @param height  rows, at least 1
 *  @param metrics two weights, both above 0: of a horizontal or vertical step, then of a diagonal step
 *  @return 0, or -1 when a pointer is null, a size is below 1, a step is out of its range, or a weight is not above 0
 *  (NaN included) */
NORVALA_API int32_t NORVALA_CALL Norvala_DistanceTransform3x3_BW8ToFLOAT32(const BW8* src, int32_t srcStep,
                                                                           FLOAT32* dst, int32_t dstStep, int32_t width,
                                                                           int32_t height, const FLOAT32* metrics);
/** @} */

/* ---- Random fill ---- */

/** @name Random fill
 *  @{ */
/** Fills a vector with uniformly distributed pseudo-random bytes. The same seed and bounds give the same bytes at every
 *  call. With `low` below `high` the values are `low` to `high` - 1, except that one draw in 2^32 may give `low` - 1;
 *  equal bounds give that value throughout; with `low` above `high` the values are `high` to `low`. The generator adds
 *  a congruential sequence to a subtract-with-borrow one (G. Marsaglia and A. Zaman, "Some portable very-long-period
 *  random number generators", 1994).
 *
 *  Every successful call keeps about 160 bytes of memory until the process ends.
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
