// Drawing a colour bar (plot/colour_bar.h) on a canvas, in page millimetres.
#pragma once

#include "host/drawing/canvas.h"
#include "plot/colour_bar.h"

namespace subsurf {

struct ColourBarPlace {
  double left = 0;      // where the bar's column starts
  double top = 0;       // top of the data area beside it
  double bottom = 0;    // bottom of the data area
  double textHeight = 3;
};

// The width the bar needs beside the data area, its gap included.
double colourBarWidth(drawing::Canvas& canvas, const ColourBar& bar, double textHeight);

// The class boxes from the bottom (class 1) up, the bounds at their edges and
// the names beside them; the title above and "No value: N" below. Where
// classes are too thin for every text, every k-th is written.
void drawColourBar(drawing::Canvas& canvas, const ColourBar& bar, const ColourBarPlace& place);

// The left edge of the boxes and their width (for tests that look at the pixels).
double colourBarBoxLeft(const ColourBarPlace& place);
double colourBarBoxWidth(double textHeight);

}  // namespace subsurf
