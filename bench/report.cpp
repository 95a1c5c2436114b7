#include "report.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

namespace bench {

std::string sizeName(ZebiSize size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

std::vector<Place> places(const Options& options) {
  const Place tile{"64x64 in 1920", {64, 64}, 1920};
  if (options.size) {
    std::vector<Place> out{{sizeName(*options.size), *options.size, options.size->width}};
    if (options.quick) out.push_back(tile);
    return out;
  }
  return {{"480x360", {480, 360}, 480}, {"1920x1080", fullSize, fullSize.width}, tile};
}

Scene sceneAt(const support::Picture& photo, const Place& place) {
  const support::Picture level = support::scaled(photo, place.size.width, place.size.height);
  Scene scene{place.size, place.stride, Pixels<Zeb8u>(level.pixels.begin(), level.pixels.end()), {}};
  scene.source = scene.imageOf<Zeb8u>(scene.photo);
  return scene;
}

Scene ownScene(const Case& row, const Options& options) {
  ZebiSize size = *row.own;
  if (options.quick) size = {std::min(size.width, 64), std::min(size.height, 64)};
  return {size, size.width, {}, {}};
}

std::string number(double value, int decimals) {
  char text[40];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string quoted(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
  }
  return out + '"';
}

Json::Json(const std::string& path) : path_(path) {
  if (!path.empty()) file_.open(path);
}

void Json::member(const std::string& name, const std::string& value) {
  file_ << separator_ << "  " << quoted(name) << ": " << value;
  separator_ = ",\n";
}

void Json::list(const std::string& name, const std::vector<std::string>& values) {
  std::string text = "[";
  const char* separator = "\n    ";
  for (const std::string& value : values) {
    text += separator + value;
    separator = ",\n    ";
  }
  member(name, text + "\n  ]");
}

void Json::close() {
  if (path_.empty()) return;
  file_ << "\n}\n";
  file_.close();
  if (!file_) throw std::runtime_error("cannot write " + path_);
}

}  // namespace bench
