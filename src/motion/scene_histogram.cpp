// The histogram model of a scene: for every pixel eight entries of a quantised colour and its weight, all in integers.
// After: A. Godbehere, A. Matsukawa, K. Goldberg, "Visual tracking of human visitors under variable-lighting conditions
// for a responsive audio art installation", 2012.
#include "core/loops.h"
#include "motion/eight_pixels.h"
#include "motion/scene.h"

struct ZebiFGHistogramState {
  zeb::SceneHead head;
  int levelBits, reach;
  int rate, threshold;  // in units of 1 / 65536
};

namespace zeb {

namespace {

using State = ZebiFGHistogramState;

constexpr Zeb16u unused = 0xFFFF;
constexpr int entries = 8, one = 65536;

// Of one pixel.
struct alignas(32) Entries {
  Zeb16u key[entries];
  Zeb16u weight[entries];
};
static_assert(sizeof(Entries) == 32);

// Eight unsigned words: the keys of eight pixels, or the keys or the weights of one.
struct Words {
  __m128i v;

  static ZEB_INLINE Words of(const Zeb16u* p) { return {_mm_load_si128(reinterpret_cast<const __m128i*>(p))}; }
  static ZEB_INLINE Words all(unsigned x) { return {_mm_set1_epi16(static_cast<short>(x))}; }
  ZEB_INLINE void to(Zeb16u* p) const { _mm_store_si128(reinterpret_cast<__m128i*>(p), v); }
  friend ZEB_INLINE Words operator&(Words a, Words b) { return {_mm_and_si128(a.v, b.v)}; }
  friend ZEB_INLINE Words operator|(Words a, Words b) { return {_mm_or_si128(a.v, b.v)}; }
  friend ZEB_INLINE Words operator+(Words a, Words b) { return {_mm_add_epi16(a.v, b.v)}; }
  friend ZEB_INLINE Words operator==(Words a, Words b) { return {_mm_cmpeq_epi16(a.v, b.v)}; }
  // Not below 0.
  friend ZEB_INLINE Words operator-(Words a, Words b) { return {_mm_subs_epu16(a.v, b.v)}; }
};
// The bits of each level and where they stand in a key.
template <int channels>
struct Levels {
  explicit Levels(const State& state)
      : dropped(_mm_cvtsi32_si128(8 - state.levelBits)), bits(state.levelBits), mask((1 << state.levelBits) - 1) {}

  ZEB_INLINE Words keys(const Zeb8u* pixels) const {
    if constexpr (channels == 1) {
      return level(loadEight(pixels));
    } else {
      const EightColours c = loadColours(pixels);
      const __m128i up = _mm_cvtsi32_si128(bits), twiceUp = _mm_cvtsi32_si128(2 * bits);
      const Words second = {_mm_sll_epi16(level(c.channel[1]).v, up)};
      return level(c.channel[0]) | second | Words{_mm_sll_epi16(level(c.channel[2]).v, twiceUp)};
    }
  }
  ZEB_INLINE Words level(Eight a) const { return {_mm_srl_epi16(_mm_cvtepu8_epi16(a.v), dropped)}; }

