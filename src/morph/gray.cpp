// Grayscale morphology: extremum of pixel plus weight (dilation) or pixel minus weight (erosion) over a mask of
// weights.
//
// Pixels whose whole mask lies between the left and the right edge are taken a vector at a time straight from the
// source; the few others one by one. Rows beyond the top and the bottom are the edge rows.
//
// A sum that is saturated does not change the order of two bytes. So the extremum of all pixels under the same weight
// is taken first, and the weight once: a paraboloid has few distinct ones.
#include "core/checks.h"
#include "core/entry.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/vec.h"

struct ZebiMorphGrayState {
  const void* weights;
  int width, height;
  int anchorX, anchorY;
  int roiWidth, roiHeight;
};
static_assert(zeb::widePointers || sizeof(ZebiMorphGrayState) == 28);

namespace {

using namespace zeb;

// All words of the record are taken, and none is left for an identifier. But the weights always stand right behind it.
ZebStatus isGrayState(const ZebiMorphGrayState& state) {
  return require(state.weights == &state + 1, zebStsErrContextMatch);
}

// ---- One tap: what a weight makes of one pixel and of a vector, and which of two results counts ----

template <bool dilate>
struct FloatTap {
  using Type = Zeb32f;
  using Weight = Zeb32f;
  using Prepared = Zeb32f;
  static Prepared prepared(Weight w) { return w; }

  V32f all;
  ZEB_INLINE explicit FloatTap(Prepared w) : all(splat(w)) {}
  ZEB_INLINE V32f at(V32f s) const { return dilate ? s + all : s - all; }
  static ZEB_INLINE Zeb32f at(Zeb32f s, Prepared w) { return dilate ? s + w : s - w; }
  static ZEB_INLINE V32f pick(V32f a, V32f b) { return dilate ? max(a, b) : min(a, b); }
  static ZEB_INLINE Zeb32f pick(Zeb32f a, Zeb32f b) { return dilate ? (a > b ? a : b) : (a < b ? a : b); }
};

// A sum that is saturated to a byte at once gives the same extremum, and a weight beyond 255 counts as 255. What is to
// be added and what is to be taken away stand in every byte of a word; one of the two is 0.
template <bool dilate>
struct ByteTap {
  static constexpr bool dilates = dilate;
  using Type = Zeb8u;
  using Weight = Zeb32s;
  struct Prepared {
    Zeb32s up, down;
  };
  static Prepared prepared(Weight w) {
    const int most = w < -255 ? -255 : w > 255 ? 255 : w, change = dilate ? most : -most;
    const auto bytes = [](int v) { return v > 0 ? static_cast<Zeb32s>(0x01010101u * static_cast<unsigned>(v)) : 0; };
    return {bytes(change), bytes(-change)};
  }

  V8u up, down;
  ZEB_INLINE explicit ByteTap(Prepared p) : up(as<Zeb8u>(splat(p.up))), down(as<Zeb8u>(splat(p.down))) {}
  ZEB_INLINE V8u at(V8u s) const { return subSat(addSat(s, up), down); }
  static ZEB_INLINE Zeb8u at(Zeb8u s, Prepared p) {
    const int v = s + (p.up & 0xFF) - (p.down & 0xFF);
    return static_cast<Zeb8u>(v < 0 ? 0 : v > 255 ? 255 : v);
  }
  static ZEB_INLINE V8u pick(V8u a, V8u b) { return dilate ? max(a, b) : min(a, b); }
  static ZEB_INLINE Zeb8u pick(Zeb8u a, Zeb8u b) { return dilate ? (a > b ? a : b) : (a < b ? a : b); }
};

// ---- Regions ----

template <class Tap>
class GrayRegion {
  using T = typename Tap::Type;
  using Weight = typename Tap::Weight;
  using Prepared = typename Tap::Prepared;
  static constexpr int lanes = Vec<T>::lanes;
  static constexpr int64_t kept = 1024;  // weights that stay prepared
  static constexpr int piece = 64;       // weights of a larger mask that are prepared at a time

