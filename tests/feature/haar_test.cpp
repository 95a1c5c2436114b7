#include "feature/stages.h"
#include "support/compare.h"
#include "support/contract.h"
#include "support/zebcore_double.h"

namespace {

using namespace test;
using ref::HaarStage;
using ref::Plane;

constexpr int reach = 14;  // no rectangle of the tests goes further right or down

ZebStatus initAlloc(ZebiHaarClassifier** p, const HaarStage<Zeb32f>& s, bool tilted) {
  return (tilted ? zebiTiltedHaarClassifierInitAlloc_32f : zebiHaarClassifierInitAlloc_32f)(
      p, s.features.data(), s.weights.data(), s.thresholds.data(), s.values1.data(), s.values2.data(), s.counts.data(),
      static_cast<int>(s.counts.size()));
}
ZebStatus initAlloc(ZebiHaarClassifier** p, const HaarStage<Zeb32s>& s, bool tilted) {
  return (tilted ? zebiTiltedHaarClassifierInitAlloc_32s : zebiHaarClassifierInitAlloc_32s)(
      p, s.features.data(), s.weights.data(), s.thresholds.data(), s.values1.data(), s.values2.data(), s.counts.data(),
      static_cast<int>(s.counts.size()));
}

// What the evaluations have in common: tables, factors and a mask of some density over a region of a size.
template <class S, class N>
struct Scene {
  Scene(Random& random, int width, int height, int livePercent)
      : mask(width, height, 1, Layout::random<Zeb8u>(random)),
        norm(width, height, 1, Layout::random<N>(random)),
        upright(makeTable(random, width, height, false), Layout::random<S>(random)),
        tilted(makeTable(random, width, height, true), Layout::random<S>(random)) {
    Plane<Zeb8u> m(width, height);
    for (auto& v : m.data)
      v = random.within(1, 100) <= livePercent ? static_cast<Zeb8u>(random.within(1, 255)) : Zeb8u(0);
    mask.set(m);
    Plane<N> n(width, height);
    for (auto& v : n.data) v = number<N>(random, 0, 60);
    norm.set(n);
  }
  static Plane<S> makeTable(Random& random, int width, int height, bool tilted) {
    Plane<Zeb8u> picture(width + reach, height + reach);
    fillPlane(picture, Content::noise, random);
    return tilted ? ref::tiltedIntegral<S>(picture, S(0), false, Plane<S>(picture.width + 2, picture.height + 2), false)
                  : ref::integral<S>(picture, S(0), false);
  }

