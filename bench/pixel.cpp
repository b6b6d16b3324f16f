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

// An export that converts, beside the peer's conversion between matrices of the same types.
template <class S, class D>
void AddConvertRow(const std::string& name, OneToOneExport<S, D> convert) {
  Row row(name, Ours<S, D>(convert));
#ifdef NORVALA_BENCH_OPENCV
  row.Peer("opencv", OneToOne<S, D>([](Image<S>& src, Image<D>& dst) {
             cv::Mat to = dst.mat(kMatType<D>);
             src.mat(kMatType<S>).convertTo(to, kMatType<D>);
           }));
#endif
}

void AddConvertRows() {
  AddConvertRow<FLOAT32, BW8>("ConvertFLOAT32toBW8", [](const FLOAT32* src, int32_t srcStep, BW8* dst, int32_t dstStep,
                                                        int32_t width, int32_t height) {
    return Norvala_ConvertFLOAT32toBW8(src, srcStep, dst, dstStep, width, height, 1);
  });
  AddConvertRow<FLOAT32, BW16>("ConvertFLOAT32toBW16", [](const FLOAT32* src, int32_t srcStep, BW16* dst,
                                                          int32_t dstStep, int32_t width, int32_t height) {
    return Norvala_ConvertFLOAT32toBW16(src, srcStep, dst, dstStep, width, height, 1);
  });
  AddConvertRow<BW8, FLOAT32>("ConvertBW8toFLOAT32", Norvala_ConvertBW8toFLOAT32);
  AddConvertRow<BW8, BW16>("ConvertBW8toBW16", Norvala_ConvertBW8toBW16);
  AddConvertRow<BW16, BW8>("ConvertBW16ToBW8", Norvala_ConvertBW16ToBW8);
  Row row("ConvertBW16toBW32", Ours<BW16, BW32>(Norvala_ConvertBW16toBW32));
#ifdef NORVALA_BENCH_OPENCV
  row.Peer("opencv", OneToOne<BW16, BW32>([](Image<BW16>& src, Image<BW32>& dst) {
             cv::Mat to = dst.mat(CV_32S);
             src.mat(CV_16U).convertTo(to, CV_32S);
           }));
#endif
}

using Combine = int32_t (*)(const BW32*, int32_t, const BW32*, int32_t, BW32*, int32_t, int32_t, int32_t);

Row AddCombineRow(const std::string& name, Combine combine) {
  return Row(name, [combine](Size s) -> Work {
    return [combine, a = Image<BW32>(s), b = Image<BW32>(s), dst = Image<BW32>(s), s]() mutable {
      combine(a.data(), a.step(), b.data(), b.step(), dst.data(), dst.step(), s.width, s.height);
    };
  });
}

#ifdef NORVALA_BENCH_OPENCV
template <class Call>
Prepare OpencvCombine(Call call) {
  return [call](Size s) -> Work {
    return [call, a = Image<BW32>(s), b = Image<BW32>(s), dst = Image<BW32>(s)]() mutable {
      cv::Mat to = dst.mat(CV_32S);
      call(a.mat(CV_32S), b.mat(CV_32S), to);
    };
  };
}
#endif

template <class T>
Row AddShiftRow(const std::string& name, int32_t (*shift)(uint32_t, T*, int32_t, int32_t, int32_t)) {
  return Row(name, OneImage<T>([shift](Image<T>& image) {
               shift(3, image.data(), image.step(), image.size().width, image.size().height);
             }));
}

void AddLogicRows() {
  Row conjunction = AddCombineRow("AndBW32", Norvala_AndBW32);
  Row disjunction = AddCombineRow("OrBW32", Norvala_OrBW32);
  Row constant("AndCBW16", OneImage<BW16>([](Image<BW16>& image) {
                 Norvala_AndCBW16(0x7FF8, image.data(), image.step(), image.size().width, image.size().height);
               }));
#ifdef NORVALA_BENCH_OPENCV
  conjunction.Peer("opencv",
                   OpencvCombine([](const cv::Mat& a, const cv::Mat& b, cv::Mat& to) { cv::bitwise_and(a, b, to); }));
  disjunction.Peer("opencv",
                   OpencvCombine([](const cv::Mat& a, const cv::Mat& b, cv::Mat& to) { cv::bitwise_or(a, b, to); }));
  constant.Peer("opencv", OneImage<BW16>([](Image<BW16>& image) {
                  cv::Mat to = image.mat(CV_16U);
                  cv::bitwise_and(to, cv::Scalar(0x7FF8), to);
                }));
#endif
  AddShiftRow("RShiftCBW16", Norvala_RShiftCBW16);
  AddShiftRow("RShiftCBW32", Norvala_RShiftCBW32);
  AddShiftRow("LShiftCBW32", Norvala_LShiftCBW32);
}

// An image whose pixels stay below 255, so that a search for the maximum has to read all of it.
Image<BW8> WithoutWhite(Size size) {
  Image<BW8> image(size);
  for (int i = 0; i < size.width * size.height; ++i) image.data()[i] &= 0xFE;
  return image;
}

