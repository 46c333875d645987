// The C entry points: fixed-width blank-padded texts, by-pointer arguments and
// status words, on the process-wide registry read from the shipped file.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "host/nulls.h"
#include "subsurf/units.h"
#include "support/temp_dir.h"
#include "units/units_registry.h"
#include "units_test_support.h"

namespace subsurf {
namespace {

using testing::closeTo;

// A fixed-width field as text, checked to hold no NUL, with a guard byte after
// it that a routine must not touch.
template <std::size_t N>
struct Field {
  char text[N + 1];
  Field() { std::memset(text, '#', sizeof text); }
  std::string str() const { return std::string(text, N); }
  bool guardIntact() const { return text[N] == '#'; }
};

// A C caller's field: the text blank-padded to its width.
std::string padded(const std::string& s, std::size_t width) { return s + std::string(width - s.size(), ' '); }

int seriesOf(const char* name) {
  const std::string field = padded(name, 20);
  int iser = -99;
  X_GETISER(field.c_str(), &iser);
  return iser;
}

int unitOf(int iser, const char* name) {
  const std::string field = padded(name, 16);
  int iun = -99;
  X_GETIUN(&iser, field.c_str(), &iun);
  return iun;
}

TEST(UnitsExports, NamesComeBackBlankPadded) {
  const int depth = seriesOf("depth");
  ASSERT_GE(depth, 0);
  Field<20> series;
  X_GETCSER(&depth, series.text);
  EXPECT_EQ(series.str(), padded("depth", 20));
  EXPECT_TRUE(series.guardIntact());

  const int ft = unitOf(depth, "ft");
  Field<16> unit, other;
  X_GETCUN(&depth, &ft, unit.text);
  EXPECT_EQ(unit.str(), padded("ft", 16));
  EXPECT_TRUE(unit.guardIntact());
  X_GETCUNO(&depth, &ft, other.text);
  EXPECT_EQ(other.str(), padded("feet", 16));
  X_GETUDEF(&depth, &ft, unit.text);
  EXPECT_EQ(unit.str(), padded("ft", 16));

  Field<16> unitName;
  Field<20> seriesName;
  A_XUNGET(&depth, &ft, unitName.text, seriesName.text);
  EXPECT_EQ(unitName.str(), padded("ft", 16));
  EXPECT_EQ(seriesName.str(), padded("depth", 20));
}

TEST(UnitsExports, UnavailableNamesAreAllBlanks) {
  const int depth = seriesOf("depth");
  const int bad = 99, none = 0, minus = -1;
  Field<16> unit;
  X_GETCUN(&depth, &bad, unit.text);
  EXPECT_EQ(unit.str(), std::string(16, ' '));
  X_GETUDEF(&depth, &none, unit.text);
  EXPECT_EQ(unit.str(), std::string(16, ' '));
  Field<20> series;
  X_GETCSER(&minus, series.text);
  EXPECT_EQ(series.str(), std::string(20, ' '));
  EXPECT_TRUE(series.guardIntact());
}

TEST(UnitsExports, InputFieldsMayBePaddedOrNulTerminated) {
  const int depth = seriesOf("depth");
  char nulTerminated[16] = "FT";
  int iun = 0;
  X_GETIUN(&depth, nulTerminated, &iun);
  EXPECT_EQ(iun, unitOf(depth, "ft"));
  EXPECT_EQ(unitOf(depth, "nonsense"), 0);
  EXPECT_EQ(seriesOf("no such series"), -1);

  int iser = -99;
  const std::string psia = padded("PSIA", 16);
  X_GUESSISER(psia.c_str(), &iser);
  EXPECT_EQ(iser, seriesOf("pressure"));
}

TEST(UnitsExports, CountsAndDefaults) {
  int last = -99;
  X_NSER(&last);
  EXPECT_EQ(last, unitsRegistry().lastSeries());

  const int fraction = seriesOf("fraction");
  int n = -1, listed = -1;
  X_NSERUNITS(&fraction, &n);
  X_GETNULIST(&fraction, &listed);
  EXPECT_EQ(n, 6);
  EXPECT_EQ(listed, 5);
  EXPECT_EQ(IA_XUNGETSERUN(&fraction), 6);
  const int beyond = last + 1;
  X_NSERUNITS(&beyond, &n);
  X_GETNULIST(&beyond, &listed);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(listed, 0);

  const int pressure = seriesOf("pressure");
  for (auto [system, unit] : {std::pair{1, "psia"}, std::pair{2, "bar"}, std::pair{3, "kpa"}}) {
    int value = -1;
    X_GETSDEF(&pressure, &system, &value);
    EXPECT_EQ(value, unitOf(pressure, unit)) << system;
    EXPECT_EQ(IA_XUNGETSERDEF(&pressure, &system), value);
  }
  int system = 4, value = 0;
  X_GETSDEF(&pressure, &system, &value);
  EXPECT_EQ(value, unitsRegistry().series()[static_cast<std::size_t>(pressure)].dimension);
  X_GETSDEF(&beyond, &system, &value);
  EXPECT_EQ(value, -32768);
  system = 1;
  X_GETSDEF(&beyond, &system, &value);
  EXPECT_EQ(value, -32768);

  const int depth = seriesOf("depth"), ft = unitOf(depth, "ft");
  int id = 0;
  X_GETIUNUM(&depth, &ft, &id);
  EXPECT_EQ(unitsRegistry().units()[static_cast<std::size_t>(id - 1)].name, "ft");
}

TEST(UnitsExports, ListsOfListedUnits) {
  const int fraction = seriesOf("fraction");
  std::vector<char> names(6 * 16 + 1, '#');
  int capacity = 6, count = 0;
  X_GETULISTA(&fraction, names.data(), &capacity, &count);
  EXPECT_EQ(count, 5);
  const std::string expected =
      padded("fr", 16) + padded("v/v", 16) + padded("vol/vol", 16) + padded("%", 16) + padded("pu", 16);
  EXPECT_EQ(std::string(names.data(), 5 * 16), expected);
  EXPECT_EQ(names[5 * 16], '#');  // the sixth field is not written

  // A small array takes what fits; the count still tells how many there are.
  std::fill(names.begin(), names.end(), '#');
  capacity = 2;
  X_GETULISTDS(&fraction, names.data(), &capacity, &count);
  EXPECT_EQ(count, 5);
  EXPECT_EQ(std::string(names.data(), 32), padded("fr", 16) + padded("v/v", 16));
  EXPECT_EQ(names[32], '#');
}

TEST(UnitsExports, DirectCoefficientsInSinglePrecision) {
  const int temperature = seriesOf("temperature");
  const int degf = unitOf(temperature, "degf"), degc = unitOf(temperature, "degc");
  float a = 0, b = 0, s = 0;
  int err = 99;
  X_SICF(&temperature, &degf, &degc, &a, &b, &s, &err);
  EXPECT_EQ(err, 0);
  EXPECT_FLOAT_EQ(a, 5.0f / 9.0f);
  EXPECT_FLOAT_EQ(b, -160.0f / 9.0f);  // 0 degC is 32 degF: -32 * 5/9
  EXPECT_EQ(s, 1.0f);

  const std::string from = padded("degf", 16), to = padded("degc", 16);
  A_XUNCF(&temperature, from.c_str(), to.c_str(), &a, &b, &s, &err);
  EXPECT_EQ(err, 0);
  EXPECT_FLOAT_EQ(b, -160.0f / 9.0f);

  const int bad = 9;
  X_SICF(&temperature, &degf, &bad, &a, &b, &s, &err);
  EXPECT_EQ(err, 1);
}

TEST(UnitsExports, ConversionsByPosition) {
  const int depth = seriesOf("depth");
  const int ft = unitOf(depth, "ft"), m = unitOf(depth, "m");
  int err = 99;
  const float hundred = 100.0f;
  EXPECT_FLOAT_EQ(X_SICONV(&hundred, &depth, &ft, &m, &err), 30.48f);
  EXPECT_EQ(err, 0);
  const double d = 100.0;
  EXPECT_TRUE(closeTo(X_SICONVD(&d, &depth, &ft, &m, &err), 30.48));
  float e = 30.48f;
  X_SICONVE(&e, &depth, &m, &ft, &err);
  EXPECT_FLOAT_EQ(e, 100.0f);

  std::vector<double> v = {100.0, kDoubleNull, -10.0};
  const int n = static_cast<int>(v.size());
  X_SICONVV(v.data(), &n, &depth, &ft, &m, &err);
  EXPECT_EQ(err, 0);
  EXPECT_TRUE(closeTo(v[0], 30.48));
  EXPECT_EQ(v[1], kDoubleNull);
  EXPECT_TRUE(closeTo(v[2], -3.048));

  const int bad = -1;
  EXPECT_EQ(X_SICONV(&hundred, &bad, &ft, &m, &err), 100.0f);
  EXPECT_EQ(err, 1);
  const float null = kRealNull;
  EXPECT_EQ(X_SICONV(&null, &depth, &ft, &m, &err), kRealNull);
  EXPECT_EQ(err, 0);
}

TEST(UnitsExports, ConversionsByName) {
  const int temperature = seriesOf("temperature");
  const std::string degf = padded("DEGF", 16), degc = padded("degc", 16), blank(16, ' '), wrong = padded("furlong", 16);
  const float boiling = 212.0f;
  EXPECT_FLOAT_EQ(X_SCCONV(&boiling, &temperature, degf.c_str(), degc.c_str()), 100.0f);
  const double boilingD = 212.0;
  EXPECT_TRUE(closeTo(X_SCCONVD(&boilingD, &temperature, degf.c_str(), degc.c_str()), 100.0));
  EXPECT_EQ(X_SCCONV(&boiling, &temperature, blank.c_str(), degc.c_str()), 212.0f);
  EXPECT_EQ(X_SCCONV(&boiling, &temperature, wrong.c_str(), degc.c_str()), 212.0f);
  std::vector<double> v = {32.0, 212.0};
  const int n = 2;
  X_SCCONVV(v.data(), &n, &temperature, degf.c_str(), degc.c_str());
  EXPECT_TRUE(closeTo(v[0], 0.0));
  EXPECT_TRUE(closeTo(v[1], 100.0));

  int err = 99;
  EXPECT_FLOAT_EQ(A_XUN(&boiling, &temperature, degf.c_str(), degc.c_str(), &err), 100.0f);
  EXPECT_EQ(err, 0);
  A_XUN(&boiling, &temperature, wrong.c_str(), degc.c_str(), &err);
  EXPECT_EQ(err, 1);
  const int degfPos = unitOf(temperature, "degf");
  EXPECT_FLOAT_EQ(A_XUNI(&boiling, &temperature, &degfPos, degc.c_str(), &err), 100.0f);
  EXPECT_EQ(err, 0);
  std::vector<float> f = {32.0f, kRealNull};
  const int nf = 2;
  A_XUNS(f.data(), &nf, &temperature, degf.c_str(), degc.c_str(), &err);
  EXPECT_EQ(f[0], 0.0f);
  EXPECT_EQ(f[1], kRealNull);
}

TEST(UnitsExports, SeriesFoundFromNames) {
  const std::string scf = padded("scf/stb", 16), m3 = padded("m3/m3", 16), ft = padded("ft", 16),
                    degf = padded("degf", 16);
  int err = 99;
  const float one = 1.0f;
  EXPECT_TRUE(closeTo(A_XUNSC(&one, scf.c_str(), m3.c_str(), &err), 0.3048 * 0.3048 * 0.3048 / 0.158987294928, 1e-6));
  EXPECT_EQ(err, 0);
  A_XUNSC(&one, ft.c_str(), degf.c_str(), &err);
  EXPECT_EQ(err, 1);

  const std::string gor = padded("gas oil ratio", 20), nope = padded("nope", 20);
  EXPECT_TRUE(closeTo(A_XUNCSC(&one, gor.c_str(), scf.c_str(), m3.c_str(), &err), 0.1781076, 1e-6));
  EXPECT_EQ(err, 0);
  A_XUNCSC(&one, nope.c_str(), scf.c_str(), m3.c_str(), &err);
  EXPECT_EQ(err, 1);

  int iser = -99;
  A_XUNGETSER(gor.c_str(), &iser);
  EXPECT_EQ(iser, seriesOf("gas oil ratio"));
  EXPECT_EQ(IA_XUNGETSER(gor.c_str()), iser);
  Field<20> name;
  A_XUNGETNAME(&iser, name.text);
  EXPECT_EQ(name.str(), gor);
}

TEST(UnitsExports, FixedSeriesConversions) {
  const std::string ft = padded("ft", 16), m = padded("m", 16), hr = padded("hr", 16), day = padded("day", 16),
                    in = padded("in", 16);
  int err = 99;
  float depth = 100.0f;
  A_DEPC(&depth, ft.c_str(), m.c_str(), &err);
  EXPECT_FLOAT_EQ(depth, 30.48f);
  EXPECT_EQ(err, 0);
  double depth8 = 100.0;
  A_DEPC8(&depth8, ft.c_str(), m.c_str(), &err);
  EXPECT_TRUE(closeTo(depth8, 30.48));
  A_DEPC(&depth, hr.c_str(), m.c_str(), &err);  // hours are no depth
  EXPECT_EQ(err, 1);

  float length = 12.0f;
  A_LENCC(&length, in.c_str(), ft.c_str(), &err);
  EXPECT_FLOAT_EQ(length, 1.0f);
  const int lengthSeries = seriesOf("length");
  const int ftPos = unitOf(lengthSeries, "ft"), mPos = unitOf(lengthSeries, "m");
  A_LENC(&length, &ftPos, &mPos, &err);
  EXPECT_FLOAT_EQ(length, 0.3048f);

  double time = 36.0;
  A_TIMC(&time, hr.c_str(), day.c_str(), &err);
  EXPECT_TRUE(closeTo(time, 1.5));
}

TEST(UnitsExports, VectorRecordsChangeUnit) {
  const int depth = seriesOf("depth");
  std::vector<float> values = {100.0f, kRealNull, 10.0f};
  DT_RVEC vec{3, values.data(), {unitOf(depth, "ft"), depth, {}}};
  std::memcpy(vec.VU.CU, padded("ft", 16).data(), 16);

  const std::string m = padded("M", 16);
  X_RVECCONVU(&vec, m.c_str());
  EXPECT_EQ(vec.VU.IUN, unitOf(depth, "m"));
  EXPECT_EQ(std::string(vec.VU.CU, 16), padded("m", 16));
  EXPECT_FLOAT_EQ(values[0], 30.48f);
  EXPECT_EQ(values[1], kRealNull);
  EXPECT_FLOAT_EQ(values[2], 3.048f);

  // A name that is not a unit of the series changes nothing.
  const std::string bad = padded("degf", 16);
  X_RVECCONVU(&vec, bad.c_str());
  EXPECT_EQ(vec.VU.IUN, unitOf(depth, "m"));
  EXPECT_FLOAT_EQ(values[0], 30.48f);

  const int ft = unitOf(depth, "ft");
  X_RVECCONVUI(&vec, &ft);
  EXPECT_EQ(std::string(vec.VU.CU, 16), padded("ft", 16));
  EXPECT_FLOAT_EQ(values[0], 100.0f);

  // A vector without a unit takes the new one as it stands.
  vec.VU.IUN = 0;
  const int mPos = unitOf(depth, "m");
  X_RVECCONVUI(&vec, &mPos);
  EXPECT_EQ(vec.VU.IUN, mPos);
  EXPECT_FLOAT_EQ(values[0], 100.0f);
}

TEST(UnitsExports, ReferenceEllipsoids) {
  int n = 0;
  X_NELLIPSOIDS(&n);
  EXPECT_EQ(n, 27);
  Field<40> name;
  double a = 0, invf = 0;
  int status = 99;
  int index = 1;
  X_GETELLIPSOID(&index, name.text, &a, &invf, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(name.str(), padded("Airy 1849", 40));
  EXPECT_EQ(a, 6377563.396);
  EXPECT_EQ(invf, 299.3249646);
  index = 27;
  X_GETELLIPSOID(&index, name.text, &a, &invf, &status);
  EXPECT_EQ(name.str(), padded("WGS 1984", 40));
  EXPECT_EQ(a, 6378137.0);
  EXPECT_EQ(invf, 298.257223563);
  EXPECT_TRUE(name.guardIntact());
  for (int bad : {0, 28}) {
    X_GETELLIPSOID(&bad, name.text, &a, &invf, &status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(name.str(), std::string(40, ' '));
    EXPECT_EQ(a, 0.0);
  }
}

// X_INIT rereads the definitions; the process-wide registry is put back as it
// was whatever happens, for the other tests of this program.
class ReloadFromDeflib : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* v = std::getenv("SUBSURF_DEFLIB");
    hadValue_ = v != nullptr;
    if (v) saved_ = v;
    host::clearRecorded();
  }
  void TearDown() override {
    if (hadValue_) ::setenv("SUBSURF_DEFLIB", saved_.c_str(), 1);
    else ::unsetenv("SUBSURF_DEFLIB");
    X_INIT();
  }
  bool hadValue_ = false;
  std::string saved_;
};

TEST_F(ReloadFromDeflib, MissingFileIsReportedAndLeavesNoSeries) {
  testing::TempDir dir;
  ::setenv("SUBSURF_DEFLIB", dir.path().c_str(), 1);
  X_INIT();
  const std::vector<std::string> messages = host::recordedMessages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages[0], "Cannot read units definitions file " + dir.path() + "/x_units.def");
  int last = 0, n = -1, value = 0;
  X_NSER(&last);
  EXPECT_EQ(last, -1);
  const int zero = 0, system = 4;
  X_NSERUNITS(&zero, &n);
  EXPECT_EQ(n, 0);
  X_GETSDEF(&zero, &system, &value);
  EXPECT_EQ(value, -32768);
}

TEST_F(ReloadFromDeflib, RereadsTheFileFound) {
  testing::TempDir dir;
  dir.write("x_units.def",
            "**Dimensions\n1,length\n**Units\n1,m,metre,1,1,1\n**Series\n0,only,1,1,1,1,m,m,m\n**Entries\n1,1\n");
  ::setenv("SUBSURF_DEFLIB", dir.path().c_str(), 1);
  X_INIT();
  int last = -99;
  X_NSER(&last);
  EXPECT_EQ(last, 0);
  EXPECT_EQ(seriesOf("only"), 0);
}

}  // namespace
}  // namespace subsurf
