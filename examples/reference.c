/* Every family of functions in use, as the reference shows them, and the recipes. Each function returns 0 where all
 * went well. `photo` stands for the picture at hand: 64 x 48 grey pixels, whose rows follow each other at a step of
 * 64 bytes. */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "norvala.h"
#include "norvala_helpers.h"

static BW8 photo[48][64];

static int Version(void) {
  /* [version] */
  printf("Norvala %s\n", Norvala_GetVersion());
  /* [version] */
  return 0;
}

static int Memory(void) {
  /* [memory] */
  int32_t step;
  BW8* image = Norvala_2DMallocBW8(641, 480, &step); /* 641 pixels fill a step of 672 bytes */
  if (image == NULL) return 1;
  image[10 * step + 20] = 255; /* column 20 of row 10 */
  Norvala_2DFree(image);
  /* [memory] */
  return step != 672;
}

static int Copy(void) {
  /* [copy] */
  BW8 padded[48 + 2][64 + 2]; /* room for one pixel more on every side */
  if (Norvala_CopyBW8(&photo[0][0], 64, &padded[1][1], 66, 64, 48) != 0) return 1;
  if (Norvala_CopyReplicateBorderBW8(&padded[1][1], 66, 64, 48, 66, 50, 1, 1) != 0) return 1;
  /* [copy] */
  return padded[0][0] != photo[0][0] || padded[49][65] != photo[47][63];
}

static int Convert(void) {
  /* [convert] */
  static FLOAT32 values[48][64]; /* steps are in bytes: 64 floats are 256 */
  if (Norvala_ConvertBW8toFLOAT32(&photo[0][0], 64, &values[0][0], 256, 64, 48) != 0) return 1;
  if (Norvala_ConvertFLOAT32toBW8(&values[0][0], 256, &photo[0][0], 64, 64, 48, NORVALA_ROUND_TO_NEAREST) != 0) {
    return 1;
  }
  /* [convert] */
  return 0;
}

static int Logic(void) {
  /* [logic] */
  BW16 scan[2][3] = {{4095, 2048, 16}, {15, 0, 1024}}; /* 12 bits a pixel */
  BW8 bytes[2][3];
  if (Norvala_RShiftCBW16(4, &scan[0][0], 6, 3, 2) != 0) return 1; /* the upper 8 of the 12 bits */
  if (Norvala_ConvertBW16ToBW8(&scan[0][0], 6, &bytes[0][0], 3, 3, 2) != 0) return 1;
  /* [logic] */
  return bytes[0][0] != 255 || bytes[0][1] != 128 || bytes[1][0] != 0;
}

static int Arithmetic(void) {
  /* [arithmetic] */
  FLOAT32 frame[2][2] = {{1, 2}, {3, 4}}, sum[2][2] = {{3, 2}, {1, 0}};
  double mean;
  if (Norvala_AddFLOAT32_C1IR(&frame[0][0], 8, &sum[0][0], 8, 2, 2) != 0) return 1; /* sum = sum + frame */
  if (Norvala_DivCFLOAT32_C1IR(2.0F, &sum[0][0], 8, 2, 2) != 0) return 1;           /* the mean of two frames */
  if (Norvala_MeanFLOAT32_C1R(&sum[0][0], 8, 2, 2, &mean, 0) != 0) return 1;
  /* [arithmetic] */
  return mean != 2.0;
}

static int Grey(void) {
  /* [grey] */
  const BW8 colour[1][3 * 2] = {{255, 0, 0, 255, 255, 255}}; /* a red pixel and a white one */
  BW8 grey[1][2];
  if (Norvala_RGBToGray_BW8_C3C1R(&colour[0][0], 6, &grey[0][0], 2, 2, 1) != 0) return 1; /* 76 and 255 */
  /* [grey] */
  return grey[0][0] != 76 || grey[0][1] != 255;
}

static int Separable(void) {
  static BW8 blurred[48][64];
  /* [separable] */
  /* Blurs rows by 1 2 1: one pixel before and one after each row is read, so the region leaves out both columns. */
  const int32_t kernel[3] = {1, 2, 1};
  if (Norvala_FilterRowBW8(&photo[0][1], 64, &blurred[0][1], 64, 62, 48, kernel, 3, 1, 4) != 0) return 1;
  /* [separable] */
  return 0;
}

