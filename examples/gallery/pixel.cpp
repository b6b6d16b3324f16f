#include <algorithm>
#include <cstdio>

#include "sheet.h"

namespace gallery {
namespace {

void ShowGrey(Sheet& sheet) {
  const Picture& photo = sheet.photo();
  const auto convert = sheet.library().Function<decltype(Norvala_RGBToGray_BW8_C3C1R)>("Norvala_RGBToGray_BW8_C3C1R");
  Plane<BW8> grey(sheet.library(), photo.width, photo.height);
  const double time = sheet.Run("Norvala_RGBToGray_BW8_C3C1R", [&] {
    return convert(photo.at(0, 0), 3 * photo.width, grey.data(), grey.step(), photo.width, photo.height);
  });
  sheet.Show("grey", "The photograph and its grey image", "Norvala_RGBToGray_BW8_C3C1R(rgb, ...)", time,
             SideBySide({photo, ToPicture(grey)}));
}

void ShowMount(Sheet& sheet) {
  const Plane<BW8>& grey = sheet.grey();
  const auto set = sheet.library().Function<decltype(Norvala_SetBW8)>("Norvala_SetBW8");
  const auto copy = sheet.library().Function<decltype(Norvala_CopyBW8)>("Norvala_CopyBW8");
  constexpr int kMount = 40;
  Plane<BW8> mount(sheet.library(), grey.width() + 2 * kMount, grey.height() + 2 * kMount);
  const double time = sheet.Run("a mount", [&] {
    return set(235, mount.data(), mount.step(), mount.width(), mount.height()) |
           copy(grey.data(), grey.step(), mount.row(kMount) + kMount, mount.step(), grey.width(), grey.height());
  });
  sheet.Show("mount", "A light mount, filled, with the picture copied into it",
             "Norvala_SetBW8(235, ...), then Norvala_CopyBW8", time, ToPicture(mount));
}

void ShowBorder(Sheet& sheet) {
  const Plane<BW8>& grey = sheet.grey();
  const auto copy = sheet.library().Function<decltype(Norvala_CopyBW8)>("Norvala_CopyBW8");
  const auto replicate =
      sheet.library().Function<decltype(Norvala_CopyReplicateBorderBW8)>("Norvala_CopyReplicateBorderBW8");
  constexpr int kBorder = 40;
  Plane<BW8> framed(sheet.library(), grey.width() + 2 * kBorder, grey.height() + 2 * kBorder);
  BW8* const inner = framed.row(kBorder) + kBorder;
  const double time = sheet.Run("a border", [&] {
    return copy(grey.data(), grey.step(), inner, framed.step(), grey.width(), grey.height()) |
           replicate(inner, framed.step(), grey.width(), grey.height(), framed.width(), framed.height(), kBorder,
                     kBorder);
  });
  sheet.Show("border", "A border of 40 pixels that repeats the edges",
             "Norvala_CopyBW8, then Norvala_CopyReplicateBorderBW8(..., 40, 40)", time, ToPicture(framed));
}

// A detail with a border of a few pixels, made in 16 bits and in floats.
void ShowDetailBorders(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const auto toWords = library.Function<decltype(Norvala_ConvertBW8toBW16)>("Norvala_ConvertBW8toBW16");
  const auto toFloats = library.Function<decltype(Norvala_ConvertBW8toFLOAT32)>("Norvala_ConvertBW8toFLOAT32");
  const auto copyWords = library.Function<decltype(Norvala_CopyBW16)>("Norvala_CopyBW16");
  const auto copyFloats = library.Function<decltype(Norvala_CopyFLOAT32)>("Norvala_CopyFLOAT32");
  const auto replicateWords =
      library.Function<decltype(Norvala_CopyReplicateBorderBW16)>("Norvala_CopyReplicateBorderBW16");
  const auto replicateFloats =
      library.Function<decltype(Norvala_CopyReplicateBorderFLOAT32)>("Norvala_CopyReplicateBorderFLOAT32");
  const auto wordsToBytes = library.Function<decltype(Norvala_ConvertBW16ToBW8)>("Norvala_ConvertBW16ToBW8");
  const auto floatsToBytes = library.Function<decltype(Norvala_ConvertFLOAT32toBW8)>("Norvala_ConvertFLOAT32toBW8");

  constexpr int kBorder = 6;
  constexpr int kFactor = 8;
  const int width = std::min(24, grey.width());
  const int height = std::min(24, grey.height());
  const int left = (grey.width() - width) * 3 / 5;
  const int top = (grey.height() - height) * 3 / 4;
  const int outerWidth = width + 2 * kBorder;
  const int outerHeight = height + 2 * kBorder;

  Plane<BW16> words(library, grey.width(), grey.height());
  Plane<BW16> framedWords(library, outerWidth, outerHeight);
  Plane<BW8> fromWords(library, outerWidth, outerHeight);
  Plane<FLOAT32> floats(library, grey.width(), grey.height());
  Plane<FLOAT32> framedFloats(library, outerWidth, outerHeight);
  Plane<BW8> fromFloats(library, outerWidth, outerHeight);
  const double time = sheet.Run("borders of a detail", [&] {
    BW16* const innerWords = framedWords.row(kBorder) + kBorder;
    FLOAT32* const innerFloats = framedFloats.row(kBorder) + kBorder;
    return toWords(grey.data(), grey.step(), words.data(), words.step(), grey.width(), grey.height()) |
           copyWords(words.row(top) + left, words.step(), innerWords, framedWords.step(), width, height) |
           replicateWords(innerWords, framedWords.step(), width, height, outerWidth, outerHeight, kBorder, kBorder) |
           wordsToBytes(framedWords.data(), framedWords.step(), fromWords.data(), fromWords.step(), outerWidth,
                        outerHeight) |
           toFloats(grey.data(), grey.step(), floats.data(), floats.step(), grey.width(), grey.height()) |
           copyFloats(floats.row(top) + left, floats.step(), innerFloats, framedFloats.step(), width, height) |
           replicateFloats(innerFloats, framedFloats.step(), width, height, outerWidth, outerHeight, kBorder, kBorder) |
           floatsToBytes(framedFloats.data(), framedFloats.step(), fromFloats.data(), fromFloats.step(), outerWidth,
                         outerHeight, NORVALA_ROUND_TO_NEAREST);
  });
  sheet.Show("border_detail", "A detail and its border of 6 pixels, magnified: made in 16 bits and in floats",
             "Norvala_CopyReplicateBorderBW16 and Norvala_CopyReplicateBorderFLOAT32", time,
             SideBySide({Magnify(ToPicture(fromWords), kFactor), Magnify(ToPicture(fromFloats), kFactor)}));
}

// Each bit of the pixels as black and white: shifted into the sign, then copied over all bits by a signed shift.
void ShowBitPlanes(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const auto toWords = library.Function<decltype(Norvala_ConvertBW8toBW16)>("Norvala_ConvertBW8toBW16");
  const auto widen = library.Function<decltype(Norvala_ConvertBW16toBW32)>("Norvala_ConvertBW16toBW32");
  const auto shiftLeft = library.Function<decltype(Norvala_LShiftCBW32)>("Norvala_LShiftCBW32");
  const auto shiftRight = library.Function<decltype(Norvala_RShiftCBW32)>("Norvala_RShiftCBW32");
  const int width = grey.width();
  const int height = grey.height();
  Plane<BW16> words(library, width, height);
  Plane<BW32> mask(library, width, height);

  // Makes `mask` all ones where bit `bit` of the grey value is set, and 0 elsewhere.
  const auto makeMask = [&](int bit) {
    return toWords(grey.data(), grey.step(), words.data(), words.step(), width, height) |
           widen(words.data(), words.step(), mask.data(), mask.step(), width, height) |
           shiftLeft(static_cast<uint32_t>(31 - bit), mask.data(), mask.step(), width, height) |
           shiftRight(31, mask.data(), mask.step(), width, height);
  };
  double time = 0.0;
  std::vector<Picture> planes;
  for (const int bit : {7, 6, 5}) {
    time = sheet.Run("a bit plane", [&] { return makeMask(bit); });
    Picture plane(width, height, 1);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) *plane.at(x, y) = static_cast<std::uint8_t>(mask.row(y)[x]);
    }
    planes.push_back(plane);
  }
  sheet.Show(
      "bits", "The three highest bits of the grey values, each as black and white",
      "Norvala_ConvertBW16toBW32, Norvala_LShiftCBW32(31 - bit), Norvala_RShiftCBW32(31); the time is of one bit", time,
      SideBySide(planes));

