// Accumulation, differences, fast arctangent.
#include "reference/accumulate.h"

#include <algorithm>
#include <memory>

#include "bench.h"

namespace {

using namespace bench;

constexpr float alpha = 0.05f;

struct Accumulation {
  Pixels<Zeb8u> pixels1, pixels2, maskPixels;  // for the reference
  Image<Zeb8u> src1, src2, mask;
  Image<Zeb32f> acc;
};

// call(images, accumulator) makes the library's call; expected(images, old value, index) is the reference.
template <class Call, class Expected>
Work accumulation(const Scene& scene, Bytes bytes, Call call, Expected expected) {
  auto images = std::make_shared<Accumulation>();
  // A running average over a black pixel would shrink into the subnormal numbers, which no camera's sequence does.
  images->pixels1 = scene.photo;
  for (Zeb8u& p : images->pixels1) p = std::max<Zeb8u>(p, 1);
  images->pixels2.assign(scene.photo.rbegin(), scene.photo.rend());
  images->maskPixels = randomPixels<Zeb8u>(scene.count(), 0, 1, 7);
  const Pixels<Zeb32f> start = randomPixels<Zeb32f>(scene.count(), 0, 255, 8);
  images->src1 = scene.imageOf<Zeb8u>(images->pixels1);
  images->src2 = scene.imageOf<Zeb8u>(images->pixels2);
  images->mask = scene.imageOf<Zeb8u>(images->maskPixels);
  images->acc = scene.imageOf<Zeb32f>(start);

  Work work;
  work.bytes = bytes;
  work.run = [=] { return call(*images, images->acc); };
  work.check = [=, width = scene.size.width]() -> std::optional<std::string> {
    Pixels<Zeb32f> wanted(start.size());
    images->acc.set(start);
    for (size_t i = 0; i < wanted.size(); ++i) wanted[i] = expected(*images, start[i], i);
    if (auto bad = failure(call(*images, images->acc))) return bad;
    return firstDifference(wanted, images->acc.compact(), width);
  };
  return work;
}

Work addWeighted(const Scene& scene) {
  return accumulation(
      scene, {1, 0, 4},
      [size = scene.size](const Accumulation& in, Image<Zeb32f>& acc) {
        return zebiAddWeighted_8u32f_C1IR(in.src1.data(), in.src1.step(), acc.data(), acc.step(), size, alpha);
      },
      [](const Accumulation& in, Zeb32f old, size_t i) { return ref::addWeighted(old, in.pixels1[i], alpha); });
}

Work addWeightedMasked(const Scene& scene) {
  return accumulation(
      scene, {2, 0, 4},
      [size = scene.size](const Accumulation& in, Image<Zeb32f>& acc) {
        return zebiAddWeighted_8u32f_C1IMR(in.src1.data(), in.src1.step(), in.mask.data(), in.mask.step(), acc.data(),
                                           acc.step(), size, alpha);
      },
      [](const Accumulation& in, Zeb32f old, size_t i) {
        return in.maskPixels[i] ? ref::addWeighted(old, in.pixels1[i], alpha) : old;
      });
}

Work add(const Scene& scene) {
  return accumulation(
      scene, {1, 0, 4},
      [size = scene.size](const Accumulation& in, Image<Zeb32f>& acc) {
        return zebiAdd_8u32f_C1IR(in.src1.data(), in.src1.step(), acc.data(), acc.step(), size);
      },
      [](const Accumulation& in, Zeb32f old, size_t i) { return ref::add(old, in.pixels1[i]); });
}

Work addSquare(const Scene& scene) {
  return accumulation(
      scene, {1, 0, 4},
      [size = scene.size](const Accumulation& in, Image<Zeb32f>& acc) {
        return zebiAddSquare_8u32f_C1IR(in.src1.data(), in.src1.step(), acc.data(), acc.step(), size);
      },
      [](const Accumulation& in, Zeb32f old, size_t i) { return ref::addSquare(old, in.pixels1[i]); });
}

Work addProduct(const Scene& scene) {
  return accumulation(
      scene, {2, 0, 4},
      [size = scene.size](const Accumulation& in, Image<Zeb32f>& acc) {
        return zebiAddProduct_8u32f_C1IR(in.src1.data(), in.src1.step(), in.src2.data(), in.src2.step(), acc.data(),
                                         acc.step(), size);
      },
      [](const Accumulation& in, Zeb32f old, size_t i) { return ref::addProduct(old, in.pixels1[i], in.pixels2[i]); });
}

// Reads two images of T, writes one; call(a, b, out) makes the library's call.
template <class T, class Call, class Expected>
Work twoToOne(const Scene& scene, Pixels<T> first, Pixels<T> second, Call call, Expected expected) {
  struct Images {
    Image<T> a, b, out;
  };
  auto images = std::make_shared<Images>(Images{scene.imageOf<T>(first), scene.imageOf<T>(second), scene.image<T>()});
  Work work;
  work.bytes = {2.0 * sizeof(T), 1.0 * sizeof(T)};
  work.run = [=] { return call(images->a, images->b, images->out); };
  work.check = [=, run = work.run, width = scene.size.width]() -> std::optional<std::string> {
    Pixels<T> wanted(first.size());
    for (size_t i = 0; i < wanted.size(); ++i) wanted[i] = expected(first[i], second[i]);
    if (auto bad = failure(run())) return bad;
    return firstDifference(wanted, images->out.compact(), width);
  };
  return work;
}

// The photograph against itself turned by half a turn, in the depth of T.
template <class T>
Work absDiff(const Scene& scene, T scale, ZebStatus (*function)(const T*, int, const T*, int, T*, int, ZebiSize)) {
  Pixels<T> a(scene.count()), b(scene.count());
  std::transform(scene.photo.begin(), scene.photo.end(), a.begin(), [=](Zeb8u p) { return static_cast<T>(p * scale); });
  std::reverse_copy(a.begin(), a.end(), b.begin());
  return twoToOne<T>(
      scene, std::move(a), std::move(b),
      [=, size = scene.size](const Image<T>& p, const Image<T>& q, Image<T>& out) {
        return function(p.data(), p.step(), q.data(), q.step(), out.data(), out.step(), size);
      },
      [](T p, T q) { return static_cast<T>(ref::absDiff(p, q)); });
}

// Angles of the photograph's central differences.
Work fastArctan(const Scene& scene) {
  const int width = scene.size.width, height = scene.size.height;
  Pixels<Zeb32f> dy(scene.count()), dx(scene.count());
  const auto at = [&](int x, int y) {
    return static_cast<int>(scene.photo[std::clamp(y, 0, height - 1) * width + std::clamp(x, 0, width - 1)]);
  };
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      dx[y * width + x] = static_cast<Zeb32f>(at(x + 1, y) - at(x - 1, y));
      dy[y * width + x] = static_cast<Zeb32f>(at(x, y + 1) - at(x, y - 1));
    }
  return twoToOne<Zeb32f>(
      scene, std::move(dy), std::move(dx),
      [size = scene.size, whole = scene.stride == scene.size.width](const Image<Zeb32f>& y, const Image<Zeb32f>& x,
                                                                    Image<Zeb32f>& out) {
        if (whole) return zebibFastArctan_32f(y.data(), x.data(), out.data(), size.width * size.height);
        ZebStatus status = zebStsOk;
        for (int k = 0; k < size.height; ++k) status |= zebibFastArctan_32f(y.row(k), x.row(k), out.row(k), size.width);
        return status;
      },
      [](Zeb32f y, Zeb32f x) { return ref::fastArctan(y, x); });
}

