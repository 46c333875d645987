// The shipped catalogue of units against the data it is generated from: every
// unit of every series converts as the Energistics formula y = (A + B x) / (C + D x)
// says; the series of earlier files keep their units in their places; the
// generator reproduces the committed file; units are found by the names people type.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/csv_row.h"
#include "host/messages.h"
#include "subsurf/units.h"
#include "support/run_program.h"
#include "units/units_registry.h"
#include "units_test_support.h"

namespace subsurf {
namespace {

std::string dataFile(const char* name) { return std::string(SUBSURF_SOURCE_DATA_DIR) + "/" + name; }

// The rows of a CSV file with a header line, as maps from column name to text.
std::vector<std::map<std::string, std::string>> readTable(const std::string& path) {
  std::ifstream in(path);
  std::vector<std::map<std::string, std::string>> rows;
  std::string line;
  if (!std::getline(in, line)) return rows;
  const CsvRow header = CsvRow::parse(line);
  while (std::getline(in, line)) {
    const CsvRow row = CsvRow::parse(line);
    std::map<std::string, std::string> r;
    for (int c = 1; c <= static_cast<int>(header.size()); ++c) r[header.field(c)] = row.field(c);
    rows.push_back(std::move(r));
  }
  return rows;
}

// A value in a unit expressed in the base unit of its dimension, by the data's
// own formula (with the data's teradarcy-API taken as the square metre it is).
class DataFormula {
 public:
  DataFormula() {
    for (auto& r : readTable(dataFile("uom-factors.csv"))) factors_[r["symbol"]] = r;
    for (auto& r : readTable(dataFile("x_units-sources.csv"))) sources_[std::stoi(r["unit_id"])] = r;
  }
  bool empty() const { return factors_.empty() || sources_.empty(); }

  // The zero of a unit with an offset in the base unit (0 for the others): the
  // scale below which a value passed through that offset cannot be exact.
  double offsetOf(int unitId) const {
    const auto s = sources_.find(unitId);
    double y = 0.0;
    if (s == sources_.end() || (s->second.at("kind") != "plain" && s->second.at("kind") != "gauge")) return 0.0;
    return toBase(unitId, 0.0, y) ? y : 0.0;
  }
  std::size_t sourceCount() const { return sources_.size(); }

  ::testing::AssertionResult toBase(int unitId, double x, double& y) const {
    const auto s = sources_.find(unitId);
    if (s == sources_.end()) return ::testing::AssertionFailure() << "unit " << unitId << " has no source";
    const std::string& kind = s->second.at("kind");
    const std::string& symbol = s->second.at("symbol");
    if (kind == "defined") {  // API gravity, which the data holds no formula for
      y = 141.5 / (x + 131.5);
      return ::testing::AssertionSuccess();
    }
    double f = 0.0;
    if (!formula(symbol, kind == "per" ? 1.0 : x, f))
      return ::testing::AssertionFailure() << "no factor for " << symbol;
    if (kind == "plain") y = f;
    else if (kind == "per") y = x / f;
    else if (kind == "reciprocal") y = 1.0 / f;
    else if (kind == "gauge") {
      double zero = 0.0;
      if (!formula(s->second.at("zero"), 1.0, zero)) return ::testing::AssertionFailure() << "no zero";
      y = f + zero;
    } else {
      return ::testing::AssertionFailure() << "unknown kind " << kind;
    }
    return ::testing::AssertionSuccess();
  }

