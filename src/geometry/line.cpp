// The pixels along a line. Method: J. Bresenham, Algorithm for computer control of a digital plotter, 1965.
#include <stdint.h>
#include <string.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"

namespace {

using namespace zeb;

struct Extent {
  Extent(int from, int to) : length(from < to ? to - from : from - to), forward(from < to) {}
  ptrdiff_t step(ptrdiff_t bytes) const { return forward ? bytes : -bytes; }

  int length;
  bool forward;
};

// Bytes of a pixel are known to the compiler.
template <int bytes>
void sampleLine(const char* from, int srcStep, ZebiPoint a, ZebiPoint b, char* out) {
  const Extent x(a.x, b.x), y(a.y, b.y);
  const bool flat = x.length >= y.length;
  const auto longer = static_cast<uint32_t>(flat ? x.length : y.length);
  const auto shorter = static_cast<uint32_t>(flat ? y.length : x.length);
  const ptrdiff_t along = flat ? x.step(bytes) : y.step(srcStep), across = flat ? y.step(srcStep) : x.step(bytes);
  // The sum of 2 k shorter + longer - 1 modulo 2 longer: it wraps where the line moves sideways.
  uint32_t sum = longer - 1;
  const uint32_t wrap = 2 * (longer - shorter);
  uintptr_t p = reinterpret_cast<uintptr_t>(from) + static_cast<uintptr_t>(static_cast<ptrdiff_t>(a.y) * srcStep) +
                static_cast<uintptr_t>(a.x) * bytes;
  for (uint32_t k = 0;; ++k, out += bytes) {
    memcpy(out, reinterpret_cast<const char*>(p), bytes);
    if (k == longer) return;
    const bool sideways = sum >= wrap;
    sum += sideways ? 0 - wrap : 2 * shorter;
    p += static_cast<uintptr_t>(along) + (sideways ? static_cast<uintptr_t>(across) : 0);
  }
}

template <class T, int channels>
ZebStatus sampled(const T* pSrc, int srcStep, T* pDst, ZebiSize roi, ZebiPoint a, ZebiPoint b) {
  const auto inside = [=](ZebiPoint p) { return p.x >= 0 && p.x < roi.width && p.y >= 0 && p.y < roi.height; };
  if (auto bad = firstFailure(checked(roi, image<channels>(pSrc, srcStep), also(pDst)),
                              require(inside(a) && inside(b), zebStsErrOutOfRange)))
    return bad;
  sampleLine<static_cast<int>(sizeof(T)) * channels>(reinterpret_cast<const char*>(pSrc), srcStep, a, b,
                                                     reinterpret_cast<char*>(pDst));
  return zebStsOk;
}

}  // namespace

#define LINE(form, T, channels)                                                           \
  ZEB_ENTRY(zebiSampleLine_##form)                                                        \
  (const T* pSrc, int srcStep, T* pDst, ZebiSize roiSize, ZebiPoint pt1, ZebiPoint pt2) { \
    return sampled<T, channels>(pSrc, srcStep, pDst, roiSize, pt1, pt2);                  \
  }

LINE(8u_C1R, Zeb8u, 1)
LINE(8u_C3R, Zeb8u, 3)
LINE(16u_C1R, Zeb16u, 1)
LINE(16u_C3R, Zeb16u, 3)
LINE(32f_C1R, Zeb32f, 1)
LINE(32f_C3R, Zeb32f, 3)
