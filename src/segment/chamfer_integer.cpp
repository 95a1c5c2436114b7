// Chamfer transforms with integer weights, 8u and 16u.
//
// Of the neighbours that a pass has visited only the one beside the pixel lies in its own row. So a vector of pixels
// takes its candidates from the rows above at once, and the chain along the row, d(x) = min over i <= x of
// candidate(i) + a (x - i), is a minimum over shifts by 1, 2, 4, ... places. Saturating sums of positive weights may be
// regrouped freely, the result is that of the pixel by pixel pass.
//
// In the registers stand complements, largest - d: zeros that a shift moves in are then infinite distances, sums become
// saturating differences and minima maxima.
//
// G. Borgefors, Distance transformations in digital images (1986).
#include <limits>

#include "core/entry.h"
#include "core/widen.h"
#include "segment/chamfer.h"

namespace {

using namespace zeb;

// ---- Vectors ----

// Elements moved by n places to higher or lower positions; zeros move in.
template <int n, class T>
ZEB_INLINE Vec<T> shiftUpInHalves(Vec<T> a) {
  return as<T>(V8u{_mm256_bslli_epi128(bits(a.v), n * static_cast<int>(sizeof(T)))});
}
template <int n, class T>
ZEB_INLINE Vec<T> shiftDownInHalves(Vec<T> a) {
  return as<T>(V8u{_mm256_bsrli_epi128(bits(a.v), n * static_cast<int>(sizeof(T)))});
}
// The low half in the place of the high one, or the other way round; zeros in the half that is left.
template <class T>
ZEB_INLINE Vec<T> lowHalfUp(Vec<T> a) {
  return as<T>(V8u{_mm256_permute2x128_si256(bits(a.v), bits(a.v), 0x08)});
}
template <class T>
ZEB_INLINE Vec<T> highHalfDown(Vec<T> a) {
  return as<T>(V8u{_mm256_permute2x128_si256(bits(a.v), bits(a.v), 0x81)});
}
// The last or first element of each half, or of the vector, everywhere.
ZEB_INLINE V8u repeatLastOfHalves(V8u a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_set1_epi8(15))};
}
ZEB_INLINE V16u repeatLastOfHalves(V16u a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_set1_epi16(0x0F0E))};
}
ZEB_INLINE V8u repeatFirstOfHalves(V8u a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_setzero_si256())};
}
ZEB_INLINE V16u repeatFirstOfHalves(V16u a) {
  return {_mm256_shuffle_epi8(a.v, _mm256_set1_epi16(0x0100))};
}
template <class T>
ZEB_INLINE Vec<T> repeatLast(Vec<T> a) {
  return repeatLastOfHalves(as<T>(V8u{_mm256_permute4x64_epi64(bits(a.v), 0xFF)}));
}
template <class T>
ZEB_INLINE Vec<T> repeatFirst(Vec<T> a) {
  return repeatFirstOfHalves(as<T>(V8u{_mm256_permute4x64_epi64(bits(a.v), 0x00)}));
}

enum class Way { forward, backward };

template <class T>
T weight(int64_t w) {
  constexpr int64_t largest = std::numeric_limits<T>::max();
  return static_cast<T>(w < largest ? w : largest);
}

template <class T, int mask>
class Chamfer {
  using V = Vec<T>;
  static constexpr int lanes = V::lanes;
  static constexpr int reach = mask / 2;

 public:
  explicit Chamfer(const Zeb32s* w)
      : straight_(splat(weight<T>(w[0]))),
        diagonal_(splat(weight<T>(w[1]))),
        knight_(splat(weight<T>(mask == 5 ? w[2] : 1))),
        two_(splat(weight<T>(2 * int64_t{w[0]}))),
        four_(splat(weight<T>(4 * int64_t{w[0]}))),
        eight_(splat(weight<T>(8 * int64_t{w[0]}))),
        vector_(splat(weight<T>(lanes * int64_t{w[0]}))) {
    T up[lanes], down[lanes];
    for (int i = 0; i < lanes; ++i) {
      up[i] = weight<T>((i + 1) * int64_t{w[0]});
      down[lanes - 1 - i] = up[i];
    }
    rise_ = load(up);
    fall_ = load(down);
  }

  void transform(Rows<const Zeb8u> src, Rows<T> dst, ZebiSize roi) const {
    for (int y = 0; y < roi.height; ++y)
      row<Way::forward>(src[y], dst[y], y >= 1 ? dst[y - 1] : nullptr, y >= 2 ? dst[y - 2] : nullptr, roi.width);
    for (int y = roi.height - 1; y >= 0; --y)
      row<Way::backward>(nullptr, dst[y], y + 1 < roi.height ? dst[y + 1] : nullptr,
                         y < roi.height - 2 ? dst[y + 2] : nullptr, roi.width);
  }

 private:
  // A place from which elements -reach..lanes+reach-1 can be read: the row itself, or a copy with infinity outside it.
  struct Window {
    alignas(32) T copy[lanes + 2 * reach];
    ZEB_INLINE const T* of(const T* row, int x, int n) {
      if (x >= reach && x <= n - lanes - reach) return row + x;
      // Beside either end of the row; behind one of 2^31 - 1 pixels a column is no int.
      const unsigned first = static_cast<unsigned>(x) - reach, end = static_cast<unsigned>(n);
      for (unsigned i = 0; i < lanes + 2 * reach; ++i)
        copy[i] = first + i < end ? row[first + i] : std::numeric_limits<T>::max();
      return copy + reach;
    }
  };

