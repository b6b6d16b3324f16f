#pragma once

#include "geometry/quadrilateral.h"

namespace norvala {

// The matrix of a rotation by `angle` degrees, counter-clockwise on the screen, followed by a shift. At 90, 180 and 270
// degrees its elements are exact.
AffineCoefficients RotationCoefficients(double angle, double xShift, double yShift);

}  // namespace norvala
