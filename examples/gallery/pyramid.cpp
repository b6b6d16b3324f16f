#include "sheet.h"

namespace gallery {

void ShowPyramid(Sheet&) {}

}  // namespace gallery
