// Evaluation of a stage of a Haar cascade at the live pixels of a mask.
//
// Eight neighbouring pixels are evaluated together when enough of them are alive; masked loads then leave the tables
// alone under the dead ones. Lone live pixels are evaluated one at a time, with the same steps in the same order.
#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/services.h"
#include "core/widen.h"
#include "feature/haar_state.h"

namespace {

using namespace zeb;

// ---- Vectors ----

// Whether eight bytes are all 0.
ZEB_INLINE bool allZero8(const Zeb8u* p) {
  const __m128i a = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return _mm_testz_si128(a, a);
}

// Where the corners of a rectangle lie from a pixel, in elements of its table.
struct Offsets {
  int at[4];
};

// The tables of one row of pixels: upright and tilted (the same one twice for the plain functions).
template <class S>
struct Tables {
  const S* row[2];
  const S* of(const ZebiHaarClassifier& state, const HaarClassifierRecord& c, bool mixed) const {
    return row[mixed && isTilted(state, c)];
  }
};

// ---- Rectangle sums ----

Zeb32f rectangleSum(const Zeb32s* s, const Offsets& o) {
  return static_cast<Zeb32f>(static_cast<Zeb32s>(static_cast<unsigned>(s[o.at[0]]) - static_cast<unsigned>(s[o.at[1]]) -
                                                 static_cast<unsigned>(s[o.at[2]]) +
                                                 static_cast<unsigned>(s[o.at[3]])));
}
Zeb32f rectangleSum(const Zeb32f* s, const Offsets& o) {
  return s[o.at[0]] - s[o.at[1]] - s[o.at[2]] + s[o.at[3]];
}

ZEB_INLINE V32f asFloat(V32s a) {
  return toFloat(a);
}
ZEB_INLINE V32f asFloat(V32f a) {
  return a;
}

struct AllLanes {
  template <class T>
  ZEB_INLINE Vec<T> load(const T* p) const {
    return zeb::load(p);
  }
};
struct LiveLanes {
  V32s live;
  template <class T>
  ZEB_INLINE Vec<T> load(const T* p) const {
    return loadWhere(p, live);
  }
};

// ---- One stage at one pixel, and at eight ----

template <class S>
Zeb32f stageSum(const ZebiHaarClassifier& state, const Offsets* offsets, bool mixed, const Tables<S>& tables, int x,
                Zeb32f norm) {
  Zeb32f sum = 0;
  for (int i = 0; i < state.length; ++i) {
    const HaarClassifierRecord& c = state.classifiers[i];
    const S* s = tables.of(state, c, mixed) + x;
    Zeb32f t = 0;
    for (int k = 0; k < c.count; ++k) t = t + c.rectangles[k].weight.f * rectangleSum(s, *offsets++);
    sum += t < norm * c.threshold.f ? c.value1.f : c.value2.f;
  }
  return sum;
}

template <class S, class Lanes>
ZEB_INLINE V32f stageSums(const ZebiHaarClassifier& state, const Offsets* offsets, bool mixed, const Tables<S>& tables,
                          int x, const Lanes lanes, V32f norm) {
  V32f sum = splat(0.0f);
  for (int i = 0; i < state.length; ++i) {
    const HaarClassifierRecord& c = state.classifiers[i];
    const S* s = tables.of(state, c, mixed) + x;
    V32f t = splat(0.0f);
    const HaarRectangle* r = c.rectangles;
    for (int k = c.count; k > 0; --k, ++r, ++offsets) {
      const Vec<S> area = lanes.load(s + offsets->at[0]) - lanes.load(s + offsets->at[1]) -
                          lanes.load(s + offsets->at[2]) + lanes.load(s + offsets->at[3]);
      t = t + splat(r->weight.f) * asFloat(area);
    }
    sum = sum + select(less(t, norm * splat(c.threshold.f)), splat(c.value1.f), splat(c.value2.f));
  }
  return sum;
}

// From this many live pixels of eight on, the vector form is faster than one pixel at a time.
constexpr int liveForVector = 2;

template <class S>
int applyRow(const ZebiHaarClassifier& state, const Offsets* offsets, bool mixed, const Tables<S>& tables,
             const Zeb32f* norm, Zeb8u* mask, int width, Zeb32f threshold) {
  int count = 0;
  const auto one = [&](int x) {
    if (threshold > stageSum(state, offsets, mixed, tables, x, norm[x])) {
      mask[x] = 0;
    } else {
      ++count;
    }
  };
  int x = 0;
  for (; x <= width - 8; x += 8) {
    if (allZero8(mask + x)) continue;
    const V32s live = loadMask(mask + x);
    const unsigned bits = topBits(live);
    if (__builtin_popcount(bits) < liveForVector) {
      for (unsigned b = bits; b; b &= b - 1) one(x + __builtin_ctz(b));
      continue;
    }
    const V32f sums = bits == 0xFF
                          ? stageSums(state, offsets, mixed, tables, x, AllLanes{}, load(norm + x))
                          : stageSums(state, offsets, mixed, tables, x, LiveLanes{live}, loadWhere(norm + x, live));
    unsigned failed = topBits(greater(splat(threshold), sums)) & bits;
    count += __builtin_popcount(bits & ~failed);
    for (; failed; failed &= failed - 1) mask[x + __builtin_ctz(failed)] = 0;
  }
  for (; x < width; ++x)
    if (mask[x]) one(x);
  return count;
}

// ---- Scaled integers ----

// v x 2^-shift, rounded to nearest even; saturates where a negative shift leaves 64 bits.
int64_t scaled(int64_t v, int shift) {
  if (shift <= 0) {
    for (; shift < 0 && v != 0; ++shift) {
      if (v > INT64_MAX / 2) return INT64_MAX;
      if (v < INT64_MIN / 2) return INT64_MIN;
      v *= 2;
    }
    return v;
  }
  if (shift > 63) return 0;
  const int64_t floor = v >> shift;
  const uint64_t rest = static_cast<uint64_t>(v) - (static_cast<uint64_t>(floor) << shift);
  const uint64_t half = uint64_t{1} << (shift - 1);
  return floor + (rest > half || (rest == half && (floor & 1)) ? 1 : 0);
}

bool fails(const ZebiHaarClassifier& state, const Offsets* offsets, bool mixed, const Tables<Zeb32s>& tables, int x,
           Zeb32s norm, Zeb32s threshold, int scaleFactor) {
  int64_t sum = 0;
  for (int i = 0; i < state.length; ++i) {
    const HaarClassifierRecord& c = state.classifiers[i];
    const Zeb32s* s = tables.of(state, c, mixed) + x;
    uint64_t t = 0;
    for (int k = 0; k < c.count; ++k, ++offsets) {
      const auto area =
          static_cast<Zeb32s>(static_cast<unsigned>(s[offsets->at[0]]) - static_cast<unsigned>(s[offsets->at[1]]) -
                              static_cast<unsigned>(s[offsets->at[2]]) + static_cast<unsigned>(s[offsets->at[3]]));
      t += static_cast<uint64_t>(static_cast<int64_t>(c.rectangles[k].weight.s) * area);
    }
    const int64_t limit = static_cast<int64_t>(norm) * c.threshold.s;
    sum += scaled(static_cast<int64_t>(t), scaleFactor) < limit ? c.value1.s : c.value2.s;
  }
  return threshold > sum;
}

// ---- Whole stages ----

// The corner offsets of every rectangle in the order of evaluation, for tables of these steps (in elements).
void fillOffsets(const ZebiHaarClassifier& state, bool mixed, int step, int tiltStep, Offsets* offsets) {
  for (int i = 0; i < state.length; ++i) {
    const HaarClassifierRecord& c = state.classifiers[i];
    const int64_t elements = mixed && isTilted(state, c) ? tiltStep : step;
    for (int k = 0; k < c.count; ++k, ++offsets)
      for (int e = 0; e < 4; ++e)
        offsets->at[e] = static_cast<int>(c.rectangles[k].corner[e].y * elements + c.rectangles[k].corner[e].x);
  }
}

template <class S, class N>
struct Call {
  const S* pSrc;
  int srcStep;
  const S* pTilt;
  int tiltStep;
  const N* pNorm;
  int normStep;
  Zeb8u* pMask;
  int maskStep;
  ZebiSize roi;
  int* pPositive;
  const ZebiHaarClassifier* pState;
  bool mixed;
};

// Checks, allocates the offsets, and calls row(tables, norm, mask, offsets) for the number of pixels that pass in a
// row.
template <class S, class N, class Row>
ZebStatus apply(const Call<S, N>& call, Row row) {
  const auto src = image(call.pSrc, call.srcStep), tilt = image(call.pTilt, call.tiltStep);
  const auto norm = image(call.pNorm, call.normStep);
  const auto mask = image(call.pMask, call.maskStep);
  if (auto bad = checked(call.roi, src, tilt, norm, mask, also(call.pPositive, call.pState))) return bad;
  if (auto bad = isStage(call.pState)) return bad;
  Offsets* offsets = nullptr;
  if (call.pState->rectangles > 0) {
    if (call.pState->rectangles > INT32_MAX / static_cast<int>(sizeof(Offsets))) return zebStsErrMemAlloc;
    offsets = reinterpret_cast<Offsets*>(zebsMalloc_32s(4 * call.pState->rectangles));
    if (!offsets) return zebStsErrMemAlloc;
    fillOffsets(*call.pState, call.mixed, call.srcStep / 4, call.tiltStep / 4, offsets);
  }
  int count = 0;
  for (int y = 0; y < call.roi.height; ++y)
    count += row(Tables<S>{{src.rows()[y], tilt.rows()[y]}}, norm.rows()[y], mask.rows()[y], offsets);
  zebsFree(offsets);
  *call.pPositive = count;
  return zebStsOk;
}

template <class S>
ZebStatus applyFloat(const Call<S, Zeb32f>& call, Zeb32f threshold) {
  return apply(call, [&](const Tables<S>& tables, const Zeb32f* norm, Zeb8u* mask, const Offsets* offsets) {
    return applyRow(*call.pState, offsets, call.mixed, tables, norm, mask, call.roi.width, threshold);
  });
}

ZebStatus applyScaled(const Call<Zeb32s, Zeb32s>& call, Zeb32s threshold, int scaleFactor) {
  return apply(call, [&](const Tables<Zeb32s>& tables, const Zeb32s* norm, Zeb8u* mask, const Offsets* offsets) {
    int count = 0;
    for (int x = 0; x < call.roi.width; ++x) {
      if (!mask[x]) continue;
      if (fails(*call.pState, offsets, call.mixed, tables, x, norm[x], threshold, scaleFactor)) {
        mask[x] = 0;
      } else {
        ++count;
      }
    }
    return count;
  });
}

}  // namespace

