// Radial positions on the stereonet for every projection type, the rim and
// centre, the stretched and ring-counted forms, and zero divisors.
#include <gtest/gtest.h>

#include <cmath>

#include "host/nulls.h"
#include "plot/stereonet_projection.h"
#include "subsurf/plot_stereonet.h"

namespace ss = subsurf;

namespace {

float frac(int p, int a, int n, float c, float w, int i) { return R_STEREOFRAC(&p, &a, &n, &c, &w, &i); }

}  // namespace

TEST(StereoRadius, EqualAngleRimAndCentre) {
  EXPECT_NEAR(frac(2, 0, 1, 0, 10, 9), 0.0f, 1e-5);  // dip 90 in the centre
  // Dip 0 on the rim (to the 57.29583 degrees to the radian the net uses).
  EXPECT_NEAR(frac(2, 0, 1, 0, 10, 0), 90.0f, 2e-4);
  // Dip 30: 90·tan(30).
  EXPECT_NEAR(frac(2, 0, 1, 0, 30, 1), 90.0 * std::tan(30.0 / 57.29583), 1e-4);
  EXPECT_NEAR(frac(2, -5, 1, 0, 30, 1), 90.0 * std::tan(30.0 / 57.29583), 1e-4);
}

TEST(StereoRadius, EqualAngleRingsCountInwardFromNine) {
  // a = 90, w = 10: ring i lies at 90·tan((9 − i)·5).
  EXPECT_NEAR(frac(2, 90, 1, 0, 10, 9), 0.0f, 1e-5);
  EXPECT_NEAR(frac(2, 90, 1, 0, 10, 0), 90.0f, 2e-4);
  EXPECT_NEAR(frac(2, 90, 1, 0, 10, 6), 90.0 * std::tan(15.0 / 57.29583), 1e-4);
  EXPECT_NEAR(frac(2, 45, 1, 0, 10, 7), 90.0 * std::tan(20.0 / 57.29583), 1e-4);
}

TEST(StereoRadius, EqualAreaAndItsStretch) {
  EXPECT_NEAR(frac(3, 0, 1, 0, 10, 9), 0.0f, 1e-4);
  EXPECT_NEAR(frac(3, 0, 1, 0, 10, 3), 90.0 * std::sqrt(0.5), 1e-3);
  EXPECT_NEAR(frac(3, 0, 1, 0, 10, 3), 63.64f, 0.01f);
  EXPECT_NEAR(frac(3, 0, 1, 0, 10, 0), 90.0f, 1e-4);
  // a = 90 divides by sqrt(1 − sin 0) = 1: the same as a = 0.
  EXPECT_FLOAT_EQ(frac(3, 90, 1, 0, 10, 3), frac(3, 0, 1, 0, 10, 3));
  // a = 30: dip 60 (30 from the centre) falls on the rim.
  EXPECT_NEAR(frac(3, 30, 1, 0, 10, 6), 90.0f, 1e-3);
  EXPECT_NEAR(frac(3, 30, 1, 0, 10, 9), 0.0f, 1e-3);
}

TEST(StereoRadius, PlainRatiosAndZeroDivisors) {
  EXPECT_FLOAT_EQ(frac(1, 0, 4, 0, 0, 3), 0.75f);
  EXPECT_FLOAT_EQ(frac(7, 12, 4, 9, 5, 3), 0.75f);
  EXPECT_FLOAT_EQ(frac(4, 0, 4, 2, 0, 3), 3.0f);  // 3·2²/4
  EXPECT_EQ(frac(1, 0, 0, 0, 0, 3), ss::kRealNull);
  EXPECT_EQ(frac(4, 0, 0, 2, 0, 3), ss::kRealNull);
  EXPECT_EQ(frac(3, 360, 1, 0, 10, 3), ss::kRealNull);
  EXPECT_EQ(R_STEREOFRAC(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), ss::kRealNull);
}
