// Derivatives, Laplacian, low-pass and Gaussian filters.
#include "reference/neighbourhood.h"

#include "bordered.h"
#include "function.h"
#include "sizes.h"

namespace {

using namespace fuzz;
using ref::Fixed;
using ref::Plane;
using ref::Taps;

int maskOf(int n) {
  return n == 3 ? zebMskSize3x3 : zebMskSize5x5;
}

// mask...: the size selector, for filters that have one.
template <class S, class D, class F, class Q, class... Mask>
void fixed(Choice& c, const F& f, const Q& query, const Fixed& filter, int n, Mask... mask) {
  const ZebiSize size = c.size();
  const Source<S> src(c, size, n / 2);
  const Image<D> dst = c.empty<D>(size);
  const int element = sizeof(S) == 1 ? 2 : 4;
  const auto most = [&](int64_t width) { return (2 * n + 4) * (element * (width + 2 * n) + 512) + 1024; };
  const int bytes = bufferBytes(c, size, most(size.width), [&](ZebiSize of) {
    int told = 0;
    query.ok(c, of, mask..., &told);
    return told;
  });
  const Scratch buffer = c.scratch(bytes);
  atLeastRefused(leastWidthRefused(c, query, most, plain(mask)...), sizeof(D), [&](int wide) {
    f.refused(zebStsErrOverflow, src.pixels(), wide * int(sizeof(S)), dst.pixels(), wide * int(sizeof(D)),
              ZebiSize{wide, 1}, mask..., src.border, src.value[0], buffer.get());
  });
  f.ok(c, src.pixels(), src.image.step(), dst.pixels(), dst.step(), size, mask..., src.types(), src.value[0],
       buffer.get());
  const auto want =
      src.template each<D>([&](const ref::Sampler<S>& at) { return ref::fixedFilter<D>(at, size, filter, n); });
  require(agree(f.name(), dst, want),
          std::to_string(n) + " taps, border " + std::to_string(src.border) + ", " + src.image.describe());
  require(src.image.intact() && buffer.intact(), "wrote outside");
}
template <class S, class D, class F, class Q>
void masked(Choice& c, const F& f, const Q& query, const Fixed& filter) {
  const int n = c.coin() ? 3 : 5;
  const int refused[] = {0, 3, 5, 34, 35, 53, -33};
  fixed<S, D>(c, f, query, filter, n, orElse(maskOf(n), c.oneOf(refused), zebStsErrMaskSize));
}

#define MASKED(stem, form, S, D, ...)                                                                                 \
  DRIVER("neighbourhood", "zebiFilter" #stem "Border_" #form,                                                         \
         masked<S, D>(c, FUNCTION(zebiFilter##stem##Border_##form), FUNCTION(zebiFilter##stem##GetBufferSize_##form), \
                      Fixed{__VA_ARGS__}))
#define DERIVATIVE(stem, ...)                          \
  MASKED(stem, 8u16s_C1R, Zeb8u, Zeb16s, __VA_ARGS__); \
  MASKED(stem, 32f_C1R, Zeb32f, Zeb32f, __VA_ARGS__)
#define SCHARR(stem, form, S, D, ...)                                    \
  DRIVER("neighbourhood", "zebiFilterScharr" #stem "Border_" #form,      \
         fixed<S, D>(c, FUNCTION(zebiFilterScharr##stem##Border_##form), \
                     FUNCTION(zebiFilterScharr##stem##GetBufferSize_##form), Fixed{__VA_ARGS__}, 3))

DERIVATIVE(SobelHoriz, Taps::first, Taps::smooth);
DERIVATIVE(SobelVert, Taps::smooth, Taps::first);
DERIVATIVE(SobelHorizSecond, Taps::second, Taps::smooth);
DERIVATIVE(SobelVertSecond, Taps::smooth, Taps::second);
DERIVATIVE(SobelCross, Taps::first, Taps::first);
DERIVATIVE(Laplacian, Taps::second, Taps::smooth, true);
MASKED(Lowpass, 8u_C1R, Zeb8u, Zeb8u, Taps::mean, Taps::mean);
MASKED(Lowpass, 32f_C1R, Zeb32f, Zeb32f, Taps::mean, Taps::mean);
SCHARR(Horiz, 8u16s_C1R, Zeb8u, Zeb16s, Taps::first, Taps::scharr);
SCHARR(Horiz, 32f_C1R, Zeb32f, Zeb32f, Taps::first, Taps::scharr);
SCHARR(Vert, 8u16s_C1R, Zeb8u, Zeb16s, Taps::scharr, Taps::first);
SCHARR(Vert, 32f_C1R, Zeb32f, Zeb32f, Taps::scharr, Taps::first);

template <class T, class F>
void sobelTaps(Choice& c, const F& f) {
  const int n = c.oneIn(4) ? c.within(1, 63) : c.within(1, 9), order = c.within(0, n - 1), sign = c.within(-2, 2);
  const Image<T> dst = c.empty<T>({n, 1});
  const auto want = ref::sobelTaps(n, order, sign);
  Plane<T> row(n, 1);
  bool fits = true;
  for (int i = 0; i < n; ++i) {
    row.at(i, 0) = static_cast<T>(want[i]);
    fits = fits && (std::is_floating_point_v<T> || static_cast<int64_t>(row.at(i, 0)) == want[i]);
  }
  const auto size = orElse(n, c.coin() ? 64 : 0, zebStsErrMaskSize, Check::size);
  const auto which = orElse(order, c.coin() ? -1 : n, zebStsErrBadArgument);
  const Plane<T> before = dst.plane();
  const ZebStatus status = f(c, dst.pixels(), size, which, keep(sign));
  require(status == (fits ? zebStsOk : zebStsErrOverflow), "status " + std::to_string(status));
  require(agree(f.name(), dst, fits ? row : before), std::to_string(n) + " taps, order " + std::to_string(order));
}
DRIVER("neighbourhood", "zebiGenSobelKernel_16s", sobelTaps<Zeb16s>(c, FUNCTION(zebiGenSobelKernel_16s)));
DRIVER("neighbourhood", "zebiGenSobelKernel_32f", sobelTaps<Zeb32f>(c, FUNCTION(zebiGenSobelKernel_32f)));

// ---- Gaussian smoothing ----

template <class S, int channels, class F>
void gaussian(Choice& c, const F& f, ZebDataType type) {
  const ZebiSize size = c.size(70, 8);
  const int n = 2 * (c.oneIn(6) ? c.within(1, 20) : c.within(1, 4)) + 1;
  const Zeb32f usual = c.real(0.3f, 4), odd[] = {1e-3f, 1e30f, 1e-38f, 40};
  const Zeb32f sigma = c.oneIn(6) ? c.oneOf(odd) : usual;
  const Zeb32f refused[] = {0, -1, INFINITY, NAN};
  const Source<S, channels> src(c, size, n / 2);
  const Image<S> dst = c.empty<S>(size, channels);

  const auto taps = orElse(n, c.coin() ? n - 1 : 1, zebStsErrBadArgument, Check::inner);
  const auto types = orElse(type, c.coin() ? zeb8s : zeb64f, zebStsErrDataType);
  const int badChannels = c.coin() ? 4 : 2;
  const auto count = orElse(channels, badChannels, badChannels == 4 ? zebStsErrChannelCount : zebStsErrNumChannels);
  int stateBytes = 0;
  const int element = sizeof(S) == 1 ? 2 : 4;
  const auto most = [&](int64_t width) { return (n + 4) * (element * channels * (width + n) + 512) + 1024; };
  const auto query = FUNCTION(zebiFilterGaussianGetBufferSize);
  const int bytes = bufferBytes(c, size, most(size.width), [&](ZebiSize of) {
    int told = 0;
    query.ok(c, of, taps, types, count, &stateBytes, &told);
    return told;
  });
  require(stateBytes == 32 + 4 * n, "the state's size");
  const Scratch buffer = c.scratch(bytes), memory = c.scratch(stateBytes), other = c.scratch(stateBytes);
  const auto state = [](const Scratch& s) { return reinterpret_cast<ZebiFilterGaussianState*>(s.get()); };
  const auto init = FUNCTION(zebiFilterGaussianInit);
  init.refused(zebStsErrOverflow, INT32_MAX / 4 | 1, sigma, type, channels, state(memory));
  init.ok(c, taps, orElse(sigma, c.oneOf(refused)), types, count, state(memory));
  const ZebDataType otherType = type == zeb16u ? zeb16s : zeb16u;
  const bool sameType = c.coin();
  zebiFilterGaussianInit(n, sigma, sameType ? type : otherType, sameType ? 4 - channels : channels, state(other));

  // Where a width is spoiled, a step that was too small may hold it.
  const ZebiSize flat = {size.width, c.within(-9, 0)};
  constexpr int pixel = channels * sizeof(S);
  const auto call = [&](auto value, auto types) {
    atLeastRefused(leastWidthRefused(c, query, most, n, type, channels, &stateBytes), pixel, [&](int wide) {
      f.refused(zebStsErrOverflow, src.pixels(), wide * pixel, dst.pixels(), wide * pixel, ZebiSize{wide, 1},
                src.border, value, state(memory), buffer.get());
    });
    const auto run = [&](auto spec) {
      f.ok(c, src.pixels(), src.image.step(), dst.pixels(), dst.step(), orElse(size, flat, zebStsErrSize), types, value,
           spec, buffer.get());
    };
    const ZebiFilterGaussianState* const spec = state(memory);
    if (c.coin())
      run(spec);
    else
      run(orElse(spec, state(other), zebStsErrContextMatch));
  };
  src.withValue(c, call);
  const auto want =
      src.template each<S>([&](const ref::Sampler<S>& at) { return ref::gaussian<S>(at, size, n, sigma); });
  require(agree(f.name(), dst, want), std::to_string(n) + " taps, sigma " + test::shown(sigma) + ", border " +
                                          std::to_string(src.border) + ", " + src.image.describe());
  require(src.image.intact() && buffer.intact() && memory.intact(), "wrote outside");
}
#define GAUSSIAN(form, T, type, channels)                    \
  DRIVER("neighbourhood", "zebiFilterGaussianBorder_" #form, \
         gaussian<T, channels>(c, FUNCTION(zebiFilterGaussianBorder_##form), type))
GAUSSIAN(8u_C1R, Zeb8u, zeb8u, 1);
GAUSSIAN(8u_C3R, Zeb8u, zeb8u, 3);
GAUSSIAN(16u_C1R, Zeb16u, zeb16u, 1);
GAUSSIAN(16u_C3R, Zeb16u, zeb16u, 3);
GAUSSIAN(16s_C1R, Zeb16s, zeb16s, 1);
GAUSSIAN(16s_C3R, Zeb16s, zeb16s, 3);
GAUSSIAN(32f_C1R, Zeb32f, zeb32f, 1);
GAUSSIAN(32f_C3R, Zeb32f, zeb32f, 3);

}  // namespace
