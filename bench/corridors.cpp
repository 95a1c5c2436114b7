#include "corridors.h"

namespace bench {

// Every other row, joined at alternate ends.
Corridor serpentine(ZebiSize size) {
  Corridor c{Pixels<Zeb8u>(static_cast<size_t>(size.width) * size.height), {0, 0}};
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x)
      c.open[y * size.width + x] = y % 2 == 0 || (y + 1 < size.height && x == (y % 4 == 1 ? size.width - 1 : 0));
  return c;
}

// From the corner inwards by steps of two pixels: ahead until the place is taken, then to the right.
Corridor spiral(ZebiSize size) {
  Corridor c{Pixels<Zeb8u>(static_cast<size_t>(size.width) * size.height), {0, 0}};
  int x = 0, y = 0, dx = 1, dy = 0;
  c.open[0] = 1;
  for (int turns = 0; turns < 2;) {
    const int toX = x + 2 * dx, toY = y + 2 * dy;
    if (toX >= 0 && toY >= 0 && toX < size.width && toY < size.height && !c.open[toY * size.width + toX]) {
      c.open[(y + dy) * size.width + x + dx] = c.open[toY * size.width + toX] = 1;
      x = toX, y = toY;
      turns = 0;
    } else {
      const int right = -dy;
      dy = dx, dx = right;
      ++turns;
    }
  }
  return c;
}

// A spanning tree of the pixels with even coordinates, grown in depth.
Corridor maze(ZebiSize size) {
  Corridor c{Pixels<Zeb8u>(static_cast<size_t>(size.width) * size.height), {0, 0}};
  std::mt19937 engine(11);
  std::vector<ZebiPoint> path = {{0, 0}};
  c.open[0] = 1;
  while (!path.empty()) {
    const ZebiPoint at = path.back();
    ZebiPoint steps[4];
    int count = 0;
    for (const ZebiPoint step : {ZebiPoint{1, 0}, ZebiPoint{-1, 0}, ZebiPoint{0, 1}, ZebiPoint{0, -1}}) {
      const int x = at.x + 2 * step.x, y = at.y + 2 * step.y;
      if (x >= 0 && y >= 0 && x < size.width && y < size.height && !c.open[y * size.width + x]) steps[count++] = step;
    }
    if (count == 0) {
      path.pop_back();
      continue;
    }
    const ZebiPoint step = steps[engine() % static_cast<unsigned>(count)];
    for (int k = 1; k <= 2; ++k) c.open[(at.y + k * step.y) * size.width + at.x + k * step.x] = 1;
    path.push_back({at.x + 2 * step.x, at.y + 2 * step.y});
  }
  return c;
}

}  // namespace bench
