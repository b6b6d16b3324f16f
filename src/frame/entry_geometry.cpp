// Exports of the geometric transforms.

#include "geometry/geometry.h"
#include "norvala.h"

using namespace norvala;

// ---- Affine warp ----

// ---- Quadrilateral warps ----

// ---- Bounds and rotation ----

// ---- Resize ----
