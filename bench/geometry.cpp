// Windows between pixels, lenses, lines, gradient vectors, super-resolution.
#include "reference/geometry.h"

#include <memory>

#include "bench.h"

namespace {

using namespace bench;

template <class T>
ref::Plane<T> planeOf(const Image<T>& image, ZebiSize size, int channels = 1) {
  ref::Plane<T> plane(size.width, size.height, channels);
  const auto pixels = image.compact();
  std::copy(pixels.begin(), pixels.end(), plane.data.begin());
  return plane;
}
template <class T>
Image<T> colours(const Scene& scene, int channels) {
  Pixels<T> pixels;
  for (const Zeb8u p : scene.photo)
    for (int c = 0; c < channels; ++c) pixels.push_back(static_cast<T>(p * (sizeof(T) == 2 ? 257 : 1) / (c + 1)));
  return scene.imageOf<T>(pixels, channels);
}

// run(src, dst) makes the call, want(src) what it must give.
template <class S, class D>
Work mapped(const Scene& scene, Image<S> from, int channels, Bytes bytes,
            std::function<ZebStatus(const Image<S>&, Image<D>&)> run,
            std::function<ref::Plane<D>(const Image<S>&)> want) {
  struct State {
    Image<S> src;
    Image<D> dst;
  };
  auto state = std::make_shared<State>(State{std::move(from), scene.image<D>(channels)});
  Work work;
  work.bytes = bytes;
  work.run = [=] { return run(state->src, state->dst); };
  work.check = [=, call = work.run, width = scene.size.width * channels]() -> std::optional<std::string> {
    if (auto bad = failure(call())) return bad;
    return firstDifference(want(state->src).data, state->dst.compact(), width);
  };
  return work;
}

// One pixel smaller than the image in both directions, so that the pixels beyond are there.
template <class T, class D>
Work subpixel(const Scene& scene, ZebStatus (*call)(const T*, int, D*, int, ZebiSize, ZebiPoint_32f)) {
  const ZebiSize size = {scene.size.width - 1, scene.size.height - 1};
  return mapped<T, D>(
      scene, colours<T>(scene, 1), 1, {1.0 * sizeof(T), 1.0 * sizeof(D)},
      [=](const Image<T>& src, Image<D>& dst) {
        return call(src.data(), src.step(), dst.data(), dst.step(), size, {0.3f, 0.6f});
      },
      [=, full = scene.size](const Image<T>& src) {
        ref::Plane<D> out(full.width, full.height);
        const auto plane = planeOf(src, full);
        for (int y = 0; y < size.height; ++y)
          for (int x = 0; x < size.width; ++x) out.at(x, y) = ref::subpixel<D>(plane, x, y, 0.3f, 0.6f, 0);
        return out;
      });
}

ref::Lens lensOf(ZebiSize size) {
  const Zeb32f focal = 1500.0f * static_cast<Zeb32f>(size.width) / 1920;
  return {{focal, focal}, {static_cast<Zeb32f>(size.width) * 0.5f, static_cast<Zeb32f>(size.height) * 0.5f},
          -0.2f,          0.05f,
          0.001f,         -0.002f};
}
std::shared_ptr<std::vector<Zeb8u>> lensBuffer(ZebiSize size) {
  int bytes = 0;
  zebiUndistortGetSize(size, &bytes);
  return std::make_shared<std::vector<Zeb8u>>(bytes);
}

template <class T>
Work undistort(const Scene& scene, int channels,
               ZebStatus (*call)(const T*, int, T*, int, ZebiSize, ZebiPoint_32f, ZebiPoint_32f, Zeb32f, Zeb32f,
                                 Zeb8u*)) {
  const ZebiSize size = scene.size;
  const ref::Lens lens = lensOf(size);
  auto buffer = lensBuffer(size);
  return mapped<T, T>(
      scene, colours<T>(scene, channels), channels, {1.0 * sizeof(T) * channels, 1.0 * sizeof(T) * channels},
      [=](const Image<T>& src, Image<T>& dst) {
        return call(src.data(), src.step(), dst.data(), dst.step(), size, lens.focal, lens.centre, lens.k1, lens.k2,
                    buffer->data());
      },
      [=](const Image<T>& src) { return ref::undistorted(planeOf(src, size, channels), lens); });
}

Work lensMap(const Scene& scene) {
  const ZebiSize size = scene.size;
  const ref::Lens lens = lensOf(size);
  auto buffer = lensBuffer(size);
  auto y = std::make_shared<Image<Zeb32f>>(scene.image<Zeb32f>());
  return mapped<Zeb8u, Zeb32f>(
      scene, scene.image<Zeb8u>(), 1, {0, 8},
      [=](const Image<Zeb8u>&, Image<Zeb32f>& x) {
        return zebiCreateMapCameraUndistort_32f_C1R(x.data(), x.step(), y->data(), y->step(), size, lens.focal,
                                                    lens.centre, lens.k1, lens.k2, lens.p1, lens.p2, buffer->data());
      },
      [=](const Image<Zeb8u>&) {
        ref::Plane<Zeb32f> out(size.width, size.height);
        for (int j = 0; j < size.height; ++j)
          for (int i = 0; i < size.width; ++i) out.at(i, j) = lens.position(i, j, true).x;
        return out;
      });
}

// outputs: 2 derivatives, 3 with the magnitude, 4 with the angle; the last of them is checked.
template <class S, class D, class V>
Work gradient(const Scene& scene, int channels, int outputs, V value,
              ZebStatus (*call)(const S*, int, D*, int, D*, int, D*, int, Zeb32f*, int, ZebiSize, int, ZebNormType,
                                ZebiBorderType, V, Zeb8u*)) {
  struct State {
    Image<S> src;
    Image<D> gx, gy, magnitude;
    Image<Zeb32f> angle;
    std::vector<Zeb8u> buffer;
  };
  const ZebiSize size = scene.size;
  int bytes = 0;
  zebiGradientVectorGetBufferSize(size, zebMskSize3x3, sizeof(S) == 1 ? zeb8u : zeb32f, channels, &bytes);
  auto s = std::make_shared<State>(State{colours<S>(scene, channels), scene.image<D>(), scene.image<D>(),
                                         scene.image<D>(), scene.image<Zeb32f>(), std::vector<Zeb8u>(bytes)});
  Work work;
  work.bytes = {1.0 * sizeof(S) * channels, 1.0 * sizeof(D) * std::min(outputs, 3) + (outputs > 3 ? 4.0 : 0.0)};
  work.run = [=] {
    return call(s->src.data(), s->src.step(), s->gx.data(), s->gx.step(), s->gy.data(), s->gy.step(),
                outputs > 2 ? s->magnitude.data() : nullptr, s->magnitude.step(),
                outputs > 3 ? s->angle.data() : nullptr, s->angle.step(), size, zebMskSize3x3, zebNormL2, zebBorderRepl,
                value, s->buffer.data());
  };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    std::vector<D> last;
    std::vector<Zeb32f> angles;
    std::vector<ref::Sampler<S>> at;
    for (int c = 0; c < channels; ++c)
      at.emplace_back([=](int x, int y) {
        return s->src.row(std::clamp(y, 0, size.height - 1))[std::clamp(x, 0, size.width - 1) * channels + c];
      });
    for (int y = 0; y < size.height; ++y)
      for (int x = 0; x < size.width; ++x) {
        auto v = ref::gradientAt<D>(at[0], x, y, {ref::Taps::smooth, 3});
        for (int c = 1; c < channels; ++c) {
          const auto other = ref::gradientAt<D>(at[c], x, y, {ref::Taps::smooth, 3});
          if (other.strength(zebNormL2) > v.strength(zebNormL2)) v = other;
        }
        last.push_back(outputs > 2 ? v.magnitude(zebNormL2) : v.gy);
        angles.push_back(v.angle());
      }
    if (outputs > 3)
      if (auto bad = firstDifference(angles, s->angle.compact(), size.width)) return bad;
    return firstDifference(last, (outputs > 2 ? s->magnitude : s->gy).compact(), size.width);
  };
  return work;
}

