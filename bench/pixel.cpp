#include <cstring>

#include "bench.h"

namespace norvala_bench {
namespace {

// Work that reads one image and writes another.
template <class S, class D, class Call>
Prepare OneToOne(Call call) {
  return [call](Size s) -> Work { return [call, src = Image<S>(s), dst = Image<D>(s)]() mutable { call(src, dst); }; };
}

// Work on one image, in place or only reading it.
template <class T, class Call>
Prepare OneImage(Call call) {
  return [call](Size s) -> Work { return [call, image = Image<T>(s)]() mutable { call(image); }; };
}

template <class T>
std::size_t ByteCount(Image<T>& image) {
  return static_cast<std::size_t>(image.step()) * static_cast<std::size_t>(image.size().height);
}

// An export that takes source, destination and size.
template <class S, class D>
using OneToOneExport = int32_t (*)(const S*, int32_t, D*, int32_t, int32_t, int32_t);

template <class S, class D>
Prepare Ours(OneToOneExport<S, D> call) {
  return OneToOne<S, D>([call](Image<S>& src, Image<D>& dst) {
    call(src.data(), src.step(), dst.data(), dst.step(), src.size().width, src.size().height);
  });
}

template <class T>
constexpr int kMatType = sizeof(T) == 1   ? 0 /* CV_8U */
                         : sizeof(T) == 2 ? 2 /* CV_16U */
                                          : 5 /* CV_32F */;

template <class T>
void AddCopyRow(const std::string& name, OneToOneExport<T, T> copy) {
  Row row(name, Ours<T, T>(copy));
  row.Peer("memcpy",
           OneToOne<T, T>([](Image<T>& src, Image<T>& dst) { std::memcpy(dst.data(), src.data(), ByteCount(src)); }));
#ifdef NORVALA_BENCH_OPENCV
  row.Peer("opencv", OneToOne<T, T>([](Image<T>& src, Image<T>& dst) {
             cv::Mat to = dst.mat(kMatType<T>);
             src.mat(kMatType<T>).copyTo(to);
           }));
#endif
}

template <class T, class Value>
void AddSetRow(const std::string& name, int32_t (*set)(Value, T*, int32_t, int32_t, int32_t)) {
  Row row(name, OneImage<T>([set](Image<T>& image) {
            set(Value(77), image.data(), image.step(), image.size().width, image.size().height);
          }));
  row.Peer("memset", OneImage<T>([](Image<T>& image) { std::memset(image.data(), 77, ByteCount(image)); }));
#ifdef NORVALA_BENCH_OPENCV
  row.Peer("opencv", OneImage<T>([](Image<T>& image) { image.mat(kMatType<T>).setTo(cv::Scalar(77)); }));
#endif
}

constexpr int kBorder = 8;

template <class T>
void AddBorderRow(const std::string& name,
                  int32_t (*replicate)(T*, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t, int32_t)) {
  Row row(name, [replicate](Size s) -> Work {
    return [replicate, image = Image<T>(s, kBorder), s]() mutable {
      replicate(image.data(), image.step(), s.width, s.height, s.width + 2 * kBorder, s.height + 2 * kBorder, kBorder,
                kBorder);
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  // In place as well: the peer's destination already holds the inner pixels.
  row.Peer("opencv", [](Size s) -> Work {
    return [image = Image<T>(s, kBorder), s]() mutable {
      T* const first = image.data() - kBorder * image.step() / static_cast<int>(sizeof(T)) - kBorder;
      cv::Mat outer(s.height + 2 * kBorder, s.width + 2 * kBorder, kMatType<T>, first,
                    static_cast<std::size_t>(image.step()));
      cv::copyMakeBorder(image.mat(kMatType<T>), outer, kBorder, kBorder, kBorder, kBorder, cv::BORDER_REPLICATE);
    };
  });
#endif
}

void AddMoveRows() {
  AddCopyRow<BW8>("CopyBW8", Norvala_CopyBW8);
  AddCopyRow<BW16>("CopyBW16", Norvala_CopyBW16);
  AddCopyRow<FLOAT32>("CopyFLOAT32", Norvala_CopyFLOAT32);
  AddSetRow<BW8, BW8>("SetBW8", Norvala_SetBW8);
  AddSetRow<FLOAT32, FLOAT32>("SetFLOAT32", Norvala_SetFLOAT32);
  AddBorderRow<BW8>("CopyReplicateBorderBW8", Norvala_CopyReplicateBorderBW8);
  AddBorderRow<BW16>("CopyReplicateBorderBW16", Norvala_CopyReplicateBorderBW16);
  AddBorderRow<FLOAT32>("CopyReplicateBorderFLOAT32", Norvala_CopyReplicateBorderFLOAT32);
}

}  // namespace

void AddPixelRows() { AddMoveRows(); }

}  // namespace norvala_bench
