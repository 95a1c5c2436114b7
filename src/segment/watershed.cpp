// Watershed from markers: floods rise over the relief level by level.
//
// A pixel waits in the queue of its level, linked by position through an image of links. As long as a pixel is free,
// the place of its link holds its level: one access yields both. A pixel that waits for its label, where boundaries are
// marked, holds the mark of a boundary, which counts neither as free nor as a label.
//
// F. Meyer, Color image segmentation (1992); L. Vincent and P. Soille, Watersheds in digital spaces (1991).
#include "core/entry.h"
#include "segment/flood.h"

namespace {

using namespace zeb;

// Which queues are not empty: a bit each, and a bit for each word of those that is not 0. No level below one that was
// found is ever filled again.
template <int levels>
class Levels {
 public:
  static constexpr int words = levels / 32, groups = (words + 31) / 32;
  explicit Levels(uint32_t* memory) : word_(memory), group_(memory + words) {
    memset(memory, 0, sizeof(uint32_t) * (words + groups));
  }
  bool has(int level) const { return word_[level >> 5] >> (level & 31) & 1; }
  void add(int level) {
    word_[level >> 5] |= 1u << (level & 31);
    group_[level >> 10] |= 1u << (level >> 5 & 31);
  }
  void remove(int level) {
    if ((word_[level >> 5] &= ~(1u << (level & 31))) == 0) group_[level >> 10] &= ~(1u << (level >> 5 & 31));
  }
  // The lowest one from a level on, or -1.
  int next(int level) const {
    for (int g = level >> 10; g < groups; ++g)
      if (group_[g]) {
        const int w = 32 * g + __builtin_ctz(group_[g]);
        return 32 * w + __builtin_ctz(word_[w]);
      }
    return -1;
  }

 private:
  uint32_t *word_, *group_;
};

struct Queue {
  int head, tail;
};

template <class T>
struct __attribute__((packed)) Cell {
  int link;
  T label;
};

template <class T>
constexpr int levelsOf = 1 << (8 * sizeof(T));

template <class T>
int64_t bufferBytes(ZebiSize roi) {
  constexpr int64_t fixed = sizeof(T) == 1 ? 2112 : 532800;
  return boundedProduct(Frame::countOf(roi), sizeof(Cell<T>)) + fixed;
}

template <class T>
class Watershed {
  using Bits = Levels<levelsOf<T>>;

 public:
  Watershed(Frame frame, ZebiNorm norm, bool boundary, Zeb8u* pBuffer, int64_t bytes)
      : frame_(frame),
        around_(norm, frame.pitch()),
        boundary_(boundary),
        scratch_(pBuffer, bytes),
        queue_(scratch_.take<Queue>(levelsOf<T>, 4)),
        filled_(scratch_.take<uint32_t>(Bits::words + Bits::groups, 4)),
        cell_(scratch_.take<Cell<T>>(frame.count(), 1)) {}

  // Levels and markers in a frame.
  void fill(Rows<const T> src, Rows<const T> marker) {
    constexpr Cell<T> never = {0, barrier<T>};
    const auto fillRow = [this, never](int from) {
      for (int x = 0; x < frame_.pitch(); ++x) cell_[from + x] = never;
    };
    fillRow(0);
    for (int y = 0; y < frame_.height; ++y) {
      Cell<T>* const cell = cell_ + frame_.row(y);
      const T *const s = src[y], *const m = marker[y];
      cell[-1] = cell[frame_.width] = never;
      for (int x = 0; x < frame_.width; ++x) cell[x] = {s[x], m[x]};
    }
    fillRow(frame_.row(frame_.height) - 1);
  }

  void flood(Rows<const T> marker) {
    eachMarker(marker, frame_, boundary_, [this](int x, int y) { appendAround(frame_.row(y) + x, 0); });
    for (int level = filled_.next(0); level >= 0; level = filled_.next(level)) {
      Queue& queue = queue_[level];
      // The queue's last pixel stays in it until its neighbours have been appended.
      for (int p = queue.head;; p = cell_[p].link) {
        if (!boundary_ || settle(p)) appendAround(p, level);
        if (p == queue.tail) break;
      }
      filled_.remove(level);
    }
  }

