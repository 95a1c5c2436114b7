#include "services/derivatives.h"

#include "filter/derivative.h"

namespace bench {

using Derivatives = zeb::DerivativeRows<zeb::Sobel3, Zeb8u>;

int64_t sobelScratchBytes(int width) {
  return Derivatives::scratchBytes(width);
}

void sobel(const Zeb8u* src, int srcStep, Zeb16s* dx, Zeb16s* dy, int dstStep, ZebiSize size, Zeb8u* scratch) {
  zeb::Scratch memory(scratch, sobelScratchBytes(size.width));
  Derivatives rows(zeb::BorderedImage(src, srcStep, size, 1), memory);
  const zeb::Rows<Zeb16s> across(dx, dstStep), down(dy, dstStep);
  for (int y = 0; y < size.height; ++y) rows.form(y, across[y], dy ? down[y] : nullptr);
}

}  // namespace bench
