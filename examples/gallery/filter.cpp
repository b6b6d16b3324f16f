#include <algorithm>
#include <cstdint>
#include <string>

#include "sheet.h"

namespace gallery {
namespace {

using Taps = std::vector<std::int16_t>;

struct Crops {
  int x, y, width, height, factor;

  Picture operator()(const Plane<BW8>& plane) const {
    return Magnify(Crop(ToPicture(plane), x, y, width, height), factor);
  }
};

// A part of the photograph with much detail, as large as the photograph allows.
Crops DetailOf(const Plane<BW8>& grey, int width, int height, int factor) {
  const int w = std::min(width, grey.width());
  const int h = std::min(height, grey.height());
  return {(grey.width() - w) / 11, (grey.height() - h) / 2, w, h, factor};
}

// ---- Pipeline filters ----

struct PipelineCalls {
  explicit PipelineCalls(const Library& library)
      : filterRow(library.Function<decltype(Norvala_FilterRowBorderPipelineBW8)>("Norvala_FilterRowBorderPipelineBW8")),
        filterColumn(library.Function<decltype(Norvala_FilterColumnPipelineBW8)>("Norvala_FilterColumnPipelineBW8")),
        rowBufferSize(library.Function<decltype(Norvala_FilterRowBorderPipelineGetBufferSizeBW8)>(
            "Norvala_FilterRowBorderPipelineGetBufferSizeBW8")),
        columnBufferSize(library.Function<decltype(Norvala_FilterColumnPipelineGetBufferSizeBW8)>(
            "Norvala_FilterColumnPipelineGetBufferSizeBW8")) {}

  // A work buffer that serves both filters.
  std::vector<BW8> Buffer(int width, int height, int kernelSize) const {
    std::int32_t row = 0;
    std::int32_t column = 0;
    if (rowBufferSize(width, height, kernelSize, &row) != 0) return {};
    if (columnBufferSize(width, height, kernelSize, &column) != 0) return {};
    return std::vector<BW8>(static_cast<std::size_t>(std::max(row, column)));
  }