#define APPLY(name, S)                                                                                          \
  ZEB_ENTRY(name)                                                                                               \
  (const S* pSrc, int srcStep, const Zeb32f* pNorm, int normStep, Zeb8u* pMask, int maskStep, ZebiSize roiSize, \
   int* pPositive, Zeb32f threshold, const ZebiHaarClassifier* pState) {                                        \
    return applyFloat(Call<S, Zeb32f>{pSrc, srcStep, pSrc, srcStep, pNorm, normStep, pMask, maskStep, roiSize,  \
                                      pPositive, pState, false},                                                \
                      threshold);                                                                               \
  }
#define APPLY_MIXED(name, S)                                                                                     \
  ZEB_ENTRY(name)                                                                                                \
  (const S* pSrc, int srcStep, const S* pTilt, int tiltStep, const Zeb32f* pNorm, int normStep, Zeb8u* pMask,    \
   int maskStep, ZebiSize roiSize, int* pPositive, Zeb32f threshold, const ZebiHaarClassifier* pState) {         \
    return applyFloat(Call<S, Zeb32f>{pSrc, srcStep, pTilt, tiltStep, pNorm, normStep, pMask, maskStep, roiSize, \
                                      pPositive, pState, true},                                                  \
                      threshold);                                                                                \
  }

