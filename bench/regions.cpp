// Segmentation from markers, connected components, inpainting.
#include "reference/regions.h"

#include <cmath>
#include <memory>

#include "bench.h"
#include "corridors.h"
#include "reference/inpaint.h"

namespace {

using namespace bench;

template <class T>
ref::Plane<T> plane(const Pixels<T>& pixels, ZebiSize size, int channels = 1) {
  ref::Plane<T> out(size.width, size.height, channels);
  out.data.assign(pixels.begin(), pixels.end());
  return out;
}

// ---- Content ----

// The sum of the absolute Sobel derivatives, an eighth of it, saturated.
Pixels<Zeb8u> sobel(const Scene& scene) {
  const int w = scene.size.width, h = scene.size.height;
  Pixels<Zeb8u> out(scene.count());
  const auto at = [&](int x, int y) {
    return static_cast<int>(scene.photo[std::clamp(y, 0, h - 1) * w + std::clamp(x, 0, w - 1)]);
  };
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) {
      const int gx = at(x + 1, y - 1) + 2 * at(x + 1, y) + at(x + 1, y + 1) - at(x - 1, y - 1) - 2 * at(x - 1, y) -
                     at(x - 1, y + 1);
      const int gy = at(x - 1, y + 1) + 2 * at(x, y + 1) + at(x + 1, y + 1) - at(x - 1, y - 1) - 2 * at(x, y - 1) -
                     at(x + 1, y - 1);
      out[y * w + x] = static_cast<Zeb8u>(std::min(255, (std::abs(gx) + std::abs(gy)) / 4));
    }
  return out;
}

// The photograph in three channels: as it is, darker, and mirrored levels.
Pixels<Zeb8u> coloured(const Scene& scene) {
  Pixels<Zeb8u> out(3 * static_cast<size_t>(scene.count()));
  for (int i = 0; i < scene.count(); ++i) {
    out[3 * i] = scene.photo[i];
    out[3 * i + 1] = static_cast<Zeb8u>(scene.photo[i] * 3 / 4);
    out[3 * i + 2] = static_cast<Zeb8u>(255 - scene.photo[i] / 2);
  }
  return out;
}

template <class T>
Pixels<T> widened(const Pixels<Zeb8u>& pixels, int factor) {
  Pixels<T> out(pixels.size());
  for (size_t i = 0; i < out.size(); ++i) out[i] = static_cast<T>(pixels[i] * factor);
  return out;
}

template <class T>
Pixels<T> markers(const Scene& scene, int count) {
  Pixels<T> out(scene.count());
  std::mt19937 engine(3);
  for (int i = 0; i < count; ++i) out[engine() % static_cast<unsigned>(scene.count())] = static_cast<T>(1 + i % 254);
  return out;
}

Pixels<Zeb8u> thresholded(const Scene& scene) {
  Pixels<Zeb8u> out(scene.count());
  for (int i = 0; i < scene.count(); ++i) out[i] = scene.photo[i] > 120;
  return out;
}

Pixels<Zeb8u> checkerboard(const Scene& scene) {
  Pixels<Zeb8u> out(scene.count());
  for (int i = 0; i < scene.count(); ++i) out[i] = (i % scene.size.width + i / scene.size.width) % 2 * 200;
  return out;
}

// Walls as high as can be.
template <Corridor (*shape)(ZebiSize)>
Pixels<Zeb8u> walled(const Scene& scene) {
  Pixels<Zeb8u> out = shape(scene.size).open;
  for (Zeb8u& pixel : out) pixel = pixel ? 0 : 255;
  return out;
}

