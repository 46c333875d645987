// Density of poles (or lines) on a stereonet, counted by the Kamb method
// with exponential smoothing (Vollmer, 1995), and contoured.
//
// Each observation is an axis (a unit vector and its opposite). At a node of
// a grid over the net, the node's direction g collects from every axis v the
// weight exp(f (|g.v| - 1)), with f = 2 (1 + N / s^2) for N axes and the
// smoothing s (3, as Kamb's counting circle). For axes spread uniformly the
// sum S has mean E = N / f and standard deviation D = sqrt(N (f/2 - 1)) / f
// (Vollmer, 1995, after Robin and Jowett, 1986), and E / D = s. So:
//   S / D   the density in standard deviations (uniform data: s = 3, Kamb's
//           expected count), contoured at multiples of the step (2, 4, 6, ...);
//   S / E   the density in multiples of a uniform distribution (uniform: 1).
// Weights below exp(-40) (4e-18) are not added: with many axes f is large
// and only the axes within a few degrees of a node count, which a grid of
// cells over the unit sphere finds without visiting the rest. With fewer
// than about 80 axes every axis is visited.
//
// Nodes lie on a square grid of size x size over -90..90 net units (the
// corners beyond the rim read as the upper hemisphere, which for axes is
// the lower one turned over, so contours run smoothly to the rim).
//
// Kamb, W.B. (1959) J. Geophys. Res. 64, 1891-1909. Robin, P.-Y.F. and
// Jowett, E.C. (1986) Tectonophysics 121, 207-223. Vollmer, F.W. (1995)
// Computers & Geosciences 21, 31-49.
#pragma once

#include <span>
#include <vector>

#include "host/status.h"
#include "plot/stereonet_geometry.h"

namespace subsurf {

struct DensityGrid {
  int size = 0;                // nodes per side
  int projection = kEqualArea;
  std::vector<double> counts;  // S per node, row by row from (-90, -90), x fastest
  double expected = 0;         // E
  double deviation = 0;        // D
  double smoothing = 3;        // s

  double x(int i) const { return -kNetRadius + 2.0 * kNetRadius * i / (size - 1); }
  double count(int i, int j) const { return counts[static_cast<std::size_t>(j) * size + i]; }
  double sigmas(int i, int j) const { return count(i, j) / deviation; }
  double multiplesOfUniform(int i, int j) const { return count(i, j) / expected; }
  // The largest density in standard deviations over the nodes on the net,
  // and where it is.
  double maximumSigmas(NetPoint* at = nullptr) const;
};

// Counts the density of the axes at each node of a size x size grid (size
// 3 to 1000; smoothing above 0) on the equal-area (3) or equal-angle (2) net.
Status kambDensity(std::span<const Orientation> axes, int projection, int size, double smoothing, DensityGrid& out);

// The density in standard deviations of axes at one direction, visiting
// every axis: the reference the grid's count is checked against.
double kambSigmasAt(std::span<const Orientation> axes, Orientation at, double smoothing);

// The direction a net position (x east, y north) shows; beyond the rim the
// upward line through it.
Orientation lineAtNetPosition(double x, double y, int projection);

// Contour lines of the grid in standard deviations at each level, clipped to
// the rim: per level, pieces of line in net units separated by null points.
struct ContourLine {
  double level = 0;
  std::vector<float> x, y;
};
std::vector<ContourLine> densityContours(const DensityGrid& grid, std::span<const double> levels);

// Contour levels at multiples of step (2, 4, 6, ... for step 2) up to the
// grid's maximum; the step doubled until there are at most maxLevels.
std::vector<double> contourLevels(double maximumSigmas, double step, int maxLevels = 10);

}  // namespace subsurf
