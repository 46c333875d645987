// The chart z-factor: exact on grid points, bilinear inside, linear
// extrapolation beyond every side, and the bracket it keeps between calls.
#include <gtest/gtest.h>

#include <utility>

#include "fluids/fluid_test_support.h"
#include "fluids/z_factor_chart.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::nearRel;

float chart(float tpr, float ppr, int& st) { return FC_GASZ2(&tpr, &ppr, &st); }

TEST(ZFactorChart, GridPointsReadExactly) {
  struct Case { float tpr, ppr, z; };
  for (const Case& c : {Case{1.5f, 1.0f, 0.901f}, Case{1.2f, 2.5f, 0.519f},
                        Case{1.35f, 7.0f, 0.896f}, Case{2.6f, 12.0f, 1.235f}}) {
    int st = 99;
    EXPECT_EQ(chart(c.tpr, c.ppr, st), c.z) << c.tpr << " " << c.ppr;
    EXPECT_EQ(st, 0);
  }
}

TEST(ZFactorChart, InterpolatesInsideACellAndKeepsTheBracket) {
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
  // A failed reading keeps the previous bracket.
  EXPECT_EQ(chart(1.5f, -1.0f, st), kRealNull);
  EXPECT_EQ(c.upperRow(), 8);
  EXPECT_EQ(c.upperColumn(), 5);
  // Between the zero-pressure column and 1.0: ideal gas towards the chart.
  EXPECT_TRUE(nearRel(chart(2.0f, 0.5f, st), 0.985));
  EXPECT_EQ(st, 0);
}

TEST(ZFactorChart, ExtrapolatesBeyondEachSide) {
  struct Case {
    const char* what;
    float tpr, ppr;
    double z;
    int status, row, column;  // -1: bracket not checked
    double rel = testing::kSingleRel;
  };
  // Beyond both axes: ft = 2.25 from rows 2.6/3.0, fp = 8/3 from columns 12/15.
  const double z1 = 1.235 + 2.25 * (1.232 - 1.235), z2 = 1.340 + 2.25 * (1.333 - 1.340);
  for (const Case& c : {
           // ft = (3.2-2.6)/0.4 = 1.5 along column 1.0: 0.996 + 1.5(1.007-0.996).
           Case{"hotter", 3.2f, 1.0f, 1.0125, -1, 14, -1},
           // The last grid temperature or pressure itself already counts as beyond.
           Case{"last row", 3.0f, 1.0f, 1.007, -1, 14, -1},
           // ft = (1.1-1.2)/0.05 = -2 along column 2.0, silently: 0.555 - 2(0.627-0.555).
           Case{"colder", 1.1f, 2.0f, 0.411, 0, 2, -1, 5e-5},
           // Row 1.5, fp = (16-12)/3: 1.278 + (4/3)(1.493-1.278).
           Case{"higher pressure", 1.5f, 16.0f, 1.278 + 4.0 / 3.0 * 0.215, -1, -1, 14},
           Case{"last column", 1.5f, 15.0f, 1.493, -1, -1, 14},
           Case{"both", 3.5f, 20.0f, z1 + 8.0 / 3.0 * (z2 - z1), -1, -1, -1}}) {
    SCOPED_TRACE(c.what);
    int st = 99;
    EXPECT_TRUE(nearRel(chart(c.tpr, c.ppr, st), c.z, c.rel));
    EXPECT_EQ(st, c.status);
    if (c.row >= 0) EXPECT_EQ(zFactorChart().upperRow(), c.row);
    if (c.column >= 0) EXPECT_EQ(zFactorChart().upperColumn(), c.column);
  }
}

TEST(ZFactorChart, ReducedValuesMustBePositive) {
  for (auto [tpr, ppr] : {std::pair{1.5f, 0.0f}, {0.0f, 2.0f}, {kRealNull, kRealNull}}) {
    int st = 0;
    EXPECT_EQ(chart(tpr, ppr, st), kRealNull) << tpr << " " << ppr;
    EXPECT_EQ(st, 1);
  }
}

}  // namespace
}  // namespace subsurf::fluids
