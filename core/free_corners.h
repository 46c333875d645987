// Rows whose outline is four free corners.
//
// A row drawn as a rectangle has four corners that share their coordinates
// with their neighbours, and dragging a corner drags the neighbours' shared
// coordinate with it. A tray photographed at an angle has rows that are not
// rectangles in the picture: their outline is a quadrilateral whose corners
// lie where the row's corners are seen. Such a row is marked free-cornered
// (Polygon::freeCorners): its four corners move one at a time, and the split
// maps the quadrilateral onto an upright rectangle (a projective transform).
//
// Free corners are an explicit choice per rectangle; a rectangle is never
// made free-cornered behind the user's back, and squareRectangle() turns one
// back into the upright rectangle round its corners.
//
// Corners are kept clockwise on the photograph starting from the corner
// nearest its top-left (smallest x + y), so that corner 1 to corner 2 runs
// along the top of the row as it is seen: whichever order they are given in,
// a convex outline keeps its shape.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "core/core_session.h"

namespace subsurf {

struct FreeCorners {
  std::array<int, 4> x{};
  std::array<int, 4> y{};
  bool operator==(const FreeCorners&) const = default;
};

// "x1,y1,x2,y2,x3,y3,x4,y4", for messages.
std::string cornersText(const FreeCorners& corners);

// Reads "x1,y1,x2,y2,x3,y3,x4,y4" (blanks allowed around the numbers);
// fractions are rounded to the nearest pixel. On failure `problem` says why
// (naming the value at fault) and false is returned.
bool parseCorners(std::string_view text, FreeCorners& corners, std::string& problem);

// A corner value read from a file or a number: false for values that are not
// finite or lie beyond any photograph.
bool cornerValue(double value, int& out);

// Why the corners cannot be the outline of row `number` (from 1) on a width x
// height photograph; "" when they can. Corners lie on pixel corners, so
// (width, height) is the photograph's bottom-right corner. Refused: a corner
// off the photograph, two corners at one point, three corners on one line, an
// outline that crosses itself, and one that is not convex (no upright
// rectangle maps onto it).
std::string cornersProblem(const FreeCorners& corners, int number, int width, int height);

// The same corners clockwise on the photograph from the one nearest its
// top-left. The corners must form a convex outline (cornersProblem "").
FreeCorners orderedCorners(const FreeCorners& corners);

// True when the polygon is four corners forming a convex outline (the only
// outlines a free-cornered row may have).
bool isConvexQuadrilateral(const Polygon& polygon);

// The corners of a four-cornered polygon, as they are held.
FreeCorners cornersOf(const Polygon& polygon);

// Makes the rectangle free-cornered with these corners (put in order with
// orderedCorners); world coordinates follow the current view.
void setFreeCorners(const CoreSession& session, CoreRectangle& rectangle, const FreeCorners& corners);

// Makes the rectangle an upright rectangle again: the box round its corners,
// clockwise from the top-left, no longer free-cornered.
void squareRectangle(const CoreSession& session, CoreRectangle& rectangle);

}  // namespace subsurf
