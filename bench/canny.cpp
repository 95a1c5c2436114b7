// The Canny detector.
#include "reference/canny.h"

#include <algorithm>
#include <memory>

#include "bench.h"

namespace {

using namespace bench;

ref::Plane<Zeb8u> picture(const Scene& scene) {
  ref::Plane<Zeb8u> p(scene.size.width, scene.size.height);
  std::copy(scene.photo.begin(), scene.photo.end(), p.data.begin());
  return p;
}

ref::Gradient<Zeb16s> sobel(const ref::Plane<Zeb8u>& photo, ZebiSize size) {
  return ref::gradient<Zeb8u, Zeb16s>(ref::bordered<Zeb8u>(photo, 0, 0, size, zebBorderRepl, 0), size, zebFilterSobel,
                                      3);
}

// Thresholds at which about 7 pixels in 100 come out as edges: the high one is halved until they do.
struct Thresholds {
  float low, high;
};
template <class Edges>
Thresholds thresholds(const Scene& scene, Edges edges) {
  Thresholds t = {400, 1000};
  for (int step = 0; step < 40; ++step) {
    const auto out = edges(t.low, t.high);
    const auto count = std::count(out.begin(), out.end(), Zeb8u(255));
    if (count * 100 >= 7 * static_cast<long>(scene.count()) || t.high < 2) break;
    t.high *= 0.8f, t.low = 0.4f * t.high;
  }
  return t;
}

Work derivatives(const Scene& scene) {
  const auto g = std::make_shared<ref::Gradient<Zeb16s>>(sobel(picture(scene), scene.size));
  int bytes = 0;
  zebiCannyGetSize(scene.size, &bytes);
  auto scratch = std::make_shared<Pixels<Zeb8u>>(bytes);
  auto dst = std::make_shared<Image<Zeb8u>>(scene.image<Zeb8u>());
  auto dx = std::make_shared<Image<Zeb16s>>(scene.imageOf<Zeb16s>(g->dx.data));
  auto dy = std::make_shared<Image<Zeb16s>>(scene.imageOf<Zeb16s>(g->dy.data));
  const auto call = [=, &scene](float low, float high) {
    return zebiCanny_16s8u_C1R(dx->data(), dx->step(), dy->data(), dy->step(), dst->data(), dst->step(), scene.size,
                               low, high, scratch->data());
  };
  const Thresholds t = thresholds(scene, [&](float low, float high) { return call(low, high), dst->compact(); });
  Work work;
  work.bytes = {4, 1};
  work.run = [=] { return call(t.low, t.high); };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    return firstDifference(ref::canny(*g, t.low, t.high, ref::CannyKind::derivatives16s).data, dst->compact(),
                           g->dx.width);
  };
  return work;
}

Work border(const Scene& scene, int norm) {
  int bytes = 0;
  zebiCannyBorderGetSize(scene.size, zebFilterSobel, zebMskSize3x3, zeb8u, &bytes);
  auto scratch = std::make_shared<Pixels<Zeb8u>>(bytes);
  auto dst = std::make_shared<Image<Zeb8u>>(scene.image<Zeb8u>());
  const auto call = [=, &scene](float low, float high) {
    return zebiCannyBorder_8u_C1R(scene.source.data(), scene.source.step(), dst->data(), dst->step(), scene.size,
                                  zebFilterSobel, zebMskSize3x3, zebBorderRepl, 0, low, high, norm, scratch->data());
  };
  const Thresholds t = thresholds(scene, [&](float low, float high) { return call(low, high), dst->compact(); });
  Work work;
  work.bytes = {1, 1};
  work.run = [=] { return call(t.low, t.high); };
  work.check = [=, &scene, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto g = sobel(picture(scene), scene.size);
    const auto kind = norm == zebNormL1 ? ref::CannyKind::borderL1 : ref::CannyKind::borderL2;
    return firstDifference(ref::canny(g, t.low, t.high, kind).data, dst->compact(), g.dx.width);
  };
  return work;
}

const Family family(
    50, "Edges",
    {{"Canny 16s8u", timesMemcpy(30), derivatives},
     {"CannyBorder 8u, Sobel 3x3, L1", timesMemcpy(32), [](const Scene& s) { return border(s, zebNormL1); }},
     {"CannyBorder 8u, Sobel 3x3, L2", timesMemcpy(32), [](const Scene& s) { return border(s, zebNormL2); }}});

}  // namespace
