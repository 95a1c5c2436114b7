// A large image worked on in tiles: smoothed, eroded and edge-detected piece by piece, with the pixels around a piece
// read where they lie in memory. The result is that of the whole image, byte for byte.
#pragma once

#include <functional>
#include <vector>

#include "picture.h"

namespace tiles {

// A rectangle of the image, and which of its sides have pixels beyond them.
struct Tile {
  int x, y, width, height;
  ZebiBorderType sides;  // in-memory side flags

  ZebiSize size() const { return {width, height}; }
};

// Tiles of at most side x side pixels that cover the image. Column filters round the last (width mod 16) elements of
// their rows another way: tiles whose sides are multiples of 16 get the same ones as the whole image.
std::vector<Tile> cut(ZebiSize size, int side);

// Calls work(tile) for every tile from so many threads. The first exception of a thread is thrown again here.
void forEach(const std::vector<Tile>& tiles, int threads, const std::function<void(const Tile&)>& work);

struct Thresholds {
  float low, high;
};

// One gray image through smoothing with a 5 x 5 bell, erosion with a disc of 7 x 7 and the edge detector. Each step
// ends before the next one begins, since a tile reads its neighbours' pixels.
struct Pipeline {
  Pipeline(const support::Picture& image, Thresholds thresholds);

  void run(const std::vector<Tile>& tiles, int threads);

  const support::Picture& source;
  Thresholds thresholds;
  support::Picture smoothed, eroded, edges;

 private:
  void smooth(const Tile& tile);
  void erode(const Tile& tile);
  void detect(const Tile& tile);

  std::vector<Zeb8u> disc_, morphology_;
  support::Picture strong_;
};

}  // namespace tiles