 public:
  GrayRegion(const ZebiMorphGrayState& state, Rows<const T> src, ZebiSize roi)
      : state_(state), weights_(static_cast<const Weight*>(state.weights)), src_(src), roi_(roi) {
    const int64_t count = int64_t(state.width) * state.height;
    small_ = count <= kept;
    if (small_) prepare(0, static_cast<ptrdiff_t>(count), prepared_);
  }

  void row(int y, T* dst) const {
    // Columns begin..end-1 need no pixel beyond the edges.
    const int64_t last = int64_t(roi_.width) - (state_.width - 1 - state_.anchorX);
    const int end = last < 0 ? 0 : static_cast<int>(last);
    const int begin = state_.anchorX < end ? state_.anchorX : end;
    for (int x = 0; x < begin; ++x) dst[x] = pixel(x, y);
    int x = begin;
    for (; x <= end - 4 * lanes; x += 4 * lanes) block<4>(x, y, dst);
    for (; x <= end - 2 * lanes; x += 2 * lanes) block<2>(x, y, dst);
    for (; x <= end - lanes; x += lanes) block<1>(x, y, dst);
    if (x < end && end - begin >= lanes) block<1>(end - lanes, y, dst), x = end;
    for (; x < roi_.width; ++x) dst[x] = pixel(x, y);
  }

 private:
  const T* sourceRow(int64_t y) const {
    return src_[static_cast<int>(y < 0 ? 0 : y >= roi_.height ? roi_.height - 1 : y)];
  }

  __attribute__((noinline)) void prepare(ptrdiff_t from, ptrdiff_t count, Prepared* out) const {
    for (ptrdiff_t i = 0; i < count; ++i) out[i] = Tap::prepared(weights_[from + i]);
  }

  // Source and destination both fit into memory, so that a column past a row's end is still an int.
  __attribute__((noinline)) T pixel(int x, int y) const {
    T best = Tap::at(sourceRow(int64_t(y) - state_.anchorY)[x < state_.anchorX ? 0 : x - state_.anchorX],
                     Tap::prepared(weights_[0]));
    const int last = roi_.width - 1;
    for (int r = 0, at = 0; r < state_.height; ++r) {
      const T* row = sourceRow(int64_t(y) + r - state_.anchorY);
      int column = x - state_.anchorX;
      for (int i = 0; i < state_.width; ++i, ++at, ++column) {
        const T s = row[column < 0 ? 0 : column > last ? last : column];
        best = Tap::pick(best, Tap::at(s, small_ ? prepared_[at] : Tap::prepared(weights_[at])));
      }
    }
    return best;
  }

  template <int vectors>
  ZEB_INLINE void block(int x, int y, T* dst) const {
    Vec<T> best[vectors];
    const T* p = sourceRow(int64_t(y) - state_.anchorY) + (x - state_.anchorX);
    const Tap first(Tap::prepared(weights_[0]));
    for (int k = 0; k < vectors; ++k) best[k] = first.at(load(p + k * lanes));
    Prepared some[piece];
    for (int r = 0; r < state_.height; ++r) {
      p = sourceRow(int64_t(y) + r - state_.anchorY) + (x - state_.anchorX);
      const ptrdiff_t at = static_cast<ptrdiff_t>(r) * state_.width;
      for (int from = 0; from < state_.width;) {
        const int rest = state_.width - from, n = small_ || rest < piece ? rest : piece;
        const Prepared* w = prepared_ + at;
        if (!small_) {
          prepare(at + from, n, some);
          w = some;
        }
        for (const Prepared* stop = w + n; w < stop; ++w, ++p) {
          const Tap tap(*w);
          for (int k = 0; k < vectors; ++k) best[k] = Tap::pick(best[k], tap.at(load(p + k * lanes)));
        }
        from += n;
      }
    }
    for (int k = 0; k < vectors; ++k) store(dst + x + k * lanes, best[k]);
  }

