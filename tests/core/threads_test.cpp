// Every family from several threads at once: read-only inputs and states are shared, what a call writes is not.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/random.h"
#include "zebcv.h"

namespace {

constexpr int width = 101, height = 67, count = width * height;
constexpr ZebiSize size{width, height};

// Everything that one run of a family writes for its caller, status included.
class Outcome {
 public:
  template <class T>
  void keep(const std::vector<T>& values) {
    const auto* bytes = reinterpret_cast<const Zeb8u*>(values.data());
    bytes_.insert(bytes_.end(), bytes, bytes + values.size() * sizeof(T));
  }
  void keep(ZebStatus status) { keep(std::vector<int>{status}); }
  bool operator==(const Outcome& other) const { return bytes_ == other.bytes_; }
  bool empty() const { return bytes_.empty(); }

 private:
  std::vector<Zeb8u> bytes_;
};

template <class Query, class... Args>
std::vector<Zeb8u> scratch(Query query, Args... args) {
  int bytes = 0;
  EXPECT_EQ(query(args..., &bytes), zebStsOk);
  return std::vector<Zeb8u>(static_cast<size_t>(bytes), 0xA5);
}

// Inputs and states, made once, only read afterwards.
struct Shared {
  std::vector<Zeb8u> gray, moved, shapes, element = {0, 1, 0, 1, 1, 1, 0, 1, 1}, square = std::vector<Zeb8u>(25, 1);
  std::vector<Zeb32f> real, accumulated, across, down, norm;
  std::vector<Zeb32s> sums;
  std::vector<Zeb64f> squares;
  std::vector<Zeb16s> dx, dy, taps = {1, 4, 6, 4, 1};
  ZebiPoint_32f grid = {1.0f, 0.05f};
  ZebiPoint centre = {1, 1};

  ZebiHaarClassifier* stage = nullptr;
  ZebiMorphGrayState* ball = nullptr;
  std::vector<Zeb8u> morphology, compound, hough;

  Shared()
      : gray(count), moved(count), shapes(count), real(count), accumulated(count), norm(count), dx(count), dy(count) {
    test::Random random;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x) {
        const size_t i = static_cast<size_t>(y) * width + x;
        const auto wave = [&](double u, double v) { return 128 + 70 * std::sin(0.21 * u) * std::cos(0.17 * v); };
        gray[i] = static_cast<Zeb8u>(wave(x, y) + random.within(0, 9));
        moved[i] = static_cast<Zeb8u>(wave(x - 1.5, y + 0.75));
        shapes[i] = wave(x, y) > 140 ? 255 : 0;
        real[i] = gray[i] - 128.0f;
        norm[i] = 1;
        dx[i] = static_cast<Zeb16s>(random.within(-300, 300));
        dy[i] = static_cast<Zeb16s>(random.within(-300, 300));
      }
    across.assign(dx.begin(), dx.end());
    down.assign(dy.begin(), dy.end());
    const size_t corners = static_cast<size_t>(width + 1) * (height + 1);
    sums.resize(corners);
    squares.resize(corners);
    EXPECT_EQ(zebiSqrIntegral_8u32s64f_C1R(gray.data(), width, sums.data(), 4 * (width + 1), squares.data(),
                                           8 * (width + 1), size, 0, 0),
              zebStsOk);
    const ZebiRect boxes[] = {{0, 0, 8, 4}, {0, 4, 8, 4}};
    const Zeb32f weights[] = {1, -1}, threshold = 0, below = -1, above = 1;
    const int boxCount = 2;
    EXPECT_EQ(zebiHaarClassifierInitAlloc_32f(&stage, boxes, weights, &threshold, &below, &above, &boxCount, 1),
              zebStsOk);
    const Zeb32s heights[] = {0, 3, 0, 3, 9, 3, 0, 3, 0};
    EXPECT_EQ(zebiMorphGrayInitAlloc_8u_C1R(&ball, size, heights, {3, 3}, centre), zebStsOk);
    int bytes = 0, rest = 0;
    EXPECT_EQ(zebiMorphAdvGetSize_8u_C1R(size, {3, 3}, &bytes, &rest), zebStsOk);
    compound.resize(static_cast<size_t>(bytes));
    EXPECT_EQ(zebiMorphAdvInit_8u_C1R(state<ZebiMorphAdvState>(compound), size, element.data(), {3, 3}, centre),
              zebStsOk);
    EXPECT_EQ(zebiMorphologyBorderGetSize_8u_C1R(width, {3, 3}, &bytes, &rest), zebStsOk);
    morphology.resize(static_cast<size_t>(bytes));
    std::vector<Zeb8u> initBuffer(static_cast<size_t>(rest));
    EXPECT_EQ(zebiMorphologyBorderInit_8u_C1R(width, element.data(), {3, 3}, state<ZebiMorphState>(morphology),
                                              initBuffer.data()),
              zebStsOk);
    EXPECT_EQ(zebiHoughProbLineGetSize_8u_C1R(size, grid, &bytes, &rest), zebStsOk);
    hough.resize(static_cast<size_t>(bytes));
    EXPECT_EQ(zebiHoughProbLineInit_8u32f_C1R(size, grid, 0, state<ZebiHoughProbSpec>(hough)), zebStsOk);
  }
  ~Shared() {
    zebiHaarClassifierFree_32f(stage);
    zebiMorphGrayFree_8u_C1R(ball);
  }
  template <class State>
  static State* state(std::vector<Zeb8u>& memory) {
    return reinterpret_cast<State*>(memory.data());
  }
  template <class State>
  static const State* state(const std::vector<Zeb8u>& memory) {
    return reinterpret_cast<const State*>(memory.data());
  }
};