  Image<Zeb8u> mask;
  Image<N> norm;
  Image<S> upright, tilted;
};

template <class S, class N, class T, class Apply, class Passes>
void evaluate(const char* name, bool mixed, Apply apply, Passes passes) {
  Random random;
  zebcore().reset();
  for (int round = 0; round < 150; ++round) {
    const int width = round < 70 ? 1 + round : random.within(1, 90), height = random.within(1, 4);
    const int live[] = {0, 3, 30, 80, 100};
    Scene<S, N> scene(random, width, height, live[round % 5]);
    auto stage = randomStage<T>(random, random.within(mixed, 6), mixed);
    ZebiHaarClassifier* state = nullptr;
    ASSERT_EQ(initAlloc(&state, stage, false), zebStsOk);
    if (mixed) {
      const bool inverted = round % 2;
      const Image<Zeb8u> marks(tiltMask(stage.tilted, inverted), {Place::back, 0, 0});
      ASSERT_EQ((std::is_integral_v<T> ? zebiTiltHaarFeatures_32s : zebiTiltHaarFeatures_32f)(marks.pixels(),
                                                                                              inverted ? 0 : 3, state),
                zebStsOk);
    }
    const T threshold = number<T>(random, -6, 6);
    const int scaleFactor = random.within(-2, 5);
    auto want = scene.mask.plane();
    int expected = 0;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        if (want.at(x, y)) {
          if (passes(stage, scene, x, y, threshold, scaleFactor)) {
            ++expected;
          } else {
            want.at(x, y) = 0;
          }
        }
    for (int time = 0; time < 2; ++time) {  // the second time nothing changes
      int positive = -1;
      ASSERT_EQ(apply(scene, &positive, threshold, state, scaleFactor), zebStsOk);
      ASSERT_TRUE(agree(name, scene.mask, want)) << "round " << round;
      ASSERT_EQ(positive, expected);
    }
    ASSERT_EQ((std::is_integral_v<T> ? zebiHaarClassifierFree_32s : zebiHaarClassifierFree_32f)(state), zebStsOk);
  }
  EXPECT_EQ(zebcore().liveBlocks, 0);
}

#define SRC s.upright.pixels(), s.upright.step()
#define TILT s.tilted.pixels(), s.tilted.step()
#define REST s.norm.pixels(), s.norm.step(), s.mask.pixels(), s.mask.step(), s.mask.size(), positive, threshold, state
#define FLOAT_STAGE(function, S, mixed, ...)                                                                      \
  evaluate<S, Zeb32f, Zeb32f>(                                                                                    \
      #function, mixed,                                                                                           \
      [](Scene<S, Zeb32f>& s, int* positive, Zeb32f threshold, const ZebiHaarClassifier* state, int) {            \
        return function(__VA_ARGS__);                                                                             \
      },                                                                                                          \
      [](const HaarStage<Zeb32f>& stage, const Scene<S, Zeb32f>& s, int x, int y, Zeb32f threshold, int) {        \
        return ref::passes(stage, s.upright.plane(), s.tilted.plane(), x, y, s.norm.plane().at(x, y), threshold); \
      })
#define SCALED_STAGE(function, mixed, ...)                                                                             \
  evaluate<Zeb32s, Zeb32s, Zeb32s>(                                                                                    \
      #function, mixed,                                                                                                \
      [](Scene<Zeb32s, Zeb32s>& s, int* positive, Zeb32s threshold, const ZebiHaarClassifier* state, int factor) {     \
        return function(__VA_ARGS__);                                                                                  \
      },                                                                                                               \
      [](const HaarStage<Zeb32s>& stage, const Scene<Zeb32s, Zeb32s>& s, int x, int y, Zeb32s threshold, int factor) { \
        return ref::passesScaled(stage, s.upright.plane(), s.tilted.plane(), x, y, s.norm.plane().at(x, y), threshold, \
                                 factor);                                                                              \
      })

TEST(Haar, StagesEqualReference) {
  FLOAT_STAGE(zebiApplyHaarClassifier_32f_C1R, Zeb32f, false, SRC, REST);
  FLOAT_STAGE(zebiApplyHaarClassifier_32s32f_C1R, Zeb32s, false, SRC, REST);
  SCALED_STAGE(zebiApplyHaarClassifier_32s_C1RSfs, false, SRC, REST, factor);
}

TEST(Haar, MixedStagesEqualReference) {
  FLOAT_STAGE(zebiApplyMixedHaarClassifier_32f_C1R, Zeb32f, true, SRC, TILT, REST);
  FLOAT_STAGE(zebiApplyMixedHaarClassifier_32s32f_C1R, Zeb32s, true, SRC, TILT, REST);
  SCALED_STAGE(zebiApplyMixedHaarClassifier_32s_C1RSfs, true, SRC, TILT, REST, factor);
}

// A stage created tilted reads the tilted table through the plain functions.
TEST(Haar, TiltedStage) {
  Random random;
  Scene<Zeb32s, Zeb32f> s(random, 41, 3, 70);
  HaarStage<Zeb32f> stage = randomStage<Zeb32f>(random, 5, true);
  for (size_t k = 0; k < stage.features.size(); ++k) stage.features[k].x = 4;
  stage.tilted.assign(5, true);
  ZebiHaarClassifier* state = nullptr;
  ASSERT_EQ(initAlloc(&state, stage, true), zebStsOk);
  auto want = s.mask.plane();
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 41; ++x)
      if (!ref::passes(stage, s.upright.plane(), s.tilted.plane(), x, y, s.norm.plane().at(x, y), 1.0f))
        want.at(x, y) = 0;
  int positive = 0;
  ASSERT_EQ(zebiApplyHaarClassifier_32s32f_C1R(TILT, s.norm.pixels(), s.norm.step(), s.mask.pixels(), s.mask.step(),
                                               s.mask.size(), &positive, 1.0f, state),
            zebStsOk);
  EXPECT_TRUE(agree("zebiApplyHaarClassifier_32s32f_C1R", s.mask, want));
  const Zeb8u marks[5] = {1, 1, 1, 1, 1};
  EXPECT_EQ(zebiTiltHaarFeatures_32f(marks, 1, state), zebStsErrBadArgument);
  ZebiSize size = {};
  ASSERT_EQ(zebiGetHaarClassifierSize_32f(state, &size), zebStsOk);
  int right = 0, bottom = 0;
  for (const auto& r : stage.features) {
    right = std::max(right, r.x + r.width);
    bottom = std::max(bottom, r.y + r.width + r.height);
  }
  EXPECT_EQ(size.width, right);
  EXPECT_EQ(size.height, bottom);
  EXPECT_EQ(zebiHaarClassifierFree_32f(state), zebStsOk);
}

