// Erosion and dilation, their compositions, grayscale morphology, reconstruction.
#include "morph/elements.h"
#include "reference/compound.h"
#include "reference/gray.h"
#include "reference/reconstruct.h"
#include "sizes.h"
#include "support/memcheck.h"

namespace {

using namespace fuzz;
using ref::Compound;
using ref::Element;
using ref::Plane;
using test::MaskKind;

Element element(Choice& c, bool anyAnchor) {
  Random random = c.random();
  const auto kind = c.oneIn(32)   ? MaskKind::wide
                    : c.oneIn(32) ? MaskKind::large
                                  : static_cast<MaskKind>(c.within(0, 8));
  Element e = test::makeElement(kind, random);
  if (anyAnchor && c.coin()) e.anchorX = c.within(0, e.width - 1), e.anchorY = c.within(0, e.height - 1);
  return e;
}

ZebiPoint outside(Choice& c, const Element& e) {
  const ZebiPoint bad[] = {{-1, 0}, {e.width, 0}, {0, -1}, {0, e.height}};
  return c.oneOf(bad);
}

// What a mask over a value that is not a number gives is open: such images are there for what is read and written.
template <class T>
Plane<T> content(Choice& c, int width, int height, int channels) {
  return c.oneIn(8) ? c.plane<T>(width, height, channels) : c.ordered<T>(width, height, channels);
}

// What comes out where the definition gives an infinity: it, or the largest finite value, or anything.
enum class Infinities { exact, orLargest, open };

// Values are compared as numbers: which of two zeros comes out is open.
template <class T>
bool alike(T a, T b) {
  return a == b || (a != a && b != b);
}
template <class T>
bool alikeWithoutInfinities(T a, T b) {
  const auto limited = [](T v) {
    return std::clamp(v, std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max());
  };
  return limited(a) == limited(b);
}

template <class T>
void check(const char* name, const Image<T>& dst, const Plane<T>& want, const Plane<T>& source, Infinities infinities,
           const Element& e, const std::string& more) {
  const std::string what = std::string(name) + ", mask " + std::to_string(e.width) + " x " + std::to_string(e.height) +
                           ", anchor " + std::to_string(e.anchorX) + ", " + std::to_string(e.anchorY) + ", " + more +
                           ", destination " + dst.describe();
  const bool comparable = std::none_of(source.data.begin(), source.data.end(), [&](T v) {
    return v != v || (infinities == Infinities::open && std::isinf(static_cast<double>(v)));
  });
  if (comparable)
    require(agree(dst.plane(), want, infinities == Infinities::exact ? alike<T> : alikeWithoutInfinities<T>), what);
  require(dst.intact(), what + ": wrote outside");
}

template <class State>
State* stateIn(const Scratch& memory) {
  return reinterpret_cast<State*>(memory.get());
}

// A source with its surroundings: columns and rows that the border type lets a call read, no more. Pixels of bits
// packed images are counted from the byte in which the region begins.
template <class T>
struct Scene {
  Scene(Choice& c, Random random, ZebiSize size, int channels, bool packed, int left, int right, int top, int bottom)
      : around(random, left, right, top, bottom),
        before(packed ? (around.left + 7) / 8 : around.left),
        src{content<T>(c, before + (packed ? (size.width + around.right + 7) / 8 : size.width + around.right),
                       around.top + size.height + around.bottom, channels),
            c.layout<T>()},
        plane(src.plane()) {
    if constexpr (std::is_same_v<T, Zeb8u>)
      if (packed) plane = test::unpacked(plane);
    region = around.region(plane, size);
    if (packed) region.x = 8 * before;
  }
  const T* pixels() const { return src.pixels(before, around.top); }
  std::string describe() const { return "border " + std::to_string(around.border) + ", source " + src.describe(); }

