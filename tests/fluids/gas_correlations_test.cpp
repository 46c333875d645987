// Gas correlations through the C interface, checked against values worked out
// by hand in double precision; and the chart z-factor: exact on grid points,
// bilinear inside, linear extrapolation beyond every side, and the bracket it
// keeps between calls.
#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "fluids/fluid_test_support.h"
#include "fluids/z_factor_chart.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::nearRel;

TEST(GasPseudoCritical, ImpurityTermsKeepTheirSigns) {
  // From 670.25 psia / 374.45 degR for a clean 0.65 gas, one impurity at a
  // time: pressure +432.9 N2, -167.3 CO2, +654.0 H2S; temperature -167.3 N2,
  // +279.9 CO2, -127.0 H2S.
  struct Case { float g, n2, co2, h2s; double pcp, pct; };
  for (const Case& c : {Case{0.65f, 0, 0, 0, 670.25, 374.45},
                        Case{0.65f, 0.1f, 0, 0, 670.25 + 43.29, 374.45 - 16.73},
                        Case{0.65f, 0, 0.1f, 0, 670.25 - 16.73, 374.45 + 27.99},
                        Case{0.65f, 0, 0, 0.1f, 670.25 + 65.4, 374.45 - 12.7},
                        Case{0.7f, 0.05f, 0.1f, 0.02f, 686.495, 408.185}}) {
    SCOPED_TRACE(::testing::Message() << c.g << " " << c.n2 << " " << c.co2 << " " << c.h2s);
    Case a = c;
    int st = 99;
    EXPECT_TRUE(nearRel(FC_GASPCP(&a.g, &a.n2, &a.co2, &a.h2s, &st), c.pcp));
    EXPECT_EQ(st, 0);
    st = 99;
    EXPECT_TRUE(nearRel(FC_GASPCT(&a.g, &a.n2, &a.co2, &a.h2s, &st), c.pct));
    EXPECT_EQ(st, 0);
  }
}

TEST(GasPseudoCritical, NegativeFractionsAreClampedAndWrittenBack) {
  float g = 0.65f, n2 = -0.02f, co2 = -0.1f, h2s = 0.03f;
  int st;
  EXPECT_TRUE(nearRel(FC_GASPCP(&g, &n2, &co2, &h2s, &st), 670.25 + 654.0 * 0.03));
  EXPECT_EQ(n2, 0.0f);
  EXPECT_EQ(co2, 0.0f);
  EXPECT_EQ(h2s, 0.03f);
  float co2b = -0.5f, zero = 0.0f, zero2 = 0.0f;
  EXPECT_TRUE(nearRel(FC_GASPCT(&g, &zero, &co2b, &zero2, &st), 374.45));
  EXPECT_EQ(co2b, 0.0f);
}

TEST(GasPseudoCritical, GravityNotPositiveGivesNullAndLeavesFractions) {
  for (float g : {0.0f, -0.7f, kRealNull}) {
    float n2 = -0.1f, co2 = 0.0f, h2s = 0.0f;
    int st = 0;
    EXPECT_EQ(FC_GASPCP(&g, &n2, &co2, &h2s, &st), kRealNull);
    EXPECT_EQ(st, 1);
    st = 0;
    EXPECT_EQ(FC_GASPCT(&g, &n2, &co2, &h2s, &st), kRealNull);
    EXPECT_EQ(st, 1);
    EXPECT_EQ(n2, -0.1f);
    float p = 2000.0f, t = 640.0f, tpr = 0.0f, ppr = 0.0f;
    FC_GASRED1(&g, &n2, &co2, &h2s, &p, &t, &tpr, &ppr, &st);
    EXPECT_EQ(st, 1);
    EXPECT_EQ(tpr, kRealNull);
    EXPECT_EQ(ppr, kRealNull);
  }
}

TEST(GasPseudoReduced, DividesByThePseudoCriticals) {
  float g = 0.65f, n2 = 0.0f, co2 = -0.2f, h2s = 0.0f, p = 2000.0f, t = 640.0f, tpr, ppr;
  int st = 99;
  FC_GASRED1(&g, &n2, &co2, &h2s, &p, &t, &tpr, &ppr, &st);
  EXPECT_EQ(st, 0);
  EXPECT_TRUE(nearRel(tpr, 640.0 / 374.45));
  EXPECT_TRUE(nearRel(ppr, 2000.0 / 670.25));
  EXPECT_EQ(co2, 0.0f);  // clamped and written back here too
}

