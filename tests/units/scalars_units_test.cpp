// Typed scalars and units: change of unit, values in other units, storing,
// equality and min/max. Uses the shipped definitions file.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <tuple>
#include <utility>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "subsurf/scalars.h"
#include "units/scalar_records.h"
#include "units/scalar_units.h"
#include "units/units_registry.h"
#include "units/value_text.h"

using namespace subsurf;

namespace {

// Unit names as passed across the C interface: 16 blank-padded characters.
struct Unit16 {
  char text[16];
  explicit Unit16(std::string_view name) { setFixed(text, name); }
};

class ScalarUnits : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(unitsRegistry().loaded());
    for (auto [series, name] : {std::pair{&depth, "depth"}, std::pair{&temperature, "temperature"},
                                 std::pair{&pressure, "pressure"}})
      ASSERT_GE(*series = unitsRegistry().findSeries(name), 0) << name;
    ASSERT_GE(ft = unitsRegistry().findUnit(depth, "ft"), 1);
    ASSERT_GE(m = unitsRegistry().findUnit(depth, "m"), 1);
  }

  DT_RSCA depthIn(std::string_view unit, float value) { return makeReal("top", depth, unit, value); }

  int depth = -1, temperature = -1, pressure = -1, ft = 0, m = 0;
};

}  // namespace

TEST_F(ScalarUnits, UnitByNameIgnoringCaseAndByPosition) {
  DT_RSCA r;
  DT_RSCADFLT(&r);
  DT_RSCASETVU(&r, &depth, Unit16("FT").text);
  EXPECT_EQ(r.VU.ISER, depth);
  EXPECT_EQ(r.VU.IUN, ft);
  EXPECT_TRUE(isNull(r.V));  // setting the unit converts nothing

  DT_RSCASETVU(&r, &depth, Unit16("furlong").text);
  EXPECT_LT(r.VU.IUN, 1);

  // The unit's position from its name and its name from its position.
  DT_UNIT u{0, depth, {}};
  setFixed(u.CU, "M");
  DT_SETIUN(&u);
  EXPECT_EQ(u.IUN, m);
  u.IUN = ft;
  DT_SETCUN(&u);
  EXPECT_EQ(fixedText(u.CU), unitsRegistry().unitName(depth, ft));
  u.IUN = 99;
  DT_SETCUN(&u);
  EXPECT_EQ(fixedText(u.CU), "");
}

TEST_F(ScalarUnits, ChangeOfUnitConvertsValueAndLimits) {
  DT_RSCA r = depthIn("ft", 1000.0f);
  r.VMIN = 0.0f;
  r.VMAX = 10000.0f;
  DT_RSCACONVU(&r, Unit16("m").text);
  EXPECT_NEAR(r.V, 304.8f, 1e-3);
  EXPECT_NEAR(r.VMAX, 3048.0f, 1e-2);
  EXPECT_EQ(r.VMIN, 0.0f);
  EXPECT_TRUE(isNull(r.VDEF));  // nulls are never converted
  EXPECT_EQ(r.VU.IUN, m);
  EXPECT_EQ(fixedText(r.VU.CU), "m");
  EXPECT_EQ(fixedText(r.CHU), "304.8");

  DT_RSCACONVUI(&r, &ft);
  EXPECT_NEAR(r.V, 1000.0f, 1e-3);
  EXPECT_EQ(fixedText(r.VU.CU), "ft");
}

TEST_F(ScalarUnits, ChangeToAnUnknownUnitDoesNothing) {
  DT_RSCA r = depthIn("ft", 1000.0f);
  const DT_RSCA before = r;
  DT_RSCACONVU(&r, Unit16("furlong").text);
  EXPECT_EQ(std::memcmp(&r, &before, sizeof r), 0);
  const int beyond = 99;
  DT_RSCACONVUI(&r, &beyond);
  EXPECT_EQ(std::memcmp(&r, &before, sizeof r), 0);
}

