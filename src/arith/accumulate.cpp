// Accumulation into a float image: sums, sums of squares and products, running averages.
//
//   Add          acc = acc + s
//   AddSquare    acc = s s + acc            one rounding
//   AddProduct   acc = s1 s2 + acc          one rounding
//   AddWeighted  acc = (s - acc) alpha + acc  the difference rounded, then one rounding
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"

namespace {

using namespace zeb;

// The accumulator is read once: an operand in memory would be read again in every step. Steps that could meet several
// values that are not numbers keep their operands in order, so that every column answers with the same one.
struct Add {
  ZEB_INLINE V32f operator()(V32f acc, V32f s) const { return acc + s; }
};
struct AddSquare {
  ZEB_INLINE V32f operator()(V32f acc, V32f s) const { return addProductInOrder(acc, s, s); }
};
struct AddProduct {
  ZEB_INLINE V32f operator()(V32f acc, V32f s1, V32f s2) const { return addProductInOrder(acc, s1, s2); }
};
struct AddWeighted {
  V32f alpha;
  ZEB_INLINE V32f operator()(V32f acc, V32f s) const { return fma(s - acc, alpha, acc); }
};

// Reads one or two sources of type T and updates n pixels. The operation comes by value: behind a reference its
// constants would be loaded again after every store.
template <class Op, class... T>
void accumulateRow(const Op op, Zeb32f* acc, int n, const T*... src) {
  const auto body = [=](int x, auto part) ZEB_BODY {
    V32f old = part.from(acc + x);
    settle(old);
    part.to(acc + x, op(old, part.floats(src + x)...));
  };
  forVectorsAhead<8>(n, body, acc, src...);
}

// The same where the mask byte is not zero; the other pixels keep their bits.
template <class Op, class... T>
void accumulateMaskedRow(const Op op, Zeb32f* acc, int n, const Zeb8u* mask, const T*... src) {
  const auto body = [=](int x, auto part) ZEB_BODY {
    V32f old = part.from(acc + x);
    settle(old);
    part.to(acc + x, select(part.selected(mask + x), op(old, part.floats(src + x)...), old));
  };
  forVectorsAhead<8>(n, body, acc);
}

template <class Op, class... T>
ZebStatus accumulate(const Op& op, ZebiSize roi, Image<Zeb32f> acc, Image<T>... src) {
  if (auto bad = checked(roi, src..., acc)) return bad;
  const auto row = [&op](Zeb32f* a, const T*... s, int n) { accumulateRow(op, a, n, s...); };
  forEachRow(roi, row, acc, src...);
  return zebStsOk;
}

template <class Op, class... T>
ZebStatus accumulateMasked(const Op& op, ZebiSize roi, Image<Zeb32f> acc, Image<const Zeb8u> mask, Image<T>... src) {
  if (auto bad = checked(roi, src..., mask, acc)) return bad;
  const auto row = [&op](Zeb32f* a, const Zeb8u* m, const T*... s, int n) { accumulateMaskedRow(op, a, n, m, s...); };
  forEachRow(roi, row, acc, mask, src...);
  return zebStsOk;
}

}  // namespace

// ---- Bindings ----

#define ONE_SOURCE(name, T, op, ...)                                                            \
  ZEB_ENTRY(name)                                                                               \
  (const T* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize __VA_ARGS__) { \
    return accumulate(op, roiSize, image(pSrcDst, srcDstStep), image(pSrc, srcStep));           \
  }
#define ONE_SOURCE_MASKED(name, T, op, ...)                                                                         \
  ZEB_ENTRY(name)                                                                                                   \
  (const T* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst, int srcDstStep,                   \
   ZebiSize roiSize __VA_ARGS__) {                                                                                  \
    return accumulateMasked(op, roiSize, image(pSrcDst, srcDstStep), image(pMask, maskStep), image(pSrc, srcStep)); \
  }
#define TWO_SOURCES(name, T)                                                                                        \
  ZEB_ENTRY(name)                                                                                                   \
  (const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize) { \
    return accumulate(AddProduct{}, roiSize, image(pSrcDst, srcDstStep), image(pSrc1, src1Step),                    \
                      image(pSrc2, src2Step));                                                                      \
  }
#define TWO_SOURCES_MASKED(name, T)                                                                               \
  ZEB_ENTRY(name)                                                                                                 \
  (const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Zeb8u* pMask, int maskStep, Zeb32f* pSrcDst, \
   int srcDstStep, ZebiSize roiSize) {                                                                            \
    return accumulateMasked(AddProduct{}, roiSize, image(pSrcDst, srcDstStep), image(pMask, maskStep),            \
                            image(pSrc1, src1Step), image(pSrc2, src2Step));                                      \
  }
#define COMMA_ALPHA , Zeb32f alpha

ONE_SOURCE(zebiAdd_8u32f_C1IR, Zeb8u, Add{})
ONE_SOURCE(zebiAdd_8s32f_C1IR, Zeb8s, Add{})
ONE_SOURCE_MASKED(zebiAdd_8u32f_C1IMR, Zeb8u, Add{})
ONE_SOURCE_MASKED(zebiAdd_8s32f_C1IMR, Zeb8s, Add{})
ONE_SOURCE_MASKED(zebiAdd_16u32f_C1IMR, Zeb16u, Add{})
ONE_SOURCE_MASKED(zebiAdd_32f_C1IMR, Zeb32f, Add{})

// The source's multiple is tested before the accumulator's minimum, and that minimum is 2 x width bytes, so that rows
// of the accumulator may overlap.
ZEB_ENTRY(zebiAdd_16u32f_C1IR)
(const Zeb16u* pSrc, int srcStep, Zeb32f* pSrcDst, int srcDstStep, ZebiSize roiSize) {
  const auto src = image(pSrc, srcStep);
  if (auto bad = firstFailure(checked(roiSize, src, also(pSrcDst)),
                              require(srcDstStep >= int64_t{roiSize.width} * 2, zebStsErrStep)))
    return bad;
  return accumulate(Add{}, roiSize, image(pSrcDst, srcDstStep).wider(-int64_t{roiSize.width}), src);
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
  const auto src1 = image(pSrc1, src1Step), src2 = image(pSrc2, src2Step);
  const auto dst = image(pDst, dstStep);
  if (auto bad = checked(roiSize, src1, src2, dst)) return bad;
  const AddWeighted op{splat(alpha)};
  forEachRow(
      roiSize, [&op](const Zeb32f* a, const Zeb32f* b, Zeb32f* d, int n) { mapRow(op, d, n, b, a); }, src1, src2, dst);
  return zebStsOk;
}
