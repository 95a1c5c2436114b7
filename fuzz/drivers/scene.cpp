// Models of a scene: sequences of frames, every record compared with the model of its pixels after every call.
#include <algorithm>

#include "function.h"
#include "reference/scene.h"
#include "support/memcheck.h"

namespace {

using namespace fuzz;
using ref::Plane;

// Frames in which every pixel shows one of a few colours, a little changed, or anything. Changes by multiples of 4 lead
// to squared distances that are those of a threshold, exactly.
class Camera {
 public:
  Camera(Choice& c, ZebiSize size, int channels)
      : channels_(channels),
        step_(c.coin() ? 4 : 1),
        noise_(c.within(0, 12) / step_),
        colours_(c.within(1, 10)),
        random_(c.random()) {
    for (int i = 0; i < colours_; ++i) scenes_.push_back(c.plane<Zeb8u>(size.width, size.height, channels));
  }
  Image<Zeb8u> frame(Choice& c) {
    Plane<Zeb8u> p = scenes_[static_cast<size_t>(random_.within(0, colours_ - 1))];
    const bool mixed = random_.within(0, 1) == 0;
    for (int y = 0; y < p.height; ++y)
      for (int x = 0; x < p.width; ++x) {
        const auto& other = scenes_[static_cast<size_t>(mixed ? random_.within(0, colours_ - 1) : 0)];
        for (int k = 0; k < channels_; ++k) {
          const int v = (mixed ? other : p).at(x, y, k) + step_ * random_.within(-noise_, noise_);
          p.at(x, y, k) = static_cast<Zeb8u>(std::clamp(v, 0, 255));
        }
      }
    return Image<Zeb8u>{p, c.layout<Zeb8u>()};
  }

