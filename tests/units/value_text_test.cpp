// Value text: the shown form of real and integer values, reading it back, and
// the percent factor of real vectors.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
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

// Format -4: whole digits and the tenths (a depth keeps its tenths) up to the
// whole-digit range, four significant digits below 10^3; 0..n: n decimals.
TEST_F(ValueText, SignificantDigitsKeepWholeDigitsAndTenths) {
  struct Case { float value; int format; const char* text; };
  const Case cases[] = {{1234.5f, -4, "1234.5"}, {-1234.5f, -4, "-1234.5"},   {2500.0f, -4, "2500"},
                        {1234.56f, -4, "1234.6"}, {12345.67f, -4, "12345.7"}, {999.5f, -4, "999.5"},
                        {12.345f, -4, "12.35"},   {0.012345f, -4, "0.01235"}, {0.0f, -4, "0"},
                        {-0.0f, -4, "0"},         {1.5e7f, -4, "1.5e+07"},    {9999999.0f, -4, "9999999"},
                        {12.5f, 2, "12.50"},      {12.0f, 0, "12"},           {kRealNull, -4, ""}};
  for (const Case& c : cases) EXPECT_EQ(formatValue(c.value, c.format), c.text) << c.value << " format " << c.format;
  EXPECT_EQ(formatValue(kDoubleNull, -4), "");
  EXPECT_EQ(formatValue(123456789.3, -4), "123456789.3");  // doubles hold whole digits further
}

TEST_F(ValueText, ShownTextCarriesTheUncertaintyInPercent) {
  const std::tuple<float, float, const char*> cases[] = {{12.5f, 0.03f, "12.5 +/- 3%"}, {1234.5f, 0.125f, "1234.5 +/- 12.5%"},
                                                        {12.5f, 0.0f, "12.5 +/- 0%"},  {12.5f, kRealNull, "12.5"},
                                                        {kRealNull, 0.03f, ""}};
  for (const auto& [value, relerr, text] : cases) EXPECT_EQ(fixedText(real(value, relerr).CHU), text) << value;
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

// Typed into a record holding 7 +/- 10%: every uncertainty marker reads the same;
// blank and "()" give the null; a plain number clears the uncertainty; garbage is
// refused with "Invalid number!" and leaves the value (and its text) as held.
TEST_F(ValueText, EnteredTexts) {
  struct Case { const char* text; int status; float value, relerr; const char* shown; };
  std::vector<Case> cases;
  for (const char* t : {"12.5 +/- 3%", "12.5 e=3", "12.5 +- 3", "12.5+/-3%", "12.5 E=3 %", " 12.5 +/- 3 % approx"})
    cases.push_back({t, 0, 12.5f, 0.03f, "12.5 +/- 3%"});
  for (const char* t : {"", "   ", "()", " () "}) cases.push_back({t, 0, kRealNull, kRealNull, ""});
  cases.push_back({"+8.25", 0, 8.25f, kRealNull, "8.25"});
  cases.push_back({"-1e3", 0, -1000.0f, kRealNull, "-1000"});
  for (const char* t : {"abc", "12,5", "1.2.3", "12.5 +/-", "12.5 +/- x%", "+/- 3%", "nan", "inf", "1e39", "--4"})
    cases.push_back({t, 1, 7.0f, 0.1f, "7 +/- 10%"});
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string("\"") + c.text + "\"");
    host::clearRecorded();
    DT_RSCA r = real(7.0f, 0.1f);
    EXPECT_EQ(enter(r, c.text), c.status);
    EXPECT_EQ(r.V, c.value);
    EXPECT_FLOAT_EQ(r.RELERR, c.relerr);
    EXPECT_EQ(fixedText(r.CHU), c.shown);
    EXPECT_EQ(messages(), c.status ? std::vector<std::string>{"Invalid number!"} : std::vector<std::string>{});
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

  // Other names are taken too: a US survey foot typed by its other name.
  EXPECT_EQ(enter(r, "1000 ft[US]"), 0);
  EXPECT_NEAR(r.V, 304.8006f, 1e-3);
  EXPECT_EQ(enter(r, "10 feet"), 0);
  EXPECT_NEAR(r.V, 3.048f, 1e-5);
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

// Percent-like unit names decide; otherwise the average of the values in
// -4..60 (inclusive; nulls take no part): above 0.8 is percent, else fractions,
// and the unit becomes "%" or "fr". All values out of range: percent, unit kept.
// iun 0 and a null unit mean "not checked".
TEST(PercentFactor, UnitNameOrAverageDecides) {
  struct Case { std::vector<float> values; const char* unit; float factor; const char* after; const char* iunOf; };
  const Case cases[] = {
      {{0.2f, 0.3f}, "%", 0.01f, "%", nullptr},           {{0.2f, 0.3f}, "pu", 0.01f, "pu", nullptr},
      {{0.2f, 0.3f}, "P.U.", 0.01f, "P.U.", nullptr},     {{0.2f, 0.3f}, "PU", 0.01f, "PU", nullptr},
      {{20.0f, 30.0f}, "fr", 1.0f, "fr", nullptr},        {{20.0f, 30.0f}, "V/V", 1.0f, "V/V", nullptr},
      {{20.0f, 30.0f}, "-", 1.0f, "-", nullptr},          {{0.8f, 0.8f, 0.8f}, "", 1.0f, "fr", "fr"},
      {{0.81f, 0.81f}, "porosity", 0.01f, "%", "%"},      {{0.5f, 90.0f, kRealNull}, "", 1.0f, "fr", nullptr},
      {{61.0f, 75.0f, 99.0f}, "xx", 0.01f, "xx", ""},     {{kRealNull, kRealNull}, "xx", 1.0f, "xx", nullptr},
      {{60.0f}, "", 0.01f, "%", nullptr},                 {{-4.0f}, "", 1.0f, "fr", nullptr},
      {{-4.01f}, "", 0.01f, "", nullptr},                 {{}, "", 1.0f, nullptr, nullptr}};
  const int fraction = unitsRegistry().findSeries("fraction");
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.values.size() << " values from " << (c.values.empty() ? 0 : c.values[0])
                                      << " in \"" << c.unit << "\"");
    const PercentRun run = percentOf(c.values, c.unit);
    EXPECT_EQ(run.factor, c.factor);
    if (c.after) { EXPECT_EQ(run.unit, c.after); }
    if (c.iunOf) { EXPECT_EQ(run.iun, *c.iunOf ? unitsRegistry().findUnit(fraction, c.iunOf) : -5); }
  }
}
