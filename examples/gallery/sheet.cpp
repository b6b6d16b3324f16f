#include "sheet.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "style.h"

namespace gallery {
namespace {

std::string Escape(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '&':
        escaped += "&amp;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

Plane<BW8> MakeGrey(const Library& library, const Picture& photo) {
  Plane<BW8> grey(library, photo.width, photo.height);
  const auto convert = library.Function<decltype(Norvala_RGBToGray_BW8_C3C1R)>("Norvala_RGBToGray_BW8_C3C1R");
  if (convert(photo.at(0, 0), 3 * photo.width, grey.data(), grey.step(), photo.width, photo.height) != 0) {
    throw std::runtime_error("Norvala_RGBToGray_BW8_C3C1R failed");
  }
  return grey;
}

constexpr const char* kHead = R"(<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>Norvala gallery</title>
<style>
)";
constexpr const char* kIntroduction = R"(</style>
<h1>Norvala gallery</h1>
<p>Every picture here was made from one photograph by a host program that loads the library at run time. A caption names
the call, the size of the picture shown and the time that the call took. The library calls itself version )";

}  // namespace

Sheet::Sheet(const Library& library, Picture photo, std::string folder)
    : library_(library), photo_(std::move(photo)), folder_(std::move(folder)), grey_(MakeGrey(library, photo_)) {
  std::filesystem::create_directories(folder_);
}

void Sheet::Section(const std::string& title, const std::string& text) {
  std::printf("%s\n", title.c_str());
  std::fflush(stdout);
  if (inSection_) html_ += "</div>\n";
  inSection_ = true;
  html_ += "<h2>" + Escape(title) + "</h2>\n<p>" + Escape(text) + "</p>\n<div class=\"pictures\">\n";
}

double Sheet::Run(const std::string& what, const std::function<int()>& call, Repeat repeat) const {
  double least = 1e30;
  const int runs = repeat == Repeat::Once ? 1 : 3;
  for (int run = 0; run < runs; ++run) {
    const auto start = std::chrono::steady_clock::now();
    const int result = call();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    if (result != 0) throw std::runtime_error(what + " failed");
    least = std::min(least, time.count());
  }
  return least;
}

void Sheet::Show(const std::string& file, const std::string& caption, const std::string& call, double milliseconds,
                 const Picture& picture) {
  WritePng(folder_ + "/" + file + ".png", picture);
  char facts[100];
  std::snprintf(facts, sizeof facts, "%d x %d, %.3f ms", picture.width, picture.height, milliseconds);
  constexpr int kWide = 700;  // pictures side by side want the whole page
  html_ += std::string(picture.width > kWide && picture.width > photo_.width * 5 / 4 ? "<figure class=\"wide\">"
                                                                                     : "<figure>") +
           "<img src=\"" + file + ".png\" alt=\"" + Escape(caption) + "\"><figcaption>" + Escape(caption) + "<code>" +
           Escape(call) + "</code><span class=\"quiet\">" + facts + "</span></figcaption></figure>\n";
}

void Sheet::Finish() const {
  const std::string name = folder_ + "/index.html";
  std::ofstream page(name, std::ios::binary);
  const auto version = library_.Function<decltype(Norvala_GetVersion)>("Norvala_GetVersion");
  page << kHead << kStyle << kIntroduction << version() << ".</p>\n" << html_ << (inSection_ ? "</div>\n" : "");
  if (!page.flush()) throw std::runtime_error("cannot write " + name);
}

Picture ToPicture(const Plane<BW8>& plane) {
  Picture picture(plane.width(), plane.height(), 1);
  for (int y = 0; y < plane.height(); ++y) std::copy_n(plane.row(y), plane.width(), picture.at(0, y));
  return picture;
}

Plane<BW8> ToPlane(const Library& library, const Picture& picture) {
  if (picture.channels != 1) throw std::invalid_argument("not a grey picture");
  Plane<BW8> plane(library, picture.width, picture.height);
  for (int y = 0; y < plane.height(); ++y) std::copy_n(picture.at(0, y), plane.width(), plane.row(y));
  return plane;
}

Plane<FLOAT32> ToFloat(const Library& library, const Plane<BW8>& plane) {
  Plane<FLOAT32> floats(library, plane.width(), plane.height());
  for (int y = 0; y < plane.height(); ++y) std::copy_n(plane.row(y), plane.width(), floats.row(y));
  return floats;
}

}  // namespace gallery
