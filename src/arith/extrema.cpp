// The smallest and the largest value of an image, and where they first stand.
//
// Runs are searched for their extremes; the first run that has the smallest of all, and the first that has the largest,
// are gone through once more for the place.
#include "arith/selection.h"
#include "core/entry.h"
#include "core/loops.h"

namespace {

using namespace zeb;

// The extreme of one kind so far, and the run that it was first met in. It starts with the value that all others beat;
// where nothing beats it, it is looked for from the start.
template <class T>
struct Extreme {
  T value;
  int column = 0, row = 0;
  ZebiPoint place = {-1, -1};

  // Lanes differ where they beat the value.
  template <class Better>
  void improve(Vec<T> lanes, const Run& run, Better better) {
    if (!anyBit(lanes ^ splat(value))) return;
    T each[Vec<T>::lanes];
    store(each, lanes);
    for (const T v : each)
      if (better(v, value)) value = v;
    column = run.column, row = run.row;
  }
};

template <class T>
struct Extremes {
  Extreme<T> least, most;
};

// Floats that are not numbers drop out as the first operands of minima and maxima.
template <class T>
void extremesOfRun(Extremes<T>& e, const Run& run) {
  Vec<T> low[2], high[2];
  low[0] = low[1] = splat(e.least.value);
  high[0] = high[1] = splat(e.most.value);
  const T* const pixels = static_cast<const T*>(run.first);
  forWhole<Vec<T>::lanes, 4>(run.n, [&](int x, int k) ZEB_BODY {
    const Vec<T> v = load(pixels + x);
    low[k % 2] = min(v, low[k % 2]);
    high[k % 2] = max(v, high[k % 2]);
  });
  e.least.improve(min(low[0], low[1]), run, [](T a, T b) { return a < b; });
  e.most.improve(max(high[0], high[1]), run, [](T a, T b) { return a > b; });
}

// The first selected pixel of a run that equals the value; its elements in the run if there is none.
template <class T>
int firstEqual(const Run& run, T value) {
  const T* const pixels = static_cast<const T*>(run.first);
  for (int x = 0; x < run.pixels; x += Vec<T>::lanes) {
    unsigned equals = topBits(as<Zeb8u>(equal(load(pixels + x), splat(value))));
    while (equals != 0) {
      const int at = x + __builtin_ctz(equals) / static_cast<int>(sizeof(T));
      if (at >= run.pixels) break;
      if (run.mask == nullptr || run.mask[at] != 0) return at;
      equals &= equals - 1;
    }
  }
  return run.pixels;
}

template <class T>
void find(Runs& runs, Extreme<T>& extreme) {
  runs.seek(extreme.column, extreme.row);
  for (Run run; runs.next(run);) {
    const int at = firstEqual(run, extreme.value);
    if (at == run.pixels) continue;
    extreme.place = runs.place(run.column + at, run.row);
    return;
  }
  extreme.value = 0;
}

template <class T>
constexpr T beatenByAll(bool smallest) {
  if constexpr (std::is_same_v<T, Zeb32f>) {
    return smallest ? -__builtin_inff() : __builtin_inff();
  } else if constexpr (std::is_signed_v<T>) {
    return smallest ? -128 : 127;
  } else {
    return smallest ? 0 : static_cast<T>(~T(0));
  }
}

template <class T>
Extremes<T> extremes(const Selection& selection) {
  Extremes<T> e = {{beatenByAll<T>(false)}, {beatenByAll<T>(true)}};
  constexpr int longest = 8192 / sizeof(T);  // in the first-level cache when it is gone through again
  Runs runs(selection, longest, true);
  T first;
  if (!runs.seekFirst(&first)) return {{0}, {0}};
  // Another pixel's value changes no extreme.
  uint32_t filling = 0;
  for (size_t i = 0; i < sizeof(filling); i += sizeof(T))
    memcpy(reinterpret_cast<Zeb8u*>(&filling) + i, &first, sizeof(T));
  runs.fillWith(filling);
  for (Run run; runs.next(run);) extremesOfRun(e, run);
  find(runs, e.least);
  find(runs, e.most);
  return e;
}

template <class T>
__attribute__((noinline)) ZebStatus minMaxIndx(const Selection& selection, Zeb32f* pMinVal, Zeb32f* pMaxVal,
                                               ZebiPoint* pMinIndex, ZebiPoint* pMaxIndex) {
  if (auto bad = selection.flaw(also())) return bad;
  if (pMinVal == nullptr && pMaxVal == nullptr && pMinIndex == nullptr && pMaxIndex == nullptr) return zebStsOk;
  const Extremes<T> e = extremes<T>(selection);
  // A zero of either sign is stored as the positive one.
  const auto stored = [](T v) { return v == 0 ? 0.0f : static_cast<Zeb32f>(v); };
  if (pMinVal != nullptr) *pMinVal = stored(e.least.value);
  if (pMaxVal != nullptr) *pMaxVal = stored(e.most.value);
  if (pMinIndex != nullptr) *pMinIndex = e.least.place;
  if (pMaxIndex != nullptr) *pMaxIndex = e.most.place;
  return zebStsOk;
}

}  // namespace