// Reduced densities solved in double precision to 1e-12 (NAN: value not
// checked), and the z-factor 0.27 Ppr / (rho Tpr) from them. Outside the fit's
// range (Tpr 1.05..3, Ppr 0..30, edges inside) the status is -1 but the
// iteration still runs.
TEST(GasReducedDensity, ValuesAndRangeStatus) {
  struct Case { float tpr, ppr; double rho; int status; double z = NAN; };
  for (const Case& c : {Case{1.5f, 2.0f, 0.4386697044520073, 0, 0.8206630098828397},
                        Case{2.0f, 5.0f, 0.7020010135319742, 0},
                        Case{1.3f, 10.0f, 1.8062490502000135, 0},
                        Case{2.5f, 20.0f, 1.3912541011043125, 0},
                        Case{1.5f, 0.0f, 0.0, 0},  // zero after one step
                        Case{1.02f, 0.5f, 0.16335103489043692, -1, 0.8102363187673869},
                        // Below the chart's first row (1.2) but inside this fit's range.
                        Case{1.1f, 1.0f, 0.36313476973156894, 0},
                        Case{1.05f, 1.0f, NAN, 0}, Case{3.0f, 1.0f, NAN, 0},
                        Case{1.5f, 30.0f, NAN, 0}, Case{1.5f, 30.5f, NAN, -1},
                        Case{1.5f, -0.5f, NAN, -1},
                        // Far below the fit's temperatures Newton wanders without
                        // settling; it stops at its cap with the last iterate.
                        Case{0.6f, 1.0f, NAN, -1}}) {
    SCOPED_TRACE(::testing::Message() << c.tpr << " " << c.ppr);
    float tpr = c.tpr, ppr = c.ppr;
    int st = 99;
    const float rho = FC_GASRD(&tpr, &ppr, &st);
    EXPECT_EQ(st, c.status);
    EXPECT_TRUE(std::isfinite(rho));
    if (!std::isnan(c.rho)) {
      EXPECT_TRUE(nearRel(rho, c.rho, 1e-5));
    }
    if (std::isnan(c.z)) continue;
    st = 99;
    EXPECT_TRUE(nearRel(FC_GASZ1(&tpr, &ppr, &st), c.z, 1e-5));
    EXPECT_EQ(st, c.status);
  }
}

// Over the whole fitted range the iteration settles long before its step cap:
// every result is a root of the equation of state (checked in double
// precision) with status 0.
TEST(GasReducedDensity, SolvesTheEquationEverywhereInsideItsRange) {
  constexpr double a1 = 0.3151, a2 = -1.0467, a3 = -0.5783, a4 = 0.5353, a5 = -0.6123;
  constexpr double a5a6 = 0.06423, a7 = 0.6816, a8 = 0.6845;
  for (float tpr = 1.05f; tpr <= 3.0f; tpr += 0.05f) {
    for (float ppr = 0.0f; ppr <= 30.0f; ppr += 0.5f) {
      float t = tpr, p = ppr;
      int st = 99;
      const double r = FC_GASRD(&t, &p, &st), tp = tpr, r2 = r * r, r3 = r2 * r;
      ASSERT_EQ(st, 0) << tpr << " " << ppr;
      const double t3 = tp * tp * tp;
      const double f = r + (a1 + a2 / tp + a3 / t3) * r2 + (a4 + a5 / tp) * r3 +
                       a5a6 / tp * r3 * r3 + a7 / t3 * r3 * (1 + a8 * r2) * std::exp(-a8 * r2) -
                       0.27 * ppr / tp;
      // Single precision leaves a residual of a few units in the 7th digit of T5.
      EXPECT_LT(std::fabs(f), 2e-5 * (1.0 + 0.27 * ppr / tp)) << tpr << " " << ppr;
    }
  }
}

TEST(GasExpansionFactor, StandardOverReservoirVolumeAndNullForAnyZero) {
  float args[5] = {0.85f, 640.0f, 3000.0f, 519.67f, 14.7f};  // z, T, P, Tsc, Psc
  auto fvf = [&] { return FC_GASFVF(&args[0], &args[1], &args[2], &args[3], &args[4]); };
  EXPECT_TRUE(nearRel(fvf(), 194.95423169267707));
  for (int which = 0; which < 5; ++which) {
    const float keep = args[which];
    args[which] = 0.0f;
    EXPECT_EQ(fvf(), kRealNull) << which;
    args[which] = keep;
  }
}

TEST(GasViscosityAndDensity, LeeGonzalezEakinAndRealGasDensity) {
  float g = 0.7f, z = 0.85f, t = 640.0f, p = 3000.0f;
  EXPECT_TRUE(nearRel(FC_GASVISC(&g, &z, &t, &p), 0.020522816388485444));
  float dens = FC_GASDDENS(&g, &z, &t, &p);
  EXPECT_TRUE(nearRel(dens, 0.16691960971585798));
  EXPECT_TRUE(nearRel(FC_GASHI(&dens), 2.25 * 0.16691960971585798));
  // Any zero (or, for the viscosity, negative) input gives null.
  float zero = 0.0f, neg = -1.0f, nul = kRealNull;
  for (int which = 0; which < 4; ++which) {
    float* args[4] = {&g, &z, &t, &p};
    args[which] = &zero;
    EXPECT_EQ(FC_GASVISC(args[0], args[1], args[2], args[3]), kRealNull) << which;
    EXPECT_EQ(FC_GASDDENS(args[0], args[1], args[2], args[3]), kRealNull) << which;
    args[which] = &neg;
    EXPECT_EQ(FC_GASVISC(args[0], args[1], args[2], args[3]), kRealNull) << which;
  }
  EXPECT_EQ(FC_GASHI(&zero), kRealNull);
  EXPECT_EQ(FC_GASHI(&nul), kRealNull);
}

TEST(GasMixingRule, WeightedSumOverDivisor) {
  float values[] = {2.0f, 4.0f, 8.0f}, weights[] = {0.5f, 0.25f, 0.25f}, div = 2.0f;
  for (auto [n, expected] : {std::pair{3, 2.0f}, {1, 0.5f}, {0, 0.0f}}) {
    EXPECT_FLOAT_EQ(FC_GPC(values, &div, weights, &n), expected) << n;
  }
  int n = -3;
  EXPECT_EQ(FC_GPC(nullptr, &div, nullptr, &n), 0.0f);
}

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
    if (c.row >= 0) {
      EXPECT_EQ(zFactorChart().upperRow(), c.row);
    }
    if (c.column >= 0) {
      EXPECT_EQ(zFactorChart().upperColumn(), c.column);
    }
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
