// Borders of rows: every rule, every side flag, every type and channel count; and the row filters under them.
#include "filter/border.h"

#include "filter/pipeline.h"
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
      for (int p : {INT32_MIN, INT32_MIN + 1, INT32_MAX}) {
        const int source = zeb::borderSource(rule, p, n);
        EXPECT_TRUE(source >= 0 && source < n) << rule << " " << p << " " << n;
      }
}

TEST(Border, KnownTypes) {
  for (ZebiBorderType type : borderTypes) EXPECT_TRUE(zeb::isBorderType(type)) << type;
  for (ZebiBorderType type : {5, 7, 8, 15, 0x15, 0x47, 0x100, 0x101, 0x206, -1})
    EXPECT_FALSE(zeb::isBorderType(type)) << type;
}

// The segments of a row of every length around the kernel's, from exactly as much memory as the rule may read.
template <class T, int channels>
void segmentsEqualReference() {
  Random random;
  for (ZebiBorderType type : borderTypes)
    for (int taps : {1, 2, 3, 5, 8})
      for (int anchor = 0; anchor < taps; ++anchor)
        for (int width : {1, 2, 3, 4, 5, 7, 8, 9, 20}) {
          const int reach = taps - 1, after = reach - anchor;
          const int left = (type & 15) == 6 || (type & 0x40) ? anchor : 0;
          const int right = (type & 15) == 6 || (type & 0x80) ? after : 0;
          const Image<T> row(left + width + right, 1, channels, Layout::random<T>(random), Content::noise, random);
          const std::vector<T> value{noiseValue<T>(random), noiseValue<T>(random), noiseValue<T>(random),
                                     noiseValue<T>(random)};
          const int pixels = static_cast<int>(zeb::borderSegmentPixels(taps));
          Image<T> work(pixels > 0 ? pixels : 1, 1, channels, Layout::random<T>(random));
          const T* const second =
              zeb::fillBorder<T, channels>(row.pixels(left), width, taps, anchor, type, value.data(), work.pixels());
          ASSERT_EQ(second, work.pixels(anchor + reach));
          // Only what an output of the row reads is compared.
          Plane<T> want = work.plane();
          const auto plane = row.plane();
          const auto place = [&](int at, int position) {
            if (position < -anchor || position >= width + after) return;
            for (int c = 0; c < channels; ++c)
              want.at(at, 0, c) = ref::bordered(plane, left, width, position, 0, c, type, value);
          };
          for (int i = 0; i < anchor + reach; ++i) place(i, i - anchor);
          for (int i = 0; i < reach + after; ++i) place(anchor + reach + i, width - reach + i);
          ASSERT_TRUE(agree("fillBorder", work, want))
              << "type " << type << ", taps " << taps << ", anchor " << anchor << ", width " << width;
        }
}

TEST(Border, SegmentsOfEveryTypeAndChannelCount) {
  segmentsEqualReference<Zeb8u, 1>();
  segmentsEqualReference<Zeb8u, 3>();
  segmentsEqualReference<Zeb8u, 4>();
  segmentsEqualReference<Zeb16u, 1>();
  segmentsEqualReference<Zeb16u, 3>();
  segmentsEqualReference<Zeb16u, 4>();
  segmentsEqualReference<Zeb16s, 1>();
  segmentsEqualReference<Zeb16s, 3>();
  segmentsEqualReference<Zeb16s, 4>();
  segmentsEqualReference<Zeb32s, 1>();
  segmentsEqualReference<Zeb32f, 1>();
  segmentsEqualReference<Zeb32f, 3>();
  segmentsEqualReference<Zeb32f, 4>();
}

TEST(Border, TheTwoMirrorsByExample) {
  const Zeb8u row[] = {10, 20, 30};
  Zeb8u out[7];
  zeb::BorderedRow<Zeb8u, 1>(row, 3, zebBorderMirror, nullptr).copy(-2, 5, out);
  EXPECT_EQ(std::vector<Zeb8u>(out, out + 7), (std::vector<Zeb8u>{30, 20, 10, 20, 30, 20, 10}));
  zeb::BorderedRow<Zeb8u, 1>(row, 3, zebBorderMirrorR, nullptr).copy(-2, 5, out);
  EXPECT_EQ(std::vector<Zeb8u>(out, out + 7), (std::vector<Zeb8u>{20, 10, 10, 20, 30, 30, 20}));
}

// The unchecked row filters take the rules and flags that the exported ones refuse.
template <class S, class D, class K, class Filter>
void filtersUnderEveryBorder(const char* name, int channels, Filter filter) {
  Random random;
  for (ZebiBorderType type : borderTypes)
    for (int taps : {3, 5, 6})
      for (int width : {1, 4, 7, 50}) {
        const int anchor = random.within(0, taps - 1);
        const Image<S> src(width + taps - 1, 2, channels, Layout::random<S>(random), Content::noise, random);
        std::vector<S> value(3);
        for (auto& v : value) v = noiseValue<S>(random);
        std::vector<K> kernel(taps);
        for (auto& k : kernel) k = static_cast<K>(random.within(0, 9));
        Image<D> dst(width, 2, channels, Layout::random<D>(random));
        D* rows[] = {dst.pixels(), dst.pixels(0, 1)};
        const Scratch scratch(16384);
        filter(src.pixels(anchor), src.step(), rows, ZebiSize{width, 2}, kernel.data(), taps, anchor, type,
               value.data(), scratch.get());
        ASSERT_TRUE(agree(name, dst, ref::filterRows<D>(src.plane(), anchor, width, kernel, anchor, type, value, 6)))
            << "type " << type << ", taps " << taps << ", anchor " << anchor << ", width " << width;
      }
}

TEST(Border, RowFiltersTakeEveryRule) {
  const auto divided = [](auto function) {
    return [function](auto... a) {
      const auto call = [&](auto src, int step, auto dst, ZebiSize size, auto kernel, int taps, int anchor,
                            ZebiBorderType type, auto value, Zeb8u* buffer) {
        function(src, step, dst, size, kernel, taps, anchor, type, value, 6, buffer);
      };
      call(a...);
    };
  };
  filtersUnderEveryBorder<Zeb8u, Zeb16s, Zeb16s>("8u16s C1", 1, divided(q7_ownFilterRowBorderPipeline_8u16s_C1R));
  filtersUnderEveryBorder<Zeb8u, Zeb16s, Zeb16s>("8u16s C3", 3, divided(q7_ownFilterRowBorderPipeline_8u16s_C3R));
  filtersUnderEveryBorder<Zeb16s, Zeb16s, Zeb16s>("16s C1", 1, divided(q7_ownFilterRowBorderPipeline_16s_C1R));
  filtersUnderEveryBorder<Zeb16u, Zeb16u, Zeb16u>("16u C3", 3, divided(q7_ownFilterRowBorderPipeline_16u_C3R));
  filtersUnderEveryBorder<Zeb32f, Zeb32f, Zeb32f>("32f C1", 1, q7_ownFilterRowBorderPipeline_32f_C1R);
  filtersUnderEveryBorder<Zeb32f, Zeb32f, Zeb32f>("32f C3", 3, q7_ownFilterRowBorderPipeline_32f_C3R);
}

}  // namespace
