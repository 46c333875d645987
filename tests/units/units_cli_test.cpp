// `subsurf units`, run as a user runs it. Needs the subsurf program built in the
// same build tree; the tests are skipped when it is not there.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/run_program.h"
#include "support/temp_dir.h"

namespace {

using subsurf::testing::CommandRun;

std::string program() { return subsurf::testing::builtProgram("subsurf"); }

CommandRun run(const std::string& args) { return subsurf::testing::runCommand(program() + " " + args); }

class UnitsCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(program())) GTEST_SKIP() << program() << " is not built";
  }
};

TEST_F(UnitsCommand, ConvertPrintsTheValueAlone) {
  CommandRun r = run("units convert 100 ft m");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "30.48\n");
  EXPECT_EQ(run("units convert -40 DEGC degf").out, "-40\n");
  EXPECT_EQ(run("units convert 1 bar psia --series pressure").out, "14.5038\n");  // 100000 / 6894.757 = 14.50377
  // "m" is first a depth unit, but only the length series has miles.
  EXPECT_EQ(run("units convert 1 mi m").out, "1609.34\n");
}

// The conversions of the field, worked by hand from the definitions:
//   1000 bbl/d: 1000 * 0.158987294928 m3                              = 158.987 m3/d
//   100 psi/ft: 100 * 6894.757293 Pa / 0.3048 m = 2262059 Pa/m         = 2262.06 kPa/m
//   1 MMscf/d: 1e6 * 0.3048^3 m3                                       = 28316.8 m3/d
//   50 degC/km: 50 * 1.8 degF / (1000 / 0.3048 / 100) per 100 ft       = 2.7432 degF/100ft
//   1 cSt: 1e-6 m2/s
//   2.5 g/cm3: 2500 kg/m3 / (0.45359237 / 0.3048^3) kg/m3 per lbm/ft3 = 156.07 lbm/ft3
TEST_F(UnitsCommand, ConversionsOfTheField) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"1000 bbl/d m3/d", "158.987\n"},     {"100 psi/ft kpa/m", "2262.06\n"}, {"1 mmscf/d m3/d", "28316.8\n"},
      {"50 degc/km degf/100ft", "2.7432\n"}, {"1 cst m2/s", "1e-06\n"},        {"2.5 g/cm3 lbm/ft3", "156.07\n"},
      {"1 ft[US] ft", "1\n"},                {"1 gal/min m3/d", "5.45099\n"},   {"1 mi m", "1609.34\n"},
  };
  for (const auto& [args, out] : cases) {
    const CommandRun r = run(std::string("units convert ") + args);
    EXPECT_EQ(r.status, 0) << args << ": " << r.err;
    EXPECT_EQ(r.out, out) << args;
  }
}

// A unit typed other than by its exact name is named on standard error; of two
// units that differ only by letter case the exact one is taken.
TEST_F(UnitsCommand, SaysWhichUnitItTook) {
  struct Case {
    const char* args;
    const char* out;
    const char* err;
  };
  for (const Case& c : {Case{"1 MPa psia", "145.038\n", "subsurf: \"MPa\" taken as mpa (megapascal) in series \"pressure\"\n"},
                        Case{"1 mPa pa", "0.001\n", ""}, Case{"1 mpa pa", "1e+06\n", ""},
                        Case{"300 K degc", "26.85\n", "subsurf: \"K\" taken as degk (kelvin) in series \"temperature\"\n"},
                        Case{"1 m ft --series length", "3.28084\n", ""}}) {
    const CommandRun r = run(std::string("units convert ") + c.args);
    EXPECT_EQ(r.out, c.out) << c.args;
    EXPECT_EQ(r.err, c.err) << c.args;
  }
  // A series given by name settles which units are meant; a unit outside it is refused.
  const CommandRun r = run("units convert 1 m3/d bbl/d --series \"gas rate\"");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err.rfind("subsurf: Unknown unit \"bbl/d\" in series \"gas rate\"; admissible units: Mscf/d,", 0), 0u)
      << r.err;
}

