// Typed scalar records: defaults and the copy family, through the C routines.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "subsurf/scalars.h"
#include "units/scalar_records.h"

using namespace subsurf;

namespace {

template <std::size_t... N>
bool allBlank(const char (&... fields)[N]) {
  auto blank = [](const char* f, std::size_t n) { return std::string(f, n) == std::string(n, ' '); };
  return (blank(fields, N) && ...);
}

// A record full of garbage, so that defaults must set every field.
template <typename R>
R garbage() {
  R rec;
  std::memset(&rec, 'x', sizeof rec);
  return rec;
}

DT_RSCA filledReal(float v) {
  DT_RSCA r;
  DT_RSCADFLT(&r);
  r.V = v;
  setFixed(r.CHU, std::to_string(v));
  r.VU = {2, 1, {}};
  setFixed(r.VU.CU, "ft");
  r.SET = 1;
  r.SET2 = 1;
  r.FMT = 2;
  labelReal(r, "src_code", "Source label", "Source description", "src");
  r.VMIN = 1.0f;
  r.VMAX = 2.0f;
  r.VDEF = 1.5f;
  r.RELERR = 0.05f;
  return r;
}

}  // namespace

// States and formats are compared as (SET, SET2, FMT) tuples, so a failure prints all three.
TEST(ScalarDefaults, RealHasNoSeriesUnitOneAndNullsEverywhere) {
  DT_RSCA r = garbage<DT_RSCA>();
  DT_RSCADFLT(&r);
  EXPECT_EQ(std::tuple(r.VU.ISER, r.VU.IUN, r.SET, r.SET2, r.FMT), std::tuple(-1, 1, -1, 0, -4));
  for (float v : {r.V, r.VMIN, r.VMAX, r.VDEF, r.RELERR}) EXPECT_EQ(v, kRealNull);
  EXPECT_TRUE(allBlank(r.VU.CU, r.CHU, r.LABEL, r.SHORT, r.CODE, r.DESC));
}

TEST(ScalarDefaults, DoubleHoldsTheSingleNullWidened) {
  DT_DSCA d = garbage<DT_DSCA>();
  DT_DSCADFLT(&d);
  // kDoubleNull is the single null widened (checked in the host tests).
  for (double v : {d.V, d.VMIN, d.VMAX, d.VDEF, d.RELERR}) EXPECT_EQ(v, kDoubleNull);
  EXPECT_EQ(std::tuple(d.VU.ISER, d.VU.IUN, d.SET, d.SET2, d.FMT, d.IEXTRA), std::tuple(-1, 1, -1, 0, -4, 0));
  EXPECT_TRUE(allBlank(d.CHU, d.CODE, d.SHORT, d.LABEL, d.DESC, d.VU.CU));
}

TEST(ScalarDefaults, IntegerTakesLimitsAndDefault) {
  DT_ISCA i = garbage<DT_ISCA>();
  const int lo = -3, hi = 12, def = 7;
  DT_ISCADFLT(&i, &lo, &hi, &def);
  EXPECT_EQ(std::tuple(i.V, i.VDEF, i.VMIN, i.VMAX, i.SET, i.SET2), std::tuple(7, 7, -3, 12, -1, 0));
  EXPECT_TRUE(allBlank(i.CODE, i.SHORT, i.KEY, i.LABEL, i.DESC));
}

TEST(ScalarDefaults, TextIsPaddedOrCutToItsWidth) {
  DT_CSCA c = garbage<DT_CSCA>();
  char short40[40];
  setFixed(short40, "core");
  DT_CSCADFLT(&c, short40);
  EXPECT_EQ(fixedText(c.V), "core");
  EXPECT_EQ(fixedText(c.VDEF), "core");
  EXPECT_EQ(c.V[39], ' ');
  EXPECT_EQ(std::tuple(c.SET, c.SET2), std::tuple(-1, 0));
  EXPECT_TRUE(allBlank(c.CODE, c.LABEL, c.DESC));

  // The engine form cuts a longer text at 40 characters.
  const std::string longText(45, 'a');
  setDefaults(c, longText);
  EXPECT_EQ(fixedText(c.V), std::string(40, 'a'));
}