// 5 per cent of the pixels under strokes of up to 12 pixels in width.
Pixels<Zeb8u> strokes(const Scene& scene) {
  const int w = scene.size.width, h = scene.size.height;
  Pixels<Zeb8u> out(scene.count());
  std::mt19937 engine(9);
  const auto in = [&](double low, double high) { return low + (high - low) * (engine() / 4294967296.0); };
  for (int covered = 0; covered < scene.count() / 20;) {
    const double radius = in(1, 6), angle = in(0, 6.3), length = in(0.05, 0.2) * w, bend = in(-0.004, 0.004);
    double x = in(0, w), y = in(0, h), a = angle;
    for (double s = 0; s < length && covered < scene.count() / 20; s += 1, a += bend) {
      x += std::cos(a), y += std::sin(a);
      for (int j = static_cast<int>(y - radius); j <= y + radius; ++j)
        for (int i = static_cast<int>(x - radius); i <= x + radius; ++i) {
          if (i < 0 || j < 0 || i >= w || j >= h || (i - x) * (i - x) + (j - y) * (j - y) > radius * radius) continue;
          covered += out[j * w + i] == 0;
          out[j * w + i] = 255;
        }
    }
  }
  return out;
}

// ---- Segmentation ----

template <class T>
using Segment = ZebStatus (*)(const T*, int, T*, int, ZebiSize, ZebiNorm, int, Zeb8u*);
using Query = ZebStatus (*)(ZebiSize, int*);

