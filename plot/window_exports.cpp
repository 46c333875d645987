// The C entry points that draw pieces of the current plot into its window
// (declared in include/subsurf/plot.h). The window comes from plotWindows();
// the pieces are laid out as a whole drawing of the plot on that window lays
// them. Nothing thrown inside reaches the caller.
#include "subsurf/plot.h"

#include <memory>

#include "plot/plot_drawing.h"
#include "plot/plot_tree.h"
#include "plot/plot_windows.h"
#include "plot/window_drawing.h"

namespace ss = subsurf;

namespace {

void set(int* out, int v) {
  if (out) *out = v;
}

// Runs draw(pieces, set) with the pieces of the current plot on its window.
template <typename Draw>
void drawInWindow(int* status, bool needsSet, Draw&& draw) {
  ss::drawInCurrentWindow(status, needsSet, [&](ss::drawing::Canvas& canvas, ss::PlotRecord& plot,
                                                const ss::PlotSet* plotSet) {
    ss::PlotPieces pieces(plot, canvas);
    return draw(pieces, plotSet);
  });
}

// The current element of one family (DRAW) or all of them (SDRAW).
template <auto Member, auto Piece>
void drawCurrent(int* status) {
  drawInWindow(status, true, [](ss::PlotPieces& pieces, const ss::PlotSet* s) {
    const auto* element = (s->*Member).current();
    if (!element) return false;
    (pieces.*Piece)(*s, *element);
    return true;
  });
}
template <auto Member, auto Piece>
void drawAll(int* status) {
  drawInWindow(status, true, [](ss::PlotPieces& pieces, const ss::PlotSet* s) {
    for (const auto& element : s->*Member) (pieces.*Piece)(*s, element);
    return true;
  });
}

}  // namespace

extern "C" {

void ZW_SYMBDRAW(int* status) { drawCurrent<&ss::PlotSet::symbols, &ss::PlotPieces::symbol>(status); }
void ZW_SYMBSDRAW(int* status) { drawAll<&ss::PlotSet::symbols, &ss::PlotPieces::symbol>(status); }
void ZW_TEXTDRAW(int* status) { drawCurrent<&ss::PlotSet::texts, &ss::PlotPieces::text>(status); }
void ZW_TEXTSDRAW(int* status) { drawAll<&ss::PlotSet::texts, &ss::PlotPieces::text>(status); }
void ZW_LINEDRAW(int* status) { drawCurrent<&ss::PlotSet::lines, &ss::PlotPieces::line>(status); }
void ZW_LINESDRAW(int* status) { drawAll<&ss::PlotSet::lines, &ss::PlotPieces::line>(status); }

void ZW_LEGDRAW(int* status) {
  drawInWindow(status, false, [](ss::PlotPieces& pieces, const ss::PlotSet*) {
    double left, top, width, height;
    if (!pieces.legendBox(left, top, width, height)) return false;
    pieces.legend();
    return true;
  });
}

void ZW_AXDRAW(const int* axis, int* status) {
  const int which = axis ? *axis - ZW_AXIS_X : -1;
  if (which != 0 && which != 1) return set(status, 1);  // only x and y are drawn as axes
  drawInWindow(status, true, [which](ss::PlotPieces& pieces, const ss::PlotSet* s) {
    pieces.axis(*s, which);
    return true;
  });
}

int IZW_LEGOVER(const float* x, const float* y) {
  int over = 0;
  if (!x || !y) return 0;
  int status = 1;
  drawInWindow(&status, false, [&](ss::PlotPieces& pieces, const ss::PlotSet*) {
    double left, top, width, height;
    if (!pieces.legendBox(left, top, width, height)) return false;
    const ss::PlotWindow* w = ss::plotWindows().forPlot(*ss::plotTree().current());
    // The box's edges in window pixels, as the caller's single-precision
    // coordinates can name them: a point on an edge is over the box.
    const double perMm = w->dpi / 25.4;
    auto px = [perMm](double mm) { return static_cast<float>(mm * perMm); };
    over = *x >= px(left) && *x <= px(left + width) && *y >= px(top) && *y <= px(top + height) ? 1 : 0;
    return true;
  });
  return over;
}

}  // extern "C"
