// Brings small pictures of one scene together: they are made from a photograph, shifted, turned a little, blurred and
// with noise, and the large picture that explains them all is sought by iterated residuals and updates. Writes it
// beside the plain enlargement of one of them and the truth, and prints how far each is from that.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

#include "superres.h"

namespace {

using support::Picture;

const char usage[] =
    "usage: superres [PHOTO] [--pictures N] [--steps N] [--check] [--out FILE]\n"
    "  PHOTO       a JPEG or PNG file\n"
    "  --pictures  how many small ones (16)\n"
    "  --steps     of the iteration (20)\n"
    "  --check     fail when the enlargement is not half as far again from the truth as the result\n"
    "  --out       what to write (superres.png): enlargement, result, truth\n";

int run(const std::string& path, int pictures, int steps, bool check, const std::string& out) {
  const auto photograph = support::openPhotograph(path);
  support::requireRoom(photograph, 64, 16);
  std::printf("%s\n", photograph.source.c_str());
  Picture truth = support::gray(photograph.picture);
  const int width = std::min(truth.width, 480) / superres::scale * superres::scale;
  const int height = truth.height * width / truth.width / superres::scale * superres::scale;
  truth = support::scaled(truth, width, height);
  const auto observations = superres::observe(truth, pictures);
  const Picture plain = superres::enlarged(observations[0].picture, truth.size());
  const auto result = superres::restored(observations, plain, steps);
  const double before = superres::difference(plain, truth), after = superres::difference(result.picture, truth);
  std::printf("%d pictures of %d x %d to one of %d x %d, %d steps, %.1f ms\n", pictures, width / superres::scale,
              height / superres::scale, width, height, steps, result.milliseconds);
  std::printf("residuals from %.2f to %.2f levels\n", result.residuals.front(), result.residuals.back());
  std::printf("from the truth: enlarged %.2f levels, super-resolution %.2f levels\n", before, after);
  Picture beside(3 * width, height, 1);
  for (int y = 0; y < height; ++y) {
    std::memcpy(beside.at(0, y), plain.at(0, y), static_cast<size_t>(width));
    std::memcpy(beside.at(width, y), result.picture.at(0, y), static_cast<size_t>(width));
    std::memcpy(beside.at(2 * width, y), truth.at(0, y), static_cast<size_t>(width));
  }
  support::writePng(beside, out);
  std::printf("wrote %s\n", out.c_str());
  if (check && !(1.5 * after < before)) throw std::runtime_error("the result is no better than that");
  return 0;
}

}  // namespace

int main(int count, char** words) {
  std::string photo, out = "superres.png";
  int pictures = 16, steps = 20;
  bool check = false;
  for (int i = 1; i < count; ++i) {
    const bool more = i + 1 < count;
    if (std::strcmp(words[i], "--out") == 0 && more) {
      out = words[++i];
    } else if (std::strcmp(words[i], "--pictures") == 0 && more) {
      pictures = std::atoi(words[++i]);
    } else if (std::strcmp(words[i], "--steps") == 0 && more) {
      steps = std::atoi(words[++i]);
    } else if (std::strcmp(words[i], "--help") == 0) {
      std::fputs(usage, stdout);
      return 0;
    } else if (std::strcmp(words[i], "--check") == 0) {
      check = true;
    } else if (words[i][0] == '-' || !photo.empty()) {
      std::fputs(usage, stderr);
      return 2;
    } else {
      photo = words[i];
    }
  }
  if (pictures < 1 || steps < 1) {
    std::fputs(usage, stderr);
    return 2;
  }
  try {
    return run(photo, pictures, steps, check, out);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "superres: %s\n", e.what());
    return 1;
  }
}
