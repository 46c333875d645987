// A stereonet as a plot: the net's rim, the data as poles or as points of
// dip and azimuth, planes as great circles, or a rose diagram of azimuths,
// with the counts and the Fisher mean written beside the net.
//
// The net lies in a square window of -100..100 units with the rim at 90 and
// hidden axes; draw it on a square page.
#pragma once

#include <span>
#include <string>

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
  std::string title, setName;
};

struct StereonetSummary {
  int observations = 0;  // usable dip and azimuth pairs
  int leftOut = 0;       // pairs with a null, non-finite or out-of-range value
  FisherMean mean;       // of the plotted poles or lines (not for a rose)
  int roseMaximum = 0;   // the largest class count of a rose
};

// Dips must lie in 0..90; azimuths are taken modulo 360.
Status makeStereonetPlot(std::span<const float> dips, std::span<const float> azimuths, const StereonetRequest& request,
                         PlotRecord& plot, StereonetSummary& summary);

}  // namespace subsurf
