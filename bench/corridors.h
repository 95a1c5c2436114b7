// Corridors of one pixel in width, as are the walls between them, so that a front has to follow every turn.
#pragma once

#include "bench.h"

namespace bench {

struct Corridor {
  Pixels<Zeb8u> open;  // 1 in the corridor, which is connected
  ZebiPoint start;
};

Corridor serpentine(ZebiSize size);
Corridor spiral(ZebiSize size);
Corridor maze(ZebiSize size);

}  // namespace bench
