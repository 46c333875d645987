// A regression line fitted to a cross-plot's points and added to its plot set:
// the line drawn across the x window and its equation written inside the axes.
//
// Points are fitted as plotted: on a "Log" axis (scale type 2) in base-10
// logarithms; on the other scale types in the data values. The power form
// always fits the data values (it takes logarithms itself), is drawn for
// positive x only, and its equation reads "y = a*x^(b)" on any axes.
#pragma once

#include <optional>
#include <string>

#include "host/status.h"
#include "plot/plot_tree.h"
#include "plot/regression_fit.h"

namespace subsurf {

struct FittedLine {
  RegressionFit fit;
  std::string description;  // "y = 2*x+1", as the line's text shows it
  std::string report;       // the "Regression:" line
};

// Fits the first set of the plot and adds the line (named after the method)
// and a text item with the description. fixed is in data values.
Status addFittedLine(PlotRecord& plot, RegressionMethod method, RegressionForm form,
                     const std::optional<FixedPoint>& fixed, FittedLine& out);

// The residuals window: each used point's "Residual" against x, titled
// "Residuals plot", with a "Zero line" across the x window of the cross-plot.
PlotRecord makeResidualsPlot(const PlotRecord& crossplot, const FittedLine& line);

}  // namespace subsurf
