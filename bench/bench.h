#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "norvala.h"

#ifdef NORVALA_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace norvala_bench {

struct Size {
  int width;
  int height;
};

// Memory of one image. The images of a work lie one after another, and those of the next work take their place: ours
// and a peer's get the same pages when they ask for the same sizes in the same order. Otherwise a work that only moves
// bytes is faster or slower by up to a half for where its images happen to lie.
std::shared_ptr<void> TakeImageMemory(std::size_t bytes);

// An image without row padding, filled with random pixels: bytes of any value, floats in 0..255. Copies share pixels.
template <class T>
class Image {
 public:
  explicit Image(Size size, int margin = 0) : size_(size), margin_(margin) {
    const std::size_t count =
        static_cast<std::size_t>(size.width + 2 * margin) * static_cast<std::size_t>(size.height + 2 * margin);
    memory_ = TakeImageMemory(count * sizeof(T));
    std::mt19937 random(1);
    for (std::size_t i = 0; i < count; ++i) {
      if constexpr (std::is_floating_point_v<T>) {
        first()[i] = static_cast<T>(random() % 25500) / T(100);
      } else {
        first()[i] = static_cast<T>(random());
      }
    }
  }

  int step() const { return (size_.width + 2 * margin_) * static_cast<int>(sizeof(T)); }
  T* data() { return first() + static_cast<std::ptrdiff_t>(margin_) * (size_.width + 2 * margin_) + margin_; }
  Size size() const { return size_; }

#ifdef NORVALA_BENCH_OPENCV
  // The region without its margin, as the peer's matrix over the same memory.
  cv::Mat mat(int type) { return cv::Mat(size_.height, size_.width, type, data(), static_cast<std::size_t>(step())); }
#endif

 private:
  T* first() { return static_cast<T*>(memory_.get()); }

  Size size_;
  int margin_;
  std::shared_ptr<void> memory_;
};

// One call of the work to be timed. It owns whatever it needs (move the images into the lambda, mark it mutable).
using Work = std::function<void()>;
// Prepares the work for a size.
using Prepare = std::function<Work(Size)>;

// A row of the table: the export's work at every size, and after it the same work by peers. The sizes are 64x64,
// 512x512 and 1920x1080 unless given, and 3840x2160 for one row of each family (main.cpp lists them).
class Row {
 public:
  explicit Row(std::string name, Prepare ours, std::vector<Size> sizes = {{64, 64}, {512, 512}, {1920, 1080}});
  // `peer` names what the work is compared with, such as "opencv", "fftw" or "memcpy".
  Row& Peer(const std::string& peer, const Prepare& prepare);

 private:
  void Register(const std::string& who, const Prepare& prepare) const;

  std::string name_;
  std::vector<Size> sizes_;
};

// The rows of one subsystem each.
void AddFrameRows();
void AddPixelRows();
void AddFilterRows();
void AddSeparableRows();
void AddPyramidRows();
void AddWarpRows();
void AddResizeRows();
void AddDftRows();
void AddAnalysisRows();

}  // namespace norvala_bench
