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
// A layout with an aspect (height over width) keeps the data area that shape
// on any page, centred in the room the page leaves.
#pragma once

#include <memory>
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
// The whole plot onto a canvas (a plot's window), over what it holds.
void drawPlotOn(const PlotRecord& plot, drawing::Canvas& canvas, const DrawOptions& options = {});

class PlotPainter;

// Pieces of a plot drawn one at a time onto a canvas (a plot's window),
// each exactly where a whole drawing of the plot on that canvas puts it:
// the page is laid out (strips, title, axes) without being drawn, then only
// the asked-for piece is painted over what the canvas holds.
class PlotPieces {
 public:
  PlotPieces(const PlotRecord& plot, drawing::Canvas& canvas, const DrawOptions& options = {});
  ~PlotPieces();
  PlotPieces(const PlotPieces&) = delete;
  PlotPieces& operator=(const PlotPieces&) = delete;

  void symbol(const PlotSet& set, const ZW_SYMB& s);
  void text(const PlotSet& set, const ZW_TEXT& t);
  void line(const PlotSet& set, const LineElement& l);
  void legend();
  // The plot's colour bar; false (nothing drawn) when it has none.
  bool colourBar();
  // One axis of set (0 x, 1 y) with its ticks, numbers and label, the page
  // laid out as if set carried the plot's axes.
  void axis(const PlotSet& set, int which);
  // The legend's box in page millimetres (left, top, width, height); false
  // when the plot shows no legend.
  bool legendBox(double& left, double& top, double& width, double& height);

 private:
  DrawOptions options_;
  std::unique_ptr<PlotPainter> painter_;
};

// An annotation line with "@user" and "@date" replaced.
std::string annotationText(const std::string& line, const std::string& user, const std::string& date);

// Marker size (mm) and opacity (0..1) of a set's data points, from its
// definition block: entry 1 the size in tenths of a millimetre (0: 1.5 mm),
// entry 2 the opacity in percent (0: opaque).
double markerSizeMm(const PlotSet& set);
double markerOpacity(const PlotSet& set);

}  // namespace subsurf