  __m128i dropped;
  int bits, mask;
};

template <int channels>
void startRow(const Levels<channels>& levels, const Zeb8u* src, int n, Entries* body) {
  forEights<channels>(src, n, [=, &levels](int x, const Zeb8u* p, int count) {
    alignas(16) Zeb16u key[8];
    levels.keys(p).to(key);
    for (int i = 0; i < count; ++i) {
      Entries& e = body[x + i];
      Words::all(unused).to(e.key);
      Words::all(0).to(e.weight);
      e.key[0] = key[i], e.weight[0] = one - 1;
    }
  });
}

// The entries of two pixels, one in each half.
ZEB_INLINE V16u halves(const Zeb16u* low, const Zeb16u* high) {
  return {_mm256_inserti128_si256(_mm256_castsi128_si256(Words::of(low).v), Words::of(high).v, 1)};
}
// Word 2i of eight in all lanes of the low half, word 2i + 1 in those of the high half.
ZEB_INLINE V16u spread(V16u eightTwice, int i) {
  const V16u first = as<Zeb16u>(V8u{_mm256_setr_m128i(_mm_set1_epi16(0x0100), _mm_set1_epi16(0x0302))});
  return {_mm256_shuffle_epi8(eightTwice.v, (as<Zeb8u>(first) + splat(static_cast<Zeb8u>(4 * i))).v)};
}
// Sums of neighbours, modulo 65536: in each half those of a, then those of b.
ZEB_INLINE V16u pairSums(V16u a, V16u b) {
  return {_mm256_hadd_epi16(a.v, b.v)};
}

// Limit: 32 bytes read per pixel.
template <int channels>
void foregroundRow(const Levels<channels>& levels, int reach, Words threshold, const Zeb8u* src, Zeb8u* dst, int n,
                   const Entries* body) {
  V16u field[channels], least[channels];
  for (int c = 0; c < channels; ++c) {
    field[c] = splat(static_cast<Zeb16u>(levels.mask << c * levels.bits));
    least[c] = splat(static_cast<Zeb16u>(reach << c * levels.bits));
  }
  const auto near = [&](V16u keys, V16u own, V16u weights) ZEB_BODY {
    V16u excess = splat(Zeb16u(0));
    for (int c = 0; c < channels; ++c) {
      const V16u a = keys & field[c], b = own & field[c];
      excess = excess | subSat(subSat(a, b) | subSat(b, a), least[c]);
    }
    return weights & equal(excess, splat(Zeb16u(0)));
  };
  forEights<channels>(src, n, [&](int x, const Zeb8u* p, int count) ZEB_BODY {
    const Words keys = levels.keys(p);
    const V16u twice = {_mm256_broadcastsi128_si256(keys.v)};
    V16u weights[4];
#pragma GCC unroll 4
    for (int i = 0; i < 4; ++i) {
      const Entries& low = body[x + (2 * i < count ? 2 * i : 0)];
      const Entries& high = body[x + (2 * i + 1 < count ? 2 * i + 1 : 0)];
      weights[i] = near(halves(low.key, high.key), spread(twice, i), halves(low.weight, high.weight));
    }
    const V16u sums = pairSums(pairSums(weights[0], weights[1]), pairSums(weights[2], weights[3]));
    const V16u each = pairSums(sums, sums);
    const Words inTurn = {_mm_unpacklo_epi16(_mm256_castsi256_si128(each.v), _mm256_extracti128_si256(each.v, 1))};
    const Words background = (threshold - inTurn) == Words::all(0);
    const __m128i bytes = _mm_packs_epi16(background.v, background.v);
    storeEight(dst + x, {_mm_xor_si128(bytes, _mm_set1_epi8(-1))}, count);
  });
}

// Limit: 32 bytes read and written per pixel.
ZEB_INLINE void learn(Entries& e, unsigned key, Words kept, int rate) {
  const Words weights = {_mm_mulhi_epu16(Words::of(e.weight).v, kept.v)};
  const Words found = Words::of(e.key) == Words::all(key);
  if (!_mm_testz_si128(found.v, found.v)) {
    (weights + (found & Words::all(static_cast<unsigned>(rate)))).to(e.weight);
    return;
  }
  const int lightest = _mm_extract_epi16(_mm_minpos_epu16(weights.v), 1);
  weights.to(e.weight);
  e.key[lightest] = static_cast<Zeb16u>(key);
  e.weight[lightest] = static_cast<Zeb16u>(rate);
}
template <int channels>
void updateRow(const Levels<channels>& levels, int rate, const Zeb8u* src, const Zeb8u* mask, int n, Entries* body) {
  const Words kept = Words::all(static_cast<unsigned>(one - rate));
  forEights<channels>(src, n, [=, &levels](int x, const Zeb8u* p, int count) {
    alignas(16) Zeb16u key[8];
    levels.keys(p).to(key);
    for (int i = 0; i < count; ++i)
      if (mask == nullptr || mask[x + i] != 0) learn(body[x + i], key[i], kept, rate);
  });
}

template <int channels>
constexpr uint32_t id = sceneId('H', channels);

template <int channels>
ZebStatus start(State** ppState, Image<const Zeb8u, channels> src, ZebiSize roi, const ZebiFGHistogramParam* p) {
  if (auto bad = checked(roi, src, also(p, ppState))) return bad;
  const auto parameters =
      firstFailure(within(p->levelBits, 1, channels == 1 ? 8 : 5), within(p->reach, 0, 3),
                   within(p->learningRate, 1.0f / 1024, 0.5f), within(p->threshold, 1.0f / 1024, 0.5f));
  const int64_t rowBytes = int64_t{sizeof(Entries)} * roi.width;
  return newScene(ppState, id<channels>, roi, parameters, sceneBytes(rowBytes, roi.height), [=](State* state) {
    state->levelBits = p->levelBits, state->reach = p->reach;
    state->rate = roundToInt(one * p->learningRate), state->threshold = roundToInt(one * p->threshold);
    const Levels<channels> levels(*state);
    auto* body = bodyOf<Entries>(state);
    for (int y = 0; y < roi.height; ++y, body += roi.width) startRow(levels, src.rows()[y], roi.width, body);
  });
}

template <int channels>
ZebStatus foreground(Image<const Zeb8u, channels> src, Image<Zeb8u> dst, ZebiSize roi, const State* state) {
  if (auto bad = takesFrame(src, dst, roi, state, id<channels>)) return bad;
  const Levels<channels> levels(*state);
  const auto* body = bodyOf<Entries>(state);
  const Words threshold = Words::all(static_cast<unsigned>(state->threshold));
  for (int y = 0; y < roi.height; ++y, body += roi.width)
    foregroundRow(levels, state->reach, threshold, src.rows()[y], dst.rows()[y], roi.width, body);
  return zebStsOk;
}

template <int channels>
ZebStatus update(Image<const Zeb8u, channels> src, Optional<const Zeb8u, 1> mask, ZebiSize roi, State* state) {
  if (auto bad = takesLesson(src, mask, roi, state, id<channels>)) return bad;
  const int average = one / countFrame(state->head);
  const int rate = average > state->rate ? average : state->rate;
  const Levels<channels> levels(*state);
  auto* body = bodyOf<Entries>(state);
  for (int y = 0; y < roi.height; ++y, body += roi.width)
    updateRow(levels, rate, src.rows()[y], mask.row(y), roi.width, body);
  return zebStsOk;
}

}  // namespace

SCENE_MODEL(zebiFGHistogramInitAlloc_8u_C1R, zebiFGHistogramForeground_8u_C1R, zebiFGHistogramUpdate_8u_C1R,
            zebiFGHistogramFree_8u_C1R, ZebiFGHistogramState, ZebiFGHistogramParam, 1)
SCENE_MODEL(zebiFGHistogramInitAlloc_8u_C3R, zebiFGHistogramForeground_8u_C3R, zebiFGHistogramUpdate_8u_C3R,
            zebiFGHistogramFree_8u_C3R, ZebiFGHistogramState, ZebiFGHistogramParam, 3)

}  // namespace zeb
