// Labels of connected components: runs are found and joined in a first pass, found again and written in a second.
//
// A. Rosenfeld and J. Pfaltz, Sequential operations in digital picture processing (1966); union by the smaller number.
#include "core/checks.h"
#include "core/entry.h"
#include "core/loops.h"
#include "segment/pixel_bits.h"
#include "segment/runs.h"

namespace {

using namespace zeb;

int64_t bufferBytes(ZebiSize roi) {
  const int64_t runs = (int64_t{roi.width} + 1) / 2;  // of a row, at most
  return 4 * boundedProduct(runs, roi.height) + runRowsBytes(roi.width) + 64;
}

// The first run of the set of a run; the paths to it are halved on the way.
ZEB_INLINE int leader(int* parent, int run) {
  for (;;) {
    const int next = parent[run], beyond = parent[next];
    if (beyond == next) return next;
    run = parent[run] = beyond;
  }
}

// Bits of a row's pixels that are not 0, with the links between them.
template <class T>
ZEB_INLINE int findMarkers(const T* row, int width, RunWord* words, int count, int runs) {
  uint32_t before = 0;
  return findRuns(words, count, runs, [&](int i) ZEB_BODY {
    const int n = width - 32 * i < 32 ? width - 32 * i : 32;
    const uint32_t taking = differing(row + 32 * i, n, splat(T(0)));
    const uint32_t linked = taking & (taking << 1 | before);
    before = taking >> 31;
    return RunWord{taking, linked, 0};
  });
}

// Joins the runs of two rows: pixels are linked where neighbours are not 0.
template <bool eight>
void joinMarkers(const RunWord* above, const RunWord* row, int words, int* parent) {
  const auto links = [=](int i) ZEB_BODY {
    const uint32_t taking = row[i].taking, up = above[i].taking;
    LinksUp link = {taking & up, 0, 0};
    if (eight) {
      link.left = taking & (up << 1 | (i > 0 ? above[i - 1].taking >> 31 : 0));
      link.right = taking & (up >> 1 | (i + 1 < words ? above[i + 1].taking << 31 : 0));
    }
    return link;
  };
  joinRows<eight>(above, row, words, links, [=](int a, int b) ZEB_BODY {
    a = leader(parent, a), b = leader(parent, b);
    if (a < b)
      parent[b] = a;
    else if (b < a)
      parent[a] = b;
  });
}

// Turns parents into labels, from minLabel to maxLabel and again; returns the number of components.
int number(int* parent, int runs, int minLabel, int maxLabel) {
  int components = 0, next = minLabel;
  for (int run = 0; run < runs; ++run) {
    // The parent of a run that leads no set comes before it and holds its label already.
    if (parent[run] != run) {
      parent[run] = parent[parent[run]];
      continue;
    }
    parent[run] = next;
    next = next == maxLabel ? minLabel : next + 1;
    ++components;
  }
  return components;
}

template <class T>
ZEB_INLINE Vec<T> laneNumbers() {
  if constexpr (sizeof(T) == 1) {
    return as<T>(V8u{_mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22,
                                      23, 24, 25, 26, 27, 28, 29, 30, 31)});
  } else if constexpr (sizeof(T) == 2) {
    return as<T>(V16s{_mm256_setr_epi16(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15)});
  } else {
    return as<T>(V32s{_mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7)});
  }
}

// Writes the labels of the runs of a word over its n pixels.
template <class T>
ZEB_INLINE void writeLabels(T* p, int n, RunWord word, const int* label) {
  constexpr int lanes = Vec<T>::lanes;
  int run = word.before - 1;  // the one that goes on from the pixels before
  for (int x = 0; x < n; x += lanes) {
    const uint32_t some = firstBits(lanes);
    const uint32_t taking = word.taking >> x & some;
    if (!taking) continue;
    Vec<T> labels = splat(static_cast<T>(run >= 0 ? label[run] : 0));
    for (uint32_t starts = word.starts() >> x & some; starts; starts &= starts - 1) {
      const Vec<T> from = splat(static_cast<T>(__builtin_ctz(starts)));
      const Vec<T> fresh = splat(static_cast<T>(label[++run]));
      labels = select(atMost(from, laneNumbers<T>()), fresh, labels);
    }
    const auto write = [&](auto part)
                           ZEB_BODY { part.to(p + x, andNot(equal(part.from(p + x), splat(T(0))), labels)); };
    n - x >= lanes ? write(WholeVector{}) : write(RowEnd{n - x});
  }
}

