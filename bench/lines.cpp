// Hough transforms and local peaks.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "bench.h"
#include "reference/hough.h"
#include "reference/peaks.h"

namespace {

using namespace bench;

// The pixels with the largest differences to their neighbours: about 7 in 100.
ref::Plane<Zeb8u> edges(const Scene& scene) {
  const int w = scene.size.width, h = scene.size.height;
  std::vector<int> strength(scene.count());
  for (int y = 1; y < h - 1; ++y)
    for (int x = 1; x < w - 1; ++x) {
      const Zeb8u* p = &scene.photo[static_cast<size_t>(y) * w + x];
      strength[static_cast<size_t>(y) * w + x] = std::abs(p[1] - p[-1]) + std::abs(p[w] - p[-w]);
    }
  std::vector<int> ranked = strength;
  const size_t rank = ranked.size() * 93 / 100;
  std::nth_element(ranked.begin(), ranked.begin() + static_cast<long>(rank), ranked.end());
  ref::Plane<Zeb8u> out(w, h);
  for (size_t i = 0; i < strength.size(); ++i) out.data[i] = strength[i] > ranked[rank] ? 255 : 0;
  return out;
}

constexpr ZebiPoint_32f onePixelOneDegree = {1.0f, 0.017453292f};
constexpr int most = 100;

Work houghLine(const Scene& scene) {
  const auto picture = std::make_shared<ref::Plane<Zeb8u>>(edges(scene));
  const auto image = std::make_shared<Image<Zeb8u>>(scene.imageOf<Zeb8u>(picture->data));
  const int threshold = scene.size.width / 8;
  int size = 0;
  zebiHoughLineGetSize_8u_C1R(scene.size, onePixelOneDegree, most, &size);
  auto scratch = std::make_shared<Pixels<Zeb8u>>(size);
  auto lines = std::make_shared<std::vector<ZebiPoint_32f>>(most);
  auto count = std::make_shared<int>(0);
  Work work;
  work.bytes = {1};
  work.run = [=, &scene] {
    return zebiHoughLine_8u32f_C1R(image->data(), image->step(), scene.size, onePixelOneDegree, threshold,
                                   lines->data(), most, count.get(), scratch->data());
  };
  work.check = [=, run = work.run, &scene]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto want = ref::houghLines(*picture, {scene.size, onePixelOneDegree}, threshold, most);
    if (static_cast<int>(want.size()) != *count) return "number of lines";
    for (size_t i = 0; i < want.size(); ++i)
      if (want[i].x != (*lines)[i].x || want[i].y != (*lines)[i].y) return "line " + std::to_string(i);
    return std::nullopt;
  };
  return work;
}

Work houghProb(const Scene& scene) {
  const auto picture = std::make_shared<ref::Plane<Zeb8u>>(edges(scene));
  const auto image = std::make_shared<Image<Zeb8u>>(scene.imageOf<Zeb8u>(picture->data));
  const int threshold = 50, length = 50, gap = 10, room = 5000;
  int specSize = 0, size = 0;
  zebiHoughProbLineGetSize_8u_C1R(scene.size, onePixelOneDegree, &specSize, &size);
  auto spec = std::make_shared<Pixels<Zeb8u>>(specSize);
  auto scratch = std::make_shared<Pixels<Zeb8u>>(size);
  auto* tables = reinterpret_cast<ZebiHoughProbSpec*>(spec->data());
  zebiHoughProbLineInit_8u32f_C1R(scene.size, onePixelOneDegree, 0, tables);
  auto segments = std::make_shared<std::vector<ZebiRect>>(room);
  auto count = std::make_shared<int>(0);
  Work work;
  work.bytes = {1};
  work.run = [=, &scene, keep = spec] {
    const ZebStatus status =
        zebiHoughProbLine_8u32f_C1R(image->data(), image->step(), scene.size, threshold, length, gap, segments->data(),
                                    room, count.get(), scratch->data(), tables);
    return status == zebStsWarnLinesTruncated ? zebStsOk : status;
  };
  work.check = [=, run = work.run, &scene]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto want = ref::houghSegments(*picture, {scene.size, onePixelOneDegree}, threshold, length, gap, room);
    if (static_cast<int>(want.segments.size()) != *count) return "number of segments";
    const size_t bytes = want.segments.size() * sizeof(ZebiRect);
    if (bytes != 0 && std::memcmp(want.segments.data(), segments->data(), bytes) != 0) return "a segment differs";
    return std::nullopt;
  };
  return work;
}

// A corner response with both signs: product of the second differences less the square of the mixed one.
Work findPeaks(const Scene& scene) {
  const int w = scene.size.width, h = scene.size.height;
  auto response = std::make_shared<ref::Plane<Zeb32f>>(w, h);
  for (int y = 1; y < h - 1; ++y)
    for (int x = 1; x < w - 1; ++x) {
      const auto p = [&](int dx, int dy) {
        return static_cast<float>(scene.photo[static_cast<size_t>(y + dy) * w + x + dx]);
      };
      const float xx = p(1, 0) - 2 * p(0, 0) + p(-1, 0), yy = p(0, 1) - 2 * p(0, 0) + p(0, -1);
      const float xy = 0.25f * (p(1, 1) - p(1, -1) - p(-1, 1) + p(-1, -1));
      response->at(x, y) = xx * yy - xy * xy;
    }
  const int room = scene.count();
  // Seven pixels in a hundred are strong enough to be looked at.
  std::vector<float> ranked = response->data;
  for (float& v : ranked) v = std::fabs(v);
  const auto rank = ranked.begin() + static_cast<long>(ranked.size() * 93 / 100);
  std::nth_element(ranked.begin(), rank, ranked.end());
  const float threshold = *rank;
  int size = 0;
  zebiFindPeaks3x3GetBufferSize_32f_C1R(w, &size);
  auto scratch = std::make_shared<Pixels<Zeb8u>>(size);
  auto image = std::make_shared<Image<Zeb32f>>(scene.imageOf<Zeb32f>(response->data));
  auto peaks = std::make_shared<std::vector<ZebiPoint>>(room);
  auto count = std::make_shared<int>(0);
  Work work;
  work.bytes = {4};
  work.run = [=, &scene] {
    return zebiFindPeaks3x3_32f_C1R(image->data(), image->step(), scene.size, threshold, peaks->data(), room,
                                    count.get(), zebiNormInf, 1, scratch->data());
  };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    const auto want = ref::peaks(*response, threshold, true, 1, static_cast<size_t>(room));
    if (static_cast<int>(want.size()) != *count) return "number of peaks";
    if (std::memcmp(want.data(), peaks->data(), want.size() * sizeof(ZebiPoint)) != 0) return "a peak differs";
    return std::nullopt;
  };
  return work;
}

const Family family(55, "Lines and peaks",
                    {{"HoughLine 8u32f, 1 pixel, 1 degree", timesMemcpy(110), houghLine},
                     {"HoughProbLine 8u32f, same grid", timesMemcpy(200), houghProb},
                     {"FindPeaks3x3 32f, 8 neighbours", timesMemcpy(7), findPeaks}});

}  // namespace
