// Fitted lines on cross-plots: fitted as plotted (logs on "Log" axes), the
// line drawn inside the x window, the equation text added, and the
// `subsurf plot xy --fit` command as a user runs it.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "host/fixed_text.h"
#include "plot/crossplot.h"
#include "plot/fitted_line.h"
#include "support/run_program.h"
#include "support/temp_dir.h"

namespace ss = subsurf;

namespace {

// y = 10^(1 + 2x) at x = 0, 0.5, ..., 3: a straight line on a log y axis.
ss::PlotRecord exponentialPlot(int xType, int yType) {
  ss::CrossplotData data;
  for (int k = 0; k <= 6; ++k) {
    data.x.push_back(0.5f * k + (xType == 2 ? 1.0f : 0.0f));
    data.y.push_back(static_cast<float>(std::pow(10.0, 1.0 + 2.0 * 0.5 * k)));
  }
  ss::AxisRequest x, y;
  x.column = "x";
  y.column = "y";
  x.type = xType;
  y.type = yType;
  return ss::makeCrossplot(data, x, y, "", "set");
}

}  // namespace

TEST(FittedLine, FittedInLogsOnALogAxisAndDrawnInsideTheWindow) {
  ss::PlotRecord plot = exponentialPlot(1, 2);
  ss::FittedLine line;
  ASSERT_TRUE(ss::addFittedLine(plot, ss::RegressionMethod::YOnX, ss::RegressionForm::Line, std::nullopt, line).isOk());
  EXPECT_EQ(line.description, "log(y) = 2*x+1");
  EXPECT_NEAR(line.fit.r2, 1.0, 1e-12);
  EXPECT_EQ(line.report.rfind("Regression: y-on-x, R2=1, CC=1, SD=", 0), 0u) << line.report;
  const ss::PlotSet& set = plot.sets[0];
  ASSERT_EQ(set.lines.count(), 1);
  const ss::LineElement& drawn = set.lines.at(1);
  EXPECT_EQ(ss::fixedText(drawn.NAME), "y-on-x fit");
  ASSERT_GT(drawn.NPTS, 100);
  EXPECT_FLOAT_EQ(drawn.x.front(), set.scales[0].MIN);
  EXPECT_FLOAT_EQ(drawn.x.back(), set.scales[0].MAX);
  for (int k = 0; k < drawn.NPTS; k += 37)
    EXPECT_NEAR(std::log10(drawn.y[k]), 1 + 2 * drawn.x[k], 1e-5) << k;
  ASSERT_EQ(set.texts.count(), 1);
  EXPECT_EQ(ss::fixedText(set.texts.at(1).TEXT), "log(y) = 2*x+1");
}

namespace {

// y = 3 x^2 at x = 0.5 .. 10 on the axis types given; the x window may reach below 0,
// where x^2 exists but the fit (in logs, of positive x only) says nothing.
ss::PlotRecord powerPlot(int xType, int yType, float xMin) {
  ss::CrossplotData data;
  for (int k = 1; k <= 20; ++k) {
    data.x.push_back(0.5f * k);
    data.y.push_back(static_cast<float>(3.0 * 0.25 * k * k));
  }
  ss::AxisRequest x, y;
  x.column = "x";
  y.column = "y";
  x.type = xType;
  y.type = yType;
  if (xMin < 0) {
    x.mode = 1;
    x.min = xMin;
    x.max = 12;
  }
  return ss::makeCrossplot(data, x, y, "", "set");
}

// The numbers of "y = A*x^(B)" or "y = A*x^(-B)".
bool powerEquation(const std::string& text, double& a, double& b) {
  char sign = 0;
  if (std::sscanf(text.c_str(), "y = %lf*x^(%lf)", &a, &b) == 2) return true;
  return std::sscanf(text.c_str(), "y = %lf*x^(%c%lf)", &a, &sign, &b) == 3 && sign == '-' && (b = -b, true);
}

}  // namespace

