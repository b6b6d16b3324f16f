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

/** @name Affine warp
 *  Coordinates are those of whole images: the first pixel of an image is the point (0, 0), and every pixel's centre is
 *  an integer point. A region therefore does not move the pointer: pass the image's first pixel and say in the region
 *  where to work. `coefficients` are six doubles c00, c01, c02, c10, c11, c12 that take the source point (x, y) to the
 *  destination point (c00 x + c01 y + c02, c10 x + c11 y + c12).
 *
 *  The corner pixels' centres of the source region (limited to the source image) are mapped to a quadrilateral. Exactly
 *  the pixels of the destination region whose centres lie in that quadrilateral, its edges included, are written; all
 *  others keep their values. Each written pixel is mapped back and sampled from the source image by `interpolation`:
 *  - 1, nearest: the pixel whose centre is nearest, moved unchanged;
 *  - 2, linear: between the four pixels around the position;
 *  - 4, cubic: the Lagrange cubic through the four by four pixels around the position, extrapolated at the image's
 *    border from the outermost block; 8-bit results saturate.
 *
 *  An image with a side of 1 pixel is sampled by nearest, one with a side below 4 pixels by linear in place of cubic.
 *  Adding bit 31 (INT32_MIN | 2, say) smooths the quadrilateral's edges afterwards: each pixel that an edge crosses
 *  becomes a mixture of its neighbour just inside and its neighbour just outside, by the part of the pixel that lies
 *  inside. The background must therefore be filled before the call. Edges on the destination region's own sides, and
 *  pixels whose neighbours would lie outside that region, stay as they are.
 *  @{ */
/** Warps a region of an 8-bit image.
 *  @param src           first pixel of the source image
 *  @param srcWidth      width of the source image in pixels, at least 1
 *  @param srcHeight     height of the source image in pixels, at least 1
 *  @param srcStep       source row step in bytes, at least 1
 *  @param srcRegion     the source region; x and y at least 0, sizes at least 1; it may reach beyond the image, whose
 * part of it must be at least 2 by 2 pixels. Must not be null.
 *  @param dst           first pixel of the destination image
 *  @param dstStep       destination row step in bytes, at least 1
 *  @param dstRegion     the destination region, all of it writable; x and y at least 0, sizes at least 1. Must not be
 *                       null.
 *  @param coefficients  six doubles, as above. Must not be null.
 *  @param interpolation 1, 2 or 4, with or without bit 31
 *  @return 0, or -1 with nothing written when a pointer is null, a size, step or region is out of its range, the
 *          interpolation is unknown, the coefficients are singular or not finite, the source region misses the image or
 *          leaves less than 2 by 2 pixels of it, the quadrilateral meets no pixel of the destination region, or work
 *          memory is lacking. The call needs 8 bytes of it for each row that it writes. */
NORVALA_API int32_t NORVALA_CALL Norvala_WarpAffine_BW8(const BW8* src, int32_t srcWidth, int32_t srcHeight,
                                                        int32_t srcStep, const Rect* srcRegion, BW8* dst,
                                                        int32_t dstStep, const Rect* dstRegion,
                                                        const double* coefficients, int32_t interpolation);
/** Warps a region of a float image; otherwise as Norvala_WarpAffine_BW8. Nearest moves bit patterns. Results are
 *  computed in double precision, not limited to any range. */
NORVALA_API int32_t NORVALA_CALL Norvala_WarpAffine_FLOAT32(const FLOAT32* src, int32_t srcWidth, int32_t srcHeight,
                                                            int32_t srcStep, const Rect* srcRegion, FLOAT32* dst,
                                                            int32_t dstStep, const Rect* dstRegion,
                                                            const double* coefficients, int32_t interpolation);
/** @} */

/* ---- Quadrilateral warps ---- */

