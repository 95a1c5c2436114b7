// Distance transforms and flood fills.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <numeric>

#include "bench.h"
#include "reference/distance.h"
#include "reference/fill.h"

namespace {

using namespace bench;

// 1 where the gradient of the photograph is among its strongest 7 per cent, else 0.
std::vector<bool> edges(const Scene& scene) {
  const int w = scene.size.width, h = scene.size.height;
  std::vector<int> strength(scene.count());
  const auto at = [&](int x, int y) {
    return static_cast<int>(scene.photo[std::clamp(y, 0, h - 1) * w + std::clamp(x, 0, w - 1)]);
  };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x)
      strength[y * w + x] = std::abs(at(x + 1, y) - at(x - 1, y)) + std::abs(at(x, y + 1) - at(x, y - 1));
  std::vector<int> sorted = strength;
  const auto cut = sorted.begin() + static_cast<long>(sorted.size() * 0.93);
  std::nth_element(sorted.begin(), cut, sorted.end());
  std::vector<bool> edge(strength.size());
  for (size_t i = 0; i < edge.size(); ++i) edge[i] = strength[i] > *cut;
  return edge;
}

Pixels<Zeb8u> marked(const std::vector<bool>& where, Zeb8u yes, Zeb8u no) {
  Pixels<Zeb8u> out(where.size());
  for (size_t i = 0; i < where.size(); ++i) out[i] = where[i] ? yes : no;
  return out;
}

template <class T>
ref::Plane<T> plane(const Pixels<T>& pixels, ZebiSize size) {
  ref::Plane<T> out(size.width, size.height);
  out.data.assign(pixels.begin(), pixels.end());
  return out;
}

// ---- Distances to the photograph's edges ----

template <class T, class Sum, class W>
Work chamfer(const Scene& scene, int mask, std::vector<W> weights,
             ZebStatus (*transform)(const Zeb8u*, int, T*, int, ZebiSize, const W*)) {
  const Pixels<Zeb8u> pixels = marked(edges(scene), 0, 255);
  auto src = std::make_shared<Image<Zeb8u>>(scene.imageOf<Zeb8u>(pixels));
  auto dst = std::make_shared<Image<T>>(scene.image<T>());
  Work work;
  work.bytes = {1, 1.0 * sizeof(T)};
  work.run = [=, size = scene.size] {
    return transform(src->data(), src->step(), dst->data(), dst->step(), size, weights.data());
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    return firstDifference(ref::chamfer<T, Sum>(plane(pixels, size), mask, weights.data()).data, dst->compact(),
                           size.width);
  };
  return work;
}

// The nearest zero by column counts and a search along the row that stops at the best distance found.
std::vector<Zeb32f> nearestZero(const Pixels<Zeb8u>& src, ZebiSize size) {
  const int w = size.width, h = size.height, far = 1 << 14;
  std::vector<int> rows(src.size(), far);
  for (int x = 0; x < w; ++x) {
    for (int y = 0; y < h; ++y)
      rows[y * w + x] = src[y * w + x] == 0 ? 0 : y ? std::min(far, rows[(y - 1) * w + x] + 1) : far;
    for (int y = h - 2; y >= 0; --y) rows[y * w + x] = std::min(rows[y * w + x], rows[(y + 1) * w + x] + 1);
  }
  std::vector<Zeb32f> out(src.size());
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int* g = &rows[y * w];
      int best = g[x] * g[x];
      for (int k = 1; k < w && k * k < best; ++k) {
        if (x >= k) best = std::min(best, k * k + g[x - k] * g[x - k]);
        if (x + k < w) best = std::min(best, k * k + g[x + k] * g[x + k]);
      }
      out[y * w + x] = static_cast<Zeb32f>(std::sqrt(static_cast<double>(best)));
    }
  return out;
}

