// Gradients of three channels as gray levels.
#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/reduce.h"
#include "core/shuffle.h"
#include "core/widen.h"
#include "geometry/pixels.h"

namespace {

using namespace zeb;

struct Largest {
  template <class T>
  static ZEB_INLINE Vec<T> of(const Channels<T>& c) {
    if constexpr (std::is_floating_point_v<T>) {
      return max(abs(c.third), max(abs(c.second), abs(c.first)));
    } else {
      return max(max(c.first, c.second), c.third);
    }
  }
};
struct Sum {
  template <class T>
  static ZEB_INLINE Vec<T> of(const Channels<T>& c) {
    if constexpr (std::is_floating_point_v<T>) {
      return (abs(c.first) + abs(c.second)) + abs(c.third);
    } else {
      return addSat(addSat(c.first, c.second), c.third);
    }
  }
};
// The root of an integer m^2 + m is so far from m + 1/2 that rounding it keeps the side: floats see that up to 2^24,
// doubles in any sum.
struct Root {
  static ZEB_INLINE V32f of(const Channels<Zeb32f>& c) {
    return sqrt(fma(c.third, c.third, fma(c.second, c.second, c.first * c.first)));
  }
  static ZEB_INLINE V8u of(const Channels<Zeb8u>& c) {
    const V8u zero = splat(Zeb8u(0));
    const auto roots = [=](V8u pairs, V8u third) ZEB_BODY {
      const auto half = [](V16s a, V16s b)
                            ZEB_BODY { return roundToInt(sqrt(toFloat(dotPairs(a, a) + dotPairs(b, b)))); };
      return packSat(half(as<Zeb16s>(interleaveFirst(pairs, zero)), as<Zeb16s>(interleaveFirst(third, zero))),
                     half(as<Zeb16s>(interleaveLast(pairs, zero)), as<Zeb16s>(interleaveLast(third, zero))));
    };
    const V16s first = roots(interleaveFirst(c.first, c.second), interleaveFirst(c.third, zero));
    const V16s last = roots(interleaveLast(c.first, c.second), interleaveLast(c.third, zero));
    return {_mm256_packus_epi16(first.v, last.v)};
  }
  static ZEB_INLINE V16u of(const Channels<Zeb16u>& c) {
    const auto square = [](__m128i a) ZEB_BODY {
      const __m256d v = _mm256_cvtepi32_pd(a);
      return _mm256_mul_pd(v, v);
    };
    const auto roots = [=](__m128i a, __m128i b, __m128i d) ZEB_BODY {
      return _mm256_cvtpd_epi32(_mm256_sqrt_pd(_mm256_add_pd(_mm256_add_pd(square(a), square(b)), square(d))));
    };
    Zeb16u block[3][16];
    store(block[0], c.first), store(block[1], c.second), store(block[2], c.third);
    alignas(32) Zeb32s result[16];
    for (int k = 0; k < 16; k += 4) {
      const auto four = [&](int channel) {
        return _mm_cvtepu16_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(block[channel] + k)));
      };
      _mm_store_si128(reinterpret_cast<__m128i*>(result + k), roots(four(0), four(1), four(2)));
    }
    return narrowTo16u(load(result), load(result + 8));
  }
};

template <class Norm, class T>
void grayRow(const T* p, T* out, int n) {
  forOverlappingVectors<Vec<T>::lanes>(
      0, n, [=](int x, auto part) ZEB_BODY { part.to(out + x, Norm::of(loadChannels(p + 3 * x, part))); });
}

template <class T>
ZebStatus toGray(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, ZebNormType norm) {
  const auto src = image<3>(pSrc, srcStep);
  const auto dst = image(pDst, dstStep);
  if (auto bad = firstFailure(checked(roi, src, dst),
                              require(norm == zebNormInf || norm == zebNormL1 || norm == zebNormL2, zebStsErrNorm)))
    return bad;
  const auto row = norm == zebNormInf ? grayRow<Largest, T> : norm == zebNormL1 ? grayRow<Sum, T> : grayRow<Root, T>;
  for (int y = 0; y < roi.height; ++y) row(src.rows()[y], dst.rows()[y], roi.width);
  return zebStsOk;
}

}  // namespace

#define TO_GRAY(form, T)                                                                   \
  ZEB_ENTRY(zebiGradientColorToGray_##form##_C3C1R)                                        \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebNormType norm) { \
    return toGray(pSrc, srcStep, pDst, dstStep, roiSize, norm);                            \
  }

TO_GRAY(8u, Zeb8u)
TO_GRAY(16u, Zeb16u)
TO_GRAY(32f, Zeb32f)