// Reads only what live pixels need: every table ends at the last element that the one live pixel reads.
TEST(Haar, DeadPixelsAreNotRead) {
  HaarStage<Zeb32f> stage;
  stage.features = {{0, 0, 2, 2}, {1, 1, 3, 3}};
  stage.weights = {-1, 2}, stage.thresholds = {1}, stage.values1 = {0}, stage.values2 = {1}, stage.counts = {2};
  ZebiHaarClassifier* state = nullptr;
  ASSERT_EQ(initAlloc(&state, stage, false), zebStsOk);
  for (int live = 0; live < 24; ++live) {
    // A region of 32 x 1 pixels, whose live ones end at column live.
    Image<Zeb32s> table(32 + 4, 5, 1, {});
    table.set(Plane<Zeb32s>(36, 5));
    // The rows stand so that the table's last row ends right before the page behind.
    const Zeb32s* first = table.pixels(31 - live, 0);
    Image<Zeb32f> norm(live + 1, 1, 1, {});
    norm.set(Plane<Zeb32f>(live + 1, 1, 1, 1.0f));
    Plane<Zeb8u> m(32, 1);
    for (int x = live > 3 ? live - 3 : 0; x <= live; ++x) m.at(x, 0) = 1;
    Image<Zeb8u> mask(m, {});
    int positive = 0;
    ASSERT_EQ(zebiApplyHaarClassifier_32s32f_C1R(first, table.step(), norm.pixels(), 4 * 32, mask.pixels(), mask.step(),
                                                 {32, 1}, &positive, 0.0f, state),
              zebStsOk);
  }
  zebiHaarClassifierFree_32f(state);
}

