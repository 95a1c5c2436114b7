// Doubling an image with the 5 x 5 binomial kernel. Along each dimension pixel s[x] becomes
//
//   2x:     s[x-1] + 6 s[x] + s[x+1]
//   2x + 1: 4 s[x] + 4 s[x+1]
//
// with weight 8, 64 for both. Before the first pixel stands the second one, behind the last the last itself.
// Method: P. Burt, E. Adelson, "The Laplacian pyramid as a compact image code", 1983.
#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/narrow.h"
#include "core/scratch.h"
#include "core/shuffle.h"
#include "core/streaming.h"
#include "filter/border.h"
#include "motion/gauss.h"

namespace {

using namespace zeb;

// ---- Vectors ----

// Sixteen bytes with some bits flipped, widened.
ZEB_INLINE V16s widenedFlipped(const Zeb8u* p, V8u flip) {
  const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
  return {_mm256_cvtepu8_epi16(_mm_xor_si128(a, _mm256_castsi256_si128(flip.v)))};
}
// even0 odd0 even1 odd1 ...
ZEB_INLINE void storeInTurn(Zeb32f* p, V32f even, V32f odd) {
  const __m256 low = _mm256_unpacklo_ps(even.v, odd.v), high = _mm256_unpackhi_ps(even.v, odd.v);
  _mm256_storeu_ps(p, _mm256_permute2f128_ps(low, high, 0x20));
  _mm256_storeu_ps(p + 8, _mm256_permute2f128_ps(low, high, 0x31));
}

ZEB_INLINE V16s evenSum(V16s a, V16s b, V16s c) {
  return a + c + splat(Zeb16s(6)) * b;
}
ZEB_INLINE V16s oddSum(V16s b, V16s c) {
  return shiftLeft<2>(b + c);
}
ZEB_INLINE V32f evenSum(V32f a, V32f b, V32f c) {
  return fma(splat(6.0f), b, a + c);
}
ZEB_INLINE V32f oddSum(V32f b, V32f c) {
  return splat(4.0f) * (b + c);
}
template <class T>
int evenSum(int a, int b, int c) {
  return a + 6 * b + c;
}
template <class T>
int oddSum(int b, int c) {
  return 4 * (b + c);
}
template <class T>
Zeb32f evenSum(Zeb32f a, Zeb32f b, Zeb32f c) {
  return fmaf(6.0f, b, a + c);
}
template <class T>
Zeb32f oddSum(Zeb32f b, Zeb32f c) {
  return 4.0f * (b + c);
}

// ---- Rows. Sums are at most 255 x 8 (bytes), taken as signed 16-bit lanes. ----

// The pixels that have both neighbours, in whole vectors; of rows shorter than one none. Yields the first pixel that is
// left to do.
template <int lanes, class Block>
ZEB_INLINE int innerVectors(int from, int width, Block block) {
  const int end = width - 1;
  if (end - from < lanes) return from;
  forOverlappingVectors<lanes>(from, end, [=](int x, auto) ZEB_BODY { block(x); });
  return end;
}
template <class T>
int innerRow(const T* row, int width, Zeb16u* out, int from, Channels<1>) {
  const V8u flip = splat(GaussType<T>::flip);
  const auto bytes = reinterpret_cast<const Zeb8u*>(row);
  const auto pixels = [=](int at) ZEB_BODY { return widenedFlipped(bytes + at, flip); };
  return innerVectors<V16s::lanes>(from, width, [=](int x) ZEB_BODY {
    const V16s b = pixels(x), c = pixels(x + 1);
    const V16s even = evenSum(pixels(x - 1), b, c), odd = oddSum(b, c);
    storeInOrder(reinterpret_cast<Zeb16s*>(out) + 2 * x, interleaveFirst(even, odd), interleaveLast(even, odd));
  });
}
int innerRow(const Zeb32f* row, int width, Zeb32f* out, int from, Channels<1>) {
  return innerVectors<V32f::lanes>(from, width, [=](int x) ZEB_BODY {
    const V32f b = load(row + x), c = load(row + x + 1);
    storeInTurn(out + 2 * x, evenSum(load(row + x - 1), b, c), oddSum(b, c));
  });
}
template <class T, class Sum>
int innerRow(const T*, int, Sum*, int from, Channels<3>) {
  return from;
}

template <int channels, class T, class Sum>
void expandRow(const T* row, int width, Sum* out) {
  const auto some = [=](int from, int to) {
    for (int x = from; x < to; ++x) {
      const int before = x > 0 ? x - 1 : width > 1 ? 1 : 0, behind = x < width - 1 ? x + 1 : x;
      for (int c = 0; c < channels; ++c) {
        const auto at = [=](int p) { return GaussType<T>::widened(row[static_cast<ptrdiff_t>(p) * channels + c]); };
        Sum* const o = out + static_cast<ptrdiff_t>(2 * x) * channels + c;
        o[0] = static_cast<Sum>(evenSum<T>(at(before), at(x), at(behind)));
        o[channels] = static_cast<Sum>(oddSum<T>(at(x), at(behind)));
      }
    }
  };
  some(0, 1);
  some(innerRow(row, width, out, 1, Channels<channels>()), width);
}

// ---- Columns: two destination rows from three rows of sums ----

// At most 255 x 64 + 32.
template <class T>
void expandColumns(const Zeb16u* above, const Zeb16u* here, const Zeb16u* below, T* even, T* odd, int n) {
  const auto e = reinterpret_cast<Zeb8u*>(even), o = reinterpret_cast<Zeb8u*>(odd);
  const auto lanes = [](const Zeb16u* p) ZEB_BODY { return as<Zeb16s>(load(p)); };
  const auto scaled = [](V16s s) ZEB_BODY { return shiftRight<6>(s + splat(Zeb16s(32))); };
  const auto evenAt = [=](int i)
                          ZEB_BODY { return scaled(evenSum(lanes(above + i), lanes(here + i), lanes(below + i))); };
  const auto oddAt = [=](int i) ZEB_BODY { return scaled(oddSum(lanes(here + i), lanes(below + i))); };
  const auto block = [=](int i) ZEB_BODY {
    fetchAhead(e + i);
    fetchAhead(o + i);
    store(e + i, narrowTo8u(evenAt(i), evenAt(i + 16)) ^ splat(GaussType<T>::flip));
    store(o + i, narrowTo8u(oddAt(i), oddAt(i + 16)) ^ splat(GaussType<T>::flip));
  };
  const auto one = [=](int i) {
    e[i] = static_cast<Zeb8u>(((evenSum<T>(above[i], here[i], below[i]) + 32) >> 6) ^ GaussType<T>::flip);
    o[i] = static_cast<Zeb8u>(((oddSum<T>(here[i], below[i]) + 32) >> 6) ^ GaussType<T>::flip);
  };
  forOverlappingVectors<V8u::lanes>(0, n, wholeOrEach(block, one));
}
void expandColumns(const Zeb32f* above, const Zeb32f* here, const Zeb32f* below, Zeb32f* even, Zeb32f* odd, int n) {
  const V32f scale = splat(1.0f / 64);
  forOverlappingVectors<V32f::lanes>(0, n, [=](int i, auto part) ZEB_BODY {
    fetchAhead(even + i);
    fetchAhead(odd + i);
    const V32f b = part.from(here + i), c = part.from(below + i);
    part.to(even + i, evenSum(part.from(above + i), b, c) * scale);
    part.to(odd + i, oddSum(b, c) * scale);
  });
}

// Three rows of sums of the destination's width.
template <class T, int channels>
void expand(Rows<const T> src, Rows<T> dst, ZebiSize size, Zeb8u* pBuffer) {
  using Sum = typename GaussType<T>::Sum;
  const int n = 2 * size.width * channels;
  Scratch scratch(pBuffer, pyrUpBufferBytes(size.width, channels));
  const RowRing<Sum, 3> ring(scratch, n, 32);
  expandRow<channels>(src[0], size.width, ring[0]);
  for (int y = 0; y < size.height; ++y) {
    const int below = y + 1 < size.height ? y + 1 : y;
    if (below > y) expandRow<channels>(src[below], size.width, ring[below]);
    expandColumns(ring[y > 0 ? y - 1 : below], ring[y], ring[below], dst.row(ptrdiff_t{2} * y),
                  dst.row(ptrdiff_t{2} * y + 1), n);
  }
}

template <class T, int channels>
ZebStatus pyrUp(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, Zeb8u* pBuffer) {
  const auto src = image<channels>(pSrc, srcStep);
  const auto dst = image<channels>(pDst, dstStep).wider(static_cast<int64_t>(roi.width) * channels);
  if (auto bad = firstFailure(checked(roi, src, dst, also(pBuffer)),
                              require(pyrUpBufferBytes(roi.width, channels) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  expand<T, channels>(src.rows(), dst.rows(), roi, pBuffer);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiPyrUpGetBufSize_Gauss5x5)(int roiWidth, ZebDataType dataType, int channels, int* pBufSize) {
  if (auto bad = gaussBufferChecks(roiWidth, dataType, channels, pBufSize)) return bad;
  return reportSize(pyrUpBufferBytes(roiWidth, channels), pBufSize);
}

#define PYR_UP(name, T, channels)                                                                       \
  ZEB_ENTRY(name)(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, Zeb8u* pBuffer) { \
    return pyrUp<T, channels>(pSrc, srcStep, pDst, dstStep, roiSize, pBuffer);                          \
  }
PYR_UP(zebiPyrUp_Gauss5x5_8u_C1R, Zeb8u, 1)
PYR_UP(zebiPyrUp_Gauss5x5_8u_C3R, Zeb8u, 3)
PYR_UP(zebiPyrUp_Gauss5x5_8s_C1R, Zeb8s, 1)
PYR_UP(zebiPyrUp_Gauss5x5_8s_C3R, Zeb8s, 3)
PYR_UP(zebiPyrUp_Gauss5x5_32f_C1R, Zeb32f, 1)
PYR_UP(zebiPyrUp_Gauss5x5_32f_C3R, Zeb32f, 3)