TEST(FittedLine, PowerLineOnALogYAxisFollowsTheDataItsEquationNamesAndIsDrawn) {
  for (const int yType : {1, 2}) {
    for (const int xType : {1, 2}) {
      for (const float xMin : {0.0f, -5.0f}) {
        if (xType == 2 && xMin < 0) continue;
        SCOPED_TRACE(::testing::Message() << "x type " << xType << ", y type " << yType << ", x min " << xMin);
        ss::PlotRecord plot = powerPlot(xType, yType, xMin);
        ss::FittedLine line;
        ASSERT_TRUE(
            ss::addFittedLine(plot, ss::RegressionMethod::YOnX, ss::RegressionForm::Power, std::nullopt, line).isOk());
        // The equation shown is the curve fitted, whatever the axes: evaluated at
        // each data point it gives the data.
        EXPECT_EQ(line.description, "y = 3*x^(2)");
        double a = 0, b = 0;
        ASSERT_TRUE(powerEquation(line.description, a, b)) << line.description;
        const ss::PlotSet& set = plot.sets[0];
        for (std::size_t i = 0; i < set.data[0].size(); ++i)
          EXPECT_NEAR(a * std::pow(set.data[0][i], b), set.data[1][i], 1e-5 * set.data[1][i]) << i;
        // Every drawn point lies on that curve, at positive x, inside the window.
        const ss::LineElement& drawn = set.lines.at(1);
        ASSERT_GT(drawn.NPTS, 50);
        for (int k = 0; k < drawn.NPTS; ++k) {
          ASSERT_GT(drawn.x[k], 0.0f) << k;
          EXPECT_NEAR(drawn.y[k], 3.0 * drawn.x[k] * drawn.x[k], 1e-5 * drawn.y[k]) << k;
        }
        EXPECT_FLOAT_EQ(drawn.x.back(), set.scales[0].MAX);
        EXPECT_NEAR(line.fit.r2, 1.0, 1e-9);
      }
    }
  }
}

TEST(FittedLine, PowerFormNegativeExponentAndBadFixedPoints) {
  ss::PlotRecord plot = exponentialPlot(2, 2);
  ss::FittedLine line;
  ASSERT_TRUE(ss::addFittedLine(plot, ss::RegressionMethod::Rma, ss::RegressionForm::Power, std::nullopt, line).isOk());
  EXPECT_EQ(line.description.rfind("y = ", 0), 0u) << line.description;
  EXPECT_NE(line.description.find("*x^("), std::string::npos);
  ss::PlotRecord falling = powerPlot(2, 2, 0);
  for (float& y : falling.sets[0].data[1]) y = 1.0f / y;
  ASSERT_TRUE(
      ss::addFittedLine(falling, ss::RegressionMethod::YOnX, ss::RegressionForm::Power, std::nullopt, line).isOk());
  EXPECT_EQ(line.description, "y = 0.333333*x^(-2)");
  double a = 0, b = 0;
  ASSERT_TRUE(powerEquation(line.description, a, b));
  EXPECT_NEAR(b, -2.0, 1e-6);
  ss::PlotRecord again = exponentialPlot(1, 2);
  const ss::Status s = ss::addFittedLine(again, ss::RegressionMethod::Forced, ss::RegressionForm::Line,
                                         ss::FixedPoint{0, -5}, line);
  EXPECT_EQ(s.message(), "Invalid fixed point!");
  EXPECT_EQ(again.sets[0].lines.count(), 0);
}

