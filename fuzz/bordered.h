// Sources with borders.
#pragma once

#include <string>
#include <vector>

#include "function.h"
#include "reference/canny.h"

namespace fuzz {

// A border type, a value for it, and exactly the pixels that it lets a kernel read around the region.
template <class S, int channels = 1>
struct Source {
  Source(Choice& c, ZebiSize roi, int reach)
      : size(roi),
        border(rule(c) | c.within(0, 15) << 4),
        left(margin(zebBorderInMemLeft, reach)),
        top(margin(zebBorderInMemTop, reach)),
        image(c.image<S>(roi.width + left + margin(zebBorderInMemRight, reach),
                         roi.height + top + margin(zebBorderInMemBottom, reach), channels)) {
    for (S& v : value) v = c.value<S>();
    const ZebiBorderType refused[] = {zebBorderWrap, zebBorderMirror, zebBorderMirrorR, 5, 0x101, 0x19, -1, 0x106};
    badBorder = c.oneOf(refused);
  }
  const S* pixels() const { return image.pixels(left, top); }
  auto types() const { return orElse(border, badBorder, zebStsErrBorder); }
  // call(value, type) with the border value as a function of so many channels takes it. A pointer to it must be there
  // under the constant rule only, so not both are spoiled.
  template <class Call>
  void withValue(Choice& c, Call call) const {
    if constexpr (channels == 1) {
      call(value[0], types());
    } else {
      const S* const pointer = value;
      if ((border & 15) == zebBorderConst && c.coin())
        call(pointer, keep(border));
      else if ((border & 15) == zebBorderConst)
        call(keep(pointer), types());
      else
        call(keep(c.coin() ? nullptr : pointer), types());
    }
  }
  // use(samplers) with one for each channel.
  template <class Use>
  void withSamplers(Use use) const {
    const ref::Plane<S> all = image.plane();
    std::vector<ref::Plane<S>> planes(channels, ref::Plane<S>(all.width, all.height));
    std::vector<ref::Sampler<S>> samplers;
    for (int k = 0; k < channels; ++k) {
      for (size_t i = 0; i < planes[k].data.size(); ++i) planes[k].data[i] = all.data[i * channels + k];
      samplers.push_back(ref::bordered<S>(planes[k], left, top, size, border, value[k]));
    }
    use(samplers);
  }
  // filter(sampler) for each channel.
  template <class D, class Filter>
  ref::Plane<D> each(Filter filter) const {
    ref::Plane<D> out(size.width, size.height, channels);
    withSamplers([&](const auto& samplers) {
      for (int k = 0; k < channels; ++k) {
        const auto result = filter(samplers[k]);
        for (size_t i = 0; i < result.data.size(); ++i) out.data[i * channels + k] = result.data[i];
      }
    });
    return out;
  }

  const ZebiSize size;
  const ZebiBorderType border;
  const int left, top;
  const Image<S> image;
  S value[channels];
  ZebiBorderType badBorder;

 private:
  static ZebiBorderType rule(Choice& c) {
    const ZebiBorderType rules[] = {zebBorderConst, zebBorderRepl, zebBorderInMem};
    return c.oneOf(rules);
  }
  int margin(int side, int reach) const { return (border & 15) == zebBorderInMem || (border & side) ? reach : 0; }
};

}  // namespace fuzz
