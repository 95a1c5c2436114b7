// Edges at two thresholds, the strongest lines, segments, and the peaks of a corner response.
#include <cmath>

#include "draw.h"
#include "tour.h"

namespace tour {
namespace {

// Dimmed, so that lines stand out.
Picture backdrop(const Picture& gray) {
  return support::toned(gray, 0.5f, 40);
}

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

constexpr support::Colour red = {255, 60, 60}, green = {90, 255, 120}, yellow = {255, 230, 60};

void showLines(const Picture& photo, const Picture& edge, Gallery& gallery) {
  constexpr ZebiPoint_32f delta = {1.0f, 0.017453292f};
  constexpr int most = 12;
  int bytes = 0, count = 0;
  requireOk(zebiHoughLineGetSize_8u_C1R(edge.size(), delta, most, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  ZebiPoint_32f lines[most];
  const double whole = bestTime([&] {
    return zebiHoughLine_8u32f_C1R(edge.pixels.data(), edge.step(), edge.size(), delta, edge.height / 8, lines, most,
                                   &count, scratch.data());
  });
  Picture drawn = backdrop(photo);
  for (int i = 0; i < count; ++i) {
    const float rho = lines[i].x, c = std::cos(lines[i].y), s = std::sin(lines[i].y);
    const float far = static_cast<float>(photo.width + photo.height);
    support::drawLine(drawn, rho * c - far * s, rho * s + far * c, rho * c + far * s, rho * s - far * c, yellow);
  }
  gallery.add(drawn, format("The %d strongest lines of the Hough transform", count), whole);

  int specBytes = 0;
  requireOk(zebiHoughProbLineGetSize_8u_C1R(edge.size(), delta, &specBytes, &bytes));
  std::vector<Zeb8u> spec(specBytes), work(bytes);
  auto* tables = reinterpret_cast<ZebiHoughProbSpec*>(spec.data());
  requireOk(zebiHoughProbLineInit_8u32f_C1R(edge.size(), delta, 0, tables));
  std::vector<ZebiRect> segments(400);
  const double probabilistic = bestTime([&] {
    const ZebStatus status =
        zebiHoughProbLine_8u32f_C1R(edge.pixels.data(), edge.step(), edge.size(), 30, 25, 3, segments.data(),
                                    static_cast<int>(segments.size()), &count, work.data(), tables);
    return status == zebStsWarnLinesTruncated ? ZebStatus(zebStsOk) : status;
  });
  drawn = backdrop(photo);
  for (int i = 0; i < count; ++i) {
    const auto [x0, y0, x1, y1] = segments[i];  // the two ends
    support::drawLine(drawn, static_cast<float>(x0), static_cast<float>(y0), static_cast<float>(x1),
                      static_cast<float>(y1), green);
  }
  gallery.add(drawn, format("%d segments of the probabilistic transform", count), probabilistic);
}

// Of the response of C. Harris and M. Stephens.
void showPeaks(const Picture& photo, Gallery& gallery) {
  const int w = photo.width;
  std::vector<float> response(photo.pixels.size());
  int bytes = 0, count = 0;
  requireOk(zebiHarrisCornerGetBufferSize(photo.size(), zebFilterSobel, zebMskSize3x3, 5, &bytes));
  std::vector<Zeb8u> work(bytes);
  requireOk(zebiHarrisCorner_8u32f_C1R(photo.pixels.data(), photo.step(), response.data(), 4 * w, photo.size(),
                                       zebFilterSobel, zebMskSize3x3, 5, 0.05f, zebBorderRepl, 0, work.data()));
  const float largest = *std::max_element(response.begin(), response.end());
  requireOk(zebiFindPeaks3x3GetBufferSize_32f_C1R(w, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  std::vector<ZebiPoint> peaks(5000);
  const double time = bestTime([&] {
    return zebiFindPeaks3x3_32f_C1R(response.data(), 4 * w, photo.size(), 0.01f * largest, peaks.data(),
                                    static_cast<int>(peaks.size()), &count, zebiNormInf, 3, scratch.data());
  });
  Picture drawn = backdrop(photo);
  for (int i = 0; i < count; ++i)
    support::drawCross(drawn, static_cast<float>(peaks[i].x), static_cast<float>(peaks[i].y), 3, red);
  gallery.add(drawn, format("%d local peaks of a corner response", count), time);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Edges are pixels whose gradient is the largest across the edge, kept when they are strong or joined to strong "
      "ones. "
      "Edge pixels vote for the lines through them, and local peaks of a response mark its corners.");
  double time = 0;
  const Picture weak = edges(scene.gray, 40, 100, time);
  gallery.add(weak, "Edges, thresholds 40 and 100", time);
  const Picture strong = edges(scene.gray, 120, 300, time);
  gallery.add(strong, "Edges, thresholds 120 and 300", time);
  showLines(scene.gray, strong, gallery);
  showPeaks(scene.gray, gallery);
}

const Section section(50, "Edges, lines and peaks", show);

}  // namespace
}  // namespace tour
