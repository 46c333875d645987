// Points of a cross-plot coloured by the class of a third value.
//
// The plot's first set keeps every point (it carries the axes, and a fitted
// line fits all of them) but draws no markers of its own; each class gets a
// set of its points drawn in the class colour, in class order. Points whose
// colour value is null, empty or not finite are drawn in grey and counted;
// points below the first or above the last class bound take the map's
// below and above colours (cm_c0, cm_c1), and are not drawn when that colour
// is 0. The plot gets the colour bar of the map.
#pragma once

#include <string>
#include <vector>

#include "host/status.h"
#include "plot/colour_map.h"
#include "plot/plot_tree.h"

namespace subsurf {

inline constexpr int kNoValueColour = 9;  // grey

struct ClassCounts {
  std::vector<long> perClass;  // points in class 1..n
  long below = 0, above = 0;   // outside the class bounds
  long noValue = 0;            // null colour value
};

// A map of n classes (1..kMaxColourClasses) over the extremes of the usable
// values, divided in equal widths (of the logarithm when logarithmic), with
// the default colours (which exist for 1 to 9 classes; more classes get
// colour 0 and need colours of their own). Fails when no value is usable,
// or, logarithmic, when none is above 0 ("Invalid value for log scale").
Status colourMapForValues(const std::vector<float>& values, int classes, bool logarithmic, ColourMap& map);

// Colours the points of the plot's first set by colour[i] (one value per
// point). The map must pass checkColourMap. title names the values ("Vsh (frac)").
Status colourPointsByClass(PlotRecord& plot, const std::vector<float>& colour, const ColourMap& map,
                           const std::string& title, ClassCounts& counts);

// The points of each class of values (null, NaN and magnitudes of 9e19 or
// more have no value).
ClassCounts countByClass(const ColourMap& map, const std::vector<float>& values);

// A histogram of the values by class of the map: one bar per class from its
// lower to its upper bound (a categorical class k from k - 0.4 to k + 0.4),
// outlined and shaded in the class colour, the count "No. of points: N
// Classes: n" top right (N the points that have a class), the x axis named
// title, the y axis "Frequency".
PlotRecord makeClassHistogram(const ColourMap& map, const std::vector<float>& values, const std::string& title,
                              ClassCounts& counts);

// A class as the legend of the colour bar reads it: its name, else
// "LOWER - UPPER" (a categorical class: its value).
std::string classLabel(const ColourMap& map, int k);

}  // namespace subsurf
