// Pyramids, optical flow and motion history.
#include <algorithm>
#include <cmath>
#include <memory>

#include "bench.h"
#include "motion/tracker.h"
#include "reference/flow.h"
#include "reference/gauss_pyramid.h"
#include "reference/history.h"
#include "reference/layers.h"

namespace {

using namespace bench;

template <class T>
using Resize = ZebStatus (*)(const T*, int, T*, int, ZebiSize, Zeb8u*);

// The photograph in any number of equal channels.
template <class T>
ref::Plane<T> photograph(const Scene& scene, int channels) {
  ref::Plane<T> plane(scene.size.width, scene.size.height, channels);
  for (size_t i = 0; i < plane.data.size(); ++i)
    plane.data[i] = static_cast<T>(scene.photo[i / static_cast<size_t>(channels)]);
  return plane;
}

template <class T>
Work resize(const Scene& scene, Resize<T> call, ZebStatus (*query)(int, ZebDataType, int, int*), int channels,
            bool down) {
  struct State {
    Image<T> src, dst;
    Pixels<Zeb8u> scratch;
  };
  const ZebiSize in = scene.size;
  const ZebiSize out = down ? ZebiSize{(in.width + 1) / 2, (in.height + 1) / 2} : ZebiSize{2 * in.width, 2 * in.height};
  int bytes = 0;
  query(in.width, sizeof(T) == 4 ? zeb32f : zeb8u, channels, &bytes);
  const ref::Plane<T> plane = photograph<T>(scene, channels);
  auto state = std::make_shared<State>(State{scene.imageOf<T>(plane.data, channels),
                                             Image<T>(out, down ? (scene.stride + 1) / 2 : 2 * scene.stride, channels),
                                             Pixels<Zeb8u>(bytes)});
  const int size = static_cast<int>(sizeof(T)) * channels;
  Work work;
  work.bytes = {1.0 * size, (down ? 0.25 : 4.0) * size};
  work.run = [=] {
    return call(state->src.data(), state->src.step(), state->dst.data(), state->dst.step(), in, state->scratch.data());
  };
  work.check = [=]() -> std::optional<std::string> {
    if (auto bad = failure(work.run())) return bad;
    const ref::Plane<T> wanted = down ? ref::halved(plane) : ref::doubled(plane);
    return firstDifference(wanted.data, state->dst.compact(), out.width * channels);
  };
  return work;
}

Work layerDown(const Scene& scene) {
  struct State {
    Image<Zeb8u> dst;
    ZebiPyramidDownState* layer = nullptr;
    ~State() { zebiPyramidLayerDownFree_8u_C1R(layer); }
  };
  const std::vector<Zeb16s> kernel = {1, 4, 6, 4, 1};
  const ZebiSize in = scene.size;
  ZebiSize out = {};
  zebiGetPyramidDownROI(in, &out, 1.5f);
  auto state = std::make_shared<State>();
  zebiPyramidLayerDownInitAlloc_8u_C1R(&state->layer, in, 1.5f, kernel.data(), 5, zebInterLinear);
  state->dst = Image<Zeb8u>(out, out.width + (scene.stride - in.width) * 2 / 3);
  Work work;
  work.bytes = {1, 1 / 2.25};
  work.run = [=, &scene] {
    return zebiPyramidLayerDown_8u_C1R(scene.source.data(), scene.source.step(), in, state->dst.data(),
                                       state->dst.step(), out, state->layer);
  };
  work.check = [=, &scene]() -> std::optional<std::string> {
    if (auto bad = failure(work.run())) return bad;
    ref::Plane<double> exact(in.width, in.height);
    std::copy(scene.photo.begin(), scene.photo.end(), exact.data.begin());
    exact = ref::layerRead(ref::layerSmoothed(exact, ref::layerWeights(kernel, 13, false)), out.width, out.height, 1.5);
    const Pixels<Zeb8u> actual = state->dst.compact();
    for (size_t i = 0; i < exact.data.size(); ++i)
      if (std::fabs(exact.data[i] - actual[i]) > 0.51) return "off by more than rounding at " + std::to_string(i);
    return std::nullopt;
  };
  return work;
}

// The photograph and the photograph moved by (3, 2); 1000 points on a grid.
template <class T, class Down>
Work flow(const Scene& scene, ZebDataType type, Down down, const test::Tracker<T>& tracker) {
  constexpr int levels = 4, window = 11, moveX = 3, moveY = 2;
  struct State {
    ZebiPyramid* pyramids[2] = {};
    ZebiOptFlowPyrLKState* tracker = nullptr;
    Image<T> images[2][levels];
    std::vector<ZebiPoint_32f> prev, next;
    std::vector<Zeb8s> status;
    std::vector<Zeb32f> error;
    ZebStatus (*release)(ZebiOptFlowPyrLKState*) = nullptr;
    ~State() {
      for (ZebiPyramid* pyramid : pyramids) zebiPyramidFree(pyramid);
      release(tracker);
    }
  };
  auto state = std::make_shared<State>();
  state->release = tracker.release;
  const ZebiSize size = scene.size;
  int bytes = 0;
  zebiPyrDownGetBufSize_Gauss5x5(size.width, type, 1, &bytes);
  Pixels<Zeb8u> scratch(bytes);
  for (int side : {0, 1}) {
    zebiPyramidInitAlloc(&state->pyramids[side], levels - 1, size, 2.0f);
    auto& images = state->images[side];
    images[0] = scene.image<T>();
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x)
        images[0].row(y)[x] = static_cast<T>(scene.photo[std::clamp(y - side * moveY, 0, size.height - 1) * size.width +
                                                         std::clamp(x - side * moveX, 0, size.width - 1)]);
    const ZebiPyramid& pyramid = *state->pyramids[side];
    for (int l = 0; l <= pyramid.level; ++l) {
      const ZebiSize roi = pyramid.pRoi[l];
      if (l > 0) {
        images[l] = Image<T>(roi, (scene.stride + (1 << l) - 1) >> l);
        down(images[l - 1].data(), images[l - 1].step(), images[l].data(), images[l].step(), pyramid.pRoi[l - 1],
             scratch.data());
      }
      pyramid.pImage[l] = reinterpret_cast<Zeb8u*>(images[l].data());
      pyramid.pStep[l] = images[l].step();
    }
  }
  tracker.make(&state->tracker, size, window, 0);
  const int margin = std::min(40, size.height / 4);
  for (int i = 0; i < 1000; ++i)
    state->prev.push_back({static_cast<float>(margin) + static_cast<float>(i % 40 * (size.width - 2 * margin)) / 39,
                           static_cast<float>(margin) + static_cast<float>(i / 40 * (size.height - 2 * margin)) / 24});
  state->next = state->prev;
  state->status.resize(1000);
  state->error.resize(1000);
  Work work;
  work.run = [=, track = tracker.track] {
    state->next = state->prev;
    return track(state->pyramids[0], state->pyramids[1], state->prev.data(), state->next.data(), state->status.data(),
                 state->error.data(), 1000, window, levels - 1, 10, 0.03f, state->tracker);
  };
  work.check = [=]() -> std::optional<std::string> {
    if (auto bad = failure(work.run())) return bad;
    int right = 0;
    for (size_t i = 0; i < 1000; ++i)
      right += state->status[i] == 0 && std::fabs(state->next[i].x - state->prev[i].x - moveX) < 0.2f &&
               std::fabs(state->next[i].y - state->prev[i].y - moveY) < 0.2f;
    if (right < 600) return "only " + std::to_string(right) + " of 1000 points follow the motion";
    return std::nullopt;
  };
  return work;
}

