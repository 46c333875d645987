// Finding a tray's corners: on trays photographed at known angles, on a bare
// table, and on a tray running off the photograph.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "core/tray_corners.h"
#include "host/drawing/perspective_tray.h"

namespace subsurf {
namespace {

// The photograph reduced as the finder is given it (a plain box filter is
// enough for these tests; the programs reduce while decoding).
image::Raster reduced(const image::Raster& photo, int longest) {
  const double scale = std::max(1.0, double(std::max(photo.width(), photo.height())) / longest);
  const int w = static_cast<int>(std::lround(photo.width() / scale)), h = static_cast<int>(std::lround(photo.height() / scale));
  image::Raster out(w, h);
  const image::Homography shrink = [&] {
    image::Homography m;
    image::Homography::fromQuads({image::PlanePoint{0, 0}, {double(w), 0}, {double(w), double(h)}, {0, double(h)}},
                                 {image::PlanePoint{0, 0}, {double(photo.width()), 0},
                                  {double(photo.width()), double(photo.height())}, {0, double(photo.height())}},
                                 m);
    return m;
  }();
  const std::uint8_t black[3] = {0, 0, 0};
  image::warpPicture(photo.view(), shrink, out, black);
  return out;
}

TEST(TrayCorners, FoundWithinAPixelOrTwoOnTraysPhotographedAtAnAngle) {
  const TrayCornerFinder finder;
  int sure = 0;
  for (std::uint64_t seed : {2u, 5u, 9u, 14u, 23u}) {
    const auto spec = drawing::perspectiveTraySpec(seed, 1000, 660, 10.0, "W");
    const drawing::PerspectiveTray tray = drawing::renderPerspectiveTray(spec);
    const TrayCornerDetection found = finder.find(tray.photo.view(), 1000, 660);
    ASSERT_TRUE(found.found) << drawing::describeSpec(spec) << ": " << found.doubt;
    TrayCorners want = tray.corners;
    ASSERT_TRUE(orderTrayCorners(want, 1000, 660));
    double worst = 0;
    for (int i = 0; i < 4; ++i)
      worst = std::max(worst, std::hypot(found.corners[i].x - want[i].x, found.corners[i].y - want[i].y));
    if (found.sure()) {
      ++sure;
      EXPECT_EQ(found.doubt, "");
      EXPECT_LT(worst, 2.5) << drawing::describeSpec(spec) << ": corners found " << cornersText(found.corners)
                            << ", true " << cornersText(want);
    }
  }
  EXPECT_GE(sure, 4);
}

TEST(TrayCorners, CornersAreGivenInPixelsOfTheFullPhotograph) {
  const auto spec = drawing::perspectiveTraySpec(9, 1800, 1200, 10.0, "W");
  const drawing::PerspectiveTray tray = drawing::renderPerspectiveTray(spec);
  const image::Raster small = reduced(tray.photo, TrayCornerFinder::kWorkingSize);
  ASSERT_LT(small.width(), 1800);
  const TrayCornerDetection found = TrayCornerFinder().find(small.view(), 1800, 1200);
  ASSERT_TRUE(found.sure()) << found.confidence << " " << found.doubt;
  TrayCorners want = tray.corners;
  ASSERT_TRUE(orderTrayCorners(want, 1800, 1200));
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(found.corners[i].x, want[i].x, 4.0) << i;
    EXPECT_NEAR(found.corners[i].y, want[i].y, 4.0) << i;
  }
}

TEST(TrayCorners, ABareTableHasNoTray) {
  drawing::SampleTraySpec spec;
  spec.width = 600;
  spec.height = 400;
  image::Raster table(600, 400);
  for (int y = 0; y < 400; ++y)
    for (int x = 0; x < 600; ++x) drawing::tableColourAt(spec, x, y, table.pixel(x, y));
  const TrayCornerDetection found = TrayCornerFinder().find(table.view(), 600, 400);
  EXPECT_FALSE(found.sure());
  EXPECT_EQ(found.confidence, 0.0);
  EXPECT_EQ(found.doubt, "no tray stands out from the table");
}

TEST(TrayCorners, ATrayRunningOffThePhotoIsLeftForAPerson) {
  const drawing::PerspectiveTray tray = drawing::renderPerspectiveTray(drawing::perspectiveTraySpec(5, 1000, 660, 10.0, "W"));
  // The right-hand fifth of the photograph cut away: the tray runs off it.
  image::Raster cut(800, 660);
  for (int y = 0; y < 660; ++y) std::copy_n(tray.photo.row(y), 3 * 800, cut.row(y));
  const TrayCornerDetection found = TrayCornerFinder().find(cut.view(), 800, 660);
  EXPECT_FALSE(found.sure());
  EXPECT_LT(found.confidence, TrayCornerFinder::kConfidenceThreshold);
  EXPECT_EQ(found.doubt, "the tray reaches the edge of the photo");
}

TEST(TrayCorners, ATinyPictureIsRefused) {
  const image::Raster tiny(10, 10);
  const TrayCornerDetection found = TrayCornerFinder().find(tiny.view(), 10, 10);
  EXPECT_FALSE(found.found);
  EXPECT_EQ(found.doubt, "the photo is too small");
}

}  // namespace
}  // namespace subsurf
