// The shipped definitions file: its contents against independent physical facts,
// and the invariants the conversion arithmetic relies on.
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

// Exact definitions the expected values are built from.
constexpr double kFoot = 0.3048;                            // m
constexpr double kPound = 0.45359237;                       // kg
constexpr double kPsi = kPound * 9.80665 / (0.0254 * 0.0254);  // Pa
constexpr double kBarrel = 0.158987294928;                  // m3
constexpr double kCubicFoot = kFoot * kFoot * kFoot;        // m3
constexpr double kGallon = 0.003785411784;                  // m3
constexpr double kDarcy = 1e-3 * 1e-6 * 1e-2 / (1e-4 * 101325.0);  // m2: 1 cp, 1 cm3/s, 1 cm, 1 cm2, 1 atm

class ShippedUnits : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    host::clearRecorded();
    registry_ = new UnitsRegistry;
    loadStatus_ = new Status(registry_->load(testing::shippedDefinitions()));
    loadMessages_ = new std::vector<std::string>(host::recordedMessages());
  }
  static void TearDownTestSuite() {
    delete registry_;
    delete loadStatus_;
    delete loadMessages_;
  }
  static const UnitsRegistry& reg() { return *registry_; }
  static double conv(const std::string& series, double v, const std::string& from, const std::string& to) {
    return testing::convertNamed(*registry_, series, v, from, to);
  }

  static UnitsRegistry* registry_;
  static Status* loadStatus_;
  static std::vector<std::string>* loadMessages_;
};
UnitsRegistry* ShippedUnits::registry_ = nullptr;
Status* ShippedUnits::loadStatus_ = nullptr;
std::vector<std::string>* ShippedUnits::loadMessages_ = nullptr;

TEST_F(ShippedUnits, LoadsWithoutComplaint) {
  EXPECT_TRUE(loadStatus_->isOk()) << loadStatus_->message();
  EXPECT_TRUE(loadMessages_->empty()) << (loadMessages_->empty() ? "" : loadMessages_->front());
  EXPECT_TRUE(reg().loaded());
}

TEST_F(ShippedUnits, HoldsTheSeriesOtherSubsystemsNameAndTheirUnits) {
  const std::vector<std::pair<std::string, std::vector<std::string>>> expected = {
      {"depth", {"ft", "m"}},
      {"length", {"ft", "m"}},
      {"pressure", {"psia", "kpa", "mpa", "bar"}},
      {"temperature", {"degr", "degf", "degc", "degk"}},
      {"density", {"g/cc", "kg/m3"}},
      {"viscosity", {"cp"}},
      {"gas oil ratio", {"scf/stb", "m3/m3"}},
      {"volume factor", {"bbl/stb"}},
      {"compressibility", {"1/psi", "1/kpa", "1/bar"}},
      {"oil gravity", {"api"}},
      {"gas gravity", {"(air=1)"}},
      {"fraction", {"vol/vol", "%", "pu", "p.u.", "fr", "v/v"}},
      {"gas expansion", {"scf/cf"}},
      {"time", {}},
      {"velocity", {}},
      {"slowness", {}},
      {"area", {}},
      {"volume", {}},
      {"angle", {}},
      {"permeability", {}},
      {"dimensionless", {"-", ""}},
  };
  for (const auto& [series, units] : expected) {
    const int iser = reg().findSeries(series);
    ASSERT_GE(iser, 0) << series;
    EXPECT_GE(reg().unitCount(iser), 1) << series;
    for (const std::string& unit : units) EXPECT_GE(reg().findUnit(iser, unit), 1) << '"' << unit << "\" in " << series;
  }
}

TEST_F(ShippedUnits, EverySeriesHasItsThreeDefaultsAmongItsUnits) {
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    for (int system = 1; system <= 3; ++system) {
      const int iun = reg().defaultUnit(iser, system);
      EXPECT_GE(iun, 1) << reg().seriesName(iser) << " system " << system;
      EXPECT_LE(iun, reg().unitCount(iser));
    }
  }
}