  test::Surroundings around;
  int before;
  Image<T> src;
  Plane<T> plane;
  ref::Region<T> region;
};

// What a destination must hold afterwards: the bits of packed ones that lie beyond the width keep their values.
template <class T>
Plane<T> resultIn(const Image<T>& dst, const Plane<T>& result, bool packed) {
  if constexpr (std::is_same_v<T, Zeb8u>)
    if (packed) {
      Plane<T> bytes = dst.plane();
      test::pack(result, &bytes);
      return bytes;
    }
  return result;
}

template <class T>
Image<T> destination(Choice& c, ZebiSize size, int channels, bool packed) {
  return c.empty<T>({packed ? (size.width + 7) / 8 : size.width, size.height}, channels);
}

int badBorder(Choice& c) {
  const int bad[] = {zebBorderConst, zebBorderWrap, zebBorderMirror, 5, 0x40, 0x25};
  return c.oneOf(bad);
}

// Regions of bits are of a few vectors, too.
ZebiSize regionOf(Choice& c, bool packed) {
  const ZebiSize size = c.size(70, 14);
  return packed && c.slack(2) == 1 ? ZebiSize{size.width + c.slack(2000), 1 + size.height % 3} : size;
}

template <class T>
using Bordered = Function<const T*, int, T*, int, ZebiSize, ZebiBorderType, T, const ZebiMorphState*, Zeb8u*>;

template <class T>
void bordered(Choice& c, const Function<int, ZebiSize, int*, int*>& query,
              const Function<int, const Zeb8u*, ZebiSize, ZebiMorphState*, Zeb8u*>& init, const Bordered<T>& f,
              int channels, bool packed, bool lowest) {
  const ZebiSize size = regionOf(c, packed);
  const Element e = element(c, false);
  const ZebiSize maskSize = {e.width, e.height};
  const Scene<T> s(c, c.random(), size, channels, packed, e.anchorX, e.width - 1 - e.anchorX, e.anchorY,
                   e.height - 1 - e.anchorY);
  const int stateWidth = size.width + c.slack(50);
  int specSize = 0, bufferSize = 0;
  query.ok(c, stateWidth, maskSize, &specSize, &bufferSize);
  const Scratch spec = c.scratch(specSize), buffer = c.scratch(bufferSize);
  const auto ask = [&](int width, int* told) { return query.bare(width, maskSize, &specSize, told); };
  atLeastRefused(leastRefused(c, ask, anyBytes), 1, [&](int wide) {
    const std::vector<Zeb8u> none(e.mask.size());
    for (const auto* mask : {&e.mask, &none})
      init.refused(zebStsErrOverflow, wide, mask->data(), maskSize, stateIn<ZebiMorphState>(spec), buffer.get());
  });
  init.ok(c, stateWidth, e.mask.data(), maskSize, stateIn<ZebiMorphState>(spec), buffer.get());
  const Image<T> dst = destination<T>(c, size, channels, packed);
  if (packed) test::mayBeLookedAt(dst);  // the bits behind the width stay
  const auto want = resultIn(dst, ref::extremum(s.region, e, lowest), packed);
  f.ok(c, s.pixels(), s.src.step(), dst.pixels(), dst.step(), size,
       orElse(s.around.border, badBorder(c), zebStsErrBorder), T(7), stateIn<ZebiMorphState>(spec), buffer.get());
  // Bits behind a packed row are shifted along and dropped again: the memory checker loses track of them.
  if (packed) test::mayBeLookedAt(dst);
  check(f.name(), dst, want, s.plane, Infinities::orLargest, e, s.describe());
  require(spec.intact() && buffer.intact() && s.src.intact(), "wrote outside");
}

#define BORDERED(form, T, channels, packed)                                                                      \
  DRIVER("morphology", "zebiErodeBorder_" #form,                                                                 \
         bordered<T>(c, FUNCTION(zebiMorphologyBorderGetSize_##form), FUNCTION(zebiMorphologyBorderInit_##form), \
                     FUNCTION(zebiErodeBorder_##form), channels, packed, true));                                 \
  DRIVER("morphology", "zebiDilateBorder_" #form,                                                                \
         bordered<T>(c, FUNCTION(zebiMorphologyBorderGetSize_##form), FUNCTION(zebiMorphologyBorderInit_##form), \
                     FUNCTION(zebiDilateBorder_##form), channels, packed, false))

template <class T>
using Owning = Function<const T*, int, T*, int, ZebiSize, ZebiBorderType, ZebiMorphState*>;

// A state in the caller's memory and one that is allocated.
template <class T>
void owning(Choice& c, const Function<int, const Zeb8u*, ZebiSize, int*>& query,
            const Function<int, const Zeb8u*, ZebiSize, ZebiPoint, ZebiMorphState*>& init,
            const Function<int, const Zeb8u*, ZebiSize, ZebiPoint, ZebiMorphState**>& initAlloc, const Owning<T>& f,
            int channels, bool lowest) {
  const ZebiSize size = c.size(70, 14);
  const Element e = element(c, true);
  const ZebiSize maskSize = {e.width, e.height};
  const ZebiPoint anchor = {e.anchorX, e.anchorY};
  const Image<T> src{content<T>(c, size.width, size.height, channels), c.layout<T>()};
  const int stateWidth = size.width + c.slack(50);
  int bytes = 0;
  query.ok(c, stateWidth, e.mask.data(), maskSize, &bytes);
  const Scratch memory = c.scratch(bytes);
  ZebiMorphState* allocated = nullptr;
  const auto ask = [&](int width, int* told) { return query.bare(width, e.mask.data(), maskSize, told); };
  atLeastRefused(leastRefused(c, ask, anyBytes), 1, [&](int wide) {
    init.refused(zebStsErrOverflow, wide, e.mask.data(), maskSize, anchor, stateIn<ZebiMorphState>(memory));
    initAlloc.refused(zebStsErrOverflow, wide, e.mask.data(), maskSize, anchor, &allocated);
  });
  init.ok(c, stateWidth, e.mask.data(), maskSize, orElse(anchor, outside(c, e), zebStsErrAnchor),
          stateIn<ZebiMorphState>(memory));
  initAlloc.ok(c, stateWidth, e.mask.data(), maskSize, orElse(anchor, outside(c, e), zebStsErrAnchor), &allocated);
  const Image<T> dst = c.empty<T>(size, channels), again = c.empty<T>(size, channels);
  f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), size,
       orElse(zebBorderRepl, badBorder(c), zebStsErrBadArgument), stateIn<ZebiMorphState>(memory));
  f.ok(c, src.pixels(), src.step(), again.pixels(), again.step(), size,
       orElse(zebBorderRepl, badBorder(c), zebStsErrBadArgument), allocated);
  FUNCTION(zebiMorphologyFree).ok(c, allocated);
  const Plane<T> plane = src.plane();
  const auto want = ref::extremum(ref::Region<T>{&plane, 0, 0, size.width, size.height}, e, lowest);
  check(f.name(), dst, want, plane, Infinities::orLargest, e, src.describe());
  check(f.name(), again, want, plane, Infinities::orLargest, e, "allocated state");
  require(memory.intact() && src.intact(), "wrote outside");
}

#define OWNING(form, T, channels)                                                                                      \
  DRIVER(                                                                                                              \
      "morphology", "zebiErodeBorderReplicate_" #form,                                                                 \
      owning<T>(c, FUNCTION(zebiMorphologyGetSize_##form), FUNCTION(zebiMorphologyInit_##form),                        \
                FUNCTION(zebiMorphologyInitAlloc_##form), FUNCTION(zebiErodeBorderReplicate_##form), channels, true)); \
  DRIVER("morphology", "zebiDilateBorderReplicate_" #form,                                                             \
         owning<T>(c, FUNCTION(zebiMorphologyGetSize_##form), FUNCTION(zebiMorphologyInit_##form),                     \
                   FUNCTION(zebiMorphologyInitAlloc_##form), FUNCTION(zebiDilateBorderReplicate_##form), channels,     \
                   false))

template <class T>
using Composed = Function<const T*, int, T*, int, ZebiSize, ZebiBorderType, T, const ZebiMorphAdvState*, Zeb8u*>;

template <class T>
void composed(Choice& c, const Function<ZebiSize, ZebiSize, int*, int*>& query,
              const Function<ZebiMorphAdvState*, ZebiSize, const Zeb8u*, ZebiSize, ZebiPoint>& init,
              const Function<ZebiMorphAdvState**, ZebiSize, const Zeb8u*, ZebiSize, ZebiPoint>& initAlloc,
              const Composed<T>& f, int channels, bool packed, Compound operation) {
  // Also higher than their pixels are many: the intermediate image of a state in the caller's memory goes by strips.
  const ZebiSize size = c.oneIn(4) ? c.size(12, 130) : regionOf(c, packed);
  const Element e = element(c, true);
  const ZebiSize maskSize = {e.width, e.height}, stateSize = {size.width + c.slack(20), size.height + c.slack(9)};
  const ZebiPoint anchor = {e.anchorX, e.anchorY};
  const Scene<T> s(c, c.random(), size, channels, packed, e.width - 1, e.width - 1, e.height - 1, e.height - 1);
  int specSize = 0, bufferSize = 0;
  query.ok(c, stateSize, maskSize, &specSize, &bufferSize);
  const Scratch spec = c.scratch(specSize), buffer = c.scratch(bufferSize);
  const ZebiSize hopeless = tooHigh(c, query, anyBytes, maskSize, &specSize);
  ZebiMorphAdvState* allocated = nullptr;
  init.refused(zebStsErrOverflow, stateIn<ZebiMorphAdvState>(spec), hopeless, e.mask.data(), maskSize, anchor);
  initAlloc.refused(zebStsErrOverflow, &allocated, hopeless, e.mask.data(), maskSize, anchor);
  init.ok(c, stateIn<ZebiMorphAdvState>(spec), stateSize, e.mask.data(), maskSize,
          orElse(anchor, outside(c, e), zebStsErrAnchor));
  initAlloc.ok(c, &allocated, stateSize, e.mask.data(), maskSize, orElse(anchor, outside(c, e), zebStsErrAnchor));
  const Image<T> dst = destination<T>(c, size, channels, packed);
  if (packed) test::mayBeLookedAt(dst);  // the bits behind the width stay
  const auto want = resultIn(dst, ref::compound(operation, s.region, e), packed);
  const ZebiMorphAdvState* state = c.coin() ? stateIn<ZebiMorphAdvState>(spec) : allocated;
  f.refused(zebStsErrSize, s.pixels(), s.src.step(), dst.pixels(), dst.step(), ZebiSize{size.width, INT32_MAX},
            s.around.border, T(3), state, buffer.get());
  f.ok(c, s.pixels(), s.src.step(), dst.pixels(), dst.step(), size,
       orElse(s.around.border, badBorder(c), zebStsErrBorder), T(3), state, buffer.get());
  FUNCTION(zebiMorphAdvFree).ok(c, allocated);
  if (packed) test::mayBeLookedAt(dst);
  check(f.name(), dst, want, s.plane, Infinities::open, e, s.describe());
  require(spec.intact() && buffer.intact() && s.src.intact(), "wrote outside");
}

#define COMPOSED_BY(stem, form, T, channels, packed, operation)                                  \
  DRIVER("morphology", #stem "_" #form,                                                          \
         composed<T>(c, FUNCTION(zebiMorphAdvGetSize_##form), FUNCTION(zebiMorphAdvInit_##form), \
                     FUNCTION(zebiMorphAdvInitAlloc_##form), FUNCTION(stem##_##form), channels, packed, operation))
#define COMPOSED(form, T, channels, packed)                                            \
  COMPOSED_BY(zebiMorphOpenBorder, form, T, channels, packed, Compound::open);         \
  COMPOSED_BY(zebiMorphCloseBorder, form, T, channels, packed, Compound::close);       \
  COMPOSED_BY(zebiMorphTophatBorder, form, T, channels, packed, Compound::tophat);     \
  COMPOSED_BY(zebiMorphBlackhatBorder, form, T, channels, packed, Compound::blackhat); \
  COMPOSED_BY(zebiMorphGradientBorder, form, T, channels, packed, Compound::gradient)

#define ALL_FORMS(FORM)            \
  FORM(8u_C1R, Zeb8u, 1, false);   \
  FORM(8u_C3R, Zeb8u, 3, false);   \
  FORM(8u_C4R, Zeb8u, 4, false);   \
  FORM(16u_C1R, Zeb16u, 1, false); \
  FORM(16s_C1R, Zeb16s, 1, false); \
  FORM(32f_C1R, Zeb32f, 1, false); \
  FORM(32f_C3R, Zeb32f, 3, false); \
  FORM(32f_C4R, Zeb32f, 4, false); \
  FORM(1u_C1R, Zeb8u, 1, true)
ALL_FORMS(BORDERED);
ALL_FORMS(COMPOSED);
OWNING(8u_C1R, Zeb8u, 1);
OWNING(8u_C3R, Zeb8u, 3);
OWNING(8u_C4R, Zeb8u, 4);
OWNING(32f_C1R, Zeb32f, 1);
OWNING(32f_C3R, Zeb32f, 3);
OWNING(32f_C4R, Zeb32f, 4);

template <class T, class W>
void gray(Choice& c, const Function<ZebiSize, const W*, ZebiSize, int*>& query,
          const Function<ZebiMorphGrayState*, ZebiSize, const W*, ZebiSize, ZebiPoint>& init,
          const Function<ZebiMorphGrayState**, ZebiSize, const W*, ZebiSize, ZebiPoint>& initAlloc,
          const Function<ZebiMorphGrayState*>& release,
          const Function<const T*, int, T*, int, ZebiSize, ZebiBorderType, const ZebiMorphGrayState*>& f, bool dilate) {
  const ZebiSize size = c.size(70, 14), stateSize = {size.width + c.slack(20), size.height + c.slack(9)};
  Element e = {{}, c.within(1, 9), c.within(1, 7), 0, 0};
  e.anchorX = c.within(0, e.width - 1), e.anchorY = c.within(0, e.height - 1);
  const ZebiSize maskSize = {e.width, e.height};
  const ZebiPoint anchor = {e.anchorX, e.anchorY};
  std::vector<W> weights;
  if (c.coin()) {
    weights = c.finite<W>(e.width, e.height).data;
  } else {
    Random random = c.random();
    for (int i = 0; i < e.width * e.height; ++i) weights.push_back(static_cast<W>(random.within(-40, 40)));
  }
  const Image<T> src{content<T>(c, size.width, size.height, 1), c.layout<T>()}, dst = c.empty<T>(size);
  int bytes = 0;
  query.ok(c, stateSize, weights.data(), maskSize, &bytes);
  const Scratch memory = c.scratch(bytes);
  ZebiMorphGrayState* allocated = nullptr;
  for (const ZebiSize mask : {ZebiSize{INT32_MAX, INT32_MAX}, ZebiSize{e.width, INT32_MAX / e.width}}) {
    init.refused(zebStsErrOverflow, stateIn<ZebiMorphGrayState>(memory), stateSize, weights.data(), mask, anchor);
    initAlloc.refused(zebStsErrOverflow, &allocated, stateSize, weights.data(), mask, anchor);
  }
  init.ok(c, stateIn<ZebiMorphGrayState>(memory), stateSize, weights.data(), maskSize,
          orElse(anchor, outside(c, e), zebStsErrAnchor));
  initAlloc.ok(c, &allocated, stateSize, weights.data(), maskSize, orElse(anchor, outside(c, e), zebStsErrAnchor));
  const ZebiMorphGrayState* state = c.coin() ? stateIn<ZebiMorphGrayState>(memory) : allocated;
  f.ok(c, src.pixels(), src.step(), dst.pixels(), dst.step(), size,
       orElse(zebBorderRepl, badBorder(c), zebStsErrBadArgument), state);
  release.ok(c, allocated);
  const Plane<T> plane = src.plane();
  check(f.name(), dst, ref::grayMorphology<T, W>(plane, weights, maskSize, anchor, dilate), plane, Infinities::exact, e,
        src.describe());
  require(memory.intact() && src.intact(), "wrote outside");
}

#define GRAY(stem, form, T, W, dilate)                                                            \
  DRIVER("morphology", #stem "_" #form,                                                           \
         gray<T, W>(c, FUNCTION(zebiMorphGrayGetSize_##form), FUNCTION(zebiMorphGrayInit_##form), \
                    FUNCTION(zebiMorphGrayInitAlloc_##form), FUNCTION(zebiMorphGrayFree_##form),  \
                    FUNCTION(stem##_##form), dilate))
GRAY(zebiGrayErodeBorder, 8u_C1R, Zeb8u, Zeb32s, false);
GRAY(zebiGrayDilateBorder, 8u_C1R, Zeb8u, Zeb32s, true);
GRAY(zebiGrayErodeBorder, 32f_C1R, Zeb32f, Zeb32f, false);
GRAY(zebiGrayDilateBorder, 32f_C1R, Zeb32f, Zeb32f, true);

template <class T>
void reconstruct(Choice& c, ZebDataType type, const Function<ZebiSize, int*>& query,
                 const Function<const T*, int, T*, int, ZebiSize, Zeb8u*, ZebiNorm>& f, bool dilate) {
  const ZebiSize size = c.size(50, 30);
  const Image<T> mask = c.image<T>(size), marker = c.image<T>(size);
  const bool eight = c.coin();
  int bytes = 0, same = 0;
  query.ok(c, size, &bytes);
  FUNCTION(zebiMorphReconstructGetBufferSize).ok(c, size, orElse(type, zeb8s), orElse(1, c.coin() ? 2 : 0), &same);
  require(bytes == same, "both queries");
  const Scratch buffer = c.scratch(bytes);
  f.refused(zebStsErrOverflow, mask.pixels(), mask.step(), marker.pixels(), marker.step(), ZebiSize{1, INT32_MAX},
            buffer.get(), ZebiNorm(zebiNormL1));
  const auto want = ref::reconstruct(mask.plane(), marker.plane(), dilate, eight);
  f.ok(c, mask.pixels(), mask.step(), marker.pixels(), marker.step(), size, buffer.get(),
       orElse(eight ? zebiNormInf : zebiNormL1, c.coin() ? 2 : -1, zebStsErrBadArgument));
  require(agree(marker.plane(), want, alike<T>), std::string(f.name()) + ", " + mask.describe());
  require(marker.intact() && mask.intact() && buffer.intact(), "wrote outside");
}

#define RECONSTRUCT(form, T)                                                                   \
  DRIVER("morphology", "zebiMorphReconstructDilate_" #form "_C1IR",                            \
         reconstruct<T>(c, zeb##form, FUNCTION(zebiMorphReconstructGetBufferSize_##form##_C1), \
                        FUNCTION(zebiMorphReconstructDilate_##form##_C1IR), true));            \
  DRIVER("morphology", "zebiMorphReconstructErode_" #form "_C1IR",                             \
         reconstruct<T>(c, zeb##form, FUNCTION(zebiMorphReconstructGetBufferSize_##form##_C1), \
                        FUNCTION(zebiMorphReconstructErode_##form##_C1IR), false))
RECONSTRUCT(8u, Zeb8u);
RECONSTRUCT(16u, Zeb16u);
RECONSTRUCT(32f, Zeb32f);
RECONSTRUCT(64f, Zeb64f);

}  // namespace
