// Exact Euclidean distance transform.
//
// Columns: the number of rows to the nearest feature of the column, downwards, then upwards. Rows: the lower envelope
// of the parabolas (x - q)^2 + g(q)^2 over the columns q. Squares are integers throughout, so the result is the
// single-precision number nearest to the true distance, in an image of any size.
//
// T. Hirata, A unified linear-time algorithm for computing distance maps (1996); A. Meijster, J. Roerdink, W.
// Hesselink, A general algorithm for computing distance transforms in linear time (2000); P. Felzenszwalb, D.
// Huttenlocher, Distance transforms of sampled functions (2012).
#include <math.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/narrow.h"
#include "core/scratch.h"
#include "core/widen.h"

namespace {

using namespace zeb;

// ---- Vectors ----

ZEB_INLINE V32s laneNumbers() {
  return {_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)};
}
// A lane that holds the least value.
ZEB_INLINE int laneOfLeast(V32s a) {
  __m256i m = _mm256_min_epi32(a.v, _mm256_permute2x128_si256(a.v, a.v, 0x01));
  m = _mm256_min_epi32(m, _mm256_shuffle_epi32(m, 0x4E));
  m = _mm256_min_epi32(m, _mm256_shuffle_epi32(m, 0xB1));
  return __builtin_ctz(topBits(equal(a, V32s{m})));
}

// What an image without features holds: the square root of the largest finite float.
constexpr Zeb32f noFeature = 0x1.fffffep+63f;

int64_t bufferBytes(ZebiSize roi) {
  const int64_t side = roi.width > roi.height ? roi.width : roi.height;
  return 24 * ((side + 3) & ~int64_t{3}) + 56;
}

// The counts of rows, in place of the distances: downwards from the nearest feature above, limited to far.
void countDown(const Zeb8u* __restrict src, const Zeb32s* __restrict above, Zeb32s* __restrict d, int n, Zeb32s far) {
  if (!above) {
    for (int x = 0; x < n; ++x) d[x] = src[x] ? far : 0;
    return;
  }
  for (int x = 0; x < n; ++x) {
    const Zeb32s next = above[x] < far ? above[x] + 1 : far;
    d[x] = src[x] ? next : 0;
  }
}
void countUp(const Zeb32s* __restrict down, Zeb32s* __restrict up, int n, Zeb32s far) {
  for (int x = 0; x < n; ++x) {
    const Zeb32s next = up[x] < far ? up[x] + 1 : far;
    up[x] = down[x] < next ? down[x] : next;
  }
}

int64_t floorDivide(int64_t a, int64_t b) {
  return a >= 0 ? a / b : -((b - 1 - a) / b);
}

// Images whose squared diagonal stays well below 2^30, so that squares, those of a vector's lanes beyond the row too,
// fit 32 bits.
//
// A parabola that is not above another one at some x stays below it on its own side. So a least parabola of one x
// bounds those of all x to the left from the right and those to the right from the left: least parabolas are found for
// every 16th column first, those of the widest spacing first and the others between them, and the 16 pixels from one to
// the next then look only at the columns between the two. With x^2 taken out of it the parabola is q^2 + g(q)^2 - 2 q
// x: a step in q or x is one addition.
class Narrow {
 public:
  static constexpr Zeb32s far = 1 << 15;  // its square exceeds every squared distance

  static bool serves(ZebiSize roi) {
    return static_cast<int64_t>(roi.width) * roi.width + static_cast<int64_t>(roi.height) * roi.height <
           (1 << 30) - (1 << 20);
  }

  Narrow(int width, Zeb8u* pBuffer, int64_t bytes) : width_(width), groups_((width + group - 1) / group) {
    Scratch scratch(pBuffer, bytes);
    up = scratch.take<Zeb32s>(width, 4);
    height_ = scratch.take<Zeb32s>(int64_t{width} + V32s::lanes, 4);
    least_ = scratch.take<Zeb32s>(groups_ + 1, 4);
    for (int x = 0; x < width; ++x) up[x] = far;
    for (int x = width; x < width + V32s::lanes; ++x) height_[x] = far * far + x * x;
  }

