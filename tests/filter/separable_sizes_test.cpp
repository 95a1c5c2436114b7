// Scratch sizes of the row and column filters: formulas, and sizes beyond 32 bits.
#include <gtest/gtest.h>

#include "zebcv.h"

namespace {

struct SizeCase {
  const char* name;
  ZebStatus (*query)(ZebiSize, int, int*);
  int64_t (*bytes)(int64_t w, int64_t k);
};
#define ROW_SIZE(form, formula)                                    \
  {                                                                \
    "row " #form, zebiFilterRowBorderPipelineGetBufferSize_##form, \
        [](int64_t, int64_t k) -> int64_t { return formula; }      \
  }
#define COLUMN_SIZE(form, formula)                                                \
  {                                                                               \
    "column " #form, zebiFilterColumnPipelineGetBufferSize_##form,                \
        [](int64_t w, int64_t k) -> int64_t { return (void)w, (void)k, formula; } \
  }

const SizeCase sizeCases[] = {
    ROW_SIZE(8u16s_C1R, 2 * k + 2 + 32 * k + k / 4 * 32 + 64),
    ROW_SIZE(8u16s_C3R, 60 * k + 144),
    ROW_SIZE(16s_C1R, 48 * k + 112),
    ROW_SIZE(16s_C3R, 40 * k + 96),
    ROW_SIZE(16u_C1R, 64 * k + 96),
    ROW_SIZE(16u_C3R, 128 * k + 96),
    ROW_SIZE(32f_C1R, 48 * k + 96),
    ROW_SIZE(32f_C3R, 144 * k + 96),
    ROW_SIZE(Low_16s_C1R, 24 * k + 96),
    ROW_SIZE(Low_16s_C3R, 208 * k + 96),
    COLUMN_SIZE(16s_C1R, 12 * ((w + 3) / 4 * 4) + 64),
    COLUMN_SIZE(16s_C3R, 36 * ((w + 3) / 4 * 4) + 64),
    COLUMN_SIZE(16s8u_C1R, 12 * ((w + 3) / 4 * 4) + 64),
    COLUMN_SIZE(16s8u_C3R, 36 * ((w + 3) / 4 * 4) + 64),
    COLUMN_SIZE(16s8s_C1R, 12 * ((w + 3) / 4 * 4) + 64),
    COLUMN_SIZE(16s8s_C3R, 36 * ((w + 3) / 4 * 4) + 64),
    COLUMN_SIZE(16u_C1R, 32 * k + 64 + 32 * ((w + 3) / 4)),
    COLUMN_SIZE(16u_C3R, 32 * k + 64 + 32 * ((3 * w + 3) / 4)),
    COLUMN_SIZE(32f_C1R, 32 * k + 32),
    COLUMN_SIZE(32f_C3R, 32 * k + 32),
    COLUMN_SIZE(Low_16s_C1R, 12 * ((w + 7) / 8 * 8) + 64),
    COLUMN_SIZE(Low_16s_C3R, 36 * ((w + 7) / 8 * 8) + 64),
};

TEST(FilterBufferSize, Formulas) {
  for (const auto& c : sizeCases) {
    for (int width : {1, 3, 4, 5, 7, 8, 9, 640, 1 << 20, INT32_MAX - 8, INT32_MAX})
      for (int k : {1, 2, 3, 4, 5, 8, 31, 4096, 1 << 26, INT32_MAX}) {
        int got = -77;
        const int64_t want = c.bytes(width, k);
        const bool fits = want <= INT32_MAX;
        EXPECT_EQ(c.query({width, 2}, k, &got), fits ? zebStsOk : zebStsErrOverflow) << c.name << width << " " << k;
        EXPECT_EQ(got, fits ? want : -77) << c.name << " " << width << " " << k;
      }
  }
}

}  // namespace
