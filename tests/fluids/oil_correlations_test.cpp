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
float deadVisc(float api, float t) { return FC_OILDEADVISC(&api, &t); }
float deadViscT(float known, float target, float ref) {
  return FC_OILDEADVISCT(&known, &target, &ref);
}
float liveVisc(float dead, float rs) { return FC_OILVISC(&dead, &rs); }
float density(float b, float pb, float p, float rs) {
  float rsb = 600.0f, so = 0.85f, gg = 0.75f;
  return FC_OILDDENS(&b, &pb, &p, &rs, &rsb, &so, &gg);
}
float hi(float d) { return FC_OILHI(&d); }
float hiFromVisc(float visc, float rs, float t) { return FC_OILHI1(&visc, &rs, &t); }

// A result, what it should be and how close: checked as one table per family.
struct Check {
  const char* what;
  float actual;
  double expected;
  double rel = testing::kSingleRel;
};
void expectAll(std::initializer_list<Check> checks) {
  for (const Check& c : checks) EXPECT_TRUE(nearRel(c.actual, c.expected, c.rel)) << c.what;
}

TEST(OilCorrelations, AgainstHandCalculations) {
  expectAll({
      // Vasquez-Beggs inverted; API 30 is still heavy oil.
      {"pbp", pbp(600.0f, 0.75f, 35.0f, 640.0f), 2759.669038091584},
      {"pbp api 30", pbp(600.0f, 0.75f, 30.0f, 640.0f), 3114.40085487013},
      {"pbp api 30.0001", pbp(600.0f, 0.75f, 30.0001f, 640.0f), 3230.428260765693},
      // C1 * API * P^C2 * exp(C3 API / T).
      {"gorb", gorb(640.0f, 2000.0f, 35.0f, 0.75f), 19106.598427476976},
      {"gorb api 30", gorb(640.0f, 2000.0f, 30.0f, 0.75f), 14785.77341213957},
      // Standing with (T - 520) on degrees Rankine; above the bubble point it
      // shrinks with method-one compressibility.
      {"bo saturated", bo(600.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 2500.0f), 1.2945873123752052},
      {"bo undersaturated", bo(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 2500.0f),
       0.8214093797188092, 5e-5},
      // Method 1 divides by P * 10000.
      {"co 1", co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 1, 2500.0f), 0.00030328375},
      {"co 2", co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 2, 2500.0f), 5.699085615880347e-05},
      {"co 3", co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 3, 2500.0f), 5.802638725966428e-05},
      // Beggs-Robinson; moving the 60 degF value to 180 degF reproduces the
      // 180 degF correlation.
      {"dead 60", deadVisc(35.0f, 60.0f), 62.77774238773855, 5e-5},
      {"dead 180", deadViscT(deadVisc(35.0f, 60.0f), 180.0f, 60.0f), 2.183667615041447, 5e-5},
      {"live", liveVisc(2.183667615041447f, 600.0f), 0.5776652477016837, 5e-5},
      // The dissolved gas switches to the ratio given at the bubble point at and above it.
      {"density above pb", density(1.3f, 2500.0f, 3000.0f, 400.0f), 0.7294084964888005},
      {"density at pb", density(1.3f, 2500.0f, 2500.0f, 400.0f), 0.7294084964888005},
      {"density below pb", density(1.3f, 2500.0f, 2000.0f, 400.0f), 0.7042216175875059},
      {"hi", hi(0.7f), 0.9954},
  });
}

TEST(OilCorrelations, QuirksOfTheFormulas) {
  EXPECT_EQ(pbp(0.0f, 0.75f, 35.0f, 640.0f), 0.0f);  // no gas: zero, not null
  // The gas gravity only has to be positive.
  EXPECT_EQ(gorb(640.0f, 2000.0f, 35.0f, 0.75f), gorb(640.0f, 2000.0f, 35.0f, 1.2f));
  // Below the bubble point the saturated volume factor stands.
  EXPECT_EQ(bo(600.0f, 0.75f, 35.0f, 640.0f, 2000.0f, 2500.0f),
            bo(600.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 2500.0f));
  // Compressibility method 2 does not look at the bubble point, method 3 does.
  EXPECT_EQ(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 2, 2500.0f),
            co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 2, 1000.0f));
  EXPECT_NE(co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 3, 2500.0f),
            co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 3, 1000.0f));
}

