// Drawing into the current plot's window (plot/plot_windows.h) for the C
// entry points: the window's image as a canvas, nothing thrown to the caller.
#pragma once

#include <memory>

#include "host/drawing/canvas.h"
#include "host/messages.h"
#include "plot/plot_tree.h"
#include "plot/plot_windows.h"

namespace subsurf {

// Runs draw(canvas, plot, set) on the current plot's window: status 0 when
// draw says it drew, 1 when there is no current plot, set (when needed) or
// window, or draw says it did not.
template <typename Draw>
void drawInCurrentWindow(int* status, bool needsSet, Draw&& draw) {
  if (status) *status = 1;
  try {
    PlotRecord* plot = plotTree().current();
    if (!plot) return;
    const PlotSet* plotSet = plotTree().currentSet();
    if (needsSet && !plotSet) return;
    const PlotWindow* window = plotWindows().forPlot(*plot);
    if (!window) return;
    Status opened;
    std::unique_ptr<drawing::Canvas> canvas = drawing::Canvas::onImage(window->image, window->dpi, opened);
    if (!canvas) return;
    const bool drew = draw(*canvas, *plot, plotSet);
    canvas.reset();
    cairo_surface_flush(window->image);
    if (status) *status = drew ? 0 : 1;
  } catch (...) {
    try {
      host::showMessage("Out of memory in the plot tree");
    } catch (...) {
    }
    if (status) *status = 1;
  }
}

}  // namespace subsurf
