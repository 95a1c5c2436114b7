// Motion history: where the silhouette is set the time becomes now, elsewhere times older than the duration become 0.
// Method: A. Bobick, J. Davis, "The recognition of human movement using temporal templates", 2001.
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"

namespace {

using namespace zeb;

struct Times {
  V32f now;
  V32f limit;
};

// An ordered comparison with 0 finds neither -0 to be motion nor a NaN to be none.
ZEB_INLINE V32f updated(V32f silhouette, V32f time, Times times) {
  const V32f remembered = andNot(less(time, times.limit), time);
  return select(equal(silhouette, splat(0.0f)), remembered, times.now);
}

// Limit: 8 bytes of times and one silhouette element per pixel through memory.
template <class T>
void updateRow(const T* silhouette, Zeb32f* mhi, int n, Times times) {
  const auto body = [=](int x, auto part)
                        ZEB_BODY { part.to(mhi + x, updated(part.floats(silhouette + x), part.from(mhi + x), times)); };
  forVectorsAhead<8>(n, body, mhi, silhouette);
}

template <class T>
ZebStatus updateHistory(Image<const T> silhouette, Image<Zeb32f> mhi, ZebiSize roi, Zeb32f timestamp, Zeb32f duration) {
  if (auto bad = firstFailure(checked(roi, silhouette, mhi), require(!(duration < 0), zebStsErrOutOfRange))) return bad;
  const Zeb32f limit = timestamp - duration;
  const Times times = {splat(timestamp), splat(limit)};
  forEachRow(
      roi, [times](const T* s, Zeb32f* m, int n) { updateRow(s, m, n, times); }, silhouette, mhi);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiUpdateMotionHistory_8u32f_C1IR)
(const Zeb8u* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep, ZebiSize roiSize, Zeb32f timestamp,
 Zeb32f mhiDuration) {
  return updateHistory<Zeb8u>(image(pSilhouette, silStep), image(pMHI, mhiStep), roiSize, timestamp, mhiDuration);
}
ZEB_ENTRY(zebiUpdateMotionHistory_16u32f_C1IR)
(const Zeb16u* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep, ZebiSize roiSize, Zeb32f timestamp,
 Zeb32f mhiDuration) {
  return updateHistory<Zeb16u>(image(pSilhouette, silStep), image(pMHI, mhiStep), roiSize, timestamp, mhiDuration);
}
ZEB_ENTRY(zebiUpdateMotionHistory_32f_C1IR)
(const Zeb32f* pSilhouette, int silStep, Zeb32f* pMHI, int mhiStep, ZebiSize roiSize, Zeb32f timestamp,
 Zeb32f mhiDuration) {
  return updateHistory<Zeb32f>(image(pSilhouette, silStep), image(pMHI, mhiStep), roiSize, timestamp, mhiDuration);
}
