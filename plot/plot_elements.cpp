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

}  // namespace subsurf