  // The distances of a row from its counts in up.
  void row(Zeb32f* d) {
    for (int x = 0; x < width_; ++x) height_[x] = up[x] * up[x] + x * x;
    findLeast(0, 0, width_ - 1);
    findLeast(groups_, least_[0], width_ - 1);
    int spacing = 1;
    while (2 * spacing < groups_) spacing *= 2;
    for (; spacing > 0; spacing /= 2)
      for (int i = spacing; i < groups_; i += 2 * spacing)
        findLeast(i, least_[i - spacing], least_[i + spacing < groups_ ? i + spacing : groups_]);
    for (int i = 0; i < groups_; ++i) putGroup(d, i);
  }

  Zeb32s* up;

 private:
  static constexpr int group = 2 * V32s::lanes;
  static constexpr Zeb32s mostExact = 1 << 24;  // single precision holds every integer up to this one

  // least_[i] becomes a column between first and last whose parabola is least at the start of group i; the last entry
  // is for the last pixel. No column is farther away than the feature in the pixel's own column.
  void findLeast(int i, int first, int last) {
    const int x = i < groups_ ? i * group : width_ - 1;
    const int reach = up[x];
    int q = x - reach > first ? x - reach : first;
    const int end = x + reach < last ? x + reach : last;
    V32s value = load(height_ + q) - splat(2 * x) * (splat(q) + laneNumbers());
    if (end < q + V32s::lanes) {
      least_[i] = q + laneOfLeast(value);
      return;
    }
    const V32s change = splat(2 * x * V32s::lanes);
    V32s slope = splat(2 * x) * (splat(q) + laneNumbers()), column = splat(q), best = column;
    while (q <= end - V32s::lanes) {
      q += V32s::lanes;
      slope = slope + change;
      column = column + splat(V32s::lanes);
      const V32s next = load(height_ + q) - slope;
      best = select(greater(value, next), column, best);
      value = min(value, next);
    }
    const int lane = laneOfLeast(value);
    alignas(32) Zeb32s columns[V32s::lanes];
    store(columns, best);
    least_[i] = columns[lane] + lane;
  }

  ZEB_INLINE void putGroup(Zeb32f* d, int i) const {
    const int x0 = i * group;
    const V32s a = splat(x0) + laneNumbers(), b = a + splat(V32s::lanes);
    int q = least_[i];
    const int last = least_[i + 1];
    V32s slopeA = (a + a) * splat(q), slopeB = (b + b) * splat(q);
    V32s leastA = splat(height_[q]) - slopeA, leastB = splat(height_[q]) - slopeB;
    while (q < last) {
      ++q;
      slopeA = slopeA + (a + a);
      slopeB = slopeB + (b + b);
      const V32s height = splat(height_[q]);
      leastA = min(leastA, height - slopeA);
      leastB = min(leastB, height - slopeB);
    }
    const int n = width_ - x0;
    put(d + x0, leastA + a * a, n);
    if (n > V32s::lanes) put(d + x0 + V32s::lanes, leastB + b * b, n - V32s::lanes);
  }
  ZEB_INLINE void put(Zeb32f* d, V32s squares, int n) const {
    V32f root;
    if (!topBits(greater(squares, splat(mostExact)))) {
      root = sqrt(toFloat(squares));
    } else {
      root = narrowToFloat(sqrt(lowToDouble(squares)), sqrt(highToDouble(squares)));
    }
    if (n >= V32s::lanes) {
      store(d, root);
    } else {
      storeN(d, root, n);
    }
  }

  int width_, groups_;
  Zeb32s* height_;  // of the parabola of every column, at x = 0
  Zeb32s* least_;
};

