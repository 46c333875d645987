// Cross-plots from a CSV file: two columns of a table (header of column
// names, each optionally followed by its unit in brackets, "phi[frac]"),
// converted into the axis units, made into a plot with one plot set and
// axis limits found by the scales' range modes.
#pragma once

#include <string>
#include <vector>

#include "host/status.h"
#include "plot/plot_tree.h"

namespace subsurf {

struct AxisRequest {
  std::string column;      // header name, any letter case, without its unit
  std::string unit;        // axis unit; empty: the column's own
  int type = 1;            // scale type 1..8
  int mode = 3;            // range mode 1..6
  float min = -9.9e20f, max = -9.9e20f;  // limits of a Manual scale (null: from the data)
};

// Scale type and range mode by name, in any letter case: "linear", "log",
// "square", "sqrt", "recip" (or "recip."), "norm", "stan", "prob"; "manual",
// "auto", "auto-rnd", "p99-p1", "p95-p5", "p90-p10". 0 when unknown.
int scaleTypeByName(const std::string& name);
int rangeModeByName(const std::string& name);

struct CrossplotData {
  std::vector<float> x, y;       // usable pairs, in the axis units
  std::string xUnit, yUnit;      // the axis units
  std::string xColumn, yColumn;  // header names as written
  long rows = 0;                 // data rows read
  long emptyCells = 0;           // pairs left out for an empty cell
  long nullValues = 0;           // ... for a null value (magnitude 9.0e19 or more)
  long nonFinite = 0;            // ... for NaN or infinity
  // A third column the points are coloured by (when one was asked for): one
  // value per usable pair, null where its cell is empty, null or not finite.
  std::vector<float> colour;
  std::string colourUnit, colourColumn;
  long colourNulls = 0;
  // The cells of each text column asked for, one per usable pair.
  std::vector<std::vector<std::string>> texts;
};

// Reads the two columns of a CSV file. Faults name the file, the line and the
// column: a missing column, a cell that is not a number, a unit that is not
// known or cannot be converted into the axis unit.
// Text columns (textColumns, by header name) are read beside them into out.texts.
Status readCrossplotData(const std::string& path, const AxisRequest& x, const AxisRequest& y, CrossplotData& out,
                         const std::vector<std::string>& textColumns = {});
// The same with a third column whose value colours each point; a point whose
// colour cell holds no value is kept (and counted in colourNulls).
Status readCrossplotData(const std::string& path, const AxisRequest& x, const AxisRequest& y,
                         const AxisRequest* colour, CrossplotData& out,
                         const std::vector<std::string>& textColumns = {});

// A plot of the data: one set named after the file, axis labels from the
// column names, scale units, markers sized for the number of points, and
// limits from the scales' range modes.
PlotRecord makeCrossplot(const CrossplotData& data, const AxisRequest& x, const AxisRequest& y,
                         const std::string& title, const std::string& setName);

}  // namespace subsurf
