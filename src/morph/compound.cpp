// Opening, closing, top-hat, black-hat and gradient.
//
// The second operation of a composition leaves the difference at once, row by row; only the intermediate image of
// opening and closing is ever stored. Where the surroundings of the region are in memory, the first operation runs over
// the region enlarged by what the second reads on that side.
#include "core/checks.h"
#include "core/entry.h"
#include "core/services.h"
#include "morph/bits.h"
#include "morph/region.h"

struct ZebiMorphAdvState {
  ZebiMorphState* erode;
  ZebiMorphState* dilate;  // mask and anchor reflected
  Zeb8u* image;            // the intermediate image, or null: the beginning of the scratch
  int capacity;            // its bytes
  int secondScratch;       // place in the scratch of the room of the second operation
};
static_assert(sizeof(void*) > 4 || sizeof(ZebiMorphAdvState) == 20);

namespace {

using namespace zeb;

constexpr int recordBytes = 32;

int64_t upTo32(int64_t n) {
  return (n + 31) & ~int64_t(31);
}

// ---- States ----

struct AdvSizes {
  int64_t state, image, scratch;

  AdvSizes(MorphKind kind, ZebiSize roi, ZebiSize mask)
      : state(morphStateSize(kind, roi.width, mask)),
        image(boundedProduct(
            boundedProduct(upTo32(int64_t(roi.width) + mask.width - 1), int64_t(roi.height) + mask.height - 1),
            kind.pixelBytes())),
        scratch(morphScratchSize(kind, roi.width, mask)) {}

  int64_t spec() const { return 2 * state + recordBytes; }
  int64_t buffer() const { return image + 2 * scratch; }
  bool fit() const { return spec() <= INT32_MAX && buffer() <= INT32_MAX; }
};

ZebStatus getSize(MorphKind kind, ZebiSize roi, ZebiSize mask, int* pSpecSize, int* pBufferSize) {
  if (auto bad = firstFailure(present(pSpecSize, pBufferSize), hasArea(roi), hasArea(mask))) return bad;
  const AdvSizes sizes(kind, roi, mask);
  if (!sizes.fit()) return zebStsErrOverflow;
  *pSpecSize = static_cast<int>(sizes.spec());
  *pBufferSize = static_cast<int>(sizes.buffer());
  return zebStsOk;
}

ZebiPoint reflected(ZebiPoint anchor, ZebiSize mask) {
  return {mask.width - 1 - anchor.x, mask.height - 1 - anchor.y};
}

ZebStatus init(MorphKind kind, ZebiMorphAdvState* pState, ZebiSize roi, const Zeb8u* pMask, ZebiSize mask,
               ZebiPoint anchor) {
  if (auto bad = firstFailure(present(pState), present(pMask), hasArea(roi), buildable(roi.width, mask, anchor)))
    return bad;
  const AdvSizes sizes(kind, roi, mask);
  if (!sizes.fit()) return zebStsErrOverflow;
  Zeb8u* block = reinterpret_cast<Zeb8u*>(pState);
  auto* erode = reinterpret_cast<ZebiMorphState*>(block + recordBytes);
  auto* dilate = reinterpret_cast<ZebiMorphState*>(block + recordBytes + static_cast<ptrdiff_t>(sizes.state));
  if (auto bad = buildState(kind, roi.width, {pMask, mask, false}, anchor, false, erode)) return bad;
  if (auto bad = buildState(kind, roi.width, {pMask, mask, true}, reflected(anchor, mask), false, dilate)) return bad;
  *pState = {erode, dilate, nullptr, static_cast<int>(sizes.image), static_cast<int>(sizes.image + sizes.scratch)};
  return zebStsOk;
}

ZebStatus release(ZebiMorphAdvState* state) {
  q7_zebsFree(state->image);
  q7_zebsFree(state->dilate);
  q7_zebsFree(state->erode);
  q7_zebsFree(state);
  return zebStsOk;
}

ZebStatus initAlloc(MorphKind kind, ZebiMorphAdvState** ppState, ZebiSize roi, const Zeb8u* pMask, ZebiSize mask,
                    ZebiPoint anchor) {
  if (auto bad = firstFailure(present(ppState), present(pMask), hasArea(roi), buildable(roi.width, mask, anchor)))
    return bad;
  const AdvSizes sizes(kind, roi, mask);
  if (!sizes.fit()) return zebStsErrOverflow;
  ZebiMorphAdvState made{nullptr, nullptr, nullptr, static_cast<int>(sizes.image), static_cast<int>(sizes.scratch)};
  ZebStatus status = allocateState(kind, roi.width, {pMask, mask, false}, anchor, false, &made.erode);
  if (status == zebStsOk)
    status = allocateState(kind, roi.width, {pMask, mask, true}, reflected(anchor, mask), false, &made.dilate);
  ZebiMorphAdvState* state = nullptr;
  if (status == zebStsOk) {
    made.image = q7_zebsMalloc_8u(made.capacity);
    if (made.image != nullptr)
      state = reinterpret_cast<ZebiMorphAdvState*>(q7_zebsMalloc_8u(static_cast<int>(sizeof(ZebiMorphAdvState))));
    if (state == nullptr) status = zebStsErrMemAlloc;
  }
  if (status != zebStsOk) {
    if (made.image != nullptr) q7_zebsFree(made.image);
    if (made.dilate != nullptr) q7_zebsFree(made.dilate);
    if (made.erode != nullptr) q7_zebsFree(made.erode);
    return status;
  }
  *state = made;
  *ppState = state;
  return zebStsOk;
}

// ---- The parts of a call's memory ----

struct Room {
  Zeb8u *image, *first, *second;
  int64_t firstBytes, secondBytes;

