// Finding the four corners of a tray in a photograph, so that a tray
// photographed at an angle can be straightened without a person marking it.
//
// A tray lies on a table, and the photographer leaves some table all round
// it. The finder works on the photograph reduced to some 1000 pixels:
//   1. Table: the colour of the photograph's border (its median), and how
//      much the table varies there.
//   2. Tray: the pixels that differ from the table by more than the table
//      varies (a threshold between the two, by Otsu's rule); the largest
//      connected patch of them, holes filled, is the tray.
//   3. Outline: the patch's convex hull, cut down to four sides by dropping,
//      one at a time, the side whose removal adds the least area.
//   4. Sides: along each of the four sides, the sharpest colour edge across
//      it nearby (the tray's rim is sharp; its shadow on the table is soft),
//      found at many places, gives points to which a straight line is
//      fitted, those far off it left out; the corners are where neighbouring
//      lines meet.
//
// Confidence (0 to 1) multiplies how many of each side's points lie on its
// line (the weakest side counts), how well the four-sided outline fills the
// patch and the patch it, and whether the tray stays clear of the
// photograph's edges. Below kConfidenceThreshold a person must mark the
// corners.
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