 private:
  int channels_, step_, noise_, colours_;
  Random random_;
  std::vector<Plane<Zeb8u>> scenes_;
};

ref::Pixel pixelAt(const Plane<Zeb8u>& p, int x, int y) {
  ref::Pixel out{};
  for (int c = 0; c < p.channels; ++c) out[static_cast<size_t>(c)] = p.at(x, y, c);
  return out;
}

template <class T, class State>
T wordOf(const State* state, int index) {
  T word;
  memcpy(&word, reinterpret_cast<const Zeb8u*>(state) + 4 * index, 4);
  return word;
}
template <class State>
std::vector<Zeb8u> bytesOf(const State* state, size_t count) {
  const auto* first = reinterpret_cast<const Zeb8u*>(state);
  const std::vector<Zeb8u> bytes(first, first + count);
  test::mayBeLookedAt(bytes.data(), count);  // with what stands between the pixels and behind a row
  return bytes;
}

// What follows in the head: the parameters as the model works with them, then zeros.
template <class... V>
std::vector<uint32_t> words(V... values) {
  static_assert((... && (sizeof(V) == sizeof(uint32_t))));
  std::vector<uint32_t> all(11);
  size_t at = 0;
  (..., memcpy(&all[at++], &values, sizeof(values)));
  return all;
}
std::vector<uint32_t> wordsOf(const ZebiFGHistogramParam& p) {
  const auto parts = [](Zeb32f v) { return static_cast<int>(std::lrint(65536.0 * static_cast<double>(v))); };
  return words(p.levelBits, p.reach, parts(p.learningRate), parts(p.threshold));
}
std::vector<uint32_t> wordsOf(const ZebiFGGaussianParam& p) {
  return words(p.learningRate, p.threshold * p.threshold, p.initVariance, p.minVariance);
}
std::vector<uint32_t> wordsOf(const ZebiFGMixtureParam& p) {
  return words(p.maxComponents, p.matchThreshold * p.matchThreshold, p.backgroundThreshold * p.backgroundThreshold,
               p.backgroundRatio, p.complexityPrior, p.initVariance, p.minVariance, p.maxVariance);
}

// So many frames as if they had been learned: none, or so many that the count stops soon.
constexpr int mostFrames = 65535;
template <class State>
int pretended(Choice& c, State* state) {
  const int frames = c.oneIn(6) ? mostFrames - c.within(0, 3) : 0;
  if (frames > 0) memcpy(reinterpret_cast<Zeb8u*>(state) + 12, &frames, sizeof(frames));
  return frames;
}

// Larger than any record.
constexpr ZebiSize tooLarge = {16384, 16384};

// The head of a record, and its floats from `at` on in the body.
template <class State, class Param>
void requireHead(const State* state, const char (&id)[5], ZebiSize size, int frames, const Param& p) {
  require(memcmp(state, id, 4) == 0, "the identifier");
  require(wordOf<int>(state, 1) == size.width && wordOf<int>(state, 2) == size.height, "the size in the record");
  require(wordOf<int>(state, 3) == std::min(frames, mostFrames), "the count of frames");
  require(memcmp(reinterpret_cast<const Zeb8u*>(state) + 20, wordsOf(p).data(), 44) == 0, "the parameters");
  const auto at = reinterpret_cast<uintptr_t>(state);
  require(static_cast<uintptr_t>(wordOf<int>(state, 4)) == ((at + 64 + 31) & ~uintptr_t{31}) - at, "the body's place");
}
template <class T, class State>
T inBody(const State* state, size_t index) {
  T value;
  memcpy(&value, reinterpret_cast<const Zeb8u*>(state) + wordOf<int>(state, 4) + index * sizeof(T), sizeof(T));
  return value;
}

void requirePixel(const ref::HistogramPixel& pixel, const ZebiFGHistogramState* state, ZebiSize size, int, int x,
                  int y) {
  const size_t at = 16 * (static_cast<size_t>(y) * static_cast<size_t>(size.width) + static_cast<size_t>(x));
  for (size_t i = 0; i < 8; ++i) {
    require(inBody<Zeb16u>(state, at + i) == pixel.entries[i].key, "a key");
    require(inBody<Zeb16u>(state, at + 8 + i) == pixel.entries[i].weight, "a weight");
  }
}
// Eight means, eight variances, in turn.
void requirePixel(const ref::GaussianPixel& pixel, const ZebiFGGaussianState* state, ZebiSize size, int channels, int x,
                  int y) {
  const int row = (size.width + 7) / 8 * channels;
  for (int c = 0; c < channels; ++c) {
    const int element = x * channels + c;
    const size_t at = 16 * static_cast<size_t>(y * row + element / 8) + static_cast<size_t>(element % 8);
    require(inBody<Zeb32f>(state, at) == pixel.mean[static_cast<size_t>(c)], "a mean");
    require(inBody<Zeb32f>(state, at + 8) == pixel.variance[static_cast<size_t>(c)], "a variance");
  }
}
// Eight weights, variances, means of each channel; then the next pixels; then the next component.
void requirePixel(const ref::MixturePixel& pixel, const ZebiFGMixtureState* state, ZebiSize size, int most, int x,
                  int y) {
  const int row = (size.width + 7) / 8;
  for (int k = 0; k < most; ++k) {
    const size_t at = 40 * static_cast<size_t>((y * most + k) * row + x / 8) + static_cast<size_t>(x % 8);
    const bool present = static_cast<size_t>(k) < pixel.components.size();
    const ref::MixturePixel::Component want =
        present ? pixel.components[static_cast<size_t>(k)] : ref::MixturePixel::Component();
    require(inBody<Zeb32f>(state, at) == want.weight, "a weight");
    if (!present) continue;
    require(inBody<Zeb32f>(state, at + 8) == want.variance, "a variance");
    for (size_t c = 0; c < 3; ++c) require(inBody<Zeb32f>(state, at + 16 + 8 * c) == want.mean[c], "a mean");
  }
}
template <class Pixel, class State>
void requireAll(const std::vector<Pixel>& pixels, const State* state, ZebiSize size, int more) {
  for (int y = 0, i = 0; y < size.height; ++y)
    for (int x = 0; x < size.width; ++x, ++i) requirePixel(pixels[static_cast<size_t>(i)], state, size, more, x, y);
}

// A parameter within its interval, now and then at an end of it.
float parameter(Choice& c, float low, float high) {
  return c.oneIn(4) ? low : c.oneIn(4) ? high : c.real(low, high);
}
float outside(Choice& c, float low, float high) {
  const float bad[] = {std::nextafter(low, -1.0f), std::nextafter(high, 2 * high), NAN, -1.0f, INFINITY};
  return c.oneOf(bad);
}

ZebiFGHistogramParam parameters(Choice& c, int channels, ZebiFGHistogramParam* bad) {
  const int bits = channels == 1 ? 8 : 5;
  const ZebiFGHistogramParam p = {c.within(1, bits), c.within(0, 3), parameter(c, 1.0f / 1024, 0.5f),
                                  parameter(c, 1.0f / 1024, 0.5f)};
  *bad = p;
  switch (c.within(0, 3)) {
    case 0:
      bad->levelBits = c.coin() ? 0 : bits + 1;
      break;
    case 1:
      bad->reach = c.coin() ? -1 : 4;
      break;
    case 2:
      bad->learningRate = outside(c, 1.0f / 1024, 0.5f);
      break;
    default:
      bad->threshold = outside(c, 1.0f / 1024, 0.5f);
  }
  return p;
}
ZebiFGGaussianParam parameters(Choice& c, int, ZebiFGGaussianParam* bad) {
  ZebiFGGaussianParam p = {parameter(c, 0.001f, 0.5f), parameter(c, 0.125f, 64), 0, parameter(c, 1.0f / 64, 500)};
  if (c.coin()) p.threshold = 2, p.minVariance = c.real(1, 9);
  p.initVariance = parameter(c, p.minVariance, c.coin() ? 65025 : p.minVariance + 100);
  *bad = p;
  switch (c.within(0, 3)) {
    case 0:
      bad->learningRate = c.coin() ? 0 : outside(c, 0, 0.5f);
      break;
    case 1:
      bad->threshold = outside(c, 0.125f, 64);
      break;
    case 2:
      bad->initVariance = outside(c, p.minVariance, 65025);
      break;
    default:
      bad->minVariance = c.coin() ? std::nextafter(p.initVariance, 1e9f) : outside(c, 1.0f / 64, 65025);
  }
  return p;
}

template <class Each>
void forPixels(const Plane<Zeb8u>& frame, Each each) {
  for (int y = 0, i = 0; y < frame.height; ++y)
    for (int x = 0; x < frame.width; ++x, ++i) each(static_cast<size_t>(i), pixelAt(frame, x, y));
}

template <class Pixel, class State, class Param = typename Pixel::Param>
void learned(Choice& c, const char (&id)[5], int channels, size_t pixelBytes,
             const Function<State**, const Zeb8u*, int, ZebiSize, const Param*>& init,
             const Function<const Zeb8u*, int, Zeb8u*, int, ZebiSize, const State*>& foreground,
             const Function<const Zeb8u*, int, const Zeb8u*, int, ZebiSize, State*>& update,
             const Function<State*>& release) {
  const ZebiSize size = c.size(70, 6);
  Param bad;
  const Param p = parameters(c, channels, &bad);
  const Param *good = &p, *refused = &bad;
  Camera camera(c, size, channels);
  const Image<Zeb8u> first = camera.frame(c);
  State* state = nullptr;
  const int asked = test::zebcore().mallocCalls;
  init.refused(zebStsErrOverflow, &state, first.pixels(), 3 * tooLarge.width, tooLarge, good);
  require(test::zebcore().mallocCalls == asked, "memory for a record that is too large");
  init.ok(c, &state, first.pixels(), first.step(), size, orElse(good, refused, zebStsErrBadArgument));
  const size_t bytes = 128 + pixelBytes * static_cast<size_t>(size.height) *
                                 static_cast<size_t>(pixelBytes == 32 ? size.width : (size.width + 7) / 8 * 8);
  std::vector<Pixel> pixels;
  forPixels(first.plane(), [&](size_t, const ref::Pixel& x) { pixels.emplace_back(p, x, channels); });
  const auto frames = [&] {
    require(test::bytesOfBlock(state) == static_cast<int>(bytes), "the record's size");
    const int count = c.oneIn(8) ? 20 : c.within(1, 4), before = pretended(c, state);
    for (int t = 0;; ++t) {
      requireHead(state, id, size, before + t, p);
      requireAll(pixels, state, size, channels);
      // The last frame is the first again, so that a record as it was made is looked at too.
      const Image<Zeb8u> src = t == count ? Image<Zeb8u>{first.plane(), c.layout<Zeb8u>()} : camera.frame(c);
      const Image<Zeb8u> dst = c.empty<Zeb8u>(size);
      Plane<Zeb8u> want(size.width, size.height);
      forPixels(src.plane(),
                [&](size_t i, const ref::Pixel& x) { want.data[i] = pixels[i].foreground(p, x, channels) ? 255 : 0; });
      const auto record = bytesOf(state, bytes);
      const ZebiSize other = {size.width > 1 && c.coin() ? size.width - 1 : size.width, size.height + 1};
      foreground.refused(zebStsErrSize, src.pixels(), src.step(), dst.pixels(), dst.step(), other, state);
      foreground.ok(c, src.pixels(), src.step(), dst.pixels(), stepOf(dst, size.width), size, state);
      require(agree(foreground.name(), dst, want), src.describe());
      const bool masked = c.coin();
      const Image<Zeb8u> mask = c.image<Zeb8u>(size);
      update.refused(zebStsErrSize, src.pixels(), src.step(), masked ? mask.pixels() : nullptr, mask.step(), other,
                     state);
      require(bytesOf(state, bytes) == record, "a call that reads or is refused changed the record");
      if (t == count) return;
      if (masked) {
        update.ok(c, src.pixels(), src.step(), keep(mask.pixels()), stepOf(mask, size.width), size, state);
      } else {
        update.ok(c, src.pixels(), src.step(), keep<const Zeb8u*>(nullptr), keep(-c.within(0, 9)), size, state);
      }
      const Plane<Zeb8u> selected = mask.plane();
      forPixels(src.plane(), [&](size_t i, const ref::Pixel& x) {
        if (!masked || selected.data[i] != 0) pixels[i].learn(p, x, channels, before + t + 1);
      });
      require(src.intact() && mask.intact(), "wrote outside");
    }
  };
  try {
    frames();
  } catch (...) {
    release.ok(c, keep(state));
    throw;
  }
  release.ok(c, state);
}

#define LEARNED(model, form, Pixel, id, channels, pixelBytes)                                                     \
  DRIVER("scene", "zebiFG" #model "Update_8u_" #form,                                                             \
         learned<Pixel>(c, id, channels, pixelBytes, FUNCTION(zebiFG##model##InitAlloc_8u_##form),                \
                        FUNCTION(zebiFG##model##Foreground_8u_##form), FUNCTION(zebiFG##model##Update_8u_##form), \
                        FUNCTION(zebiFG##model##Free_8u_##form)))
LEARNED(Histogram, C1R, ref::HistogramPixel, "FGH1", 1, 32);
LEARNED(Histogram, C3R, ref::HistogramPixel, "FGH3", 3, 32);
LEARNED(Gaussian, C1R, ref::GaussianPixel, "FGG1", 1, 8);
LEARNED(Gaussian, C3R, ref::GaussianPixel, "FGG3", 3, 24);

ZebiFGMixtureParam mixtureParameters(Choice& c, ZebiFGMixtureParam* bad) {
  ZebiFGMixtureParam p;
  p.maxComponents = c.within(2, 8);
  p.matchThreshold = c.coin() ? 3 : parameter(c, 0.125f, 64);
  p.backgroundThreshold = c.coin() ? 4 : parameter(c, 0.125f, 64);
  p.backgroundRatio = parameter(c, 0.001f, 1);
  p.complexityPrior = parameter(c, 0, 0.5f);
  p.minVariance = c.coin() ? 12 : parameter(c, 1.0f / 64, 500);
  p.maxVariance = parameter(c, p.minVariance, c.coin() ? 195075 : p.minVariance + 300);
  p.initVariance = parameter(c, p.minVariance, p.maxVariance);
  if (c.oneIn(3))
    p.matchThreshold = 3, p.backgroundThreshold = 4, p.minVariance = p.initVariance = 16, p.maxVariance = 300;
  *bad = p;
  Zeb32f* const fields[] = {&bad->matchThreshold, &bad->backgroundThreshold, &bad->backgroundRatio,
                            &bad->complexityPrior, &bad->initVariance};
  const float low[] = {0.125f, 0.125f, 0, 0, p.minVariance}, high[] = {64, 64, 1, 0.5f, p.maxVariance};
  const int which = c.within(0, 7);
  if (which < 5) *fields[which] = which == 2 && c.coin() ? 0 : outside(c, low[which], high[which]);
  if (which == 5) bad->maxComponents = c.coin() ? 1 : 9;
  if (which == 6) bad->minVariance = c.coin() ? NAN : 0.015f;
  if (which == 7) bad->maxVariance = c.coin() ? NAN : 195076;
  return p;
}

void mixture(Choice& c) {
  const auto foreground = FUNCTION(zebiFGMixtureForeground_8u_C3R);
  const auto background = FUNCTION(zebiFGMixtureBackground_8u_C3R);
  const ZebiSize size = c.size(70, 6);
  ZebiFGMixtureParam bad;
  const ZebiFGMixtureParam p = mixtureParameters(c, &bad);
  const ZebiFGMixtureParam *good = &p, *refused = &bad;
  Camera camera(c, size, 3);
  const Image<Zeb8u> first = camera.frame(c);
  int bytes = 0;
  FUNCTION(zebiFGMixtureGetBufferSize_8u_C3R)
      .ok(c, size, orElse(p.maxComponents, c.coin() ? 1 : 9, zebStsErrBadArgument), &bytes);
  require(bytes == 128 + 20 * p.maxComponents * ((size.width + 7) / 8 * 8) * size.height, "the record's size");
  const Scratch memory = c.scratch(bytes);
  auto* const state = reinterpret_cast<ZebiFGMixtureState*>(memory.get());
  const auto init = FUNCTION(zebiFGMixtureInit_8u_C3R);
  init.refused(zebStsErrOverflow, first.pixels(), 3 * tooLarge.width, tooLarge, good, state);
  init.ok(c, first.pixels(), first.step(), size, orElse(good, refused, zebStsErrBadArgument), state);
  std::vector<ref::MixturePixel> pixels;
  forPixels(first.plane(), [&](size_t, const ref::Pixel& x) { pixels.emplace_back(p, x); });
  const int frames = c.oneIn(8) ? 20 : c.within(0, 5);
  for (int t = 0, learnedFrames = pretended(c, state); t <= frames; ++t) {
    requireHead(state, "FGM3", size, learnedFrames, p);
    requireAll(pixels, state, size, p.maxComponents);
    const auto before = bytesOf(state, static_cast<size_t>(bytes));
    const Image<Zeb8u> scene = c.empty<Zeb8u>(size, 3), dst = c.empty<Zeb8u>(size);
    Plane<Zeb8u> heaviest(size.width, size.height, 3);
    for (size_t i = 0; i < pixels.size(); ++i)
      for (size_t k = 0; k < 3; ++k)
        heaviest.data[3 * i + k] = static_cast<Zeb8u>(std::nearbyint(pixels[i].components[0].mean[k]));
    const ZebiSize other = {size.width, size.height + 1};
    background.refused(zebStsErrSize, scene.pixels(), scene.step(), other, state);
    background.ok(c, scene.pixels(), scene.step(), size, state);
    require(agree(background.name(), scene, heaviest), "the background");
    require(bytesOf(state, static_cast<size_t>(bytes)) == before, "a call that reads changed the record");

    const Image<Zeb8u> src = t == 0 ? Image<Zeb8u>{first.plane(), c.layout<Zeb8u>()} : camera.frame(c);
    const float rate = c.oneIn(4) ? (c.coin() ? 0.0f : -0.0f) : parameter(c, 0.001f, 0.5f);
    Plane<Zeb8u> want(size.width, size.height);
    forPixels(src.plane(), [&](size_t i, const ref::Pixel& x) { want.data[i] = pixels[i].foreground(p, x) ? 255 : 0; });
    foreground.refused(zebStsErrSize, src.pixels(), src.step(), dst.pixels(), dst.step(), other, rate, state);
    foreground.ok(c, src.pixels(), src.step(), dst.pixels(), stepOf(dst, size.width), size,
                  orElse(rate, outside(c, 0, 0.5f), zebStsErrBadArgument), state);
    require(agree(foreground.name(), dst, want), src.describe());
    if (rate == 0) {
      require(bytesOf(state, static_cast<size_t>(bytes)) == before, "a call that does not learn changed the record");
      continue;
    }
    ++learnedFrames;
    forPixels(src.plane(), [&](size_t i, const ref::Pixel& x) { pixels[i].learn(p, x, rate, learnedFrames); });
    require(src.intact() && memory.intact(), "wrote outside");
  }
}
DRIVER("scene", "zebiFGMixtureForeground_8u_C3R", mixture(c));

}  // namespace
