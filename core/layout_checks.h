// What a user should see about a photograph's rectangles before it is cut:
// rows that overlap (the same core would land in two row images), rows that
// reach outside the photograph (they are clipped), rows listed in an order
// that does not follow their position (depths would be given to the wrong
// row), and where each row really comes from on a photograph that is turned
// before cutting.
#pragma once

#include <string>
#include <vector>

#include "core/split_geometry.h"
#include "core/split_process.h"

namespace subsurf::split {

struct NumberedBox {
  int number = 0;  // the row, from 1, in list order
  RowBox box;
  // A free-cornered row's four corners (empty for an upright rectangle): on a
  // photo taken at an angle the boxes round such rows overlap where the rows
  // themselves do not, so their overlap is judged from the corners.
  std::vector<PixelPoint> corners{};
};

// The rows' rectangles as drawn, scaled to a photograph of photoWidth x
// photoHeight pixels (no scaling when either is 0 or less).
std::vector<NumberedBox> rowBoxes(const PhotoJob& job, int photoWidth, int photoHeight);

// Warnings for the rows of one photograph, each naming it ("T1.jpg: rows 2
// and 3 overlap by 400 x 12 pixels"). frameWidth x frameHeight is the
// picture the boxes lie on; the outside check is left out when either is 0
// or less.
std::vector<std::string> layoutWarnings(const std::string& photoName, const std::vector<NumberedBox>& boxes,
                                        int frameWidth, int frameHeight);

// The four corners, on the upright photograph, of the box that is cut from
// the photograph turned by angleDegrees about its centre (the box itself
// when the angle is 0).
std::vector<PixelPoint> cutOutline(const RowBox& box, double angleDegrees, int photoWidth, int photoHeight);

// The same for any points of the turned photograph (a straightened row's
// corners): where they lie on the upright photograph.
std::vector<PixelPoint> cutPoints(const std::vector<PixelPoint>& points, double angleDegrees, int photoWidth,
                                  int photoHeight);

}  // namespace subsurf::split
