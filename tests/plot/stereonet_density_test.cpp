// Pole density by Kamb counting with exponential smoothing: the normalisation
// on uniform data, a cluster's peak, exact values for one axis, the grid's
// cut-off search against counting every axis, contour levels and lines.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "host/nulls.h"
#include "host/reproducible_noise.h"
#include "plot/stereonet_density.h"

namespace ss = subsurf;

namespace {

using Lcg = ss::ReproducibleNoise;

// Axes spread uniformly over the sphere (plunges of either sign).
std::vector<ss::Orientation> uniformAxes(int n, std::uint64_t seed) {
  Lcg r(seed);
  std::vector<ss::Orientation> out;
  for (int k = 0; k < n; ++k) {
    const double z = 2 * r.uniform() - 1;
    out.push_back({std::asin(z) * 180 / M_PI, 360 * r.uniform()});
  }
  return out;
}

// Axes scattered by about spread degrees around a direction.
std::vector<ss::Orientation> cluster(int n, ss::Orientation at, double spread, std::uint64_t seed) {
  Lcg r(seed);
  std::vector<ss::Orientation> out;
  for (int k = 0; k < n; ++k) {
    const double p = at.plunge + spread * r.normal();
    const double t = at.trend + spread * r.normal() / std::max(0.2, std::cos(p * M_PI / 180));
    out.push_back({std::clamp(p, 0.0, 90.0), std::fmod(t + 360, 360)});
  }
  return out;
}

double f(std::size_t n) { return 2.0 * (1.0 + static_cast<double>(n) / 9.0); }

}  // namespace

TEST(KambDensity, UniformAxesAverageOneUniformAndOneDeviationOfSpread) {
  const auto axes = uniformAxes(20000, 5);
  for (int p : {ss::kEqualArea, ss::kEqualAngle}) {
    ss::DensityGrid g;
    ASSERT_TRUE(ss::kambDensity(axes, p, 51, 3.0, g).isOk());
    EXPECT_NEAR(g.expected / g.deviation, 3.0, 1e-12);  // uniform data sit at Kamb's 3 sigma
    double sum = 0, sum2 = 0;
    int nodes = 0;
    for (int j = 0; j < g.size; ++j)
      for (int i = 0; i < g.size; ++i)
        if (std::hypot(g.x(i), g.x(j)) <= 90) {
          sum += g.multiplesOfUniform(i, j);
          sum2 += g.sigmas(i, j) * g.sigmas(i, j);
          ++nodes;
        }
    const double mean = sum / nodes;
    EXPECT_NEAR(mean, 1.0, 0.03) << p;
    const double sd = std::sqrt(sum2 / nodes - 9.0 * mean * mean);
    EXPECT_NEAR(sd, 1.0, 0.15) << p;
  }
}

TEST(KambDensity, ATightClusterPeaksAtItsMean) {
  const ss::Orientation mean{40, 130};
  auto axes = cluster(500, mean, 4.0, 9);
  const auto noise = uniformAxes(200, 11);
  axes.insert(axes.end(), noise.begin(), noise.end());
  ss::DensityGrid g;
  ASSERT_TRUE(ss::kambDensity(axes, ss::kEqualArea, 101, 3.0, g).isOk());
  ss::NetPoint peak;
  const double most = g.maximumSigmas(&peak);
  const ss::NetPoint expected = ss::projectLine(mean, ss::kEqualArea);
  EXPECT_LT(std::hypot(peak.x - expected.x, peak.y - expected.y), 4.0);  // two nodes of 1.8 units
  EXPECT_GT(most, 30.0);
}

TEST(KambDensity, OneAxisGivesTheKernelItself) {
  // One vertical axis: f = 2(1 + 1/9) = 20/9, D = sqrt(f/2 - 1)/f = 0.15.
  const std::vector<ss::Orientation> one = {{90, 0}};
  ss::DensityGrid g;
  ASSERT_TRUE(ss::kambDensity(one, ss::kEqualArea, 101, 3.0, g).isOk());
  const double fn = f(1), d = std::sqrt(fn / 2 - 1) / fn;
  EXPECT_NEAR(d, 0.15, 1e-12);
  EXPECT_NEAR(g.sigmas(50, 50), 1.0 / 0.15, 1e-9);  // at the axis: weight 1
  EXPECT_NEAR(g.multiplesOfUniform(50, 50), fn, 1e-9);
  EXPECT_NEAR(g.sigmas(0, 50), std::exp(-fn) / 0.15, 1e-9);  // on the rim, square to it
  EXPECT_NEAR(g.sigmas(100, 50), std::exp(-fn) / 0.15, 1e-9);
  // Half-way: the node at x = 45 shows a plunge of asin(1 - 0.25) = 48.59 degrees.
  const double angle = (90 - std::asin(0.75) * 57.29583 * M_PI / 180 * 180 / M_PI) * M_PI / 180;
  EXPECT_NEAR(g.sigmas(75, 50), std::exp(fn * (std::cos(angle) - 1)) / 0.15, 1e-6);
  // An axis counts once however it is given: upward or downward alike.
  const std::vector<ss::Orientation> up = {{-90, 0}};
  ss::DensityGrid g2;
  ASSERT_TRUE(ss::kambDensity(up, ss::kEqualArea, 101, 3.0, g2).isOk());
  EXPECT_NEAR(g2.sigmas(50, 50), 1.0 / 0.15, 1e-9);
  EXPECT_NEAR(g2.sigmas(0, 50), std::exp(-fn) / 0.15, 1e-9);
}