TEST(ScalarDefaults, FileNameKeeps260Characters) {
  DT_FSCA f = garbage<DT_FSCA>();
  std::string name = "userlib:" + std::string(252, 'n');  // exactly 260
  DT_FSCADFLT(&f, name.c_str());
  EXPECT_EQ(fixedText(f.V), name);
  EXPECT_EQ(fixedText(f.VDEF), name);
  EXPECT_EQ(f.SET, -1);

  setDefaults(f, name + "tail");
  EXPECT_EQ(fixedText(f.V), name);
}

TEST(ScalarCopies, FullCopyTakesEveryField) {
  const DT_RSCA from = filledReal(12.5f);
  DT_RSCA to;
  DT_RSCADFLT(&to);
  DT_RSCACOPY(&from, &to);
  EXPECT_EQ(std::memcmp(&from, &to, sizeof from), 0);
}

// The partial copies are checked on the whole record: the fields they take
// are set by hand on a copy of the target, everything else must be unchanged.
DT_RSCA labelledTarget() {
  DT_RSCA to;
  DT_RSCADFLT(&to);
  labelReal(to, "target", "Target label", "Target description", "tgt");
  to.SET = 2;
  to.FMT = -6;
  to.VMIN = 10.0f;
  to.VMAX = 20.0f;
  to.VDEF = 15.0f;
  return to;
}

TEST(ScalarCopies, ValueCopyTakesValueTextUnitAndErrorOnly) {
  const DT_RSCA from = filledReal(12.5f);
  DT_RSCA to = labelledTarget(), expected = to;
  expected.V = 12.5f;
  std::memcpy(expected.CHU, from.CHU, sizeof from.CHU);
  expected.VU = from.VU;
  expected.RELERR = 0.05f;
  DT_RSCACOPYV(&from, &to);
  EXPECT_EQ(std::memcmp(&to, &expected, sizeof to), 0);
  EXPECT_EQ(fixedText(to.VU.CU), "ft");
}

TEST(ScalarCopies, MainCopyAddsStateAndCodeButNotLabelsLimitsOrFormat) {
  const DT_RSCA from = filledReal(3.0f);
  DT_RSCA to = labelledTarget(), expected = to;
  expected.V = 3.0f;
  std::memcpy(expected.CHU, from.CHU, sizeof from.CHU);
  expected.VU = from.VU;
  expected.RELERR = 0.05f;
  expected.SET = expected.SET2 = 1;
  std::memcpy(expected.CODE, from.CODE, sizeof from.CODE);
  DT_RSCACOPYM(&from, &to);
  EXPECT_EQ(std::memcmp(&to, &expected, sizeof to), 0);
  EXPECT_EQ(code(to), "src_code");
  EXPECT_EQ(label(to), "Target label");
}

TEST(ScalarCopies, SingleToDoubleAndBackKeepsEveryField) {
  const DT_RSCA from = filledReal(1234.5f);
  DT_DSCA d;
  DT_DSCADFLT(&d);
  DT_RSCACOPYTODSCA(&from, &d);
  EXPECT_EQ(d.V, 1234.5);
  EXPECT_EQ(d.RELERR, static_cast<double>(0.05f));
  EXPECT_EQ(fixedText(d.CODE), "src_code");
  EXPECT_EQ(fixedText(d.SHORT), "src");
  EXPECT_EQ(fixedText(d.LABEL), "Source label");
  EXPECT_EQ(fixedText(d.CHU), fixedText(from.CHU));
  EXPECT_EQ(d.FMT, 2);

  DT_RSCA back;
  DT_RSCADFLT(&back);
  DT_DSCACOPYTORSCA(&d, &back);
  EXPECT_EQ(std::memcmp(&from, &back, sizeof from), 0);
}

TEST(ScalarCopies, NullsStayNullAcrossKindsAndOutOfRangeDoublesBecomeNull) {
  DT_RSCA r;
  DT_RSCADFLT(&r);
  DT_DSCA d;
  DT_DSCADFLT(&d);
  d.V = 0.0;
  DT_RSCACOPYTODSCA(&r, &d);
  EXPECT_TRUE(isNull(d.V));
  EXPECT_TRUE(isNull(d.VMAX));

  d.V = 1.0e300;
  d.VMIN = -1.0e300;
  DT_DSCACOPYTORSCA(&d, &r);
  EXPECT_EQ(r.V, kRealNull);
  EXPECT_EQ(r.VMIN, kRealNull);
  EXPECT_EQ(r.VMAX, kRealNull);
}
