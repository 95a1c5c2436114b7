// Up layers of any rate: the source, read at (x / rate, y / rate) by linear interpolation, smoothed. Rows are read and
// smoothed along themselves first; as many of them as the kernel is high are kept for smoothing down the columns.
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"
#include "core/memory.h"
#include "core/scratch.h"
#include "motion/layer.h"

namespace {

using namespace zeb;

template <class T, int channels>
class Enlarger {
 public:
  Enlarger(const LayerState& state, Rows<const T> src, ZebiSize srcSize, ZebiSize dstSize, Zeb8u* block)
      : Enlarger(state, src, srcSize, dstSize, Scratch(block, bytes(state, srcSize, dstSize))) {}

  static int64_t bytes(const LayerState& state, ZebiSize srcSize, ZebiSize dstSize) {
    const int64_t row = rowFloats(dstSize), bordered = borderedFloats(state, dstSize);
    // The ring is by far the largest: rows x kernel fits 64 bits.
    return RowRing<Zeb32f>::bytes(state.kernelSize, row) + 4 * (3 * row + bordered + rowFloats(srcSize)) +
           RowPlaces::bytes(dstSize.width, channels) + 64;
  }

  void run(Rows<T> dst) {
    const int n = dstSize_.width * channels;
    places_.template set<channels>(dstSize_.width, srcSize_.width, [this](int x) { return x / rate(); });
    int made = 0;
    for (int y = 0; y < dstSize_.height; ++y) {
      for (; made < dstSize_.height && made <= y + state_.reach(); ++made) makeRow(made);
      smoothColumns(
          state_.kernel(), [&](int q) -> const Zeb32f* { return ring_.back(made - 1 - q); }, y, dstSize_.height, n,
          smooth_);
      T* const out = dst[y];
      for (int i = 0; i < n; i += 8) storePixels(out + i, load(smooth_ + i), n - i);
    }
  }

 private:
  static int64_t rowFloats(ZebiSize size) { return workRow(static_cast<int64_t>(size.width) * channels); }
  static int64_t borderedFloats(const LayerState& state, ZebiSize size) {
    return workRow((static_cast<int64_t>(size.width) + state.kernelSize) * channels);
  }

  Enlarger(const LayerState& state, Rows<const T> src, ZebiSize srcSize, ZebiSize dstSize, Scratch scratch)
      : state_(state),
        src_(src),
        srcSize_(srcSize),
        dstSize_(dstSize),
        ring_(scratch, state.kernelSize, rowFloats(dstSize), 4),
        read_{scratch.take<Zeb32f>(rowFloats(dstSize), 4), scratch.take<Zeb32f>(rowFloats(dstSize), 4)},
        smooth_(scratch.take<Zeb32f>(rowFloats(dstSize), 4)),
        bordered_(scratch.take<Zeb32f>(borderedFloats(state, dstSize), 4) +
                  static_cast<ptrdiff_t>(state.reach()) * channels),
        source_(scratch.take<Zeb32f>(rowFloats(srcSize), 4)),
        places_(scratch, dstSize.width, channels) {}

  double rate() const { return static_cast<double>(state_.rate); }

  // Source row y, read at the destination's columns and smoothed.
  const Zeb32f* readRow(int y) {
    Zeb32f* const read = read_[y & 1];
    if (held_[y & 1] != y) {
      const T* const row = src_[y];
      forVectors<V32f::lanes>(0, srcSize_.width * channels,
                              [&](int i, auto part) ZEB_BODY { part.to(source_ + i, part.floats(row + i)); });
      places_.interpolate(source_, bordered_, FromFirst());
      smoothRow<channels>(state_.kernel(), bordered_, dstSize_.width, read);
      held_[y & 1] = y;
    }
    return read;
  }
  void makeRow(int y) {
    const Place place = placeAt(y / rate(), srcSize_.height);
    const Zeb32f* const s = readRow(place.index);
    const Zeb32f* const t = place.fraction > 0 ? readRow(place.index + 1) : s;
    Zeb32f* const out = ring_.enter();
    const V32f fraction = splat(place.fraction);
    for (int i = 0; i < dstSize_.width * channels; i += 8)
      store(out + i, FromFirst()(load(s + i), load(t + i), fraction));
  }