// Gas in standard cubic feet against metric volumes: plain volumes, and said so.
TEST_F(UnitsCommand, GasConversionsStateTheirConvention) {
  const std::string note =
      "subsurf: gas volumes converted as plain volumes (1 scf = 0.0283168 m3); between 60 degF and 14.696 psia and "
      "15 degC and 101.325 kPa the same gas differs by 0.19% (docs/units.md)\n";
  CommandRun r = run("units convert 1000 scf/stb m3/m3");
  EXPECT_EQ(r.out, "178.108\n");  // 1000 * 0.028316846592 / 0.158987294928
  EXPECT_EQ(r.err, note);
  r = run("units convert 1 e3m3/d Mscf/d");
  EXPECT_EQ(r.out, "35.3147\n");
  EXPECT_EQ(r.err, note);
  r = run("units convert 1000 scf/stb mscf/stb");  // within one system: nothing to say
  EXPECT_EQ(r.out, "1\n");
  EXPECT_EQ(r.err, "");
  r = run("units convert 1 bbl m3");
  EXPECT_EQ(r.err, "");
}

TEST_F(UnitsCommand, SearchListsMatchingUnitsWithTheirSeries) {
  CommandRun r = run("units search gamma");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "gAPI             API              API gamma ray unit (gamma ray log)           [gamma ray]\n");
  r = run("units search GAUGE");
  EXPECT_EQ(r.out, "psig             psi gauge        psi above one standard atmosphere            [pressure]\n");
  r = run("units search ft3");  // a name, other names and descriptions alike; a unit in two series once
  EXPECT_NE(r.out.find("\nft3              cf               cubic foot                                   [volume]\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("lb/ft3           lbm/ft3"), std::string::npos);
  r = run("units search metre");
  EXPECT_NE(r.out.find("m                metre            metre                                        [depth, length]\n"),
            std::string::npos)
      << r.out;
  r = run("units search furlong");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "subsurf: No unit matches \"furlong\"\n");
}

TEST_F(UnitsCommand, NegativeValuesAreValuesNotOptions) {
  for (const auto& [args, out] : {std::pair{"-5 ft m", "-1.524\n"}, std::pair{"-.5 ft m", "-0.1524\n"},
                                  std::pair{"--series depth -40 ft m", "-12.192\n"},
                                  std::pair{"-40 degc degf --series temperature", "-40\n"}}) {
    const CommandRun r = run(std::string("units convert ") + args);
    EXPECT_EQ(r.status, 0) << args << ": " << r.err;
    EXPECT_EQ(r.out, out) << args;
  }
}

TEST_F(UnitsCommand, InfinitiesAndNanAreNotNumbers) {
  for (const char* value : {"nan", "inf", "-inf", "NaN", "-infinity"}) {
    const CommandRun r = run(std::string("units convert ") + value + " ft m");
    EXPECT_EQ(r.status, 2) << value;
    EXPECT_EQ(r.out, "") << value;
    EXPECT_EQ(r.err, std::string("subsurf: \"") + value + "\" is not a number\n");
  }
  const CommandRun extra = run("units convert -5 ft m -3");
  EXPECT_EQ(extra.status, 2);
  EXPECT_EQ(extra.err, "subsurf: Unexpected arguments: -3\n");
  EXPECT_EQ(run("units convert 1 ft").err,
            "subsurf: units convert needs a value, its unit and the unit wanted: units convert VALUE FROM TO\n");
}

TEST_F(UnitsCommand, UnknownUnitNamesTheAdmissibleOnes) {
  const CommandRun r = run("units convert 100 ft furlong");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "subsurf: Unknown unit \"furlong\" in series \"depth\"; admissible units: m, ft, ftUS\n");
  EXPECT_EQ(run("units convert abc ft m").err, "subsurf: \"abc\" is not a number\n");
}

TEST_F(UnitsCommand, ListMarksTheDefaultsAndHiddenUnits) {
  CommandRun r = run("units list fraction");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out,
            "fraction\n"
            "  fr               default: oilfield, metric, SI\n"
            "  v/v\n"
            "  vol/vol\n"
            "  %\n"
            "  pu\n"
            "  p.u.             (hidden)\n"
            "  ppm\n"
            "  ppk\n");
  r = run("units list");
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("  1  depth                3 units\n"), std::string::npos);
}

TEST_F(UnitsCommand, SqlWritesTheScriptWhereAsked) {
  subsurf::testing::TempDir dir;
  const std::string file = dir.file("units.sql");
  const CommandRun r = run("units sql " + file);
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "SQL script written to " + file + "\n");
  EXPECT_EQ(subsurf::testing::TempDir::read(file).rfind("USE UNITS;\nCREATE TABLE UNIT_DIMS (\n", 0), 0u);
}

}  // namespace
