#include "filter/copy_border.h"

#include "filter/bit_rows.h"
#include "reference/morph.h"
#include "support/compare.h"

namespace {

using namespace test;
using ref::Plane;

struct Frame {
  ZebiSize src, dst;
  int top, left, right, bottom;
};

Frame randomFrame(Random& random) {
  Frame f{{random.within(1, 45), random.within(1, 6)}, {}, 0, 0, 0, 0};
  for (int* v : {&f.top, &f.left, &f.right, &f.bottom}) *v = random.within(0, 2) ? random.within(0, 20) : 0;
  f.dst = {f.left + f.src.width + f.right, f.top + f.src.height + f.bottom};
  return f;
}

// The frame of a region, from the definition.
template <class T>
Plane<T> framed(const ref::Region<T>& region, const Frame& f) {
  Plane<T> out(f.dst.width, f.dst.height, region.image->channels);
  for (int y = 0; y < out.height; ++y)
    for (int x = 0; x < out.width; ++x)
      for (int c = 0; c < out.channels; ++c) out.at(x, y, c) = region.at(x - f.left, y - f.top, c);
  return out;
}

template <class T, int channels>
void checkCopies() {
  Random random;
  for (int round = 0; round < 60; ++round) {
    const Frame f = randomFrame(random);
    const int flags = random.within(0, 15);
    const ZebiBorderType border = round % 5 ? zebBorderRepl | flags << 4 : zebBorderInMem;
    const bool all = border == zebBorderInMem;
    const bool top = all || flags & 1, bottom = all || flags & 2, left = all || flags & 4, right = all || flags & 8;
    const int dx = left ? f.left : 0, dy = top ? f.top : 0;
    const Image<T> src(dx + f.src.width + (right ? f.right : 0), dy + f.src.height + (bottom ? f.bottom : 0), channels,
                       Layout::random<T>(random), Content::noise, random);
    const auto plane = src.plane();
    const T* pixels = src.pixels(dx, dy);
    ref::Region<T> region{&plane, dx, dy, f.src.width, f.src.height};
    Image<T> dst(f.dst.width, f.dst.height, channels, Layout::random<T>(random));

    ASSERT_EQ((zeb::copyReplicateBorder<T, channels>(pixels, src.step(), f.src, dst.pixels(), dst.step(), f.dst, f.top,
                                                     f.left)),
              zebStsOk);
    ASSERT_TRUE(agree("copyReplicateBorder", dst, framed(region, f)));

    // In place: the middle is there, the rest of the destination is junk.
    Image<T> frame(f.dst.width, f.dst.height, channels, Layout::random<T>(random), Content::extremes, random);
    for (int y = 0; y < f.src.height; ++y)
      memcpy(frame.pixels(f.left, f.top + y), src.pixels(dx, dy + y), sizeof(T) * channels * f.src.width);
    T* middle = frame.pixels(f.left, f.top);
    ASSERT_EQ((zeb::copyReplicateBorder<T, channels>(middle, frame.step(), f.src, middle, frame.step(), f.dst, f.top,
                                                     f.left)),
              zebStsOk);
    ASSERT_TRUE(agree("copyReplicateBorderInPlace", frame, framed(region, f)));

    T value[channels];
    for (T& v : value) v = noiseValue<T>(random);
    auto constant = framed(region, f);
    for (int y = 0; y < f.dst.height; ++y)
      for (int x = 0; x < f.dst.width; ++x)
        if (x < f.left || x >= f.left + f.src.width || y < f.top || y >= f.top + f.src.height)
          for (int c = 0; c < channels; ++c) constant.at(x, y, c) = value[c];
    ASSERT_EQ((zeb::copyConstBorder<T, channels>(pixels, src.step(), f.src, dst.pixels(), dst.step(), f.dst, f.top,
                                                 f.left, value)),
              zebStsOk);
    ASSERT_TRUE(agree("copyConstBorder", dst, constant));

    region.left = left, region.right = right, region.top = top, region.bottom = bottom;
    ASSERT_EQ((zeb::copyInMemBorder<T, channels>(pixels, src.step(), f.src, dst.pixels(), dst.step(), f.dst, f.top,
                                                 f.left, border)),
              zebStsOk);
    ASSERT_TRUE(agree("copyInMemBorder", dst, framed(region, f))) << "border " << border;
  }
}

TEST(CopyBorder, EqualsDefinition) {
  checkCopies<Zeb8u, 1>();
  checkCopies<Zeb8u, 3>();
  checkCopies<Zeb8u, 4>();
  checkCopies<Zeb16s, 1>();
  checkCopies<Zeb16u, 1>();
  checkCopies<Zeb32s, 1>();
  checkCopies<Zeb32s, 3>();
  checkCopies<Zeb32s, 4>();
  checkCopies<Zeb32f, 1>();
  checkCopies<Zeb32f, 3>();
  checkCopies<Zeb32f, 4>();
}

TEST(CopyBorder, BitPackedEqualsDefinition) {
  Random random;
  for (int round = 0; round < 400; ++round) {
    const Frame f = randomFrame(random);
    const int flags = random.within(0, 15);
    const bool top = flags & 1, bottom = flags & 2, left = flags & 4, right = flags & 8;
    // The region starts on a byte; as many bytes stand before it as its left border needs.
    const int bytesLeft = left ? (f.left + 7) / 8 : 0, dy = top ? f.top : 0;
    const int bytes = bytesLeft + (f.src.width + (right ? f.right : 0) + 7) / 8;
    const Image<Zeb8u> src(bytes, dy + f.src.height + (bottom ? f.bottom : 0), 1, Layout::random<Zeb8u>(random),
                           Content::noise, random);
    Plane<Zeb8u> bits(8 * bytes, src.size().height);
    for (int y = 0; y < bits.height; ++y)
      for (int x = 0; x < bits.width; ++x) bits.at(x, y) = *src.pixels(x / 8, y) >> (7 - x % 8) & 1;
    const ref::Region<Zeb8u> region{&bits, 8 * bytesLeft, dy, f.src.width, f.src.height, left, right, top, bottom};

    Image<Zeb8u> dst((f.dst.width + 7) / 8, f.dst.height, 1, Layout::random<Zeb8u>(random), Content::noise, random);
    auto want = dst.plane();
    const auto frame = framed(region, f);
    for (int y = 0; y < frame.height; ++y)
      for (int x = 0; x < frame.width; ++x) {
        Zeb8u& byte = want.at(x / 8, y);
        const int mask = 0x80 >> x % 8;
        byte = static_cast<Zeb8u>(frame.at(x, y) ? byte | mask : byte & ~mask);
      }
    const Zeb8u* const pixels = src.pixels(bytesLeft, dy);
    ASSERT_EQ(
        flags ? zeb::copyInMemBorder1u(pixels, src.step(), f.src, dst.pixels(), dst.step(), f.dst, f.top, f.left,
                                       zebBorderRepl | flags << 4)
              : zeb::copyReplicateBorder1u(pixels, src.step(), f.src, dst.pixels(), dst.step(), f.dst, f.top, f.left),
        zebStsOk);
    ASSERT_TRUE(agree("a border of bits", dst, want)) << "flags " << flags;
  }
}

TEST(CopyBorder, Checks) {
  Image<Zeb8u> image(9, 8, 1, {});
  const auto copy = [&](const Zeb8u* src, int step, ZebiSize from, ZebiSize to, int top, int left) {
    return zeb::copyReplicateBorder<Zeb8u, 1>(src, step, from, image.pixels(), 9, to, top, left);
  };
  const Zeb8u* p = image.pixels(1);
  EXPECT_EQ(copy(nullptr, 0, {5, 4}, {9, 8}, 2, 1), zebStsErrNullPointer);
  EXPECT_EQ(copy(p, 0, {0, 4}, {9, 8}, 2, 1), zebStsErrStep);
  for (const ZebiSize bad : {ZebiSize{0, 4}, {5, -1}}) {
    EXPECT_EQ(copy(p, 9, bad, {9, 8}, 2, 1), zebStsErrSize);
    EXPECT_EQ(copy(p, 9, {5, 4}, bad, 2, 1), zebStsErrSize);
  }
  for (const ZebiPoint bad : {ZebiPoint{-1, 2}, {1, -1}, {5, 2}, {1, 5}, {INT32_MAX, 2}})
    EXPECT_EQ(copy(p, 9, {5, 4}, {9, 8}, bad.y, bad.x), zebStsErrSize);
}

}  // namespace
