// Regression fits: the NIST StRD certified values (Norris, straight line;
// Pontius, quadratic), each method on a set whose sums are worked by hand,
// power and polynomial forms, fixed points, statistics and every refusal.
#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "host/fixed_text.h"
#include "host/messages.h"
#include "host/nulls.h"
#include "plot/regression_fit.h"
#include "subsurf/plot_regression.h"

namespace ss = subsurf;

namespace {

// NIST StRD "Norris" (public domain), y = B0 + B1 x.
const std::vector<double> kNorrisX = {
    0.2,   337.4, 118.2, 884.6, 10.1,  226.5, 666.3, 996.3, 448.6, 777.0, 558.2, 0.4,
    0.6,   775.5, 666.9, 338.0, 447.5, 11.6,  556.0, 228.1, 995.8, 887.6, 120.2, 0.3,
    0.3,   556.8, 339.1, 887.2, 999.0, 779.0, 11.1,  118.3, 229.2, 669.1, 448.9, 0.5};
const std::vector<double> kNorrisY = {
    0.1,   338.8, 118.1, 888.0, 9.2,   228.1, 668.5, 998.5, 449.1, 778.9, 559.2, 0.3,
    0.1,   778.1, 668.8, 339.3, 448.9, 10.8,  557.7, 228.3, 998.0, 888.8, 119.6, 0.3,
    0.6,   557.6, 339.3, 888.0, 998.5, 778.9, 10.2,  117.6, 228.9, 668.4, 449.2, 0.2};

// NIST StRD "Pontius" (public domain), y = B0 + B1 x + B2 x^2.
std::vector<double> pontiusX() {
  std::vector<double> x;
  for (int pass = 0; pass < 2; ++pass)
    for (int k = 1; k <= 20; ++k) x.push_back(150000.0 * k);
  return x;
}
const std::vector<double> kPontiusY = {
    0.11019, 0.21956, 0.32949, 0.43899, 0.54803, 0.65694, 0.76562, 0.87487, 0.98292, 1.09146,
    1.20001, 1.30822, 1.41599, 1.52399, 1.63194, 1.73947, 1.84646, 1.95392, 2.06128, 2.16844,
    0.11052, 0.22018, 0.32939, 0.43886, 0.54798, 0.65739, 0.76596, 0.87474, 0.983,   1.0915,
    1.20004, 1.30818, 1.41613, 1.52408, 1.63159, 1.73965, 1.84696, 1.95445, 2.06177, 2.16829};

// Agreement to at least 9 significant digits (relative 5e-10 leaves a margin).
void expectDigits(double actual, double certified) {
  EXPECT_NEAR(actual, certified, std::fabs(certified) * 5e-10) << "certified " << certified;
}

// Four points with means (1.5, 1.5), Suu = Svv = 5, Suv = 4.
const std::vector<double> kSquareX = {0, 1, 2, 3};
const std::vector<double> kSquareY = {0, 2, 1, 3};

ss::RegressionFit fitOk(const std::vector<double>& x, const std::vector<double>& y, ss::RegressionMethod m,
                        ss::RegressionForm f = ss::RegressionForm::Line,
                        std::optional<ss::FixedPoint> fixed = std::nullopt) {
  ss::RegressionFit fit;
  const ss::Status s = ss::fitRegression(x, y, m, f, fixed, fit);
  EXPECT_TRUE(s.isOk()) << s.message();
  return fit;
}

std::string refusal(const std::vector<double>& x, const std::vector<double>& y, ss::RegressionMethod m,
                    ss::RegressionForm f = ss::RegressionForm::Line,
                    std::optional<ss::FixedPoint> fixed = std::nullopt) {
  ss::RegressionFit fit;
  const ss::Status s = ss::fitRegression(x, y, m, f, fixed, fit);
  EXPECT_FALSE(s.isOk());
  return s.message();
}

using M = ss::RegressionMethod;
using F = ss::RegressionForm;

}  // namespace

TEST(RegressionCertified, NorrisStraightLine) {
  const auto fit = fitOk(kNorrisX, kNorrisY, M::YOnX);
  ASSERT_EQ(fit.coefficients.size(), 2u);
  expectDigits(fit.coefficients[0], -0.262323073774029);
  expectDigits(fit.coefficients[1], 1.00211681802045);
  expectDigits(fit.sd, 0.884796396144373);
  expectDigits(fit.r2, 0.999993745883712);
  EXPECT_EQ(fit.points, 36);
}

