// Row filters and column filters.
#include "filter/kernels.h"
#include "function.h"
#include "reference/filter.h"

namespace {

using namespace fuzz;
using ref::Plane;

using Query = Function<ZebiSize, int, int*>;

// A kernel, its divisor and the scratch for it.
template <class K>
struct Kernel {
  Kernel(Choice& c, bool positiveDivisor)
      : taps(c.oneIn(4)   ? c.within(1, 40)
             : c.oneIn(3) ? 2 * c.within(1, 2) + 1
                          : c.within(1, 9)) {
    Random random = c.random();
    values = test::randomKernel<K>(taps, c.within(0, 3), random);
    for (const K v : values) c.look(v);
    divisor = test::randomDivisor(positiveDivisor, random);
    if (c.oneIn(8)) divisor = c.within(positiveDivisor ? 1 : INT32_MIN, INT32_MAX);
    if (c.oneIn(4)) divisor = 1 << c.within(0, 3);
    if (divisor == 0) divisor = 1;
  }
  Scratch scratch(Choice& c, const Query& query, ZebiSize size) const {
    int bytes = 0;
    query.ok(c, size, orElse(taps, 0, zebStsErrSize), &bytes);
    return c.scratch(bytes);
  }
  std::string describe() const { return std::to_string(taps) + " taps, divisor " + std::to_string(divisor); }

