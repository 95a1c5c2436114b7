// Integral images, window deviations and Haar stages.
#include "reference/integral.h"

#include <memory>

#include "bench.h"
#include "reference/haar.h"

namespace {

using namespace bench;

constexpr int window = 24;

ref::Plane<Zeb8u> picture(const Scene& scene, int margin = 0) {
  ref::Plane<Zeb8u> p(scene.size.width + margin, scene.size.height + margin);
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x)
      p.at(x, y) = scene.photo[static_cast<size_t>(y % scene.size.height) * scene.size.width + x % scene.size.width];
  return p;
}

// A table has a few rows and columns more than its image.
template <class T>
Image<T> table(const Scene& scene, int extra) {
  return Image<T>({scene.size.width + extra, scene.size.height + extra}, scene.stride + extra);
}
template <class T>
Image<T> table(const Scene& scene, const ref::Plane<T>& plane) {
  Image<T> out({plane.width, plane.height}, scene.stride + plane.width - scene.size.width);
  out.set(plane.data);
  return out;
}

struct Tables {
  Image<Zeb32s> sums;
  Image<Zeb64f> squares;
};

Work integral(const Scene& scene) {
  auto sums = std::make_shared<Image<Zeb32s>>(table<Zeb32s>(scene, 1));
  Work work;
  work.bytes = {1, 4};
  work.run = [=, &scene] {
    return zebiIntegral_8u32s_C1R(scene.source.data(), scene.source.step(), sums->data(), sums->step(), scene.size, 0);
  };
  work.check = [=, run = work.run, &scene]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    return firstDifference(ref::integral<Zeb32s>(picture(scene), 0, false).data, sums->compact(), scene.size.width + 1);
  };
  return work;
}

template <class Call>
Work squareTables(const Scene& scene, int extra, bool tilted, Call call) {
  const int w = scene.size.width + extra, h = scene.size.height + extra;
  auto tables = std::make_shared<Tables>(Tables{table<Zeb32s>(scene, extra), table<Zeb64f>(scene, extra)});
  Work work;
  work.bytes = {1, 12};
  work.run = [=, &scene] {
    return call(scene.source.data(), scene.source.step(), tables->sums.data(), tables->sums.step(),
                tables->squares.data(), tables->squares.step(), scene.size, 0, 0.0);
  };
  work.check = [=, run = work.run, &scene]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto p = picture(scene);
    const auto sums = tilted ? ref::tiltedIntegral<Zeb32s>(p, 0, false, ref::Plane<Zeb32s>(w, h), false)
                             : ref::integral<Zeb32s>(p, 0, false);
    const auto squares = tilted ? ref::tiltedIntegral<Zeb64f>(p, 0, true, ref::Plane<Zeb64f>(w, h), false)
                                : ref::integral<Zeb64f>(p, 0, true);
    if (auto bad = firstDifference(sums.data, tables->sums.compact(), w)) return bad;
    return firstDifference(squares.data, tables->squares.compact(), w);
  };
  return work;
}

Work deviation(const Scene& scene) {
  const auto sums = ref::integral<Zeb32s>(picture(scene, window), 0, false);
  const auto squares = ref::integral<Zeb64f>(picture(scene, window), 0, true);
  auto tables = std::make_shared<Tables>(Tables{table(scene, sums), table(scene, squares)});
  auto dst = std::make_shared<Image<Zeb32f>>(scene.image<Zeb32f>());
  const ZebiRect rect = {0, 0, window, window};
  Work work;
  work.bytes = {12, 4};
  work.run = [=, &scene] {
    return zebiRectStdDev_32s32f_C1R(tables->sums.data(), tables->sums.step(), tables->squares.data(),
                                     tables->squares.step(), dst->data(), dst->step(), scene.size, rect);
  };
  work.check = [=, run = work.run, &scene]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    ref::Plane<Zeb32f> want(scene.size.width, scene.size.height);
    for (int y = 0; y < want.height; ++y)
      for (int x = 0; x < want.width; ++x)
        want.at(x, y) = ref::deviation(ref::variance(false, sums, squares, x, y, rect));
    return firstDifference(want.data, dst->compact(), want.width);
  };
  return work;
}

