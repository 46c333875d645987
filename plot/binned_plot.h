// Binned statistics drawn: for each bin that holds points, a box from P10 to
// P90 across the middle 60 % of the bin, whiskers on to P5 and P95, a line
// across the box at P50 and a diamond at the mean. Empty bins draw nothing.
// The x axis spans the bin edges; the y axis the whiskers and means.
#pragma once

#include <string>

#include "plot/bin_statistics.h"
#include "plot/plot_tree.h"

namespace subsurf {

struct BinnedPlotRequest {
  std::string byColumn, byUnit;        // along which the bins are cut (x)
  std::string valueColumn, valueUnit;  // what is summarised (y)
  int valueScale = 1;                  // scale type of the y axis (2: Log)
  std::string title, setName;
};

// The key written in the plot, which says what the marks are.
inline constexpr const char* kBinnedPlotKey = "Box P10-P90, whiskers P5-P95, line P50, diamond mean";

// The plot of a table whose rows share ascending edges (as binStatistics
// makes them). "No. of points: N  Bins: n" is written top right in the axes,
// the key in the annotation strip below them.
PlotRecord makeBinnedPlot(const BinStatistics& table, const BinnedPlotRequest& request);

}  // namespace subsurf