  Room(const ZebiMorphAdvState& state, Zeb8u* buffer) {
    const int before = state.image != nullptr ? 0 : state.capacity;
    image = state.image != nullptr ? state.image : buffer;
    first = buffer + before;
    second = buffer + state.secondScratch;
    // The first operation may use the room of the second, too.
    secondBytes = state.secondScratch - before;
    firstBytes = 2 * secondBytes;
  }
};

// By how much the first operation's region is larger.
struct Margins {
  int64_t left = 0, right = 0, top = 0, bottom = 0;

  Margins(const ZebiMorphState& second, Sides sides) {
    const Window w = reachOf(second);
    if (sides.left && w.left < 0) left = -w.left;
    if (sides.right && w.right > 0) right = w.right;
    if (sides.top && w.top < 0) top = -w.top;
    if (sides.bottom && w.bottom > 0) bottom = w.bottom;
  }
};

enum class Order { erodeFirst, dilateFirst };

// ---- Images of elements ----

template <class T, int channels>
ZebStatus runnable(const T* pSrc, int srcStep, const T* pDst, int dstStep, ZebiSize roi, ZebiBorderType border,
                   const ZebiMorphAdvState* pState, const Zeb8u* pBuffer) {
  if (auto bad =
          firstFailure(present(pSrc, pDst), present(pState), present(pBuffer), hasArea(roi),
                       holdsRow<T, channels>(srcStep, roi.width), holdsRow<T, channels>(dstStep, roi.width),
                       wholeElements<T>(srcStep), wholeElements<T>(dstStep),
                       require((border & 15) == zebBorderRepl || (border & 15) == zebBorderInMem, zebStsErrBorder)))
    return bad;
  return require(roi.width <= pState->erode->roiWidth, zebStsErrSize);
}

// Two operations one after the other; what becomes of the second one's rows is the caller's choice.
template <class First, class Second, int channels, class T = typename First::Type>
ZebStatus composed(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, ZebiBorderType border,
                   const ZebiMorphAdvState* pState, Zeb8u* pBuffer, typename RowOutput<T>::Finish finish) {
  if (auto bad = runnable<T, channels>(pSrc, srcStep, pDst, dstStep, roi, border, pState, pBuffer)) return bad;
  constexpr bool erodeFirst = std::is_same_v<First, Lowest<T>>;
  const ZebiMorphState& first = erodeFirst ? *pState->erode : *pState->dilate;
  const ZebiMorphState& second = erodeFirst ? *pState->dilate : *pState->erode;
  constexpr int px = channels * static_cast<int>(sizeof(T));
  const Sides sides = sidesInMemory(border);
  const Margins m(second, sides);
  const int64_t width = roi.width + m.left + m.right, height = roi.height + m.top + m.bottom;
  const int64_t step = boundedProduct(upTo32(width), px);
  if (boundedProduct(step, height) > pState->capacity) return zebStsErrSize;

  const Room room(*pState, pBuffer);
  const ZebiSize enlarged{static_cast<int>(width), static_cast<int>(height)};
  const Zeb8u* from = reinterpret_cast<const Zeb8u*>(pSrc) - static_cast<ptrdiff_t>(m.top) * srcStep -
                      static_cast<ptrdiff_t>(m.left * px);
  const int imageStep = static_cast<int>(step);
  morphRegion<First>(first, BorderedImage(from, srcStep, enlarged, px, border),
                     RowOutput<T>(Rows<T>(reinterpret_cast<T*>(room.image), imageStep)), room.first, room.firstBytes);
  RowOutput<T> output(Rows<T>(pDst, dstStep));
  output.finish = finish;
  output.other = Rows<const T>(pSrc, srcStep);
  const Zeb8u* middle = room.image + static_cast<ptrdiff_t>(m.top) * imageStep + static_cast<ptrdiff_t>(m.left * px);
  morphRegion<Second>(second, BorderedImage(middle, imageStep, roi, px, border), output, room.second, room.secondBytes);
  return zebStsOk;
}

template <class T, int channels>
ZebStatus gradient(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, ZebiBorderType border,
                   const ZebiMorphAdvState* pState, Zeb8u* pBuffer) {
  if (auto bad = runnable<T, channels>(pSrc, srcStep, pDst, dstStep, roi, border, pState, pBuffer)) return bad;
  constexpr int px = channels * static_cast<int>(sizeof(T));
  if (boundedProduct(boundedProduct(upTo32(roi.width), px), roi.height) > pState->capacity) return zebStsErrSize;
  const Room room(*pState, pBuffer);
  const BorderedImage source(pSrc, srcStep, roi, px, border);
  RowOutput<T> output(Rows<T>(pDst, dstStep));
  morphRegion<Highest<T>>(*pState->dilate, source, output, room.first, room.firstBytes);
  output.finish = RowOutput<T>::dstMinusResult;
  output.line = reinterpret_cast<T*>(room.image);
  morphRegion<Lowest<T>>(*pState->erode, source, output, room.second, room.secondBytes);
  return zebStsOk;
}

template <class T, int channels>
struct Compound {
  using Finish = RowOutput<T>;
  template <class... A>
  static ZebStatus open(A... a) {
    return composed<Lowest<T>, Highest<T>, channels>(a..., Finish::store);
  }
  template <class... A>
  static ZebStatus close(A... a) {
    return composed<Highest<T>, Lowest<T>, channels>(a..., Finish::store);
  }
  template <class... A>
  static ZebStatus tophat(A... a) {
    return composed<Lowest<T>, Highest<T>, channels>(a..., Finish::otherMinus);
  }
  template <class... A>
  static ZebStatus blackhat(A... a) {
    return composed<Highest<T>, Lowest<T>, channels>(a..., Finish::minusOther);
  }
  template <class... A>
  static ZebStatus gradient(A... a) {
    return ::gradient<T, channels>(a...);
  }
};

// ---- Bit-packed images ----

struct Bits {
  using Finish = RowOutput<Zeb8u>;
  using Operation = void (*)(const ZebiMorphState&, const BitRows&, const BitOutput&, Zeb8u*, int64_t);

