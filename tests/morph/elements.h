// Masks, surroundings of regions and bit-packed images of morphology.
#pragma once

#include "reference/morph.h"
#include "support/compare.h"

namespace test {

// What a mask looks like; every path of the library and every way into it.
enum class MaskKind { full, corner, cross, disc, ring, scattered, empty, gap, single, wide, large };

inline ref::Element makeElement(MaskKind kind, Random& random) {
  ref::Element e;
  e.width = random.within(1, 9), e.height = random.within(1, 9);
  // The sizes that are asked for most.
  if (random.within(0, 2) == 0) e.width = e.height = 2 * random.within(1, 3) + 1;
  if (kind == MaskKind::cross && random.within(0, 1)) e.width = e.height = 3;
  if (kind == MaskKind::wide) {
    const bool across = random.within(0, 1) != 0;
    e.width = across ? random.within(20, 75) : random.within(1, 3);
    e.height = across ? random.within(1, 3) : random.within(12, 40);
  }
  // Where fewer displacements are looked for, where pieces are too many, and beyond what is taken apart into them.
  if (kind == MaskKind::large) {
    const int shape = random.within(0, 2);
    e.width = shape == 0 ? random.within(1, 12) : random.within(16, shape == 1 ? 70 : 40);
    e.height = shape == 1 ? random.within(2, 12) : random.within(16, 40);
    const MaskKind kinds[] = {MaskKind::cross, MaskKind::disc, MaskKind::ring, MaskKind::scattered, MaskKind::gap};
    kind = kinds[random.within(0, 4)];
  }
  e.anchorX = (e.width - 1) / 2, e.anchorY = (e.height - 1) / 2;
  e.mask.assign(static_cast<size_t>(e.width) * e.height, 0);
  const int x0 = random.within(0, e.width - 1), x1 = random.within(x0, e.width - 1);
  const int y0 = random.within(0, e.height - 1), y1 = random.within(y0, e.height - 1);
  const double rx = (e.width + 1) / 2.0, ry = (e.height + 1) / 2.0;
  for (int y = 0, i = 0; y < e.height; ++y)
    for (int x = 0; x < e.width; ++x, ++i) {
      const double u = (x - (e.width - 1) / 2.0) / rx, v = (y - (e.height - 1) / 2.0) / ry, r = u * u + v * v;
      bool set = false;
      switch (kind) {
        case MaskKind::full:
        case MaskKind::wide:
          set = true;
          break;
        case MaskKind::corner:
          set = x >= x0 && x <= x1 && y >= y0 && y <= y1;
          break;
        case MaskKind::cross:
          set = x == e.anchorX || y == e.anchorY;
          break;
        case MaskKind::disc:
          set = r <= 1;
          break;
        case MaskKind::ring:
          set = r <= 1 && r > 0.4;
          break;
        case MaskKind::scattered:
          set = random.within(0, 1) != 0;
          break;
        case MaskKind::gap:
          set = y % 2 == 0;
          break;
        case MaskKind::single:
          set = x == x0 && y == y0;
          break;
        default:
          break;
      }
      e.mask[static_cast<size_t>(i)] = set ? static_cast<Zeb8u>(random.within(1, 255)) : 0;
    }
  return e;
}

// A border type, and how far pixels beyond each edge are in memory.
struct Surroundings {
  ZebiBorderType border = zebBorderRepl;
  int left = 0, right = 0, top = 0, bottom = 0;

  // reach: the largest distance on each side that may be read where it is in memory.
  Surroundings(Random& random, int reachLeft, int reachRight, int reachTop, int reachBottom) {
    const int pick = random.within(0, 3);
    if (pick == 0) return;
    border = pick == 1 ? zebBorderInMem : zebBorderRepl | random.within(0, 15) << 4;
    const bool all = border == zebBorderInMem;
    if (all || border & zebBorderInMemLeft) left = reachLeft;
    if (all || border & zebBorderInMemRight) right = reachRight;
    if (all || border & zebBorderInMemTop) top = reachTop;
    if (all || border & zebBorderInMemBottom) bottom = reachBottom;
  }
  template <class T>
  ref::Region<T> region(const ref::Plane<T>& image, ZebiSize roi) const {
    const bool all = border == zebBorderInMem;
    return {&image,
            left,
            top,
            roi.width,
            roi.height,
            all || (border & zebBorderInMemLeft) != 0,
            all || (border & zebBorderInMemRight) != 0,
            all || (border & zebBorderInMemTop) != 0,
            all || (border & zebBorderInMemBottom) != 0};
  }
};

// Bits of a packed image as a plane of 0 and 1, and back into an image whose other bits are kept.
inline ref::Plane<Zeb8u> unpacked(const ref::Plane<Zeb8u>& bytes) {
  ref::Plane<Zeb8u> bits(8 * bytes.width, bytes.height);
  for (int y = 0; y < bits.height; ++y)
    for (int x = 0; x < bits.width; ++x) bits.at(x, y) = bytes.at(x / 8, y) >> (7 - x % 8) & 1;
  return bits;
}
inline void pack(const ref::Plane<Zeb8u>& bits, ref::Plane<Zeb8u>* bytes) {
  for (int y = 0; y < bits.height; ++y)
    for (int x = 0; x < bits.width; ++x) {
      const int mask = 0x80 >> x % 8;
      Zeb8u& byte = bytes->at(x / 8, y);
      byte = static_cast<Zeb8u>(bits.at(x, y) ? byte | mask : byte & ~mask);
    }
}

}  // namespace test
