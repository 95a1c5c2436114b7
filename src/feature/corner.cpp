// Corner responses of the structure tensor.
#include "zebcv/corner.h"
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"
#include "core/shuffle.h"
#include "feature/structure_tensor.h"

namespace {

using namespace zeb;

// ---- Responses ----

// Half the sum of the eigenvalues, half the difference of the diagonal, half the difference of the eigenvalues.
struct Halves {
  V32f h, g, r;
};
ZEB_INLINE Halves halves(V32f a, V32f b, V32f c) {
  const V32f half = splat(0.5f), g = half * (a - c);
  return {half * (a + c), g, sqrt(fma(g, g, b * b))};
}
ZEB_INLINE V32f smaller(const Halves& t) {
  return max(splat(0.0f), t.h - t.r);
}

using Response = void (*)(const TensorBlock& tensors, int n, Zeb32f k, Zeb32f* out);

void minEigenVal(const TensorBlock& t, int n, Zeb32f, Zeb32f* out) {
  forVectors<8>(0, n, [&](int x, auto part) ZEB_BODY {
    part.to(out + x, smaller(halves(load(t.a + x), load(t.b + x), load(t.c + x))));
  });
}

void harris(const TensorBlock& t, int n, Zeb32f k, Zeb32f* out) {
  forVectors<8>(0, n, [&](int x, auto part) ZEB_BODY {
    const V32f a = load(t.a + x), b = load(t.b + x), c = load(t.c + x), trace = a + c;
    part.to(out + x, fnma(splat(k), trace * trace, fms(a, c, b * b)));
  });
}

// Six vectors in turn, lane by lane: 48 elements. Pairs first, then pairs of pairs.
ZEB_INLINE void storeInTurn(Zeb32f* p, V32f v0, V32f v1, V32f v2, V32f v3, V32f v4, V32f v5) {
  const auto pixels = [](Zeb32f* at, __m256 first, __m256 second, __m256 third) ZEB_BODY {
    const __m256d a = _mm256_castps_pd(first), b = _mm256_castps_pd(second), c = _mm256_castps_pd(third);
    storeHalves(at, at + 24, V32f{_mm256_castpd_ps(_mm256_unpacklo_pd(a, b))});
    storeHalves(at + 4, at + 28, V32f{_mm256_castpd_ps(_mm256_shuffle_pd(c, a, 0xA))});
    storeHalves(at + 8, at + 32, V32f{_mm256_castpd_ps(_mm256_unpackhi_pd(b, c))});
  };
  pixels(p, _mm256_unpacklo_ps(v0.v, v1.v), _mm256_unpacklo_ps(v2.v, v3.v), _mm256_unpacklo_ps(v4.v, v5.v));
  pixels(p + 12, _mm256_unpackhi_ps(v0.v, v1.v), _mm256_unpackhi_ps(v2.v, v3.v), _mm256_unpackhi_ps(v4.v, v5.v));
}

constexpr int valuesAndVectors = 6;

void eigenValsVecs(const TensorBlock& tensors, int n, Zeb32f, Zeb32f* out) {
  const V32f zero = splat(0.0f), sign = splat(-0.0f);
  for (int x = 0; x < n; x += 8) {
    const V32f b = load(tensors.b + x);
    const Halves t = halves(load(tensors.a + x), b, load(tensors.c + x));
    const V32f along = atMost(zero, t.g);
    const V32f u = select(along, t.g + t.r, abs(b));
    const V32f v = select(along, b, (t.r - t.g) ^ (less(b, zero) & sign));
    const V32f m = sqrt(fma(u, u, v * v)), none = equal(m, zero);
    const V32f one = splat(1.0f), divisor = select(none, one, m);
    const V32f x1 = select(none, one, u / divisor), y1 = andNot(none, v / divisor);
    Zeb32f rest[8 * valuesAndVectors];
    Zeb32f* const to = n - x >= 8 ? out + x * valuesAndVectors : rest;
    storeInTurn(to, t.h + t.r, smaller(t), x1, y1, y1 ^ sign, x1);
    if (to == rest)
      memcpy(out + x * valuesAndVectors, rest, static_cast<size_t>(n - x) * valuesAndVectors * sizeof(Zeb32f));
  }
}

// ---- Checks and sizes ----

ZebStatus fits(int filterType, int mask, int window) {
  return firstFailure(require(filterType == zebFilterSobel || filterType == zebFilterScharr, zebStsErrFilterType),
                      isMaskSize(mask),
                      require(mask == zebMskSize3x3 || filterType == zebFilterSobel, zebStsErrMaskSize),
                      require(window >= 1 && window <= 255, zebStsErrMaskSize));
}

using Bytes = int64_t (*)(TensorForm form, int width);

// Enough for either type.
int64_t bytesOfEither(TensorForm form, int width) {
  const int64_t a = TensorRows<Zeb8u>::scratchBytes(form, width), b = TensorRows<Zeb32f>::scratchBytes(form, width);
  return a > b ? a : b;
}

ZebStatus bufferSize(ZebiSize roi, int filterType, int mask, int window, int* pSize, Bytes bytes) {
  if (auto bad = firstFailure(present(pSize), hasArea(roi), fits(filterType, mask, window))) return bad;
  return reportSize(bytes({operatorOf(filterType, mask), window}, roi.width), pSize);
}

// ---- The operation ----

template <class T>
struct Request {
  const T* pSrc;
  int srcStep;
  Zeb32f* pDst;
  int dstStep;
  ZebiSize roi;
  int filterType, mask, window;
  ZebiBorderType border;
  T borderValue;
  Zeb8u* pBuffer;
};

template <class T>
void respond(const Request<T>& job, TensorForm form, int64_t bytes, int floats, Response response, Zeb32f k) {
  Scratch scratch(job.pBuffer, bytes);
  const BorderedImage source(job.pSrc, job.srcStep, job.roi, sizeof(T), ofThreeBits(job.border), &job.borderValue);
  TensorRows<T> tensors(form, source, scratch);
  const Rows<Zeb32f> dst(job.pDst, job.dstStep);
  TensorBlock block;
  for (int y = 0; y < job.roi.height; ++y) {
    tensors.next();
    Zeb32f* const out = dst[y];
    for (int x = 0; x < job.roi.width; x += TensorBlock::most) {
      const int left = job.roi.width - x, n = left < TensorBlock::most ? left : TensorBlock::most;
      tensors.take(n, block);
      response(block, n, k, out + static_cast<ptrdiff_t>(x) * floats);
    }
  }
}

// reported: the bytes that the query of the function tells, which may be more than this type needs.
template <int floats, class T>
ZebStatus corners(const Request<T>& job, Response response, Bytes reported, Zeb32f k = 0) {
  if (auto bad = firstFailure(
          checked(job.roi, image(job.pSrc, job.srcStep), image<floats>(job.pDst, job.dstStep), also(job.pBuffer)),
          fits(job.filterType, job.mask, job.window), require(k >= 0 && k <= 1, zebStsErrBadArgument),
          takesBorder(borderBase(ofThreeBits(job.border)))))
    return bad;
  const TensorForm form = {operatorOf(job.filterType, job.mask), job.window};
  int bytes = 0;
  if (auto bad = reportSize(reported(form, job.roi.width), &bytes)) return bad;
  respond(job, form, bytes, floats, response, k);
  return zebStsOk;
}

}  // namespace