  const LayerState& state_;
  Rows<const T> src_;
  ZebiSize srcSize_, dstSize_;
  RowRing<Zeb32f> ring_;
  Zeb32f *read_[2], *smooth_, *bordered_, *source_;
  RowPlaces places_;
  int held_[2] = {-1, -1};
};

bool within(int n, LengthRange range) {
  return n >= range.smallest && n <= range.largest;
}

template <class T, int channels>
ZebStatus layerUp(const T* pSrc, int srcStep, ZebiSize srcSize, T* pDst, int dstStep, ZebiSize dstSize,
                  const LayerState* pState) {
  const auto src = image<channels>(pSrc, srcStep).ofAnyStep();
  const auto dst = image<channels>(pDst, dstStep).wider(widerBy<channels>(dstSize, srcSize)).ofAnyStep();
  if (auto bad = checked(srcSize, src, dst, also(pState))) return bad;
  const Zeb32f rate = pState->rate;
  if (auto bad = require(isPyramidRate(rate), zebStsErrBadArgument)) return bad;
  if (auto bad = firstFailure(require(within(dstSize.width, pyramidUpRange(srcSize.width, rate)) &&
                                          within(dstSize.height, pyramidUpRange(srcSize.height, rate)),
                                      zebStsErrSize),
                              isState(pState->id, layerId<T>(StateKind::pyramidLayerUp, channels)),
                              require(pState->serves(srcSize), zebStsErrSize)))
    return bad;
  Zeb8u* const block = allocateState(Enlarger<T, channels>::bytes(*pState, srcSize, dstSize));
  if (!block) return zebStsErrMemAlloc;
  Enlarger<T, channels>(*pState, src.rows(), srcSize, dstSize, block).run(dst.rows());
  zebsFree(block);
  return zebStsOk;
}

template <class T, int channels, class K>
ZebStatus makeUp(ZebiPyramidUpState** ppState, ZebiSize roi, Zeb32f rate, const K* pKernel, int kerSize, int mode) {
  LayerState* state = nullptr;
  const LayerPlan plan = {layerId<T>(StateKind::pyramidLayerUp, channels), dataTypeOf<T>(), true, 0};
  const ZebStatus status = makeLayer(ppState ? &state : nullptr, roi, rate, pKernel, kerSize, mode, plan);
  if (status >= zebStsOk) *ppState = static_cast<ZebiPyramidUpState*>(state);
  return status;
}

}  // namespace

#define LAYER_UP(init, call, release, T, K, channels)                                                      \
  ZEB_ENTRY(init)                                                                                          \
  (ZebiPyramidUpState * *ppState, ZebiSize srcRoi, Zeb32f rate, const K* pKernel, int kerSize, int mode) { \
    return makeUp<T, channels>(ppState, srcRoi, rate, pKernel, kerSize, mode);                             \
  }                                                                                                        \
  ZEB_ENTRY(call)                                                                                          \
  (const T* pSrc, int srcStep, ZebiSize srcRoiSize, T* pDst, int dstStep, ZebiSize dstRoiSize,             \
   ZebiPyramidUpState* pState) {                                                                           \
    return layerUp<T, channels>(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, pState);             \
  }                                                                                                        \
  ZEB_ENTRY(release)(ZebiPyramidUpState * pState) {                                                        \
    return freeLayer(pState, layerId<T>(StateKind::pyramidLayerUp, channels));                             \
  }
LAYER_UP(zebiPyramidLayerUpInitAlloc_8u_C1R, zebiPyramidLayerUp_8u_C1R, zebiPyramidLayerUpFree_8u_C1R, Zeb8u, Zeb16s, 1)
LAYER_UP(zebiPyramidLayerUpInitAlloc_8u_C3R, zebiPyramidLayerUp_8u_C3R, zebiPyramidLayerUpFree_8u_C3R, Zeb8u, Zeb16s, 3)
LAYER_UP(zebiPyramidLayerUpInitAlloc_16u_C1R, zebiPyramidLayerUp_16u_C1R, zebiPyramidLayerUpFree_16u_C1R, Zeb16u,
         Zeb16s, 1)
LAYER_UP(zebiPyramidLayerUpInitAlloc_16u_C3R, zebiPyramidLayerUp_16u_C3R, zebiPyramidLayerUpFree_16u_C3R, Zeb16u,
         Zeb16s, 3)
LAYER_UP(zebiPyramidLayerUpInitAlloc_32f_C1R, zebiPyramidLayerUp_32f_C1R, zebiPyramidLayerUpFree_32f_C1R, Zeb32f,
         Zeb32f, 1)
LAYER_UP(zebiPyramidLayerUpInitAlloc_32f_C3R, zebiPyramidLayerUp_32f_C3R, zebiPyramidLayerUpFree_32f_C3R, Zeb32f,
         Zeb32f, 3)