void AddArithmeticRows() {
  Row add("AddFLOAT32_C1IR", OneToOne<FLOAT32, FLOAT32>([](Image<FLOAT32>& src, Image<FLOAT32>& dst) {
            Norvala_AddFLOAT32_C1IR(src.data(), src.step(), dst.data(), dst.step(), src.size().width,
                                    src.size().height);
          }));
  // A divisor that keeps the magnitudes, so that repeated calls never come to denormal numbers.
  Row divide("DivCFLOAT32_C1IR", OneImage<FLOAT32>([](Image<FLOAT32>& image) {
               Norvala_DivCFLOAT32_C1IR(-1.0F, image.data(), image.step(), image.size().width, image.size().height);
             }));
  Row mean("MeanBW8_C1R", OneImage<BW8>([](Image<BW8>& image) {
             double result;
             Norvala_MeanBW8_C1R(image.data(), image.step(), image.size().width, image.size().height, &result);
           }));
  Row meanFloat("MeanFLOAT32_C1R", OneImage<FLOAT32>([](Image<FLOAT32>& image) {
                  double result;
                  Norvala_MeanFLOAT32_C1R(image.data(), image.step(), image.size().width, image.size().height, &result,
                                          0);
                }));
  // The order of the sums is fixed, which leaves one packed addition after the other.
  meanFloat.Peer("add-latency", [](Size s) -> Work {
    typedef double Pair __attribute__((vector_size(16)));
    return [s, sum = Pair{}]() mutable {
      const Pair added = {1.0, 2.0};
      Pair total = sum;
      for (int pair = 0; pair < s.width * s.height / 2; ++pair) total += added;
      sum = total;
    };
  });
  Row maximum("MaxIndx_BW8", [](Size s) -> Work {
    return [image = WithoutWhite(s), s]() mutable {
      BW8 value;
      int32_t column;
      int32_t row;
      Norvala_MaxIndx_BW8(image.data(), image.step(), s.width, s.height, &value, &column, &row);
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  add.Peer("opencv", OneToOne<FLOAT32, FLOAT32>([](Image<FLOAT32>& src, Image<FLOAT32>& dst) {
             cv::Mat to = dst.mat(CV_32F);
             cv::add(to, src.mat(CV_32F), to);
           }));
  divide.Peer("opencv", OneImage<FLOAT32>([](Image<FLOAT32>& image) {
                cv::Mat to = image.mat(CV_32F);
                to.convertTo(to, CV_32F, -1.0);
              }));
  mean.Peer("opencv", OneImage<BW8>([](Image<BW8>& image) { cv::mean(image.mat(CV_8U)); }));
  meanFloat.Peer("opencv", OneImage<FLOAT32>([](Image<FLOAT32>& image) { cv::mean(image.mat(CV_32F)); }));
  maximum.Peer("opencv", [](Size s) -> Work {
    return [image = WithoutWhite(s)]() mutable {
      double value;
      cv::Point at;
      cv::minMaxLoc(image.mat(CV_8U), nullptr, &value, nullptr, &at);
    };
  });
#endif
}

void AddGreyRow() {
  Row grey("RGBToGray_BW8_C3C1R", [](Size s) -> Work {
    return [src = Image<BW8>({3 * s.width, s.height}), dst = Image<BW8>(s), s]() mutable {
      Norvala_RGBToGray_BW8_C3C1R(src.data(), src.step(), dst.data(), dst.step(), s.width, s.height);
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  grey.Peer("opencv", [](Size s) -> Work {
    return [src = Image<BW8>({3 * s.width, s.height}), dst = Image<BW8>(s), s]() mutable {
      cv::Mat to = dst.mat(CV_8U);
      cv::cvtColor(cv::Mat(s.height, s.width, CV_8UC3, src.data()), to, cv::COLOR_RGB2GRAY);
    };
  });
#endif
}

// The size is the source's.
void AddSampleDownRow() {
  Row half("SampleDownH2V2_JPEGBW8", [](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<BW8>({s.width / 2, s.height / 2}), s]() mutable {
      Norvala_SampleDownH2V2_JPEGBW8(src.data(), src.step(), s.width, s.height, dst.data(), dst.step(), s.width / 2,
                                     s.height / 2);
    };
  });
#ifdef NORVALA_BENCH_OPENCV
  half.Peer("opencv", [](Size s) -> Work {
    return [src = Image<BW8>(s), dst = Image<BW8>({s.width / 2, s.height / 2})]() mutable {
      cv::Mat to = dst.mat(CV_8U);
      cv::resize(src.mat(CV_8U), to, to.size(), 0, 0, cv::INTER_AREA);
    };
  });
#endif
}

}  // namespace

void AddPixelRows() {
  AddMoveRows();
  AddConvertRows();
  AddLogicRows();
  AddArithmeticRows();
  AddGreyRow();
  AddSampleDownRow();
}

}  // namespace norvala_bench