// The words of a state: they are a contract.
TEST(Haar, StateLayout) {
  auto& core = zebcore();
  core.reset();
  HaarStage<Zeb32f> stage;
  stage.counts = {3, 2, 1, 2};
  stage.features = {{5, 6, 1, 2}, {3, 9, 2, 2}, {4, 4, 1, 1}, {7, 2, 3, 4},
                    {8, 8, 1, 1}, {9, 9, 2, 2}, {6, 7, 1, 3}, {2, 8, 5, 5}};
  stage.weights = {-1.5f, 1, 1, -1, 2, -1, -1.25f, 3};
  stage.thresholds = {10, 20, 30, 40}, stage.values1 = {1, 2, 3, 4}, stage.values2 = {5, 6, 7, 8};
  stage.tilted.assign(4, false);
  ZebiHaarClassifier* state = nullptr;
  ASSERT_EQ(initAlloc(&state, stage, false), zebStsOk);
  EXPECT_EQ(core.lastLength, 48 + 24 * 4 + 36 * 8);
  const auto* words = reinterpret_cast<const int*>(state);
  const auto word = [](const void* p, int i) {
    int v;
    memcpy(&v, static_cast<const char*>(p) + 4 * i, 4);
    return v;
  };
  EXPECT_EQ(words[0], 4);
  EXPECT_EQ(words[1], 8);
  EXPECT_EQ(words[3], 2);  // least x
  EXPECT_EQ(words[4], 2);  // least y
  EXPECT_EQ(words[7], 0);  // tilt
  EXPECT_EQ(words[8], 2);  // pairs
  EXPECT_EQ(words[9], 3);  // pairs and triples
  EXPECT_EQ(words[10], 8);
  EXPECT_EQ(words[11], 1);  // all first weights truncate to -1
  const char* records = reinterpret_cast<const char*>(words[2]);
  const int order[] = {1, 3, 0, 2};
  for (int i = 0; i < 4; ++i) {
    const char* record = records + 24 * i;
    const int from = order[i];
    EXPECT_EQ(word(record, 0), stage.counts[from]);
    Zeb32f threshold;
    memcpy(&threshold, record + 8, 4);
    EXPECT_EQ(threshold, stage.thresholds[from]);
    EXPECT_EQ(word(record, 5), from << 8);
    const char* rectangle = reinterpret_cast<const char*>(word(record, 1));
    const ZebiRect& f = stage.features[stage.firstFeature(from)];
    const int corners[8] = {f.x + f.width, f.y + f.height, f.x, f.y + f.height, f.x + f.width, f.y, f.x, f.y};
    for (int k = 0; k < 8; ++k) EXPECT_EQ(word(rectangle, k), corners[k]);
    Zeb32f weight;
    memcpy(&weight, rectangle + 32, 4);
    EXPECT_EQ(weight, stage.weights[stage.firstFeature(from)]);
  }
  ZebiSize size = {};
  ASSERT_EQ(zebiGetHaarClassifierSize_32f(state, &size), zebStsOk);
  EXPECT_EQ(size.width, 11);
  EXPECT_EQ(size.height, 13);
  zebiHaarClassifierFree_32f(state);

  stage.weights[6] = -2.0f;  // no longer truncates to -1
  ASSERT_EQ(initAlloc(&state, stage, false), zebStsOk);
  EXPECT_EQ(reinterpret_cast<const int*>(state)[11], 0);
  zebiHaarClassifierFree_32f(state);
  EXPECT_EQ(core.liveBlocks, 0);
}

TEST(Haar, EmptyStage) {
  const ZebiRect feature = {0, 0, 1, 1};
  const Zeb32f f = 0;
  const int n = 0;
  ZebiHaarClassifier* state = nullptr;
  ASSERT_EQ(zebiHaarClassifierInitAlloc_32f(&state, &feature, &f, &f, &f, &f, &n, 0), zebStsOk);
  ZebiSize size = {7, 7};
  EXPECT_EQ(zebiGetHaarClassifierSize_32f(state, &size), zebStsOk);
  EXPECT_EQ(size.width, 0);
  EXPECT_EQ(size.height, 0);
  const Zeb8u mark = 1;
  EXPECT_EQ(zebiTiltHaarFeatures_32f(&mark, 1, state), zebStsOk);
  Random random;
  Scene<Zeb32s, Zeb32f> s(random, 20, 2, 50);
  const auto before = s.mask.plane();
  int positive = -1, live = 0;
  for (Zeb8u v : before.data) live += v != 0;
  const auto apply = [&](Zeb32f threshold) {
    return zebiApplyHaarClassifier_32s32f_C1R(SRC, s.norm.pixels(), s.norm.step(), s.mask.pixels(), s.mask.step(),
                                              s.mask.size(), &positive, threshold, state);
  };
  EXPECT_EQ(apply(0.0f), zebStsOk);
  EXPECT_EQ(positive, live);
  EXPECT_TRUE(agree("empty stage", s.mask, before));
  EXPECT_EQ(apply(0.5f), zebStsOk);
  EXPECT_EQ(positive, 0);
  EXPECT_TRUE(agree("empty stage", s.mask, Plane<Zeb8u>(20, 2)));
  zebiHaarClassifierFree_32f(state);
}

