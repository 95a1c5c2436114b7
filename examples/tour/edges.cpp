// Edges at two thresholds, the strongest lines, segments, and the peaks of a corner response.
#include <cmath>

#include "tour.h"

namespace tour {
namespace {

Picture colored(const Picture& gray) {
  Picture out(gray.width, gray.height, 3);
  for (int i = 0; i < gray.width * gray.height; ++i)
    for (int c = 0; c < 3; ++c) out.pixels[3 * i + c] = static_cast<Zeb8u>(gray.pixels[i] / 2 + 40);
  return out;
}

void dot(Picture& p, int x, int y, const Zeb8u (&color)[3]) {
  if (x < 0 || y < 0 || x >= p.width || y >= p.height) return;
  for (int c = 0; c < 3; ++c) p.at(x, y)[c] = color[c];
}

void draw(Picture& p, double x0, double y0, double x1, double y1, const Zeb8u (&color)[3]) {
  const double length = std::max(std::fabs(x1 - x0), std::fabs(y1 - y0));
  for (int i = 0; i <= static_cast<int>(length); ++i) {
    const double t = length > 0 ? i / length : 0;
    dot(p, static_cast<int>(std::lround(x0 + t * (x1 - x0))), static_cast<int>(std::lround(y0 + t * (y1 - y0))), color);
  }
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

constexpr Zeb8u red[3] = {255, 60, 60}, green[3] = {90, 255, 120}, yellow[3] = {255, 230, 60};

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
  Picture drawn = colored(photo);
  for (int i = 0; i < count; ++i) {
    const double c = std::cos(lines[i].y), s = std::sin(lines[i].y), far = photo.width + photo.height;
    draw(drawn, lines[i].x * c - far * s, lines[i].x * s + far * c, lines[i].x * c + far * s, lines[i].x * s - far * c,
         yellow);
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
  drawn = colored(photo);
  for (int i = 0; i < count; ++i)
    draw(drawn, segments[i].x, segments[i].y, segments[i].width, segments[i].height, green);
  gallery.add(drawn, format("%d segments of the probabilistic transform", count), probabilistic);
}

// Determinant less a part of the squared trace of the smoothed gradient products (C. Harris and M. Stephens, 1988).
void showPeaks(const Picture& photo, Gallery& gallery) {
  const int w = photo.width, h = photo.height;
  std::vector<float> response(static_cast<size_t>(w) * h);
  for (int y = 3; y < h - 3; ++y)
    for (int x = 3; x < w - 3; ++x) {
      float xx = 0, xy = 0, yy = 0;
      for (int j = -2; j <= 2; ++j)
        for (int i = -2; i <= 2; ++i) {
          const float dx = static_cast<float>(*photo.at(x + i + 1, y + j) - *photo.at(x + i - 1, y + j));
          const float dy = static_cast<float>(*photo.at(x + i, y + j + 1) - *photo.at(x + i, y + j - 1));
          xx += dx * dx, xy += dx * dy, yy += dy * dy;
        }
      response[static_cast<size_t>(y) * w + x] = xx * yy - xy * xy - 0.05f * (xx + yy) * (xx + yy);
    }
  const float largest = *std::max_element(response.begin(), response.end());
  int bytes = 0, count = 0;
  requireOk(zebiFindPeaks3x3GetBufferSize_32f_C1R(w, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  std::vector<ZebiPoint> peaks(5000);
  const double time = bestTime([&] {
    return zebiFindPeaks3x3_32f_C1R(response.data(), 4 * w, photo.size(), 0.01f * largest, peaks.data(),
                                    static_cast<int>(peaks.size()), &count, zebiNormInf, 3, scratch.data());
  });
  Picture drawn = colored(photo);
  for (int i = 0; i < count; ++i)
    for (int k = -3; k <= 3; ++k)
      dot(drawn, peaks[i].x + k, peaks[i].y, red), dot(drawn, peaks[i].x, peaks[i].y + k, red);
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
