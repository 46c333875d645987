// Calculate-all and the single-entry buttons over a table: which entries are
// kept, recalculated, filled or reset, and the values of the whole chain
// against a double-precision hand calculation of the same formulas.
#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "fluids/calculate_all.h"
#include "fluids/fluid_entries.h"
#include "fluids/fluid_test_support.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::kChainRel;
using testing::nearRel;
using testing::undersaturated;

class CalculateAll : public ::testing::Test {
 protected:
  void SetUp() override {
    t.create(1);
    host::clearRecorded();
  }
  void give(const char* name, const char* unit, float v, int state = kStateTyped) {
    ASSERT_TRUE(t.set(name, unit, v, state).isOk()) << name;
  }
  float read(const char* name, const char* unit) { return t.get(name, unit).value; }
  bool missing(const char* name) { return t.get(name, "").missing; }
  void giveCase(float depthFt = 8000.0f, float api = 35.0f, float gor = 600.0f) {
    give("dres", "ft", depthFt);
    give("oden", "api", api);
    give("sgden", "(air=1)", 0.75f);
    give("solgor", "scf/stb", gor);
    give("gden", "(air=1)", 0.7f);
  }
  FluidTable t;
};

// The chain against the given values, or the undersaturated case's.
void expectChain(FluidTable& t, const double* expected = nullptr) {
  for (int i = 0; i < 12; ++i) {
    const testing::ChainValue& c = testing::kUndersaturated[i];
    EXPECT_TRUE(nearRel(t.get(c.name, c.unit).value, expected ? expected[i] : c.value, kChainRel))
        << c.name;
  }
}

