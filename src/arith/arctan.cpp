// Fast angle of a vector in degrees: a quadratic in the ratio of the smaller to the larger component, reflected into
// the octant of the vector.
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"

namespace {

using namespace zeb;

constexpr float smallestDivisor = 0x1.5798eep-27f;  // 1e-8
constexpr float c2 = -0x1.fa05a6p+3f;               // -15.813189506530762
constexpr float c1 = 0x1.e8c0eap+5f;                //  61.09419631958008
constexpr float c0 = -0x1.1fbeaep-3f;               //  -0.14050041139125824

// Absolute values compare like their bits as integers, with whatever is not a number above everything: so a component
// that is not a number gives a result that is not one. Signs decide the reflections; adding +0 clears the sign of -0.
// Integer comparisons and additions leave the multipliers, of which the reciprocal needs all, alone.
ZEB_INLINE V32f angle(V32f y, V32f x) {
  const V32f ay = abs(y), ax = abs(x);
  const V32s iy = as<Zeb32s>(ay), ix = as<Zeb32s>(ax);
  const V32f m = as<Zeb32f>(max(max(iy, ix), as<Zeb32s>(splat(smallestDivisor))));
  const V32f n = as<Zeb32f>(min(iy, ix));
  const V32f r0 = approximateReciprocal(m);
  const V32f r = fnma(r0, fms(r0, m, splat(1.0f)), r0);
  const V32f a = n * r;
  V32f t = fma(fma(splat(c2), a, splat(c1)), a, splat(c0));
  const V32f zero = splat(0.0f);
  t = selectNegative(ax - ay, splat(90.0f) - t, t);
  t = selectNegative(x + zero, splat(180.0f) - t, t);
  return selectNegative(y + zero, splat(360.0f) - t, t);
}

}  // namespace

ZEB_ENTRY(zebibFastArctan_32f)(const Zeb32f* pSrcY, const Zeb32f* pSrcX, Zeb32f* pDst, int length) {
  if (auto bad = firstFailure(present(pSrcY, pSrcX, pDst), atLeastOne(length))) return bad;
  mapRow([](V32f y, V32f x) ZEB_BODY { return angle(y, x); }, pDst, length, pSrcY, pSrcX);
  return zebStsOk;
}
