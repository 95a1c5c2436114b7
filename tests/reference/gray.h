// Grayscale morphology from its definition, in integers wide enough for any weight; floats round every sum once.
#pragma once

#include "reference/morph.h"

namespace ref {

template <class T, class W>
Plane<T> grayMorphology(const Plane<T>& src, const std::vector<W>& weights, ZebiSize mask, ZebiPoint anchor,
                        bool dilate) {
  using Sum = std::conditional_t<std::is_same_v<T, Zeb32f>, Zeb32f, long long>;
  Plane<T> out(src.width, src.height);
  const Region<T> region{&src, 0, 0, src.width, src.height};
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      bool any = false;
      Sum best = 0;
      for (int r = 0; r < mask.height; ++r)
        for (int q = 0; q < mask.width; ++q) {
          const Sum s = region.at(x + q - anchor.x, y + r - anchor.y, 0), w = weights[r * mask.width + q];
          const Sum v = dilate ? s + w : s - w;
          if (!any || (dilate ? v > best : v < best)) best = v;
          any = true;
        }
      if (sizeof(T) == 1) best = best < 0 ? 0 : best > 255 ? 255 : best;
      out.at(x, y) = static_cast<T>(best);
    }
  return out;
}

}  // namespace ref
