// Stereonets as plots: poles and scatter placed by the projection, great
// circles, the rose diagram, labels and counts, refused input, and the
// `subsurf plot stereonet` command.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/stereonet_plot.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

std::vector<std::string> texts(const ss::PlotSet& set) {
  std::vector<std::string> out;
  for (int k = 1; k <= set.texts.count(); ++k) out.push_back(ss::fixedText(set.texts.at(k).TEXT));
  return out;
}

}  // namespace

TEST(StereonetPlot, PolesPlacedByTheProjectionWithCountsAndMean) {
  const std::vector<float> dips = {30, 30, ss::kRealNull, 95}, az = {90, 90, 10, 10};
  ss::StereonetRequest r;
  r.poles = true;
  ss::PlotRecord plot;
  ss::StereonetSummary summary;
  ASSERT_TRUE(ss::makeStereonetPlot(dips, az, r, plot, summary).isOk());
  EXPECT_EQ(summary.observations, 2);
  EXPECT_EQ(summary.leftOut, 2);
  const ss::PlotSet& set = plot.sets[0];
  ASSERT_EQ(set.pointCount(), 2);
  // Pole of a plane dipping 30 to the east: plunge 60 to the west.
  EXPECT_NEAR(set.data[0][0], -90 * std::sqrt(1 - std::sin(60 * M_PI / 180)), 1e-3);
  EXPECT_NEAR(set.data[1][0], 0, 1e-4);
  const auto t = texts(set);
  EXPECT_EQ(t[0], "N");
  EXPECT_EQ(t[1], "Poles: 2");
  EXPECT_EQ(t[2], "Equal area");
  EXPECT_EQ(t[3], "Mean 60/270");
  EXPECT_EQ(set.scales[0].MIN, -100.0f);
  EXPECT_EQ(set.ax[0], 0);
}

TEST(StereonetPlot, ScatterPlanesAndRose) {
  const std::vector<float> dips = {45, 60, 10}, az = {0, 10, 200};
  ss::StereonetRequest r;
  r.poles = false;
  r.planes = true;
  r.projection = ss::kEqualAngle;
  ss::PlotRecord plot;
  ss::StereonetSummary summary;
  ASSERT_TRUE(ss::makeStereonetPlot(dips, az, r, plot, summary).isOk());
  EXPECT_EQ(texts(plot.sets[0])[1], "Scatter: 3");
  EXPECT_EQ(texts(plot.sets[0])[2], "Equal angle");
  EXPECT_EQ(plot.sets[0].lines.count(), 3 + 3);  // rim, centre cross, then one circle per plane
  r.rose = true;
  r.roseWidth = 30;
  ASSERT_TRUE(ss::makeStereonetPlot(dips, az, r, plot, summary).isOk());
  EXPECT_EQ(summary.roseMaximum, 2);
  EXPECT_EQ(plot.sets[0].pointCount(), 0);
  EXPECT_EQ(plot.sets[0].lines.count(), 3 + 2);  // two petals
  EXPECT_EQ(texts(plot.sets[0])[1], "Frequency: 0 to 2");
  EXPECT_EQ(texts(plot.sets[0])[2], "Observations: 3");
}

TEST(StereonetPlot, RefusedInput) {
  ss::PlotRecord plot;
  ss::StereonetSummary summary;
  ss::StereonetRequest r;
  EXPECT_EQ(ss::makeStereonetPlot(std::vector<float>{100}, std::vector<float>{0}, r, plot, summary).message(),
            "No valid data points!");
  EXPECT_EQ(ss::makeStereonetPlot(std::vector<float>{1, 2}, std::vector<float>{0}, r, plot, summary).message(),
            "2 dips but 1 azimuths");
  r.projection = 4;
  EXPECT_EQ(ss::makeStereonetPlot(std::vector<float>{1}, std::vector<float>{0}, r, plot, summary).message(),
            "Projection 4 is not equal-angle (2) or equal-area (3)");
}

TEST(StereonetCommand, DrawsAndReportsTheMean) {
  const std::string program = ss::testing::builtProgram("subsurf");
  if (!std::filesystem::exists(program)) GTEST_SKIP() << "the subsurf program is not built";
  ss::testing::TempDir tmp;
  const std::string csv = tmp.write("f.csv", "dip,azimuth\n30,90\n30,90\n,5\n");
  auto r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot stereonet " + csv + " --dip dip --azimuth azimuth --poles --json --out " + tmp.file("n.png")));
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::json::parse(r.out);
  EXPECT_EQ(j["observations"], 2);
  EXPECT_EQ(j["left_out"], 1);
  EXPECT_NEAR(j["mean"]["plunge"].get<double>(), 60, 1e-9);
  EXPECT_TRUE(j["mean"]["kappa"].is_null());
  EXPECT_TRUE(std::filesystem::exists(tmp.file("n.png")));
  r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot stereonet " + csv + " --dip dip --azimuth azimuth --net wulff --json"));
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("--net \"wulff\" is not equal-area or equal-angle"), std::string::npos) << r.err;
}
