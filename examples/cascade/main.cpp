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

const char usage[] =
    "usage: cascade [PHOTO] [--out FILE.png]\n"
    "  PHOTO           a JPEG or PNG file of at least 64 x 64 pixels\n"
    "  --out FILE.png  where to draw what was found (cascade.png)\n";

int run(const std::string& file, const std::string& out) {
  const auto photograph = support::openPhotograph(file);
  support::requireRoom(photograph, 64, 16);
  Picture gray = support::gray(photograph.picture);
  std::printf("photograph: %s\n", photograph.source.c_str());

  std::printf("training ...\n");
  std::fflush(stdout);
  std::mt19937 engine(5);
  const auto stages = cascade::train(engine, 8);
  size_t classifiers = 0;
  for (const auto& s : stages) classifiers += s.counts.size();
  std::printf("trained %zu stages, %zu classifiers\n", stages.size(), classifiers);

  const std::vector<cascade::Placed> placed = cascade::place(gray);
  const cascade::Search search = cascade::Detector(stages).find(gray);
  std::printf("windows %lld", search.left[0]);
  for (size_t i = 1; i < search.left.size(); ++i) std::printf(" -> %lld", search.left[i]);
  std::printf("\n%.1f ms, %.1f million windows per second\n", search.milliseconds,
              static_cast<double>(search.left[0]) / search.milliseconds / 1e3);

  Picture color = support::toned(gray);
  std::vector<int> hits(placed.size());
  int alarms = 0;
  for (const cascade::Detection& d : search.detections) {
    const int object = cascade::objectOf(d, placed);
    ++(object < 0 ? alarms : hits[object]);
    support::drawBox(color, d.box, object < 0 ? support::Colour{255, 60, 60} : support::Colour{60, 220, 90});
  }
  int found = 0;
  for (size_t i = 0; i < placed.size(); ++i) {
    std::printf("object of %.0f pixels at (%.0f, %.0f): %s\n", placed[i].side, placed[i].x, placed[i].y,
                hits[i] ? "found" : "missed");
    found += hits[i] > 0;
  }
  std::printf("%d found, %d false alarms\n", found, alarms);
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
    } else if (std::strcmp(argv[i], "--help") == 0) {
      std::fputs(usage, stdout);
      return 0;
    } else if (argv[i][0] == '-' || !file.empty()) {
      std::fputs(usage, stderr);
      return 2;
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
