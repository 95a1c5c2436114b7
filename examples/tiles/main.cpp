// Smooths, erodes and edge-detects a large image in tiles on a pool of threads, compares every byte with the result of
// the whole image in single calls, and prints how the time falls with the threads.
//
//   tiles [photo] [--size WxH] [--tile N] [--threads N] [--out FILE.png]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>

#include "tiles.h"
#include "zebcv.h"

namespace {

using support::Picture;

struct Options {
  std::string photo, out = "tiles.png";
  int width = 4096, height = 3072, tile = 512, threads = 0;
};

const char usage[] =
    "usage: tiles [PHOTO] [--size WxH] [--tile N] [--threads N] [--out FILE.png]\n"
    "  PHOTO           a JPEG or PNG file\n"
    "  --size WxH      scaled to this size first (4096x3072)\n"
    "  --tile N        side of a tile, a multiple of 16 (512)\n"
    "  --threads N     most threads (as many as there are processors)\n"
    "  --out FILE.png  where to write the edges (tiles.png)\n";

int number(const char* text, int least) {
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  if (*end || end == text || value < least || value > 16384)
    throw std::runtime_error(std::string("not a number from ") + std::to_string(least) + " to 16384: " + text);
  return static_cast<int>(value);
}

Options parse(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const bool named = argument.rfind("--", 0) == 0;
    if (!named) {
      options.photo = argument;
      continue;
    }
    if (i + 1 == argc) throw std::runtime_error(argument + " wants a value");
    const char* value = argv[++i];
    if (argument == "--out") {
      options.out = value;
    } else if (argument == "--tile") {
      options.tile = number(value, 16);
      if (options.tile % 16) throw std::runtime_error("--tile wants a multiple of 16");
    } else if (argument == "--threads") {
      options.threads = number(value, 1);
    } else if (argument == "--size") {
      const std::string size = value;
      const size_t x = size.find('x');
      if (x == std::string::npos) throw std::runtime_error("--size wants WxH: " + size);
      options.width = number(size.substr(0, x).c_str(), 1);
      options.height = number(size.substr(x + 1).c_str(), 1);
    } else {
      throw std::runtime_error("unknown option " + argument);
    }
  }
  return options;
}

// The whole image, one call a step; the edge detector does its own hysteresis.
Picture wholeEdges(const tiles::Pipeline& whole) {
  int bytes = 0;
  Picture out(whole.eroded.width, whole.eroded.height, 1);
  if (zebiCannyBorderGetSize(out.size(), zebFilterSobel, zebMskSize3x3, zeb8u, &bytes) != zebStsOk)
    throw std::runtime_error("the image is too large for the edge detector");
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  if (zebiCannyBorder_8u_C1R(whole.eroded.pixels.data(), whole.eroded.step(), out.pixels.data(), out.step(), out.size(),
                             zebFilterSobel, zebMskSize3x3, zebBorderRepl, 0, whole.thresholds.low,
                             whole.thresholds.high, zebNormL2, buffer.data()) != zebStsOk)
    throw std::runtime_error("the edge detector failed");
  return out;
}

size_t differences(const Picture& a, const Picture& b) {
  size_t count = 0;
  for (size_t i = 0; i < a.pixels.size(); ++i) count += a.pixels[i] != b.pixels[i];
  return count;
}

int run(const Options& options) {
  const auto photograph = support::openPhotograph(options.photo);
  const Picture image = support::scaled(support::gray(photograph.picture), options.width, options.height);
  std::printf("photograph: %s, as %d x %d\n", photograph.source.c_str(), image.width, image.height);

  constexpr tiles::Thresholds thresholds{20, 50};
  tiles::Pipeline whole(image, thresholds);
  whole.run({{0, 0, image.width, image.height, 0}}, 1);
  const Picture edges = wholeEdges(whole);

  const auto pieces = tiles::cut(image.size(), options.tile);
  const int cores = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  const int most = options.threads ? options.threads : cores;
  std::printf("%zu tiles of at most %d x %d, %d cores\n", pieces.size(), options.tile, options.tile, cores);
  double single = 0;
  size_t wrong = 0;
  for (int threads = 1;; threads = std::min(2 * threads, most)) {
    tiles::Pipeline tiled(image, thresholds);
    double best = 1e9;
    for (int i = 0; i < 3; ++i) {
      const auto start = std::chrono::steady_clock::now();
      tiled.run(pieces, threads);
      best =
          std::min(best, std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count());
    }
    if (threads == 1) single = best;
    const size_t differ = differences(tiled.smoothed, whole.smoothed) + differences(tiled.eroded, whole.eroded) +
                          differences(tiled.edges, edges);
    wrong += differ;
    std::printf("%2d threads: %7.1f ms, %.2f times one thread, %zu bytes differ from the whole image\n", threads, best,
                single / best, differ);
    if (threads == most) break;
  }
  support::writePng(edges, options.out);
  std::printf("wrote %s\n", options.out.c_str());
  return wrong ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::string(argv[1]) == "--help") {
    std::fputs(usage, stdout);
    return 0;
  }
  try {
    return run(parse(argc, argv));
  } catch (const std::exception& e) {
    std::fprintf(stderr, "tiles: %s\n", e.what());
    return 1;
  }
}
