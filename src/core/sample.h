// Linear interpolation between pixels.
#pragma once

#include <stdint.h>

#include "core/scratch.h"
#include "core/shuffle.h"
#include "core/widen.h"

namespace zeb {

// Linear between s and t at a fraction. From s on, so that equal samples stay exactly what they are; the same with s
// itself where the fraction is 0, where t may be anything; or as a weighted sum, in which an infinite sample stays
// infinite and a sample of weight 0 adds nothing.
struct FromFirst {
  ZEB_INLINE V32f operator()(V32f s, V32f t, V32f fraction) const { return fma(fraction, t - s, s); }
};
struct FirstAtWhole {
  ZEB_INLINE V32f operator()(V32f s, V32f t, V32f fraction) const {
    return select(equal(fraction, splat(0.0f)), s, FromFirst()(s, t, fraction));
  }
};
struct WeightedSum {
  ZEB_INLINE V32f operator()(V32f s, V32f t, V32f fraction) const {
    const V32f far = andNot(equal(fraction, splat(0.0f)), t);
    return fma(fraction, far, (splat(1.0f) - fraction) * s);
  }
};

// From s to t, samples of an image of T, and s itself where the fraction is 0. Integers need no selection: they have no
// infinity and no zero of another sign.
template <class T>
ZEB_INLINE V32f between(V32f s, V32f t, V32f fraction) {
  return std::conditional_t<std::is_floating_point_v<T>, FirstAtWhole, FromFirst>()(s, t, fraction);
}
// run(blend) with one of the above that does the same for an image of T at these fractions.
template <class T, class Run>
ZEB_INLINE void blending(Zeb32f fx, Zeb32f fy, Run run) {
  if (std::is_floating_point_v<T> && (fx == 0 || fy == 0)) return run(FirstAtWhole());
  run(FromFirst());
}

// From the pixels of a row to their right neighbours.
template <class T, class Blend>
ZEB_INLINE V32f betweenNeighbours(const T* p, V32f fraction, Blend blend) {
  return blend(loadAsFloat(p), loadAsFloat(p + 1), fraction);
}

// Floats of a work row that whole vectors may be stored to.
constexpr int64_t workRow(int64_t elements) {
  return elements + 8;
}

// Between sample index and sample next, which is the same one where the fraction is 0.
struct Place {
  int index;
  int next;
  Zeb32f fraction;
};
inline Place placeAt(double position, int length) {
  if (!(position < length - 1)) return {length - 1, length - 1, 0};
  const int index = static_cast<int>(position);
  const auto fraction = static_cast<Zeb32f>(position - index);
  return {index, fraction > 0 ? index + 1 : index, fraction};
}

// The places of the elements of a row, in blocks of eight: each block with its first element in the source row, from
// which the others are counted, and whether sixteen elements from there hold them all.
class RowPlaces {
 public:
  static int64_t bytes(int64_t width, int channels) { return 16 * workRow(width * channels); }

  RowPlaces() = default;
  RowPlaces(Scratch& scratch, int64_t width, int channels) {
    const int64_t n = workRow(width * channels);
    index_ = scratch.take<Zeb32s>(n, 4);
    next_ = scratch.take<Zeb32s>(n, 4);
    fraction_ = scratch.take<Zeb32f>(n, 4);
    first_ = scratch.take<Zeb32s>(n / 8, 4);
    near_ = scratch.take<Zeb32s>(n / 8, 4);
  }

  // Pixel x of width pixels is read at position(x) in a work row of sourceWidth pixels.
  template <int channels, class Position>
  void set(int width, int sourceWidth, Position position) {
    n_ = width * channels;
    for (int x = 0, i = 0; x < width; ++x) {
      const Place place = placeAt(position(x), sourceWidth);
      for (int c = 0; c < channels; ++c, ++i) {
        index_[i] = place.index * channels + c;
        next_[i] = place.next * channels + c;
        fraction_[i] = place.fraction;
      }
    }
    for (int i = n_; i % 8 != 0; ++i) index_[i] = index_[n_ - 1], next_[i] = next_[n_ - 1], fraction_[i] = 0;
    const int64_t readable = workRow(static_cast<int64_t>(sourceWidth) * channels);
    for (int i = 0; i < n_; i += 8) {
      int first = index_[i], last = next_[i];
      for (int k = i + 1; k < i + 8; ++k) {
        if (index_[k] < first) first = index_[k];
        if (next_[k] > last) last = next_[k];
      }
      for (int k = i; k < i + 8; ++k) index_[k] -= first, next_[k] -= first;
      first_[i / 8] = first;
      near_[i / 8] = last - first < 16 && first <= readable - 16;
    }
  }

  // Whole vectors are stored to out.
  template <class Blend>
  void interpolate(const Zeb32f* row, Zeb32f* out, Blend blend) const {
    for (int i = 0; i < n_; i += 8) {
      const Zeb32f* const p = row + first_[i / 8];
      const V32s index = load(index_ + i), next = load(next_ + i);
      const bool near = near_[i / 8] != 0;
      const V32f s = near ? pickOfSixteen(p, index) : gather(p, index);
      const V32f t = near ? pickOfSixteen(p, next) : gather(p, next);
      store(out + i, blend(s, t, load(fraction_ + i)));
    }
  }

 private:
  int n_ = 0;
  Zeb32s *index_ = nullptr, *next_ = nullptr;  // counted from the block's first
  Zeb32f* fraction_ = nullptr;
  Zeb32s *first_ = nullptr, *near_ = nullptr;  // a block's
};

}  // namespace zeb
