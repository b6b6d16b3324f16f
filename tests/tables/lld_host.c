/* A host built by the other linker family, without a runtime of its own: proves the .lib import library. */
#include "norvala.h"

int HostMain(void) {
  BW8 source[4] = {1, 2, 3, 4};
  BW8 target[4] = {0, 0, 0, 0};
  if (Norvala_GetVersion()[0] != '1') return 1;
  if (Norvala_CopyBW8(source, 2, target, 2, 2, 2) != 0) return 2;
  return target[3] == 4 ? 0 : 3;
}
