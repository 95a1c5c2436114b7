// Opening, closing, top-hat, black-hat and gradient.
//
// The second operation of a composition leaves the difference at once, row by row; only the intermediate image of
// opening and closing is ever stored. Where the surroundings of the region are in memory, the first operation runs over
// the region enlarged by what the second reads on that side. Where the room does not take the intermediate image, it
// holds a strip of its rows at a time.
#include "core/checks.h"
#include "core/entry.h"
#include "core/memory.h"
#include "morph/bits.h"
#include "morph/region.h"

struct ZebiMorphAdvState {
  ZebiMorphState* erode;
  ZebiMorphState* dilate;  // mask and anchor reflected
  Zeb8u* image;            // the intermediate image, or null: as much of it as fits is at the beginning of the scratch
  int capacity;            // its bytes; of one in the scratch its pixels
  int secondScratch;       // place in the scratch of the room of the second operation, and of the first
  uint32_t id;
  int roiWidth;
  int scratchSize;  // bytes of that room
};

namespace {

using namespace zeb;

constexpr int recordBytes = sizeof(ZebiMorphAdvState);
static_assert(zeb::widePointers || recordBytes == 32);

int64_t upTo32(int64_t n) {
  return (n + 31) & ~int64_t(31);
}

// ---- States ----

struct AdvSizes {
  int64_t state, pixels, image, scratch;

  AdvSizes(MorphKind kind, ZebiSize roi, ZebiSize mask)
      : state(morphStateSize(kind, roi.width, mask)),
        pixels(boundedProduct(upTo32(int64_t(roi.width) + mask.width - 1), int64_t(roi.height) + mask.height - 1)),
        image(boundedProduct(pixels, kind.pixelBytes())),
        scratch(morphScratchSize(kind, roi.width, mask)) {}

  int64_t spec() const { return 2 * state + recordBytes; }
  int64_t buffer() const { return pixels + 2 * scratch; }
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
  *pState = {erode,
             dilate,
             nullptr,
             static_cast<int>(sizes.pixels),
             static_cast<int>(sizes.pixels + sizes.scratch),
             kind.id(StateKind::morphAdvanced),
             roi.width,
             static_cast<int>(sizes.scratch)};
  return zebStsOk;
}

ZebStatus release(ZebiMorphAdvState* state) {
  // One in the caller's memory has nothing to release.
  if (auto bad = firstFailure(isOfKind(state->id, StateKind::morphAdvanced),
                              require(state->image != nullptr, zebStsErrContextMatch)))
    return bad;
  zebsFree(state->image);
  releaseState(state->dilate, state->dilate->id);
  releaseState(state->erode, state->erode->id);
  releaseState(state, state->id);
  return zebStsOk;
}

ZebStatus initAlloc(MorphKind kind, ZebiMorphAdvState** ppState, ZebiSize roi, const Zeb8u* pMask, ZebiSize mask,
                    ZebiPoint anchor) {
  if (auto bad = firstFailure(present(ppState), present(pMask), hasArea(roi), buildable(roi.width, mask, anchor)))
    return bad;
  const AdvSizes sizes(kind, roi, mask);
  if (!sizes.fit() || sizes.image > INT32_MAX) return zebStsErrOverflow;
  ZebiMorphAdvState made{nullptr,   nullptr,
                         nullptr,   static_cast<int>(sizes.image),
                         0,         kind.id(StateKind::morphAdvanced),
                         roi.width, static_cast<int>(2 * sizes.scratch)};
  ZebStatus status = newState(kind, roi.width, {pMask, mask, false}, anchor, false, &made.erode);
  if (status == zebStsOk)
    status = newState(kind, roi.width, {pMask, mask, true}, reflected(anchor, mask), false, &made.dilate);
  ZebiMorphAdvState* state = nullptr;
  if (status == zebStsOk) {
    made.image = allocateState(sizes.image);
    if (made.image != nullptr) state = reinterpret_cast<ZebiMorphAdvState*>(allocateState(recordBytes));
    if (state == nullptr) status = zebStsErrMemAlloc;
  }
  if (status != zebStsOk) {
    if (made.image != nullptr) zebsFree(made.image);
    if (made.dilate != nullptr) zebsFree(made.dilate);
    if (made.erode != nullptr) zebsFree(made.erode);
    return status;
  }
  *state = made;
  *ppState = state;
  return zebStsOk;
}

// ---- The parts of a call's memory ----

struct Room {
  Zeb8u *image, *scratch;
  int64_t imageBytes, scratchBytes;

