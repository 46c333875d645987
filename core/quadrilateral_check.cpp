#include "core/quadrilateral_check.h"

#include <algorithm>
#include <cmath>

namespace subsurf {
namespace {

using image::PlanePoint;

// Twice the signed area of the triangle a, b, c: positive when the turn
// a -> b -> c is clockwise on the photograph (y runs down).
double turn(PlanePoint a, PlanePoint b, PlanePoint c) {
  return (b.x - a.x) * (c.y - b.y) - (b.y - a.y) * (c.x - b.x);
}

int signOf(double v) { return v > 0 ? 1 : v < 0 ? -1 : 0; }

// Whether side a-b crosses side c-d (no three of the points on one line).
bool sidesCross(PlanePoint a, PlanePoint b, PlanePoint c, PlanePoint d) {
  return signOf(turn(a, b, c)) != signOf(turn(a, b, d)) && signOf(turn(c, d, a)) != signOf(turn(c, d, b));
}

int next(int i) { return (i + 1) % 4; }
int previous(int i) { return (i + 3) % 4; }

}  // namespace

QuadrilateralVerdict checkQuadrilateral(const std::array<PlanePoint, 4>& c, double width, double height,
                                        bool samePointApart, double lineTolerance) {
  QuadrilateralVerdict v;
  auto fault = [&v](QuadrilateralFault f, std::array<int, 3> corners) {
    v.fault = f;
    v.corners = corners;
    return v;
  };
  for (int i = 0; i < 4; ++i)
    if (!(c[i].x >= 0 && c[i].x <= width && c[i].y >= 0 && c[i].y <= height))
      return fault(QuadrilateralFault::Outside, {i + 1, 0, 0});
  if (samePointApart)
    for (int i = 0; i < 4; ++i)
      for (int j = i + 1; j < 4; ++j)
        if (c[i].x == c[j].x && c[i].y == c[j].y) return fault(QuadrilateralFault::SamePoint, {i + 1, j + 1, 0});
  // Each corner with its two neighbours covers every three of the four.
  int turns[4];
  for (int i = 0; i < 4; ++i) {
    const PlanePoint before = c[previous(i)], here = c[i], after = c[next(i)];
    const double t = turn(before, here, after);
    const double sides =
        std::hypot(here.x - before.x, here.y - before.y) * std::hypot(after.x - here.x, after.y - here.y);
    if (std::fabs(t) <= lineTolerance * sides) {
      std::array<int, 3> three{previous(i) + 1, i + 1, next(i) + 1};
      std::sort(three.begin(), three.end());
      return fault(QuadrilateralFault::OnOneLine, three);
    }
    turns[i] = signOf(t);
  }
  if (sidesCross(c[0], c[1], c[2], c[3])) return fault(QuadrilateralFault::SidesCross, {1, 0, 0});
  if (sidesCross(c[1], c[2], c[3], c[0])) return fault(QuadrilateralFault::SidesCross, {2, 0, 0});
  const int clockwise = turns[0] + turns[1] + turns[2] + turns[3];
  if (clockwise != 4 && clockwise != -4) {
    // A simple outline that is not convex turns the other way at one corner.
    const int majority = clockwise > 0 ? 1 : -1;
    for (int i = 0; i < 4; ++i)
      if (turns[i] != majority) return fault(QuadrilateralFault::NotConvex, {i + 1, 0, 0});
  }
  v.clockwise = clockwise == 4;
  return v;
}

}  // namespace subsurf
