// Gaussian smoothing.
#include <math.h>

#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"
#include "core/narrow.h"
#include "core/state_id.h"
#include "filter/float_runs.h"
#include "filter/gauss_bytes.h"
#include "filter/row_results.h"

// The taps follow, one word each. It may lie at any address.
struct ZebiFilterGaussianState {
  uint32_t id;
  int dataType, channels, kernelSize;
  Zeb32f sigma;
  int reserved[3];
};

namespace {

using namespace zeb;

using State = ZebiFilterGaussianState;
static_assert(sizeof(State) == 32);
constexpr int tapBytes = 4;

// ---- The state ----

constexpr uint32_t idOf(int dataType, int channels) {
  return stateId(StateKind::gaussian, dataType, channels);
}

ZebStatus isKernelSize(int kernelSize) {
  return require(kernelSize >= 3 && kernelSize % 2 == 1, zebStsErrBadArgument);
}
ZebStatus takesImages(int dataType, int channels) {
  return firstFailure(
      require(dataType == zeb8u || dataType == zeb16u || dataType == zeb16s || dataType == zeb32f, zebStsErrDataType),
      require(channels == 1 || channels == 3 || channels == 4, zebStsErrNumChannels),
      require(channels != 4, zebStsErrChannelCount));
}

// The curve left of its centre, whose value is 1 / total.
class Curve {
 public:
  Curve(int reach, double sigma) : reach_(reach), divisor_(2 * sigma * sigma) {
    double sum = 0;
    for (int i = 0; i < reach; ++i) sum += height(i);
    total_ = 2 * sum + 1;
  }
  double operator()(int i) const { return (i == reach_ ? 1 : height(i)) / total_; }

 private:
  double height(int i) const {
    const double distance = static_cast<double>(i) - reach_;
    return exp(-(distance * distance) / divisor_);
  }
  int reach_;
  double divisor_, total_;
};

template <class Tap>
void putTap(Zeb8u* taps, int kernelSize, int i, Tap tap) {
  memcpy(taps + static_cast<ptrdiff_t>(i) * tapBytes, &tap, tapBytes);
  memcpy(taps + static_cast<ptrdiff_t>(kernelSize - 1 - i) * tapBytes, &tap, tapBytes);
}

// Integers that sum up to 2^14: differences of the rounded sums of the curve, so that what one tap loses the next
// gains.
void putWords(const Curve& curve, int kernelSize, Zeb8u* taps) {
  const int reach = kernelSize / 2;
  double sum = 0, before = 0;
  for (int i = 0; i < reach; ++i) {
    sum += curve(i);
    const double now = rint(16384 * sum);
    putTap(taps, kernelSize, i, static_cast<Zeb32s>(now - before));
    before = now;
  }
  putTap(taps, kernelSize, reach, 16384 - 2 * static_cast<Zeb32s>(before));
}
void putFloats(const Curve& curve, int kernelSize, Zeb8u* taps) {
  for (int i = 0; i <= kernelSize / 2; ++i) putTap(taps, kernelSize, i, static_cast<Zeb32f>(curve(i)));
}

// ---- Sizes ----

int64_t stateBytes(int kernelSize) {
  return static_cast<int64_t>(sizeof(State)) + int64_t{kernelSize} * tapBytes;
}

template <class L>
struct Room {
  static int64_t rows(ZebiSize roi, int kernelSize, int channels) {
    return RowResults<L>::scratchBytes(kernelSize, int64_t{roi.width} * channels);
  }
  // With a vector more, which may be read.
  static int64_t lineElements(ZebiSize roi, int kernelSize, int channels) {
    return (int64_t{roi.width} + kernelSize - 1) * channels + Vec<L>::lanes;
  }
  static int64_t bytes(ZebiSize roi, int kernelSize, int channels) {
    return rows(roi, kernelSize, channels) + lineElements(roi, kernelSize, channels) * static_cast<int64_t>(sizeof(L)) +
           int64_t{kernelSize} * tapBytes + 64;
  }
};

// ---- The filter ----

// What pixels are filtered as.
template <class S>
using Line = std::conditional_t<sizeof(S) == 1, Zeb16s, Zeb32f>;

// Rows of an image with their borders, as wider elements.
template <class S, int channels>
class WideRows {
 public:
  using L = Line<S>;

  WideRows(const BorderedImage& source, int reach, L* line)
      : source_(source), columns_(source.columns(-int64_t{reach}, int64_t{source.size().width} + reach)), line_(line) {
    if (const Zeb8u* const constant = source.constant()) {
      S pixel[channels];
      memcpy(pixel, constant, sizeof(pixel));
      for (int c = 0; c < channels; ++c) constant_[c] = static_cast<L>(pixel[c]);
    }
  }