// ---- Bindings ----

#define OUTPUTS Zeb32f *pMinVal, Zeb32f *pMaxVal, ZebiPoint *pMinIndex, ZebiPoint *pMaxIndex
#define EXTREMES_C1R(name, T)                                                                               \
  ZEB_ENTRY(name)(const T* pSrc, int srcStep, ZebiSize roiSize, OUTPUTS) {                                  \
    return minMaxIndx<T>(Selection(roiSize, image(pSrc, srcStep)), pMinVal, pMaxVal, pMinIndex, pMaxIndex); \
  }
#define EXTREMES_C1MR(name, T)                                                                               \
  ZEB_ENTRY(name)(const T* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, OUTPUTS) { \
    Selection selection(roiSize, image(pSrc, srcStep));                                                      \
    return minMaxIndx<T>(selection.under(image(pMask, maskStep)), pMinVal, pMaxVal, pMinIndex, pMaxIndex);   \
  }
#define EXTREMES_C3CR(name, T)                                                              \
  ZEB_ENTRY(name)(const T* pSrc, int srcStep, ZebiSize roiSize, int coi, OUTPUTS) {         \
    Selection selection(roiSize, image<3>(pSrc, srcStep));                                  \
    return minMaxIndx<T>(selection.ofChannel(coi), pMinVal, pMaxVal, pMinIndex, pMaxIndex); \
  }
#define EXTREMES_C3CMR(name, T)                                                                        \
  ZEB_ENTRY(name)                                                                                      \
  (const T* pSrc, int srcStep, const Zeb8u* pMask, int maskStep, ZebiSize roiSize, int coi, OUTPUTS) { \
    Selection selection(roiSize, image<3>(pSrc, srcStep));                                             \
    selection.under(image(pMask, maskStep)).ofChannel(coi);                                            \
    return minMaxIndx<T>(selection, pMinVal, pMaxVal, pMinIndex, pMaxIndex);                           \
  }

EXTREMES_C1R(zebiMinMaxIndx_8u_C1R, Zeb8u)
EXTREMES_C1R(zebiMinMaxIndx_8s_C1R, Zeb8s)
EXTREMES_C1R(zebiMinMaxIndx_16u_C1R, Zeb16u)
EXTREMES_C1R(zebiMinMaxIndx_32f_C1R, Zeb32f)

EXTREMES_C1MR(zebiMinMaxIndx_8u_C1MR, Zeb8u)
EXTREMES_C1MR(zebiMinMaxIndx_8s_C1MR, Zeb8s)
EXTREMES_C1MR(zebiMinMaxIndx_16u_C1MR, Zeb16u)
EXTREMES_C1MR(zebiMinMaxIndx_32f_C1MR, Zeb32f)

EXTREMES_C3CR(zebiMinMaxIndx_8u_C3CR, Zeb8u)
EXTREMES_C3CR(zebiMinMaxIndx_8s_C3CR, Zeb8s)
EXTREMES_C3CR(zebiMinMaxIndx_16u_C3CR, Zeb16u)
EXTREMES_C3CR(zebiMinMaxIndx_32f_C3CR, Zeb32f)

EXTREMES_C3CMR(zebiMinMaxIndx_8u_C3CMR, Zeb8u)
EXTREMES_C3CMR(zebiMinMaxIndx_8s_C3CMR, Zeb8s)
EXTREMES_C3CMR(zebiMinMaxIndx_16u_C3CMR, Zeb16u)
EXTREMES_C3CMR(zebiMinMaxIndx_32f_C3CMR, Zeb32f)
