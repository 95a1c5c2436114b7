// States of inpainting: distances by fast marching, masked pixels sorted by them, tables of weights.
#include "segment/inpaint.h"

#include <math.h>
#include <string.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"
#include "core/memory.h"
#include "core/scratch.h"
#include "segment/marching.h"
#include "segment/pixel_bits.h"

namespace {

using namespace zeb;

constexpr int64_t slack = 256;  // the header, the ends of the tables, the boundaries of the pieces
static_assert(sizeof(InpaintState) + 5 * 32 <= slack);

// Without the order of filling, whose length the mask tells.
int64_t fixedBytes(ZebiSize roi, int side) {
  return slack + 8 * boundedProduct(roi.width, roi.height) + 8 * int64_t{side} * side;
}

// ---- Sorting ----

constexpr int digitBits = 11, digits = 1 << digitBits;

struct Entry {
  uint32_t key;
  Zeb32s pixel;
};

int64_t sortingBytes(int64_t count) {
  return 2 * count * static_cast<int64_t>(sizeof(Entry)) + int64_t{3 * digits} * static_cast<int64_t>(sizeof(int)) + 64;
}

// Calls visit(pixel) for the pixels under the mask in scan order.
template <class Visit>
ZEB_INLINE void eachMasked(Rows<const Zeb8u> mask, ZebiSize roi, Visit visit) {
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; x += 32) {
      const int n = roi.width - x < 32 ? roi.width - x : 32;
      for (uint32_t bits = differing(mask[y] + x, n, splat(Zeb8u(0))); bits; bits &= bits - 1)
        visit(y * roi.width + x + __builtin_ctz(bits));
    }
}

int maskedPixels(Rows<const Zeb8u> mask, ZebiSize roi) {
  int count = 0;
  for (int y = 0; y < roi.height; ++y)
    for (int x = 0; x < roi.width; x += 32)
      count += __builtin_popcount(differing(mask[y] + x, roi.width - x < 32 ? roi.width - x : 32, splat(Zeb8u(0))));
  return count;
}

// The masked pixels by ascending distance, equal ones in scan order: three passes over the digits of the keys, each of
// which keeps the order of the one before. The bits of positive floats are in the order of their values.
void sortByDistance(Rows<const Zeb8u> mask, const InpaintState& state, Zeb8u* memory) {
  const int n = state.masked;
  Scratch scratch(memory, sortingBytes(n));
  int(*const place)[digits] = reinterpret_cast<int(*)[digits]>(scratch.take<int>(3 * digits));
  Entry *const a = scratch.take<Entry>(n, 4), *const b = scratch.take<Entry>(n, 4);
  memset(place, 0, sizeof(int) * 3 * digits);
  int count = 0;
  eachMasked(mask, state.roi, [&](int pixel) {
    uint32_t key;
    memcpy(&key, state.t + pixel, sizeof key);
    a[count++] = {key, pixel};
    for (int digit = 0; digit < 3; ++digit) ++place[digit][key >> digit * digitBits & (digits - 1)];
  });
  for (int digit = 0; digit < 3; ++digit)
    for (int value = 0, before = 0; value < digits; ++value) {
      const int here = place[digit][value];
      place[digit][value] = before;
      before += here;
    }
  for (int i = 0; i < n; ++i) b[place[0][a[i].key & (digits - 1)]++] = a[i];
  for (int i = 0; i < n; ++i) a[place[1][b[i].key >> digitBits & (digits - 1)]++] = b[i];
  for (int i = 0; i < n; ++i) state.order[place[2][a[i].key >> 2 * digitBits]++] = a[i].pixel;
}

// ---- The state ----

// A table of weights and what whole vectors read behind its end: the square of an odd number is 1 modulo 8.
int64_t tableElements(int side) {
  return int64_t{side} * side + V32f::lanes - 1;
}

