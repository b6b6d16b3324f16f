#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the filters and pyramids and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Separable filters ----

// ---- Pipeline filters ----

// ---- Gaussian filter ----

// ---- Gaussian pyramid step ----

// ---- Pyramid layers ----

// ---- 2x2 down-sampling ----

}  // namespace norvala