TEST_F(ScalarUnits, ConvertingAnArrayTouchesOnlyTheGivenSeries) {
  DT_RSCA recs[3] = {depthIn("ft", 100.0f), makeReal("pres", pressure, "psia", 100.0f), depthIn("m", 10.0f)};
  const int n = 3;
  DT_RSCACONVUS(recs, &depth, &m, &n);
  EXPECT_NEAR(recs[0].V, 30.48f, 1e-4);
  EXPECT_EQ(recs[0].VU.IUN, m);
  EXPECT_EQ(recs[1].V, 100.0f);
  EXPECT_EQ(fixedText(recs[1].VU.CU), "psia");
  EXPECT_EQ(recs[2].V, 10.0f);
}

TEST_F(ScalarUnits, ValueInAnotherUnitLeavesTheRecordAlone) {
  DT_RSCA t = makeReal("tres", temperature, "degc", 100.0f);
  const DT_RSCA before = t;
  float v = 0.0f;
  DT_GETSR(&t, Unit16("degf").text, &v);
  EXPECT_NEAR(v, 212.0f, 1e-3);
  EXPECT_EQ(std::memcmp(&t, &before, sizeof t), 0);

  const int iunF = unitsRegistry().findUnit(temperature, "degf");
  DT_GETSR1(&t, &iunF, &v);
  EXPECT_NEAR(v, 212.0f, 1e-3);

  DT_RSCAGETC(&t, Unit16("kelvinish").text, &v);
  EXPECT_EQ(v, 100.0f);  // not a unit of the series: unconverted

  float err = 0.0f;
  t.RELERR = 0.02f;
  DT_RSCAGETCE(&t, Unit16("degf").text, &v, &err);
  EXPECT_NEAR(v, 212.0f, 1e-3);
  EXPECT_EQ(err, 0.02f);
}

TEST_F(ScalarUnits, StoringConvertsIntoTheRecordsUnit) {
  DT_RSCA r = depthIn("m", 0.0f);
  const float value = 1000.0f;
  const int entered = DT_STATE_ENTERED;
  DT_RSCASETC(&r, Unit16("ft").text, &value, &entered);
  EXPECT_NEAR(r.V, 304.8f, 1e-3);
  EXPECT_EQ(r.VU.IUN, m);
  EXPECT_EQ(r.SET, DT_STATE_ENTERED);
  EXPECT_EQ(fixedText(r.CHU), "304.8");

  // Without a state the state word stays.
  r.SET = 7;
  DT_RSCASETC(&r, Unit16("ft").text, &value, nullptr);
  EXPECT_EQ(r.SET, 7);

  // By position.
  const float v2 = 10.0f;
  DT_RSCASETI(&r, &ft, &v2, nullptr);
  EXPECT_NEAR(r.V, 3.048f, 1e-5);

  // A blank unit name means the record's own unit.
  const float v3 = 55.5f, err = 0.03f;
  DT_RSCASETC(&r, Unit16("").text, &v3, nullptr);
  EXPECT_EQ(r.V, 55.5f);
  EXPECT_EQ(r.VU.IUN, m);

  // With an error the text shows the uncertainty.
  DT_RSCASETCE(&r, Unit16("").text, &value, &err, nullptr);
  EXPECT_EQ(r.RELERR, 0.03f);
  EXPECT_EQ(fixedText(r.CHU), "1000 +/- 3%");
}

TEST_F(ScalarUnits, RecordWithoutUnitAdoptsTheGivenOne) {
  DT_RSCA r;
  DT_RSCADFLT(&r);
  r.VU.ISER = depth;
  r.VU.IUN = 0;
  const float value = 1000.0f;
  DT_RSCASETC(&r, Unit16("FT").text, &value, nullptr);
  EXPECT_EQ(r.V, 1000.0f);
  EXPECT_EQ(r.VU.IUN, ft);
  EXPECT_EQ(fixedText(r.VU.CU), unitsRegistry().unitName(depth, ft));
}

