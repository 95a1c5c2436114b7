// Halving an image with the 5 x 5 binomial kernel: source pixels (2x, 2y) of the image filtered with 1 4 6 4 1 along
// rows and columns, sum 256. Outside pixels are mirrored without repeating the edge. Sources of one or two rows are
// averaged instead of filtered down the columns.
// Method: P. Burt, E. Adelson, "The Laplacian pyramid as a compact image code", 1983.
#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/narrow.h"
#include "core/reduce.h"
#include "core/scratch.h"
#include "core/streaming.h"
#include "filter/border.h"
#include "motion/gauss.h"

namespace {

using namespace zeb;

// ---- Vectors ----

// Four pixels of three bytes at each of two places, one per half: bytes of pixels 0 and 1, then of pixels 2 and 3,
// channel by channel side by side. Sixteen bytes are read at each place; the last four bytes of each half are 0.
ZEB_INLINE V8u pixelPairs3(const Zeb8u* p, const Zeb8u* q) {
  const __m256i both = _mm256_set_m128i(_mm_loadu_si128(reinterpret_cast<const __m128i*>(q)),
                                        _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)));
  const __m256i order = _mm256_setr_epi8(0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, -1, -1, -1, -1,  //
                                         0, 3, 1, 4, 2, 5, 6, 9, 7, 10, 8, 11, -1, -1, -1, -1);
  return {_mm256_shuffle_epi8(both, order)};
}
// The first six lanes of each half one after the other; two lanes of no meaning are written behind them.
ZEB_INLINE void storeSixes(Zeb16u* p, V16u a) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm256_castsi256_si128(a.v));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(p + 6), _mm256_extracti128_si256(a.v, 1));
}
// Eight pairs of floats taken apart, lanes in the order 0 1 4 5 2 3 6 7, which joinedHalves() undoes.
ZEB_INLINE void splitPairs(const Zeb32f* p, V32f& first, V32f& second) {
  const V32f a = load(p), b = load(p + 8);
  first = {_mm256_shuffle_ps(a.v, b.v, 0x88)};
  second = {_mm256_shuffle_ps(a.v, b.v, 0xDD)};
}
ZEB_INLINE V32f joinedHalves(V32f a) {
  return as<Zeb32f>(V8u{inOrder(bits(a.v))});
}

// ---- Rows: every second pixel of the filtered row ----

// Weighted sum of a row around pixel p, outside pixels mirrored; channel c.
template <int channels, class T>
auto edgeSum(const T* row, int width, int p, int c) {
  const auto at = [=](int q) {
    return GaussType<T>::widened(row[static_cast<ptrdiff_t>(borderSource(zebBorderMirror, q, width)) * channels + c]);
  };
  return GaussType<T>::sum(at(p - 2), at(p - 1), at(p), at(p + 1), at(p + 2));
}

// Each of these filters output pixels from..to-1, all of whose taps lie inside the row, as far as whole vectors stay
// inside the row, and returns the first pixel it left.
template <class T>
ZEB_INLINE V16s tapSums(V8u a, V8u b, V8u c) {
  return dotPairs(a, splatBytePair(1, 4)) + dotPairs(b, splatBytePair(6, 4)) + dotPairs(c, splatBytePair(1, 0));
}

// Bytes, one channel: neighbouring pairs are summed with their weights in one instruction, and pairs start at even
// pixels, so nothing has to be taken apart. 16 results from 36 bytes.
template <class T>
int innerRow(const T* row, int width, Zeb16u* out, int from, Channels<1>) {
  const V8u flip = splat(GaussType<T>::flip);
  const auto bytes = reinterpret_cast<const Zeb8u*>(row);
  const auto pairs = [=](int at) { return load(bytes + at) ^ flip; };
  const int end = (width - 34) / 2;  // the last start whose third load ends inside the row
  int x = from;
  for (; x <= end; x += 16) store(out + x, as<Zeb16u>(tapSums<T>(pairs(2 * x - 2), pairs(2 * x), pairs(2 * x + 2))));
  if (end >= from && x < end + 16) {
    x = end;
    store(out + x, as<Zeb16u>(tapSums<T>(pairs(2 * x - 2), pairs(2 * x), pairs(2 * x + 2))));
    x += 16;
  }
  return x;
}