static int Pipeline(void) {
  static BW8 blurred[48][64];
  /* [pipeline] */
  const int16_t kernel[3] = {1, 2, 1};
  static int16_t lines[48][64];
  int16_t* rows[48];
  const int16_t* run[50];
  static BW8 rowBuffer[76], columnBuffer[1024];
  int32_t rowBytes, columnBytes;
  int y;
  if (Norvala_FilterRowBorderPipelineGetBufferSizeBW8(64, 48, 3, &rowBytes) != 0 || rowBytes > 76) return 1;
  if (Norvala_FilterColumnPipelineGetBufferSizeBW8(64, 48, 3, &columnBytes) != 0 || columnBytes > 1024) return 1;
  for (y = 0; y < 48; ++y) rows[y] = lines[y];
  if (Norvala_FilterRowBorderPipelineBW8(&photo[0][0], 64, rows, 64, 48, kernel, 3, 1, NORVALA_BORDER_REPLICATE, 0, 1,
                                         rowBuffer) != 0) {
    return 1;
  }
  for (y = 0; y < 50; ++y) run[y] = lines[y < 1 ? 0 : y > 48 ? 47 : y - 1]; /* the first and the last row twice */
  if (Norvala_FilterColumnPipelineBW8(run, &blurred[0][0], 64, 64, 48, kernel, 3, 16, columnBuffer) != 0) return 1;
  /* [pipeline] */
  return 0;
}

static int Gauss(void) {
  static BW8 smooth[48][64];
  /* [gauss] */
  /* The 5x5 mask reads two pixels around the region, so the region leaves out two rows and columns on every side. */
  if (Norvala_FilterGauss(&photo[2][2], 64, &smooth[2][2], 64, 60, 44, NORVALA_GAUSS_5X5) != 0) return 1;
  /* [gauss] */
  return 0;
}

static int Step(void) {
  /* [step] */
  BW8 half[24][32];
  int32_t bytes;
  BW8* buffer;
  if (Norvala_PyrDownGetBufSizeGauss5x5BW8(64, 1, &bytes) != 0) return 1;
  buffer = Norvala_1DMallocBW8(bytes);
  if (buffer == NULL) return 1;
  if (Norvala_PyrDownGauss5x5BW8(&photo[0][0], 64, &half[0][0], 32, 64, 48, buffer) != 0) return 1;
  Norvala_1DFree(buffer);
  /* [step] */
  return 0;
}

static int Layers(void) {
  /* [layers] */
  const int16_t kernel[5] = {1, 4, 6, 4, 1};
  const int32_t width = NorvalaLayerSize(64, 2.5F), height = NorvalaLayerSize(48, 2.5F); /* norvala_helpers.h */
  PyramidLayerState* layer;
  int32_t step;
  BW8* reduced = Norvala_2DMallocBW8(width, height, &step);
  if (reduced == NULL) return 1;
  if (Norvala_PyramidLayerDownInitAllocBW8(&layer, 64, 48, 2.5F, kernel, 5, NORVALA_LAYER_MODE) != 0) return 1;
  if (Norvala_PyramidLayerDownBW8(&photo[0][0], 64, 64, 48, reduced, step, width, height, layer) != 0) return 1;
  Norvala_PyramidLayerDownFreeBW8(layer);
  Norvala_2DFree(reduced);
  /* [layers] */
  return 0;
}

static int SampleDown(void) {
  /* [sampledown] */
  BW8 half[24][32];
  if (Norvala_SampleDownH2V2_JPEGBW8(&photo[0][0], 64, 64, 48, &half[0][0], 32, 32, 24) != 0) return 1;
  /* [sampledown] */
  return 0;
}

static int Affine(void) {
  /* [affine] */
  /* Magnifies the picture twice and moves it by 8 pixels to the right. */
  static BW8 large[96][136];
  const NorvalaRect from = {0, 0, 64, 48}, to = {0, 0, 136, 96};
  const double coefficients[6] = {2, 0, 8, 0, 2, 0};
  if (Norvala_WarpAffine_BW8(&photo[0][0], 64, 48, 64, &from, &large[0][0], 136, &to, coefficients, NORVALA_CUBIC) !=
      0) {
    return 1;
  }
  /* [affine] */
  return 0;
}

static int Quadrilateral(void) {
  /* [quadrilateral] */
  /* Straightens a page whose corners lie at the points of `page`, clockwise from the top left. */
  static BW8 straight[40][30];
  const NorvalaRect from = {0, 0, 64, 48}, to = {0, 0, 30, 40};
  const double page[8] = {20, 4, 50, 6, 55, 44, 12, 41};
  const double upright[8] = {0, 0, 29, 0, 29, 39, 0, 39};
  if (Norvala_WarpPerspectiveQuad(&photo[0][0], 64, 48, 64, &from, page, &straight[0][0], 30, &to, upright,
                                  NORVALA_LINEAR) != 0) {
    return 1;
  }
  /* [quadrilateral] */
  return 0;
}

static int Bounds(void) {
  /* [bounds] */
  const NorvalaRect whole = {0, 0, 64, 48};
  double bound[4]; /* least x, least y, greatest x, greatest y */
  if (Norvala_GetRotateBound(&whole, bound, 30.0, 0.0, 0.0) != 0) return 1;
  printf("turned by 30 degrees, 64 x 48 pixels span %.1f x %.1f\n", bound[2] - bound[0], bound[3] - bound[1]);
  /* [bounds] */
  return 0;
}

