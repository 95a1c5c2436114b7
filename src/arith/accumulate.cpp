// Accumulation into a float image: sums, sums of squares and products, running averages.
//
//   Add          acc = acc + s
//   AddSquare    acc = s s + acc            one rounding
//   AddProduct   acc = s1 s2 + acc          one rounding
//   AddWeighted  acc = (s - acc) alpha + acc  the difference rounded, then one rounding
#include "core/checks.h"
#include "core/entry.h"
#include "core/lanes.h"
#include "core/rows.h"
#include "core/streaming.h"

namespace {

using namespace zeb;

// ---- Row kernels ----

struct Add {
  ZEB_INLINE V32f operator()(V32f acc, V32f s) const { return acc + s; }
};
struct AddSquare {
  ZEB_INLINE V32f operator()(V32f acc, V32f s) const { return fma(s, s, acc); }
};
struct AddProduct {
  ZEB_INLINE V32f operator()(V32f acc, V32f s1, V32f s2) const { return fma(s1, s2, acc); }
};
struct AddWeighted {
  V32f alpha;
  ZEB_INLINE V32f operator()(V32f acc, V32f s) const { return fma(s - acc, alpha, acc); }
};

// Reads one or two sources of type T and updates n pixels. The operation comes by value: behind a reference its
// constants would be loaded again after every store.
template <class Op, class... T>
void accumulateRow(const Op op, Zeb32f* acc, int n, const T*... src) {
  int i = 0;
  for (; i <= n - 16; i += 16) {
    fetchAhead(acc, i, n);
    (fetchAhead(src, i, n), ...);
    const V32f first = op(loadOnce(acc + i), loadAsFloat(src + i)...);
    const V32f second = op(loadOnce(acc + i + 8), loadAsFloat(src + i + 8)...);
    store(acc + i, first);
    store(acc + i + 8, second);
  }
  if (i <= n - 8) {
    store(acc + i, op(load(acc + i), loadAsFloat(src + i)...));
    i += 8;
  }
  if (i < n) storeN(acc + i, op(loadN(acc + i, n - i), loadAsFloatN(src + i, n - i)...), n - i);
}

// The same where the mask byte is not zero; the other pixels keep their bits.
template <class Op, class... T>
void accumulateMaskedRow(const Op op, Zeb32f* acc, int n, const Zeb8u* mask, const T*... src) {
  int i = 0;
  for (; i <= n - 8; i += 8) {
    fetchAhead(acc, i, n);
    const V32f old = loadOnce(acc + i);
    store(acc + i, select(loadMask(mask + i), op(old, loadAsFloat(src + i)...), old));
  }
  if (i < n) {
    alignas(8) Zeb8u block[8] = {};
    memcpy(block, mask + i, static_cast<size_t>(n - i));
    const V32f old = loadN(acc + i, n - i);
    storeN(acc + i, select(loadMask(block), op(old, loadAsFloatN(src + i, n - i)...), old), n - i);
  }
}

// ---- Regions ----

template <class Op, class... T>
ZebStatus accumulate(const Op& op, ZebiSize roi, Rows<Zeb32f> acc, Rows<const T>... src) {
  const auto row = [&op](Zeb32f* a, const T*... s, int n) { accumulateRow(op, a, n, s...); };
  forEachRow(roi, 1, row, acc, src...);
  return zebStsOk;
}

template <class Op, class... T>
ZebStatus accumulateMasked(const Op& op, ZebiSize roi, Rows<Zeb32f> acc, Rows<const Zeb8u> mask, Rows<const T>... src) {
  const auto row = [&op](Zeb32f* a, const Zeb8u* m, const T*... s, int n) { accumulateMaskedRow(op, a, n, m, s...); };
  forEachRow(roi, 1, row, acc, mask, src...);
  return zebStsOk;
}

// ---- Checks: pointers, size, all minimum steps, then all multiples ----

struct Image {
  const void* pixels;
  int step;
  int elementSize;
};

template <class T>
Image image(const T* pixels, int step) {
  return {pixels, step, static_cast<int>(sizeof(T))};
}

template <class... I>
ZebStatus checked(ZebiSize roi, I... images) {
  if (auto bad = firstFailure(present(images.pixels...), hasArea(roi))) return bad;
  return firstFailure(require(images.step >= static_cast<int64_t>(roi.width) * images.elementSize, zebStsErrStep)...,
                      require(images.step % images.elementSize == 0, zebStsErrNotEvenStep)...);
}

}  // namespace

