/** @file
 * Small computations that callers of the library need: sizes, shifts and borders. C99 and C++, inline, calling nothing;
 * they serve hosts that link the library and hosts that load it alike.
 */
#ifndef NORVALA_HELPERS_H
#define NORVALA_HELPERS_H

#include <stddef.h>
#include <string.h>

#include "norvala.h"

/** @defgroup helpers Helpers
 *  In `norvala_helpers.h`, beside the functions of the library: what to call them with.
 *  @{ */

/** The largest size that a pyramid layer reduces to `reduced` pixels; NorvalaLayerSize searches among these. */
static inline int64_t NorvalaLargestForLayer(int64_t reduced, FLOAT32 rate) {
  volatile FLOAT32 product = (FLOAT32)((double)reduced * (double)rate); /* volatile: in single precision everywhere */
  const int64_t size = (int64_t)product;
  return size > reduced ? size : reduced + 1;
}

/** The size that a pyramid layer reduces a width or height to: the one `dstWidth` or `dstHeight` that
 *  Norvala_PyramidLayerDownBW8 accepts.
 *  @param size pixels of the source in one direction
 *  @param rate the layer's rate
 *  @return pixels of the destination; 0 where the size is below 1 or the rate not above 1 and up to 10 */
static inline int32_t NorvalaLayerSize(int32_t size, FLOAT32 rate) {
  int64_t reduced;
  if (size < 1 || !(rate > 1.0F && rate <= 10.0F)) return 0;
  reduced = (int64_t)((double)size / (double)rate + 0.5);
  if (reduced < 1) reduced = 1;
  while (reduced > 1 && size <= NorvalaLargestForLayer(reduced - 1, rate)) --reduced;
  while (size > NorvalaLargestForLayer(reduced, rate)) ++reduced;
  return (int32_t)reduced;
}

/** A destination that holds the whole of a warped region, and the shift that brings it there. */
typedef struct NorvalaFit {
  int32_t width;  /**< pixels in a row of the destination; 0 where no size serves */
  int32_t height; /**< rows of the destination */
  double xShift;  /**< what to add to the map's shift in x */
  double yShift;  /**< what to add to the map's shift in y */
} NorvalaFit;

/** The destination that holds all of a rotated (or otherwise mapped) region, with one pixel of background to spare on
 *  every side, which the smoothing of edges needs. The region's centre comes to the destination's centre. For a
 *  rotation, pass the bound from Norvala_GetRotateBound with the shifts 0 and 0, then warp with the shifts of the fit.
 *  @param bound least x, least y, greatest x, greatest y, from Norvala_GetRotateBound or Norvala_GetAffineBound
 *  @return size and shift; all 0 where the bound is not finite or the size does not fit 32 bits */
static inline NorvalaFit NorvalaFitBound(const double bound[4]) {
  const double across = bound[2] - bound[0];
  const double down = bound[3] - bound[1];
  NorvalaFit fit = {0, 0, 0.0, 0.0};
  if (!(across >= 0 && across < 2147483640.0 && down >= 0 && down < 2147483640.0)) return fit;
  fit.width = (int32_t)across + ((double)(int32_t)across < across) + 3;
  fit.height = (int32_t)down + ((double)(int32_t)down < down) + 3;
  fit.xShift = ((double)(fit.width - 1) - bound[0] - bound[2]) / 2;
  fit.yShift = ((double)(fit.height - 1) - bound[1] - bound[3]) / 2;
  return fit;
}

/** An image with a border around it, as a filter needs; the names are those of Norvala_CopyReplicateBorderBW8. */
typedef struct NorvalaPadded {
  int32_t outerWidth;  /**< pixels in a row, border included; 0 where it does not fit 32 bits */
  int32_t outerHeight; /**< rows, border included */
  int32_t left;        /**< border pixels before a row: the column of the image's first pixel */
  int32_t top;         /**< border rows above the image: the row of its first pixel */
} NorvalaPadded;

/** The pixels around a region that a filter along rows and one along columns read. A direction without a filter has 1
 *  tap with anchor 0; the masks of Norvala_FilterGauss are 3 taps with anchor 1 and 5 taps with anchor 2 both ways.
 *  @param width         pixels in a row of the region, at least 1
 *  @param height        rows of the region, at least 1
 *  @param rowTaps       taps of the filter along rows, at least 1
 *  @param rowAnchor     its anchor, any value
 *  @param columnTaps    taps of the filter along columns, at least 1
 *  @param columnAnchor  its anchor, any value
 *  @return sizes and origin; all 0 where an argument is below 1 or a size does not fit 32 bits */
static inline NorvalaPadded NorvalaPadForFilter(int32_t width, int32_t height, int32_t rowTaps, int32_t rowAnchor,
                                                int32_t columnTaps, int32_t columnAnchor) {
  /* A kernel reads `taps` - 1 - `anchor` pixels before the output pixel and `anchor` after it. */
  const int64_t before[2] = {(int64_t)rowTaps - 1 - rowAnchor, (int64_t)columnTaps - 1 - columnAnchor};
  const int64_t left = before[0] > 0 ? before[0] : 0;
  const int64_t top = before[1] > 0 ? before[1] : 0;
  const int64_t outerWidth = left + width + (rowAnchor > 0 ? rowAnchor : 0);
  const int64_t outerHeight = top + height + (columnAnchor > 0 ? columnAnchor : 0);
  NorvalaPadded padded = {0, 0, 0, 0};
  if (width < 1 || height < 1 || rowTaps < 1 || columnTaps < 1) return padded;
  if (outerWidth > INT32_MAX || outerHeight > INT32_MAX) return padded;
  padded.outerWidth = (int32_t)outerWidth;
  padded.outerHeight = (int32_t)outerHeight;
  padded.left = (int32_t)left;
  padded.top = (int32_t)top;
  return padded;
}

/** Swaps the quadrants of a spectrum, or of its magnitude, so that the zero frequency moves from column 0, row 0 to
 *  column `width` / 2, row `height` / 2; negative frequencies lie to its left and above it. Sizes may be odd.
 *  @param src        first source pixel
 *  @param srcStep    source row step in bytes
 *  @param dst        first destination pixel; must not overlap the source
 *  @param dstStep    destination row step in bytes
 *  @param width      pixels in a row
 *  @param height     rows
 *  @param pixelBytes bytes of a pixel: 4 for a magnitude, 8 for a spectrum */
static inline void NorvalaSwapQuadrants(const void* src, int32_t srcStep, void* dst, int32_t dstStep, int32_t width,
                                        int32_t height, int32_t pixelBytes) {
  const size_t left = (size_t)(width / 2) * (size_t)pixelBytes; /* bytes of the part that moves to the left */
  const size_t right = (size_t)(width - width / 2) * (size_t)pixelBytes;
  int32_t y;
  for (y = 0; y < height; ++y) {
    const int32_t to = y < height - height / 2 ? y + height / 2 : y - (height - height / 2);
    const char* from = (const char*)src + (ptrdiff_t)y * srcStep;
    char* row = (char*)dst + (ptrdiff_t)to * dstStep;
    memcpy(row, from + right, left);
    memcpy(row + left, from, right);
  }
}
/** @} */

#endif
