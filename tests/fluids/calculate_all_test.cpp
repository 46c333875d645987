// Calculate-all and the single-entry buttons over a table: which entries are
// kept, recalculated, filled or reset, and the values of the whole chain
// against a double-precision hand calculation of the same formulas.
#include <gtest/gtest.h>

#include <cmath>

#include "fluids/calculate_all.h"
#include "fluids/fluid_entries.h"
#include "fluids/fluid_test_support.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::nearRel;

// Results compound a dozen single-precision steps.
constexpr double kChainRel = 1e-4;

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
  void giveCase(float depthFt, float api, float sg, float gor, float gg) {
    give("dres", "ft", depthFt);
    give("oden", "api", api);
    give("sgden", "(air=1)", sg);
    give("solgor", "scf/stb", gor);
    give("gden", "(air=1)", gg);
  }
  FluidTable t;
};

struct Expected {
  double tres, pres, pbubble, bo, oviscd, ovisc, ocomp, zfact, bg, gvisc, gdenres, ghi;
};

void expectChain(FluidTable& t, const Expected& e) {
  auto v = [&](const char* n, const char* u) { return t.get(n, u).value; };
  EXPECT_TRUE(nearRel(v("tres", "degf"), e.tres, kChainRel));
  EXPECT_TRUE(nearRel(v("pres", "psia"), e.pres, kChainRel));
  EXPECT_TRUE(nearRel(v("pbubble", "psia"), e.pbubble, kChainRel));
  EXPECT_TRUE(nearRel(v("bo", "bbl/stb"), e.bo, kChainRel));
  EXPECT_TRUE(nearRel(v("oviscd", "cp"), e.oviscd, kChainRel));
  EXPECT_TRUE(nearRel(v("ovisc", "cp"), e.ovisc, kChainRel));
  EXPECT_TRUE(nearRel(v("ocomp", "1/psi"), e.ocomp, kChainRel));
  EXPECT_TRUE(nearRel(v("zfact", "-"), e.zfact, kChainRel));
  EXPECT_TRUE(nearRel(v("bg", "scf/cf"), e.bg, kChainRel));
  EXPECT_TRUE(nearRel(v("gvisc", "cp"), e.gvisc, kChainRel));
  EXPECT_TRUE(nearRel(v("gdenres", "g/cc"), e.gdenres, kChainRel));
  EXPECT_TRUE(nearRel(v("ghi", ""), e.ghi, kChainRel));
}

// 8000 ft, 35 API, separator gas 0.75, 600 scf/stb, gas 0.7: undersaturated.
const Expected kUndersaturated{
    171.0, 3520.0, 2715.0214893949105, 0.9798089702187491, 62.777742387738556,
    0.6129627075641453, 0.00034008164772727275, 0.8621235022251834, 228.86602020742745,
    0.022807534898589575, 0.19595484765094437, 0.4408984072146248};

TEST_F(CalculateAll, FillsEveryFormFromFiveOilfieldValues) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  calculateAll(t);
  expectChain(t, kUndersaturated);
  EXPECT_EQ(t.get("oviscdt", "degf").value, 60.0f);
  EXPECT_EQ(t.state(Entry::Tres), kStateCalculated);
  EXPECT_EQ(t.state(Entry::Dres), kStateTyped);
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(CalculateAll, MetricInputGivesTheSameValues) {
  FluidTable metric;
  metric.create(2);
  ASSERT_TRUE(metric.set("dres", "m", 2438.4f, kStateTyped).isOk());
  ASSERT_TRUE(metric.set("oden", "sg", 141.5f / 166.5f, kStateTyped).isOk());
  ASSERT_TRUE(metric.set("sgden", "(air=1)", 0.75f, kStateTyped).isOk());
  // 600 scf/stb = 600 * 0.17810760667903525 m3/m3
  ASSERT_TRUE(metric.set("solgor", "m3/m3", 106.86456f, kStateTyped).isOk());
  ASSERT_TRUE(metric.set("gden", "(air=1)", 0.7f, kStateTyped).isOk());
  calculateAll(metric);
  EXPECT_EQ(metric.storedUnitName(Entry::Pres), "bar");
  expectChain(metric, kUndersaturated);
}