  void write(Rows<T> marker) const {
    for (int y = 0; y < frame_.height; ++y) {
      const Cell<T>* const cell = cell_ + frame_.row(y);
      T* const m = marker[y];
      for (int x = 0; x < frame_.width; ++x) m[x] = cell[x].label;
    }
  }

 private:
  ZEB_INLINE void appendAround(int p, int level) {
    const T label = boundary_ ? barrier<T> : cell_[p].label;
    for (int i = 0; i < around_.count; ++i) {
      const int q = p + around_.framed[i];
      if (cell_[q].label) continue;
      cell_[q].label = label;
      append(q, cell_[q].link > level ? cell_[q].link : level);
    }
  }
  ZEB_INLINE void append(int q, int level) {
    Queue& queue = queue_[level];
    if (filled_.has(level)) {
      cell_[queue.tail].link = q;
    } else {
      filled_.add(level);
      queue.head = q;
    }
    queue.tail = q;
  }

  // A waiting pixel takes the one label around it; where there are several it stays a boundary.
  ZEB_INLINE bool settle(int p) {
    OneLabel<T> one;
    for (int i = 0; i < around_.count; ++i) one(cell_[p + around_.framed[i]].label);
    if (one.several()) return false;
    cell_[p].label = one.label();
    return true;
  }

  Frame frame_;
  Neighbours around_;
  bool boundary_;
  Scratch scratch_;
  Queue* queue_;
  Bits filled_;
  Cell<T>* cell_;
};

template <class T>
ZebStatus watershed(const T* pSrc, int srcStep, T* pMarker, int markerStep, ZebiSize roi, ZebiNorm norm, int flag,
                    Zeb8u* pBuffer) {
  const auto src = image(pSrc, srcStep);
  const auto marker = image(pMarker, markerStep);
  const int64_t bytes = bufferBytes<T>(roi);
  if (auto bad = firstFailure(checked(roi, src, marker, also(pBuffer)), floodChecks(norm, flag, bytes))) return bad;
  Watershed<T> flood(Frame(roi), norm, flag == zebSegmentBoundary, pBuffer, bytes);
  const Rows<const T> markers(pMarker, markerStep);
  flood.fill(src.rows(), markers);
  flood.flood(markers);
  flood.write(marker.rows());
  return zebStsOk;
}

template <class T>
ZebStatus watershedBytes(ZebiSize roi, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roi))) return bad;
  return reportSize(bufferBytes<T>(roi), pBufferSize);
}

}  // namespace

ZEB_ENTRY(zebiSegmentWatershedGetBufferSize_8u_C1IR)(ZebiSize roiSize, int* pBufferSize) {
  return watershedBytes<Zeb8u>(roiSize, pBufferSize);
}
ZEB_ENTRY(zebiSegmentWatershedGetBufferSize_16u_C1IR)(ZebiSize roiSize, int* pBufferSize) {
  return watershedBytes<Zeb16u>(roiSize, pBufferSize);
}

ZEB_ENTRY(zebiSegmentWatershed_8u_C1IR)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pMarker, int markerStep, ZebiSize roiSize, ZebiNorm norm, int flag,
 Zeb8u* pBuffer) {
  return watershed(pSrc, srcStep, pMarker, markerStep, roiSize, norm, flag, pBuffer);
}
ZEB_ENTRY(zebiSegmentWatershed_16u_C1IR)
(const Zeb16u* pSrc, int srcStep, Zeb16u* pMarker, int markerStep, ZebiSize roiSize, ZebiNorm norm, int flag,
 Zeb8u* pBuffer) {
  return watershed(pSrc, srcStep, pMarker, markerStep, roiSize, norm, flag, pBuffer);
}