template <class T>
Work toGray(const Scene& scene, ZebNormType norm, ZebStatus (*call)(const T*, int, T*, int, ZebiSize, ZebNormType)) {
  const ZebiSize size = scene.size;
  return mapped<T, T>(
      scene, colours<T>(scene, 3), 1, {3.0 * sizeof(T), 1.0 * sizeof(T)},
      [=](const Image<T>& src, Image<T>& dst) {
        return call(src.data(), src.step(), dst.data(), dst.step(), size, norm);
      },
      [=](const Image<T>& src) {
        ref::Plane<T> out(size.width, size.height);
        const auto p = planeOf(src, size, 3);
        for (size_t i = 0; i < out.data.size(); ++i)
          out.data[i] = ref::colourToGray(p.data[3 * i], p.data[3 * i + 1], p.data[3 * i + 2], norm);
        return out;
      });
}

// The scene is the observation; the estimate is twice as wide and high, the photograph doubled.
ref::Observation observation(int n) {
  ref::Observation o;
  o.at = {2, 0, 0.25, 0, 2, 0.25};
  o.n = n;
  o.psf.assign(static_cast<size_t>(n * n), 1.0f / static_cast<Zeb32f>(n * n));
  return o;
}
Work residual(const Scene& scene, int n) {
  const ZebiSize low = scene.size, high = {2 * low.width, 2 * low.height};
  auto estimate = std::make_shared<Image<Zeb8u>>(high, 2 * scene.stride);
  for (int y = 0; y < high.height; ++y)
    for (int x = 0; x < high.width; ++x)
      estimate->row(y)[x] =
          scene.photo[static_cast<size_t>(y / 2) * static_cast<size_t>(low.width) + static_cast<size_t>(x / 2)];
  const auto o = observation(n);
  const auto call = n == 2 ? zebiSRCalcResidual_PSF2x2_8u16s_C1R : zebiSRCalcResidual_PSF3x3_8u16s_C1R;
  return mapped<Zeb8u, Zeb16s>(
      scene, colours<Zeb8u>(scene, 1), 1, {5, 2},
      [=](const Image<Zeb8u>& src, Image<Zeb16s>& dst) {
        return call(estimate->data(), estimate->step(), high, src.data(), src.step(), dst.data(), dst.step(), low,
                    o.at.data(), o.psf.data());
      },
      [=](const Image<Zeb8u>& src) { return ref::residual(planeOf(*estimate, high), planeOf(src, low), o); });
}
Work update(const Scene& scene, int n) {
  const ZebiSize low = scene.size, high = {2 * low.width, 2 * low.height};
  auto gradient = std::make_shared<Image<Zeb32f>>(high, 2 * scene.stride);
  auto res = std::make_shared<Image<Zeb32f>>(colours<Zeb32f>(scene, 1));
  const auto o = observation(n);
  const auto call = n == 2 ? zebiSRUpdateGradient_PSF2x2_32f_C1R : zebiSRUpdateGradient_PSF3x3_32f_C1R;
  Work work;
  work.bytes = {4, 0, 16};
  work.run = [=] {
    return call(res->data(), res->step(), low, gradient->data(), gradient->step(), high, o.at.data(), o.psf.data());
  };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    gradient->fill(0);
    if (auto bad = failure(run())) return bad;
    ref::Plane<Zeb32f> want(high.width, high.height);
    ref::addResiduals(planeOf(*res, low), want, o);
    return firstDifference(want.data, gradient->compact(), high.width);
  };
  return work;
}

