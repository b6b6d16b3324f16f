#pragma once

namespace norvala {

// The four-point Lagrange cubic on the nodes -1, 0, 1 and 2 at `t`, for a scalar or lane by lane.
template <class V>
inline void CubicWeights(V t, V (&w)[4]) {
  const V t2 = t * t;
  const V t3 = t2 * t;
  const V t3Sixth = t3 / 6;
  const V tThird = t / 3;
  w[0] = -t3Sixth + t2 / 2 - tThird;
  w[1] = t3 / 2 - t2 - t / 2 + 1;
  w[2] = -t3 / 2 + t2 / 2 + t;
  w[3] = t3Sixth - tThird / 2;
}

}  // namespace norvala
