// The shipped definitions file: its factors against the exact definitions of
// the units, and the rules the conversion arithmetic relies on.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/messages.h"
#include "host/nulls.h"
#include "units/units_registry.h"
#include "units_test_support.h"

namespace subsurf {
namespace {

using testing::closeTo;

constexpr double kFoot = 0.3048, kPound = 0.45359237, kBarrel = 0.158987294928, kGallon = 0.003785411784;
constexpr double kCubicFoot = kFoot * kFoot * kFoot;
constexpr double kSurveyFoot = 1200.0 / 3937.0;
constexpr double kPsi = kPound * 9.80665 / (0.0254 * 0.0254);             // Pa
constexpr double kDarcy = 1e-3 * 1e-6 * 1e-2 / (1e-4 * 101325.0);          // 1 cp * 1 cm3/s * 1 cm / (1 cm2 * 1 atm)

class ShippedUnits : public testing::ShippedRegistryTest {};

struct Fact {
  const char* series;
  double value;
  const char* from;
  const char* to;
  double expected;
};

const Fact kFacts[] = {
    {"depth", 100.0, "ft", "m", 30.48},
    {"length", 1.0, "mi", "ft", 5280.0},
    {"length", 12.0, "in", "ft", 1.0},
    {"pressure", 1.0, "psia", "kpa", kPsi / 1000.0},
    {"pressure", 1.0, "atm", "bar", 1.01325},
    {"pressure", 1.0, "kg/cm2", "mpa", 0.0980665},
    {"pressure", 0.0, "psig", "atm", 1.0},  // gauge pressure starts at one atmosphere
    {"temperature", 212.0, "degf", "degc", 100.0},
    {"temperature", 32.0, "degf", "degk", 273.15},
    {"temperature", -40.0, "degc", "degf", -40.0},
    {"temperature", 491.67, "degr", "degc", 0.0},
    {"density", 1.0, "g/cc", "kg/m3", 1000.0},
    {"density", 1.0, "lb/ft3", "kg/m3", kPound / kCubicFoot},
    {"density", 1.0, "lb/gal", "kg/m3", kPound / kGallon},
    {"viscosity", 1000.0, "cp", "pa.s", 1.0},
    {"gas oil ratio", 1.0, "scf/stb", "m3/m3", kCubicFoot / kBarrel},
    {"gas oil ratio", 1000.0, "scf/stb", "mscf/stb", 1.0},
    {"volume factor", 1.25, "bbl/stb", "m3/m3", 1.25},
    {"gas expansion", 1.0, "scf/rb", "scf/cf", kCubicFoot / kBarrel},
    {"compressibility", 1e-5, "1/psi", "1/kpa", 1e-5 * 1000.0 / kPsi},
    {"compressibility", 1.0, "1/bar", "1/kpa", 0.01},
    {"oil gravity", 10.0, "api", "sg", 1.0},  // sg = 141.5 / (API + 131.5)
    {"oil gravity", 0.876, "sg", "api", 141.5 / 0.876 - 131.5},
    {"fraction", 25.0, "%", "fr", 0.25},
    {"fraction", 0.3, "vol/vol", "p.u.", 30.0},
    {"time", 1.0, "yr", "hr", 365.25 * 24.0},
    {"velocity", 1000.0, "ft/s", "m/s", 304.8},
    {"slowness", 100.0, "us/ft", "m/s", kFoot / 100e-6},
    {"slowness", 100.0, "us/ft", "us/m", 100.0 / kFoot},
    {"slowness", 2000.0, "m/s", "s/m", 0.0005},
    {"slowness", 0.0005, "s/m", "us/m", 500.0},
    {"area", 1.0, "acre", "ft2", 43560.0 * kSurveyFoot * kSurveyFoot / (kFoot * kFoot)},  // 43560 survey ft2
    {"volume", 1.0, "bbl", "gal", 42.0},
    {"volume", 1.0, "mcf", "m3", 1000.0 * kCubicFoot},
    {"angle", 180.0, "deg", "rad", std::numbers::pi},
    {"permeability", 1.0, "darcy", "um2", kDarcy / 1e-12},
    {"permeability", 1.0, "darcy", "md", 1000.0},
};

TEST_F(ShippedUnits, FactorsAgreeWithTheExactDefinitions) {
  for (const Fact& f : kFacts) {
    SCOPED_TRACE(std::string(f.series) + ": " + f.from + " -> " + f.to);
    EXPECT_TRUE(closeTo(testing::convertNamed(reg(), f.series, f.value, f.from, f.to), f.expected));
  }
}

TEST_F(ShippedUnits, HoldsTheUnitsOtherSubsystemsName) {
  const std::pair<const char*, std::vector<const char*>> expected[] = {
      {"depth", {"ft", "m"}},           {"pressure", {"psia", "kpa", "mpa", "bar"}},
      {"temperature", {"degr", "degf", "degc", "degk"}},
      {"gas oil ratio", {"scf/stb", "m3/m3"}},
      {"compressibility", {"1/psi", "1/kpa", "1/bar"}},
      {"fraction", {"vol/vol", "%", "pu", "p.u.", "fr", "v/v"}},
      {"gas expansion", {"scf/cf"}},    {"dimensionless", {"-", ""}},
      {"volume factor", {"bbl/stb"}},   {"oil gravity", {"api"}},
      {"gas gravity", {"(air=1)"}},     {"density", {"g/cc", "kg/m3"}},
      {"viscosity", {"cp"}},
  };
  for (const auto& [series, units] : expected)
    for (const char* unit : units) EXPECT_GE(reg().findUnit(reg().findSeries(series), unit), 1) << series << " " << unit;
  for (const char* series : {"length", "time", "velocity", "slowness", "area", "volume", "angle", "permeability"})
    EXPECT_GE(reg().unitCount(reg().findSeries(series)), 2) << series;
}

// Every pair of units of every series: values round trip and agree with the
// route through SI; null marks (above 9.0e20 in magnitude) pass bit for bit;
// the direct reciprocal rule is only taken for units that are each other's inverse.
TEST_F(ShippedUnits, EveryPairOfUnits) {
  const double samples[] = {0.37, 12.5, 1234.5, -7.25};  // none zero, so reciprocal units are defined
  const double marks[] = {kDoubleNull, 1.0e21, -1.0e30, std::nextafter(double(9.0e20f), 1e30)};
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    const int si = reg().defaultUnit(iser, static_cast<int>(UnitSystem::SI));
    for (int a = 1; a <= reg().unitCount(iser); ++a) {
      const UnitDefinition& ua = reg().units()[static_cast<std::size_t>(reg().unitId(iser, a) - 1)];
      for (int b = 1; b <= reg().unitCount(iser); ++b) {
        SCOPED_TRACE(reg().seriesName(iser) + ": " + reg().unitName(iser, a) + " -> " + reg().unitName(iser, b));
        // The zero of b in unit a: the size of an offset the round trip crosses.
        int e0 = 0;
        const double zeroOfB = reg().convert(0.0, iser, b, a, e0);
        const double offset = e0 == 0 && std::isfinite(zeroOfB) ? zeroOfB : 0.0;
        for (double x : samples) {
          int e1 = 0, e2 = 0, e3 = 0, e4 = 0;
          const double y = reg().convert(x, iser, a, b, e1);
          EXPECT_TRUE(closeTo(reg().convert(y, iser, b, a, e2), x, 1e-11, offset)) << x;
          EXPECT_TRUE(closeTo(reg().convert(reg().convert(x, iser, a, si, e3), iser, si, b, e4), y, 1e-11)) << x;
          EXPECT_EQ(e1 | e2 | e3 | e4, 0);
        }
        int err = 99;
        EXPECT_EQ(std::bit_cast<std::uint32_t>(reg().convert(kRealNull, iser, a, b, err)),
                  std::bit_cast<std::uint32_t>(kRealNull));
        std::vector<double> v(std::begin(marks), std::end(marks));
        reg().convert(v.data(), v.size(), iser, a, b, err);
        EXPECT_EQ(0, std::memcmp(v.data(), marks, sizeof marks));
        EXPECT_EQ(err, 0);
        if (!reg().linearCoefficients(iser, a, b, err).reciprocal || err != 0) continue;
        const UnitDefinition& ub = reg().units()[static_cast<std::size_t>(reg().unitId(iser, b) - 1)];
        EXPECT_TRUE(closeTo(ua.c1 * ub.c1, 1.0));
      }
    }
  }
  // The limit of the marks itself is an ordinary value.
  const int depth = reg().findSeries("depth");
  int err = 99;
  EXPECT_TRUE(closeTo(reg().convert(double(9.0e20f), depth, reg().findUnit(depth, "ft"), reg().findUnit(depth, "m"), err),
                      double(9.0e20f) * kFoot));
}

TEST_F(ShippedUnits, DataKeepsTheRulesOfTheArithmetic) {
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    const UnitSeries& s = reg().series()[static_cast<std::size_t>(iser)];
    for (int system = 1; system <= 3; ++system) EXPECT_GE(reg().defaultUnit(iser, system), 1) << s.name;
    // The steps of a unit whose id is the series' first-entry number are skipped:
    // only an SI unit may be there.
    for (int a = 1; a <= reg().unitCount(iser); ++a) {
      const UnitDefinition& ua = reg().units()[static_cast<std::size_t>(reg().unitId(iser, a) - 1)];
      if (reg().unitId(iser, a) == s.firstEntry) { EXPECT_TRUE(ua.nc == 1 && ua.c1 == 1.0) << s.name << " " << ua.name; }
    }
  }
  // The reciprocal rule is in use: m/s to s/m takes it, us/ft to m/s goes through SI.
  const int slowness = reg().findSeries("slowness");
  const int ms = reg().findUnit(slowness, "m/s");
  int err = 99;
  EXPECT_TRUE(reg().linearCoefficients(slowness, ms, reg().findUnit(slowness, "s/m"), err).reciprocal);
  EXPECT_EQ(err, 0);
  reg().linearCoefficients(slowness, reg().findUnit(slowness, "us/ft"), ms, err);
  EXPECT_EQ(err, -1);
}

