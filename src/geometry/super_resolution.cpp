// One step of super-resolution: what an observation says against an estimate, and how the estimate is to change.
//
// Method: M. Irani, S. Peleg, Improving resolution by image registration, 1991.
#include <math.h>
#include <string.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "geometry/pixels.h"

namespace {

using namespace zeb;

// Where the pixels of an observation lie in the estimate, and how the estimate is blurred to n x n weights.
template <int n>
struct Observation {
  Observation(const Zeb64f* pCoeffs, const Zeb32f* pPsf) {
    memcpy(at, pCoeffs, sizeof(at));
    memcpy(psf, pPsf, sizeof(psf));
  }
  ZebStatus flaw() const {
    bool finite = true;
    for (const Zeb64f v : at) finite = finite && v - v == 0;
    for (const Zeb32f v : psf) finite = finite && v - v == 0;
    return require(finite, zebStsErrBadArgument);
  }

  Zeb64f at[6];
  Zeb32f psf[n * n];
};

constexpr int batch = 64;

// The first pixels of the footprints of pixels of an observation's row, in bytes from the estimate's first pixel; 0
// where the footprint does not lie in the estimate.
struct Footprints {
  alignas(32) Zeb32s offset[batch];
  alignas(32) Zeb32s seen[batch];  // all ones or 0

