// Opening, closing, hats and gradient of the photograph; and a badly lit, speckled page made readable.
#include <cmath>
#include <random>

#include "tour.h"

namespace tour {
namespace {

// The left half of one picture and the right half of the other, with a line between them.
Picture halves(const Picture& left, const Picture& right) {
  Picture out = left;
  const int middle = out.width / 2;
  for (int y = 0; y < out.height; ++y) {
    std::copy(right.at(middle, y), right.at(0, y) + right.step(), out.at(middle, y));
    std::fill_n(out.at(middle - 1, y), 2 * out.channels, Zeb8u{255});
  }
  return out;
}

// Every pixel within the radius.
struct Disc {
  explicit Disc(int radius) : size{2 * radius + 1, 2 * radius + 1}, mask(static_cast<size_t>(size.width) * size.width) {
    for (int i = 0; i < size.width * size.width; ++i) {
      const int x = i % size.width - radius, y = i / size.width - radius;
      mask[static_cast<size_t>(i)] = x * x + y * y <= radius * radius + radius;
    }
  }
  ZebiPoint centre() const { return {size.width / 2, size.height / 2}; }

  ZebiSize size;
  std::vector<Zeb8u> mask;
};

// The compositions with one element, for one or three channels.
class Compositions {
 public:
  Compositions(ZebiSize size, int channels, const Disc& disc) : size_(size), channels_(channels) {
    int bytes = 0, scratch = 0;
    requireOk(
        (channels == 1 ? zebiMorphAdvGetSize_8u_C1R : zebiMorphAdvGetSize_8u_C3R)(size, disc.size, &bytes, &scratch));
    memory_.resize(static_cast<size_t>(bytes));
    scratch_.resize(static_cast<size_t>(scratch));
    requireOk((channels == 1 ? zebiMorphAdvInit_8u_C1R : zebiMorphAdvInit_8u_C3R)(state(), size, disc.mask.data(),
                                                                                  disc.size, disc.centre()));
  }

  using Call = decltype(&zebiMorphOpenBorder_8u_C1R);
  Picture run(Call call, const Picture& picture, double* milliseconds = nullptr) {
    Picture out(picture.width, picture.height, channels_);
    const double time = bestTime(
        [&] {
          return call(picture.pixels.data(), picture.step(), out.pixels.data(), out.step(), size_, zebBorderRepl, 0,
                      state(), scratch_.data());
        },
        milliseconds != nullptr ? 9 : 1);
    if (milliseconds != nullptr) *milliseconds = time;
    return out;
  }

 private:
  ZebiMorphAdvState* state() { return reinterpret_cast<ZebiMorphAdvState*>(memory_.data()); }