  static ZebStatus runnable(const Zeb8u* pSrc, int srcStep, const Zeb8u* pDst, int dstStep, ZebiSize roi,
                            ZebiBorderType border, const ZebiMorphAdvState* pState, const Zeb8u* pBuffer) {
    const int64_t row = bytesOfBits(roi.width);
    if (auto bad =
            firstFailure(present(pSrc, pDst), present(pState), present(pBuffer), hasArea(roi),
                         require(srcStep >= row && dstStep >= row, zebStsErrStep),
                         require((border & 15) == zebBorderRepl || (border & 15) == zebBorderInMem, zebStsErrBorder)))
      return bad;
    return require(roi.width <= pState->erode->roiWidth, zebStsErrSize);
  }

  static ZebStatus composed(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roi,
                            ZebiBorderType border, const ZebiMorphAdvState* pState, Zeb8u* pBuffer, Order order,
                            RowOutput<Zeb8u>::Finish finish) {
    if (auto bad = runnable(pSrc, srcStep, pDst, dstStep, roi, border, pState, pBuffer)) return bad;
    const bool erodeFirst = order == Order::erodeFirst;
    const ZebiMorphState& first = erodeFirst ? *pState->erode : *pState->dilate;
    const ZebiMorphState& second = erodeFirst ? *pState->dilate : *pState->erode;
    const Sides sides = sidesInMemory(border);
    const Margins m(second, sides);
    const int64_t width = roi.width + m.left + m.right, height = roi.height + m.top + m.bottom;
    const int64_t step = upTo32(width) / 8;
    if (boundedProduct(step, height) > pState->capacity) return zebStsErrSize;

    const Room room(*pState, pBuffer);
    const ZebiSize enlarged{static_cast<int>(width), static_cast<int>(height)};
    const int imageStep = static_cast<int>(step);
    (erodeFirst ? erodeBits : dilateBits)(
        first, BitRows(pSrc - static_cast<ptrdiff_t>(m.top) * srcStep, srcStep, -m.left, enlarged, border),
        BitOutput{Rows<Zeb8u>(room.image, imageStep)}, room.first, room.firstBytes);
    const BitRows middle(room.image + static_cast<ptrdiff_t>(m.top) * imageStep, imageStep, m.left, roi, border);
    (erodeFirst ? dilateBits : erodeBits)(
        second, middle, BitOutput{Rows<Zeb8u>(pDst, dstStep), finish, Rows<const Zeb8u>(pSrc, srcStep)}, room.second,
        room.secondBytes);
    return zebStsOk;
  }

