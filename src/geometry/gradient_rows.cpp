#include "geometry/gradient_rows.h"

#include "core/reduce.h"
#include "core/shuffle.h"
#include "geometry/pixels.h"

namespace zeb {
namespace {

// The pairs of 16 gradients, in the order of interleaveFirst() and interleaveLast().
struct Squares {
  V32s first, last;
};
ZEB_INLINE Squares squares(V16s gx, V16s gy) {
  const V16s a = interleaveFirst(gx, gy), b = interleaveLast(gx, gy);
  return {dotPairs(a, a), dotPairs(b, b)};
}

// The integer nearest to the root of s. The float is, by its rounding and that of s, one off at the most: m is right
// where m^2 - m < s <= m^2 + m, and where s = 0.
ZEB_INLINE V32s nearestRoot(V32s s) {
  const V32s m = roundToInt(sqrt(toFloat(s)));
  const V32s beyond = s - dotPairs(as<Zeb16s>(m), as<Zeb16s>(m));
  const V32s tooLarge = greater(splat(1), beyond + m) & greater(m, splat(0));
  return m - greater(beyond, m) + tooLarge;
}

struct LargerOf {
  static ZEB_INLINE V16s of(V16s gx, V16s gy) { return max(abs(gx), abs(gy)); }
  static ZEB_INLINE V32f of(V32f gx, V32f gy) { return max(abs(gx), abs(gy)); }
};
struct SumOf {
  static ZEB_INLINE V16s of(V16s gx, V16s gy) { return abs(gx) + abs(gy); }
  static ZEB_INLINE V32f of(V32f gx, V32f gy) { return abs(gx) + abs(gy); }
};
struct Length {
  static ZEB_INLINE V16s of(V16s gx, V16s gy) {
    const Squares s = squares(gx, gy);
    return packSat(nearestRoot(s.first), nearestRoot(s.last));
  }
  static ZEB_INLINE V32f of(V32f gx, V32f gy) { return sqrt(fma(gx, gx, gy * gy)); }
};

template <class Norm, class T>
void magnitudes(const T* gx, const T* gy, int n, T* out) {
  forOverlappingVectors<Vec<T>::lanes>(
      0, n, [=](int x, auto part) ZEB_BODY { part.to(out + x, Norm::of(part.from(gx + x), part.from(gy + x))); });
}
template <class T>
void magnitudesOf(ZebNormType norm, const T* gx, const T* gy, int n, T* out) {
  const auto row = norm == zebNormInf  ? magnitudes<LargerOf, T>
                   : norm == zebNormL1 ? magnitudes<SumOf, T>
                                       : magnitudes<Length, T>;
  row(gx, gy, n, out);
}

// The arctangent of the smaller component over the larger, an odd polynomial to 2^-22, turned and mirrored into the
// half quadrant of the vector. Where a component is not a number, both of min and max pass on one that makes the ratio
// none. Adding 0 takes the sign off -0.
ZEB_INLINE V32f angleOf(V32f gx, V32f gy) {
  const V32f ax = abs(gx), ay = abs(gy), zero = splat(0.0f);
  const V32f larger = max(ax, ay), smaller = min(ay, ax);
  const V32f q = smaller / (larger | (equal(larger, zero) & splat(1.0f)));
  const V32f z = q * q;
  V32f p = splat(0x1.7ed222p-9f);
  p = fma(p, z, splat(-0x1.0c2c0cp-6f));
  p = fma(p, z, splat(0x1.61fdd2p-5f));
  p = fma(p, z, splat(-0x1.3556b2p-4f));
  p = fma(p, z, splat(0x1.b4e128p-4f));
  p = fma(p, z, splat(-0x1.230adcp-3f));
  p = fma(p, z, splat(0x1.9978f4p-3f));
  p = fma(p, z, splat(-0x1.5554dcp-2f));
  V32f t = fma(z * q, p, q);
  t = select(less(ax, ay), splat(0x1.921fb6p+0f) - t, t);
  t = selectNegative(gx + zero, splat(0x1.921fb6p+1f) - t, t);
  return t ^ ((gy + zero) & splat(-0.0f));
}
template <class T>
void angles(const T* gx, const T* gy, int n, Zeb32f* out) {
  forOverlappingVectors<8>(
      0, n, [=](int x, auto part) ZEB_BODY { part.to(out + x, angleOf(part.floats(gx + x), part.floats(gy + x))); });
}

// Where the second of two gradients is the larger.
template <class Norm>
struct Larger {
  static ZEB_INLINE V16s second(V16s gx, V16s gy, V16s otherX, V16s otherY) {
    if constexpr (std::is_same_v<Norm, Length>) {
      const Squares a = squares(gx, gy), b = squares(otherX, otherY);
      return packSat(greater(b.first, a.first), greater(b.last, a.last));
    } else {
      return greater(Norm::of(otherX, otherY), Norm::of(gx, gy));
    }
  }
};

template <class Norm>
void strongest(const Zeb16s* gx3, const Zeb16s* gy3, int n, Zeb16s* gx, Zeb16s* gy) {
  forOverlappingVectors<16>(0, n, [=](int i, auto part) ZEB_BODY {
    const auto x = loadChannels(gx3 + 3 * i, part), y = loadChannels(gy3 + 3 * i, part);
    V16s bestX = x.first, bestY = y.first;
    const auto meet = [&](V16s otherX, V16s otherY) ZEB_BODY {
      const V16s larger = Larger<Norm>::second(bestX, bestY, otherX, otherY);
      bestX = select(larger, otherX, bestX), bestY = select(larger, otherY, bestY);
    };
    meet(x.second, y.second);
    meet(x.third, y.third);
    part.to(gx + i, bestX);
    part.to(gy + i, bestY);
  });
}

}  // namespace

void magnitudeRow(ZebNormType norm, const Zeb16s* gx, const Zeb16s* gy, int n, Zeb16s* out) {
  magnitudesOf(norm, gx, gy, n, out);
}
void magnitudeRow(ZebNormType norm, const Zeb32f* gx, const Zeb32f* gy, int n, Zeb32f* out) {
  magnitudesOf(norm, gx, gy, n, out);
}

void angleRow(const Zeb16s* gx, const Zeb16s* gy, int n, Zeb32f* out) {
  angles(gx, gy, n, out);
}
void angleRow(const Zeb32f* gx, const Zeb32f* gy, int n, Zeb32f* out) {
  angles(gx, gy, n, out);
}

void strongestRow(ZebNormType norm, const Zeb16s* gx3, const Zeb16s* gy3, int n, Zeb16s* gx, Zeb16s* gy) {
  const auto row = norm == zebNormInf ? strongest<LargerOf> : norm == zebNormL1 ? strongest<SumOf> : strongest<Length>;
  row(gx3, gy3, n, gx, gy);
}

}  // namespace zeb
