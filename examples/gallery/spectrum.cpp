#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include "sheet.h"

namespace gallery {
namespace {

using Spectrum = Plane<ComplexFLOAT32Number>;

struct Transformed {
  Spectrum spectrum;
  double milliseconds;
};

Transformed Transform(const Sheet& sheet, const Plane<FLOAT32>& image) {
  const auto transform = sheet.library().Function<decltype(Norvala_DFTFwdFLOAT32)>("Norvala_DFTFwdFLOAT32");
  Spectrum spectrum(sheet.library(), image.width(), image.height());
  const double time = sheet.Run("Norvala_DFTFwdFLOAT32", [&] {
    return transform(image.data(), image.step(), spectrum.data(), spectrum.step(), image.width(), image.height());
  });
  return {std::move(spectrum), time};
}

// The moduli of a spectrum, row after row.
std::vector<float> Magnitudes(const Library& library, const Spectrum& spectrum) {
  const auto magnitude = library.Function<decltype(Norvala_MagnitudeFLOAT32)>("Norvala_MagnitudeFLOAT32");
  const int width = spectrum.width();
  std::vector<float> magnitudes(static_cast<std::size_t>(width) * static_cast<std::size_t>(spectrum.height()));
  if (magnitude(spectrum.data(), spectrum.step(), magnitudes.data(), width * 4, width, spectrum.height()) != 0) {
    throw std::runtime_error("Norvala_MagnitudeFLOAT32 failed");
  }
  return magnitudes;
}

// Magnitudes on a logarithmic scale, from the faintest percent to all but the few brightest, with the zero frequency in
// the middle.
Picture LogMagnitude(const Library& library, const Spectrum& spectrum) {
  const int width = spectrum.width();
  const int height = spectrum.height();
  std::vector<float> logs = Magnitudes(library, spectrum);
  for (float& value : logs) value = std::log1p(value);
  std::vector<float> sorted = logs;
  std::sort(sorted.begin(), sorted.end());
  const float low = sorted[sorted.size() / 100];
  const float range = std::max(sorted[sorted.size() - 1 - sorted.size() / 2000] - low, 1e-6F);
  Picture picture(width, height, 1);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const float value =
          logs[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)];
      const float level = std::clamp(255.0F * (value - low) / range, 0.0F, 255.0F);
      *picture.at((x + width / 2) % width, (y + height / 2) % height) = static_cast<std::uint8_t>(level);
    }
  }
  return picture;
}

// A square from the middle of the photograph, turned about its centre. Its side is as long as fits at every angle.
Plane<BW8> TurnedSquare(const Library& library, const Plane<BW8>& grey, double degrees) {
  const int side = std::max(1, static_cast<int>(std::min(grey.width(), grey.height()) / std::numbers::sqrt2));
  const double angle = degrees * std::numbers::pi / 180.0;
  const double cosine = std::cos(angle), sine = std::sin(angle);
  Plane<BW8> square(library, side, side);
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const double dx = x - (side - 1) / 2.0, dy = y - (side - 1) / 2.0;
      const double fromX = std::clamp((grey.width() - 1) / 2.0 + cosine * dx + sine * dy, 0.0, grey.width() - 1.0);
      const double fromY = std::clamp((grey.height() - 1) / 2.0 - sine * dx + cosine * dy, 0.0, grey.height() - 1.0);
      const int x0 = static_cast<int>(fromX), y0 = static_cast<int>(fromY);
      const int x1 = std::min(x0 + 1, grey.width() - 1), y1 = std::min(y0 + 1, grey.height() - 1);
      const double upper = grey.row(y0)[x0] + (fromX - x0) * (grey.row(y0)[x1] - grey.row(y0)[x0]);
      const double lower = grey.row(y1)[x0] + (fromX - x0) * (grey.row(y1)[x1] - grey.row(y1)[x0]);
      square.row(y)[x] = static_cast<BW8>(upper + (fromY - y0) * (lower - upper) + 0.5);
    }
  }
  return square;
}

// Fades an image out towards its edges (a Hann window), so that its borders leave no trace in the spectrum.
void Fade(Plane<FLOAT32>& image) {
  const auto weight = [](int i, int n) { return 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * (i + 0.5) / n); };
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      image.row(y)[x] *= static_cast<float>(weight(x, image.width()) * weight(y, image.height()));
    }
  }
}

}  // namespace

void ShowSpectrum(Sheet& sheet) {
  const Library& library = sheet.library();
  sheet.Section(
      "Spectrum",
      "The discrete Fourier transform of an image: how much of each wave it is made of. The magnitude is shown "
      "on a logarithmic scale with the zero frequency in the middle; low frequencies lie around it, fine "
      "detail further out.");

  const Transformed whole = Transform(sheet, ToFloat(library, sheet.grey()));
  sheet.Show("spectrum", "The photograph's spectrum. The bright cross comes from the jump between opposite edges",
             "Norvala_DFTFwdFLOAT32", whole.milliseconds, LogMagnitude(library, whole.spectrum));

  for (const int degrees : {0, 30}) {
    const Plane<BW8> square = TurnedSquare(library, sheet.grey(), degrees);
    Plane<FLOAT32> faded = ToFloat(library, square);
    Fade(faded);
    const Transformed turned = Transform(sheet, faded);
    sheet.Show(degrees == 0 ? "spectrum_square" : "spectrum_turned",
               degrees == 0 ? "A square of the photograph and its spectrum, faded out towards the edges beforehand"
                            : "The same turned by 30 degrees: the spectrum turns with it",
               "Norvala_DFTFwdFLOAT32", turned.milliseconds,
               SideBySide({ToPicture(square), LogMagnitude(library, turned.spectrum)}));
  }
}

}  // namespace gallery
