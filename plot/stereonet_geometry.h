// Orientation data on the stereonet: lines and poles as points of the lower
// hemisphere, planes as great circles, rose-diagram classes of azimuths, and
// the mean orientation with its Fisher statistics.
//
// Angles are in degrees. A line is given by its plunge (0 horizontal, 90
// vertical, downwards) and trend (azimuth clockwise from north); a plane by
// its dip and dip azimuth. Net coordinates put north up and east right,
// with the rim at 90 units (plot/stereonet_projection.h).
#pragma once

#include <span>
#include <vector>

#include "host/status.h"
#include "plot/stereonet_projection.h"

namespace subsurf {

struct NetPoint {
  double x = 0, y = 0;
};

struct Orientation {
  double plunge = 0, trend = 0;
};

// Equal-angle (2) or equal-area (3) position of a line.
NetPoint projectLine(Orientation line, int projection);
// The pole (normal) of a plane: plunge 90 − dip, trend dip azimuth + 180.
Orientation poleOfPlane(double dip, double dipAzimuth);
// The plane's great circle from one end of its strike to the other, as
// samples + 1 points.
std::vector<NetPoint> greatCircle(double dip, double dipAzimuth, int projection, int samples = 90);

// Counts of azimuths per class of classWidth degrees, the first class
// starting at startAzimuth; 360/classWidth classes (classWidth must divide
// 360). Azimuths are taken modulo 360; non-finite ones are left out.
Status roseCounts(std::span<const double> azimuths, double classWidth, double startAzimuth, std::vector<int>& counts);

// Mean of unit vectors along lines (poles), with Fisher's statistics (Fisher,
// 1953; Fisher, Lewis and Embleton, 1987). The lines are taken as given, in
// the lower hemisphere: a cluster that straddles the rim should be turned to
// one side first.
// R the length of the resultant, k = (n − 1)/(n − R) the precision and
// alpha95 the radius of the 95% cone of confidence (degrees; null when
// n < 2 or the lines are all parallel, k then infinite).
struct FisherMean {
  Orientation mean;
  int n = 0;
  double resultant = 0, kappa = 0, alpha95 = 0;
};
Status fisherMean(std::span<const Orientation> lines, FisherMean& out);

}  // namespace subsurf
