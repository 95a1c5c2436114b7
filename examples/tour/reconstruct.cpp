// Reconstruction: filled holes, and the bright details that stand out from their surroundings.
#include "tour.h"

namespace tour {
namespace {

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Reconstruction lets a marker grow under a mask until nothing changes. Started from the frame it fills every "
      "hole "
      "that does not reach it; started a little below the picture it levels the peaks, and what it levelled stands "
      "out.");
  const Picture& photo = scene.gray;
  const ZebiSize size = photo.size();
  int bytes = 0;
  requireOk(zebiMorphReconstructGetBufferSize_8u_C1(size, &bytes));
  std::vector<Zeb8u> scratch(bytes);

  // Holes: everything bright but the frame, brought down onto the photograph.
  Picture frame(size.width, size.height, 1), filled;
  for (int y = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x) {
      const bool edge = x == 0 || y == 0 || x == size.width - 1 || y == size.height - 1;
      *frame.at(x, y) = edge ? *photo.at(x, y) : 255;
    }
  const double holes = bestTime([&] {
    filled = frame;
    return zebiMorphReconstructErode_8u_C1IR(photo.pixels.data(), photo.step(), filled.pixels.data(), filled.step(),
                                             size, scratch.data(), zebiNormInf);
  });
  gallery.add(filled, "Dark holes filled up to their rims", holes);

  // Peaks: the photograph less 40 levels, grown back under it.
  constexpr int height = 40;
  Picture lowered = photo, levelled, peaks(size.width, size.height, 1);
  for (Zeb8u& v : lowered.pixels) v = static_cast<Zeb8u>(std::max(0, v - height));
  const double domes = bestTime([&] {
    levelled = lowered;
    const ZebStatus status = zebiMorphReconstructDilate_8u_C1IR(
        photo.pixels.data(), photo.step(), levelled.pixels.data(), levelled.step(), size, scratch.data(), zebiNormL1);
    if (status != zebStsOk) return status;
    return zebiAbsDiff_8u_C1R(photo.pixels.data(), photo.step(), levelled.pixels.data(), levelled.step(),
                              peaks.pixels.data(), peaks.step(), size);
  });
  for (Zeb8u& v : peaks.pixels) v = static_cast<Zeb8u>(std::min(255, v * 255 / height));
  gallery.add(peaks, format("Peaks of up to %d levels above what surrounds them", height), domes);
}

const Section section(45, "Reconstruction", show);

}  // namespace
}  // namespace tour
