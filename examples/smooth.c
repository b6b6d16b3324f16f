/* Smooths a small grey image: the whole road from loading the library to reading the result. */
#include <stdio.h>
#include <windows.h>

#include "norvala.h"

typedef int32_t(NORVALA_CALL* FilterGauss)(const BW8*, int32_t, BW8*, int32_t, int32_t, int32_t, int32_t);

int main(void) {
  HMODULE library = LoadLibraryA("Norvala.dll");
  if (library == NULL) return 1;
  FilterGauss filterGauss = (FilterGauss)(void*)GetProcAddress(library, "Norvala_FilterGauss");
  BW8 image[6][8] = {{0}}, smooth[4][6];
  image[2][3] = 240; /* one bright pixel */
  /* The region starts one pixel in, since the 3x3 mask (33) reads one pixel on every side of it. */
  if (filterGauss == NULL || filterGauss(&image[1][1], 8, &smooth[0][0], 6, 6, 4, 33) != 0) return 1;
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 6; ++x) printf("%4d", smooth[y][x]);
    printf("\n");
  }
  FreeLibrary(library);
  return 0;
}
