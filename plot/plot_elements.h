// What differs between the element families (symbols, text items, lines) for
// the operations that all of them share: how a record defines an element, how
// far an element lies from a point, how it moves and how it is fixed inside
// the axes of its set. Everything else is the one ElementList.
#pragma once

#include "plot/plot_records.h"

namespace subsurf {

// The element takes the record's fields but keeps its id (and a line its points).
void defineElement(ZW_SYMB& e, const ZW_SYMB& rec);
void defineElement(ZW_TEXT& e, const ZW_TEXT& rec);
void defineElement(LineElement& e, const ZW_LINE& rec);

// Distance in data units from (x, y); a point element without a position, or
// a line without points, is infinitely far.
double distanceTo(const ZW_SYMB& e, double x, double y);
double distanceTo(const ZW_TEXT& e, double x, double y);
double distanceTo(const LineElement& e, double x, double y);

// Moves the element's set coordinates by (dx, dy); nulls stay null.
void moveElement(ZW_SYMB& e, float dx, float dy);
void moveElement(ZW_TEXT& e, float dx, float dy);
void moveElement(LineElement& e, float dx, float dy);

// Brings every coordinate inside [xmin, xmax] x [ymin, ymax] (limits that are
// null leave that side free) and marks the element fixed.
struct AxisWindow {
  float xmin, xmax, ymin, ymax;
};
AxisWindow axisWindowOf(const PlotSet& set);
void fixElement(ZW_SYMB& e, const AxisWindow& w);
void fixElement(ZW_TEXT& e, const AxisWindow& w);
void fixElement(LineElement& e, const AxisWindow& w);

// x := a x + b and y := c y + d for every point of the line (nulls stay null).
void transformLine(LineElement& e, double a, double b, double c, double d);

// Cuts the line to the window: the parts outside go, a segment that crosses
// an edge ends on it, and pieces that the cut separates are kept apart by a
// null point (drawing breaks there). A closed outline that was cut is no
// longer closed. Window limits that are null leave that side open.
void clipLine(LineElement& e, const AxisWindow& w);

}  // namespace subsurf