// Bytes, three channels: of the five pixels in 16 bytes the first four give two outputs their two taps. Each half of a
// vector makes two output pixels, six elements.
template <class T>
int innerRow(const T* row, int width, Zeb16u* out, int from, Channels<3>) {
  const V8u flip = splat(GaussType<T>::flip);
  const auto bytes = reinterpret_cast<const Zeb8u*>(row);
  const auto pairs = [=](int pixel) {
    const Zeb8u* const p = bytes + static_cast<ptrdiff_t>(pixel) * 3;
    return pixelPairs3(p, p + 12) ^ flip;
  };
  // The third load of the second half reads pixels 2x + 6 to 2x + 10 and one byte more; the stores write eight
  // elements for six, so that the next ones must still be to come.
  int x = from;
  for (; x <= (width - 12) / 2; x += 4) {
    fetchAhead(bytes + static_cast<ptrdiff_t>(6) * x);
    storeSixes(out + static_cast<ptrdiff_t>(x) * 3,
               as<Zeb16u>(tapSums<T>(pairs(2 * x - 2), pairs(2 * x), pairs(2 * x + 2))));
  }
  return x;
}

int innerRow(const Zeb32f* row, int width, Zeb32f* out, int from, Channels<1>) {
  int x = from;
  for (; x <= (width - 18) / 2; x += 8) {
    fetchAhead(row + 2 * x);
    V32f a, b, c, d, e, unused;
    splitPairs(row + 2 * x - 2, a, b);
    splitPairs(row + 2 * x, c, d);
    splitPairs(row + 2 * x + 2, e, unused);
    store(out + x, joinedHalves(gaussSum(a, b, c, d, e)));
  }
  return x;
}
int innerRow(const Zeb32f*, int, Zeb32f*, int from, Channels<3>) {
  return from;
}

template <int channels, class T, class Sum>
void filterRow(const T* row, int width, Sum* out) {
  const int outWidth = (width + 1) / 2;
  if (width < 5) {
    for (int x = 0; x < outWidth; ++x)
      for (int c = 0; c < channels; ++c) out[x * channels + c] = edgeSum<channels>(row, width, 2 * x, c);
    return;
  }
  // The sum around pixel 2x of pixels so far from it.
  const auto around = [=](ptrdiff_t x, int a, int b, int d, int e) ZEB_BODY {
    using G = GaussType<T>;
    for (int c = 0; c < channels; ++c) {
      const T* const p = row + 2 * x * channels + c;
      out[x * channels + c] = G::sum(G::widened(p[a * channels]), G::widened(p[b * channels]), G::widened(p[0]),
                                     G::widened(p[d * channels]), G::widened(p[e * channels]));
    }
  };
  around(0, 2, 1, 1, 2);
  int x = innerRow(row, width, out, 1, Channels<channels>());
  const int last = outWidth - 1;
  for (; x < last; ++x) around(x, -2, -1, 1, 2);
  if (x > last) return;
  const bool edge = width % 2 != 0;  // pixel 2x is the last one, else the last but one
  around(x, -2, -1, edge ? -1 : 1, edge ? -2 : 0);
}

// ---- Columns ----

ZEB_INLINE V16u sumOfFive(V16u a, V16u b, V16u c, V16u d, V16u e) {
  return a + e + splat(Zeb16u(4)) * (b + d) + splat(Zeb16u(6)) * c;
}

// At most 255 x 256 + 128: sixteen bits hold it.
template <class T>
void filterColumns(Zeb16u* const* rows, T* out, int n) {
  const auto bytes = reinterpret_cast<Zeb8u*>(out);
  const auto half = [=](int i) {
    const V16u s =
        sumOfFive(load(rows[0] + i), load(rows[1] + i), load(rows[2] + i), load(rows[3] + i), load(rows[4] + i));
    return as<Zeb16s>(shiftRight<8>(s + splat(Zeb16u(128))));
  };
  const auto block = [=](int i)
                         ZEB_BODY { store(bytes + i, narrowTo8u(half(i), half(i + 16)) ^ splat(GaussType<T>::flip)); };
  const auto one = [=](int i) {
    const int s = rows[0][i] + 4 * rows[1][i] + 6 * rows[2][i] + 4 * rows[3][i] + rows[4][i];
    bytes[i] = static_cast<Zeb8u>(((s + 128) >> 8) ^ GaussType<T>::flip);
  };
  forOverlappingVectors<V8u::lanes>(0, n, wholeOrEach(block, one));
}
void filterColumns(Zeb32f* const* rows, Zeb32f* out, int n) {
  forOverlappingVectors<V32f::lanes>(0, n, [=](int i, auto part) ZEB_BODY {
    const auto sums = [=](int k) ZEB_BODY { return part.from(rows[k] + i); };
    part.to(out + i, gaussSum(sums(0), sums(1), sums(2), sums(3), sums(4)) * splat(1.0f / 256));
  });
}

