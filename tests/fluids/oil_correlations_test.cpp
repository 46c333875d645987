// Oil correlations through the C interface, against double-precision hand
// calculations of the same formulas.
#include <gtest/gtest.h>

#include <cmath>

#include "fluids/fluid_test_support.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::nearRel;

float pbp(float rs, float gg, float api, float t) { return FC_OILPBP(&rs, &gg, &api, &t); }
float gorb(float t, float p, float api, float gg) { return FC_OILGORB(&t, &p, &api, &gg); }
float bo(float rs, float gg, float api, float t, float p, float pb) {
  return FC_OILBO(&rs, &gg, &api, &t, &p, &pb);
}
float co(float rs, float gg, float api, float t, float p, int m, float pb) {
  float other = rs;
  return FC_OILCO(&rs, &gg, &api, &t, &p, &m, &pb, &other);
}

TEST(OilBubblePoint, VasquezBeggsInverted) {
  EXPECT_TRUE(nearRel(pbp(600.0f, 0.75f, 35.0f, 640.0f), 2759.669038091584));
  EXPECT_EQ(pbp(0.0f, 0.75f, 35.0f, 640.0f), 0.0f);  // no gas: zero, not null
  EXPECT_EQ(pbp(-1.0f, 0.75f, 35.0f, 640.0f), kRealNull);
  EXPECT_EQ(pbp(600.0f, 0.0f, 35.0f, 640.0f), kRealNull);
  EXPECT_EQ(pbp(600.0f, 0.75f, 0.0f, 640.0f), kRealNull);
  EXPECT_EQ(pbp(600.0f, 0.75f, 35.0f, 0.0f), kRealNull);
}

TEST(OilBubblePoint, ApiThirtyIsStillHeavyOil) {
  EXPECT_TRUE(nearRel(pbp(600.0f, 0.75f, 30.0f, 640.0f), 3114.40085487013));
  EXPECT_TRUE(nearRel(pbp(600.0f, 0.75f, 30.0001f, 640.0f), 3230.428260765693));
}

TEST(OilSolutionGor, ApiMultipliesTheFirstConstant) {
  // C1 * API * P^C2 * exp(C3 API / T); the gas gravity only has to be positive.
  EXPECT_TRUE(nearRel(gorb(640.0f, 2000.0f, 35.0f, 0.75f), 19106.598427476976));
  EXPECT_EQ(gorb(640.0f, 2000.0f, 35.0f, 0.75f), gorb(640.0f, 2000.0f, 35.0f, 1.2f));
  EXPECT_TRUE(nearRel(gorb(640.0f, 2000.0f, 30.0f, 0.75f), 14785.77341213957));
  EXPECT_EQ(gorb(640.0f, 2000.0f, 35.0f, 0.0f), kRealNull);
  EXPECT_EQ(gorb(640.0f, 0.0f, 35.0f, 0.75f), kRealNull);
}

TEST(OilFormationVolumeFactor, SaturatedAtTheBubblePoint) {
  // Standing with (T - 520) on degrees Rankine.
  EXPECT_TRUE(nearRel(bo(600.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 2500.0f), 1.2945873123752052));
  // Below the bubble point the saturated value stands as well.
  EXPECT_EQ(bo(600.0f, 0.75f, 35.0f, 640.0f, 2000.0f, 2500.0f),
            bo(600.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 2500.0f));
}

TEST(OilFormationVolumeFactor, UndersaturatedShrinksWithMethodOneCompressibility) {
  EXPECT_TRUE(nearRel(bo(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 2500.0f), 0.8214093797188092, 5e-5));
}

TEST(OilFormationVolumeFactor, Nulls) {
  EXPECT_EQ(bo(-1.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 2500.0f), kRealNull);
  EXPECT_EQ(bo(600.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 0.0f), kRealNull);
  EXPECT_EQ(bo(600.0f, 0.75f, 35.0f, 640.0f, 0.0f, 2500.0f), kRealNull);
  EXPECT_NE(bo(0.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 2500.0f), kRealNull);
}

TEST(OilCompressibility, ThreeMethods) {
  // Method 1 divides by P * 10000.
  EXPECT_TRUE(nearRel(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 1, 2500.0f), 0.00030328375));
  EXPECT_TRUE(nearRel(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 2, 2500.0f), 5.699085615880347e-05));
  EXPECT_TRUE(nearRel(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 3, 2500.0f), 5.802638725966428e-05));
  // Method 2 does not look at the bubble point, method 3 does.
  EXPECT_EQ(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 2, 2500.0f),
            co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 2, 1000.0f));
  EXPECT_NE(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 3, 2500.0f),
            co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 3, 1000.0f));
}

TEST(OilCompressibility, UnknownMethodsAndMissingInputsGiveNull) {
  for (int m : {0, 4, -1}) EXPECT_EQ(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, m, 2500.0f), kRealNull);
  EXPECT_EQ(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 1, 0.0f), kRealNull);
  EXPECT_EQ(co(-5.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 1, 2500.0f), kRealNull);
  EXPECT_EQ(co(600.0f, 0.75f, 35.0f, 640.0f, kRealNull, 1, 2500.0f), kRealNull);
}