TEST_F(ShippedUnits, DefaultsOfTheThreeSystemsAndTheDimension) {
  const int depth = reg().findSeries("depth");
  EXPECT_EQ(reg().defaultUnit(depth, 1), reg().findUnit(depth, "ft"));  // oilfield
  EXPECT_EQ(reg().defaultUnit(depth, 2), reg().findUnit(depth, "m"));   // metric
  EXPECT_EQ(reg().defaultUnit(depth, 3), reg().findUnit(depth, "m"));   // SI
  const int temperature = reg().findSeries("temperature");
  EXPECT_EQ(reg().unitName(temperature, reg().defaultUnit(temperature, 1)), "degf");
  EXPECT_EQ(reg().unitName(temperature, reg().defaultUnit(temperature, 2)), "degc");
  EXPECT_EQ(reg().unitName(temperature, reg().defaultUnit(temperature, 3)), "degk");

  // System 4 is the dimension: depth and length share one.
  const int length = reg().findSeries("length");
  const int dim = reg().defaultUnit(depth, 4);
  ASSERT_GE(dim, 1);
  EXPECT_EQ(reg().defaultUnit(length, 4), dim);
  EXPECT_EQ(reg().dimensions()[static_cast<std::size_t>(dim - 1)].name, "length");

  for (int bad : {-1, reg().lastSeries() + 1})
    for (int system = 1; system <= 4; ++system) EXPECT_EQ(reg().defaultUnit(bad, system), -32768);
}

TEST_F(ShippedUnits, LengthsAndDepths) {
  EXPECT_TRUE(closeTo(conv("depth", 100.0, "ft", "m"), 30.48));
  EXPECT_TRUE(closeTo(conv("depth", 30.48, "m", "ft"), 100.0));
  EXPECT_TRUE(closeTo(conv("length", 1.0, "mi", "ft"), 5280.0));
  EXPECT_TRUE(closeTo(conv("length", 12.0, "in", "ft"), 1.0));
  EXPECT_TRUE(closeTo(conv("length", 1.0, "km", "mm"), 1e6));
}

TEST_F(ShippedUnits, Pressures) {
  EXPECT_TRUE(closeTo(conv("pressure", 1.0, "psia", "kpa"), kPsi / 1000.0));
  EXPECT_TRUE(closeTo(conv("pressure", 1.0, "atm", "kpa"), 101.325));
  EXPECT_TRUE(closeTo(conv("pressure", 1.0, "bar", "kpa"), 100.0));
  EXPECT_TRUE(closeTo(conv("pressure", 1.0, "mpa", "bar"), 10.0));
  EXPECT_TRUE(closeTo(conv("pressure", 1.0, "kg/cm2", "bar"), 0.980665));
  EXPECT_TRUE(closeTo(conv("pressure", 1.0, "pa", "kpa"), 0.001));
  // Gauge pressure is measured from one standard atmosphere.
  EXPECT_TRUE(closeTo(conv("pressure", 0.0, "psig", "atm"), 1.0));
  EXPECT_TRUE(closeTo(conv("pressure", 100.0, "psig", "psia"), 100.0 + 101325.0 / kPsi));
}

TEST_F(ShippedUnits, Temperatures) {
  EXPECT_TRUE(closeTo(conv("temperature", 212.0, "degf", "degc"), 100.0));
  EXPECT_TRUE(closeTo(conv("temperature", 32.0, "degf", "degk"), 273.15));
  EXPECT_TRUE(closeTo(conv("temperature", -40.0, "degc", "degf"), -40.0));
  EXPECT_TRUE(closeTo(conv("temperature", 0.0, "degr", "degf"), -459.67));
  EXPECT_TRUE(closeTo(conv("temperature", 491.67, "degr", "degc"), 0.0));
  EXPECT_TRUE(closeTo(conv("temperature", 60.0, "degf", "degr"), 519.67));
}

TEST_F(ShippedUnits, DensitiesAndViscosities) {
  EXPECT_TRUE(closeTo(conv("density", 1.0, "g/cc", "kg/m3"), 1000.0));
  EXPECT_TRUE(closeTo(conv("density", 1.0, "lb/ft3", "kg/m3"), kPound / kCubicFoot));
  EXPECT_TRUE(closeTo(conv("density", 1.0, "lb/gal", "kg/m3"), kPound / kGallon));
  EXPECT_TRUE(closeTo(conv("viscosity", 1.0, "cp", "mpa.s"), 1.0));
  EXPECT_TRUE(closeTo(conv("viscosity", 1000.0, "cp", "pa.s"), 1.0));
}