TEST_F(CalculateAll, SaturatedOilUsesMcCainCompressibility) {
  // 3000 ft, 30 API (heavy-oil constants), 800 scf/stb: the bubble point lies
  // above the reservoir pressure.
  giveCase(3000.0f, 30.0f, 0.75f, 800.0f, 0.7f);
  calculateAll(t);
  expectChain(t, {105.0, 1320.0, 3497.3027156804214, 1.3392111235451276, 188.6501080352203,
                  1.348279311857014, 0.000758885142728745, 0.7972182880994424,
                  103.66025547537336, 0.014263565342914347, 0.08875380255541993,
                  0.19969605574969485});
}

TEST_F(CalculateAll, CompressibilityMethodSwitchesAtTheBubblePoint) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  // At the bubble point itself: McCain with the ratio at reservoir pressure.
  give("pbubble", "psia", 3520.0f);
  calculateAll(t);
  const double tR = 171.0 + 459.67;
  const double rsP = 0.0178 * 35.0 * std::pow(3520.0, 1.187) * std::exp(23.931 * 35.0 / tR);
  const double co3 = std::exp(-7.573 - 1.45 * std::log(3520.0) - 0.383 * std::log(3520.0) +
                              1.402 * std::log(tR) + 0.256 * std::log(35.0) +
                              0.449 * std::log(rsP));
  EXPECT_TRUE(nearRel(read("ocomp", "1/psi"), co3, kChainRel));
  // Just below: Vasquez-Beggs with the stored ratio.
  give("pbubble", "psia", 3519.0f);
  calculateAll(t);
  const double co1 = (5.0 * 600 + 17.2 * tR + 12.61 * 35 - 1180.0 * 0.75 - 1433.0) / (3520.0 * 1e4);
  EXPECT_TRUE(nearRel(read("ocomp", "1/psi"), co1, kChainRel));
}

TEST_F(CalculateAll, GeothermalGradientAndHydrostaticPressure) {
  give("dres", "ft", 5000.0f);
  calculateAll(t);
  EXPECT_EQ(read("tres", "degf"), 135.0f);
  EXPECT_EQ(read("pres", "psia"), 2200.0f);
  give("dres", "ft", 10000.0f);
  calculateAll(t);
  EXPECT_TRUE(nearRel(read("tres", "degf"), 195.0, 1e-6));
  EXPECT_EQ(read("pres", "psia"), 4400.0f);
  // Down to -1000 ft still counts (60 - 15 degF, -440 psia).
  give("dres", "ft", -1000.0f);
  calculateAll(t);
  EXPECT_EQ(read("tres", "degf"), 45.0f);
  EXPECT_EQ(read("pres", "psia"), -440.0f);
}

TEST_F(CalculateAll, ADepthAboveMinus1000CalculatesNeither) {
  give("dres", "ft", -1000.5f);
  calculateAll(t);
  EXPECT_TRUE(t.get("tres", "degf").missing);
  EXPECT_TRUE(t.get("pres", "psia").missing);
}

TEST_F(CalculateAll, TypedTemperatureIsKeptCalculatedOneFollowsTheDepth) {
  give("dres", "ft", 5000.0f);
  give("tres", "degf", 150.0f);
  calculateAll(t);
  EXPECT_EQ(read("tres", "degf"), 150.0f);
  EXPECT_EQ(t.state(Entry::Tres), kStateTyped);

  give("tres", "degf", 150.0f, kStateCalculated);
  calculateAll(t);
  EXPECT_EQ(read("tres", "degf"), 135.0f);
  EXPECT_EQ(t.state(Entry::Tres), kStateCalculated);
}

