// `subsurf units`, run as a user runs it. Needs the subsurf program built in the
// same build tree; the tests are skipped when it is not there.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

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
  EXPECT_EQ(r.err, "subsurf: Unknown unit \"furlong\" in series \"depth\"; admissible units: m, ft\n");
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
            "  p.u.             (hidden)\n");
  r = run("units list");
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("  1  depth                2 units\n"), std::string::npos);
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