struct Family {
  const char* name;
  std::function<void(const Shared&, Outcome&)> run;
};

void accumulation(const Shared& in, Outcome& out) {
  std::vector<Zeb32f> sum = in.real, product = in.real, angle(count);
  out.keep(
      zebiAddWeighted_8u32f_C1IMR(in.gray.data(), width, in.shapes.data(), width, sum.data(), 4 * width, size, 0.25f));
  out.keep(zebiAddProduct_8u32f_C1IR(in.gray.data(), width, in.moved.data(), width, product.data(), 4 * width, size));
  out.keep(zebibFastArctan_32f(in.down.data(), in.across.data(), angle.data(), count));
  std::vector<Zeb8u> difference(count);
  out.keep(zebiAbsDiff_8u_C1R(in.gray.data(), width, in.moved.data(), width, difference.data(), width, size));
  out.keep(sum), out.keep(product), out.keep(angle), out.keep(difference);
}

void tables(const Shared& in, Outcome& out) {
  std::vector<Zeb32s> tilted(static_cast<size_t>(width + 2) * (height + 2));
  out.keep(zebiTiltedIntegral_8u32s_C1R(in.gray.data(), width, tilted.data(), 4 * (width + 2), size, 0));
  std::vector<Zeb32f> deviation(count);
  const ZebiSize windows{width - 8, height - 8};
  out.keep(zebiRectStdDev_32s32f_C1R(in.sums.data(), 4 * (width + 1), in.squares.data(), 8 * (width + 1),
                                     deviation.data(), 4 * width, windows, {0, 0, 8, 8}));
  std::vector<Zeb8u> mask(count, 255);
  std::vector<int> positive(1);
  out.keep(zebiApplyHaarClassifier_32s32f_C1R(in.sums.data(), 4 * (width + 1), in.norm.data(), 4 * width, mask.data(),
                                              width, windows, positive.data(), 0.5f, in.stage));
  out.keep(tilted), out.keep(deviation), out.keep(mask), out.keep(positive);
}

void filters(const Shared& in, Outcome& out) {
  std::vector<Zeb16s> rows(count);
  std::vector<Zeb16s*> pointers;
  for (int y = 0; y < height; ++y) pointers.push_back(&rows[static_cast<size_t>(y) * width]);
  auto buffer = scratch(zebiFilterRowBorderPipelineGetBufferSize_8u16s_C1R, size, 5);
  out.keep(zebiFilterRowBorderPipeline_8u16s_C1R(in.gray.data(), width, pointers.data(), size, in.taps.data(), 5, 2,
                                                 zebBorderRepl, 0, 1, buffer.data()));
  std::vector<const Zeb16s*> stacked;
  for (int y = -2; y < height + 2; ++y) stacked.push_back(pointers[static_cast<size_t>(std::clamp(y, 0, height - 1))]);
  std::vector<Zeb8u> smoothed(count);
  buffer = scratch(zebiFilterColumnPipelineGetBufferSize_16s8u_C1R, size, 5);
  out.keep(zebiFilterColumnPipeline_16s8u_C1R(stacked.data(), smoothed.data(), width, size, in.taps.data(), 5, 256,
                                              buffer.data()));
  out.keep(rows), out.keep(smoothed);
}

