// Motion history: where the silhouette is set the time becomes now, elsewhere times older than the duration become 0.
// Method: A. Bobick, J. Davis, "The recognition of human movement using temporal templates", 2001.
#include "core/checks.h"
#include "core/entry.h"
#include "core/lanes.h"
#include "core/rows.h"
#include "core/streaming.h"

namespace {

using namespace zeb;

struct Times {
  V32f now;
  V32f limit;
};

// An ordered comparison with 0 finds neither -0 to be motion nor a NaN to be none.
ZEB_INLINE V32f updated(V32f silhouette, V32f time, Times times) {
  const V32f kept = andNot(less(time, times.limit), time);
  return select(equal(silhouette, splat(0.0f)), kept, times.now);
}

// Limit: 8 bytes of times and one silhouette element per pixel through memory.
template <class T>
void updateRow(const T* silhouette, Zeb32f* mhi, int n, Times times) {
  int i = 0;
  for (; i <= n - 16; i += 16) {
    fetchAhead(mhi, i, n);
    fetchAhead(silhouette, i, n);
    const V32f first = updated(loadAsFloat(silhouette + i), load(mhi + i), times);
    const V32f second = updated(loadAsFloat(silhouette + i + 8), load(mhi + i + 8), times);
    store(mhi + i, first);
    store(mhi + i + 8, second);
  }
  for (; i < n; i += 8) {
    const int left = n - i < 8 ? n - i : 8;
    storeN(mhi + i, updated(loadAsFloatN(silhouette + i, left), loadN(mhi + i, left), times), left);
  }
}

template <class T>
ZebStatus updateHistory(const T* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep, ZebiSize roi, Zeb32f timestamp,
                        Zeb32f duration) {
  if (auto bad = firstFailure(present(pSilhouette, pMHI), hasArea(roi), holdsRow<T>(silStep, roi.width),
                              holdsRow<Zeb32f>(mhiStep, roi.width), wholeElements<T>(silStep),
                              wholeElements<Zeb32f>(mhiStep), require(!(duration < 0), zebStsErrOutOfRange)))
    return bad;
  const Zeb32f limit = timestamp - duration;
  const Times times = {splat(timestamp), splat(limit)};
  forEachRow(
      roi, 1, [times](const T* s, Zeb32f* m, int n) { updateRow(s, m, n, times); }, Rows(pSilhouette, silStep),
      Rows(pMHI, mhiStep));
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiUpdateMotionHistory_8u32f_C1IR)
(const Zeb8u* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep, ZebiSize roiSize, Zeb32f timestamp,
 Zeb32f mhiDuration) {
  return updateHistory(pSilhouette, silStep, pMHI, mhiStep, roiSize, timestamp, mhiDuration);
}
ZEB_ENTRY(zebiUpdateMotionHistory_16u32f_C1IR)
(const Zeb16u* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep, ZebiSize roiSize, Zeb32f timestamp,
 Zeb32f mhiDuration) {
  return updateHistory(pSilhouette, silStep, pMHI, mhiStep, roiSize, timestamp, mhiDuration);
}
ZEB_ENTRY(zebiUpdateMotionHistory_32f_C1IR)
(const Zeb32f* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep, ZebiSize roiSize, Zeb32f timestamp,
 Zeb32f mhiDuration) {
  return updateHistory(pSilhouette, silStep, pMHI, mhiStep, roiSize, timestamp, mhiDuration);
}
