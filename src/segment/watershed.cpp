// Watershed from markers: floods rise over the relief level by level.
//
// A pixel waits in the queue of its level, linked by position through an image of links. As long as a pixel is free,
// the place of its link holds its level. A pixel that waits for its label, where boundaries are marked, holds the mark
// of a boundary, which counts neither as free nor as a label. Which of its neighbours are free follows no pattern, and
// a branch for each would be guessed wrong at most of the pixels: all are asked in one vector.
//
// F. Meyer, Color image segmentation (1992); L. Vincent and P. Soille, Watersheds in digital spaces (1991).
#include "core/entry.h"
#include "segment/flood.h"

namespace {

using namespace zeb;

// The neighbours of a pixel as lanes: four for each of three rows, of which the last is no neighbour, nor is the pixel
// itself. Their order is that of the neighbours.
struct Neighbours {
  unsigned lanes;  // a bit for each that is one
  int offset[12];

  Neighbours(ZebiNorm norm, int pitch) : lanes(norm == zebiNormInf ? 0x757u : 0x252u) {
    for (int i = 0; i < 12; ++i) offset[i] = (i / 4 - 1) * pitch + i % 4 - 1;
  }
};

// The labels around a pixel in those lanes. Reads one behind the neighbours.
template <class T>
struct Around;
template <>
struct Around<Zeb8u> {
  __m128i v;

  ZEB_INLINE Around(const Zeb8u* middle, ptrdiff_t pitch) {
    const auto four = [](const Zeb8u* p) ZEB_BODY {
      int bytes;
      memcpy(&bytes, p - 1, sizeof(bytes));
      return bytes;
    };
    v = _mm_setr_epi32(four(middle - pitch), four(middle), four(middle + pitch), 0);
  }
  ZEB_INLINE unsigned where(Zeb8u label) const {
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(label)))));
  }
};
template <>
struct Around<Zeb16u> {
  __m128i first, last;

  ZEB_INLINE Around(const Zeb16u* middle, ptrdiff_t pitch) {
    const auto four = [](const Zeb16u* p) ZEB_BODY { return _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p - 1)); };
    first = _mm_unpacklo_epi64(four(middle - pitch), four(middle));
    last = four(middle + pitch);
  }
  ZEB_INLINE unsigned where(Zeb16u label) const {
    const __m128i all = _mm_set1_epi16(static_cast<short>(label));
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_packs_epi16(_mm_cmpeq_epi16(first, all), _mm_cmpeq_epi16(last, all))));
  }
};

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
constexpr int levelsOf = 1 << (8 * sizeof(T));

template <class T>
int64_t bufferBytes(ZebiSize roi) {
  constexpr int64_t fixed = sizeof(T) == 1 ? 2112 : 532800;
  return boundedProduct(Frame::countOf(roi), sizeof(T) + sizeof(int)) + fixed;
}

template <class T>
class Watershed {
  using Bits = Levels<levelsOf<T>>;

 public:
  Watershed(Frame frame, ZebiNorm norm, bool boundary, Zeb8u* pBuffer, int64_t bytes)
      : frame_(frame),
        neighbours_(norm, frame.pitch()),
        boundary_(boundary),
        ahead_(Scout::aheadOf(bytes)),
        scratch_(pBuffer, bytes),
        queue_(scratch_.take<Queue>(levelsOf<T>, 4)),
        filled_(scratch_.take<uint32_t>(Bits::words + Bits::groups, 4)),
        label_(scratch_.take<T>(frame.count(), sizeof(T))),
        link_(scratch_.take<int>(frame.count(), 1)) {}

  // Levels and markers in a frame.
  void fill(Rows<const T> src, Rows<const T> marker) {
    const auto frameFrom = [this](int from, int count) {
      for (int i = from; i < from + count; ++i) label_[i] = barrier<T>;
    };
    frameFrom(0, frame_.pitch() + 1);
    for (int y = 0; y < frame_.height; ++y) {
      const int row = frame_.row(y);
      memcpy(label_ + row, marker[y], sizeof(T) * static_cast<size_t>(frame_.width));
      frameFrom(row + frame_.width, 2);
      const T* const s = src[y];
      for (int x = 0; x < frame_.width; ++x) link_[row + x] = s[x];
    }
    frameFrom(frame_.row(frame_.height), frame_.pitch() - 1);
  }

  void flood(Rows<const T> marker) {
    eachMarker(marker, frame_, boundary_, [this](int x, int y) {
      const int p = frame_.row(y) + x;
      appendFree(p, around(p), 0);
    });
    for (int level = filled_.next(0); level >= 0; level = filled_.next(level)) {
      Queue& queue = queue_[level];
      Scout scout(ahead_);
      // The queue's last pixel stays in it until its neighbours have been appended.
      for (int p = queue.head;; p = link_[p]) {
        scout.lead(
            p, [&](int q) ZEB_BODY { return q == queue.tail ? -1 : link_[q]; },
            [&](int q) ZEB_BODY { fetchBeside(label_ + q, link_ + q, frame_.pitch()); });
        const Around<T> labels = around(p);
        if (!boundary_ || settle(p, labels)) appendFree(p, labels, level);
        if (p == queue.tail) break;
      }
      filled_.remove(level);
    }
  }

  void write(Rows<T> marker) const {
    for (int y = 0; y < frame_.height; ++y)
      memcpy(marker[y], label_ + frame_.row(y), sizeof(T) * static_cast<size_t>(frame_.width));
  }

 private:
  ZEB_INLINE Around<T> around(int p) const { return {label_ + p, frame_.pitch()}; }

  ZEB_INLINE void appendFree(int p, Around<T> labels, int level) {
    const T label = boundary_ ? barrier<T> : label_[p];
    for (unsigned free = neighbours_.lanes & labels.where(0); free; free &= free - 1) {
      const int q = p + neighbours_.offset[__builtin_ctz(free)];
      label_[q] = label;
      append(q, link_[q] > level ? link_[q] : level);
    }
  }
  ZEB_INLINE void append(int q, int level) {
    Queue& queue = queue_[level];
    if (filled_.has(level)) {
      link_[queue.tail] = q;
    } else {
      filled_.add(level);
      queue.head = q;
    }
    queue.tail = q;
  }

  // A waiting pixel takes the one label around it; where there are several it stays a boundary. There is one at least.
  ZEB_INLINE bool settle(int p, Around<T> labels) {
    const unsigned some = neighbours_.lanes & ~(labels.where(0) | labels.where(barrier<T>));
    const T label = label_[p + neighbours_.offset[__builtin_ctz(some)]];
    if (some & ~labels.where(label)) return false;
    label_[p] = label;
    return true;
  }

  Frame frame_;
  Neighbours neighbours_;
  bool boundary_;
  int ahead_;
  Scratch scratch_;
  Queue* queue_;
  Bits filled_;
  T* label_;
  int* link_;
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