void fillWeights(const InpaintState& state) {
  const double most = static_cast<double>(state.radius) * static_cast<double>(state.radius);
  int i = 0;
  for (int dy = -state.reach; dy <= state.reach; ++dy)
    for (int dx = -state.reach; dx <= state.reach; ++dx, ++i) {
      const double d2 = dx * dx + dy * dy;
      const bool takesPart = d2 > 0 && d2 <= most;
      state.c1[i] = takesPart ? static_cast<Zeb32f>(1 / ::sqrt(d2)) : 0;
      state.c2[i] = takesPart ? static_cast<Zeb32f>(1 / d2) : 0;
    }
  for (; i < tableElements(state.side()); ++i) state.c1[i] = state.c2[i] = 0;
}

ZebStatus make(ZebiInpaintState** ppState, const Zeb8u* pMask, int maskStep, ZebiSize roi, Zeb32f radius,
               ZebiInpaintMethod method, int channels) {
  if (auto bad = firstFailure(checked(roi, image(pMask, maskStep), also(ppState)),
                              require(radius >= 1 && radius <= 100, zebStsErrOutOfRange),
                              require(method == zebInpaintTelea || method == zebInpaintIsophote, zebStsErrBadArgument)))
    return bad;
  const int reach = static_cast<int>(radius), side = 2 * reach + 1;
  // The mask is read only where the rest has a size at all.
  if (fixedBytes(roi, side) > INT32_MAX || marchingBytes(roi) > INT32_MAX) return zebStsErrOverflow;
  const Rows mask(pMask, maskStep);
  const int masked = maskedPixels(mask, roi);
  const int64_t pixels = int64_t{roi.width} * roi.height, bytes = fixedBytes(roi, side) + 4 * int64_t{masked};
  const int64_t sorting = sortingBytes(masked), marching = marchingBytes(roi);
  const int64_t temporary = sorting > marching ? sorting : marching;
  if (bytes > INT32_MAX || temporary > INT32_MAX) return zebStsErrOverflow;
  Zeb8u* const block = allocateState(bytes);
  if (!block) return zebStsErrMemAlloc;
  Scratch scratch(block, bytes);
  InpaintState* const state = scratch.take<InpaintState>(1, 1);
  Zeb8u* const work = zebsMalloc_8u(static_cast<int>(temporary));
  if (!work) {
    releaseState(block, state->id);
    return zebStsErrMemAlloc;
  }
  Zeb32f* const c1 = scratch.take<Zeb32f>(tableElements(side));
  Zeb32f* const c2 = scratch.take<Zeb32f>(tableElements(side));
  Zeb32f* const t = scratch.take<Zeb32f>(pixels);
  Zeb32s* const rank = scratch.take<Zeb32s>(pixels);
  *state = {inpaintId(channels), roi, method, radius, reach, masked, c1, c2, t, rank, scratch.take<Zeb32s>(masked)};
  fillWeights(*state);
  march(mask, Rows(t, roi.width * static_cast<int>(sizeof(Zeb32f))), roi, radius + 2, work);
  sortByDistance(mask, *state, work);
  zebsFree(work);
  zebsSet_32s(-1, rank, static_cast<int>(pixels));
  for (int k = 0; k < masked; ++k) rank[state->order[k]] = k;
  *ppState = reinterpret_cast<ZebiInpaintState*>(state);
  return zebStsOk;
}

ZebStatus release(ZebiInpaintState* pState, int channels) {
  if (auto bad = present(pState)) return bad;
  InpaintState* const state = reinterpret_cast<InpaintState*>(pState);
  if (auto bad = isState(state->id, inpaintId(channels))) return bad;
  releaseState(state, state->id);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiInpaintInitAlloc_8u_C1R)
(ZebiInpaintState** ppState, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb32f radius,
 ZebiInpaintMethod method) {
  return make(ppState, pMask, maskStep, roiSize, radius, method, 1);
}
ZEB_ENTRY(zebiInpaintInitAlloc_8u_C3R)
(ZebiInpaintState** ppState, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb32f radius,
 ZebiInpaintMethod method) {
  return make(ppState, pMask, maskStep, roiSize, radius, method, 3);
}
ZEB_ENTRY(zebiInpaintFree_8u_C1R)(ZebiInpaintState* pState) {
  return release(pState, 1);
}
ZEB_ENTRY(zebiInpaintFree_8u_C3R)(ZebiInpaintState* pState) {
  return release(pState, 3);
}
