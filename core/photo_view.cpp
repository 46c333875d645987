#include "core/photo_view.h"

#include "core/free_corners.h"

#include <cmath>

namespace subsurf {

VisiblePart visiblePart(const CoreSession& session) {
  VisiblePart part;
  const ViewRecord* view = session.currentView();
  if (!view) {
    part.x2 = session.windowWidth();
    part.y2 = session.windowHeight();
    return part;
  }
  part.identity = false;
  part.x1 = view->x1;
  part.x2 = view->x2;
  part.y1 = view->y1;
  part.y2 = view->y2;
  part.sx = session.viewXScale();
  part.sy = session.viewYScale();
  return part;
}

float viewRatioX(const CoreSession& session) {
  const VisiblePart part = visiblePart(session);
  if (part.identity || session.windowWidth() <= 0) return 1.0f;
  return static_cast<float>(part.x2 - part.x1) / static_cast<float>(session.windowWidth());
}

float viewRatioY(const CoreSession& session) {
  const VisiblePart part = visiblePart(session);
  if (part.identity || session.windowHeight() <= 0) return 1.0f;
  return static_cast<float>(part.y2 - part.y1) / static_cast<float>(session.windowHeight());
}

namespace {
// A view that shows no pixels (never set up) maps one to one rather than
// dividing by zero.
float usableRatio(float r) { return r == 0.0f ? 1.0f : r; }
}  // namespace

void worldToWindow(const CoreSession& session, float wx, float wy, float& vx, float& vy) {
  const VisiblePart part = visiblePart(session);
  vx = (wx - static_cast<float>(part.x1) * part.sx) / usableRatio(viewRatioX(session));
  vy = (wy - static_cast<float>(part.y1) * part.sy) / usableRatio(viewRatioY(session));
}

void windowToWorld(const CoreSession& session, float vx, float vy, float& wx, float& wy) {
  const VisiblePart part = visiblePart(session);
  wx = vx * viewRatioX(session) + static_cast<float>(part.x1) * part.sx;
  wy = vy * viewRatioY(session) + static_cast<float>(part.y1) * part.sy;
}

int pointInWindow(const CoreSession& session, float wx, float wy) {
  const VisiblePart part = visiblePart(session);
  const float left = static_cast<float>(part.x1) * part.sx, right = static_cast<float>(part.x2) * part.sx;
  const float top = static_cast<float>(part.y1) * part.sy, bottom = static_cast<float>(part.y2) * part.sy;
  if (left < wx && wx < right && top < wy && wy < bottom) return 1;
  constexpr float kBorderTolerance = 0.0f;
  if (std::fabs(wx - left) <= kBorderTolerance || std::fabs(wx - right) <= kBorderTolerance ||
      std::fabs(wy - top) <= kBorderTolerance || std::fabs(wy - bottom) <= kBorderTolerance)
    return 2;
  return 0;
}

int pixelInWindow(const CoreSession& session, int px, int py) {
  const VisiblePart part = visiblePart(session);
  if (part.x1 < px && px < part.x2 && part.y1 < py && py < part.y2) return 1;
  if (px == part.x1 || px == part.x2 || py == part.y1 || py == part.y2) return 2;
  return 0;
}

int sideOfLine(float ax, float ay, float bx, float by, float px, float py) {
  const double cross = (double(bx) - ax) * (double(py) - ay) - (double(px) - ax) * (double(by) - ay);
  const float c = static_cast<float>(cross);
  return c > 0.0f ? 1 : (c < 0.0f ? -1 : 0);
}

bool clipToWindow(const CoreSession& session, float& ax, float& ay, float& bx, float& by) {
  // Liang-Barsky: the segment a + t (b - a), 0 <= t <= 1, is cut by each of
  // the four border lines in turn.
  const VisiblePart part = visiblePart(session);
  const double left = double(part.x1) * part.sx, right = double(part.x2) * part.sx;
  const double top = double(part.y1) * part.sy, bottom = double(part.y2) * part.sy;
  const double dx = double(bx) - ax, dy = double(by) - ay;
  double t0 = 0.0, t1 = 1.0;
  const double p[4] = {-dx, dx, -dy, dy};
  const double q[4] = {ax - left, right - ax, ay - top, bottom - ay};
  for (int i = 0; i < 4; ++i) {
    if (p[i] == 0.0) {
      if (q[i] < 0.0) return false;  // parallel to this border and outside it
      continue;
    }
    const double t = q[i] / p[i];
    if (p[i] < 0.0) {
      if (t > t1) return false;
      if (t > t0) t0 = t;
    } else {
      if (t < t0) return false;
      if (t < t1) t1 = t;
    }
  }
  const double x0 = ax, y0 = ay;
  ax = static_cast<float>(x0 + t0 * dx);
  ay = static_cast<float>(y0 + t0 * dy);
  bx = static_cast<float>(x0 + t1 * dx);
  by = static_cast<float>(y0 + t1 * dy);
  return true;
}

std::vector<WindowPoint> outlineToWindow(const CoreSession& session, const CoreRectangle& rectangle) {
  std::vector<WindowPoint> out;
  const Polygon& poly = rectangle.polygon;
  if (poly.n < 1) return out;
  const float sx = session.viewXScale(), sy = session.viewYScale();
  auto add = [&](float wx, float wy) {
    WindowPoint w;
    worldToWindow(session, wx, wy, w.x, w.y);
    out.push_back(w);
  };
  for (int i = 0; i < poly.n && poly.n > 1; ++i) {
    const int j = (i + 1) % poly.n;
    const bool startIn = pixelInWindow(session, poly.px[i], poly.py[i]) != 0;
    const bool endIn = pixelInWindow(session, poly.px[j], poly.py[j]) != 0;
    float ax = poly.px[i] * sx, ay = poly.py[i] * sy;
    float bx = poly.px[j] * sx, by = poly.py[j] * sy;
    if (startIn && endIn) {
      add(ax, ay);
      continue;
    }
    if (!clipToWindow(session, ax, ay, bx, by)) continue;
    add(ax, ay);
    if (!endIn) add(bx, by);  // where the edge leaves the view
  }
  // The outline closes on its first vertex, drawn only when it is visible.
  if (pixelInWindow(session, poly.px[0], poly.py[0]) != 0) add(poly.px[0] * sx, poly.py[0] * sy);
  return out;
}

bool pointWithin(const CoreSession& session, const CoreRectangle& rectangle, float wx, float wy) {
  const Polygon& poly = rectangle.polygon;
  if (poly.n < 3) return false;
  const float sx = session.viewXScale(), sy = session.viewYScale();
  int winding = 0;
  for (int i = 0; i < poly.n; ++i) {
    const int j = (i + 1) % poly.n;
    const float ax = poly.px[i] * sx, ay = poly.py[i] * sy;
    const float bx = poly.px[j] * sx, by = poly.py[j] * sy;
    const int side = sideOfLine(ax, ay, bx, by, wx, wy);
    if (side == 0 && std::fmin(ax, bx) <= wx && wx <= std::fmax(ax, bx) && std::fmin(ay, by) <= wy &&
        wy <= std::fmax(ay, by))
      return true;  // on an edge
    if (ay <= wy) {
      if (by > wy && side > 0) ++winding;  // upward crossing with the point on the left
    } else {
      if (by <= wy && side < 0) --winding;  // downward crossing with the point on the right
    }
  }
  return winding != 0;
}

void sharedCoords(int vertex, int& first, int& second) {
  switch (vertex) {
    case 1: first = 2; second = 4; break;
    case 2: first = 1; second = 3; break;
    case 3: first = 4; second = 2; break;
    case 4: first = 3; second = 1; break;
    default: break;
  }
}

int CoreSession::moveCorner(CoreRectangle& rectangle, int vertex, int px, int py) const {
  Polygon& poly = rectangle.polygon;
  if (poly.n != 4 || vertex < 1 || vertex > 4) return 1;
  if (poly.freeCorners) {
    Polygon moved = poly;
    moved.px[vertex - 1] = px;
    moved.py[vertex - 1] = py;
    if (!isConvexQuadrilateral(moved)) return 1;
    poly.px[vertex - 1] = px;
    poly.py[vertex - 1] = py;
    updateWorld(rectangle);
    return 0;
  }
  int first = 0, second = 0;
  sharedCoords(vertex, first, second);
  const int oldX = poly.px[vertex - 1], oldY = poly.py[vertex - 1];
  // Which coordinate a neighbour shares is read off the outline as it is: the
  // one it has equal with the corner. For a degenerate outline (a neighbour
  // level with the corner both ways, or neither) the usual drawing order
  // decides: round from the top-left, the first neighbour along the row.
  auto follow = [&](int nb, bool sharesYByOrder) {
    int& nx = poly.px[nb - 1];
    int& ny = poly.py[nb - 1];
    const bool sameX = nx == oldX, sameY = ny == oldY;
    bool sharesY = sharesYByOrder;
    if (sameY && !sameX) sharesY = true;
    if (sameX && !sameY) sharesY = false;
    if (sharesY)
      ny = py;
    else
      nx = px;
  };
  follow(first, true);
  follow(second, false);
  poly.px[vertex - 1] = px;
  poly.py[vertex - 1] = py;
  updateWorld(rectangle);
  return 0;
}

}  // namespace subsurf
