// Projective transforms: the four corners go where they are told, the
// inverse undoes the transform, and resampling through one moves pixels
// exactly where it should.
#include <gtest/gtest.h>

#include "host/image/projective.h"

namespace subsurf::image {
namespace {

constexpr double kTight = 1e-9;

TEST(Homography, TakesEachCornerToItsImageAndBack) {
  const std::array<PlanePoint, 4> flat{PlanePoint{0, 0}, {400, 0}, {400, 300}, {0, 300}};
  const std::array<PlanePoint, 4> seen{PlanePoint{12, 5}, {390, 20}, {405, 310}, {-3, 290}};
  Homography h;
  ASSERT_TRUE(Homography::fromQuads(flat, seen, h));
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(h.apply(flat[i]).x, seen[i].x, kTight);
    EXPECT_NEAR(h.apply(flat[i]).y, seen[i].y, kTight);
  }
  Homography back;
  ASSERT_TRUE(h.inverse(back));
  const PlanePoint inside{123.5, 77.25};
  const PlanePoint there = back.apply(h.apply(inside));
  EXPECT_NEAR(there.x, inside.x, 1e-7);
  EXPECT_NEAR(there.y, inside.y, 1e-7);
}

TEST(Homography, KeepsStraightLinesStraight) {
  const std::array<PlanePoint, 4> flat{PlanePoint{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  const std::array<PlanePoint, 4> seen{PlanePoint{0.1, 0}, {0.9, 0}, {1, 1}, {0, 1}};
  Homography h;
  ASSERT_TRUE(Homography::fromQuads(flat, seen, h));
  // Three points of one line stay on one line.
  const PlanePoint a = h.apply({0, 0.2}), b = h.apply({0.5, 0.5}), c = h.apply({1, 0.8});
  EXPECT_NEAR((b.x - a.x) * (c.y - a.y) - (c.x - a.x) * (b.y - a.y), 0.0, kTight);
}

TEST(Homography, RefusesThreeCornersOnOneLine) {
  const std::array<PlanePoint, 4> flat{PlanePoint{0, 0}, {1, 0}, {1, 1}, {0, 1}};
  const std::array<PlanePoint, 4> line{PlanePoint{0, 0}, {1, 1}, {2, 2}, {0, 1}};
  Homography h;
  EXPECT_FALSE(Homography::fromQuads(flat, line, h));
  EXPECT_FALSE(Homography::fromQuads(line, flat, h));
  EXPECT_NEAR(h.apply({3, 4}).x, 3.0, kTight);  // left as the identity
}

TEST(WarpPicture, MovesPixelsAndFillsWhatLiesOffTheSource) {
  Raster source(4, 3);
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x) {
      std::uint8_t* p = source.pixel(x, y);
      p[0] = static_cast<std::uint8_t>(10 * x), p[1] = static_cast<std::uint8_t>(10 * y), p[2] = 7;
    }
  // Output pixel (x, y) shows source pixel (x + 1, y): a shift by one column.
  const std::array<PlanePoint, 4> out{PlanePoint{0, 0}, {4, 0}, {4, 3}, {0, 3}};
  const std::array<PlanePoint, 4> src{PlanePoint{1, 0}, {5, 0}, {5, 3}, {1, 3}};
  Homography shift;
  ASSERT_TRUE(Homography::fromQuads(out, src, shift));
  Raster warped(4, 3);
  const std::uint8_t fill[3] = {200, 201, 202};
  warpPicture(source.view(), shift, warped, fill);
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 3; ++x) {
      EXPECT_EQ(warped.pixel(x, y)[0], 10 * (x + 1)) << x << "," << y;
      EXPECT_EQ(warped.pixel(x, y)[1], 10 * y);
    }
    EXPECT_EQ(warped.pixel(3, y)[0], 200);  // off the source's right edge
    EXPECT_EQ(warped.pixel(3, y)[2], 202);
  }
  // Half a pixel over: the mean of two neighbours.
  const std::array<PlanePoint, 4> half{PlanePoint{0.5, 0}, {4.5, 0}, {4.5, 3}, {0.5, 3}};
  Homography halfShift;
  ASSERT_TRUE(Homography::fromQuads(out, half, halfShift));
  warpPicture(source.view(), halfShift, warped, fill);
  EXPECT_EQ(warped.pixel(0, 1)[0], 5);
  EXPECT_EQ(warped.pixel(2, 1)[0], 25);
}

}  // namespace
}  // namespace subsurf::image
