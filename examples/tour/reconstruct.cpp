// Reconstruction: filled holes, and the bright details that stand out from their surroundings.
#include "draw.h"
#include "tour.h"

namespace tour {
namespace {

// The picture, dimmed, and what has changed in it: red where it rose.
Picture changes(const Picture& before, const Picture& after) {
  Picture out = support::toned(before, 0.6f, 60);
  for (size_t i = 0; i < before.pixels.size(); ++i) {
    const int rise = after.pixels[i] - before.pixels[i];
    if (rise < 4) continue;
    const float share = std::min(1.0f, 0.35f + static_cast<float>(rise) / 60);
    Zeb8u* const p = &out.pixels[3 * i];
    p[0] = support::level(p[0] + share * (235 - p[0]));
    p[1] = support::level(p[1] * (1 - share) + share * 60);
    p[2] = support::level(p[2] * (1 - share) + share * 40);
  }
  return out;
}

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
  gallery.add(filled,
              "Dark holes filled up to their rims (MorphReconstructErode): eyes, creases, the gaps between leaves.",
              holes);
  gallery.add(changes(photo, filled),
              "What the filling changed, in red: every dark spot that a brighter rim encloses.");

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
  gallery.add(
      peaks,
      format("Peaks of up to %d levels above what surrounds them (MorphReconstructDilate, AbsDiff): small lights, "
             "whatever the brightness around them.",
             height),
      domes);
}

const Section section(45, "Reconstruction", show);

}  // namespace
}  // namespace tour