TEST(RegressionCertified, PontiusQuadratic) {
  const auto fit = fitOk(pontiusX(), kPontiusY, M::YOnX, F::Poly2);
  ASSERT_EQ(fit.coefficients.size(), 3u);
  expectDigits(fit.coefficients[0], 0.673565789473684E-03);
  expectDigits(fit.coefficients[1], 0.732059160401003E-06);
  expectDigits(fit.coefficients[2], -0.316081871345029E-14);
  expectDigits(fit.sd, 0.205177424076185E-03);
  expectDigits(fit.r2, 0.999999900178537);
}

TEST(RegressionCertified, NorrisThroughTheRoutine) {
  double coef[4], stats[5];
  char report[120];
  int status = -1, n = 36, nofix = 0;
  ZW_REGFIT(&n, kNorrisX.data(), kNorrisY.data(), "y-on-x  ", "line    ", &nofix, nullptr, nullptr, coef, stats,
            report, &status);
  ASSERT_EQ(status, 0);
  expectDigits(coef[0], -0.262323073774029);
  expectDigits(coef[1], 1.00211681802045);
  EXPECT_EQ(coef[2], 0.0);
  expectDigits(stats[0], 0.999993745883712);
  expectDigits(stats[2], 0.884796396144373);
  EXPECT_EQ(ss::fixedText(report, 120).rfind("Regression: y-on-x, R2=0.999994, CC=", 0), 0u);
}

TEST(RegressionMethods, EachMethodOnHandWorkedSums) {
  auto slope = [](M m) { return fitOk(kSquareX, kSquareY, m).coefficients[1]; };
  auto intercept = [](M m) { return fitOk(kSquareX, kSquareY, m).coefficients[0]; };
  EXPECT_DOUBLE_EQ(slope(M::YOnX), 0.8);
  EXPECT_DOUBLE_EQ(intercept(M::YOnX), 0.3);
  EXPECT_DOUBLE_EQ(slope(M::XOnY), 1.25);
  EXPECT_DOUBLE_EQ(intercept(M::XOnY), 1.5 - 1.25 * 1.5);
  EXPECT_DOUBLE_EQ(slope(M::Rma), 1.0);
  // The bisector of slopes 0.8 and 1.25 (mirror images about 1) is 1.
  EXPECT_DOUBLE_EQ(slope(M::Rmb), 1.0);
  // Lower half mean (0.5, 1), upper half mean (2.5, 2).
  EXPECT_DOUBLE_EQ(slope(M::Means), 0.5);
  EXPECT_DOUBLE_EQ(intercept(M::Means), 0.75);
  const auto forced = fitOk(kSquareX, kSquareY, M::Forced, F::Line, ss::FixedPoint{0, 0});
  EXPECT_DOUBLE_EQ(forced.coefficients[1], 13.0 / 14.0);
  EXPECT_DOUBLE_EQ(forced.coefficients[0], 0.0);
}

TEST(RegressionMethods, ReducedMajorAxisTakesTheSignOfTheCovariance) {
  const auto fit = fitOk({0, 1, 2, 3}, {0, -2, -1, -3}, M::Rma);
  EXPECT_DOUBLE_EQ(fit.coefficients[1], -1.0);
  EXPECT_DOUBLE_EQ(fit.cc, -0.8);
}

TEST(RegressionStatistics, ResidualStatisticsOfTheHandWorkedSet) {
  const auto fit = fitOk(kSquareX, kSquareY, M::YOnX);
  // Residuals -0.3, 0.9, -0.9, 0.3.
  ASSERT_EQ(fit.residuals.size(), 4u);
  EXPECT_NEAR(fit.residuals[1], 0.9, 1e-15);
  EXPECT_NEAR(fit.r2, 1.0 - 1.8 / 5.0, 1e-15);
  EXPECT_NEAR(fit.cc, 0.8, 1e-15);
  EXPECT_NEAR(fit.sd, std::sqrt(0.9), 1e-15);
  EXPECT_NEAR(fit.p10, -0.72, 1e-15);
  EXPECT_NEAR(fit.p90, 0.72, 1e-15);
  EXPECT_EQ(ss::regressionReportLine(fit), "Regression: y-on-x, R2=0.64, CC=0.8, SD=0.948683, p10=-0.72, p90=0.72");
}

TEST(RegressionForms, PowerLineIsFittedInLogsAndSkipsNonPositivePoints) {
  std::vector<double> x = {1, 4, 9, 16, -1, 0, 25}, y = {3, 1.5, 1, 0.75, 2, 2, 0};
  const auto fit = fitOk(x, y, M::YOnX, F::Power);
  EXPECT_EQ(fit.points, 4);
  EXPECT_NEAR(fit.coefficients[0], 3.0, 1e-13);
  EXPECT_NEAR(fit.coefficients[1], -0.5, 1e-13);
  EXPECT_NEAR(fit.r2, 1.0, 1e-13);
  EXPECT_NEAR(fit.valueAt(36), 0.5, 1e-13);
  const auto forced = fitOk(x, y, M::Forced, F::Power, ss::FixedPoint{1, 3});
  EXPECT_NEAR(forced.coefficients[1], -0.5, 1e-13);
  EXPECT_NEAR(forced.coefficients[0], 3.0, 1e-13);
}

