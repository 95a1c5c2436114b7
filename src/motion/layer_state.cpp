// States of the pyramid layers: one block with the weights, the level sizes and the work rows.
#include "core/checks.h"
#include "core/entry.h"
#include "core/scratch.h"
#include "core/services.h"
#include "motion/layer.h"

namespace {

using namespace zeb;

Zeb16s saturated(int64_t v) {
  return static_cast<Zeb16s>(v < -32768 ? -32768 : v > 32767 ? 32767 : v);
}

// Weights of the first half and the centre; false where their sum is 0.
bool normalise(const Zeb16s* kernel, int half, ZebDataType type, Zeb32f* weights) {
  const int shift = type == zeb8u ? 1 : 2;
  const Zeb32f unit = 1.0f / static_cast<Zeb32f>(16384 >> shift);
  int64_t sum = kernel[half];
  for (int i = 0; i < half; ++i) sum += 2 * kernel[i];
  for (int i = 0; i <= half; ++i)
    weights[i] = unit * (sum ? saturated((kernel[i] * static_cast<int64_t>(16384) / sum) >> shift) : kernel[i]);
  return sum != 0;
}
bool normalise(const Zeb32f* kernel, int half, ZebDataType, Zeb32f* weights) {
  Zeb32f sum = 0;
  for (int i = 0; i < half; ++i) sum += kernel[i];
  sum = kernel[half] + 2 * sum;
  for (int i = 0; i <= half; ++i) weights[i] = sum != 0 ? kernel[i] / sum : kernel[i];
  return sum != 0;
}

template <class K>
ZebStatus make(LayerState** ppState, ZebiSize roi, Zeb32f rate, const K* pKernel, int kerSize, int mode,
               ZebDataType type, bool unitSum, int64_t workBytes) {
  if (auto bad = firstFailure(present(ppState, pKernel), hasArea(roi),
                              require(mode == zebInterLinear && isPyramidRate(rate) && kerSize >= 3 && kerSize % 2 == 1,
                                      zebStsErrBadArgument)))
    return bad;
  const int64_t fixedBytes = static_cast<int64_t>(sizeof(LayerState)) + 64 + 4 * static_cast<int64_t>(kerSize);
  if (fixedBytes + workBytes > INT32_MAX) return zebStsErrMemAlloc;
  const bool chained = roi.width > kerSize && roi.height > kerSize;
  const int levels = chained ? forEachLevel(roi, rate, [](int, ZebiSize) {}) : 0;
  const int64_t bytes = fixedBytes + workBytes + levels * static_cast<int64_t>(sizeof(ZebiSize));
  Zeb8u* const block = bytes <= INT32_MAX ? q7_zebsMalloc_8u(static_cast<int>(bytes)) : nullptr;
  if (!block) return zebStsErrMemAlloc;
  Scratch scratch(block, bytes);
  LayerState* const state = scratch.take<LayerState>(1, 1);
  Zeb32f* const weights = scratch.take<Zeb32f>(kerSize, 4);
  ZebiSize* const sizes = scratch.take<ZebiSize>(levels, 4);
  Zeb8u* const work = scratch.take<Zeb8u>(workBytes, 32);
  *state = {weights,    workBytes ? work : nullptr,
            nullptr,    chained ? sizes : nullptr,
            levels,     kerSize,
            type,       roi.width,
            roi.height, mode,
            rate,       false};
  state->unitSum = normalise(pKernel, kerSize / 2, type, weights) && unitSum;
  bool symmetric = true;
  for (int i = 0; i < kerSize / 2; ++i) {
    weights[kerSize - 1 - i] = weights[i];
    symmetric = symmetric && pKernel[i] == pKernel[kerSize - 1 - i];
  }
  if (chained) forEachLevel(roi, rate, [=](int i, ZebiSize size) { sizes[i] = size; });
  *ppState = state;
  return symmetric ? zebStsOk : zebStsWarnKernelNotSymmetric;
}

}  // namespace

namespace zeb {

ZebStatus makeLayer(LayerState** ppState, ZebiSize srcRoi, Zeb32f rate, const Zeb16s* pKernel, int kerSize, int mode,
                    ZebDataType type, bool unitSum, int64_t workBytes) {
  return make(ppState, srcRoi, rate, pKernel, kerSize, mode, type, unitSum, workBytes);
}
ZebStatus makeLayer(LayerState** ppState, ZebiSize srcRoi, Zeb32f rate, const Zeb32f* pKernel, int kerSize, int mode,
                    ZebDataType type, bool unitSum, int64_t workBytes) {
  return make(ppState, srcRoi, rate, pKernel, kerSize, mode, type, unitSum, workBytes);
}
ZebStatus freeLayer(LayerState* pState) {
  if (auto bad = present(pState)) return bad;
  q7_zebsFree(pState);
  return zebStsOk;
}

}  // namespace zeb