// Any image: 64-bit squares, roots rounded once from the 64 bits of the extended format.
class Wide {
 public:
  static constexpr Zeb32s far = 1 << 30;

  Wide(int width, Zeb8u* pBuffer, int64_t bytes) : width_(width) {
    Scratch scratch(pBuffer, bytes);
    up = scratch.take<Zeb32s>(width, 4);
    apex_ = scratch.take<Zeb32s>(width, 4);
    bound_ = scratch.take<Zeb32s>(int64_t{width} + 1, 4);
    for (int x = 0; x < width; ++x) up[x] = far;
  }

  void row(Zeb32f* d) {
    int count = 0;
    for (int q = 0; q < width_; ++q) {
      if (up[q] == far) continue;
      int bound = -1;
      while (count > 0) {
        const int p = apex_[count - 1];
        const int64_t rise = square(up[q]) - square(up[p]) + square(q) - square(p);
        const int64_t meeting = floorDivide(rise, 2 * (static_cast<int64_t>(q) - p));
        bound = static_cast<int>(meeting < -1 ? -1 : meeting > width_ ? width_ : meeting);
        if (bound > bound_[count - 1]) break;
        --count;
      }
      if (count == 0) bound = -1;
      if (bound >= width_ - 1) continue;
      apex_[count] = q;
      bound_[count++] = bound;
    }
    bound_[count] = width_ - 1;
    for (int i = 0; i < count; ++i)
      for (int x = bound_[i] + 1; x <= bound_[i + 1]; ++x) {
        const int64_t squares = square(static_cast<int64_t>(x) - apex_[i]) + square(up[apex_[i]]);
        d[x] = static_cast<Zeb32f>(__builtin_sqrtl(static_cast<long double>(squares)));
      }
  }

  Zeb32s* up;

 private:
  static int64_t square(int64_t v) { return v * v; }

  int width_;
  Zeb32s *apex_, *bound_;
};

template <class Size>
void transform(Rows<const Zeb8u> src, Rows<Zeb32f> dst, ZebiSize roi, Size& rows) {
  const auto counts = [dst](int y) { return reinterpret_cast<Zeb32s*>(dst[y]); };
  const int n = roi.width, last = roi.height - 1;
  for (int y = 0; y <= last; ++y) countDown(src[y], y ? counts(y - 1) : nullptr, counts(y), n, Size::far);
  // A feature anywhere leaves a count in the last row.
  bool any = false;
  for (int x = 0; x < n; ++x) any |= counts(last)[x] < Size::far;
  if (!any) {
    for (int y = 0; y <= last; ++y)
      for (int x = 0; x < n; ++x) dst[y][x] = noFeature;
    return;
  }
  for (int y = last; y >= 0; --y) {
    countUp(counts(y), rows.up, n, Size::far);
    rows.row(dst[y]);
  }
}

}  // namespace

ZEB_ENTRY(zebiTrueDistanceTransformGetBufferSize_8u32f_C1R)(ZebiSize roiSize, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roiSize))) return bad;
  return reportSize(bufferBytes(roiSize), pBufferSize);
}

ZEB_ENTRY(zebiTrueDistanceTransform_8u32f_C1R)
(const Zeb8u* pSrc, int srcStep, Zeb32f* pDst, int dstStep, ZebiSize roiSize, Zeb8u* pBuffer) {
  if (auto bad = firstFailure(checked(roiSize, image(pSrc, srcStep), image(pDst, dstStep), also(pBuffer)),
                              require(bufferBytes(roiSize) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  const Rows src(pSrc, srcStep);
  const Rows dst(pDst, dstStep);
  if (Narrow::serves(roiSize)) {
    Narrow rows(roiSize.width, pBuffer, bufferBytes(roiSize));
    transform(src, dst, roiSize, rows);
  } else {
    Wide rows(roiSize.width, pBuffer, bufferBytes(roiSize));
    transform(src, dst, roiSize, rows);
  }
  return zebStsOk;
}
