// The C entry points: fixed-width blank-padded texts, by-pointer arguments and
// status words, on the process-wide registry read from the shipped file.
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "subsurf/units.h"
#include "support/temp_dir.h"
#include "units/units_registry.h"
#include "units_test_support.h"

namespace subsurf {
namespace {

using testing::closeTo;

// A C caller's field: the text blank-padded to its width.
std::string padded(const std::string& s, std::size_t width) { return s + std::string(width - s.size(), ' '); }

// An output field with a guard byte after it that a routine must not touch.
template <std::size_t N>
struct Field {
  char text[N + 1];
  Field() { std::memset(text, '#', sizeof text); }
  std::string str() const { return std::string(text, N); }
  bool guardIntact() const { return text[N] == '#'; }
};

int seriesOf(const char* name) {
  int iser = -99;
  X_GETISER(padded(name, 20).c_str(), &iser);
  return iser;
}

int unitOf(int iser, const char* name) {
  int iun = -99;
  X_GETIUN(&iser, padded(name, 16).c_str(), &iun);
  return iun;
}

TEST(UnitsExports, TextsComeBackBlankPaddedOrAllBlank) {
  const int depth = seriesOf("depth"), ft = unitOf(depth, "ft"), bad = 99, none = -1;
  Field<20> series;
  Field<16> unit;
  X_GETCSER(&depth, series.text);
  EXPECT_EQ(series.str(), padded("depth", 20));
  EXPECT_TRUE(series.guardIntact());
  X_GETCUNO(&depth, &ft, unit.text);
  EXPECT_EQ(unit.str(), padded("feet", 16));
  EXPECT_TRUE(unit.guardIntact());

  X_GETCUN(&depth, &bad, unit.text);
  EXPECT_EQ(unit.str(), std::string(16, ' '));
  X_GETUDEF(&none, &ft, unit.text);
  EXPECT_EQ(unit.str(), std::string(16, ' '));
  X_GETCSER(&none, series.text);
  EXPECT_EQ(series.str(), std::string(20, ' '));

  // Input fields may also end with a NUL; letter case does not matter.
  char nulTerminated[16] = "FT";
  int iun = 0;
  X_GETIUN(&depth, nulTerminated, &iun);
  EXPECT_EQ(iun, ft);
  EXPECT_EQ(seriesOf("no such series"), -1);
}

TEST(UnitsExports, CountsAndDefaults) {
  const int fraction = seriesOf("fraction"), pressure = seriesOf("pressure");
  int n = -1, listed = -1, last = -1;
  X_NSER(&last);
  EXPECT_EQ(last, unitsRegistry().lastSeries());
  X_NSERUNITS(&fraction, &n);
  X_GETNULIST(&fraction, &listed);
  EXPECT_EQ(n, 8);  // "p.u." is hidden from pick lists
  EXPECT_EQ(listed, 7);
  const int beyond = last + 1;
  X_NSERUNITS(&beyond, &n);
  EXPECT_EQ(n, 0);

  for (auto [system, unit] : {std::pair{1, "psia"}, std::pair{2, "bar"}, std::pair{3, "kpa"}}) {
    int value = -1;
    X_GETSDEF(&pressure, &system, &value);
    EXPECT_EQ(value, unitOf(pressure, unit)) << system;
  }
  int system = 4, value = 0;
  X_GETSDEF(&pressure, &system, &value);
  EXPECT_EQ(value, unitsRegistry().series()[static_cast<std::size_t>(pressure)].dimension);
  X_GETSDEF(&beyond, &system, &value);
  EXPECT_EQ(value, -32768);
  const int oilfield = 1;
  EXPECT_EQ(IA_XUNGETSERDEF(&beyond, &oilfield), -32768);
}

TEST(UnitsExports, ListedNamesFillConsecutiveFields) {
  const int fraction = seriesOf("fraction");
  std::vector<char> names(8 * 16 + 1, '#');
  int capacity = 8, count = 0;
  X_GETULISTA(&fraction, names.data(), &capacity, &count);
  EXPECT_EQ(count, 7);
  EXPECT_EQ(std::string(names.data(), 7 * 16), padded("fr", 16) + padded("v/v", 16) + padded("vol/vol", 16) +
                                                   padded("%", 16) + padded("pu", 16) + padded("ppm", 16) +
                                                   padded("ppk", 16));
  EXPECT_EQ(names[7 * 16], '#');

  // A short array takes what fits; the count still tells how many there are.
  std::fill(names.begin(), names.end(), '#');
  capacity = 2;
  X_GETULISTDS(&fraction, names.data(), &capacity, &count);
  EXPECT_EQ(count, 7);
  EXPECT_EQ(names[32], '#');
}

TEST(UnitsExports, CoefficientsAndConversionsByPosition) {
  const int temperature = seriesOf("temperature");
  const int degf = unitOf(temperature, "degf"), degc = unitOf(temperature, "degc"), bad = 9, noSeries = -1;
  float a = 0, b = 0, s = 0;
  int err = 99;
  X_SICF(&temperature, &degf, &degc, &a, &b, &s, &err);
  EXPECT_EQ(err, 0);
  EXPECT_FLOAT_EQ(a, 5.0f / 9.0f);
  EXPECT_FLOAT_EQ(b, -160.0f / 9.0f);  // 0 degF is -32 * 5/9 degC
  EXPECT_EQ(s, 1.0f);
  X_SICF(&temperature, &degf, &bad, &a, &b, &s, &err);
  EXPECT_EQ(err, 1);

  const float boiling = 212.0f, null = kRealNull;
  EXPECT_EQ(X_SICONV(&boiling, &temperature, &degf, &degc, &err), 100.0f);
  EXPECT_EQ(X_SICONV(&null, &temperature, &degf, &degc, &err), kRealNull);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(X_SICONV(&boiling, &noSeries, &degf, &degc, &err), 212.0f);
  EXPECT_EQ(err, 1);
  std::vector<double> v = {212.0, kDoubleNull, -40.0};
  const int n = 3;
  X_SICONVV(v.data(), &n, &temperature, &degf, &degc, &err);
  EXPECT_EQ(err, 0);
  EXPECT_TRUE(closeTo(v[0], 100.0));
  EXPECT_EQ(v[1], kDoubleNull);
  EXPECT_TRUE(closeTo(v[2], -40.0));
}

TEST(UnitsExports, ConversionsByNameAndFixedSeries) {
  const int temperature = seriesOf("temperature");
  const std::string degf = padded("DEGF", 16), degc = padded("degc", 16), blank(16, ' '), wrong = padded("x", 16);
  const float boiling = 212.0f;
  EXPECT_EQ(X_SCCONV(&boiling, &temperature, degf.c_str(), degc.c_str()), 100.0f);
  EXPECT_EQ(X_SCCONV(&boiling, &temperature, blank.c_str(), degc.c_str()), 212.0f);
  EXPECT_EQ(X_SCCONV(&boiling, &temperature, wrong.c_str(), degc.c_str()), 212.0f);
  int err = 99;
  A_XUN(&boiling, &temperature, wrong.c_str(), degc.c_str(), &err);
  EXPECT_EQ(err, 1);

  // The series found from both unit names, or named.
  const std::string scf = padded("scf/stb", 16), m3 = padded("m3/m3", 16), ft = padded("ft", 16);
  const float one = 1.0f;
  EXPECT_TRUE(closeTo(A_XUNSC(&one, scf.c_str(), m3.c_str(), &err), 0.3048 * 0.3048 * 0.3048 / 0.158987294928, 1e-6));
  A_XUNSC(&one, ft.c_str(), degc.c_str(), &err);
  EXPECT_EQ(err, 1);
  const std::string gor = padded("gas oil ratio", 20);
  EXPECT_TRUE(closeTo(A_XUNCSC(&one, gor.c_str(), m3.c_str(), scf.c_str(), &err), 0.158987294928 / 0.028316846592, 1e-6));
  EXPECT_EQ(IA_XUNGETSER(gor.c_str()), seriesOf("gas oil ratio"));

  float depth = 100.0f;
  A_DEPC(&depth, ft.c_str(), padded("m", 16).c_str(), &err);
  EXPECT_EQ(depth, 30.48f);
  A_DEPC(&depth, padded("hr", 16).c_str(), ft.c_str(), &err);  // hours are no depth
  EXPECT_EQ(err, 1);
  double hours = 36.0;
  A_TIMC(&hours, padded("hr", 16).c_str(), padded("day", 16).c_str(), &err);
  EXPECT_TRUE(closeTo(hours, 1.5));
}

TEST(UnitsExports, VectorRecordsChangeUnit) {
  const int depth = seriesOf("depth"), ft = unitOf(depth, "ft"), m = unitOf(depth, "m");
  std::vector<float> values = {100.0f, kRealNull};
  DT_RVEC vec{2, values.data(), {ft, depth, {}}};
  setFixed(vec.VU.CU, "ft");

  X_RVECCONVU(&vec, padded("M", 16).c_str());
  EXPECT_EQ(vec.VU.IUN, m);
  EXPECT_EQ(std::string(vec.VU.CU, 16), padded("m", 16));
  EXPECT_EQ(values, (std::vector<float>{30.48f, kRealNull}));

  X_RVECCONVU(&vec, padded("degf", 16).c_str());  // not a depth unit: nothing happens
  EXPECT_EQ(vec.VU.IUN, m);
  EXPECT_EQ(values[0], 30.48f);

  vec.VU.IUN = 0;  // no unit yet: the new one is taken as it stands
  X_RVECCONVUI(&vec, &ft);
  EXPECT_EQ(vec.VU.IUN, ft);
  EXPECT_EQ(values[0], 30.48f);
}

TEST(UnitsExports, ReferenceEllipsoids) {
  int n = 0, status = 99;
  X_NELLIPSOIDS(&n);
  EXPECT_EQ(n, 27);
  Field<40> name;
  double a = 0, invf = 0;
  for (auto [index, expected, axis, flattening] :
       {std::tuple{1, "Airy 1849", 6377563.396, 299.3249646}, std::tuple{27, "WGS 1984", 6378137.0, 298.257223563}}) {
    X_GETELLIPSOID(&index, name.text, &a, &invf, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(name.str(), padded(expected, 40));
    EXPECT_EQ(a, axis);
    EXPECT_EQ(invf, flattening);
  }
  const int bad = 28;
  X_GETELLIPSOID(&bad, name.text, &a, &invf, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(name.str(), std::string(40, ' '));
  EXPECT_TRUE(name.guardIntact());
}

// X_INIT with the definitions folder pointing elsewhere; the process-wide
// registry is reloaded from the usual place afterwards for the other tests.
TEST(UnitsExports, InitReportsAMissingFileAndLeavesNoSeries) {
  testing::TempDir dir;
  std::vector<std::string> messages;
  int last = 0, n = -1, value = 0;
  const int zero = 0, system = 4;
  {
    testing::ScopedEnv deflib("SUBSURF_DEFLIB", dir.path());
    host::clearRecorded();
    X_INIT();
    messages = host::recordedMessages();
    X_NSER(&last);
    X_NSERUNITS(&zero, &n);
    X_GETSDEF(&zero, &system, &value);
  }
  X_INIT();

  EXPECT_EQ(messages, std::vector<std::string>{"Cannot read units definitions file " + dir.path() + "/x_units.def"});
  EXPECT_EQ(last, -1);
  EXPECT_EQ(n, 0);
  EXPECT_EQ(value, -32768);
  EXPECT_GE(seriesOf("depth"), 0);
}

}  // namespace
}  // namespace subsurf
