// Row and column filters against their definition, their rounding, checks and scratch sizes.
#include "reference/filter.h"

#include "filter/kernels.h"
#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
using ref::Plane;

// ---- The forms. The scratch and the arguments that a form does not have are dropped by its caller. ----

template <class S, class D, class K>
struct RowForm {
  using Source = S;
  using Row = D;
  using Tap = K;
  const char* name;
  int channels;
  bool low;
  ZebStatus (*size)(ZebiSize, int, int*);
  std::function<ZebStatus(const S*, int, D**, ZebiSize, const K*, int, int, ZebiBorderType, const S*, int, Zeb8u*)>
      call;
};

template <class S, class D, class K>
struct ColumnForm {
  using Source = S;
  using Destination = D;
  using Tap = K;
  const char* name;
  int channels;
  bool low;
  ZebStatus (*size)(ZebiSize, int, int*);
  std::function<ZebStatus(const S**, D*, int, ZebiSize, const K*, int, int, Zeb8u*)> call;
};

#define ROW(form, S, D, K, channels, low, border, ...)                                                                \
  RowForm<S, D, K> {                                                                                                  \
    "zebiFilterRowBorderPipeline_" #form, channels, low, zebiFilterRowBorderPipelineGetBufferSize_##form,             \
        [](const S* src, int step, D** dst, ZebiSize roi, const K* kernel, int taps, int anchor, ZebiBorderType type, \
           const S* value, int divisor, Zeb8u* buffer) {                                                              \
          (void)divisor;                                                                                              \
          return zebiFilterRowBorderPipeline_##form(src, step, dst, roi, kernel, taps, anchor, type,                  \
                                                    border value __VA_ARGS__, buffer);                                \
        }                                                                                                             \
  }
#define COLUMN(form, S, D, K, channels, low, ...)                                                                  \
  ColumnForm<S, D, K> {                                                                                            \
    "zebiFilterColumnPipeline_" #form, channels, low, zebiFilterColumnPipelineGetBufferSize_##form,                \
        [](const S** src, D* dst, int step, ZebiSize roi, const K* kernel, int taps, int divisor, Zeb8u* buffer) { \
          (void)divisor;                                                                                           \
          return zebiFilterColumnPipeline_##form(src, dst, step, roi, kernel, taps __VA_ARGS__, buffer);           \
        }                                                                                                          \
  }
#define DIVISOR , divisor

template <class Visit>
void forEachRowForm(Visit visit) {
  visit(ROW(8u16s_C1R, Zeb8u, Zeb16s, Zeb16s, 1, false, *, DIVISOR));
  visit(ROW(8u16s_C3R, Zeb8u, Zeb16s, Zeb16s, 3, false, , DIVISOR));
  visit(ROW(16s_C1R, Zeb16s, Zeb16s, Zeb16s, 1, false, *, DIVISOR));
  visit(ROW(16s_C3R, Zeb16s, Zeb16s, Zeb16s, 3, false, , DIVISOR));
  visit(ROW(16u_C1R, Zeb16u, Zeb16u, Zeb16u, 1, false, *, DIVISOR));
  visit(ROW(16u_C3R, Zeb16u, Zeb16u, Zeb16u, 3, false, , DIVISOR));
  visit(ROW(32f_C1R, Zeb32f, Zeb32f, Zeb32f, 1, false, *));
  visit(ROW(32f_C3R, Zeb32f, Zeb32f, Zeb32f, 3, false, ));
  visit(ROW(Low_16s_C1R, Zeb16s, Zeb16s, Zeb16s, 1, true, *, DIVISOR));
  visit(ROW(Low_16s_C3R, Zeb16s, Zeb16s, Zeb16s, 3, true, , DIVISOR));
}

