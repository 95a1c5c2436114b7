// Norms, mean and deviation, extremes.
#include "reference/statistics.h"

#include <memory>

#include "bench.h"

namespace {

using namespace bench;

template <class T>
struct Images {
  int channels;
  ref::Plane<T> a, b;  // for the reference
  ref::Plane<Zeb8u> maskPlane;
  Image<T> src1, src2;
  Image<Zeb8u> mask;
};

// The photograph in the depth of T against itself turned by half a turn, every second pixel of a random mask set.
template <class T>
std::shared_ptr<Images<T>> imagesOf(const Scene& scene, int channels) {
  const ZebiSize size = scene.size;
  auto in = std::make_shared<Images<T>>(Images<T>{channels,
                                                  {size.width, size.height, channels},
                                                  {size.width, size.height, channels},
                                                  {size.width, size.height},
                                                  scene.image<T>(channels),
                                                  scene.image<T>(channels),
                                                  scene.image<Zeb8u>()});
  for (int i = 0; i < scene.count(); ++i)
    for (int c = 0; c < channels; ++c)
      in->a.data[static_cast<size_t>(i * channels + c)] = static_cast<T>(
          scene.photo[static_cast<size_t>(i)] * (sizeof(T) == 2 ? 257 : 1) + (sizeof(T) == 4 ? 0.125 : 0));
  std::reverse_copy(in->a.data.begin(), in->a.data.end(), in->b.data.begin());
  const Pixels<Zeb8u> mask = randomPixels<Zeb8u>(scene.count(), 0, 1, 7);
  std::copy(mask.begin(), mask.end(), in->maskPlane.data.begin());
  in->src1.set(in->a.data);
  in->src2.set(in->b.data);
  in->mask.set(mask);
  return in;
}

// call(images, size, results) makes the library's call; expected(images, results) is the reference.
template <class T, class Results, class Call, class Expected>
Work statistic(const Scene& scene, int channels, double bytesRead, Call call, Expected expected) {
  const auto in = imagesOf<T>(scene, channels);
  const auto got = std::make_shared<Results>();
  Work work;
  work.bytes = {bytesRead, 0};
  work.run = [=, size = scene.size] { return call(*in, size, *got); };
  work.check = [=, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    Results want = {};
    expected(*in, want);
    if (std::memcmp(&want, got.get(), sizeof(Results)) != 0) return std::string("another result than the reference");
    return std::nullopt;
  };
  return work;
}

template <class T>
using Plain = ZebStatus (*)(const T*, int, ZebiSize, Zeb64f*);
template <class T>
using OfPair = ZebStatus (*)(const T*, int, const T*, int, ZebiSize, Zeb64f*);

template <class T>
std::function<Work(const Scene&)> norm(Plain<T> function, ref::Norm kind) {
  return [=](const Scene& scene) {
    return statistic<T, Zeb64f>(
        scene, 1, sizeof(T),
        [=](const Images<T>& in, ZebiSize size, Zeb64f& value) {
          return function(in.src1.data(), in.src1.step(), size, &value);
        },
        [=](const Images<T>& in, Zeb64f& value) { value = ref::norm(kind, in.a, {}); });
  };
}

template <class T>
std::function<Work(const Scene&)> ofPair(OfPair<T> function, ref::Norm kind, bool relative) {
  return [=](const Scene& scene) {
    return statistic<T, Zeb64f>(
        scene, 1, 2 * sizeof(T),
        [=](const Images<T>& in, ZebiSize size, Zeb64f& value) {
          return function(in.src1.data(), in.src1.step(), in.src2.data(), in.src2.step(), size, &value);
        },
        [=](const Images<T>& in, Zeb64f& value) {
          value = relative ? ref::normRel(kind, in.a, in.b, {}) : ref::normDiff(kind, in.a, in.b, {});
        });
  };
}

Work maskedDifference(const Scene& scene) {
  return statistic<Zeb8u, Zeb64f>(
      scene, 1, 3,
      [](const Images<Zeb8u>& in, ZebiSize size, Zeb64f& value) {
        return zebiNormDiff_L1_8u_C1MR(in.src1.data(), in.src1.step(), in.src2.data(), in.src2.step(), in.mask.data(),
                                       in.mask.step(), size, &value);
      },
      [](const Images<Zeb8u>& in, Zeb64f& value) {
        value = ref::normDiff(ref::Norm::l1, in.a, in.b, {&in.maskPlane});
      });
}

Work maskedChannel(const Scene& scene) {
  return statistic<Zeb8u, Zeb64f>(
      scene, 3, 4,
      [](const Images<Zeb8u>& in, ZebiSize size, Zeb64f& value) {
        return zebiNorm_L1_8u_C3CMR(in.src1.data(), in.src1.step(), in.mask.data(), in.mask.step(), size, 2, &value);
      },
      [](const Images<Zeb8u>& in, Zeb64f& value) {
        value = ref::norm(ref::Norm::l1, in.a, {&in.maskPlane, 1});
      });
}

template <class T>
std::function<Work(const Scene&)> mean(ZebStatus (*function)(const T*, int, ZebiSize, Zeb64f*, Zeb64f*)) {
  return [=](const Scene& scene) {
    return statistic<T, ref::MeanAndDeviation>(
        scene, 1, sizeof(T),
        [=](const Images<T>& in, ZebiSize size, ref::MeanAndDeviation& r) {
          return function(in.src1.data(), in.src1.step(), size, &r.mean, &r.deviation);
        },
        [](const Images<T>& in, ref::MeanAndDeviation& r) { r = ref::meanAndDeviation(in.a, {}); });
  };
}

template <class T>
std::function<Work(const Scene&)> extremes(ZebStatus (*function)(const T*, int, ZebiSize, Zeb32f*, Zeb32f*, ZebiPoint*,
                                                                 ZebiPoint*)) {
  return [=](const Scene& scene) {
    return statistic<T, ref::Extremes>(
        scene, 1, sizeof(T),
        [=](const Images<T>& in, ZebiSize size, ref::Extremes& r) {
          return function(in.src1.data(), in.src1.step(), size, &r.smallest, &r.largest, &r.smallestAt, &r.largestAt);
        },
        [](const Images<T>& in, ref::Extremes& r) { r = ref::extremes(in.a, {}); });
  };
}

// What a call costs when there is nothing to look at but one pixel.
Work callOverhead(const Scene&) {
  struct Pixel {
    Zeb8u src = 3;
    Zeb64f value = 0;
  };
  auto pixel = std::make_shared<Pixel>();
  Work work;
  work.callsPerRun = 1000;
  work.run = [pixel] {
    ZebStatus status = zebStsOk;
    for (int i = 0; i < 1000; ++i) status |= zebiNorm_L1_8u_C1R(&pixel->src, 1, {1, 1}, &pixel->value);
    return status;
  };
  work.check = [pixel, run = work.run]() -> std::optional<std::string> {
    if (auto bad = failure(run())) return bad;
    if (pixel->value != 3) return "the norm of 3 was " + std::to_string(pixel->value);
    return std::nullopt;
  };
  return work;
}

const Family family(
    15, "Norms, statistics and extrema",
    {
        {"Norm L1 8u C1R", timesMemcpy(0.8), norm<Zeb8u>(zebiNorm_L1_8u_C1R, ref::Norm::l1)},
        {"Norm Inf 8u C1R", timesMemcpy(0.8), norm<Zeb8u>(zebiNorm_Inf_8u_C1R, ref::Norm::inf)},
        {"Norm L2 8u C1R", timesMemcpy(1.2), norm<Zeb8u>(zebiNorm_L2_8u_C1R, ref::Norm::l2)},
        {"NormDiff L2 8u C1R", timesMemcpy(1.8), ofPair<Zeb8u>(zebiNormDiff_L2_8u_C1R, ref::Norm::l2, false)},
        {"NormDiff L1 8u C1MR, random mask", timesMemcpy(2.0), maskedDifference},
        {"Norm L1 8u C3CMR, random mask", timesMemcpy(3.0), maskedChannel},
        {"Norm L2 16u C1R", timesMemcpy(3.4), norm<Zeb16u>(zebiNorm_L2_16u_C1R, ref::Norm::l2)},
        {"Norm Inf 32f C1R", timesMemcpy(2.6), norm<Zeb32f>(zebiNorm_Inf_32f_C1R, ref::Norm::inf)},
        {"Norm L1 32f C1R", timesMemcpy(4.0), norm<Zeb32f>(zebiNorm_L1_32f_C1R, ref::Norm::l1)},
        {"Norm L2 32f C1R", timesMemcpy(4.0), norm<Zeb32f>(zebiNorm_L2_32f_C1R, ref::Norm::l2)},
        {"NormDiff L1 32f C1R", timesMemcpy(6.0), ofPair<Zeb32f>(zebiNormDiff_L1_32f_C1R, ref::Norm::l1, false)},
        {"NormRel L2 32f C1R", timesMemcpy(9.0), ofPair<Zeb32f>(zebiNormRel_L2_32f_C1R, ref::Norm::l2, true)},
        {"Mean_StdDev 8u C1R", timesMemcpy(1.4), mean<Zeb8u>(zebiMean_StdDev_8u_C1R)},
        {"Mean_StdDev 32f C1R", timesMemcpy(7.5), mean<Zeb32f>(zebiMean_StdDev_32f_C1R)},
        {"MinMaxIndx 8u C1R", timesMemcpy(1.0), extremes<Zeb8u>(zebiMinMaxIndx_8u_C1R)},
        {"MinMaxIndx 32f C1R", timesMemcpy(2.7), extremes<Zeb32f>(zebiMinMaxIndx_32f_C1R)},
        {"call overhead 1x1, Norm L1 8u C1R", {Target::nanosecondsPerCall, std::nullopt}, callOverhead},
    });

}  // namespace