  const auto conjunction = library.Function<decltype(Norvala_AndBW32)>("Norvala_AndBW32");
  const auto disjunction = library.Function<decltype(Norvala_OrBW32)>("Norvala_OrBW32");
  const Picture& photo = sheet.photo();
  Plane<BW32> colour(library, width, height);
  Plane<BW32> bright(library, width, height);
  Plane<BW32> dark(library, width, height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const std::uint8_t* const pixel = photo.at(x, y);
      colour.row(y)[x] = static_cast<BW32>(pixel[0] | pixel[1] << 8 | pixel[2] << 16);
    }
  }
  time = sheet.Run("a cut-out", [&] {
    return makeMask(7) |
           conjunction(colour.data(), colour.step(), mask.data(), mask.step(), bright.data(), bright.step(), width,
                       height) |
           disjunction(colour.data(), colour.step(), mask.data(), mask.step(), dark.data(), dark.step(), width, height);
  });
  const auto toPicture = [&](const Plane<BW32>& plane) {
    Picture picture(width, height, 3);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        for (int c = 0; c < 3; ++c) picture.at(x, y)[c] = static_cast<std::uint8_t>(plane.row(y)[x] >> 8 * c);
      }
    }
    return picture;
  };
  sheet.Show("cutout", "The parts of at least half brightness on black, and the others on white",
             "Norvala_AndBW32(colour, mask) and Norvala_OrBW32(colour, mask)", time,
             SideBySide({toPicture(bright), toPicture(dark)}));
}

