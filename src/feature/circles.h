// Positions around a pixel, clockwise from the right.
#pragma once

namespace zeb {

struct Offset {
  signed char x, y;
};

// Circles of radius 1 to 3; that of radius r has 4 + 4 r positions.
constexpr int mostRadius = 3, mostPositions = 16;
constexpr Offset circles[mostRadius][mostPositions] = {
    {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}},
    {{2, 0}, {2, 1}, {1, 2}, {0, 2}, {-1, 2}, {-2, 1}, {-2, 0}, {-2, -1}, {-1, -2}, {0, -2}, {1, -2}, {2, -1}},
    {{3, 0},
     {3, 1},
     {2, 2},
     {1, 3},
     {0, 3},
     {-1, 3},
     {-2, 2},
     {-3, 1},
     {-3, 0},
     {-3, -1},
     {-2, -2},
     {-1, -3},
     {0, -3},
     {1, -3},
     {2, -2},
     {3, -1}}};

// The border of the square of 5 x 5.
constexpr Offset squareRing[16] = {{2, 0},  {2, 1},   {2, 2},   {1, 2},   {0, 2},  {-1, 2}, {-2, 2}, {-2, 1},
                                   {-2, 0}, {-2, -1}, {-2, -2}, {-1, -2}, {0, -2}, {1, -2}, {2, -2}, {2, -1}};

}  // namespace zeb