#define QUERY(name, bytes)                                                                     \
  ZEB_ENTRY(name)(ZebiSize roiSize, int filterType, int mask, int winSize, int* pBufferSize) { \
    return bufferSize(roiSize, filterType, mask, winSize, pBufferSize, bytes);                 \
  }
QUERY(zebiMinEigenValGetBufferSize_8u32f_C1R, TensorRows<Zeb8u>::scratchBytes)
QUERY(zebiMinEigenValGetBufferSize_32f_C1R, TensorRows<Zeb32f>::scratchBytes)
QUERY(zebiEigenValsVecsGetBufferSize_8u32f_C1R, TensorRows<Zeb8u>::scratchBytes)
QUERY(zebiEigenValsVecsGetBufferSize_32f_C1R, TensorRows<Zeb32f>::scratchBytes)
QUERY(zebiHarrisCornerGetBufferSize, bytesOfEither)

#define RESPONSES(form, T)                                                                                            \
  ZEB_ENTRY(zebiMinEigenVal_##form)                                                                                   \
  (const T* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, int filterType, int mask, int winSize,    \
   ZebiBorderType borderType, T borderValue, Zeb8u* pBuffer) {                                                        \
    return corners<1, T>(                                                                                             \
        {pSrc, srcStep, pDst, dstStep, roiSize, filterType, mask, winSize, borderType, borderValue, pBuffer},         \
        minEigenVal, TensorRows<T>::scratchBytes);                                                                    \
  }                                                                                                                   \
  ZEB_ENTRY(zebiEigenValsVecs_##form)                                                                                 \
  (const T* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, int filterType, int mask, int winSize,    \
   ZebiBorderType borderType, T borderValue, Zeb8u* pBuffer) {                                                        \
    return corners<valuesAndVectors, T>(                                                                              \
        {pSrc, srcStep, pDst, dstStep, roiSize, filterType, mask, winSize, borderType, borderValue, pBuffer},         \
        eigenValsVecs, TensorRows<T>::scratchBytes);                                                                  \
  }                                                                                                                   \
  ZEB_ENTRY(zebiHarrisCorner_##form)                                                                                  \
  (const T* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, int filterType, int mask, int winSize,    \
   Zeb32f k, ZebiBorderType borderType, T borderValue, Zeb8u* pBuffer) {                                              \
    return corners<1, T>(                                                                                             \
        {pSrc, srcStep, pDst, dstStep, roiSize, filterType, mask, winSize, borderType, borderValue, pBuffer}, harris, \
        bytesOfEither, k);                                                                                            \
  }
RESPONSES(8u32f_C1R, Zeb8u)
RESPONSES(32f_C1R, Zeb32f)