  template <class... A>
  static ZebStatus open(A... a) {
    return composed(a..., Order::erodeFirst, Finish::store);
  }
  template <class... A>
  static ZebStatus close(A... a) {
    return composed(a..., Order::dilateFirst, Finish::store);
  }
  template <class... A>
  static ZebStatus tophat(A... a) {
    return composed(a..., Order::erodeFirst, Finish::otherMinus);
  }
  template <class... A>
  static ZebStatus blackhat(A... a) {
    return composed(a..., Order::dilateFirst, Finish::minusOther);
  }
  static ZebStatus gradient(const Zeb8u* pSrc, int srcStep, Zeb8u* pDst, int dstStep, ZebiSize roi,
                            ZebiBorderType border, const ZebiMorphAdvState* pState, Zeb8u* pBuffer) {
    if (auto bad = runnable(pSrc, srcStep, pDst, dstStep, roi, border, pState, pBuffer)) return bad;
    if (boundedProduct(upTo32(roi.width) / 8, roi.height) > pState->capacity) return zebStsErrSize;
    const Room room(*pState, pBuffer);
    const BitRows source(pSrc, srcStep, 0, roi, border);
    BitOutput output{Rows<Zeb8u>(pDst, dstStep)};
    dilateBits(*pState->dilate, source, output, room.first, room.firstBytes);
    output.finish = Finish::dstMinusResult;
    erodeBits(*pState->erode, source, output, room.second, room.secondBytes);
    return zebStsOk;
  }
};

}  // namespace

// ---- Bindings ----

#define GET_SIZE(name, ...)                                                                \
  ZEB_ENTRY(name)(ZebiSize roiSize, ZebiSize maskSize, int* pSpecSize, int* pBufferSize) { \
    return getSize({__VA_ARGS__}, roiSize, maskSize, pSpecSize, pBufferSize);              \
  }
#define INIT(name, ...)                                                                                     \
  ZEB_ENTRY(name)                                                                                           \
  (ZebiMorphAdvState * pState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor) { \
    return init({__VA_ARGS__}, pState, roiSize, pMask, maskSize, anchor);                                   \
  }
#define INIT_ALLOC(name, ...)                                                                                 \
  ZEB_ENTRY(name)                                                                                             \
  (ZebiMorphAdvState * *ppState, ZebiSize roiSize, const Zeb8u* pMask, ZebiSize maskSize, ZebiPoint anchor) { \
    return initAlloc({__VA_ARGS__}, ppState, roiSize, pMask, maskSize, anchor);                               \
  }