TEST_F(ScalarUnits, DoubleStoreAndChangeOfUnit) {
  DT_DSCA d = makeDouble("md", depth, "m", 0.0);
  const double value = 10000.0;
  const int calculated = DT_STATE_CALCULATED;
  DT_DSCASETC(&d, Unit16("ft").text, &value, &calculated);
  EXPECT_NEAR(d.V, 3048.0, 1e-9);
  EXPECT_EQ(d.SET, DT_STATE_CALCULATED);
  double inFeet = 0.0;
  DT_GETSD(&d, Unit16("ft").text, &inFeet);
  EXPECT_NEAR(inFeet, 10000.0, 1e-6);
  DT_DSCACONVUI(&d, &ft);
  EXPECT_NEAR(d.V, 10000.0, 1e-9);
  EXPECT_EQ(fixedText(d.VU.CU), "ft");
  DT_DSCASETI(&d, &m, &value, nullptr);
  EXPECT_NEAR(d.V, 32808.3989501, 1e-6);
}

// Zero equals only zero; otherwise a relative test at single precision, where
// one step at 1 (1.19e-7 relative) is just outside.
TEST(ScalarEquality, ZeroExactlyOtherwiseRelative) {
  const std::tuple<float, float, int> cases[] = {{0.0f, 1.0e-30f, 0},        {0.0f, 0.0f, 1},     {0.0f, -0.0f, 1},
                                                 {100.0f, 100.000001f, 1}, {100.0f, 100.001f, 0},
                                                 {1.0f, std::nextafter(1.0f, 2.0f), 0}};
  for (const auto& [x, y, equal] : cases) {
    DT_RSCA a = makeReal("a", -1, "", x), b = makeReal("b", -1, "", y);
    EXPECT_EQ(DT_RSCAEQUAL(&a, &b), equal) << x << " vs " << y;
  }
}

TEST_F(ScalarUnits, EqualityComparesInTheFirstRecordsUnit) {
  DT_RSCA a = depthIn("ft", 1000.0f);
  DT_RSCA b = depthIn("m", 304.8f);
  EXPECT_EQ(DT_RSCAEQUAL(&a, &b), 1);
  b.V = 305.0f;
  EXPECT_EQ(DT_RSCAEQUAL(&a, &b), 0);
}

// The minimum skips nulls: values of magnitude 9e19 or more count as no value,
// even when negative; just below the bound they are values. The maximum needs
// no null test, the null being below everything.
TEST(ScalarMinMax, NullsTakeNoPart) {
  struct Case { int maximum; float a, b, expected; };
  const Case cases[] = {{0, kRealNull, 3.0f, 3.0f}, {0, 2.0f, kRealNull, 2.0f},   {0, 2.0f, 1.5f, 1.5f},
                        {0, -1.0e20f, 5.0f, 5.0f},  {0, 5.0f, -1.0e20f, 5.0f},    {0, 5.0f, -8.9e19f, -8.9e19f},
                        {1, kRealNull, -5.0f, -5.0f}, {1, -5.0f, kRealNull, -5.0f}, {1, -5.0f, 4.0f, 4.0f}};
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << (c.maximum ? "max(" : "min(") << c.a << ", " << c.b << ")");
    DT_RSCA a = makeReal("a", -1, "", c.a), b = makeReal("b", -1, "", c.b);
    DT_RSCAMINMAX(&a, &b, &c.maximum);
    EXPECT_EQ(a.V, c.expected);
    EXPECT_EQ(fixedText(a.CHU), formatValue(c.expected, a.FMT));  // the text follows the value
  }
}

TEST_F(ScalarUnits, MinMaxConvertsTheSecondValue) {
  DT_RSCA a = depthIn("m", 10.0f);
  DT_RSCA b = depthIn("ft", 10.0f);
  const int minimum = 0, maximum = 1;
  DT_RSCAMINMAX(&a, &b, &minimum);
  EXPECT_NEAR(a.V, 3.048f, 1e-5);
  EXPECT_EQ(a.VU.IUN, m);
  b.V = 100.0f;
  DT_RSCAMINMAX(&a, &b, &maximum);
  EXPECT_NEAR(a.V, 30.48f, 1e-4);

  DT_DSCA da = makeDouble("a", depth, "m", kDoubleNull);
  DT_DSCA db = makeDouble("b", depth, "ft", 1000.0);
  DT_DSCAMINMAX(&da, &db, &minimum);
  EXPECT_NEAR(da.V, 304.8, 1e-9);
}
