#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the geometric transforms and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Affine warp ----

// ---- Quadrilateral warps ----

// ---- Bounds and rotation ----

// ---- Resize ----

}  // namespace norvala