// What a call costs when there is nothing to do but one pixel.
Work callOverhead(const Scene&) {
  struct Pixel {
    Zeb8u src = 3;
    Zeb32f acc = 0;
  };
  auto pixel = std::make_shared<Pixel>();
  Work work;
  work.callsPerRun = 1000;
  work.run = [pixel] {
    ZebStatus status = zebStsOk;
    for (int i = 0; i < 1000; ++i) status |= zebiAdd_8u32f_C1IR(&pixel->src, 1, &pixel->acc, 4, {1, 1});
    return status;
  };
  work.check = [pixel, run = work.run]() -> std::optional<std::string> {
    pixel->acc = 0;
    if (auto bad = failure(run())) return bad;
    if (pixel->acc != 3000) return "1000 additions of 3 gave " + std::to_string(pixel->acc);
    return std::nullopt;
  };
  return work;
}

const Family family(10, "Accumulation and difference",
                    {
                        {"AddWeighted 8u32f C1IR", timesMemcpy(2.6), addWeighted},
                        {"AddWeighted 8u32f C1IMR, random mask", timesMemcpy(3.6), addWeightedMasked},
                        {"Add 8u32f C1IR", timesMemcpy(2.6), add},
                        {"AddSquare 8u32f C1IR", timesMemcpy(2.6), addSquare},
                        {"AddProduct 8u32f C1IR", timesMemcpy(3.0), addProduct},
                        {"AbsDiff 8u C1R", timesMemcpy(1.4),
                         [](const Scene& scene) { return absDiff<Zeb8u>(scene, 1, zebiAbsDiff_8u_C1R); }},
                        {"AbsDiff 16u C1R", timesMemcpy(2.0),
                         [](const Scene& scene) { return absDiff<Zeb16u>(scene, 257, zebiAbsDiff_16u_C1R); }},
                        {"AbsDiff 32f C1R", timesMemcpy(5.0),
                         [](const Scene& scene) { return absDiff<Zeb32f>(scene, 0.5f, zebiAbsDiff_32f_C1R); }},
                        {"FastArctan 32f", timesMemcpy(6.0), fastArctan},
                        {"call overhead 1x1, Add 8u32f C1IR", nanosecondsPerCall(50), callOverhead},
                    });

}  // namespace
