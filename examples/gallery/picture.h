#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace gallery {

// Interleaved 8-bit pixels without row padding: grey (1 channel) or red, green, blue (3 channels).
struct Picture {
  int width = 0;
  int height = 0;
  int channels = 1;
  std::vector<std::uint8_t> pixels;

  Picture() = default;
  Picture(int w, int h, int c)
      : width(w),
        height(h),
        channels(c),
        pixels(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * static_cast<std::size_t>(c)) {}

  std::uint8_t* at(int x, int y) { return pixels.data() + (static_cast<std::ptrdiff_t>(y) * width + x) * channels; }
  const std::uint8_t* at(int x, int y) const {
    return pixels.data() + (static_cast<std::ptrdiff_t>(y) * width + x) * channels;
  }
};

// Reads a PNG or JPEG file as red, green, blue. Throws std::runtime_error with a message for the user when the file is
// missing, damaged or larger than kLargestPhoto pixels.
inline constexpr std::int64_t kLargestPhoto = 40'000'000;
Picture ReadPhoto(const std::string& name);

void WritePng(const std::string& name, const Picture& picture);

// Each pixel as a square of `factor` x `factor` pixels, so that single pixels can be seen.
Picture Magnify(const Picture& picture, int factor);

// Pictures side by side on a neutral ground, with a gap between them; grey ones become colour beside colour ones.
Picture SideBySide(const std::vector<Picture>& pictures);

// A part of a picture; the rectangle must lie inside it.
Picture Crop(const Picture& picture, int x, int y, int width, int height);

}  // namespace gallery
