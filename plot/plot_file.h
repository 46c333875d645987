// Plot files: one plot (its settings, annotation, layout and plot sets with
// their lines and data) as a keyword file.
//
// The records come in a fixed order: "version"; the plot's "zp_" records; the
// annotation's "an_" records; the layout's "la_" records; "zp_nds", the number
// of plot sets; then for each set its "zps_" records, its lines (a "line"
// record each), its point codes, axis labels and data. docs/file-formats.md
// gives the fields of every record. Symbols, text items, bitmaps and the legend
// are not part of a plot file.
#pragma once

#include <string>
#include <string_view>

#include "host/status.h"
#include "plot/plot_tree.h"

namespace subsurf {

inline constexpr int kPlotFileVersion = 1;

// Writes the plot to path; the file is replaced only when it is complete.
Status writePlotFile(const PlotRecord& plot, const std::string& path);

// Reads path into the plot's settings, annotation, layout and sets; the plot's
// links, bitmaps and legend stay. On failure (a message naming the file and
// line) the plot is unchanged.
Status readPlotFile(const std::string& path, PlotRecord& plot);

// One line as the "line" record of a plot file (no line end), and back; a
// record that is not one is refused with what is wrong and the line unchanged.
std::string lineRecordText(const LineElement& line);
Status readLineRecordText(std::string_view text, LineElement& line);

// The path a 260-character blank-padded file field names, logical prefixes
// resolved.
std::string fileFieldPath(const char* field);

// The one body of the plot-file entry points, which differ only in how they
// report a fault: writes or reads plot (null: the current plot) at the file
// the field names. Never throws; a missing plot, a bad file or an allocation
// failure comes back as a failed status with its message.
enum class PlotFileDirection { Write, Read };
Status exchangePlotFile(PlotFileDirection direction, PlotRecord* plot, const char* fileField);

// The lines of a plot file, as written (for tests and previews).
std::string plotFileText(const PlotRecord& plot);

}  // namespace subsurf