// Ten classifiers of a window-filling rectangle and a part of it.
ref::HaarStage<Zeb32f> stage(int classifiers, float threshold) {
  ref::HaarStage<Zeb32f> s;
  for (int i = 0; i < classifiers; ++i) {
    s.features.push_back({i % 3, i % 4, 20, 20});
    s.features.push_back({4 + i % 5, 3 + i % 7, 10, 8});
    s.weights.insert(s.weights.end(), {-1.0f, 5.0f});
    s.thresholds.push_back(threshold * static_cast<float>(i % 4 - 1));
    s.values1.push_back(0.25f * static_cast<float>(i % 3));
    s.values2.push_back(1.0f);
    s.counts.push_back(2);
    s.tilted.push_back(false);
  }
  return s;
}

using State = std::shared_ptr<ZebiHaarClassifier>;

State build(const ref::HaarStage<Zeb32f>& s) {
  ZebiHaarClassifier* state = nullptr;
  zebiHaarClassifierInitAlloc_32f(&state, s.features.data(), s.weights.data(), s.thresholds.data(), s.values1.data(),
                                  s.values2.data(), s.counts.data(), static_cast<int>(s.counts.size()));
  return State(state, [](ZebiHaarClassifier* p) { zebiHaarClassifierFree_32f(p); });
}

// Runs stages one after the other over the same mask, which starts full.
Work cascade(const Scene& scene, std::vector<ref::HaarStage<Zeb32f>> stages, std::vector<Zeb32f> thresholds) {
  const auto sums = ref::integral<Zeb32s>(picture(scene, window), 0, false);
  auto corners = std::make_shared<Image<Zeb32s>>(table(scene, sums));
  const Pixels<Zeb32f> norms = randomPixels<Zeb32f>(scene.count(), 5, 60, 3);
  auto norm = std::make_shared<Image<Zeb32f>>(scene.imageOf<Zeb32f>(norms));
  auto mask = std::make_shared<Image<Zeb8u>>(scene.image<Zeb8u>());
  std::vector<State> states;
  for (const auto& s : stages) states.push_back(build(s));
  Work work;
  work.bytes = {8, 0, 1};
  work.run = [=, &scene] {
    mask->fill(1);
    for (size_t i = 0; i < states.size(); ++i) {
      int positive = 0;
      if (const ZebStatus bad = zebiApplyHaarClassifier_32s32f_C1R(corners->data(), corners->step(), norm->data(),
                                                                   norm->step(), mask->data(), mask->step(), scene.size,
                                                                   &positive, thresholds[i], states[i].get()))
        return bad;
    }
    return ZebStatus(zebStsOk);
  };
  work.check = [=, run = work.run, &scene]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    Pixels<Zeb8u> want(scene.count(), 1);
    const int width = scene.size.width;
    for (size_t i = 0; i < want.size(); ++i)
      for (size_t k = 0; k < stages.size() && want[i]; ++k)
        want[i] = ref::passes(stages[k], sums, sums, static_cast<int>(i) % width, static_cast<int>(i) / width, norms[i],
                              thresholds[k]);
    return firstDifference(want, mask->compact(), width);
  };
  return work;
}

Work fullStage(const Scene& scene) {
  return cascade(scene, {stage(10, 40)}, {-1000.0f});
}

// Each stage keeps about a third of the windows of the one before.
Work thinningCascade(const Scene& scene) {
  return cascade(scene, {stage(3, 40), stage(6, 40), stage(10, 60), stage(16, 80), stage(24, 80)},
                 {2.4f, 4.8f, 7.4f, 12.0f, 18.0f});
}

const Family family(20, "Integral images and Haar stages",
                    {{"Integral 8u32s", timesMemcpy(4.0), integral},
                     {"SqrIntegral 8u32s64f", timesMemcpy(12),
                      [](const Scene& s) { return squareTables(s, 1, false, zebiSqrIntegral_8u32s64f_C1R); }},
                     {"TiltedSqrIntegral 8u32s64f", timesMemcpy(18),
                      [](const Scene& s) { return squareTables(s, 2, true, zebiTiltedSqrIntegral_8u32s64f_C1R); }},
                     {"RectStdDev 32s32f, 24 x 24 window", timesMemcpy(14), deviation},
                     {"Haar stage, 10 classifiers of 2 rectangles, every pixel set", timesMemcpy(200), fullStage},
                     {"Haar cascade of 5 stages that thin the mask out, per window", noTarget(), thinningCascade}});

}  // namespace