  ZebiSize size_;
  int channels_;
  std::vector<Zeb8u> memory_, scratch_;
};

void showPhotograph(const Scene& scene, Gallery& gallery) {
  constexpr int radius = 6;
  Compositions color(scene.color.size(), 3, Disc(radius)), gray(scene.gray.size(), 1, Disc(radius));
  double ms = 0;
  Picture picture = color.run(zebiMorphOpenBorder_8u_C3R, scene.color, &ms);
  gallery.add(
      picture,
      format("Opening with a disc of radius %d (MorphOpenBorder): bright details narrower than it are gone.", radius),
      ms);
  picture = color.run(zebiMorphCloseBorder_8u_C3R, scene.color, &ms);
  gallery.add(picture, "Closing with the same disc (MorphCloseBorder): dark details are gone.", ms);
  picture = gray.run(zebiMorphTophatBorder_8u_C1R, scene.gray, &ms);
  for (Zeb8u& v : picture.pixels) v = static_cast<Zeb8u>(std::min(255, 2 * v));
  gallery.add(picture, "Top-hat, twice as bright (MorphTophatBorder): what the opening took away.", ms);
  Compositions thin(scene.gray.size(), 1, Disc(1));
  picture = thin.run(zebiMorphGradientBorder_8u_C1R, scene.gray, &ms);
  for (Zeb8u& v : picture.pixels) v = static_cast<Zeb8u>(std::min(255, 2 * v));
  gallery.add(picture,
              "Gradient with a square of nine pixels, twice as bright (MorphGradientBorder): edges of every direction.",
              ms);
}

// The smallest and the largest value of a square around every pixel.
void showRanks(const Scene& scene, Gallery& gallery) {
  const ZebiSize square = {9, 9};
  const ZebiPoint centre = {4, 4};
  const Picture& color = scene.color;
  Picture least = color, most = color;
  int bytes = 0;
  requireOk(zebiFilterMinGetBufferSize_8u_C3R(color.width, square, &bytes));
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  const auto filtered = [&](auto call, Picture& out) {
    return bestTime([&] {
      return call(color.pixels.data(), color.step(), out.pixels.data(), out.step(), color.size(), square, centre,
                  buffer.data());
    });
  };
  const double ms =
      filtered(zebiFilterMinBorderReplicate_8u_C3R, least) + filtered(zebiFilterMaxBorderReplicate_8u_C3R, most);
  gallery.add(halves(least, most),
              "Minimum, left, and maximum, right, over 9 x 9 pixels, channel by channel (FilterMin, FilterMax).", ms);
}

// Erosion and dilation with a disc, then with a ball that has a height at every position.
void showBoth(const Scene& scene, Gallery& gallery) {
  constexpr int radius = 5;
  const Disc disc(radius);
  const Picture& gray = scene.gray;
  int stateBytes = 0, scratchBytes = 0;
  requireOk(zebiMorphologyBorderGetSize_8u_C1R(gray.width, disc.size, &stateBytes, &scratchBytes));
  std::vector<Zeb8u> memory(static_cast<size_t>(stateBytes)), scratch(static_cast<size_t>(scratchBytes));
  auto* state = reinterpret_cast<ZebiMorphState*>(memory.data());
  requireOk(zebiMorphologyBorderInit_8u_C1R(gray.width, disc.mask.data(), disc.size, state, scratch.data()));
  Picture eroded = gray, dilated = gray;
  const auto flat = [&](auto call, Picture& out) {
    return bestTime([&] {
      return call(gray.pixels.data(), gray.step(), out.pixels.data(), out.step(), gray.size(), zebBorderRepl, 0, state,
                  scratch.data());
    });
  };
  double ms = flat(zebiErodeBorder_8u_C1R, eroded) + flat(zebiDilateBorder_8u_C1R, dilated);
  gallery.add(
      halves(eroded, dilated),
      format("Erosion, left, and dilation, right, with a disc of radius %d (ErodeBorder, DilateBorder).", radius), ms);

  std::vector<Zeb32s> ball(disc.mask.size());
  for (size_t i = 0; i < ball.size(); ++i) {
    const int x = static_cast<int>(i) % disc.size.width - radius, y = static_cast<int>(i) / disc.size.width - radius;
    ball[i] = -6 * (x * x + y * y);
  }
  ZebiMorphGrayState* heights = nullptr;
  requireOk(zebiMorphGrayInitAlloc_8u_C1R(&heights, gray.size(), ball.data(), disc.size, disc.centre()));
  const auto rolling = [&](auto call, Picture& out) {
    return timed([&] {
      return call(gray.pixels.data(), gray.step(), out.pixels.data(), out.step(), gray.size(), zebBorderRepl, heights);
    });
  };
  ms = rolling(zebiGrayErodeBorder_8u_C1R, eroded) + rolling(zebiGrayDilateBorder_8u_C1R, dilated);
  requireOk(zebiMorphGrayFree_8u_C1R(heights));
  gallery.add(
      halves(eroded, dilated),
      "Grayscale erosion, left, and dilation, right (GrayErodeBorder, GrayDilateBorder): a paraboloid of the same "
      "width rolls below and above.",
      ms);
}

// Seven rows of five pixels a letter.
const struct {
  char letter;
  Zeb8u rows[7];
} font[] = {
    {'C', {14, 17, 16, 16, 16, 17, 14}}, {'D', {30, 17, 17, 17, 17, 17, 30}}, {'E', {31, 16, 16, 30, 16, 16, 31}},
    {'G', {14, 17, 16, 23, 17, 17, 15}}, {'H', {17, 17, 17, 31, 17, 17, 17}}, {'I', {14, 4, 4, 4, 4, 4, 14}},
    {'K', {17, 18, 20, 24, 20, 18, 17}}, {'L', {16, 16, 16, 16, 16, 16, 31}}, {'N', {17, 25, 21, 19, 17, 17, 17}},
    {'O', {14, 17, 17, 17, 17, 17, 14}}, {'P', {30, 17, 17, 30, 16, 16, 16}}, {'R', {30, 17, 17, 30, 20, 18, 17}},
    {'S', {15, 16, 16, 14, 1, 1, 30}},   {'T', {31, 4, 4, 4, 4, 4, 4}},       {'A', {14, 17, 17, 31, 17, 17, 17}}};

// Dark letters of strokes four pixels wide on paper that a lamp lights from one corner.
Picture page() {
  constexpr int stroke = 4, pitch = 6 * stroke, width = 640, height = 260;
  Picture out(width, height, 1);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const float dx = (x - 90) / 520.0f, dy = (y - 40) / 420.0f;
      *out.at(x, y) = static_cast<Zeb8u>(45 + 200 * std::exp(-2.5f * (dx * dx + dy * dy)));
    }
  const char* lines[] = {"OPENING AND CLOSING", "ERASE SPECKS", "THEN THE HAT TELLS", "INK AND LIGHT APART"};
  for (int line = 0; line < 4; ++line)
    for (int i = 0; lines[line][i] != 0; ++i)
      for (const auto& glyph : font) {
        if (glyph.letter != lines[line][i]) continue;
        for (int y = 0; y < 7 * stroke; ++y)
          for (int x = 0; x < 5 * stroke; ++x) {
            if (!(glyph.rows[y / stroke] >> (4 - x / stroke) & 1)) continue;
            Zeb8u* p = out.at(28 + i * pitch + x, 24 + line * 58 + y);
            *p = static_cast<Zeb8u>(*p * 3 / 5);
          }
      }
  std::mt19937 engine(3);
  std::uniform_int_distribution<int> column(0, width - 1), row(0, height - 1);
  for (int i = 0; i < 1800; ++i) *out.at(column(engine), row(engine)) = i % 2 ? 255 : 0;
  return out;
}

// Ink is what is darker than the level.
Picture ink(const Picture& picture, int level, bool bright) {
  Picture out = picture;
  for (Zeb8u& v : out.pixels) v = (bright ? v < level : v >= level) ? 255 : 0;
  return out;
}

void showPage(Gallery& gallery) {
  const Picture lit = page();
  gallery.add(lit, "A page: speckled, and lit from one corner.");
  gallery.add(ink(lit, 110, false), "One threshold for all of it: the shadow drowns the words.");
  Compositions specks(lit.size(), 1, Disc(1)), strokes(lit.size(), 1, Disc(6));
  double opening = 0, closing = 0, hat = 0;
  const Picture opened = specks.run(zebiMorphOpenBorder_8u_C1R, lit, &opening);
  const Picture clean = specks.run(zebiMorphCloseBorder_8u_C1R, opened, &closing);
  gallery.add(
      clean,
      "Opening, then closing with a square of nine pixels (MorphOpenBorder, MorphCloseBorder): specks are smaller than "
      "it, strokes are not.",
      opening + closing);
  const Picture dark = strokes.run(zebiMorphBlackhatBorder_8u_C1R, clean, &hat);
  gallery.add(
      ink(dark, 14, true),
      "Black-hat with a disc wider than the strokes (MorphBlackhatBorder), then one threshold: ink relative to the "
      "paper around it.",
      hat);
}

void show(const Scene& scene, Gallery& gallery) {
  gallery.say(
      "Erosion and dilation take the darkest and the brightest pixel under an element. One after the other they "
      "remove what the element does not fit into and keep the rest as it was; what they removed is the hat, and "
      "their difference the gradient.");
  showRanks(scene, gallery);
  showBoth(scene, gallery);
  showPhotograph(scene, gallery);
  showPage(gallery);
}

const Section section(40, "Opening, closing, hats", show);

}  // namespace
}  // namespace tour