TEST_F(CalculateAll, FillsEveryFormFromFiveOilfieldValues) {
  giveCase();
  calculateAll(t);
  expectChain(t);
  EXPECT_EQ(read("oviscdt", "degf"), 60.0f);
  EXPECT_EQ(t.state(Entry::Tres), kStateCalculated);
  EXPECT_EQ(t.state(Entry::Dres), kStateTyped);
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(CalculateAll, MetricInputGivesTheSameValues) {
  FluidTable metric;
  metric.create(2);
  // 8000 ft, 35 API, 600 scf/stb = 600 * 0.17810760667903525 m3/m3.
  for (const testing::ChainValue& c :
       {testing::ChainValue{"dres", "m", 2438.4}, {"oden", "sg", 141.5 / 166.5},
        {"sgden", "(air=1)", 0.75}, {"solgor", "m3/m3", 106.86456}, {"gden", "(air=1)", 0.7}})
    ASSERT_TRUE(metric.set(c.name, c.unit, static_cast<float>(c.value), kStateTyped).isOk());
  calculateAll(metric);
  EXPECT_EQ(metric.storedUnitName(Entry::Pres), "bar");
  expectChain(metric);
}

TEST_F(CalculateAll, SaturatedOilUsesMcCainCompressibility) {
  // 3000 ft, 30 API (heavy-oil constants), 800 scf/stb: the bubble point lies
  // above the reservoir pressure.
  giveCase(3000.0f, 30.0f, 800.0f);
  calculateAll(t);
  const double saturated[] = {105.0, 1320.0, 3497.3027156804214, 1.3392111235451276,
                              188.6501080352203, 1.348279311857014, 0.000758885142728745,
                              0.7972182880994424, 103.66025547537336, 0.014263565342914347,
                              0.08875380255541993, 0.19969605574969485};
  expectChain(t, saturated);
}

TEST_F(CalculateAll, CompressibilityMethodSwitchesAtTheBubblePoint) {
  giveCase();
  // At the bubble point itself: McCain with the ratio at reservoir pressure.
  give("pbubble", "psia", 3520.0f);
  calculateAll(t);
  const double tR = 171.0 + 459.67, lp = std::log(3520.0);
  const double rsP = 0.0178 * 35.0 * std::pow(3520.0, 1.187) * std::exp(23.931 * 35.0 / tR);
  EXPECT_TRUE(nearRel(read("ocomp", "1/psi"),
                      std::exp(-7.573 - 1.45 * lp - 0.383 * lp + 1.402 * std::log(tR) +
                               0.256 * std::log(35.0) + 0.449 * std::log(rsP)),
                      kChainRel));
  // Just below: Vasquez-Beggs with the stored ratio.
  give("pbubble", "psia", 3519.0f);
  calculateAll(t);
  EXPECT_TRUE(nearRel(read("ocomp", "1/psi"),
                      (5.0 * 600 + 17.2 * tR + 12.61 * 35 - 1180.0 * 0.75 - 1433.0) / 3520.0e4,
                      kChainRel));
}

TEST_F(CalculateAll, GeothermalGradientAndHydrostaticPressure) {
  // 60 degF + 1.5 degF and 0.44 psi per 100 ft; down to -1000 ft still counts,
  // above it (on a fresh table) neither is calculated.
  struct Case { float depth; double tres, pres; };
  for (const Case& c : {Case{-1000.5f, NAN, NAN}, Case{5000.0f, 135.0, 2200.0},
                        Case{10000.0f, 195.0, 4400.0}, Case{-1000.0f, 45.0, -440.0}}) {
    SCOPED_TRACE(c.depth);
    give("dres", "ft", c.depth);
    calculateAll(t);
    if (std::isnan(c.tres)) {
      EXPECT_TRUE(missing("tres"));
      EXPECT_TRUE(missing("pres"));
      continue;
    }
    EXPECT_TRUE(nearRel(read("tres", "degf"), c.tres, 1e-6));
    EXPECT_EQ(read("pres", "psia"), static_cast<float>(c.pres));
  }
}

TEST_F(CalculateAll, TypedTemperatureIsKeptCalculatedOneFollowsTheDepth) {
  give("dres", "ft", 5000.0f);
  for (int state : {kStateTyped, kStateCalculated}) {
    give("tres", "degf", 150.0f, state);
    calculateAll(t);
    EXPECT_EQ(read("tres", "degf"), state == kStateTyped ? 150.0f : 135.0f);
    EXPECT_EQ(t.state(Entry::Tres), state);
  }
}

TEST_F(CalculateAll, StandardConditionsResetButThisRunUsesTheOldOnes) {
  giveCase();
  give("tsc", "degf", 70.0f, kStateCalculated);
  give("psc", "psia", 15.0f, kStateCalculated);
  calculateAll(t);
  EXPECT_EQ(read("tsc", "degf"), 60.0f);
  EXPECT_EQ(read("psc", "psia"), 14.7f);
  // bg = P Tsc / (z T Psc) with the 70 degF and 15 psia read before the reset.
  EXPECT_TRUE(nearRel(read("bg", "scf/cf"),
                      3520.0 * 529.67 / (undersaturated("zfact") * 630.67 * 15.0), kChainRel));
  calculateAll(t);
  EXPECT_TRUE(nearRel(read("bg", "scf/cf"), undersaturated("bg"), kChainRel));
  // Emptied standard conditions stay empty, and leave no gas volume factor.
  give("tsc", "degf", kRealNull, kStateEmpty);
  calculateAll(t);
  EXPECT_TRUE(missing("tsc"));
  EXPECT_EQ(t.state(Entry::Tsc), kStateEmpty);
  EXPECT_TRUE(missing("bg"));
  EXPECT_FALSE(missing("gvisc"));
}

TEST_F(CalculateAll, BubblePointAndVolumeFactor) {
  giveCase();
  // A calculated bubble point overwrites a typed volume factor...
  give("bo", "bbl/stb", 1.5f);
  calculateAll(t);
  EXPECT_TRUE(nearRel(read("bo", "bbl/stb"), undersaturated("bo"), kChainRel));
  EXPECT_EQ(t.state(Entry::Bo), kStateCalculated);
  // ...a typed one leaves it alone (here: cleared).
  give("bo", "bbl/stb", kRealNull, kStateEmpty);
  give("pbubble", "psia", 3000.0f);
  calculateAll(t);
  EXPECT_TRUE(missing("bo"));
  EXPECT_EQ(read("pbubble", "psia"), 3000.0f);
}

TEST_F(CalculateAll, WithoutGasGravityOrImpurityTheCalculatedGasEntriesAreCleared) {
  giveCase();
  calculateAll(t);
  ASSERT_FALSE(missing("bg"));
  give("gvisc", "cp", 0.03f);  // typed: survives
  give("gden", "(air=1)", kRealNull, kStateEmpty);
  calculateAll(t);
  for (const char* n : {"zfact", "bg", "gdenres", "ghi"}) EXPECT_TRUE(missing(n)) << n;
  EXPECT_EQ(t.state(Entry::Zfact), kStateCalculated);
  EXPECT_EQ(read("gvisc", "cp"), 0.03f);
  EXPECT_FALSE(missing("bo"));  // the oil side is not affected
  // A missing impurity stops the gas side too.
  giveCase();
  give("h2s", "vol/vol", kRealNull, kStateEmpty);
  calculateAll(t);
  EXPECT_TRUE(missing("zfact"));
}

TEST_F(CalculateAll, TypedInputsAreUsedOrCleaned) {
  giveCase();
  give("oviscdt", "degf", 180.0f);  // feeds the dead-oil viscosity
  give("co2", "%", -5.0f);          // a negative impurity is cleared on the form
  calculateAll(t);
  EXPECT_TRUE(nearRel(read("oviscd", "cp"), 2.183667615041447, kChainRel));
  EXPECT_EQ(read("co2", "%"), 0.0f);
  EXPECT_EQ(t.state(Entry::Co2), kStateTyped);
  EXPECT_TRUE(nearRel(read("zfact", "-"), undersaturated("zfact"), kChainRel));
}

TEST_F(CalculateAll, ThroughTheCInterface) {
  int oilfield = 1, typed = 1;
  FC_INIT(&oilfield);
  const testing::ChainValue in[] = {{"dres", "ft", 8000.0}, {"oden", "api", 35.0},
                                    {"sgden", "(air=1)", 0.75}, {"solgor", "scf/stb", 600.0},
                                    {"gden", "(air=1)", 0.7}};
  for (const auto& c : in) {
    float v = static_cast<float>(c.value);
    FC_SETV(testing::Name(c.name).c_str(), testing::Unit(c.unit).c_str(), &v, &typed);
  }
  FC_CALCALL();
  float z, tpr, ppr;
  int state, miss, status;
  FC_GETV(testing::Name("zfact").c_str(), testing::Unit("-").c_str(), &z, &state, &miss);
  EXPECT_TRUE(nearRel(z, undersaturated("zfact"), kChainRel));
  EXPECT_EQ(state, 2);
  EXPECT_EQ(miss, 0);
  FC_GASRED(&tpr, &ppr, &status);
  EXPECT_EQ(status, 0);
  EXPECT_TRUE(nearRel(tpr, 630.67 / (158.0 + 333.0 * 0.7), 1e-5));
  EXPECT_TRUE(nearRel(ppr, 3520.0 / (693.0 - 35.0 * 0.7), 1e-5));
  FC_CLOSE();
  FC_GASRED(&tpr, &ppr, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(tpr, kRealNull);
}

class CalculateEntry : public CalculateAll {};

TEST_F(CalculateEntry, RefusalsNameTheReasonOnceInTheStatusAndAsAMessage) {
  struct Case { Entry e; const char* message; };
  const char* none = "No calculation for this entry";
  for (const Case& c : {Case{Entry::Dres, none}, Case{Entry::Oden, none}, Case{Entry::Sgden, none},
                        Case{Entry::Solgor, none}, Case{Entry::Gden, none}, Case{Entry::N2, none},
                        Case{Entry::Co2, none}, Case{Entry::H2s, none},
                        Case{Entry::Tres, "Need a depth!"}, Case{Entry::Pres, "Need a depth!"}}) {
    SCOPED_TRACE(static_cast<int>(c.e));
    host::clearRecorded();
    EXPECT_EQ(calculateEntry(t, c.e).message(), c.message);
    ASSERT_EQ(host::recordedMessages().size(), 1u);
    EXPECT_EQ(host::recordedMessages()[0], c.message);
  }
}

TEST_F(CalculateEntry, OneEntryAloneFromTheFormsValues) {
  give("dres", "ft", 10000.0f);
  give("tres", "degf", 100.0f);  // the button recalculates even a typed value
  EXPECT_TRUE(calculateEntry(t, Entry::Tres).isOk());
  EXPECT_TRUE(nearRel(read("tres", "degf"), 195.0, 1e-6));
  EXPECT_EQ(t.state(Entry::Tres), kStateCalculated);
  EXPECT_TRUE(missing("pres"));  // only the one entry

  giveCase();
  give("tres", "degf", 171.0f);
  give("pres", "psia", 3520.0f);
  for (Entry e : {Entry::Pbubble, Entry::Zfact, Entry::Ghi})
    EXPECT_TRUE(calculateEntry(t, e).isOk());
  for (const char* n : {"pbubble", "zfact", "ghi"})
    EXPECT_TRUE(nearRel(read(n, ""), undersaturated(n), kChainRel)) << n;
  EXPECT_TRUE(missing("bo"));
  EXPECT_TRUE(missing("gdenres"));
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(CalculateEntry, ThroughTheCInterface) {
  int oilfield = 1, status = 7;
  FC_INIT(&oilfield);
  for (auto [e, expected] : {std::pair{"tsc", 0}, {"oden", 1}, {"pres", 1}}) {
    FC_CALCENTRY(testing::Name(e).c_str(), &status);
    EXPECT_EQ(status, expected) << e;
  }
  const auto msgs = host::recordedMessages();
  ASSERT_EQ(msgs.size(), 2u);
  EXPECT_EQ(msgs[0], "No calculation for this entry");
  EXPECT_EQ(msgs[1], "Need a depth!");
  FC_CLOSE();
}

}  // namespace
}  // namespace subsurf::fluids
