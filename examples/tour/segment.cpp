// Distances and fills: how far it is to the nearest edge, in several metrics, and what belongs to a region.
#include <cmath>

#include "colours.h"
#include "draw.h"
#include "tour.h"

namespace tour {
namespace {

using support::Picture;

// Zero where the gradient is among the strongest 5 per cent, else 255.
Picture edges(const Picture& gray) {
  const int w = gray.width, h = gray.height;
  const auto at = [&](int x, int y) {
    return static_cast<int>(*gray.at(std::clamp(x, 0, w - 1), std::clamp(y, 0, h - 1)));
  };
  std::vector<int> strength(gray.pixels.size());
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x)
      strength[static_cast<size_t>(y) * w + x] =
          std::abs(at(x + 1, y) - at(x - 1, y)) + std::abs(at(x, y + 1) - at(x, y - 1));
  std::vector<int> sorted = strength;
  const auto cut = sorted.begin() + static_cast<long>(sorted.size() * 0.95);
  std::nth_element(sorted.begin(), cut, sorted.end());
  Picture out(w, h, 1);
  for (size_t i = 0; i < strength.size(); ++i) out.pixels[i] = strength[i] > *cut ? 0 : 255;
  return out;
}

std::vector<Zeb32f> exactDistances(const Picture& features, double* milliseconds = nullptr) {
  const ZebiSize size = features.size();
  int bytes = 0;
  requireOk(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R(size, &bytes));
  std::vector<Zeb8u> buffer(bytes);
  std::vector<Zeb32f> out(features.pixels.size());
  const double time = bestTime([&] {
    return zebiTrueDistanceTransform_8u32f_C1R(features.pixels.data(), features.step(), out.data(), 4 * size.width,
                                               size, buffer.data());
  });
  if (milliseconds) *milliseconds = time;
  return out;
}

void showDistances(const Picture& edge, Gallery& gallery) {
  gallery.add(edge, "The strongest 5 per cent of the photograph's gradients, in black: the features.");
  double time = 0;
  const std::vector<Zeb32f> exact = exactDistances(edge, &time);
  const float reach = *std::max_element(exact.begin(), exact.end());
  gallery.add(
      contours(exact, edge.size(), reach, 16),
      format("Exact Euclidean distance to the nearest edge (TrueDistanceTransform), a line every 16 pixels. The "
             "farthest pixel is %.1f pixels away.",
             reach),
      time);

  Zeb32f weights[3];
  requireOk(zebiGetDistanceTransformMask_32f(5, zebiNormL2, weights));
  std::vector<Zeb32f> chamfer(exact.size());
  const ZebiSize size = edge.size();
  const double chamferTime = bestTime([&] {
    return zebiDistanceTransform_5x5_8u32f_C1R(edge.pixels.data(), edge.step(), chamfer.data(), 4 * size.width, size,
                                               weights);
  });
  double worst = 0;
  Picture error(size.width, size.height, 3);
  for (size_t i = 0; i < exact.size(); ++i) {
    const float relative = exact[i] > 0 ? chamfer[i] / exact[i] - 1 : 0;
    worst = std::max(worst, std::fabs(static_cast<double>(relative)));
    const float shade = std::clamp(relative / 0.02f, -1.0f, 1.0f);
    put(&error.pixels[3 * i], {1 + std::min(0.0f, shade), 1 - std::fabs(shade), 1 - std::max(0.0f, shade)}, 1);
  }
  gallery.add(
      error,
      format("What the 5x5 chamfer transform makes of the same distances: white where it agrees, red where it is "
             "up to 2 per cent too far, blue where it is too near. The largest error is %.1f per cent.",
             100 * worst),
      chamferTime);
}

// City blocks, chessboard and the Euclidean metric about the same few points.
void showMetrics(Gallery& gallery) {
  constexpr int side = 300, gap = 10;
  Picture points(side, side, 1), out(3 * side + 2 * gap, side, 3);
  std::fill(points.pixels.begin(), points.pixels.end(), Zeb8u(255));
  std::fill(out.pixels.begin(), out.pixels.end(), Zeb8u(255));
  for (const auto& p : {std::pair{60, 70}, {215, 45}, {140, 165}, {255, 230}, {50, 245}})
    *points.at(p.first, p.second) = 0;
  std::vector<Zeb32f> distance[3];
  double time = 0;
  for (int k = 0; k < 2; ++k) {
    Zeb32f weights[2];
    requireOk(zebiGetDistanceTransformMask(k == 0 ? 31 : 30, weights));
    distance[k].resize(points.pixels.size());
    time += bestTime([&] {
      return zebiDistanceTransform_3x3_8u32f_C1R(points.pixels.data(), points.step(), distance[k].data(), 4 * side,
                                                 points.size(), weights);
    });
  }
  double exactTime = 0;
  distance[2] = exactDistances(points, &exactTime);
  for (int k = 0; k < 3; ++k) {
    const Picture panel = contours(distance[k], points.size(), 130, 12);
    for (int y = 0; y < side; ++y) std::copy_n(panel.at(0, y), 3 * side, out.at(k * (side + gap), y));
  }
  gallery.add(
      out,
      "Three metrics about the same five points: city blocks (3x3, weights 1 and 2), chessboard (3x3, weights 1 "
      "and 1), Euclidean (exact). A line every 12.",
      time + exactTime);
}

struct Fill {
  Picture picture;
  ZebiConnectedComp region;
  double milliseconds;
};

// Runs fill(picture, region, buffer) on fresh copies.
template <class Run>
Fill filled(const Picture& picture, bool gradient, Run run, int runs = 5) {
  int bytes = 0;
  requireOk((gradient ? zebiFloodFillGetSize_Grad : zebiFloodFillGetSize)(picture.size(), &bytes));
  std::vector<Zeb8u> buffer(bytes);
  Fill best{picture, {}, std::numeric_limits<double>::infinity()};
  for (int i = 0; i < runs; ++i) {
    best.picture = picture;
    best.milliseconds =
        std::min(best.milliseconds, timed([&] { return run(best.picture, &best.region, buffer.data()); }));
  }
  return best;
}

// Rooms in rows, with doors in some of their walls.
Picture floorPlan(ZebiPoint& hall) {
  constexpr int room = 128, wall = 4, door = 30, across = 4, down = 4;
  // For every room: 1 a door to the right, 2 a door below.
  constexpr int doors[down][across] = {{1, 2, 2, 2}, {2, 1, 1, 0}, {0, 2, 0, 0}, {1, 1, 1, 0}};
  Picture out(across * room, down * room, 1);
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x) {
      const int u = x % room, v = y % room, d = doors[y / room][x / room];
      const bool opening = (d & 1 && u >= room - wall && std::abs(v - room / 2) < door / 2) ||
                           (d & 2 && v >= room - wall && std::abs(u - room / 2) < door / 2);
      const bool fromLeft =
          u < wall && x >= room && doors[y / room][x / room - 1] & 1 && std::abs(v - room / 2) < door / 2;
      const bool fromAbove =
          v < wall && y >= room && doors[y / room - 1][x / room] & 2 && std::abs(u - room / 2) < door / 2;
      const bool solid = u < wall || v < wall || u >= room - wall || v >= room - wall;
      *out.at(x, y) = static_cast<Zeb8u>(solid && !opening && !fromLeft && !fromAbove ? 30 : 255);
    }
  hall = {room + room / 2, room + room / 2};
  return out;
}

