// Morphological reconstruction.
#include "reference/reconstruct.h"

#include <algorithm>
#include <memory>

#include "bench.h"

namespace {

using namespace bench;

// Smallest (largest) value within reach in both directions, edge pixels repeated.
ref::Plane<Zeb8u> rank(const ref::Plane<Zeb8u>& in, int reach, bool largest) {
  ref::Plane<Zeb8u> rows = in, out = in;
  const auto best = [&](Zeb8u a, Zeb8u b) { return largest ? std::max(a, b) : std::min(a, b); };
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x)
      for (int k = -reach; k <= reach; ++k)
        rows.at(x, y) = best(rows.at(x, y), in.at(std::clamp(x + k, 0, in.width - 1), y));
  out = rows;
  for (int y = 0; y < in.height; ++y)
    for (int x = 0; x < in.width; ++x)
      for (int k = -reach; k <= reach; ++k)
        out.at(x, y) = best(out.at(x, y), rows.at(x, std::clamp(y + k, 0, in.height - 1)));
  return out;
}

Work reconstruct(const Scene& scene) {
  ref::Plane<Zeb8u> photo(scene.size.width, scene.size.height);
  std::copy(scene.photo.begin(), scene.photo.end(), photo.data.begin());
  const auto opened = rank(rank(photo, 3, false), 3, true);
  const Image<Zeb8u> start = scene.imageOf<Zeb8u>(opened.data);
  auto marker = std::make_shared<Image<Zeb8u>>(start);
  int size = 0;
  zebiMorphReconstructGetBufferSize_8u_C1(scene.size, &size);
  auto scratch = std::make_shared<Pixels<Zeb8u>>(size);
  Work work;
  work.bytes = {2, 1, 1};  // the copy of the marker and one pass
  work.run = [=, &scene] {
    for (int y = 0; y < scene.size.height; ++y) std::memcpy(marker->row(y), start.row(y), scene.size.width);
    return zebiMorphReconstructDilate_8u_C1IR(scene.source.data(), scene.source.step(), marker->data(), marker->step(),
                                              scene.size, scratch->data(), zebiNormInf);
  };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    return firstDifference(ref::reconstruct(photo, opened, true, true).data, marker->compact(), photo.width);
  };
  return work;
}

const Family family(45, "Morphological reconstruction",
                    {{"MorphReconstructDilate 8u C1IR, 8-connected, opened photograph under the photograph",
                      timesMemcpy(60), reconstruct}});

}  // namespace
