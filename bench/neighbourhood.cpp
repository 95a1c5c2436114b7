// Derivatives, Laplacian, low-pass and Gaussian filters.
#include "reference/neighbourhood.h"

#include <memory>

#include "bench.h"

namespace {

using namespace bench;

template <class S, class D>
using Filter = std::function<ZebStatus(const Image<S>&, Image<D>&, ZebiSize)>;

// check(sampler of a channel, size) gives the result by definition.
template <class S, class D, class Check>
Work filter(const Scene& scene, int channels, const Filter<S, D>& run, Check check) {
  struct State {
    Image<S> src;
    Image<D> dst;
  };
  Pixels<S> pixels;
  for (const Zeb8u p : scene.photo)
    for (int c = 0; c < channels; ++c) pixels.push_back(static_cast<S>(p / (c + 1)));
  auto state = std::make_shared<State>(State{scene.imageOf<S>(pixels, channels), scene.image<D>(channels)});
  Work work;
  work.bytes = {1.0 * sizeof(S) * channels, 1.0 * sizeof(D) * channels};
  work.run = [=, size = scene.size] { return run(state->src, state->dst, size); };
  work.check = [=, size = scene.size, call = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(call())) return bad;
    Pixels<D> want(static_cast<size_t>(size.width) * size.height * channels);
    for (int c = 0; c < channels; ++c) {
      const auto at = [&](int x, int y) {
        x = std::clamp(x, 0, size.width - 1), y = std::clamp(y, 0, size.height - 1);
        return state->src.row(y)[x * channels + c];
      };
      const ref::Plane<D> plane = check(ref::Sampler<S>(at), size);
      for (size_t i = 0; i < plane.data.size(); ++i) want[i * channels + c] = plane.data[i];
    }
    return firstDifference(want, state->dst.compact(), size.width * channels);
  };
  return work;
}

// A filter with a size selector.
template <class S, class D>
Work fixed(const Scene& scene, int n, const ref::Fixed& definition, ZebStatus (*query)(ZebiSize, int, int*),
           ZebStatus (*call)(const S*, int, D*, int, ZebiSize, int, ZebiBorderType, S, Zeb8u*)) {
  const int mask = n == 3 ? zebMskSize3x3 : zebMskSize5x5;
  int bytes = 0;
  query(scene.size, mask, &bytes);
  auto buffer = std::make_shared<std::vector<Zeb8u>>(bytes);
  return filter<S, D>(
      scene, 1,
      [=](const Image<S>& src, Image<D>& dst, ZebiSize size) {
        return call(src.data(), src.step(), dst.data(), dst.step(), size, mask, zebBorderRepl, S(0), buffer->data());
      },
      [=](const ref::Sampler<S>& at, ZebiSize size) { return ref::fixedFilter<D>(at, size, definition, n); });
}

template <class S, class V>
Work gaussian(const Scene& scene, int channels, int n, ZebDataType type, V value,
              ZebStatus (*call)(const S*, int, S*, int, ZebiSize, ZebiBorderType, V, const ZebiFilterGaussianState*,
                                Zeb8u*)) {
  const Zeb32f sigma = 0.3f * (static_cast<Zeb32f>(n / 2) - 1) + 0.8f;
  int stateBytes = 0, bytes = 0;
  zebiFilterGaussianGetBufferSize(scene.size, n, type, channels, &stateBytes, &bytes);
  auto buffer = std::make_shared<std::vector<Zeb8u>>(bytes), memory = std::make_shared<std::vector<Zeb8u>>(stateBytes);
  auto* const state = reinterpret_cast<ZebiFilterGaussianState*>(memory->data());
  zebiFilterGaussianInit(n, sigma, type, channels, state);
  return filter<S, S>(
      scene, channels,
      [=](const Image<S>& src, Image<S>& dst, ZebiSize size) {
        (void)memory;
        return call(src.data(), src.step(), dst.data(), dst.step(), size, zebBorderRepl, value, state, buffer->data());
      },
      [=](const ref::Sampler<S>& at, ZebiSize size) { return ref::gaussian<S>(at, size, n, sigma); });
}

