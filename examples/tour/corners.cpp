// Corners by three detectors, their directions, and what is left of edges where straight lines are taken out.
#include <cmath>

#include "colours.h"
#include "draw.h"
#include "tour.h"

namespace tour {
namespace {

constexpr int most = 100;
constexpr float apart = 10;  // pixels between the points that are drawn

// The first of a list, strongest first, that are not too near to a stronger one.
template <class Point>
std::vector<Point> spread(const std::vector<Point>& points) {
  std::vector<Point> out;
  for (const Point& p : points) {
    const auto near = [&](const Point& q) {
      return std::hypot(static_cast<float>(p.x - q.x), static_cast<float>(p.y - q.y)) < apart;
    };
    if (out.size() < most && std::none_of(out.begin(), out.end(), near)) out.push_back(p);
  }
  return out;
}

struct Response {
  std::vector<Zeb32f> values;
  double milliseconds = 0;
};

template <class Query, class Call>
Response respond(const Picture& gray, Query query, Call call) {
  int bytes = 0;
  requireOk(query(gray.size(), zebFilterSobel, zebMskSize3x3, 5, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  Response out;
  out.values.resize(gray.pixels.size());
  out.milliseconds = bestTime([&] { return call(out.values.data(), scratch.data()); });
  return out;
}

// The peaks of a response, the strongest first.
std::vector<ZebiPoint> strongest(const Response& response, ZebiSize size) {
  int bytes = 0, count = 0;
  requireOk(zebiFindPeaks3x3GetBufferSize_32f_C1R(size.width, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  std::vector<ZebiPoint> peaks(response.values.size());
  requireOk(zebiFindPeaks3x3_32f_C1R(response.values.data(), 4 * size.width, size, 0, peaks.data(),
                                     static_cast<int>(peaks.size()), &count, zebiNormInf, 3, scratch.data()));
  const auto at = [&](const ZebiPoint& p) { return response.values[static_cast<size_t>(p.y) * size.width + p.x]; };
  peaks.resize(count);
  std::stable_sort(peaks.begin(), peaks.end(), [&](auto& a, auto& b) { return at(a) > at(b); });
  return spread(peaks);
}

void showResponse(const Picture& gray, const Response& response, const char* caption, Gallery& gallery) {
  Picture drawn = backdrop(gray);
  const auto peaks = strongest(response, gray.size());
  for (const ZebiPoint& p : peaks)
    support::drawCross(drawn, static_cast<float>(p.x), static_cast<float>(p.y), 5, red, 1.5f);
  gallery.add(drawn, format(caption, static_cast<int>(peaks.size())), response.milliseconds);
}

// Corners of a circle of 16 pixels, an arc of 9 of which differs by more than the threshold.
void showSegmentTest(const Picture& gray, Gallery& gallery) {
  Zeb8u memory[32];
  auto* const state = reinterpret_cast<ZebiFastNState*>(memory);
  requireOk(zebiFastNInit(3, 9, 25, zebFastNScore | zebFastNNonMax, state));
  int bytes = 0, count = 0;
  requireOk(zebiFastNGetBufferSize(gray.size(), state, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  Picture map(gray.width, gray.height, 1), orient = map;
  std::vector<ZebiFastNCorner> corners(gray.pixels.size());
  const double time = bestTime([&] {
    requireOk(zebiFastN_8u_C1R(gray.pixels.data(), gray.step(), map.pixels.data(), map.step(), orient.pixels.data(),
                               orient.step(), gray.size(), state, scratch.data()));
    return zebiFastN2DToVec_8u(map.pixels.data(), map.step(), orient.pixels.data(), orient.step(), gray.size(),
                               corners.data(), static_cast<int>(corners.size()), &count, state);
  });
  corners.resize(count);
  std::stable_sort(corners.begin(), corners.end(), [](auto& a, auto& b) { return a.score > b.score; });
  Picture crosses = backdrop(gray), arrows = crosses;
  const std::vector<ZebiFastNCorner> drawn = spread(corners);
  for (const ZebiFastNCorner& corner : drawn) {
    const auto x = static_cast<float>(corner.x), y = static_cast<float>(corner.y), turn = corner.angle * 0.017453293f;
    support::drawCross(crosses, x, y, 5, red, 1.5f);
    support::drawArrow(arrows, x, y, x + 12 * std::cos(turn), y + 12 * std::sin(turn),
                       corner.polarity > 0 ? yellow : green, 1.5f);
  }
  gallery.add(crosses,
              format("The strongest %d corners of the segment test (FastN), at least 10 pixels apart, of %d.",
                     static_cast<int>(drawn.size()), count),
              time);
  gallery.add(arrows,
              "Their directions (FastN2DToVec): towards the arc, yellow where it is brighter, green where darker.");
}

void showSuppression(const Picture& gray, Gallery& gallery) {
  int bytes = 0;
  requireOk(zebiCannyBorderGetSize(gray.size(), zebFilterSobel, zebMskSize3x3, zeb8u, &bytes));
  std::vector<Zeb8u> scratch(bytes);
  Picture edges(gray.width, gray.height, 1), left = edges;
  requireOk(zebiCannyBorder_8u_C1R(gray.pixels.data(), gray.step(), edges.pixels.data(), edges.step(), gray.size(),
                                   zebFilterSobel, zebMskSize3x3, zebBorderRepl, 0, 120, 300, zebNormL2,
                                   scratch.data()));
  requireOk(zebiLineSuppressionGetBufferSize_8u_C1R(gray.size(), zebMskSize5x5, &bytes));
  scratch.resize(bytes);
  const double time = bestTime([&] {
    return zebiLineSuppression_8u_C1R(edges.pixels.data(), edges.step(), left.pixels.data(), left.step(), gray.size(),
                                      zebMskSize5x5, 0, zebBorderConst, 0, scratch.data());
  });
  gallery.add(edges, "Edges before line suppression (CannyBorder).");
  gallery.add(left, "What line suppression leaves of them (LineSuppression): ends, bends and junctions.", time);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "A corner can be located in both directions: both eigenvalues of the structure tensor are large there, or an arc "
      "of a circle around it is brighter or darker throughout. Line suppression takes out what only follows a straight "
      "line; ends, bends and junctions stay.");
  const Picture& gray = scene.gray;
  const int step = 4 * gray.width;
  showResponse(gray,
               respond(gray, zebiMinEigenValGetBufferSize_8u32f_C1R,
                       [&](Zeb32f* out, Zeb8u* scratch) {
                         return zebiMinEigenVal_8u32f_C1R(gray.pixels.data(), gray.step(), out, step, gray.size(),
                                                          zebFilterSobel, zebMskSize3x3, 5, zebBorderRepl, 0, scratch);
                       }),
               "The %d strongest peaks of the smaller eigenvalue (MinEigenVal), at least 10 pixels apart.", gallery);
  showResponse(gray,
               respond(gray, zebiHarrisCornerGetBufferSize,
                       [&](Zeb32f* out, Zeb8u* scratch) {
                         return zebiHarrisCorner_8u32f_C1R(gray.pixels.data(), gray.step(), out, step, gray.size(),
                                                           zebFilterSobel, zebMskSize3x3, 5, 0.05f, zebBorderRepl, 0,
                                                           scratch);
                       }),
               "The %d strongest peaks of determinant and trace (HarrisCorner), at least 10 pixels apart.", gallery);
  showSegmentTest(gray, gallery);
  showSuppression(gray, gallery);
}

const Section section(55, "Corners", show);

}  // namespace
}  // namespace tour