template <class Visit>
void forEachColumnForm(Visit visit) {
  visit(COLUMN(16s_C1R, Zeb16s, Zeb16s, Zeb16s, 1, false, DIVISOR));
  visit(COLUMN(16s_C3R, Zeb16s, Zeb16s, Zeb16s, 3, false, DIVISOR));
  visit(COLUMN(16s8u_C1R, Zeb16s, Zeb8u, Zeb16s, 1, false, DIVISOR));
  visit(COLUMN(16s8u_C3R, Zeb16s, Zeb8u, Zeb16s, 3, false, DIVISOR));
  visit(COLUMN(16s8s_C1R, Zeb16s, Zeb8s, Zeb16s, 1, false, DIVISOR));
  visit(COLUMN(16s8s_C3R, Zeb16s, Zeb8s, Zeb16s, 3, false, DIVISOR));
  visit(COLUMN(16u_C1R, Zeb16u, Zeb16u, Zeb16u, 1, false, DIVISOR));
  visit(COLUMN(16u_C3R, Zeb16u, Zeb16u, Zeb16u, 3, false, DIVISOR));
  visit(COLUMN(32f_C1R, Zeb32f, Zeb32f, Zeb32f, 1, false));
  visit(COLUMN(32f_C3R, Zeb32f, Zeb32f, Zeb32f, 3, false));
  visit(COLUMN(Low_16s_C1R, Zeb16s, Zeb16s, Zeb16s, 1, true, DIVISOR));
  visit(COLUMN(Low_16s_C3R, Zeb16s, Zeb16s, Zeb16s, 3, true, DIVISOR));
}

// ---- Kernels and divisors ----

const int kernelSizes[] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 31, 40};

// Shorter than the kernel, just as long, a few blocks and their neighbours, both sides of the widths that other builds
// of this library treat differently.
std::vector<int> widthsFor(int taps, Random& random) {
  std::vector<int> widths{1,
                          2,
                          3,
                          taps - 1,
                          taps,
                          taps + 1,
                          15,
                          16,
                          17,
                          taps + 14,
                          taps + 15,
                          taps + 16,
                          taps + 30,
                          taps + 31,
                          taps + 32,
                          random.within(1, 70),
                          random.within(1, 70)};
  if (taps <= 5) widths.insert(widths.end(), {33, 34, 48, 64, 65, 255, 256, 257, 258, 300});
  widths.erase(std::remove(widths.begin(), widths.end(), 0), widths.end());
  return widths;
}

template <class Form>
void rowsEqualReference(const Form& form) {
  using S = typename Form::Source;
  using D = typename Form::Row;
  using K = typename Form::Tap;
  Random random;
  int round = 0;
  for (int taps : kernelSizes)
    for (int anchor : {0, (taps - 1) / 2, taps - 1})
      for (int width : widthsFor(taps, random)) {
        const int height = 1 + round % 3;
        const ZebiBorderType type = (const int[]){zebBorderConst, zebBorderRepl, zebBorderInMem}[(round / 3) % 3];
        const auto kernel = randomKernel<K>(taps, (round / 2) % 4, random);
        const int divisor = randomDivisor(std::is_same_v<S, Zeb16u>, random);
        const bool inMemory = type == zebBorderInMem;
        const int originX = inMemory ? anchor : 0;
        // Exactly what the rule lets the filter read is there.
        const Image<S> src(inMemory ? width + taps - 1 : width, height, form.channels, Layout::random<S>(random),
                           allContents[round % 8], random);
        std::vector<S> value(3);
        for (auto& v : value) v = noiseValue<S>(random);
        Image<D> dst(width, height, form.channels, Layout::random<D>(random));
        const RowPointers<D> rows(dst);
        int bytes = 0;
        ASSERT_EQ(form.size({width, height}, taps, &bytes), zebStsOk);
        const Scratch scratch(bytes, round % 2 ? Place::back : Place::odd);
        ++round;

        ASSERT_EQ(form.call(src.pixels(originX), src.step(), rows.get(), {width, height}, kernel.data(), taps, anchor,
                            type, value.data(), divisor, scratch.get()),
                  zebStsOk);
        ASSERT_TRUE(
            agree(form.name, dst,
                  ref::filterRows<D>(src.plane(), originX, width, kernel, anchor, type, value, divisor, form.low)))
            << taps << " taps, anchor " << anchor << ", width " << width << ", border " << type << ", divisor "
            << divisor;
        ASSERT_TRUE(src.intact() && scratch.intact()) << form.name;
      }
}