  // Row q from column -reach on, until the next one is asked for.
  const L* row(int64_t q) const {
    const auto* const p = reinterpret_cast<const S*>(source_.row(q));
    if (p == nullptr) {
      repeatPixelOften(reinterpret_cast<const Zeb8u*>(constant_), sizeof(constant_), reinterpret_cast<Zeb8u*>(line_),
                       columns_.to - columns_.from);
      return line_;
    }
    widen(p + columns_.kept * channels, static_cast<int>(columns_.keptCount()) * channels,
          line_ + columns_.before * channels);
    completeEnds(line_, columns_, channels, source_.constant() ? constant_ : nullptr);
    return line_;
  }

 private:
  static void widen(const S* p, int n, L* out) {
    forOverlappingVectors<Vec<L>::lanes>(0, n, [=](int x, auto part) ZEB_BODY {
      if constexpr (sizeof(S) == 1)
        part.to(out + x, part.words(p + x));
      else
        part.to(out + x, part.floats(p + x));
    });
  }

  BorderedImage source_;
  BorderedImage::Columns columns_;
  L* line_;
  L constant_[channels] = {};
};

ZEB_INLINE V16u rounded(const Zeb32f* p, Zeb16u) {
  return narrowTo16u(roundToInt(load(p)), roundToInt(load(p + 8)));
}
ZEB_INLINE V16s rounded(const Zeb32f* p, Zeb16s) {
  return narrowTo16s(roundToInt(load(p)), roundToInt(load(p + 8)));
}
template <class S>
void narrow(const Zeb32f* p, int n, S* out) {
  for (int x = 0; x <= n - 16; x += 16) store(out + x, rounded(p + x, S()));
  const int rest = n % 16;
  if (rest == 0) return;
  alignas(32) Zeb32f last[16] = {};
  memcpy(last, p + (n - rest), static_cast<size_t>(rest) * sizeof(Zeb32f));
  storeN(out + (n - rest), rounded(last, S()), rest);
}

template <class S, int channels>
struct Job {
  BorderedImage source;
  Rows<S> dst;
  int kernelSize;
  Scratch scratch;
};

// The taps, copied to where words may be read.
void takeTaps(const State* state, int kernelSize, void* taps) {
  memcpy(taps, reinterpret_cast<const Zeb8u*>(state) + sizeof(State), static_cast<size_t>(kernelSize) * tapBytes);
}

template <int channels>
void smooth(const Job<Zeb8u, channels>& job, const State* state) {
  const ZebiSize roi = job.source.size();
  const int k = job.kernelSize, reach = k / 2, n = roi.width * channels;
  Scratch scratch = job.scratch;
  RowResults<Zeb16s> results(job.source, k, n, scratch);
  auto* const line = scratch.take<Zeb16s>(Room<Zeb16s>::lineElements(roi, k, channels));
  // Whole vectors are read. What lies behind the line counts for nothing, but memory checkers follow sums of pairs by
  // eight bytes only: left unwritten, it would seem to be in the last results.
  store(line + n + 2 * reach * channels, splat(Zeb16s(0)));
  const WideRows<Zeb8u, channels> wide(job.source, reach, line);
  auto* const words = scratch.take<Zeb32s>(k);
  takeTaps(state, k, words);
  FoldedTaps::make(words, reach, words);
  const FoldedTaps taps = {words, reach};
  for (int y = 0; y < roi.height; ++y) {
    const auto make = [&](int64_t q, Zeb16s* out) { gaussRow(taps, wide.row(q), channels, n, out); };
    gaussColumns(taps, results.rows(int64_t{y} - reach, k, make), n, job.dst[y]);
  }
}

template <class S, int channels>
void smooth(const Job<S, channels>& job, const State* state) {
  const ZebiSize roi = job.source.size();
  const int k = job.kernelSize, reach = k / 2, n = roi.width * channels;
  Scratch scratch = job.scratch;
  RowResults<Zeb32f> results(job.source, k, n, scratch);
  auto* const line = scratch.take<Zeb32f>(Room<Zeb32f>::lineElements(roi, k, channels));
  const WideRows<S, channels> wide(job.source, reach, line);
  auto* const taps = scratch.take<Zeb32f>(k);
  takeTaps(state, k, taps);
  const auto make = [&](int64_t q, Zeb32f* out) {
    if constexpr (std::is_same_v<S, Zeb32f>)
      overRow<channels>(job.source, q, reach, line, [=](const Zeb32f* p, int from, int to) {
        correlateRow<channels>(p, taps, k, out + from * channels, (to - from) * channels);
      });
    else
      correlateRow<channels>(wide.row(q), taps, k, out, n);
  };
  for (int y = 0; y < roi.height; ++y) {
    const Zeb32f* const* rows = results.rows(int64_t{y} - reach, k, make);
    if constexpr (std::is_same_v<S, Zeb32f>) {
      correlateColumns(rows, taps, k, job.dst.from(0, y), 1, n);
    } else {
      correlateColumns(rows, taps, k, Rows(line, 0), 1, n);
      narrow(line, n, job.dst[y]);
    }
  }
}

template <class S, int channels>
ZebStatus gaussian(const S* pSrc, int srcStep, S* pDst, int dstStep, ZebiSize roi, ZebiBorderType border,
                   const S* value, const State* pSpec, Zeb8u* pBuffer, int dataType) {
  const auto src = image<channels>(pSrc, srcStep);
  const auto dst = image<channels>(pDst, dstStep);
  if (auto bad = firstFailure(present(pSrc, pDst, pSpec, pBuffer),
                              require(value != nullptr || borderBase(border) != zebBorderConst, zebStsErrNullPointer),
                              require(src.holdsRow(roi.width) && dst.holdsRow(roi.width), zebStsErrStep),
                              require(src.holdsWholeElements() && dst.holdsWholeElements(), zebStsErrNotEvenStep),
                              hasArea(roi), takesBorder(withoutSides(border))))
    return bad;
  State state;
  memcpy(&state, pSpec, sizeof(state));
  if (auto bad = firstFailure(isState(state.id, idOf(dataType, channels)),
                              require(state.dataType == dataType && state.channels == channels, zebStsErrContextMatch)))
    return bad;
  const int64_t bytes = Room<Line<S>>::bytes(roi, state.kernelSize, channels);
  if (bytes > INT32_MAX) return zebStsErrOverflow;
  const BorderedImage source(pSrc, srcStep, roi, channels * static_cast<int>(sizeof(S)), border, value);
  smooth(Job<S, channels>{source, dst, state.kernelSize, Scratch(pBuffer, bytes)}, pSpec);
  return zebStsOk;
}

}  // namespace

