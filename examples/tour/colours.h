// Colours that several sections use.
#pragma once

#include <algorithm>
#include <cmath>
#include <vector>

#include "draw.h"
#include "picture.h"

namespace tour {

using support::Picture;

constexpr support::Colour red = {255, 60, 60}, green = {90, 255, 120}, yellow = {255, 230, 60};

struct Rgb {
  float r, g, b;  // 0 to 1
};

// 0 dark blue, over cyan and yellow, 1 red.
inline Rgb warmth(float t) {
  const auto hat = [t](float middle) { return std::clamp(1.5f - std::fabs(4 * t - middle), 0.0f, 1.0f); };
  return {hat(3), hat(2), hat(1)};
}

inline void put(Zeb8u* rgb, Rgb colour, float light) {
  const float channels[] = {colour.r, colour.g, colour.b};
  for (int i = 0; i < 3; ++i) rgb[i] = support::level(255 * light * channels[i]);
}

// A gray picture dimmed, so that what is drawn on it stands out.
inline Picture backdrop(const Picture& gray) {
  return support::toned(gray, 0.5f, 40);
}

// Distances from 0 to `reach` as colours, with a darker line every `spacing`.
template <class T>
Picture contours(const std::vector<T>& distance, ZebiSize size, float reach, float spacing) {
  Picture out(size.width, size.height, 3);
  for (size_t i = 0; i < distance.size(); ++i) {
    const float d = static_cast<float>(distance[i]);
    const float phase = std::fmod(d, spacing);
    put(&out.pixels[3 * i], warmth(std::sqrt(std::min(1.0f, d / reach))), d > 0 && phase < 1.2f ? 0.55f : 1.0f);
  }
  return out;
}

// Every segment in the mean of its colours.
template <class T>
Picture averaged(const std::vector<T>& labels, const Picture& photo) {
  std::vector<double> sums(4 * 65536);
  for (size_t i = 0; i < labels.size(); ++i) {
    for (int c = 0; c < 3; ++c) sums[4 * labels[i] + c] += photo.pixels[3 * i + c];
    ++sums[4 * labels[i] + 3];
  }
  Picture out = photo;
  for (size_t i = 0; i < labels.size(); ++i)
    for (int c = 0; c < 3; ++c)
      out.pixels[3 * i + c] = support::level(sums[4 * labels[i] + c] / sums[4 * labels[i] + 3]);
  return out;
}

// Direction as hue, strength as light; opposite directions have opposite colours of a wheel.
inline Picture directions(const std::vector<Zeb16s>& magnitude, const std::vector<Zeb32f>& angle, ZebiSize size) {
  Picture out(size.width, size.height, 3);
  for (size_t i = 0; i < magnitude.size(); ++i) {
    const auto channel = [&](float turn) { return 0.5f + 0.5f * std::cos(angle[i] - turn); };
    put(&out.pixels[3 * i], {channel(0), channel(2.094f), channel(4.189f)},
        std::min(1.0f, static_cast<float>(magnitude[i]) / 1500));
  }
  return out;
}

}  // namespace tour