TEST(RowFilter, EqualsReference) {
  forEachRowForm([](const auto& form) { rowsEqualReference(form); });
}

template <class Form>
void columnsEqualReference(const Form& form) {
  using S = typename Form::Source;
  using D = typename Form::Destination;
  using K = typename Form::Tap;
  Random random;
  int round = 0;
  for (int taps : kernelSizes)
    for (int width : {1, 2, 5, 6, 10, 11, 15, 16, 17, 31, 32, 33, 37, 47, 48, 63, 64, 65, 255, 256, 257, 258}) {
      if (taps > 9 && width > 70) continue;
      const int height = 1 + random.within(0, 4);
      const auto kernel = randomKernel<K>(taps, (round / 2) % 4, random);
      const int divisor = randomDivisor(false, random);
      Image<S> src(width, height + taps - 1, form.channels, Layout::random<S>(random), allContents[round % 8], random);
      const RowPointers<S> rows(src);
      Image<D> dst(width, height, form.channels, Layout::random<D>(random));
      int bytes = 0;
      ASSERT_EQ(form.size({width, height}, taps, &bytes), zebStsOk);
      const Scratch scratch(bytes, round % 2 ? Place::back : Place::odd);
      ++round;

      ASSERT_EQ(form.call(const_cast<const S**>(rows.get()), dst.pixels(), dst.step(), {width, height}, kernel.data(),
                          taps, divisor, scratch.get()),
                zebStsOk);
      ASSERT_TRUE(agree(form.name, dst, ref::filterColumns<D>(src.plane(), kernel, divisor, form.low)))
          << taps << " taps, width " << width << ", divisor " << divisor;
      ASSERT_TRUE(src.intact() && scratch.intact()) << form.name;
    }
}

TEST(ColumnFilter, EqualsReference) {
  forEachColumnForm([](const auto& form) { columnsEqualReference(form); });
}

// ---- Rounding: an image of ones under one tap of 2 n + 1 and divisor 2 gives n + 0.5 everywhere ----

TEST(RowFilter, BordersTruncateAndTheRestRoundsToEven) {
  const auto rows = [](int width, int taps, int anchor, Zeb16s tap, ZebiBorderType type) {
    std::vector<Zeb8u> src(width + taps, 1), buffer(4096);
    std::vector<Zeb16s> kernel(taps), dst(width, -1);
    kernel[anchor] = tap;
    Zeb16s* row = dst.data();
    EXPECT_EQ(zebiFilterRowBorderPipeline_8u16s_C1R(src.data() + anchor, width, &row, {width, 1}, kernel.data(), taps,
                                                    anchor, type, 1, 2, buffer.data()),
              zebStsOk);
    return dst;
  };
  const auto parts = [](int left, int inner, int right, Zeb16s border, Zeb16s rounded) {
    std::vector<Zeb16s> row(left, border);
    row.resize(left + inner, rounded);
    row.resize(left + inner + right, border);
    return row;
  };
  for (ZebiBorderType type : {zebBorderConst, zebBorderRepl, zebBorderInMem}) {
    EXPECT_EQ(rows(40, 5, 1, 3, type), parts(1, 36, 3, 1, 2));
    EXPECT_EQ(rows(40, 5, 4, 5, type), parts(4, 36, 0, 2, 2));     // 2.5: ties to even
    EXPECT_EQ(rows(40, 5, 0, -3, type), parts(0, 36, 4, -1, -2));  // -1.5
    EXPECT_EQ(rows(9, 4, 2, 3, type), parts(2, 6, 1, 1, 2));       // short rows too
    EXPECT_EQ(rows(16, 3, 1, 3, type), parts(1, 14, 1, 1, 1));     // but not under three taps
    EXPECT_EQ(rows(17, 3, 1, 3, type), parts(1, 15, 1, 1, 2));
    EXPECT_EQ(rows(12, 1, 0, 3, type), parts(0, 12, 0, 1, 2));  // no border at all
    EXPECT_EQ(rows(4, 5, 2, 3, type), parts(2, 0, 2, 1, 2));    // nothing but border
  }
}

