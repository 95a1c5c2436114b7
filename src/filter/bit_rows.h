// Rows of bit-packed images: the leftmost pixel of a byte is its most significant bit.
#pragma once

#include "core/loops.h"
#include "filter/border.h"

namespace zeb {

constexpr int64_t bytesOfBits(int64_t bits) {
  return (bits + 7) >> 3;
}

// Pixel x of a row; x may be negative.
inline bool bitAt(const Zeb8u* row, int64_t x) {
  return (row[static_cast<ptrdiff_t>(x >> 3)] >> (7 - (x & 7)) & 1) != 0;
}

// Replaces count bits, count <= 8 - phase, from bit phase of a byte on; value holds them in its low bits.
inline void mergeBits(Zeb8u* byte, int phase, int count, unsigned value) {
  const int shift = 8 - phase - count;
  const unsigned mask = ((1u << count) - 1) << shift;
  *byte = static_cast<Zeb8u>((*byte & ~mask) | (value << shift & mask));
}

// count <= 8 bits from bit phase of *src on; the second byte is read only where they reach into it.
inline unsigned takeBits(const Zeb8u* src, int phase, int count) {
  const unsigned low = phase + count > 8 ? src[1] : 0;
  return ((static_cast<unsigned>(src[0]) << 8 | low) >> (16 - phase - count)) & ((1u << count) - 1);
}

// For every byte the eight bits from bit phase (0..7) of it on, those behind its end from the byte behind.
ZEB_INLINE V8u shiftedBits(V8u bytes, V8u behind, int phase) {
  const V8u high{_mm256_sll_epi16(bytes.v, _mm_cvtsi32_si128(phase))};
  const V8u low{_mm256_srl_epi16(behind.v, _mm_cvtsi32_si128(8 - phase))};
  const V8u taken = splat(static_cast<Zeb8u>(0xFF << phase));
  return (high & taken) | andNot(taken, low);
}

// out[i] = the eight bits from bit 8 i + phase on; reads bytes + 1 bytes unless phase is 0.
inline void shiftBits(const Zeb8u* __restrict src, int phase, Zeb8u* __restrict out, int64_t bytes) {
  if (phase == 0) {
    memcpy(out, src, static_cast<size_t>(bytes));
    return;
  }
  forVectors<V8u::lanes>(0, static_cast<int>(bytes), [=](int i, auto part) ZEB_BODY {
    part.to(out + i, shiftedBits(part.from(src + i), part.from(src + i + 1), phase));
  });
}

// Copies count pixels between rows that do not overlap; no byte is touched in which none of them lies.
inline void copyBits(const Zeb8u* src, int64_t srcBit, Zeb8u* dst, int64_t dstBit, int64_t count) {
  if (count <= 0) return;
  src += srcBit >> 3;
  dst += dstBit >> 3;
  int from = static_cast<int>(srcBit & 7);
  const int to = static_cast<int>(dstBit & 7);
  if (to != 0) {
    const int n = count < 8 - to ? static_cast<int>(count) : 8 - to;
    mergeBits(dst++, to, n, takeBits(src, from, n));
    from += n;
    src += from >> 3;
    from &= 7;
    count -= n;
  }
  const int64_t bytes = count >> 3;
  shiftBits(src, from, dst, bytes);
  const int rest = static_cast<int>(count & 7);
  if (rest != 0) mergeBits(dst + bytes, 0, rest, takeBits(src + bytes, from, rest));
}

inline void setBits(Zeb8u* dst, int64_t dstBit, int64_t count, bool value) {
  if (count <= 0) return;
  const unsigned all = value ? 0xFF : 0;
  dst += dstBit >> 3;
  const int to = static_cast<int>(dstBit & 7);
  if (to != 0) {
    const int n = count < 8 - to ? static_cast<int>(count) : 8 - to;
    mergeBits(dst++, to, n, all >> (8 - n));
    count -= n;
  }
  memset(dst, static_cast<int>(all), static_cast<size_t>(count >> 3));
  const int rest = static_cast<int>(count & 7);
  if (rest != 0) mergeBits(dst + (count >> 3), 0, rest, all >> (8 - rest));
}

// A region of a bit-packed image whose first pixel is bit origin of the rows, with its surroundings as in
// BorderedImage.
class BitRows {
 public:
  BitRows(const Zeb8u* first, int step, int64_t origin, ZebiSize size, ZebiBorderType border)
      : rows_(first, step, size, 1, border), origin_(origin) {}

  // Columns from..to-1 of row y, to bit outBit of out on.
  void fetch(int64_t y, int64_t from, int64_t to, Zeb8u* out, int64_t outBit = 0) const {
    const Zeb8u* row = rows_.row(y);
    const BorderedImage::Columns c = rows_.columns(from, to);
    setBits(out, outBit, c.before, bitAt(row, origin_ + c.kept));
    copyBits(row, origin_ + c.kept, out, outBit + c.before, c.keptCount());
    setBits(out, outBit + c.before + c.keptCount(), c.after, bitAt(row, origin_ + c.keptEnd - 1));
  }

  ZebiSize size() const { return rows_.size(); }

 private:
  BorderedImage rows_;
  int64_t origin_;
};

}  // namespace zeb
