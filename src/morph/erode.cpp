// Erosion and dilation: states, and the calls of both interfaces.
#include "core/checks.h"
#include "core/entry.h"
#include "core/memory.h"
#include "morph/bits.h"
#include "morph/region.h"

namespace {

using namespace zeb;

// ---- States ----

ZebStatus stateSize(MorphKind kind, int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, int* pSize) {
  if (auto bad = firstFailure(present(pMask), present(pSize), atLeastOne(roiWidth), hasArea(maskSize))) return bad;
  return reportSize(morphStateSize(kind, roiWidth, maskSize), pSize);
}

ZebStatus init(MorphKind kind, int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
               ZebiMorphState* pState) {
  if (auto bad = firstFailure(present(pMask), buildable(roiWidth, maskSize, anchor), present(pState))) return bad;
  return buildState(kind, roiWidth, {pMask, maskSize}, anchor, true, pState);
}

ZebStatus initAlloc(MorphKind kind, int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor,
                    ZebiMorphState** ppState) {
  if (auto bad = firstFailure(present(pMask), present(ppState), buildable(roiWidth, maskSize, anchor))) return bad;
  return newState(kind, roiWidth, {pMask, maskSize}, anchor, true, ppState);
}

ZebStatus borderSize(MorphKind kind, int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize) {
  if (auto bad = firstFailure(present(pSpecSize, pBufferSize), atLeastOne(roiWidth), hasArea(maskSize))) return bad;
  const int64_t spec = morphStateSize(kind, roiWidth, maskSize), buffer = morphScratchSize(kind, roiWidth, maskSize);
  if (spec > INT32_MAX || buffer > INT32_MAX) return zebStsErrOverflow;
  *pSpecSize = static_cast<int>(spec);
  *pBufferSize = static_cast<int>(buffer);
  return zebStsOk;
}

ZebStatus borderInit(MorphKind kind, int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec,
                     const Zeb8u* pBuffer) {
  const ZebiPoint centre{(maskSize.width - 1) >> 1, (maskSize.height - 1) >> 1};
  if (auto bad =
          firstFailure(present(pMask), present(pSpec), present(pBuffer), atLeastOne(roiWidth), hasArea(maskSize)))
    return bad;
  return buildState(kind, roiWidth, {pMask, maskSize}, centre, false, pSpec);
}

// ---- Calls ----

ZebStatus acceptsBorder(ZebiBorderType border) {
  return require(borderBase(border) == zebBorderRepl || borderBase(border) == zebBorderInMem, zebStsErrBorder);
}

// What is asked of the state itself.
ZebStatus serves(const ZebiMorphState& state, MorphKind kind, int width) {
  return firstFailure(require(width <= state.roiWidth, zebStsErrSize),
                      isState(state.id, kind.id(StateKind::morphology)));
}

template <class Op, int channels, class T>
void run(Image<const T, channels> src, Image<T, channels> dst, ZebiSize roi, ZebiBorderType border,
         const ZebiMorphState& state, Zeb8u* scratch) {
  RowOutput<T> output(dst, 0, roi.height);
  output.finite = isFinite(state, border);
  morphRegion<Op>(state, BorderedImage(src.pixels, src.step, roi, channels * int(sizeof(T)), border), output, scratch,
                  state.room);
}

template <class Op, int channels, class T = typename Op::Type>
ZebStatus replicated(Image<const T, channels> src, Image<T, channels> dst, ZebiSize roi, ZebiBorderType border,
                     const ZebiMorphState* pState) {
  if (auto bad =
          firstFailure(checked(roi, src, dst, also(pState)), require(border == zebBorderRepl, zebStsErrBadArgument)))
    return bad;
  // States of the border interface have no scratch of their own.
  if (auto bad = firstFailure(serves(*pState, kindOf<T, channels>(), roi.width),
                              require(pState->scratch != nullptr, zebStsErrContextMatch)))
    return bad;
  run<Op>(src, dst, roi, border, *pState, pState->scratch);
  return zebStsOk;
}

template <class Op, int channels, class T = typename Op::Type>
ZebStatus bordered(Image<const T, channels> src, Image<T, channels> dst, ZebiSize roi, ZebiBorderType border,
                   const ZebiMorphState* pSpec, Zeb8u* pBuffer) {
  if (auto bad = firstFailure(checked(roi, src, dst, also(pSpec, pBuffer)), acceptsBorder(border))) return bad;
  if (auto bad = serves(*pSpec, kindOf<T, channels>(), roi.width)) return bad;
  run<Op>(src, dst, roi, border, *pSpec, pBuffer);
  return zebStsOk;
}

template <class Operation>
ZebStatus bitsBordered(Image<const Zeb8u> src, Image<Zeb8u> dst, ZebiSize roi, ZebiBorderType border,
                       const ZebiMorphState* pSpec, Zeb8u* pBuffer, Operation operation) {
  const int64_t more = bytesOfBits(roi.width) - roi.width;
  if (auto bad =
          firstFailure(checked(roi, src.wider(more), dst.wider(more), also(pSpec, pBuffer)), acceptsBorder(border)))
    return bad;
  if (auto bad = serves(*pSpec, kindOfBits, roi.width)) return bad;
  operation(*pSpec, BitRows(src.pixels, src.step, 0, roi, border), BitOutput{dst}, pBuffer, pSpec->room);
  return zebStsOk;
}

}  // namespace