TEST_F(ShippedUnits, LookupsAndGuesses) {
  const int depth = reg().findSeries("depth"), length = reg().findSeries("length");
  EXPECT_EQ(reg().dimensions()[static_cast<std::size_t>(reg().defaultUnit(depth, 4) - 1)].name, "length");
  EXPECT_EQ(reg().findUnit(depth, "Ft    "), reg().findUnit(depth, "ft"));
  EXPECT_EQ(reg().findUnit(depth, "feet"), 0);  // the other name is for display only
  EXPECT_EQ(reg().findSeries("Gas Oil Ratio"), reg().findSeries("gas oil ratio"));
  EXPECT_EQ(reg().guessSeries("m"), depth);
  EXPECT_EQ(reg().guessSeries("m", "mi"), length);
  EXPECT_EQ(reg().guessSeries("m", "degf"), -1);
  EXPECT_GE(reg().findUnit(reg().findSeries("dimensionless"), "                "), 1);  // the blank unit
}

TEST_F(ShippedUnits, AUnitToItselfIsBitForBit) {
  const double values[] = {0.1, -0.0, 4.9e-324, std::numeric_limits<double>::quiet_NaN(), -123.456};
  const int temperature = reg().findSeries("temperature");
  const int degf = reg().findUnit(temperature, "degf");
  std::vector<double> v(std::begin(values), std::end(values));
  int err = 99;
  reg().convert(v.data(), v.size(), temperature, degf, degf, err);
  EXPECT_EQ(0, std::memcmp(v.data(), values, sizeof values));
  for (double x : values) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(reg().convert(x, temperature, degf, degf, err)),
              std::bit_cast<std::uint64_t>(x));
    EXPECT_EQ(err, 0);
  }
  // The same position is no conversion at all, and needs no series.
  EXPECT_EQ(reg().convert(5.5, -1, 2, 2, err), 5.5);
  EXPECT_EQ(err, 0);
  EXPECT_EQ(reg().convert(5.5, -1, 1, 2, err), 5.5);
  EXPECT_EQ(err, 1);
}