void showFills(const Scene& scene, Gallery& gallery) {
  const Picture& photo = scene.color;
  const ZebiSize size = photo.size();
  const double pixels = static_cast<double>(size.width) * size.height;
  const ZebiPoint corner{size.width / 16, size.height / 16};

  ZebiPoint hall;
  const Picture plan = floorPlan(hall);
  const Fill plain = filled(plan, false, [&](Picture& p, ZebiConnectedComp* region, Zeb8u* buffer) {
    return zebiFloodFill_4Con_8u_C1IR(p.pixels.data(), p.step(), plan.size(), hall, 160, region, buffer);
  });
  Picture shown = support::toned(plain.picture);
  const Zeb8u blue[] = {90, 170, 230};
  for (size_t i = 0; i < plain.picture.pixels.size(); ++i)
    if (plain.picture.pixels[i] == 160) std::copy_n(blue, 3, &shown.pixels[3 * i]);
  support::drawBox(shown, plain.region.rect, {220, 40, 40}, 2);
  support::drawCross(shown, static_cast<float>(hall.x), static_cast<float>(hall.y), 8, {20, 60, 160}, 3);
  gallery.add(
      shown,
      format("A plain fill (FloodFill 4Con) of a drawn floor plan from the cross: the rooms that open doors lead "
             "to, %.0f per cent of the plan, with their bounding box. Rooms behind closed doors stay white.",
             100 * plain.region.area / static_cast<double>(plan.pixels.size())),
      plain.milliseconds);

  const Zeb8u teal[3] = {0, 150, 140};
  const Zeb8u wide[3] = {40, 40, 40}, narrow[3] = {9, 9, 9};
  const Fill range = filled(photo, false, [&](Picture& p, ZebiConnectedComp* region, Zeb8u* buffer) {
    return zebiFloodFill_Range8Con_8u_C3IR(p.pixels.data(), p.step(), size, corner, teal, wide, wide, region, buffer);
  });
  gallery.add(
      range.picture,
      format("A range fill (FloodFill Range8Con, three channels) from the upper left: colours within 40 levels of "
             "the seed's, %.1f per cent of the picture.",
             100 * range.region.area / pixels),
      range.milliseconds);
  const Fill gradient = filled(photo, true, [&](Picture& p, ZebiConnectedComp* region, Zeb8u* buffer) {
    return zebiFloodFill_Grad4Con_8u_C3IR(p.pixels.data(), p.step(), size, corner, teal, narrow, narrow, region,
                                          buffer);
  });
  gallery.add(
      gradient.picture,
      format("A gradient fill (FloodFill Grad4Con, three channels) from the same seed: steps of at most 9 levels "
             "from pixel to pixel, %.1f per cent of the picture.",
             100 * gradient.region.area / pixels),
      gradient.milliseconds);

  // What the range fill has not reached is the object of the marching.
  Picture object(size.width, size.height, 1);
  for (size_t i = 0; i < object.pixels.size(); ++i)
    object.pixels[i] = std::equal(teal, teal + 3, &range.picture.pixels[3 * i]) ? 0 : 255;
  constexpr Zeb32f radius = 60;
  int bytes = 0;
  requireOk(zebiFastMarchingGetBufferSize_8u32f_C1R(size, &bytes));
  std::vector<Zeb8u> buffer(bytes);
  std::vector<Zeb32f> signedDistance(object.pixels.size());
  const double time = bestTime([&] {
    return zebiFastMarching_8u32f_C1R(object.pixels.data(), object.step(), signedDistance.data(), 4 * size.width, size,
                                      radius, buffer.data());
  });
  Picture band(size.width, size.height, 3);
  const float deepest = std::max(1.0f, *std::max_element(signedDistance.begin(), signedDistance.end()));
  for (size_t i = 0; i < signedDistance.size(); ++i) {
    const float d = signedDistance[i];
    const float line = std::fmod(std::fabs(d), 10.0f) < 1.2f ? 0.6f : 1.0f;
    const float t = d > 0 ? d / deepest : -d / radius;
    const Rgb colour = d > 0   ? Rgb{1, 0.35f + 0.6f * t, 0.3f * t}
                       : d < 0 ? Rgb{0.25f + 0.6f * t, 0.5f + 0.4f * t, 1}
                               : Rgb{1, 1, 1};
    put(&band.pixels[3 * i], colour, d == 0 ? 1.0f : line);
  }
  gallery.add(band,
              format("Signed distance to the outline of what the range fill left over (FastMarching): red and yellow "
                     "inside, blue in a band of %.0f pixels outside, white beyond it. A line every 10 pixels.",
                     radius),
              time);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "A distance transform tells every pixel how far it is to the nearest feature: exactly, or by counting the steps "
      "of a small mask. A flood fill tells what hangs together with a seed: by equal values, by an interval about the "
      "seed's value, or by small steps from neighbour to neighbour. Last, the outline of a filled region sends a front "
      "into both of its sides.");
  const Picture edge = edges(scene.gray);
  showDistances(edge, gallery);
  showMetrics(gallery);
  showFills(scene, gallery);
}

const Section section(60, "Distances and fills", show);

}  // namespace
}  // namespace tour
