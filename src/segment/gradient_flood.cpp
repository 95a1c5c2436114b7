// Segmentation by the differences between neighbours: floods from markers along the cheapest steps.
//
// A pixel waits in the queue of the lowest cost at which it was met so far and may move to a lower queue, so the queues
// are rings, linked both ways, through one node for each level. A pixel that waits for its label, where boundaries are
// marked, holds the mark of a boundary.
//
// F. Meyer, Minimum spanning forests for morphological segmentation (1994).
#include "core/entry.h"
#include "segment/flood.h"

namespace {

using namespace zeb;

constexpr int levels = 256;

struct Node {
  int next, previous;
};

// The neighbours of a pixel in their order, as offsets: in the framed image, and in bytes of another one of a step and
// bytes per pixel.
struct Neighbours {
  int count;
  int framed[8];
  ptrdiff_t bytes[8];

  Neighbours(ZebiNorm norm, int pitch, int step = 0, int pixelBytes = 0) : count(0) {
    for (int dy = -1; dy <= 1; ++dy)
      for (int dx = -1; dx <= 1; ++dx) {
        const bool beside = norm == zebiNormInf ? dx != 0 || dy != 0 : (dx == 0) != (dy == 0);
        if (!beside) continue;
        framed[count] = dy * pitch + dx;
        bytes[count++] = static_cast<ptrdiff_t>(dy) * step + dx * pixelBytes;
      }
  }
};

// The one label among values, where 0 and the barrier do not count; tells of several labels apart.
class OneLabel {
 public:
  ZEB_INLINE void operator()(Zeb8u label) {
    // 0 becomes the largest value and the barrier the second largest, or the barrier 0 and 0 the value 1.
    const Zeb8u down = static_cast<Zeb8u>(label - 1), up = static_cast<Zeb8u>(label + 1);
    if (down < least_) least_ = down;
    if (up > most_) most_ = up;
  }
  bool several() const { return most_ - least_ > 2; }
  Zeb8u label() const { return static_cast<Zeb8u>(most_ - 1); }

 private:
  unsigned least_ = barrier<Zeb8u>, most_ = 0;
};

// level: of the queue in which a pixel waits; 255 for a free one as well; 0 for what is never taken again and for the
// frame.
struct Cell {
  Zeb8u level, label;
};

int64_t bufferBytes(ZebiSize roi) {
  return boundedProduct(Frame::countOf(roi), sizeof(Node) + sizeof(Cell)) + 2112;
}

// n / divisor for n below 2^31, by a product: the factor exceeds 2^(31 + shift) / divisor by at most 1, which changes
// no quotient as the shift makes 2^shift at least the divisor.
class Quotient {
 public:
  explicit Quotient(unsigned divisor)
      : shift_(32 - __builtin_clz(divisor - 1)),
        factor_(static_cast<uint32_t>((uint64_t{1} << (31 + shift_)) / divisor + 1)) {}
  int operator()(int n) const {
    const uint64_t product = static_cast<uint64_t>(static_cast<uint32_t>(n)) * factor_;
    return static_cast<int>(static_cast<uint32_t>(product >> 32) >> (shift_ - 1));
  }

 private:
  int shift_;
  uint32_t factor_;
};

// The largest difference of the channels.
template <int channels>
class Colour {
 public:
  explicit Colour(const Zeb8u* p) {
    for (int c = 0; c < channels; ++c) value_[c] = p[c];
  }
  ZEB_INLINE int from(const Zeb8u* q) const {
    int most = 0;
    for (int c = 0; c < channels; ++c) {
      const int d = value_[c] - q[c], size = d < 0 ? -d : d;
      most = size > most ? size : most;
    }
    return most;
  }

 private:
  int value_[channels];
};

template <int channels>
class GradientFlood {
 public:
  GradientFlood(Frame frame, Rows<const Zeb8u> src, ZebiNorm norm, bool boundary, Zeb8u* pBuffer, int64_t bytes)
      : frame_(frame),
        src_(src),
        around_(norm, frame.pitch(), src.step(), channels),
        boundary_(boundary),
        ahead_(Scout::aheadOf(bytes)),
        rowOf_(static_cast<unsigned>(frame.pitch())),
        scratch_(pBuffer, bytes),
        node_(scratch_.take<Node>(frame.count() + levels, 4)),
        cell_(scratch_.take<Cell>(frame.count(), 1)) {}

  void fill(Rows<const Zeb8u> marker) {
    constexpr Cell never = {0, barrier<Zeb8u>}, free = {255, 0};
    const auto fillRow = [&](int from) {
      for (int x = 0; x < frame_.pitch(); ++x) cell_[from + x] = never;
    };
    fillRow(0);
    for (int y = 0; y < frame_.height; ++y) {
      Cell* const cell = cell_ + frame_.row(y);
      const Zeb8u* const m = marker[y];
      cell[-1] = cell[frame_.width] = never;
      for (int x = 0; x < frame_.width; ++x) cell[x] = m[x] ? Cell{0, m[x]} : free;
    }
    fillRow(frame_.row(frame_.height) - 1);
    for (int level = 0; level < levels; ++level) node_[ring(level)] = {ring(level), ring(level)};
  }