TEST_F(CalculateAll, StandardConditionsResetButThisRunUsesTheOldOnes) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  give("tsc", "degf", 70.0f, kStateCalculated);
  give("psc", "psia", 15.0f, kStateCalculated);
  calculateAll(t);
  EXPECT_EQ(read("tsc", "degf"), 60.0f);
  EXPECT_EQ(read("psc", "psia"), 14.7f);
  // bg = P Tsc / (z T Psc) with the 70 degF and 15 psia read before the reset.
  const double z = 0.8621235022251834;
  EXPECT_TRUE(nearRel(read("bg", "scf/cf"), 3520.0 * 529.67 / (z * 630.67 * 15.0), kChainRel));
  calculateAll(t);
  EXPECT_TRUE(nearRel(read("bg", "scf/cf"), kUndersaturated.bg, kChainRel));
}

TEST_F(CalculateAll, EmptyStandardConditionsStayEmpty) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  give("tsc", "degf", kRealNull, kStateEmpty);
  calculateAll(t);
  EXPECT_TRUE(t.get("tsc", "degf").missing);
  EXPECT_EQ(t.state(Entry::Tsc), kStateEmpty);
  EXPECT_TRUE(t.get("bg", "scf/cf").missing);  // no standard temperature to use
  EXPECT_FALSE(t.get("gvisc", "cp").missing);
}

TEST_F(CalculateAll, TypedBubblePointLeavesTheVolumeFactorAlone) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  give("pbubble", "psia", 3000.0f);
  calculateAll(t);
  EXPECT_TRUE(t.get("bo", "bbl/stb").missing);
  EXPECT_EQ(read("pbubble", "psia"), 3000.0f);
}

TEST_F(CalculateAll, CalculatedBubblePointOverwritesATypedVolumeFactor) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  give("bo", "bbl/stb", 1.5f);
  calculateAll(t);
  EXPECT_TRUE(nearRel(read("bo", "bbl/stb"), kUndersaturated.bo, kChainRel));
  EXPECT_EQ(t.state(Entry::Bo), kStateCalculated);
}

TEST_F(CalculateAll, TypedViscosityTemperatureFeedsTheDeadOilViscosity) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  give("oviscdt", "degf", 180.0f);
  calculateAll(t);
  EXPECT_TRUE(nearRel(read("oviscd", "cp"), 2.183667615041447, kChainRel));
}

TEST_F(CalculateAll, WithoutGasGravityTheCalculatedGasEntriesAreCleared) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  calculateAll(t);
  ASSERT_FALSE(t.get("bg", "scf/cf").missing);
  give("gvisc", "cp", 0.03f);  // typed: survives
  give("gden", "(air=1)", kRealNull, kStateEmpty);
  calculateAll(t);
  EXPECT_TRUE(t.get("zfact", "-").missing);
  EXPECT_EQ(t.state(Entry::Zfact), kStateCalculated);
  EXPECT_TRUE(t.get("bg", "scf/cf").missing);
  EXPECT_TRUE(t.get("gdenres", "g/cc").missing);
  EXPECT_TRUE(t.get("ghi", "").missing);
  EXPECT_EQ(read("gvisc", "cp"), 0.03f);
  // The oil side is not affected.
  EXPECT_FALSE(t.get("bo", "bbl/stb").missing);
}

TEST_F(CalculateAll, MissingImpurityStopsTheGasSide) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  give("h2s", "vol/vol", kRealNull, kStateEmpty);
  calculateAll(t);
  EXPECT_TRUE(t.get("zfact", "-").missing);
}

TEST_F(CalculateAll, NegativeImpurityIsClearedOnTheForm) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  give("co2", "%", -5.0f);
  calculateAll(t);
  EXPECT_EQ(read("co2", "%"), 0.0f);
  EXPECT_EQ(t.state(Entry::Co2), kStateTyped);
  EXPECT_TRUE(nearRel(read("zfact", "-"), kUndersaturated.zfact, kChainRel));
}

