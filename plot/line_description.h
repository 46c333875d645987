// Line descriptions: the equation of a plotted line as the text shown beside it.
//
// Equations are written in terms of the axes as plotted: on a logarithmic axis
// the variable appears as its base-10 logarithm ("log(y) = ...", "*log(x)").
// Every number is written in the compact general format (six significant
// digits, no trailing zeros) of a single-precision value, as the number-to-text
// routine XRCFN writes it with format code -6. A description never exceeds 120
// characters; anything longer is cut.
#pragma once

#include <span>
#include <string>

#include "host/status.h"

namespace subsurf {

inline constexpr std::size_t kLineDescriptionWidth = 120;

struct AxisLogs {
  bool x = false;  // x axis of type "Log"
  bool y = false;  // y axis of type "Log"
};

// The straight line through (x1, y1) and (x2, y2): "y = 2*x+1"; a vertical line
// reads "x = 3". Fails with "Invalid value for log scale" when a point cannot be
// taken to logarithms on a "Log" axis.
Status describeStraightLine(double x1, double y1, double x2, double y2, AxisLogs logs, std::string& text);

// The power line y = a * x^b: "y = 2.5*x^(-0.75)". The coefficient a is written
// by its magnitude, without a sign.
std::string describePowerLine(double a, double b, AxisLogs logs);

// A polynomial of order 2 or 3, coefficients[k] multiplying x^k (so
// coefficients.size() is 3 or 4): "y = 1*x^2-2*x+3". Only the leading
// coefficient carries its own sign.
std::string describePolynomial(std::span<const double> coefficients, AxisLogs logs);

// The line through two points written as x in terms of y: "x = 0.5*y-1"; a
// horizontal line reads "y = 4".
Status describeLineInY(double x1, double y1, double x2, double y2, AxisLogs logs, std::string& text);

// A number as the descriptions write it (the single-precision value, code -6).
std::string descriptionNumber(double value);

}  // namespace subsurf
