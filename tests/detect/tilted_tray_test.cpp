// Rows cut through a projective transform from a tray photographed at a
// known angle (camera turned and tilted) match the rows cut from the same
// tray photographed square on.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "host/drawing/varied_tray.h"
#include "tray_test_support.h"
#include "host/image/projective.h"

namespace subsurf {
namespace {

// Mean absolute difference of brightness between two pictures of one scene at
// slightly different sizes, over a grid of matching relative positions;
// `shift` moves the second picture's positions down by that share of its height.
double meanDifference(const image::Raster& a, const image::Raster& b, double shift) {
  double sum = 0;
  int n = 0;
  for (double v = 0.1; v < 0.9; v += 0.02) {
    for (double u = 0.05; u < 0.95; u += 0.005) {
      const std::uint8_t* p = a.pixel(static_cast<int>(u * a.width()), static_cast<int>(v * a.height()));
      const std::uint8_t* q = b.pixel(static_cast<int>(u * b.width()), static_cast<int>((v + shift) * b.height()));
      sum += std::abs((p[0] + p[1] + p[2]) - (q[0] + q[1] + q[2])) / 3.0;
      ++n;
    }
  }
  return sum / n;
}

TEST(TiltedTray, RowsCutFromTheTiltedPhotographMatchTheFlatOnes) {
  drawing::VariedTraySpec flat = testing::squareOnTray(900, 600, 4, 21);
  drawing::VariedTraySpec tilted = flat;
  tilted.rotationDegrees = 0.8;
  tilted.keystone = 0.03;
  const drawing::VariedTray square = drawing::renderVariedTray(flat);
  const drawing::VariedTray angled = drawing::renderVariedTray(tilted);
  ASSERT_EQ(square.rows.size(), 4u);
  ASSERT_EQ(angled.rows.size(), 4u);
  const std::uint8_t fill[3] = {0, 0, 0};
  for (std::size_t k = 0; k < 4; ++k) {
    SCOPED_TRACE(k + 1);
    image::Raster a, b;
    ASSERT_TRUE(image::cutQuadrilateral(square.pixels.view(), square.rows[k].corners, a, fill));
    ASSERT_TRUE(image::cutQuadrilateral(angled.pixels.view(), angled.rows[k].corners, b, fill));
    // Under the tilt a row further from the camera looks smaller, by at most
    // the tilt's share; its cut keeps the row's proportions.
    EXPECT_GE(b.width(), (1.0 - tilted.keystone) * a.width() - 2);
    EXPECT_LE(b.width(), a.width() + 2);
    EXPECT_GE(b.height(), (1.0 - tilted.keystone) * a.height() - 2);
    EXPECT_LE(b.height(), a.height() + 2);
    const double aligned = meanDifference(a, b, 0.0);
    const double offByTwoPixels = meanDifference(a, b, 2.0 / b.height());
    EXPECT_LT(aligned, 8.0);
    EXPECT_GT(offByTwoPixels, 1.3 * aligned);
  }
}

TEST(TiltedTray, ASquareCutOfAnUprightRectangleIsThePlainCrop) {
  drawing::VariedTraySpec flat = testing::squareOnTray(600, 400, 2, 4);
  const drawing::VariedTray tray = drawing::renderVariedTray(flat);
  const image::PixelBox box = tray.rows[1].box;
  const std::array<image::PlanePoint, 4> corners{
      image::PlanePoint{double(box.left), double(box.top)}, {double(box.right()), double(box.top)},
      {double(box.right()), double(box.bottom())}, {double(box.left), double(box.bottom())}};
  image::Raster cut;
  const std::uint8_t fill[3] = {0, 0, 0};
  ASSERT_TRUE(image::cutQuadrilateral(tray.pixels.view(), corners, cut, fill));
  ASSERT_EQ(cut.width(), box.width);
  ASSERT_EQ(cut.height(), box.height);
  for (int y = 0; y < box.height; y += 7)
    for (int x = 0; x < box.width; x += 5)
      ASSERT_EQ(std::memcmp(cut.pixel(x, y), tray.pixels.pixel(box.left + x, box.top + y), 3), 0) << x << "," << y;

  const std::array<image::PlanePoint, 4> line{image::PlanePoint{0, 0}, {10, 10}, {20, 20}, {0, 20}};
  EXPECT_FALSE(image::cutQuadrilateral(tray.pixels.view(), line, cut, fill));
  EXPECT_TRUE(cut.empty());
}

}  // namespace
}  // namespace subsurf
