// Equation texts of plotted lines: straight, power, polynomial and x-in-y
// lines on linear and logarithmic axes, through the engine and the C routines.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "plot/line_description.h"
#include "subsurf/plot_regression.h"

namespace ss = subsurf;

namespace {

constexpr ss::AxisLogs kLinear{false, false};
constexpr ss::AxisLogs kLogLog{true, true};

std::string straight(double x1, double y1, double x2, double y2, ss::AxisLogs logs = kLinear) {
  std::string text;
  EXPECT_TRUE(ss::describeStraightLine(x1, y1, x2, y2, logs, text).isOk());
  return text;
}

std::string inY(double x1, double y1, double x2, double y2, ss::AxisLogs logs = kLinear) {
  std::string text;
  EXPECT_TRUE(ss::describeLineInY(x1, y1, x2, y2, logs, text).isOk());
  return text;
}

std::string polynomial(std::vector<double> c, ss::AxisLogs logs = kLinear) { return ss::describePolynomial(c, logs); }

}  // namespace

TEST(LineDescription, StraightLineGivesSlopeThenSignedInterceptMagnitude) {
  EXPECT_EQ(straight(0, 1, 2, 5), "y = 2*x+1");
  EXPECT_EQ(straight(0, -1, 1, 1), "y = 2*x-1");
  EXPECT_EQ(straight(0, 3, 2, -1), "y = -2*x+3");
  // An intercept of exactly 0 is written "+" and 0.
  EXPECT_EQ(straight(1, 2, 3, 6), "y = 2*x+0");
  EXPECT_EQ(straight(0, 0.1, 3, 0.4), "y = 0.1*x+0.1");
}

TEST(LineDescription, LogAxesAreWrittenAsLogarithms) {
  EXPECT_EQ(straight(10, 100, 1000, 10000, kLogLog), "log(y) = 1*log(x)+1");
  EXPECT_EQ(straight(10, 1, 100, 3, {true, false}), "y = 2*log(x)-1");
  EXPECT_EQ(straight(1, 10, 2, 1000, {false, true}), "log(y) = 2*x-1");
}

TEST(LineDescription, VerticalLineIsWrittenAsXWhateverTheYAxis) {
  EXPECT_EQ(straight(3, 1, 3, 5), "x = 3");
  EXPECT_EQ(straight(3, 1, 3, 5, {false, true}), "x = 3");
  EXPECT_EQ(straight(100, 1, 100, 5, kLogLog), "x = 2");
}

TEST(LineDescription, NonPositiveValueOnLogAxisIsRefused) {
  std::string text = "old";
  const ss::Status s = ss::describeStraightLine(0, 1, 2, 5, {true, false}, text);
  EXPECT_FALSE(s.isOk());
  EXPECT_EQ(s.message(), "Invalid value for log scale");
  EXPECT_EQ(text, "");
  EXPECT_EQ(ss::describeLineInY(1, -1, 2, 5, {false, true}, text).message(), "Invalid value for log scale");
}

TEST(LineDescription, PowerLineWritesCoefficientByMagnitudeAndExponentInParentheses) {
  EXPECT_EQ(ss::describePowerLine(2.5, -0.75, kLinear), "y = 2.5*x^(-0.75)");
  EXPECT_EQ(ss::describePowerLine(2.5, -0.75, kLogLog), "log(y) = 2.5*log(x)^(-0.75)");
  EXPECT_EQ(ss::describePowerLine(2.5, 0.75, kLinear), "y = 2.5*x^(0.75)");
  // A negative coefficient still shows its magnitude alone.
  EXPECT_EQ(ss::describePowerLine(-2.5, 1.5, kLinear), "y = 2.5*x^(1.5)");
}

TEST(LineDescription, PolynomialsLeadWithTheHighestPowerAndItsOwnSign) {
  EXPECT_EQ(polynomial({3, -2, 1}), "y = 1*x^2-2*x+3");
  EXPECT_EQ(polynomial({-3, 2, -1}), "y = -1*x^2+2*x-3");
  EXPECT_EQ(polynomial({3, -2, 1}, {true, false}), "y = 1*(log(x))^2-2*log(x)+3");
  EXPECT_EQ(polynomial({0, 1, -0.5, -2}), "y = -2*x^3-0.5*x^2+1*x+0");
  EXPECT_EQ(polynomial({1, 2, 3, 4}, kLogLog), "log(y) = 4*(log(x))^3+3*(log(x))^2+2*log(x)+1");
}

TEST(LineDescription, LineInYGivesXInTermsOfY) {
  EXPECT_EQ(inY(-1, 0, 1, 4), "x = 0.5*y-1");
  EXPECT_EQ(inY(1, 4, 5, 4), "y = 4");
  EXPECT_EQ(inY(10, 10, 1000, 100, kLogLog), "log(x) = 2*log(y)-1");
  EXPECT_EQ(inY(2, 1, 2, 7), "x = 0*y+2");
}

TEST(LineDescription, NumbersAreTheSingleValuesInCompactForm) {
  EXPECT_EQ(ss::descriptionNumber(1.0 / 3.0), "0.333333");
  EXPECT_EQ(ss::descriptionNumber(-1234567.0), "-1.23457e+06");
  EXPECT_EQ(ss::descriptionNumber(0.0), "0");
}

TEST(LineDescriptionRoutines, FillTheBlankPaddedFieldAndReportBadLogValues) {
  char desc[120];
  const int linear = 1, log = 2;
  float x1 = 0, y1 = 1, x2 = 2, y2 = 5;
  int status = -1;
  ZW_LINEDESC(&linear, &linear, &x1, &y1, &x2, &y2, desc, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(std::string(desc, 120), "y = 2*x+1" + std::string(111, ' '));

  ss::host::clearRecorded();
  ZW_LINEDESC(&log, &linear, &x1, &y1, &x2, &y2, desc, &status);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(std::string(desc, 120), std::string(120, ' '));
  ASSERT_EQ(ss::host::recordedMessages().size(), 1u);
  EXPECT_EQ(ss::host::recordedMessages()[0], "Invalid value for log scale");

  ZW_LINEREVDESC(&linear, &linear, &x1, &y1, &x2, &y2, desc, &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(ss::fixedText(desc, 120), "x = 0.5*y-0.5");

  const float a = 2.5f, b = -0.75f;
  ZW_LINEDESC2(&log, &log, &a, &b, desc);
  EXPECT_EQ(ss::fixedText(desc, 120), "log(y) = 2.5*log(x)^(-0.75)");
  const float c3[3] = {3, -2, 1};
  ZW_LINEDESC3(&linear, &linear, c3, desc);
  EXPECT_EQ(ss::fixedText(desc, 120), "y = 1*x^2-2*x+3");
  const float c4[4] = {0, 1, -0.5f, -2};
  ZW_LINEDESC4(&linear, &linear, c4, desc);
  EXPECT_EQ(ss::fixedText(desc, 120), "y = -2*x^3-0.5*x^2+1*x+0");
}

TEST(LineDescriptionRoutines, MethodNamesInDialogOrder) {
  char text[48];
  ZW_REGMETHODS(text);
  EXPECT_EQ(std::string(text, 48), "forced  x-on-y  y-on-x  rmb     rma     means   ");
}
