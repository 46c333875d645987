// Value text: the shown form of real and integer values, reading it back, and
// the percent factor of real vectors.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "subsurf/scalars.h"
#include "subsurf/units.h"
#include "units/scalar_records.h"
#include "units/units_registry.h"
#include "units/value_text.h"

using namespace subsurf;

namespace {

class ValueText : public ::testing::Test {
 protected:
  void SetUp() override { host::clearRecorded(); }
  void TearDown() override { host::clearRecorded(); }

  static DT_RSCA real(float v, float relerr = kRealNull, int fmt = -4) {
    DT_RSCA r = makeReal("v", -1, "", v);
    r.FMT = fmt;
    r.RELERR = relerr;
    DT_SETRCHU(&r);
    return r;
  }

  // Types text into the record's display text and reads it back as DT_UNSETRCHU does.
  static int enter(DT_RSCA& r, std::string_view text) {
    setFixed(r.CHU, text);
    int status = -99;
    DT_UNSETRCHU(&r, &status);
    return status;
  }

  static std::vector<std::string> messages() { return host::recordedMessages(); }
};

}  // namespace

TEST_F(ValueText, SignificantDigitsKeepWholeDigitsAndTenths) {
  EXPECT_EQ(formatValue(1234.5f, -4), "1234.5");   // a depth keeps its tenths
  EXPECT_EQ(formatValue(-1234.5f, -4), "-1234.5");
  EXPECT_EQ(formatValue(2500.0f, -4), "2500");
  EXPECT_EQ(formatValue(1234.56f, -4), "1234.6");
  EXPECT_EQ(formatValue(12345.67f, -4), "12345.7");
  EXPECT_EQ(formatValue(999.5f, -4), "999.5");     // below 10^3: four significant digits
  EXPECT_EQ(formatValue(12.345f, -4), "12.35");
  EXPECT_EQ(formatValue(0.012345f, -4), "0.01235");
  EXPECT_EQ(formatValue(0.0f, -4), "0");
  EXPECT_EQ(formatValue(-0.0f, -4), "0");
  EXPECT_EQ(formatValue(1.5e7f, -4), "1.5e+07");   // beyond the whole-digit range
  EXPECT_EQ(formatValue(9999999.0f, -4), "9999999");
  EXPECT_EQ(formatValue(12.5f, 2), "12.50");
  EXPECT_EQ(formatValue(12.0f, 0), "12");
  EXPECT_EQ(formatValue(kRealNull, -4), "");
  EXPECT_EQ(formatValue(kDoubleNull, -4), "");
  // Doubles hold whole digits further.
  EXPECT_EQ(formatValue(123456789.3, -4), "123456789.3");
}

TEST_F(ValueText, ShownTextCarriesTheUncertaintyInPercent) {
  EXPECT_EQ(fixedText(real(12.5f, 0.03f).CHU), "12.5 +/- 3%");
  EXPECT_EQ(fixedText(real(1234.5f, 0.125f).CHU), "1234.5 +/- 12.5%");
  EXPECT_EQ(fixedText(real(12.5f, 0.0f).CHU), "12.5 +/- 0%");
  EXPECT_EQ(fixedText(real(12.5f).CHU), "12.5");
  EXPECT_EQ(fixedText(real(kRealNull, 0.03f).CHU), "");
}

TEST_F(ValueText, LongTextsDropBlanksThenTheUncertainty) {
  // 11 characters of number: with blanks 21 characters, one too many.
  EXPECT_EQ(fixedText(real(1.23457e-05f, 0.125f, -6).CHU), "1.23457e-05+/-12.5%");
  // 13 characters of number: even without blanks it does not fit.
  EXPECT_EQ(fixedText(real(1.2345678e-05f, 0.125f, -8).CHU), "1.2345678e-05");
  // A number that does not fit at all loses digits rather than being cut.
  EXPECT_EQ(fixedText(real(1.0e20f, kRealNull, 2).CHU), "1e+20");
  EXPECT_EQ(fixedText(real(-123456.789f, kRealNull, 15).CHU), "-123456.8");
  // A double's text is 32 characters wide: the same fits there.
  DT_DSCA d = makeDouble("d", -1, "", 1.2345678e-05);
  d.FMT = -8;
  d.RELERR = 0.125;
  DT_SETDCHU(&d);
  EXPECT_EQ(fixedText(d.CHU), "1.2345678e-05 +/- 12.5%");
}

TEST_F(ValueText, OutputTextsShowANullAsEmptyParentheses) {
  DT_RSCA r = real(kRealNull);
  DT_SETRCHUOUT(&r);
  EXPECT_EQ(fixedText(r.CHU), "()");
  r.V = 3.0f;
  DT_SETRCHUOUT(&r);
  EXPECT_EQ(fixedText(r.CHU), "3");
  DT_DSCA d = makeDouble("d", -1, "", kDoubleNull);
  DT_SETDCHUOUT(&d);
  EXPECT_EQ(fixedText(d.CHU), "()");
}

