// Positions on a stereonet: the net's radius is 90 units, the rim 90 and the
// centre 0. One function places every ring, point and label.
#pragma once

namespace subsurf {

inline constexpr double kNetRadius = 90.0;
inline constexpr double kDegreesPerRadian = 57.29583;

enum StereoProjection { kEqualAngle = 2, kEqualArea = 3, kScaledSquare = 4 };

// The radial position of index i stepped by w degrees (angle d = i·w):
//   equal angle (p = 2): 90·tan((90 − d)/2); with a > 0, 90·tan((9 − i)·(w·90/2)/a)
//     (i counted inward from ring 9);
//   equal area (p = 3): 90·√(1 − sin d); with a > 0 stretched so that the
//     angle a from the centre falls on the rim, divided by √(1 − sin(90 − a));
//   p = 4: i·c²/n; any other p: i/n.
// Angles are in degrees at 57.29583 to the radian. A zero divisor (n = 0, or
// a stretch angle whose divisor vanishes) gives the null value.
double stereoRadius(int p, int a, int n, double c, double w, int i);

}  // namespace subsurf