void morphology(const Shared& in, Outcome& out) {
  std::vector<Zeb8u> eroded(count), gradient(count), opened(count), dilated(count), rebuilt = in.gray;
  int bytes = 0, rest = 0;
  out.keep(zebiMorphologyBorderGetSize_8u_C1R(width, {3, 3}, &rest, &bytes));
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  out.keep(zebiErodeBorder_8u_C1R(in.gray.data(), width, eroded.data(), width, size, zebBorderRepl, 0,
                                  Shared::state<ZebiMorphState>(in.morphology), buffer.data()));
  out.keep(zebiMorphAdvGetSize_8u_C1R(size, {3, 3}, &rest, &bytes));
  buffer.resize(static_cast<size_t>(bytes));
  out.keep(zebiMorphGradientBorder_8u_C1R(in.gray.data(), width, gradient.data(), width, size, zebBorderRepl, 0,
                                          Shared::state<ZebiMorphAdvState>(in.compound), buffer.data()));
  // An allocated compound state holds the intermediate image: one for each thread.
  ZebiMorphAdvState* own = nullptr;
  out.keep(zebiMorphAdvInitAlloc_8u_C1R(&own, size, in.element.data(), {3, 3}, in.centre));
  out.keep(zebiMorphOpenBorder_8u_C1R(in.gray.data(), width, opened.data(), width, size, zebBorderRepl, 0, own,
                                      buffer.data()));
  out.keep(zebiMorphAdvFree(own));
  out.keep(zebiGrayDilateBorder_8u_C1R(in.gray.data(), width, dilated.data(), width, size, zebBorderRepl, in.ball));
  for (Zeb8u& v : rebuilt) v = static_cast<Zeb8u>(v > 60 ? v - 60 : 0);
  buffer = scratch(zebiMorphReconstructGetBufferSize_8u_C1, size);
  out.keep(zebiMorphReconstructDilate_8u_C1IR(in.gray.data(), width, rebuilt.data(), width, size, buffer.data(),
                                              zebiNormInf));
  out.keep(eroded), out.keep(gradient), out.keep(opened), out.keep(dilated), out.keep(rebuilt);
}

void edges(const Shared& in, Outcome& out) {
  std::vector<Zeb8u> canny(count), border(count);
  auto buffer = scratch(zebiCannyGetSize, size);
  out.keep(zebiCanny_16s8u_C1R(in.dx.data(), 2 * width, in.dy.data(), 2 * width, canny.data(), width, size, 90, 200,
                               buffer.data()));
  buffer = scratch(zebiCannyBorderGetSize, size, zebFilterSobel, zebMskSize3x3, zeb8u);
  out.keep(zebiCannyBorder_8u_C1R(in.gray.data(), width, border.data(), width, size, zebFilterSobel, zebMskSize3x3,
                                  zebBorderRepl, 0, 30, 70, zebNormL2, buffer.data()));
  constexpr int most = 20;
  std::vector<ZebiPoint_32f> lines(most);
  std::vector<ZebiRect> segments(most);
  std::vector<ZebiPoint> peaks(most);
  std::vector<int> found(3);
  buffer = scratch(zebiHoughLineGetSize_8u_C1R, size, in.grid, most);
  out.keep(zebiHoughLine_8u32f_C1R(in.shapes.data(), width, size, in.grid, 20, lines.data(), most, &found[0],
                                   buffer.data()));
  int bytes = 0, rest = 0;
  out.keep(zebiHoughProbLineGetSize_8u_C1R(size, in.grid, &rest, &bytes));
  buffer.resize(static_cast<size_t>(bytes));
  out.keep(zebiHoughProbLine_8u32f_C1R(in.shapes.data(), width, size, 10, 8, 2, segments.data(), most, &found[1],
                                       buffer.data(), Shared::state<ZebiHoughProbSpec>(in.hough)));
  buffer = scratch(zebiFindPeaks3x3GetBufferSize_32f_C1R, width);
  out.keep(zebiFindPeaks3x3_32f_C1R(in.real.data(), 4 * width, size, 20, peaks.data(), most, &found[2], zebiNormInf, 1,
                                    buffer.data()));
  out.keep(canny), out.keep(border), out.keep(lines), out.keep(segments), out.keep(peaks), out.keep(found);
}

void regions(const Shared& in, Outcome& out) {
  std::vector<Zeb32f> chamfer(count), exact(count), marching(count);
  const Zeb32f metrics[] = {1.0f, 1.4142f};
  out.keep(zebiDistanceTransform_3x3_8u32f_C1R(in.shapes.data(), width, chamfer.data(), 4 * width, size, metrics));
  auto buffer = scratch(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R, size);
  out.keep(zebiTrueDistanceTransform_8u32f_C1R(in.shapes.data(), width, exact.data(), 4 * width, size, buffer.data()));
  buffer = scratch(zebiFastMarchingGetBufferSize_8u32f_C1R, size);
  out.keep(zebiFastMarching_8u32f_C1R(in.shapes.data(), width, marching.data(), 4 * width, size, 6, buffer.data()));
  std::vector<Zeb8u> filled = in.shapes, gradient = in.gray;
  ZebiConnectedComp region{};
  buffer = scratch(zebiFloodFillGetSize, size);
  out.keep(zebiFloodFill_8Con_8u_C1IR(filled.data(), width, size, {0, 0}, 77, &region, buffer.data()));
  buffer = scratch(zebiFloodFillGetSize_Grad, size);
  out.keep(zebiFloodFill_Grad4Con_8u_C1IR(gradient.data(), width, size, {5, 5}, 7, 12, 12, &region, buffer.data()));
  out.keep(chamfer), out.keep(exact), out.keep(marching), out.keep(filled), out.keep(gradient);
}

