#include "plot/plot_elements.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/nulls.h"

namespace subsurf {
namespace {

template <typename Point>
void definePoint(Point& e, const Point& rec) {
  const int id = e.ID;
  e = rec;
  e.ID = id;
}

template <typename Point>
double pointDistance(const Point& e, double x, double y) {
  if (isNull(e.X) || isNull(e.Y)) return std::numeric_limits<double>::infinity();
  return std::hypot(e.X - x, e.Y - y);
}

void shift(float& v, float d) {
  if (!isNull(v)) v += d;
}

float clampTo(float v, float lo, float hi) {
  if (isNull(v)) return v;
  // Limits may be given either way round (reversed axes).
  if (!isNull(lo) && !isNull(hi) && lo > hi) std::swap(lo, hi);
  if (!isNull(lo)) v = std::max(v, lo);
  if (!isNull(hi)) v = std::min(v, hi);
  return v;
}

double segmentDistance(double px, double py, double ax, double ay, double bx, double by) {
  const double dx = bx - ax, dy = by - ay;
  const double len2 = dx * dx + dy * dy;
  double t = len2 > 0 ? ((px - ax) * dx + (py - ay) * dy) / len2 : 0.0;
  t = std::clamp(t, 0.0, 1.0);
  return std::hypot(px - (ax + t * dx), py - (ay + t * dy));
}

}  // namespace

void defineElement(ZW_SYMB& e, const ZW_SYMB& rec) { definePoint(e, rec); }
void defineElement(ZW_TEXT& e, const ZW_TEXT& rec) { definePoint(e, rec); }
void defineElement(LineElement& e, const ZW_LINE& rec) {
  const int id = e.ID, n = e.NPTS;
  static_cast<ZW_LINE&>(e) = rec;
  e.ID = id;
  e.NPTS = n;
}

double distanceTo(const ZW_SYMB& e, double x, double y) { return pointDistance(e, x, y); }
double distanceTo(const ZW_TEXT& e, double x, double y) { return pointDistance(e, x, y); }
double distanceTo(const LineElement& e, double x, double y) {
  double best = std::numeric_limits<double>::infinity();
  for (std::size_t k = 0; k < e.x.size(); ++k) {
    const std::size_t j = k + 1 < e.x.size() ? k + 1 : k;
    if (isNull(e.x[k]) || isNull(e.y[k]) || isNull(e.x[j]) || isNull(e.y[j])) continue;
    best = std::min(best, segmentDistance(x, y, e.x[k], e.y[k], e.x[j], e.y[j]));
  }
  return best;
}

void moveElement(ZW_SYMB& e, float dx, float dy) {
  shift(e.X, dx);
  shift(e.Y, dy);
}
void moveElement(ZW_TEXT& e, float dx, float dy) {
  shift(e.X, dx);
  shift(e.Y, dy);
}
void moveElement(LineElement& e, float dx, float dy) {
  for (float& v : e.x) shift(v, dx);
  for (float& v : e.y) shift(v, dy);
}

AxisWindow axisWindowOf(const PlotSet& set) {
  return {set.scales[0].MIN, set.scales[0].MAX, set.scales[1].MIN, set.scales[1].MAX};
}

void fixElement(ZW_SYMB& e, const AxisWindow& w) {
  e.X = clampTo(e.X, w.xmin, w.xmax);
  e.Y = clampTo(e.Y, w.ymin, w.ymax);
  e.FIXED = 1;
}
void fixElement(ZW_TEXT& e, const AxisWindow& w) {
  e.X = clampTo(e.X, w.xmin, w.xmax);
  e.Y = clampTo(e.Y, w.ymin, w.ymax);
  e.FIXED = 1;
}
void fixElement(LineElement& e, const AxisWindow& w) {
  for (float& v : e.x) v = clampTo(v, w.xmin, w.xmax);
  for (float& v : e.y) v = clampTo(v, w.ymin, w.ymax);
  e.FIXED = 1;
}

void transformLine(LineElement& e, double a, double b, double c, double d) {
  for (float& v : e.x)
    if (!isNull(v)) v = static_cast<float>(a * v + b);
  for (float& v : e.y)
    if (!isNull(v)) v = static_cast<float>(c * v + d);
}

namespace {

// Liang-Barsky: the part [t0, t1] of the segment p + t (q - p) inside the window.
bool clipSegment(double px, double py, double qx, double qy, const double lo[2], const double hi[2], double& t0,
                 double& t1) {
  t0 = 0.0;
  t1 = 1.0;
  const double p[2] = {px, py}, dlt[2] = {qx - px, qy - py};
  for (int axis = 0; axis < 2; ++axis) {
    for (int side = 0; side < 2; ++side) {
      const double denom = side == 0 ? -dlt[axis] : dlt[axis];
      const double num = side == 0 ? p[axis] - lo[axis] : hi[axis] - p[axis];
      if (denom == 0.0) {
        if (num < 0.0) return false;  // parallel to this edge and outside it
        continue;
      }
      const double t = num / denom;
      if (denom < 0.0) t0 = std::max(t0, t);
      else t1 = std::min(t1, t);
    }
  }
  return t0 <= t1;
}

}  // namespace

void clipLine(LineElement& e, const AxisWindow& w) {
  // Limits may be given either way round (reversed axes); a null one leaves its side open.
  const double inf = std::numeric_limits<double>::infinity();
  double lo[2] = {-inf, -inf}, hi[2] = {inf, inf};
  const float limits[2][2] = {{w.xmin, w.xmax}, {w.ymin, w.ymax}};
  for (int a = 0; a < 2; ++a) {
    const float first = limits[a][0], second = limits[a][1];
    if (!isNull(first) && !isNull(second)) {
      lo[a] = std::min(first, second);
      hi[a] = std::max(first, second);
    } else if (!isNull(first)) {
      lo[a] = first;
    } else if (!isNull(second)) {
      hi[a] = second;
    }
  }
  std::vector<float> xs, ys;
  bool cut = false;
  auto point = [&](double x, double y) {
    // A point that does not continue the piece before it starts a new one.
    if (!xs.empty() && !isNull(xs.back()) && xs.back() == static_cast<float>(x) && ys.back() == static_cast<float>(y)) return;
    xs.push_back(static_cast<float>(x));
    ys.push_back(static_cast<float>(y));
  };
  auto breakPiece = [&] {
    if (!xs.empty() && !isNull(xs.back())) {
      xs.push_back(kRealNull);
      ys.push_back(kRealNull);
    }
  };
  const std::size_t n = e.x.size();
  if (n == 1 && !isNull(e.x[0]) && !isNull(e.y[0])) {
    if (e.x[0] >= lo[0] && e.x[0] <= hi[0] && e.y[0] >= lo[1] && e.y[0] <= hi[1]) point(e.x[0], e.y[0]);
    else cut = true;
  }
  for (std::size_t k = 0; k + 1 < n; ++k) {
    if (isNull(e.x[k]) || isNull(e.y[k]) || isNull(e.x[k + 1]) || isNull(e.y[k + 1])) {
      breakPiece();
      continue;
    }
    double t0, t1;
    const double px = e.x[k], py = e.y[k], qx = e.x[k + 1], qy = e.y[k + 1];
    if (!clipSegment(px, py, qx, qy, lo, hi, t0, t1)) {
      cut = true;
      breakPiece();
      continue;
    }
    if (t0 > 0.0) {
      cut = true;
      breakPiece();
    }
    point(px + t0 * (qx - px), py + t0 * (qy - py));
    point(px + t1 * (qx - px), py + t1 * (qy - py));
    if (t1 < 1.0) {
      cut = true;
      breakPiece();
    }
  }
  while (!xs.empty() && isNull(xs.back())) {
    xs.pop_back();
    ys.pop_back();
  }
  if (cut) e.CLOSED = 0;
  e.setPoints(std::move(xs), std::move(ys));
}

}  // namespace subsurf