TEST(ColumnFilter, WholeBlocksRoundToEvenAndTheirRestTruncates) {
  const auto column = [](int width, Zeb16s tap) {
    const std::vector<Zeb16s> ones(3 * width, 1), kernel{0, tap, 0};
    const Zeb16s* rows[] = {ones.data(), ones.data(), ones.data()};
    std::vector<Zeb8s> dst(3 * width);
    std::vector<Zeb8u> buffer(65536);
    EXPECT_EQ(
        zebiFilterColumnPipeline_16s8s_C3R(rows, dst.data(), 3 * width, {width, 1}, kernel.data(), 3, 2, buffer.data()),
        zebStsOk);
    return dst;
  };
  const auto parts = [](int blocks, int rest, Zeb8s rounded, Zeb8s truncated) {
    std::vector<Zeb8s> row(16 * blocks, rounded);
    row.resize(16 * blocks + rest, truncated);
    return row;
  };
  EXPECT_EQ(column(11, 3), parts(2, 1, 2, 1));  // 33 elements
  EXPECT_EQ(column(11, -3), parts(2, 1, -2, -1));
  EXPECT_EQ(column(11, 5), parts(2, 1, 2, 2));
  EXPECT_EQ(column(5, 3), parts(0, 15, 2, 1));
  EXPECT_EQ(column(16, 3), parts(3, 0, 2, 1));
}

// Sums next to 2^31, under divisors that leave them there, saturate to the right side.
TEST(RowFilter, LargestSumsSaturateUpwards) {
  const std::vector<Zeb16s> src(40, -32768), kernel{-32768, -32767, -1, 0, 0, 0};
  std::vector<Zeb16s> dst(40);
  std::vector<Zeb8u> buffer(4096);
  Zeb16s* row = dst.data();
  // 2^31 - 32768 is 2147450880; one tap of -1 more would wrap.
  for (int divisor : {1, -1}) {
    ASSERT_EQ(zebiFilterRowBorderPipeline_16s_C1R(src.data(), 80, &row, {40, 1}, kernel.data(), 2, 0, zebBorderRepl, 0,
                                                  divisor, buffer.data()),
              zebStsOk);
    EXPECT_EQ(dst, std::vector<Zeb16s>(40, divisor == 1 ? 32767 : -32768));
  }
  const std::vector<Zeb16s> most{32767, 32767, 1, 1, 1, 1};  // -65538 x 32768 wraps to 2^31 - 65536
  ASSERT_EQ(zebiFilterRowBorderPipeline_16s_C1R(src.data(), 80, &row, {40, 1}, most.data(), 6, 0, zebBorderRepl, 0, 1,
                                                buffer.data()),
            zebStsOk);
  EXPECT_EQ(dst, std::vector<Zeb16s>(40, 32767));
  const std::vector<Zeb16s> exactly{32767, 32767, 2};  // -2^31, whose negative is 2^31
  ASSERT_EQ(zebiFilterRowBorderPipeline_16s_C1R(src.data(), 80, &row, {40, 1}, exactly.data(), 3, 0, zebBorderRepl, 0,
                                                -1, buffer.data()),
            zebStsOk);
  EXPECT_EQ(dst, std::vector<Zeb16s>(40, 32767));
}

// ---- Checks ----

constexpr int w = 21, h = 3, taps = 5;

// What the valid call of a row filter is made of, and the faults that all forms share. Argument 8 is the border value,
// the last one the scratch buffer.
template <int channels, class S, class D, class K>
struct ValidRows {
  static constexpr int e = sizeof(S);
  const Image<S> src{w, h, channels, {Place::back, 4 * e, 0}};
  const Image<D> dst{w, h, channels, {}};
  const RowPointers<D> rows{dst}, lacking{dst};
  const std::vector<K> kernel = std::vector<K>(taps, K(1));
  const S value[3] = {};
  const Scratch scratch{16384};

