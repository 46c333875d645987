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
  EXPECT_EQ(t, (std::vector<std::string>{"N", "Poles: dip and azimuth", "Observations: 2", "Equal area 90-0-90",
                                         "Mean 60/270"}));
  EXPECT_EQ(set.scales[0].MIN, -100.0f);
  EXPECT_EQ(set.ax[0], 0);
}

TEST(StereonetPlot, ScatterPlanesAndRose) {
  const std::vector<float> dips = {45, 60, 10}, az = {0, 10, 200};
  ss::StereonetRequest r;
  r.poles = false;
  r.planes = true;
  r.projection = ss::kEqualAngle;
  r.setName = "faults";
  ss::PlotRecord plot;
  ss::StereonetSummary summary;
  ASSERT_TRUE(ss::makeStereonetPlot(dips, az, r, plot, summary).isOk());
  EXPECT_EQ(texts(plot.sets[0])[1], "Scatter: faults");
  EXPECT_EQ(texts(plot.sets[0])[2], "Observations: 3");
  EXPECT_EQ(texts(plot.sets[0])[3], "Equal angle 0-90-0");
  EXPECT_EQ(plot.sets[0].lines.count(), 3 + 3);  // rim, centre cross, then one circle per plane
  r.rose = true;
  r.roseWidth = 30;
  ASSERT_TRUE(ss::makeStereonetPlot(dips, az, r, plot, summary).isOk());
  EXPECT_EQ(summary.roseMaximum, 2);
  EXPECT_EQ(plot.sets[0].pointCount(), 0);
  EXPECT_EQ(plot.sets[0].lines.count(), 3 + 1 + 2);  // a ring at 1 (the 1-2-5 step of 2), two petals
  EXPECT_EQ(texts(plot.sets[0]), (std::vector<std::string>{"N", "Frequency: 0 to 2", "Observations: 3", "1"}));
  // Rings every 20 for a fullest class of 120 (step125: 120 / 100 is not above 2,
  // so 100 / 5), the rim being the fullest class itself.
  std::vector<float> many(120, 10.0f), manyAz(120, 45.0f);
  ASSERT_TRUE(ss::makeStereonetPlot(many, manyAz, r, plot, summary).isOk());
  const auto t = texts(plot.sets[0]);
  EXPECT_EQ(std::vector<std::string>(t.begin() + 3, t.end()), (std::vector<std::string>{"20", "40", "60", "80", "100"}));
  EXPECT_NEAR(plot.sets[0].lines.at(4).x[0], 0.0, 1e-6);
  EXPECT_NEAR(plot.sets[0].lines.at(4).y[0], 90.0 * 20 / 120, 1e-4);  // the first ring, through north
}

TEST(StereonetPlot, ClassesKeyedByColourAndSymbol) {
  const std::vector<float> dips = {10, 20, 30, 40, 50, ss::kRealNull}, az = {0, 90, 180, 270, 45, 0};
  const std::vector<std::string> sets = {"J1", "J2", "J1", "", "J2", "J3"}, kinds = {"open", "open", "shut", "open",
                                                                                      "open", "open"};
  ss::StereonetRequest r;
  r.poles = true;
  ss::PlotRecord plot;
  ss::StereonetSummary summary;
  ASSERT_TRUE(ss::makeStereonetPlot(ss::StereonetData{dips, az, sets, kinds}, r, plot, summary).isOk());
  // The net's set, then one set per pair in order of first appearance; the
  // left-out sixth row's class "J3" never appears.
  ASSERT_EQ(plot.sets.size(), 5u);
  EXPECT_EQ(plot.sets[0].pointCount(), 0);
  EXPECT_EQ(plot.sets[1].name, "J1 / open");
  EXPECT_EQ(plot.sets[1].pointCount(), 1);
  EXPECT_EQ(plot.sets[2].name, "J2 / open");
  EXPECT_EQ(plot.sets[2].pointCount(), 2);
  EXPECT_EQ(plot.sets[3].name, "J1 / shut");
  EXPECT_EQ(plot.sets[4].name, "(blank) / open");
  EXPECT_EQ(plot.sets[1].syrgb, plot.sets[3].syrgb);  // one colour per colour class
  EXPECT_NE(plot.sets[1].syrgb, plot.sets[2].syrgb);
  EXPECT_EQ(plot.sets[1].sym, plot.sets[2].sym);  // one marker per symbol class
  EXPECT_NE(plot.sets[1].sym, plot.sets[3].sym);
  for (const auto& set : plot.sets) EXPECT_EQ(set.scales[1].MAX, 100.0f);
  const auto t = texts(plot.sets[0]);
  const std::vector<std::string> key(t.begin() + 4, t.end() - 2);
  EXPECT_EQ(key, (std::vector<std::string>{"Colours:", "J1", "J2", "(blank)", "Symbols:", "open", "shut"}));
  EXPECT_EQ(plot.sets[0].symbols.count(), 5);  // a marker beside each class name
  EXPECT_EQ(t.back(), "k=5.07, a95=38");  // k = 4/(5 - R), R = 4.2118

  // More classes than rows: four shown, the rest counted.
  std::vector<float> many(7, 30.0f), manyAz(7, 0.0f);
  std::vector<std::string> names = {"a", "b", "c", "d", "e", "f", "g"};
  ASSERT_TRUE(ss::makeStereonetPlot(ss::StereonetData{many, manyAz, names, {}}, r, plot, summary).isOk());
  const auto t2 = texts(plot.sets[0]);
  EXPECT_EQ(std::vector<std::string>(t2.begin() + 4, t2.end() - 1),
            (std::vector<std::string>{"Colours:", "a", "b", "c", "d", "... 3 more"}));
  EXPECT_EQ(ss::makeStereonetPlot(ss::StereonetData{many, manyAz, {}, std::span(names).first(2)}, r, plot, summary)
                .message(),
            "7 dips but 2 symbol classes");
}

