// Borders: every rule, every side flag.
#include "filter/border.h"

#include "reference/filter.h"
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

constexpr ZebiBorderType borderTypes[] = {0,    1,    2,    3,    4,    6,    0x40, 0x41, 0x42, 0x43, 0x44, 0x46,
                                          0x80, 0x81, 0x82, 0x83, 0x84, 0xC0, 0xC3, 0xF1, 0x10, 0x23, 0x31, 0xF6};

TEST(Border, SourceOfAPosition) {
  for (int rule : {zebBorderConst, zebBorderRepl, zebBorderWrap, zebBorderMirror, zebBorderMirrorR})
    for (int n = 1; n <= 9; ++n)
      for (int p = -40; p < n + 40; ++p) {
        const int want = ref::borderSource(rule, p, n);
        EXPECT_EQ(zeb::borderSource(rule, p, n), want < 0 ? zeb::borderConstant : want) << rule << " " << p << " " << n;
      }
  for (int p : {-3, 0, 12}) EXPECT_EQ(zeb::borderSource(zebBorderInMem, p, 5), p);
  for (int rule : {zebBorderWrap, zebBorderMirror, zebBorderMirrorR})
    for (int n : {1, 2, 3, INT32_MAX - 1, INT32_MAX})
      for (int64_t p : {int64_t{INT32_MIN}, int64_t{INT32_MIN} + 1, int64_t{INT32_MAX}, int64_t{INT32_MAX} + 7}) {
        const int source = zeb::borderSource(rule, p, n);
        EXPECT_TRUE(source >= 0 && source < n) << rule << " " << p << " " << n;
      }
  constexpr int most = INT32_MAX;
  constexpr int64_t beyond = int64_t{most} + 1;
  EXPECT_EQ(zeb::borderSource(zebBorderRepl, beyond, most), most - 1);
  EXPECT_EQ(zeb::borderSource(zebBorderWrap, beyond, most), 1);
  EXPECT_EQ(zeb::borderSource(zebBorderMirror, beyond, most), most - 3);
  EXPECT_EQ(zeb::borderSource(zebBorderMirrorR, beyond, most), most - 2);
}

TEST(Border, KnownTypes) {
  for (ZebiBorderType type : borderTypes) EXPECT_TRUE(zeb::isBorderType(type)) << type;
  for (ZebiBorderType type : {5, 7, 8, 15, 0x15, 0x47, 0x100, 0x101, 0x206, -1})
    EXPECT_FALSE(zeb::isBorderType(type)) << type;
}

// Ranges of columns on both sides of the edges and wholly beyond one, of rows above, inside and below, from exactly as
// much memory as the rule may read.
template <class T, int channels>
void rangesEqualReference() {
  Random random;
  constexpr int margin = 3, height = 4;
  for (ZebiBorderType type : borderTypes)
    for (int width : {1, 2, 5, 20})
      for (int k = 0; k < 12; ++k) {
        const zeb::Sides in = zeb::sidesInMemory(type);
        const int left = in.left ? margin : 0, right = in.right ? margin : 0, top = in.top ? margin : 0;
        const Image<T> image(left + width + right, top + height + (in.bottom ? margin : 0), channels,
                             Layout::random<T>(random), Content::noise, random);
        std::vector<T> value(channels);
        for (T& v : value) v = noiseValue<T>(random);
        const int from = random.within(-margin, width + margin - 1), to = random.within(from + 1, width + margin);
        const int y = random.within(-margin, height + margin - 1);
        const zeb::BorderedImage source(image.pixels(left, top), image.step(), {width, height},
                                        channels * static_cast<int>(sizeof(T)), type, value.data());
        Image<T> out(to - from, 1, channels, Layout::random<T>(random));
        source.fetch(y, source.columns(from, to), reinterpret_cast<Zeb8u*>(out.pixels()));
        const bool outside = (y < 0 && !in.top) || (y >= height && !in.bottom);
        const int row = outside ? ref::borderSource(type & 15, y, height) : y;
        const auto plane = image.plane();
        Plane<T> want(to - from, 1, channels);
        for (int x = from; x < to; ++x)
          for (int c = 0; c < channels; ++c)
            want.at(x - from, 0, c) = row < 0 && outside
                                          ? value[static_cast<size_t>(c)]
                                          : ref::bordered(plane, left, width, x, top + row, c, type, value);
        ASSERT_TRUE(agree("fetch", out, want))
            << "type " << type << ", columns " << from << ".." << to << " of " << width << ", row " << y;
      }
}

TEST(Border, RangesOfEveryRule) {
  rangesEqualReference<Zeb8u, 1>();
  rangesEqualReference<Zeb8u, 3>();
  rangesEqualReference<Zeb16s, 1>();
  rangesEqualReference<Zeb32f, 4>();
}

}  // namespace