  ValidRows() { lacking.get()[h - 1] = nullptr; }

  auto border() const {
    if constexpr (channels == 1) {
      return value[0];
    } else {
      return static_cast<const S*>(value);
    }
  }
  template <int buffer, class C>
  void addFaults(C& c) const {
    c.template nulls<0, 2, 4, buffer>();
    c.template sizes<3>();
    c.template with<2>(lacking.get(), zebStsErrNullPointer, "a row pointer null");
    c.template with<5>(0, zebStsErrSize).template with<5>(-7, zebStsErrSize);
    c.template with<6>(-1, zebStsErrAnchor).template with<6>(taps, zebStsErrAnchor);
    c.template step<1>(w * channels * e, e).template hostile<3>();
    if (e > 1) c.template multiple<1>(e);
    for (int type : {2, 3, 4, 5, 7, 8, 0x10, 0x41, 0x46, 0xF6, -1})
      c.template with<7>(type, zebStsErrBadArgument, "border type");
  }
};

template <int channels, class S, class D, class K, class B>
void rowContract(const char* name, ZebStatus (*function)(const S*, int, D**, ZebiSize, const K*, int, int,
                                                         ZebiBorderType, B, int, Zeb8u*)) {
  const ValidRows<channels, S, D, K> v;
  Contract c(name, function, v.src.pixels(), v.src.step(), v.rows.get(), ZebiSize{w, h}, v.kernel.data(), taps, 2,
             zebBorderConst, v.border(), 1, v.scratch.get());
  v.template addFaults<10>(c);
  c.template with<9>(0, zebStsErrBadArgument, "divisor");
  if (std::is_same_v<S, Zeb16u>) c.template with<9>(-1, zebStsErrBadArgument, "divisor");
  c.check();
}
template <int channels, class B>
void rowContract(const char* name, ZebStatus (*function)(const Zeb32f*, int, Zeb32f**, ZebiSize, const Zeb32f*, int,
                                                         int, ZebiBorderType, B, Zeb8u*)) {
  const ValidRows<channels, Zeb32f, Zeb32f, Zeb32f> v;
  Contract c(name, function, v.src.pixels(), v.src.step(), v.rows.get(), ZebiSize{w, h}, v.kernel.data(), taps, 2,
             zebBorderConst, v.border(), v.scratch.get());
  v.template addFaults<9>(c);
  c.check();
}

TEST(RowFilter, Checks) {
  rowContract<1>(NAMED(zebiFilterRowBorderPipeline_8u16s_C1R));
  rowContract<3>(NAMED(zebiFilterRowBorderPipeline_8u16s_C3R));
  rowContract<1>(NAMED(zebiFilterRowBorderPipeline_16s_C1R));
  rowContract<3>(NAMED(zebiFilterRowBorderPipeline_16s_C3R));
  rowContract<1>(NAMED(zebiFilterRowBorderPipeline_16u_C1R));
  rowContract<3>(NAMED(zebiFilterRowBorderPipeline_16u_C3R));
  rowContract<1>(NAMED(zebiFilterRowBorderPipeline_32f_C1R));
  rowContract<3>(NAMED(zebiFilterRowBorderPipeline_32f_C3R));
  rowContract<1>(NAMED(zebiFilterRowBorderPipeline_Low_16s_C1R));
  rowContract<3>(NAMED(zebiFilterRowBorderPipeline_Low_16s_C3R));
}

template <int channels, class S, class D, class K>
struct ValidColumns {
  static constexpr int e = sizeof(D);
  const Image<S> src{w, h + taps - 1, channels, {}};
  const Image<D> dst{w, h, channels, {Place::back, 4 * e, 0}};
  const RowPointers<S> rows{src}, noFirst{src}, noLast{src};
  const std::vector<K> kernel = std::vector<K>(taps, K(1));
  const Scratch scratch{16384};

