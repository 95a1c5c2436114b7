// Upright summed-area tables of an 8-bit image and of its squares (F. Crow, 1984).
//
// An element is the element above plus the running sum of its row. Row sums are formed sixteen pixels at a time as
// prefix sums in registers; only one addition and one permutation per block depend on the block before.
#include <type_traits>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/services.h"
#include "core/shuffle.h"
#include "core/streaming.h"
#include "core/widen.h"

namespace {

using namespace zeb;

// ---- Vectors ----

// Sums of neighbouring pixels: lane k holds pixel 2k plus pixel 2k + 1.
ZEB_INLINE V16s pairSums(V8u a) {
  return {_mm256_maddubs_epi16(a.v, _mm256_set1_epi8(1))};
}
// Every lane becomes the sum of itself and the lanes before it; the sums wrap.
ZEB_INLINE V32s prefixSum(V32s a) {
  __m256i s = _mm256_add_epi32(a.v, _mm256_slli_si256(a.v, 4));
  s = _mm256_add_epi32(s, _mm256_slli_si256(s, 8));
  // The last sum of the low half goes to every lane of the high half.
  const __m256i low = _mm256_permute2x128_si256(s, s, 0x08);
  return {_mm256_add_epi32(s, _mm256_shuffle_epi32(low, 0xFF))};
}
// The same in each half.
ZEB_INLINE V16s prefixSums(V16s a) {
  __m256i s = _mm256_add_epi16(a.v, _mm256_slli_si256(a.v, 2));
  s = _mm256_add_epi16(s, _mm256_slli_si256(s, 4));
  return {_mm256_add_epi16(s, _mm256_slli_si256(s, 8))};
}
ZEB_INLINE int firstLane(V32s a) {
  return _mm_cvtsi128_si32(_mm256_castsi256_si128(a.v));
}
ZEB_INLINE double firstLane(V64f a) {
  return _mm256_cvtsd_f64(a.v);
}
// The last lane in every lane.
ZEB_INLINE V32s lastLane(V32s a) {
  return {_mm256_permutevar8x32_epi32(a.v, _mm256_set1_epi32(7))};
}

// ---- Row kernels: above and dst point at column 1 of their rows, n is the width ----

// Running sums of 16 pixels and of the next 16, eight to a vector. Pairs are added first, so that the prefix sums run
// over eight lanes.
struct RunningSums {
  V32s part[4];
};
ZEB_INLINE RunningSums runningSums(const Zeb8u* src) {
  const V8u pixels = load(src);
  const V16s odd = prefixSums(pairSums(pixels));
  const V16s even = odd - as<Zeb16s>(shiftRight<8>(as<Zeb16u>(pixels)));
  // The halves hold pixels 0..15 and 16..31.
  const V16s low = interleaveFirst(even, odd), high = interleaveLast(even, odd);
  return {{widenLow(low), widenLow(high), widenHigh(low), widenHigh(high)}};
}

// The row sum so far, added to the element above. 32s: sums wrap modulo 2^32, so any order is right. 32f: a row sum is
// an integer, exact in float up to 2^24; beyond that it is rounded at every pixel.
ZEB_INLINE V32s element(V32s above, V32s sum) {
  return above + sum;
}
ZEB_INLINE V32f element(V32f above, V32s sum) {
  return above + toFloat(sum);
}
Zeb32s element(Zeb32s above, unsigned sum) {
  return static_cast<Zeb32s>(static_cast<unsigned>(above) + sum);
}
Zeb32f element(Zeb32f above, Zeb32f sum) {
  return above + sum;
}

template <class S>
void sumRow(const Zeb8u* src, const S* above, S* dst, int n) {
  constexpr bool exact = std::is_same_v<S, Zeb32s>;
  constexpr int exactPixels = (1 << 24) / 255 / 32 * 32;
  const int vectors = exact || n < exactPixels ? n : exactPixels;
  V32s carry = splat(0);
  int i = 0;
  for (; i <= vectors - 32; i += 32) {
    fetchAhead(dst + i);
    fetchAhead(dst + i + 16);
    const RunningSums sums = runningSums(src + i);
    for (int k = 0; k < 4; k += 2) {
      store(dst + i + 8 * k, element(load(above + i + 8 * k), sums.part[k] + carry));
      carry = sums.part[k + 1] + carry;
      store(dst + i + 8 * k + 8, element(load(above + i + 8 * k + 8), carry));
      carry = lastLane(carry);
    }
  }
  std::conditional_t<exact, unsigned, Zeb32f> sum(firstLane(carry));
  for (; i < n; ++i) {
    sum += src[i];
    dst[i] = element(above[i], sum);
  }
}

void squareRow(const Zeb8u* src, const Zeb32s* above, Zeb32s* dst, int n) {
  V32s carry = splat(0);
  int i = 0;
  for (; i <= n - 8; i += 8) {
    fetchAhead(dst + i);
    const V32s pixels = loadAs32s(src + i);
    const V32s sums = prefixSum(pixels * pixels) + carry;
    store(dst + i, load(above + i) + sums);
    carry = lastLane(sums);
  }
  unsigned sum = static_cast<unsigned>(firstLane(carry));
  for (; i < n; ++i) {
    sum += static_cast<unsigned>(src[i]) * src[i];
    dst[i] = static_cast<Zeb32s>(static_cast<unsigned>(above[i]) + sum);
  }
}

// 64f: row sums of squares are integers below 2^53, so any order is exact. Blocks are summed in 32 bits.
void squareRow(const Zeb8u* src, const Zeb64f* above, Zeb64f* dst, int n) {
  V64f carry = splat(0.0);
  int i = 0;
  for (; i <= n - 8; i += 8) {
    fetchAhead(dst + i);
    const V16s wide = loadAs16sLow(src + i);
    const V32s sums = prefixSum(widenLowUnsigned(wide * wide));
    store(dst + i, load(above + i) + (lowToDouble(sums) + carry));
    store(dst + i + 4, load(above + i + 4) + (highToDouble(sums) + carry));
    carry = carry + lowToDouble(lastLane(sums));
  }
  Zeb64f sum = firstLane(carry);
  for (; i < n; ++i) {
    sum += static_cast<Zeb64f>(src[i] * src[i]);
    dst[i] = above[i] + sum;
  }
}

// ---- Tables ----

template <class T>
void fillRow(T* row, int count, T value) {
  for (int i = 0; i < count; ++i) row[i] = value;
}

// A table has one column and one row more than its image.
template <class S>
ZebStatus sumTable(Image<const Zeb8u> src, Image<S> table, ZebiSize roi, S val) {
  if (auto bad = checked(roi, src, table.wider(1))) return bad;
  const Rows<S> dst = table;
  fillRow(dst[0], roi.width + 1, val);
  for (int y = 0; y < roi.height; ++y) {
    S* row = dst[y + 1];
    row[0] = val;
    sumRow(src.rows()[y], dst[y] + 1, row + 1, roi.width);
  }
  return zebStsOk;
}

template <class S, class Q>
ZebStatus squareTables(Image<const Zeb8u> src, Image<S> sums, Image<Q> squares, ZebiSize roi, S val, Q valSqr) {
  if (auto bad = checked(roi, src, sums.wider(1), squares.wider(1))) return bad;
  const Rows<S> dst = sums;
  const Rows<Q> sqr = squares;
  fillRow(dst[0], roi.width + 1, val);
  fillRow(sqr[0], roi.width + 1, valSqr);
  for (int y = 0; y < roi.height; ++y) {
    dst[y + 1][0] = val;
    sqr[y + 1][0] = valSqr;
    sumRow(src.rows()[y], dst[y] + 1, dst[y + 1] + 1, roi.width);
    squareRow(src.rows()[y], sqr[y] + 1, sqr[y + 1] + 1, roi.width);
  }
  return zebStsOk;
}

}  // namespace

