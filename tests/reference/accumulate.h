// Accumulation, differences and the fast arctangent, from their definitions.
#pragma once

#include <immintrin.h>

#include <cmath>

#include "zebcv.h"

namespace ref {

inline Zeb32f add(Zeb32f acc, Zeb32f s) {
  return acc + s;
}
inline Zeb32f addSquare(Zeb32f acc, Zeb32f s) {
  return std::fma(s, s, acc);
}
inline Zeb32f addProduct(Zeb32f acc, Zeb32f s1, Zeb32f s2) {
  return std::fma(s1, s2, acc);
}
inline Zeb32f addWeighted(Zeb32f acc, Zeb32f s, Zeb32f alpha) {
  return std::fma(s - acc, alpha, acc);
}

inline int absDiff(int a, int b) {
  return a > b ? a - b : b - a;
}
inline Zeb32f absDiff(Zeb32f a, Zeb32f b) {
  return std::fabs(a - b);
}

inline Zeb32f fastArctan(Zeb32f y, Zeb32f x) {
  if (std::isnan(x) || std::isnan(y)) return x + y;
  const Zeb32f ay = std::fabs(y), ax = std::fabs(x);
  Zeb32f m = ay > ax ? ay : ax;
  if (!(m > 1e-8f)) m = 1e-8f;
  const Zeb32f n = ay < ax ? ay : ax;
  const Zeb32f r0 = _mm_cvtss_f32(_mm_rcp_ss(_mm_set_ss(m)));
  const Zeb32f r = std::fma(-r0, std::fma(r0, m, -1.0f), r0);
  const Zeb32f a = n * r;
  Zeb32f t = std::fma(std::fma(-15.813189506530762f, a, 61.09419631958008f), a, -0.14050041139125824f);
  if (ax < ay) t = 90.0f - t;
  if (x < 0) t = 180.0f - t;
  if (y < 0) t = 360.0f - t;
  return t;
}

}  // namespace ref