// The target counts pixels of the line.
Work diagonal(const Scene& scene) {
  const ZebiSize size = scene.size;
  const auto points = ref::line({0, 0}, {size.width - 1, size.height - 1});
  struct State {
    Image<Zeb8u> src;
    Pixels<Zeb8u> dst;
  };
  auto s = std::make_shared<State>(State{scene.source, Pixels<Zeb8u>(points.size())});
  Work work;
  work.callsPerRun = static_cast<int>(points.size());
  work.run = [=] {
    return zebiSampleLine_8u_C1R(s->src.data(), s->src.step(), s->dst.data(), size, {0, 0},
                                 {size.width - 1, size.height - 1});
  };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    Pixels<Zeb8u> want;
    for (const ZebiPoint p : points) want.push_back(s->src.row(p.y)[p.x]);
    return firstDifference(want, s->dst, static_cast<int>(want.size()));
  };
  return work;
}

using S = const Scene&;
const Family family(
    95, "Geometry and sampling",
    {{"CopySubpix 8u", timesMemcpy(9), [](S s) { return subpixel(s, zebiCopySubpix_8u_C1R); }},
     {"CopySubpix 8u32f", timesMemcpy(9), [](S s) { return subpixel(s, zebiCopySubpix_8u32f_C1R); }},
     {"CopySubpix 16u", timesMemcpy(10), [](S s) { return subpixel(s, zebiCopySubpix_16u_C1R); }},
     {"CopySubpix 32f", timesMemcpy(11), [](S s) { return subpixel(s, zebiCopySubpix_32f_C1R); }},
     {"UndistortRadial 8u C1", timesMemcpy(100), [](S s) { return undistort(s, 1, zebiUndistortRadial_8u_C1R); }},
     {"UndistortRadial 16u C1", timesMemcpy(110), [](S s) { return undistort(s, 1, zebiUndistortRadial_16u_C1R); }},
     {"UndistortRadial 32f C1", timesMemcpy(110), [](S s) { return undistort(s, 1, zebiUndistortRadial_32f_C1R); }},
     {"UndistortRadial 8u C3", timesMemcpy(170), [](S s) { return undistort(s, 3, zebiUndistortRadial_8u_C3R); }},
     {"CreateMapCameraUndistort", timesMemcpy(16), lensMap},
     {"GradientVectorSobel 3x3 8u16s, gx and gy", timesMemcpy(5),
      [](S s) { return gradient(s, 1, 2, Zeb8u(0), zebiGradientVectorSobel_8u16s_C1R); }},
     {"GradientVectorSobel 3x3 8u16s, with L2 magnitude", timesMemcpy(9),
      [](S s) { return gradient(s, 1, 3, Zeb8u(0), zebiGradientVectorSobel_8u16s_C1R); }},
     {"GradientVectorSobel 3x3 8u16s, all four", timesMemcpy(34),
      [](S s) { return gradient(s, 1, 4, Zeb8u(0), zebiGradientVectorSobel_8u16s_C1R); }},
     {"GradientVectorSobel 3x3 32f, all four", timesMemcpy(40),
      [](S s) { return gradient(s, 1, 4, 0.0f, zebiGradientVectorSobel_32f_C1R); }},
     {"GradientVectorSobel 3x3 8u16s C3C1, gx and gy", timesMemcpy(20),
      [](S s) { return gradient(s, 3, 2, static_cast<const Zeb8u*>(nullptr), zebiGradientVectorSobel_8u16s_C3C1R); }},
     {"GradientColorToGray 8u Inf", timesMemcpy(5),
      [](S s) { return toGray(s, zebNormInf, zebiGradientColorToGray_8u_C3C1R); }},
     {"GradientColorToGray 8u L2", timesMemcpy(9),
      [](S s) { return toGray(s, zebNormL2, zebiGradientColorToGray_8u_C3C1R); }},
     {"GradientColorToGray 32f L2", timesMemcpy(18),
      [](S s) { return toGray(s, zebNormL2, zebiGradientColorToGray_32f_C3C1R); }},
     {"SRCalcResidual PSF2x2", timesMemcpy(60), [](S s) { return residual(s, 2); }},
     {"SRCalcResidual PSF3x3", timesMemcpy(90), [](S s) { return residual(s, 3); }},
     {"SRUpdateGradient PSF2x2", timesMemcpy(120), [](S s) { return update(s, 2); }},
     {"SRUpdateGradient PSF3x3", timesMemcpy(200), [](S s) { return update(s, 3); }},
     {"SampleLine 8u C1 diagonal, a pixel", nanosecondsPerCall(2), diagonal}});

}  // namespace
