// Results worked out by hand: where floods meet, labels that run out, what inpainting restores exactly.
#include <gtest/gtest.h>

#include <vector>

#include "zebcv.h"

namespace {

using Row = std::vector<Zeb8u>;

// Markers in a flat row, flooded by either segmentation.
Row flooded(Row marker, int flag, bool gradient) {
  const ZebiSize size = {static_cast<int>(marker.size()), 1};
  const Row flat(marker.size(), 7);
  int bytes = 0;
  EXPECT_EQ(
      (gradient ? zebiSegmentGradientGetBufferSize_8u_C1IR : zebiSegmentWatershedGetBufferSize_8u_C1IR)(size, &bytes),
      zebStsOk);
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  const auto segment = gradient ? zebiSegmentGradient_8u_C1IR : zebiSegmentWatershed_8u_C1IR;
  EXPECT_EQ(segment(flat.data(), size.width, marker.data(), size.width, size, zebiNormL1, flag, buffer.data()),
            zebStsOk);
  return marker;
}

TEST(Segmentation, DividesPlateausMidway) {
  for (const bool gradient : {false, true}) {
    EXPECT_EQ(flooded({4, 0, 0, 0, 9}, 0, gradient), (Row{4, 4, 4, 9, 9}));
    EXPECT_EQ(flooded({4, 0, 0, 0, 9}, zebSegmentBoundary, gradient), (Row{4, 4, 255, 9, 9}));
    EXPECT_EQ(flooded({4, 0, 0, 0, 0, 9}, 0, gradient), (Row{4, 4, 4, 9, 9, 9}));
    EXPECT_EQ(flooded({4, 0, 0, 0, 0, 9}, zebSegmentBoundary, gradient), (Row{4, 4, 4, 255, 9, 9}));
    // A barrier, and the same value as a label.
    EXPECT_EQ(flooded({0, 0, 255, 0, 9, 0}, zebSegmentBoundary, gradient), (Row{0, 0, 255, 9, 9, 9}));
    EXPECT_EQ(flooded({0, 0, 255, 0, 9, 0}, 0, gradient), (Row{255, 255, 255, 255, 9, 9}));
  }
}

TEST(LabelMarkers, StartAgainWhenTheyRunOut) {
  constexpr int pixels = 300;
  Row row(2 * pixels - 1);
  for (size_t i = 0; i < row.size(); i += 2) row[i] = 77;
  const ZebiSize size = {static_cast<int>(row.size()), 1};
  int bytes = 0, number = 0;
  ASSERT_EQ(zebiLabelMarkersGetBufferSize_8u_C1IR(size, &bytes), zebStsOk);
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  ASSERT_EQ(zebiLabelMarkers_8u_C1IR(row.data(), size.width, size, 1, 255, zebiNormInf, &number, buffer.data()),
            zebStsOk);
  EXPECT_EQ(number, pixels);
  EXPECT_EQ(row[2 * 254], 255);
  EXPECT_EQ(row[2 * 255], 1);
  EXPECT_EQ(row[2 * 299], 45);
}

// A ramp under a vertical stroke of one pixel, away from the edges.
TEST(Inpaint, RestoresARamp) {
  constexpr ZebiSize size = {19, 9};
  constexpr int stroke = 9;
  Row ramp, mask(static_cast<size_t>(size.width) * size.height);
  for (int i = 0; i < size.width * size.height; ++i) {
    ramp.push_back(static_cast<Zeb8u>(20 + 9 * (i % size.width)));
    mask[static_cast<size_t>(i)] = i % size.width == stroke;
  }
  Row damaged = ramp, filled(ramp.size());
  for (size_t i = 0; i < mask.size(); ++i)
    if (mask[i]) damaged[i] = 255;
  for (const Zeb32f radius : {1.0f, 3.0f, 5.5f})
    for (const ZebiInpaintMethod method : {zebInpaintTelea, zebInpaintIsophote}) {
      ZebiInpaintState* state = nullptr;
      ASSERT_EQ(zebiInpaintInitAlloc_8u_C1R(&state, mask.data(), size.width, size, radius, method), zebStsOk);
      EXPECT_EQ(zebiInpaint_8u_C1R(damaged.data(), size.width, filled.data(), size.width, size, state), zebStsOk);
      EXPECT_EQ(zebiInpaintFree_8u_C1R(state), zebStsOk);
      EXPECT_EQ(filled, ramp) << "radius " << radius << ", method " << method;
    }
}

}  // namespace
