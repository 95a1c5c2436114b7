// Magnitudes and angles of the gradients of a row.
#pragma once

#include "zebcv/types.h"

namespace zeb {

// The magnitude in a norm; n elements. Those of bytes are of derivatives within -12240..12240.
void magnitudeRow(ZebNormType norm, const Zeb16s* gx, const Zeb16s* gy, int n, Zeb16s* out);
void magnitudeRow(ZebNormType norm, const Zeb32f* gx, const Zeb32f* gy, int n, Zeb32f* out);

// The angle in radians, in (-pi, pi].
void angleRow(const Zeb16s* gx, const Zeb16s* gy, int n, Zeb32f* out);
void angleRow(const Zeb32f* gx, const Zeb32f* gy, int n, Zeb32f* out);

// Of the derivatives in three channels those of the channel with the largest magnitude, the lowest in a tie.
void strongestRow(ZebNormType norm, const Zeb16s* gx3, const Zeb16s* gy3, int n, Zeb16s* gx, Zeb16s* gy);

}  // namespace zeb