  const ZebiMorphGrayState& state_;
  const Weight* weights_;
  Rows<const T> src_;
  ZebiSize roi_;
  bool small_;
  Prepared prepared_[kept];
};

// Masks of bytes by their distinct weights.
template <bool dilate>
class ByteRegion {
  static constexpr int lanes = V8u::lanes;
  static constexpr int change(Zeb32s w) { return w < -255 ? -255 : w > 255 ? 255 : w; }

 public:
  static constexpr int mostTaps = 256;

  ByteRegion(const ZebiMorphGrayState& state, Rows<const Zeb8u> src, ZebiSize roi)
      : state_(state), src_(src), roi_(roi), count_(state.width * state.height) {
    // Sorted by weight: how many are not above each one is where those of it end.
    const Zeb32s* weights = static_cast<const Zeb32s*>(state.weights);
    short ends[511] = {};
    for (int i = 0; i < count_; ++i) ++ends[255 + change(weights[i])];
    for (int w = 0, sum = 0; w < 511; ++w) {
      if (ends[w] == 0) continue;
      sum += ends[w];
      ends[w] = static_cast<short>(sum);
      group_[groups_++] = {sum, dilate ? w - 255 : 255 - w};
    }
    for (int i = count_ - 1; i >= 0; --i)
      tap_[--ends[255 + change(weights[i])]] = {static_cast<short>(i / state.width),
                                                static_cast<short>(i % state.width)};
  }

  // Whether a row holds the vectors that the pixels beside its edges are taken from.
  static bool takes(const ZebiMorphGrayState& state, ZebiSize roi) {
    return int64_t(state.width) * state.height <= mostTaps && roi.width >= lanes + state.width;
  }

  void row(int y, Zeb8u* dst) const {
    const Zeb8u* rows[mostTaps];
    for (int r = 0; r < state_.height; ++r) {
      const int64_t at = int64_t(y) + r - state_.anchorY;
      rows[r] = src_[static_cast<int>(at < 0 ? 0 : at >= roi_.height ? roi_.height - 1 : at)];
    }
    // A pixel beside an edge is the first or the last element of a vector; the others are overwritten.
    const int begin = state_.anchorX, end = roi_.width - (state_.width - 1 - state_.anchorX);
    for (int x = roi_.width - 1; x >= end; --x) pixel(rows, x, lanes - 1, dst);
    for (int x = 0; x < begin; ++x) pixel(rows, x, 0, dst);
    const Zeb8u* taps[mostTaps];
    for (int i = 0; i < count_; ++i) taps[i] = rows[tap_[i].row] + tap_[i].column - state_.anchorX;
    int x = begin;
    for (; x <= end - 3 * lanes; x += 3 * lanes) block<3>(taps, x, dst);
    for (; x <= end - lanes; x += lanes) block<1>(taps, x, dst);
    if (x < end) block<1>(taps, end - lanes, dst);
  }

 private:
  // Pixel x, which stands so many elements behind the start of the vectors.
  void pixel(const Zeb8u* const* rows, int x, int before, Zeb8u* dst) const {
    const Zeb8u* taps[mostTaps];
    for (int i = 0; i < count_; ++i) {
      const int column = x + tap_[i].column - state_.anchorX;
      taps[i] = rows[tap_[i].row] + (column < 0 ? 0 : column >= roi_.width ? roi_.width - 1 : column) - before;
    }
    block<1>(taps, 0, dst + x - before);
  }