  void flood(Rows<const Zeb8u> marker) {
    eachMarker(marker, frame_, boundary_, [this](int x, int y) { meetAround(frame_.row(y) + x, x, y, 0); });
    // No level is entered again once it has been left. What waits in the queue of a level that is being taken stays
    // there until its turn.
    for (int level = 0; level < levels; ++level) {
      Scout scout(ahead_);
      for (int p = node_[ring(level)].next; p != ring(level); p = node_[ring(level)].next) {
        scout.lead(
            p, [&](int q) ZEB_BODY { return node_[q].next == ring(level) ? -1 : node_[q].next; },
            [&](int q) ZEB_BODY { fetchBeside(node_ + q, cell_ + q, frame_.pitch()); });
        unlink(p);
        cell_[p].level = 0;
        if (boundary_ && !settle(p)) continue;
        const int row = rowOf_(p);
        meetAround(p, p - row * frame_.pitch() - 1, row - 1, level);
      }
    }
  }

  void write(Rows<Zeb8u> marker) const {
    for (int y = 0; y < frame_.height; ++y) {
      const Cell* const cell = cell_ + frame_.row(y);
      Zeb8u* const m = marker[y];
      for (int x = 0; x < frame_.width; ++x) m[x] = cell[x].label;
    }
  }

 private:
  // The node of a level's queue.
  int ring(int level) const { return frame_.count() + level; }

  ZEB_INLINE void unlink(int p) {
    const Node n = node_[p];
    node_[n.previous].next = n.next;
    node_[n.next].previous = n.previous;
  }
  ZEB_INLINE void append(int p, int level) {
    const int last = node_[ring(level)].previous;
    node_[p] = {ring(level), last};
    node_[last].next = p;
    node_[ring(level)].previous = p;
  }

  // The pixel at x, y, taken at a level, meets its neighbours.
  ZEB_INLINE void meetAround(int p, int x, int y, int level) {
    const Zeb8u* const s = src_[y] + static_cast<ptrdiff_t>(x) * channels;
    const Colour<channels> colour(s);
    const Zeb8u label = boundary_ ? barrier<Zeb8u> : cell_[p].label;
    // What waits here or lower stays; what is free at level 255 still comes.
    const int lowest = level < 255 ? level : 254;
    for (int i = 0; i < around_.count; ++i) {
      const int q = p + around_.framed[i];
      const Cell cell = cell_[q];
      if (cell.level <= lowest) continue;
      const int cost = colour.from(s + around_.bytes[i]);
      const int to = cost > level ? cost : level;
      if (cell.level <= to && cell.label) continue;
      if (cell.label) unlink(q);
      append(q, to);
      cell_[q] = {static_cast<Zeb8u>(to), label};
    }
  }

  // A waiting pixel takes the one label around it; where there are several it stays a boundary.
  ZEB_INLINE bool settle(int p) {
    OneLabel one;
    for (int i = 0; i < around_.count; ++i) one(cell_[p + around_.framed[i]].label);
    if (one.several()) return false;
    cell_[p].label = one.label();
    return true;
  }

  Frame frame_;
  Rows<const Zeb8u> src_;
  Neighbours around_;
  bool boundary_;
  int ahead_;
  Quotient rowOf_;
  Scratch scratch_;
  Node* node_;
  Cell* cell_;
};

template <int channels>
ZebStatus segment(const Zeb8u* pSrc, int srcStep, Zeb8u* pMarker, int markerStep, ZebiSize roi, ZebiNorm norm, int flag,
                  Zeb8u* pBuffer) {
  const auto src = image<channels>(pSrc, srcStep);
  const auto marker = image(pMarker, markerStep);
  const int64_t bytes = bufferBytes(roi);
  if (auto bad = firstFailure(checked(roi, src, marker, also(pBuffer)), floodChecks(norm, flag, bytes))) return bad;
  GradientFlood<channels> flood(Frame(roi), src.rows(), norm, flag == zebSegmentBoundary, pBuffer, bytes);
  const Rows<const Zeb8u> markers(pMarker, markerStep);
  flood.fill(markers);
  flood.flood(markers);
  flood.write(marker.rows());
  return zebStsOk;
}

ZebStatus gradientBytes(ZebiSize roi, int* pBufferSize) {
  if (auto bad = firstFailure(present(pBufferSize), hasArea(roi))) return bad;
  return reportSize(bufferBytes(roi), pBufferSize);
}

}  // namespace

ZEB_ENTRY(zebiSegmentGradientGetBufferSize_8u_C1IR)(ZebiSize roiSize, int* pBufferSize) {
  return gradientBytes(roiSize, pBufferSize);
}
ZEB_ENTRY(zebiSegmentGradientGetBufferSize_8u_C3IR)(ZebiSize roiSize, int* pBufferSize) {
  return gradientBytes(roiSize, pBufferSize);
}

ZEB_ENTRY(zebiSegmentGradient_8u_C1IR)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pMarker, int markerStep, ZebiSize roiSize, ZebiNorm norm, int flag,
 Zeb8u* pBuffer) {
  return segment<1>(pSrc, srcStep, pMarker, markerStep, roiSize, norm, flag, pBuffer);
}
ZEB_ENTRY(zebiSegmentGradient_8u_C3IR)
(const Zeb8u* pSrc, int srcStep, Zeb8u* pMarker, int markerStep, ZebiSize roiSize, ZebiNorm norm, int flag,
 Zeb8u* pBuffer) {
  return segment<3>(pSrc, srcStep, pMarker, markerStep, roiSize, norm, flag, pBuffer);
}
