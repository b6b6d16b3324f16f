#include "sheet.h"

namespace gallery {

void ShowPixel(Sheet& sheet) {
  const Library& library = sheet.library();
  const Plane<BW8>& grey = sheet.grey();
  sheet.Section("Pixels", "Copying, filling, converting and counting.");

  const auto copy = library.Function<decltype(Norvala_CopyBW8)>("Norvala_CopyBW8");
  const auto replicate = library.Function<decltype(Norvala_CopyReplicateBorderBW8)>("Norvala_CopyReplicateBorderBW8");
  constexpr int kBorder = 40;
  Plane<BW8> framed(library, grey.width() + 2 * kBorder, grey.height() + 2 * kBorder);
  BW8* inner = framed.row(kBorder) + kBorder;
  const double copyTime = sheet.Run("Norvala_CopyBW8", [&] {
    return copy(grey.data(), grey.step(), inner, framed.step(), grey.width(), grey.height());
  });
  const double borderTime = sheet.Run("Norvala_CopyReplicateBorderBW8", [&] {
    return replicate(inner, framed.step(), grey.width(), grey.height(), framed.width(), framed.height(), kBorder,
                     kBorder);
  });
  sheet.Show("border", "A border of 40 pixels that repeats the edges",
             "Norvala_CopyBW8, then Norvala_CopyReplicateBorderBW8(..., 40, 40)", copyTime + borderTime,
             ToPicture(framed));
}

}  // namespace gallery
