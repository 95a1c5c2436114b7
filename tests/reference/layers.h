// Pyramid layers of any rate, pixel by pixel in double precision.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "reference/gauss_pyramid.h"
#include "reference/plane.h"

namespace ref {

// Weights by distance from the centre. bits: 13 or 12 fraction bits, 0 for floats. unitSum: what rounding took from the
// weights goes to the centre.
template <class K>
std::vector<double> layerWeights(const std::vector<K>& kernel, int bits, bool unitSum) {
  const size_t half = kernel.size() / 2;
  double sum = static_cast<double>(kernel[half]);
  for (size_t i = 0; i < half; ++i) sum += 2.0 * static_cast<double>(kernel[i]);
  std::vector<double> weights;
  for (size_t distance = 0; distance <= half; ++distance) {
    double k = static_cast<double>(kernel[half - distance]);
    if (bits) {
      if (sum != 0) k = std::floor(std::trunc(k * 16384 / sum) / (bits == 13 ? 2 : 4));
      k = std::clamp(k, -32768.0, 32767.0) / (1 << bits);
    } else if (sum != 0) {
      k /= sum;
    }
    weights.push_back(k);
  }
  if (sum != 0 && unitSum) {
    weights[0] = 1;
    for (size_t j = 1; j < weights.size(); ++j) weights[0] -= 2 * weights[j];
  }
  return weights;
}

inline Plane<double> layerSmoothed(const Plane<double>& src, const std::vector<double>& weights) {
  Plane<double> rows = src, out = src;
  const auto pass = [&](const Plane<double>& from, Plane<double>& to, bool along) {
    for (int y = 0; y < from.height; ++y)
      for (int x = 0; x < from.width; ++x)
        for (int c = 0; c < from.channels; ++c) {
          double s = weights[0] * from.at(x, y, c);
          for (int j = 1; j < static_cast<int>(weights.size()); ++j)
            for (int d : {-j, j})
              s += weights[static_cast<size_t>(j)] *
                   (along ? from.at(mirrored(x + d, from.width), y, c) : from.at(x, mirrored(y + d, from.height), c));
          to.at(x, y, c) = s;
        }
  };
  pass(src, rows, true);
  pass(rows, out, false);
  return out;
}

// Pixels of an image at (step x, step y).
inline Plane<double> layerRead(const Plane<double>& src, int width, int height, double step) {
  Plane<double> out(width, height, src.channels);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < src.channels; ++c) {
        const double px = std::min(step * x, src.width - 1.0), py = std::min(step * y, src.height - 1.0);
        const int i = static_cast<int>(px), j = static_cast<int>(py);
        const int k = std::min(i + 1, src.width - 1), l = std::min(j + 1, src.height - 1);
        const double f = px - i, g = py - j;
        out.at(x, y, c) = (1 - g) * ((1 - f) * src.at(i, j, c) + f * src.at(k, j, c)) +
                          g * ((1 - f) * src.at(i, l, c) + f * src.at(k, l, c));
      }
  return out;
}

}  // namespace ref