Work history(const Scene& scene) {
  const Pixels<Zeb8u> moved = randomPixels<Zeb8u>(scene.count(), 0, 1, 7);
  auto silhouette = std::make_shared<Image<Zeb8u>>(scene.imageOf<Zeb8u>(moved));
  auto times = std::make_shared<Image<Zeb32f>>(scene.image<Zeb32f>());
  const ZebiSize size = scene.size;
  Work work;
  work.bytes = {1, 0, 4};
  work.run = [=] {
    return zebiUpdateMotionHistory_8u32f_C1IR(silhouette->data(), silhouette->step(), times->data(), times->step(),
                                              size, 10.0f, 3.0f);
  };
  work.check = [=]() -> std::optional<std::string> {
    ref::Plane<Zeb32f> before(size.width, size.height);
    for (size_t i = 0; i < before.data.size(); ++i) before.data[i] = static_cast<float>(i % 12);
    times->set(before.data);
    ref::Plane<Zeb8u> mask(size.width, size.height);
    std::copy(moved.begin(), moved.end(), mask.data.begin());
    if (auto bad = failure(work.run())) return bad;
    return firstDifference(ref::motionHistory(mask, before, 10.0f, 3.0f).data, times->compact(), size.width);
  };
  return work;
}

const Family family(
    120, "Pyramids, optical flow, motion history",
    {{"PyrDown Gauss5x5 8u C1R", timesMemcpy(3.4),
      [](const Scene& s) { return resize(s, zebiPyrDown_Gauss5x5_8u_C1R, zebiPyrDownGetBufSize_Gauss5x5, 1, true); }},
     {"PyrDown Gauss5x5 8u C3R", timesMemcpy(12),
      [](const Scene& s) { return resize(s, zebiPyrDown_Gauss5x5_8u_C3R, zebiPyrDownGetBufSize_Gauss5x5, 3, true); }},
     {"PyrDown Gauss5x5 32f C1R", timesMemcpy(7),
      [](const Scene& s) { return resize(s, zebiPyrDown_Gauss5x5_32f_C1R, zebiPyrDownGetBufSize_Gauss5x5, 1, true); }},
     {"PyrUp Gauss5x5 8u C1R", timesMemcpy(14),
      [](const Scene& s) { return resize(s, zebiPyrUp_Gauss5x5_8u_C1R, zebiPyrUpGetBufSize_Gauss5x5, 1, false); }},
     {"PyrUp Gauss5x5 32f C1R", timesMemcpy(22),
      [](const Scene& s) { return resize(s, zebiPyrUp_Gauss5x5_32f_C1R, zebiPyrUpGetBufSize_Gauss5x5, 1, false); }},
     {"PyramidLayerDown 8u C1R, rate 1.5, 5 taps", timesMemcpy(25), layerDown},
     {"OpticalFlowPyrLK 8u, 1000 points, window 11", timesMemcpy(35),
      [](const Scene& s) { return flow(s, zeb8u, zebiPyrDown_Gauss5x5_8u_C1R, test::bytes); }},
     {"OpticalFlowPyrLK 32f, 1000 points, window 11", noTarget(),
      [](const Scene& s) { return flow(s, zeb32f, zebiPyrDown_Gauss5x5_32f_C1R, test::floats); }},
     {"UpdateMotionHistory 8u32f", timesMemcpy(2.8), history}});

}  // namespace