void motion(const Shared& in, Outcome& out) {
  constexpr ZebiSize half{(width + 1) / 2, (height + 1) / 2};
  std::vector<Zeb8u> down(static_cast<size_t>(half.width) * half.height), up(count);
  int bytes = 0;
  out.keep(zebiPyrDownGetBufSize_Gauss5x5(width, zeb8u, 1, &bytes));
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  out.keep(zebiPyrDown_Gauss5x5_8u_C1R(in.gray.data(), width, down.data(), half.width, size, buffer.data()));
  std::vector<Zeb32f> history = in.accumulated;
  out.keep(zebiUpdateMotionHistory_8u32f_C1IR(in.shapes.data(), width, history.data(), 4 * width, size, 10, 3));

  // States of layers and of the flow hold their own scratch: one for each thread.
  ZebiPyramid* pyramids[2] = {};
  std::vector<Zeb8u> levels[2];
  ZebiPyramidDownState* layer = nullptr;
  out.keep(zebiPyramidLayerDownInitAlloc_8u_C1R(&layer, size, 1.5f, in.taps.data(), 5, zebInterLinear));
  for (int i = 0; i < 2; ++i) {
    out.keep(zebiPyramidInitAlloc(&pyramids[i], 1, size, 1.5f));
    const ZebiSize second = pyramids[i]->pRoi[1];
    levels[i].resize(static_cast<size_t>(second.width) * second.height);
    const auto& base = i ? in.moved : in.gray;
    pyramids[i]->pImage[0] = const_cast<Zeb8u*>(base.data());
    pyramids[i]->pStep[0] = width;
    pyramids[i]->pImage[1] = levels[i].data();
    pyramids[i]->pStep[1] = second.width;
    out.keep(zebiPyramidLayerDown_8u_C1R(base.data(), width, size, levels[i].data(), second.width, second, layer));
  }
  const std::vector<ZebiPoint_32f> from = {{20, 20}, {50.5f, 30.25f}, {80, 50}};
  std::vector<ZebiPoint_32f> to = from;
  std::vector<Zeb8s> status(3);
  std::vector<Zeb32f> error(3);
  ZebiOptFlowPyrLKState* flow = nullptr;
  out.keep(zebiOpticalFlowPyrLKInitAlloc_8u_C1R(&flow, size, 9, 0));
  out.keep(zebiOpticalFlowPyrLK_8u_C1R(pyramids[0], pyramids[1], from.data(), to.data(), status.data(), error.data(), 3,
                                       9, 1, 10, 0.01f, flow));
  out.keep(zebiOpticalFlowPyrLKFree_8u_C1R(flow));
  for (ZebiPyramid* pyramid : pyramids) out.keep(zebiPyramidFree(pyramid));
  out.keep(zebiPyramidLayerDownFree_8u_C1R(layer));
  out.keep(down), out.keep(history), out.keep(levels[0]), out.keep(levels[1]);
  out.keep(to), out.keep(status), out.keep(error);
}

const Family families[] = {{"accumulation", accumulation},
                           {"tables", tables},
                           {"filters", filters},
                           {"morphology", morphology},
                           {"edges", edges},
                           {"regions", regions},
                           {"motion", motion}};
constexpr int familyCount = static_cast<int>(std::size(families));

TEST(Threads, EveryFamilyAtOnceGivesWhatOneThreadGives) {
  const Shared shared;
  std::vector<Outcome> alone(familyCount);
  for (int f = 0; f < familyCount; ++f) {
    families[f].run(shared, alone[f]);
    ASSERT_FALSE(alone[f].empty());
  }
  constexpr int threads = 4, rounds = 12;
  std::vector<std::vector<std::string>> differing(threads);
  std::vector<std::thread> pool;
  for (int t = 0; t < threads; ++t)
    pool.emplace_back([&, t] {
      // Every thread starts with another family, so that different ones and equal ones meet.
      for (int i = 0; i < rounds * familyCount; ++i) {
        const int f = (t * (1 + i / familyCount) + i) % familyCount;
        Outcome outcome;
        families[f].run(shared, outcome);
        if (!(outcome == alone[f])) differing[t].push_back(families[f].name);
      }
    });
  for (auto& thread : pool) thread.join();
  for (const auto& names : differing) EXPECT_TRUE(names.empty()) << names.size() << " runs, first " << names[0];
}

}  // namespace
