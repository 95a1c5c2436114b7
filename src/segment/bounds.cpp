// Boundaries between segments: a pixel that differs from a neighbour after it in scan order is marked.
//
// Neighbours come after their pixel, so they still hold what they held on entry when the pixel is overwritten.
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"

namespace {

using namespace zeb;

// Where the neighbours of a row's pixels lie: on the right, below as well, or below to both sides as well.
enum class Reach { right, below, around };

// The pixels of a vector at p, or val where a neighbour differs from both; b points to the pixels below.
template <Reach reach, class T>
ZEB_INLINE Vec<T> marked(const T* p, const T* b, Vec<T> val) {
  const Vec<T> pixels = load(p);
  const auto alike = [=](const T* q) ZEB_BODY {
    const Vec<T> v = load(q);
    return equal(v, pixels) | equal(v, val);
  };
  Vec<T> all = alike(p + 1);
  if (reach != Reach::right) all = all & alike(b);
  if (reach == Reach::around) all = all & alike(b - 1) & alike(b + 1);
  return select(all, pixels, val);
}

// The pixels x to x + n - 1, n at most a vector, where a neighbour may be missing: beside the row the last pixel that
// is a neighbour stands for it.
template <Reach reach, class T>
ZEB_INLINE void markPiece(T* row, const T* below, int x, int n, int width, Vec<T> val) {
  constexpr int lanes = Vec<T>::lanes;
  T pixels[lanes + 1] = {}, under[lanes + 2] = {};
  const int bytes = n * static_cast<int>(sizeof(T)), next = x + n < width ? x + n : width - 1;
  copyFew(pixels, row + x, bytes);
  pixels[n] = row[next];
  if (reach != Reach::right) {
    under[0] = below[x > 0 ? x - 1 : 0];
    copyFew(under + 1, below + x, bytes);
    under[n + 1] = below[next];
  }
  storeN(row + x, marked<reach>(pixels, under + 1, val), n);
}

template <Reach reach, class T>
void markRow(T* row, const T* below, int width, T value) {
  constexpr int lanes = Vec<T>::lanes;
  const Vec<T> val = splat(value);
  int x = width < lanes ? width : lanes;
  markPiece<reach>(row, below, 0, x, width, val);
  for (; x < width - lanes; x += lanes) store(row + x, marked<reach>(row + x, below + x, val));
  if (x < width) markPiece<reach>(row, below, x, width - x, width, val);
}

template <class T>
ZebStatus boundSegments(T* pMarker, int markerStep, ZebiSize roi, T val, ZebiNorm norm) {
  const auto marker = image(pMarker, markerStep);
  if (auto bad = firstFailure(checked(roi, marker), isNeighbourhood(norm))) return bad;
  const Rows<T> rows = marker.rows();
  const auto kernel = norm == zebiNormInf ? markRow<Reach::around, T> : markRow<Reach::below, T>;
  for (int y = 0; y + 1 < roi.height; ++y) kernel(rows[y], rows[y + 1], roi.width, val);
  // The last row has none below; its own stands there and is not looked at.
  T* const last = rows[roi.height - 1];
  markRow<Reach::right, T>(last, last, roi.width, val);
  return zebStsOk;
}

}  // namespace

ZEB_ENTRY(zebiBoundSegments_8u_C1IR)(Zeb8u* pMarker, int markerStep, ZebiSize roiSize, Zeb8u val, ZebiNorm norm) {
  return boundSegments(pMarker, markerStep, roiSize, val, norm);
}
ZEB_ENTRY(zebiBoundSegments_16u_C1IR)(Zeb16u* pMarker, int markerStep, ZebiSize roiSize, Zeb16u val, ZebiNorm norm) {
  return boundSegments(pMarker, markerStep, roiSize, val, norm);
}
