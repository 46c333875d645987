// Gas correlations through the C interface, checked against values worked out
// by hand in double precision.
#include <gtest/gtest.h>

#include <cmath>

#include "fluids/fluid_test_support.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::nearRel;

TEST(GasPseudoCritical, CleanGasOfGravity065) {
  float g = 0.65f, n2 = 0.0f, co2 = 0.0f, h2s = 0.0f;
  int st = 99;
  EXPECT_TRUE(nearRel(FC_GASPCP(&g, &n2, &co2, &h2s, &st), 670.25));
  EXPECT_EQ(st, 0);
  st = 99;
  EXPECT_TRUE(nearRel(FC_GASPCT(&g, &n2, &co2, &h2s, &st), 374.45));
  EXPECT_EQ(st, 0);
}

TEST(GasPseudoCritical, ImpurityTermsKeepTheirSigns) {
  // One impurity at a time: pressure +432.9 N2, -167.3 CO2, +654.0 H2S;
  // temperature -167.3 N2, +279.9 CO2, -127.0 H2S (from 670.25 / 374.45 at 0.65).
  float g = 0.65f, zero = 0.0f, tenth = 0.1f;
  int st;
  float a = tenth, b = zero, c = zero;
  EXPECT_TRUE(nearRel(FC_GASPCP(&g, &a, &b, &c, &st), 670.25 + 43.29));
  EXPECT_TRUE(nearRel(FC_GASPCT(&g, &a, &b, &c, &st), 374.45 - 16.73));
  a = zero, b = tenth, c = zero;
  EXPECT_TRUE(nearRel(FC_GASPCP(&g, &a, &b, &c, &st), 670.25 - 16.73));
  EXPECT_TRUE(nearRel(FC_GASPCT(&g, &a, &b, &c, &st), 374.45 + 27.99));
  a = zero, b = zero, c = tenth;
  EXPECT_TRUE(nearRel(FC_GASPCP(&g, &a, &b, &c, &st), 670.25 + 65.4));
  EXPECT_TRUE(nearRel(FC_GASPCT(&g, &a, &b, &c, &st), 374.45 - 12.7));
  // All together.
  float g7 = 0.7f, n2 = 0.05f, co2 = 0.1f, h2s = 0.02f;
  EXPECT_TRUE(nearRel(FC_GASPCP(&g7, &n2, &co2, &h2s, &st), 686.495));
  EXPECT_TRUE(nearRel(FC_GASPCT(&g7, &n2, &co2, &h2s, &st), 408.185));
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
  }
}

TEST(GasPseudoReduced, DividesByThePseudoCriticals) {
  float g = 0.65f, n2 = 0.0f, co2 = -0.2f, h2s = 0.0f, p = 2000.0f, t = 640.0f, tpr, ppr;
  int st = 99;
  FC_GASRED1(&g, &n2, &co2, &h2s, &p, &t, &tpr, &ppr, &st);
  EXPECT_EQ(st, 0);
  EXPECT_TRUE(nearRel(tpr, 640.0 / 374.45));
  EXPECT_TRUE(nearRel(ppr, 2000.0 / 670.25));
  EXPECT_EQ(co2, 0.0f);

  float bad = 0.0f;
  FC_GASRED1(&bad, &n2, &co2, &h2s, &p, &t, &tpr, &ppr, &st);
  EXPECT_EQ(st, 1);
  EXPECT_EQ(tpr, kRealNull);
  EXPECT_EQ(ppr, kRealNull);
}

// Reduced densities solved in double precision to 1e-12.
TEST(GasReducedDensity, MatchesTheEquationOfStateInsideItsRange) {
  struct Case { float tpr, ppr; double rho; };
  for (const Case& c : {Case{1.5f, 2.0f, 0.4386697044520073}, Case{2.0f, 5.0f, 0.7020010135319742},
                        Case{1.3f, 10.0f, 1.8062490502000135}, Case{2.5f, 20.0f, 1.3912541011043125}}) {
    float tpr = c.tpr, ppr = c.ppr;
    int st = 99;
    EXPECT_TRUE(nearRel(FC_GASRD(&tpr, &ppr, &st), c.rho, 1e-5)) << c.tpr << " " << c.ppr;
    EXPECT_EQ(st, 0);
  }
}

TEST(GasReducedDensity, ZeroPressureGivesZeroAfterOneStep) {
  float tpr = 1.5f, ppr = 0.0f;
  int st = 99;
  EXPECT_EQ(FC_GASRD(&tpr, &ppr, &st), 0.0f);
  EXPECT_EQ(st, 0);
}

