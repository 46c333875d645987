#include <exception>
#include <string>

#include "host/fixed_text.h"
#include "host/paths.h"
#include "plot/plot_file.h"

namespace subsurf {

std::string fileFieldPath(const char* field) {
  return resolvePath(field ? fixedText(field, 260) : std::string());
}

Status exchangePlotFile(PlotFileDirection direction, PlotRecord* plot, const char* fileField) {
  try {
    if (!plot) plot = plotTree().current();
    const bool writing = direction == PlotFileDirection::Write;
    if (!plot) return Status::error(writing ? "There is no plot to write" : "There is no plot to read into");
    const std::string path = fileFieldPath(fileField);
    if (!writing) return readPlotFile(path, *plot);
    ensureParentFolder(path);
    return writePlotFile(*plot, path);
  } catch (...) {
    return Status::error("Out of memory in the plot tree");
  }
}

}  // namespace subsurf