void ShowPosterised(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const auto toWords = library.Function<decltype(Norvala_ConvertBW8toBW16)>("Norvala_ConvertBW8toBW16");
  const auto keep = library.Function<decltype(Norvala_AndCBW16)>("Norvala_AndCBW16");
  const auto shift = library.Function<decltype(Norvala_RShiftCBW16)>("Norvala_RShiftCBW16");
  const auto toBytes = library.Function<decltype(Norvala_ConvertBW16ToBW8)>("Norvala_ConvertBW16ToBW8");
  const int width = grey.width();
  const int height = grey.height();
  Plane<BW16> words(library, width, height);
  Plane<BW8> posterised(library, width, height);
  Plane<BW8> darker(library, width, height);
  const double time = sheet.Run("posterising", [&] {
    return toWords(grey.data(), grey.step(), words.data(), words.step(), width, height) |
           keep(0xC0, words.data(), words.step(), width, height) |
           toBytes(words.data(), words.step(), posterised.data(), posterised.step(), width, height) |
           shift(1, words.data(), words.step(), width, height) |
           toBytes(words.data(), words.step(), darker.data(), darker.step(), width, height);
  });
  sheet.Show("posterised", "Four greys: only the two highest bits kept; then the same at half brightness",
             "Norvala_AndCBW16(0xC0, ...), then Norvala_RShiftCBW16(1, ...)", time,
             SideBySide({ToPicture(posterised), ToPicture(darker)}));
}

