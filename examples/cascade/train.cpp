// Boosting of a small cascade on rendered examples.
#include <algorithm>
#include <cmath>
#include <numeric>

#include "cascade.h"

namespace cascade {
namespace {

constexpr int objects = 500;
constexpr int backgrounds = 2000;
constexpr int mostClassifiers = 10;

float uniform(std::mt19937& engine, float low, float high) {
  return std::uniform_real_distribution<float>(low, high)(engine);
}

// A texture without the object: a slope, some bars and discs, noise.
Picture background(std::mt19937& engine, int side) {
  Picture p(side, side, 1);
  const float base = uniform(engine, 20, 230), dx = uniform(engine, -4, 4), dy = uniform(engine, -4, 4);
  const float noise = uniform(engine, 0, 12);
  struct Shape {
    float x, y, a, b, level, disc;
  };
  std::vector<Shape> shapes;
  const int count = static_cast<int>(uniform(engine, 2, 4.0f + side / 6.0f));
  for (int i = 0; i < count; ++i)
    shapes.push_back({uniform(engine, -4, side + 4.0f), uniform(engine, -4, side + 4.0f), uniform(engine, 1, 14),
                      uniform(engine, 1, 14), uniform(engine, 0, 255), uniform(engine, 0, 1)});
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      float v = base + dx * x + dy * y;
      for (const Shape& s : shapes) {
        const float u = (x - s.x) / s.a, w = (y - s.y) / s.b;
        if (s.disc > 0.5f ? u * u + w * w < 1 : std::fabs(u) < 1 && std::fabs(w) < 1) v = s.level;
      }
      *p.at(x, y) = static_cast<Zeb8u>(std::clamp(v + uniform(engine, -noise, noise), 0.0f, 255.0f));
    }
  }
  return p;
}

// The object in a window, somewhat out of place, size and contrast, over a background.
Picture objectWindow(std::mt19937& engine) {
  Picture p = background(engine, window);
  const float side = uniform(engine, 22.0f, 25.5f);
  const float off = (window - side) / 2;
  const float x = uniform(engine, -0.9f, 0.9f), y = uniform(engine, -0.9f, 0.9f);
  drawObject(p, off + x, off + y, side, uniform(engine, 0.35f, 1.0f));
  const float noise = uniform(engine, 0, 8);
  for (Zeb8u& v : p.pixels) v = static_cast<Zeb8u>(std::clamp(v + uniform(engine, -noise, noise), 0.0f, 255.0f));
  return p;
}

// A rectangle inside the window, weighted so that a flat window gives 0.
struct Feature {
  ZebiRect part;
  float weight;
};

std::vector<Feature> featurePool() {
  std::vector<Feature> pool;
  for (int h = 3; h <= 15; h += 3)
    for (int w = 3; w <= 15; w += 3)
      for (int y = 0; y + h <= window; y += 2)
        for (int x = 0; x + w <= window; x += 2)
          pool.push_back({{x, y, w, h}, static_cast<float>(window * window) / static_cast<float>(w * h)});
  return pool;
}

// An example as the features see it: its table, and its deviation from the library.
struct Example {
  explicit Example(const Picture& p) : sums((window + 1) * (window + 1)) {
    std::vector<Zeb64f> squares(sums.size());
    zebiSqrIntegral_8u32s64f_C1R(p.pixels.data(), p.step(), sums.data(), 4 * (window + 1), squares.data(),
                                 8 * (window + 1), p.size(), 0, 0.0);
    zebiRectStdDev_32s32f_C1R(sums.data(), 4 * (window + 1), squares.data(), 8 * (window + 1), &deviation, 4, {1, 1},
                              {0, 0, window, window});
  }
  int area(const ZebiRect& r) const {
    const auto at = [&](int x, int y) { return sums[static_cast<size_t>(y) * (window + 1) + x]; };
    return at(r.x + r.width, r.y + r.height) - at(r.x, r.y + r.height) - at(r.x + r.width, r.y) + at(r.x, r.y);
  }
  // What the library compares with norm x threshold, over norm.
  float value(const Feature& f) const {
    const float t = -static_cast<float>(area({0, 0, window, window})) + f.weight * static_cast<float>(area(f.part));
    return t / std::max(deviation, 1.0f);
  }

  std::vector<Zeb32s> sums;
  Zeb32f deviation = 0;
};

struct Stump {
  int feature = 0;
  float threshold = 0, below = 0, above = 0;
  float of(float value) const { return value < threshold ? below : above; }
};

// One feature's values over all examples, and the examples in their order.
struct Column {
  std::vector<float> values;
  std::vector<int> order;
};

// The stump with the least bound on the weighted error.
Stump bestStump(const std::vector<Column>& columns, const std::vector<double>& weights, int positives) {
  double positiveTotal = 0, total = 0;
  for (size_t i = 0; i < weights.size(); ++i) {
    total += weights[i];
    if (static_cast<int>(i) < positives) positiveTotal += weights[i];
  }
  const double negativeTotal = total - positiveTotal, smooth = 0.5 / static_cast<double>(weights.size());
  Stump best;
  double least = 1e9;
  for (size_t f = 0; f < columns.size(); ++f) {
    const Column& c = columns[f];
    double positive = 0, negative = 0;
    for (size_t k = 0; k + 1 < c.order.size(); ++k) {
      const int i = c.order[k];
      (i < positives ? positive : negative) += weights[i];
      const float here = c.values[i], next = c.values[c.order[k + 1]];
      if (here == next) continue;
      const double rightPositive = positiveTotal - positive, rightNegative = negativeTotal - negative;
      const double bound = std::sqrt(positive * negative) + std::sqrt(rightPositive * rightNegative);
      if (bound >= least) continue;
      least = bound;
      best = {static_cast<int>(f), 0.5f * (here + next),
              static_cast<float>(0.5 * std::log((positive + smooth) / (negative + smooth))),
              static_cast<float>(0.5 * std::log((rightPositive + smooth) / (rightNegative + smooth)))};
    }
  }
  return best;
}

