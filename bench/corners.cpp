// Corner responses, the segment test, its lists, and the suppression of lines.
#include "reference/corner.h"

#include <memory>

#include "bench.h"
#include "reference/fastn.h"

namespace {

using namespace bench;

// ---- Responses ----

using ref::Corner;

template <class S>
ref::Plane<S> planeOf(const Scene& scene) {
  ref::Plane<S> out(scene.size.width, scene.size.height);
  std::copy(scene.photo.begin(), scene.photo.end(), out.data.begin());
  return out;
}

constexpr Zeb32f trace = 0.04f;

template <class S, class Respond>
Work response(const Scene& scene, Corner kind, int window, Respond respond) {
  struct Held {
    ref::Plane<S> picture;
    Image<S> source;
    Image<Zeb32f> dst;
    Pixels<Zeb8u> scratch;
  };
  const int floats = kind == Corner::eigenValsVecs ? 6 : 1;
  int bytes = 0;
  zebiHarrisCornerGetBufferSize(scene.size, zebFilterSobel, zebMskSize3x3, window, &bytes);
  auto held = std::make_shared<Held>(
      Held{planeOf<S>(scene), scene.imageOf<S>(scene.photo), scene.image<Zeb32f>(floats), Pixels<Zeb8u>(bytes)});
  Work work;
  work.bytes = {sizeof(S), sizeof(Zeb32f) * static_cast<double>(floats)};
  work.run = [=, size = scene.size] {
    return respond(held->source.data(), held->source.step(), held->dst.data(), held->dst.step(), size,
                   held->scratch.data());
  };
  work.check = [=, run = work.run, size = scene.size]() -> std::optional<std::string> {
    held->dst.fill(-1);
    if (auto bad = failure(run())) return bad;
    const auto at = ref::bordered<S>(held->picture, 0, 0, size, zebBorderRepl, S(0));
    const auto tensors = ref::structureTensor(at, size, zebFilterSobel, 3, window);
    return firstDifference(ref::corners(kind, tensors, trace).data, held->dst.compact(), size.width * floats);
  };
  return work;
}

template <class S>
Work minEigenVal(const Scene& scene, int window) {
  return response<S>(scene, Corner::minEigenVal, window,
                     [=](const S* src, int srcStep, Zeb32f* dst, int dstStep, ZebiSize size, Zeb8u* scratch) {
                       if constexpr (sizeof(S) == 1)
                         return zebiMinEigenVal_8u32f_C1R(src, srcStep, dst, dstStep, size, zebFilterSobel,
                                                          zebMskSize3x3, window, zebBorderRepl, 0, scratch);
                       else
                         return zebiMinEigenVal_32f_C1R(src, srcStep, dst, dstStep, size, zebFilterSobel, zebMskSize3x3,
                                                        window, zebBorderRepl, 0, scratch);
                     });
}
Work eigenValsVecs(const Scene& scene) {
  return response<Zeb8u>(scene, Corner::eigenValsVecs, 3,
                         [](const Zeb8u* src, int srcStep, Zeb32f* dst, int dstStep, ZebiSize size, Zeb8u* scratch) {
                           return zebiEigenValsVecs_8u32f_C1R(src, srcStep, dst, dstStep, size, zebFilterSobel,
                                                              zebMskSize3x3, 3, zebBorderRepl, 0, scratch);
                         });
}
Work harris(const Scene& scene) {
  return response<Zeb8u>(scene, Corner::harris, 3,
                         [](const Zeb8u* src, int srcStep, Zeb32f* dst, int dstStep, ZebiSize size, Zeb8u* scratch) {
                           return zebiHarrisCorner_8u32f_C1R(src, srcStep, dst, dstStep, size, zebFilterSobel,
                                                             zebMskSize3x3, 3, trace, zebBorderRepl, 0, scratch);
                         });
}

// ---- The segment test ----

constexpr ref::SegmentTest usual = {3, 9, 20, true, true};

ZebiFastNState* stateIn(Pixels<Zeb8u>& memory) {
  return reinterpret_cast<ZebiFastNState*>(memory.data());
}
Pixels<Zeb8u> usualState() {
  Pixels<Zeb8u> memory(32);
  zebiFastNInit(usual.radius, usual.arcLength, usual.threshold, zebFastNScore | zebFastNNonMax, stateIn(memory));
  return memory;
}

Work segmentTest(const Scene& scene, bool oriented) {
  struct Held {
    ref::Plane<Zeb8u> picture;
    Image<Zeb8u> source, map, orient;
    Pixels<Zeb8u> state, scratch;
  };
  auto held = std::make_shared<Held>(Held{planeOf<Zeb8u>(scene),
                                          scene.imageOf<Zeb8u>(scene.photo),
                                          scene.image<Zeb8u>(),
                                          scene.image<Zeb8u>(),
                                          usualState(),
                                          {}});
  int bytes = 0;
  zebiFastNGetBufferSize(scene.size, stateIn(held->state), &bytes);
  held->scratch.resize(bytes);
  Work work;
  work.bytes = {1, oriented ? 2.0 : 1.0};
  work.run = [=, size = scene.size] {
    return zebiFastN_8u_C1R(held->source.data(), held->source.step(), held->map.data(), held->map.step(),
                            oriented ? held->orient.data() : nullptr, held->orient.step(), size, stateIn(held->state),
                            held->scratch.data());
  };
  work.check = [=, run = work.run, size = scene.size]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    ref::Plane<Zeb8u> map(size.width, size.height), orient = map;
    usual.run(held->picture, &map, &orient);
    if (auto bad = firstDifference(map.data, held->map.compact(), size.width)) return bad;
    return oriented ? firstDifference(orient.data, held->orient.compact(), size.width) : std::nullopt;
  };
  return work;
}