// Sixteen exposures, fewer of a narrow picture, each a pixel further on, averaged in floats.
void ShowMotion(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const auto toFloats = library.Function<decltype(Norvala_ConvertBW8toFLOAT32)>("Norvala_ConvertBW8toFLOAT32");
  const auto set = library.Function<decltype(Norvala_SetFLOAT32)>("Norvala_SetFLOAT32");
  const auto add = library.Function<decltype(Norvala_AddFLOAT32_C1IR)>("Norvala_AddFLOAT32_C1IR");
  const auto divide = library.Function<decltype(Norvala_DivCFLOAT32_C1IR)>("Norvala_DivCFLOAT32_C1IR");
  const auto toBytes = library.Function<decltype(Norvala_ConvertFLOAT32toBW8)>("Norvala_ConvertFLOAT32toBW8");
  const int exposures = std::min(16, grey.width());
  const int width = grey.width() - exposures + 1;
  const int height = grey.height();
  Plane<FLOAT32> floats(library, grey.width(), height);
  Plane<FLOAT32> sum(library, width, height);
  Plane<BW8> mean(library, width, height);
  const double time = sheet.Run("exposures", [&] {
    int status = toFloats(grey.data(), grey.step(), floats.data(), floats.step(), grey.width(), height) |
                 set(0.0F, sum.data(), sum.step(), width, height);
    for (int i = 0; i < exposures; ++i) {
      status |= add(floats.data() + i, floats.step(), sum.data(), sum.step(), width, height);
    }
    return status | divide(static_cast<float>(exposures), sum.data(), sum.step(), width, height) |
           toBytes(sum.data(), sum.step(), mean.data(), mean.step(), width, height, NORVALA_ROUND_TO_NEAREST);
  });
  sheet.Show("motion", "Exposures, each a pixel further on, added and divided by their number",
             "Norvala_AddFLOAT32_C1IR for each of the 16, then Norvala_DivCFLOAT32_C1IR(16, ...)", time,
             ToPicture(mean));
}

// Exposure by powers of two in 16 bits with 8 fraction bits, where nothing is lost on the way.
void ShowExposure(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const auto toFloats = library.Function<decltype(Norvala_ConvertBW8toFLOAT32)>("Norvala_ConvertBW8toFLOAT32");
  const auto divide = library.Function<decltype(Norvala_DivCFLOAT32_C1IR)>("Norvala_DivCFLOAT32_C1IR");
  const auto toWords = library.Function<decltype(Norvala_ConvertFLOAT32toBW16)>("Norvala_ConvertFLOAT32toBW16");
  const auto shift = library.Function<decltype(Norvala_RShiftCBW16)>("Norvala_RShiftCBW16");
  const auto toBytes = library.Function<decltype(Norvala_ConvertBW16ToBW8)>("Norvala_ConvertBW16ToBW8");
  const int width = grey.width();
  const int height = grey.height();
  Plane<FLOAT32> floats(library, width, height);
  Plane<BW16> words(library, width, height);
  double time = 0.0;
  std::vector<Picture> exposures;
  for (const float gain : {0.5F, 1.0F, 2.0F}) {
    Plane<BW8> exposed(library, width, height);
    time = sheet.Run("an exposure", [&] {
      return toFloats(grey.data(), grey.step(), floats.data(), floats.step(), width, height) |
             divide(1.0F / (256.0F * gain), floats.data(), floats.step(), width, height) |
             toWords(floats.data(), floats.step(), words.data(), words.step(), width, height,
                     NORVALA_ROUND_TO_NEAREST) |
             shift(8, words.data(), words.step(), width, height) |
             toBytes(words.data(), words.step(), exposed.data(), exposed.step(), width, height);
    });
    exposures.push_back(ToPicture(exposed));
  }
  sheet.Show("exposure", "Half, full and double exposure; what is too bright saturates",
             "Norvala_DivCFLOAT32_C1IR, Norvala_ConvertFLOAT32toBW16, Norvala_RShiftCBW16(8, ...); the time is of one",
             time, SideBySide(exposures));
}

