// Row and column filters against their definition, their rounding, checks and scratch sizes.
#include "filter/kernels.h"
#include "support/compare.h"
#include "support/contract.h"

namespace {

using namespace test;
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
