#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;

template <class T>
using Resize = ZebStatus (*)(const T*, int, T*, int, ZebiSize, Zeb8u*);

template <class T>
struct Form {
  const char* name;
  Resize<T> call;
  int channels;
  bool down;

  ZebiSize destination(int w, int h) const {
    return down ? ZebiSize{(w + 1) / 2, (h + 1) / 2} : ZebiSize{2 * w, 2 * h};
  }
  int scratchBytes(int w) const {
    int bytes = 0;
    const int type = sizeof(T) == 4 ? zeb32f : std::is_signed_v<T> ? zeb8s : zeb8u;
    EXPECT_EQ((down ? zebiPyrDownGetBufSize_Gauss5x5 : zebiPyrUpGetBufSize_Gauss5x5)(w, type, channels, &bytes),
              zebStsOk);
    return bytes;
  }
};

#define FORMS(type)                                                                                             \
  {                                                                                                             \
    {NAMED(zebiPyrDown_Gauss5x5_##type##_C1R), 1, true}, {NAMED(zebiPyrDown_Gauss5x5_##type##_C3R), 3, true},   \
        {NAMED(zebiPyrUp_Gauss5x5_##type##_C1R), 1, false}, {NAMED(zebiPyrUp_Gauss5x5_##type##_C3R), 3, false}, \
  }
const Form<Zeb8u> bytes[] = FORMS(8u);
const Form<Zeb8s> signedBytes[] = FORMS(8s);
const Form<Zeb32f> floats[] = FORMS(32f);

template <class T>
void checkOrder(const Form<T>& form) {
  constexpr int w = 9, h = 5, size = static_cast<int>(sizeof(T));
  Random random;
  const Image<T> src(w, h, form.channels, {}, Content::noise, random);
  const ZebiSize out = form.destination(w, h);
  const Image<T> dst(out.width, out.height, form.channels, {}, Content::noise, random);
  const Scratch scratch(form.scratchBytes(w));
  Contract contract(form.name, form.call, src.pixels(), src.step(), dst.pixels(), dst.step(), src.size(),
                    scratch.get());
  contract.template nulls<0, 2, 5>().template sizes<4>().template hostile<4>();
  contract.template step<1>(src.step(), size).template step<3>(dst.step(), size);
  if (size > 1) contract.template multiple<1>(size).template multiple<3>(size);
  contract.check();
}

TEST(GaussPyramid, ChecksArgumentsInOrder) {
  for (const auto& form : bytes) checkOrder(form);
  for (const auto& form : signedBytes) checkOrder(form);
  for (const auto& form : floats) checkOrder(form);
}

TEST(GaussPyramid, ReportsScratchSizes) {
  struct Query {
    const char* name;
    ZebStatus (*call)(int, ZebDataType, int, int*);
    int unit, per16;
  };
  for (const Query& q :
       {Query{NAMED(zebiPyrDownGetBufSize_Gauss5x5), 4, 96}, Query{NAMED(zebiPyrUpGetBufSize_Gauss5x5), 8, 48}}) {
    int size = 0;
    for (int w : {1, 2, 5, 640, 100001}) {
      ASSERT_EQ(q.call(w, zeb8s, 3, &size), zebStsOk);
      EXPECT_EQ(size, (w * q.unit * 3 + 15) / 16 * q.per16 + 64) << q.name << " " << w;
    }
    size = -7;
    EXPECT_EQ(q.call(0x7FFFFFFF, zeb8u, 1, &size), zebStsErrOverflow);
    EXPECT_EQ(size, -7);
    Contract(q.name, q.call, 10, zeb8u, 1, &size)
        .nulls<3>()
        .with<0>(0, zebStsErrSize)
        .with<2>(2, zebStsErrNumChannels)
        .with<2>(4, zebStsErrNumChannels)
        .with<1>(zeb16u, zebStsErrDataType)
        .check();
  }
}

// Whatever the border rule: one colour stays one colour.
TEST(GaussPyramid, KeepsConstantImages) {
  for (int w : {1, 2, 3, 40}) {
    const Image<Zeb8u> src(ref::Plane<Zeb8u>(w, 3, 1, 200), {});
    for (const auto& form : bytes) {
      if (form.channels != 1) continue;
      const ZebiSize size = form.destination(w, 3);
      const Image<Zeb8u> dst(size.width, size.height, 1, {});
      const Scratch scratch(form.scratchBytes(w));
      ASSERT_EQ(form.call(src.pixels(), src.step(), dst.pixels(), dst.step(), {w, 3}, scratch.get()), zebStsOk);
      EXPECT_TRUE(agree(form.name, dst, ref::Plane<Zeb8u>(size.width, size.height, 1, 200)));
    }
  }
}

}  // namespace