// ---- Bindings ----

#define GET_SIZE(name, ...)                                                          \
  ZEB_ENTRY(name)(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, int* pSize) { \
    return stateSize({__VA_ARGS__}, roiWidth, pMask, maskSize, pSize);               \
  }
#define INIT(name, ...)                                                                                            \
  ZEB_ENTRY(name)(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor, ZebiMorphState* pState) { \
    return init({__VA_ARGS__}, roiWidth, pMask, maskSize, anchor, pState);                                         \
  }
#define INIT_ALLOC(name, ...)                                                                                        \
  ZEB_ENTRY(name)(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor, ZebiMorphState** ppState) { \
    return initAlloc({__VA_ARGS__}, roiWidth, pMask, maskSize, anchor, ppState);                                     \
  }
#define BORDER_GET_SIZE(name, ...)                                                     \
  ZEB_ENTRY(name)(int roiWidth, ZebiSize maskSize, int* pSpecSize, int* pBufferSize) { \
    return borderSize({__VA_ARGS__}, roiWidth, maskSize, pSpecSize, pBufferSize);      \
  }
#define BORDER_INIT(name, ...)                                                                                  \
  ZEB_ENTRY(name)(int roiWidth, const Zeb8u* pMask, ZebiSize maskSize, ZebiMorphState* pSpec, Zeb8u* pBuffer) { \
    return borderInit({__VA_ARGS__}, roiWidth, pMask, maskSize, pSpec, pBuffer);                                \
  }
#define REPLICATED(name, T, channels, Extremum)                                                                       \
  ZEB_ENTRY(name)                                                                                                     \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebiBorderType borderType,                     \
   ZebiMorphState* pState) {                                                                                          \
    return replicated<Extremum<T>, channels>(image<channels>(pSrc, srcStep), image<channels>(pDst, dstStep), roiSize, \
                                             borderType, pState);                                                     \
  }
#define BORDERED(name, T, channels, Extremum)                                                                       \
  ZEB_ENTRY(name)                                                                                                   \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebiBorderType borderType, T borderValue,    \
   const ZebiMorphState* pSpec, Zeb8u* pBuffer) {                                                                   \
    (void)borderValue;                                                                                              \
    return bordered<Extremum<T>, channels>(image<channels>(pSrc, srcStep), image<channels>(pDst, dstStep), roiSize, \
                                           borderType, pSpec, pBuffer);                                             \
  }
#define BITS_BORDERED(name, operation)                                                                               \
  ZEB_ENTRY(name)                                                                                                    \
  (const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roiSize, ZebiBorderType borderType,            \
   Zeb8u borderValue, const ZebiMorphState* pSpec, Zeb8u* pBuffer) {                                                 \
    (void)borderValue;                                                                                               \
    return bitsBordered(image(pSrc, srcStep), image(pDst, dstStep), roiSize, borderType, pSpec, pBuffer, operation); \
  }

GET_SIZE(zebiMorphologyGetSize_8u_C1R, zeb8u, 1)
GET_SIZE(zebiMorphologyGetSize_8u_C3R, zeb8u, 3)
GET_SIZE(zebiMorphologyGetSize_8u_C4R, zeb8u, 4)
GET_SIZE(zebiMorphologyGetSize_32f_C1R, zeb32f, 1)
GET_SIZE(zebiMorphologyGetSize_32f_C3R, zeb32f, 3)
GET_SIZE(zebiMorphologyGetSize_32f_C4R, zeb32f, 4)

INIT(zebiMorphologyInit_8u_C1R, zeb8u, 1)
INIT(zebiMorphologyInit_8u_C3R, zeb8u, 3)
INIT(zebiMorphologyInit_8u_C4R, zeb8u, 4)
INIT(zebiMorphologyInit_32f_C1R, zeb32f, 1)
INIT(zebiMorphologyInit_32f_C3R, zeb32f, 3)
INIT(zebiMorphologyInit_32f_C4R, zeb32f, 4)

INIT_ALLOC(zebiMorphologyInitAlloc_8u_C1R, zeb8u, 1)
INIT_ALLOC(zebiMorphologyInitAlloc_8u_C3R, zeb8u, 3)
INIT_ALLOC(zebiMorphologyInitAlloc_8u_C4R, zeb8u, 4)
INIT_ALLOC(zebiMorphologyInitAlloc_32f_C1R, zeb32f, 1)
INIT_ALLOC(zebiMorphologyInitAlloc_32f_C3R, zeb32f, 3)
INIT_ALLOC(zebiMorphologyInitAlloc_32f_C4R, zeb32f, 4)

ZEB_ENTRY(zebiMorphologyFree)(ZebiMorphState* pState) {
  if (auto bad = present(pState)) return bad;
  if (auto bad = isOfKind(pState->id, StateKind::morphology)) return bad;
  releaseState(pState, pState->id);
  return zebStsOk;
}