  // On a boundary of vectors. What the scratch rows of a filter have to spare covers that many times over.
  Room(const ZebiMorphAdvState& state, Zeb8u* buffer) {
    const bool own = state.image != nullptr;
    const uintptr_t start = reinterpret_cast<uintptr_t>(own ? state.image : buffer);
    const uintptr_t aligned = own ? start : (start + 31) & ~uintptr_t(31);
    image = reinterpret_cast<Zeb8u*>(aligned);
    imageBytes = (own ? state.capacity : state.secondScratch) - static_cast<int64_t>(aligned - start);
    scratch = buffer + state.secondScratch;
    scratchBytes = state.scratchSize;
  }
};

// By how much the first operation's region is larger, and how large it is.
struct Margins {
  int left = 0, right = 0, top = 0, bottom = 0;
  int64_t width, height;

  Margins(const ZebiMorphState& second, Sides sides, ZebiSize roi) {
    const Window w = reachOf(second);
    if (sides.left && w.left < 0) left = static_cast<int>(-w.left);
    if (sides.right && w.right > 0) right = static_cast<int>(w.right);
    if (sides.top && w.top < 0) top = static_cast<int>(-w.top);
    if (sides.bottom && w.bottom > 0) bottom = static_cast<int>(w.bottom);
    width = int64_t(roi.width) + left + right, height = int64_t(roi.height) + top + bottom;
  }
};

// ---- Checks: the standard ones, but for the steps' whole elements, which the operation inside would find last ----

template <class S, class D>
ZebStatus usable(S src, D dst, ZebiSize roi, ZebiBorderType border, const ZebiMorphAdvState* pState,
                 const Zeb8u* pBuffer) {
  if (auto bad = firstFailure(
          checked(roi, src.ofAnyStep(), dst.ofAnyStep(), also(pState, pBuffer)),
          require(borderBase(border) == zebBorderRepl || borderBase(border) == zebBorderInMem, zebStsErrBorder)))
    return bad;
  return require(roi.width <= pState->roiWidth, zebStsErrSize);
}

// Whether an intermediate image of this size is no larger than the state's.
ZebStatus holds(const ZebiMorphAdvState& state, int64_t bytesPerRow, int64_t pixelsPerRow, int64_t height) {
  return require(boundedProduct(state.image != nullptr ? bytesPerRow : pixelsPerRow, height) <= state.capacity,
                 zebStsErrSize);
}

// Not before the identifier is known to be right.
template <class Op>
const ZebiMorphState& stateOf(const ZebiMorphAdvState& state) {
  return std::is_same_v<Op, Lowest<typename Op::Type>> ? *state.erode : *state.dilate;
}

// ---- Images of elements ----

// Two operations one after the other on checked arguments; what becomes of the second one's rows is the output's
// business.
template <class First, class Second, class T = typename First::Type>
class Composition {
 public:
  Composition(const ZebiMorphAdvState& state, int channels, ZebiSize roi, ZebiBorderType border, const Room& room)
      : first_(stateOf<First>(state)),
        second_(stateOf<Second>(state)),
        roi_(roi),
        border_(border),
        channels_(channels),
        px_(channels * static_cast<int>(sizeof(T))),
        room_(room),
        margins_(second_, sidesInMemory(border), roi) {}