  template <int vectors>
  ZEB_INLINE void block(const Zeb8u* const* taps, int x, Zeb8u* dst) const {
    const auto pick = [](V8u a, V8u b) { return dilate ? max(a, b) : min(a, b); };
    V8u best[vectors];
#pragma GCC unroll 8
    for (int k = 0; k < vectors; ++k) best[k] = splat(Zeb8u(dilate ? 0 : 255));
    int i = 0;
    for (const Group *g = group_, *stop = g + groups_; g < stop; ++g) {
      V8u some[vectors];
      const Zeb8u* p = taps[i++] + x;
#pragma GCC unroll 8
      for (int k = 0; k < vectors; ++k) some[k] = load(p + k * lanes);
      for (; i < g->end; ++i) {
        p = taps[i] + x;
#pragma GCC unroll 8
        for (int k = 0; k < vectors; ++k) some[k] = pick(some[k], load(p + k * lanes));
      }
      const V8u all = splat(static_cast<Zeb8u>(g->change < 0 ? -g->change : g->change));
      if (g->change >= 0) {
#pragma GCC unroll 8
        for (int k = 0; k < vectors; ++k) best[k] = pick(best[k], addSat(some[k], all));
      } else {
#pragma GCC unroll 8
        for (int k = 0; k < vectors; ++k) best[k] = pick(best[k], subSat(some[k], all));
      }
    }
#pragma GCC unroll 8
    for (int k = 0; k < vectors; ++k) store(dst + x + k * lanes, best[k]);
  }

  struct Group {
    int end;     // of its taps
    int change;  // what it adds
  };
  struct Place {
    short row, column;
  };

  const ZebiMorphGrayState& state_;
  Rows<const Zeb8u> src_;
  ZebiSize roi_;
  int count_, groups_ = 0;
  Group group_[mostTaps];
  Place tap_[mostTaps];
};

// Not inlined: the lists of either region take some KB of the stack.
template <class Region, class T>
__attribute__((noinline)) void runRows(const ZebiMorphGrayState& state, Rows<const T> src, Rows<T> dst, ZebiSize roi) {
  const Region region(state, src, roi);
  for (int y = 0; y < roi.height; ++y) region.row(y, dst[y]);
}

template <class Tap, class T = typename Tap::Type>
ZebStatus grayRegion(const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roi, ZebiBorderType border,
                     const ZebiMorphGrayState* pState) {
  if (auto bad =
          firstFailure(checked(roi, image(pSrc, srcStep).ofAnyStep(), image(pDst, dstStep).ofAnyStep(), also(pState)),
                       require(border == zebBorderRepl, zebStsErrBadArgument)))
    return bad;
  if (auto bad = firstFailure(require(roi.width <= pState->roiWidth && roi.height <= pState->roiHeight, zebStsErrSize),
                              isGrayState(*pState)))
    return bad;
  const Rows<const T> src(pSrc, srcStep);
  const Rows<T> dst(pDst, dstStep);
  if constexpr (std::is_same_v<T, Zeb8u>) {
    using Bytes = ByteRegion<Tap::dilates>;
    if (Bytes::takes(*pState, roi)) return runRows<Bytes>(*pState, src, dst, roi), zebStsOk;
  }
  runRows<GrayRegion<Tap>>(*pState, src, dst, roi);
  return zebStsOk;
}

// ---- States ----

int64_t stateBytes(ZebiSize mask) {
  return 4 * int64_t(mask.width) * mask.height + static_cast<int64_t>(sizeof(ZebiMorphGrayState));
}

template <class W>
ZebStatus getSize(ZebiSize roi, const W* pMask, ZebiSize mask, int* pSize) {
  if (auto bad = firstFailure(present(pMask), present(pSize), hasArea(roi), hasArea(mask))) return bad;
  if (int64_t(mask.width) * mask.height > INT32_MAX) return zebStsErrOverflow;
  return reportSize(stateBytes(mask), pSize);
}

template <class W>
ZebStatus buildable(const void* state, ZebiSize roi, const W* pMask, ZebiSize mask, ZebiPoint anchor) {
  if (auto bad = firstFailure(require(state != nullptr, zebStsErrNullPointer), present(pMask), hasArea(roi),
                              hasArea(mask), require(anchor.x >= 0 && anchor.x < mask.width, zebStsErrAnchor),
                              require(anchor.y >= 0 && anchor.y < mask.height, zebStsErrAnchor)))
    return bad;
  return require(int64_t(mask.width) * mask.height <= INT32_MAX && stateBytes(mask) <= INT32_MAX, zebStsErrOverflow);
}

template <class W>
void build(ZebiMorphGrayState* state, ZebiSize roi, const W* pMask, ZebiSize mask, ZebiPoint anchor) {
  *state = {state + 1, mask.width, mask.height, anchor.x, anchor.y, roi.width, roi.height};
  memcpy(state + 1, pMask, static_cast<size_t>(mask.width) * mask.height * sizeof(W));
}

template <class W>
ZebStatus init(ZebiMorphGrayState* pState, ZebiSize roi, const W* pMask, ZebiSize mask, ZebiPoint anchor) {
  if (auto bad = buildable(pState, roi, pMask, mask, anchor)) return bad;
  build(pState, roi, pMask, mask, anchor);
  return zebStsOk;
}

template <class W>
ZebStatus initAlloc(ZebiMorphGrayState** ppState, ZebiSize roi, const W* pMask, ZebiSize mask, ZebiPoint anchor) {
  if (auto bad = buildable(ppState, roi, pMask, mask, anchor)) return bad;
  auto* state = reinterpret_cast<ZebiMorphGrayState*>(allocateState(stateBytes(mask)));
  if (state == nullptr) return zebStsErrMemAlloc;
  build(state, roi, pMask, mask, anchor);
  *ppState = state;
  return zebStsOk;
}

ZebStatus release(ZebiMorphGrayState* pState) {
  if (auto bad = present(pState)) return bad;
  if (auto bad = isGrayState(*pState)) return bad;
  pState->weights = nullptr;
  zebsFree(pState);
  return zebStsOk;
}

}  // namespace