TEST(OilCorrelations, UnusableInputsGiveNull) {
  struct Case { const char* what; float actual; };
  for (const Case& c : {
           Case{"pbp rs<0", pbp(-1.0f, 0.75f, 35.0f, 640.0f)},
           Case{"pbp gg 0", pbp(600.0f, 0.0f, 35.0f, 640.0f)},
           Case{"pbp api 0", pbp(600.0f, 0.75f, 0.0f, 640.0f)},
           Case{"pbp t 0", pbp(600.0f, 0.75f, 35.0f, 0.0f)},
           Case{"gorb gg 0", gorb(640.0f, 2000.0f, 35.0f, 0.0f)},
           Case{"gorb p 0", gorb(640.0f, 0.0f, 35.0f, 0.75f)},
           Case{"bo rs<0", bo(-1.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 2500.0f)},
           Case{"bo pb 0", bo(600.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 0.0f)},
           Case{"bo p 0", bo(600.0f, 0.75f, 35.0f, 640.0f, 0.0f, 2500.0f)},
           Case{"co method 0", co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 0, 2500.0f)},
           Case{"co method 4", co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 4, 2500.0f)},
           Case{"co method -1", co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, -1, 2500.0f)},
           Case{"co pb 0", co(600.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 1, 0.0f)},
           Case{"co rs<0", co(-5.0f, 0.75f, 35.0f, 640.0f, 4000.0f, 1, 2500.0f)},
           Case{"co p null", co(600.0f, 0.75f, 35.0f, 640.0f, kRealNull, 1, 2500.0f)},
           Case{"dead t -200", deadVisc(35.0f, -200.0f)},
           Case{"dead api 0", deadVisc(0.0f, 60.0f)},
           Case{"deadT target -100.5", deadViscT(5.0f, -100.5f, 60.0f)},
           Case{"deadT ref -101", deadViscT(5.0f, 100.0f, -101.0f)},
           Case{"deadT known 0", deadViscT(0.0f, 100.0f, 60.0f)},
           Case{"live dead 0", liveVisc(0.0f, 100.0f)}, Case{"live rs<0", liveVisc(2.0f, -1.0f)},
           Case{"density rs 0", density(1.3f, 2500.0f, 2000.0f, 0.0f)},
           Case{"density bo 0", density(0.0f, 2500.0f, 2000.0f, 400.0f)},
           Case{"hi d 0", hi(0.0f)}}) {
    EXPECT_EQ(c.actual, kRealNull) << c.what;
  }
  // Just inside the limits there is a value.
  for (const Case& c : {Case{"bo rs 0", bo(0.0f, 0.75f, 35.0f, 640.0f, 2500.0f, 2500.0f)},
                        Case{"dead t -199", deadVisc(35.0f, -199.0f)},
                        Case{"deadT target -100", deadViscT(5.0f, -100.0f, 60.0f)},
                        Case{"live rs 0", liveVisc(2.0f, 0.0f)}}) {
    EXPECT_NE(c.actual, kRealNull) << c.what;
  }
}

// Live viscosities that invert to chosen API gravities (Rs 300 scf/stb, 150 degF),
// worked out from the forward correlations in double precision.
TEST(OilHydrogenIndexFromViscosity, BranchesOnTheInvertedGravity) {
  EXPECT_EQ(hiFromVisc(26.544469675721615f, 300.0f, 150.0f), 0.705f);  // API 5
  EXPECT_TRUE(nearRel(hiFromVisc(5.89970392666841f, 300.0f, 150.0f), -0.6501975, 2e-4));  // 15
  EXPECT_TRUE(nearRel(hiFromVisc(3.4298914458535545f, 300.0f, 150.0f), -0.7478545, 2e-4));  // 20
  EXPECT_EQ(hiFromVisc(1.5053913221691544f, 300.0f, 150.0f), 1.0f);  // API 30
  // A very viscous oil inverts to a negative API: compared as bit patterns it
  // sorts below 10 and gives the heavy-oil value.
  EXPECT_EQ(hiFromVisc(1.0e6f, 0.0f, 150.0f), 0.705f);
  // Unusable inputs give one.
  EXPECT_EQ(hiFromVisc(0.0f, 300.0f, 150.0f), 1.0f);
  EXPECT_EQ(hiFromVisc(2.0f, -1.0f, 150.0f), 1.0f);
  EXPECT_EQ(hiFromVisc(2.0f, 300.0f, -32.5f), 1.0f);
}

}  // namespace
}  // namespace subsurf::fluids
