#pragma once

#include "geometry/warp/row_spans.h"
#include "geometry/warp/sampling.h"

namespace norvala {

// Writes the spans' pixels of the destination, each sampled from the source at the position that `inverse` maps the
// pixel to. Positions are accumulated from row to row and from pixel to pixel, which fixes their rounding.
void WarpRowsAffine(const SourceImage& source, const AffineCoefficients& inverse, const RowSpans& spans,
                    PixelDepthCode depth, Interpolation kernel, void* dst, std::int32_t dstStep);

}  // namespace norvala