  // Pixels x.. of row y, count of them in whole vectors.
  template <int n>
  void place(const Observation<n>& o, int x, int y, int count, ZebiSize size, int pixelBytes, int step) {
    const Zeb64f tx = __builtin_fma(o.at[1], y, o.at[2]), ty = __builtin_fma(o.at[4], y, o.at[5]);
    const __m256d cx = splat(o.at[0]).v, cy = splat(o.at[3]).v;
    const __m256d lastX = splat(static_cast<Zeb64f>(size.width - n)).v;
    const __m256d lastY = splat(static_cast<Zeb64f>(size.height - n)).v;
    const auto first = [](__m256d at) ZEB_BODY {
      if constexpr (n == 2) return _mm256_floor_pd(at);
      return _mm256_sub_pd(_mm256_floor_pd(_mm256_add_pd(at, _mm256_set1_pd(0.5))), _mm256_set1_pd(1));
    };
    const auto within = [](__m256d at, __m256d last) ZEB_BODY {
      return _mm256_and_pd(_mm256_cmp_pd(_mm256_setzero_pd(), at, _CMP_LE_OQ), _mm256_cmp_pd(at, last, _CMP_LE_OQ));
    };
    for (int i = 0; i < count; i += 4) {
      const __m256d column = _mm256_cvtepi32_pd(_mm_add_epi32(_mm_setr_epi32(0, 1, 2, 3), _mm_set1_epi32(x + i)));
      const __m256d atX = first(_mm256_fmadd_pd(cx, column, _mm256_set1_pd(tx)));
      const __m256d atY = first(_mm256_fmadd_pd(cy, column, _mm256_set1_pd(ty)));
      const __m256d inside = _mm256_and_pd(within(atX, lastX), within(atY, lastY));
      const __m128i px = _mm256_cvttpd_epi32(_mm256_and_pd(atX, inside));
      const __m128i py = _mm256_cvttpd_epi32(_mm256_and_pd(atY, inside));
      const __m128i bytes =
          _mm_add_epi32(_mm_mullo_epi32(px, _mm_set1_epi32(pixelBytes)), _mm_mullo_epi32(py, _mm_set1_epi32(step)));
      const __m128 mask = _mm_shuffle_ps(_mm_castpd_ps(_mm256_castpd256_pd128(inside)),
                                         _mm_castpd_ps(_mm256_extractf128_pd(inside, 1)), 0x88);
      _mm_store_si128(reinterpret_cast<__m128i*>(offset + i), bytes);
      _mm_store_si128(reinterpret_cast<__m128i*>(seen + i), _mm_castps_si128(mask));
    }
  }
};

constexpr int wholeVectors(int count) {
  return (count + 7) & ~7;
}

// Calls take(x, count, footprints) for the pixels of row y in batches.
template <int n, class Take>
void forBatches(const Observation<n>& o, int y, int width, ZebiSize size, int pixelBytes, int step, Take take) {
  Footprints footprints;
  for (int x = 0, count; x < width; x += count) {
    count = width - x < batch ? width - x : batch;
    footprints.place(o, x, y, wholeVectors(count), size, pixelBytes, step);
    take(x, count, footprints);
  }
}

// The residual has its bounds before it is an integer, so that none is too large for one.
template <int n>
void residualRow(const Observation<n>& o, const Zeb8u* high, int highStep, ZebiSize highSize, const Zeb8u* low,
                 Zeb16s* out, int width, int y) {
  alignas(32) Zeb8u pixels[n * n][batch];
  forBatches(o, y, width, highSize, 1, highStep, [&](int x, int count, const Footprints& f) {
    for (int k = 0; k < wholeVectors(count); ++k) {
      uintptr_t row = reinterpret_cast<uintptr_t>(high) + static_cast<uintptr_t>(f.offset[k]);
      for (int r = 0; r < n; ++r, row += static_cast<uintptr_t>(highStep))
        for (int c = 0; c < n; ++c) pixels[r * n + c][k] = reinterpret_cast<const Zeb8u*>(row)[c];
    }
    forVectors<8>(0, count, [&](int k, auto part) ZEB_BODY {
      V32f e = splat(o.psf[0]) * loadAsFloat(pixels[0] + k);
      for (int p = 1; p < n * n; ++p) e = fma(splat(o.psf[p]), loadAsFloat(pixels[p] + k), e);
      const V32f r = (part.floats(low + x + k) - e) * splat(128.0f);
      const V32f bounded = max(splat(-32768.0f), min(splat(32767.0f), r));
      storeRounded(out + x + k, bounded & as<Zeb32f>(load(f.seen + k)), part);
    });
  });
}

template <int n>
void updateRow(const Observation<n>& o, const Zeb32f* residuals, Zeb32f* grad, int gradStep, ZebiSize highSize,
               int width, int y) {
  constexpr int pixelBytes = sizeof(Zeb32f);
  const Observation<n> weights = o;  // of which the compiler knows that no gradient lies in it
  forBatches(weights, y, width, highSize, pixelBytes, gradStep, [&](int x, int count, const Footprints& f) {
    for (int k = 0; k < count; ++k) {
      if (!f.seen[k]) continue;
      const Zeb32f r = residuals[x + k];
      uintptr_t row = reinterpret_cast<uintptr_t>(grad) + static_cast<uintptr_t>(f.offset[k]);
      for (int j = 0; j < n; ++j, row += static_cast<uintptr_t>(gradStep)) {
        auto* const g = reinterpret_cast<Zeb32f*>(row);
        for (int c = 0; c < n; ++c) g[c] = __builtin_fmaf(weights.psf[j * n + c], r, g[c]);
      }
    }
  });
}

template <int n>
ZebStatus residual(const Zeb8u* pHigh, int highStep, ZebiSize highSize, const Zeb8u* pLow, int lowStep, Zeb16s* pRes,
                   int resStep, ZebiSize lowSize, const Zeb64f* pCoeffs, const Zeb32f* pPsf) {
  const auto high = image(pHigh, highStep);
  const auto low = image(pLow, lowStep);
  const auto res = image(pRes, resStep);
  if (auto bad = firstFailure(
          present(pHigh, pLow, pRes, pCoeffs, pPsf), hasArea(highSize), hasArea(lowSize),
          require(high.holdsRow(highSize.width) && low.holdsRow(lowSize.width) && res.holdsRow(lowSize.width),
                  zebStsErrStep),
          require(res.holdsWholeElements(), zebStsErrNotEvenStep)))
    return bad;
  const Observation<n> o(pCoeffs, pPsf);
  if (auto bad = o.flaw()) return bad;
  const bool any = highSize.width >= n && highSize.height >= n;
  for (int y = 0; y < lowSize.height; ++y) {
    if (any)
      residualRow(o, pHigh, highStep, highSize, low.rows()[y], res.rows()[y], lowSize.width, y);
    else
      memset(res.rows()[y], 0, static_cast<size_t>(lowSize.width) * sizeof(Zeb16s));
  }
  return zebStsOk;
}

template <int n>
ZebStatus update(const Zeb32f* pRes, int resStep, ZebiSize lowSize, Zeb32f* pGrad, int gradStep, ZebiSize highSize,
                 const Zeb64f* pCoeffs, const Zeb32f* pPsf) {
  const auto res = image(pRes, resStep);
  const auto grad = image(pGrad, gradStep);
  if (auto bad = firstFailure(present(pRes, pGrad, pCoeffs, pPsf), hasArea(lowSize), hasArea(highSize),
                              require(res.holdsRow(lowSize.width) && grad.holdsRow(highSize.width), zebStsErrStep),
                              require(res.holdsWholeElements() && grad.holdsWholeElements(), zebStsErrNotEvenStep)))
    return bad;
  const Observation<n> o(pCoeffs, pPsf);
  if (auto bad = o.flaw()) return bad;
  for (int y = 0; y < lowSize.height; ++y) updateRow(o, res.rows()[y], pGrad, gradStep, highSize, lowSize.width, y);
  return zebStsOk;
}

}  // namespace

#define SUPER_RESOLUTION(form, n)                                                                                  \
  ZEB_ENTRY(zebiSRCalcResidual_##form##_8u16s_C1R)                                                                 \
  (const Zeb8u* pHigh, int highStep, ZebiSize highSize, const Zeb8u* pLow, int lowStep, Zeb16s* pRes, int resStep, \
   ZebiSize lowSize, const Zeb64f* pCoeffs, const Zeb32f* pPsf) {                                                  \
    return residual<n>(pHigh, highStep, highSize, pLow, lowStep, pRes, resStep, lowSize, pCoeffs, pPsf);           \
  }                                                                                                                \
  ZEB_ENTRY(zebiSRUpdateGradient_##form##_32f_C1R)                                                                 \
  (const Zeb32f* pRes, int resStep, ZebiSize lowSize, Zeb32f* pGrad, int gradStep, ZebiSize highSize,              \
   const Zeb64f* pCoeffs, const Zeb32f* pPsf) {                                                                    \
    return update<n>(pRes, resStep, lowSize, pGrad, gradStep, highSize, pCoeffs, pPsf);                            \
  }

SUPER_RESOLUTION(PSF2x2, 2)
SUPER_RESOLUTION(PSF3x3, 3)
