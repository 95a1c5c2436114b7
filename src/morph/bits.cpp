// Bit-packed morphology, eight pixels to a byte and a vector of bytes at a time.
//
// A bordered row is kept in up to eight phases, phase p being the row shifted left by p bits. A set element in column c
// is then the byte 8-fold column c / 8 of phase c % 8, and a result byte is the conjunction or disjunction of one byte
// for each element, wherever the element stands. Masks whose set rows are all the same single run take that run along
// the row first, by doubling, and then one byte for each row of the mask.
#include "morph/bits.h"

#include <utility>

namespace zeb {

namespace {

// The elements as bits: the phases in use and the rectangle around them.
struct BitMask {
  int left, right, top, bottom;
  bool rectangle;

  explicit BitMask(const ZebiMorphState& s) : left(s.width), right(-1), top(-1), bottom(-1) {
    int64_t count = 0;
    for (int y = 0, i = 0; y < s.height; ++y)
      for (int x = 0; x < s.width; ++x, ++i) {
        if (!s.mask[i]) continue;
        ++count;
        if (x < left) left = x;
        if (x > right) right = x;
        if (top < 0) top = y;
        bottom = y;
      }
    rectangle = count == int64_t(right - left + 1) * (bottom - top + 1);
  }
  int columns() const { return right - left + 1; }
  int rows() const { return bottom - top + 1; }
};

// out = row combined with itself `shift` bits further on; reads one byte past the shifted ones.
template <class Op>
void widenBits(const Zeb8u* __restrict row, int64_t shift, Zeb8u* __restrict out, ptrdiff_t bytes) {
  const Zeb8u* ahead = row + static_cast<ptrdiff_t>(shift >> 3);
  const int phase = static_cast<int>(shift & 7);
  forVectors<V8u::lanes>(0, static_cast<int>(bytes), [=](int i, auto part) ZEB_BODY {
    part.to(out + i, Op::pick(part.from(row + i), shiftedBits(part.from(ahead + i), part.from(ahead + i + 1), phase)));
  });
}

void finishRow(const BitOutput& output, int y, Zeb8u* result, int width) {
  using Finish = RowOutput<Zeb8u>;
  const ptrdiff_t bytes = static_cast<ptrdiff_t>(bytesOfBits(width)), whole = width >> 3;
  Zeb8u* dst = output.dst[y];
  const Zeb8u* other = output.finish == Finish::dstMinusResult ? dst : output.other[y];
  if (output.finish == Finish::minusOther) {
    mapRow([](V8u a, V8u b) { return andNot(b, a); }, result, static_cast<int>(bytes), result, other);
  } else if (output.finish != Finish::store) {
    mapRow([](V8u a, V8u b) { return andNot(b, a); }, result, static_cast<int>(bytes), other, result);
  }
  memcpy(dst, result, static_cast<size_t>(whole));
  if (width & 7) mergeBits(dst + whole, 0, width & 7, result[whole] >> (8 - (width & 7)));
}

template <class Op>
void bitRegion(const ZebiMorphState& state, const BitRows& source, const BitOutput& output, Zeb8u* room,
               int64_t roomSize) {
  const int width = source.size().width, height = source.size().height;
  const ptrdiff_t bytes = static_cast<ptrdiff_t>(bytesOfBits(width));
  Scratch scratch(room, roomSize);
  if (state.shapeClass == zebShapeEmpty) {
    Zeb8u* line = scratch.take<Zeb8u>(scratchStride(bytes, 1));
    for (int y = 0; y < height; ++y) {
      source.fetch(y, 0, width, line);
      finishRow(output, y, line, width);
    }
    return;
  }

  const BitMask mask(state);
  const int64_t from = int64_t(mask.left) - state.anchorX, to = from + width + mask.columns() - 1;
  const ptrdiff_t stride = static_cast<ptrdiff_t>(scratchStride(bytesOfBits(to - from) + 9, 1));
  const int rows = mask.rows(), phases = mask.rectangle ? 1 : 8;
  Zeb8u* line = scratch.take<Zeb8u>(stride);
  Zeb8u* result = scratch.take<Zeb8u>(stride);
  RowRing<Zeb8u> ring(scratch, rows, int64_t(phases) * stride, 32);
  struct Element {
    int row, column;
  };
  const int64_t area = int64_t(state.width) * state.height;
  Element* elements = scratch.take<Element>(area, alignof(Element));
  const Zeb8u** taps = scratch.take<const Zeb8u*>(area, alignof(const Zeb8u*));
  int count = 0;
  unsigned used = 0;
  for (int y = 0; y < rows; ++y) {
    if (mask.rectangle) {
      elements[count++] = {y, 0};
      used = 1;
      continue;
    }
    for (int x = 0; x < mask.columns(); ++x)
      if (state.mask[static_cast<ptrdiff_t>(mask.top + y) * state.width + mask.left + x]) {
        elements[count++] = {y, x};
        used |= 1u << (x & 7);
      }
  }

  const auto enter = [&](int64_t y) {
    source.fetch(y + mask.top - state.anchorY, from, to, line);
    Zeb8u *windows = line, *wider = result;
    for (int64_t cur = 1; mask.rectangle && cur < mask.columns();) {
      const int64_t next = 2 * cur < mask.columns() ? 2 * cur : mask.columns();
      widenBits<Op>(windows, next - cur, wider, static_cast<ptrdiff_t>(bytesOfBits(width + mask.columns() - next)));
      cur = next;
      std::swap(windows, wider);
    }
    Zeb8u* const row = ring.enter();
    for (int p = 0; p < phases; ++p)
      if (used & 1u << p) shiftBits(windows, p, row + p * stride, static_cast<ptrdiff_t>(bytesOfBits(to - from)));
  };
  for (int y = 0; y < rows - 1; ++y) enter(y);
  for (int y = 0; y < height; ++y) {
    enter(int64_t(y) + rows - 1);
    const Zeb8u* row = nullptr;
    for (int i = 0, last = -1; i < count; ++i) {
      if (elements[i].row != last) last = elements[i].row, row = ring.back(rows - 1 - last);
      taps[i] = row + (elements[i].column & 7) * stride + (elements[i].column >> 3);
    }
    combinePadded<Op>(taps, count, result, bytes);
    finishRow(output, y, result, width);
  }
}

}  // namespace

void erodeBits(const ZebiMorphState& state, const BitRows& source, const BitOutput& output, Zeb8u* scratch,
               int64_t scratchSize) {
  bitRegion<EveryBit>(state, source, output, scratch, scratchSize);
}
void dilateBits(const ZebiMorphState& state, const BitRows& source, const BitOutput& output, Zeb8u* scratch,
                int64_t scratchSize) {
  bitRegion<AnyBit>(state, source, output, scratch, scratchSize);
}

}  // namespace zeb
