// Images of features (zeros) for the distance transforms.
#pragma once

#include "support/image.h"

namespace test {

enum class Features { none, all, one, corner, sparse, dense, columns, blobs };
constexpr Features allFeatures[] = {Features::none,   Features::all,   Features::one,     Features::corner,
                                    Features::sparse, Features::dense, Features::columns, Features::blobs};

inline ref::Plane<Zeb8u> features(Features kind, ZebiSize size, Random& random) {
  ref::Plane<Zeb8u> p(size.width, size.height);
  for (Zeb8u& v : p.data) {
    const bool zero = kind == Features::all || (kind == Features::sparse && random.within(0, 199) == 0) ||
                      (kind == Features::dense && random.within(0, 3) == 0);
    v = zero ? 0 : static_cast<Zeb8u>(random.within(1, 255));
  }
  const int x0 = random.within(0, size.width - 1), y0 = random.within(0, size.height - 1);
  if (kind == Features::one) p.at(x0, y0) = 0;
  if (kind == Features::corner) p.at(x0 % 2 * (size.width - 1), y0 % 2 * (size.height - 1)) = 0;
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      if (kind == Features::columns && x % 23 == x0 % 23) p.at(x, y) = 0;
      const int dx = (x + x0) % 37 - 18, dy = (y + y0) % 29 - 14;
      if (kind == Features::blobs && dx * dx + dy * dy > 120) p.at(x, y) = 0;
    }
  return p;
}

}  // namespace test
