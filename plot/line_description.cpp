#include "plot/line_description.h"

#include <cmath>
#include <cstdlib>

#include "host/number_text.h"

namespace subsurf {

namespace {

std::string cut(std::string text) {
  if (text.size() > kLineDescriptionWidth) text.resize(kLineDescriptionWidth);
  return text;
}

// "+" and the magnitude, or "-" and the magnitude.
std::string signedTerm(double value) {
  std::string text(value < 0.0 ? "-" : "+");
  text += descriptionNumber(std::fabs(value));
  return text;
}

const char* yPrefix(AxisLogs logs) { return logs.y ? "log(y) = " : "y = "; }

// Takes the points to logarithms where their axes are "Log".
Status toPlotted(double& x1, double& y1, double& x2, double& y2, AxisLogs logs) {
  if (logs.x) {
    if (!(x1 > 0.0) || !(x2 > 0.0)) return Status::error("Invalid value for log scale");
    x1 = std::log10(x1);
    x2 = std::log10(x2);
  }
  if (logs.y) {
    if (!(y1 > 0.0) || !(y2 > 0.0)) return Status::error("Invalid value for log scale");
    y1 = std::log10(y1);
    y2 = std::log10(y2);
  }
  return Status::ok();
}

}  // namespace

std::string descriptionNumber(double value) {
  return formatReal(static_cast<double>(static_cast<float>(value)), -6);
}

namespace {

// The line through (u1, v1) and (u2, v2) written as v in terms of u: "lhs"
// slope "term" intercept, or "degenerate" and u1 when u does not change.
std::string lineThrough(double u1, double v1, double u2, double v2, const char* degenerate, const char* lhs,
                        const char* term) {
  std::string text;
  if (u2 - u1 == 0.0) {
    text += degenerate;
    text += descriptionNumber(u1);
    return cut(std::move(text));
  }
  const double slope = (v2 - v1) / (u2 - u1);
  const double intercept = v1 - slope * u1;
  text += lhs;
  text += descriptionNumber(slope);
  text += term;
  text += signedTerm(intercept);
  return cut(std::move(text));
}

}  // namespace

Status describeStraightLine(double x1, double y1, double x2, double y2, AxisLogs logs, std::string& text) {
  text.clear();
  if (Status s = toPlotted(x1, y1, x2, y2, logs); !s) return s;
  text = lineThrough(x1, y1, x2, y2, "x = ", yPrefix(logs), logs.x ? "*log(x)" : "*x");
  return Status::ok();
}

std::string describePowerLine(double a, double b, AxisLogs logs) {
  std::string text = yPrefix(logs);
  text += descriptionNumber(std::fabs(a));
  text += logs.x ? "*log(x)^(" : "*x^(";
  if (b < 0.0) text += "-";
  text += descriptionNumber(std::fabs(b));
  text += ")";
  return cut(std::move(text));
}

std::string describePolynomial(std::span<const double> coefficients, AxisLogs logs) {
  if (coefficients.empty()) return {};
  const std::size_t order = coefficients.size() - 1;
  std::string text = yPrefix(logs);
  for (std::size_t k = order + 1; k-- > 0;) {
    const double c = coefficients[k];
    text += k == order ? descriptionNumber(c) : signedTerm(c);
    if (k == 1) {
      text += logs.x ? "*log(x)" : "*x";
    } else if (k > 1) {
      text += logs.x ? "*(log(x))^" : "*x^";
      text += std::to_string(k);
    }
  }
  return cut(std::move(text));
}

Status describeLineInY(double x1, double y1, double x2, double y2, AxisLogs logs, std::string& text) {
  text.clear();
  if (Status s = toPlotted(x1, y1, x2, y2, logs); !s) return s;
  text = lineThrough(y1, x1, y2, x2, "y = ", logs.x ? "log(x) = " : "x = ", logs.y ? "*log(y)" : "*y");
  return Status::ok();
}

}  // namespace subsurf