// Nonzero in so many of a hundred pixels.
Pixels<Zeb8u> sparse(const Scene& scene, int percent) {
  const auto draws = randomPixels<Zeb16u>(scene.count(), 0, 9999, 7);
  Pixels<Zeb8u> out(draws.size());
  for (size_t i = 0; i < out.size(); ++i)
    out[i] = draws[i] < 100 * percent ? static_cast<Zeb8u>(1 + draws[i] % 255) : 0;
  return out;
}

Work list(const Scene& scene) {
  struct Held {
    Pixels<Zeb8u> pixels;
    Image<Zeb8u> map;
    Pixels<Zeb8u> state;
    std::vector<ZebiFastNCorner> corners;
    int count = 0;
  };
  auto held = std::make_shared<Held>(Held{sparse(scene, 1), {}, usualState(), {}});
  held->map = scene.imageOf<Zeb8u>(held->pixels);
  held->corners.resize(held->pixels.size());
  Work work;
  work.bytes = {1};
  work.run = [=, size = scene.size] {
    return zebiFastN2DToVec_8u(held->map.data(), held->map.step(), nullptr, 0, size, held->corners.data(),
                               static_cast<int>(held->corners.size()), &held->count, stateIn(held->state));
  };
  work.check = [=, run = work.run, size = scene.size]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    int k = 0;
    for (int i = 0; i < size.width * size.height; ++i) {
      if (held->pixels[i] == 0) continue;
      const ZebiFastNCorner want = {i % size.width, i / size.width, held->pixels[i], 0, 0};
      if (k == held->count || std::memcmp(&want, &held->corners[k], sizeof want) != 0)
        return "corner " + std::to_string(k);
      ++k;
    }
    if (k != held->count) return "number of corners";
    return std::nullopt;
  };
  return work;
}

Work suppression(const Scene& scene, int reach) {
  struct Held {
    Pixels<Zeb8u> pixels;
    Image<Zeb8u> source, dst;
    Pixels<Zeb8u> scratch;
  };
  const int mask = reach == 1 ? zebMskSize3x3 : zebMskSize5x5;
  constexpr Zeb8u tolerance = 20;
  int bytes = 0;
  zebiLineSuppressionGetBufferSize_8u_C1R(scene.size, mask, &bytes);
  auto held = std::make_shared<Held>(Held{sparse(scene, 2), {}, scene.image<Zeb8u>(), Pixels<Zeb8u>(bytes)});
  held->source = scene.imageOf<Zeb8u>(held->pixels);
  Work work;
  work.bytes = {1, 1};
  work.run = [=, size = scene.size] {
    return zebiLineSuppression_8u_C1R(held->source.data(), held->source.step(), held->dst.data(), held->dst.step(),
                                      size, mask, tolerance, zebBorderConst, 0, held->scratch.data());
  };
  work.check = [=, run = work.run, size = scene.size]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto at = [&](int x, int y) -> int {
      const bool inside = x >= 0 && y >= 0 && x < size.width && y < size.height;
      return inside ? held->pixels[static_cast<size_t>(y) * size.width + x] : 0;
    };
    Pixels<Zeb8u> want;
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) want.push_back(ref::withoutLine(at, x, y, reach, tolerance));
    return firstDifference(want, held->dst.compact(), size.width);
  };
  return work;
}

const Family family(
    57, "Corners",
    {{"MinEigenVal 8u32f, Sobel 3x3, window 3", timesMemcpy(28),
      [](const Scene& s) { return minEigenVal<Zeb8u>(s, 3); }},
     {"MinEigenVal 8u32f, Sobel 3x3, window 15", timesMemcpy(34),
      [](const Scene& s) { return minEigenVal<Zeb8u>(s, 15); }},
     {"MinEigenVal 32f, Sobel 3x3, window 3", timesMemcpy(34),
      [](const Scene& s) { return minEigenVal<Zeb32f>(s, 3); }},
     {"HarrisCorner 8u32f, Sobel 3x3, window 3", timesMemcpy(26), harris},
     {"EigenValsVecs 8u32f, Sobel 3x3, window 3", timesMemcpy(50), eigenValsVecs},
     {"FastN 8u, radius 3, arc 9, scores, maxima", timesMemcpy(15),
      [](const Scene& s) { return segmentTest(s, false); }},
     {"FastN 8u, the same with orientation", timesMemcpy(17), [](const Scene& s) { return segmentTest(s, true); }},
     {"LineSuppression 8u 3x3, 2 in 100 nonzero", timesMemcpy(3), [](const Scene& s) { return suppression(s, 1); }},
     {"LineSuppression 8u 5x5, 2 in 100 nonzero", timesMemcpy(3), [](const Scene& s) { return suppression(s, 2); }},
     {"FastN2DToVec 8u, 1 in 100 nonzero", timesMemcpy(2.5), list}});

}  // namespace
