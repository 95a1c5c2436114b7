// Erosion, opening, gradient and grayscale dilation.
#include "reference/morph.h"

#include <algorithm>
#include <memory>

#include "bench.h"

namespace {

using namespace bench;

ref::Element rectangle(int width, int height) {
  return {std::vector<Zeb8u>(static_cast<size_t>(width) * height, 1), width, height, (width - 1) / 2, (height - 1) / 2};
}
ref::Element cross3() {
  return {{0, 1, 0, 1, 1, 1, 0, 1, 0}, 3, 3, 1, 1};
}
// The pixels whose centres lie within half the diameter and a quarter of a pixel.
ref::Element ellipse7() {
  ref::Element e = rectangle(7, 7);
  for (int i = 0; i < 49; ++i) {
    const int x = i % 7 - 3, y = i / 7 - 3;
    e.mask[static_cast<size_t>(i)] = 16 * (x * x + y * y) <= 13 * 13;
  }
  return e;
}
// Every other element.
ref::Element half7() {
  ref::Element e = rectangle(7, 7);
  for (size_t i = 0; i < 49; ++i) e.mask[i] = i % 2 == 0;
  return e;
}

// So many percent of a square, the same ones every time.
ref::Element scattered(int side, int percent) {
  ref::Element e = rectangle(side, side);
  uint32_t state = 1;
  for (Zeb8u& m : e.mask) {
    state = state * 1664525u + 1013904223u;
    m = (state >> 16) % 100 < static_cast<uint32_t>(percent);
  }
  e.mask[static_cast<size_t>(side) * side / 2] = 1;
  return e;
}
ref::Element diagonal(int side) {
  ref::Element e = rectangle(side, side);
  for (int i = 0; i < side * side; ++i) e.mask[static_cast<size_t>(i)] = i / side == i % side;
  return e;
}

// The minimum over an element. Over a rectangle that of its rows first: a pixel's own would take minutes of large ones.
template <class T>
ref::Plane<T> minimumOver(const ref::Region<T>& region, const ref::Element& e) {
  if (std::count(e.mask.begin(), e.mask.end(), 1) < int64_t(e.width) * e.height) return ref::extremum(region, e, true);
  const std::vector<Zeb8u> ones(static_cast<size_t>(std::max(e.width, e.height)), 1);
  const ref::Plane<T> rows = ref::extremum(region, {ones, e.width, 1, e.anchorX, 0}, true);
  return ref::extremum(ref::Region<T>{&rows, 0, 0, region.width, region.height}, {ones, 1, e.height, 0, e.anchorY},
                       true);
}

// Memory from a function that reports its size.
struct Memory {
  Pixels<Zeb8u> state, buffer;
};

// A channel of the photograph, or all channels the same.
template <class T>
Pixels<T> images(const Scene& scene, int channels) {
  Pixels<T> out(static_cast<size_t>(scene.count()) * channels);
  for (int i = 0; i < scene.count(); ++i)
    for (int c = 0; c < channels; ++c) out[static_cast<size_t>(i) * channels + c] = static_cast<T>(scene.photo[i]);
  return out;
}

template <class T, class Call, class Expected>
Work filter(const Scene& scene, int channels, Bytes bytes, Call call, Expected expected) {
  const Pixels<T> pixels = images<T>(scene, channels);
  auto src = std::make_shared<Image<T>>(scene.imageOf<T>(pixels, channels));
  auto dst = std::make_shared<Image<T>>(scene.image<T>(channels));
  Work work;
  work.bytes = bytes;
  const ZebiSize size = scene.size;
  work.run = [=] { return call(src->data(), src->step(), dst->data(), dst->step(), size); };
  work.check = [=]() -> std::optional<std::string> {
    // Every pixel of a strip along the top edge.
    const ZebiSize strip{size.width, size.height < 40 ? size.height : 40};
    Image<T> actual(strip, strip.width, channels);
    if (auto bad = failure(call(src->data(), src->step(), actual.data(), actual.step(), strip))) return bad;
    ref::Plane<T> plane(strip.width, strip.height, channels);
    std::copy(pixels.begin(), pixels.begin() + static_cast<ptrdiff_t>(plane.data.size()), plane.data.begin());
    const ref::Plane<T> wanted = expected(ref::Region<T>{&plane, 0, 0, strip.width, strip.height});
    return firstDifference(wanted.data, actual.compact(), strip.width * channels);
  };
  return work;
}

template <class T>
using Erode = ZebStatus (*)(const T*, int, T*, int, ZebiSize, ZebiBorderType, T, const ZebiMorphState*, Zeb8u*);

template <class T>
Work erode(const Scene& scene, int channels, const ref::Element& e, decltype(&zebiMorphologyBorderGetSize_8u_C1R) sizes,
           decltype(&zebiMorphologyBorderInit_8u_C1R) init, Erode<T> function) {
  auto memory = std::make_shared<Memory>();
  int state = 0, buffer = 0;
  const ZebiSize mask{e.width, e.height};
  sizes(scene.size.width, mask, &state, &buffer);
  memory->state.resize(static_cast<size_t>(state));
  memory->buffer.resize(static_cast<size_t>(buffer));
  auto* spec = reinterpret_cast<ZebiMorphState*>(memory->state.data());
  init(scene.size.width, e.mask.data(), mask, spec, memory->buffer.data());
  return filter<T>(
      scene, channels, {1.0 * channels * sizeof(T), 1.0 * channels * sizeof(T)},
      [=](const T* src, int srcStep, T* dst, int dstStep, ZebiSize size) {
        return function(src, srcStep, dst, dstStep, size, zebBorderRepl, T(0), spec, memory->buffer.data());
      },
      [=](const ref::Region<T>& region) { return minimumOver(region, e); });
}

Work erode8u(const Scene& scene, const ref::Element& e) {
  return erode<Zeb8u>(scene, 1, e, zebiMorphologyBorderGetSize_8u_C1R, zebiMorphologyBorderInit_8u_C1R,
                      zebiErodeBorder_8u_C1R);
}
Work erode32f(const Scene& scene, const ref::Element& e) {
  return erode<Zeb32f>(scene, 1, e, zebiMorphologyBorderGetSize_32f_C1R, zebiMorphologyBorderInit_32f_C1R,
                       zebiErodeBorder_32f_C1R);
}
Work erode8uC3(const Scene& scene) {
  return erode<Zeb8u>(scene, 3, rectangle(7, 7), zebiMorphologyBorderGetSize_8u_C3R, zebiMorphologyBorderInit_8u_C3R,
                      zebiErodeBorder_8u_C3R);
}

// The minimum over a square, by the function that needs no state.
template <class T>
using Minimum = ZebStatus (*)(const T*, int, T*, int, ZebiSize, ZebiSize, ZebiPoint, Zeb8u*);
template <class T>
Work minimum(const Scene& scene, int channels, int side, decltype(&zebiFilterMinGetBufferSize_8u_C1R) query,
             Minimum<T> function) {
  const ref::Element e = rectangle(side, side);
  auto buffer = std::make_shared<Pixels<Zeb8u>>();
  int bytes = 0;
  query(scene.size.width, {side, side}, &bytes);
  buffer->resize(static_cast<size_t>(bytes));
  return filter<T>(
      scene, channels, {1.0 * channels * sizeof(T), 1.0 * channels * sizeof(T)},
      [=](const T* src, int srcStep, T* dst, int dstStep, ZebiSize size) {
        return function(src, srcStep, dst, dstStep, size, {side, side}, {side / 2, side / 2}, buffer->data());
      },
      [=](const ref::Region<T>& region) { return minimumOver(region, e); });
}
Work minimum8u(const Scene& scene, int side) {
  return minimum<Zeb8u>(scene, 1, side, zebiFilterMinGetBufferSize_8u_C1R, zebiFilterMinBorderReplicate_8u_C1R);
}

// Opening or gradient with the same ellipse.
Work compound(const Scene& scene, decltype(&zebiMorphOpenBorder_8u_C1R) function, bool opening) {
  const ref::Element e = ellipse7();
  const ZebiSize mask{e.width, e.height};
  auto memory = std::make_shared<Memory>();
  int state = 0, buffer = 0;
  zebiMorphAdvGetSize_8u_C1R(scene.size, mask, &state, &buffer);
  memory->state.resize(static_cast<size_t>(state));
  memory->buffer.resize(static_cast<size_t>(buffer));
  auto* adv = reinterpret_cast<ZebiMorphAdvState*>(memory->state.data());
  zebiMorphAdvInit_8u_C1R(adv, scene.size, e.mask.data(), mask, {e.anchorX, e.anchorY});
  return filter<Zeb8u>(
      scene, 1, {1, 1},
      [=](const Zeb8u* src, int srcStep, Zeb8u* dst, int dstStep, ZebiSize size) {
        return function(src, srcStep, dst, dstStep, size, zebBorderRepl, 0, adv, memory->buffer.data());
      },
      [=](const ref::Region<Zeb8u>& region) {
        auto eroded = ref::extremum(region, e, true);
        if (opening)
          return ref::extremum(ref::Region<Zeb8u>{&eroded, 0, 0, eroded.width, eroded.height}, e.reflected(), false);
        auto out = ref::extremum(region, e.reflected(), false);
        for (size_t i = 0; i < out.data.size(); ++i) out.data[i] = static_cast<Zeb8u>(out.data[i] - eroded.data[i]);
        return out;
      });
}

// Weights of a small paraboloid, some of them negative.
Work grayDilate(const Scene& scene) {
  std::vector<Zeb32s> weights;
  for (int i = 0; i < 25; ++i) {
    const int x = i % 5 - 2, y = i / 5 - 2;
    weights.push_back(8 - 3 * (x * x + y * y));
  }
  auto memory = std::make_shared<Memory>();
  int bytes = 0;
  zebiMorphGrayGetSize_8u_C1R(scene.size, weights.data(), {5, 5}, &bytes);
  memory->state.resize(static_cast<size_t>(bytes));
  auto* state = reinterpret_cast<ZebiMorphGrayState*>(memory->state.data());
  zebiMorphGrayInit_8u_C1R(state, scene.size, weights.data(), {5, 5}, {2, 2});
  return filter<Zeb8u>(
      scene, 1, {1, 1},
      [state, memory](const Zeb8u* src, int srcStep, Zeb8u* dst, int dstStep, ZebiSize size) {
        return zebiGrayDilateBorder_8u_C1R(src, srcStep, dst, dstStep, size, zebBorderRepl, state);
      },
      [=](const ref::Region<Zeb8u>& region) {
        ref::Plane<Zeb8u> out(region.width, region.height);
        for (int y = 0; y < out.height; ++y)
          for (int x = 0; x < out.width; ++x) {
            int best = 0;
            for (int i = 0; i < 25; ++i)
              best = std::max(best, region.at(x + i % 5 - 2, y + i / 5 - 2, 0) + weights[static_cast<size_t>(i)]);
            out.at(x, y) = static_cast<Zeb8u>(std::min(best, 255));
          }
        return out;
      });
}

const Family family(
    40, "Morphology",
    {
        {"ErodeBorder 8u C1R, 3 x 3 rectangle", timesMemcpy(2.2),
         [](const Scene& s) { return erode8u(s, rectangle(3, 3)); }},
        {"ErodeBorder 8u C1R, 7 x 7 rectangle", timesMemcpy(3.0),
         [](const Scene& s) { return erode8u(s, rectangle(7, 7)); }},
        {"ErodeBorder 8u C1R, 7 x 2 rectangle", noTarget(), [](const Scene& s) { return erode8u(s, rectangle(7, 2)); }},
        {"ErodeBorder 8u C1R, 63 x 63 rectangle", timesMemcpy(4.5),
         [](const Scene& s) { return erode8u(s, rectangle(63, 63)); }},
        {"ErodeBorder 8u C1R, 255 x 255 rectangle", noTarget(),
         [](const Scene& s) { return erode8u(s, rectangle(255, 255)); }},
        {"ErodeBorder 8u C1R, 3 x 3 cross", timesMemcpy(2.4), [](const Scene& s) { return erode8u(s, cross3()); }},
        {"ErodeBorder 8u C1R, 7 x 7 ellipse", timesMemcpy(5), [](const Scene& s) { return erode8u(s, ellipse7()); }},
        {"ErodeBorder 8u C1R, 7 x 7 general, half set", timesMemcpy(7),
         [](const Scene& s) { return erode8u(s, half7()); }},
        {"ErodeBorder 8u C1R, 7 x 7 scattered, half set", timesMemcpy(7),
         [](const Scene& s) { return erode8u(s, scattered(7, 50)); }},
        {"ErodeBorder 8u C1R, 15 x 15 scattered, half set", noTarget(),
         [](const Scene& s) { return erode8u(s, scattered(15, 50)); }},
        {"ErodeBorder 8u C1R, 15 pixels of a diagonal", noTarget(),
         [](const Scene& s) { return erode8u(s, diagonal(15)); }},
        {"ErodeBorder 32f C1R, 7 x 7 rectangle", timesMemcpy(10),
         [](const Scene& s) { return erode32f(s, rectangle(7, 7)); }},
        {"ErodeBorder 32f C1R, 7 x 7 ellipse", timesMemcpy(16), [](const Scene& s) { return erode32f(s, ellipse7()); }},
        {"ErodeBorder 8u C3R, 7 x 7 rectangle", timesMemcpy(8), erode8uC3},
        {"FilterMin 8u C1R, 3 x 3", timesMemcpy(2.2), [](const Scene& s) { return minimum8u(s, 3); }},
        {"FilterMin 8u C1R, 7 x 7", timesMemcpy(3), [](const Scene& s) { return minimum8u(s, 7); }},
        {"FilterMin 8u C1R, 63 x 63", timesMemcpy(4.5), [](const Scene& s) { return minimum8u(s, 63); }},
        {"FilterMin 8u C3R, 7 x 7", timesMemcpy(8),
         [](const Scene& s) {
           return minimum<Zeb8u>(s, 3, 7, zebiFilterMinGetBufferSize_8u_C3R, zebiFilterMinBorderReplicate_8u_C3R);
         }},
        {"FilterMin 16u C1R, 7 x 7", timesMemcpy(5),
         [](const Scene& s) {
           return minimum<Zeb16u>(s, 1, 7, zebiFilterMinGetBufferSize_16u_C1R, zebiFilterMinBorderReplicate_16u_C1R);
         }},
        {"FilterMin 32f C1R, 7 x 7", timesMemcpy(10),
         [](const Scene& s) {
           return minimum<Zeb32f>(s, 1, 7, zebiFilterMinGetBufferSize_32f_C1R, zebiFilterMinBorderReplicate_32f_C1R);
         }},
        {"MorphOpenBorder 8u C1R, 7 x 7 ellipse", timesMemcpy(10),
         [](const Scene& s) { return compound(s, zebiMorphOpenBorder_8u_C1R, true); }},
        {"MorphGradientBorder 8u C1R, 7 x 7 ellipse", timesMemcpy(11),
         [](const Scene& s) { return compound(s, zebiMorphGradientBorder_8u_C1R, false); }},
        {"GrayDilateBorder 8u C1R, 5 x 5 weights", timesMemcpy(25), grayDilate},
    });

}  // namespace
