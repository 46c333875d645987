// The chart z-factor: exact on grid points, bilinear inside, linear
// extrapolation beyond every side, and the bracket it keeps between calls.
#include <gtest/gtest.h>

#include "fluids/fluid_test_support.h"
#include "fluids/z_factor_chart.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::nearRel;

float chart(float tpr, float ppr, int& st) { return FC_GASZ2(&tpr, &ppr, &st); }

TEST(ZFactorChart, GridPointsReadExactly) {
  int st = 99;
  EXPECT_EQ(chart(1.5f, 1.0f, st), 0.901f);
  EXPECT_EQ(st, 0);
  EXPECT_EQ(chart(1.2f, 2.5f, st), 0.519f);
  EXPECT_EQ(chart(1.35f, 7.0f, st), 0.896f);
  EXPECT_EQ(chart(2.6f, 12.0f, st), 1.235f);
  EXPECT_EQ(st, 0);
}

TEST(ZFactorChart, InterpolatesInsideACell) {
  int st = 99;
  // Halfway between rows 1.5/1.6 and columns 2.0/2.5:
  // z1 = 0.824 + 0.5(0.861-0.824) = 0.8425, z2 = 0.796 + 0.5(0.840-0.796) = 0.818.
  EXPECT_TRUE(nearRel(chart(1.55f, 2.25f, st), 0.83025));
  EXPECT_EQ(st, 0);
  const ZFactorChart& c = zFactorChart();
  EXPECT_EQ(c.upperRow(), 8);
  EXPECT_EQ(c.upperColumn(), 5);
  EXPECT_TRUE(nearRel(c.temperatureFraction(), 0.5));
  EXPECT_TRUE(nearRel(c.pressureFraction(), 0.5));
  EXPECT_TRUE(nearRel(c.lowerPressureValue(), 0.8425));
  EXPECT_TRUE(nearRel(c.upperPressureValue(), 0.818));
  // Between the zero-pressure column and 1.0: ideal gas towards the chart.
  EXPECT_TRUE(nearRel(chart(2.0f, 0.5f, st), 0.985));
  EXPECT_EQ(st, 0);
}

TEST(ZFactorChart, HotterThanTheChartExtrapolatesTheLastRows) {
  int st = 0;
  // ft = (3.2-2.6)/0.4 = 1.5 along column 1.0: 0.996 + 1.5(1.007-0.996).
  EXPECT_TRUE(nearRel(chart(3.2f, 1.0f, st), 1.0125));
  EXPECT_EQ(st, -1);
  EXPECT_EQ(zFactorChart().upperRow(), 14);
  // The last grid temperature itself already counts as beyond the chart.
  EXPECT_TRUE(nearRel(chart(3.0f, 1.0f, st), 1.007));
  EXPECT_EQ(st, -1);
}

TEST(ZFactorChart, ColderThanTheChartExtrapolatesSilently) {
  int st = 99;
  // ft = (1.1-1.2)/0.05 = -2 along column 2.0: 0.555 - 2(0.627-0.555).
  EXPECT_TRUE(nearRel(chart(1.1f, 2.0f, st), 0.411, 5e-5));
  EXPECT_EQ(st, 0);
  EXPECT_EQ(zFactorChart().upperRow(), 2);
}

TEST(ZFactorChart, HigherPressureThanTheChartExtrapolatesTheLastColumns) {
  int st = 0;
  // Row 1.5, fp = (16-12)/3: 1.278 + (4/3)(1.493-1.278).
  EXPECT_TRUE(nearRel(chart(1.5f, 16.0f, st), 1.278 + 4.0 / 3.0 * 0.215));
  EXPECT_EQ(st, -1);
  EXPECT_EQ(zFactorChart().upperColumn(), 14);
  EXPECT_TRUE(nearRel(chart(1.5f, 15.0f, st), 1.493));
  EXPECT_EQ(st, -1);
}

TEST(ZFactorChart, BeyondBothAxes) {
  int st = 0;
  // ft = 2.25 from rows 2.6/3.0, fp = 8/3 from columns 12/15.
  const double z1 = 1.235 + 2.25 * (1.232 - 1.235);
  const double z2 = 1.340 + 2.25 * (1.333 - 1.340);
  EXPECT_TRUE(nearRel(chart(3.5f, 20.0f, st), z1 + 8.0 / 3.0 * (z2 - z1)));
  EXPECT_EQ(st, -1);
}

TEST(ZFactorChart, ReducedValuesMustBePositive) {
  int st = 0;
  EXPECT_EQ(chart(1.5f, 0.0f, st), kRealNull);
  EXPECT_EQ(st, 1);
  st = 0;
  EXPECT_EQ(chart(0.0f, 2.0f, st), kRealNull);
  EXPECT_EQ(st, 1);
  st = 0;
  EXPECT_EQ(chart(kRealNull, kRealNull, st), kRealNull);
  EXPECT_EQ(st, 1);
}

TEST(ZFactorChart, AFailedReadingKeepsThePreviousBracket) {
  int st;
  chart(1.55f, 2.25f, st);
  chart(1.5f, -1.0f, st);
  EXPECT_EQ(zFactorChart().upperRow(), 8);
  EXPECT_EQ(zFactorChart().upperColumn(), 5);
}

}  // namespace
}  // namespace subsurf::fluids
