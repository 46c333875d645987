// `subsurf stats bins` as a user runs it: the table as CSV, aligned text and
// JSON, counts of rows left out, and bad requests named.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "support/run_program.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

class StatsBinsCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(program())) GTEST_SKIP() << "the subsurf program is not built";
    csv = tmp.write("cores.csv", "depth[m],k[mD]\n1,4\n3,1\n5,3\n9,2\n12,10\n14,\n25,7\n");
  }
  static std::string program() { return ss::testing::builtProgram("subsurf"); }
  ss::testing::CommandRun run(const std::string& args) {
    return ss::testing::withoutSuppressionReport(ss::testing::runCommand(program() + " stats bins " + csv + " " + args));
  }
  ss::testing::TempDir tmp;
  std::string csv;
};

TEST_F(StatsBinsCommand, CsvTableOfHandWorkedBins) {
  const auto r = run("--by depth --value k --edges 0,10,20 --csv");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out,
            "Bin,MinV,MaxV,MidV,NP,P100,P95,P90,P50,P10,P5,P0,Mean,ADev,SDev,Median Dev,Pear Mean,Swan Mean,"
            "Geo Mean,Arith Mean,Harm Mean\n"
            "1,0,10,5,4,4,3.85,3.7,2.5,1.3,1.15,1,2.5,1,1.29099,1,2.5,2.5,2.21336,2.5,1.92\n"
            "2,10,20,15,1,10,10,10,10,10,10,10,10,0,0,0,10,10,10,10,10\n");
  EXPECT_NE(r.err.find("cores.csv: 1 of 7 rows left out (1 with an empty cell, 0 null, 0 not finite), "
                       "1 outside the bins"),
            std::string::npos)
      << r.err;
}

TEST_F(StatsBinsCommand, JsonRowsKeyedByHeadingInOrder) {
  const auto r = run("--by depth --value k --bins 2 --json");
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::ordered_json::parse(r.out);
  EXPECT_EQ(j["binned"], 6);
  EXPECT_EQ(j["left_out"]["empty"], 1);
  ASSERT_EQ(j["bins"].size(), 2u);
  const auto& first = j["bins"][0];
  EXPECT_EQ(first.begin().key(), "Bin");
  EXPECT_EQ((--first.end()).key(), "Harm Mean");
  EXPECT_EQ(first["MinV"], 1.0);
  EXPECT_EQ(first["MaxV"], 13.0);
  EXPECT_EQ(first["NP"], 5);
  EXPECT_EQ(j["bins"][1]["NP"], 1);
  EXPECT_EQ(j["bins"][1]["P50"], 7.0);
}

TEST_F(StatsBinsCommand, AlignedTableShowsEmptyBinsAsDashes) {
  const auto r = run("--by depth --value k --edges 0,10,20,21");
  ASSERT_EQ(r.status, 0) << r.err;
  const std::string last = r.out.substr(r.out.rfind('\n', r.out.size() - 2) + 1);
  EXPECT_EQ(last.substr(0, 3), "  3");
  EXPECT_NE(last.find("  0     -"), std::string::npos) << last;
}

TEST_F(StatsBinsCommand, BadRequestsAreNamed) {
  auto r = run("--by depth --value k --edges 0,x");
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("--edges \"0,x\": \"x\" is not a number"), std::string::npos) << r.err;
  r = run("--by depth --value k --edges 0,10,5");
  EXPECT_NE(r.err.find("Bin edges must ascend: edge 3 (5) is not above edge 2 (10)"), std::string::npos) << r.err;
  r = run("--by depth --value phi");
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("phi"), std::string::npos) << r.err;
  r = run("--by depth --value k --csv --json");
  EXPECT_NE(r.err.find("give --csv or --json, not both"), std::string::npos);
}
