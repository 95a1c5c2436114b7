// Results worked out by hand: where floods meet, labels that run out, what inpainting restores exactly; floods of an
// image too large for the drivers.
#include "reference/regions.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/random.h"
#include "zebcv.h"

namespace {

using Row = std::vector<Zeb8u>;

// Floods the markers by either segmentation.
void flood(const Row& image, Row& markers, ZebiSize size, int flag, bool gradient) {
  int bytes = 0;
  ASSERT_EQ(
      (gradient ? zebiSegmentGradientGetBufferSize_8u_C1IR : zebiSegmentWatershedGetBufferSize_8u_C1IR)(size, &bytes),
      zebStsOk);
  std::vector<Zeb8u> buffer(static_cast<size_t>(bytes));
  const auto segment = gradient ? zebiSegmentGradient_8u_C1IR : zebiSegmentWatershed_8u_C1IR;
  ASSERT_EQ(segment(image.data(), size.width, markers.data(), size.width, size, zebiNormL1, flag, buffer.data()),
            zebStsOk);
}
// In a flat row.
Row flooded(Row markers, int flag, bool gradient) {
  const Row flat(markers.size(), 7);
  flood(flat, markers, {static_cast<int>(markers.size()), 1}, flag, gradient);
  return markers;
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

// So large that pixels further on in the queues are fetched ahead of their turn.
TEST(Segmentation, OfMoreThanTheCacheHolds) {
  constexpr ZebiSize size = {640, 360};
  test::Random random;
  ref::Plane<Zeb8u> image(size.width, size.height), markers = image;
  for (Zeb8u& v : image.data) v = static_cast<Zeb8u>(random.within(0, 3));
  for (int i = 0; i < 40; ++i)
    markers.at(random.within(0, size.width - 1), random.within(0, size.height - 1)) = static_cast<Zeb8u>(1 + i);
  for (const bool gradient : {false, true})
    for (const int flag : {0, int(zebSegmentBoundary)}) {
      Row got = markers.data;
      flood(image.data, got, size, flag, gradient);
      EXPECT_TRUE(got == ref::segmented(image, markers, zebiNormL1, flag != 0, gradient).data)
          << "gradient " << gradient << ", flag " << flag;
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
