// States of the pyramid layers: one block with the weights, the level sizes and the work rows.
#include "core/checks.h"
#include "core/entry.h"
#include "core/memory.h"
#include "core/scratch.h"
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
               LayerPlan plan) {
  if (auto bad = firstFailure(present(ppState, pKernel), hasArea(roi),
                              require(mode == zebInterLinear && isPyramidRate(rate) && kerSize >= 3 && kerSize % 2 == 1,
                                      zebStsErrBadArgument)))
    return bad;
  const int64_t fixedBytes = static_cast<int64_t>(sizeof(LayerState)) + 64 + 4 * static_cast<int64_t>(kerSize);
  constexpr auto sizeBytes = static_cast<int64_t>(sizeof(ZebiSize));
  const int64_t most = (INT32_MAX - fixedBytes - plan.workBytes) / sizeBytes;
  if (most < 0) return zebStsErrMemAlloc;
  const bool chained = roi.width > kerSize && roi.height > kerSize;
  // One more than there is room for tells that they are too many.
  const int64_t levels = chained ? forEachLevel(roi, rate, most + 1, [](int64_t, ZebiSize) {}) : 0;
  const int64_t bytes = fixedBytes + plan.workBytes + levels * sizeBytes;
  Zeb8u* const block = allocateState(bytes);
  if (!block) return zebStsErrMemAlloc;
  Scratch scratch(block, bytes);
  LayerState* const state = scratch.take<LayerState>(1, 1);
  Zeb32f* const weights = scratch.take<Zeb32f>(kerSize, 4);
  ZebiSize* const sizes = scratch.take<ZebiSize>(levels, 4);
  Zeb8u* const work = scratch.take<Zeb8u>(plan.workBytes, 32);
  const bool unitSum = normalise(pKernel, kerSize / 2, plan.type, weights) && plan.unitSum;
  *state = {weights,
            plan.workBytes ? work : nullptr,
            nullptr,
            chained ? sizes : nullptr,
            static_cast<int>(levels),
            kerSize,
            plan.type,
            roi.width,
            roi.height,
            mode,
            rate,
            unitSum,
            plan.id};
  bool symmetric = true;
  for (int i = 0; i < kerSize / 2; ++i) {
    weights[kerSize - 1 - i] = weights[i];
    symmetric = symmetric && pKernel[i] == pKernel[kerSize - 1 - i];
  }
  if (chained) forEachLevel(roi, rate, levels, [=](int64_t i, ZebiSize size) { sizes[i] = size; });
  *ppState = state;
  return symmetric ? zebStsOk : zebStsWarnKernelNotSymmetric;
}

}  // namespace

namespace zeb {

ZebStatus makeLayer(LayerState** ppState, ZebiSize srcRoi, Zeb32f rate, const Zeb16s* pKernel, int kerSize, int mode,
                    LayerPlan plan) {
  return make(ppState, srcRoi, rate, pKernel, kerSize, mode, plan);
}
ZebStatus makeLayer(LayerState** ppState, ZebiSize srcRoi, Zeb32f rate, const Zeb32f* pKernel, int kerSize, int mode,
                    LayerPlan plan) {
  return make(ppState, srcRoi, rate, pKernel, kerSize, mode, plan);
}
ZebStatus freeLayer(LayerState* pState, uint32_t id) {
  if (auto bad = present(pState)) return bad;
  if (auto bad = isState(pState->id, id)) return bad;
  releaseState(pState, pState->id);
  return zebStsOk;
}

}  // namespace zeb
