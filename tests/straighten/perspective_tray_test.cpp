// Generated trays photographed at an angle: the corners and the homography
// recorded are those the photograph was really drawn with.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <set>

#include "host/drawing/perspective_tray.h"

namespace subsurf {
namespace {

using drawing::PerspectiveTray;
using image::PlanePoint;

double colourDistance(const std::uint8_t* a, const std::uint8_t* b) {
  return std::abs(a[0] - b[0]) + std::abs(a[1] - b[1]) + std::abs(a[2] - b[2]);
}

TEST(PerspectiveTray, CornersAreTheFlatFrameSeenThroughTheHomography) {
  const PerspectiveTray tray = drawing::renderPerspectiveTray(drawing::perspectiveTraySpec(3, 900, 600, 100.0, "W"));
  const image::PixelBox& f = tray.flat.trayBox;
  ASSERT_FALSE(f.empty());
  const PlanePoint frame[4] = {{double(f.left), double(f.top)}, {double(f.right()), double(f.top)},
                               {double(f.right()), double(f.bottom())}, {double(f.left), double(f.bottom())}};
  for (int i = 0; i < 4; ++i) {
    const PlanePoint p = tray.flatToPhoto.apply(frame[i]);
    EXPECT_NEAR(p.x, tray.corners[i].x, 1e-6) << "corner " << i;
    EXPECT_NEAR(p.y, tray.corners[i].y, 1e-6) << "corner " << i;
    EXPECT_GT(p.x, 0.0);
    EXPECT_LT(p.x, 900.0);
    EXPECT_GT(p.y, 0.0);
    EXPECT_LT(p.y, 600.0);
  }
}

TEST(PerspectiveTray, PhotoShowsTheFlatTrayWhereTheHomographyPutsIt) {
  const PerspectiveTray tray = drawing::renderPerspectiveTray(drawing::perspectiveTraySpec(8, 900, 600, 100.0, "W"));
  // At flat points chosen on a grid over the tray, the photograph's pixel at
  // the mapped point has the flat photograph's colour (smooth parts of the
  // tray agree closely; grainy rock less so, so the median is compared).
  std::multiset<double> differences;
  const image::PixelBox& f = tray.flat.trayBox;
  for (int gy = 1; gy < 20; ++gy)
    for (int gx = 1; gx < 20; ++gx) {
      const int fx = f.left + f.width * gx / 20, fy = f.top + f.height * gy / 20;
      const PlanePoint p = tray.flatToPhoto.apply({fx + 0.5, fy + 0.5});
      const int px = static_cast<int>(p.x), py = static_cast<int>(p.y);
      differences.insert(colourDistance(tray.flat.pixels.view().pixel(fx, fy), tray.photo.view().pixel(px, py)));
    }
  auto middle = differences.begin();
  std::advance(middle, differences.size() / 2);
  EXPECT_LT(*middle, 30.0);
}

TEST(PerspectiveTray, SpecsVaryWithTheSeedAndRepeatWithIt) {
  std::set<int> sides, rows;
  for (std::uint64_t seed = 0; seed < 40; ++seed) {
    const auto spec = drawing::perspectiveTraySpec(seed, 1200, 800, 0.0, "W");
    sides.insert(static_cast<int>(spec.farSide));
    rows.insert(spec.tray.rows);
    EXPECT_GE(spec.keystone, 0.05);
    EXPECT_LE(spec.keystone, 0.20);
    EXPECT_LE(std::fabs(spec.rotationDegrees), 6.0);
    EXPECT_EQ(drawing::describeSpec(spec), drawing::describeSpec(drawing::perspectiveTraySpec(seed, 1200, 800, 0.0, "W")));
  }
  EXPECT_EQ(sides.size(), 4u);
  EXPECT_GE(rows.size(), 4u);
}

}  // namespace
}  // namespace subsurf
