// Rows of results that a window of rows keeps.
#include "filter/row_results.h"

#include <gtest/gtest.h>

namespace {

// Rows that follow each other lie in places that do, round and round, for every kernel that has a buffer. Nothing is
// read or written there.
TEST(RowWindow, KeepsRowsInTurn) {
  constexpr int stride = 96, height = INT32_MAX;
  const Zeb8u pixel = 0;
  const zeb::BorderedImage source(&pixel, 1, {1, height}, 1, zebBorderInMem, &pixel);
  for (const int kept : {1, 3, 255, 256, 257, 16777213, 16777215}) {
    auto* const first = reinterpret_cast<Zeb8u*>(uintptr_t{4096});
    const int64_t bytes = int64_t{kept + 1} * stride + int64_t{kept} * static_cast<int64_t>(sizeof(void*)) + 64;
    zeb::Scratch scratch(first, bytes);
    const zeb::RowWindow window(source, kept, stride, scratch);
    const int64_t above = kept > zeb::RowWindow::farthest ? kept : zeb::RowWindow::farthest;
    for (const int64_t from : {-above, int64_t{-5}, int64_t{255}, int64_t{767}, int64_t{height} + kept - 9})
      for (int64_t row = from; row < from + 8; ++row) {
        const auto here = window.slot(row) - first, next = window.slot(row + 1) - first;
        ASSERT_TRUE(here >= 0 && here / stride < kept) << kept << " rows kept, row " << row;
        EXPECT_EQ(next / stride, (here / stride + 1) % kept) << kept << " rows kept, row " << row;
      }
  }
}

}  // namespace