/** @name Quadrilateral warps
 *  Bring the content of a quadrilateral of the source image onto a quadrilateral of the destination image. A
 *  quadrilateral is eight doubles, the points x0, y0, x1, y1, x2, y2, x3, y3 in the order in which its sides join them;
 *  vertex k of the one goes to vertex k of the other. Both must be convex, without three vertices on a line. A
 * rectangle of pixels is the quadrilateral of its corner pixels' centres: (left, top), (right, top), (right, bottom),
 * (left, bottom). Images, regions and interpolations are those of the affine warp. Vertices may lie outside the images.
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
 *  @param dstRegion     the destination region, all of it writable; x and y at least 0, sizes at least 1. Must not be
 *                       null.
 *  @param dstQuad       the destination quadrilateral, eight doubles. Must not be null.
 *  @param interpolation 1, 2 or 4, with or without bit 31
 *  @return 0; or -1 with the warp done when the fourth vertices do not fit the map, to about 12 digits; or -1 with
 *          nothing written when a pointer is null, a size, step or region is out of its range, the interpolation is
 *          unknown, a quadrilateral is degenerate, not convex or not finite, the source region misses the image, no
 * pixel is to be written, or work memory is lacking */
NORVALA_API int32_t NORVALA_CALL Norvala_WarpAffineQuad(const BW8* src, int32_t srcWidth, int32_t srcHeight,
                                                        int32_t srcStep, const Rect* srcRegion, const double* srcQuad,
                                                        BW8* dst, int32_t dstStep, const Rect* dstRegion,
                                                        const double* dstQuad, int32_t interpolation);
/** Warps by the projection that takes all four vertices of the source quadrilateral to those of the destination's;
 *  arguments as for Norvala_WarpAffineQuad. Where the source quadrilateral lies in the source region, all pixels of the
 *  destination quadrilateral inside the destination region are written; otherwise those whose position in the source
 *  falls outside the source region keep their values. Edges are not smoothed: bit 31 is accepted without effect.
 *  @return 0, or -1 with nothing written for the reasons of Norvala_WarpAffineQuad but the fourth vertices */
NORVALA_API int32_t NORVALA_CALL Norvala_WarpPerspectiveQuad(const BW8* src, int32_t srcWidth, int32_t srcHeight,
                                                             int32_t srcStep, const Rect* srcRegion,
                                                             const double* srcQuad, BW8* dst, int32_t dstStep,
                                                             const Rect* dstRegion, const double* dstQuad,
                                                             int32_t interpolation);
/** @} */

/* ---- Bounds and rotation ---- */

/** @name Bounds and rotation
 *  Where an affine warp will put a region, without doing it. Points are pixel centres, so a region of width w spans
 *  w - 1 in x. A bound is four doubles: least x, least y, greatest x, greatest y.
 *
 *  Angles are in degrees, counter-clockwise on the screen where rows grow downwards. A rotation by a with a shift is
 * the affine map with the coefficients cos a, sin a, xShift, -sin a, cos a, yShift; at 90, 180 and 270 degrees (and
 * whole turns more or less) its elements are exactly 0, 1 and -1. Angles of 2^31 turns or more, infinite ones and NaN
 * give meaningless numbers.
 *  @{ */
/** The bound of a region after an affine map.
 *  @param region       the region; x and y at least 0, sizes at least 1. Must not be null.
 *  @param bound        receives four doubles. Must not be null.
 *  @param coefficients six doubles, as for Norvala_WarpAffine_BW8. Must not be null.
 *  @return 0; -1 with the bound written when the mapped region is degenerate (a region one pixel wide or high, singular
 *          coefficients) or not finite; -1 with nothing written when the region is out of its range */
NORVALA_API int32_t NORVALA_CALL Norvala_GetAffineBound(const Rect* region, double* bound, const double* coefficients);
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
NORVALA_API int32_t NORVALA_CALL Norvala_GetRotateQuad(const Rect* region, double* quad, double angle, double xShift,
                                                       double yShift);
/** The bound of Norvala_GetRotateQuad's quadrilateral; `bound` receives four doubles, otherwise as there. */
NORVALA_API int32_t NORVALA_CALL Norvala_GetRotateBound(const Rect* region, double* bound, double angle, double xShift,
                                                        double yShift);
/** @} */

/* ---- Resize ---- */

/* ---- Discrete Fourier transform ---- */

/* ---- Magnitude ---- */

/* ---- Distance transform ---- */

/* ---- Random fill ---- */

#ifdef __cplusplus
}
#endif

#endif
