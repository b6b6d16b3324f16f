/* The public header in a C99 program, with the Windows headers before it where there are any. */
#ifdef _WIN32
#include <windows.h>
#endif

#include "norvala.h"

int main(void) {
  ComplexFLOAT32Number number = {3.0F, 4.0F};
  RegionSize size = {8, 4};
  Rect rect = {1, 2, 3, 4};
  INT32 step = 0;
  FLOAT64 mean = 0.0;
  BW32 word = 0;
  BW16 half = 0;
  BW8* image = Norvala_2DMallocBW8(size.width, size.height, &step);
  int ok = image != 0 && Norvala_SetBW8(7, image, step, size.width, size.height) == 0 && image[0] == 7;
  Norvala_2DFree(image);
  ok = ok && number.re < number.im && rect.x < rect.height && mean == 0.0 && word == half;
  ok = ok && Norvala_GetVersion()[0] == '1';
  return ok ? 0 : 1;
}
