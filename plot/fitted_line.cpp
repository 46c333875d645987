#include "plot/fitted_line.h"

#include <cmath>

#include "host/fixed_text.h"
#include "host/nulls.h"
#include "plot/axis_scales.h"
#include "plot/line_description.h"
#include "plot/single_set_plot.h"

namespace subsurf {

namespace {

constexpr int kLogScale = 2;
constexpr int kLineSamples = 200;
constexpr int kFittedLineColour = 2;
constexpr int kBlack = 1;

// Value <-> plotted coordinate of one axis.
double toPlotted(double v, bool log) { return log ? (v > 0 ? std::log10(v) : NAN) : v; }
double fromPlotted(double u, bool log) { return log ? std::pow(10.0, u) : u; }

}  // namespace

Status addFittedLine(PlotRecord& plot, RegressionMethod method, RegressionForm form,
                     const std::optional<FixedPoint>& fixed, FittedLine& out) {
  if (plot.sets.empty()) return Status::error("No valid data points!");
  PlotSet& set = plot.sets[0];
  const ZW_SCALE& xs = set.scales[0];
  const ZW_SCALE& ys = set.scales[1];
  const AxisLogs logs{xs.TYPE == kLogScale, ys.TYPE == kLogScale};
  const bool power = form == RegressionForm::Power;
  // The power form takes its own logarithms; the others fit what is plotted.
  const AxisLogs fitLogs = power ? AxisLogs{} : logs;

  const std::vector<float>& xv = set.data[0];
  const std::vector<float>& yv = set.data[1];
  std::vector<double> u, v;
  for (std::size_t i = 0; i < xv.size() && i < yv.size(); ++i) {
    if (isNull(xv[i]) || isNull(yv[i])) continue;
    u.push_back(toPlotted(xv[i], fitLogs.x));
    v.push_back(toPlotted(yv[i], fitLogs.y));
  }
  std::optional<FixedPoint> through = fixed;
  if (fixed) {
    through = FixedPoint{toPlotted(fixed->x, fitLogs.x), toPlotted(fixed->y, fitLogs.y)};
    if (!std::isfinite(through->x) || !std::isfinite(through->y)) return Status::error("Invalid fixed point!");
  }
  if (Status s = fitRegression(u, v, method, form, through, out.fit); !s) return s;

  // A power line is y = a*x^b in the values themselves whatever the axes show,
  // so its equation names y and x: "log(y) = a*x^(b)" on a log y axis would
  // claim that log(y) grows as a power of x, which is not the curve drawn.
  out.description = power ? describePowerLine(out.fit.coefficients[0], out.fit.coefficients[1], AxisLogs{})
                          : describePolynomial(out.fit.coefficients, logs);
  out.report = regressionReportLine(out.fit);

  // The line across the x window, sampled evenly as plotted.
  const bool xLog = logs.x;
  const double lo = toPlotted(xs.MIN, xLog), hi = toPlotted(xs.MAX, xLog);
  std::vector<float> lx, ly;
  for (int k = 0; k <= kLineSamples && std::isfinite(lo) && std::isfinite(hi); ++k) {
    const double x = fromPlotted(lo + (hi - lo) * k / kLineSamples, xLog);
    if (power && x <= 0) continue;  // fitted on positive x only; x^b may exist below 0, the fit does not
    const double y = power ? out.fit.valueAt(x) : fromPlotted(out.fit.valueAt(toPlotted(x, fitLogs.x)), fitLogs.y);
    if (!std::isfinite(y) || (logs.y && y <= 0)) continue;
    lx.push_back(static_cast<float>(x));
    ly.push_back(static_cast<float>(y));
  }
  // Points coloured by class may use any palette colour: the line is black then.
  const int colour = plot.colourBar ? kBlack : kFittedLineColour;
  LineElement line;
  line.COLOUR = colour;
  line.WIDTH = 0.5f;
  setFixed(line.NAME, std::string(regressionMethodName(method)) + " fit");
  line.setPoints(std::move(lx), std::move(ly));
  set.lines.add(std::move(line));

  // The equation near the top left corner of the axes.
  ZW_TEXT text = defaultText();
  const double tx = toPlotted(xs.MIN, xLog) + 0.03 * (toPlotted(xs.MAX, xLog) - toPlotted(xs.MIN, xLog));
  const double ty = toPlotted(ys.MIN, logs.y) + 0.95 * (toPlotted(ys.MAX, logs.y) - toPlotted(ys.MIN, logs.y));
  text.X = static_cast<float>(fromPlotted(tx, xLog));
  text.Y = static_cast<float>(fromPlotted(ty, logs.y));
  text.COLOUR = colour;
  setFixed(text.TEXT, out.description);
  set.texts.add(text);
  return Status::ok();
}

PlotRecord makeResidualsPlot(const PlotRecord& crossplot, const FittedLine& line) {
  PlotRecord plot = singleSetPlot("Residuals plot", "Residuals");
  PlotSet& set = plot.sets.back();
  const ZW_SCALE& xs = crossplot.sets.at(0).scales[0];
  set.scales[0] = xs;
  set.labels[0] = crossplot.sets.at(0).labels[0];
  set.labels[1] = "Residual";
  for (std::size_t i = 0; i < line.fit.residuals.size(); ++i) {
    set.data[0].push_back(static_cast<float>(line.fit.usedX[i]));
    set.data[1].push_back(static_cast<float>(line.fit.residuals[i]));
  }
  ZW_SCALE& ys = set.scales[1];
  ys.TYPE = 1;
  ys.MODE = 3;
  ys.MIN = ys.MAX = kRealNull;
  setAxisLimits(set.data[1], ys);
  LineElement zero;
  zero.COLOUR = kFittedLineColour;
  setFixed(zero.NAME, "Zero line");
  zero.setPoints({xs.MIN, xs.MAX}, {0.0f, 0.0f});
  set.lines.add(std::move(zero));
  return plot;
}

}  // namespace subsurf
