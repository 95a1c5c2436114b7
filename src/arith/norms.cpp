// Norms of an image, of the difference of two images, and their quotient.
//
//   Inf   largest |v|
//   L1    sum of |v|
//   L2    square root of the sum of v v
#include "arith/sums.h"
#include "core/entry.h"

namespace {

using namespace zeb;

struct Norm {
  RunKernel ofImage, ofDifference;
  Zeb64f (*finished)(const Totals&);
  bool joinsRows;  // whatever the width; lanes of floats only at multiples of 16
};

template <class T>
Zeb64f largest(const Totals& t) {
  using Ordered = typename Largest<T>::Ordered;
  Ordered lanes[Vec<T>::lanes], most = 0;
  memcpy(lanes, t.sum, sizeof(lanes));
  for (const Ordered lane : lanes) most = most > lane ? most : lane;
  T value;
  memcpy(&value, &most, sizeof(value));
  return static_cast<Zeb64f>(value);
}
// Sums below 2^63.
Zeb64f wholeSum(const Totals& t) {
  return static_cast<Zeb64f>(static_cast<int64_t>(sumOfLanes(t.sum)));
}
Zeb64f rootOfWholeSum(const Totals& t) {
  return sqrt(static_cast<Zeb64f>(static_cast<int64_t>(sumOfLanes(t.squares))));
}
Zeb64f laneSum(const Totals& t) {
  return foldedLanes<16>(t.lanes);
}
Zeb64f rootOfLaneSum(const Totals& t) {
  return sqrt(foldedLanes<16>(t.lanes));
}

template <class Accumulator, class T>
constexpr Norm normOf(Zeb64f (*finished)(const Totals&), bool joinsRows) {
  return {addElements<Accumulator, T>, addDistances<Accumulator, T>, finished, joinsRows};
}

template <class T>
const Norm infNorm = normOf<Largest<T>, T>(largest<T>, true);

template <class T>
const Norm l1Norm = normOf<FloatLanes<false>, T>(laneSum, false);
template <>
const Norm l1Norm<Zeb8u> = normOf<ByteSum, Zeb8u>(wholeSum, true);
template <>
const Norm l1Norm<Zeb16u> = normOf<WordSum, Zeb16u>(wholeSum, true);

template <class T>
const Norm l2Norm = normOf<FloatLanes<true>, T>(rootOfLaneSum, false);
template <>
const Norm l2Norm<Zeb8u> = normOf<ByteSquares<>, Zeb8u>(rootOfWholeSum, true);
template <>
const Norm l2Norm<Zeb16u> = normOf<WordMoments, Zeb16u>(rootOfWholeSum, true);

// Of the image, or of the difference where there are two.
__attribute__((noinline)) ZebStatus norm(const Norm& norm, const Selection& selection, Zeb64f* pValue) {
  if (auto bad = selection.flaw(also(pValue))) return bad;
  Totals totals;
  Runs runs(selection, 1 << 30, norm.joinsRows);
  const RunKernel add = selection.isPair() ? norm.ofDifference : norm.ofImage;
  for (Run run; runs.next(run);) add(totals, run.first, run.second, run.n);
  *pValue = canonical(norm.finished(totals));
  return zebStsOk;
}

// The norm of the difference over that of the second image, run by run while they lie in the first-level cache.
__attribute__((noinline)) ZebStatus relativeNorm(const Norm& norm, const Selection& selection, Zeb64f* pValue) {
  if (auto bad = selection.flaw(also(pValue))) return bad;
  Totals difference, second;
  Runs runs(selection, 2048, norm.joinsRows);
  for (Run run; runs.next(run);) {
    norm.ofDifference(difference, run.first, run.second, run.n);
    norm.ofImage(second, run.second, nullptr, run.n);
  }
  const Zeb64f numerator = norm.finished(difference), denominator = norm.finished(second);
  if (denominator == 0) {
    *pValue = numerator > 0 ? __builtin_inf() : __builtin_nan("");
    return zebStsWarnDivByZero;
  }
  *pValue = canonical(numerator / denominator);
  return zebStsOk;
}

}  // namespace