TEST_F(ShippedUnits, VolumeRatiosAndCompressibilities) {
  EXPECT_TRUE(closeTo(conv("gas oil ratio", 1.0, "scf/stb", "m3/m3"), kCubicFoot / kBarrel));
  EXPECT_TRUE(closeTo(conv("gas oil ratio", 1.0, "m3/m3", "scf/stb"), kBarrel / kCubicFoot));
  EXPECT_TRUE(closeTo(conv("gas oil ratio", 1000.0, "scf/stb", "mscf/stb"), 1.0));
  EXPECT_TRUE(closeTo(conv("volume factor", 1.25, "bbl/stb", "m3/m3"), 1.25));
  EXPECT_TRUE(closeTo(conv("gas expansion", 1.0, "scf/rb", "m3/m3"), kCubicFoot / kBarrel));
  EXPECT_TRUE(closeTo(conv("gas expansion", 150.0, "scf/cf", "sm3/m3"), 150.0));
  // A compressibility is per unit of pressure: the factor is the pressure's inverse.
  EXPECT_TRUE(closeTo(conv("compressibility", 1e-5, "1/psi", "1/kpa"), 1e-5 * 1000.0 / kPsi));
  EXPECT_TRUE(closeTo(conv("compressibility", 1.0, "1/bar", "1/kpa"), 0.01));
}

TEST_F(ShippedUnits, OilGravityThroughTheApiDefinition) {
  // sg = 141.5 / (API + 131.5): water (sg 1) is 10 API.
  EXPECT_TRUE(closeTo(conv("oil gravity", 10.0, "api", "sg"), 1.0));
  EXPECT_TRUE(closeTo(conv("oil gravity", 35.0, "api", "sg"), 141.5 / 166.5));
  EXPECT_TRUE(closeTo(conv("oil gravity", 0.876, "sg", "api"), 141.5 / 0.876 - 131.5));
}

TEST_F(ShippedUnits, FractionsTimesAreasVolumesAnglesPermeabilities) {
  EXPECT_TRUE(closeTo(conv("fraction", 25.0, "%", "fr"), 0.25));
  EXPECT_TRUE(closeTo(conv("fraction", 25.0, "pu", "v/v"), 0.25));
  EXPECT_TRUE(closeTo(conv("fraction", 0.3, "vol/vol", "p.u."), 30.0));
  EXPECT_TRUE(closeTo(conv("time", 1.0, "day", "hr"), 24.0));
  EXPECT_TRUE(closeTo(conv("time", 1.0, "yr", "day"), 365.25));
  EXPECT_TRUE(closeTo(conv("time", 90.0, "min", "hr"), 1.5));
  EXPECT_TRUE(closeTo(conv("area", 1.0, "acre", "ft2"), 43560.0));
  EXPECT_TRUE(closeTo(conv("area", 1.0, "km2", "ha"), 100.0));
  EXPECT_TRUE(closeTo(conv("volume", 1.0, "bbl", "gal"), 42.0));
  EXPECT_TRUE(closeTo(conv("volume", 1.0, "mcf", "ft3"), 1000.0));
  EXPECT_TRUE(closeTo(conv("volume", 1.0, "m3", "l"), 1000.0));
  EXPECT_TRUE(closeTo(conv("angle", 180.0, "deg", "rad"), std::numbers::pi));
  EXPECT_TRUE(closeTo(conv("permeability", 1.0, "darcy", "md"), 1000.0));
  EXPECT_TRUE(closeTo(conv("permeability", 1.0, "darcy", "um2"), kDarcy / 1e-12));
  EXPECT_TRUE(closeTo(conv("velocity", 1000.0, "ft/s", "m/s"), 304.8));
}