static int Resize(void) {
  static FLOAT32 values[48][64];
  /* [resize] */
  static FLOAT32 small[12][16];
  const NorvalaRect whole = {0, 0, 64, 48};
  if (Norvala_Resize(&values[0][0], 64, 48, 256, &whole, &small[0][0], 64, 16, 12, 0.25, 0.25, NORVALA_REDUCE) != 0) {
    return 1;
  }
  /* [resize] */
  return 0;
}

static int Dft(void) {
  static FLOAT32 values[48][64];
  /* [dft] */
  static ComplexFLOAT32Number spectrum[48][64]; /* 8 bytes a number */
  if (Norvala_DFTFwdFLOAT32(&values[0][0], 256, &spectrum[0][0], 512, 64, 48) != 0) return 1;
  /* [dft] */
  return 0;
}

static int Magnitude(void) {
  /* [magnitude] */
  const ComplexFLOAT32Number numbers[1][2] = {{{3, 4}, {0, -2}}};
  FLOAT32 moduli[1][2];
  if (Norvala_MagnitudeFLOAT32(&numbers[0][0], 16, &moduli[0][0], 8, 2, 1) != 0) return 1; /* 5 and 2 */
  /* [magnitude] */
  return moduli[0][0] != 5 || moduli[0][1] != 2;
}

static int Distance(void) {
  /* [distance] */
  const BW8 mask[1][4] = {{1, 1, 0, 1}};
  const FLOAT32 weights[2] = {1.0F, 1.5F}; /* of a straight step and a diagonal one */
  FLOAT32 distances[1][4];                 /* 2 1 0 1 */
  if (Norvala_DistanceTransform3x3_BW8ToFLOAT32(&mask[0][0], 4, &distances[0][0], 16, 4, 1, weights) != 0) return 1;
  /* [distance] */
  return distances[0][0] != 2 || distances[0][3] != 1;
}

static int RandomFill(void) {
  /* [random] */
  BW8 noise[1000];
  if (Norvala_RandUniform_BW8(noise, 1000, 0, 16, 20260101) != 0) return 1; /* bytes 0 to 15 */
  /* [random] */
  return 0;
}

/* ---- Recipes ---- */

static int FilterWithBorders(void) {
  static BW8 filtered[48][64];
  const int32_t kernel[5] = {1, 4, 6, 4, 1};
  const int32_t width = 64, height = 48;
  int32_t step, rowStep;
  /* What a filter of 5 taps along rows and then along columns reads: 68 x 52 pixels, from column 2 and row 2 on. */
  const NorvalaPadded padded = NorvalaPadForFilter(width, height, 5, 2, 5, 2);
  BW8* outer = Norvala_2DMallocBW8(padded.outerWidth, padded.outerHeight, &step);
  BW8* rows = Norvala_2DMallocBW8(width, padded.outerHeight, &rowStep);
  BW8* inner = outer + padded.top * step + padded.left;
  int failed;
  if (outer == NULL || rows == NULL) return 1;
  failed = Norvala_CopyBW8(&photo[0][0], 64, inner, step, width, height) != 0 ||
           Norvala_CopyReplicateBorderBW8(inner, step, width, height, padded.outerWidth, padded.outerHeight, padded.top,
                                          padded.left) != 0 ||
           /* Rows first, those of the border above and below included, which the columns then read. */
           Norvala_FilterRowBW8(outer + padded.left, step, rows, rowStep, width, padded.outerHeight, kernel, 5, 2,
                                16) != 0 ||
           Norvala_FilterColumnBW8(rows + padded.top * rowStep, rowStep, &filtered[0][0], 64, width, height, kernel, 5,
                                   2, 16) != 0;
  Norvala_2DFree(outer);
  Norvala_2DFree(rows);
  return failed;
}

static int RotateAboutCentre(void) {
  const NorvalaRect whole = {0, 0, 64, 48};
  double bound[4], corners[8], turned[8];
  NorvalaFit fit;
  NorvalaRect all = {0, 0, 0, 0};
  int32_t step;
  BW8* result;
  int failed;
  if (Norvala_GetRotateBound(&whole, bound, 30.0, 0.0, 0.0) != 0) return 1;
  fit = NorvalaFitBound(bound); /* a destination that holds all of it, and the shift there */
  all.width = fit.width;
  all.height = fit.height;
  result = Norvala_2DMallocBW8(fit.width, fit.height, &step);
  if (result == NULL) return 1;
  failed = Norvala_SetBW8(255, result, step, fit.width, fit.height) != 0 || /* the background */
           Norvala_GetRotateQuad(&whole, corners, 0.0, 0.0, 0.0) != 0 ||
           Norvala_GetRotateQuad(&whole, turned, 30.0, fit.xShift, fit.yShift) != 0 ||
           Norvala_WarpAffineQuad(&photo[0][0], 64, 48, 64, &whole, corners, result, step, &all, turned,
                                  NORVALA_LINEAR | NORVALA_SMOOTH_EDGES) != 0;
  Norvala_2DFree(result);
  return failed;
}