TEST(RegressionForms, CubicRecoveredAndQuadraticForcedThroughAPoint) {
  std::vector<double> x, y3, y2;
  for (double v = -2; v <= 3; v += 0.5) {
    x.push_back(v);
    y3.push_back(1 - 2 * v + 0.5 * v * v + 0.25 * v * v * v);
    y2.push_back(5 + v + v * v + (static_cast<int>(v * 2) % 2 ? 0.1 : -0.1));
  }
  const auto cubic = fitOk(x, y3, M::YOnX, F::Poly3);
  const std::vector<double> expected = {1, -2, 0.5, 0.25};
  for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(cubic.coefficients[k], expected[k], 1e-12) << k;
  const auto forced = fitOk(x, y2, M::Forced, F::Poly2, ss::FixedPoint{1, 7});
  EXPECT_NEAR(forced.valueAt(1), 7.0, 1e-12);
  EXPECT_NEAR(forced.coefficients[2], 1.0, 0.05);
}

TEST(RegressionRefusals, MessagesWordForWord) {
  const double null = ss::kDoubleNull;
  EXPECT_EQ(refusal(kSquareX, kSquareY, M::Forced), "No fixed point entry!");
  EXPECT_EQ(refusal({null, 1}, {2, null}, M::YOnX), "No valid data points!");
  EXPECT_EQ(refusal({-1, 0}, {1, 2}, M::YOnX, F::Power), "No valid data points!");
  EXPECT_EQ(refusal(kSquareX, kSquareY, M::Forced, F::Line, ss::FixedPoint{null, 0}), "Invalid fixed point!");
  EXPECT_EQ(refusal(kSquareX, kSquareY, M::Forced, F::Power, ss::FixedPoint{0, 1}), "Invalid fixed point!");
  EXPECT_EQ(refusal({1, null}, {2, 3}, M::YOnX), "Not enough data points!");
  EXPECT_EQ(refusal({1, 2, 3}, {1, 4, 9}, M::YOnX, F::Poly3), "Not enough data points!");
  EXPECT_EQ(refusal({1, 1, 2, 2}, {1, 2, 3, 4}, M::YOnX, F::Poly3), "Not enough data points!");
  EXPECT_EQ(refusal({2, 2, 2}, {1, 2, 3}, M::YOnX), "Unmanagable line definition - check gradient");
  EXPECT_EQ(refusal({1, 2, 3}, {5, 5, 5}, M::XOnY), "Unmanagable line definition - check gradient");
  EXPECT_EQ(refusal({1, 2, 3}, {5, 5, 5}, M::Rma), "Unmanagable line definition - check gradient");
  EXPECT_EQ(refusal({2, 2, 2}, {1, 2, 3}, M::Means), "Unmanagable line definition - check gradient");
  EXPECT_EQ(refusal({2, 2}, {1, 2}, M::Forced, F::Line, ss::FixedPoint{2, 0}),
            "Unmanagable line definition - check gradient");
  EXPECT_EQ(refusal(kSquareX, kSquareY, M::Rma, F::Poly2),
            "Method rma fits straight and power lines only; polynomials take y-on-x or forced");
}

TEST(RegressionRefusals, RoutineShowsTheMessageAndNamesAreCaseBlind) {
  ss::host::clearRecorded();
  double coef[4] = {9, 9, 9, 9};
  int status = -1, n = 4, fix = 1;
  const double fx = 0, fy = 0;
  ZW_REGFIT(&n, kSquareX.data(), kSquareY.data(), "FORCED  ", "Line    ", &fix, &fx, &fy, coef, nullptr, nullptr,
            &status);
  EXPECT_EQ(status, 0);
  EXPECT_DOUBLE_EQ(coef[1], 13.0 / 14.0);
  fix = 0;
  ZW_REGFIT(&n, kSquareX.data(), kSquareY.data(), "forced  ", "line    ", &fix, &fx, &fy, coef, nullptr, nullptr,
            &status);
  EXPECT_EQ(status, 1);
  ZW_REGFIT(&n, kSquareX.data(), kSquareY.data(), "lsq     ", "line    ", &fix, &fx, &fy, coef, nullptr, nullptr,
            &status);
  EXPECT_EQ(status, 1);
  const auto messages = ss::host::recordedMessages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0], "No fixed point entry!");
  EXPECT_EQ(messages[1], "Unknown regression method or form");
}