TEST_F(ShippedUnits, SlownessAndVelocityAreReciprocal) {
  // 100 us/ft: a wave takes 100 microseconds per 0.3048 m.
  EXPECT_TRUE(closeTo(conv("slowness", 100.0, "us/ft", "m/s"), 0.3048 / 100e-6));
  EXPECT_TRUE(closeTo(conv("slowness", 100.0, "us/ft", "us/m"), 100.0 / 0.3048));
  EXPECT_TRUE(closeTo(conv("slowness", 2000.0, "m/s", "us/m"), 500.0));
  EXPECT_TRUE(closeTo(conv("slowness", 2000.0, "m/s", "s/m"), 0.0005));
  EXPECT_TRUE(closeTo(conv("slowness", 0.0005, "s/m", "m/s"), 2000.0));
  EXPECT_TRUE(closeTo(conv("slowness", 500.0, "us/m", "s/m"), 0.0005));

  // m/s to s/m takes the direct reciprocal rule; us/ft is kept off it.
  const int iser = reg().findSeries("slowness");
  int err = 99;
  const LinearConversion c = reg().linearCoefficients(iser, reg().findUnit(iser, "m/s"), reg().findUnit(iser, "s/m"), err);
  EXPECT_EQ(err, 0);
  EXPECT_TRUE(c.reciprocal);
  reg().linearCoefficients(iser, reg().findUnit(iser, "m/s"), reg().findUnit(iser, "us/ft"), err);
  EXPECT_EQ(err, -1);
}

// Test values for round trips: none is zero, so reciprocal units are defined.
const double kSamples[] = {0.37, 1.0, 12.5, 1234.5, -7.25};

TEST_F(ShippedUnits, EveryPairOfUnitsRoundTripsAndAgreesWithTheRouteThroughSI) {
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    const int si = reg().defaultUnit(iser, static_cast<int>(UnitSystem::SI));
    for (int a = 1; a <= reg().unitCount(iser); ++a) {
      for (int b = 1; b <= reg().unitCount(iser); ++b) {
        for (double x : kSamples) {
          SCOPED_TRACE(reg().seriesName(iser) + ": " + reg().unitName(iser, a) + " -> " + reg().unitName(iser, b) +
                       " of " + std::to_string(x));
          int e1 = 0, e2 = 0, e3 = 0, e4 = 0;
          const double y = reg().convert(x, iser, a, b, e1);
          const double back = reg().convert(y, iser, b, a, e2);
          const double viaSI = reg().convert(reg().convert(x, iser, a, si, e3), iser, si, b, e4);
          EXPECT_EQ(e1 | e2 | e3 | e4, 0);
          EXPECT_TRUE(closeTo(back, x, 1e-11));
          EXPECT_TRUE(closeTo(y, viaSI, 1e-11));
        }
      }
    }
  }
}

TEST_F(ShippedUnits, UnitsTakenAsTheSIUnitByTheirIdAreTheSIUnit) {
  // The conversion skips the steps of a unit whose id equals its series'
  // first-entry number; the file must only let that happen to an SI unit.
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    const UnitSeries& s = reg().series()[static_cast<std::size_t>(iser)];
    for (int iun = 1; iun <= reg().unitCount(iser); ++iun) {
      const int id = reg().unitId(iser, iun);
      if (id != s.firstEntry) continue;
      const UnitDefinition& u = reg().units()[static_cast<std::size_t>(id - 1)];
      EXPECT_EQ(u.nc, 1) << s.name << " " << u.name;
      EXPECT_EQ(u.c1, 1.0) << s.name << " " << u.name;
    }
  }
}

TEST_F(ShippedUnits, PairsTakingTheReciprocalRuleAreExactReciprocals) {
  // The direct reciprocal rule is only right when the two scale factors are
  // each other's inverse; every other mixed pair must go through SI.
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    for (int a = 1; a <= reg().unitCount(iser); ++a) {
      for (int b = 1; b <= reg().unitCount(iser); ++b) {
        int err = 0;
        const LinearConversion c = reg().linearCoefficients(iser, a, b, err);
        if (err != 0 || !c.reciprocal) continue;
        const UnitDefinition& ua = reg().units()[static_cast<std::size_t>(reg().unitId(iser, a) - 1)];
        const UnitDefinition& ub = reg().units()[static_cast<std::size_t>(reg().unitId(iser, b) - 1)];
        EXPECT_TRUE(closeTo(ua.c1 * ub.c1, 1.0)) << ua.name << " and " << ub.name;
      }
    }
  }
}