  int taps;
  std::vector<K> values;
  int divisor = 1;
};

template <class S, class D, class K, int channels, class F>
void rows(Choice& c, const Query& query, const F& f, bool low) {
  const ZebiSize size = c.size(70, 4);
  const Kernel<K> kernel(c, std::is_same_v<S, Zeb16u>);
  const int anchor = c.within(0, kernel.taps - 1);
  const ZebiBorderType types[] = {zebBorderConst, zebBorderRepl, zebBorderInMem};
  const ZebiBorderType type = c.oneOf(types);
  // Exactly what the rule lets the filter read is there.
  const bool inMemory = type == zebBorderInMem;
  const int originX = inMemory ? anchor : 0;
  const Image<S> src = c.image<S>(size.width + (inMemory ? kernel.taps - 1 : 0), size.height, channels);
  const std::vector<S> border = {c.value<S>(), c.value<S>(), c.value<S>()};
  const Image<D> dst = c.empty<D>(size, channels);
  const test::RowPointers<D> pointers(dst), lacking(dst);
  lacking.get()[c.within(0, size.height - 1)] = nullptr;
  const Scratch scratch = kernel.scratch(c, query, size);
  const auto want =
      ref::filterRows<D>(src.plane(), originX, size.width, kernel.values, anchor, type, border, kernel.divisor, low);
  const auto call = [&](auto value, auto... divisor) {
    const int badTypes[] = {zebBorderWrap, zebBorderMirror, zebBorderMirrorR, 5, 7, 8, 0x10, 0x41, 0x46, 0xF6, -1};
    const int badAnchor = c.coin() ? -1 : kernel.taps, badType = c.oneOf(badTypes);
    [[maybe_unused]] const int badDivisor = std::is_same_v<S, Zeb16u> ? c.within(-3, 0) : 0;
    f.ok(c, src.pixels(originX), src.step(), orElse(pointers.get(), lacking.get(), zebStsErrNullPointer, Check::inner),
         size, kernel.values.data(), orElse(kernel.taps, c.within(-9, 0), zebStsErrSize, Check::inner),
         orElse(anchor, badAnchor, zebStsErrAnchor, Check::inner), orElse(type, badType, zebStsErrBadArgument), value,
         orElse(divisor, badDivisor, zebStsErrBadArgument)..., scratch.get());
  };
  const auto callWithValue = [&](auto... divisor) {
    if constexpr (channels == 1) {
      call(border[0], divisor...);
    } else {
      call(keep(type == zebBorderConst || c.coin() ? border.data() : nullptr), divisor...);
    }
  };
  if constexpr (std::is_floating_point_v<S>) {
    callWithValue();
  } else {
    callWithValue(kernel.divisor);
  }
  require(agree(f.name(), dst, want), kernel.describe() + ", border " + std::to_string(type) + ", " + src.describe());
  require(src.intact() && scratch.intact(), "wrote outside");
}

template <class S, class D, class K, int channels, class F>
void columns(Choice& c, const Query& query, const F& f, bool low) {
  const ZebiSize size = c.size(70, 5);
  const Kernel<K> kernel(c, false);
  const Image<S> src = c.image<S>(size.width, size.height + kernel.taps - 1, channels);
  const test::RowPointers<S> pointers(src), lacking(src);
  lacking.get()[c.within(0, src.size().height - 1)] = nullptr;
  const Image<D> dst = c.empty<D>(size, channels);
  const Scratch scratch = kernel.scratch(c, query, size);
  const auto want = ref::filterColumns<D>(src.plane(), kernel.values, kernel.divisor, low);
  const auto call = [&](auto... divisor) {
    f.ok(c,
         orElse(const_cast<const S**>(pointers.get()), const_cast<const S**>(lacking.get()), zebStsErrNullPointer,
                Check::inner),
         dst.pixels(), dst.step(), size, kernel.values.data(),
         orElse(kernel.taps, c.within(-9, 0), zebStsErrSize, Check::inner), orElse(divisor, 0, zebStsErrBadArgument)...,
         late(scratch.get()));
  };
  if constexpr (std::is_floating_point_v<S>) {
    call();
  } else {
    call(kernel.divisor);
  }
  require(agree(f.name(), dst, want), kernel.describe() + ", " + src.describe());
  require(src.intact() && scratch.intact(), "wrote outside");
}

#define FILTER(stem, form, shape, S, D, K, channels, low) \
  DRIVER("filters", #stem "_" #form,                      \
         shape<S, D, K, channels>(c, FUNCTION(stem##GetBufferSize_##form), FUNCTION(stem##_##form), low))
#define BOTH_CHANNELS(stem, form, shape, S, D, K, low) \
  FILTER(stem, form##_C1R, shape, S, D, K, 1, low);    \
  FILTER(stem, form##_C3R, shape, S, D, K, 3, low)

BOTH_CHANNELS(zebiFilterRowBorderPipeline, 8u16s, rows, Zeb8u, Zeb16s, Zeb16s, false);
BOTH_CHANNELS(zebiFilterRowBorderPipeline, 16s, rows, Zeb16s, Zeb16s, Zeb16s, false);
BOTH_CHANNELS(zebiFilterRowBorderPipeline, 16u, rows, Zeb16u, Zeb16u, Zeb16u, false);
BOTH_CHANNELS(zebiFilterRowBorderPipeline, 32f, rows, Zeb32f, Zeb32f, Zeb32f, false);
BOTH_CHANNELS(zebiFilterRowBorderPipeline, Low_16s, rows, Zeb16s, Zeb16s, Zeb16s, true);
BOTH_CHANNELS(zebiFilterColumnPipeline, 16s, columns, Zeb16s, Zeb16s, Zeb16s, false);
BOTH_CHANNELS(zebiFilterColumnPipeline, 16s8u, columns, Zeb16s, Zeb8u, Zeb16s, false);
BOTH_CHANNELS(zebiFilterColumnPipeline, 16s8s, columns, Zeb16s, Zeb8s, Zeb16s, false);
BOTH_CHANNELS(zebiFilterColumnPipeline, 16u, columns, Zeb16u, Zeb16u, Zeb16u, false);
BOTH_CHANNELS(zebiFilterColumnPipeline, 32f, columns, Zeb32f, Zeb32f, Zeb32f, false);
BOTH_CHANNELS(zebiFilterColumnPipeline, Low_16s, columns, Zeb16s, Zeb16s, Zeb16s, true);

}  // namespace