  ValidColumns() {
    noFirst.get()[0] = nullptr;
    noLast.get()[h + taps - 2] = nullptr;
  }
  // Without its first row a call fails even under a kernel size below 1; how many rows there must be depends on that
  // size, so the last row is tried alone.
  template <int buffer, class C>
  void addFaults(C& c, bool last) const {
    c.template nulls<0, 1, 4>().template sizes<3>();
    c.template with<0>(const_cast<const S**>(last ? noLast.get() : noFirst.get()), zebStsErrNullPointer, "a row null");
    if (!last) c.template with<5>(0, zebStsErrSize);
    c.template step<2>(w * channels * e, e).template hostile<3>();
    if (e > 1) c.template multiple<2>(e);
    c.template nulls<buffer>();
  }
};

template <int channels, class S, class D, class K>
void columnContract(const char* name, ZebStatus (*function)(const S**, D*, int, ZebiSize, const K*, int, int, Zeb8u*)) {
  const ValidColumns<channels, S, D, K> v;
  for (bool last : {false, true}) {
    Contract c(name, function, const_cast<const S**>(v.rows.get()), v.dst.pixels(), v.dst.step(), ZebiSize{w, h},
               v.kernel.data(), taps, 1, v.scratch.get());
    v.template addFaults<7>(c, last);
    c.template with<6>(0, zebStsErrBadArgument, "divisor").check();
  }
}
template <int channels>
void columnContract(const char* name,
                    ZebStatus (*function)(const Zeb32f**, Zeb32f*, int, ZebiSize, const Zeb32f*, int, Zeb8u*)) {
  const ValidColumns<channels, Zeb32f, Zeb32f, Zeb32f> v;
  for (bool last : {false, true}) {
    Contract c(name, function, const_cast<const Zeb32f**>(v.rows.get()), v.dst.pixels(), v.dst.step(), ZebiSize{w, h},
               v.kernel.data(), taps, v.scratch.get());
    v.template addFaults<6>(c, last);
    c.check();
  }
}

TEST(ColumnFilter, Checks) {
  columnContract<1>(NAMED(zebiFilterColumnPipeline_16s_C1R));
  columnContract<3>(NAMED(zebiFilterColumnPipeline_16s_C3R));
  columnContract<1>(NAMED(zebiFilterColumnPipeline_16s8u_C1R));
  columnContract<3>(NAMED(zebiFilterColumnPipeline_16s8u_C3R));
  columnContract<1>(NAMED(zebiFilterColumnPipeline_16s8s_C1R));
  columnContract<3>(NAMED(zebiFilterColumnPipeline_16s8s_C3R));
  columnContract<1>(NAMED(zebiFilterColumnPipeline_16u_C1R));
  columnContract<3>(NAMED(zebiFilterColumnPipeline_16u_C3R));
  columnContract<1>(NAMED(zebiFilterColumnPipeline_32f_C1R));
  columnContract<3>(NAMED(zebiFilterColumnPipeline_32f_C3R));
  columnContract<1>(NAMED(zebiFilterColumnPipeline_Low_16s_C1R));
  columnContract<3>(NAMED(zebiFilterColumnPipeline_Low_16s_C3R));
}

// A border value by pointer is needed only where it is read.
TEST(RowFilter, BorderValueMayBeNullWhereItIsNotRead) {
  std::vector<Zeb8u> src(30), buffer(4096);
  std::vector<Zeb16s> kernel(3), dst(30);
  Zeb16s* row = dst.data();
  const auto status = [&](ZebiBorderType type, int width = 8) {
    return zebiFilterRowBorderPipeline_8u16s_C3R(src.data() + 3, 24, &row, {width, 1}, kernel.data(), 3, 1, type,
                                                 nullptr, 1, buffer.data());
  };
  EXPECT_EQ(status(zebBorderRepl), zebStsOk);
  EXPECT_EQ(status(zebBorderInMem), zebStsOk);
  EXPECT_EQ(status(zebBorderConst), zebStsErrNullPointer);
  EXPECT_EQ(status(zebBorderConst, 0), zebStsErrNullPointer);
  EXPECT_EQ(status(zebBorderRepl, 0), zebStsErrSize);
}

}  // namespace
