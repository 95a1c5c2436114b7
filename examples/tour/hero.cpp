#include "hero.h"

#include <cmath>
#include <functional>

#include "colours.h"
#include "draw.h"

namespace tour {
namespace {

std::vector<Zeb8u> bytesFor(const std::function<ZebStatus(int*)>& query) {
  int bytes = 0;
  requireOk(query(&bytes));
  return std::vector<Zeb8u>(static_cast<size_t>(bytes));
}

Picture edges(const Picture& gray) {
  Picture out(gray.width, gray.height, 1);
  auto scratch = bytesFor(
      [&](int* bytes) { return zebiCannyBorderGetSize(gray.size(), zebFilterSobel, zebMskSize3x3, zeb8u, bytes); });
  requireOk(zebiCannyBorder_8u_C1R(gray.pixels.data(), gray.step(), out.pixels.data(), out.step(), gray.size(),
                                   zebFilterSobel, zebMskSize3x3, zebBorderRepl, 0, 80, 200, zebNormL2,
                                   scratch.data()));
  return out;
}

// Direction as hue, strength as light.
Picture directions(const Picture& color) {
  const ZebiSize size = color.size();
  std::vector<Zeb16s> magnitude(static_cast<size_t>(size.width) * size.height);
  std::vector<Zeb32f> angle(magnitude.size());
  auto scratch =
      bytesFor([&](int* bytes) { return zebiGradientVectorGetBufferSize(size, zebMskSize3x3, zeb8u, 3, bytes); });
  const Zeb8u none[3] = {0, 0, 0};
  requireOk(zebiGradientVectorScharr_8u16s_C3C1R(color.pixels.data(), color.step(), nullptr, 0, nullptr, 0,
                                                 magnitude.data(), 2 * size.width, angle.data(), 4 * size.width, size,
                                                 zebMskSize3x3, zebNormL2, zebBorderRepl, none, scratch.data()));
  Picture out(size.width, size.height, 3);
  for (size_t i = 0; i < angle.size(); ++i)
    for (int c = 0; c < 3; ++c)
      out.pixels[3 * i + c] = support::level(std::min(1.0f, std::sqrt(magnitude[i] / 1600.0f)) * 255 *
                                             (0.55f + 0.45f * std::cos(angle[i] - 2.0944f * static_cast<float>(c))));
  return out;
}

// Segments grown from as many markers as a byte can name, in their mean colours.
Picture segments(const Picture& color) {
  const ZebiSize size = color.size();
  const int pitch = static_cast<int>(std::sqrt(static_cast<double>(size.width) * size.height / 200)) + 2;
  std::vector<Zeb8u> marker(static_cast<size_t>(size.width) * size.height);
  int labels = 0;
  for (int y = pitch / 2; y < size.height; y += pitch)
    for (int x = pitch / 2; x < size.width; x += pitch)
      marker[static_cast<size_t>(y) * size.width + x] = static_cast<Zeb8u>(++labels);
  auto scratch = bytesFor([&](int* bytes) { return zebiSegmentGradientGetBufferSize_8u_C3IR(size, bytes); });
  requireOk(zebiSegmentGradient_8u_C3IR(color.pixels.data(), color.step(), marker.data(), size.width, size, zebiNormL1,
                                        0, scratch.data()));
  std::vector<double> sums(4 * static_cast<size_t>(labels + 1));
  for (size_t i = 0; i < marker.size(); ++i) {
    for (int c = 0; c < 3; ++c) sums[4 * marker[i] + c] += color.pixels[3 * i + c];
    ++sums[4 * marker[i] + 3];
  }
  Picture out = color;
  for (size_t i = 0; i < marker.size(); ++i)
    for (int c = 0; c < 3; ++c)
      out.pixels[3 * i + c] = support::level(sums[4 * marker[i] + c] / sums[4 * marker[i] + 3]);
  return out;
}

// How far it is to the nearest edge.
Picture distances(const Picture& edge) {
  Picture features = edge;
  for (Zeb8u& v : features.pixels) v = static_cast<Zeb8u>(255 - v);
  std::vector<Zeb32f> distance(edge.pixels.size());
  auto scratch =
      bytesFor([&](int* bytes) { return zebiTrueDistanceTransformGetBufferSize_8u32f_C1R(edge.size(), bytes); });
  requireOk(zebiTrueDistanceTransform_8u32f_C1R(features.pixels.data(), features.step(), distance.data(),
                                                4 * edge.width, edge.size(), scratch.data()));
  Picture out(edge.width, edge.height, 3);
  for (size_t i = 0; i < distance.size(); ++i)
    put(&out.pixels[3 * i], warmth(std::sqrt(std::min(1.0f, distance[i] / 60))),
        std::fmod(distance[i], 8.0f) < 1 ? 0.6f : 1);
  return out;
}

Picture opened(const Picture& color) {
  constexpr int side = 9;
  const ZebiSize mask = {side, side};
  const ZebiPoint centre = {side / 2, side / 2};
  Picture least = color, out = color;
  auto scratch = bytesFor([&](int* bytes) { return zebiFilterMinGetBufferSize_8u_C3R(color.width, mask, bytes); });
  requireOk(zebiFilterMinBorderReplicate_8u_C3R(color.pixels.data(), color.step(), least.pixels.data(), least.step(),
                                                color.size(), mask, centre, scratch.data()));
  scratch = bytesFor([&](int* bytes) { return zebiFilterMaxGetBufferSize_8u_C3R(color.width, mask, bytes); });
  requireOk(zebiFilterMaxBorderReplicate_8u_C3R(least.pixels.data(), least.step(), out.pixels.data(), out.step(),
                                                color.size(), mask, centre, scratch.data()));
  return out;
}

}  // namespace

Picture hero(const Scene& scene) {
  const Picture edge = edges(scene.gray);
  const Picture looks[] = {scene.color,     opened(scene.color), segments(scene.color), directions(scene.color),
                           distances(edge), support::toned(edge)};
  constexpr int count = 6;
  // The upper two thirds, two strips of every look, so that each is seen at several places.
  const int height = std::max(1, std::min(scene.color.height * 2 / 3, scene.color.width));
  Picture out(2 * scene.color.width, height, 3);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < out.width; ++x) {
      const int half = x / scene.color.width, from = x % scene.color.width;
      const int strip = (from + y / 6) * count / (scene.color.width + height / 6);
      const Picture& look = looks[half == 0 ? strip : (strip + 3) % count];
      std::copy_n(look.at(from, y), 3, out.at(x, y));
    }
  return out;
}

}  // namespace tour
