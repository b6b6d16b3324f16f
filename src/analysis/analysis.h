#pragma once

#include "frame/dispatch.h"
#include "frame/types.h"

// The primitives of the transforms and analysis and their tables. Arguments and behaviour are those of the
// exports of the same name.

namespace norvala {

// ---- Discrete Fourier transform ----

// ---- Magnitude ----

// ---- Distance transform ----

// ---- Random fill ----

}  // namespace norvala