TEST_F(ValueText, EveryUncertaintyMarkerReadsTheSame) {
  for (const char* text : {"12.5 +/- 3%", "12.5 e=3", "12.5 +- 3", "12.5+/-3%", "12.5 E=3 %", " 12.5 +/- 3 % approx"}) {
    DT_RSCA r = real(0.0f);
    EXPECT_EQ(enter(r, text), 0) << text;
    EXPECT_EQ(r.V, 12.5f) << text;
    EXPECT_FLOAT_EQ(r.RELERR, 0.03f) << text;
    EXPECT_EQ(fixedText(r.CHU), "12.5 +/- 3%") << text;
  }
  EXPECT_TRUE(messages().empty());
}

TEST_F(ValueText, BlankAndEmptyParenthesesGiveTheNull) {
  for (const char* text : {"", "   ", "()", " () "}) {
    DT_RSCA r = real(7.0f, 0.1f);
    EXPECT_EQ(enter(r, text), 0) << text;
    EXPECT_EQ(r.V, kRealNull) << text;
    EXPECT_EQ(r.RELERR, kRealNull) << text;
    EXPECT_EQ(fixedText(r.CHU), "") << text;
  }
}

TEST_F(ValueText, PlainNumberClearsTheUncertainty) {
  DT_RSCA r = real(7.0f, 0.1f);
  EXPECT_EQ(enter(r, "+8.25"), 0);
  EXPECT_EQ(r.V, 8.25f);
  EXPECT_EQ(r.RELERR, kRealNull);
  EXPECT_EQ(fixedText(r.CHU), "8.25");
  EXPECT_EQ(enter(r, "-1e3"), 0);
  EXPECT_EQ(r.V, -1000.0f);
}

TEST_F(ValueText, GarbageIsAnInvalidNumberAndLeavesTheValue) {
  for (const char* text : {"abc", "12,5", "1.2.3", "12.5 +/-", "12.5 +/- x%", "+/- 3%", "nan", "inf", "1e39",
                           "--4"}) {
    host::clearRecorded();
    DT_RSCA r = real(7.0f, 0.1f);
    EXPECT_EQ(enter(r, text), 1) << text;
    EXPECT_EQ(r.V, 7.0f) << text;
    EXPECT_EQ(r.RELERR, 0.1f) << text;
    EXPECT_EQ(fixedText(r.CHU), "7 +/- 10%") << text;  // the text shows the value still held
    EXPECT_EQ(messages(), std::vector<std::string>{"Invalid number!"}) << text;
  }
}

TEST_F(ValueText, UnitAfterTheNumberIsConvertedOrRefused) {
  const int depth = unitsRegistry().findSeries("depth");
  ASSERT_GE(depth, 0);
  DT_RSCA r = makeReal("top", depth, "m", 0.0f);
  EXPECT_EQ(enter(r, "1000 FT"), 0);
  EXPECT_NEAR(r.V, 304.8f, 1e-3);
  EXPECT_EQ(fixedText(r.VU.CU), "m");
  EXPECT_EQ(enter(r, "10ft +/- 2%"), 0);
  EXPECT_NEAR(r.V, 3.048f, 1e-5);
  EXPECT_FLOAT_EQ(r.RELERR, 0.02f);
  EXPECT_TRUE(messages().empty());

  EXPECT_EQ(enter(r, "12 furlongs"), 1);
  EXPECT_NEAR(r.V, 3.048f, 1e-5);
  EXPECT_EQ(messages(), std::vector<std::string>{"Invalid unit!"});

  // A record without a series knows no units at all.
  host::clearRecorded();
  DT_RSCA plain = real(1.0f);
  EXPECT_EQ(enter(plain, "12 m"), 1);
  EXPECT_EQ(messages(), std::vector<std::string>{"Invalid unit!"});
}

