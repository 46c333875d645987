// Whether four corners can outline a row or a tray: the one test behind the
// corners a user gives for a free-cornered row and for a tray to straighten.
// Each caller words the fault in its own terms.
#pragma once

#include <array>

#include "host/image/projective.h"

namespace subsurf {

enum class QuadrilateralFault { None, Outside, SamePoint, OnOneLine, SidesCross, NotConvex };

struct QuadrilateralVerdict {
  QuadrilateralFault fault = QuadrilateralFault::None;
  // Corners at fault, numbered from 1: Outside and NotConvex the corner;
  // SamePoint the two; OnOneLine the three, in ascending order; SidesCross
  // the first corner of the first side (1: side 1-2 crosses side 3-4; 2: side
  // 2-3 crosses side 4-1).
  std::array<int, 3> corners{};
  bool clockwise = false;  // with no fault: the corners run clockwise on the photograph (y down)
};

// Checks corners given in order round the outline on a width x height
// photograph (corners lie on pixel corners, so (width, height) is its
// bottom-right corner), in this order: a corner off the photograph; two
// corners at one point (when asked for); three corners on one line, that is
// a turn no larger than lineTolerance times the product of its two sides
// (0: exactly on it); sides that cross; an outline that is not convex.
QuadrilateralVerdict checkQuadrilateral(const std::array<image::PlanePoint, 4>& corners, double width, double height,
                                        bool samePointApart, double lineTolerance);

}  // namespace subsurf