template <class T>
ZebStatus labelMarkers(T* pMarker, int markerStep, ZebiSize roi, int minLabel, int maxLabel, int largest, ZebiNorm norm,
                       int* pNumber, Zeb8u* pBuffer) {
  const auto marker = image(pMarker, markerStep);
  const int64_t bytes = bufferBytes(roi);
  if (auto bad = firstFailure(checked(roi, marker, also(pNumber, pBuffer)),
                              require(minLabel >= 1 && maxLabel <= largest, zebStsErrOutOfRange),
                              require(minLabel <= maxLabel, zebStsErrRange), isNeighbourhood(norm),
                              require(bytes <= INT32_MAX, zebStsErrOverflow)))
    return bad;
  const Rows<T> rows = marker.rows();
  Scratch scratch(pBuffer, bytes);
  const RunRows run(scratch, roi.width);
  const int words = run.words();
  int* const parent = scratch.take<int>((int64_t{roi.width} + 1) / 2 * roi.height, 4);
  int runs = 0;
  for (int y = 0; y < roi.height; ++y) {
    const int before = runs;
    runs = findMarkers<T>(rows[y], roi.width, run.row(y), words, runs);
    for (int i = before; i < runs; ++i) parent[i] = i;
    if (y == 0) continue;
    norm == zebiNormInf ? joinMarkers<true>(run.row(y - 1), run.row(y), words, parent)
                        : joinMarkers<false>(run.row(y - 1), run.row(y), words, parent);
  }
  *pNumber = number(parent, runs, minLabel, maxLabel);
  runs = 0;
  for (int y = 0; y < roi.height; ++y) {
    T* const row = rows[y];
    runs = findMarkers<T>(row, roi.width, run.row(y), words, runs);
    for (int i = 0; i < words; ++i)
      if (run.row(y)[i].taking)
        writeLabels(row + 32 * i, roi.width - 32 * i < 32 ? roi.width - 32 * i : 32, run.row(y)[i], parent);
  }
  return zebStsOk;
}

ZebStatus labelBytes(ZebiSize roi, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roi))) return bad;
  return reportSize(bufferBytes(roi), pBufferSize);
}

}  // namespace

ZEB_ENTRY(zebiLabelMarkersGetBufferSize_8u_C1IR)(ZebiSize roiSize, int* pBufferSize) {
  return labelBytes(roiSize, pBufferSize);
}
ZEB_ENTRY(zebiLabelMarkersGetBufferSize_16u_C1IR)(ZebiSize roiSize, int* pBufferSize) {
  return labelBytes(roiSize, pBufferSize);
}
ZEB_ENTRY(zebiLabelMarkersGetBufferSize_32s_C1IR)(ZebiSize roiSize, int* pBufferSize) {
  return labelBytes(roiSize, pBufferSize);
}

ZEB_ENTRY(zebiLabelMarkers_8u_C1IR)
(Zeb8u* pMarker, int markerStep, ZebiSize roiSize, int minLabel, int maxLabel, ZebiNorm norm, int* pNumber,
 Zeb8u* pBuffer) {
  return labelMarkers(pMarker, markerStep, roiSize, minLabel, maxLabel, 255, norm, pNumber, pBuffer);
}
ZEB_ENTRY(zebiLabelMarkers_16u_C1IR)
(Zeb16u* pMarker, int markerStep, ZebiSize roiSize, int minLabel, int maxLabel, ZebiNorm norm, int* pNumber,
 Zeb8u* pBuffer) {
  return labelMarkers(pMarker, markerStep, roiSize, minLabel, maxLabel, 65535, norm, pNumber, pBuffer);
}
ZEB_ENTRY(zebiLabelMarkers_32s_C1IR)
(Zeb32s* pMarker, int markerStep, ZebiSize roiSize, int minLabel, int maxLabel, ZebiNorm norm, int* pNumber,
 Zeb8u* pBuffer) {
  return labelMarkers(pMarker, markerStep, roiSize, minLabel, maxLabel, INT32_MAX, norm, pNumber, pBuffer);
}
