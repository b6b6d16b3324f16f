#include "picture.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wunused-function"
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#define STBI_MAX_DIMENSIONS 65535
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include <stb_image.h>
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb_image_write.h>
#pragma GCC diagnostic pop

namespace gallery {
Picture ReadPhoto(const std::string& name) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(name, error)) throw std::runtime_error(name + ": no such file");
  int width = 0;
  int height = 0;
  int channels = 0;
  if (stbi_info(name.c_str(), &width, &height, &channels) == 0) {
    throw std::runtime_error(name + ": not a PNG or JPEG picture, or one with far too many pixels");
  }
  if (static_cast<std::int64_t>(width) * height > kLargestPhoto) {
    throw std::runtime_error(name + ": too many pixels, the limit is " + std::to_string(kLargestPhoto / 1'000'000) +
                             " million");
  }
  const std::unique_ptr<stbi_uc, decltype(&stbi_image_free)> pixels(
      stbi_load(name.c_str(), &width, &height, &channels, 3), stbi_image_free);
  if (pixels == nullptr) {
    throw std::runtime_error(name + ": the file is damaged or cut short (" + stbi_failure_reason() + ")");
  }
  Picture picture(width, height, 3);
  std::copy_n(pixels.get(), picture.pixels.size(), picture.pixels.data());
  return picture;
}

void WritePng(const std::string& name, const Picture& picture) {
  const int ok = stbi_write_png(name.c_str(), picture.width, picture.height, picture.channels, picture.pixels.data(),
                                picture.width * picture.channels);
  if (ok == 0) throw std::runtime_error("cannot write " + name);
}

Picture Magnify(const Picture& picture, int factor) {
  Picture large(picture.width * factor, picture.height * factor, picture.channels);
  for (int y = 0; y < large.height; ++y) {
    for (int x = 0; x < large.width; ++x) {
      std::copy_n(picture.at(x / factor, y / factor), picture.channels, large.at(x, y));
    }
  }
  return large;
}

Picture SideBySide(const std::vector<Picture>& pictures) {
  constexpr int kGap = 8;
  constexpr std::uint8_t kGround = 128;
  int width = -kGap;
  int height = 0;
  int channels = 1;
  for (const Picture& picture : pictures) {
    width += picture.width + kGap;
    height = std::max(height, picture.height);
    channels = std::max(channels, picture.channels);
  }
  Picture sheet(width, height, channels);
  std::fill(sheet.pixels.begin(), sheet.pixels.end(), kGround);
  int left = 0;
  for (const Picture& picture : pictures) {
    for (int y = 0; y < picture.height; ++y) {
      for (int x = 0; x < picture.width; ++x) {
        for (int c = 0; c < channels; ++c) {
          sheet.at(left + x, y)[c] = picture.at(x, y)[std::min(c, picture.channels - 1)];
        }
      }
    }
    left += picture.width + kGap;
  }
  return sheet;
}

Picture Crop(const Picture& picture, int x, int y, int width, int height) {
  Picture part(width, height, picture.channels);
  for (int row = 0; row < height; ++row) {
    std::copy_n(picture.at(x, y + row), width * picture.channels, part.at(0, row));
  }
  return part;
}

}  // namespace gallery