// ---- Bindings ----

#define NORM_C1R(name, T, kind)                                                   \
  ZEB_ENTRY(name)(const T* pSrc, int srcStep, ZebiSize roiSize, Zeb64f* pValue) { \
    return norm(kind<T>, Selection(roiSize, image(pSrc, srcStep)), pValue);       \
  }
#define NORM_C1MR(name, T, kind)                                                                          \
  ZEB_ENTRY(name)                                                                                         \
  (const T* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, Zeb64f* pValue) {      \
    return norm(kind<T>, Selection(roiSize, image(pSrc, srcStep)).under(image(pMask, maskStep)), pValue); \
  }
#define NORM_C3CMR(name, T, kind)                                                                                  \
  ZEB_ENTRY(name)                                                                                                  \
  (const T* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, Zeb64f* pValue) {      \
    return norm(kind<T>, Selection(roiSize, image<3>(pSrc, srcStep)).under(image(pMask, maskStep)).ofChannel(coi), \
                pValue);                                                                                           \
  }
// Of the difference: what is `norm`, and of what it is relative to: `relativeNorm`.
#define PAIR_C1R(name, T, what, kind)                                                                         \
  ZEB_ENTRY(name)                                                                                             \
  (const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, ZebiSize roiSize, Zeb64f* pValue) {            \
    return what(kind<T>, Selection(roiSize, image(pSrc1, src1Step)).against(image(pSrc2, src2Step)), pValue); \
  }
#define PAIR_C1MR(name, T, what, kind)                                                                             \
  ZEB_ENTRY(name)                                                                                                  \
  (const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, \
   Zeb64f* pValue) {                                                                                               \
    Selection selection(roiSize, image(pSrc1, src1Step));                                                          \
    return what(kind<T>, selection.against(image(pSrc2, src2Step)).under(image(pMask, maskStep)), pValue);         \
  }
#define PAIR_C3CMR(name, T, what, kind)                                                                            \
  ZEB_ENTRY(name)                                                                                                  \
  (const T* pSrc1, int src1Step, const T* pSrc2, int src2Step, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, \
   int coi, Zeb64f* pValue) {                                                                                      \
    Selection selection(roiSize, image<3>(pSrc1, src1Step));                                                       \
    selection.against(image<3>(pSrc2, src2Step)).under(image(pMask, maskStep)).ofChannel(coi);                     \
    return what(kind<T>, selection, pValue);                                                                       \
  }

NORM_C1R(zebiNorm_Inf_8u_C1R, Zeb8u, infNorm)
NORM_C1R(zebiNorm_Inf_16u_C1R, Zeb16u, infNorm)
NORM_C1R(zebiNorm_Inf_32f_C1R, Zeb32f, infNorm)
NORM_C1MR(zebiNorm_Inf_8u_C1MR, Zeb8u, infNorm)
NORM_C1MR(zebiNorm_Inf_16u_C1MR, Zeb16u, infNorm)
NORM_C1MR(zebiNorm_Inf_32f_C1MR, Zeb32f, infNorm)
NORM_C3CMR(zebiNorm_Inf_8u_C3CMR, Zeb8u, infNorm)
NORM_C3CMR(zebiNorm_Inf_16u_C3CMR, Zeb16u, infNorm)
NORM_C3CMR(zebiNorm_Inf_32f_C3CMR, Zeb32f, infNorm)

NORM_C1R(zebiNorm_L1_8u_C1R, Zeb8u, l1Norm)
NORM_C1R(zebiNorm_L1_16u_C1R, Zeb16u, l1Norm)
NORM_C1R(zebiNorm_L1_32f_C1R, Zeb32f, l1Norm)
NORM_C1MR(zebiNorm_L1_8u_C1MR, Zeb8u, l1Norm)
NORM_C1MR(zebiNorm_L1_16u_C1MR, Zeb16u, l1Norm)
NORM_C1MR(zebiNorm_L1_32f_C1MR, Zeb32f, l1Norm)
NORM_C3CMR(zebiNorm_L1_8u_C3CMR, Zeb8u, l1Norm)
NORM_C3CMR(zebiNorm_L1_16u_C3CMR, Zeb16u, l1Norm)
NORM_C3CMR(zebiNorm_L1_32f_C3CMR, Zeb32f, l1Norm)