TEST_F(ShippedUnits, HiddenUnitIsCountedButNotListed) {
  const int iser = reg().findSeries("fraction");
  const int hidden = reg().findUnit(iser, "p.u.");
  ASSERT_GE(hidden, 1);
  EXPECT_FALSE(reg().isListed(iser, hidden));
  EXPECT_EQ(reg().unitCount(iser), 6);
  EXPECT_EQ(reg().listedUnitCount(iser), 5);
  const std::vector<std::string> expected = {"fr", "v/v", "vol/vol", "%", "pu"};
  EXPECT_EQ(reg().listedUnitNames(iser), expected);
}

TEST_F(ShippedUnits, UnitLookupIgnoresCaseAndTrailingBlanks) {
  const int depth = reg().findSeries("DEPTH");
  ASSERT_EQ(depth, reg().findSeries("depth"));
  const int ft = reg().findUnit(depth, "ft");
  ASSERT_GE(ft, 1);
  EXPECT_EQ(reg().findUnit(depth, "FT"), ft);
  EXPECT_EQ(reg().findUnit(depth, "Ft  "), ft);
  const int temperature = reg().findSeries("temperature");
  EXPECT_EQ(reg().findUnit(temperature, "DegF"), reg().findUnit(temperature, "degf"));
  EXPECT_EQ(reg().findUnit(depth, "feet"), 0);  // the other name is not looked up
  EXPECT_EQ(reg().guessSeries("PSIA"), reg().findSeries("pressure"));
}

TEST_F(ShippedUnits, BlankUnitOfPlainNumbers) {
  const int iser = reg().findSeries("dimensionless");
  const int blank = reg().findUnit(iser, "");
  ASSERT_GE(blank, 1);
  EXPECT_EQ(reg().findUnit(iser, "                "), blank);
  EXPECT_EQ(reg().unitName(iser, blank), "");
  // By name, a blank unit means "no conversion".
  int err = 99;
  EXPECT_EQ(reg().convertByName(0.42, iser, "", "-", err), 0.42);
  EXPECT_EQ(err, 0);
}

TEST_F(ShippedUnits, SeriesGuessedFromOneOrTwoUnitNames) {
  EXPECT_EQ(reg().guessSeries("m"), reg().findSeries("depth"));  // the first series holding it
  EXPECT_EQ(reg().guessSeries("m", "mi"), reg().findSeries("length"));
  EXPECT_EQ(reg().guessSeries("m3/m3", "bbl/stb"), reg().findSeries("volume factor"));
  EXPECT_EQ(reg().guessSeries("m", "degf"), -1);
  EXPECT_EQ(reg().guessSeries("furlong"), -1);
}

// Nulls and other marks above 9.0e20 in magnitude are never converted, in any
// unit pair; 9.0e20 itself is an ordinary value.
TEST_F(ShippedUnits, NullsAreNeverConverted) {
  const double marks[] = {kDoubleNull, -kDoubleNull, 1.0e21, -1.0e30, std::nextafter(double(9.0e20f), 1e30)};
  const float floatMarks[] = {kRealNull, 1.0e21f, -3.0e38f};
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    for (int a = 1; a <= reg().unitCount(iser); ++a) {
      for (int b = 1; b <= reg().unitCount(iser); ++b) {
        for (double m : marks) {
          int err = 99;
          const double y = reg().convert(m, iser, a, b, err);
          EXPECT_EQ(std::bit_cast<std::uint64_t>(y), std::bit_cast<std::uint64_t>(m));
          EXPECT_EQ(err, 0);
        }
        for (float m : floatMarks) {
          int err = 99;
          EXPECT_EQ(std::bit_cast<std::uint32_t>(reg().convert(m, iser, a, b, err)), std::bit_cast<std::uint32_t>(m));
          EXPECT_EQ(err, 0);
        }
        std::vector<double> v(std::begin(marks), std::end(marks));
        int err = 99;
        reg().convert(v.data(), v.size(), iser, a, b, err);
        EXPECT_EQ(0, std::memcmp(v.data(), marks, sizeof marks));
        EXPECT_EQ(err, 0);
      }
    }
  }
}