APPLY(zebiApplyHaarClassifier_32f_C1R, Zeb32f)
APPLY(zebiApplyHaarClassifier_32s32f_C1R, Zeb32s)
APPLY_MIXED(zebiApplyMixedHaarClassifier_32f_C1R, Zeb32f)
APPLY_MIXED(zebiApplyMixedHaarClassifier_32s32f_C1R, Zeb32s)

ZEB_ENTRY(zebiApplyHaarClassifier_32s_C1RSfs)
(const Zeb32s* pSrc, int srcStep, const Zeb32s* pNorm, int normStep, Zeb8u* pMask, int maskStep, ZebiSize roiSize,
 int* pPositive, Zeb32s threshold, const ZebiHaarClassifier* pState, int scaleFactor) {
  return applyScaled(
      {pSrc, srcStep, pSrc, srcStep, pNorm, normStep, pMask, maskStep, roiSize, pPositive, pState, false}, threshold,
      scaleFactor);
}
ZEB_ENTRY(zebiApplyMixedHaarClassifier_32s_C1RSfs)
(const Zeb32s* pSrc, int srcStep, const Zeb32s* pTilt, int tiltStep, const Zeb32s* pNorm, int normStep, Zeb8u* pMask,
 int maskStep, ZebiSize roiSize, int* pPositive, Zeb32s threshold, const ZebiHaarClassifier* pState, int scaleFactor) {
  return applyScaled(
      {pSrc, srcStep, pTilt, tiltStep, pNorm, normStep, pMask, maskStep, roiSize, pPositive, pState, true}, threshold,
      scaleFactor);
}
