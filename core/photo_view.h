// The photo window's view of a core image: converting between image pixels,
// world coordinates and window pixels, testing points against the visible part
// of the photo, clipping outlines to it and testing points against outlines.
//
//   pixel   integer image pixels from the photo's top-left corner, as held in a
//           rectangle's outline;
//   world   pixel coordinates times the current view's x and y scale;
//   window  photo-window pixels from the window's top-left corner.
//
// The current view is view number v of the session's current image: it shows
// pixel columns x1..x2 and rows y1..y2 in a window of W x H pixels. A view
// number outside 1..10 (or no current image) is the identity view: the window
// shows pixels 0..W and 0..H one to one.
#pragma once

#include <vector>

#include "core/core_session.h"

namespace subsurf {

struct VisiblePart {
  int x1 = 0, x2 = 0, y1 = 0, y2 = 0;  // pixel range shown
  float sx = 1.0f, sy = 1.0f;          // world units per pixel
  bool identity = true;
};

VisiblePart visiblePart(const CoreSession& session);

// Image-to-window ratios: (x2 - x1) / W and (y2 - y1) / H; 1 for the identity
// view (and for a window of no size).
float viewRatioX(const CoreSession& session);
float viewRatioY(const CoreSession& session);

void worldToWindow(const CoreSession& session, float wx, float wy, float& vx, float& vy);
void windowToWorld(const CoreSession& session, float vx, float vy, float& wx, float& wy);

// 1 strictly inside the visible part, 2 on its border, 0 outside. The border
// test looks at one coordinate alone: a point level with the left border line
// is "on the border" even far above or below the window.
int pointInWindow(const CoreSession& session, float wx, float wy);
int pixelInWindow(const CoreSession& session, int px, int py);

// 1 when (px, py) lies left of the directed line a->b, -1 right, 0 on it.
int sideOfLine(float ax, float ay, float bx, float by, float px, float py);

// Clips a segment (world coordinates) to the visible part, in place; false
// (ends unchanged) when none of it is visible.
bool clipToWindow(const CoreSession& session, float& ax, float& ay, float& bx, float& by);

struct WindowPoint {
  float x = 0.0f, y = 0.0f;
};

// The outline in window coordinates, clipped to the view, as a polyline that
// returns to its first vertex when that is visible.
std::vector<WindowPoint> outlineToWindow(const CoreSession& session, const CoreRectangle& rectangle);

// Whether a world point lies inside the outline or on an edge (winding rule:
// a point is inside when the outline winds round it a non-zero number of
// times, so outlines drawn either way round and self-crossing ones behave).
bool pointWithin(const CoreSession& session, const CoreRectangle& rectangle, float wx, float wy);

// The two corners of a four-cornered outline that share a coordinate with
// corner `vertex` (1..4); other indices leave first and second alone.
void sharedCoords(int vertex, int& first, int& second);

}  // namespace subsurf
