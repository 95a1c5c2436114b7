// Fixed kernels on bytes.
#include "core/loops.h"
#include "core/narrow.h"
#include "filter/fixed.h"
#include "filter/taps.h"

namespace zeb {
namespace {

// 32 sums in the order of the halves, stored in the order of the elements.
ZEB_INLINE void storeSums(Zeb16s* p, V16s first, V16s last, WholeVector) {
  storeInOrder(p, first, last);
}
ZEB_INLINE void storeSums(Zeb16s* p, V16s first, V16s last, RowEnd end) {
  Zeb16s block[32];
  storeInOrder(block, first, last);
  memcpy(p, block, static_cast<size_t>(end.n) * sizeof(Zeb16s));
}

// There is no second line.
struct None {};

template <class Taps, class Second>
void sumColumns(const Zeb8u* const* rows, int n, Zeb16s* line, [[maybe_unused]] Zeb16s* second) {
  const Zeb8u* p[Taps::taps];
  for (int k = 0; k < Taps::taps; ++k) p[k] = rows[k];
  forOverlappingVectors<32>(0, n, [&](int x, auto part) ZEB_BODY {
    const auto at = [&](int k) ZEB_BODY { return part.from(p[k] + x); };
    storeSums(line + x, Taps::template bytes<FirstHalf>(at), Taps::template bytes<LastHalf>(at), part);
    if constexpr (!std::is_same_v<Second, None>)
      storeSums(second + x, Second::template bytes<FirstHalf>(at), Second::template bytes<LastHalf>(at), part);
  });
}

template <class Taps, class Second = None>
constexpr ByteColumns downColumns = {sumColumns<Taps, Second>, std::is_same_v<Second, None> ? 1 : 2};

template <class Taps>
void alongRow(const Zeb16s* line, int channels, int n, Zeb16s* out) {
  forOverlappingVectors<16>(0, n, [=](int x, auto part) ZEB_BODY {
    part.to(out + x, Taps::words([=](int k) ZEB_BODY { return part.from(line + x + k * channels); }));
  });
}

}  // namespace

ByteLines::ByteLines(const BorderedImage& source, int channels, int reach, ByteColumns kernel, Scratch& scratch)
    : source_(source),
      columns_(source.columns(-reach, int64_t{source.size().width} + reach)),
      channels_(channels),
      reach_(reach),
      kernel_(kernel) {
  const int64_t n = (int64_t{source.size().width} + 2 * reach) * channels;
  for (Zeb16s*& line : lines_) line = scratch.take<Zeb16s>(n);
  constantRow_ = scratch.take<Zeb8u>(n, 1);
  if (const Zeb8u* const value = source.constant()) {
    repeatPixelOften(value, channels, constantRow_, columns_.keptCount());
    const Zeb8u* rows[5];
    for (const Zeb8u*& row : rows) row = value;
    kernel.sum(rows, channels, constants_[0], constants_[1]);
  }
}

void ByteLines::form(int64_t y) {
  const Zeb8u* rows[5];
  const ptrdiff_t at = columns_.kept * channels_, before = columns_.before * channels_;
  for (int k = 0; k <= 2 * reach_; ++k) {
    const Zeb8u* const row = source_.row(y - reach_ + k);
    rows[k] = row ? row + at : constantRow_;
  }
  kernel_.sum(rows, static_cast<int>(columns_.keptCount()) * channels_, lines_[0] + before, lines_[1] + before);
  const bool constant = source_.constant() != nullptr;
  for (int k = 0; k < kernel_.lines; ++k)
    completeEnds(lines_[k], columns_, channels_, constant ? constants_[k] : nullptr);
}

ByteColumns byteColumns(Operator op, Order order) {
  switch (op) {
    case Operator::sobel3:
      return order == Order::smooth  ? downColumns<Smooth3>
             : order == Order::first ? downColumns<First3>
                                     : downColumns<Second3>;
    case Operator::sobel5:
      return order == Order::smooth  ? downColumns<Smooth5>
             : order == Order::first ? downColumns<First5>
                                     : downColumns<Second5>;
    default:
      return order == Order::smooth ? downColumns<ScharrSmooth> : downColumns<First3>;
  }
}

ByteColumns byteColumnsOfBoth(Operator op) {
  switch (op) {
    case Operator::sobel3:
      return downColumns<Smooth3, First3>;
    case Operator::sobel5:
      return downColumns<Smooth5, First5>;
    default:
      return downColumns<ScharrSmooth, First3>;
  }
}

WordRow wordRow(Operator op, Order order) {
  switch (op) {
    case Operator::sobel3:
      return order == Order::smooth ? alongRow<Smooth3> : order == Order::first ? alongRow<First3> : alongRow<Second3>;
    case Operator::sobel5:
      return order == Order::smooth ? alongRow<Smooth5> : order == Order::first ? alongRow<First5> : alongRow<Second5>;
    default:
      return order == Order::smooth ? alongRow<ScharrSmooth> : alongRow<First3>;
  }
}

}  // namespace zeb
