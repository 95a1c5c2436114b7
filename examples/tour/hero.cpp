#include "hero.h"

#include <cmath>

#include "colours.h"
#include "draw.h"

namespace tour {
namespace {

Picture edges(const Picture& gray) {
  Picture out(gray.width, gray.height, 1);
  auto scratch = bytesFor(zebiCannyBorderGetSize, gray.size(), zebFilterSobel, zebMskSize3x3, zeb8u);
  requireOk(zebiCannyBorder_8u_C1R(gray.pixels.data(), gray.step(), out.pixels.data(), out.step(), gray.size(),
                                   zebFilterSobel, zebMskSize3x3, zebBorderRepl, 0, 80, 200, zebNormL2,
                                   scratch.data()));
  return out;
}

Picture gradientOf(const Picture& color) {
  const ZebiSize size = color.size();
  std::vector<Zeb16s> magnitude(static_cast<size_t>(size.width) * size.height);
  std::vector<Zeb32f> angle(magnitude.size());
  auto scratch = bytesFor(zebiGradientVectorGetBufferSize, size, zebMskSize3x3, zeb8u, 3);
  const Zeb8u none[3] = {0, 0, 0};
  requireOk(zebiGradientVectorScharr_8u16s_C3C1R(color.pixels.data(), color.step(), nullptr, 0, nullptr, 0,
                                                 magnitude.data(), 2 * size.width, angle.data(), 4 * size.width, size,
                                                 zebMskSize3x3, zebNormL2, zebBorderRepl, none, scratch.data()));
  return directions(magnitude, angle, size);
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
  auto scratch = bytesFor(zebiSegmentGradientGetBufferSize_8u_C3IR, size);
  requireOk(zebiSegmentGradient_8u_C3IR(color.pixels.data(), color.step(), marker.data(), size.width, size, zebiNormL1,
                                        0, scratch.data()));
  return averaged(marker, color);
}

// How far it is to the nearest edge.
Picture distances(const Picture& edge) {
  Picture features = edge;
  for (Zeb8u& v : features.pixels) v = static_cast<Zeb8u>(255 - v);
  std::vector<Zeb32f> distance(edge.pixels.size());
  auto scratch = bytesFor(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R, edge.size());
  requireOk(zebiTrueDistanceTransform_8u32f_C1R(features.pixels.data(), features.step(), distance.data(),
                                                4 * edge.width, edge.size(), scratch.data()));
  return contours(distance, edge.size(), 60, 8);
}

Picture opened(const Picture& color) {
  constexpr int side = 9;
  const ZebiSize mask = {side, side};
  const ZebiPoint centre = {side / 2, side / 2};
  Picture least = color, out = color;
  auto scratch = bytesFor(zebiFilterMinGetBufferSize_8u_C3R, color.width, mask);
  requireOk(zebiFilterMinBorderReplicate_8u_C3R(color.pixels.data(), color.step(), least.pixels.data(), least.step(),
                                                color.size(), mask, centre, scratch.data()));
  scratch = bytesFor(zebiFilterMaxGetBufferSize_8u_C3R, color.width, mask);
  requireOk(zebiFilterMaxBorderReplicate_8u_C3R(least.pixels.data(), least.step(), out.pixels.data(), out.step(),
                                                color.size(), mask, centre, scratch.data()));
  return out;
}

}  // namespace

Picture hero(const Scene& scene) {
  const Picture edge = edges(scene.gray);
  const Picture looks[] = {scene.color,     opened(scene.color), segments(scene.color), gradientOf(scene.color),
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
