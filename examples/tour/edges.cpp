// Edges at two thresholds, the strongest lines, segments, and the peaks of a corner response.
#include <cmath>
#include <random>

#include "colours.h"
#include "draw.h"
#include "tour.h"

namespace tour {
namespace {

Picture edges(const Picture& photo, float low, float high, double& milliseconds) {
  int bytes = 0;
  requireOk(zebiCannyBorderGetSize(photo.size(), zebFilterSobel, zebMskSize3x3, zeb8u, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  Picture out(photo.width, photo.height, 1);
  milliseconds = bestTime([&] {
    return zebiCannyBorder_8u_C1R(photo.pixels.data(), photo.step(), out.pixels.data(), out.step(), photo.size(),
                                  zebFilterSobel, zebMskSize3x3, zebBorderRepl, 0, low, high, zebNormL2,
                                  scratch.data());
  });
  return out;
}

// A house front: rows of windows with bars, a door, a cornice, a little turned, with grain.
Picture facade() {
  constexpr int width = 512, height = 600;
  constexpr float turn = 0.05f, across = 92, storey = 118;
  std::mt19937 engine(8);
  std::normal_distribution<float> grain(0, 5);
  Picture out(width, height, 1);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const float u = (x - 256) * std::cos(turn) + (y - 300) * std::sin(turn) + 256;
      const float v = (y - 300) * std::cos(turn) - (x - 256) * std::sin(turn) + 300;
      float light = 168 + 0.03f * v;
      const float column = std::fmod(u - 30 + across, across), row = std::fmod(v - 96 + storey, storey);
      const bool wall = u > 30 && u < 490 && v > 60;
      if (!wall) light = v > 60 ? 120 : 205;
      if (wall && v > 96 && v < 96 + 4 * storey && column > 18 && column < 74 && row > 14 && row < 94) {
        const bool frame = column < 23 || column > 69 || row < 19 || row > 89;
        const bool bar = std::fabs(column - 46) < 2.5f || std::fabs(row - 48) < 2.5f;
        light = frame ? 225 : bar ? 200 : 55 + 0.4f * row;
      }
      if (u > 20 && u < 500 && v > 60 && v < 78) light = 235;
      *out.at(x, y) = support::level(light + grain(engine));
    }
  return out;
}

constexpr ZebiPoint_32f delta = {1.0f, 0.017453292f};

// Leaves out what lies within some pixels and degrees of a stronger line. A line has two names: (rho, theta) and
// (-rho, theta - 180 degrees).
std::vector<ZebiPoint_32f> distinct(const std::vector<ZebiPoint_32f>& lines) {
  constexpr float near = 9, alike = 0.07f, half = 3.14159265f;
  std::vector<ZebiPoint_32f> out;
  for (const ZebiPoint_32f& line : lines) {
    const auto same = [&](const ZebiPoint_32f& kept) {
      const float turned = std::fabs(line.y - kept.y);
      return turned < half / 2 ? turned < alike && std::fabs(line.x - kept.x) < near
                               : half - turned < alike && std::fabs(line.x + kept.x) < near;
    };
    if (std::none_of(out.begin(), out.end(), same)) out.push_back(line);
  }
  return out;
}

void showLines(Gallery& gallery) {
  const Picture house = facade();
  double time = 0;
  const Picture edge = edges(house, 120, 300, time);
  gallery.add(house, "A drawn house front, a little turned and grainy.");
  constexpr int most = 300, wanted = 24;
  int bytes = 0, count = 0;
  requireOk(zebiHoughLineGetSize_8u_C1R(edge.size(), delta, most, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  std::vector<ZebiPoint_32f> lines(most);
  const double whole = bestTime([&] {
    return zebiHoughLine_8u32f_C1R(edge.pixels.data(), edge.step(), edge.size(), delta, 110, lines.data(), most, &count,
                                   scratch.data());
  });
  lines.resize(count);
  std::vector<ZebiPoint_32f> kept = distinct(lines);
  kept.resize(std::min<size_t>(kept.size(), wanted));
  Picture drawn = backdrop(house);
  for (const ZebiPoint_32f& line : kept) {
    const float rho = line.x, c = std::cos(line.y), s = std::sin(line.y);
    const float far = static_cast<float>(house.width + house.height);
    support::drawLine(drawn, rho * c - far * s, rho * s + far * c, rho * c + far * s, rho * s - far * c, yellow, 1.6f);
  }
  gallery.add(
      drawn,
      format("The %d strongest lines of its edges (HoughLine); of %d peaks, those within 9 pixels and 4 degrees "
             "of a stronger one are left out.",
             static_cast<int>(kept.size()), count),
      whole);

  int specBytes = 0;
  requireOk(zebiHoughProbLineGetSize_8u_C1R(edge.size(), delta, &specBytes, &bytes));
  std::vector<Zeb8u> spec(specBytes), work(bytes);
  auto* tables = reinterpret_cast<ZebiHoughProbSpec*>(spec.data());
  requireOk(zebiHoughProbLineInit_8u32f_C1R(edge.size(), delta, 0, tables));
  std::vector<ZebiRect> segments(600);
  const double probabilistic = bestTime([&] {
    const ZebStatus status =
        zebiHoughProbLine_8u32f_C1R(edge.pixels.data(), edge.step(), edge.size(), 16, 16, 3, segments.data(),
                                    static_cast<int>(segments.size()), &count, work.data(), tables);
    return status == zebStsWarnLinesTruncated ? ZebStatus(zebStsOk) : status;
  });
  drawn = backdrop(house);
  for (int i = 0; i < count; ++i) {
    const auto [x0, y0, x1, y1] = segments[i];  // the two ends
    support::drawLine(drawn, static_cast<float>(x0), static_cast<float>(y0), static_cast<float>(x1),
                      static_cast<float>(y1), green, 1.6f);
  }
  gallery.add(
      drawn,
      format("%d segments of at least 16 pixels (HoughProbLine): frames and bars, each with its two ends.", count),
      probabilistic);
}

// Of the smaller eigenvalue of the structure tensor, the hundred that stand out the most.
void showPeaks(const Picture& photo, Gallery& gallery) {
  constexpr int wanted = 100;
  const int w = photo.width;
  std::vector<float> response(photo.pixels.size());
  int bytes = 0, count = 0;
  requireOk(zebiMinEigenValGetBufferSize_8u32f_C1R(photo.size(), zebFilterSobel, zebMskSize3x3, 7, &bytes));
  std::vector<Zeb8u> work(bytes);
  requireOk(zebiMinEigenVal_8u32f_C1R(photo.pixels.data(), photo.step(), response.data(), 4 * w, photo.size(),
                                      zebFilterSobel, zebMskSize3x3, 7, zebBorderRepl, 0, work.data()));
  requireOk(zebiFindPeaks3x3GetBufferSize_32f_C1R(w, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  std::vector<ZebiPoint> peaks(photo.pixels.size());
  const auto above = [&](float threshold) {
    return zebiFindPeaks3x3_32f_C1R(response.data(), 4 * w, photo.size(), threshold, peaks.data(),
                                    static_cast<int>(peaks.size()), &count, zebiNormInf, 3, scratch.data());
  };
  requireOk(above(0));
  std::vector<float> heights;
  for (int i = 0; i < count; ++i) heights.push_back(response[static_cast<size_t>(peaks[i].y) * w + peaks[i].x]);
  std::sort(heights.rbegin(), heights.rend());
  const float threshold = heights.size() > wanted ? heights[wanted] : 0;
  const double time = bestTime([&] { return above(threshold); });
  Picture drawn = backdrop(photo);
  for (int i = 0; i < count; ++i)
    support::drawCross(drawn, static_cast<float>(peaks[i].x), static_cast<float>(peaks[i].y), 5, red, 1.5f);
  gallery.add(drawn, format("The %d highest local peaks of a corner response (FindPeaks3x3 on MinEigenVal).", count),
              time);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Edges are pixels whose gradient is the largest across the edge, kept when they are strong or joined to strong "
      "ones. "
      "Edge pixels vote for the lines through them, and local peaks of a response mark its corners.");
  double time = 0;
  const Picture weak = edges(scene.gray, 40, 100, time);
  gallery.add(weak, "Edges, thresholds 40 and 100 (CannyBorder): fine lines and texture, too.", time);
  const Picture strong = edges(scene.gray, 120, 300, time);
  gallery.add(strong, "Edges, thresholds 120 and 300: only what is strong, or joined to it.", time);
  showLines(gallery);
  showPeaks(scene.gray, gallery);
}

const Section section(50, "Edges, lines and peaks", show);

}  // namespace
}  // namespace tour
