// Regression lines fitted to the points of a cross-plot.
//
// Points are fitted in the coordinates in which they are plotted: the caller
// passes base-10 logarithms for "Log" axes. The power form fits
// log10(y) = log10(a) + b * log10(x) by the chosen method, so it needs positive
// values. Polynomials of order 2 and 3 are fitted by least squares of y on x
// ("y-on-x") or through a fixed point ("forced"). The definitions of the
// methods and statistics, with references, are in docs/regression.md.
//
// Arithmetic is in double precision: straight lines from sums of centred
// values, polynomials by Householder QR on the powers of centred and scaled x.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/status.h"

namespace subsurf {

// In the order in which the regression dialog lists them.
enum class RegressionMethod { Forced, XOnY, YOnX, Rmb, Rma, Means };
enum class RegressionForm { Line, Power, Poly2, Poly3 };

// "forced", "x-on-y", "y-on-x", "rmb", "rma", "means"; compared in lower case.
std::optional<RegressionMethod> regressionMethodNamed(std::string_view name);
const char* regressionMethodName(RegressionMethod method);
// "line", "power", "poly2", "poly3".
std::optional<RegressionForm> regressionFormNamed(std::string_view name);

struct FixedPoint {
  double x = 0.0, y = 0.0;
};

struct RegressionFit {
  RegressionMethod method = RegressionMethod::YOnX;
  RegressionForm form = RegressionForm::Line;
  // Line and polynomials: coefficients[k] multiplies x^k. Power: {a, b} of y = a*x^b.
  std::vector<double> coefficients;
  int points = 0;       // points used
  double r2 = 0.0;      // 1 - RSS / total sum of squares about the mean of y
  double cc = 0.0;      // Pearson correlation of the fitted x and y
  double sd = 0.0;      // residual standard deviation, sqrt(RSS / (n - parameters))
  double p10 = 0.0;     // 10th percentile of the residuals
  double p90 = 0.0;     // 90th percentile of the residuals
  std::vector<double> residuals;  // y - fitted y (in logs for the power form), in input order of used points
  std::vector<double> usedX;      // x of each residual, as given

  // The fitted value at x (in plotted coordinates; the power form takes and gives linear values).
  double valueAt(double x) const;
};

// Fits the points (x[i], y[i]); points where either value is null or not finite
// (or, for the power form, not positive) are left out. fixed is required by the
// "forced" method. Messages: "No fixed point entry!", "No valid data points!",
// "Invalid fixed point!", "Not enough data points!",
// "Unmanagable line definition - check gradient" (a line whose gradient
// cannot be found, such as all x equal).
Status fitRegression(std::span<const double> x, std::span<const double> y, RegressionMethod method,
                     RegressionForm form, const std::optional<FixedPoint>& fixed, RegressionFit& fit);

// "Regression: y-on-x, R2=0.99, CC=0.995, SD=0.88, p10=-1.1, p90=1.2".
std::string regressionReportLine(const RegressionFit& fit);

}  // namespace subsurf
