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

/** @name Gaussian pyramid step
 *  Halves a one-channel image in both directions after smoothing it with the outer product of [1 4 6 4 1] / 16 with
 *  itself (P. Burt, E. Adelson, "The Laplacian Pyramid as a Compact Image Code", 1983). The result has
 *  (width + 1) / 2 x (height + 1) / 2 pixels, divisions rounded down; its pixel (j, k) is centred on source pixel
 *  (2j, 2k). Beyond the edges the image is mirrored about its edge pixels, which are not repeated (... 2 1 | 0 1 2
 * ...): only the region itself is read.
 *  @{ */
/** Tells the size of the work buffer that the reductions below need; it serves both pixel types.
 *  @param width      source width in pixels, at least 1
 *  @param channels   1 (3 is accepted and reports what three interleaved channels would need)
 *  @param bufferSize receives the size in bytes; left alone on failure
 *  @return 0, or -1 when the pointer is null, the width is below 1, the channels are neither 1 nor 3, or the size does
 *  not fit 32 signed bits */
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

/** @name Pyramid layers
 *  Reduces 8-bit images by any rate above 1 and up to 10: smoothing with a symmetric kernel, then linear interpolation
 *  (at rate 2, every second pixel of every second row). A state holds the kernel and all work memory; it is created
 *  once and serves any number of reductions, one at a time.
 *
 *  A direction of n pixels reduces to d pixels, where d is the one number for which
 *  upper(d - 1) < n <= upper(d), with upper(0) = 0 and upper(d) the larger of d + 1 and d * rate, the product rounded
 *  to single precision and its fraction dropped. That is n / rate, give or take one: 10 pixels at rate 2 give 5.
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
 *                     13 fractional bits, so that twice a tap should be less than four times the sum of all. The kernel
 *                     should be symmetric: only its centre and left half count. Taps that sum to 0 are not normalised.
 *                     The kernel is copied.
 *  @param kernelSize  number of taps, odd and at least 3
 *  @param mode        2
 *  @return 0, or -1 when a pointer is null, an argument is out of its range or the memory cannot be had. A kernel that
 *  is not symmetric gives -1 as a warning: `statePtrOut` holds a live state, which works with the left half and must
 *  be released. */
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
 *  @param dstWidth  pixels in a destination row: exactly what `srcWidth` reduces to, see above
 *  @param dstHeight destination rows: exactly what `srcHeight` reduces to
 *  @param state     the layer's state; its work memory is written, so calls that run at the same time need a state each
 *  @return 0, or -1 when a pointer is null, a step is too small or a size is out of its range */
NORVALA_API int32_t NORVALA_CALL Norvala_PyramidLayerDownBW8(const BW8* src, int32_t srcStep, int32_t srcWidth,
                                                             int32_t srcHeight, BW8* dst, int32_t dstStep,
                                                             int32_t dstWidth, int32_t dstHeight,
                                                             PyramidLayerState* state);
/** @} */

/* ---- 2x2 down-sampling ---- */

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
