// Structure tensors of bytes.
#include "core/loops.h"
#include "core/reduce.h"
#include "core/shuffle.h"
#include "feature/structure_tensor.h"

namespace zeb {
namespace {

constexpr int room = 16;   // elements, on both sides of a row of sums
constexpr int fewest = 5;  // windows up to this are summed as they stand

constexpr int64_t wholeVectors(int64_t n) {
  return (n + 15) / 16 * 16;
}

// Tensors are made in vectors of eight.
constexpr int wholeEights(int n) {
  return (n + 7) / 8 * 8;
}

// The largest derivative of bytes.
constexpr int64_t largest(Operator op) {
  return op == Operator::sobel3 ? 1020 : op == Operator::sobel5 ? 12240 : 4080;
}

// Eight words at once, so that pairs of two vectors are formed in the order of the elements.
ZEB_INLINE V16s inQuarters(V16s a) {
  return {_mm256_permute4x64_epi64(a.v, 0xD8)};
}

ZEB_INLINE void add(Zeb32s* sums, V32s v) {
  store(sums, load(sums) + v);
}
ZEB_INLINE void add(uint64_t* sums, V32s v) {
  store(sums, load(sums) + widenLow(v));
  store(sums + 4, load(sums + 4) + widenHigh(v));
}

// The products of a row that enters the window less those of the row that leaves it, added to the sums of columns.
template <class Sum>
void follow(const Zeb16s* dx, const Zeb16s* dy, const Zeb16s* oldDx, const Zeb16s* oldDy, int n, void* const* sums) {
  auto *xx = static_cast<Sum*>(sums[0]), *xy = static_cast<Sum*>(sums[1]), *yy = static_cast<Sum*>(sums[2]);
  const V16s zero = splat(Zeb16s(0));
  for (int i = 0; i < n; i += 16) {
    const V16s x = inQuarters(load(dx + i)), x0 = inQuarters(load(oldDx + i));
    const V16s y = inQuarters(load(dy + i)), y0 = inQuarters(load(oldDy + i));
    const V16s lessX = zero - x0, lessY = zero - y0;
    const auto half = [=](int at, auto pair) ZEB_BODY {
      const V16s px = pair(x, x0), py = pair(y, y0), my = pair(y, lessY);
      add(xx + at, dotPairs(px, pair(x, lessX)));
      add(xy + at, dotPairs(px, my));
      add(yy + at, dotPairs(py, my));
    };
    half(i, [](V16s p, V16s q) ZEB_BODY { return interleaveFirst(p, q); });
    half(i + 8, [](V16s p, V16s q) ZEB_BODY { return interleaveLast(p, q); });
  }
}

// ---- Sums along a row ----

// Of windows of few pixels: one after the other.
void sumFew(const Zeb32s* p, int window, Zeb32f scale, int n, Zeb32f* out) {
  for (int x = 0; x < n; x += 8) {
    V32s sum = load(p + x);
    for (int i = 1; i < window; ++i) sum = sum + load(p + x + i);
    store(out + x, toFloat(sum) * splat(scale));
  }
}

// Every lane with the sum of those before it and itself.
ZEB_INLINE V32s prefixSums(V32s a) {
  __m256i s = _mm256_add_epi32(a.v, _mm256_slli_si256(a.v, 4));
  s = _mm256_add_epi32(s, _mm256_slli_si256(s, 8));
  const __m256i low = _mm256_permute2x128_si256(s, s, 0x08);  // 0, the low half
  return {_mm256_add_epi32(s, _mm256_shuffle_epi32(low, 0xFF))};
}
ZEB_INLINE V64u prefixSums(V64u a) {
  const __m256i s = _mm256_add_epi64(a.v, _mm256_slli_si256(a.v, 8));
  const __m256i low = _mm256_permute2x128_si256(s, s, 0x08);
  return {_mm256_add_epi64(s, _mm256_unpackhi_epi64(low, low))};
}
ZEB_INLINE V32s lastLane(V32s a) {
  return {_mm256_permutevar8x32_epi32(a.v, _mm256_set1_epi32(7))};
}
ZEB_INLINE V64u lastLane(V64u a) {
  return {_mm256_permute4x64_epi64(a.v, 0xFF)};
}

// The next sums of a window that moves along: what enters at its end less what leaves before it. carry: the last sum.
template <class V, class T>
ZEB_INLINE V nextSums(const T* p, int window, V& carry) {
  const V sum = carry + prefixSums(load(p + window - 1) - load(p - 1));
  carry = lastLane(sum);
  return sum;
}

void sumNarrow(const Zeb32s* p, int window, Zeb32f scale, int n, Zeb32f* out, uint64_t* carried) {
  V32s carry = as<Zeb32s>(load(carried));
  for (int x = 0; x < n; x += 8) store(out + x, toFloat(nextSums(p + x, window, carry)) * splat(scale));
  store(carried, as<uint64_t>(carry));
}

// Below 2^51 in magnitude, exactly.
ZEB_INLINE V64f toDouble(V64u a) {
  const V64f magic = splat(6755399441055744.0);  // 2^52 + 2^51
  return as<Zeb64f>(a + as<uint64_t>(magic)) - magic;
}
void sumWide(const uint64_t* p, int window, Zeb32f scale, int n, Zeb32f* out, uint64_t* carried) {
  V64u carry = load(carried);
  for (int x = 0; x < wholeEights(n); x += 4) {
    const V64f sum = toDouble(nextSums(p + x, window, carry));
    _mm_storeu_ps(out + x, _mm_mul_ps(_mm256_cvtpd_ps(sum.v), _mm_set1_ps(scale)));
  }
  store(carried, carry);
}

// The sum of the window that ends before the first pixel's does, whose own first pixel is the 0 before the row.
template <class T>
T firstSum(const void* sums, int window) {
  const auto* p = static_cast<const T*>(sums);
  uint64_t sum = 0;
  for (int i = 0; i < window - 1; ++i) sum += static_cast<uint64_t>(p[i]);
  return static_cast<T>(sum);
}

}  // namespace

TensorRows<Zeb8u>::Width TensorRows<Zeb8u>::widthOf(TensorForm form) {
  const int64_t side = form.window * largest(form.op);
  return side * side > INT32_MAX ? Width::wide : form.window > fewest ? Width::narrow : Width::few;
}

int64_t TensorRows<Zeb8u>::scratchBytes(TensorForm form, int width) {
  const int64_t n = form.extended(width), words = 2 * RowRing<Zeb16s>::bytes(form.window + 1, wholeVectors(n));
  return DerivativeRows<Zeb8u>::scratchBytes(form.op, static_cast<int>(n < INT32_MAX ? n : INT32_MAX)) + words +
         wholeVectors(n) * static_cast<int64_t>(sizeof(Zeb16s)) +
         3 * (wholeVectors(n) + 2 * room) * static_cast<int64_t>(sizeof(uint64_t)) + 6 * 32;
}

TensorRows<Zeb8u>::TensorRows(TensorForm form, const BorderedImage& source, Scratch& scratch)
    : form_(form),
      width_(widthOf(form)),
      scale_(form.scale()),
      columns_(static_cast<int>(form.extended(source.size().width))),
      derivatives_(form.op, source, scratch, form.margins()),
      dx_(scratch, form.window + 1, wholeVectors(columns_), 32),
      dy_(scratch, form.window + 1, wholeVectors(columns_), 32),
      none_(scratch.take<Zeb16s>(wholeVectors(columns_))),
      entered_(-form.before()) {
  memset(none_, 0, static_cast<size_t>(wholeVectors(columns_)) * sizeof(Zeb16s));
  const size_t element = width_ == Width::wide ? sizeof(uint64_t) : sizeof(Zeb32s);
  for (void*& sums : sums_) {
    auto* const bytes = reinterpret_cast<Zeb8u*>(scratch.take<uint64_t>(wholeVectors(columns_) + 2 * room));
    memset(bytes, 0, static_cast<size_t>(wholeVectors(columns_) + 2 * room) * element);
    sums = bytes + room * element;
  }
  // Products are formed in whole vectors. What lies behind the columns counts for nothing, but memory checkers follow
  // sums of pairs by eight bytes only: left unwritten, it would seem to be in the last results.
  for (int q = 0; q <= form.window; ++q)
    store(dx_.back(q) + columns_, splat(Zeb16s(0))), store(dy_.back(q) + columns_, splat(Zeb16s(0)));
  while (entered_ < form.after()) enter(entered_++);
}

void TensorRows<Zeb8u>::enter(int64_t q) {
  Zeb16s *const dx = dx_.enter(), *const dy = dy_.enter();
  derivatives_.form(q, dx, dy);
  const bool none = q - form_.window < -form_.before();
  (width_ == Width::wide ? follow<uint64_t> : follow<Zeb32s>)(dx, dy, none ? none_ : dx_.back(form_.window),
                                                              none ? none_ : dy_.back(form_.window), columns_, sums_);
}

void TensorRows<Zeb8u>::next() {
  enter(entered_++);
  x_ = 0;
  if (width_ == Width::few) return;
  for (int k = 0; k < 3; ++k)
    store(carry_[k], width_ == Width::wide ? splat(firstSum<uint64_t>(sums_[k], form_.window))
                                           : as<uint64_t>(splat(firstSum<Zeb32s>(sums_[k], form_.window))));
}

void TensorRows<Zeb8u>::take(int n, TensorBlock& block) {
  Zeb32f* const out[3] = {block.a, block.b, block.c};
  for (int k = 0; k < 3; ++k) {
    const auto* const narrow = static_cast<const Zeb32s*>(sums_[k]) + x_;
    if (width_ == Width::few)
      sumFew(narrow, form_.window, scale_, n, out[k]);
    else if (width_ == Width::narrow)
      sumNarrow(narrow, form_.window, scale_, n, out[k], carry_[k]);
    else
      sumWide(static_cast<const uint64_t*>(sums_[k]) + x_, form_.window, scale_, n, out[k], carry_[k]);
  }
  x_ += n;
}

}  // namespace zeb