TEST(OilViscosity, BeggsRobinsonDeadAndLive) {
  float api = 35.0f, t = 60.0f;
  const float dead60 = FC_OILDEADVISC(&api, &t);
  EXPECT_TRUE(nearRel(dead60, 62.77774238773855, 5e-5));
  // Moving the 60 degF value to 180 degF reproduces the 180 degF correlation.
  float known = dead60, target = 180.0f, ref = 60.0f;
  const float dead180 = FC_OILDEADVISCT(&known, &target, &ref);
  EXPECT_TRUE(nearRel(dead180, 2.183667615041447, 5e-5));
  float d = dead180, rs = 600.0f;
  EXPECT_TRUE(nearRel(FC_OILVISC(&d, &rs), 0.5776652477016837, 5e-5));
}

TEST(OilViscosity, TemperatureLimits) {
  float api = 35.0f, t = -200.0f;
  EXPECT_EQ(FC_OILDEADVISC(&api, &t), kRealNull);
  t = -199.0f;
  EXPECT_NE(FC_OILDEADVISC(&api, &t), kRealNull);
  float zeroApi = 0.0f, t60 = 60.0f;
  EXPECT_EQ(FC_OILDEADVISC(&zeroApi, &t60), kRealNull);

  float known = 5.0f, target = -100.0f, ref = 60.0f;
  EXPECT_NE(FC_OILDEADVISCT(&known, &target, &ref), kRealNull);
  target = -100.5f;
  EXPECT_EQ(FC_OILDEADVISCT(&known, &target, &ref), kRealNull);
  target = 100.0f, ref = -101.0f;
  EXPECT_EQ(FC_OILDEADVISCT(&known, &target, &ref), kRealNull);
  float zero = 0.0f;
  ref = 60.0f;
  EXPECT_EQ(FC_OILDEADVISCT(&zero, &target, &ref), kRealNull);

  float dead = 0.0f, rs = 100.0f;
  EXPECT_EQ(FC_OILVISC(&dead, &rs), kRealNull);
  dead = 2.0f, rs = -1.0f;
  EXPECT_EQ(FC_OILVISC(&dead, &rs), kRealNull);
  rs = 0.0f;
  EXPECT_NE(FC_OILVISC(&dead, &rs), kRealNull);
}

TEST(OilDensity, DissolvedGasSwitchesAtTheBubblePoint) {
  float b = 1.3f, pb = 2500.0f, p = 3000.0f, rs = 400.0f, rsb = 600.0f, so = 0.85f, gg = 0.75f;
  EXPECT_TRUE(nearRel(FC_OILDDENS(&b, &pb, &p, &rs, &rsb, &so, &gg), 0.7294084964888005));
  p = 2500.0f;  // at the bubble point: still the bubble-point ratio
  EXPECT_TRUE(nearRel(FC_OILDDENS(&b, &pb, &p, &rs, &rsb, &so, &gg), 0.7294084964888005));
  p = 2000.0f;
  EXPECT_TRUE(nearRel(FC_OILDDENS(&b, &pb, &p, &rs, &rsb, &so, &gg), 0.7042216175875059));
  float zero = 0.0f;
  EXPECT_EQ(FC_OILDDENS(&b, &pb, &p, &zero, &rsb, &so, &gg), kRealNull);
  EXPECT_EQ(FC_OILDDENS(&zero, &pb, &p, &rs, &rsb, &so, &gg), kRealNull);
}

TEST(OilHydrogenIndex, FromDensity) {
  float d = 0.7f;
  EXPECT_TRUE(nearRel(FC_OILHI(&d), 0.9954));
  d = 0.0f;
  EXPECT_EQ(FC_OILHI(&d), kRealNull);
}

// Live viscosities that invert to chosen API gravities (Rs 300 scf/stb, 150 degF),
// worked out from the forward correlations in double precision.
TEST(OilHydrogenIndexFromViscosity, BranchesOnTheInvertedGravity) {
  float rs = 300.0f, t = 150.0f;
  float heavy = 26.544469675721615f;  // API 5
  EXPECT_EQ(FC_OILHI1(&heavy, &rs, &t), 0.705f);
  float mid15 = 5.89970392666841f;  // API 15
  EXPECT_TRUE(nearRel(FC_OILHI1(&mid15, &rs, &t), -0.6501975, 2e-4));
  float mid20 = 3.4298914458535545f;  // API 20
  EXPECT_TRUE(nearRel(FC_OILHI1(&mid20, &rs, &t), -0.7478545, 2e-4));
  float light = 1.5053913221691544f;  // API 30
  EXPECT_EQ(FC_OILHI1(&light, &rs, &t), 1.0f);
}

TEST(OilHydrogenIndexFromViscosity, NegativeGravityTakesTheHeavyBranch) {
  // A very viscous oil inverts to a negative API: compared as bit patterns it
  // sorts below 10 and gives the heavy-oil value.
  float visc = 1.0e6f, rs = 0.0f, t = 150.0f;
  EXPECT_EQ(FC_OILHI1(&visc, &rs, &t), 0.705f);
}

TEST(OilHydrogenIndexFromViscosity, UnusableInputsGiveOne) {
  float zero = 0.0f, rs = 300.0f, t = 150.0f;
  EXPECT_EQ(FC_OILHI1(&zero, &rs, &t), 1.0f);
  float v = 2.0f, negRs = -1.0f;
  EXPECT_EQ(FC_OILHI1(&v, &negRs, &t), 1.0f);
  float cold = -32.5f;
  EXPECT_EQ(FC_OILHI1(&v, &rs, &cold), 1.0f);
}

}  // namespace
}  // namespace subsurf::fluids
