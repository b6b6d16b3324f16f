// Exports of the transforms and analysis.

#include "analysis/analysis.h"
#include "norvala.h"

using namespace norvala;

// ---- Discrete Fourier transform ----

// ---- Magnitude ----

// ---- Distance transform ----

// ---- Random fill ----