// ---- Bindings ----

ZEB_ENTRY(zebiMorphGrayGetSize_8u_C1R)(ZebiSize roiSize, const Zeb32s* pMask, ZebiSize maskSize, int* pSize) {
  return getSize(roiSize, pMask, maskSize, pSize);
}
ZEB_ENTRY(zebiMorphGrayGetSize_32f_C1R)(ZebiSize roiSize, const Zeb32f* pMask, ZebiSize maskSize, int* pSize) {
  return getSize(roiSize, pMask, maskSize, pSize);
}

#define INIT(name, State, W, function)                                                   \
  ZEB_ENTRY(name)                                                                        \
  (State state, ZebiSize roiSize, const W* pMask, ZebiSize maskSize, ZebiPoint anchor) { \
    return function(state, roiSize, pMask, maskSize, anchor);                            \
  }
INIT(zebiMorphGrayInit_8u_C1R, ZebiMorphGrayState*, Zeb32s, init)
INIT(zebiMorphGrayInit_32f_C1R, ZebiMorphGrayState*, Zeb32f, init)
INIT(zebiMorphGrayInitAlloc_8u_C1R, ZebiMorphGrayState**, Zeb32s, initAlloc)
INIT(zebiMorphGrayInitAlloc_32f_C1R, ZebiMorphGrayState**, Zeb32f, initAlloc)

ZEB_ENTRY(zebiMorphGrayFree_8u_C1R)(ZebiMorphGrayState* pState) {
  return release(pState);
}
ZEB_ENTRY(zebiMorphGrayFree_32f_C1R)(ZebiMorphGrayState* pState) {
  return release(pState);
}

#define GRAY(name, T, Tap)                                                                        \
  ZEB_ENTRY(name)                                                                                 \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebiBorderType borderType, \
   const ZebiMorphGrayState* pState) {                                                            \
    return grayRegion<Tap>(pSrc, srcStep, pDst, dstStep, roiSize, borderType, pState);            \
  }
GRAY(zebiGrayErodeBorder_8u_C1R, Zeb8u, ByteTap<false>)
GRAY(zebiGrayErodeBorder_32f_C1R, Zeb32f, FloatTap<false>)
GRAY(zebiGrayDilateBorder_8u_C1R, Zeb8u, ByteTap<true>)
GRAY(zebiGrayDilateBorder_32f_C1R, Zeb32f, FloatTap<true>)
