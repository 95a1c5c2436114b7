// Statistics: extremes of the photograph, its channels normalised, what a halving loses, a threshold out of two means.
#include <cmath>

#include "draw.h"
#include "tour.h"

namespace tour {
namespace {

// Nothing is relative to a black photograph.
ZebStatus accepted(ZebStatus status) {
  return status == zebStsWarnDivByZero ? ZebStatus(zebStsOk) : status;
}

using support::level;

void showExtremes(const Picture& photo, Gallery& gallery) {
  Zeb64f mean = 0, deviation = 0;
  Zeb32f least = 0, most = 0;
  ZebiPoint leastAt = {}, mostAt = {};
  const double time = bestTime([&] {
    return zebiMinMaxIndx_8u_C1R(photo.pixels.data(), photo.step(), photo.size(), &least, &most, &leastAt, &mostAt) |
           zebiMean_StdDev_8u_C1R(photo.pixels.data(), photo.step(), photo.size(), &mean, &deviation);
  });
  Picture drawn = support::toned(photo, 0.7f, 40);
  support::drawCross(drawn, static_cast<float>(leastAt.x), static_cast<float>(leastAt.y), 14, {40, 120, 255}, 3);
  support::drawCross(drawn, static_cast<float>(mostAt.x), static_cast<float>(mostAt.y), 14, {255, 60, 40}, 3);
  gallery.add(drawn,
              format("The first of the darkest pixels (blue), %.0f at (%d, %d), and the first of the brightest (red), "
                     "%.0f at (%d, %d); mean %.2f, standard deviation %.2f (MinMaxIndx, Mean_StdDev).",
                     static_cast<double>(least), leastAt.x, leastAt.y, static_cast<double>(most), mostAt.x, mostAt.y,
                     mean, deviation),
              time);
}

// Every channel brought to one mean and one deviation.
void showChannels(const Picture& photo, Gallery& gallery) {
  Zeb64f mean[3] = {}, deviation[3] = {};
  const double time = bestTime([&] {
    ZebStatus status = zebStsOk;
    for (int c = 0; c < 3; ++c)
      status |=
          zebiMean_StdDev_8u_C3CR(photo.pixels.data(), photo.step(), photo.size(), c + 1, &mean[c], &deviation[c]);
    return status;
  });
  Picture out = photo;
  for (size_t i = 0; i < out.pixels.size(); ++i) {
    const size_t c = i % 3;
    out.pixels[i] = level(128 + 52 * (photo.pixels[i] - mean[c]) / std::max(deviation[c], 1.0));
  }
  gallery.add(out,
              format("Mean and deviation of the channels: red %.1f and %.1f, green %.1f and %.1f, blue %.1f and %.1f "
                     "(Mean_StdDev of a channel). In the picture each is brought to 128 and 52, which takes the tint "
                     "of the light away.",
                     mean[0], deviation[0], mean[1], deviation[1], mean[2], deviation[2]),
              time);
}

// Down by halves and up again.
Picture coarse(const Picture& photo, int levels) {
  if (levels == 0) return photo;
  const auto scratchOf = [](auto query, int width) {
    int bytes = 0;
    requireOk(query(width, zeb8u, 1, &bytes));
    return std::vector<Zeb8u>(static_cast<size_t>(bytes));
  };
  Picture small((photo.width + 1) / 2, (photo.height + 1) / 2, 1);
  auto scratch = scratchOf(zebiPyrDownGetBufSize_Gauss5x5, photo.width);
  requireOk(zebiPyrDown_Gauss5x5_8u_C1R(photo.pixels.data(), photo.step(), small.pixels.data(), small.step(),
                                        photo.size(), scratch.data()));
  small = coarse(small, levels - 1);
  Picture large(2 * small.width, 2 * small.height, 1), out(photo.width, photo.height, 1);
  scratch = scratchOf(zebiPyrUpGetBufSize_Gauss5x5, small.width);
  requireOk(zebiPyrUp_Gauss5x5_8u_C1R(small.pixels.data(), small.step(), large.pixels.data(), large.step(),
                                      small.size(), scratch.data()));
  for (int y = 0; y < out.height; ++y) std::copy_n(large.at(0, y), out.width, out.at(0, y));
  return out;
}

void showLoss(const Picture& photo, Gallery& gallery) {
  const double pixels = static_cast<double>(photo.width) * photo.height;
  for (const int levels : {1, 3}) {
    const Picture out = coarse(photo, levels);
    Zeb64f inf = 0, l1 = 0, l2 = 0, relative = 0;
    const double time = bestTime([&] {
      const Zeb8u *a = out.pixels.data(), *b = photo.pixels.data();
      return zebiNormDiff_Inf_8u_C1R(a, out.step(), b, photo.step(), photo.size(), &inf) |
             zebiNormDiff_L1_8u_C1R(a, out.step(), b, photo.step(), photo.size(), &l1) |
             zebiNormDiff_L2_8u_C1R(a, out.step(), b, photo.step(), photo.size(), &l2) |
             accepted(zebiNormRel_L2_8u_C1R(a, out.step(), b, photo.step(), photo.size(), &relative));
    });
    Picture lost(photo.width, photo.height, 1);
    for (size_t i = 0; i < lost.pixels.size(); ++i)
      lost.pixels[i] = level(4.0 * std::abs(out.pixels[i] - photo.pixels[i]));
    gallery.add(lost,
                format("What halving the photograph %s and enlarging it again loses, four times as bright. The "
                       "difference: largest %.0f, mean %.2f, root of the mean square %.2f, Euclidean norm %.2f %% of "
                       "the photograph's (NormDiff Inf, L1 and L2, NormRel L2).",
                       levels == 1 ? "once" : "three times", inf, l1 / pixels, l2 / std::sqrt(pixels), 100 * relative),
                time);
  }
}

// The threshold that lies in the middle of the means on its two sides (T. Ridler, S. Calvard, 1978).
void showThreshold(const Picture& photo, Gallery& gallery) {
  Zeb64f threshold = 0, means[2] = {}, deviations[2] = {};
  requireOk(zebiMean_StdDev_8u_C1R(photo.pixels.data(), photo.step(), photo.size(), &threshold, nullptr));
  Picture sides[2] = {Picture(photo.width, photo.height, 1), Picture(photo.width, photo.height, 1)};
  double time = 0;
  int rounds = 0;
  for (double before = -1; std::fabs(threshold - before) > 0.01 && rounds < 50; ++rounds) {
    for (size_t i = 0; i < photo.pixels.size(); ++i) {
      sides[1].pixels[i] = photo.pixels[i] > threshold ? 255 : 0;
      sides[0].pixels[i] = static_cast<Zeb8u>(255 - sides[1].pixels[i]);
    }
    time += timed([&] {
      ZebStatus status = zebStsOk;
      for (int k = 0; k < 2; ++k)
        status |= zebiMean_StdDev_8u_C1MR(photo.pixels.data(), photo.step(), sides[k].pixels.data(), sides[k].step(),
                                          photo.size(), &means[k], &deviations[k]);
      return status;
    });
    before = threshold;
    threshold = (means[0] + means[1]) / 2;
  }
  Picture out(photo.width, photo.height, 1);
  for (size_t i = 0; i < out.pixels.size(); ++i) out.pixels[i] = level(means[sides[1].pixels[i] ? 1 : 0]);
  gallery.add(out,
              format("Dark and light, each in its mean: %.1f (deviation %.1f) and %.1f (%.1f). After %d rounds the "
                     "threshold, %.1f, lies in the middle of both (Mean_StdDev under a mask).",
                     means[0], deviations[0], means[1], deviations[1], rounds, threshold),
              time);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Statistics make a few numbers out of a picture: its norms and those of a difference, mean and deviation, the "
      "extremes and their places; of all pixels, of those that a mask selects, of one channel of three.");
  showExtremes(scene.gray, gallery);
  showChannels(scene.color, gallery);
  showLoss(scene.gray, gallery);
  showThreshold(scene.gray, gallery);
}

const Section section(15, "Norms, means, extremes", show);

}  // namespace
}  // namespace tour