void ShowStatistics(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  const auto mean = library.Function<decltype(Norvala_MeanBW8_C1R)>("Norvala_MeanBW8_C1R");
  const auto meanFloat = library.Function<decltype(Norvala_MeanFLOAT32_C1R)>("Norvala_MeanFLOAT32_C1R");
  const auto maximum = library.Function<decltype(Norvala_MaxIndx_BW8)>("Norvala_MaxIndx_BW8");
  const auto set = library.Function<decltype(Norvala_SetBW8)>("Norvala_SetBW8");
  const auto toFloats = library.Function<decltype(Norvala_ConvertBW8toFLOAT32)>("Norvala_ConvertBW8toFLOAT32");
  const int width = grey.width();
  const int height = grey.height();

  constexpr int kTile = 12;
  Plane<BW8> mosaic(library, width, height);
  const Vector<FLOAT64> means(library, (width + kTile - 1) / kTile);  // of a row of tiles
  const double mosaicTime = sheet.Run("a mosaic", [&] {
    int status = 0;
    for (int y = 0; y < height; y += kTile) {
      for (int x = 0; x < width; x += kTile) {
        const int tileWidth = std::min(kTile, width - x);
        const int tileHeight = std::min(kTile, height - y);
        double* const value = means.data() + x / kTile;
        status |= mean(grey.row(y) + x, grey.step(), tileWidth, tileHeight, value) |
                  set(static_cast<BW8>(*value + 0.5), mosaic.row(y) + x, mosaic.step(), tileWidth, tileHeight);
      }
    }
    return status;
  });
  sheet.Show("mosaic", "A mosaic: every tile of 12 x 12 pixels filled with its mean",
             "Norvala_MeanBW8_C1R and Norvala_SetBW8 for every tile", mosaicTime, ToPicture(mosaic));

  Plane<FLOAT32> floats(library, width, height);
  BW8 brightest = 0;
  int32_t column = 0;
  int32_t row = 0;
  double meanValue = 0.0;
  const double time = sheet.Run("statistics", [&] {
    return toFloats(grey.data(), grey.step(), floats.data(), floats.step(), width, height) |
           meanFloat(floats.data(), floats.step(), width, height, &meanValue, 0) |
           maximum(grey.data(), grey.step(), width, height, &brightest, &column, &row);
  });
  Picture marked = sheet.photo();
  const auto mark = [&](int x, int y) {
    if (x < 0 || y < 0 || x >= width || y >= height) return;
    marked.at(x, y)[0] = 0;
    marked.at(x, y)[1] = 255;
    marked.at(x, y)[2] = 255;
  };
  for (int i = 6; i < 24; ++i) {
    for (int across = -1; across <= 1; ++across) {
      mark(column + i, row + across);
      mark(column - i, row + across);
      mark(column + across, row + i);
      mark(column + across, row - i);
    }
  }
  char caption[160];
  std::snprintf(caption, sizeof caption,
                "The brightest grey value is %d, first at column %d of row %d; the mean is %.3f", brightest,
                static_cast<int>(column), static_cast<int>(row), meanValue);
  sheet.Show("brightest", caption, "Norvala_MaxIndx_BW8 and Norvala_MeanFLOAT32_C1R", time, marked);
}

void ShowHalves(Sheet& sheet) {
  const Library& library = sheet.library();
  const auto halve = library.Function<decltype(Norvala_SampleDownH2V2_JPEGBW8)>("Norvala_SampleDownH2V2_JPEGBW8");
  std::vector<Picture> halves = {ToPicture(sheet.grey())};
  double time = 0.0;
  while (halves.size() < 4 && halves.back().width >= 2 && halves.back().height >= 2) {
    const Plane<BW8> src = ToPlane(library, halves.back());
    Plane<BW8> dst(library, src.width() / 2, src.height() / 2);
    time += sheet.Run("Norvala_SampleDownH2V2_JPEGBW8", [&] {
      return halve(src.data(), src.step(), src.width(), src.height(), dst.data(), dst.step(), dst.width(),
                   dst.height());
    });
    halves.push_back(ToPicture(dst));
  }
  sheet.Show("halves", "Halved three times by means of 2x2 pixels", "Norvala_SampleDownH2V2_JPEGBW8", time,
             SideBySide(halves));
}

}  // namespace

void ShowPixel(Sheet& sheet) {
  sheet.Section("Pixels",
                "Grey from colour, copies, fills and borders, bits, arithmetic, means, and halving by 2x2 means.");
  ShowGrey(sheet);
  ShowMount(sheet);
  ShowBorder(sheet);
  ShowDetailBorders(sheet);
  ShowBitPlanes(sheet);
  ShowPosterised(sheet);
  ShowMotion(sheet);
  ShowExposure(sheet);
  ShowStatistics(sheet);
  ShowHalves(sheet);
}

}  // namespace gallery