TEST(KambDensity, TheCutOffSearchMatchesCountingEveryAxis) {
  for (int n : {60, 3000}) {
    auto axes = cluster(n / 2, {70, 300}, 8.0, 21);
    const auto rest = uniformAxes(n - n / 2, 23);
    axes.insert(axes.end(), rest.begin(), rest.end());
    for (int p : {ss::kEqualArea, ss::kEqualAngle}) {
      ss::DensityGrid g;
      ASSERT_TRUE(ss::kambDensity(axes, p, 41, 3.0, g).isOk());
      for (int j = 0; j < g.size; ++j)
        for (int i = 0; i < g.size; ++i) {
          const double all = ss::kambSigmasAt(axes, ss::lineAtNetPosition(g.x(i), g.x(j), p), 3.0);
          ASSERT_NEAR(g.sigmas(i, j), all, 1e-9 * std::max(1.0, all)) << n << " " << p << " " << i << "," << j;
        }
    }
  }
}

TEST(KambDensity, ContourLevels) {
  EXPECT_EQ(ss::contourLevels(9.5, 2), (std::vector<double>{2, 4, 6, 8}));
  EXPECT_EQ(ss::contourLevels(8, 2), (std::vector<double>{2, 4, 6, 8}));
  EXPECT_EQ(ss::contourLevels(1.9, 2), std::vector<double>{});
  EXPECT_EQ(ss::contourLevels(100, 2), (std::vector<double>{16, 32, 48, 64, 80, 96}));  // step doubled to 16
  EXPECT_EQ(ss::contourLevels(10, 0), std::vector<double>{});
}

TEST(KambDensity, ContoursOfOneAxisAreCirclesAtTheKernelsRadius) {
  const std::vector<ss::Orientation> one = {{90, 0}};
  for (int p : {ss::kEqualArea, ss::kEqualAngle}) {
    ss::DensityGrid g;
    ASSERT_TRUE(ss::kambDensity(one, p, 101, 3.0, g).isOk());
    const std::vector<double> levels = {2.0, 4.0};
    const auto lines = ss::densityContours(g, levels);
    ASSERT_EQ(lines.size(), 2u);
    for (const auto& line : lines) {
      // exp(f (cos t - 1)) / D = level at the angle t from the axis.
      const double fn = f(1), t = std::acos(1 + std::log(line.level * 0.15) / fn);
      const double radius = ss::projectLine({90 - t * 180 / M_PI, 0}, p).y;
      int points = 0;
      for (std::size_t k = 0; k < line.x.size(); ++k) {
        if (ss::isNull(line.x[k])) continue;
        ++points;
        EXPECT_NEAR(std::hypot(line.x[k], line.y[k]), radius, 0.3) << p << " level " << line.level;
      }
      EXPECT_GT(points, 100);
    }
  }
}

TEST(KambDensity, ContoursStopAtTheRim) {
  // Horizontal axes: the density is highest on the rim and runs on past it.
  const auto axes = cluster(300, {0, 90}, 6.0, 3);
  ss::DensityGrid g;
  ASSERT_TRUE(ss::kambDensity(axes, ss::kEqualArea, 61, 3.0, g).isOk());
  const auto lines = ss::densityContours(g, ss::contourLevels(g.maximumSigmas(), 2));
  ASSERT_FALSE(lines.empty());
  int onRim = 0;
  for (const auto& line : lines)
    for (std::size_t k = 0; k < line.x.size(); ++k) {
      if (ss::isNull(line.x[k])) continue;
      const double r = std::hypot(line.x[k], line.y[k]);
      EXPECT_LE(r, 90.0 + 1e-3);
      onRim += r > 90.0 - 1e-3 ? 1 : 0;
    }
  EXPECT_GT(onRim, 0);
}

TEST(KambDensity, Refused) {
  const std::vector<ss::Orientation> one = {{90, 0}};
  ss::DensityGrid g;
  EXPECT_EQ(ss::kambDensity(one, 4, 50, 3, g).message(), "Projection 4 is not equal-angle (2) or equal-area (3)");
  EXPECT_EQ(ss::kambDensity(one, 3, 2, 3, g).message(), "A density grid of 2 nodes a side is not 3 to 1000");
  EXPECT_EQ(ss::kambDensity(one, 3, 50, 0, g).message(), "A smoothing of 0 is not above 0");
  EXPECT_EQ(ss::kambDensity({}, 3, 50, 3, g).message(), "No valid data points!");
}
