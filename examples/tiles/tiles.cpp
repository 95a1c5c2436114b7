#include "tiles.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>

#include "zebcv.h"

namespace tiles {
namespace {

using support::Picture;

void require(ZebStatus status, const char* step) {
  if (status != zebStsOk) throw std::runtime_error(std::string(step) + ": status " + std::to_string(status));
}

constexpr int discSide = 7;
constexpr ZebiSize discSize{discSide, discSide};

}  // namespace

std::vector<Tile> cut(ZebiSize size, int side) {
  std::vector<Tile> out;
  for (int y = 0; y < size.height; y += side)
    for (int x = 0; x < size.width; x += side) {
      Tile tile{x, y, std::min(side, size.width - x), std::min(side, size.height - y), 0};
      if (y > 0) tile.sides |= zebBorderInMemTop;
      if (y + tile.height < size.height) tile.sides |= zebBorderInMemBottom;
      if (x > 0) tile.sides |= zebBorderInMemLeft;
      if (x + tile.width < size.width) tile.sides |= zebBorderInMemRight;
      out.push_back(tile);
    }
  return out;
}

void forEach(const std::vector<Tile>& tiles, int threads, const std::function<void(const Tile&)>& work) {
  std::atomic<size_t> next{0};
  std::mutex gate;
  std::exception_ptr failure;
  const auto take = [&] {
    try {
      for (size_t i = next++; i < tiles.size(); i = next++) work(tiles[i]);
    } catch (...) {
      std::lock_guard<std::mutex> lock(gate);
      if (!failure) failure = std::current_exception();
    }
  };
  std::vector<std::thread> pool;
  for (int i = 1; i < threads; ++i) pool.emplace_back(take);
  take();
  for (auto& thread : pool) thread.join();
  if (failure) std::rethrow_exception(failure);
}

Pipeline::Pipeline(const Picture& image, Thresholds t)
    : source(image),
      thresholds(t),
      smoothed(image.width, image.height, 1),
      eroded(image.width, image.height, 1),
      edges(image.width, image.height, 1),
      disc_(discSide * discSide),
      strong_(image.width, image.height, 1) {
  constexpr int reach = discSide / 2;
  for (int y = -reach; y <= reach; ++y)
    for (int x = -reach; x <= reach; ++x)
      disc_[static_cast<size_t>((y + reach) * discSide + x + reach)] = x * x + y * y <= reach * reach + 1;
  int stateBytes = 0, bufferBytes = 0;
  require(zebiMorphologyBorderGetSize_8u_C1R(image.width, discSize, &stateBytes, &bufferBytes), "erosion");
  morphology_.resize(static_cast<size_t>(stateBytes));
  std::vector<Zeb8u> buffer(static_cast<size_t>(bufferBytes));
  require(zebiMorphologyBorderInit_8u_C1R(image.width, disc_.data(), discSize,
                                          reinterpret_cast<ZebiMorphState*>(morphology_.data()), buffer.data()),
          "erosion");
}

// The row filter runs over two columns more on the inner sides, whose own results are not used, and over two rows more
// above and below, as far as there are any; beyond the image the nearest row again.
void Pipeline::smooth(const Tile& tile) {
  const Zeb16s bell[] = {1, 4, 6, 4, 1};
  constexpr int taps = 5, reach = taps / 2;
  const int left = std::max(tile.x - reach, 0), right = std::min(tile.x + tile.width + reach, source.width);
  const int first = std::max(tile.y - reach, 0), last = std::min(tile.y + tile.height + reach, source.height) - 1;
  const ZebiSize rowsSize{right - left, last - first + 1};
  int rowBytes = 0, columnBytes = 0;
  require(zebiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(rowsSize, taps, &rowBytes), "rows");
  require(zebiFilterColumnPipelineGetBufferSize_16s8u_C1R(tile.size(), taps, &columnBytes), "columns");
  std::vector<Zeb8u> buffer(static_cast<size_t>(std::max(rowBytes, columnBytes)));
  std::vector<Zeb16s> rows(static_cast<size_t>(rowsSize.width) * rowsSize.height);
  std::vector<Zeb16s*> pointers;
  for (int y = 0; y < rowsSize.height; ++y) pointers.push_back(&rows[static_cast<size_t>(y) * rowsSize.width]);
  require(zebiFilterRowBorderPipeline_8u16s_C1R(source.at(left, first), source.step(), pointers.data(), rowsSize, bell,
                                                taps, reach, zebBorderRepl, 0, 1, buffer.data()),
          "rows");
  std::vector<const Zeb16s*> stacked;
  for (int y = tile.y - reach; y < tile.y + tile.height + reach; ++y)
    stacked.push_back(pointers[static_cast<size_t>(std::clamp(y, first, last) - first)] + (tile.x - left));
  require(zebiFilterColumnPipeline_16s8u_C1R(stacked.data(), smoothed.at(tile.x, tile.y), smoothed.step(), tile.size(),
                                             bell, taps, 256, buffer.data()),
          "columns");
}

void Pipeline::erode(const Tile& tile) {
  int stateBytes = 0, bufferBytes = 0;
  require(zebiMorphologyBorderGetSize_8u_C1R(source.width, discSize, &stateBytes, &bufferBytes), "erosion");
  std::vector<Zeb8u> buffer(static_cast<size_t>(bufferBytes));
  require(zebiErodeBorder_8u_C1R(smoothed.at(tile.x, tile.y), smoothed.step(), eroded.at(tile.x, tile.y), eroded.step(),
                                 tile.size(), zebBorderRepl | tile.sides, 0,
                                 reinterpret_cast<const ZebiMorphState*>(morphology_.data()), buffer.data()),
          "erosion");
}

// Both thresholds alike, the detector answers pixel by pixel: thin edges above that threshold, whatever they hang
// together with. A pixel is compared with its neighbours, so a tile takes one more pixel on its inner sides and does
// not keep what it finds there.
void Pipeline::detect(const Tile& tile) {
  const int left = tile.sides & zebBorderInMemLeft ? 1 : 0, right = tile.sides & zebBorderInMemRight ? 1 : 0;
  const int top = tile.sides & zebBorderInMemTop ? 1 : 0, bottom = tile.sides & zebBorderInMemBottom ? 1 : 0;
  const int x = tile.x - left, y = tile.y - top;
  const ZebiSize size{tile.width + left + right, tile.height + top + bottom};
  ZebiBorderType border = zebBorderRepl;
  if (y > 0) border |= zebBorderInMemTop;
  if (y + size.height < source.height) border |= zebBorderInMemBottom;
  if (x > 0) border |= zebBorderInMemLeft;
  if (x + size.width < source.width) border |= zebBorderInMemRight;
  int bytes = 0;
  require(zebiCannyBorderGetSize(size, zebFilterSobel, zebMskSize3x3, zeb8u, &bytes), "edges");
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  Picture thin(size.width, size.height, 1);
  for (Picture* out : {&edges, &strong_}) {
    const float threshold = out == &strong_ ? thresholds.high : thresholds.low;
    require(
        zebiCannyBorder_8u_C1R(eroded.at(x, y), eroded.step(), thin.pixels.data(), thin.step(), size, zebFilterSobel,
                               zebMskSize3x3, border, 0, threshold, threshold, zebNormL2, buffer.data()),
        "edges");
    for (int r = 0; r < tile.height; ++r) std::copy_n(thin.at(left, top + r), tile.width, out->at(tile.x, tile.y + r));
  }
}

// Hysteresis reaches through the whole image: the strong edges, grown by reconstruction within the weak ones.
void Pipeline::run(const std::vector<Tile>& pieces, int threads) {
  forEach(pieces, threads, [&](const Tile& tile) { smooth(tile); });
  forEach(pieces, threads, [&](const Tile& tile) { erode(tile); });
  forEach(pieces, threads, [&](const Tile& tile) { detect(tile); });
  int bytes = 0;
  require(zebiMorphReconstructGetBufferSize_8u_C1(source.size(), &bytes), "hysteresis");
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  require(zebiMorphReconstructDilate_8u_C1IR(edges.pixels.data(), edges.step(), strong_.pixels.data(), strong_.step(),
                                             source.size(), buffer.data(), zebiNormInf),
          "hysteresis");
  edges.pixels.swap(strong_.pixels);
}

}  // namespace tiles