  // All ones where the source pixel is a feature.
  static ZEB_INLINE V features(const Zeb8u* src, int count) {
    if constexpr (sizeof(T) == 1) {
      return equal(count >= lanes ? load(src) : loadN(src, count), splat(T(0)));
    } else {
      if (count >= lanes) return equal(as<T>(loadAs16s(src)), splat(T(0)));
      alignas(16) Zeb8u block[lanes] = {};
      memcpy(block, src, static_cast<size_t>(count));
      return equal(as<T>(loadAs16s(block)), splat(T(0)));
    }
  }

  // near is the row above in the order of the pass, far the one above that; null outside the image.
  template <Way way>
  void row(const Zeb8u* src, T* d, const T* near, const T* far, int n) const {
    const V ones = splat(std::numeric_limits<T>::max());
    V carry = splat(T(0));
    const int last = (n - 1) / lanes * lanes;
    for (int left = last; left >= 0; left -= lanes) {
      const int x = way == Way::forward ? last - left : left;
      const int count = n - x < lanes ? n - x : lanes;
      V v;
      if (way == Way::forward) {
        v = ones;
      } else if (count == lanes) {
        v = load(d + x);
      } else {
        Window w;
        v = load(w.of(d, x, n));
      }
      if (near) {
        Window w;
        const T* p = w.of(near, x, n);
        v = min(v, addSat(load(p), straight_));
        v = min(v, addSat(min(load(p - 1), load(p + 1)), diagonal_));
        if (mask == 5) v = min(v, addSat(min(load(p - reach), load(p + reach)), knight_));
      }
      if (mask == 5 && far) {
        Window w;
        const T* p = w.of(far, x, n);
        v = min(v, addSat(min(load(p - 1), load(p + 1)), knight_));
      }
      v = v ^ ones;
      if (way == Way::forward) v = v | features(src + x, count);
      // Behind the last column the rows above have left finite distances; no path leads through them.
      if (way == Way::backward && count < lanes) v = v & firstElements<T>(count);
      v = alongRow<way>(v, carry) ^ ones;
      if (count == lanes) {
        store(d + x, v);
      } else {
        storeN(d + x, v, count);
      }
    }
  }

  // The chain along the row, on complements; carry is the neighbour of the vector's first pixel, everywhere.
  template <Way way>
  ZEB_INLINE V alongRow(V v, V& carry) const {
    if constexpr (way == Way::forward) {
      v = max(v, subSat(shiftUpInHalves<1>(v), straight_));
      v = max(v, subSat(shiftUpInHalves<2>(v), two_));
      v = max(v, subSat(shiftUpInHalves<4>(v), four_));
      if constexpr (sizeof(T) == 1) v = max(v, subSat(shiftUpInHalves<8>(v), eight_));
      // The low half holds 1/2 lanes: its last pixel reaches the high half by 1, 2, ... steps.
      v = max(v, subSat(repeatLastOfHalves(lowHalfUp(v)), highHalfSteps()));
      const V whole = max(v, subSat(carry, rise_));
      carry = max(repeatLast(v), subSat(carry, vector_));
      return whole;
    } else {
      v = max(v, subSat(shiftDownInHalves<1>(v), straight_));
      v = max(v, subSat(shiftDownInHalves<2>(v), two_));
      v = max(v, subSat(shiftDownInHalves<4>(v), four_));
      if constexpr (sizeof(T) == 1) v = max(v, subSat(shiftDownInHalves<8>(v), eight_));
      v = max(v, subSat(repeatFirstOfHalves(highHalfDown(v)), lowHalfSteps()));
      const V whole = max(v, subSat(carry, fall_));
      carry = max(repeatFirst(v), subSat(carry, vector_));
      return whole;
    }
  }
  ZEB_INLINE V highHalfSteps() const { return lowHalfUp(rise_); }
  ZEB_INLINE V lowHalfSteps() const { return highHalfDown(fall_); }

  V straight_, diagonal_, knight_, two_, four_, eight_, vector_;
  V rise_, fall_;  // a straight step times 1, 2, ... lanes, and downwards
};

template <class T, int mask>
ZebStatus transform(const Zeb8u* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, const Zeb32s* pMetrics) {
  if (auto bad = chamferChecks<T, mask>(pSrc, srcStep, pDst, dstStep, roi, pMetrics)) return bad;
  Chamfer<T, mask>(pMetrics).transform(Rows(pSrc, srcStep), Rows(pDst, dstStep), roi);
  return zebStsOk;
}

}  // namespace

#define TRANSFORM(name, T, mask)                                                                     \
  ZEB_ENTRY(name)                                                                                    \
  (const Zeb8u* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, const Zeb32s* pMetrics) { \
    return transform<T, mask>(pSrc, srcStep, pDst, dstStep, roiSize, pMetrics);                      \
  }
#define TRANSFORM_IN_PLACE(name, mask)                                                          \
  ZEB_ENTRY(name)(Zeb8u * pSrcDst, int srcDstStep, ZebiSize roiSize, const Zeb32s* pMetrics) {  \
    return transform<Zeb8u, mask>(pSrcDst, srcDstStep, pSrcDst, srcDstStep, roiSize, pMetrics); \
  }

TRANSFORM(zebiDistanceTransform_3x3_8u_C1R, Zeb8u, 3)
TRANSFORM(zebiDistanceTransform_5x5_8u_C1R, Zeb8u, 5)
TRANSFORM(zebiDistanceTransform_3x3_8u16u_C1R, Zeb16u, 3)
TRANSFORM(zebiDistanceTransform_5x5_8u16u_C1R, Zeb16u, 5)
TRANSFORM_IN_PLACE(zebiDistanceTransform_3x3_8u_C1IR, 3)
TRANSFORM_IN_PLACE(zebiDistanceTransform_5x5_8u_C1IR, 5)
