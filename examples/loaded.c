/* Smooths a small grey picture by a library that is loaded at run time. */
#include <stdio.h>

#include "norvala_load.h"

int main(void) {
  BW8 image[6][8] = {{0}}, smooth[4][6];
  NorvalaFunctions norvala;
  const char* missing;
  int x, y;
  /* [loading] */
  HMODULE library = LoadLibraryA("Norvala.dll");
  if (library == NULL) return 1;
  missing = NorvalaLoad(library, &norvala);
  if (missing != NULL) {
    fprintf(stderr, "Norvala.dll has no %s\n", missing);
    return 1;
  }
  /* [loading] */
  image[2][3] = 240; /* one bright pixel */
  /* The region starts one pixel in, since the 3x3 mask reads one pixel on every side of it. */
  if (norvala.Norvala_FilterGauss(&image[1][1], 8, &smooth[0][0], 6, 6, 4, NORVALA_GAUSS_3X3) != 0) return 1;
  for (y = 0; y < 4; ++y) {
    for (x = 0; x < 6; ++x) printf("%4d", smooth[y][x]);
    printf("\n");
  }
  FreeLibrary(library);
  return 0;
}