TEST(GasReducedDensity, OutOfRangeFlagsButStillIterates) {
  float tpr = 1.02f, ppr = 0.5f;
  int st = 0;
  EXPECT_TRUE(nearRel(FC_GASRD(&tpr, &ppr, &st), 0.16335103489043692, 1e-5));
  EXPECT_EQ(st, -1);
  // Below the chart's first row (1.2) but inside this fit's range (from 1.05).
  tpr = 1.1f, ppr = 1.0f;
  EXPECT_TRUE(nearRel(FC_GASRD(&tpr, &ppr, &st), 0.36313476973156894, 1e-5));
  EXPECT_EQ(st, 0);
  // The range edges themselves are inside.
  for (float t : {1.05f, 3.0f}) {
    float p = 1.0f;
    FC_GASRD(&t, &p, &st);
    EXPECT_EQ(st, 0) << t;
  }
  float t = 1.5f, p = 30.0f;
  FC_GASRD(&t, &p, &st);
  EXPECT_EQ(st, 0);
  p = 30.5f;
  FC_GASRD(&t, &p, &st);
  EXPECT_EQ(st, -1);
  p = -0.5f;
  FC_GASRD(&t, &p, &st);
  EXPECT_EQ(st, -1);
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
      const double r = FC_GASRD(&t, &p, &st);
      ASSERT_EQ(st, 0) << tpr << " " << ppr;
      const double tp = tpr;
      const double f = r + (a1 + a2 / tp + a3 / (tp * tp * tp)) * r * r + (a4 + a5 / tp) * r * r * r +
                       a5a6 / tp * std::pow(r, 6) +
                       a7 / (tp * tp * tp) * r * r * r * (1 + a8 * r * r) * std::exp(-a8 * r * r) -
                       0.27 * ppr / tp;
      // Single precision leaves a residual of a few units in the 7th digit of T5.
      EXPECT_LT(std::fabs(f), 2e-5 * (1.0 + 0.27 * ppr / tp)) << tpr << " " << ppr;
    }
  }
}

TEST(GasReducedDensity, RunawayNewtonStopsWithStatusMinusOne) {
  // Far below the fit's temperatures Newton wanders without settling; the
  // routine must still come back, with the last iterate and status -1.
  float tpr = 0.6f, ppr = 1.0f;
  int st = 0;
  const float rho = FC_GASRD(&tpr, &ppr, &st);
  EXPECT_EQ(st, -1);
  EXPECT_TRUE(std::isfinite(rho));
}

TEST(GasZFactorEos, IsTheRealGasLawOfTheReducedDensity) {
  float tpr = 1.5f, ppr = 2.0f;
  int st = 99;
  EXPECT_TRUE(nearRel(FC_GASZ1(&tpr, &ppr, &st), 0.8206630098828397, 1e-5));
  EXPECT_EQ(st, 0);
  tpr = 1.02f, ppr = 0.5f;
  EXPECT_TRUE(nearRel(FC_GASZ1(&tpr, &ppr, &st), 0.8102363187673869, 1e-5));
  EXPECT_EQ(st, -1);
}

TEST(GasExpansionFactor, StandardOverReservoirVolume) {
  float z = 0.85f, t = 640.0f, p = 3000.0f, tsc = 519.67f, psc = 14.7f;
  EXPECT_TRUE(nearRel(FC_GASFVF(&z, &t, &p, &tsc, &psc), 194.95423169267707));
  float zero = 0.0f;
  EXPECT_EQ(FC_GASFVF(&zero, &t, &p, &tsc, &psc), kRealNull);
  EXPECT_EQ(FC_GASFVF(&z, &zero, &p, &tsc, &psc), kRealNull);
  EXPECT_EQ(FC_GASFVF(&z, &t, &zero, &tsc, &psc), kRealNull);
  EXPECT_EQ(FC_GASFVF(&z, &t, &p, &zero, &psc), kRealNull);
  EXPECT_EQ(FC_GASFVF(&z, &t, &p, &tsc, &zero), kRealNull);
}

TEST(GasViscosityAndDensity, LeeGonzalezEakinAndRealGasDensity) {
  float g = 0.7f, z = 0.85f, t = 640.0f, p = 3000.0f;
  EXPECT_TRUE(nearRel(FC_GASVISC(&g, &z, &t, &p), 0.020522816388485444));
  const float dens = FC_GASDDENS(&g, &z, &t, &p);
  EXPECT_TRUE(nearRel(dens, 0.16691960971585798));
  float d = dens;
  EXPECT_TRUE(nearRel(FC_GASHI(&d), 2.25 * 0.16691960971585798));
}

TEST(GasViscosityAndDensity, AnyZeroInputGivesNull) {
  float g = 0.7f, z = 0.85f, t = 640.0f, p = 3000.0f, zero = 0.0f, neg = -1.0f;
  for (int which = 0; which < 4; ++which) {
    float* args[4] = {&g, &z, &t, &p};
    args[which] = &zero;
    EXPECT_EQ(FC_GASVISC(args[0], args[1], args[2], args[3]), kRealNull) << which;
    EXPECT_EQ(FC_GASDDENS(args[0], args[1], args[2], args[3]), kRealNull) << which;
    args[which] = &neg;
    EXPECT_EQ(FC_GASVISC(args[0], args[1], args[2], args[3]), kRealNull) << which;
  }
  EXPECT_EQ(FC_GASHI(&zero), kRealNull);
  float nul = kRealNull;
  EXPECT_EQ(FC_GASHI(&nul), kRealNull);
}

TEST(GasMixingRule, WeightedSumOverDivisor) {
  float values[] = {2.0f, 4.0f, 8.0f}, weights[] = {0.5f, 0.25f, 0.25f}, div = 2.0f;
  int n = 3;
  EXPECT_FLOAT_EQ(FC_GPC(values, &div, weights, &n), 2.0f);
  n = 1;
  EXPECT_FLOAT_EQ(FC_GPC(values, &div, weights, &n), 0.5f);
  n = 0;
  EXPECT_EQ(FC_GPC(values, &div, weights, &n), 0.0f);
  n = -3;
  EXPECT_EQ(FC_GPC(nullptr, &div, nullptr, &n), 0.0f);
}

}  // namespace
}  // namespace subsurf::fluids