Stage trainStage(const std::vector<Feature>& pool, const std::vector<Example>& examples, int positives) {
  const size_t n = examples.size();
  std::vector<Column> columns(pool.size());
  for (size_t f = 0; f < pool.size(); ++f) {
    Column& c = columns[f];
    c.values.resize(n);
    for (size_t i = 0; i < n; ++i) c.values[i] = examples[i].value(pool[f]);
    c.order.resize(n);
    std::iota(c.order.begin(), c.order.end(), 0);
    std::sort(c.order.begin(), c.order.end(), [&](int a, int b) { return c.values[a] < c.values[b]; });
  }
  std::vector<double> weights(n);
  for (size_t i = 0; i < n; ++i)
    weights[i] = 0.5 / static_cast<double>(static_cast<int>(i) < positives ? positives : n - positives);

  Stage stage;
  std::vector<float> scores(n, 0.0f);
  for (int round = 0; round < mostClassifiers; ++round) {
    const Stump stump = bestStump(columns, weights, positives);
    const Feature& f = pool[stump.feature];
    stage.features.insert(stage.features.end(), {{0, 0, window, window}, f.part});
    stage.weights.insert(stage.weights.end(), {-1.0f, f.weight});
    stage.thresholds.push_back(stump.threshold);
    stage.values1.push_back(stump.below);
    stage.values2.push_back(stump.above);
    stage.counts.push_back(2);
    double sum = 0;
    for (size_t i = 0; i < n; ++i) {
      const float vote = stump.of(columns[stump.feature].values[i]);
      scores[i] += vote;
      weights[i] *= std::exp(static_cast<int>(i) < positives ? -vote : vote);
      sum += weights[i];
    }
    for (double& w : weights) w /= sum;

    // Keeps all but one in two hundred objects; enough once a quarter of the backgrounds is left at most.
    std::vector<float> ranked(scores.begin(), scores.begin() + positives);
    std::sort(ranked.begin(), ranked.end());
    stage.threshold = ranked[positives / 200] - 1e-3f;
    const auto kept =
        std::count_if(scores.begin() + positives, scores.end(), [&](float s) { return s >= stage.threshold; });
    if (kept * 4 < static_cast<long>(n) - positives) break;
  }
  return stage;
}

}  // namespace

void drawObject(Picture& picture, float x, float y, float side, float contrast) {
  constexpr int grid = 4;  // samples per pixel and direction
  const int left = std::max(0, static_cast<int>(x)), top = std::max(0, static_cast<int>(y));
  const int right = std::min(picture.width, static_cast<int>(x + side) + 2);
  const int bottom = std::min(picture.height, static_cast<int>(y + side) + 2);
  for (int py = top; py < bottom; ++py) {
    for (int px = left; px < right; ++px) {
      float light = 0, covered = 0;
      for (int k = 0; k < grid * grid; ++k) {
        const float u = ((px + (k % grid + 0.5f) / grid) - x) / side * 2 - 1;
        const float v = ((py + (k / grid + 0.5f) / grid) - y) / side * 2 - 1;
        const float r = std::sqrt(u * u + v * v);
        if (r > 0.97f) continue;
        covered += 1;
        light += r < 0.22f || (r > 0.5f && r < 0.78f) ? 0.0f : 1.0f;
      }
      if (covered == 0) continue;
      const float level = 128 + contrast * (255 * light / covered - 128);
      const float share = covered / (grid * grid);
      Zeb8u& p = *picture.at(px, py);
      p = static_cast<Zeb8u>(std::clamp(p + share * (level - p), 0.0f, 255.0f));
    }
  }
}

std::vector<Stage> train(std::mt19937& engine, int stages) {
  const auto pool = featurePool();
  std::vector<Example> positives;
  for (int i = 0; i < objects; ++i) positives.emplace_back(objectWindow(engine));
  std::vector<Stage> trained;
  while (static_cast<int>(trained.size()) < stages) {
    // Windows of fresh backgrounds that the cascade so far takes for the object.
    std::vector<Example> examples = positives;
    const Detector detector(trained);
    for (int tries = 0; static_cast<int>(examples.size()) < objects + backgrounds && tries < 1500; ++tries) {
      const Picture scene = background(engine, 6 * window);
      ZebiSize positions;
      std::vector<long long> left(trained.size() + 1);
      const auto mask = detector.passing(scene, positions, left);
      std::vector<int> passing;
      for (int i = 0; i < positions.width * positions.height; ++i)
        if (mask[i]) passing.push_back(i);
      std::shuffle(passing.begin(), passing.end(), engine);
      for (size_t k = 0; k < passing.size() && k < 40 && static_cast<int>(examples.size()) < objects + backgrounds;
           ++k) {
        Picture patch(window, window, 1);
        for (int y = 0; y < window; ++y)
          for (int x = 0; x < window; ++x)
            *patch.at(x, y) = *scene.at(passing[k] % positions.width + x, passing[k] / positions.width + y);
        examples.emplace_back(patch);
      }
    }
    if (examples.size() < positives.size() + 60) break;  // hardly any background is left to learn from
    trained.push_back(trainStage(pool, examples, objects));
  }
  return trained;
}

}  // namespace cascade
