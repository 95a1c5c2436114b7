// Smoothing with symmetric kernels: the binomial 1 4 6 4 1, and any weights in single precision.
#pragma once

#include <math.h>
#include <stdint.h>

#include <type_traits>

#include "core/loops.h"
#include "filter/border.h"

namespace zeb {

// ---- 1 4 6 4 1 ----

// Sums of bytes are formed in 16 unsigned bits. Signed bytes are taken as unsigned ones by flipping their top bit,
// which adds 128 to every pixel and so to every result, exactly.
template <class T>
struct GaussType {
  using Sum = Zeb16u;
  static constexpr Zeb8u flip = std::is_signed_v<T> ? 0x80 : 0;
  static int widened(T v) { return static_cast<Zeb8u>(v) ^ flip; }
  static Sum sum(int a, int b, int c, int d, int e) { return static_cast<Sum>(a + 4 * b + 6 * c + 4 * d + e); }
};
template <>
struct GaussType<Zeb32f> {
  using Sum = Zeb32f;
  static Zeb32f widened(Zeb32f v) { return v; }
  static Sum sum(Sum a, Sum b, Sum c, Sum d, Sum e) { return fmaf(6.0f, c, fmaf(4.0f, b + d, a + e)); }
};
ZEB_INLINE V32f gaussSum(V32f a, V32f b, V32f c, V32f d, V32f e) {
  return fma(splat(6.0f), c, fma(splat(4.0f), b + d, a + e));
}

// ---- Any weights ----

struct SymmetricKernel {
  const Zeb32f* centre;  // its weights, the centre's
  int reach;             // neighbours on either side
  bool unitSum;          // what the weights lack to a sum of 1 is the centre's

  // The weight of the neighbours at a distance.
  Zeb32f weight(int distance) const { return centre[-distance]; }
};

// out = smoothed rows around row y; rowAt(q) points to row q of height rows. As many passes as the kernel reaches.
template <class RowAt>
void smoothColumns(const SymmetricKernel& kernel, RowAt rowAt, int y, int height, int n, Zeb32f* out) {
  const auto centre = rowAt(y);
  const V32f own = splat(kernel.weight(0));
  const bool unitSum = kernel.unitSum;
  for (int j = 1; j <= kernel.reach; ++j) {
    const auto a = rowAt(borderSource(zebBorderMirror, int64_t{y} - j, height));
    const auto b = rowAt(borderSource(zebBorderMirror, int64_t{y} + j, height));
    const V32f w = splat(kernel.weight(j));
    if (unitSum && j == 1) {
      forVectors<8>(0, n, [=](int i, auto part) ZEB_BODY {
        const V32f c = part.floats(centre + i);
        store(out + i, fma(w, (part.floats(a + i) - c) + (part.floats(b + i) - c), c));
      });
    } else if (unitSum) {
      forVectors<8>(0, n, [=](int i, auto part) ZEB_BODY {
        const V32f c = part.floats(centre + i);
        store(out + i, fma(w, (part.floats(a + i) - c) + (part.floats(b + i) - c), load(out + i)));
      });
    } else {
      forVectors<8>(0, n, [=](int i, auto part) ZEB_BODY {
        store(out + i,
              fma(w, part.floats(a + i) + part.floats(b + i), j == 1 ? own * part.floats(centre + i) : load(out + i)));
      });
    }
  }
}

// bordered: the first pixel of a row with reach() pixels of room on both sides, which are filled here, and a vector
// more, which is read.
template <int channels>
void smoothRow(const SymmetricKernel& kernel, Zeb32f* bordered, int width, Zeb32f* out) {
  for (int j = 1; j <= kernel.reach; ++j)
    for (int c = 0; c < channels; ++c) {
      const auto mirrored = [=](int p) { return bordered[borderSource(zebBorderMirror, p, width) * channels + c]; };
      bordered[-j * channels + c] = mirrored(-j);
      bordered[(width - 1 + j) * channels + c] = mirrored(width - 1 + j);
    }
  const int reach = kernel.reach, n = width * channels;
  store(bordered + n + reach * channels, splat(0.0f));
  const bool unitSum = kernel.unitSum;
  const Zeb32f* const weights = kernel.centre;
  const V32f own = splat(weights[0]);
  for (int i = 0; i < n; i += 8) {
    const V32f c = load(bordered + i);
    V32f sum = unitSum ? c : own * c;
    for (int j = 1; j <= reach; ++j) {
      const V32f a = load(bordered + i - j * channels), b = load(bordered + i + j * channels);
      sum = fma(splat(weights[-j]), unitSum ? (a - c) + (b - c) : a + b, sum);
    }
    store(out + i, sum);
  }
}

}  // namespace zeb
