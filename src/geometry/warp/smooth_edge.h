#pragma once

#include "geometry/warp/request.h"

namespace norvala {

// Softens the edges of a warped quadrilateral inside the destination region. In every column that a flat edge passes,
// and in every row that a steep one passes, the pixel in which the edge meets the line through the centres becomes a
// mixture of its two neighbours on that line, by the part of it that lies inside. Its own value does not count: it is
// either image or background, and each neighbour is one of them. Edges on the region's own sides, and pixels without
// one of the two neighbours in the region, stay as they are.
void SmoothEdge(const WarpRequest& request, const Quadrilateral& quad, bool clockwise);

}  // namespace norvala