TEST(Haar, ConstructionChecks) {
  const auto check = [](auto tag, const char* name, auto function) {
    using T = decltype(tag);
    auto& core = zebcore();
    core.reset();
    const ZebiRect features[3] = {{0, 0, 1, 1}, {1, 2, 3, 4}, {0, 0, 5, 5}};
    const T numbers[3] = {-1, 2, 3};
    const int counts[2] = {2, 1}, zeroCount[2] = {2, 0}, first[2] = {0, 1};
    static ZebiHaarClassifier* state;
    const ZebiRect bad[][3] = {{{0, 0, 0, 1}, {}, {}},  // only the first rectangle is looked at before the failure
                               {{0, 0, 1, 1}, {-1, 2, 3, 4}, {}},
                               {{0, 0, 1, 1}, {1, -1, 3, 4}, {}},
                               {{0, 0, 1, 1}, {1, 1, 1, 1}, {0, 0, 5, 0}}};
    Contract c(name, function, &state, features, numbers, numbers, numbers, numbers, counts, 2);
    c.template nulls<0, 1, 2, 3, 4, 5, 6>().template with<7>(-1, zebStsErrSize);
    c.template with<6>(zeroCount, zebStsErrSize).template with<6>(first, zebStsErrSize);
    for (const auto& b : bad) c.template with<1>(b, zebStsErrBadArgument);
    c.check();
    EXPECT_EQ(core.mallocCalls, 1);  // the valid call's
    zebiHaarClassifierFree_32f(state);
    core.failMallocAt = 0;
    EXPECT_EQ(function(&state, features, numbers, numbers, numbers, numbers, counts, 2), zebStsErrMemAlloc);
    EXPECT_EQ(core.liveBlocks, 0);
  };
  check(Zeb32f(), NAMED(zebiHaarClassifierInitAlloc_32f));
  check(Zeb32s(), NAMED(zebiHaarClassifierInitAlloc_32s));
  check(Zeb32f(), NAMED(zebiTiltedHaarClassifierInitAlloc_32f));
  check(Zeb32s(), NAMED(zebiTiltedHaarClassifierInitAlloc_32s));

  ZebiSize size;
  const Zeb8u mark = 0;
  auto* any = reinterpret_cast<ZebiHaarClassifier*>(&size);
  EXPECT_EQ(zebiHaarClassifierFree_32f(nullptr), zebStsErrNullPointer);
  EXPECT_EQ(zebiHaarClassifierFree_32s(nullptr), zebStsErrNullPointer);
  EXPECT_EQ(zebiGetHaarClassifierSize_32f(nullptr, &size), zebStsErrNullPointer);
  EXPECT_EQ(zebiGetHaarClassifierSize_32s(any, nullptr), zebStsErrNullPointer);
  EXPECT_EQ(zebiTiltHaarFeatures_32f(&mark, 1, nullptr), zebStsErrNullPointer);
  EXPECT_EQ(zebiTiltHaarFeatures_32s(nullptr, 1, any), zebStsErrNullPointer);
}