TEST_F(ValueText, DoubleTextReadsBack) {
  DT_DSCA d = makeDouble("d", -1, "", 0.0);
  setFixed(d.CHU, "123456789.3 e=1");
  int status = -99;
  DT_UNSETDCHU(&d, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(d.V, 123456789.3);
  EXPECT_DOUBLE_EQ(d.RELERR, 0.01);
  EXPECT_EQ(fixedText(d.CHU), "123456789.3 +/- 1%");
}

TEST_F(ValueText, ParserSplitsNumberAndUncertainty) {
  char text[40], number[32], uncertainty[32];
  const int length = 40;
  int found = -1;
  setFixed(text, "1234.5 m +/- 2.5% (log)");
  DT_PARSERCHU(text, &length, number, uncertainty, &found);
  EXPECT_EQ(found, 1);
  EXPECT_EQ(fixedText(number), "1234.5 m");
  EXPECT_EQ(fixedText(uncertainty), "2.5");

  setFixed(text, "  17  ");
  DT_PARSERCHU(text, &length, number, uncertainty, &found);
  EXPECT_EQ(found, 0);
  EXPECT_EQ(fixedText(number), "17");
  EXPECT_EQ(fixedText(uncertainty), "");

  // "+/-" is looked for before "+-", which it contains.
  const ValueTextParts p = splitValueText("5 +/- -1");
  EXPECT_EQ(p.number, "5");
  EXPECT_EQ(p.uncertainty, "-1");
}

TEST_F(ValueText, IntegerTextRoundTrips) {
  DT_ISCA i = makeInteger("n", 42, 0, 100);
  char text[20];
  DT_SETICHU(&i, text);
  EXPECT_EQ(fixedText(text), "42");
  EXPECT_EQ(text[19], ' ');

  int status = -99;
  setFixed(text, " -7 ");
  DT_UNSETICHU(&i, text, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(i.V, -7);

  setFixed(text, "()");
  DT_UNSETICHU(&i, text, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(i.V, kIntNull);
  DT_SETICHU(&i, text);
  EXPECT_EQ(fixedText(text), "");

  i.V = 5;
  for (const char* bad : {"4.5", "x", "12abc", "99999999999"}) {
    host::clearRecorded();
    setFixed(text, bad);
    DT_UNSETICHU(&i, text, &status);
    EXPECT_EQ(status, 1) << bad;
    EXPECT_EQ(i.V, 5) << bad;
    EXPECT_EQ(messages(), std::vector<std::string>{"Invalid number!"}) << bad;
  }
}

namespace {

// Runs DT_SETPERCFAC on a vector of the fraction series in the given unit.
struct PercentRun {
  float factor = -1.0f;
  std::string unit;
  int iun = -5;
};

PercentRun percentOf(std::vector<float> values, std::string_view unit) {
  DT_RVEC vec;
  vec.N = static_cast<int>(values.size());
  vec.V = values.data();
  vec.VU.ISER = unitsRegistry().findSeries("fraction");
  vec.VU.IUN = -5;
  setFixed(vec.VU.CU, unit);
  PercentRun run;
  DT_SETPERCFAC(&vec, &run.factor);
  run.unit = fixedText(vec.VU.CU);
  run.iun = vec.VU.IUN;
  return run;
}

}  // namespace

TEST(PercentFactor, PercentLikeUnitNamesDecide) {
  for (const char* unit : {"%", "pu", "P.U.", "PU"}) {
    const PercentRun run = percentOf({0.2f, 0.3f}, unit);
    EXPECT_EQ(run.factor, 0.01f) << unit;
    EXPECT_EQ(run.unit, unit) << unit;
  }
  for (const char* unit : {"fr", "V/V", "-"}) {
    const PercentRun run = percentOf({20.0f, 30.0f}, unit);
    EXPECT_EQ(run.factor, 1.0f) << unit;
    EXPECT_EQ(run.unit, unit) << unit;
  }
}

TEST(PercentFactor, AverageOfPointEightIsFractionsAndAboveIsPercent) {
  PercentRun run = percentOf({0.8f, 0.8f, 0.8f}, "");
  EXPECT_EQ(run.factor, 1.0f);
  EXPECT_EQ(run.unit, "fr");
  EXPECT_EQ(run.iun, unitsRegistry().findUnit(unitsRegistry().findSeries("fraction"), "fr"));

  run = percentOf({0.81f, 0.81f}, "porosity");
  EXPECT_EQ(run.factor, 0.01f);
  EXPECT_EQ(run.unit, "%");
  EXPECT_EQ(run.iun, unitsRegistry().findUnit(unitsRegistry().findSeries("fraction"), "%"));
}

TEST(PercentFactor, ValuesAboveSixtyAndNullsTakeNoPart) {
  // 0.5 is the only value in range: fractions, though 90 would make the average high.
  PercentRun run = percentOf({0.5f, 90.0f, kRealNull}, "");
  EXPECT_EQ(run.factor, 1.0f);
  EXPECT_EQ(run.unit, "fr");

  // All above 60: percentages, unit left as it was.
  run = percentOf({61.0f, 75.0f, 99.0f}, "xx");
  EXPECT_EQ(run.factor, 0.01f);
  EXPECT_EQ(run.unit, "xx");
  EXPECT_EQ(run.iun, -5);

  // Nothing but nulls: factor 1, unit untouched.
  run = percentOf({kRealNull, kRealNull}, "xx");
  EXPECT_EQ(run.factor, 1.0f);
  EXPECT_EQ(run.unit, "xx");

  // The range is inclusive at both ends.
  EXPECT_EQ(percentOf({60.0f}, "").unit, "%");
  EXPECT_EQ(percentOf({-4.0f}, "").unit, "fr");
  run = percentOf({-4.01f}, "");
  EXPECT_EQ(run.factor, 0.01f);
  EXPECT_EQ(run.unit, "");
  EXPECT_EQ(percentOf({}, "").factor, 1.0f);
}
