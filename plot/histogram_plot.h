// Histograms: the values of one column counted in equal classes and drawn
// as bars, with the point count written as "No. of points:".
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/status.h"
#include "plot/plot_tree.h"

namespace subsurf {

// The class count when the user gives none: Sturges' rule, ceil(log2 n) + 1,
// within 1..100.
int defaultClassCount(std::size_t points);

struct Histogram {
  std::vector<double> edges;  // classes + 1, equal widths from the smallest to the largest value
  std::vector<int> counts;    // a value on an inner edge counts in the class above; the largest in the last
  int points = 0;             // usable values
  int leftOut = 0;            // null or non-finite values
};

// classes 0 takes the default count. Fails with "No valid data points!" when
// no value is usable.
Status countHistogram(std::span<const float> values, int classes, Histogram& out);

// A plot of the histogram: one bar per class, the x axis labelled with the
// column, the y axis "Frequency".
PlotRecord makeHistogramPlot(const Histogram& histogram, const std::string& column, const std::string& unit,
                             const std::string& title, const std::string& setName);

}  // namespace subsurf