 private:
  bool formula(const std::string& symbol, double x, double& y) const {
    const auto it = factors_.find(symbol);
    if (it == factors_.end()) return false;
    const auto& r = it->second;
    if (r.at("baseUnit") == "IS-BASE") {
      y = x;
      return true;
    }
    const double a = std::stod(r.at("A")), b = std::stod(r.at("B")), c = std::stod(r.at("C")),
                 d = std::stod(r.at("D"));
    y = (a + b * x) / (c + d * x);
    return true;
  }
  std::map<std::string, std::map<std::string, std::string>> factors_;
  std::map<int, std::map<std::string, std::string>> sources_;
};

class Catalogue : public testing::ShippedRegistryTest {
 protected:
  static int series(const char* name) {
    const int iser = reg().findSeries(name);
    EXPECT_GE(iser, 0) << name;
    return iser;
  }
};

TEST_F(Catalogue, EveryUnitOfEverySeriesConvertsAsTheDataSays) {
  const DataFormula data;
  ASSERT_FALSE(data.empty());
  EXPECT_EQ(data.sourceCount(), reg().units().size());
  int pairs = 0;
  for (int iser = 0; iser <= reg().lastSeries(); ++iser) {
    const int n = reg().unitCount(iser);
    for (int a = 1; a <= n; ++a) {
      for (int b = 1; b <= n; ++b) {
        SCOPED_TRACE(reg().seriesName(iser) + ": " + reg().unitName(iser, a) + " -> " + reg().unitName(iser, b));
        for (double x : {1.7, 250.0}) {
          int err = 99;
          const double z = reg().convert(x, iser, a, b, err);
          ASSERT_EQ(err, 0);
          double expected = 0.0, got = 0.0;
          ASSERT_TRUE(data.toBase(reg().unitId(iser, a), x, expected));
          ASSERT_TRUE(data.toBase(reg().unitId(iser, b), z, got));
          const double offset = std::max(std::fabs(data.offsetOf(reg().unitId(iser, a))),
                                         std::fabs(data.offsetOf(reg().unitId(iser, b))));
          EXPECT_TRUE(testing::closeTo(got, expected, 1e-12, offset)) << x;
        }
        ++pairs;
      }
    }
  }
  EXPECT_GT(pairs, 1000);
}

// The series and units of the file before it was generated, in their order:
// sessions and settings saved since hold these positions.
TEST_F(Catalogue, EarlierSeriesKeepTheirUnitsInTheirPlaces) {
  const std::vector<std::pair<const char*, std::vector<const char*>>> earlier = {
      {"dimensionless", {"-", ""}},
      {"depth", {"m", "ft"}},
      {"length", {"m", "ft", "in", "cm", "mm", "km", "mi"}},
      {"pressure", {"psia", "psig", "kpa", "mpa", "bar", "atm", "kg/cm2", "pa"}},
      {"temperature", {"degf", "degc", "degr", "degk"}},
      {"density", {"g/cc", "kg/m3", "lb/ft3", "lb/gal"}},
      {"viscosity", {"cp", "mpa.s", "pa.s"}},
      {"gas oil ratio", {"scf/stb", "mscf/stb", "m3/m3"}},
      {"volume factor", {"bbl/stb", "rm3/sm3", "m3/m3"}},
      {"compressibility", {"1/psi", "1/kpa", "1/bar", "1/mpa", "1/pa"}},
      {"oil gravity", {"api", "sg"}},
      {"gas gravity", {"(air=1)"}},
      {"fraction", {"fr", "v/v", "vol/vol", "%", "pu", "p.u."}},
      {"gas expansion", {"scf/cf", "scf/rb", "sm3/m3", "m3/m3"}},
      {"time", {"s", "ms", "min", "hr", "day", "yr"}},
      {"velocity", {"m/s", "ft/s", "km/s"}},
      {"slowness", {"us/ft", "us/m", "s/m", "m/s"}},
      {"area", {"m2", "ft2", "acre", "ha", "km2"}},
      {"volume", {"bbl", "ft3", "mcf", "m3", "l", "gal"}},
      {"angle", {"deg", "rad"}},
      {"permeability", {"md", "darcy", "um2", "m2"}},
  };
  for (std::size_t iser = 0; iser < earlier.size(); ++iser) {
    const auto& [name, units] = earlier[iser];
    ASSERT_EQ(reg().seriesName(static_cast<int>(iser)), name);
    ASSERT_GE(reg().unitCount(static_cast<int>(iser)), static_cast<int>(units.size())) << name;
    for (std::size_t k = 0; k < units.size(); ++k)
      EXPECT_EQ(reg().unitName(static_cast<int>(iser), static_cast<int>(k + 1)), units[k]) << name << " " << k + 1;
  }
  // Hidden then and hidden now.
  EXPECT_FALSE(reg().isListed(series("fraction"), 6));
  EXPECT_FALSE(reg().isListed(series("dimensionless"), 2));
}

TEST_F(Catalogue, TheQuantitiesOfTheFieldHaveSeriesAndDefaults) {
  for (const char* name :
       {"liquid rate", "gas rate", "pressure gradient", "temperature gradient", "kinematic viscosity", "resistivity",
        "conductivity", "gamma ray", "concentration", "mass", "force", "energy", "power", "penetration rate"}) {
    const int iser = series(name);
    for (int system = 1; system <= 3; ++system) EXPECT_GE(reg().defaultUnit(iser, system), 1) << name << system;
  }
  const int gradient = series("pressure gradient");
  EXPECT_EQ(reg().unitName(gradient, reg().defaultUnit(gradient, 1)), "psi/ft");
  EXPECT_EQ(reg().unitName(gradient, reg().defaultUnit(gradient, 2)), "kPa/m");
  const int gas = series("gas rate");
  EXPECT_EQ(reg().unitName(gas, reg().defaultUnit(gas, 1)), "Mscf/d");
  // Hidden units are accepted but kept out of pick lists.
  const int volume = series("volume");
  EXPECT_FALSE(reg().isListed(volume, reg().findUnit(volume, "stb")));
  EXPECT_LT(reg().listedUnitCount(volume), reg().unitCount(volume));
}

TEST_F(Catalogue, TypedNamesFindTheUnitsPeopleMean) {
  struct Typed {
    const char* series;
    const char* typed;
    const char* unit;
    TypedUnit::By by;
    bool exactCase;
  };
  using By = TypedUnit::By;
  const Typed cases[] = {
      {"pressure", "psi", "psi", By::Name, true},       {"density", "g/cm3", "g/cc", By::OtherName, true},
      {"volume", "stb", "stb", By::Name, true},         {"volume", "scf", "scf", By::Name, true},
      {"volume", "cc", "cm3", By::OtherName, true},     {"temperature", "K", "degk", By::OtherName, true},
      {"time", "h", "hr", By::OtherName, true},         {"time", "d", "day", By::OtherName, true},
      {"pressure", "mPa", "mPa", By::Name, true},       {"pressure", "mpa", "mpa", By::Name, true},
      {"pressure", "MPa", "mpa", By::Name, false},      {"pressure", "PSIA", "psia", By::Name, false},
      {"gas rate", "mmscf/d", "MMscf/d", By::Name, false},
      {"liquid rate", "STB/D", "bbl/d", By::OtherName, false},
      {"depth", "  ft[US] ", "ftUS", By::OtherName, true},
  };
  for (const Typed& c : cases) {
    SCOPED_TRACE(std::string(c.series) + ": " + c.typed);
    const int iser = series(c.series);
    const TypedUnit found = reg().findTypedUnit(iser, c.typed);
    ASSERT_GE(found.iun, 1);
    EXPECT_EQ(reg().unitName(iser, found.iun), c.unit);
    EXPECT_EQ(found.by, c.by);
    EXPECT_EQ(found.exactCase, c.exactCase);
  }
  EXPECT_LT(reg().findTypedUnit(series("depth"), "furlong").iun, 1);
  EXPECT_LT(reg().findTypedUnit(-1, "ft").iun, 1);
  // The names-only lookup ignores other names, and case decides nothing there:
  // "mPa" is the first unit of that spelling, megapascal.
  const int pressure = series("pressure");
  EXPECT_LT(reg().findUnit(series("density"), "g/cm3"), 1);
  EXPECT_EQ(reg().unitName(pressure, reg().findUnit(pressure, "mPa")), "mpa");
  // Series guessed from typed names: both units, or one.
  EXPECT_EQ(reg().guessSeriesTyped("bbl/d", "m3/d"), series("liquid rate"));
  EXPECT_EQ(reg().guessSeriesTyped("mmscf/d", "m3/d"), series("gas rate"));
  EXPECT_EQ(reg().guessSeriesTyped("gAPI"), series("gamma ray"));
  EXPECT_EQ(reg().guessSeriesTyped("no such unit"), -1);
}

// The size of the standard-conditions difference the command line and
// docs/units.md quote (0.19 %, factor 0.998079), from the registry's own units.
TEST_F(Catalogue, StandardConditionsOfGasDifferByTheQuotedFraction) {
  const double t60F = testing::convertNamed(reg(), "temperature", 60.0, "degf", "degk");
  const double t15C = testing::convertNamed(reg(), "temperature", 15.0, "degc", "degk");
  const double p = testing::convertNamed(reg(), "pressure", 14.696, "psia", "kpa");
  const double sameGas = (t15C / t60F) * (p / 101.325);  // volume at 15 degC, 101.325 kPa of 1 scf's gas
  EXPECT_NEAR(sameGas, 0.998079, 5e-7);
  EXPECT_NEAR(100.0 * (1.0 - sameGas), 0.19, 0.005);
  EXPECT_NEAR(testing::convertNamed(reg(), "volume", sameGas, "scf", "m3"), 0.0282625, 5e-8);
}

TEST_F(Catalogue, ExportedNameLookupStaysNamesOnlyIgnoringCase) {
  int iser = -1, iun = 99;
  X_GETISER("density             ", &iser);
  X_GETIUN(&iser, "g/cm3           ", &iun);
  EXPECT_LT(iun, 1);
  X_GETIUN(&iser, "G/CC            ", &iun);
  EXPECT_EQ(iun, 1);
  X_GUESSISER("kPa/m           ", &iser);
  EXPECT_EQ(iser, unitsRegistry().findSeries("pressure gradient"));
}

// The generator, run on the committed data, writes exactly the committed files.
TEST(CatalogueGenerator, CommittedFilesAreWhatTheScriptWrites) {
  if (testing::runCommand("python3 -c 'import fractions, csv'").status != 0) GTEST_SKIP() << "no working python3";
  const std::string script = std::string(SUBSURF_SOURCE_DATA_DIR) + "/../scripts/make_units_def.py";
  const testing::CommandRun run = testing::runCommand("python3 " + script + " --check");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "");
}

}  // namespace
}  // namespace subsurf
