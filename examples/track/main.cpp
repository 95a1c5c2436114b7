// Follows points through pictures, from each to the next: through a sequence made from one photograph by a known
// motion, where the error can be told, or through the files of a sequence. Draws the way of every point.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>

#include "draw.h"
#include "track.h"

namespace {

using support::Colour;
using support::Picture;
using track::Motion;

const char usage[] =
    "usage: track [PHOTO] [--shift X Y] [--turn DEGREES] [--zoom FACTOR] [--frames N] [common options]\n"
    "       track PICTURE PICTURE... [common options]\n"
    "  PHOTO            a JPEG or PNG file; a sequence is made from it by a motion that is the same from each frame "
    "to\n"
    "                   the next\n"
    "  --shift X Y      in pixels to the right and downwards (6 -3.5)\n"
    "  --turn DEGREES   clockwise about the middle (1)\n"
    "  --zoom FACTOR    about the middle, 0.5 to 2 (1.01)\n"
    "  --frames N       frames of the sequence, 2 to 100 (5)\n"
    "  PICTURE...       two or more files of the same size, in the order in which they were taken\n"
    "  --points N       how many points to follow, 1 to 5000 (300)\n"
    "  --at-most PIXELS fail when the median error is larger, or more than a quarter of the points are lost\n"
    "  --out FILE.png   where to draw (track.png)\n";

struct Usage : std::runtime_error {
  using runtime_error::runtime_error;
};

struct Options {
  std::vector<std::string> files;
  Motion motion = {6, -3.5f, 1, 1.01f};
  bool motionGiven = false;
  int frames = 5;
  int points = 300;
  float atMost = INFINITY;
  std::string out = "track.png";
};

Options parsed(int count, char** words) {
  Options options;
  for (int i = 1; i < count; ++i) {
    const std::string word = words[i];
    const auto next = [&] {
      if (i + 1 >= count) throw Usage(word + " needs a value");
      return words[++i];
    };
    const auto number = [&](float low, float high) {
      const char* const text = next();
      char* end = nullptr;
      const float value = std::strtof(text, &end);
      if (end == text || *end || !(value >= low && value <= high)) throw Usage(word + " cannot be " + text);
      return value;
    };
    const auto whole = [&](int low, int high) {
      const float value = number(static_cast<float>(low), static_cast<float>(high));
      if (value != std::floor(value)) throw Usage(word + " must be a whole number");
      return static_cast<int>(value);
    };
    options.motionGiven |= word == "--shift" || word == "--turn" || word == "--zoom" || word == "--frames";
    if (word == "--shift") {
      options.motion.shiftX = number(-1000, 1000);
      options.motion.shiftY = number(-1000, 1000);
    } else if (word == "--turn") {
      options.motion.degrees = number(-180, 180);
    } else if (word == "--zoom") {
      options.motion.zoom = number(0.5f, 2);
    } else if (word == "--frames") {
      options.frames = whole(2, 100);
    } else if (word == "--points") {
      options.points = whole(1, 5000);
    } else if (word == "--at-most") {
      options.atMost = number(0, 1000);
    } else if (word == "--out") {
      options.out = next();
    } else if (word.empty() || word[0] == '-') {
      throw Usage("unknown option " + word);
    } else {
      options.files.push_back(word);
    }
  }
  if (options.files.size() > 1 && options.motionGiven)
    throw Usage("--shift, --turn, --zoom and --frames make a sequence of one photograph");
  if (options.files.size() > 1 && std::isfinite(options.atMost))
    throw Usage("--at-most needs a known motion, which several files do not have");
  return options;
}

std::vector<Picture> sequence(const Options& options) {
  std::vector<Picture> frames;
  for (const std::string& file : options.files.empty() ? std::vector<std::string>{""} : options.files) {
    const auto photograph = support::openPhotograph(file);
    support::requireRoom(photograph, 32, 16);
    frames.push_back(support::gray(photograph.picture));
    const ZebiSize size = frames.back().size(), wanted = frames.front().size();
    std::printf("%s, %d x %d\n", photograph.source.c_str(), size.width, size.height);
    if (size.width < 32 || size.height < 32) throw std::runtime_error("the picture is too small: 32 x 32 is the least");
    if (size.width != wanted.width || size.height != wanted.height)
      throw std::runtime_error(file + " has another size than the first picture");
  }
  if (frames.size() == 1)
    for (int k = 1; k < options.frames; ++k) frames.push_back(track::moved(frames[0], options.motion.times(k)));
  return frames;
}

constexpr Colour yellow = {255, 225, 60}, red = {255, 60, 60};

// Follows the points and draws their ways on the last frame. A point that is lost stays lost.
int run(const Options& options) {
  const std::vector<Picture> frames = sequence(options);
  const ZebiSize size = frames[0].size();
  const bool known = options.files.size() < 2;
  const auto starts = track::goodPoints(frames[0], options.points, 10);
  if (starts.empty()) throw std::runtime_error("the first picture has no point to follow");
  std::printf("%zu points\n", starts.size());

  Picture drawn = support::toned(frames.back(), 0.6f, 20);
  std::vector<track::Place> places;
  for (const auto& p : starts) places.push_back({p, 0, true});
  std::vector<double> travelled(starts.size());
  track::Accuracy accuracy;
  auto before = std::make_unique<track::Pyramid>(frames[0], 3);
  for (size_t k = 1; k < frames.size(); ++k) {
    auto now = std::make_unique<track::Pyramid>(frames[k], 3);
    std::vector<ZebiPoint_32f> from, truth;
    for (const auto& place : places) from.push_back(place.at);
    double milliseconds = 0;
    const auto next = track::follow(*before, *now, from, &milliseconds);
    std::vector<double> steps;
    int lost = 0;
    for (size_t i = 0; i < next.size(); ++i) {
      const bool kept = places[i].found && next[i].found;
      if (kept) {
        const float x = next[i].at.x, y = next[i].at.y;
        steps.push_back(std::hypot(x - from[i].x, y - from[i].y));
        (k + 1 < frames.size() ? support::drawLine : support::drawArrow)(drawn, from[i].x, from[i].y, x, y, yellow, 1);
      } else if (places[i].found) {
        support::drawCross(drawn, from[i].x, from[i].y, 3, red);
      }
      lost += !kept;
      places[i] = {kept ? next[i].at : from[i], next[i].difference, kept};
    }
    std::printf("frame %zu: moved by %.2f pixels in the median, ", k, track::quantile(steps, 0.5));
    if (known) {
      for (const auto& p : starts) truth.push_back(options.motion.times(static_cast<int>(k)).moved(p, size));
      accuracy = track::compare(places, truth, size);
      std::printf("error since the first frame: median %.3f, 90 %% within %.3f; %d of %d visible points lost",
                  accuracy.median, accuracy.percentile90, accuracy.lost, accuracy.visible);
    } else {
      std::printf("%d of %zu points lost", lost, places.size());
    }
    std::printf("; %.1f ms there and back\n", milliseconds);
    before = std::move(now);
  }
  support::writePng(drawn, options.out);
  std::printf("wrote %s\n", options.out.c_str());
  if (std::isfinite(options.atMost)) {
    if (4 * accuracy.lost > accuracy.visible || accuracy.visible == 0) throw std::runtime_error("too many points lost");
    if (accuracy.median > static_cast<double>(options.atMost))
      throw std::runtime_error("the median error is too large");
  }
  return 0;
}

}  // namespace

int main(int count, char** words) {
  if (count == 2 && std::string(words[1]) == "--help") {
    std::fputs(usage, stdout);
    return 0;
  }
  try {
    return run(parsed(count, words));
  } catch (const Usage& e) {
    std::fprintf(stderr, "track: %s\n%s", e.what(), usage);
    return 2;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "track: %s\n", e.what());
    return 1;
  }
}
