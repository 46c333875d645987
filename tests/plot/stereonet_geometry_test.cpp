// Orientation data on the net: lines and poles, great circles, rose classes
// and the Fisher mean with its precision and cone of confidence.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "host/nulls.h"
#include "plot/stereonet_geometry.h"

namespace ss = subsurf;

namespace {

double radius(ss::NetPoint p) { return std::hypot(p.x, p.y); }

}  // namespace

TEST(StereonetGeometry, LinesFromCentreToRimNorthUp) {
  const auto vertical = ss::projectLine({90, 123}, ss::kEqualArea);
  EXPECT_NEAR(vertical.x, 0, 1e-4);
  EXPECT_NEAR(vertical.y, 0, 1e-4);
  const auto east = ss::projectLine({0, 90}, ss::kEqualAngle);
  EXPECT_NEAR(east.x, 90, 2e-4);
  EXPECT_NEAR(east.y, 0, 1e-9);
  const auto north30 = ss::projectLine({30, 0}, ss::kEqualArea);
  EXPECT_NEAR(north30.x, 0, 1e-9);
  EXPECT_NEAR(north30.y, 90 * std::sqrt(0.5), 1e-3);
  // Equal angle puts it at 90·tan(30), nearer the centre than equal area.
  EXPECT_NEAR(radius(ss::projectLine({30, 0}, ss::kEqualAngle)), 90 * std::tan(M_PI / 6), 1e-3);
}

TEST(StereonetGeometry, PolesOfPlanes) {
  const auto flat = ss::poleOfPlane(0, 0);
  EXPECT_EQ(flat.plunge, 90);
  const auto upright = ss::poleOfPlane(90, 45);
  EXPECT_EQ(upright.plunge, 0);
  EXPECT_EQ(upright.trend, 225);
  EXPECT_EQ(ss::poleOfPlane(40, 300).trend, 120);
}

TEST(StereonetGeometry, GreatCircles) {
  // A vertical plane striking north-south runs through the centre from rim to rim.
  const auto ns = ss::greatCircle(90, 90, ss::kEqualArea, 90);
  ASSERT_EQ(ns.size(), 91u);
  EXPECT_NEAR(ns.front().y, 90, 1e-3);
  EXPECT_NEAR(ns.back().y, -90, 1e-3);
  EXPECT_NEAR(radius(ns[45]), 0, 1e-3);
  for (const auto& p : ns) EXPECT_NEAR(p.x, 0, 1e-3);
  // A horizontal plane is the rim itself.
  for (const auto& p : ss::greatCircle(0, 30, ss::kEqualArea, 36)) EXPECT_NEAR(radius(p), 90, 1e-3);
  // A plane dipping 30 towards east passes 30 below the horizon due east.
  const auto east = ss::greatCircle(30, 90, ss::kEqualArea, 90)[45];
  EXPECT_NEAR(east.x, 90 * std::sqrt(0.5), 1e-3);
  EXPECT_NEAR(east.y, 0, 1e-3);
}

TEST(StereonetGeometry, RoseClassesWrapAroundNorth) {
  std::vector<int> counts;
  const std::vector<double> az = {0, 29.9, 30, 359, 360, 720.5, NAN, ss::kDoubleNull};
  ASSERT_TRUE(ss::roseCounts(az, 30, 0, counts).isOk());
  ASSERT_EQ(counts.size(), 12u);
  EXPECT_EQ(counts[0], 4);
  EXPECT_EQ(counts[1], 1);
  EXPECT_EQ(counts[11], 1);
  ASSERT_TRUE(ss::roseCounts(std::vector<double>{10, 20}, 30, 15, counts).isOk());
  EXPECT_EQ(counts[11], 1);  // 10 lies in 345..15
  EXPECT_EQ(counts[0], 1);
  EXPECT_EQ(ss::roseCounts(az, 7, 0, counts).message(), "A rose class width of 7 degrees does not divide 360");
  EXPECT_EQ(ss::roseCounts(az, 0, 0, counts).message(), "A rose class width of 0 degrees does not divide 360");
}

TEST(StereonetGeometry, FisherMeanOfTwoSymmetricLines) {
  const std::vector<ss::Orientation> lines = {{80, 0}, {80, 180}};
  ss::FisherMean m;
  ASSERT_TRUE(ss::fisherMean(lines, m).isOk());
  EXPECT_NEAR(m.mean.plunge, 90, 1e-9);
  EXPECT_EQ(m.mean.trend, 0.0);  // vertical: no trend from rounding noise
  const double r = 2 * std::sin(80 * M_PI / 180);
  EXPECT_NEAR(m.resultant, r, 1e-12);
  EXPECT_NEAR(m.kappa, 1 / (2 - r), 1e-9);
  // cos(alpha95) = 1 - (n - R)/R * (20^(1/(n-1)) - 1).
  EXPECT_NEAR(std::cos(m.alpha95 * M_PI / 180), 1 - (2 - r) / r * 19, 1e-12);
}

TEST(StereonetGeometry, FisherMeanEdgeCases) {
  ss::FisherMean m;
  const std::vector<ss::Orientation> same = {{40, 120}, {40, 120}, {40, 120}};
  ASSERT_TRUE(ss::fisherMean(same, m).isOk());
  EXPECT_NEAR(m.mean.plunge, 40, 1e-9);
  EXPECT_NEAR(m.mean.trend, 120, 1e-9);
  EXPECT_TRUE(ss::isNull(m.kappa));
  EXPECT_TRUE(ss::isNull(m.alpha95));
  EXPECT_EQ(ss::fisherMean(std::vector<ss::Orientation>{{NAN, 0}}, m).message(), "No valid data points!");
}