static int Pyramid(void) {
  static BW8 levels[4][48][64]; /* rows of all levels are 64 bytes apart */
  int32_t width = 64, height = 48, bytes;
  BW8* buffer;
  int level, failed;
  if (Norvala_PyrDownGetBufSizeGauss5x5BW8(width, 1, &bytes) != 0) return 1; /* serves the smaller levels, too */
  buffer = Norvala_1DMallocBW8(bytes);
  if (buffer == NULL) return 1;
  failed = Norvala_CopyBW8(&photo[0][0], 64, &levels[0][0][0], 64, width, height) != 0;
  for (level = 1; level < 4 && !failed; ++level) {
    failed =
        Norvala_PyrDownGauss5x5BW8(&levels[level - 1][0][0], 64, &levels[level][0][0], 64, width, height, buffer) != 0;
    width = (width + 1) / 2;
    height = (height + 1) / 2;
  }
  Norvala_1DFree(buffer);
  return failed;
}

static int CentredLogSpectrum(void) {
  static FLOAT32 values[48][64], moduli[48][64], centred[48][64];
  static ComplexFLOAT32Number spectrum[48][64];
  static BW8 picture[48][64];
  FLOAT32 largest = 0;
  int x, y;
  if (Norvala_ConvertBW8toFLOAT32(&photo[0][0], 64, &values[0][0], 256, 64, 48) != 0) return 1;
  if (Norvala_DFTFwdFLOAT32(&values[0][0], 256, &spectrum[0][0], 512, 64, 48) != 0) return 1;
  if (Norvala_MagnitudeFLOAT32(&spectrum[0][0], 512, &moduli[0][0], 256, 64, 48) != 0) return 1;
  NorvalaSwapQuadrants(moduli, 256, centred, 256, 64, 48, 4); /* frequency 0 goes to column 32, row 24 */
  for (y = 0; y < 48; ++y) {
    for (x = 0; x < 64; ++x) {
      centred[y][x] = (FLOAT32)log(1.0 + centred[y][x]);
      if (centred[y][x] > largest) largest = centred[y][x];
    }
  }
  if (Norvala_DivCFLOAT32_C1IR(largest / 255, &centred[0][0], 256, 64, 48) != 0) return 1;
  if (Norvala_ConvertFLOAT32toBW8(&centred[0][0], 256, &picture[0][0], 64, 64, 48, NORVALA_ROUND_TO_NEAREST) != 0) {
    return 1;
  }
  return picture[24][32] != 255; /* the sum of all pixels */
}

static int WrittenPixels(void) {
  static BW8 white[48][64], written[48][64];
  const NorvalaRect whole = {0, 0, 64, 48};
  const double coefficients[6] = {0.5, 0.25, 8, -0.25, 0.5, 20};
  /* The same warp of a white picture onto a black one: what is not black afterwards is what the warp writes. */
  if (Norvala_SetBW8(255, &white[0][0], 64, 64, 48) != 0) return 1;
  if (Norvala_SetBW8(0, &written[0][0], 64, 64, 48) != 0) return 1;
  if (Norvala_WarpAffine_BW8(&white[0][0], 64, 48, 64, &whole, &written[0][0], 64, &whole, coefficients,
                             NORVALA_NEAREST) != 0) {
    return 1;
  }
  return written[20][8] != 255 || written[0][0] != 0;
}

int main(void) {
  int (*const all[])(void) = {Version,
                              Memory,
                              Copy,
                              Convert,
                              Logic,
                              Arithmetic,
                              Grey,
                              Separable,
                              Pipeline,
                              Gauss,
                              Step,
                              Layers,
                              SampleDown,
                              Affine,
                              Quadrilateral,
                              Bounds,
                              Resize,
                              Dft,
                              Magnitude,
                              Distance,
                              RandomFill,
                              FilterWithBorders,
                              RotateAboutCentre,
                              Pyramid,
                              CentredLogSpectrum,
                              WrittenPixels};
  size_t i;
  int failed = 0, x, y;
  for (y = 0; y < 48; ++y) {
    for (x = 0; x < 64; ++x) photo[y][x] = (BW8)(x * 3 + y * 2);
  }
  for (i = 0; i < sizeof all / sizeof all[0]; ++i) {
    if (all[i]() != 0) {
      fprintf(stderr, "example %d failed\n", (int)i);
      failed = 1;
    }
  }
  return failed;
}
