// Pyramid records: the sizes and scales of an image's levels.
#include "motion/pyramid.h"

#include <string.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/memory.h"
#include "core/scratch.h"

namespace {

using namespace zeb;

// A record as it is allocated: the identifier stands behind what callers see of it.
struct OwnedPyramid {
  ZebiPyramid record;
  uint32_t id;
};
constexpr uint32_t pyramidId = stateId(StateKind::pyramid, 0, 0);

// Header and arrays in one block; arrays of eight-byte words first.
constexpr int64_t headerBytes = 64;
constexpr int64_t recordBytes(int64_t levels) {
  return headerBytes + levels * static_cast<int64_t>(sizeof(Zeb8u*) + sizeof(ZebiSize) + sizeof(Zeb64f) + sizeof(int));
}
static_assert(sizeof(OwnedPyramid) <= headerBytes - 8, "room to align the arrays");

ZebiPyramid* makeRecord(const ZebiSize* sizes, int level, Zeb32f rate) {
  const int count = level + 1;
  Zeb8u* const block = allocateState(recordBytes(count));
  if (!block) return nullptr;
  Scratch scratch(block, recordBytes(count));
  OwnedPyramid* const owned = scratch.take<OwnedPyramid>(1, 1);
  owned->id = pyramidId;
  ZebiPyramid* const record = &owned->record;
  record->pRoi = scratch.take<ZebiSize>(count, 8);
  record->pRate = scratch.take<Zeb64f>(count, 8);
  record->pImage = scratch.take<Zeb8u*>(count, 4);
  record->pStep = scratch.take<int>(count, 4);
  record->pState = nullptr;
  record->level = level;
  memcpy(record->pRoi, sizes, sizeof(ZebiSize) * static_cast<size_t>(count));
  const Zeb64f ratio = 1.0 / static_cast<Zeb64f>(rate);
  Zeb64f scale = 1.0;
  for (int i = 0; i < count; ++i, scale *= ratio) {
    record->pRate[i] = scale;
    record->pImage[i] = nullptr;
    record->pStep[i] = 0;
  }
  return record;
}

}  // namespace

ZEB_ENTRY(zebiGetPyramidDownROI)(ZebiSize srcRoi, ZebiSize* pDstRoi, Zeb32f rate) {
  if (auto bad = firstFailure(present(pDstRoi), hasArea(srcRoi), require(isPyramidRate(rate), zebStsErrBadArgument)))
    return bad;
  *pDstRoi = pyramidDownSize(srcRoi, rate);
  return zebStsOk;
}

ZEB_ENTRY(zebiGetPyramidUpROI)(ZebiSize srcRoi, ZebiSize* pDstRoiMin, ZebiSize* pDstRoiMax, Zeb32f rate) {
  if (auto bad = firstFailure(present(pDstRoiMin, pDstRoiMax), hasArea(srcRoi),
                              require(isPyramidRate(rate), zebStsErrBadArgument)))
    return bad;
  const LengthRange width = pyramidUpRange(srcRoi.width, rate), height = pyramidUpRange(srcRoi.height, rate);
  // The smallest length is never beyond the largest.
  if (width.largest > INT32_MAX || height.largest > INT32_MAX) return zebStsErrOverflow;
  *pDstRoiMin = {static_cast<int>(width.smallest), static_cast<int>(height.smallest)};
  *pDstRoiMax = {static_cast<int>(width.largest), static_cast<int>(height.largest)};
  return zebStsOk;
}

ZEB_ENTRY(zebiPyramidInitAlloc)(ZebiPyramid** ppPyr, int level, ZebiSize roiSize, Zeb32f rate) {
  if (auto bad = firstFailure(present(ppPyr), hasArea(roiSize),
                              require(isPyramidRate(rate) && level >= 1, zebStsErrBadArgument)))
    return bad;
  // A dimension above 1 shrinks at every step: there are no more levels than pixels along the longer side.
  const int longer = roiSize.width > roiSize.height ? roiSize.width : roiSize.height;
  auto* const sizes =
      reinterpret_cast<ZebiSize*>(allocateState(static_cast<int64_t>(longer) * static_cast<int>(sizeof(ZebiSize))));
  if (!sizes) return zebStsErrMemAlloc;
  const int64_t levels =
      forEachLevel(roiSize, rate, int64_t{level} + 1, [=](int64_t i, ZebiSize size) { sizes[i] = size; });
  ZebiPyramid* const record = makeRecord(sizes, static_cast<int>(levels - 1), rate);
  zebsFree(sizes);
  if (!record) return zebStsErrMemAlloc;
  *ppPyr = record;
  return zebStsOk;
}

ZEB_ENTRY(zebiPyramidFree)(ZebiPyramid* pPyr) {
  if (auto bad = present(pPyr)) return bad;
  auto* const owned = reinterpret_cast<OwnedPyramid*>(pPyr);
  if (auto bad = isState(owned->id, pyramidId)) return bad;
  releaseState(owned, owned->id);
  return zebStsOk;
}
