// Down layers of any rate: the smoothed source, read at (rate x, rate y) by linear interpolation. Only those rows are
// smoothed that a destination row lies between, each once.
#include "core/checks.h"
#include "core/entry.h"
#include "core/scratch.h"
#include "motion/layer.h"

namespace {

using namespace zeb;

// Work rows for sources of this width; the destination is never wider.
struct DownRows {
  static int64_t bytes(int64_t width, int kernelSize, int channels) {
    const int64_t bordered = workRow((width + kernelSize) * channels), row = workRow(width * channels);
    return 4 * (bordered + 3 * row) + RowPlaces::bytes(width, channels) + 64;
  }
  DownRows(const LayerState& state, int channels) {
    Scratch scratch(state.pWork, bytes(state.maxWidth, state.kernelSize, channels));
    const int64_t row = workRow(static_cast<int64_t>(state.maxWidth) * channels);
    bordered = scratch.take<Zeb32f>(workRow((static_cast<int64_t>(state.maxWidth) + state.kernelSize) * channels), 4) +
               static_cast<ptrdiff_t>(state.reach()) * channels;
    smooth = scratch.take<Zeb32f>(row, 4);
    read[0] = scratch.take<Zeb32f>(row, 4);
    read[1] = scratch.take<Zeb32f>(row, 4);
    places = RowPlaces(scratch, state.maxWidth, channels);
  }
  Zeb32f *bordered, *smooth, *read[2];
  RowPlaces places;
};

// Rates that differ from 2 by rounding only take every second sample.
double exactRate(const LayerState& state) {
  return state.rate >= 1.99998f && state.rate <= 2.00002f ? 2 : static_cast<double>(state.rate);
}

template <class T, int channels>
void shrink(const LayerState& state, Rows<const T> src, ZebiSize srcSize, Rows<T> dst, ZebiSize dstSize) {
  DownRows work(state, channels);
  const double rate = exactRate(state);
  work.places.set<channels>(dstSize.width, srcSize.width, [=](int x) { return rate * x; });
  const int n = dstSize.width * channels;
  int held[2] = {-1, -1};
  const auto row = [&](int y) {
    Zeb32f* const read = work.read[y & 1];
    if (held[y & 1] != y) {
      smoothColumns(
          state.kernel(), [=](int q) { return src[q]; }, y, srcSize.height, srcSize.width * channels, work.bordered);
      smoothRow<channels>(state.kernel(), work.bordered, srcSize.width, work.smooth);
      work.places.interpolate(work.smooth, read, WeightedSum());
      held[y & 1] = y;
    }
    return read;
  };
  for (int y = 0; y < dstSize.height; ++y) {
    const Place place = placeAt(rate * y, srcSize.height);
    const Zeb32f* const s = row(place.index);
    const Zeb32f* const t = place.fraction > 0 ? row(place.index + 1) : s;
    T* const out = dst[y];
    const V32f fraction = splat(place.fraction), rest = splat(1 - place.fraction);
    if (place.fraction > 0)
      for (int i = 0; i < n; i += 8) storePixels(out + i, fma(fraction, load(t + i), rest * load(s + i)), n - i);
    else
      for (int i = 0; i < n; i += 8) storePixels(out + i, load(s + i), n - i);
  }
}

template <class T, int channels>
ZebStatus layerDown(const T* pSrc, int srcStep, ZebiSize srcSize, T* pDst, int dstStep, ZebiSize dstSize,
                    const LayerState* pState) {
  const auto src = image<channels>(pSrc, srcStep).ofAnyStep();
  const auto dst = image<channels>(pDst, dstStep).wider(widerBy<channels>(dstSize, srcSize)).ofAnyStep();
  if (auto bad = checked(srcSize, src, dst, also(pState))) return bad;
  if (auto bad = firstFailure(require(isPyramidRate(pState->rate), zebStsErrBadArgument),
                              isState(pState->id, layerId<T>(StateKind::pyramidLayerDown, channels))))
    return bad;
  if (!pState->serves(srcSize) || !sameSize(dstSize, levelBelow(*pState, srcSize))) return zebStsErrSize;
  shrink<T, channels>(*pState, src.rows(), srcSize, dst.rows(), dstSize);
  return zebStsOk;
}

template <class T, int channels, class K>
ZebStatus makeDown(ZebiPyramidDownState** ppState, ZebiSize roi, Zeb32f rate, const K* pKernel, int kerSize, int mode) {
  LayerState* state = nullptr;
  const LayerPlan plan = {layerId<T>(StateKind::pyramidLayerDown, channels), dataTypeOf<T>(), false,
                          DownRows::bytes(roi.width, kerSize, channels)};
  const ZebStatus status = makeLayer(ppState ? &state : nullptr, roi, rate, pKernel, kerSize, mode, plan);
  if (status >= zebStsOk) *ppState = static_cast<ZebiPyramidDownState*>(state);
  return status;
}

}  // namespace

#define LAYER_DOWN(init, call, release, T, K, channels)                                                      \
  ZEB_ENTRY(init)                                                                                            \
  (ZebiPyramidDownState * *ppState, ZebiSize srcRoi, Zeb32f rate, const K* pKernel, int kerSize, int mode) { \
    return makeDown<T, channels>(ppState, srcRoi, rate, pKernel, kerSize, mode);                             \
  }                                                                                                          \
  ZEB_ENTRY(call)                                                                                            \
  (const T* pSrc, int srcStep, ZebiSize srcRoiSize, T* pDst, int dstStep, ZebiSize dstRoiSize,               \
   ZebiPyramidDownState* pState) {                                                                           \
    return layerDown<T, channels>(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, pState);             \
  }                                                                                                          \
  ZEB_ENTRY(release)(ZebiPyramidDownState * pState) {                                                        \
    return freeLayer(pState, layerId<T>(StateKind::pyramidLayerDown, channels));                             \
  }
LAYER_DOWN(zebiPyramidLayerDownInitAlloc_8u_C1R, zebiPyramidLayerDown_8u_C1R, zebiPyramidLayerDownFree_8u_C1R, Zeb8u,
           Zeb16s, 1)
LAYER_DOWN(zebiPyramidLayerDownInitAlloc_8u_C3R, zebiPyramidLayerDown_8u_C3R, zebiPyramidLayerDownFree_8u_C3R, Zeb8u,
           Zeb16s, 3)
LAYER_DOWN(zebiPyramidLayerDownInitAlloc_16u_C1R, zebiPyramidLayerDown_16u_C1R, zebiPyramidLayerDownFree_16u_C1R,
           Zeb16u, Zeb16s, 1)
LAYER_DOWN(zebiPyramidLayerDownInitAlloc_16u_C3R, zebiPyramidLayerDown_16u_C3R, zebiPyramidLayerDownFree_16u_C3R,
           Zeb16u, Zeb16s, 3)
LAYER_DOWN(zebiPyramidLayerDownInitAlloc_32f_C1R, zebiPyramidLayerDown_32f_C1R, zebiPyramidLayerDownFree_32f_C1R,
           Zeb32f, Zeb32f, 1)
LAYER_DOWN(zebiPyramidLayerDownInitAlloc_32f_C3R, zebiPyramidLayerDown_32f_C3R, zebiPyramidLayerDownFree_32f_C3R,
           Zeb32f, Zeb32f, 3)