#define INTEGRAL(name, S)                                                           \
  ZEB_ENTRY(name)                                                                   \
  (const Zeb8u* pSrc, int srcStep, S* pDst, int dstStep, ZebiSize roiSize, S val) { \
    return sumTable<S>(image(pSrc, srcStep), image(pDst, dstStep), roiSize, val);   \
  }
#define SQR_INTEGRAL(name, S, Q)                                                                                       \
  ZEB_ENTRY(name)                                                                                                      \
  (const Zeb8u* pSrc, int srcStep, S* pDst, int dstStep, Q* pSqr, int sqrStep, ZebiSize roiSize, S val, Q valSqr) {    \
    return squareTables<S, Q>(image(pSrc, srcStep), image(pDst, dstStep), image(pSqr, sqrStep), roiSize, val, valSqr); \
  }

INTEGRAL(zebiIntegral_8u32s_C1R, Zeb32s)
INTEGRAL(zebiIntegral_8u32f_C1R, Zeb32f)
SQR_INTEGRAL(zebiSqrIntegral_8u32s_C1R, Zeb32s, Zeb32s)
SQR_INTEGRAL(zebiSqrIntegral_8u32s64f_C1R, Zeb32s, Zeb64f)
SQR_INTEGRAL(zebiSqrIntegral_8u32f64f_C1R, Zeb32f, Zeb64f)