NORM_C1R(zebiNorm_L2_8u_C1R, Zeb8u, l2Norm)
NORM_C1R(zebiNorm_L2_16u_C1R, Zeb16u, l2Norm)
NORM_C1R(zebiNorm_L2_32f_C1R, Zeb32f, l2Norm)
NORM_C1MR(zebiNorm_L2_8u_C1MR, Zeb8u, l2Norm)
NORM_C1MR(zebiNorm_L2_16u_C1MR, Zeb16u, l2Norm)
NORM_C1MR(zebiNorm_L2_32f_C1MR, Zeb32f, l2Norm)
NORM_C3CMR(zebiNorm_L2_8u_C3CMR, Zeb8u, l2Norm)
NORM_C3CMR(zebiNorm_L2_16u_C3CMR, Zeb16u, l2Norm)
NORM_C3CMR(zebiNorm_L2_32f_C3CMR, Zeb32f, l2Norm)

PAIR_C1R(zebiNormDiff_Inf_8u_C1R, Zeb8u, norm, infNorm)
PAIR_C1R(zebiNormDiff_Inf_16u_C1R, Zeb16u, norm, infNorm)
PAIR_C1R(zebiNormDiff_Inf_32f_C1R, Zeb32f, norm, infNorm)
PAIR_C1MR(zebiNormDiff_Inf_8u_C1MR, Zeb8u, norm, infNorm)
PAIR_C1MR(zebiNormDiff_Inf_16u_C1MR, Zeb16u, norm, infNorm)
PAIR_C1MR(zebiNormDiff_Inf_32f_C1MR, Zeb32f, norm, infNorm)
PAIR_C3CMR(zebiNormDiff_Inf_8u_C3CMR, Zeb8u, norm, infNorm)
PAIR_C3CMR(zebiNormDiff_Inf_16u_C3CMR, Zeb16u, norm, infNorm)
PAIR_C3CMR(zebiNormDiff_Inf_32f_C3CMR, Zeb32f, norm, infNorm)

PAIR_C1R(zebiNormDiff_L1_8u_C1R, Zeb8u, norm, l1Norm)
PAIR_C1R(zebiNormDiff_L1_16u_C1R, Zeb16u, norm, l1Norm)
PAIR_C1R(zebiNormDiff_L1_32f_C1R, Zeb32f, norm, l1Norm)
PAIR_C1MR(zebiNormDiff_L1_8u_C1MR, Zeb8u, norm, l1Norm)
PAIR_C1MR(zebiNormDiff_L1_16u_C1MR, Zeb16u, norm, l1Norm)
PAIR_C1MR(zebiNormDiff_L1_32f_C1MR, Zeb32f, norm, l1Norm)
PAIR_C3CMR(zebiNormDiff_L1_8u_C3CMR, Zeb8u, norm, l1Norm)
PAIR_C3CMR(zebiNormDiff_L1_16u_C3CMR, Zeb16u, norm, l1Norm)
PAIR_C3CMR(zebiNormDiff_L1_32f_C3CMR, Zeb32f, norm, l1Norm)

