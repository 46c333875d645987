// The read-out of a position on a stereonet: where the pointer is, in net
// units and as an orientation.
//
// Texts, each one decimal place (a tenth of a degree or of a net unit is
// finer than anyone reads a net by eye):
//   "Radius = R"               distance from the centre, net units (rim 90)
//   "Angle = A"                clockwise from north (up), 0.0 to 359.9
//   "Dip = D"                  plunge of the line the position shows, 0 at
//                              the rim to 90 at the centre
//   "Az = T"                   its azimuth (trend), 0.0 to 359.9; the same as
//                              the angle, as a line plots on its own azimuth
//   "Corresp. Point Dip = C"   dip of the corresponding point, pole <-> plane:
//                              90 - D (a pole of plunge D is the normal of a
//                              plane dipping 90 - D, and the other way round)
// At the centre the angle and azimuth read 0.0. Beyond the rim only radius
// and angle have a value; the other texts are blank.
#pragma once

#include <array>
#include <string>

#include "host/status.h"
#include "plot/stereonet_geometry.h"

namespace subsurf {

struct NetReadout {
  double radius = 0, angle = 0;
  bool onNet = false;
  Orientation line;  // when onNet
  double correspondingDip = 0;
  std::array<std::string, 5> texts;  // radius, angle, dip, azimuth, corresponding dip
};

// Reads net position (x, y) (x east, y north, rim 90) of an equal-angle (2)
// or equal-area (3) net. Fails for another projection or a non-finite
// position; a position beyond the rim succeeds with onNet false.
Status readNetPosition(double x, double y, int projection, NetReadout& out);

}  // namespace subsurf
