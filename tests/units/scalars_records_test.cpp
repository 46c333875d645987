// Typed scalar records: defaults and the copy family, through the C routines.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

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

TEST(ScalarDefaults, RealHasNoSeriesUnitOneAndNullsEverywhere) {
  DT_RSCA r = garbage<DT_RSCA>();
  DT_RSCADFLT(&r);
  EXPECT_EQ(r.VU.ISER, -1);
  EXPECT_EQ(r.VU.IUN, 1);
  EXPECT_TRUE(allBlank(r.VU.CU));
  EXPECT_EQ(r.SET, -1);
  EXPECT_EQ(r.SET2, 0);
  EXPECT_EQ(r.FMT, -4);
  for (float v : {r.V, r.VMIN, r.VMAX, r.VDEF, r.RELERR}) EXPECT_EQ(v, kRealNull);
  EXPECT_TRUE(allBlank(r.CHU, r.LABEL, r.SHORT, r.CODE, r.DESC));
}

TEST(ScalarDefaults, DoubleHoldsTheSingleNullWidened) {
  DT_DSCA d = garbage<DT_DSCA>();
  DT_DSCADFLT(&d);
  // The double null is the single-precision null widened, not -9.9e20 as a double.
  EXPECT_EQ(d.V, static_cast<double>(-9.9e20f));
  EXPECT_NE(d.V, -9.9e20);
  for (double v : {d.VMIN, d.VMAX, d.VDEF, d.RELERR}) EXPECT_EQ(v, kDoubleNull);
  EXPECT_EQ(d.VU.ISER, -1);
  EXPECT_EQ(d.VU.IUN, 1);
  EXPECT_EQ(d.SET, -1);
  EXPECT_EQ(d.SET2, 0);
  EXPECT_EQ(d.FMT, -4);
  EXPECT_EQ(d.IEXTRA, 0);
  EXPECT_TRUE(allBlank(d.CHU, d.CODE, d.SHORT, d.LABEL, d.DESC, d.VU.CU));
}

TEST(ScalarDefaults, IntegerTakesLimitsAndDefault) {
  DT_ISCA i = garbage<DT_ISCA>();
  const int lo = -3, hi = 12, def = 7;
  DT_ISCADFLT(&i, &lo, &hi, &def);
  EXPECT_EQ(i.V, 7);
  EXPECT_EQ(i.VDEF, 7);
  EXPECT_EQ(i.VMIN, -3);
  EXPECT_EQ(i.VMAX, 12);
  EXPECT_EQ(i.SET, -1);
  EXPECT_EQ(i.SET2, 0);
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
  EXPECT_EQ(c.SET, -1);
  EXPECT_EQ(c.SET2, 0);
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

TEST(ScalarCopies, ValueCopyLeavesLimitsLabelsAndStateAlone) {
  const DT_RSCA from = filledReal(12.5f);
  DT_RSCA to;
  DT_RSCADFLT(&to);
  labelReal(to, "target", "Target label", "Target description", "tgt");
  to.SET = 2;
  to.SET2 = 0;
  to.FMT = -6;
  to.VMIN = 10.0f;
  to.VMAX = 20.0f;
  to.VDEF = 15.0f;
  const DT_RSCA before = to;

  DT_RSCACOPYV(&from, &to);
  EXPECT_EQ(to.V, 12.5f);
  EXPECT_EQ(fixedText(to.CHU), fixedText(from.CHU));
  EXPECT_EQ(to.VU.IUN, 2);
  EXPECT_EQ(to.VU.ISER, 1);
  EXPECT_EQ(fixedText(to.VU.CU), "ft");
  EXPECT_EQ(to.RELERR, 0.05f);
  // Untouched:
  EXPECT_EQ(to.SET, before.SET);
  EXPECT_EQ(to.SET2, before.SET2);
  EXPECT_EQ(to.FMT, before.FMT);
  EXPECT_EQ(to.VMIN, 10.0f);
  EXPECT_EQ(to.VMAX, 20.0f);
  EXPECT_EQ(to.VDEF, 15.0f);
  EXPECT_EQ(std::memcmp(to.LABEL, before.LABEL, sizeof to.LABEL), 0);
  EXPECT_EQ(std::memcmp(to.SHORT, before.SHORT, sizeof to.SHORT), 0);
  EXPECT_EQ(std::memcmp(to.CODE, before.CODE, sizeof to.CODE), 0);
  EXPECT_EQ(std::memcmp(to.DESC, before.DESC, sizeof to.DESC), 0);
}

TEST(ScalarCopies, MainCopyAddsStateAndCodeButNotLabelsLimitsOrFormat) {
  const DT_RSCA from = filledReal(3.0f);
  DT_RSCA to;
  DT_RSCADFLT(&to);
  labelReal(to, "target", "Target label", "Target description", "tgt");
  to.FMT = -6;
  to.VMAX = 99.0f;

  DT_RSCACOPYM(&from, &to);
  EXPECT_EQ(to.V, 3.0f);
  EXPECT_EQ(to.SET, 1);
  EXPECT_EQ(to.SET2, 1);
  EXPECT_EQ(code(to), "src_code");
  EXPECT_EQ(to.RELERR, 0.05f);
  EXPECT_EQ(fixedText(to.VU.CU), "ft");
  EXPECT_EQ(label(to), "Target label");
  EXPECT_EQ(description(to), "Target description");
  EXPECT_EQ(fixedText(to.SHORT), "tgt");
  EXPECT_EQ(to.FMT, -6);
  EXPECT_EQ(to.VMAX, 99.0f);
  EXPECT_EQ(to.VMIN, kRealNull);
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
