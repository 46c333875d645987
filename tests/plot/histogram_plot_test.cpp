// Histograms: class counts and edges, the default class count, left-out
// values, the drawn bars and "No. of points:", and `subsurf plot histogram`.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/histogram_plot.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

TEST(Histogram, CountsWithEdgesAndTheLargestInTheLastClass) {
  ss::Histogram h;
  const std::vector<float> v = {0, 1, 2, 2.5f, 3, 4, ss::kRealNull, NAN};
  ASSERT_TRUE(ss::countHistogram(v, 4, h).isOk());
  EXPECT_EQ(h.edges, (std::vector<double>{0, 1, 2, 3, 4}));
  EXPECT_EQ(h.counts, (std::vector<int>{1, 1, 2, 2}));  // 1 on an edge goes up; 4 stays in the last
  EXPECT_EQ(h.points, 6);
  EXPECT_EQ(h.leftOut, 2);
}

TEST(Histogram, DefaultClassCountAndRefusals) {
  EXPECT_EQ(ss::defaultClassCount(1), 1);
  EXPECT_EQ(ss::defaultClassCount(8), 4);
  EXPECT_EQ(ss::defaultClassCount(9), 5);
  EXPECT_EQ(ss::defaultClassCount(1000000), 21);
  ss::Histogram h;
  ASSERT_TRUE(ss::countHistogram(std::vector<float>(9, 5.0f), 0, h).isOk());
  EXPECT_EQ(h.counts.size(), 5u);
  EXPECT_EQ(h.counts[0], 9);  // one value: the classes span value..value+1
  EXPECT_EQ(ss::countHistogram(std::vector<float>{NAN}, 0, h).message(), "No valid data points!");
  EXPECT_EQ(ss::countHistogram(std::vector<float>{1}, -1, h).message(), "-1 classes; a histogram has 1 to 100000");
}

TEST(Histogram, PlotHasOneBarPerFilledClassAndThePointCount) {
  ss::Histogram h;
  ASSERT_TRUE(ss::countHistogram(std::vector<float>{0, 0.5f, 3, 4}, 4, h).isOk());
  const ss::PlotRecord plot = ss::makeHistogramPlot(h, "phi", "frac", "", "s");
  const ss::PlotSet& set = plot.sets[0];
  ASSERT_EQ(set.lines.count(), 2);  // classes 2 and 3 are empty
  EXPECT_EQ(set.lines.at(1).y, (std::vector<float>{0, 2, 2, 0}));
  EXPECT_EQ(set.labels[1], "Frequency");
  EXPECT_EQ(ss::fixedText(set.texts.at(1).TEXT), "No. of points: 4  Classes: 4");
  EXPECT_EQ(set.scales[0].MIN, 0.0f);
  EXPECT_EQ(set.scales[0].MAX, 4.0f);
}

TEST(HistogramCommand, CountsInJsonAndBadColumnsNamed) {
  const std::string program = ss::testing::builtProgram("subsurf");
  if (!std::filesystem::exists(program)) GTEST_SKIP() << "the subsurf program is not built";
  ss::testing::TempDir tmp;
  const std::string csv = tmp.write("p.csv", "phi\n0\n1\n2\n3\n4\n\n");
  auto r = ss::testing::withoutSuppressionReport(
      ss::testing::runCommand(program + " plot histogram " + csv + " --column phi --bins 2 --json"));
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::json::parse(r.out);
  EXPECT_EQ(j["counts"], (std::vector<int>{2, 3}));
  EXPECT_EQ(j["points"], 5);
  r = ss::testing::withoutSuppressionReport(
      ss::testing::runCommand(program + " plot histogram " + csv + " --column k --json"));
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("k"), std::string::npos);
}
