// Trains a small cascade on pictures it renders itself, puts its object into a photograph at several sizes, finds it
// again and says how many windows each stage left.
//
//   cascade [photo] [--out FILE.png]
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "cascade.h"
#include "draw.h"

namespace {

using support::Picture;

void drawBox(Picture& p, const ZebiRect& box) {
  const auto dot = [&](int x, int y) {
    if (x < 0 || y < 0 || x >= p.width || y >= p.height) return;
    p.at(x, y)[0] = 255, p.at(x, y)[1] = 40, p.at(x, y)[2] = 40;
  };
  for (int t = 0; t < 2; ++t) {
    for (int x = box.x - t; x < box.x + box.width + t; ++x) dot(x, box.y - t), dot(x, box.y + box.height - 1 + t);
    for (int y = box.y - t; y < box.y + box.height + t; ++y) dot(box.x - t, y), dot(box.x + box.width - 1 + t, y);
  }
}

int run(const std::string& file, const std::string& out) {
  const auto photograph = support::openPhotograph(file);
  Picture gray = support::gray(photograph.picture);
  std::printf("photograph: %s\n", photograph.source.c_str());

  std::mt19937 engine(5);
  const auto stages = cascade::train(engine, 8);
  size_t classifiers = 0;
  for (const auto& s : stages) classifiers += s.counts.size();
  std::printf("trained %zu stages, %zu classifiers\n", stages.size(), classifiers);

  // The object at four sizes, where the picture has room for it.
  const float side = static_cast<float>(std::min(gray.width, gray.height));
  struct Placed {
    float x, y, side;
  };
  const Placed placed[] = {{0.08f * gray.width, 0.1f * gray.height, 0.14f * side},
                           {0.7f * gray.width, 0.08f * gray.height, 0.2f * side},
                           {0.12f * gray.width, 0.75f * gray.height, 0.09f * side},
                           {0.72f * gray.width, 0.7f * gray.height, 0.06f * side}};
  for (const Placed& p : placed) cascade::drawObject(gray, p.x, p.y, p.side, 0.8f);

  const cascade::Search search = cascade::Detector(stages).find(gray);
  std::printf("windows %lld", search.left[0]);
  for (size_t i = 1; i < search.left.size(); ++i) std::printf(" -> %lld", search.left[i]);
  std::printf("\n%.1f ms, %.1f million windows per second\n", search.milliseconds,
              static_cast<double>(search.left[0]) / search.milliseconds / 1e3);

  int found = 0;
  for (const Placed& p : placed) {
    if (p.side < cascade::window) continue;
    bool hit = false;
    for (const auto& d : search.detections) {
      const float dx = d.box.x + d.box.width / 2.0f - (p.x + p.side / 2),
                  dy = d.box.y + d.box.height / 2.0f - (p.y + p.side / 2);
      hit |= std::hypot(dx, dy) < 0.3f * p.side && std::fabs(d.box.width - p.side) < 0.4f * p.side;
    }
    std::printf("object of %.0f pixels at (%.0f, %.0f): %s\n", p.side, p.x, p.y, hit ? "found" : "missed");
    found += hit;
  }
  std::printf("%d found, %zu false alarms\n", found, search.detections.size() - static_cast<size_t>(found));

  Picture color = support::toned(gray);
  for (const auto& d : search.detections) drawBox(color, d.box);
  support::writePng(color, out);
  std::printf("wrote %s\n", out.c_str());
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::string file, out = "cascade.png";
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--out") == 0 && i + 1 < argc) {
      out = argv[++i];
    } else {
      file = argv[i];
    }
  }
  try {
    return run(file, out);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "cascade: %s\n", e.what());
    return 1;
  }
}