// The markers are copied back before each run, at the cost of one memcpy.
template <class T>
Work segment(const Scene& scene, const Pixels<T>& relief, const Pixels<T>& start, int channels, ZebiNorm norm, int flag,
             Segment<T> function, Query query, bool gradient) {
  auto src = std::make_shared<Image<T>>(scene.imageOf<T>(relief, channels));
  auto marker = std::make_shared<Image<T>>(scene.image<T>());
  auto first = std::make_shared<Image<T>>(scene.imageOf<T>(start));
  int bytes = 0;
  query(scene.size, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  Work work;
  work.bytes = {1.0 * channels * sizeof(T), 0, sizeof(T)};
  work.run = [=, size = scene.size] {
    for (int y = 0; y < size.height; ++y) std::memcpy(marker->row(y), first->row(y), sizeof(T) * size.width);
    return function(src->data(), src->step(), marker->data(), marker->step(), size, norm, flag, buffer->data());
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto want = ref::segmented(plane(relief, size, channels), plane(start, size), norm, flag != 0, gradient);
    return firstDifference(want.data, marker->compact(), size.width);
  };
  return work;
}

// ---- Components ----

template <class T>
using Label = ZebStatus (*)(T*, int, ZebiSize, int, int, ZebiNorm, int*, Zeb8u*);

// What is labelled already is labelled again.
template <class T>
Work label(const Scene& scene, const Pixels<Zeb8u>& picture, int maxLabel, ZebiNorm norm, Label<T> function,
           Query query) {
  auto image = std::make_shared<Image<T>>(scene.imageOf<T>(picture));
  int bytes = 0;
  query(scene.size, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  auto number = std::make_shared<int>();
  Work work;
  work.bytes = {0, 0, sizeof(T)};
  work.run = [=, size = scene.size] {
    return function(image->data(), image->step(), size, 1, maxLabel, norm, number.get(), buffer->data());
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    auto want = plane(widened<T>(picture, 1), size);
    if (ref::labelled(want, 1, maxLabel, norm) != *number) return "the number of components differs";
    return firstDifference(want.data, image->compact(), size.width);
  };
  return work;
}

template <class T, class D>
using Speckle = ZebStatus (*)(T*, int, ZebiSize, T, int, D, ZebiNorm, Zeb8u*);

// The image is copied back before each run, at the cost of one memcpy of its bytes.
template <class T, class D>
Work speckles(const Scene& scene, const Pixels<T>& picture, ZebDataType type, ZebiNorm norm, Speckle<T, D> function) {
  auto image = std::make_shared<Image<T>>(scene.image<T>());
  auto first = std::make_shared<Image<T>>(scene.imageOf<T>(picture));
  int bytes = 0;
  zebiMarkSpecklesGetBufferSize(scene.size, type, &bytes);
  auto buffer = std::make_shared<Pixels<Zeb8u>>(bytes);
  Work work;
  work.bytes = {0, 0, sizeof(T)};
  work.run = [=, size = scene.size] {
    for (int y = 0; y < size.height; ++y) std::memcpy(image->row(y), first->row(y), sizeof(T) * size.width);
    return function(image->data(), image->step(), size, 0, 100, 8, norm, buffer->data());
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    auto want = plane(picture, size);
    ref::speckled<T, D>(want, 0, 100, 8, norm);
    return firstDifference(want.data, image->compact(), size.width);
  };
  return work;
}

// Squares of 16 pixels with labels of any order.
template <class T>
Work bounds(const Scene& scene, ZebiNorm norm, ZebStatus (*function)(T*, int, ZebiSize, T, ZebiNorm)) {
  Pixels<T> picture(scene.count());
  for (int i = 0; i < scene.count(); ++i)
    picture[i] = static_cast<T>(1 + (i % scene.size.width / 16 * 7 + i / scene.size.width / 16 * 13) % 200);
  auto image = std::make_shared<Image<T>>(scene.imageOf<T>(picture));
  Work work;
  work.bytes = {0, 0, sizeof(T)};
  work.run = [=, size = scene.size] { return function(image->data(), image->step(), size, 255, norm); };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    auto want = plane(picture, size);
    ref::bounded(want, T(255), norm);
    return firstDifference(want.data, image->compact(), size.width);
  };
  return work;
}

// ---- Inpainting ----

constexpr Zeb32f radius = 5;

using InpaintInit = ZebStatus (*)(ZebiInpaintState**, const Zeb8u*, int, ZebiSize, Zeb32f, ZebiInpaintMethod);
using InpaintFree = ZebStatus (*)(ZebiInpaintState*);
using Inpaint = ZebStatus (*)(const Zeb8u*, int, Zeb8u*, int, ZebiSize, const ZebiInpaintState*);

ref::Plane<Zeb32f> distances(const Pixels<Zeb8u>& mask, ZebiSize size) {
  ref::Plane<Zeb32f> t(size.width, size.height);
  int bytes = 0;
  zebiFastMarchingGetBufferSize_8u32f_C1R(size, &bytes);
  Pixels<Zeb8u> buffer(bytes);
  zebiFastMarching_8u32f_C1R(mask.data(), size.width, t.data.data(), 4 * size.width, size, radius + 2, buffer.data());
  return t;
}

Work inpaint(const Scene& scene, const Pixels<Zeb8u>& picture, int channels, ZebiInpaintMethod method, InpaintInit init,
             InpaintFree release, Inpaint function) {
  const Pixels<Zeb8u> mask = strokes(scene);
  auto src = std::make_shared<Image<Zeb8u>>(scene.imageOf<Zeb8u>(picture, channels));
  auto dst = std::make_shared<Image<Zeb8u>>(scene.image<Zeb8u>(channels));
  ZebiInpaintState* built = nullptr;
  init(&built, mask.data(), scene.size.width, scene.size, radius, method);
  std::shared_ptr<ZebiInpaintState> state(built, [=](ZebiInpaintState* s) { release(s); });
  Work work;
  work.bytes = {1.0 * channels, 1.0 * channels};
  work.run = [=, size = scene.size] {
    return function(src->data(), src->step(), dst->data(), dst->step(), size, state.get());
  };
  work.check = [=, size = scene.size, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto want =
        ref::inpainted(plane(picture, size, channels), plane(mask, size), distances(mask, size), radius, method);
    return firstDifference(want.data, dst->compact(), size.width * channels);
  };
  return work;
}

Work build(const Scene& scene) {
  auto mask = std::make_shared<Image<Zeb8u>>(scene.imageOf<Zeb8u>(strokes(scene)));
  Work work;
  work.bytes = {1, 12};
  work.run = [=, size = scene.size] {
    ZebiInpaintState* state = nullptr;
    const ZebStatus status =
        zebiInpaintInitAlloc_8u_C1R(&state, mask->data(), mask->step(), size, radius, zebInpaintTelea);
    return status == zebStsOk ? zebiInpaintFree_8u_C1R(state) : status;
  };
  work.check = [run = work.run]() { return failure(run()); };
  return work;
}

// ---- Rows ----

#define WATERSHED(form) zebiSegmentWatershed_##form, zebiSegmentWatershedGetBufferSize_##form, false
#define GRADIENT(form) zebiSegmentGradient_##form, zebiSegmentGradientGetBufferSize_##form, true
#define LABEL(form) zebiLabelMarkers_##form, zebiLabelMarkersGetBufferSize_##form
#define INPAINT(form) zebiInpaintInitAlloc_##form, zebiInpaintFree_##form, zebiInpaint_##form

template <ZebiNorm norm, int flag>
Work watershed(const Scene& s) {
  return segment(s, sobel(s), markers<Zeb8u>(s, 200), 1, norm, flag, WATERSHED(8u_C1IR));
}
template <int count>
Work watershedOf(const Scene& s, Pixels<Zeb8u> (*relief)(const Scene&)) {
  return segment(s, relief(s), markers<Zeb8u>(s, count), 1, zebiNormL1, 0, WATERSHED(8u_C1IR));
}
template <int count>
Work gradientOf(const Scene& s, const Pixels<Zeb8u>& picture, int flag = 0) {
  return segment(s, picture, markers<Zeb8u>(s, count), 1, zebiNormL1, flag, GRADIENT(8u_C1IR));
}
Pixels<Zeb8u> plateau(const Scene& s) {
  return Pixels<Zeb8u>(s.count(), 7);
}
Pixels<Zeb8u> noise(const Scene& s) {
  return randomPixels<Zeb8u>(s.count(), 0, 255, 4);
}

const Family family(
    65, "Segmentation, components, inpainting",
    {
        {"SegmentWatershed 8u, 4-connected", timesMemcpy(600), watershed<zebiNormL1, 0>},
        {"SegmentWatershed 8u, 4-connected, boundaries", timesMemcpy(950), watershed<zebiNormL1, zebSegmentBoundary>},
        {"SegmentWatershed 8u, 8-connected", timesMemcpy(750), watershed<zebiNormInf, 0>},
        {"SegmentWatershed 8u, 8-connected, boundaries", timesMemcpy(1250), watershed<zebiNormInf, zebSegmentBoundary>},
        {"SegmentWatershed 16u, 4-connected", noTarget(),
         [](const Scene& s) {
           return segment(s, widened<Zeb16u>(sobel(s), 257), markers<Zeb16u>(s, 200), 1, zebiNormL1, 0,
                          WATERSHED(16u_C1IR));
         }},
        {"SegmentGradient 8u C1, 4-connected", timesMemcpy(850),
         [](const Scene& s) { return gradientOf<200>(s, s.photo); }},
        {"SegmentGradient 8u C3, 4-connected", timesMemcpy(1050),
         [](const Scene& s) {
           return segment(s, coloured(s), markers<Zeb8u>(s, 200), 3, zebiNormL1, 0, GRADIENT(8u_C3IR));
         }},
        {"SegmentGradient 8u C1, 4-connected, boundaries", noTarget(),
         [](const Scene& s) { return gradientOf<200>(s, s.photo, zebSegmentBoundary); }},
        {"LabelMarkers 8u, 4-connected", timesMemcpy(18),
         [](const Scene& s) { return label(s, thresholded(s), 255, zebiNormL1, LABEL(8u_C1IR)); }},
        {"LabelMarkers 8u, 8-connected", timesMemcpy(18),
         [](const Scene& s) { return label(s, thresholded(s), 255, zebiNormInf, LABEL(8u_C1IR)); }},
        {"LabelMarkers 32s, 4-connected", timesMemcpy(30),
         [](const Scene& s) { return label(s, thresholded(s), INT32_MAX, zebiNormL1, LABEL(32s_C1IR)); }},
        {"MarkSpeckles 8u, 4-connected", timesMemcpy(160),
         [](const Scene& s) { return speckles<Zeb8u>(s, s.photo, zeb8u, zebiNormL1, zebiMarkSpeckles_8u_C1IR); }},
        {"MarkSpeckles 32f, 4-connected", timesMemcpy(200),
         [](const Scene& s) {
           return speckles<Zeb32f>(s, widened<Zeb32f>(s.photo, 1), zeb32f, zebiNormL1, zebiMarkSpeckles_32f_C1IR);
         }},
        {"BoundSegments 8u", timesMemcpy(3),
         [](const Scene& s) { return bounds(s, zebiNormInf, zebiBoundSegments_8u_C1IR); }},
        {"BoundSegments 16u", timesMemcpy(6),
         [](const Scene& s) { return bounds(s, zebiNormInf, zebiBoundSegments_16u_C1IR); }},
        {"Inpaint 8u C1, Telea", timesMemcpy(350),
         [](const Scene& s) { return inpaint(s, s.photo, 1, zebInpaintTelea, INPAINT(8u_C1R)); }},
        {"Inpaint 8u C1, isophotes", timesMemcpy(700),
         [](const Scene& s) { return inpaint(s, s.photo, 1, zebInpaintIsophote, INPAINT(8u_C1R)); }},
        {"Inpaint 8u C3, Telea", timesMemcpy(600),
         [](const Scene& s) { return inpaint(s, coloured(s), 3, zebInpaintTelea, INPAINT(8u_C3R)); }},
        {"InpaintInitAlloc 8u C1", timesMemcpy(450), build},
        {"worst: SegmentWatershed, a plateau, one marker", noTarget(),
         [](const Scene& s) { return watershedOf<1>(s, plateau); }},
        {"worst: SegmentWatershed, a serpentine, one marker", noTarget(),
         [](const Scene& s) { return watershedOf<1>(s, walled<serpentine>); }},
        {"worst: SegmentWatershed, a maze, one marker", noTarget(),
         [](const Scene& s) { return watershedOf<1>(s, walled<maze>); }},
        {"worst: SegmentWatershed, a checkerboard, 200 markers", noTarget(),
         [](const Scene& s) { return watershedOf<200>(s, checkerboard); }},
        {"worst: SegmentWatershed, noise, 10000 markers", noTarget(),
         [](const Scene& s) { return watershedOf<10000>(s, noise); }},
        {"worst: SegmentGradient, a plateau, one marker", noTarget(),
         [](const Scene& s) { return gradientOf<1>(s, plateau(s)); }},
        {"worst: SegmentGradient, a serpentine, one marker", noTarget(),
         [](const Scene& s) { return gradientOf<1>(s, walled<serpentine>(s)); }},
        {"worst: SegmentGradient, a maze, one marker", noTarget(),
         [](const Scene& s) { return gradientOf<1>(s, walled<maze>(s)); }},
        {"worst: SegmentGradient, a checkerboard, 200 markers", noTarget(),
         [](const Scene& s) { return gradientOf<200>(s, checkerboard(s)); }},
        {"worst: SegmentGradient, noise, 10000 markers", noTarget(),
         [](const Scene& s) { return gradientOf<10000>(s, noise(s)); }},
        {"worst: LabelMarkers 8u, a checkerboard, 4-connected", noTarget(),
         [](const Scene& s) { return label(s, checkerboard(s), 255, zebiNormL1, LABEL(8u_C1IR)); }},
        {"worst: LabelMarkers 8u, a checkerboard, 8-connected", noTarget(),
         [](const Scene& s) { return label(s, checkerboard(s), 255, zebiNormInf, LABEL(8u_C1IR)); }},
        {"worst: MarkSpeckles 8u, noise, 8-connected", noTarget(),
         [](const Scene& s) { return speckles<Zeb8u>(s, noise(s), zeb8u, zebiNormInf, zebiMarkSpeckles_8u_C1IR); }},
    });

}  // namespace
