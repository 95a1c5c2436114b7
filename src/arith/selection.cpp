// Runs of selected pixels: the way through the region, and what is gathered on it.
#include "arith/selection.h"

#include "core/loops.h"

namespace zeb {
namespace {

constexpr int lanes = 32;  // bytes of a vector

V8u fillingVector(uint32_t filling) {
  return as<Zeb8u>(splat(static_cast<Zeb32s>(filling)));
}

// Any number of bytes, to where whole vectors may be stored.
void copyBytes(Zeb8u* to, const Zeb8u* from, int bytes) {
  int i = 0;
  for (; i <= bytes - lanes; i += lanes) store(to + i, load(from + i));
  copyFew(to + i, from + i, bytes - i);
}

// For an element size and a channel: the bytes of the channel in three pieces of 16 bytes, five and a third pixels each
// of 1-byte elements. A byte that is in none of a piece's channels is marked by the top bit.
struct Pick {
  Zeb8u piece[3][16];
};
struct Picks {
  Pick of[3][3];
  constexpr Picks() : of() {
    for (int size = 0; size < 3; ++size)
      for (int channel = 0; channel < 3; ++channel)
        for (int i = 0; i < 16; ++i) {
          const int bytes = 1 << size, from = (i / bytes * 3 + channel) * bytes + i % bytes;
          for (int piece = 0; piece < 3; ++piece)
            of[size][channel].piece[piece][i] = static_cast<Zeb8u>(from / 16 == piece ? from % 16 : 0x80);
        }
  }
};
constexpr Picks picks;

// 32 bytes of a channel out of 96.
ZEB_INLINE V8u pickVector(const Pick& pick, const Zeb8u* from) {
  const auto piece = [&](int k) ZEB_BODY {
    const auto half = [&](int at)
                          ZEB_BODY { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + at + 16 * k)); };
    const __m128i where = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pick.piece[k]));
    return V8u{_mm256_shuffle_epi8(_mm256_set_m128i(half(48), half(0)), _mm256_broadcastsi128_si256(where))};
  };
  return piece(0) | piece(1) | piece(2);
}

// Exactly `bytes` bytes of the channel; reads from three times as many.
void pickChannel(Zeb8u* to, const Zeb8u* from, int bytes, const Pick& pick) {
  int i = 0;
  for (; i <= bytes - lanes; i += lanes) store(to + i, pickVector(pick, from + 3 * i));
  if (i == bytes) return;
  Zeb8u block[3 * lanes] = {};
  copyBytes(block, from + 3 * i, 3 * (bytes - i));
  store(block, pickVector(pick, block));
  copyFew(to + i, block, bytes - i);
}

// All ones in the elements whose mask byte is zero.
template <int bytes>
ZEB_INLINE V8u leftOut(const Zeb8u* mask) {
  const auto* at = reinterpret_cast<const __m128i*>(mask);
  const __m256i zero = _mm256_setzero_si256();
  if constexpr (bytes == 1) {
    return equal(load(mask), V8u{zero});
  } else if constexpr (bytes == 2) {
    return {_mm256_cmpeq_epi16(_mm256_cvtepu8_epi16(_mm_loadu_si128(at)), zero)};
  } else {
    return {_mm256_cmpeq_epi32(_mm256_cvtepu8_epi32(_mm_loadl_epi64(at)), zero)};
  }
}

// Puts the filling where the mask is zero, in n elements, a multiple of the grain; `to` may be `from`. Tells how many
// the mask selects.
template <int bytes>
int fillWhereLeftOut(Zeb8u* to, const Zeb8u* from, const Zeb8u* mask, int n, V8u filling) {
  int selected = 0;
  for (int i = 0; i < n * bytes; i += lanes) {
    const V8u out = leftOut<bytes>(mask + i / bytes);
    selected += __builtin_popcount(~topBits(out));
    store(to + i, select(out, filling, load(from + i)));
  }
  return selected / bytes;
}
int fillWhereLeftOut(int bytes, Zeb8u* to, const Zeb8u* from, const Zeb8u* mask, int n, V8u filling) {
  const auto fill = bytes == 1 ? fillWhereLeftOut<1> : bytes == 2 ? fillWhereLeftOut<2> : fillWhereLeftOut<4>;
  return fill(to, from, mask, n, filling);
}

}  // namespace