Work exact(const Scene& scene, Pixels<Zeb8u> image) {
  auto src = std::make_shared<Image<Zeb8u>>(scene.imageOf<Zeb8u>(image));
  auto dst = std::make_shared<Image<Zeb32f>>(scene.image<Zeb32f>());
  int bytes = 0;
  zebiTrueDistanceTransformGetBufferSize_8u32f_C1R(scene.size, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  Work work;
  work.bytes = {1, 4};
  work.run = [=, size = scene.size] {
    return zebiTrueDistanceTransform_8u32f_C1R(src->data(), src->step(), dst->data(), dst->step(), size,
                                               buffer->data());
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    return firstDifference(nearestZero(image, size), dst->compact(), size.width);
  };
  return work;
}

Work exactEdges(const Scene& scene) {
  return exact(scene, marked(edges(scene), 0, 255));
}
// A feature in every 251st pixel of every 97th row, from (25, 48) on.
Work exactSparse(const Scene& scene) {
  std::vector<bool> zero(scene.count());
  for (int i = 0; i < scene.count(); ++i) zero[i] = i % scene.size.width % 251 == 25 && i / scene.size.width % 97 == 48;
  return exact(scene, marked(zero, 0, 255));
}

// Ellipses of many sizes over some four tenths of the image.
Pixels<Zeb8u> shapes(const Scene& scene) {
  Pixels<Zeb8u> out(scene.count());
  std::mt19937 engine(5);
  const auto in = [&](double low, double high) { return low + (high - low) * (engine() / 4294967296.0); };
  for (int i = 0; i < 30; ++i) {
    const double cx = in(0, 1), cy = in(0, 1), rx = in(0.02, 0.11), ry = in(0.03, 0.2);
    for (int y = 0; y < scene.size.height; ++y)
      for (int x = 0; x < scene.size.width; ++x) {
        const double u = (static_cast<double>(x) / scene.size.width - cx) / rx;
        const double v = (static_cast<double>(y) / scene.size.height - cy) / ry;
        if (u * u + v * v < 1) out[y * scene.size.width + x] = 255;
      }
  }
  return out;
}

Work marching(const Scene& scene) {
  constexpr Zeb32f radius = 10;
  const Pixels<Zeb8u> pixels = shapes(scene);
  auto src = std::make_shared<Image<Zeb8u>>(scene.imageOf<Zeb8u>(pixels));
  auto dst = std::make_shared<Image<Zeb32f>>(scene.image<Zeb32f>());
  int bytes = 0;
  zebiFastMarchingGetBufferSize_8u32f_C1R(scene.size, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  Work work;
  work.bytes = {1, 4};
  work.run = [=, size = scene.size] {
    return zebiFastMarching_8u32f_C1R(src->data(), src->step(), dst->data(), dst->step(), size, radius, buffer->data());
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto object = plane(pixels, size);
    ref::Marching m{plane(dst->compact(), size), &object, radius};
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) {
        Zeb32f& v = m.value.at(x, y);
        v = v > 0 ? v : v == 0 ? 1e30f : v == -1e-10f ? 0 : -v;
      }
    // Rounding lets an update made early be lower by a few units in the last place than one made with the final values.
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) {
        const Zeb32f value = m.value.at(x, y), allowed = m.allowed(x, y);
        if (value > 0 && (allowed < value || value < allowed * (1 - 1e-6f)))
          return "not settled at (" + std::to_string(x) + ", " + std::to_string(y) + ")";
      }
    return std::nullopt;
  };
  return work;
}

// ---- Fills ----

using PlainFill = ZebStatus (*)(Zeb8u*, int, ZebiSize, ZebiPoint, Zeb8u, ZebiConnectedComp*, Zeb8u*);

// Fills the region of zeros about the seed with 100 and with 0 again, in turn.
Work plainFill(const Scene& scene, bool diagonal, Pixels<Zeb8u> picture, PlainFill fill) {
  const size_t first = static_cast<size_t>(std::find(picture.begin(), picture.end(), 0) - picture.begin());
  const ZebiPoint seed{static_cast<int>(first) % scene.size.width, static_cast<int>(first) / scene.size.width};
  int bytes = 0;
  zebiFloodFillGetSize(scene.size, &bytes);
  struct State {
    Image<Zeb8u> image;
    Pixels<Zeb8u> buffer;
    Zeb8u next = 100;
    ZebiConnectedComp region = {};
  };
  auto state = std::make_shared<State>();
  state->image = scene.imageOf<Zeb8u>(picture);
  state->buffer.resize(bytes);
  Work work;
  work.bytes = {0, 0, 1};
  work.run = [=, size = scene.size] {
    const ZebStatus status =
        fill(state->image.data(), state->image.step(), size, seed, state->next, &state->region, state->buffer.data());
    state->next = static_cast<Zeb8u>(100 - state->next);
    return status;
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    state->image.set(picture);
    state->next = 100;
    if (auto bad = failure(run())) return bad;
    auto expected = plane(picture, size);
    const auto want = ref::fill<Zeb8u>(expected, {seed.x, seed.y}, diagonal, {100},
                                       [&](int, int, int x, int y) { return picture[y * size.width + x] == 0; });
    if (!ref::sameComp(want, state->region)) return "the record differs";
    return firstDifference(expected.data, state->image.compact(), size.width);
  };
  return work;
}

