// Motion history, pixel by pixel.
#pragma once

#include <stddef.h>

#include "reference/plane.h"

namespace ref {

template <class T>
Plane<Zeb32f> motionHistory(const Plane<T>& silhouette, const Plane<Zeb32f>& before, float timestamp, float duration) {
  Plane<Zeb32f> after = before;
  const float limit = timestamp - duration;
  for (size_t i = 0; i < after.data.size(); ++i) {
    if (silhouette.data[i] != 0)
      after.data[i] = timestamp;
    else if (before.data[i] < limit)
      after.data[i] = 0;
  }
  return after;
}

}  // namespace ref
