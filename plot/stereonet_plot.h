// A stereonet as a plot: the net's rim, the data as poles or as points of
// dip and azimuth, planes as great circles, or a rose diagram of azimuths,
// with the counts and the Fisher mean written beside the net.
//
// The net lies in a square window of -100..100 units with the rim at 90 and
// hidden axes; the plot's layout keeps the data area square, so the net is a
// circle on a page of any shape. Labels, top left: "Poles: NAME" or
// "Scatter: NAME" (the set's name), "Observations: N", and the net's name
// followed by the dip read along a diameter, " 90-0-90" for poles (a pole on
// the rim is that of a vertical plane) or " 0-90-0" for lines; a rose has
// "Frequency: 0 to MAX" and "Observations: N". Top right: the mean. Below the
// net, with contours, their levels and the largest density ("Kamb contours:
// 2, 4, 6 sigma (maximum 7.3 sigma)"). Data in classes are drawn one plot set per class
// (or pair of classes) and keyed in the lower corners: "Colours:" left,
// "Symbols:" right, as many classes as fit, then "... N more".
#pragma once

#include <span>
#include <string>
#include <vector>

#include "host/status.h"
#include "plot/plot_tree.h"
#include "plot/stereonet_geometry.h"

namespace subsurf {

struct StereonetRequest {
  int projection = kEqualArea;  // kEqualArea or kEqualAngle
  bool poles = true;            // poles of the planes; false: the dip lines themselves ("Scatter:")
  bool planes = false;          // great circles of the planes
  bool rose = false;            // a rose diagram of the azimuths instead of the net
  double roseWidth = 10.0, roseStart = 0.0;
  bool contours = false;        // Kamb density contours of the poles or lines (plot/stereonet_density.h)
  int densityGrid = 100;        // nodes a side of the counting grid
  double contourStep = 2.0;     // contour interval in standard deviations
  double smoothing = 3.0;
  std::string title, setName;
};

// The observations: dips and azimuths, and optionally a class per
// observation shown by colour and another shown by marker shape (empty: none).
struct StereonetData {
  std::span<const float> dips, azimuths;
  std::span<const std::string> colourClasses, symbolClasses;
};

struct StereonetSummary {
  int observations = 0;  // usable dip and azimuth pairs
  int leftOut = 0;       // pairs with a null, non-finite or out-of-range value
  FisherMean mean;       // of the plotted poles or lines (not for a rose)
  int roseMaximum = 0;   // the largest class count of a rose
  double densityMaximum = 0;          // with contours: the largest density on the net, in standard deviations
  std::vector<double> contourLevels;  // ... and the levels drawn
};

// Dips must lie in 0..90; azimuths are taken modulo 360.
Status makeStereonetPlot(const StereonetData& data, const StereonetRequest& request, PlotRecord& plot,
                         StereonetSummary& summary);
inline Status makeStereonetPlot(std::span<const float> dips, std::span<const float> azimuths,
                                const StereonetRequest& request, PlotRecord& plot, StereonetSummary& summary) {
  return makeStereonetPlot(StereonetData{dips, azimuths, {}, {}}, request, plot, summary);
}

// A set of observations added to a net plot, in the net's window: its name,
// palette colour (0: the default blue) and marker shape. Observations out of
// range are left out; plotted counts the others.
Status addStereonetSet(PlotRecord& plot, std::span<const float> dips, std::span<const float> azimuths, int projection,
                       bool poles, const std::string& name, int colour, int shape, int& plotted);
PlotSet netDataSet(const std::string& name, int colour, int shape);
// The keys of class names in the lower corners of the net's set: by colour
// (palette colours 2, 3, ... in order) and by marker shape (1 to 8, repeated).
void addStereonetKey(PlotSet& net, const std::vector<std::string>& colours, const std::vector<std::string>& symbols);
// Puts the sets of a net made by makeStereonetPlot into target in place of
// its own, keeping target's identity, window, layout and (when it has one)
// title; the first set becomes current.
void placeStereonet(PlotRecord& target, PlotRecord&& net);

// The classes of a key in order of first appearance, and each observation's
// place among them.
struct ClassKey {
  std::vector<std::string> names;
  std::vector<int> of;  // per observation, index into names
};
ClassKey classKey(std::span<const std::string> classes);

}  // namespace subsurf