// ---- Bindings ----

#define ONE_SOURCE(name, T, op, ...)                                                               \
  ZEB_ENTRY(name)                                                                                  \
  (const T* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize __VA_ARGS__) {    \
    if (auto bad = checked(roiSize, image(pSrc, srcStep), image(pSrcDst, srcDstStep))) return bad; \
    return accumulate(op, roiSize, Rows(pSrcDst, srcDstStep), Rows(pSrc, srcStep));                \
  }
#define ONE_SOURCE_MASKED(name, T, op, ...)                                                                      \
  ZEB_ENTRY(name)                                                                                                \
  (const T* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst, int srcDstStep,                \
   ZebiSize roiSize __VA_ARGS__) {                                                                               \
    if (auto bad = checked(roiSize, image(pSrc, srcStep), image(pMask, maskStep), image(pSrcDst, srcDstStep)))   \
      return bad;                                                                                                \
    return accumulateMasked(op, roiSize, Rows(pSrcDst, srcDstStep), Rows(pMask, maskStep), Rows(pSrc, srcStep)); \
  }
#define TWO_SOURCES(name, T)                                                                                           \
  ZEB_ENTRY(name)                                                                                                      \
  (const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize) {    \
    if (auto bad = checked(roiSize, image(pSrc1, src1Step), image(pSrc2, src2Step), image(pSrcDst, srcDstStep)))       \
      return bad;                                                                                                      \
    return accumulate(AddProduct{}, roiSize, Rows(pSrcDst, srcDstStep), Rows(pSrc1, src1Step), Rows(pSrc2, src2Step)); \
  }
#define TWO_SOURCES_MASKED(name, T)                                                                               \
  ZEB_ENTRY(name)                                                                                                 \
  (const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst, \
   int srcDstStep, ZebiSize roiSize) {                                                                            \
    if (auto bad = checked(roiSize, image(pSrc1, src1Step), image(pSrc2, src2Step), image(pMask, maskStep),       \
                           image(pSrcDst, srcDstStep)))                                                           \
      return bad;                                                                                                 \
    return accumulateMasked(AddProduct{}, roiSize, Rows(pSrcDst, srcDstStep), Rows(pMask, maskStep),              \
                            Rows(pSrc1, src1Step), Rows(pSrc2, src2Step));                                        \
  }
#define COMMA_ALPHA , Zeb32f alpha

ONE_SOURCE(zebiAdd_8u32f_C1IR, Zeb8u, Add{})
ONE_SOURCE(zebiAdd_8s32f_C1IR, Zeb8s, Add{})
ONE_SOURCE_MASKED(zebiAdd_8u32f_C1IMR, Zeb8u, Add{})
ONE_SOURCE_MASKED(zebiAdd_8s32f_C1IMR, Zeb8s, Add{})
ONE_SOURCE_MASKED(zebiAdd_16u32f_C1IMR, Zeb16u, Add{})
ONE_SOURCE_MASKED(zebiAdd_32f_C1IMR, Zeb32f, Add{})

// The source's multiple is tested before the accumulator's minimum, and that minimum is 2 x width bytes: callers rely
// on accumulators whose rows overlap.
ZEB_ENTRY(zebiAdd_16u32f_C1IR)
(const Zeb16u* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize) {
  if (auto bad = firstFailure(present(pSrc, pSrcDst), hasArea(roiSize), holdsRow<Zeb16u>(srcStep, roiSize.width),
                              wholeElements<Zeb16u>(srcStep), holdsRow<Zeb16u>(srcDstStep, roiSize.width),
                              wholeElements<Zeb32f>(srcDstStep)))
    return bad;
  return accumulate(Add{}, roiSize, Rows(pSrcDst, srcDstStep), Rows(pSrc, srcStep));
}