PAIR_C1R(zebiNormDiff_L2_8u_C1R, Zeb8u, norm, l2Norm)
PAIR_C1R(zebiNormDiff_L2_16u_C1R, Zeb16u, norm, l2Norm)
PAIR_C1R(zebiNormDiff_L2_32f_C1R, Zeb32f, norm, l2Norm)
PAIR_C1MR(zebiNormDiff_L2_8u_C1MR, Zeb8u, norm, l2Norm)
PAIR_C1MR(zebiNormDiff_L2_16u_C1MR, Zeb16u, norm, l2Norm)
PAIR_C1MR(zebiNormDiff_L2_32f_C1MR, Zeb32f, norm, l2Norm)
PAIR_C3CMR(zebiNormDiff_L2_8u_C3CMR, Zeb8u, norm, l2Norm)
PAIR_C3CMR(zebiNormDiff_L2_16u_C3CMR, Zeb16u, norm, l2Norm)
PAIR_C3CMR(zebiNormDiff_L2_32f_C3CMR, Zeb32f, norm, l2Norm)

PAIR_C1R(zebiNormRel_Inf_8u_C1R, Zeb8u, relativeNorm, infNorm)
PAIR_C1R(zebiNormRel_Inf_16u_C1R, Zeb16u, relativeNorm, infNorm)
PAIR_C1R(zebiNormRel_Inf_32f_C1R, Zeb32f, relativeNorm, infNorm)
PAIR_C1MR(zebiNormRel_Inf_8u_C1MR, Zeb8u, relativeNorm, infNorm)
PAIR_C1MR(zebiNormRel_Inf_16u_C1MR, Zeb16u, relativeNorm, infNorm)
PAIR_C1MR(zebiNormRel_Inf_32f_C1MR, Zeb32f, relativeNorm, infNorm)
PAIR_C3CMR(zebiNormRel_Inf_8u_C3CMR, Zeb8u, relativeNorm, infNorm)
PAIR_C3CMR(zebiNormRel_Inf_16u_C3CMR, Zeb16u, relativeNorm, infNorm)
PAIR_C3CMR(zebiNormRel_Inf_32f_C3CMR, Zeb32f, relativeNorm, infNorm)

PAIR_C1R(zebiNormRel_L1_8u_C1R, Zeb8u, relativeNorm, l1Norm)
PAIR_C1R(zebiNormRel_L1_16u_C1R, Zeb16u, relativeNorm, l1Norm)
PAIR_C1R(zebiNormRel_L1_32f_C1R, Zeb32f, relativeNorm, l1Norm)
PAIR_C1MR(zebiNormRel_L1_8u_C1MR, Zeb8u, relativeNorm, l1Norm)
PAIR_C1MR(zebiNormRel_L1_16u_C1MR, Zeb16u, relativeNorm, l1Norm)
PAIR_C1MR(zebiNormRel_L1_32f_C1MR, Zeb32f, relativeNorm, l1Norm)
PAIR_C3CMR(zebiNormRel_L1_8u_C3CMR, Zeb8u, relativeNorm, l1Norm)
PAIR_C3CMR(zebiNormRel_L1_16u_C3CMR, Zeb16u, relativeNorm, l1Norm)
PAIR_C3CMR(zebiNormRel_L1_32f_C3CMR, Zeb32f, relativeNorm, l1Norm)

PAIR_C1R(zebiNormRel_L2_8u_C1R, Zeb8u, relativeNorm, l2Norm)
PAIR_C1R(zebiNormRel_L2_16u_C1R, Zeb16u, relativeNorm, l2Norm)
PAIR_C1R(zebiNormRel_L2_32f_C1R, Zeb32f, relativeNorm, l2Norm)
PAIR_C1MR(zebiNormRel_L2_8u_C1MR, Zeb8u, relativeNorm, l2Norm)
PAIR_C1MR(zebiNormRel_L2_16u_C1MR, Zeb16u, relativeNorm, l2Norm)
PAIR_C1MR(zebiNormRel_L2_32f_C1MR, Zeb32f, relativeNorm, l2Norm)
PAIR_C3CMR(zebiNormRel_L2_8u_C3CMR, Zeb8u, relativeNorm, l2Norm)
PAIR_C3CMR(zebiNormRel_L2_16u_C3CMR, Zeb16u, relativeNorm, l2Norm)
PAIR_C3CMR(zebiNormRel_L2_32f_C3CMR, Zeb32f, relativeNorm, l2Norm)