#define COMPOUND(name, T, ...)                                                                                   \
  ZEB_ENTRY(name)                                                                                                \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebiBorderType borderType, T borderValue, \
   const ZebiMorphAdvState* pState, Zeb8u* pBuffer) {                                                            \
    (void)borderValue;                                                                                           \
    return __VA_ARGS__(pSrc, srcStep, pDst, dstStep, roiSize, borderType, pState, pBuffer);                      \
  }

GET_SIZE(zebiMorphAdvGetSize_8u_C1R, zeb8u, 1)
GET_SIZE(zebiMorphAdvGetSize_8u_C3R, zeb8u, 3)
GET_SIZE(zebiMorphAdvGetSize_8u_C4R, zeb8u, 4)
GET_SIZE(zebiMorphAdvGetSize_16u_C1R, zeb16u, 1)
GET_SIZE(zebiMorphAdvGetSize_16s_C1R, zeb16s, 1)
GET_SIZE(zebiMorphAdvGetSize_32f_C1R, zeb32f, 1)
GET_SIZE(zebiMorphAdvGetSize_32f_C3R, zeb32f, 3)
GET_SIZE(zebiMorphAdvGetSize_32f_C4R, zeb32f, 4)
GET_SIZE(zebiMorphAdvGetSize_1u_C1R, typeCodeBits, 1)

INIT(zebiMorphAdvInit_8u_C1R, zeb8u, 1)
INIT(zebiMorphAdvInit_8u_C3R, zeb8u, 3)
INIT(zebiMorphAdvInit_8u_C4R, zeb8u, 4)
INIT(zebiMorphAdvInit_16u_C1R, zeb16u, 1)
INIT(zebiMorphAdvInit_16s_C1R, zeb16s, 1)
INIT(zebiMorphAdvInit_32f_C1R, zeb32f, 1)
INIT(zebiMorphAdvInit_32f_C3R, zeb32f, 3)
INIT(zebiMorphAdvInit_32f_C4R, zeb32f, 4)
INIT(zebiMorphAdvInit_1u_C1R, typeCodeBits, 1)

INIT_ALLOC(zebiMorphAdvInitAlloc_8u_C1R, zeb8u, 1)
INIT_ALLOC(zebiMorphAdvInitAlloc_8u_C3R, zeb8u, 3)
INIT_ALLOC(zebiMorphAdvInitAlloc_8u_C4R, zeb8u, 4)
INIT_ALLOC(zebiMorphAdvInitAlloc_16u_C1R, zeb16u, 1)
INIT_ALLOC(zebiMorphAdvInitAlloc_16s_C1R, zeb16s, 1)
INIT_ALLOC(zebiMorphAdvInitAlloc_32f_C1R, zeb32f, 1)
INIT_ALLOC(zebiMorphAdvInitAlloc_32f_C3R, zeb32f, 3)
INIT_ALLOC(zebiMorphAdvInitAlloc_32f_C4R, zeb32f, 4)
INIT_ALLOC(zebiMorphAdvInitAlloc_1u_C1R, typeCodeBits, 1)

ZEB_ENTRY(zebiMorphAdvFree)(ZebiMorphAdvState* pState) {
  if (auto bad = present(pState)) return bad;
  return release(pState);
}

COMPOUND(zebiMorphOpenBorder_8u_C1R, Zeb8u, Compound<Zeb8u, 1>::open)
COMPOUND(zebiMorphOpenBorder_8u_C3R, Zeb8u, Compound<Zeb8u, 3>::open)
COMPOUND(zebiMorphOpenBorder_8u_C4R, Zeb8u, Compound<Zeb8u, 4>::open)
COMPOUND(zebiMorphOpenBorder_16u_C1R, Zeb16u, Compound<Zeb16u, 1>::open)
COMPOUND(zebiMorphOpenBorder_16s_C1R, Zeb16s, Compound<Zeb16s, 1>::open)
COMPOUND(zebiMorphOpenBorder_32f_C1R, Zeb32f, Compound<Zeb32f, 1>::open)
COMPOUND(zebiMorphOpenBorder_32f_C3R, Zeb32f, Compound<Zeb32f, 3>::open)
COMPOUND(zebiMorphOpenBorder_32f_C4R, Zeb32f, Compound<Zeb32f, 4>::open)
COMPOUND(zebiMorphOpenBorder_1u_C1R, Zeb8u, Bits::open)

