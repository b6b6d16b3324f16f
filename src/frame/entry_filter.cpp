// Exports of the filters and pyramids.

#include "filter/filter.h"
#include "norvala.h"

using namespace norvala;

// ---- Separable filters ----

// ---- Pipeline filters ----

// ---- Gaussian filter ----

// ---- Gaussian pyramid step ----

// ---- Pyramid layers ----

// ---- 2x2 down-sampling ----