TEST(FittedLine, ResidualsPlotHasEachResidualAndAZeroLine) {
  ss::CrossplotData data;
  data.x = {0, 1, 2, 3};
  data.y = {0, 2, 1, 3};
  data.xColumn = "phi";
  data.yColumn = "k";
  ss::AxisRequest x, y;
  x.column = "phi";
  y.column = "k";
  ss::PlotRecord plot = ss::makeCrossplot(data, x, y, "", "set");
  ss::FittedLine line;
  ASSERT_TRUE(ss::addFittedLine(plot, ss::RegressionMethod::YOnX, ss::RegressionForm::Line, std::nullopt, line).isOk());
  const ss::PlotRecord residuals = ss::makeResidualsPlot(plot, line);
  EXPECT_EQ(residuals.fields.title, "Residuals plot");
  const ss::PlotSet& set = residuals.sets[0];
  EXPECT_EQ(set.labels[0], "phi");
  EXPECT_EQ(set.labels[1], "Residual");
  // y-on-x gives y = 0.3 + 0.8x: residuals -0.3, 0.9, -0.9, 0.3.
  ASSERT_EQ(set.pointCount(), 4);
  EXPECT_EQ(set.data[0][1], 1.0f);
  EXPECT_NEAR(set.data[1][1], 0.9f, 1e-6);
  EXPECT_NEAR(set.data[1][2], -0.9f, 1e-6);
  ASSERT_EQ(set.lines.count(), 1);
  EXPECT_EQ(ss::fixedText(set.lines.at(1).NAME), "Zero line");
  EXPECT_EQ(set.lines.at(1).y, (std::vector<float>{0, 0}));
  EXPECT_LE(set.scales[1].MIN, -0.9f);
  EXPECT_GE(set.scales[1].MAX, 0.9f);
}

class FitCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(program())) GTEST_SKIP() << "the subsurf program is not built";
    csv = tmp.write("lines.csv", "x,y\n0,1\n1,3\n2,5\n3,7\n4,\n");
  }
  static std::string program() { return ss::testing::builtProgram("subsurf"); }
  ss::testing::CommandRun run(const std::string& args) {
    return ss::testing::withoutSuppressionReport(
        ss::testing::runCommand(program() + " plot xy " + csv + " --x x --y y " + args));
  }
  ss::testing::TempDir tmp;
  std::string csv;
};

TEST_F(FitCommand, PrintsTheEquationAndTheRegressionLine) {
  const auto r = run("--fit y-on-x --out " + tmp.file("fit.svg"));
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "y = 2*x+1\nRegression: y-on-x, R2=1, CC=1, SD=0, p10=0, p90=0\n");
  EXPECT_TRUE(std::filesystem::exists(tmp.file("fit.svg")));
}

TEST_F(FitCommand, JsonCarriesCoefficientsAndForcedLinesTakeTheFixedPoint) {
  const auto r = run("--fit forced --fixed 0,0 --json");
  ASSERT_EQ(r.status, 0) << r.err;
  const auto j = nlohmann::json::parse(r.out);
  // Through the origin: slope sum(xy)/sum(x^2) = 34/14.
  EXPECT_NEAR(j["fit"]["coefficients"][1].get<double>(), 34.0 / 14.0, 1e-12);
  EXPECT_EQ(j["fit"]["coefficients"][0].get<double>(), 0.0);
  EXPECT_EQ(j["fit"]["method"], "forced");
  EXPECT_EQ(j["fit"]["points"], 4);
}

TEST_F(FitCommand, BadRequestsAreNamed) {
  auto r = run("--fit lsq --json");
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("--fit \"lsq\" is not one of forced, x-on-y, y-on-x, rmb, rma, means"), std::string::npos);
  r = run("--fit y-on-x --form cubic --json");
  EXPECT_NE(r.err.find("--form \"cubic\" is not one of line, power, poly2, poly3"), std::string::npos);
  r = run("--fit forced --fixed 1 --json");
  EXPECT_NE(r.err.find("--fixed \"1\" is not X,Y"), std::string::npos);
  r = run("--fit forced --json");
  EXPECT_NE(r.err.find("No fixed point entry!"), std::string::npos);
  r = run("--fit y-on-x --form poly3 --x-min 0 --x-max 1 --json");
  EXPECT_EQ(r.status, 0) << r.err;
}
