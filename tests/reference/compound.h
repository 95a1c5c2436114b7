// Opening, closing, hats and gradient, from erosion and dilation.
#pragma once

#include <limits>
#include <type_traits>

#include "reference/morph.h"

namespace ref {

enum class Compound { open, close, tophat, blackhat, gradient };

// a - b, from 0 to the largest value.
template <class T>
Plane<T> excess(const Plane<T>& a, const Plane<T>& b) {
  Plane<T> out = a;
  for (size_t i = 0; i < out.data.size(); ++i) {
    if constexpr (std::is_floating_point_v<T>) {
      const T d = a.data[i] - b.data[i];
      out.data[i] = d < 0 ? T(0) : d;
    } else {
      const int d = int(a.data[i]) - int(b.data[i]), most = std::numeric_limits<T>::max();
      out.data[i] = static_cast<T>(d < 0 ? 0 : d > most ? most : d);
    }
  }
  return out;
}

// Opening or closing: the first operation on the region enlarged, on the sides that are in memory, by all that the
// second may read there.
template <class T>
Plane<T> twice(const Region<T>& r, const Element& first, const Element& second, bool erodeFirst) {
  const int left = r.left ? second.anchorX : 0, right = r.right ? second.width - 1 - second.anchorX : 0;
  const int top = r.top ? second.anchorY : 0, bottom = r.bottom ? second.height - 1 - second.anchorY : 0;
  auto large = r;
  large.x -= left, large.y -= top, large.width += left + right, large.height += top + bottom;
  const auto middle = extremum(large, first, erodeFirst);
  Region<T> inner{&middle, left, top, r.width, r.height, r.left, r.right, r.top, r.bottom};
  return extremum(inner, second, !erodeFirst);
}

template <class T>
Plane<T> compound(Compound operation, const Region<T>& r, const Element& e) {
  Plane<T> source(r.width, r.height, r.image->channels);
  for (int y = 0; y < r.height; ++y)
    for (int x = 0; x < r.width; ++x)
      for (int c = 0; c < source.channels; ++c) source.at(x, y, c) = r.at(x, y, c);
  switch (operation) {
    case Compound::open:
      return twice(r, e, e.reflected(), true);
    case Compound::close:
      return twice(r, e.reflected(), e, false);
    case Compound::tophat:
      return excess(source, twice(r, e, e.reflected(), true));
    case Compound::blackhat:
      return excess(twice(r, e.reflected(), e, false), source);
    default:
      return excess(extremum(r, e.reflected(), false), extremum(r, e, true));
  }
}

}  // namespace ref