  // The output as for the whole region.
  void run(Rows<const T> src, const RowOutput<T>& output) const {
    const int64_t wide = upTo32(margins_.width) * px_;
    const ZebiSize size{static_cast<int>(margins_.width), static_cast<int>(margins_.height)};
    const BorderedImage source(src[-margins_.top] - static_cast<ptrdiff_t>(margins_.left) * channels_, src.step(), size,
                               px_, border_);
    if (boundedProduct(wide, margins_.height) <= room_.imageBytes) {
      whole(source, output, static_cast<int>(wide));
    } else {
      strips(source, output, static_cast<int>((margins_.width * px_ + 31) & ~int64_t(31)));
    }
  }

 private:
  // Rows from..end-1 of the intermediate image, the first of them at `to`.
  void intermediate(const BorderedImage& source, int from, int end, Zeb8u* to, int step) const {
    RowOutput<T> output(Rows<T>(reinterpret_cast<T*>(to), step), from, end);
    output.finite = isFinite(first_, border_);
    morphRegion<First>(first_, source, output, room_.scratch, room_.scratchBytes);
  }
  // Rows of the result. Their first pixel's own in the intermediate image is at column margins_.left of `middle`.
  void result(const Zeb8u* middle, int step, ZebiBorderType border, RowOutput<T> output) const {
    output.finite = isFinite(second_, border_);
    const BorderedImage source(middle + static_cast<ptrdiff_t>(margins_.left) * px_, step, {roi_.width, output.endRow},
                               px_, border);
    morphRegion<Second>(second_, source, output, room_.scratch, room_.scratchBytes);
  }

  void whole(const BorderedImage& source, const RowOutput<T>& output, int step) const {
    intermediate(source, 0, source.size().height, room_.image, step);
    result(room_.image + static_cast<ptrdiff_t>(margins_.top) * step, step, border_, output);
  }

  // A strip is the intermediate rows that some rows of the result read; those beyond the top and the bottom stand in it
  // as copies. The rows that the next strip reads, too, move to its beginning. There is always room for a strip: that
  // of one operation, which holds six rows more than the mask has, each with what the mask reaches to either side.
  void strips(const BorderedImage& source, const RowOutput<T>& output, int step) const {
    const Window reach = reachOf(second_);
    const int above = reach.top < 0 ? static_cast<int>(-reach.top) : 0;
    const int below = reach.bottom > 0 ? static_cast<int>(reach.bottom) : 0;
    const int height = source.size().height, most = static_cast<int>(room_.imageBytes / step) - above - below;
    const int count = (roi_.height - 1) / most + 1, rows = (roi_.height - 1) / count + 1;
    const size_t bytes = static_cast<size_t>(step);
    const auto at = [&](int64_t row) { return room_.image + static_cast<ptrdiff_t>(row) * step; };
    int made = 0;
    for (int y = 0, n; y < roi_.height; y += n) {
      n = rows < roi_.height - y ? rows : roi_.height - y;
      const int64_t first = int64_t{y} + margins_.top - above, end = int64_t{y} + n + margins_.top + below;
      const int stop = end < height ? static_cast<int>(end) : height;
      if (y > 0) memmove(at(0), at(rows), static_cast<size_t>(above + below) * bytes);
      if (made < stop) intermediate(source, made, stop, at(made - first), step);
      made = stop;
      for (int64_t row = first; row < 0; ++row) memcpy(at(row - first), at(-first), bytes);
      for (int64_t row = height; row < end; ++row) memcpy(at(row - first), at(height - 1 - first), bytes);
      RowOutput<T> part = output;
      part.dst = output.dst.from(0, y), part.endRow = n;
      if (output.finish != RowOutput<T>::store) part.other = output.other.from(0, y);
      result(at(above), step, border_ | zebBorderInMemTop | zebBorderInMemBottom, part);
    }
  }