TEST_F(CalculateAll, ThroughTheCInterface) {
  int oilfield = 1;
  FC_INIT(&oilfield);
  float v[] = {8000.0f, 35.0f, 0.75f, 600.0f, 0.7f};
  const char* names[] = {"dres                ", "oden                ", "sgden               ",
                         "solgor              ", "gden                "};
  const char* units[] = {"ft              ", "api             ", "(air=1)         ",
                         "scf/stb         ", "(air=1)         "};
  int typed = 1;
  for (int i = 0; i < 5; ++i) FC_SETV(names[i], units[i], &v[i], &typed);
  FC_CALCALL();
  float z, tpr, ppr;
  int state, missing, status;
  FC_GETV("zfact               ", "-               ", &z, &state, &missing);
  EXPECT_TRUE(nearRel(z, kUndersaturated.zfact, kChainRel));
  EXPECT_EQ(state, 2);
  EXPECT_EQ(missing, 0);
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

TEST_F(CalculateEntry, InputsHaveNoCalculation) {
  for (Entry e : {Entry::Dres, Entry::Oden, Entry::Sgden, Entry::Solgor, Entry::Gden, Entry::N2,
                  Entry::Co2, Entry::H2s}) {
    host::clearRecorded();
    const Status s = calculateEntry(t, e);
    EXPECT_EQ(s.message(), "No calculation for this entry");
    ASSERT_EQ(host::recordedMessages().size(), 1u);
    EXPECT_EQ(host::recordedMessages()[0], "No calculation for this entry");
  }
}

TEST_F(CalculateEntry, TemperatureAndPressureNeedADepth) {
  for (Entry e : {Entry::Tres, Entry::Pres}) {
    host::clearRecorded();
    EXPECT_EQ(calculateEntry(t, e).message(), "Need a depth!");
    ASSERT_EQ(host::recordedMessages().size(), 1u);
    EXPECT_EQ(host::recordedMessages()[0], "Need a depth!");
  }
  give("dres", "ft", 10000.0f);
  give("tres", "degf", 100.0f);  // the button recalculates even a typed value
  EXPECT_TRUE(calculateEntry(t, Entry::Tres).isOk());
  EXPECT_TRUE(nearRel(read("tres", "degf"), 195.0, 1e-6));
  EXPECT_EQ(t.state(Entry::Tres), kStateCalculated);
  EXPECT_TRUE(t.get("pres", "psia").missing);  // only the one entry
}

TEST_F(CalculateEntry, OneEntryAloneFromTheFormsValues) {
  giveCase(8000.0f, 35.0f, 0.75f, 600.0f, 0.7f);
  give("tres", "degf", 171.0f);
  give("pres", "psia", 3520.0f);
  EXPECT_TRUE(calculateEntry(t, Entry::Pbubble).isOk());
  EXPECT_TRUE(nearRel(read("pbubble", "psia"), kUndersaturated.pbubble, kChainRel));
  EXPECT_TRUE(t.get("bo", "bbl/stb").missing);
  EXPECT_TRUE(calculateEntry(t, Entry::Zfact).isOk());
  EXPECT_TRUE(nearRel(read("zfact", "-"), kUndersaturated.zfact, kChainRel));
  EXPECT_TRUE(calculateEntry(t, Entry::Ghi).isOk());
  EXPECT_TRUE(nearRel(read("ghi", ""), kUndersaturated.ghi, kChainRel));
  EXPECT_TRUE(t.get("gdenres", "g/cc").missing);
  EXPECT_TRUE(host::recordedMessages().empty());
}

TEST_F(CalculateEntry, ThroughTheCInterface) {
  int oilfield = 1, status = 7;
  FC_INIT(&oilfield);
  FC_CALCENTRY("tsc                 ", &status);
  EXPECT_EQ(status, 0);
  FC_CALCENTRY("oden                ", &status);
  EXPECT_EQ(status, 1);
  FC_CALCENTRY("pres                ", &status);
  EXPECT_EQ(status, 1);
  const auto msgs = host::recordedMessages();
  ASSERT_EQ(msgs.size(), 2u);
  EXPECT_EQ(msgs[0], "No calculation for this entry");
  EXPECT_EQ(msgs[1], "Need a depth!");
  FC_CLOSE();
}

}  // namespace
}  // namespace subsurf::fluids