ONE_SOURCE(zebiAddSquare_8u32f_C1IR, Zeb8u, AddSquare{})
ONE_SOURCE(zebiAddSquare_8s32f_C1IR, Zeb8s, AddSquare{})
ONE_SOURCE(zebiAddSquare_16u32f_C1IR, Zeb16u, AddSquare{})
ONE_SOURCE(zebiAddSquare_32f_C1IR, Zeb32f, AddSquare{})
ONE_SOURCE_MASKED(zebiAddSquare_8u32f_C1IMR, Zeb8u, AddSquare{})
ONE_SOURCE_MASKED(zebiAddSquare_8s32f_C1IMR, Zeb8s, AddSquare{})
ONE_SOURCE_MASKED(zebiAddSquare_16u32f_C1IMR, Zeb16u, AddSquare{})
ONE_SOURCE_MASKED(zebiAddSquare_32f_C1IMR, Zeb32f, AddSquare{})

TWO_SOURCES(zebiAddProduct_8u32f_C1IR, Zeb8u)
TWO_SOURCES(zebiAddProduct_8s32f_C1IR, Zeb8s)
TWO_SOURCES(zebiAddProduct_16u32f_C1IR, Zeb16u)
TWO_SOURCES(zebiAddProduct_32f_C1IR, Zeb32f)
TWO_SOURCES_MASKED(zebiAddProduct_8u32f_C1IMR, Zeb8u)
TWO_SOURCES_MASKED(zebiAddProduct_8s32f_C1IMR, Zeb8s)
TWO_SOURCES_MASKED(zebiAddProduct_16u32f_C1IMR, Zeb16u)
TWO_SOURCES_MASKED(zebiAddProduct_32f_C1IMR, Zeb32f)

ONE_SOURCE(zebiAddWeighted_8u32f_C1IR, Zeb8u, AddWeighted{splat(alpha)}, COMMA_ALPHA)
ONE_SOURCE(zebiAddWeighted_8s32f_C1IR, Zeb8s, AddWeighted{splat(alpha)}, COMMA_ALPHA)
ONE_SOURCE(zebiAddWeighted_16u32f_C1IR, Zeb16u, AddWeighted{splat(alpha)}, COMMA_ALPHA)
ONE_SOURCE(zebiAddWeighted_32f_C1IR, Zeb32f, AddWeighted{splat(alpha)}, COMMA_ALPHA)
ONE_SOURCE_MASKED(zebiAddWeighted_8u32f_C1IMR, Zeb8u, AddWeighted{splat(alpha)}, COMMA_ALPHA)
ONE_SOURCE_MASKED(zebiAddWeighted_8s32f_C1IMR, Zeb8s, AddWeighted{splat(alpha)}, COMMA_ALPHA)
ONE_SOURCE_MASKED(zebiAddWeighted_16u32f_C1IMR, Zeb16u, AddWeighted{splat(alpha)}, COMMA_ALPHA)
ONE_SOURCE_MASKED(zebiAddWeighted_32f_C1IMR, Zeb32f, AddWeighted{splat(alpha)}, COMMA_ALPHA)

ZEB_ENTRY(zebiAddWeighted_32f_C1R)
(const Zeb32f* pSrc1, int src1Step, const Zeb32f* pSrc2, int src2Step, Zeb32f* pDst, int dstStep, ZebiSize roiSize,
 Zeb32f alpha) {
  if (auto bad = checked(roiSize, image(pSrc1, src1Step), image(pSrc2, src2Step), image(pDst, dstStep))) return bad;
  const AddWeighted op{splat(alpha)};
  const auto row = [&op](const Zeb32f* a, const Zeb32f* b, Zeb32f* d, int n) {
    int i = 0;
    for (; i <= n - 8; i += 8) store(d + i, op(load(b + i), load(a + i)));
    if (i < n) storeN(d + i, op(loadN(b + i, n - i), loadN(a + i, n - i)), n - i);
  };
  forEachRow(roiSize, 1, row, Rows(pSrc1, src1Step), Rows(pSrc2, src2Step), Rows(pDst, dstStep));
  return zebStsOk;
}
