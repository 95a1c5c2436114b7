// Content that is as hard as can be: long corridors, regions without interior, rates just above one.
// Results are known from the way the content is made; no reference has to follow it.
#include <cmath>
#include <memory>

#include "bench.h"
#include "corridors.h"

namespace {

using namespace bench;

using Shape = Corridor (*)(ZebiSize);

// ---- Reconstruction: the marker is the start of the corridor ----

template <class T>
using Reconstruct = ZebStatus (*)(const T*, int, T*, int, ZebiSize, Zeb8u*, ZebiNorm);

template <class T>
Work reconstruct(const Scene& scene, Shape shape, ZebiNorm norm, Reconstruct<T> function,
                 ZebStatus (*query)(ZebiSize, int*)) {
  const Corridor corridor = shape(scene.size);
  auto mask = std::make_shared<Image<T>>(scene.imageOf<T>(corridor.open));
  auto marker = std::make_shared<Image<T>>(scene.image<T>());
  int bytes = 0;
  query(scene.size, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  Work work;
  work.run = [=, size = scene.size, start = corridor.start] {
    marker->fill(0);
    marker->row(start.y)[start.x] = 1;
    return function(mask->data(), mask->step(), marker->data(), marker->step(), size, buffer->data(), norm);
  };
  work.check = [=, run = work.run, width = scene.size.width]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    return firstDifference(mask->compact(), marker->compact(), width);
  };
  return work;
}

void addReconstructions(std::vector<Case>& cases) {
  const struct {
    const char* name;
    Shape shape;
  } shapes[] = {{"serpentine", serpentine}, {"spiral", spiral}, {"maze", maze}};
  for (const auto& content : shapes)
    for (const int side : {256, 1024, 2048})
      for (const ZebiNorm norm : {zebiNormL1, zebiNormInf}) {
        const std::string text = std::string(norm == zebiNormL1 ? ", 4-connected, " : ", 8-connected, ") +
                                 content.name + " " + std::to_string(side) + " squared";
        const auto add = [&](const char* type, auto function, auto query) {
          cases.push_back(
              {std::string("worst: MorphReconstructDilate ") + type + text, noTarget(),
               [=, shape = content.shape](const Scene& s) { return reconstruct(s, shape, norm, function, query); },
               ZebiSize{side, side}});
        };
        add("8u", zebiMorphReconstructDilate_8u_C1IR, zebiMorphReconstructGetBufferSize_8u_C1);
        add("32f", zebiMorphReconstructDilate_32f_C1IR, zebiMorphReconstructGetBufferSize_32f_C1);
        add("64f", zebiMorphReconstructDilate_64f_C1IR, zebiMorphReconstructGetBufferSize_64f_C1);
      }
}

// ---- Fills of a spiral ----

template <class Fill>
Work fill(const Scene& scene, ZebStatus (*query)(ZebiSize, int*), Fill call) {
  const Corridor corridor = spiral(scene.size);
  const Image<Zeb8u> start = scene.imageOf<Zeb8u>(corridor.open);
  auto image = std::make_shared<Image<Zeb8u>>(start);
  auto region = std::make_shared<ZebiConnectedComp>();
  int bytes = 0;
  query(scene.size, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  Work work;
  work.run = [=, size = scene.size, seed = corridor.start] {
    for (int y = 0; y < size.height; ++y) std::memcpy(image->row(y), start.row(y), size.width);
    return call(image->data(), image->step(), size, seed, region.get(), buffer->data());
  };
  work.check = [=, run = work.run, width = scene.size.width, open = corridor.open]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    Pixels<Zeb8u> wanted(open.size());
    std::transform(open.begin(), open.end(), wanted.begin(), [](Zeb8u p) { return p ? Zeb8u(200) : Zeb8u(0); });
    if (region->area != static_cast<double>(std::count(open.begin(), open.end(), 1))) return "the area differs";
    return firstDifference(wanted, image->compact(), width);
  };
  return work;
}

void addFills(std::vector<Case>& cases) {
  for (const int side : {1024, 2048}) {
    const auto add = [&](const char* name, auto query, auto call) {
      cases.push_back({std::string("worst: FloodFill ") + name + " 8u, spiral " + std::to_string(side) + " squared",
                       noTarget(), [=](const Scene& s) { return fill(s, query, call); }, ZebiSize{side, side}});
    };
    const auto plain = [](auto function) {
      return [=](Zeb8u* image, int step, ZebiSize size, ZebiPoint seed, ZebiConnectedComp* region, Zeb8u* buffer) {
        return function(image, step, size, seed, 200, region, buffer);
      };
    };
    const auto delta = [](auto function) {
      return [=](Zeb8u* image, int step, ZebiSize size, ZebiPoint seed, ZebiConnectedComp* region, Zeb8u* buffer) {
        return function(image, step, size, seed, 200, 0, 0, region, buffer);
      };
    };
    add("4Con", zebiFloodFillGetSize, plain(zebiFloodFill_4Con_8u_C1IR));
    add("8Con", zebiFloodFillGetSize, plain(zebiFloodFill_8Con_8u_C1IR));
    add("Range4Con", zebiFloodFillGetSize, delta(zebiFloodFill_Range4Con_8u_C1IR));
    add("Range8Con", zebiFloodFillGetSize, delta(zebiFloodFill_Range8Con_8u_C1IR));
    add("Grad4Con", zebiFloodFillGetSize_Grad, delta(zebiFloodFill_Grad4Con_8u_C1IR));
    add("Grad8Con", zebiFloodFillGetSize_Grad, delta(zebiFloodFill_Grad8Con_8u_C1IR));
  }
}

// ---- The rest ----

// Two rows and a border of one: no pixel is a candidate.
Work peaksWithoutInterior(const Scene& scene) {
  auto image = std::make_shared<Image<Zeb32f>>(scene.image<Zeb32f>());
  int bytes = 0;
  zebiFindPeaks3x3GetBufferSize_32f_C1R(scene.size.width, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  auto count = std::make_shared<int>(-1);
  Work work;
  work.run = [=, size = scene.size] {
    ZebiPoint peak;
    return zebiFindPeaks3x3_32f_C1R(image->data(), image->step(), size, 1.0f, &peak, 1, count.get(), zebiNormInf, 1,
                                    buffer->data());
  };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    if (*count != 0) return "peaks where none can be";
    return std::nullopt;
  };
  return work;
}

// One disc that nearly fills the image: distances as large as they get.
Work disc(const Scene& scene) {
  auto src = std::make_shared<Image<Zeb8u>>(scene.image<Zeb8u>());
  auto dst = std::make_shared<Image<Zeb32f>>(scene.image<Zeb32f>());
  const double centre = 0.5 * (scene.size.width - 1), radius = centre - 2;
  for (int y = 0; y < scene.size.height; ++y)
    for (int x = 0; x < scene.size.width; ++x) src->row(y)[x] = std::hypot(x - centre, y - centre) < radius ? 255 : 0;
  int bytes = 0;
  zebiFastMarchingGetBufferSize_8u32f_C1R(scene.size, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  Work work;
  work.run = [=, size = scene.size] {
    return zebiFastMarching_8u32f_C1R(src->data(), src->step(), dst->data(), dst->step(), size, 10, buffer->data());
  };
  work.check = [=, run = work.run, size = scene.size]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const Zeb32f middle = dst->row(size.height / 2)[size.width / 2];
    if (std::fabs(middle - radius) > 3) return "the middle is " + std::to_string(middle) + " from the edge";
    return std::nullopt;
  };
  return work;
}

// A constant stays what it is, at every rate.
constexpr Zeb32f justAboveOne = 1.001f;
const Zeb16s smoothing[] = {1, 4, 6, 4, 1};

template <class State>
Work layer(const Scene& scene, ZebiSize out, std::shared_ptr<State> state,
           ZebStatus (*function)(const Zeb8u*, int, ZebiSize, Zeb8u*, int, ZebiSize, State*)) {
  auto src = std::make_shared<Image<Zeb8u>>(scene.image<Zeb8u>());
  src->fill(77);
  auto dst = std::make_shared<Image<Zeb8u>>(out, out.width);
  Work work;
  work.run = [=, in = scene.size] {
    return function(src->data(), src->step(), in, dst->data(), dst->step(), out, state.get());
  };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    return firstDifference(Pixels<Zeb8u>(static_cast<size_t>(out.width) * out.height, 77), dst->compact(), out.width);
  };
  return work;
}