  decltype(&Norvala_FilterRowBorderPipelineBW8) filterRow;
  decltype(&Norvala_FilterColumnPipelineBW8) filterColumn;
  decltype(&Norvala_FilterRowBorderPipelineGetBufferSizeBW8) rowBufferSize;
  decltype(&Norvala_FilterColumnPipelineGetBufferSizeBW8) columnBufferSize;
};

// Filters with the same taps in both directions, row by row, as a decoder or a camera delivers them: each source row is
// filtered once, and only as many intermediate rows exist as there are taps, in a ring. The edges of the picture are
// repeated: at the sides by the row filter, above and below by the pointers.
int Stream(const PipelineCalls& calls, const Plane<BW8>& src, const Taps& taps, std::int32_t rowDivisor,
           std::int32_t columnDivisor, const Plane<BW8>& dst) {
  const int width = src.width();
  const int height = src.height();
  const int count = static_cast<int>(taps.size());
  const int anchor = count / 2;
  std::vector<BW8> buffer = calls.Buffer(width, height, count);
  std::vector<std::int16_t> ring(taps.size() * static_cast<std::size_t>(width));
  const auto ringRow = [&](int y) { return ring.data() + std::ptrdiff_t{y % count} * width; };
  std::vector<const std::int16_t*> run(taps.size());

  int next = 0;  // the next source row to come in
  for (int y = 0; y < height; ++y) {
    for (; next <= std::min(y + anchor, height - 1); ++next) {
      std::int16_t* const row = ringRow(next);
      if (calls.filterRow(src.row(next), src.step(), &row, width, 1, taps.data(), count, anchor,
                          NORVALA_BORDER_REPLICATE, 0, rowDivisor, buffer.data()) != 0) {
        return -1;
      }
    }
    for (int i = 0; i < count; ++i) {
      run[static_cast<std::size_t>(i)] = ringRow(std::clamp(y + i - anchor, 0, height - 1));
    }
    if (calls.filterColumn(run.data(), dst.row(y), dst.step(), width, 1, taps.data(), count, columnDivisor,
                           buffer.data()) != 0) {
      return -1;
    }
  }
  return 0;
}

// The rows of a picture with the `reach` pixels, at most half a row, that the row filter sees before and after each. A
// kernel whose only tap is its first or its last one moves the row aside, and border pixels move in. A column filter of
// one tap turns the results into bytes.
int ShowEdge(const PipelineCalls& calls, const Plane<BW8>& src, NorvalaBorder edge, int reach, const Plane<BW8>& dst) {
  const int width = src.width();
  const int count = reach + 1;
  Taps first(static_cast<std::size_t>(count));
  Taps last(static_cast<std::size_t>(count));
  first.front() = 1;
  last.back() = 1;
  const std::int16_t one = 1;
  std::vector<BW8> buffer = calls.Buffer(width + 2 * reach, src.height(), count);
  std::vector<std::int16_t> values(static_cast<std::size_t>(width + 2 * reach));
  for (int y = 0; y < src.height(); ++y) {
    const auto filter = [&](const Taps& taps, int anchor, std::int16_t* row) {
      constexpr BW8 kBlack = 0;
      return calls.filterRow(src.row(y), src.step(), &row, width, 1, taps.data(), count, anchor, edge, kBlack, 1,
                             buffer.data());
    };
    if (filter(first, reach, values.data()) != 0) return -1;
    if (filter(last, 0, values.data() + 2 * reach) != 0) return -1;
    const std::int16_t* const row = values.data();
    if (calls.filterColumn(&row, dst.row(y), dst.step(), dst.width(), 1, &one, 1, 1, buffer.data()) != 0) return -1;
  }
  return 0;
}

void ShowPipeline(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const PipelineCalls calls(library);
  sheet.Section("Pipeline filters",
                "A separable filter over rows as they come in: a ring of intermediate rows is all that is kept.");

  const Crops detail = DetailOf(grey, 60, 60, 6);
  const auto show = [&](const char* file, const char* caption, const char* call, const Taps& taps,
                        std::int32_t rowDivisor, std::int32_t columnDivisor) {
    const Plane<BW8> filtered(library, grey.width(), grey.height());
    const double time = sheet.Run(call, [&] { return Stream(calls, grey, taps, rowDivisor, columnDivisor, filtered); });
    sheet.Show(file, caption, call, time, SideBySide({detail(grey), detail(filtered)}));
  };
  show("pipeline-smooth", "Smoothed with 9 binomial taps through a ring of 9 rows; six-fold detail",
       "Norvala_FilterRowBorderPipelineBW8(..., 1 8 28 56 70 56 28 8 1, 9, 4, NORVALA_BORDER_REPLICATE, 0, 256, ...), "
       "Norvala_FilterColumnPipelineBW8(..., 256, ...)",
       {1, 8, 28, 56, 70, 56, 28, 8, 1}, 256, 256);
  show("pipeline-sharpen", "Sharpened with the taps -1 6 -1; six-fold detail",
       "Norvala_FilterRowBorderPipelineBW8(..., -1 6 -1, 3, 1, NORVALA_BORDER_REPLICATE, 0, 1, ...), "
       "Norvala_FilterColumnPipelineBW8(..., 16, ...)",
       {-1, 6, -1}, 1, 16);

  const Crops part = DetailOf(grey, 48, 30, 1);
  const Plane<BW8> small = ToPlane(library, part(grey));
  const int reach = small.width() / 2;
  std::vector<Picture> pictures;
  double time = 0;
  for (const NorvalaBorder edge : {NORVALA_BORDER_CONSTANT, NORVALA_BORDER_REPLICATE, NORVALA_BORDER_WRAP,
                                   NORVALA_BORDER_MIRROR, NORVALA_BORDER_MIRROR_WITH_EDGE}) {
    const Plane<BW8> shown(library, small.width() + 2 * reach, small.height());
    time += sheet.Run("Norvala_FilterRowBorderPipelineBW8", [&] { return ShowEdge(calls, small, edge, reach, shown); });
    pictures.push_back(Magnify(ToPicture(shown), 3));
  }
  sheet.Show("pipeline-borders",
             "What the row filter sees beside a picture of 48 columns, 24 pixels on either side: black, the nearest "
             "pixel, the row repeated, mirrored, mirrored with its edge pixel; three-fold",
             "Norvala_FilterRowBorderPipelineBW8(..., borderType 0 to 4, 0, ...)", time, SideBySide(pictures));
}

// ---- Gaussian filter ----

void ShowGauss(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const auto copy = library.Function<decltype(Norvala_CopyBW8)>("Norvala_CopyBW8");
  const auto replicate = library.Function<decltype(Norvala_CopyReplicateBorderBW8)>("Norvala_CopyReplicateBorderBW8");
  const auto gauss = library.Function<decltype(Norvala_FilterGauss)>("Norvala_FilterGauss");
  sheet.Section("Gaussian filter",
                "Two fixed masks over 8-bit pixels; the caller supplies the pixels around the picture.");

  constexpr int kBorder = 2;
  const Plane<BW8> framed(library, grey.width() + 2 * kBorder, grey.height() + 2 * kBorder);
  BW8* const inner = framed.row(kBorder) + kBorder;
  sheet.Run("Norvala_CopyBW8",
            [&] { return copy(grey.data(), grey.step(), inner, framed.step(), grey.width(), grey.height()); });
  sheet.Run("Norvala_CopyReplicateBorderBW8", [&] {
    return replicate(inner, framed.step(), grey.width(), grey.height(), framed.width(), framed.height(), kBorder,
                     kBorder);
  });

  const Crops detail = DetailOf(grey, 60, 60, 6);
  for (const int size : {3, 5}) {
    const std::int32_t maskCode = size == 3 ? NORVALA_GAUSS_3X3 : NORVALA_GAUSS_5X5;
    const std::string name = std::to_string(size) + "x" + std::to_string(size);
    const Plane<BW8> smooth(library, grey.width(), grey.height());
    const double time = sheet.Run("Norvala_FilterGauss", [&] {
      return gauss(inner, framed.step(), smooth.data(), smooth.step(), grey.width(), grey.height(), maskCode);
    });
    sheet.Show("gauss-" + name, "The " + name + " mask; six-fold detail",
               "Norvala_FilterGauss(..., NORVALA_GAUSS_" + std::to_string(size) + "X" + std::to_string(size) + ")",
               time, SideBySide({detail(grey), detail(smooth)}));
  }
}

}  // namespace

void ShowFilter(Sheet& sheet) {
  ShowPipeline(sheet);
  ShowGauss(sheet);
}

}  // namespace gallery
