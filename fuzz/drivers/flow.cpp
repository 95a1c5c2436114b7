// Optical flow.

#include "function.h"
#include "motion/image_pair.h"

namespace {

using namespace fuzz;
using ref::Plane;

// Smooth waves, 0..1, so that most points can be tracked.
struct Texture {
  explicit Texture(Random& r) {
    for (auto& w : waves)
      for (double& v : w) v = static_cast<double>(r.real(-0.5f, 0.5f));
  }
  double at(double x, double y) const {
    double s = 0;
    for (const auto& w : waves) s += std::sin(w[0] * x + w[1] * y + 6 * w[2]);
    return 0.5 + s / 8.2;
  }
  double waves[4][3];
};

// The pyramids of two pictures: a texture that moves, or any two contents.
template <class T>
struct Pair : test::ImagePair<T> {
  Pair(Choice& c, ZebiSize size, int level, bool smooth) {
    Random random = c.random();
    const Texture texture(random);
    const bool still = c.oneIn(4);
    const double move[2] = {still ? 0 : static_cast<double>(c.real(-2, 2)),
                            still ? 0 : static_cast<double>(c.real(-2, 2))};
    const double top = sizeof(T) == 1 ? 255 : sizeof(T) == 2 ? 60000 : 1;
    for (ZebiPyramid*& pyramid : this->pyramids)
      FUNCTION(zebiPyramidInitAlloc).ok(c, &pyramid, std::max(level, 1), size, 2.0f);
    deepest = std::min(level, this->pyramids[0]->level);
    this->levels.resize(static_cast<size_t>(deepest) + 1);
    for (int side : {0, 1})
      for (int l = 0; l <= deepest; ++l) {
        const ZebiSize roi = this->pyramids[side]->pRoi[l];
        const double scale = 1 << l;
        Plane<T> plane = smooth ? Plane<T>(roi.width, roi.height) : c.plane<T>(roi.width, roi.height);
        for (int y = 0; y < roi.height && smooth; ++y)
          for (int x = 0; x < roi.width; ++x)
            plane.at(x, y) = static_cast<T>(top * texture.at(x * scale - side * move[0], y * scale - side * move[1]));
        this->setLevel(side, l, plane, c.layout<T>());
      }
  }

