// `subsurf date`, run as a user runs it.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "support/run_program.h"

namespace {

using subsurf::testing::CommandRun;

std::string program() { return subsurf::testing::builtProgram("subsurf"); }
CommandRun run(const std::string& args) {
  return subsurf::testing::runCommand("env -u SUBSURF_DATEFMT " + program() + " " + args);
}

class DateCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(program())) GTEST_SKIP() << program() << " is not built";
  }
};

TEST_F(DateCommand, TextToSecondsAndBack) {
  CommandRun r = run("date \"01 Jan 1970\"");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "3894912000\n");
  r = run("date 4846838400 --mask \"dd mon yyyy\"");
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "01 Mar 2000\n");
  EXPECT_EQ(run("date 4846838400").out, "01.Mar.00 16:00\n");
  EXPECT_EQ(run("date 0.25 --mask \"dd mon yyyy hr:min:ss.sss\"").out, "30 Jul 1846 00:00:00.250\n");
  EXPECT_EQ(run("date \"30 Jul 1846 00:00:00.25\" --mask \"dd mon yyyy hr:min:ss.sss\"").out, "0.25\n");
}

TEST_F(DateCommand, TheDatefmtSettingIsTheDefaultMask) {
  const CommandRun r = subsurf::testing::runCommand("SUBSURF_DATEFMT='yyyy-mm-dd' " + program() + " date 3894912000");
  EXPECT_EQ(r.out, "1970-01-01\n");
}

TEST_F(DateCommand, AddsAndRounds) {
  EXPECT_EQ(run("date \"31 Jan 2000\" --add 1 --unit months --to text --mask \"dd mon yyyy\"").out,
            "29 Feb 2000\n");
  EXPECT_EQ(run("date \"14 Aug 2017\" --round-down 10 --unit years --to text --mask \"dd mon yyyy\"").out,
            "01 Jan 2011\n");
  EXPECT_EQ(run("date \"14 Aug 2017 10:31\" --round-up 15 --unit min --to text").out, "14.Aug.17 10:45\n");
  EXPECT_EQ(run("date 2000 --parse --mask yyyy").out, run("date \"01 Jan 2000\"").out);
}

TEST_F(DateCommand, JsonHoldsSecondsTextMaskAndParts) {
  const CommandRun r = run("date \"29.Feb.00 12:30\" --json");
  ASSERT_EQ(r.status, 0);
  const auto j = nlohmann::json::parse(r.out);
  EXPECT_EQ(j["seconds"].get<double>(), 56096 * 86400.0 + 45000);
  EXPECT_EQ(j["text"], "29.Feb.00 12:30");
  EXPECT_EQ(j["mask"], "dd.mon.yy hr:min");
  EXPECT_EQ(j["date"]["year"], 2000);
  EXPECT_EQ(j["date"]["month"], 2);
  EXPECT_EQ(j["date"]["day"], 29);
  EXPECT_EQ(j["date"]["minute"], 30);
}

TEST_F(DateCommand, BadInputIsNamedWithExitStatusTwo) {
  CommandRun r = run("date \"31 Feb 2001\" --mask \"dd mon yyyy\"");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.out, "");
  EXPECT_EQ(r.err, "subsurf: Cannot read \"31 Feb 2001\" as a date under the mask \"dd mon yyyy\"\n");
  r = run("date \"01 Jan 2001\" --add 1 --unit fortnights");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err,
            "subsurf: Unknown unit \"fortnights\"; the units are years, months, weeks, days, hours, minutes, "
            "seconds\n");
  r = run("date \"01 Jan 2001\" --round-down 0");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "subsurf: The rounding step must be 1 or more, not 0\n");
  r = run("date -9.9e20");
  EXPECT_EQ(r.status, 2);
  EXPECT_EQ(r.err, "subsurf: -9.9e20 is beyond the range of dates\n");
}

}  // namespace
