#include "choice.h"

namespace fuzz {
namespace {

uint64_t seedOf(const Zeb8u* bytes, size_t count) {
  uint64_t seed = 0;
  for (size_t i = 0; i < count && i < 4; ++i) seed = seed << 8 | bytes[i];
  return seed;
}

}  // namespace

Choice::Choice(const Zeb8u* bytes, size_t count)
    : next_(count > 4 ? bytes + 4 : nullptr), left_(count > 4 ? count - 4 : 0), random_(seedOf(bytes, count)) {}

uint32_t Choice::draw(int bytes) {
  uint32_t value = 0;
  for (; bytes > 0; --bytes) {
    if (left_ > 0) {
      value = value << 8 | *next_++;
      --left_;
    } else {
      value = value << 8 | static_cast<uint32_t>(random_.bits() >> 32 & 0xFF);
    }
  }
  return value;
}

int Choice::within(int low, int high) {
  const uint64_t span = static_cast<uint64_t>(static_cast<int64_t>(high) - low) + 1;
  const uint64_t drawn = draw(span <= 0x100 ? 1 : span <= 0x10000 ? 2 : 4);
  return static_cast<int>(low + static_cast<int64_t>(drawn % span));
}

ZebiSize Choice::size(int maxWidth, int maxHeight) {
  if (size_) return *size_;
  const bool flat = oneIn(8);
  const int width = within(1, flat ? 4 * maxWidth : maxWidth);
  return {width, within(1, flat ? (maxHeight + 3) / 4 : maxHeight)};
}

}  // namespace fuzz
