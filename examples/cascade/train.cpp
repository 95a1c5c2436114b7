// Boosting of a small cascade on rendered examples.
#include <algorithm>
#include <cmath>

#include "cascade.h"

namespace cascade {
namespace {

constexpr int objects = 1000;
constexpr int backgrounds = 2000;
constexpr int mostClassifiers = 40;

float uniform(std::mt19937& engine, float low, float high) {
  return std::uniform_real_distribution<float>(low, high)(engine);
}

// A grid of random heights, read between its points: the soft shapes of cloth, skin and clouds.
struct Clouds {
  Clouds(std::mt19937& engine, float c, float strength) : cell(c), heights(lattice * lattice) {
    for (float& h : heights) h = uniform(engine, -strength, strength);
  }
  float at(int x, int y) const {
    const float u = x / cell, v = y / cell;
    const int left = static_cast<int>(u), top = static_cast<int>(v);
    const auto height = [&](int i, int j) { return heights[(top + j) % lattice * lattice + (left + i) % lattice]; };
    const float fx = u - left, fy = v - top;
    return (height(0, 0) * (1 - fx) + height(1, 0) * fx) * (1 - fy) +
           (height(0, 1) * (1 - fx) + height(1, 1) * fx) * fy;
  }

  static constexpr int lattice = 32;
  float cell;
  std::vector<float> heights;
};

// A disc or a bar around a centre, with half sides a and b.
void drawShape(Picture& p, float x, float y, float a, float b, float level, bool disc) {
  for (int py = std::max(0, static_cast<int>(y - b)); py < std::min<float>(p.height, y + b + 1); ++py)
    for (int px = std::max(0, static_cast<int>(x - a)); px < std::min<float>(p.width, x + a + 1); ++px) {
      const float u = (px - x) / a, v = (py - y) / b;
      if (disc ? u * u + v * v < 1 : std::fabs(u) < 1 && std::fabs(v) < 1) *p.at(px, py) = support::level(level);
    }
}

// What looks much like the object and is not: discs one inside the other, of any proportions and light.
void drawLure(Picture& p, std::mt19937& engine) {
  const float x = uniform(engine, 0, static_cast<float>(p.width)), y = uniform(engine, 0, static_cast<float>(p.height));
  const float flat = uniform(engine, 0.7f, 1.4f);
  float radius = uniform(engine, 7, 20);
  for (int ring = static_cast<int>(uniform(engine, 1, 4)); ring > 0; --ring) {
    const float off = uniform(engine, -0.2f, 0.2f) * radius;
    drawShape(p, x + off, y, radius * flat, radius, uniform(engine, 0, 255), true);
    radius *= uniform(engine, 0.3f, 0.9f);
  }
}

// A texture without the object: a slope, some bars and discs, clouds, lures, noise.
Picture background(std::mt19937& engine, int side) {
  Picture p(side, side, 1);
  const float base = uniform(engine, 20, 230), dx = uniform(engine, -4, 4), dy = uniform(engine, -4, 4);
  const float noise = uniform(engine, 0, 12);
  const bool cloudy = uniform(engine, 0, 1) < 0.6f;
  std::vector<Clouds> clouds;
  for (float cell : {24.0f, 11.0f, 5.0f}) clouds.emplace_back(engine, cell, cloudy ? uniform(engine, 0, 90) : 0.0f);
  for (int y = 0; y < side; ++y)
    for (int x = 0; x < side; ++x) {
      float v = base + (cloudy ? 0.3f : 1.0f) * (dx * x + dy * y);
      for (const Clouds& c : clouds) v += c.at(x, y);
      *p.at(x, y) = support::level(v);
    }
  const int count = static_cast<int>(uniform(engine, 2, 4.0f + side / 6.0f));
  for (int i = 0; i < count; ++i) {
    const float x = uniform(engine, -4, side + 4.0f), y = uniform(engine, -4, side + 4.0f);
    // One after the other: the order in which a call's arguments are formed is the compiler's.
    const bool disc = uniform(engine, 0, 1) > 0.5f;
    const float level = uniform(engine, 0, 255), b = uniform(engine, 1, 14), a = uniform(engine, 1, 14);
    drawShape(p, x, y, a, b, level, disc);
  }
  if (side > window && uniform(engine, 0, 1) < 0.5f)
    for (int i = 0; i < 6; ++i) drawLure(p, engine);
  for (Zeb8u& v : p.pixels) v = support::level(v + uniform(engine, -noise, noise));
  return p;
}

// The object in a window, somewhat out of place, size and contrast, over a background.
Picture objectWindow(std::mt19937& engine) {
  Picture p = background(engine, window);
  const float side = uniform(engine, 22.0f, 26.0f);
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

// One feature's values over all examples, in steps between the smallest and the largest.
struct Column {
  static constexpr int steps = 128;
  Column(const Feature& feature, const std::vector<Example>& examples)
      : values(examples.size()), step(examples.size()) {
    std::transform(examples.begin(), examples.end(), values.begin(),
                   [&](const Example& e) { return e.value(feature); });
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    least = *low, width = std::max((*high - *low) / steps, 1e-6f);
    for (size_t i = 0; i < values.size(); ++i)
      step[i] = static_cast<Zeb8u>(std::min<float>(steps - 1, (values[i] - least) / width));
  }

  std::vector<float> values;
  std::vector<Zeb8u> step;
  float least, width;
};

// The stump with the least bound on the weighted error.
Stump bestStump(const std::vector<Column>& columns, const std::vector<double>& weights, size_t positives) {
  const double smooth = 0.5 / static_cast<double>(weights.size());
  Stump best;
  double least = 1e9;
  for (size_t f = 0; f < columns.size(); ++f) {
    const Column& c = columns[f];
    double share[2][Column::steps] = {{0}}, total[2] = {0, 0}, below[2] = {0, 0};
    for (size_t i = 0; i < weights.size(); ++i) share[i < positives][c.step[i]] += weights[i];
    for (int k = 0; k < Column::steps; ++k)
      for (int side : {0, 1}) total[side] += share[side][k];
    for (int k = 0; k + 1 < Column::steps; ++k) {
      for (int side : {0, 1}) below[side] += share[side][k];
      const double above[2] = {total[0] - below[0], total[1] - below[1]};
      const double bound = std::sqrt(below[0] * below[1]) + std::sqrt(std::max(0.0, above[0] * above[1]));
      if (bound >= least) continue;
      least = bound;
      best = {static_cast<int>(f), c.least + static_cast<float>(k + 1) * c.width,
              static_cast<float>(0.5 * std::log((below[1] + smooth) / (below[0] + smooth))),
              static_cast<float>(0.5 * std::log((above[1] + smooth) / (above[0] + smooth)))};
    }
  }
  return best;
}

Stage trainStage(const std::vector<Feature>& pool, const std::vector<Example>& examples, int positives) {
  const size_t n = examples.size();
  std::vector<Column> columns;
  for (const Feature& feature : pool) columns.emplace_back(feature, examples);
  std::vector<double> weights(n);
  for (size_t i = 0; i < n; ++i)
    weights[i] = 0.5 / static_cast<double>(static_cast<int>(i) < positives ? positives : n - positives);

  Stage stage;
  std::vector<float> scores(n, 0.0f);
  for (int round = 0; round < mostClassifiers; ++round) {
    const Stump stump = bestStump(columns, weights, static_cast<size_t>(positives));
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
    stage.threshold = ranked[positives / 500] - 1e-3f;
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
    for (int tries = 0; static_cast<int>(examples.size()) < objects + backgrounds && tries < 1200; ++tries) {
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
    if (examples.size() < positives.size() + 100) break;  // hardly any background is left to learn from
    trained.push_back(trainStage(pool, examples, objects));
  }
  return trained;
}

}  // namespace cascade