COMPOUND(zebiMorphCloseBorder_8u_C1R, Zeb8u, Compound<Zeb8u, 1>::close)
COMPOUND(zebiMorphCloseBorder_8u_C3R, Zeb8u, Compound<Zeb8u, 3>::close)
COMPOUND(zebiMorphCloseBorder_8u_C4R, Zeb8u, Compound<Zeb8u, 4>::close)
COMPOUND(zebiMorphCloseBorder_16u_C1R, Zeb16u, Compound<Zeb16u, 1>::close)
COMPOUND(zebiMorphCloseBorder_16s_C1R, Zeb16s, Compound<Zeb16s, 1>::close)
COMPOUND(zebiMorphCloseBorder_32f_C1R, Zeb32f, Compound<Zeb32f, 1>::close)
COMPOUND(zebiMorphCloseBorder_32f_C3R, Zeb32f, Compound<Zeb32f, 3>::close)
COMPOUND(zebiMorphCloseBorder_32f_C4R, Zeb32f, Compound<Zeb32f, 4>::close)
COMPOUND(zebiMorphCloseBorder_1u_C1R, Zeb8u, Bits::close)

COMPOUND(zebiMorphTophatBorder_8u_C1R, Zeb8u, Compound<Zeb8u, 1>::tophat)
COMPOUND(zebiMorphTophatBorder_8u_C3R, Zeb8u, Compound<Zeb8u, 3>::tophat)
COMPOUND(zebiMorphTophatBorder_8u_C4R, Zeb8u, Compound<Zeb8u, 4>::tophat)
COMPOUND(zebiMorphTophatBorder_16u_C1R, Zeb16u, Compound<Zeb16u, 1>::tophat)
COMPOUND(zebiMorphTophatBorder_16s_C1R, Zeb16s, Compound<Zeb16s, 1>::tophat)
COMPOUND(zebiMorphTophatBorder_32f_C1R, Zeb32f, Compound<Zeb32f, 1>::tophat)
COMPOUND(zebiMorphTophatBorder_32f_C3R, Zeb32f, Compound<Zeb32f, 3>::tophat)
COMPOUND(zebiMorphTophatBorder_32f_C4R, Zeb32f, Compound<Zeb32f, 4>::tophat)
COMPOUND(zebiMorphTophatBorder_1u_C1R, Zeb8u, Bits::tophat)

COMPOUND(zebiMorphBlackhatBorder_8u_C1R, Zeb8u, Compound<Zeb8u, 1>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_8u_C3R, Zeb8u, Compound<Zeb8u, 3>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_8u_C4R, Zeb8u, Compound<Zeb8u, 4>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_16u_C1R, Zeb16u, Compound<Zeb16u, 1>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_16s_C1R, Zeb16s, Compound<Zeb16s, 1>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_32f_C1R, Zeb32f, Compound<Zeb32f, 1>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_32f_C3R, Zeb32f, Compound<Zeb32f, 3>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_32f_C4R, Zeb32f, Compound<Zeb32f, 4>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_1u_C1R, Zeb8u, Bits::blackhat)

COMPOUND(zebiMorphGradientBorder_8u_C1R, Zeb8u, Compound<Zeb8u, 1>::gradient)
COMPOUND(zebiMorphGradientBorder_8u_C3R, Zeb8u, Compound<Zeb8u, 3>::gradient)
COMPOUND(zebiMorphGradientBorder_8u_C4R, Zeb8u, Compound<Zeb8u, 4>::gradient)
COMPOUND(zebiMorphGradientBorder_16u_C1R, Zeb16u, Compound<Zeb16u, 1>::gradient)
COMPOUND(zebiMorphGradientBorder_16s_C1R, Zeb16s, Compound<Zeb16s, 1>::gradient)
COMPOUND(zebiMorphGradientBorder_32f_C1R, Zeb32f, Compound<Zeb32f, 1>::gradient)
COMPOUND(zebiMorphGradientBorder_32f_C3R, Zeb32f, Compound<Zeb32f, 3>::gradient)
COMPOUND(zebiMorphGradientBorder_32f_C4R, Zeb32f, Compound<Zeb32f, 4>::gradient)
COMPOUND(zebiMorphGradientBorder_1u_C1R, Zeb8u, Bits::gradient)
