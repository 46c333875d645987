// The entry accessors: fixed-width names across the C interface, unit
// conversion on the way in and out, and what a missing entry reads as.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "fluids/fluid_entries.h"
#include "fluids/fluid_test_support.h"
#include "host/fixed_text.h"
#include "host/nulls.h"
#include "subsurf/fluids.h"

namespace subsurf::fluids {
namespace {

using testing::nearRel;

// Blank-padded fields as a caller from another language passes them.
struct Name {
  explicit Name(const char* s) { setFixed(field.data(), field.size(), s); }
  std::array<char, kEntryNameWidth> field;
  const char* c_str() const { return field.data(); }
};
struct Unit {
  explicit Unit(const char* s) { setFixed(field.data(), field.size(), s); }
  std::array<char, kUnitNameWidth> field;
  const char* c_str() const { return field.data(); }
};

struct Got {
  float value;
  int state, missing;
};

Got getv(const char* name, const char* unit) {
  Got g{1.0f, 77, 77};
  FC_GETV(Name(name).c_str(), Unit(unit).c_str(), &g.value, &g.state, &g.missing);
  return g;
}

void setv(const char* name, const char* unit, float value, int state) {
  FC_SETV(Name(name).c_str(), Unit(unit).c_str(), &value, &state);
}

class EntryAccessors : public ::testing::Test {
 protected:
  void SetUp() override {
    int oilfield = 1;
    FC_INIT(&oilfield);
  }
  void TearDown() override { FC_CLOSE(); }
};

TEST_F(EntryAccessors, WithoutATableEverythingIsMissing) {
  FC_CLOSE();
  const Got g = getv("dres", "ft");
  EXPECT_EQ(g.value, kRealNull);
  EXPECT_EQ(g.state, 0);
  EXPECT_EQ(g.missing, 1);
  setv("dres", "ft", 8000.0f, 1);  // nowhere to go
  EXPECT_EQ(getv("dres", "ft").missing, 1);
}

TEST_F(EntryAccessors, ValuesConvertBetweenUnitsOfTheSeries) {
  setv("dres", "m", 2438.4f, 1);
  Got g = getv("dres", "ft");
  EXPECT_TRUE(nearRel(g.value, 8000.0, 1e-6));
  EXPECT_EQ(g.state, 1);
  EXPECT_EQ(g.missing, 0);
  EXPECT_TRUE(nearRel(getv("dres", "m").value, 2438.4, 1e-6));

  setv("tres", "degc", 100.0f, 2);
  EXPECT_TRUE(nearRel(getv("tres", "degf").value, 212.0, 1e-6));
  EXPECT_TRUE(nearRel(getv("tres", "degr").value, 671.67, 1e-6));
  EXPECT_EQ(getv("tres", "degr").state, 2);

  // API gravity is reciprocal to specific gravity: 141.5 / (35 + 131.5).
  setv("oden", "api", 35.0f, 1);
  EXPECT_TRUE(nearRel(getv("oden", "sg").value, 141.5 / 166.5, 1e-6));

  setv("pres", "bar", 100.0f, 1);
  EXPECT_TRUE(nearRel(getv("pres", "psia").value, 1e7 / 6894.757293168362, 1e-6));
  setv("co2", "%", 5.0f, 1);
  EXPECT_TRUE(nearRel(getv("co2", "vol/vol").value, 0.05, 1e-6));
}

TEST_F(EntryAccessors, UnitNamesIgnoreCaseAndABlankUnitMeansAsStored) {
  setv("DRES", "FT", 1234.0f, 1);
  EXPECT_EQ(getv("dres", "ft").value, 1234.0f);
  EXPECT_EQ(getv("dres", "").value, 1234.0f);
  setv("ghi", " ", 0.4f, 2);
  EXPECT_EQ(getv("ghi", " ").value, 0.4f);
}

TEST_F(EntryAccessors, UnknownNamesAndForeignUnitsReadAsMissing) {
  setv("tres", "degf", 150.0f, 1);
  Got g = getv("tres", "ft");
  EXPECT_EQ(g.value, kRealNull);
  EXPECT_EQ(g.missing, 1);
  EXPECT_EQ(g.state, 1);  // the entry is there; it cannot be read in feet
  g = getv("nosuch", "ft");
  EXPECT_EQ(g.missing, 1);
  EXPECT_EQ(g.state, 0);
  // A unit of another series stores nothing.
  setv("tres", "psia", 10.0f, 1);
  EXPECT_EQ(getv("tres", "degf").value, 150.0f);
}

TEST_F(EntryAccessors, ANullValueIsMissingButKeepsItsState) {
  setv("bo", "bbl/stb", kRealNull, 2);
  const Got g = getv("bo", "rm3/sm3");
  EXPECT_EQ(g.value, kRealNull);
  EXPECT_EQ(g.state, 2);
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
  EXPECT_EQ(getv("dres", "ft").missing, 1);
  EXPECT_EQ(getv("zfact", "-").missing, 1);
}

TEST(EntryTable, StoredUnitsFollowTheUnitSystem) {
  FluidTable t;
  t.create(2);
  EXPECT_EQ(t.storedUnitName(Entry::Dres), "m");
  EXPECT_EQ(t.storedUnitName(Entry::Tres), "degc");
  EXPECT_EQ(t.storedUnitName(Entry::Pres), "bar");
  EXPECT_EQ(t.storedUnitName(Entry::Oden), "sg");
  // 60 degF held in degC.
  EXPECT_TRUE(nearRel(t.storedValue(Entry::Tsc), 15.555555555555555, 1e-6));
  t.create(3);
  EXPECT_EQ(t.storedUnitName(Entry::Pres), "kpa");
  EXPECT_EQ(t.storedUnitName(Entry::Tres), "degk");
  t.create(1);
  EXPECT_EQ(t.storedUnitName(Entry::Ocomp), "1/psi");
  EXPECT_EQ(t.storedUnitName(Entry::Zfact), "-");
}

TEST(EntryTable, ChangingTheStoredUnitKeepsTheQuantity) {
  FluidTable t;
  t.create(1);
  ASSERT_TRUE(t.set("pres", "psia", 3000.0f, kStateTyped).isOk());
  ASSERT_TRUE(t.setStoredUnit(Entry::Pres, "mpa").isOk());
  EXPECT_EQ(t.storedUnitName(Entry::Pres), "mpa");
  EXPECT_TRUE(nearRel(t.storedValue(Entry::Pres), 3000.0 * 6894.757293168362 / 1e6, 1e-6));
  EXPECT_TRUE(nearRel(t.get("pres", "psia").value, 3000.0, 1e-6));
  const Status bad = t.setStoredUnit(Entry::Pres, "cp");
  EXPECT_EQ(bad.message(), "\"cp\" is not a unit of pressure for entry \"pres\"");
}

TEST(EntryTable, SetByNameRefusesWithAMessageNamingTheProblem) {
  FluidTable t;
  t.create(1);
  EXPECT_EQ(t.set("tresx", "degf", 1.0f, 1).message(), "Unknown entry \"tresx\"");
  EXPECT_EQ(t.set("tres", "kg/m3", 1.0f, 1).message(),
            "\"kg/m3\" is not a unit of temperature for entry \"tres\"");
  EXPECT_TRUE(isNull(t.storedValue(Entry::Tres)));
}

TEST(EntryTable, NamesAndForms) {
  EXPECT_EQ(findEntry("  Gdenres "), Entry::Gdenres);
  EXPECT_FALSE(findEntry("gas").has_value());
  int reservoir = 0, oil = 0, gas = 0;
  for (const EntryInfo& info : allEntries()) {
    EXPECT_LE(std::string(info.name).size(), kEntryNameWidth);
    (info.form == Form::Reservoir ? reservoir : info.form == Form::Oil ? oil : gas)++;
  }
  EXPECT_EQ(reservoir, 5);
  EXPECT_EQ(oil, 9);
  EXPECT_EQ(gas, 9);  // eight gas entries and the z-factor
  EXPECT_STREQ(formTitle(Form::Reservoir), "Reservoir conditions");
  EXPECT_STREQ(formTitle(Form::Oil), "Oil properties");
  EXPECT_STREQ(formTitle(Form::Gas), "Gas properties");
}

}  // namespace
}  // namespace subsurf::fluids