TEST_F(ShippedUnits, OffsetConversionsReachZeroExactly) {
  // 32 degF is 0 degC; rounding would leave some 1e-14 without care.
  const int temperature = reg().findSeries("temperature");
  const int degf = reg().findUnit(temperature, "degf"), degc = reg().findUnit(temperature, "degc");
  int err = 99;
  EXPECT_EQ(reg().convert(32.0, temperature, degf, degc, err), 0.0);
  std::vector<float> f = {212.0f, kRealNull, 32.0f};
  reg().convert(f.data(), f.size(), temperature, degf, degc, err);
  EXPECT_EQ(f, (std::vector<float>{100.0f, kRealNull, 0.0f}));
}

// Converting from one array into another gives, value for value, what
// converting in place gives (and what one value at a time gives), for every
// pair of units of every series: linear, reciprocal and through-SI pairs
// alike, null marks and zeros included; the source is left as it was.
TEST_F(ShippedUnits, IntoAnotherArrayAsInPlace) {
  const std::vector<float> values = {0.37f, 12.5f, -7.25f, 0.0f, kRealNull, 1234.5f, 3.0e21f};
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    for (int a = 1; a <= reg().unitCount(iser); ++a) {
      for (int b = 1; b <= reg().unitCount(iser); ++b) {
        SCOPED_TRACE(reg().seriesName(iser) + ": " + reg().unitName(iser, a) + " -> " + reg().unitName(iser, b));
        std::vector<float> inPlace = values, out(values.size(), 42.0f);
        const std::vector<float> source = values;
        int errInPlace = 99, errOut = 99;
        reg().convert(inPlace.data(), inPlace.size(), iser, a, b, errInPlace);
        reg().convert(source.data(), out.data(), source.size(), iser, a, b, errOut);
        EXPECT_EQ(errOut, errInPlace);
        EXPECT_EQ(source, values);
        for (std::size_t i = 0; i < values.size(); ++i) {
          int e = 0;
          const float one = reg().convert(values[i], iser, a, b, e);
          EXPECT_EQ(std::bit_cast<std::uint32_t>(out[i]), std::bit_cast<std::uint32_t>(inPlace[i])) << i;
          if (e == 0) { EXPECT_EQ(std::bit_cast<std::uint32_t>(out[i]), std::bit_cast<std::uint32_t>(one)) << i; }
        }
      }
    }
  }
}

}  // namespace
}  // namespace subsurf
