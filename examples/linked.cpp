// Smooths a small grey picture, with images that know their size and functions that throw.
#include <cstdio>
#include <exception>

#include "norvala.hpp"

int main() {
  try {
    norvala::Image<BW8> image(8, 6), smooth(6, 4);
    norvala::Set(0, image);
    image.Row(2)[3] = 240;  // one bright pixel
    // The region starts one pixel in, since the 3x3 mask reads one pixel on every side of it.
    norvala::FilterGauss(image.Part({1, 1, 6, 4}), smooth, NORVALA_GAUSS_3X3);
    for (int y = 0; y < smooth.height(); ++y) {
      for (int x = 0; x < smooth.width(); ++x) std::printf("%4d", smooth.Row(y)[x]);
      std::printf("\n");
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