// ---- Bindings ----

ZEB_ENTRY(zebiFilterGaussianGetBufferSize)
(ZebiSize roiSize, int kernelSize, ZebDataType dataType, int numChannels, int* pSpecSize, int* pBufferSize) {
  if (auto bad = firstFailure(present(pSpecSize, pBufferSize), hasArea(roiSize), isKernelSize(kernelSize),
                              takesImages(dataType, numChannels)))
    return bad;
  const int64_t spec = stateBytes(kernelSize);
  const int64_t buffer = dataType == zeb8u ? Room<Zeb16s>::bytes(roiSize, kernelSize, numChannels)
                                           : Room<Zeb32f>::bytes(roiSize, kernelSize, numChannels);
  if (spec > INT32_MAX || buffer > INT32_MAX) return zebStsErrOverflow;
  *pSpecSize = static_cast<int>(spec);
  *pBufferSize = static_cast<int>(buffer);
  return zebStsOk;
}

ZEB_ENTRY(zebiFilterGaussianInit)
(int kernelSize, Zeb32f sigma, ZebDataType dataType, int numChannels, ZebiFilterGaussianState* pSpec) {
  if (auto bad = firstFailure(present(pSpec), isKernelSize(kernelSize),
                              require(sigma > 0 && sigma <= std::numeric_limits<Zeb32f>::max(), zebStsErrBadArgument),
                              takesImages(dataType, numChannels),
                              require(stateBytes(kernelSize) <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  const State state = {idOf(dataType, numChannels), dataType, numChannels, kernelSize, sigma, {}};
  memcpy(pSpec, &state, sizeof(state));
  Zeb8u* const taps = reinterpret_cast<Zeb8u*>(pSpec) + sizeof(state);
  const Curve curve(kernelSize / 2, static_cast<double>(sigma));
  (dataType == zeb8u ? putWords : putFloats)(curve, kernelSize, taps);
  return zebStsOk;
}

#define GAUSSIAN(form, T, type, channels, borderArgument, value)                                                  \
  ZEB_ENTRY(zebiFilterGaussianBorder_##form)                                                                      \
  (const T* pSrc, int srcStep, T* pDst, int dstStep, ZebiSize roiSize, ZebiBorderType borderType, borderArgument, \
   const ZebiFilterGaussianState* pSpec, Zeb8u* pBuffer) {                                                        \
    return gaussian<T, channels>(pSrc, srcStep, pDst, dstStep, roiSize, borderType, value, pSpec, pBuffer, type); \
  }
#define GAUSSIANS(name, T)                                           \
  GAUSSIAN(name##_C1R, T, zeb##name, 1, T borderValue, &borderValue) \
  GAUSSIAN(name##_C3R, T, zeb##name, 3, const T borderValue[3], borderValue)

GAUSSIANS(8u, Zeb8u)
GAUSSIANS(16u, Zeb16u)
GAUSSIANS(16s, Zeb16s)
GAUSSIANS(32f, Zeb32f)