TEST(Haar, EvaluationChecks) {
  Random random;
  const auto check = [&](auto s, auto n, const char* name, auto function, auto... more) {
    using S = decltype(s);
    using N = decltype(n);
    ZebiHaarClassifier* state = nullptr;
    if constexpr (std::is_integral_v<N>) {
      ASSERT_EQ(initAlloc(&state, randomStage<Zeb32s>(random, 3, false), false), zebStsOk);
    } else {
      ASSERT_EQ(initAlloc(&state, randomStage<Zeb32f>(random, 3, false), false), zebStsOk);
    }
    const int w = 11;
    Scene<S, N> scene(random, w, 3, 60);
    static int positive;
    const auto rest = [&](auto contract, auto offset) {
      constexpr size_t o = decltype(offset)::value;
      auto& c = contract;
      c.template nulls<0, 2 + o, 4 + o, 7 + o, 9 + o>();
      if constexpr (o > 0) c.template nulls<2>();
      c.template sizes<6 + o>().template step<1>(4 * w, 4);
      if constexpr (o > 0) c.template step<3>(4 * w, 4);
      c.template step<3 + o>(4 * w, 4).template step<5 + o>(w).template hostile<6 + o>();
      c.template multiple<1>(4).template multiple<3 + o>(4);
      if constexpr (o > 0) c.template multiple<3>(4);
      c.check();
    };
    const N threshold = N(-1000);
    auto& S1 = scene.upright;
    auto& S2 = scene.tilted;
    auto& M = scene.mask;
    constexpr bool plain = std::is_invocable_v<decltype(function), const S*, int, const N*, int, Zeb8u*, int, ZebiSize,
                                               int*, N, const ZebiHaarClassifier*, decltype(more)...>;
    if constexpr (plain)
      rest(Contract(name, function, S1.pixels(), S1.step(), scene.norm.pixels(), scene.norm.step(), M.pixels(),
                    M.step(), M.size(), &positive, threshold, state, more...),
           std::integral_constant<size_t, 0>());
    else
      rest(Contract(name, function, S1.pixels(), S1.step(), S2.pixels(), S2.step(), scene.norm.pixels(),
                    scene.norm.step(), M.pixels(), M.step(), M.size(), &positive, threshold, state, more...),
           std::integral_constant<size_t, 2>());
    // The offset table cannot be had: the mask keeps its bytes.
    const auto before = M.plane();
    zebcore().reset();
    zebcore().failMallocAt = 0;
    if constexpr (plain)
      EXPECT_EQ(function(S1.pixels(), S1.step(), scene.norm.pixels(), scene.norm.step(), M.pixels(), M.step(), M.size(),
                         &positive, N(1000), state, more...),
                zebStsErrMemAlloc);
    else
      EXPECT_EQ(function(S1.pixels(), S1.step(), S2.pixels(), S2.step(), scene.norm.pixels(), scene.norm.step(),
                         M.pixels(), M.step(), M.size(), &positive, N(1000), state, more...),
                zebStsErrMemAlloc);
    EXPECT_TRUE(agree(name, M, before));
    zebcore().reset();
    zebiHaarClassifierFree_32f(state);
  };
  check(Zeb32f(), Zeb32f(), "zebiApplyHaarClassifier_32f_C1R", zebiApplyHaarClassifier_32f_C1R);
  check(Zeb32s(), Zeb32f(), "zebiApplyHaarClassifier_32s32f_C1R", zebiApplyHaarClassifier_32s32f_C1R);
  check(Zeb32s(), Zeb32s(), "zebiApplyHaarClassifier_32s_C1RSfs", zebiApplyHaarClassifier_32s_C1RSfs, 1);
  check(Zeb32f(), Zeb32f(), "zebiApplyMixedHaarClassifier_32f_C1R", zebiApplyMixedHaarClassifier_32f_C1R);
  check(Zeb32s(), Zeb32f(), "zebiApplyMixedHaarClassifier_32s32f_C1R", zebiApplyMixedHaarClassifier_32s32f_C1R);
  check(Zeb32s(), Zeb32s(), "zebiApplyMixedHaarClassifier_32s_C1RSfs", zebiApplyMixedHaarClassifier_32s_C1RSfs, 1);
}

}  // namespace