Work layerDown(const Scene& scene) {
  ZebiPyramidDownState* state = nullptr;
  zebiPyramidLayerDownInitAlloc_8u_C1R(&state, scene.size, justAboveOne, smoothing, 5, zebInterLinear);
  ZebiSize out = {};
  zebiGetPyramidDownROI(scene.size, &out, justAboveOne);
  return layer(scene, out, std::shared_ptr<ZebiPyramidDownState>(state, zebiPyramidLayerDownFree_8u_C1R),
               zebiPyramidLayerDown_8u_C1R);
}

Work layerUp(const Scene& scene) {
  ZebiPyramidUpState* state = nullptr;
  zebiPyramidLayerUpInitAlloc_8u_C1R(&state, scene.size, justAboveOne, smoothing, 5, zebInterLinear);
  ZebiSize least = {}, most = {};
  zebiGetPyramidUpROI(scene.size, &least, &most, justAboveOne);
  return layer(scene, most, std::shared_ptr<ZebiPyramidUpState>(state, zebiPyramidLayerUpFree_8u_C1R),
               zebiPyramidLayerUp_8u_C1R);
}

// Windows without any gradient and as many steps as a caller may ask for.
Work flatFlow(const Scene& scene) {
  constexpr int points = 100, window = 11;
  struct State {
    ZebiPyramid* pyramid = nullptr;
    ZebiOptFlowPyrLKState* tracker = nullptr;
    Image<Zeb8u> image;
    std::vector<ZebiPoint_32f> prev, next;
    std::vector<Zeb8s> status = std::vector<Zeb8s>(points);
    std::vector<Zeb32f> error = std::vector<Zeb32f>(points);
    ~State() {
      zebiPyramidFree(pyramid);
      zebiOpticalFlowPyrLKFree_8u_C1R(tracker);
    }
  };
  auto state = std::make_shared<State>();
  state->image = scene.image<Zeb8u>();
  state->image.fill(128);
  zebiPyramidInitAlloc(&state->pyramid, 1, scene.size, 2.0f);
  state->pyramid->pImage[0] = state->image.data();
  state->pyramid->pStep[0] = state->image.step();
  zebiOpticalFlowPyrLKInitAlloc_8u_C1R(&state->tracker, scene.size, window, 0);
  for (int i = 0; i < points; ++i)
    state->prev.push_back({static_cast<float>(scene.size.width * (i + 1)) / (points + 1),
                           static_cast<float>(scene.size.height * (i + 1)) / (points + 1)});
  Work work;
  work.run = [=] {
    state->next = state->prev;
    return zebiOpticalFlowPyrLK_8u_C1R(state->pyramid, state->pyramid, state->prev.data(), state->next.data(),
                                       state->status.data(), state->error.data(), points, window, 0, 1 << 30, 0.0f,
                                       state->tracker);
  };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    for (int i = 0; i < points; ++i)
      if (state->next[i].x != state->prev[i].x || state->next[i].y != state->prev[i].y || state->error[i] != 0)
        return "a point moved";
    return std::nullopt;
  };
  return work;
}

std::vector<Case> worstCases() {
  std::vector<Case> cases;
  addReconstructions(cases);
  addFills(cases);
  cases.push_back(
      {"worst: FindPeaks3x3 32f, 16777216 x 2, no interior", noTarget(), peaksWithoutInterior, ZebiSize{1 << 24, 2}});
  cases.push_back(
      {"worst: PyramidLayerDown 8u, rate 1.001, 1024 squared", noTarget(), layerDown, ZebiSize{1024, 1024}});
  cases.push_back({"worst: PyramidLayerUp 8u, rate 1.001, 1024 squared", noTarget(), layerUp, ZebiSize{1024, 1024}});
  cases.push_back({"worst: OpticalFlowPyrLK 8u, 100 points, 2^30 iterations, flat 1024 squared", noTarget(), flatFlow,
                   ZebiSize{1024, 1024}});
  for (const int side : {1024, 2048})
    cases.push_back({"worst: FastMarching 8u32f, one disc " + std::to_string(side) + " squared", noTarget(), disc,
                     ZebiSize{side, side}});
  return cases;
}

const Family family(200, "Worst content", worstCases());

}  // namespace