TEST(StereonetPlot, DensityContoursWithTheirLevels) {
  // Five horizontal planes: five vertical poles in the centre node. With
  // f = 2(1 + 5/9) = 28/9 the count there, 5, is 5 / (sqrt(5 (f/2 - 1)) / f)
  // = 28/3 = 9.33 standard deviations.
  const std::vector<float> dips(5, 0.0f), az = {0, 10, 20, 30, 40};
  ss::StereonetRequest r;
  r.poles = true;
  r.contours = true;
  r.densityGrid = 101;
  ss::PlotRecord plot;
  ss::StereonetSummary summary;
  ASSERT_TRUE(ss::makeStereonetPlot(dips, az, r, plot, summary).isOk());
  EXPECT_NEAR(summary.densityMaximum, 28.0 / 3.0, 1e-9);
  EXPECT_EQ(summary.contourLevels, (std::vector<double>{2, 4, 6, 8}));
  EXPECT_EQ(texts(plot.sets[0]).back(), "Kamb contours: 2, 4, 6, 8 sigma (maximum 9.3 sigma)");
  EXPECT_EQ(plot.sets[0].lines.count(), 3 + 4);  // rim, centre cross, a line per level
  r.contourStep = 10;
  ASSERT_TRUE(ss::makeStereonetPlot(dips, az, r, plot, summary).isOk());
  EXPECT_EQ(texts(plot.sets[0]).back(), "Kamb contours: none (maximum 9.3 sigma)");
  EXPECT_EQ(plot.sets[0].lines.count(), 3);
  r.densityGrid = 2;
  EXPECT_EQ(ss::makeStereonetPlot(dips, az, r, plot, summary).message(),
            "A density grid of 2 nodes a side is not 3 to 1000");
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
  r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot stereonet " + csv + " --dip dip --azimuth azimuth --poles --out " + tmp.file("c.png")));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "Observations: 2 (1 left out)\nMean pole: plunge 60.0, trend 270.0, R=2\n");
  // Two horizontal planes: both poles in the centre node, 2 / (sqrt(2 (f/2 - 1)) / f)
  // = 7.33 standard deviations with f = 2(1 + 2/9).
  const std::string flat = tmp.write("flat.csv", "dip,azimuth\n0,0\n0,90\n");
  r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot stereonet " + flat + " --dip dip --azimuth azimuth --poles --contours --grid 51 --out " +
      tmp.file("f.png")));
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("\nKamb contours: 2, 4, 6 sigma (maximum 7.3 sigma)\n"), std::string::npos) << r.out;
  r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot stereonet " + csv + " --dip dip --azimuth azimuth --rose --rose-width 30 --out " +
      tmp.file("r.png")));
  EXPECT_EQ(r.out, "Observations: 2 (1 left out)\nFrequency: 0 to 2 in classes of 30 degrees from 0\n");
  r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot stereonet " + csv + " --dip dip --azimuth azimuth --poles --contours --grid 51 --json"));
  ASSERT_EQ(r.status, 0) << r.err;
  const auto d = nlohmann::json::parse(r.out)["density"];
  EXPECT_EQ(d["grid"], 51);
  EXPECT_GT(d["maximum_sigma"].get<double>(), 2.0);
  EXPECT_EQ(d["levels_sigma"][0], 2.0);
  r = ss::testing::withoutSuppressionReport(ss::testing::runCommand(
      program + " plot stereonet " + csv + " --dip dip --azimuth azimuth --class set --json"));
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find(csv + ", line 1: no column \"set\"; the columns are \"dip\", \"azimuth\""),
            std::string::npos)
      << r.err;
}