  const ZebiMorphState &first_, &second_;
  ZebiSize roi_;
  ZebiBorderType border_;
  int channels_, px_;
  const Room& room_;
  Margins margins_;
};

template <class First, class Second, int channels, class T = typename First::Type>
ZebStatus composed(Image<const T, channels> src, Image<T, channels> dst, ZebiSize roi, ZebiBorderType border,
                   const ZebiMorphAdvState* pState, Zeb8u* pBuffer, typename RowOutput<T>::Finish finish) {
  if (auto bad = usable(src, dst, roi, border, pState, pBuffer)) return bad;
  const uint32_t id = kindOf<T, channels>().id(StateKind::morphAdvanced);
  if (pState->id == id) {
    const Margins m(stateOf<Second>(*pState), sidesInMemory(border), roi);
    const int64_t row = upTo32(m.width);
    if (auto bad = holds(*pState, int64_t{channels * sizeof(T)} * row, row, m.height)) return bad;
  }
  if (auto bad = firstFailure(wholeElements<T>(src.step), wholeElements<T>(dst.step), isState(pState->id, id)))
    return bad;
  RowOutput<T> output(dst, 0, roi.height);
  output.finish = finish;
  output.other = src;
  const Room room(*pState, pBuffer);
  Composition<First, Second>(*pState, channels, roi, border, room).run(src, output);
  return zebStsOk;
}

template <class T, int channels>
ZebStatus gradient(Image<const T, channels> src, Image<T, channels> dst, ZebiSize roi, ZebiBorderType border,
                   const ZebiMorphAdvState* pState, Zeb8u* pBuffer) {
  if (auto bad = usable(src, dst, roi, border, pState, pBuffer)) return bad;
  const uint32_t id = kindOf<T, channels>().id(StateKind::morphAdvanced);
  constexpr int px = channels * static_cast<int>(sizeof(T));
  const int64_t row = upTo32(roi.width);
  if (auto bad = firstFailure(
          require(pState->id != id || holds(*pState, row * px, row, roi.height) == zebStsOk, zebStsErrSize),
          wholeElements<T>(src.step), wholeElements<T>(dst.step), isState(pState->id, id)))
    return bad;
  const Room room(*pState, pBuffer);
  const BorderedImage source(src.pixels, src.step, roi, px, border);
  RowOutput<T> output(dst, 0, roi.height);
  output.finite = isFinite(*pState->dilate, border);
  morphRegion<Highest<T>>(*pState->dilate, source, output, room.scratch, room.scratchBytes);
  output.finish = RowOutput<T>::dstMinusResult;
  output.line = reinterpret_cast<T*>(room.image);
  output.lineStep = static_cast<ptrdiff_t>(row) * channels;
  output.lines = room.imageBytes / (row * px) < rowsTogether ? 1 : rowsTogether;
  output.finite = isFinite(*pState->erode, border);
  morphRegion<Lowest<T>>(*pState->erode, source, output, room.scratch, room.scratchBytes);
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
  enum class Order { erodeFirst, dilateFirst };

  static constexpr uint32_t id = kindOfBits.id(StateKind::morphAdvanced);

  static ZebStatus runnable(Image<const Zeb8u> src, Image<Zeb8u> dst, ZebiSize roi, ZebiBorderType border,
                            const ZebiMorphAdvState* pState, const Zeb8u* pBuffer) {
    const int64_t more = bytesOfBits(roi.width) - roi.width;
    return usable(src.wider(more), dst.wider(more), roi, border, pState, pBuffer);
  }

  static ZebStatus composed(Image<const Zeb8u> src, Image<Zeb8u> dst, ZebiSize roi, ZebiBorderType border,
                            const ZebiMorphAdvState* pState, Zeb8u* pBuffer, Order order,
                            RowOutput<Zeb8u>::Finish finish) {
    if (auto bad = firstFailure(runnable(src, dst, roi, border, pState, pBuffer))) return bad;
    if (auto bad = isState(pState->id, id)) return bad;
    const bool erodeFirst = order == Order::erodeFirst;
    const ZebiMorphState& first = erodeFirst ? *pState->erode : *pState->dilate;
    const ZebiMorphState& second = erodeFirst ? *pState->dilate : *pState->erode;
    const Margins m(second, sidesInMemory(border), roi);
    const int64_t step = upTo32(m.width) / 8;
    if (auto bad = holds(*pState, step, step, m.height)) return bad;

    const Room room(*pState, pBuffer);
    const ZebiSize enlarged{static_cast<int>(m.width), static_cast<int>(m.height)};
    const int imageStep = static_cast<int>(step);
    (erodeFirst ? erodeBits : dilateBits)(first, BitRows(src.rows()[-m.top], src.step, -m.left, enlarged, border),
                                          BitOutput{Rows<Zeb8u>(room.image, imageStep)}, room.scratch,
                                          room.scratchBytes);
    const BitRows middle(room.image + static_cast<ptrdiff_t>(m.top) * imageStep, imageStep, m.left, roi, border);
    (erodeFirst ? dilateBits : erodeBits)(second, middle, BitOutput{dst, finish, src}, room.scratch, room.scratchBytes);
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
  static ZebStatus gradient(Image<const Zeb8u> src, Image<Zeb8u> dst, ZebiSize roi, ZebiBorderType border,
                            const ZebiMorphAdvState* pState, Zeb8u* pBuffer) {
    if (auto bad = runnable(src, dst, roi, border, pState, pBuffer)) return bad;
    if (auto bad = isState(pState->id, id)) return bad;
    const int64_t row = upTo32(roi.width) / 8;
    if (auto bad = holds(*pState, row, row, roi.height)) return bad;
    const Room room(*pState, pBuffer);
    const BitRows source(src.pixels, src.step, 0, roi, border);
    BitOutput output{dst};
    dilateBits(*pState->dilate, source, output, room.scratch, room.scratchBytes);
    output.finish = Finish::dstMinusResult;
    erodeBits(*pState->erode, source, output, room.scratch, room.scratchBytes);
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
#define COMPOUND(name, T, channels, ...)                                                                            \
  ZEB_ENTRY(name)                                                                                                   \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebiBorderType borderType, T borderValue,    \
   const ZebiMorphAdvState* pState, Zeb8u* pBuffer) {                                                               \
    (void)borderValue;                                                                                              \
    return __VA_ARGS__(image<channels>(pSrc, srcStep), image<channels>(pDst, dstStep), roiSize, borderType, pState, \
                       pBuffer);                                                                                    \
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

COMPOUND(zebiMorphOpenBorder_8u_C1R, Zeb8u, 1, Compound<Zeb8u, 1>::open)
COMPOUND(zebiMorphOpenBorder_8u_C3R, Zeb8u, 3, Compound<Zeb8u, 3>::open)
COMPOUND(zebiMorphOpenBorder_8u_C4R, Zeb8u, 4, Compound<Zeb8u, 4>::open)
COMPOUND(zebiMorphOpenBorder_16u_C1R, Zeb16u, 1, Compound<Zeb16u, 1>::open)
COMPOUND(zebiMorphOpenBorder_16s_C1R, Zeb16s, 1, Compound<Zeb16s, 1>::open)
COMPOUND(zebiMorphOpenBorder_32f_C1R, Zeb32f, 1, Compound<Zeb32f, 1>::open)
COMPOUND(zebiMorphOpenBorder_32f_C3R, Zeb32f, 3, Compound<Zeb32f, 3>::open)
COMPOUND(zebiMorphOpenBorder_32f_C4R, Zeb32f, 4, Compound<Zeb32f, 4>::open)
COMPOUND(zebiMorphOpenBorder_1u_C1R, Zeb8u, 1, Bits::open)

COMPOUND(zebiMorphCloseBorder_8u_C1R, Zeb8u, 1, Compound<Zeb8u, 1>::close)
COMPOUND(zebiMorphCloseBorder_8u_C3R, Zeb8u, 3, Compound<Zeb8u, 3>::close)
COMPOUND(zebiMorphCloseBorder_8u_C4R, Zeb8u, 4, Compound<Zeb8u, 4>::close)
COMPOUND(zebiMorphCloseBorder_16u_C1R, Zeb16u, 1, Compound<Zeb16u, 1>::close)
COMPOUND(zebiMorphCloseBorder_16s_C1R, Zeb16s, 1, Compound<Zeb16s, 1>::close)
COMPOUND(zebiMorphCloseBorder_32f_C1R, Zeb32f, 1, Compound<Zeb32f, 1>::close)
COMPOUND(zebiMorphCloseBorder_32f_C3R, Zeb32f, 3, Compound<Zeb32f, 3>::close)
COMPOUND(zebiMorphCloseBorder_32f_C4R, Zeb32f, 4, Compound<Zeb32f, 4>::close)
COMPOUND(zebiMorphCloseBorder_1u_C1R, Zeb8u, 1, Bits::close)

COMPOUND(zebiMorphTophatBorder_8u_C1R, Zeb8u, 1, Compound<Zeb8u, 1>::tophat)
COMPOUND(zebiMorphTophatBorder_8u_C3R, Zeb8u, 3, Compound<Zeb8u, 3>::tophat)
COMPOUND(zebiMorphTophatBorder_8u_C4R, Zeb8u, 4, Compound<Zeb8u, 4>::tophat)
COMPOUND(zebiMorphTophatBorder_16u_C1R, Zeb16u, 1, Compound<Zeb16u, 1>::tophat)
COMPOUND(zebiMorphTophatBorder_16s_C1R, Zeb16s, 1, Compound<Zeb16s, 1>::tophat)
COMPOUND(zebiMorphTophatBorder_32f_C1R, Zeb32f, 1, Compound<Zeb32f, 1>::tophat)
COMPOUND(zebiMorphTophatBorder_32f_C3R, Zeb32f, 3, Compound<Zeb32f, 3>::tophat)
COMPOUND(zebiMorphTophatBorder_32f_C4R, Zeb32f, 4, Compound<Zeb32f, 4>::tophat)
COMPOUND(zebiMorphTophatBorder_1u_C1R, Zeb8u, 1, Bits::tophat)

COMPOUND(zebiMorphBlackhatBorder_8u_C1R, Zeb8u, 1, Compound<Zeb8u, 1>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_8u_C3R, Zeb8u, 3, Compound<Zeb8u, 3>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_8u_C4R, Zeb8u, 4, Compound<Zeb8u, 4>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_16u_C1R, Zeb16u, 1, Compound<Zeb16u, 1>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_16s_C1R, Zeb16s, 1, Compound<Zeb16s, 1>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_32f_C1R, Zeb32f, 1, Compound<Zeb32f, 1>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_32f_C3R, Zeb32f, 3, Compound<Zeb32f, 3>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_32f_C4R, Zeb32f, 4, Compound<Zeb32f, 4>::blackhat)
COMPOUND(zebiMorphBlackhatBorder_1u_C1R, Zeb8u, 1, Bits::blackhat)

COMPOUND(zebiMorphGradientBorder_8u_C1R, Zeb8u, 1, Compound<Zeb8u, 1>::gradient)
COMPOUND(zebiMorphGradientBorder_8u_C3R, Zeb8u, 3, Compound<Zeb8u, 3>::gradient)
COMPOUND(zebiMorphGradientBorder_8u_C4R, Zeb8u, 4, Compound<Zeb8u, 4>::gradient)
COMPOUND(zebiMorphGradientBorder_16u_C1R, Zeb16u, 1, Compound<Zeb16u, 1>::gradient)
COMPOUND(zebiMorphGradientBorder_16s_C1R, Zeb16s, 1, Compound<Zeb16s, 1>::gradient)
COMPOUND(zebiMorphGradientBorder_32f_C1R, Zeb32f, 1, Compound<Zeb32f, 1>::gradient)
COMPOUND(zebiMorphGradientBorder_32f_C3R, Zeb32f, 3, Compound<Zeb32f, 3>::gradient)
COMPOUND(zebiMorphGradientBorder_32f_C4R, Zeb32f, 4, Compound<Zeb32f, 4>::gradient)
COMPOUND(zebiMorphGradientBorder_1u_C1R, Zeb8u, 1, Bits::gradient)