TEST_F(ShippedUnits, TheLimitItselfIsConverted) {
  const int depth = reg().findSeries("depth");
  int err = 99;
  const double limit = 9.0e20f;
  EXPECT_TRUE(closeTo(reg().convert(limit, depth, reg().findUnit(depth, "ft"), reg().findUnit(depth, "m"), err),
                      limit * 0.3048));
  EXPECT_EQ(err, 0);
}

TEST_F(ShippedUnits, AUnitToItselfIsBitForBit) {
  const double values[] = {0.1, -0.0, 4.9e-324, 1.7976931348623157e308, std::numeric_limits<double>::quiet_NaN(),
                           -123.456};
  const int temperature = reg().findSeries("temperature");
  const int degf = reg().findUnit(temperature, "degf");
  for (double x : values) {
    int err = 99;
    const double y = reg().convert(x, temperature, degf, degf, err);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(y), std::bit_cast<std::uint64_t>(x));
    EXPECT_EQ(err, 0);
    const float xf = static_cast<float>(x);
    const float yf = reg().convert(xf, temperature, degf, degf, err);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(yf), std::bit_cast<std::uint32_t>(xf));
  }
  std::vector<double> v(std::begin(values), std::end(values));
  int err = 99;
  reg().convert(v.data(), v.size(), temperature, degf, degf, err);
  EXPECT_EQ(0, std::memcmp(v.data(), values, sizeof values));
}

TEST_F(ShippedUnits, VectorConversionMatchesOneByOneAndKeepsNulls) {
  const int temperature = reg().findSeries("temperature");
  const int degf = reg().findUnit(temperature, "degf"), degc = reg().findUnit(temperature, "degc");
  std::vector<double> v = {212.0, kDoubleNull, 32.0, -40.0, 1.0e25};
  int err = 99;
  reg().convert(v.data(), v.size(), temperature, degf, degc, err);
  EXPECT_EQ(err, 0);
  EXPECT_TRUE(closeTo(v[0], 100.0));
  EXPECT_EQ(v[1], kDoubleNull);
  EXPECT_TRUE(closeTo(v[2], 0.0));
  EXPECT_TRUE(closeTo(v[3], -40.0));
  EXPECT_EQ(v[4], 1.0e25);

  std::vector<float> f = {212.0f, kRealNull, 32.0f};
  reg().convert(f.data(), f.size(), temperature, degf, degc, err);
  EXPECT_EQ(f[0], 100.0f);
  EXPECT_EQ(f[1], kRealNull);
  EXPECT_EQ(f[2], 0.0f);
}

TEST_F(ShippedUnits, OutOfRangeSeriesAndPositions) {
  const int depth = reg().findSeries("depth");
  for (auto [iser, from, to] : {std::tuple{-1, 1, 2}, std::tuple{reg().lastSeries() + 1, 1, 2},
                                 std::tuple{depth, 0, 1}, std::tuple{depth, 1, 3}}) {
    int err = 0;
    EXPECT_EQ(reg().convert(5.5, iser, from, to, err), 5.5);
    EXPECT_EQ(err, 1);
    reg().linearCoefficients(iser, from, to, err);
    EXPECT_EQ(err, 1);
  }
  // The same position is no conversion at all, whatever the series.
  int err = 99;
  EXPECT_EQ(reg().convert(5.5, -1, 2, 2, err), 5.5);
  EXPECT_EQ(err, 0);

  EXPECT_EQ(reg().unitCount(-1), 0);
  EXPECT_EQ(reg().listedUnitCount(reg().lastSeries() + 1), 0);
  EXPECT_EQ(reg().seriesName(-1), "");
  EXPECT_EQ(reg().unitName(depth, 0), "");
  EXPECT_EQ(reg().unitName(depth, 3), "");
  EXPECT_EQ(reg().unitId(depth, 3), 0);
}

}  // namespace
}  // namespace subsurf
