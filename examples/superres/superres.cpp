#include "superres.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>

#include "status.h"

namespace superres {

using support::requireOk;

std::vector<Observation> observe(const Picture& large, int count) {
  std::vector<Observation> out;
  std::minstd_rand random(1);
  const auto uniform = [&](double low, double high) { return low + (high - low) * (random() / 2147483646.0); };
  for (int k = 0; k < count; ++k) {
    Observation o{Picture(large.width / scale, large.height / scale, 1), {scale, 0, 0, 0, scale, 0}};
    const double angle = k == 0 ? 0 : uniform(-0.01, 0.01);
    const double c = scale * std::cos(angle), s = scale * std::sin(angle);
    if (k > 0) o.place = {c, -s, uniform(-1, 1), s, c, uniform(-1, 1)};
    for (int y = 0; y < o.picture.height; ++y)
      for (int x = 0; x < o.picture.width; ++x) {
        const auto& p = o.place;
        const int cx = static_cast<int>(std::floor(p[0] * x + p[1] * y + p[2] + 0.5));
        const int cy = static_cast<int>(std::floor(p[3] * x + p[4] * y + p[5] + 0.5));
        double value = uniform(-1.5, 1.5);
        for (int i = 0; i < 9; ++i) {
          const int u = std::clamp(cx + i % 3 - 1, 0, large.width - 1);
          const int v = std::clamp(cy + i / 3 - 1, 0, large.height - 1);
          value += static_cast<double>(blur[static_cast<size_t>(i)]) * *large.at(u, v);
        }
        *o.picture.at(x, y) = support::level(value);
      }
    out.push_back(std::move(o));
  }
  return out;
}

Picture enlarged(const Picture& small, ZebiSize size) {
  Picture out(size.width, size.height, 1);
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const float u = static_cast<float>(x) / scale, v = static_cast<float>(y) / scale;
      *out.at(x, y) = support::level(static_cast<double>(support::sample(small, u, v)));
    }
  return out;
}

Result restored(const std::vector<Observation>& observations, const Picture& start, int steps) {
  const ZebiSize size = start.size(), smallSize = observations[0].picture.size();
  const size_t count = observations[0].picture.pixels.size();
  std::vector<Zeb16s> residual(count);
  std::vector<Zeb32f> scaled(count, 1.0f), estimate(start.pixels.begin(), start.pixels.end());
  const int residualStep = smallSize.width * static_cast<int>(sizeof(Zeb16s));
  const int scaledStep = smallSize.width * static_cast<int>(sizeof(Zeb32f));
  support::Plane gradient(size), weight(size);
  Result result{start, {}, 0};
  const auto scatter = [&](const Observation& o, support::Plane& to) {
    requireOk(zebiSRUpdateGradient_PSF3x3_32f_C1R(scaled.data(), scaledStep, smallSize, to.data(), to.step(), size,
                                                  o.place.data(), blur.data()));
  };
  // How much of a level that all observations miss would come back to a pixel.
  for (const Observation& o : observations) scatter(o, weight);
  for (int step = 0; step < steps; ++step) {
    std::fill(gradient.pixels.begin(), gradient.pixels.end(), 0.0f);
    double squares = 0;
    const auto began = std::chrono::steady_clock::now();
    for (const Observation& o : observations) {
      requireOk(zebiSRCalcResidual_PSF3x3_8u16s_C1R(result.picture.pixels.data(), result.picture.step(), size,
                                                    o.picture.pixels.data(), o.picture.step(), residual.data(),
                                                    residualStep, smallSize, o.place.data(), blur.data()));
      for (size_t i = 0; i < count; ++i) {
        scaled[i] = static_cast<float>(residual[i]) / 128;
        squares += static_cast<double>(scaled[i]) * static_cast<double>(scaled[i]);
      }
      scatter(o, gradient);
    }
    const auto ended = std::chrono::steady_clock::now();
    result.milliseconds += std::chrono::duration<double, std::milli>(ended - began).count();
    result.residuals.push_back(std::sqrt(squares / static_cast<double>(count * observations.size())));
    for (size_t i = 0; i < estimate.size(); ++i) {
      if (weight.pixels[i] > 0.01f) estimate[i] += 1.5f * gradient.pixels[i] / weight.pixels[i];
      result.picture.pixels[i] = support::level(static_cast<double>(estimate[i]));
    }
  }
  return result;
}

double difference(const Picture& a, const Picture& b) {
  const int margin = std::min(a.width, a.height) / 16;
  double squares = 0, n = 0;
  for (int y = margin; y < a.height - margin; ++y)
    for (int x = margin; x < a.width - margin; ++x, ++n) {
      const double d = *a.at(x, y) - *b.at(x, y);
      squares += d * d;
    }
  return std::sqrt(squares / std::max(n, 1.0));
}

}  // namespace superres