  int deepest = 0;
};

struct Settings {
  int window, iterations;
  Zeb32f threshold;
};

bool close(const ref::Track& a, const ref::Track& b, double pixels) {
  return a.status == b.status && std::fabs(a.x - b.x) <= pixels && std::fabs(a.y - b.y) <= pixels &&
         std::fabs(a.error - b.error) <= pixels * (1 + std::fabs(a.error));
}

// The reference's track, and whether it is well-posed: moving the point and its guess by little moves it by little. At
// the edges of images and of the basin of convergence the last bits decide.
bool wellPosed(const std::vector<ref::FlowLevel>& levels, ZebiPoint_32f p, ZebiPoint_32f g, const Settings& s,
               ref::Track& track) {
  const auto from = [&](double d, double e) {
    return ref::tracked(levels, static_cast<double>(p.x) + d, static_cast<double>(p.y) + e,
                        static_cast<double>(g.x) + d, static_cast<double>(g.y) - e, s.window, s.iterations,
                        static_cast<double>(s.threshold));
  };
  track = from(0, 0);
  for (const double d : {-3e-4, 3e-4})
    for (const double e : {-3e-4, 3e-4})
      if (!close(from(d, e), track, 4e-3)) return false;
  return true;
}

Zeb32f coordinate(Choice& c, int length, bool smooth) {
  return !smooth && c.oneIn(4) ? c.value<Zeb32f>() : c.real(-3, static_cast<Zeb32f>(length) + 3);
}

template <class T>
void flow(Choice& c, Function<ZebiOptFlowPyrLKState**, ZebiSize, int, int> make,
          Function<ZebiPyramid*, ZebiPyramid*, const ZebiPoint_32f*, ZebiPoint_32f*, Zeb8s*, Zeb32f*, int, int, int,
                   int, Zeb32f, ZebiOptFlowPyrLKState*>
              track,
          Function<ZebiOptFlowPyrLKState*> release) {
  const ZebiSize size = c.size(50, 40);
  const bool smooth = c.coin();
  const Pair<T> pair(c, size, c.within(0, 2), smooth);
  const Settings s = {c.within(1, c.oneIn(4) ? 33 : 17), c.within(1, 4), c.coin() ? 0.01f : c.real(0, 1)};
  const int points = c.within(1, 6);
  const bool whole = c.oneIn(4);  // between no pixels, where nothing moves
  std::vector<ZebiPoint_32f> prev, guess;
  for (int i = 0; i < points; ++i) {
    prev.push_back({coordinate(c, size.width, smooth), coordinate(c, size.height, smooth)});
    guess.push_back({prev.back().x + c.real(-1, 1), prev.back().y + c.real(-1, 1)});
    if (whole) prev.back() = {std::floor(prev.back().x), std::floor(prev.back().y)}, guess.back() = prev.back();
  }
  const auto n = static_cast<size_t>(points);
  const test::GuardedBytes next(n * sizeof(ZebiPoint_32f), test::Place::back), status(n, test::Place::back),
      error(n * sizeof(Zeb32f), test::Place::back);
  memcpy(next.data(), guess.data(), next.size());
  ZebiOptFlowPyrLKState* state = nullptr;
  make.ok(c, &state, size, orElse(s.window, -c.within(0, 1), zebStsErrSize), c.within(0, 2));
  int across = 0, down = 0;
  const ZebiSize larger = {size.width + 5, size.height + 5};
  require(zebiFilterScharrHorizGetBufferSize_32f_C1R(larger, &across) == zebStsOk &&
              zebiFilterScharrVertGetBufferSize_32f_C1R(larger, &down) == zebStsOk,
          "the queries of the derivatives");
  const int levels = larger.width * larger.height * (sizeof(T) == 4 ? 2 : 3);
  require(
      test::zebcore().lastLength == ((s.window * 12 + 36) * (s.window + 3) + std::max(across, down) + levels) * 4 + 36,
      "the bytes of the work buffer");
  const auto* found = reinterpret_cast<const ZebiPoint_32f*>(next.data());
  const auto* lost = reinterpret_cast<const Zeb8s*>(status.data());
  const auto* errors = reinterpret_cast<const Zeb32f*>(error.data());
  track.ok(c, pair.pyramids[0], pair.pyramids[1], prev.data(), reinterpret_cast<ZebiPoint_32f*>(next.data()),
           reinterpret_cast<Zeb8s*>(status.data()), reinterpret_cast<Zeb32f*>(error.data()),
           orElse(points, 0, zebStsErrSize, Check::size), orElse(s.window, s.window + 1, zebStsErrSize, Check::size),
           orElse(pair.deepest, c.coin() ? -1 : INT32_MAX, zebStsErrBadArgument),
           orElse(s.iterations, 0, zebStsErrBadArgument), orElse(s.threshold, -0.1f), state);
  release.ok(c, state);
  for (size_t i = 0; i < n; ++i) {
    const std::string what = "point " + std::to_string(i) + ", window " + std::to_string(s.window) + ": ";
    require(lost[i] >= 0 && lost[i] <= pair.deepest && !(errors[i] < 0) && (lost[i] == 0 || errors[i] == 0),
            what + "status or error");
    ref::Track want = {};
    if (!smooth || s.window < 3 || !wellPosed(pair.levels, prev[i], guess[i], s, want)) continue;
    const ref::Track got = {static_cast<double>(found[i].x), static_cast<double>(found[i].y), lost[i],
                            static_cast<double>(errors[i])};
    require(close(got, want, 0.02), what + std::to_string(got.x) + " " + std::to_string(got.y) + ", not " +
                                        std::to_string(want.x) + " " + std::to_string(want.y) + ", status " +
                                        std::to_string(got.status) + ", not " + std::to_string(want.status));
  }
  bool intact = next.intactMargins() && status.intactMargins() && error.intactMargins();
  for (const auto& image : pair.images) intact = intact && image->intact();
  require(intact, "wrote outside");
}

#define FLOW(form)                                                             \
  DRIVER(                                                                      \
      "motion", "zebiOpticalFlowPyrLK_" #form "_C1R",                          \
      flow<Zeb##form>(c, FUNCTION(zebiOpticalFlowPyrLKInitAlloc_##form##_C1R), \
                      FUNCTION(zebiOpticalFlowPyrLK_##form##_C1R), FUNCTION(zebiOpticalFlowPyrLKFree_##form##_C1R)))
FLOW(8u);
FLOW(16u);
FLOW(32f);

}  // namespace