// A ramp down the diagonal; it is copied back before each fill, at the cost of one memcpy.
Work gradientFill(const Scene& scene) {
  const int w = scene.size.width, h = scene.size.height;
  Pixels<Zeb8u> ramp(scene.count());
  for (int i = 0; i < scene.count(); ++i) ramp[i] = static_cast<Zeb8u>(254LL * (i % w + i / w) / std::max(w + h, 254));
  int bytes = 0;
  zebiFloodFillGetSize_Grad(scene.size, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  const Image<Zeb8u> start = scene.imageOf<Zeb8u>(ramp);
  auto image = std::make_shared<Image<Zeb8u>>(start);
  auto region = std::make_shared<ZebiConnectedComp>();
  Work work;
  work.bytes = {1, 1, 1};
  work.run = [=, size = scene.size] {
    for (int y = 0; y < size.height; ++y) std::memcpy(image->row(y), start.row(y), size.width);
    return zebiFloodFill_Grad4Con_8u_C1IR(image->data(), image->step(), size, {w / 2, h / 3}, 255, 1, 1, region.get(),
                                          buffer->data());
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    if (region->area != static_cast<double>(size.width) * size.height) return "the area differs";
    return firstDifference(Pixels<Zeb8u>(scene.count(), 255), image->compact(), size.width);
  };
  return work;
}

const Family family(
    60, "Distance transforms and flood fills",
    {
        {"DistanceTransform 3x3 8u32f", timesMemcpy(55),
         [](const Scene& scene) {
           return chamfer<Zeb32f, Zeb32f, Zeb32f>(scene, 3, {0.955f, 1.3693f}, zebiDistanceTransform_3x3_8u32f_C1R);
         }},
        {"DistanceTransform 5x5 8u32f", timesMemcpy(90),
         [](const Scene& scene) {
           return chamfer<Zeb32f, Zeb32f, Zeb32f>(scene, 5, {1, 1.4f, 2.1969f}, zebiDistanceTransform_5x5_8u32f_C1R);
         }},
        {"DistanceTransform 3x3 8u", timesMemcpy(40),
         [](const Scene& scene) {
           return chamfer<Zeb8u, long long, Zeb32s>(scene, 3, {2, 3}, zebiDistanceTransform_3x3_8u_C1R);
         }},
        {"DistanceTransform 5x5 8u16u", noTarget(),
         [](const Scene& scene) {
           return chamfer<Zeb16u, long long, Zeb32s>(scene, 5, {5, 7, 11}, zebiDistanceTransform_5x5_8u16u_C1R);
         }},
        {"TrueDistanceTransform 8u32f", timesMemcpy(80), exactEdges},
        {"TrueDistanceTransform 8u32f, few features", noTarget(), exactSparse},
        {"FastMarching 8u32f, radius 10, filled shapes", timesMemcpy(250), marching},
        {"FloodFill 4Con 8u, one flat region", timesMemcpy(8),
         [](const Scene& scene) {
           return plainFill(scene, false, Pixels<Zeb8u>(scene.count()), zebiFloodFill_4Con_8u_C1IR);
         }},
        {"FloodFill 8Con 8u, around photograph edges", timesMemcpy(35),
         [](const Scene& scene) {
           return plainFill(scene, true, marked(edges(scene), 255, 0), zebiFloodFill_8Con_8u_C1IR);
         }},
        {"FloodFill Grad4Con 8u, whole smooth ramp", timesMemcpy(60), gradientFill},
    });

}  // namespace
