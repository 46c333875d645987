// The entry accessors: fixed-width names across the C interface, unit
// conversion on the way in and out, and what a missing entry reads as.
#include <gtest/gtest.h>

#include <string>

#include "fluids/fluid_entries.h"
#include "fluids/fluid_test_support.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::nearRel;

struct Got {
  float value;
  int state, missing;
};

Got getv(const char* name, const char* unit) {
  Got g{1.0f, 77, 77};
  FC_GETV(testing::Name(name).c_str(), testing::Unit(unit).c_str(), &g.value, &g.state, &g.missing);
  return g;
}

void setv(const char* name, const char* unit, float value, int state) {
  FC_SETV(testing::Name(name).c_str(), testing::Unit(unit).c_str(), &value, &state);
}

class EntryAccessors : public ::testing::Test {
 protected:
  void SetUp() override {
    int oilfield = 1;
    FC_INIT(&oilfield);
  }
  void TearDown() override { FC_CLOSE(); }
};

TEST_F(EntryAccessors, ValuesConvertBetweenUnitsOfTheSeries) {
  struct Case { const char *name, *in; float value; int state; const char* out; double expected; };
  for (const Case& c : {
           Case{"dres", "m", 2438.4f, 1, "ft", 8000.0}, Case{"dres", "m", 2438.4f, 1, "m", 2438.4},
           Case{"tres", "degc", 100.0f, 2, "degf", 212.0},
           Case{"tres", "degc", 100.0f, 2, "degr", 671.67},
           // API gravity is reciprocal to specific gravity: 141.5 / (35 + 131.5).
           Case{"oden", "api", 35.0f, 1, "sg", 141.5 / 166.5},
           Case{"pres", "bar", 100.0f, 1, "psia", 1e7 / 6894.757293168362},
           Case{"co2", "%", 5.0f, 1, "vol/vol", 0.05},
           // Names and units ignore case; a blank unit means as stored.
           Case{"DRES", "FT", 1234.0f, 1, "", 1234.0}, Case{"ghi", " ", 0.4f, 2, " ", 0.4}}) {
    SCOPED_TRACE(std::string(c.name) + " " + c.in + " -> " + c.out);
    setv(c.name, c.in, c.value, c.state);
    const Got g = getv(c.name, c.out);
    EXPECT_TRUE(nearRel(g.value, c.expected, 1e-6));
    EXPECT_EQ(g.state, c.state);
    EXPECT_EQ(g.missing, 0);
  }
}

TEST_F(EntryAccessors, WhatReadsAsMissing) {
  struct Case { const char *name, *unit; int state; };
  setv("tres", "degf", 150.0f, 1);
  setv("tres", "psia", 10.0f, 1);      // a unit of another series stores nothing
  setv("bo", "bbl/stb", kRealNull, 2);  // a null value keeps its state
  // The entry is there but cannot be read in feet; an unknown name has no state.
  for (const Case& c : {Case{"tres", "ft", 1}, Case{"nosuch", "ft", 0}, Case{"bo", "rm3/sm3", 2},
                        Case{"dres", "ft", 0}}) {
    const Got g = getv(c.name, c.unit);
    EXPECT_EQ(g.value, kRealNull) << c.name;
    EXPECT_EQ(g.missing, 1) << c.name;
    EXPECT_EQ(g.state, c.state) << c.name;
  }
  EXPECT_EQ(getv("tres", "degf").value, 150.0f);
  // Without a table everything is missing, and a value has nowhere to go.
  FC_CLOSE();
  setv("dres", "ft", 8000.0f, 1);
  const Got g = getv("dres", "ft");
  EXPECT_EQ(g.value, kRealNull);
  EXPECT_EQ(g.state, 0);
  EXPECT_EQ(g.missing, 1);
}

TEST_F(EntryAccessors, AFreshTableHasNoImpuritiesAndStandardConditions) {
  for (const char* e : {"n2", "co2", "h2s"}) {
    const Got g = getv(e, "vol/vol");
    EXPECT_EQ(g.value, 0.0f) << e;
    EXPECT_EQ(g.missing, 0) << e;
    EXPECT_EQ(g.state, 0) << e;
  }
  EXPECT_EQ(getv("tsc", "degf").value, 60.0f);
  EXPECT_EQ(getv("tsc", "degf").state, 2);
  EXPECT_EQ(getv("psc", "psia").value, 14.7f);
  EXPECT_EQ(getv("zfact", "-").missing, 1);
}

TEST(EntryTable, StoredUnitsFollowTheUnitSystem) {
  struct Case { int system; Entry e; const char* unit; };
  FluidTable t;
  for (const Case& c : {Case{2, Entry::Dres, "m"}, Case{2, Entry::Tres, "degc"},
                        Case{2, Entry::Pres, "bar"}, Case{2, Entry::Oden, "sg"},
                        Case{3, Entry::Pres, "kpa"}, Case{3, Entry::Tres, "degk"},
                        Case{1, Entry::Ocomp, "1/psi"}, Case{1, Entry::Zfact, "-"}}) {
    t.create(c.system);
    EXPECT_EQ(t.storedUnitName(c.e), c.unit) << c.system;
  }
  t.create(2);  // 60 degF held in degC
  EXPECT_TRUE(nearRel(t.storedValue(Entry::Tsc), 15.555555555555555, 1e-6));
}

TEST(EntryTable, ChangesAndRefusals) {
  FluidTable t;
  t.create(1);
  // Changing the stored unit keeps the quantity.
  ASSERT_TRUE(t.set("pres", "psia", 3000.0f, kStateTyped).isOk());
  ASSERT_TRUE(t.setStoredUnit(Entry::Pres, "mpa").isOk());
  EXPECT_EQ(t.storedUnitName(Entry::Pres), "mpa");
  EXPECT_TRUE(nearRel(t.storedValue(Entry::Pres), 3000.0 * 6894.757293168362 / 1e6, 1e-6));
  EXPECT_TRUE(nearRel(t.get("pres", "psia").value, 3000.0, 1e-6));
  EXPECT_EQ(t.setStoredUnit(Entry::Pres, "cp").message(),
            "\"cp\" is not a unit of pressure for entry \"pres\"");
  EXPECT_EQ(t.set("tresx", "degf", 1.0f, 1).message(), "Unknown entry \"tresx\"");
  EXPECT_EQ(t.set("tres", "kg/m3", 1.0f, 1).message(),
            "\"kg/m3\" is not a unit of temperature for entry \"tres\"");
  EXPECT_TRUE(isNull(t.storedValue(Entry::Tres)));
}

TEST(EntryTable, NamesAndForms) {
  EXPECT_EQ(findEntry("  Gdenres "), Entry::Gdenres);
  EXPECT_FALSE(findEntry("gas").has_value());
  int count[3] = {};
  for (const EntryInfo& info : allEntries()) {
    EXPECT_LE(std::string(info.name).size(), kEntryNameWidth);
    count[info.form == Form::Reservoir ? 0 : info.form == Form::Oil ? 1 : 2]++;
  }
  EXPECT_EQ(count[0], 5);
  EXPECT_EQ(count[1], 9);
  EXPECT_EQ(count[2], 9);  // eight gas entries and the z-factor
  EXPECT_STREQ(formTitle(Form::Gas), "Gas properties");
}

}  // namespace
}  // namespace subsurf::fluids