Work scharr(const Scene& scene) {
  int bytes = 0;
  zebiFilterScharrHorizGetBufferSize_8u16s_C1R(scene.size, &bytes);
  auto buffer = std::make_shared<std::vector<Zeb8u>>(bytes);
  return filter<Zeb8u, Zeb16s>(
      scene, 1,
      [=](const Image<Zeb8u>& src, Image<Zeb16s>& dst, ZebiSize size) {
        return zebiFilterScharrHorizBorder_8u16s_C1R(src.data(), src.step(), dst.data(), dst.step(), size,
                                                     zebBorderRepl, 0, buffer->data());
      },
      [=](const ref::Sampler<Zeb8u>& at, ZebiSize size) {
        return ref::fixedFilter<Zeb16s>(at, size, {ref::Taps::first, ref::Taps::scharr}, 3);
      });
}

#define FIXED(text, limit, n, stem, form, ...)                                                \
  {                                                                                           \
    text, timesMemcpy(limit), [](const Scene& scene) {                                        \
      return fixed(scene, n, ref::Fixed{__VA_ARGS__}, zebiFilter##stem##GetBufferSize_##form, \
                   zebiFilter##stem##Border_##form);                                          \
    }                                                                                         \
  }
#define GAUSSIAN(text, limit, n, form, type, channels, value)                                                         \
  {                                                                                                                   \
    text, timesMemcpy(limit),                                                                                         \
        [](const Scene& scene) { return gaussian(scene, channels, n, type, value, zebiFilterGaussianBorder_##form); } \
  }
using ref::Taps;

const Family family(31, "Derivatives and smoothing",
                    {FIXED("SobelHoriz 3x3 8u16s", 3.2, 3, SobelHoriz, 8u16s_C1R, Taps::first, Taps::smooth),
                     FIXED("SobelVert 3x3 8u16s", 3.2, 3, SobelVert, 8u16s_C1R, Taps::smooth, Taps::first),
                     FIXED("SobelHorizSecond 3x3 8u16s", 3.2, 3, SobelHorizSecond, 8u16s_C1R, Taps::second,
                           Taps::smooth),
                     FIXED("SobelHoriz 5x5 8u16s", 4.5, 5, SobelHoriz, 8u16s_C1R, Taps::first, Taps::smooth),
                     FIXED("SobelVert 5x5 8u16s", 4.5, 5, SobelVert, 8u16s_C1R, Taps::smooth, Taps::first),
                     {"ScharrHoriz 8u16s", timesMemcpy(3.2), scharr},
                     FIXED("SobelHoriz 3x3 32f", 7, 3, SobelHoriz, 32f_C1R, Taps::first, Taps::smooth),
                     FIXED("SobelHoriz 5x5 32f", 9, 5, SobelHoriz, 32f_C1R, Taps::first, Taps::smooth),
                     FIXED("Laplacian 3x3 8u16s", 2.8, 3, Laplacian, 8u16s_C1R, Taps::second, Taps::smooth, true),
                     FIXED("Laplacian 5x5 8u16s", 5.5, 5, Laplacian, 8u16s_C1R, Taps::second, Taps::smooth, true),
                     FIXED("Lowpass 3x3 8u", 2.4, 3, Lowpass, 8u_C1R, Taps::mean, Taps::mean),
                     FIXED("Lowpass 5x5 8u", 3.2, 5, Lowpass, 8u_C1R, Taps::mean, Taps::mean),
                     GAUSSIAN("Gaussian 8u C1, 3 taps", 7, 3, 8u_C1R, zeb8u, 1, Zeb8u(0)),
                     GAUSSIAN("Gaussian 8u C1, 5 taps", 9, 5, 8u_C1R, zeb8u, 1, Zeb8u(0)),
                     GAUSSIAN("Gaussian 8u C1, 31 taps", 32, 31, 8u_C1R, zeb8u, 1, Zeb8u(0)),
                     GAUSSIAN("Gaussian 8u C3, 5 taps", 27, 5, 8u_C3R, zeb8u, 3, static_cast<const Zeb8u*>(nullptr)),
                     GAUSSIAN("Gaussian 16u C1, 5 taps", 12, 5, 16u_C1R, zeb16u, 1, Zeb16u(0)),
                     GAUSSIAN("Gaussian 32f C1, 5 taps", 12, 5, 32f_C1R, zeb32f, 1, 0.0f)});

}  // namespace
