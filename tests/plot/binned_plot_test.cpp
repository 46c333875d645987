// Binned statistics drawn: the box, whiskers, median line and mean of each
// filled bin at the table's values, nothing for an empty bin, the texts, and
// `subsurf plot bins` as a user runs it.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "plot/binned_plot.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

TEST(BinnedPlot, EachFilledBinDrawsItsPercentilesAndMean) {
  // Bin 1 (0..1) holds 1..11; bin 2 (1..2) nothing; bin 3 (2..4) holds 5 and 7.
  std::vector<float> by, values;
  for (int v = 1; v <= 11; ++v) by.push_back(0.5f), values.push_back(static_cast<float>(v));
  by.insert(by.end(), {3.0f, 3.5f});
  values.insert(values.end(), {5.0f, 7.0f});
  ss::BinStatistics table;
  const std::vector<double> edges = {0, 1, 2, 4};
  ASSERT_TRUE(ss::binStatistics(by, values, edges, table).isOk());
  ss::BinnedPlotRequest request;
  request.byColumn = "phi";
  request.valueColumn = "k";
  const ss::PlotRecord plot = ss::makeBinnedPlot(table, request);
  const ss::PlotSet& set = plot.sets[0];
  ASSERT_EQ(set.lines.count(), 8);  // box, two whiskers, median line: two filled bins
  ASSERT_EQ(set.symbols.count(), 2);
  // Bin 1: P10 2, P90 10, P5 1.5, P95 10.5, P50 6, mean 6; the box spans 60 % of the bin about its middle.
  const ss::LineElement& box = set.lines.at(1);
  EXPECT_EQ(box.CLOSED, 1);
  ASSERT_EQ(box.x.size(), 4u);
  for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(box.x[k], k < 2 ? 0.2 : 0.8, 1e-6) << k;
  EXPECT_EQ(box.y, (std::vector<float>{2, 10, 10, 2}));
  EXPECT_EQ(set.lines.at(2).y, (std::vector<float>{10, 10.5f}));
  EXPECT_EQ(set.lines.at(3).y, (std::vector<float>{2, 1.5f}));
  EXPECT_EQ(set.lines.at(4).y, (std::vector<float>{6, 6}));
  EXPECT_FLOAT_EQ(set.symbols.at(1).X, 0.5f);
  EXPECT_FLOAT_EQ(set.symbols.at(1).Y, 6.0f);
  // Bin 3 sits at 2..4 (the empty bin 2 leaves a gap); its mean is 6, its median 6.
  for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(set.lines.at(5).x[k], k < 2 ? 2.4 : 3.6, 1e-6) << k;
  EXPECT_FLOAT_EQ(set.symbols.at(2).X, 3.0f);
  EXPECT_FLOAT_EQ(set.symbols.at(2).Y, 6.0f);
  EXPECT_EQ(set.scales[0].MIN, 0.0f);
  EXPECT_EQ(set.scales[0].MAX, 4.0f);
  EXPECT_LE(set.scales[1].MIN, 1.5f);
  EXPECT_GT(set.scales[1].MAX, 10.5f);
  ASSERT_EQ(set.texts.count(), 1);
  EXPECT_EQ(ss::fixedText(set.texts.at(1).TEXT), "No. of points: 13  Bins: 3");
  EXPECT_EQ(plot.annotation.texts[3], std::vector<std::string>{ss::kBinnedPlotKey});
  EXPECT_EQ(set.labels[0], "phi");
  EXPECT_EQ(set.labels[1], "k");
}

TEST(BinnedPlotCommand, DrawsAndNamesBadInput) {
  const std::string program = ss::testing::builtProgram("subsurf");
  if (!std::filesystem::exists(program)) GTEST_SKIP() << "the subsurf program is not built";
  ss::testing::TempDir tmp;
  const std::string csv = tmp.write("b.csv", "phi,k\n0.1,1\n0.15,3\n0.2,10\n0.25,30\n0.3,\n0.5,100\n");
  auto r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot bins " + csv + " --by phi --value k --edges 0.1,0.2,0.3 --y-scale log --json --out " +
      tmp.file("b.png")));
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::json::parse(r.out);
  EXPECT_EQ(j["bins"], 2);
  EXPECT_EQ(j["binned"], 4);
  EXPECT_EQ(j["outside"], 1);
  EXPECT_EQ(j["left_out"], 1);
  EXPECT_EQ(j["y"]["type"], "Log");
  EXPECT_TRUE(std::filesystem::file_size(tmp.file("b.png")) > 1000);
  r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot bins " + csv + " --by phi --value k --bins 2 --out " + tmp.file("c.png")));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.err.find("1 of 6 rows left out (1 with an empty cell, 0 null, 0 not finite), 0 outside the bins"),
            std::string::npos)
      << r.err;
  const auto fails = [&](const std::string& args, const std::string& message) {
    const auto run = ss::testing::withoutSuppressionReport(ss::testing::runCommand(program + " plot bins " + args));
    EXPECT_EQ(run.status, 2) << args;
    EXPECT_NE(run.err.find(message), std::string::npos) << run.err;
  };
  fails(csv + " --by phi --value k --edges 0.1,x --json", "--edges \"0.1,x\": \"x\" is not a number");
  fails(csv + " --by phi --value k --edges 0.3,0.1 --json", "ascend");
  fails(csv + " --by phi --value perm --json", "no column \"perm\"");
  fails(csv + " --by phi --value k --y-scale prob --json", "--y-scale \"prob\" is not linear or log");
}
