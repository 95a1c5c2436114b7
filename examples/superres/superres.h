// Several small pictures of a scene, shifted and blurred, and the large one that explains them all.
#pragma once

#include <array>
#include <vector>

#include "picture.h"
#include "zebcv.h"

namespace superres {

using support::Picture;

// The pixels of small pictures are blurred to 3 x 3 pixels of the large one, and every second of those is taken.
constexpr int scale = 2;
constexpr std::array<Zeb32f, 9> blur = {1 / 16.0f, 2 / 16.0f, 1 / 16.0f, 2 / 16.0f, 4 / 16.0f,
                                        2 / 16.0f, 1 / 16.0f, 2 / 16.0f, 1 / 16.0f};

struct Observation {
  Picture picture;
  std::array<Zeb64f, 6> place;  // of its pixels in the large picture
};

// Of a gray picture, count of them: shifted, turned a little, with noise of a level or two. The first lies straight.
std::vector<Observation> observe(const Picture& large, int count);

// The first observation at twice its size, by linear interpolation.
Picture enlarged(const Picture& small, ZebiSize size);

// From that on, what the observations say against the estimate is carried back to it, again and again.
struct Result {
  Picture picture;
  std::vector<double> residuals;  // their root mean square, in levels, before every step
  double milliseconds = 0;        // of the library's calls
};
Result restored(const std::vector<Observation>& observations, const Picture& start, int steps);

// Root of the mean squared difference in levels, apart from a margin that not every observation sees.
double difference(const Picture& a, const Picture& b);

}  // namespace superres
