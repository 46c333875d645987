// Drawing a plot to an SVG, PNG or PDF file.
//
// What is drawn, bottom to top: the page background; the annotation strips
// at the top and base of the page (their "@user" and "@date" replaced); the
// title; the data area with its background, bitmaps and grid; each shown plot
// set in drawing order (its shading, the line through its data, its markers,
// then its line, symbol and text elements), clipped to the data area; the
// frame, ticks, numbers and axis labels of the first shown set; the legend.
//
// The page is the layout's (pagex x pagey mm with its margins) unless the
// options give a size. PNG pages are rasterised at the options' dots per inch.
#pragma once

#include <string>

#include "host/drawing/canvas.h"
#include "host/status.h"
#include "plot/plot_tree.h"

namespace subsurf {

struct DrawOptions {
  drawing::OutputKind kind = drawing::OutputKind::Svg;
  std::string path;
  double dpi = 150.0;
  double widthMm = 0.0, heightMm = 0.0;  // 0: the layout's page
  std::string user;  // replaces "@user"; empty: the login name
  std::string date;  // replaces "@date"; empty: today as YYYY-MM-DD
};

Status drawPlot(const PlotRecord& plot, const DrawOptions& options);

// An annotation line with "@user" and "@date" replaced.
std::string annotationText(const std::string& line, const std::string& user, const std::string& date);

// Marker size (mm) and opacity (0..1) of a set's data points, from its
// definition block: entry 1 the size in tenths of a millimetre (0: 1.5 mm),
// entry 2 the opacity in percent (0: opaque).
double markerSizeMm(const PlotSet& set);
double markerOpacity(const PlotSet& set);

}  // namespace subsurf
