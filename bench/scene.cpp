// Models of a scene: learning and telling the foreground of frames of the photograph with noise.
#include "reference/scene.h"

#include <memory>

#include "bench.h"

namespace {

using namespace bench;

// Frames of a scene at rest, at most two levels of noise.
std::vector<Pixels<Zeb8u>> noisyFrames(const Scene& scene, int channels) {
  std::vector<Pixels<Zeb8u>> frames(4);
  std::minstd_rand random(1);
  for (auto& frame : frames) {
    frame.resize(static_cast<size_t>(scene.count()) * static_cast<size_t>(channels));
    for (size_t i = 0; i < frame.size(); ++i) {
      const int v = scene.photo[i / static_cast<size_t>(channels)] + static_cast<int>(random() >> 8) % 5 - 2;
      frame[i] = static_cast<Zeb8u>(std::clamp(v, 0, 255));
    }
  }
  return frames;
}
ref::Pixel pixel(const Pixels<Zeb8u>& frame, size_t i, int channels) {
  ref::Pixel x{};
  for (int c = 0; c < channels; ++c)
    x[static_cast<size_t>(c)] = frame[i * static_cast<size_t>(channels) + static_cast<size_t>(c)];
  return x;
}

template <class State, class Param>
struct Model {
  ZebStatus (*start)(State**, const Zeb8u*, int, ZebiSize, const Param*);
  ZebStatus (*foreground)(const Zeb8u*, int, Zeb8u*, int, ZebiSize, const State*);
  ZebStatus (*update)(const Zeb8u*, int, const Zeb8u*, int, ZebiSize, State*);
  ZebStatus (*release)(State*);
};

// The record after some frames; what it says of the last of them is the reference's.
template <class Pixel, class State, class Param>
Work learned(const Scene& scene, int channels, bool learning, Bytes bytes, const Param& param,
             const Model<State, Param>& model) {
  struct Held {
    const Model<State, Param> model;
    std::vector<Image<Zeb8u>> frames;
    Image<Zeb8u> map;
    State* state = nullptr;
    size_t next = 0;
    ~Held() {
      if (state) model.release(state);
    }
  };
  auto held = std::make_shared<Held>(Held{model, {}, scene.image<Zeb8u>()});
  const auto frames = noisyFrames(scene, channels);
  for (const auto& frame : frames) held->frames.push_back(scene.imageOf<Zeb8u>(frame, channels));
  const ZebiSize size = scene.size;
  const auto update = [=](size_t k) {
    const Image<Zeb8u>& frame = held->frames[k % held->frames.size()];
    return model.update(frame.data(), frame.step(), nullptr, 0, size, held->state);
  };
  const auto foreground = [=] {
    const Image<Zeb8u>& frame = held->frames[0];
    return model.foreground(frame.data(), frame.step(), held->map.data(), held->map.step(), size, held->state);
  };
  model.start(&held->state, held->frames[0].data(), held->frames[0].step(), size, &param);
  Work work;
  work.bytes = bytes;
  work.run = [=] { return learning ? update(held->next++) : foreground(); };
  work.check = [=]() -> std::optional<std::string> {
    model.release(held->state);
    if (auto bad = failure(model.start(&held->state, held->frames[0].data(), held->frames[0].step(), size, &param)))
      return bad;
    for (size_t k = 1; k < 4; ++k)
      if (auto bad = failure(update(k))) return bad;
    if (auto bad = failure(foreground())) return bad;
    Pixels<Zeb8u> wanted;
    for (size_t i = 0; i < static_cast<size_t>(scene.count()); ++i) {
      Pixel p(param, pixel(frames[0], i, channels), channels);
      for (size_t k = 1; k < 4; ++k) p.learn(param, pixel(frames[k], i, channels), channels, static_cast<int>(k));
      wanted.push_back(p.foreground(param, pixel(frames[0], i, channels), channels) ? 255 : 0);
    }
    return firstDifference(wanted, held->map.compact(), size.width);
  };
  return work;
}

const ZebiFGHistogramParam histogramParam = {5, 1, 0.01f, 0.05f};
const ZebiFGGaussianParam gaussianParam = {0.005f, 3.5f, 100, 4};
const ZebiFGMixtureParam mixtureParam = {5, 3, 4, 0.9f, 0.05f, 100, 12, 300};

using Histogram = Model<ZebiFGHistogramState, ZebiFGHistogramParam>;
using Gaussian = Model<ZebiFGGaussianState, ZebiFGGaussianParam>;
const Histogram histograms[] = {{zebiFGHistogramInitAlloc_8u_C1R, zebiFGHistogramForeground_8u_C1R,
                                 zebiFGHistogramUpdate_8u_C1R, zebiFGHistogramFree_8u_C1R},
                                {zebiFGHistogramInitAlloc_8u_C3R, zebiFGHistogramForeground_8u_C3R,
                                 zebiFGHistogramUpdate_8u_C3R, zebiFGHistogramFree_8u_C3R}};
const Gaussian gaussians[] = {{zebiFGGaussianInitAlloc_8u_C1R, zebiFGGaussianForeground_8u_C1R,
                               zebiFGGaussianUpdate_8u_C1R, zebiFGGaussianFree_8u_C1R},
                              {zebiFGGaussianInitAlloc_8u_C3R, zebiFGGaussianForeground_8u_C3R,
                               zebiFGGaussianUpdate_8u_C3R, zebiFGGaussianFree_8u_C3R}};

// keeps: the bytes of a pixel in the record.
Bytes bytesOf(int channels, bool learning, double keeps) {
  return learning ? Bytes{1.0 * channels, 0, keeps} : Bytes{keeps + channels, 1};
}
Work histogram(const Scene& s, int channels, bool learning) {
  return learned<ref::HistogramPixel>(s, channels, learning, bytesOf(channels, learning, 32), histogramParam,
                                      histograms[channels / 3]);
}
Work gaussian(const Scene& s, int channels, bool learning) {
  return learned<ref::GaussianPixel>(s, channels, learning, bytesOf(channels, learning, 8.0 * channels), gaussianParam,
                                     gaussians[channels / 3]);
}

// Most pixels keep one component.
Work mixture(const Scene& scene, bool background) {
  struct Held {
    std::vector<Image<Zeb8u>> frames;
    Image<Zeb8u> map, heaviest;
    Pixels<Zeb8u> record;
    size_t next = 0;
    ZebiFGMixtureState* state() { return reinterpret_cast<ZebiFGMixtureState*>(record.data()); }
  };
  auto held = std::make_shared<Held>();
  const auto frames = noisyFrames(scene, 3);
  for (const auto& frame : frames) held->frames.push_back(scene.imageOf<Zeb8u>(frame, 3));
  held->map = scene.image<Zeb8u>();
  held->heaviest = scene.image<Zeb8u>(3);
  const ZebiSize size = scene.size;
  int bytes = 0;
  zebiFGMixtureGetBufferSize_8u_C3R(size, mixtureParam.maxComponents, &bytes);
  held->record.resize(static_cast<size_t>(bytes));
  const auto start = [=] {
    return zebiFGMixtureInit_8u_C3R(held->frames[0].data(), held->frames[0].step(), size, &mixtureParam, held->state());
  };
  const auto foreground = [=](size_t k) {
    const Image<Zeb8u>& frame = held->frames[k % held->frames.size()];
    return zebiFGMixtureForeground_8u_C3R(frame.data(), frame.step(), held->map.data(), held->map.step(), size, 0.01f,
                                          held->state());
  };
  const auto mean = [=] {
    return zebiFGMixtureBackground_8u_C3R(held->heaviest.data(), held->heaviest.step(), size, held->state());
  };
  start();
  Work work;
  work.bytes = background ? Bytes{20, 3} : Bytes{3, 1, 20};
  work.run = [=] { return background ? mean() : foreground(held->next++); };
  work.check = [=]() -> std::optional<std::string> {
    if (auto bad = failure(start())) return bad;
    for (size_t k = 1; k < 4; ++k)
      if (auto bad = failure(foreground(k))) return bad;
    if (auto bad = failure(mean())) return bad;
    Pixels<Zeb8u> map, heaviest;
    for (size_t i = 0; i < static_cast<size_t>(scene.count()); ++i) {
      ref::MixturePixel p(mixtureParam, pixel(frames[0], i, 3));
      for (size_t k = 1; k < 4; ++k) {
        const ref::Pixel x = pixel(frames[k], i, 3);
        if (k == 3) map.push_back(p.foreground(mixtureParam, x) ? 255 : 0);
        p.learn(mixtureParam, x, 0.01f, static_cast<int>(k));
      }
      for (const float m : p.components[0].mean) heaviest.push_back(static_cast<Zeb8u>(std::nearbyint(m)));
    }
    if (auto bad = firstDifference(map, held->map.compact(), size.width)) return bad;
    return firstDifference(heaviest, held->heaviest.compact(), 3 * size.width);
  };
  return work;
}

const Family family(
    85, "Models of a scene",
    {{"FGHistogramUpdate 8u C1R", timesMemcpy(50), [](const Scene& s) { return histogram(s, 1, true); }},
     {"FGHistogramUpdate 8u C3R", timesMemcpy(80), [](const Scene& s) { return histogram(s, 3, true); }},
     {"FGHistogramForeground 8u C1R", timesMemcpy(60), [](const Scene& s) { return histogram(s, 1, false); }},
     {"FGHistogramForeground 8u C3R", timesMemcpy(100), [](const Scene& s) { return histogram(s, 3, false); }},
     {"FGGaussianUpdate 8u C1R", timesMemcpy(7), [](const Scene& s) { return gaussian(s, 1, true); }},
     {"FGGaussianUpdate 8u C3R", timesMemcpy(50), [](const Scene& s) { return gaussian(s, 3, true); }},
     {"FGGaussianForeground 8u C1R", timesMemcpy(8), [](const Scene& s) { return gaussian(s, 1, false); }},
     {"FGGaussianForeground 8u C3R", timesMemcpy(50), [](const Scene& s) { return gaussian(s, 3, false); }},
     {"FGMixtureForeground 8u C3R, learning", timesMemcpy(200), [](const Scene& s) { return mixture(s, false); }},
     {"FGMixtureBackground 8u C3R", timesMemcpy(55), [](const Scene& s) { return mixture(s, true); }}});

}  // namespace