// One or two source rows: the mean of both sums of 16.
template <class T>
void averageRows(const Zeb16u* a, const Zeb16u* b, T* out, int n) {
  for (int i = 0; i < n; ++i)
    out[i] = static_cast<T>(static_cast<Zeb8u>(((8 * (a[i] + b[i]) + 128) >> 8) ^ GaussType<T>::flip));
}
void averageRows(const Zeb32f* a, const Zeb32f* b, Zeb32f* out, int n) {
  for (int i = 0; i < n; ++i) out[i] = (a[i] + b[i]) * 0.03125f;
}

// ---- The image ----

// Rounded up.
constexpr int halfOf(int n) {
  return n / 2 + n % 2;
}

// Five rows of sums of the destination's width, each on a vector boundary, with room for the elements that a store of
// three-channel sums writes beyond its last: less than the reported six rows of the source's width.
template <class T, int channels>
void halve(Rows<const T> src, Rows<T> dst, ZebiSize size, Zeb8u* pBuffer) {
  using Sum = typename GaussType<T>::Sum;
  const int outWidth = halfOf(size.width), outHeight = halfOf(size.height), n = outWidth * channels;
  Scratch scratch(pBuffer, pyrDownBufferBytes(size.width, channels));
  const RowRing<Sum, 5> ring(scratch, n, 4);
  if (size.height <= 2) {
    filterRow<channels>(src[0], size.width, ring[0]);
    if (size.height == 2) filterRow<channels>(src[1], size.width, ring[1]);
    averageRows(ring[0], ring[size.height - 1], dst[0], n);
    return;
  }
  // The slots twice, so that any five rows that follow each other do so here.
  Sum* slots[10];
  for (int k = 0; k < 10; ++k) slots[k] = ring[k];
  const int whole = (size.height - 1) / 2;  // destination rows whose source row 2y + 2 is in the image
  int filtered = 0, next = 0;               // source rows so far, and the slot of the next one
  int first = 3;                            // the slot of source row 2y - 2
  for (int y = 0; y < outHeight; ++y) {
    const bool inside = y < whole;
    const int last = inside ? 2 * y + 2 : size.height - 1;
    for (; filtered <= last; ++filtered) {
      filterRow<channels>(src[filtered], size.width, slots[next]);
      next = next < 4 ? next + 1 : 0;
    }
    if (y > 0 && inside) {
      filterColumns(slots + first, dst[y], n);
    } else {
      Sum* rows[5];
      for (int k = 0; k < 5; ++k) rows[k] = ring[borderSource(zebBorderMirror, int64_t{2} * y - 2 + k, size.height)];
      filterColumns(rows, dst[y], n);
    }
    first = first < 3 ? first + 2 : first - 3;
  }
}

template <class T, int channels>
ZebStatus pyrDown(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, Zeb8u* pBuffer) {
  const auto src = image<channels>(pSrc, srcStep);
  const auto dst =
      image<channels>(pDst, dstStep).wider((static_cast<int64_t>(halfOf(roi.width)) - roi.width) * channels);
  if (auto bad = firstFailure(checked(roi, src, dst, also(pBuffer)),
                              require(pyrDownBufferBytes(roi.width, channels) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  halve<T, channels>(src.rows(), dst.rows(), roi, pBuffer);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiPyrDownGetBufSize_Gauss5x5)(int roiWidth, ZebDataType dataType, int channels, int* pBufSize) {
  if (auto bad = gaussBufferChecks(roiWidth, dataType, channels, pBufSize)) return bad;
  return reportSize(pyrDownBufferBytes(roiWidth, channels), pBufSize);
}

#define PYR_DOWN(name, T, channels)                                                                     \
  ZEB_ENTRY(name)(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, Zeb8u* pBuffer) { \
    return pyrDown<T, channels>(pSrc, srcStep, pDst, dstStep, roiSize, pBuffer);                        \
  }
PYR_DOWN(zebiPyrDown_Gauss5x5_8u_C1R, Zeb8u, 1)
PYR_DOWN(zebiPyrDown_Gauss5x5_8u_C3R, Zeb8u, 3)
PYR_DOWN(zebiPyrDown_Gauss5x5_8s_C1R, Zeb8s, 1)
PYR_DOWN(zebiPyrDown_Gauss5x5_8s_C3R, Zeb8s, 3)
PYR_DOWN(zebiPyrDown_Gauss5x5_32f_C1R, Zeb32f, 1)
PYR_DOWN(zebiPyrDown_Gauss5x5_32f_C3R, Zeb32f, 3)
