// A host program of the library: loads it, runs it on a photograph and writes a contact sheet.

#include <cstdio>
#include <exception>

#include "library.h"
#include "picture.h"
#include "sheet.h"

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fprintf(stderr, "usage: gallery LIBRARY PHOTO FOLDER\n");
    return 1;
  }
  try {
    const gallery::Library library(argv[1]);
    gallery::Sheet sheet(library, gallery::ReadPhoto(argv[2]), argv[3]);
    ShowPixel(sheet);
    ShowFilter(sheet);
    ShowSeparable(sheet);
    ShowPyramid(sheet);
    ShowWarp(sheet);
    ShowResize(sheet);
    ShowSpectrum(sheet);
    ShowAnalysis(sheet);
    sheet.Finish();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gallery: %s\n", error.what());
    return 1;
  }
  return 0;
}