BORDER_GET_SIZE(zebiMorphologyBorderGetSize_8u_C1R, zeb8u, 1)
BORDER_GET_SIZE(zebiMorphologyBorderGetSize_8u_C3R, zeb8u, 3)
BORDER_GET_SIZE(zebiMorphologyBorderGetSize_8u_C4R, zeb8u, 4)
BORDER_GET_SIZE(zebiMorphologyBorderGetSize_16u_C1R, zeb16u, 1)
BORDER_GET_SIZE(zebiMorphologyBorderGetSize_16s_C1R, zeb16s, 1)
BORDER_GET_SIZE(zebiMorphologyBorderGetSize_32f_C1R, zeb32f, 1)
BORDER_GET_SIZE(zebiMorphologyBorderGetSize_32f_C3R, zeb32f, 3)
BORDER_GET_SIZE(zebiMorphologyBorderGetSize_32f_C4R, zeb32f, 4)
BORDER_GET_SIZE(zebiMorphologyBorderGetSize_1u_C1R, typeCodeBits, 1)

BORDER_INIT(zebiMorphologyBorderInit_8u_C1R, zeb8u, 1)
BORDER_INIT(zebiMorphologyBorderInit_8u_C3R, zeb8u, 3)
BORDER_INIT(zebiMorphologyBorderInit_8u_C4R, zeb8u, 4)
BORDER_INIT(zebiMorphologyBorderInit_16u_C1R, zeb16u, 1)
BORDER_INIT(zebiMorphologyBorderInit_16s_C1R, zeb16s, 1)
BORDER_INIT(zebiMorphologyBorderInit_32f_C1R, zeb32f, 1)
BORDER_INIT(zebiMorphologyBorderInit_32f_C3R, zeb32f, 3)
BORDER_INIT(zebiMorphologyBorderInit_32f_C4R, zeb32f, 4)
BORDER_INIT(zebiMorphologyBorderInit_1u_C1R, typeCodeBits, 1)

REPLICATED(zebiErodeBorderReplicate_8u_C1R, Zeb8u, 1, Lowest)
REPLICATED(zebiErodeBorderReplicate_8u_C3R, Zeb8u, 3, Lowest)
REPLICATED(zebiErodeBorderReplicate_8u_C4R, Zeb8u, 4, Lowest)
REPLICATED(zebiErodeBorderReplicate_32f_C1R, Zeb32f, 1, Lowest)
REPLICATED(zebiErodeBorderReplicate_32f_C3R, Zeb32f, 3, Lowest)
REPLICATED(zebiErodeBorderReplicate_32f_C4R, Zeb32f, 4, Lowest)
REPLICATED(zebiDilateBorderReplicate_8u_C1R, Zeb8u, 1, Highest)
REPLICATED(zebiDilateBorderReplicate_8u_C3R, Zeb8u, 3, Highest)
REPLICATED(zebiDilateBorderReplicate_8u_C4R, Zeb8u, 4, Highest)
REPLICATED(zebiDilateBorderReplicate_32f_C1R, Zeb32f, 1, Highest)
REPLICATED(zebiDilateBorderReplicate_32f_C3R, Zeb32f, 3, Highest)
REPLICATED(zebiDilateBorderReplicate_32f_C4R, Zeb32f, 4, Highest)

BORDERED(zebiErodeBorder_8u_C1R, Zeb8u, 1, Lowest)
BORDERED(zebiErodeBorder_8u_C3R, Zeb8u, 3, Lowest)
BORDERED(zebiErodeBorder_8u_C4R, Zeb8u, 4, Lowest)
BORDERED(zebiErodeBorder_16u_C1R, Zeb16u, 1, Lowest)
BORDERED(zebiErodeBorder_16s_C1R, Zeb16s, 1, Lowest)
BORDERED(zebiErodeBorder_32f_C1R, Zeb32f, 1, Lowest)
BORDERED(zebiErodeBorder_32f_C3R, Zeb32f, 3, Lowest)
BORDERED(zebiErodeBorder_32f_C4R, Zeb32f, 4, Lowest)
BITS_BORDERED(zebiErodeBorder_1u_C1R, erodeBits)
BORDERED(zebiDilateBorder_8u_C1R, Zeb8u, 1, Highest)
BORDERED(zebiDilateBorder_8u_C3R, Zeb8u, 3, Highest)
BORDERED(zebiDilateBorder_8u_C4R, Zeb8u, 4, Highest)
BORDERED(zebiDilateBorder_16u_C1R, Zeb16u, 1, Highest)
BORDERED(zebiDilateBorder_16s_C1R, Zeb16s, 1, Highest)
BORDERED(zebiDilateBorder_32f_C1R, Zeb32f, 1, Highest)
BORDERED(zebiDilateBorder_32f_C3R, Zeb32f, 3, Highest)
BORDERED(zebiDilateBorder_32f_C4R, Zeb32f, 4, Highest)
BITS_BORDERED(zebiDilateBorder_1u_C1R, dilateBits)
