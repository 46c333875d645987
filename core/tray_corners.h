// Finding the four corners of a tray in a photograph, so that a tray
// photographed at an angle can be straightened without a person marking it.
//
// A tray lies on a table, and the photographer leaves some table all round
// it. The finder works on the photograph reduced to some 1000 pixels:
//   1. Table: the median colour of the photograph's border, and how much the
//      table varies there. A colour's distance from the table counts the
//      table in shadow (the table's colour, darker) for little, so that the
//      tray's shadow does not join the tray.
//   2. Tray: the pixels further from the table than it varies (at least 20
//      levels); the largest connected patch of them, with whatever lies
//      between its ends along every row and column (a tray is convex).
//   3. Outline: the patch's convex hull, cut down to four sides by dropping,
//      one at a time, the side whose removal adds the least area.
//   4. Sides: at 80 places along each side, looking inwards from outside,
//      the first point that is not table is the rim (or something lying on
//      it, such as a label); the sharpest colour change within 1.5 pixels of
//      it places the edge. The line through two of these points that most of
//      them lie on (within a pixel) is fitted to those points; the corners
//      are where neighbouring lines meet.
//
// Confidence (0 to 1) multiplies how much of its weakest side lies on its
// line (60% or more gives full marks; a line not seen at both ends of its
// side counts as none), how well the patch fills the four-sided outline
// (94% or more), and whether the tray stays clear of the photograph's edges
// (a tray running off the photo is always left for a person). Below
// kConfidenceThreshold a person must mark the corners.
#pragma once

#include <string>

#include "core/tray_straightening.h"
#include "host/image/raster.h"

namespace subsurf {

struct TrayCornerDetection {
  bool found = false;
  TrayCorners corners{};  // pixels of the full photograph: top-left, top-right, bottom-right, bottom-left
  double confidence = 0.0;
  std::string doubt;  // why the corners are unsure; empty when sure

  bool sure() const;
};

class TrayCornerFinder {
 public:
  static constexpr double kConfidenceThreshold = 0.6;
  static constexpr int kWorkingSize = 1000;  // the reduced photograph's longer side

  // Finds the tray in `reduced` (the photograph brought down to at most
  // kWorkingSize pixels); the corners are given in pixels of the
  // fullWidth x fullHeight photograph.
  TrayCornerDetection find(const image::RasterView& reduced, int fullWidth, int fullHeight) const;
};

}  // namespace subsurf
