// Axis limits from data for every range mode and scale type, the fallback
// limits, the decade rule, vectors with units, the 1-2-5 step, the labels and
// the mapping of values onto axis positions.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/axis_scales.h"
#include "plot/plot_tree.h"
#include "subsurf/plot.h"
#include "units/units_registry.h"

namespace ss = subsurf;

namespace {

ZW_SCALE scale(int type, int mode, float min = ss::kRealNull, float max = ss::kRealNull) {
  ZW_SCALE s = ss::defaultScale();
  s.TYPE = type;
  s.MODE = mode;
  s.MIN = min;
  s.MAX = max;
  return s;
}

ZW_SCALE limitsOf(std::vector<float> values, ZW_SCALE s) {
  const int n = static_cast<int>(values.size());
  ZW_AXLIMS(&n, values.data(), &s);
  return s;
}

#define EXPECT_LIMITS(s, lo, hi)   \
  do {                             \
    EXPECT_FLOAT_EQ((s).MIN, lo);  \
    EXPECT_FLOAT_EQ((s).MAX, hi);  \
  } while (0)

TEST(AxisLimits, ManualWindowOfNoWidthSwitchesToAutoRound) {
  const ZW_SCALE s = limitsOf({1.3f, 7.8f, 4}, scale(ss::kLinear, ss::kManual, 5, 5));
  EXPECT_EQ(s.MODE, ss::kAutoRound);
  EXPECT_LIMITS(s, 0, 8);
}

TEST(AxisLimits, ManualWindowIsKept) {
  const ZW_SCALE s = limitsOf({1.3f, 7.8f}, scale(ss::kLinear, ss::kManual, -2, 3));
  EXPECT_EQ(s.MODE, ss::kManual);
  EXPECT_LIMITS(s, -2, 3);
}

TEST(AxisLimits, ManualUnsetLimitsTakeTheRoundLimitsOfTheData) {
  ZW_SCALE s = limitsOf({1.3f, 7.8f}, scale(ss::kLinear, ss::kManual, ss::kRealNull, 20));
  EXPECT_EQ(s.MODE, ss::kManual);
  EXPECT_LIMITS(s, 0, 20);  // the set maximum stays
  s = limitsOf({1.3f, 7.8f}, scale(ss::kLinear, ss::kManual, ss::kRealNull, ss::kRealNull));
  EXPECT_LIMITS(s, 0, 8);
  // A minimum set without a maximum: the maximum alone comes from the data.
  s = limitsOf({1.3f, 7.8f}, scale(ss::kLinear, ss::kManual, -4, ss::kRealNull));
  EXPECT_LIMITS(s, -4, 8);
}

TEST(AxisLimits, AutoOnEqualValuesGivesTheirDecade) {
  const std::vector<std::pair<float, std::pair<float, float>>> cases = {
      {5, {1, 10}}, {0.5f, {0.1f, 1}}, {0, {0.1f, 1}}, {0.05f, {0.01f, 0.1f}}, {50, {10, 100}},
      {-5, {1, 10}}, {1, {1, 10}}, {2500, {1000, 10000}}};
  for (const auto& [v, want] : cases) {
    const ZW_SCALE s = limitsOf({v, v, v}, scale(ss::kLinear, ss::kAuto));
    EXPECT_FLOAT_EQ(s.MIN, want.first) << v;
    EXPECT_FLOAT_EQ(s.MAX, want.second) << v;
  }
}

TEST(AxisLimits, DecadeRuleAppliesToEveryDataMode) {
  for (int mode : {ss::kAutoRound, ss::kP99P1, ss::kP95P5, ss::kP90P10}) {
    const ZW_SCALE s = limitsOf({50, 50}, scale(ss::kLinear, mode));
    EXPECT_LIMITS(s, 10, 100);
  }
  // A single value in a Manual window of no width, through the switch to Auto-rnd.
  EXPECT_LIMITS(limitsOf({0.05f}, scale(ss::kLinear, ss::kManual, 3, 3)), 0.01f, 0.1f);
}

TEST(AxisLimits, AutoTakesTheExtremesAndNullsTakeNoPart) {
  const ZW_SCALE s = limitsOf({3.5f, ss::kRealNull, -1.25f, 7}, scale(ss::kLinear, ss::kAuto));
  EXPECT_LIMITS(s, -1.25f, 7);
}

TEST(AxisLimits, PercentileModes) {
  std::vector<float> v;
  for (int k = 100; k >= 0; --k) v.push_back(static_cast<float>(k));
  v.push_back(ss::kRealNull);  // not a value: the percentiles are of 0..100
  EXPECT_LIMITS(limitsOf(v, scale(ss::kLinear, ss::kP99P1)), 1, 99);
  EXPECT_LIMITS(limitsOf(v, scale(ss::kLinear, ss::kP95P5)), 5, 95);
  EXPECT_LIMITS(limitsOf(v, scale(ss::kLinear, ss::kP90P10)), 10, 90);
  // Interpolated between ranks: 1st percentile of 0, 10, 20, ..., 100 is 1.
  std::vector<float> tens;
  for (int k = 0; k <= 10; ++k) tens.push_back(10.0f * static_cast<float>(k));
  EXPECT_LIMITS(limitsOf(tens, scale(ss::kLinear, ss::kP99P1)), 1, 99);
}

TEST(AxisLimits, ModesAndTypesOutsideTheirSetsAreClamped) {
  ZW_SCALE s = limitsOf({2, 4}, scale(0, 0, 1, 3));  // Linear, Manual
  EXPECT_EQ(s.TYPE, ss::kLinear);
  EXPECT_EQ(s.MODE, ss::kManual);
  EXPECT_LIMITS(s, 1, 3);
  s = limitsOf({}, scale(99, 42));
  EXPECT_EQ(s.TYPE, ss::kProb);
  EXPECT_EQ(s.MODE, ss::kP90P10);
  EXPECT_LIMITS(s, -3, 3);
}

TEST(AxisLimits, NoValuesGiveTheFallbackOfEachType) {
  const float want[8][2] = {{0, 1}, {0.1f, 100}, {0, 100}, {0, 1}, {0, 1}, {1, 99}, {0, 1}, {-3, 3}};
  for (int type = 1; type <= 8; ++type) {
    for (int mode = 2; mode <= 6; ++mode) {
      const ZW_SCALE s = limitsOf({}, scale(type, mode, 40, 50));
      EXPECT_FLOAT_EQ(s.MIN, want[type - 1][0]) << type << " " << mode;
      EXPECT_FLOAT_EQ(s.MAX, want[type - 1][1]) << type << " " << mode;
    }
    // Only nulls is no values too.
    const ZW_SCALE nulls = limitsOf({ss::kRealNull}, scale(type, ss::kAuto));
    EXPECT_FLOAT_EQ(nulls.MIN, want[type - 1][0]) << type;
  }
}

TEST(AxisLimits, NoValuesKeepOnlyAUsableManualWindow) {
  EXPECT_LIMITS(limitsOf({}, scale(ss::kLinear, ss::kManual, 2, 8)), 2, 8);
  EXPECT_LIMITS(limitsOf({}, scale(ss::kLinear, ss::kManual, 5, 5)), 0, 1);
  EXPECT_LIMITS(limitsOf({}, scale(ss::kLinear, ss::kManual, ss::kRealNull, 8)), 0, 1);
  // On a log axis a limit of 0 or less is no limit.
  EXPECT_LIMITS(limitsOf({}, scale(ss::kLog, ss::kManual, 0, 8)), 0.1f, 100);
}

TEST(AxisLimits, LogAxisIgnoresValuesNotAboveZero) {
  EXPECT_LIMITS(limitsOf({0, -3, -0.5f}, scale(ss::kLog, ss::kAuto)), 0.1f, 100);
  EXPECT_LIMITS(limitsOf({0, -3, 2, 40}, scale(ss::kLog, ss::kAuto)), 2, 40);
  EXPECT_LIMITS(limitsOf({0, 3, 470}, scale(ss::kLog, ss::kAutoRound)), 1, 1000);
}

TEST(AxisLimits, EmptyVectorLimits) {
  DT_RVEC empty{0, nullptr, {1, -1, {}}};
  ZW_SCALE s = scale(ss::kLog, ss::kAuto);
  ZW_RVAXLIMS(&empty, &s);
  EXPECT_LIMITS(s, 0.1f, 10);  // not the 0.1..100 of an axis without data
  for (int type : {1, 3, 4, 5, 6, 7, 8}) {
    s = scale(type, ss::kManual, 4, 6);
    ZW_RVAXLIMS(&empty, &s);
    EXPECT_LIMITS(s, 0, 1);
  }
}

TEST(AxisLimits, VectorIsConvertedIntoTheScalesUnit) {
  const ss::UnitsRegistry& units = ss::unitsRegistry();
  const int depth = units.findSeries("depth");
  ASSERT_GE(depth, 0);
  const int ft = units.findUnit(depth, "ft"), m = units.findUnit(depth, "m");
  ASSERT_GE(ft, 1);
  ASSERT_GE(m, 1);
  std::vector<float> feet = {1000, 3280.84f};
  DT_RVEC v{2, feet.data(), {ft, depth, {}}};
  ss::setFixed(v.VU.CU, "ft");
  ZW_SCALE s = scale(ss::kLinear, ss::kAuto);
  ss::setFixed(s.UNIT, "M");  // unit names match in any case
  ZW_RVAXLIMS(&v, &s);
  EXPECT_NEAR(s.MIN, 304.8f, 1e-3);
  EXPECT_NEAR(s.MAX, 1000.0f, 1e-2);
  EXPECT_EQ(feet[0], 1000.0f);  // the caller's vector is left alone
  // No unit on the scale, an unknown unit, or a vector without series: no conversion.
  for (const char* unit : {"", "furlong"}) {
    ss::setFixed(s.UNIT, unit);
    ZW_RVAXLIMS(&v, &s);
    EXPECT_LIMITS(s, 1000, 3280.84f);
  }
  v.VU.ISER = -1;
  ss::setFixed(s.UNIT, "m");
  ZW_RVAXLIMS(&v, &s);
  EXPECT_LIMITS(s, 1000, 3280.84f);
}

TEST(Step125, ReplacesACountByAOneTwoFiveStep) {
  const std::vector<std::pair<int, int>> cases = {{600, 100}, {300, 50}, {200, 20}, {100, 20}, {7, 1},  {3, 1},
                                                  {1, 1},     {50, 5},   {51, 10},  {5, 1},    {6, 1}, {21, 5},
                                                  {1000, 200}, {5001, 1000}, {0, 1}, {-4, 1}};
  for (const auto& [n, want] : cases) {
    int v = n;
    ZW_125(&v);
    EXPECT_EQ(v, want) << n;
  }
}

TEST(AxisTexts, NamesMonthsAndProbabilityLabels) {
  char names[112];
  ZW_AXNAMES(names);
  EXPECT_EQ(std::string(names, 112),
            "Manual  Auto    Auto-rndP99-P1  P95-P5  P90-P10 Linear  Log     Square  Sqrt    Recip.  Norm    Stan    Prob    ");
  EXPECT_EQ(ss::rangeModeName(3), "Auto-rnd");
  EXPECT_EQ(ss::scaleTypeName(5), "Recip.");
  EXPECT_EQ(ss::scaleTypeName(9), "");
  std::string months;
  for (int m = 1; m <= 12; ++m) {
    char t[3];
    ZW_AXMONTH(&m, t);
    months += std::string(t, 3);
  }
  EXPECT_EQ(months, "JanFebMarAprMayJunJulAugSepOctNovDec");
  std::vector<std::string> labels;
  for (int k = 0; k <= 13; ++k) {
    char t[2];
    ZW_AXPROBLAB(&k, t);
    labels.push_back(std::string(t, 2));
  }
  EXPECT_EQ(labels, (std::vector<std::string>{"99", "95", "90", "80", "70", "60", "50", "40", "30", "20", "10",
                                              " 5", " 1", "  "}));
  EXPECT_EQ(ss::probabilityLabelValue(11), 5);
}

TEST(AxisMapping, EveryTypeMapsItsLimitsToTheEnds) {
  const float limits[8][2] = {{-2, 8}, {0.1f, 1000}, {0, 10}, {0, 100}, {1, 10}, {1, 99}, {-1, 1}, {-3, 3}};
  for (int type = 1; type <= 8; ++type) {
    const ZW_SCALE s = scale(type, ss::kManual, limits[type - 1][0], limits[type - 1][1]);
    float f = 0;
    ZW_NPOS(&s, &s.MIN, &f);
    EXPECT_NEAR(f, 0.0f, 1e-6) << type;
    ZW_NPOS(&s, &s.MAX, &f);
    EXPECT_NEAR(f, 1.0f, 1e-6) << type;
    // And back again from a point inside.
    const float mid = 0.37f;
    float v = 0, back = 0;
    ZW_WPOS(&s, &mid, &v);
    ZW_NPOS(&s, &v, &back);
    EXPECT_NEAR(back, mid, 1e-5) << type;
  }
}

TEST(AxisMapping, ShapesOfTheNonLinearTypes) {
  auto at = [](ZW_SCALE s, float v) {
    float f = 0;
    ZW_NPOS(&s, &v, &f);
    return f;
  };
  EXPECT_NEAR(at(scale(ss::kLog, 1, 1, 1000), 10), 1.0f / 3, 1e-6);
  EXPECT_NEAR(at(scale(ss::kSquare, 1, 0, 10), 5), 0.25f, 1e-6);
  EXPECT_NEAR(at(scale(ss::kSqrt, 1, 0, 100), 25), 0.5f, 1e-6);
  EXPECT_NEAR(at(scale(ss::kRecip, 1, 1, 10), 2), (1 - 0.5f) / (1 - 0.1f), 1e-6);
  EXPECT_NEAR(at(scale(ss::kNorm, 1, 1, 99), 50), 0.5f, 1e-6);
  // 84.13 % lies one standard deviation above the middle: 2.326 deviations to either end.
  EXPECT_NEAR(at(scale(ss::kNorm, 1, 1, 99), 84.134475f), 0.5f + 0.5f / 2.3263479f, 1e-5);
  EXPECT_NEAR(at(scale(ss::kProb, 1, -3, 3), 1), 4.0f / 6, 1e-6);
  // Values an axis cannot show, and nulls, give the null.
  EXPECT_TRUE(ss::isNull(at(scale(ss::kLog, 1, 1, 1000), 0)));
  EXPECT_TRUE(ss::isNull(at(scale(ss::kNorm, 1, 1, 99), 100)));
  EXPECT_TRUE(ss::isNull(at(scale(ss::kLinear, 1, 0, 1), ss::kRealNull)));
  EXPECT_TRUE(ss::isNull(at(scale(ss::kLinear, 1, 2, 2), 2)));
}

TEST(AxisAdjust, TidiesAnEditedScale) {
  ZW_SCALE s = scale(12, -1, -5, 100);
  ZW_AXADJUST(&s);
  EXPECT_EQ(s.TYPE, ss::kProb);
  EXPECT_EQ(s.MODE, ss::kManual);
  s = scale(ss::kLog, ss::kManual, -5, 100);
  ZW_AXADJUST(&s);
  EXPECT_LIMITS(s, 0.1f, 100);
  s = scale(ss::kLinear, ss::kManual, 7, 7);
  ZW_AXADJUST(&s);
  EXPECT_LIMITS(s, 1, 10);
}

class AxisOfCurrentSet : public ::testing::Test {
 protected:
  void SetUp() override { ZW_ZPINIT(); }
  std::string label(int axis) {
    char t[40];
    ZW_AXLABL(&axis, t);
    return ss::fixedText(t, 40);
  }
  void setLabel(int axis, const char* text) {
    char t[40];
    ss::setFixed(t, 40, text);
    int status = 1;
    ZW_AXSETLAB(&axis, t, &status);
    ASSERT_EQ(status, 0);
  }
  void setUnit(int axis, const char* unit) {
    ZW_SCALE s;
    int status = 1;
    ZW_ZPSGETSCALE(&axis, &s, &status);
    ss::setFixed(s.UNIT, unit);
    ZW_ZPSSETSCALE(&axis, &s, &status);
  }
};

TEST_F(AxisOfCurrentSet, PlacementIsStoredPerAxis) {
  int axis = ZW_AXIS_Y, place = 2, status = -1, got = -1;
  ZW_SETAXP(&axis, &place, &status);
  EXPECT_EQ(status, 0);
  ZW_GETAXP(&axis, &got);
  EXPECT_EQ(got, 2);
  place = 4;
  ZW_SETAXP(&axis, &place, &status);
  EXPECT_EQ(status, 1);
  ZW_GETAXP(&axis, &got);
  EXPECT_EQ(got, 2);
  axis = 6;
  ZW_SETAXP(&axis, &place, &status);
  EXPECT_EQ(status, 1);
}

TEST_F(AxisOfCurrentSet, SizesFollowThePage) {
  ZW_SETAXSIZES();
  const ss::PlotSet& a4 = *ss::plotTree().currentSet();
  EXPECT_FLOAT_EQ(a4.axnumht, 0.0175f * 175);  // A4 landscape with default margins: 262 x 175 mm
  EXPECT_FLOAT_EQ(a4.axlabht, 1.2f * a4.axnumht);
  ss::plotTree().current()->layout.pagey = 40;
  ZW_SETAXSIZES();
  EXPECT_FLOAT_EQ(ss::plotTree().currentSet()->axnumht, 2.0f);  // never below 2 mm
}

TEST_F(AxisOfCurrentSet, LabelsNameTheirUnit) {
  setLabel(ZW_AXIS_X, "Porosity");
  EXPECT_EQ(label(ZW_AXIS_X), "Porosity");
  setUnit(ZW_AXIS_X, "frac");
  EXPECT_EQ(label(ZW_AXIS_X), "Porosity (frac)");
  EXPECT_EQ(label(ZW_AXIS_Y), "");
  setUnit(ZW_AXIS_Y, "mD");
  EXPECT_EQ(label(ZW_AXIS_Y), "(mD)");
  ss::plotTree().current()->fields.bllab = 0;
  EXPECT_EQ(label(ZW_AXIS_X), "Porosity");
}

TEST_F(AxisOfCurrentSet, CheckLabelUnitRewritesAStaleUnit) {
  setLabel(ZW_AXIS_Y, "Depth (ft)");
  setUnit(ZW_AXIS_Y, "m");
  int axis = ZW_AXIS_Y, status = -1;
  ZW_CHECKLABUNIT(&axis, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(ss::plotTree().currentSet()->labels[1], "Depth (m)");
  ZW_CHECKLABUNIT(&axis, &status);
  EXPECT_EQ(status, 0);
  setUnit(ZW_AXIS_Y, "");
  ZW_CHECKLABUNIT(&axis, &status);
  EXPECT_EQ(ss::plotTree().currentSet()->labels[1], "Depth");
}

TEST_F(AxisOfCurrentSet, SameScaleSpansEverySet) {
  int status = 0, ax = ZW_AXIS_X;
  ZW_SCALE s = scale(1, 1, 0, 5);
  ZW_ZPSSETSCALE(&ax, &s, &status);
  ZW_ZPSADD(&status);
  s = scale(1, 1, -2, 3);
  ZW_ZPSSETSCALE(&ax, &s, &status);
  ZW_SAMESCALE();
  for (const ss::PlotSet& set : ss::plotTree().current()->sets) EXPECT_LIMITS(set.scales[0], -2, 5);
  EXPECT_EQ(ss::plotTree().current()->fields.axsame, 1);
}

TEST_F(AxisOfCurrentSet, ManyLabelsAtOnce) {
  int status = 0, ax = ZW_AXIS_X;
  ZW_ZPSADD(&status);
  char t[40];
  ss::setFixed(t, 40, "GR");
  ZW_AXSETLABM(&ax, t, &status);
  for (const ss::PlotSet& set : ss::plotTree().current()->sets) EXPECT_EQ(set.labels[0], "GR");
  float f = 0, v = 0.5f;
  ZW_SCALE sc = scale(1, 1, 0, 2);
  ZW_ZPSSETSCALE(&ax, &sc, &status);
  ZW_AXNPOS(&ax, &v, &f);
  EXPECT_FLOAT_EQ(f, 0.25f);
}

}  // namespace
