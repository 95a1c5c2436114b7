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
    fetchAhead(p[Taps::taps - 1] + x);
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
    fetchAhead(out + x);
    part.to(out + x, Taps::words([=](int k) ZEB_BODY { return part.from(line + x + k * channels); }));
  });
}

// Columns of the Laplacian of 5 x 5: what its corners and its centre are made of.
struct CornerSums5 {  // 1 2 2 2 1
  static constexpr int taps = 5;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 1, 2>(v(0), v(1)) + weighted<Half, 2, 2>(v(2), v(3)) + widened<Half>(v(4));
  }
};
struct CentreSums5 {  // 4 x (0 1 2 1 0)
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 4, 8>(v(1), v(2)) + weighted<Half, 4, 0>(v(3), splat(Zeb8u(0)));
  }
};
struct CornerSums3 {  // 2 0 2
  static constexpr int taps = 3;
  template <class Half, class At>
  static ZEB_INLINE V16s bytes(At v) {
    return weighted<Half, 2, 2>(v(0), v(2));
  }
};

// ---- Means ----

// The even and the odd bytes of 32, as words.
ZEB_INLINE V16s evenBytes(V8u a) {
  return as<Zeb16s>(a) & splat(Zeb16s(0xFF));
}
ZEB_INLINE V16s oddBytes(V8u a) {
  return as<Zeb16s>(shiftRight<8>(as<Zeb16u>(a)));
}
ZEB_INLINE V16s pairSums(const Zeb8u* p) {
  return dotPairs(load(p), splatBytePair(1, 1));
}

// Sums of 9 or 25 bytes, even and odd ones, divided to the nearest; as bytes in order.
ZEB_INLINE V8u means(std::integral_constant<int, 1>, V16s even, V16s odd) {
  // 3641 / 2^15 is 1/9 and so little more that no sum up to 2295 is rounded otherwise.
  const V16s ninth = splat(Zeb16s(3641));
  return as<Zeb8u>(roundedHighProduct(even, ninth) | shiftLeft<8>(roundedHighProduct(odd, ninth)));
}
ZEB_INLINE V8u means(std::integral_constant<int, 2>, V16s even, V16s odd) {
  // 20972 / 2^19 is 1/25 as well for sums up to 6387.
  const V16u factor = splat(Zeb16u(20972)), half = splat(Zeb16u(12));
  const V16u e = highProduct(as<Zeb16u>(even) + half, factor), o = highProduct(as<Zeb16u>(odd) + half, factor);
  return as<Zeb8u>(as<Zeb16s>(shiftRight<3>(e)) | (shiftLeft<5>(as<Zeb16s>(o)) & splat(static_cast<Zeb16s>(0xFF00))));
}

template <int reach>
ZEB_INLINE void meanRowOf(const Zeb8u* p, int n, Zeb16s* sums) {
  for (int x = 0; x < n; x += 32, p += 32, sums += 32) {
    V16s even, odd;
    if constexpr (reach == 1) {
      // 1 2 are common to pixels 1 and 2, of which the first takes 0 as well and the second 3.
      const V16s common = pairSums(p + 1);
      even = common + evenBytes(load(p)), odd = common + oddBytes(load(p + 2));
    } else {
      const V16s common = pairSums(p + 1) + pairSums(p + 3);
      even = common + evenBytes(load(p)), odd = common + oddBytes(load(p + 4));
    }
    store(sums, even);
    store(sums + 16, odd);
  }
}

template <int reach, bool two>
ZEB_INLINE void meanColumnsOf(const Zeb16s* const* rows, int n, Zeb8u* out, [[maybe_unused]] Zeb8u* below) {
  constexpr int taps = 2 * reach + 1;
  const Zeb16s* p[taps + 1];
  for (int k = 0; k < taps + two; ++k) p[k] = rows[k];
  forVectors<32>(0, n, [&](int x, auto part) ZEB_BODY {
    fetchAhead(out + x);
    if constexpr (two) fetchAhead(below + x);
    V16s common[2];
    for (int half = 0; half < 2; ++half) {
      common[half] = load(p[1] + x + 16 * half) + load(p[2] + x + 16 * half);
      for (int k = 3; k < taps; ++k) common[half] = common[half] + load(p[k] + x + 16 * half);
    }
    const auto mean = [&](const Zeb16s* row) ZEB_BODY {
      return means(std::integral_constant<int, reach>(), common[0] + load(row + x), common[1] + load(row + x + 16));
    };
    part.to(out + x, mean(p[0]));
    if constexpr (two) part.to(below + x, mean(p[taps]));
  });
}

}  // namespace

void meanRow(int reach, const Zeb8u* p, int n, Zeb16s* sums) {
  reach == 1 ? meanRowOf<1>(p, n, sums) : meanRowOf<2>(p, n, sums);
}

void meanColumns(int reach, const Zeb16s* const* rows, int n, Zeb8u* out, Zeb8u* below) {
  if (reach == 1)
    below ? meanColumnsOf<1, true>(rows, n, out, below) : meanColumnsOf<1, false>(rows, n, out, below);
  else
    below ? meanColumnsOf<2, true>(rows, n, out, below) : meanColumnsOf<2, false>(rows, n, out, below);
}

ByteColumns laplacianColumns(int reach) {
  return reach == 1 ? downColumns<CornerSums3> : downColumns<CornerSums5, CentreSums5>;
}

void laplacianRow3(const ByteLines& lines, const Zeb8u* centre, int n, Zeb16s* out) {
  const Zeb16s* const line = lines.line(0);
  forOverlappingVectors<16>(0, n, [=](int x, auto part) ZEB_BODY {
    fetchAhead(out + x);
    part.to(out + x, part.from(line + x) + part.from(line + x + 2) - shiftLeft<3>(part.words(centre + x)));
  });
}

// Corners less centre, in place of the centre; then that is smoothed.
void laplacianRow5(const ByteLines& lines, int n, Zeb16s* out) {
  const Zeb16s* const corners = lines.line(0);
  Zeb16s* const line = lines.line(1) + 1;
  forVectors<16>(0, n + 2, [=](int x, auto part) ZEB_BODY {
    part.to(line + x, part.from(corners + x) + part.from(corners + x + 2) - part.from(line + x));
  });
  forOverlappingVectors<16>(0, n, [=](int x, auto part) ZEB_BODY {
    const V16s sum = Smooth3::words([=](int k) ZEB_BODY { return part.from(line + x + k); });
    fetchAhead(out + x);
    part.to(out + x, sum + sum);
  });
}

ByteLines::ByteLines(const BorderedImage& source, int channels, int reach, ByteColumns kernel, Scratch& scratch,
                     Margins margins)
    : source_(source),
      columns_(source.columns(-margins.before - reach, int64_t{source.size().width} + margins.after + reach)),
      channels_(channels),
      reach_(reach),
      kernel_(kernel) {
  const int64_t n = (margins.around(source) + 2 * reach) * channels;
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
    case Operator::prewitt:
      return order == Order::smooth ? downColumns<Mean3> : downColumns<First3>;
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
    case Operator::prewitt:
      return downColumns<Mean3, First3>;
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
    case Operator::prewitt:
      return order == Order::smooth ? alongRow<Mean3> : alongRow<First3>;
    default:
      return order == Order::smooth ? alongRow<ScharrSmooth> : alongRow<First3>;
  }
}

}  // namespace zeb