ZebStatus Selection::flaw(Mandatory outputs) const {
  // What the checks ask of an image, of elements whose size is known at run time.
  struct Subject {
    bool present;
    int step, pixelBytes, elementBytes;
    bool isPresent() const { return present; }
    bool holdsRow(int width) const { return step >= static_cast<int64_t>(width) * pixelBytes; }
    bool holdsWholeElements() const { return step % elementBytes == 0; }
  };
  const int pixelBytes = elementBytes_ * channels_;
  const Subject first = {first_ != nullptr, firstStep_, pixelBytes, elementBytes_};
  const Subject second = {second_ != nullptr, secondStep_, pixelBytes, elementBytes_};
  const Subject mask = {mask_ != nullptr, maskStep_, 1, 1};
  return firstFailure(checked(roi_, first, pair_ ? second : first, masked_ ? mask : first, outputs),
                      require(coi_ >= 1 && coi_ <= 3, zebStsErrChannel));
}

Runs::Runs(const Selection& selection, int longest, bool joined, uint32_t filling)
    : selection_(selection),
      size_(selection.roi_),
      longest_(longest),
      pixelBytes_(selection.elementBytes_ * selection.channels_),
      direct_(selection.channels_ == 1 && !selection.masked_),
      filling_(filling) {
  const Selection& s = selection;
  const auto whole = [&](int step, int pixelBytes) { return step == static_cast<int64_t>(size_.width) * pixelBytes; };
  joined = joined && whole(s.firstStep_, pixelBytes_) && (!s.pair_ || whole(s.secondStep_, pixelBytes_)) &&
           (!s.masked_ || whole(s.maskStep_, 1)) && s.pixels() <= (1u << 30);
  if (joined) size_ = {size_.width * size_.height, 1};
}

// `pixels` elements under a mask, or without one, and the filling up to the next multiple of the grain.
const void* Runs::gather(Zeb8u* block, const Zeb8u* from, const Zeb8u* mask, int pixels, bool counts) {
  const int bytes = selection_.elementBytes_, whole = pixels & -grain, rest = pixels - whole;
  const V8u filling = fillingVector(filling_);
  Zeb8u* const end = block + whole * bytes;
  if (rest > 0)
    for (int i = 0; i < grain * bytes; i += lanes) store(end + i, filling);
  if (selection_.channels_ == 3) {
    pickChannel(block, from, pixels * bytes, picks.of[bytes / 2][selection_.coi_ - 1]);
    from = block;
  } else if (rest > 0) {
    copyBytes(end, from + whole * bytes, rest * bytes);
  }
  if (mask == nullptr) return block;
  int selected = fillWhereLeftOut(bytes, block, from, mask, whole, filling);
  if (rest > 0) {
    Zeb8u maskEnd[grain] = {};
    copyFew(maskEnd, mask + whole, rest);
    selected += fillWhereLeftOut(bytes, end, end, maskEnd, grain, filling);
  }
  if (counts) selected_ += static_cast<uint64_t>(selected);
  return block;
}

bool Runs::gatherNext(Run& run) {
  const Selection& s = selection_;
  const Zeb8u* const mask = s.masked_ ? s.mask_ + static_cast<ptrdiff_t>(row_) * s.maskStep_ + column_ : nullptr;
  const int left = size_.width - column_, pixels = left < blockElements ? left : blockElements;
  run = {nullptr, nullptr, (pixels + grain - 1) & -grain, column_, row_, pixels, mask};
  run.first = gather(blocks_[0], at(s.first_, s.firstStep_), mask, pixels, true);
  if (s.pair_) run.second = gather(blocks_[1], at(s.second_, s.secondStep_), mask, pixels, false);
  return goOn(run);
}

bool Runs::seekFirst(void* element) {
  const Selection& s = selection_;
  int column = 0;
  for (; s.masked_; ++row_, column = 0) {
    if (row_ == size_.height) return false;
    const Zeb8u* const mask = s.mask_ + static_cast<ptrdiff_t>(row_) * s.maskStep_;
    while (column <= size_.width - lanes && !anyBit(load(mask + column))) column += lanes;
    while (column < size_.width && mask[column] == 0) ++column;
    if (column < size_.width) break;
  }
  column_ = column;
  memcpy(element, at(s.first_, s.firstStep_) + (s.coi_ - 1) * s.elementBytes_, static_cast<size_t>(s.elementBytes_));
  column_ = column / grain * grain;
  return true;
}

ZebiPoint Runs::place(int column, int row) const {
  const int width = selection_.roi_.width;
  return row == 0 ? ZebiPoint{column % width, column / width} : ZebiPoint{column, row};
}

}  // namespace zeb
